// The settings and door exports on the wire, against a loopback peer: every export's
// request word, command id and payload bytes (derived by hand from the wire format,
// one row each), and the decoders on hand-made answers in which every field carries a
// value of its own, so that a field stored under the wrong tag shows.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>

#include "kvnsdk2.h"
#include "peer.h"
#include "records.h"

using namespace kvntest;

namespace {

// The records' elements written out by hand. LED and buzzer entry i: the matrix goes
// out column by column (tags 4, 7, 10, 5, ...).
Bytes led_entry(uint32_t i) {
    Bytes in = cat({u32(3, i), u8(2, uint8_t(0x80 + i)), u32(13, i << 8 | 13)});
    for (uint32_t t : {4, 7, 10, 5, 8, 11, 6, 9, 12}) in = cat({in, u32(uint8_t(t), i << 8 | t)});
    return box(1, in);
}
Bytes led_entries(uint32_t count) {
    Bytes b;
    for (uint32_t i = 1; i <= count; ++i) b = cat({b, led_entry(i)});
    return b;
}

Bytes audio_entries() {  // the all-entries form: texts at their own length, value under tag 7
    Bytes b;
    for (uint32_t i = 1; i <= KVN_AUDIO_COUNT; ++i) {
        const Bytes texts4 = i == 3 ? text(4, "hi") : Bytes{}, texts6 = i == 3 ? text(6, "long text") : Bytes{};
        b = cat({b, box(1, cat({u32(3, i), texts4, u8(5, uint8_t(0x50 + i)), texts6, u32(7, 0x700 + i)}))});
    }
    return b;
}

Bytes multi_user_bytes() {  // empty group texts still go out, with length 0
    Bytes b = cat({u32(1, 0x101), u8(2, 0x22)});
    for (uint8_t g = 0; g < 3; ++g)
        b = cat({b, box(3, cat({u8(4, g), u32(5, 0x500u + g), text(6, g == 1 ? "night" : ""), u32(7, 0x700u + g)}))});
    return b;
}

const Bytes kBiometric = cat({u32(1, 0x101), u32(2, 0x102), u32(3, 0x103), u32(4, 0x104), u32(5, 0x105),
                              u8(8, 0x88), u32(9, 0x109), u32(10, 0x10A), u32(11, 0x10B), u32(12, 0x10C),
                              u32(13, 0x10D), u32(14, 0x10E), u32(15, 0x10F)});

const Bytes kLcd = cat({u32(1, 0x149), text(2, "Welcome")});

const Bytes kNotification = cat({u8(1, 0x11), text(2, "smtp.example.test"), text(4, "alarm"), u32(5, 0x55)});

// The set: eleven elements, 63 bytes, never tag 8.
const Bytes kDacSet = cat({u8(1, 0xD1), u32(2, 0x202), u32(3, 0x303), u32(4, 0x404), u32(10, 0xA0A), u32(11, 0xB0B),
                           u32(12, 0xC0C), u32(13, 0xD0D), u32(14, 0xE0E), u32(6, 0x606), u32(16, 0x1010)});

const Bytes kProxBytes = cat({u32(5, 0xA1), u32(4, 0xB2), u32(8, 0xC3)});
const Bytes kNextBytes = cat({u32(1, 0xB2), u32(2, 0xA1)});  // the second field first
const Bytes kShockBytes =
    cat({u32(2, 0x61), u32(3, 0x62), u32(4, 0x63), u32(5, 0x64), u32(6, 0x65), u32(7, 0x66), u32(8, 0x67)});

// Decoding `answer` into a cleared record gives `want`, every byte of it.
template <class Rec, class Get>
void expect_decodes(const char* name, Get get, const Bytes& answer, const Rec& want) {
    auto got = std::make_unique<Rec>();
    std::memset(got.get(), 0, sizeof(Rec));
    EXPECT_EQ(capture([&](kvn_device_conn* c) { return get(c, got.get()); }, response(0, answer)).rc, 0) << name;
    EXPECT_EQ(std::memcmp(got.get(), &want, sizeof(Rec)), 0) << name << ": a field differs";
}

}  // namespace

