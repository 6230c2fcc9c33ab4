// Messages for Windows error codes (GetLastError and Windows Sockets values).
#include <windows.h>

#include <cstdio>

#include "link/config.h"

namespace kvn {

size_t os_error_text(int32_t code, char* text, size_t size) noexcept {
    if (text == nullptr || size == 0) return 0;
    char message[512];
    DWORD n = ::FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                               static_cast<DWORD>(code), 0, message, sizeof message, nullptr);
    // System messages end in ".\r\n"; the text is the sentence alone, as strerror gives it.
    while (n > 0 && (message[n - 1] == '\n' || message[n - 1] == '\r' || message[n - 1] == ' ' ||
                     message[n - 1] == '.')) {
        --n;
    }
    message[n] = '\0';
    const int k = n > 0 ? std::snprintf(text, size, "%s", message)
                        : std::snprintf(text, size, "error %ld", static_cast<long>(code));
    if (k < 0) {
        text[0] = '\0';
        return 0;
    }
    return static_cast<size_t>(k) < size ? static_cast<size_t>(k) : size - 1;
}

}  // namespace kvn
