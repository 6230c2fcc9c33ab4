// Card and Wiegand exports on the wire: each request with a payload as one row of
// hand-derived bytes (the request type and command id of every export are checked in
// test_commands.cpp), the readers on answers with a value of its own in every field, and
// the deliberate copy rules with values that a zero-extending or clearing decoder fails.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>

#include "records.h"
#include "records_cards.h"

using namespace kvntest;

namespace {

Bytes format_bytes(uint32_t type) {  // what each type sends, in its order
    const Bytes head = cat({u32(2, type), u8(3, type == 0 ? 1 : 9)});
    if (type == 0) return cat({head, u8(5, 0x55)});
    Bytes b = cat({head, el(19, {0x2B, 0x1A}), text(4, "W26"), el(6, Bytes(64, 0x60))});
    for (uint8_t t = 20; type == 2 && t <= 23; ++t) b = cat({b, el(t, Bytes(64, uint8_t(0x61 + t - 20)))});
    for (uint8_t i = 0; type == 2 && i < 8; ++i) b = cat({b, el(i < 4 ? 25 : 24, Bytes(64, uint8_t(i < 4 ? 0x50 + i : 0x3C + i)))});
    return b;
}

}  // namespace

TEST(CardsWire, EveryPayload) {
    kvn_csn_setting csn{0x01020304, 0x0A0B0C0D};
    kvn_key_manipulation_flags flags{0x0505, 0x2020, 0x1919};
    auto keys = make<kvn_smart_card_access_keys>([](auto& k) { put(k.key_1, Bytes(16, 1)), put(k.key_4, Bytes(16, 4)); });
    auto mi_none = make<kvn_mifare_cards_layout>([](auto&) {});
    auto hi = hid(8), hi_two = hid(8);
    auto sr_empty = srl();
    auto multi = multi_input();
    auto f0 = wiegand_format(0), f1 = wiegand_format(1), f2 = wiegand_format(2);
    auto in = make<kvn_wiegand_input_setting>([](auto& i) { fill_input(i, 0); });
    auto pulse = make<kvn_wiegand_pulse_setting>([](auto& p) { p.attr_t07 = 0x07, p.attr_t08 = 0x0808; });
    hi_two->hid_layout_1_flag = 0, sr_empty->server[0] = 0, f0->format_id = 7, f1->parity_count_t24 = 9;
    uint16_t pref = 0x0102;
#define CALL(...) [&](kvn_device_conn* c) { return __VA_ARGS__; }
    expect_payloads({
        {CALL(kvn_set_csn_setting(c, &csn)), cat({u32(1, 0x01020304), u32(2, 0x0A0B0C0D)})},
        {CALL(kvn_set_pacs_setting(c, 1)), {0x29, 0x04, 0x01, 0x00, 0x00, 0x00}},
        {CALL(kvn_set_smart_card_access_keys(c, keys.get())), cat({el(6, Bytes(16, 1)), el(3, Bytes(16, 0)), el(4, Bytes(16, 0)), el(16, Bytes(16, 4))})},
        {CALL(kvn_set_mifare_cards_layout(c, mi_none.get())), {}},
        {kvn_reset_mifare1k_card_layout, {0x0B, 0x04, 0x08, 0x00, 0x00, 0x00}},
        {kvn_reset_mifare4k_card_layout, {0x0B, 0x04, 0x18, 0x00, 0x00, 0x00}},
        {CALL(kvn_set_hid_cards_layout(c, hi.get())), kHidBytes},
        {CALL(kvn_set_hid_cards_layout(c, hi_two.get())), Bytes(kHidBytes.begin() + 3 + 258, kHidBytes.end())},
        {CALL(kvn_set_key_manipulation_flags(c, &flags)), cat({u32(5, 0x0505), u32(20, 0x2020), u32(19, 0x1919)})},
        {CALL(kvn_set_srl_server_settings(c, sr_empty.get())), cat({u32(1, 0x141), u32(3, 0x343), {0x02, 0x00}})},
        {CALL(kvn_set_card_preference_settings(c, &pref)), {0x28, 0x02, 0x02, 0x01}},
        {CALL(kvn_upload_wiegand_format(c, f0.get())), format_bytes(0)},
        {CALL(kvn_upload_wiegand_format(c, f1.get())), format_bytes(1)},
        {CALL(kvn_upload_wiegand_format(c, f2.get())), format_bytes(2)},
        {CALL(kvn_delete_wiegand_format(c, 0xD4)), {0x03, 0x01, 0xD4}},
        {CALL(kvn_set_wiegand_input_setting(c, in.get())), input_bytes(0)},
        {CALL(kvn_set_wiegand_pulse_setting(c, pulse.get())), {0x07, 0x01, 0x07, 0x08, 0x02, 0x08, 0x08}},
        {CALL(kvn_set_multi_wiegand_input_setting(c, multi.get())), multi_input_bytes(5)},
    });
#undef CALL
    EXPECT_EQ(f0->format_id, 1);  // type 0 changed the caller's record
    EXPECT_EQ(multi_input_bytes(5).size(), 138u);
}

