// Status messages and small utilities.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>

#include "kvnsdk2.h"
#include "link/config.h"

namespace {

struct StatusText {
    int32_t code;
    const char* text;
};

// Sorted by code (descending, as the list is), searched by halves.
constexpr StatusText kStatusTexts[] = {
#define KVN_STATUS_ROW_(code, name, text) {code, text},
    KVN_STATUS_LIST(KVN_STATUS_ROW_)
#undef KVN_STATUS_ROW_
};

constexpr bool sorted_descending() {
    for (size_t i = 1; i < std::size(kStatusTexts); ++i) {
        if (kStatusTexts[i - 1].code <= kStatusTexts[i].code) return false;
    }
    return true;
}
static_assert(sorted_descending(), "status list must stay sorted by code, descending");

}  // namespace

extern "C" {

KVN_API int32_t kvn_utils_get_status_code_string(int32_t code, char* text) {
    if (text == nullptr) return 0;
    const auto* end = std::end(kStatusTexts);
    const auto* it = std::lower_bound(std::begin(kStatusTexts), end, code,
                                      [](const StatusText& row, int32_t c) { return row.code > c; });
    if (it != end && it->code == code) {
        std::strcpy(text, it->text);
    } else {
        std::sprintf(text, "Error : %d", static_cast<int>(code));
    }
    return 0;
}

KVN_API const char* kvn_get_sdk2_version(void) { return "1.4.0.0"; }

KVN_API int32_t kvn_utils_validate_alphanumeric_string(const char* text, int32_t count) {
    if (count < 1) return 0;
    if (text == nullptr) return KVN_E_INVALID_VALUE_RECEIVED;
    for (int32_t i = 0; i < count; ++i) {
        // Bytes are taken as signed: 0x80 to 0xFF are negative and pass.
        const int c = static_cast<signed char>(text[i]);
        const bool rejected = (c >= 0 && c <= 47) || (c >= 58 && c <= 64) || (c >= 91 && c <= 96) || c >= 123;
        if (rejected) {
            kvn::diagnostic("char %c\n", c);
            return KVN_E_INVALID_VALUE_RECEIVED;
        }
    }
    return 0;
}

KVN_API int32_t kvn_convert_ip_string_to_int(const char* text, uint32_t* address) {
    if (text == nullptr || address == nullptr) return KVN_E_INVALID_IP_ADDRESS;
    const size_t length = strnlen(text, 16);
    if (length < 1 || length > 15) return KVN_E_INVALID_IP_ADDRESS;
    int dots = 0;
    for (size_t i = 0; i < length; ++i) {
        if (text[i] == '.') {
            ++dots;
        } else if (text[i] < '0' || text[i] > '9') {
            return KVN_E_INVALID_IP_ADDRESS;
        }
    }
    if (dots != 3) return KVN_E_INVALID_IP_ADDRESS;
    // Four fields of one or more digits, each at most 255. A field stops growing
    // once it passes 255, so no text can overflow it.
    uint32_t field[4] = {0, 0, 0, 0};
    size_t n = 0, digits = 0;
    for (size_t i = 0; i <= length; ++i) {
        if (i == length || text[i] == '.') {
            if (digits == 0) return KVN_E_INVALID_IP_ADDRESS;  // "1..2.3", ".1.2.3", "1.2.3."
            ++n;
            digits = 0;
            continue;
        }
        if (field[n] <= 255) field[n] = field[n] * 10 + static_cast<uint32_t>(text[i] - '0');
        ++digits;
    }
    if (field[3] > 255 || field[2] > 255 || field[1] > 255 || field[0] > 255) return KVN_E_INVALID_IP_ADDRESS;
    *address = field[0] << 24 | field[1] << 16 | field[2] << 8 | field[3];
    return 0;
}

KVN_API int32_t kvn_convert_ip_int_to_string(uint32_t address, char* text) {
    if (text == nullptr) return 0;
    return std::sprintf(text, "%d.%d.%d.%d", static_cast<int>(address >> 24 & 0xFF),
                        static_cast<int>(address >> 16 & 0xFF), static_cast<int>(address >> 8 & 0xFF),
                        static_cast<int>(address & 0xFF));
}

}  // extern "C"
