// The settings and door exports on the wire, against a loopback peer: the payload of
// every export that sends one (derived by hand from the wire format, one row each; the
// request type and command id are held in test_commands.cpp), and the decoders on
// hand-made answers in which every field carries a value of its own, so that a field
// stored under the wrong tag shows.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

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
Bytes led_entries(uint32_t count) { return each(count, [](size_t k) { return led_entry(uint32_t(k + 1)); }); }

Bytes audio_entries() {  // the all-entries form: texts at their own length, value under tag 7
    return each(KVN_AUDIO_COUNT, [](size_t k) {
        const uint32_t i = uint32_t(k + 1);
        const Bytes texts4 = i == 3 ? text(4, "hi") : Bytes{}, texts6 = i == 3 ? text(6, "long text") : Bytes{};
        return box(1, cat({u32(3, i), texts4, u8(5, uint8_t(0x50 + i)), texts6, u32(7, 0x700 + i)}));
    });
}

Bytes multi_user_bytes() {  // empty group texts still go out, with length 0
    return cat({u32(1, 0x101), u8(2, 0x22), each(3, [](size_t g) {
                    return box(3, cat({u8(4, uint8_t(g)), u32(5, 0x500u + g), text(6, g == 1 ? "night" : ""), u32(7, 0x700u + g)}));
                })});
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
const Bytes kShockBytes = cat({u32(2, 0x61), u32(3, 0x62), u32(4, 0x63), u32(5, 0x64), u32(6, 0x65), u32(7, 0x66), u32(8, 0x67)});

}  // namespace

TEST(SettingsWire, EveryPayload) {
    const Leds l = leds(KVN_BUZZER_COUNT);
    const auto a = std::make_unique<Audio>(audio());
    const auto d = dac();
    const kvn_audio_play_request play{{}, "L", 0x804};
    const kvn_display_image_request image{"logo.png"};
    auto sensor = std::make_unique<kvn_fingerprint_sensor_test>();
    sensor->test_value = 0x301;
#define CALL(...) [&](kvn_device_conn* c) { return __VA_ARGS__; }
    expect_payloads({
        {CALL(kvn_set_single_led_setting(c, l.e, 1)), led_entry(1)},
        {CALL(kvn_set_all_led_setting(c, l.e)), led_entries(17)},
        {CALL(kvn_set_single_buzzer_setting(c, l.e, 18)), led_entry(18)},
        {CALL(kvn_set_all_buzzer_setting(c, l.e)), led_entries(18)},
        // The single-entry form: whole text arrays, value under tag 8.
        {CALL(kvn_set_single_audio_setting(c, a->e, 3)),
         box(1, cat({u32(3, 3), el(4, whole("hi", 51)), u8(5, 0x53), el(6, whole("long text", 256)), u32(8, 0x703)}))},
        {CALL(kvn_set_all_audio_setting(c, a->e)), audio_entries()},
        {CALL(kvn_play_audio(c, &play)), cat({text(6, "L"), u32(8, 0x804)})},
        {CALL(kvn_display_image(c, &image)), text(3, "logo.png")},
        {CALL(kvn_test_fingerprint_sensor(c, sensor.get())), u32(7, 0x301)},
        {CALL(kvn_set_fingerprint_sensor_autoon_status(c, 0x303)), u32(1, 0x303)},
        {kvn_clear_reenable_antishock_alarm, {0x01, 0x04, 0x01, 0x00, 0x00, 0x00}},
        {CALL(kvn_set_fire_alarm_state(c, 0x01020304)), {0x07, 0x04, 0x04, 0x03, 0x02, 0x01}},
        {kvn_clear_reenable_fire_alarm, {0x09, 0x04, 0x01, 0x00, 0x00, 0x00}},
        {CALL(kvn_set_dac_settings(c, &d)), kDacSet},
        {CALL(kvn_open_door_for_time(c, 10, -2)), cat({u32(8, 10), u32(7, 0xFFFFFFFEu)})},
        {kvn_close_door, cat({u32(8, 0), u32(7, 0)})},
        {kvn_clear_door_force_open_alarm, u32(15, 1)},
    });
#undef CALL
    // 78 bytes with three empty texts; the DAC set never sends tag 8.
    EXPECT_EQ(std::vector<size_t>({led_entry(1).size(), multi_user_bytes().size(), kBiometric.size(), kDacSet.size()}),
              std::vector<size_t>({75, 78 + 5, 75, 63}));
    EXPECT_EQ(capture(kvn_stop_audio).payload.size(), 20480u);  // its whole buffer, whatever it holds
    // Entry numbers outside the array send nothing (the connection is not even open).
    kvn_device_conn closed{};
    for (uint32_t bad : {0u, 19u}) EXPECT_EQ(kvn_set_single_buzzer_setting(&closed, l.e, bad), KVN_E_INVALID_VALUE_RECEIVED);
    for (uint32_t bad : {0u, 18u}) EXPECT_EQ(kvn_set_single_led_setting(&closed, l.e, bad), KVN_E_INVALID_VALUE_RECEIVED);
}

