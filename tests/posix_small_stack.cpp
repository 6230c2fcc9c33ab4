// Every settings export runs on a thread with a 1 MiB stack, the default on Windows.
#include <pthread.h>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

#include "kvnsdk2.h"
#include "peer.h"

using kvntest::LoopbackPeer;
using kvntest::sock_t;

namespace {

void run_on_small_stack(const std::function<void()>& body) {
    pthread_attr_t attr;
    pthread_attr_init(&attr);
    pthread_attr_setstacksize(&attr, 1u << 20);
    pthread_t t;
    auto* arg = const_cast<std::function<void()>*>(&body);
    ASSERT_EQ(pthread_create(&t, &attr, [](void* p) -> void* { (*static_cast<std::function<void()>*>(p))(); return nullptr; }, arg), 0);
    pthread_join(t, nullptr);
    pthread_attr_destroy(&attr);
}

}  // namespace

TEST(SmallStack, SettingsExportsFitInOneMebibyte) {
    // A terminal that answers every request with success and no payload.
    LoopbackPeer peer([](sock_t s) {
        for (;;) {
            if (kvntest::read_request(s).size() < 28) return;
            kvntest::write_bytes(s, kvntest::response(0));
        }
    });
    auto leds = std::make_unique<kvn_led_setting[]>(KVN_BUZZER_COUNT);
    auto audio = std::make_unique<kvn_audio_setting[]>(KVN_AUDIO_COUNT);
    auto list = std::make_unique<kvn_media_list>();
    auto test = std::make_unique<kvn_fingerprint_sensor_test>();
    kvn_audio_play_request play{};
    kvn_display_image_request image{};
    kvn_lcd_setting lcd{};
    kvn_device_notification_setting note{};
    kvn_biometric_setting bio{};
    kvn_multi_user_verification_setting multi{};
    kvn_proximity_sensor_setting prox{};
    kvn_next_sensor_setting next{};
    kvn_antishock_setting shock{};
    kvn_dac_setting dac{};
    uint32_t u = 0;

    using Call = std::function<int32_t(kvn_device_conn*)>;
    const std::vector<Call> calls = {
        [&](kvn_device_conn* c) { return kvn_set_single_led_setting(c, leds.get(), 1); },
        [&](kvn_device_conn* c) { return kvn_set_all_led_setting(c, leds.get()); },
        [&](kvn_device_conn* c) { return kvn_get_led_setting(c, leds.get()); },
        [&](kvn_device_conn* c) { return kvn_reset_led_setting(c); },
        [&](kvn_device_conn* c) { return kvn_set_single_buzzer_setting(c, leds.get(), 18); },
        [&](kvn_device_conn* c) { return kvn_set_all_buzzer_setting(c, leds.get()); },
        [&](kvn_device_conn* c) { return kvn_get_buzzer_setting(c, leds.get()); },
        [&](kvn_device_conn* c) { return kvn_reset_buzzer_setting(c); },
        [&](kvn_device_conn* c) { return kvn_set_single_audio_setting(c, audio.get(), 1); },
        [&](kvn_device_conn* c) { return kvn_set_all_audio_setting(c, audio.get()); },
        [&](kvn_device_conn* c) { return kvn_get_audio_setting(c, audio.get()); },
        [&](kvn_device_conn* c) { return kvn_reset_audio_setting(c); },
        [&](kvn_device_conn* c) { return kvn_play_audio(c, &play); },
        [&](kvn_device_conn* c) { return kvn_stop_audio(c); },
        [&](kvn_device_conn* c) { return kvn_retrieve_audio_list(c, list.get()); },
        [&](kvn_device_conn* c) { return kvn_retrieve_image_list(c, list.get()); },
        [&](kvn_device_conn* c) { return kvn_display_image(c, &image); },
        [&](kvn_device_conn* c) { return kvn_set_lcd_settings(c, &lcd); },
        [&](kvn_device_conn* c) { return kvn_get_lcd_settings(c, &lcd); },
        [&](kvn_device_conn* c) { return kvn_reset_lcd_settings(c); },
        [&](kvn_device_conn* c) { return kvn_set_device_notification_setting(c, &note); },
        [&](kvn_device_conn* c) { return kvn_get_device_notification_setting(c, &note); },
        [&](kvn_device_conn* c) { return kvn_reset_device_notification_setting(c); },
        [&](kvn_device_conn* c) { return kvn_set_biometric_setting(c, &bio); },
        [&](kvn_device_conn* c) { return kvn_get_biometric_setting(c, &bio); },
        [&](kvn_device_conn* c) { return kvn_reset_biometric_setting(c); },
        [&](kvn_device_conn* c) { return kvn_set_multi_user_verification_setting(c, &multi); },
        [&](kvn_device_conn* c) { return kvn_get_multi_user_verification_setting(c, &multi); },
        [&](kvn_device_conn* c) { return kvn_reset_multi_user_verification_setting(c); },
        [&](kvn_device_conn* c) { return kvn_test_fingerprint_sensor(c, test.get()); },
        [&](kvn_device_conn* c) { return kvn_reset_fingerprint_sensor(c); },
        [&](kvn_device_conn* c) { return kvn_set_fingerprint_sensor_autoon_status(c, 1); },
        [&](kvn_device_conn* c) { return kvn_get_fingerprint_sensor_autoon_status(c, &u); },
        [&](kvn_device_conn* c) { return kvn_reset_fingerprint_sensor_autoon_status(c); },
        [&](kvn_device_conn* c) { return kvn_set_proximity_sensor_settings(c, &prox); },
        [&](kvn_device_conn* c) { return kvn_get_proximity_sensor_settings(c, &prox); },
        [&](kvn_device_conn* c) { return kvn_reset_proximity_sensor_settings(c); },
        [&](kvn_device_conn* c) { return kvn_set_next_sensor_settings(c, &next); },
        [&](kvn_device_conn* c) { return kvn_get_next_sensor_settings(c, &next); },
        [&](kvn_device_conn* c) { return kvn_next_sensor_settings(c); },
        [&](kvn_device_conn* c) { return kvn_set_antishock_settings(c, &shock); },
        [&](kvn_device_conn* c) { return kvn_get_antishock_settings(c, &shock); },
        [&](kvn_device_conn* c) { return kvn_reset_antishock_settings(c); },
        [&](kvn_device_conn* c) { return kvn_clear_reenable_antishock_alarm(c); },
        [&](kvn_device_conn* c) { return kvn_set_fire_alarm_state(c, 1); },
        [&](kvn_device_conn* c) { return kvn_get_fire_alarm_state(c, &u); },
        [&](kvn_device_conn* c) { return kvn_reset_fire_alarm_state(c); },
        [&](kvn_device_conn* c) { return kvn_clear_reenable_fire_alarm(c); },
        [&](kvn_device_conn* c) { return kvn_set_dac_settings(c, &dac); },
        [&](kvn_device_conn* c) { return kvn_get_dac_settings(c, &dac); },
        [&](kvn_device_conn* c) { return kvn_reset_dac_settings(c); },
        [&](kvn_device_conn* c) { return kvn_open_door_for_time(c, 5, 0); },
        [&](kvn_device_conn* c) { return kvn_close_door(c); },
        [&](kvn_device_conn* c) { return kvn_clear_door_force_open_alarm(c); },
    };
    std::vector<int32_t> results;
    run_on_small_stack([&] {
        kvn_device_conn c = peer.conn();
        if (kvn_open_device_conn(&c) != 0) return;
        for (const Call& call : calls) results.push_back(call(&c));
        kvn_close_device_conn(&c);
    });
    ASSERT_EQ(results.size(), calls.size());
    for (size_t i = 0; i < results.size(); ++i) EXPECT_EQ(results[i], 0) << "call " << i;
}