// The readers; where a set sends what its get reads, both ways at once.
TEST(CardsWire, ReadersStoreEveryFieldByItsTag) {
    auto card = make<kvn_card_serial_number>([](auto& c) { put(c.serial, ramp(64, 0x40)), c.serial_info = 0x11; });
    expect_decodes("card, 80 bytes cut to 64", kvn_read_card_serial_number, cat({el(12, ramp(80, 0x40)), u32(11, 0x11)}), *card);
    expect_decodes("prox card", [](auto c, kvn_card_serial_number* r) { return kvn_read_prox_card_serial_number(c, r->serial); },
                   cat({el(12, {7}), el(2, ramp(70, 0x40))}), *make<kvn_card_serial_number>([](auto& c) { put(c.serial, ramp(64, 0x40)); }));
    expect_decodes("csn", kvn_get_csn_setting, cat({u32(2, 0x0B0C), u32(1, 0x0102)}), kvn_csn_setting{0x0102, 0x0B0C});
    expect_decodes("pacs reads tag 1, not 41", kvn_get_pacs_setting, cat({u32(1, 0x917), u32(41, 5)}), uint32_t{0x917});
    expect_both_ways("mifare", kvn_set_mifare_cards_layout, kvn_get_mifare_cards_layout, kMifareBytes, *mifare());
    expect_decodes("hid: an 8-byte value sets byte 0 only", kvn_get_hid_cards_layout, kHidBytes, *hid(1));
    expect_both_ways("desfire", kvn_set_desfire_settings, kvn_get_desfire_settings, kDesfireBytes, *desfire());
    expect_decodes("key flags", kvn_get_key_manipulation_flags, cat({u32(19, 3), u32(5, 1), u32(20, 2)}), kvn_key_manipulation_flags{1, 2, 3});
    expect_both_ways("srl", kvn_set_srl_server_settings, kvn_get_srl_server_settings, kSrlBytes, *srl());
    expect_decodes("input", kvn_get_wiegand_input_setting, input_bytes(2), *make<kvn_wiegand_input_setting>([](auto& i) { fill_input(i, 2); }));
    expect_both_ways("output", kvn_set_wiegand_output_setting, kvn_get_wiegand_output_setting, kOutputBytes, *output());
    expect_decodes("pulse", kvn_get_wiegand_pulse_setting, Bytes{0x08, 0x02, 0x08, 0x08, 0x07, 0x01, 0x07},
                   *make<kvn_wiegand_pulse_setting>([](auto& p) { p.attr_t07 = 0x07, p.attr_t08 = 0x0808; }));
    expect_decodes("multi input, seven groups", kvn_get_multi_wiegand_input_setting, multi_input_bytes(7), *multi_input());
}

