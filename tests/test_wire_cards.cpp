// Card and Wiegand exports on the wire: one row per export with its request word,
// command id and hand-derived payload; the decoders on hand-made answers with a value
// of its own in every field; the deliberate copy rules with values that a zero-extending
// or clearing decoder gets wrong.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "kvnsdk2.h"
#include "peer.h"
#include "records_cards.h"

using namespace kvntest;

namespace {

// Decoding `answer` into a record filled with `fill` gives `want`, every byte of it.
template <class Rec, class Get>
void expect_decodes(const char* name, Get get, const Bytes& answer, const Rec& want, uint8_t fill = 0,
                    int32_t rc = 0) {
    auto got = std::make_unique<Rec>();
    std::memset(got.get(), fill, sizeof(Rec));
    EXPECT_EQ(capture([&](kvn_device_conn* c) { return get(c, got.get()); }, response(0, answer)).rc, rc) << name;
    EXPECT_EQ(std::memcmp(got.get(), &want, sizeof(Rec)), 0) << name << ": a field differs";
}

Bytes format_bytes(uint32_t type) {  // the fields each type sends, in its order
    const Bytes head = cat({u32(2, type), u8(3, type == 0 ? 1 : 9)});
    if (type == 0) return cat({head, u8(5, 0x55)});
    Bytes b = cat({head, el(19, {0x2B, 0x1A}), text(4, "W26"), el(6, Bytes(64, 0x60))});
    if (type == 1) return b;
    for (uint8_t t : {20, 21, 22, 23}) b = cat({b, el(t, Bytes(64, uint8_t(0x61 + t - 20)))});
    for (uint8_t i = 0; i < 4; ++i) b = cat({b, el(25, Bytes(64, uint8_t(0x50 + i)))});
    for (uint8_t i = 0; i < 4; ++i) b = cat({b, el(24, Bytes(64, uint8_t(0x40 + i)))});
    return b;
}

}  // namespace