TEST(SettingsWire, EveryExportsRequest) {
    // The gets below are answered without a payload: they write nothing into these.
    Leds l = leds(KVN_BUZZER_COUNT);
    auto a = std::make_unique<Audio>(audio());
    kvn_multi_user_verification_setting m = multi_user();
    kvn_biometric_setting bio = biometric();
    kvn_lcd_setting lc = lcd();
    kvn_device_notification_setting note = notification();
    kvn_dac_setting d = dac();
    kvn_proximity_sensor_setting prox = kProx;
    kvn_next_sensor_setting next = kNext;
    kvn_antishock_setting shock = kShock;
    kvn_audio_play_request play{{}, "L", 0x804};
    kvn_display_image_request image{"logo.png"};
    auto sensor = std::make_unique<kvn_fingerprint_sensor_test>();
    sensor->test_value = 0x301;
    auto list = std::make_unique<kvn_media_list>();
    uint32_t u = 0;
    struct Row {
        const char* name;
        Call call;
        uint32_t word, command;
        Bytes payload;
    };
    const Row rows[] = {
        {"set single led", [&](auto c) { return kvn_set_single_led_setting(c, l.e, 1); }, kSet, 104, led_entry(1)},
        {"set all led", [&](auto c) { return kvn_set_all_led_setting(c, l.e); }, kSet, 104, led_entries(17)},
        {"get led", [&](auto c) { return kvn_get_led_setting(c, l.e); }, kGet, 104, {}},
        {"reset led", kvn_reset_led_setting, kReset, 104, {}},
        {"set single buzzer", [&](auto c) { return kvn_set_single_buzzer_setting(c, l.e, 18); }, kSet, 111,
         led_entry(18)},
        {"set all buzzer", [&](auto c) { return kvn_set_all_buzzer_setting(c, l.e); }, kSet, 111, led_entries(18)},
        {"get buzzer", [&](auto c) { return kvn_get_buzzer_setting(c, l.e); }, kGet, 111, {}},
        {"reset buzzer", kvn_reset_buzzer_setting, kReset, 111, {}},
        // The single-entry form: whole text arrays, value under tag 8.
        {"set single audio", [&](auto c) { return kvn_set_single_audio_setting(c, a->e, 3); }, kSet, 110,
         box(1, cat({u32(3, 3), el(4, whole("hi", 51)), u8(5, 0x53), el(6, whole("long text", 256)), u32(8, 0x703)}))},
        {"set all audio", [&](auto c) { return kvn_set_all_audio_setting(c, a->e); }, kSet, 110, audio_entries()},
        {"get audio", [&](auto c) { return kvn_get_audio_setting(c, a->e); }, kGet, 110, {}},
        {"reset audio", kvn_reset_audio_setting, kReset, 110, {}},
        {"play audio", [&](auto c) { return kvn_play_audio(c, &play); }, kSet, 801, cat({text(6, "L"), u32(8, 0x804)})},
        {"audio list", [&](auto c) { return kvn_retrieve_audio_list(c, list.get()); }, kGet, 803, {}},
        {"image list", [&](auto c) { return kvn_retrieve_image_list(c, list.get()); }, kGet, 140, {}},
        {"display image", [&](auto c) { return kvn_display_image(c, &image); }, kSet, 205, text(3, "logo.png")},
        {"set lcd", [&](auto c) { return kvn_set_lcd_settings(c, &lc); }, kSet, 149, kLcd},
        {"get lcd", [&](auto c) { return kvn_get_lcd_settings(c, &lc); }, kGet, 149, {}},
        {"reset lcd", kvn_reset_lcd_settings, kReset, 149, {}},
        {"set notification", [&](auto c) { return kvn_set_device_notification_setting(c, &note); }, kSet, 507,
         kNotification},
        {"get notification", [&](auto c) { return kvn_get_device_notification_setting(c, &note); }, kGet, 507, {}},
        {"reset notification", kvn_reset_device_notification_setting, kReset, 507, {}},
        {"set biometric", [&](auto c) { return kvn_set_biometric_setting(c, &bio); }, kSet, 108, kBiometric},
        {"get biometric", [&](auto c) { return kvn_get_biometric_setting(c, &bio); }, kGet, 108, {}},
        {"reset biometric", kvn_reset_biometric_setting, kReset, 108, {}},
        {"set multi-user", [&](auto c) { return kvn_set_multi_user_verification_setting(c, &m); }, kSet, 139,
         multi_user_bytes()},
        {"get multi-user", [&](auto c) { return kvn_get_multi_user_verification_setting(c, &m); }, kGet, 139, {}},
        {"reset multi-user", kvn_reset_multi_user_verification_setting, kReset, 139, {}},
        {"sensor test", [&](auto c) { return kvn_test_fingerprint_sensor(c, sensor.get()); }, kGet, 301,
         u32(7, 0x301)},
        {"reset sensor", kvn_reset_fingerprint_sensor, kReset, 302, {}},
        {"set auto-on", [](auto c) { return kvn_set_fingerprint_sensor_autoon_status(c, 0x303); }, kSet, 303,
         u32(1, 0x303)},
        {"get auto-on", [&](auto c) { return kvn_get_fingerprint_sensor_autoon_status(c, &u); }, kGet, 303, {}},
        {"reset auto-on", kvn_reset_fingerprint_sensor_autoon_status, kReset, 303, {}},
        {"set proximity", [&](auto c) { return kvn_set_proximity_sensor_settings(c, &prox); }, kSet, 304, kProxBytes},
        {"get proximity", [&](auto c) { return kvn_get_proximity_sensor_settings(c, &prox); }, kGet, 304, {}},
        {"reset proximity", kvn_reset_proximity_sensor_settings, kReset, 304, {}},
        {"set next sensor", [&](auto c) { return kvn_set_next_sensor_settings(c, &next); }, kSet, 166, kNextBytes},
        {"get next sensor", [&](auto c) { return kvn_get_next_sensor_settings(c, &next); }, kGet, 166, {}},
        {"reset next sensor", kvn_next_sensor_settings, kReset, 166, {}},
        {"set anti-shock", [&](auto c) { return kvn_set_antishock_settings(c, &shock); }, kSet, 306, kShockBytes},
        {"get anti-shock", [&](auto c) { return kvn_get_antishock_settings(c, &shock); }, kGet, 306, {}},
        {"reset anti-shock", kvn_reset_antishock_settings, kReset, 306, {}},
        {"clear anti-shock", kvn_clear_reenable_antishock_alarm, kSet, 306, {0x01, 0x04, 0x01, 0x00, 0x00, 0x00}},
        {"set fire alarm", [](auto c) { return kvn_set_fire_alarm_state(c, 0x01020304); }, kSet, 305,
         {0x07, 0x04, 0x04, 0x03, 0x02, 0x01}},
        {"get fire alarm", [&](auto c) { return kvn_get_fire_alarm_state(c, &u); }, kGet, 305, {}},
        {"reset fire alarm", kvn_reset_fire_alarm_state, kReset, 305, {}},
        {"clear fire alarm", kvn_clear_reenable_fire_alarm, kSet, 305, {0x09, 0x04, 0x01, 0x00, 0x00, 0x00}},
        {"set dac", [&](auto c) { return kvn_set_dac_settings(c, &d); }, kSet, 115, kDacSet},
        {"get dac", [&](auto c) { return kvn_get_dac_settings(c, &d); }, kGet, 115, {}},
        {"reset dac", kvn_reset_dac_settings, kReset, 115, {}},
        {"open door", [](auto c) { return kvn_open_door_for_time(c, 10, -2); }, kSet, 115,
         cat({u32(8, 10), u32(7, 0xFFFFFFFEu)})},
        {"close door", kvn_close_door, kSet, 115, cat({u32(8, 0), u32(7, 0)})},
        {"clear door alarm", kvn_clear_door_force_open_alarm, kSet, 115, u32(15, 1)},
    };
    for (const Row& r : rows) {
        const Seen s = capture(r.call);
        EXPECT_EQ(s.rc, 0) << r.name;
        EXPECT_EQ(s.word, r.word) << r.name;
        EXPECT_EQ(s.command, r.command) << r.name;
        EXPECT_BYTES(s.payload, r.payload) << r.name;
    }
    EXPECT_EQ(led_entry(1).size(), 75u);
    EXPECT_EQ(multi_user_bytes().size(), 78u + 5);  // 78 with three empty texts
    EXPECT_EQ(kBiometric.size(), 75u);
    EXPECT_EQ(kDacSet.size(), 63u);
    // Stop sends its whole settings buffer, whatever it holds.
    const Seen stop = capture(kvn_stop_audio);
    EXPECT_EQ(stop.word, kSet);
    EXPECT_EQ(stop.command, 802u);
    EXPECT_EQ(stop.payload.size(), 20480u);
    // Entry numbers outside the array send nothing (the connection is not even open).
    for (uint32_t bad : {0u, 19u}) {
        kvn_device_conn c{};
        EXPECT_EQ(kvn_set_single_buzzer_setting(&c, l.e, bad), KVN_E_INVALID_VALUE_RECEIVED);
        EXPECT_EQ(kvn_set_single_led_setting(&c, l.e, bad == 0 ? 0 : 18), KVN_E_INVALID_VALUE_RECEIVED);
    }
}

