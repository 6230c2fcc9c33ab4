// Settings families end to end against the simulated terminal: what a set stores,
// a get reads back, and a reset restores to the terminal's defaults.
#if KVN_HAVE_SIM
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <thread>
#include <vector>

#include "kvnsdk2.h"
#include "kvnsim.h"

namespace {

class SettingsE2E : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(sim_.start());
        std::memset(&conn_, 0, sizeof conn_);
        conn_.ip_address = "127.0.0.1";
        conn_.port = sim_.port();
        conn_.link.conn_type = KVN_CONN_TCP;
        ASSERT_EQ(kvn_open_device_conn(&conn_), 0);
    }
    void TearDown() override {
        kvn_close_device_conn(&conn_);
        sim_.stop();
    }

    // set(written) then get() gives it back; reset then get() gives something else.
    template <class Rec, class Set, class Get, class Reset>
    void round_trip(const Rec& written, Set set, Get get, Reset reset, const char* name) {
        Rec read;
        std::memset(&read, 0, sizeof read);
        ASSERT_EQ(set(&conn_, &written), 0) << name;
        ASSERT_EQ(get(&conn_, &read), 0) << name;
        EXPECT_EQ(std::memcmp(&read, &written, sizeof read), 0) << name << ": read back differs";
        ASSERT_EQ(reset(&conn_), 0) << name;
        std::memset(&read, 0, sizeof read);
        ASSERT_EQ(get(&conn_, &read), 0) << name;
        EXPECT_NE(std::memcmp(&read, &written, sizeof read), 0) << name << ": reset kept the written values";
    }

    kvnsim::Simulator sim_;
    kvn_device_conn conn_;
};

// Zero-initialised first, so that padding compares equal too.
kvn_biometric_setting sample_biometric() {
    kvn_biometric_setting b{};
    b.setting_1 = 1, b.setting_2 = 2, b.setting_3 = 3, b.setting_4 = 4, b.setting_5 = 5, b.setting_8 = 8;
    b.setting_9 = 9, b.setting_10 = 10, b.setting_11 = 11, b.setting_12 = 12, b.setting_13 = 13;
    b.setting_14 = 14, b.setting_15 = 15;
    return b;
}

}  // namespace

TEST_F(SettingsE2E, FlatRecords) {
    kvn_lcd_setting lcd{};
    lcd.value = 42;
    std::strcpy(lcd.short_text, "Welcome");
    round_trip(lcd, kvn_set_lcd_settings, kvn_get_lcd_settings, kvn_reset_lcd_settings, "lcd");

    kvn_device_notification_setting note{};
    note.flag = 1;
    std::strcpy(note.text_a, "smtp.example.test");
    std::strcpy(note.text_b, "door");
    std::strcpy(note.text_c, "alarm");
    note.value = 25;
    round_trip(note, kvn_set_device_notification_setting, kvn_get_device_notification_setting,
               kvn_reset_device_notification_setting, "notification");

    const kvn_biometric_setting bio = sample_biometric();
    round_trip(bio, kvn_set_biometric_setting, kvn_get_biometric_setting, kvn_reset_biometric_setting, "biometric");

    kvn_proximity_sensor_setting prox{7, 8, 9};
    round_trip(prox, kvn_set_proximity_sensor_settings, kvn_get_proximity_sensor_settings,
               kvn_reset_proximity_sensor_settings, "proximity");

    kvn_next_sensor_setting next{3, 4};
    round_trip(next, kvn_set_next_sensor_settings, kvn_get_next_sensor_settings, kvn_next_sensor_settings,
               "next sensor");

    kvn_antishock_setting shock{11, 12, 13, 14, 15, 16, 17};
    round_trip(shock, kvn_set_antishock_settings, kvn_get_antishock_settings, kvn_reset_antishock_settings,
               "anti-shock");
}

TEST_F(SettingsE2E, MultiUserVerificationGroups) {
    kvn_multi_user_verification_setting m{};
    m.value = 2;
    m.flag = 1;
    for (uint32_t g = 0; g < 3; ++g) {
        m.groups[g].group_value_a = 10 + g;
        m.groups[g].group_value_b = 20 + g;
    }
    std::strcpy(m.groups[0].group_text, "guards");
    std::strcpy(m.groups[2].group_text, "managers");
    round_trip(m, kvn_set_multi_user_verification_setting, kvn_get_multi_user_verification_setting,
               kvn_reset_multi_user_verification_setting, "multi-user");
}

