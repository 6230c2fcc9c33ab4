// Messages for errno values.
#include <cstdio>
#include <cstring>

#include "link/config.h"

namespace kvn {
namespace {

// strerror_r comes in two shapes: the XSI one returns 0 and fills the buffer, the
// GNU one returns the message (which may live elsewhere).
[[maybe_unused]] const char* message_of(int rc, const char* buffer) noexcept { return rc == 0 ? buffer : nullptr; }
[[maybe_unused]] const char* message_of(const char* message, const char*) noexcept { return message; }

}  // namespace

size_t os_error_text(int32_t code, char* text, size_t size) noexcept {
    if (text == nullptr || size == 0) return 0;
    char buffer[256];
    buffer[0] = '\0';
    const char* message = message_of(::strerror_r(code, buffer, sizeof buffer), buffer);
    int n = (message != nullptr && message[0] != '\0') ? std::snprintf(text, size, "%s", message)
                                                       : std::snprintf(text, size, "error %d", static_cast<int>(code));
    if (n < 0) {
        text[0] = '\0';
        return 0;
    }
    return static_cast<size_t>(n) < size ? static_cast<size_t>(n) : size - 1;
}

}  // namespace kvn