TEST(SettingsWire, DecodersStoreEveryFieldByItsTag) {
    expect_decodes("led", [](auto c, Leds* r) { return kvn_get_led_setting(c, r->e); }, led_entries(17), leds(17));
    expect_decodes("buzzer", [](auto c, Leds* r) { return kvn_get_buzzer_setting(c, r->e); }, led_entries(18),
                   leds(18));
    expect_decodes("audio", [](auto c, Audio* r) { return kvn_get_audio_setting(c, r->e); }, audio_entries(), audio());
    expect_decodes("multi-user", kvn_get_multi_user_verification_setting, multi_user_bytes(), multi_user());
    expect_decodes("biometric", kvn_get_biometric_setting, kBiometric, biometric());
    expect_decodes("lcd", kvn_get_lcd_settings, kLcd, lcd());
    expect_decodes("notification", kvn_get_device_notification_setting, kNotification, notification());
    expect_decodes("dac", kvn_get_dac_settings, cat({kDacSet, u32(8, 0x808)}), dac());
    expect_decodes("proximity", kvn_get_proximity_sensor_settings, kProxBytes, kProx);
    expect_decodes("next sensor", kvn_get_next_sensor_settings, kNextBytes, kNext);
    expect_decodes("anti-shock", kvn_get_antishock_settings, kShockBytes, kShock);
    expect_decodes("fire alarm", kvn_get_fire_alarm_state, cat({u32(1, 1), u32(7, 0x305)}), uint32_t{0x305});
    expect_decodes("auto-on", kvn_get_fingerprint_sensor_autoon_status, cat({u32(7, 7), u32(1, 0x303)}),
                   uint32_t{0x303});
}