TEST(CardsWire, EveryExportsRequest) {
    auto card = zeroed<kvn_card_serial_number>();
    uint8_t prox[KVN_CARD_SERIAL_SIZE] = {};
    kvn_csn_setting csn{0x01020304, 0x0A0B0C0D};
    kvn_smart_card_access_keys keys;
    for (int k = 0; k < 4; ++k) std::memset(reinterpret_cast<uint8_t*>(&keys) + 16 * k, 0xA1 + k, 16);
    auto mi = mifare(), mi_none = cleared<kvn_mifare_cards_layout>();
    auto hi = hid(true), hi_two = hid(true);
    hi_two->hid_layout_1_flag = 0;
    auto de = desfire();
    kvn_key_manipulation_flags flags{0x05050505, 0x20202020, 0x19191919};
    auto sr = srl(), sr_empty = srl();
    sr_empty->server[0] = 0;
    uint16_t pref = 0x0102;
    uint32_t u = 0;
    auto f0 = wiegand_format(0), f1 = wiegand_format(1), f2 = wiegand_format(2);
    f0->format_id = 7, f1->parity_count_t24 = 9, f1->parity_count_t25 = 9;
    auto list = std::make_unique<kvn_wiegand_format_list>();
    auto in = input(0);
    auto out = output();
    kvn_wiegand_pulse_setting pulse{0x07, 0x0808};
    auto multi = multi_input();
    struct Row {
        const char* name;
        Call call;
        uint32_t word, command;
        Bytes payload;
    };
    const Row rows[] = {
        {"read card", [&](auto c) { return kvn_read_card_serial_number(c, &card); }, kGet, 901, {}},
        {"read prox card", [&](auto c) { return kvn_read_prox_card_serial_number(c, prox); }, kGet, 703, {}},
        {"set csn", [&](auto c) { return kvn_set_csn_setting(c, &csn); }, kSet, 902, cat({u32(1, 0x01020304), u32(2, 0x0A0B0C0D)})},
        {"get csn", [&](auto c) { return kvn_get_csn_setting(c, &csn); }, kGet, 902, {}},
        {"reset csn", kvn_reset_csn_setting, kReset, 902, {}},
        {"set pacs", [](auto c) { return kvn_set_pacs_setting(c, 1); }, kSet, 917, {0x29, 0x04, 0x01, 0x00, 0x00, 0x00}},
        {"get pacs", [&](auto c) { return kvn_get_pacs_setting(c, &u); }, kGet, 917, {}},
        {"reset pacs", kvn_reset_pacs_setting, kReset, 917, {}},
        {"set keys", [&](auto c) { return kvn_set_smart_card_access_keys(c, &keys); }, kSet, 903,
         cat({el(6, Bytes(16, 0xA1)), el(3, Bytes(16, 0xA2)), el(4, Bytes(16, 0xA3)), el(16, Bytes(16, 0xA4))})},
        {"reset keys", kvn_reset_smart_card_access_keys, kReset, 903, {}},
        {"set mifare", [&](auto c) { return kvn_set_mifare_cards_layout(c, mi.get()); }, kSet, 904, kMifareBytes},
        {"set mifare, no flag", [&](auto c) { return kvn_set_mifare_cards_layout(c, mi_none.get()); }, kSet, 904, {}},
        {"get mifare", [&](auto c) { return kvn_get_mifare_cards_layout(c, mi.get()); }, kGet, 904, {}},
        {"reset mifare 1k", kvn_reset_mifare1k_card_layout, kReset, 904, {0x0B, 0x04, 0x08, 0x00, 0x00, 0x00}},
        {"reset mifare 4k", kvn_reset_mifare4k_card_layout, kReset, 904, {0x0B, 0x04, 0x18, 0x00, 0x00, 0x00}},
        {"set hid", [&](auto c) { return kvn_set_hid_cards_layout(c, hi.get()); }, kSet, 913, kHidBytes},
        {"set hid, layout 1 off", [&](auto c) { return kvn_set_hid_cards_layout(c, hi_two.get()); }, kSet, 913,
         Bytes(kHidBytes.begin() + 3 + 258, kHidBytes.end())},
        {"get hid", [&](auto c) { return kvn_get_hid_cards_layout(c, hi.get()); }, kGet, 913, {}},
        {"reset hid", kvn_reset_hid_card_layout, kReset, 913, {}},
        {"set desfire", [&](auto c) { return kvn_set_desfire_settings(c, de.get()); }, kSet, 908, kDesfireBytes},
        {"get desfire", [&](auto c) { return kvn_get_desfire_settings(c, de.get()); }, kGet, 908, {}},
        {"reset desfire", kvn_reset_desfire_settings, kReset, 908, {}},
        {"set key flags", [&](auto c) { return kvn_set_key_manipulation_flags(c, &flags); }, kSet, 912,
         cat({u32(5, 0x05050505), u32(20, 0x20202020), u32(19, 0x19191919)})},
        {"get key flags", [&](auto c) { return kvn_get_key_manipulation_flags(c, &flags); }, kGet, 912, {}},
        {"reset key flags", kvn_reset_key_manipulation_flags, kReset, 912, {}},
        {"set srl", [&](auto c) { return kvn_set_srl_server_settings(c, sr.get()); }, kSet, 141, kSrlBytes},
        {"set srl, empty server", [&](auto c) { return kvn_set_srl_server_settings(c, sr_empty.get()); }, kSet, 141,
         cat({u32(1, 0x141), u32(3, 0x343), {0x02, 0x00}})},
        {"get srl", [&](auto c) { return kvn_get_srl_server_settings(c, sr.get()); }, kGet, 141, {}},
        {"reset srl", kvn_reset_srl_server_settings, kReset, 141, {}},
        {"set preference", [&](auto c) { return kvn_set_card_preference_settings(c, &pref); }, kSet, 916, {0x28, 0x02, 0x02, 0x01}},
        {"get preference", [&](auto c) { return kvn_get_card_preference_settings(c, &pref); }, kGet, 916, {}},
        {"reset preference", kvn_reset_card_preference_settings, kReset, 916, {}},
        {"upload type 0", [&](auto c) { return kvn_upload_wiegand_format(c, f0.get()); }, kSet, 701, format_bytes(0)},
        {"upload type 1", [&](auto c) { return kvn_upload_wiegand_format(c, f1.get()); }, kSet, 701, format_bytes(1)},
        {"upload type 2", [&](auto c) { return kvn_upload_wiegand_format(c, f2.get()); }, kSet, 701, format_bytes(2)},
        {"delete format", [](auto c) { return kvn_delete_wiegand_format(c, 0xD4); }, kSet, 704, {0x03, 0x01, 0xD4}},
        {"format list", [&](auto c) { return kvn_get_wiegand_format_list(c, list.get()); }, kGet, 702, {}},
        {"set input", [&](auto c) { return kvn_set_wiegand_input_setting(c, in.get()); }, kSet, 123, input_bytes(0)},
        {"get input", [&](auto c) { return kvn_get_wiegand_input_setting(c, in.get()); }, kGet, 123, {}},
        {"reset input", kvn_reset_wiegand_input_setting, kReset, 123, {}},
        {"set output", [&](auto c) { return kvn_set_wiegand_output_setting(c, out.get()); }, kSet, 124, kOutputBytes},
        {"get output", [&](auto c) { return kvn_get_wiegand_output_setting(c, out.get()); }, kGet, 124, {}},
        {"reset output", kvn_reset_wiegand_output_setting, kReset, 124, {}},
        {"set pulse", [&](auto c) { return kvn_set_wiegand_pulse_setting(c, &pulse); }, kSet, 130, {0x07, 0x01, 0x07, 0x08, 0x02, 0x08, 0x08}},
        {"get pulse", [&](auto c) { return kvn_get_wiegand_pulse_setting(c, &pulse); }, kGet, 130, {}},
        {"reset pulse", kvn_reset_wiegand_pulse_setting, kReset, 130, {}},
        {"set multi input", [&](auto c) { return kvn_set_multi_wiegand_input_setting(c, multi.get()); }, kSet, 165, multi_input_bytes(5)},
        {"get multi input", [&](auto c) { return kvn_get_multi_wiegand_input_setting(c, multi.get()); }, kGet, 165, {}},
        {"reset multi input", kvn_reset_multi_wiegand_input_setting, kReset, 165, {}},
    };
    for (const Row& r : rows) {
        const Seen s = capture(r.call);
        EXPECT_EQ(s.rc, 0) << r.name;
        EXPECT_EQ(s.word, r.word) << r.name;
        EXPECT_EQ(s.command, r.command) << r.name;
        EXPECT_BYTES(s.payload, r.payload) << r.name;
    }
    EXPECT_EQ(f0->format_id, 1);  // type 0 changed the caller's record
    EXPECT_EQ(multi_input_bytes(5).size(), 138u);
    EXPECT_EQ(format_bytes(2).size(), 6u + 3 + 4 + 5 + 13 * 66);
}

