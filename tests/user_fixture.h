// A user record with every field set to a value of its own and full templates,
// shared by the wire and end-to-end tests of the user family.
#pragma once

#include <cstring>
#include <memory>

#include "kvnsdk2.h"
#include "peer.h"

namespace kvntest {

inline Bytes template_bytes(uint32_t slot, uint32_t n = KVN_USER_TEMPLATE_SIZE) {
    Bytes b(n);
    for (uint32_t k = 0; k < n; ++k) b[k] = uint8_t(k * 7 + slot * 31 + 1);
    return b;
}

// Templates of slot i hold template_bytes(i + id[0]); attributes 11, 12 and 16 fit one byte.
inline std::unique_ptr<kvn_user_record> full_user(const char* id = "u7", int32_t templates = 10) {
    auto r = std::make_unique<kvn_user_record>();
    std::memset(r.get(), 0, sizeof *r);
    std::strcpy(r->user_id, id);
    std::memcpy(r->text_t03, "three", r->text_t03_length = 5);
    std::memcpy(r->text_t04, "four", r->text_t04_length = 4);
    for (int32_t i = 0; i < templates; ++i) {
        r->templates[i] = {uint8_t(i), uint8_t(0x50 + i), uint8_t(0x60 + i), uint8_t(0x70 + i), {}, 1572};
        std::memcpy(r->templates[i].template_data, template_bytes(uint32_t(i + id[0])).data(), 1572);
    }
    r->template_count = templates;
    r->attr_t06 = 0x06, r->attr_t29 = 0x29, r->attr_t05 = 0x505, r->attr_t08 = 0x808, r->attr_t09 = 0x909;
    r->attr_t11 = 0x11, r->attr_t12 = 0x12, r->attr_t13 = 0x13, r->attr_t14 = 0x14, r->attr_t16 = 0x16;
    r->attr_t18 = 0x1818, r->attr_t33 = 0x33;
    std::strcpy(r->text_t10, "ten"), std::strcpy(r->text_t19, "nineteen"), std::strcpy(r->text_t20, "twenty");
    for (uint8_t k = 0; k < 16; ++k) r->data_t32[k] = uint8_t(0x32 + k);
    r->attr_t35[0] = 0x3501, r->attr_t35[1] = 0x3502, r->attr_t35[2] = 0x3503, r->attr_t35_count = 3;
    return r;
}

// What a read gives back of a stored user: everything but attributes 29 and 32.
inline std::unique_ptr<kvn_user_record> as_read_back(const kvn_user_record& written) {
    auto r = std::make_unique<kvn_user_record>(written);
    r->attr_t29 = 0, std::memset(r->data_t32, 0, sizeof r->data_t32);
    return r;
}

}  // namespace kvntest
