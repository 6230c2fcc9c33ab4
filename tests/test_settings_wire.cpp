// Settings families on the wire: request payloads byte for byte, and decoders on
// hand-made responses.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>

#include "kvnsdk2.h"
#include "peer.h"

using kvntest::Bytes;
using kvntest::LoopbackPeer;
using kvntest::sock_t;

namespace {

struct Seen {
    uint32_t type = 0, command = 0;
    Bytes payload;
    int32_t rc = 99;
};

// Runs one export against a peer that records the request and answers `answer`.
Seen capture(const std::function<int32_t(kvn_device_conn*)>& call, const Bytes& answer = kvntest::response(0)) {
    Seen seen;
    LoopbackPeer peer([&](sock_t s) {
        const Bytes req = kvntest::read_request(s);
        if (req.size() >= 28) {
            seen.type = kvntest::get_le32(req.data() + 8) >> 16;
            seen.command = kvntest::get_le32(req.data() + 16);
            seen.payload.assign(req.begin() + 24, req.end() - 4);
        }
        kvntest::write_bytes(s, answer);
    });
    kvn_device_conn c = peer.conn();
    EXPECT_EQ(kvn_open_device_conn(&c), 0);
    seen.rc = call(&c);
    kvn_close_device_conn(&c);
    return seen;
}

void put32(Bytes& b, uint32_t v) { kvntest::put_le32(b, v); }
// A u32 element: tag, length 4, value.
Bytes e32(uint8_t tag, uint32_t v) {
    Bytes b = {tag, 4};
    put32(b, v);
    return b;
}
Bytes cat(std::initializer_list<Bytes> parts) {
    Bytes out;
    for (const Bytes& p : parts) out.insert(out.end(), p.begin(), p.end());
    return out;
}
// A container with the five-byte length form.
Bytes box(uint8_t tag, const Bytes& inner) {
    const auto n = static_cast<uint32_t>(inner.size());
    Bytes b = {tag, 0x84, static_cast<uint8_t>(n >> 24), static_cast<uint8_t>(n >> 16), static_cast<uint8_t>(n >> 8),
               static_cast<uint8_t>(n)};
    return cat({b, inner});
}

}  // namespace

TEST(LedWire, OneEntryIs75BytesWithTheMatrixColumnByColumn) {
    kvn_led_setting leds[KVN_LED_COUNT] = {};
    leds[0] = {1, 1, 0x0D, {{0x40, 0x50, 0x60}, {0x70, 0x80, 0x90}, {0xA0, 0xB0, 0xC0}}};
    const Seen s = capture([&](kvn_device_conn* c) { return kvn_set_single_led_setting(c, leds, 1); });
    EXPECT_EQ(s.rc, 0);
    EXPECT_EQ(s.type, KVN_REQ_SET);
    EXPECT_EQ(s.command, 104u);
    // matrix[row][col] has tag 4 + 3 * row + col; emitted column 0 rows 0..2, then column 1, column 2.
    const Bytes expect = box(1, cat({e32(3, 1), {2, 1, 1}, e32(13, 0x0D), e32(4, 0x40), e32(7, 0x70), e32(10, 0xA0),
                                     e32(5, 0x50), e32(8, 0x80), e32(11, 0xB0), e32(6, 0x60), e32(9, 0x90),
                                     e32(12, 0xC0)}));
    ASSERT_EQ(expect.size(), 75u);
    EXPECT_EQ(s.payload, expect);
}

TEST(LedWire, AllEntriesAreConsecutiveContainers) {
    kvn_led_setting buzzers[KVN_BUZZER_COUNT] = {};
    for (uint32_t i = 0; i < KVN_BUZZER_COUNT; ++i) buzzers[i].index = i + 1;
    const Seen b = capture([&](kvn_device_conn* c) { return kvn_set_all_buzzer_setting(c, buzzers); });
    EXPECT_EQ(b.command, 111u);
    ASSERT_EQ(b.payload.size(), 18u * 75u);
    EXPECT_EQ(b.payload[75 * 17 + 6 + 2], 18) << "last container carries entry 18";
    const Seen l = capture([&](kvn_device_conn* c) { return kvn_set_all_led_setting(c, buzzers); });
    EXPECT_EQ(l.payload.size(), 1275u);
    const Seen single = capture([&](kvn_device_conn* c) { return kvn_set_single_buzzer_setting(c, buzzers, 18); });
    EXPECT_EQ(single.payload, Bytes(b.payload.end() - 75, b.payload.end()));
    // Entry numbers outside the array send nothing.
    for (uint32_t bad : {0u, 19u}) {
        kvn_device_conn c{};
        EXPECT_EQ(kvn_set_single_buzzer_setting(&c, buzzers, bad), KVN_E_INVALID_VALUE_RECEIVED);
    }
}