TEST(CardsWire, DecodersStoreEveryFieldByItsTag) {
    auto card = cleared<kvn_card_serial_number>();
    put(card->serial, ramp(64, 0x40)), card->serial_info = 0x11;
    expect_decodes("card, 80-byte serial cut to 64", kvn_read_card_serial_number, cat({el(12, ramp(80, 0x40)), u32(11, 0x11)}), *card);
    expect_decodes("csn", kvn_get_csn_setting, cat({u32(2, 0x0A0B0C0D), u32(1, 0x01020304)}), kvn_csn_setting{0x01020304, 0x0A0B0C0D});
    expect_decodes("pacs reads tag 1, not 41", kvn_get_pacs_setting, cat({u32(1, 0x917), u32(41, 5)}), uint32_t{0x917});
    expect_decodes("mifare", kvn_get_mifare_cards_layout, kMifareBytes, *mifare());
    expect_decodes("hid: 8-byte value sets byte 0 only", kvn_get_hid_cards_layout, kHidBytes, *hid(false));
    expect_decodes("desfire", kvn_get_desfire_settings, kDesfireBytes, *desfire());
    expect_decodes("key flags", kvn_get_key_manipulation_flags, cat({u32(19, 3), u32(5, 1), u32(20, 2)}), kvn_key_manipulation_flags{1, 2, 3});
    expect_decodes("srl", kvn_get_srl_server_settings, kSrlBytes, *srl());
    expect_decodes("input", kvn_get_wiegand_input_setting, input_bytes(2), *input(2));
    expect_decodes("output", kvn_get_wiegand_output_setting, kOutputBytes, *output());
    auto pulse = cleared<kvn_wiegand_pulse_setting>();
    pulse->attr_t07 = 0x07, pulse->attr_t08 = 0x0808;
    expect_decodes("pulse", kvn_get_wiegand_pulse_setting, Bytes{0x08, 0x02, 0x08, 0x08, 0x07, 0x01, 0x07}, *pulse);
    expect_decodes("multi input, groups after the fifth skipped", kvn_get_multi_wiegand_input_setting, multi_input_bytes(7), *multi_input());
}