// Each rule starting from a record of 0xEE bytes.
TEST(CardsWire, DeliberateCopyRules) {
    auto mi = make<kvn_mifare_cards_layout>([](auto& m) { m.mifare1k_layout[0] = 1, put(m.mifare4k_layout, ramp(255, 0x80)); }, 0xEE);
    expect_decodes("mifare: 256 bytes store the first", kvn_get_mifare_cards_layout, cat({el(7, ramp(256, 1)), el(9, ramp(255, 0x80))}), *mi, 0xEE);
    auto hi = make<kvn_hid_cards_layout>([](auto& h) { put(h.hid_value, ramp(7, 0x70)), h.hid_layout_2[0] = 0x90; }, 0xEE);
    expect_decodes("hid: 7 bytes copied", kvn_get_hid_cards_layout, cat({el(33, ramp(7, 0x70)), el(31, ramp(300, 0x90))}), *hi, 0xEE);
    auto sr = make<kvn_srl_server_settings>([](auto& s) { std::memcpy(s.server, "ab", 2); }, 0xEE);
    expect_decodes("srl: not terminated", kvn_get_srl_server_settings, text(2, "ab"), *sr, 0xEE);
    expect_decodes("preference: one byte", kvn_get_card_preference_settings, el(40, {0x34}), uint16_t{0xEE34}, 0xEE);
    expect_decodes("preference: too long", kvn_get_card_preference_settings, cat({el(40, {1, 2, 3}), u8(9, 1)}), uint16_t{0xEEEE},
                   0xEE, KVN_E_INVALID_LENGTH_RECEIVED);
    expect_decodes("preference: a later value", kvn_get_card_preference_settings, cat({el(40, {1, 2, 3, 4}), el(40, {0x11, 0x22})}),
                   uint16_t{0x2211}, 0xEE, KVN_E_INVALID_LENGTH_RECEIVED);
    auto o = make<kvn_wiegand_output_setting>([](auto& x) { x.attr_t26 = 0xEEEE2726; }, 0xEE);
    expect_decodes("output: whole value", kvn_get_wiegand_output_setting, el(26, {0x26, 0x27}), *o, 0xEE);
    auto m = make<kvn_multi_wiegand_input_setting>([](auto& x) { x.attr_t33 = 0xEEEEEE01, x.inputs[0].attr_t09 = 0xEEEE0201; }, 0xEE);
    expect_decodes("multi: whole values", kvn_get_multi_wiegand_input_setting, cat({el(33, {1}), box(31, el(9, {1, 2}))}), *m, 0xEE);
}

TEST(CardsWire, WiegandFormatChecksListAndAnswerCapacity) {
    kvn_device_conn unopened{};  // refused before anything could be sent
    auto f = wiegand_format(3);
    EXPECT_EQ(kvn_upload_wiegand_format(&unopened, f.get()), KVN_E_INVALID_WIEGAND_TYPE);
    f = wiegand_format(2), f->parity_count_t24 = 5;
    EXPECT_EQ(kvn_upload_wiegand_format(&unopened, f.get()), KVN_E_PARITIES_CREATED_THAN_SUPPORTED);
    f->parity_count_t24 = 0, f->parity_count_t25 = 5;
    EXPECT_EQ(kvn_upload_wiegand_format(&unopened, f.get()), KVN_E_PARITIES_CREATED_THAN_SUPPORTED);
    // Upload and delete take an answer shorter than their request only (3 and 12 bytes here).
    EXPECT_EQ(capture([](auto c) { return kvn_delete_wiegand_format(c, 1); }, response(0, {9, 0})).rc, 0);
    EXPECT_EQ(capture([](auto c) { return kvn_delete_wiegand_format(c, 1); }, response(0, {9, 1, 0})).rc, -1);
    f = wiegand_format(0);
    EXPECT_EQ(capture([&](auto c) { return kvn_upload_wiegand_format(c, f.get()); }, response(0, Bytes(12, 0))).rc, -1);
    // The list: its count cleared first, names cut to 50 bytes, no more than 20 kept.
    Bytes answer;
    auto want = make<kvn_wiegand_format_list>([](auto& l) { l.count = 20; }, 'q');
    for (uint8_t i = 0; i < 22; ++i) {
        const std::string name = i == 3 ? std::string(60, 'n') : "f" + std::to_string(i);
        answer = cat({answer, box(1, cat({u8(3, uint8_t(0xA0 + i)), text(4, name)}))});
        if (i < 20) want->format_ids[i] = uint8_t(0xA0 + i), std::memcpy(want->format_names[i], name.data(), std::min<size_t>(name.size(), 50));
    }
    expect_decodes("format list", kvn_get_wiegand_format_list, answer, *want, 'q');
    expect_decodes("format list, empty", kvn_get_wiegand_format_list, {}, *make<kvn_wiegand_format_list>([](auto& l) { l.count = 0; }, 'q'), 'q');
}