TEST(AudioWire, SingleAndAllEntryEncodersDiffer) {
    kvn_audio_setting audio[KVN_AUDIO_COUNT] = {};
    audio[2].index = 3;
    std::strcpy(audio[2].short_text, "hi");
    std::strcpy(audio[2].long_text, "yo");
    audio[2].flag = 1;
    audio[2].value = 9;
    const Seen single = capture([&](kvn_device_conn* c) { return kvn_set_single_audio_setting(c, audio, 3); });
    Bytes short_whole(51, 0), long_whole(256, 0);
    short_whole[0] = 'h', short_whole[1] = 'i';
    long_whole[0] = 'y', long_whole[1] = 'o';
    EXPECT_EQ(single.payload, box(1, cat({e32(3, 3), {4, 51}, short_whole, {5, 1, 1}, {6, 0x82, 0x01, 0x00},
                                          long_whole, e32(8, 9)})));
    const Seen all = capture([&](kvn_device_conn* c) { return kvn_set_all_audio_setting(c, audio); });
    EXPECT_EQ(all.command, 110u);
    // Entry 3 is the third container; entries with empty texts omit tags 4 and 6.
    const Bytes empty_entry = box(1, cat({e32(3, 0), {5, 1, 0}, e32(7, 0)}));
    const Bytes third = box(1, cat({e32(3, 3), {4, 2, 'h', 'i'}, {5, 1, 1}, {6, 2, 'y', 'o'}, e32(7, 9)}));
    ASSERT_GE(all.payload.size(), 2 * empty_entry.size() + third.size());
    EXPECT_EQ(Bytes(all.payload.begin(), all.payload.begin() + static_cast<long>(empty_entry.size())), empty_entry);
    EXPECT_EQ(Bytes(all.payload.begin() + static_cast<long>(2 * empty_entry.size()),
                    all.payload.begin() + static_cast<long>(2 * empty_entry.size() + third.size())),
              third);
    EXPECT_EQ(all.payload.size(), 17 * empty_entry.size() + third.size());
}

TEST(AudioWire, StopSendsTheWholeSettingsBuffer) {
    const Seen s = capture([](kvn_device_conn* c) { return kvn_stop_audio(c); });
    EXPECT_EQ(s.command, 802u);
    EXPECT_EQ(s.type, KVN_REQ_SET);
    EXPECT_EQ(s.payload.size(), 20480u);
}