// What the copy rules keep of a field: each case starts from a record filled with 0xEE.
TEST(CardsWire, DeliberateCopyRules) {
    auto mi = cleared<kvn_mifare_cards_layout>();
    std::memset(mi.get(), 0xEE, sizeof *mi);
    mi->mifare1k_layout[0] = 0x01;  // a 256-byte layout: only its first byte
    put(mi->mifare4k_layout, ramp(255, 0x80));
    expect_decodes("mifare lossy", kvn_get_mifare_cards_layout, cat({el(7, ramp(256, 1)), el(9, ramp(255, 0x80))}), *mi, 0xEE);
    auto hi = cleared<kvn_hid_cards_layout>();
    std::memset(hi.get(), 0xEE, sizeof *hi);
    put(hi->hid_value, ramp(7, 0x70)), hi->hid_layout_2[0] = 0x90;
    expect_decodes("hid lossy", kvn_get_hid_cards_layout, cat({el(33, ramp(7, 0x70)), el(31, ramp(300, 0x90))}), *hi, 0xEE);
    auto sr = std::make_unique<kvn_srl_server_settings>();
    std::memset(sr.get(), 0xEE, sizeof *sr);
    std::memcpy(sr->server, "ab", 2);  // not terminated
    expect_decodes("srl text", kvn_get_srl_server_settings, text(2, "ab"), *sr, 0xEE);
    // The preference: one byte changes the low byte; a longer value is kept out and
    // reported, and a later good element is still stored.
    expect_decodes("preference, one byte", kvn_get_card_preference_settings, el(40, {0x34}), uint16_t{0xEE34}, 0xEE);
    expect_decodes("preference, too long", kvn_get_card_preference_settings, cat({el(40, {1, 2, 3}), u8(9, 1)}), uint16_t{0xEEEE}, 0xEE, -1010);
    expect_decodes("preference, remembered", kvn_get_card_preference_settings, cat({el(40, {1, 2, 3, 4}), el(40, {0x11, 0x22})}), uint16_t{0x2211}, 0xEE, -1010);
    // Copied whole, bounded by the field: a short value changes only the low bytes.
    auto o = cleared<kvn_wiegand_output_setting>();
    std::memset(o.get(), 0xEE, sizeof *o);
    o->attr_t26 = 0xEEEE2726;
    expect_decodes("output tag 26", kvn_get_wiegand_output_setting, el(26, {0x26, 0x27}), *o, 0xEE);
    auto m = cleared<kvn_multi_wiegand_input_setting>();
    std::memset(m.get(), 0xEE, sizeof *m);
    m->attr_t33 = 0xEEEEEE01, m->inputs[0].attr_t09 = 0xEEEE0201;
    expect_decodes("multi whole values", kvn_get_multi_wiegand_input_setting,
                   cat({el(33, {1}), box(31, el(9, {1, 2}))}), *m, 0xEE);
}

TEST(CardsWire, WiegandFormatChecksListAndAnswerCapacity) {
    kvn_device_conn unopened{};  // refused before anything could be sent
    auto f = wiegand_format(3);
    EXPECT_EQ(kvn_upload_wiegand_format(&unopened, f.get()), KVN_E_INVALID_WIEGAND_TYPE);
    for (auto counts : {std::pair{5, 0}, std::pair{0, 5}}) {
        f = wiegand_format(2);
        f->parity_count_t24 = uint8_t(counts.first), f->parity_count_t25 = uint8_t(counts.second);
        EXPECT_EQ(kvn_upload_wiegand_format(&unopened, f.get()), KVN_E_PARITIES_CREATED_THAN_SUPPORTED);
    }
    // Upload and delete read their answer with the request's length as capacity.
    EXPECT_EQ(capture([](auto c) { return kvn_delete_wiegand_format(c, 1); }, response(0, {9, 0})).rc, 0);
    EXPECT_EQ(capture([](auto c) { return kvn_delete_wiegand_format(c, 1); }, response(0, {9, 1, 0})).rc, -1);
    f = wiegand_format(0);
    EXPECT_EQ(capture([&](auto c) { return kvn_upload_wiegand_format(c, f.get()); }, response(0, Bytes(12, 0))).rc, -1);

    // The list: its count cleared first, names cut to 50 bytes, no more than 20 kept.
    Bytes answer;
    auto want = std::make_unique<kvn_wiegand_format_list>();
    std::memset(want.get(), 'q', sizeof *want);
    want->count = KVN_WIEGAND_FORMAT_LIST_MAX;
    for (uint8_t i = 0; i < 22; ++i) {
        const std::string name = i == 3 ? std::string(60, 'n') : "f" + std::to_string(i);
        answer = cat({answer, box(1, cat({u8(3, uint8_t(0xA0 + i)), text(4, name)}))});
        if (i >= KVN_WIEGAND_FORMAT_LIST_MAX) continue;
        want->format_ids[i] = uint8_t(0xA0 + i);
        std::memcpy(want->format_names[i], name.data(), std::min<size_t>(name.size(), 50));
    }
    expect_decodes("format list", kvn_get_wiegand_format_list, answer, *want, 'q');
    std::memset(want.get(), 'q', sizeof *want);
    want->count = 0;  // an empty answer: only the count changes
    expect_decodes("format list, count cleared", kvn_get_wiegand_format_list, Bytes{}, *want, 'q');
}