// Records whose set sends what their get reads: both ways at once.
TEST(SettingsWire, DecodersStoreEveryFieldByItsTag) {
    expect_decodes("led", [](auto c, Leds* r) { return kvn_get_led_setting(c, r->e); }, led_entries(17), leds(17));
    expect_decodes("buzzer", [](auto c, Leds* r) { return kvn_get_buzzer_setting(c, r->e); }, led_entries(18), leds(18));
    expect_decodes("audio", [](auto c, Audio* r) { return kvn_get_audio_setting(c, r->e); }, audio_entries(), audio());
    expect_both_ways("multi-user", kvn_set_multi_user_verification_setting, kvn_get_multi_user_verification_setting, multi_user_bytes(),
                     multi_user());
    expect_both_ways("biometric", kvn_set_biometric_setting, kvn_get_biometric_setting, kBiometric, biometric());
    expect_both_ways("lcd", kvn_set_lcd_settings, kvn_get_lcd_settings, kLcd, lcd());
    expect_both_ways("notification", kvn_set_device_notification_setting, kvn_get_device_notification_setting, kNotification, notification());
    expect_decodes("dac", kvn_get_dac_settings, cat({kDacSet, u32(8, 0x808)}), dac());
    expect_both_ways("proximity", kvn_set_proximity_sensor_settings, kvn_get_proximity_sensor_settings, kProxBytes, kProx);
    expect_both_ways("next sensor", kvn_set_next_sensor_settings, kvn_get_next_sensor_settings, kNextBytes, kNext);
    expect_both_ways("anti-shock", kvn_set_antishock_settings, kvn_get_antishock_settings, kShockBytes, kShock);
    expect_decodes("fire alarm", kvn_get_fire_alarm_state, cat({u32(1, 1), u32(7, 0x305)}), uint32_t{0x305});
    expect_decodes("auto-on", kvn_get_fingerprint_sensor_autoon_status, cat({u32(7, 7), u32(1, 0x303)}), uint32_t{0x303});
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

// The family's own selectors and bounds, into records filled with one byte value.
TEST(SettingsDecoders, SelectorsAndBounds) {
    // LED entries by number: 0 and 18 are beyond the 17 LEDs; missing tags keep their fields.
    const Bytes leds = cat({box(1, cat({u32(3, 2), u32(13, 77), u32(12, 0xC0)})), box(1, cat({u32(3, 18), u32(13, 5)})),
                            box(1, cat({u32(3, 0), u32(13, 6)})), u8(0x30, 0)});
    const auto got = decoded<Leds>([](auto c, Leds* r) { return kvn_get_led_setting(c, r->e); }, leds, 0, 0xAB);
    const kvn_led_setting* l = got->e;
    EXPECT_EQ(std::vector<uint32_t>({l[1].option, l[1].matrix[2][2], l[1].matrix[0][0], l[0].option, l[16].option, l[17].option}),
              std::vector<uint32_t>({77, 0xC0, 0xABABABAB, 0xABABABAB, 0xABABABAB, 0xABABABAB}));
    // Audio texts keep 51 bytes.
    const Bytes sound = box(1, cat({u32(3, 18), el(6, Bytes(200, 'x')), u32(7, 3)}));
    const auto a = decoded<Audio>([](auto c, Audio* r) { return kvn_get_audio_setting(c, r->e); }, sound, 0, '#');
    EXPECT_EQ(std::string(a->e[17].long_text, 52) + char('0' + a->e[17].value), std::string(51, 'x') + "#3");
    // DAC tags 5 and 9 are not the record's; an empty element is malformed here, what came before it stays.
    expect_decodes("dac: tags 5 and 9", kvn_get_dac_settings, cat({u32(5, 1), u32(9, 1)}), zeroed<kvn_dac_setting>());
    EXPECT_EQ(decoded<kvn_dac_setting>(kvn_get_dac_settings, cat({u32(2, 9), {3, 0}}), -1)->dac_value_2, 9u);
    // Multi-user groups beyond three are dropped; their texts keep 63 bytes.
    const auto m = decoded<kvn_multi_user_verification_setting>(kvn_get_multi_user_verification_setting,
        cat({box(3, cat({u8(4, 2), el(6, Bytes(70, 'g'))})), box(3, cat({u8(4, 7), u32(5, 99)}))}), 0, 0x33);
    EXPECT_EQ(std::string(m->groups[2].group_text), std::string(63, 'g'));
    for (const auto& g : m->groups) EXPECT_EQ(g.group_value_a, 0x33333333u);
    // Fingerprint test data is cut at 98560 bytes.
    const auto test = decoded<kvn_fingerprint_sensor_test>(kvn_test_fingerprint_sensor, el(6, Bytes(100000, 0x5C)));
    EXPECT_EQ(test->data_length, 98560u);
    EXPECT_EQ(test->data[98559], 0x5C);
}

TEST(SettingsDecoders, MediaListEntriesPairUpAndStopAtTheBound) {
    auto list = std::make_unique<kvn_media_list>();
    const Bytes payload = each(70, [](size_t i) { return cat({el(11, {'a', uint8_t('0' + i % 10)}), el(12, {uint8_t('0' + i % 10)})}); });
    ASSERT_EQ(capture([&](auto c) { return kvn_retrieve_audio_list(c, list.get()); }, response(0, payload)).rc, 0);
    EXPECT_EQ(std::vector<uint32_t>({list->total, list->count}), std::vector<uint32_t>({70, KVN_MEDIA_LIST_MAX}));
    EXPECT_EQ(std::string(list->entries[13].name) + "/" + list->entries[13].text, "a3/3");
    const Bytes images = cat({text(1, "a.j"), text(1, "b.j"), text(2, "B")});
    ASSERT_EQ(capture([&](auto c) { return kvn_retrieve_image_list(c, list.get()); }, response(0, images)).rc, 0);
    EXPECT_EQ(std::string(list->entries[1].name) + "/" + list->entries[0].text + "/" + list->entries[1].text + char('0' + list->count),
              "b.j/B/2");
}