TEST(SettingsWire, DacSetAnswerMustBeShorterThanTheRequest) {
    const kvn_dac_setting d = dac();
    auto set = [&](kvn_device_conn* c) { return kvn_set_dac_settings(c, &d); };
    EXPECT_EQ(capture(set, response(0, Bytes(62, 1))).rc, 0);
    EXPECT_EQ(capture(set, response(0, Bytes(63, 1))).rc, -1);
    // The door actions send 12 and 6 bytes.
    EXPECT_EQ(capture(kvn_close_door, response(0, Bytes(12, 1))).rc, -1);
    EXPECT_EQ(capture(kvn_clear_door_force_open_alarm, response(0, Bytes(5, 1))).rc, 0);
}

TEST(SettingsDecoders, LedEntriesByNumberOthersUntouched) {
    kvn_led_setting l[KVN_LED_COUNT];
    std::memset(l, 0xAB, sizeof l);
    const Bytes payload = cat({
        box(1, cat({u32(3, 2), u8(2, 1), u32(13, 77), u32(7, 0x70), u32(12, 0xC0)})),
        box(1, cat({u32(3, 18), u32(13, 5)})),  // beyond 17 LEDs: dropped
        box(1, cat({u32(3, 0), u32(13, 6)})),
        u8(0x30, 0),  // unknown top-level tag skipped
    });
    ASSERT_EQ(capture([&](auto c) { return kvn_get_led_setting(c, l); }, response(0, payload)).rc, 0);
    EXPECT_EQ(l[1].index, 2u);
    EXPECT_EQ(l[1].option, 77u);
    EXPECT_EQ(l[1].matrix[1][0], 0x70u);
    EXPECT_EQ(l[1].matrix[2][2], 0xC0u);
    EXPECT_EQ(l[1].matrix[0][0], 0xABABABABu) << "missing tags leave fields as they were";
    EXPECT_EQ(l[0].option, 0xABABABABu);
    EXPECT_EQ(l[16].option, 0xABABABABu);
}

TEST(SettingsDecoders, MalformedInputKeepsEarlierFieldsAndStatusOnlyKeepsAll) {
    kvn_biometric_setting b;
    std::memset(&b, 0x11, sizeof b);
    const Bytes payload = cat({u32(1, 7), u8(8, 3), {2, 4, 1}});  // last element truncated
    EXPECT_EQ(capture([&](auto c) { return kvn_get_biometric_setting(c, &b); }, response(0, payload)).rc, -1);
    EXPECT_EQ(b.setting_1, 7u);
    EXPECT_EQ(b.setting_8, 3);
    EXPECT_EQ(b.setting_2, 0x11111111u);
    // No payload: the terminal's status comes back and nothing changes.
    const kvn_biometric_setting before = b;
    EXPECT_EQ(capture([&](auto c) { return kvn_get_biometric_setting(c, &b); }, response(-1002)).rc, -1002);
    EXPECT_EQ(std::memcmp(&before, &b, sizeof b), 0);
}