TEST_F(SettingsE2E, SingleValues) {
    struct Case {
        const char* name;
        int32_t (*set)(kvn_device_conn*, uint32_t);
        int32_t (*get)(kvn_device_conn*, uint32_t*);
        int32_t (*reset)(kvn_device_conn*);
    };
    const Case cases[] = {
        {"fire alarm", kvn_set_fire_alarm_state, kvn_get_fire_alarm_state, kvn_reset_fire_alarm_state},
        {"sensor auto-on", kvn_set_fingerprint_sensor_autoon_status, kvn_get_fingerprint_sensor_autoon_status,
         kvn_reset_fingerprint_sensor_autoon_status},
    };
    for (const Case& k : cases) {
        uint32_t v = 0;
        ASSERT_EQ(k.set(&conn_, 0x5A5A), 0) << k.name;
        ASSERT_EQ(k.get(&conn_, &v), 0) << k.name;
        EXPECT_EQ(v, 0x5A5Au) << k.name;
        ASSERT_EQ(k.reset(&conn_), 0) << k.name;
        ASSERT_EQ(k.get(&conn_, &v), 0) << k.name;
        EXPECT_NE(v, 0x5A5Au) << k.name;
    }
    EXPECT_EQ(kvn_clear_reenable_fire_alarm(&conn_), 0);
    EXPECT_EQ(kvn_clear_reenable_antishock_alarm(&conn_), 0);
    EXPECT_EQ(kvn_reset_fingerprint_sensor(&conn_), 0);
}

TEST_F(SettingsE2E, LedAndBuzzerEntries) {
    struct Case {
        const char* name;
        uint32_t count;
        int32_t (*set_all)(kvn_device_conn*, const kvn_led_setting*);
        int32_t (*set_one)(kvn_device_conn*, const kvn_led_setting*, uint32_t);
        int32_t (*get)(kvn_device_conn*, kvn_led_setting*);
        int32_t (*reset)(kvn_device_conn*);
    };
    const Case cases[] = {
        {"led", KVN_LED_COUNT, kvn_set_all_led_setting, kvn_set_single_led_setting, kvn_get_led_setting,
         kvn_reset_led_setting},
        {"buzzer", KVN_BUZZER_COUNT, kvn_set_all_buzzer_setting, kvn_set_single_buzzer_setting,
         kvn_get_buzzer_setting, kvn_reset_buzzer_setting},
    };
    for (const Case& k : cases) {
        kvn_led_setting written[KVN_BUZZER_COUNT] = {}, read[KVN_BUZZER_COUNT] = {};
        for (uint32_t i = 0; i < k.count; ++i) {
            written[i].index = i + 1;
            written[i].enable = static_cast<uint8_t>(i & 1);
            written[i].option = 100 + i;
            for (int r = 0; r < 3; ++r)
                for (int c = 0; c < 3; ++c) written[i].matrix[r][c] = i * 100 + static_cast<uint32_t>(r * 10 + c);
        }
        ASSERT_EQ(k.set_all(&conn_, written), 0) << k.name;
        ASSERT_EQ(k.get(&conn_, read), 0) << k.name;
        EXPECT_EQ(std::memcmp(read, written, k.count * sizeof read[0]), 0) << k.name;

        written[4].option = 4444;
        written[4].matrix[2][1] = 21;
        ASSERT_EQ(k.set_one(&conn_, written, 5), 0) << k.name;
        ASSERT_EQ(k.get(&conn_, read), 0) << k.name;
        EXPECT_EQ(read[4].option, 4444u) << k.name;
        EXPECT_EQ(read[4].matrix[2][1], 21u) << k.name;
        EXPECT_EQ(read[5].option, 105u) << k.name << ": other entries unchanged";

        ASSERT_EQ(k.reset(&conn_), 0) << k.name;
        ASSERT_EQ(k.get(&conn_, read), 0) << k.name;
        EXPECT_NE(read[4].option, 4444u) << k.name;
    }
}

