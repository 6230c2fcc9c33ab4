// Card and Wiegand records in which every field carries a value of its own, with
// their elements written out by hand in wire order. The wire test checks both
// directions against these bytes; the end-to-end tests send the records.
#pragma once

#include <cstring>
#include <memory>

#include "kvnsdk2.h"
#include "peer.h"
#include "records.h"

namespace kvntest {

// n bytes counting up from `first`.
inline Bytes ramp(size_t n, uint8_t first) {
    Bytes b(n);
    for (size_t i = 0; i < n; ++i) b[i] = uint8_t(first + i);
    return b;
}
inline void put(uint8_t* to, const Bytes& b) { std::memcpy(to, b.data(), b.size()); }
// A record on the heap with its padding cleared; builders fill it in place, since a
// copy need not keep padding and the tests compare whole records.
template <class T>
std::unique_ptr<T> cleared() {
    auto p = std::make_unique<T>();
    std::memset(p.get(), 0, sizeof(T));
    return p;
}

inline std::unique_ptr<kvn_mifare_cards_layout> mifare() {
    auto m = cleared<kvn_mifare_cards_layout>();
    put(m->mifare1k_layout, ramp(255, 1)), put(m->mifare4k_layout, ramp(255, 0x80));
    m->mifare1k_flag = 0x18, m->mifare4k_flag = 0x1A;
    return m;
}
const Bytes kMifareBytes = cat({u8(8, 0x18), el(7, ramp(255, 1)), u8(10, 0x1A), el(9, ramp(255, 0x80))});

// hid_value: only its first byte comes back from an 8-byte value.
inline std::unique_ptr<kvn_hid_cards_layout> hid(bool whole_value) {
    auto h = cleared<kvn_hid_cards_layout>();
    put(h->hid_layout_1, ramp(255, 2)), put(h->hid_layout_2, ramp(255, 0x90)), put(h->hid_value, ramp(whole_value ? 8 : 1, 0x33));
    h->hid_layout_1_flag = 0x30, h->hid_layout_2_flag = 0x32, h->hid_value_flag = 0x34;
    return h;
}
const Bytes kHidBytes = cat({u8(30, 0x30), el(29, ramp(255, 2)), u8(32, 0x32), el(31, ramp(255, 0x90)),
                             u8(34, 0x34), el(33, ramp(8, 0x33))});

inline std::unique_ptr<kvn_desfire_settings> desfire() {
    auto d = cleared<kvn_desfire_settings>();
    d->desfire_value_1 = 0x0D0C0B0A, d->desfire_value_2 = 0x0E, d->desfire_value_3 = 0x1F1E1D1C;
    return d;
}
const Bytes kDesfireBytes = cat({u32(13, 0x0D0C0B0A), u8(14, 0x0E), u32(15, 0x1F1E1D1C)});

inline std::unique_ptr<kvn_srl_server_settings> srl() {
    auto s = cleared<kvn_srl_server_settings>();
    s->srl_value_1 = 0x141, s->srl_value_2 = 0x343;
    std::strcpy(s->server, "srl.example.test");
    return s;
}
const Bytes kSrlBytes = cat({u32(1, 0x141), u32(3, 0x343), text(2, "srl.example.test")});

inline std::unique_ptr<kvn_wiegand_input_setting> input(uint8_t k) {
    auto in = cleared<kvn_wiegand_input_setting>();
    in->attr_t03 = uint8_t(0x30 + k), in->attr_t09 = 0x0909u + k, in->attr_t29 = 0x2929u + k, in->attr_t01 = uint8_t(0x10 + k);
    return in;
}
inline Bytes input_bytes(uint8_t k) {
    return cat({u8(3, uint8_t(0x30 + k)), u32(9, 0x0909u + k), u32(29, 0x2929u + k), u8(1, uint8_t(0x10 + k))});
}

inline std::unique_ptr<kvn_wiegand_output_setting> output() {
    auto o = cleared<kvn_wiegand_output_setting>();
    o->attr_t10 = 0x1010, o->attr_t26 = 0x26262626;
    uint8_t* bytes[] = {&o->attr_t11, &o->attr_t12, &o->attr_t13, &o->attr_t14, &o->attr_t15,
                        &o->attr_t16, &o->attr_t17, &o->attr_t18, &o->attr_t27, &o->attr_t28};
    for (uint8_t i = 0; i < 10; ++i) *bytes[i] = uint8_t(0xB0 + i);
    return o;
}
const Bytes kOutputBytes = cat({u32(10, 0x1010), u32(26, 0x26262626), u8(11, 0xB0), u8(12, 0xB1), u8(13, 0xB2),
                                u8(14, 0xB3), u8(15, 0xB4), u8(16, 0xB5), u8(17, 0xB6), u8(18, 0xB7), u8(27, 0xB8),
                                u8(28, 0xB9)});

inline std::unique_ptr<kvn_multi_wiegand_input_setting> multi_input() {
    auto m = cleared<kvn_multi_wiegand_input_setting>();
    m->attr_t32 = 0x32, m->attr_t33 = 0x33, m->attr_t34 = 0x34;
    for (uint8_t k = 0; k < KVN_MULTI_WIEGAND_INPUTS; ++k) std::memcpy(&m->inputs[k], input(k).get(), sizeof m->inputs[k]);
    return m;
}
inline Bytes multi_input_bytes(uint8_t groups) {
    Bytes b = cat({u32(32, 0x32), u32(33, 0x33), u32(34, 0x34)});
    for (uint8_t k = 0; k < groups; ++k) b = cat({b, box(31, input_bytes(k))});
    return b;
}

// A type-2 format with four parity definitions of each kind.
inline std::unique_ptr<kvn_wiegand_format> wiegand_format(uint32_t type) {
    auto f = cleared<kvn_wiegand_format>();
    f->format_id = 9, f->wiegand_type = type, f->attr_t19 = 0x1A2B, f->attr_t05 = 0x55;
    f->parity_count_t24 = 4, f->parity_count_t25 = 4;
    std::strcpy(f->format_name, "W26");
    uint8_t* masks[] = {f->mask_t06, f->mask_t20, f->mask_t21, f->mask_t22, f->mask_t23};
    for (uint8_t i = 0; i < 5; ++i) put(masks[i], Bytes(64, uint8_t(0x60 + i)));
    for (uint8_t i = 0; i < 4; ++i) put(f->parity_masks_t24[i], Bytes(64, uint8_t(0x40 + i)));
    for (uint8_t i = 0; i < 4; ++i) put(f->parity_masks_t25[i], Bytes(64, uint8_t(0x50 + i)));
    return f;
}

}  // namespace kvntest