TEST(FlatWire, PayloadsInTableOrder) {
    struct Case {
        const char* name;
        std::function<int32_t(kvn_device_conn*)> call;
        uint32_t command;
        Bytes payload;
    };
    kvn_proximity_sensor_setting prox{1, 2, 3};
    kvn_next_sensor_setting next{1, 2};
    kvn_antishock_setting shock{1, 2, 3, 4, 5, 6, 7};
    kvn_lcd_setting lcd{5, "ok"};
    kvn_audio_play_request play{};
    play.value = 4;
    std::strcpy(play.long_text, "L");
    kvn_display_image_request img{"logo.png"};
    kvn_device_notification_setting note{};
    note.flag = 1;
    std::strcpy(note.text_b, "b");
    note.value = 2;
    const Case cases[] = {
        {"clear fire alarm", [](kvn_device_conn* c) { return kvn_clear_reenable_fire_alarm(c); }, 305,
         {0x09, 0x04, 0x01, 0x00, 0x00, 0x00}},
        {"clear anti-shock", [](kvn_device_conn* c) { return kvn_clear_reenable_antishock_alarm(c); }, 306,
         {0x01, 0x04, 0x01, 0x00, 0x00, 0x00}},
        {"fire alarm state", [](kvn_device_conn* c) { return kvn_set_fire_alarm_state(c, 0x01020304); }, 305,
         {0x07, 0x04, 0x04, 0x03, 0x02, 0x01}},
        {"sensor auto-on", [](kvn_device_conn* c) { return kvn_set_fingerprint_sensor_autoon_status(c, 1); }, 303,
         {0x01, 0x04, 0x01, 0x00, 0x00, 0x00}},
        {"next sensor", [&](kvn_device_conn* c) { return kvn_set_next_sensor_settings(c, &next); }, 166,
         {0x01, 0x04, 0x02, 0x00, 0x00, 0x00, 0x02, 0x04, 0x01, 0x00, 0x00, 0x00}},
        {"proximity", [&](kvn_device_conn* c) { return kvn_set_proximity_sensor_settings(c, &prox); }, 304,
         cat({e32(5, 1), e32(4, 2), e32(8, 3)})},
        {"anti-shock", [&](kvn_device_conn* c) { return kvn_set_antishock_settings(c, &shock); }, 306,
         cat({e32(2, 1), e32(3, 2), e32(4, 3), e32(5, 4), e32(6, 5), e32(7, 6), e32(8, 7)})},
        {"lcd", [&](kvn_device_conn* c) { return kvn_set_lcd_settings(c, &lcd); }, 149,
         cat({e32(1, 5), {2, 2, 'o', 'k'}})},
        {"play audio", [&](kvn_device_conn* c) { return kvn_play_audio(c, &play); }, 801,
         cat({{6, 1, 'L'}, e32(8, 4)})},
        {"display image", [&](kvn_device_conn* c) { return kvn_display_image(c, &img); }, 205,
         {3, 8, 'l', 'o', 'g', 'o', '.', 'p', 'n', 'g'}},
        {"notification", [&](kvn_device_conn* c) { return kvn_set_device_notification_setting(c, &note); }, 507,
         cat({{1, 1, 1}, {3, 1, 'b'}, e32(5, 2)})},
        {"open door", [](kvn_device_conn* c) { return kvn_open_door_for_time(c, 10, -1); }, 115,
         cat({e32(8, 10), e32(7, 0xFFFFFFFFu)})},
        {"close door", [](kvn_device_conn* c) { return kvn_close_door(c); }, 115, cat({e32(8, 0), e32(7, 0)})},
        {"clear door alarm", [](kvn_device_conn* c) { return kvn_clear_door_force_open_alarm(c); }, 115, e32(15, 1)},
    };
    for (const Case& k : cases) {
        const Seen s = capture(k.call);
        EXPECT_EQ(s.rc, 0) << k.name;
        EXPECT_EQ(s.type, KVN_REQ_SET) << k.name;
        EXPECT_EQ(s.command, k.command) << k.name;
        EXPECT_EQ(s.payload, k.payload) << k.name;
    }
}

TEST(BiometricWire, SettingsAre75BytesWithTheTagGap) {
    kvn_biometric_setting b{};
    b.setting_1 = 1;
    b.setting_8 = 8;
    b.setting_15 = 15;
    const Seen s = capture([&](kvn_device_conn* c) { return kvn_set_biometric_setting(c, &b); });
    EXPECT_EQ(s.command, 108u);
    EXPECT_EQ(s.payload, cat({e32(1, 1), e32(2, 0), e32(3, 0), e32(4, 0), e32(5, 0), {8, 1, 8}, e32(9, 0), e32(10, 0),
                              e32(11, 0), e32(12, 0), e32(13, 0), e32(14, 0), e32(15, 15)}));
    EXPECT_EQ(s.payload.size(), 75u);
}

TEST(BiometricWire, MultiUserSendsAllThreeGroups) {
    kvn_multi_user_verification_setting m{};
    m.value = 2;
    m.flag = 1;
    const Seen empty = capture([&](kvn_device_conn* c) { return kvn_set_multi_user_verification_setting(c, &m); });
    EXPECT_EQ(empty.command, 139u);
    ASSERT_EQ(empty.payload.size(), 78u);
    std::strcpy(m.groups[1].group_text, "ab");
    m.groups[1].group_value_a = 5;
    m.groups[1].group_value_b = 6;
    const Seen s = capture([&](kvn_device_conn* c) { return kvn_set_multi_user_verification_setting(c, &m); });
    const Bytes g0 = box(3, cat({{4, 1, 0}, e32(5, 0), {6, 0}, e32(7, 0)}));
    const Bytes g1 = box(3, cat({{4, 1, 1}, e32(5, 5), {6, 2, 'a', 'b'}, e32(7, 6)}));
    const Bytes g2 = box(3, cat({{4, 1, 2}, e32(5, 0), {6, 0}, e32(7, 0)}));
    EXPECT_EQ(s.payload, cat({e32(1, 2), {2, 1, 1}, g0, g1, g2}));
}