TEST_F(SettingsE2E, AudioEntriesAndPlayback) {
    auto written = std::make_unique<kvn_audio_setting[]>(KVN_AUDIO_COUNT);
    auto read = std::make_unique<kvn_audio_setting[]>(KVN_AUDIO_COUNT);
    for (uint32_t i = 0; i < KVN_AUDIO_COUNT; ++i) {
        written[i].index = i + 1;
        std::snprintf(written[i].short_text, sizeof written[i].short_text, "tone %u", i + 1);
        std::snprintf(written[i].long_text, sizeof written[i].long_text, "long text %u", i + 1);
        written[i].flag = 1;
        written[i].value = 7 * i;
    }
    ASSERT_EQ(kvn_set_all_audio_setting(&conn_, written.get()), 0);
    ASSERT_EQ(kvn_get_audio_setting(&conn_, read.get()), 0);
    for (uint32_t i = 0; i < KVN_AUDIO_COUNT; ++i) {
        EXPECT_STREQ(read[i].short_text, written[i].short_text);
        EXPECT_STREQ(read[i].long_text, written[i].long_text);
        EXPECT_EQ(read[i].flag, 1);
        EXPECT_EQ(read[i].value, 7 * i);
    }
    std::strcpy(written[17].short_text, "changed");
    ASSERT_EQ(kvn_set_single_audio_setting(&conn_, written.get(), 18), 0);
    ASSERT_EQ(kvn_get_audio_setting(&conn_, read.get()), 0);
    EXPECT_STREQ(read[17].short_text, "changed");
    ASSERT_EQ(kvn_reset_audio_setting(&conn_), 0);

    kvn_audio_play_request play{};
    std::strcpy(play.short_text, "tone 1");
    play.value = 1;
    EXPECT_EQ(kvn_play_audio(&conn_, &play), 0);
    EXPECT_EQ(kvn_stop_audio(&conn_), 0);

    auto list = std::make_unique<kvn_media_list>();
    ASSERT_EQ(kvn_retrieve_audio_list(&conn_, list.get()), 0);
    EXPECT_GT(list->count, 0u);
    ASSERT_EQ(kvn_retrieve_image_list(&conn_, list.get()), 0);
    ASSERT_GT(list->count, 0u);
    kvn_display_image_request image{};
    std::memcpy(image.name, list->entries[0].name, sizeof image.name);
    EXPECT_EQ(kvn_display_image(&conn_, &image), 0);
}

TEST_F(SettingsE2E, DoorAndDac) {
    kvn_dac_setting d{};
    d.dac_value_1 = 1;
    d.dac_value_2 = 2;
    d.dac_value_3 = 3;
    d.dac_value_4 = 4;
    d.dac_value_10 = 10;
    d.dac_value_11 = 11;
    d.dac_value_12 = 12;
    d.dac_value_13 = 13;
    d.dac_value_14 = 14;
    d.dac_value_6 = 6;
    d.door_open_time = 999;  // never sent by a set
    d.dac_value_16 = 16;
    ASSERT_EQ(kvn_set_dac_settings(&conn_, &d), 0);
    ASSERT_EQ(kvn_open_door_for_time(&conn_, 12, 0), 0);
    kvn_dac_setting r{};
    ASSERT_EQ(kvn_get_dac_settings(&conn_, &r), 0);
    EXPECT_EQ(r.door_open_time, 12u) << "the open time comes from the door action";
    r.door_open_time = d.door_open_time;
    EXPECT_EQ(std::memcmp(&r, &d, sizeof r), 0);
    EXPECT_EQ(kvn_close_door(&conn_), 0);
    EXPECT_EQ(kvn_clear_door_force_open_alarm(&conn_), 0);
    ASSERT_EQ(kvn_reset_dac_settings(&conn_), 0);
    ASSERT_EQ(kvn_get_dac_settings(&conn_, &r), 0);
    EXPECT_NE(r.dac_value_16, 16u);
}

TEST_F(SettingsE2E, ConnectionsOnSeparateThreadsAtOnce) {
    const kvn_biometric_setting bio = sample_biometric();
    ASSERT_EQ(kvn_set_biometric_setting(&conn_, &bio), 0);
    constexpr int kThreads = 4, kRounds = 200;
    std::vector<int> good(kThreads, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            kvn_device_conn c = conn_;
            if (kvn_open_device_conn(&c) != 0) return;
            for (int i = 0; i < kRounds; ++i) {
                kvn_biometric_setting r{};
                if (kvn_get_biometric_setting(&c, &r) == 0 && std::memcmp(&r, &bio, sizeof r) == 0) ++good[t];
            }
            kvn_close_device_conn(&c);
        });
    }
    for (std::thread& t : threads) t.join();
    for (int t = 0; t < kThreads; ++t) EXPECT_EQ(good[t], kRounds) << "thread " << t;
}

TEST_F(SettingsE2E, FingerprintSensorTest) {
    auto test = std::make_unique<kvn_fingerprint_sensor_test>();
    test->test_value = 1;
    ASSERT_EQ(kvn_test_fingerprint_sensor(&conn_, test.get()), 0);
    EXPECT_GT(test->data_length, 0u);
    EXPECT_LE(test->data_length, static_cast<uint32_t>(KVN_FINGERPRINT_TEST_DATA_MAX));
}
#endif
