// The library against the simulated terminal: each settings family set, read back
// and reset over TCP and over a serial line, the actions accepted, the terminal's
// faults seen as status codes, and many connections at once. The payload bytes
// themselves are pinned down in test_settings_wire.cpp; here only interoperation is
// shown. On Windows the simulator is a Linux kvn-sim (win32_remote_sim.cpp).
#if KVN_HAVE_SIM
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "kvnsdk2.h"
#include "e2e.h"
#include "kvnsim.h"
#include "peer.h"
#include "records.h"

using namespace kvntest;

namespace {

// All entries round trip with `set_all`; then entry `n` set alone with `set_one` reads
// back as written, whatever a terminal does with the others.
template <class Entries, class All, class One, class Get>
void entries_round_trip(kvn_device_conn* c, const char* name, const Entries& w, All set_all, One set_one, uint32_t n,
                        Get get, int32_t (*reset)(kvn_device_conn*)) {
    auto get_all = [&](auto c2, Entries* r) { return get(c2, r->e); };
    round_trip(c, name, w, [&](auto c2, const Entries* e) { return set_all(c2, e->e); }, get_all, reset);
    auto read = std::make_unique<Entries>(zeroed<Entries>());
    ASSERT_EQ(set_one(c, w.e, n), 0) << name;
    ASSERT_EQ(get_all(c, read.get()), 0) << name;
    EXPECT_EQ(std::memcmp(&read->e[n - 1], &w.e[n - 1], sizeof w.e[0]), 0) << name << ": entry " << n;
}
#define ENTRIES_ROUND_TRIP(c, F, w, n) \
    entries_round_trip(c, #F, w, kvn_set_all_##F, kvn_set_single_##F, n, kvn_get_##F, kvn_reset_##F)

class SettingsE2E : public ::testing::TestWithParam<bool> {};

}  // namespace

TEST_P(SettingsE2E, EveryFamilyRoundTripsAndEveryActionIsAccepted) {
    Session s({.serial = GetParam()});
    kvn_device_conn* c = s.c;
    ENTRIES_ROUND_TRIP(c, led_setting, leds(KVN_LED_COUNT), 5);
    ENTRIES_ROUND_TRIP(c, buzzer_setting, leds(KVN_BUZZER_COUNT), 18);
    // Texts all set: an empty text is not sent, so what a terminal then keeps is its own affair.
    auto sounds = std::make_unique<Audio>(audio());
    for (kvn_audio_setting& e : sounds->e) {
        std::snprintf(e.short_text, sizeof e.short_text, "tone %u", e.index);
        std::snprintf(e.long_text, sizeof e.long_text, "announcement %u", e.index);
    }
    ENTRIES_ROUND_TRIP(c, audio_setting, *sounds, 3);
    kvn_device_notification_setting note = notification();
    std::strcpy(note.text_b, "door");
    ROUND_TRIP(c, device_notification_setting, note);
    round_trip(c, "lcd", lcd(), kvn_set_lcd_settings, kvn_get_lcd_settings, kvn_reset_lcd_settings);
    ROUND_TRIP(c, biometric_setting, biometric());
    ROUND_TRIP(c, multi_user_verification_setting, multi_user());
    ROUND_TRIP(c, proximity_sensor_settings, kProx);
    round_trip(c, "next sensor", kNext, kvn_set_next_sensor_settings, kvn_get_next_sensor_settings,
               kvn_next_sensor_settings);
    ROUND_TRIP(c, antishock_settings, kShock);
    round_trip(c, "fire alarm", uint32_t{0x305}, by_value<kvn_set_fire_alarm_state>, kvn_get_fire_alarm_state,
               kvn_reset_fire_alarm_state);
    round_trip(c, "sensor auto-on", uint32_t{0x303}, by_value<kvn_set_fingerprint_sensor_autoon_status>,
               kvn_get_fingerprint_sensor_autoon_status, kvn_reset_fingerprint_sensor_autoon_status);
    // The DAC record's open time comes from the door action, never from the set.
    auto set_dac = [](auto c2, const kvn_dac_setting* w) {
        kvn_dac_setting other = *w;
        other.door_open_time = 999;
        const int32_t rc = kvn_set_dac_settings(c2, &other);
        return rc != 0 ? rc : kvn_open_door_for_time(c2, w->door_open_time, 0);
    };
    round_trip(c, "dac", dac(), set_dac, kvn_get_dac_settings, kvn_reset_dac_settings);

    kvn_audio_play_request play{"tone 1", {}, 1};
    auto test = std::make_unique<kvn_fingerprint_sensor_test>();
    auto list = std::make_unique<kvn_media_list>();
    const std::function<int32_t(kvn_device_conn*)> actions[] = {
        [&](auto c2) { return kvn_play_audio(c2, &play); }, kvn_stop_audio, kvn_clear_reenable_fire_alarm,
        kvn_clear_reenable_antishock_alarm, kvn_close_door, kvn_clear_door_force_open_alarm,
        kvn_reset_fingerprint_sensor, [&](auto c2) { return kvn_test_fingerprint_sensor(c2, test.get()); },
        [&](auto c2) { return kvn_retrieve_audio_list(c2, list.get()); },
        [&](auto c2) { return kvn_retrieve_image_list(c2, list.get()); },
    };
    for (size_t i = 0; i < std::size(actions); ++i) EXPECT_EQ(actions[i](c), 0) << "action " << i;
    for (uint32_t i = 0; i < list->count; ++i) {  // the terminal shows the images it lists
        auto image = zeroed<kvn_display_image_request>();
        std::memcpy(image.name, list->entries[i].name, sizeof image.name);
        EXPECT_EQ(kvn_display_image(c, &image), 0) << image.name;
    }
}

INSTANTIATE_TEST_SUITE_P(Transports, SettingsE2E, ::testing::Values(false, true),
                         [](const ::testing::TestParamInfo<bool>& i) { return i.param ? "Serial" : "Tcp"; });

// The terminal's misbehaviour reaches the caller as the matching status code.
TEST(TerminalFaults, BecomeStatusCodes) {
    ShortWaits waits(400);
    const std::pair<kvnsim::Faults, int32_t> cases[] = {
        {{.latency_ms = 50}, 0}, {{.latency_ms = 1500}, KVN_E_READ_TIMEOUT}, {{.no_answer = true}, KVN_E_READ_TIMEOUT},
        {{.close_after_bytes = 10}, KVN_E_READ_TIMEOUT}, {{.bad_sync = true}, KVN_E_INVALID_SYNC_WORD},
        {{.bad_crc = true}, KVN_E_CRC_MISMATCH}, {{.byte_by_byte = true}, 0},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        Session s({.faults = cases[i].first});
        auto lcd = zeroed<kvn_lcd_setting>();
        EXPECT_EQ(kvn_get_lcd_settings(s.c, &lcd), cases[i].second) << "case " << i;
    }
}

// Connections on separate threads at once, each reading what another one stored.
TEST(TerminalConnections, ManyAtOnce) {
    Session s;
    const kvn_proximity_sensor_setting stored{31, 32, 33};
    ASSERT_EQ(kvn_set_proximity_sensor_settings(s.c, &stored), 0);
    constexpr int kThreads = 6, kRounds = 100;
    std::vector<int> good(kThreads, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            kvn_device_conn c = s.conn;
            if (kvn_open_device_conn(&c) != 0) return;
            for (int i = 0; i < kRounds; ++i) {
                kvn_proximity_sensor_setting r{};
                if (kvn_get_proximity_sensor_settings(&c, &r) == 0 && std::memcmp(&r, &stored, sizeof r) == 0) ++good[t];
            }
            kvn_close_device_conn(&c);
        });
    }
    for (std::thread& t : threads) t.join();
    for (int t = 0; t < kThreads; ++t) EXPECT_EQ(good[t], kRounds) << "thread " << t;
}
#endif