TEST(DoorWire, DacSetIs63BytesWithoutTheOpenTime) {
    kvn_dac_setting d{};
    d.dac_value_1 = 1;
    d.dac_value_10 = 10;
    d.dac_value_6 = 6;
    d.door_open_time = 99;
    d.dac_value_16 = 16;
    const Seen s = capture([&](kvn_device_conn* c) { return kvn_set_dac_settings(c, &d); });
    EXPECT_EQ(s.command, 115u);
    EXPECT_EQ(s.payload, cat({{1, 1, 1}, e32(2, 0), e32(3, 0), e32(4, 0), e32(10, 10), e32(11, 0), e32(12, 0),
                              e32(13, 0), e32(14, 0), e32(6, 6), e32(16, 16)}));
    EXPECT_EQ(s.payload.size(), 63u);
}

TEST(DoorWire, SetAnswerMustBeShorterThanTheRequest) {
    kvn_dac_setting d{};
    EXPECT_EQ(capture([&](kvn_device_conn* c) { return kvn_set_dac_settings(c, &d); },
                      kvntest::response(0, Bytes(62, 1))).rc, 0);
    EXPECT_EQ(capture([&](kvn_device_conn* c) { return kvn_set_dac_settings(c, &d); },
                      kvntest::response(0, Bytes(63, 1))).rc, -1);
    // The door actions send 12 and 6 bytes.
    EXPECT_EQ(capture([](kvn_device_conn* c) { return kvn_close_door(c); }, kvntest::response(0, Bytes(12, 1))).rc, -1);
    EXPECT_EQ(capture([](kvn_device_conn* c) { return kvn_clear_door_force_open_alarm(c); },
                      kvntest::response(0, Bytes(5, 1))).rc, 0);
}

TEST(Decoders, LedEntriesByNumberAndOutOfRangeDropped) {
    kvn_led_setting leds[KVN_LED_COUNT];
    std::memset(leds, 0xAB, sizeof leds);
    const Bytes payload = cat({
        box(1, cat({e32(3, 2), {2, 1, 1}, e32(13, 77), e32(7, 0x70), e32(12, 0xC0)})),
        box(1, cat({e32(3, 18), e32(13, 5)})),  // beyond 17 LEDs: dropped
        box(1, cat({e32(3, 0), e32(13, 6)})),
        {0x30, 1, 0x00},                          // unknown top-level tag skipped
    });
    const Seen s = capture([&](kvn_device_conn* c) { return kvn_get_led_setting(c, leds); },
                           kvntest::response(0, payload));
    EXPECT_EQ(s.type, KVN_REQ_GET);
    EXPECT_TRUE(s.payload.empty());
    ASSERT_EQ(s.rc, 0);
    EXPECT_EQ(leds[1].index, 2u);
    EXPECT_EQ(leds[1].enable, 1);
    EXPECT_EQ(leds[1].option, 77u);
    EXPECT_EQ(leds[1].matrix[1][0], 0x70u);
    EXPECT_EQ(leds[1].matrix[2][2], 0xC0u);
    EXPECT_EQ(leds[1].matrix[0][0], 0xABABABABu) << "missing tags leave fields as they were";
    EXPECT_EQ(leds[0].option, 0xABABABABu);
    EXPECT_EQ(leds[16].option, 0xABABABABu);
}

TEST(Decoders, MalformedInputKeepsEarlierFieldsAndStatusOnlyKeepsAll) {
    kvn_biometric_setting b;
    std::memset(&b, 0x11, sizeof b);
    const Bytes payload = cat({e32(1, 7), {8, 1, 3}, {2, 4, 1}});  // last element truncated
    EXPECT_EQ(capture([&](kvn_device_conn* c) { return kvn_get_biometric_setting(c, &b); },
                      kvntest::response(0, payload)).rc, -1);
    EXPECT_EQ(b.setting_1, 7u);
    EXPECT_EQ(b.setting_8, 3);
    EXPECT_EQ(b.setting_2, 0x11111111u);
    // No payload: the terminal's status comes back and nothing changes.
    kvn_biometric_setting before = b;
    EXPECT_EQ(capture([&](kvn_device_conn* c) { return kvn_get_biometric_setting(c, &b); },
                      kvntest::response(-1002)).rc, -1002);
    EXPECT_EQ(std::memcmp(&before, &b, sizeof b), 0);
}

TEST(Decoders, AudioTextsAreBoundedBy51Bytes) {
    kvn_audio_setting audio[KVN_AUDIO_COUNT];
    std::memset(audio, '#', sizeof audio);
    const Bytes long_text(200, 'x');
    const Bytes payload = box(1, cat({e32(3, 18), {6, 0x81, 200}, long_text, e32(7, 3), {5, 1, 9}}));
    ASSERT_EQ(capture([&](kvn_device_conn* c) { return kvn_get_audio_setting(c, audio); },
                      kvntest::response(0, payload)).rc, 0);
    EXPECT_EQ(std::string(audio[17].long_text, 52), std::string(51, 'x') + "#");
    EXPECT_EQ(audio[17].value, 3u);
    EXPECT_EQ(audio[17].flag, 9);
}