TEST(SettingsDecoders, AudioTextsAreBoundedBy51Bytes) {
    auto a = std::make_unique<Audio>();
    std::memset(a.get(), '#', sizeof(Audio));
    const Bytes payload = box(1, cat({u32(3, 18), el(6, Bytes(200, 'x')), u32(7, 3)}));
    ASSERT_EQ(capture([&](auto c) { return kvn_get_audio_setting(c, a->e); }, response(0, payload)).rc, 0);
    EXPECT_EQ(std::string(a->e[17].long_text, 52), std::string(51, 'x') + "#");
    EXPECT_EQ(a->e[17].value, 3u);
}

TEST(SettingsDecoders, DacUnusedTagsAndEmptyElements) {
    kvn_dac_setting d;
    std::memset(&d, 0x22, sizeof d);
    ASSERT_EQ(capture([&](auto c) { return kvn_get_dac_settings(c, &d); }, response(0, cat({u32(5, 1), u32(9, 1)}))).rc,
              0);
    kvn_dac_setting untouched;
    std::memset(&untouched, 0x22, sizeof untouched);
    EXPECT_EQ(std::memcmp(&d, &untouched, sizeof d), 0) << "tags 5 and 9 are not the record's";
    // An empty element is malformed in this family; what came before it stays.
    EXPECT_EQ(capture([&](auto c) { return kvn_get_dac_settings(c, &d); }, response(0, cat({u32(2, 9), {3, 0}}))).rc,
              -1);
    EXPECT_EQ(d.dac_value_2, 9u);
}

TEST(SettingsDecoders, MultiUserGroupOutsideThreeIgnoredAndTextCut) {
    kvn_multi_user_verification_setting m;
    std::memset(&m, 0x33, sizeof m);
    const Bytes payload = cat({box(3, cat({u8(4, 2), el(6, Bytes(70, 'g'))})), box(3, cat({u8(4, 7), u32(5, 99)}))});
    ASSERT_EQ(capture([&](auto c) { return kvn_get_multi_user_verification_setting(c, &m); }, response(0, payload)).rc,
              0);
    EXPECT_EQ(std::string(m.groups[2].group_text), std::string(63, 'g'));
    for (const auto& g : m.groups) EXPECT_EQ(g.group_value_a, 0x33333333u);
}

TEST(SettingsDecoders, FingerprintTestDataIsCutAt98560) {
    auto test = std::make_unique<kvn_fingerprint_sensor_test>();
    const Bytes payload = el(6, Bytes(100000, 0x5C));
    ASSERT_EQ(capture([&](auto c) { return kvn_test_fingerprint_sensor(c, test.get()); }, response(0, payload)).rc, 0);
    EXPECT_EQ(test->data_length, 98560u);
    EXPECT_EQ(test->data[98559], 0x5C);
}

TEST(SettingsDecoders, MediaListEntriesPairUpAndStopAtTheBound) {
    auto list = std::make_unique<kvn_media_list>();
    Bytes payload;
    for (int i = 0; i < 70; ++i) {
        const auto d = static_cast<uint8_t>('0' + i % 10);
        payload = cat({payload, el(11, {'a', d}), el(12, {d})});
    }
    ASSERT_EQ(capture([&](auto c) { return kvn_retrieve_audio_list(c, list.get()); }, response(0, payload)).rc, 0);
    EXPECT_EQ(list->total, 70u);
    EXPECT_EQ(list->count, static_cast<uint32_t>(KVN_MEDIA_LIST_MAX));
    EXPECT_STREQ(list->entries[13].name, "a3");
    EXPECT_STREQ(list->entries[13].text, "3");
    const Bytes images = cat({text(1, "a.j"), text(1, "b.j"), text(2, "B")});
    ASSERT_EQ(capture([&](auto c) { return kvn_retrieve_image_list(c, list.get()); }, response(0, images)).rc, 0);
    EXPECT_EQ(list->count, 2u);
    EXPECT_STREQ(list->entries[1].name, "b.j");
    EXPECT_STREQ(list->entries[0].text, "B");
    EXPECT_STREQ(list->entries[1].text, "");
}
