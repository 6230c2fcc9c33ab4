// Card and Wiegand records in which every field carries a value of its own, and their
// elements written out by hand in wire order: the wire test checks both directions
// against these bytes, the end-to-end test sends the records.
#pragma once

#include <cstddef>
#include <cstring>
#include <memory>

#include "kvnsdk2.h"
#include "peer.h"

namespace kvntest {

inline Bytes ramp(size_t n, uint8_t first) {  // n bytes counting up from `first`
    Bytes b(n);
    for (size_t i = 0; i < n; ++i) b[i] = uint8_t(first + i);
    return b;
}
inline void put(uint8_t* to, const Bytes& b) { std::memcpy(to, b.data(), b.size()); }
// A record on the heap, padding and all cleared, then filled in place (a copy need not
// keep padding, and the tests compare whole records).
template <class T, class Fill>
std::unique_ptr<T> make(Fill fill, int byte = 0) {
    auto p = std::make_unique<T>();
    std::memset(p.get(), byte, sizeof(T));
    fill(*p);
    return p;
}

inline auto mifare() {
    return make<kvn_mifare_cards_layout>([](auto& m) {
        put(m.mifare1k_layout, ramp(255, 1)), put(m.mifare4k_layout, ramp(255, 0x80));
        m.mifare1k_flag = 0x18, m.mifare4k_flag = 0x1A;
    });
}
const Bytes kMifareBytes = cat({u8(8, 0x18), el(7, ramp(255, 1)), u8(10, 0x1A), el(9, ramp(255, 0x80))});
inline auto hid(size_t value_bytes) {  // a read keeps only the first byte of an 8-byte value
    return make<kvn_hid_cards_layout>([=](auto& h) {
        put(h.hid_layout_1, ramp(255, 2)), put(h.hid_layout_2, ramp(255, 0x90)), put(h.hid_value, ramp(value_bytes, 0x33));
        h.hid_layout_1_flag = 0x30, h.hid_layout_2_flag = 0x32, h.hid_value_flag = 0x34;
    });
}
const Bytes kHidBytes = cat({u8(30, 0x30), el(29, ramp(255, 2)), u8(32, 0x32), el(31, ramp(255, 0x90)), u8(34, 0x34),
                             el(33, ramp(8, 0x33))});
inline auto desfire() {
    return make<kvn_desfire_settings>([](auto& d) { d.desfire_value_1 = 0x0D0C, d.desfire_value_2 = 0x0E, d.desfire_value_3 = 0x0F1E; });
}
const Bytes kDesfireBytes = cat({u32(13, 0x0D0C), u8(14, 0x0E), u32(15, 0x0F1E)});
inline auto srl() {
    return make<kvn_srl_server_settings>([](auto& s) { s.srl_value_1 = 0x141, s.srl_value_2 = 0x343, std::strcpy(s.server, "srl.test"); });
}
const Bytes kSrlBytes = cat({u32(1, 0x141), u32(3, 0x343), text(2, "srl.test")});
inline void fill_input(kvn_wiegand_input_setting& in, uint8_t k) {
    in.attr_t03 = uint8_t(0x30 + k), in.attr_t09 = 0x900u + k, in.attr_t29 = 0x2900u + k, in.attr_t01 = uint8_t(0x10 + k);
}
inline Bytes input_bytes(uint8_t k) {
    return cat({u8(3, uint8_t(0x30 + k)), u32(9, 0x900u + k), u32(29, 0x2900u + k), u8(1, uint8_t(0x10 + k))});
}
inline auto output() {
    return make<kvn_wiegand_output_setting>([](auto& o) {
        o.attr_t10 = 0x1010, o.attr_t26 = 0x2626, o.attr_t27 = 0xB8, o.attr_t28 = 0xB9;
        put(reinterpret_cast<uint8_t*>(&o) + offsetof(kvn_wiegand_output_setting, attr_t11), ramp(8, 0xB0));  // 11 to 18
    });
}
const Bytes kOutputBytes = cat({u32(10, 0x1010), u32(26, 0x2626), u8(11, 0xB0), u8(12, 0xB1), u8(13, 0xB2), u8(14, 0xB3),
                                u8(15, 0xB4), u8(16, 0xB5), u8(17, 0xB6), u8(18, 0xB7), u8(27, 0xB8), u8(28, 0xB9)});
inline auto multi_input() {
    return make<kvn_multi_wiegand_input_setting>([](auto& m) {
        m.attr_t32 = 0x32, m.attr_t33 = 0x33, m.attr_t34 = 0x34;
        for (uint8_t k = 0; k < KVN_MULTI_WIEGAND_INPUTS; ++k) fill_input(m.inputs[k], k);
    });
}
inline Bytes multi_input_bytes(uint8_t groups) {
    Bytes b = cat({u32(32, 0x32), u32(33, 0x33), u32(34, 0x34)});
    for (uint8_t k = 0; k < groups; ++k) b = cat({b, box(31, input_bytes(k))});
    return b;
}
inline auto wiegand_format(uint32_t type) {  // four parity definitions of each kind
    return make<kvn_wiegand_format>([=](auto& f) {
        f.format_id = 9, f.wiegand_type = type, f.attr_t19 = 0x1A2B, f.attr_t05 = 0x55, std::strcpy(f.format_name, "W26");
        f.parity_count_t24 = 4, f.parity_count_t25 = 4;
        for (uint8_t i = 0; i < 5; ++i)  // the five masks, 06 and 20 to 23
            std::memset(reinterpret_cast<uint8_t*>(&f) + offsetof(kvn_wiegand_format, mask_t06) + 64 * i, 0x60 + i, 64);
        for (uint8_t i = 0; i < 4; ++i) std::memset(f.parity_masks_t24[i], 0x40 + i, 64), std::memset(f.parity_masks_t25[i], 0x50 + i, 64);
    });
}

}  // namespace kvntest