TEST(Decoders, DacOpenTimeAndUnusedTags) {
    kvn_dac_setting d;
    std::memset(&d, 0x22, sizeof d);
    const Bytes payload = cat({{1, 1, 5}, e32(8, 30), e32(5, 1), e32(9, 1), e32(16, 4)});
    ASSERT_EQ(capture([&](kvn_device_conn* c) { return kvn_get_dac_settings(c, &d); },
                      kvntest::response(0, payload)).rc, 0);
    EXPECT_EQ(d.dac_value_1, 5);
    EXPECT_EQ(d.door_open_time, 30u);
    EXPECT_EQ(d.dac_value_16, 4u);
    EXPECT_EQ(d.dac_value_2, 0x22222222u);
    // An empty element is malformed in this family.
    EXPECT_EQ(capture([&](kvn_device_conn* c) { return kvn_get_dac_settings(c, &d); },
                      kvntest::response(0, cat({e32(2, 9), {3, 0}}))).rc, -1);
    EXPECT_EQ(d.dac_value_2, 9u);
}

TEST(Decoders, MultiUserGroupsByPosition) {
    kvn_multi_user_verification_setting m;
    std::memset(&m, 0x33, sizeof m);
    const Bytes payload = cat({e32(1, 4), {2, 1, 1},
                               box(3, cat({{4, 1, 2}, e32(5, 50), {6, 70}, Bytes(70, 'g'), e32(7, 51)})),
                               box(3, cat({{4, 1, 7}, e32(5, 99)}))});  // no such group
    ASSERT_EQ(capture([&](kvn_device_conn* c) { return kvn_get_multi_user_verification_setting(c, &m); },
                      kvntest::response(0, payload)).rc, 0);
    EXPECT_EQ(m.value, 4u);
    EXPECT_EQ(m.groups[2].group_value_a, 50u);
    EXPECT_EQ(m.groups[2].group_value_b, 51u);
    EXPECT_EQ(std::string(m.groups[2].group_text), std::string(63, 'g'));
    EXPECT_EQ(m.groups[0].group_value_a, 0x33333333u);
}

TEST(Decoders, FingerprintTestDataIsCutAt98560) {
    auto test = std::make_unique<kvn_fingerprint_sensor_test>();
    test->test_value = 3;
    const Bytes data(100000, 0x5C);
    const Bytes payload = cat({{6, 0x84, 0x00, 0x01, 0x86, 0xA0}, data});
    const Seen s = capture([&](kvn_device_conn* c) { return kvn_test_fingerprint_sensor(c, test.get()); },
                           kvntest::response(0, payload));
    ASSERT_EQ(s.rc, 0);
    EXPECT_EQ(s.type, KVN_REQ_GET);
    EXPECT_EQ(s.command, 301u);
    EXPECT_EQ(s.payload, e32(7, 3));
    EXPECT_EQ(test->data_length, 98560u);
    EXPECT_EQ(test->data[98559], 0x5C);
}

TEST(Decoders, MediaListEntriesPairUpAndStopAtTheBound) {
    auto list = std::make_unique<kvn_media_list>();
    Bytes payload;
    for (int i = 0; i < 70; ++i) {
        const uint8_t d = static_cast<uint8_t>('0' + i % 10);
        payload = cat({payload, {11, 2, 'a', d}, {12, 1, d}});
    }
    ASSERT_EQ(capture([&](kvn_device_conn* c) { return kvn_retrieve_audio_list(c, list.get()); },
                      kvntest::response(0, payload)).rc, 0);
    EXPECT_EQ(list->total, 70u);
    EXPECT_EQ(list->count, static_cast<uint32_t>(KVN_MEDIA_LIST_MAX));
    EXPECT_STREQ(list->entries[13].name, "a3");
    EXPECT_STREQ(list->entries[13].text, "3");
    const Bytes images = cat({{1, 3, 'a', '.', 'j'}, {1, 3, 'b', '.', 'j'}, {2, 1, 'B'}});
    ASSERT_EQ(capture([&](kvn_device_conn* c) { return kvn_retrieve_image_list(c, list.get()); },
                      kvntest::response(0, images)).rc, 0);
    EXPECT_EQ(list->count, 2u);
    EXPECT_STREQ(list->entries[1].name, "b.j");
    EXPECT_STREQ(list->entries[0].text, "B");
    EXPECT_STREQ(list->entries[1].text, "");
}
