// Feeds arbitrary terminal answers to every reading export. The first input byte
// picks the export and whether the rest is wrapped in a well-formed frame (so the
// decoders see it) or sent raw (so the frame checks do).
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "kvnsdk2.h"
#include "link/crc32.h"
#include "memory_transport.h"

namespace {

std::vector<uint8_t> frame(const uint8_t* payload, size_t n) {
    std::vector<uint8_t> f(28 + n + 4, 0);
    const uint32_t words[] = {0xAABBCCDDu, 1, 0x00020002u, 0, 0, 0, static_cast<uint32_t>(n)};
    for (size_t i = 0; i < 7; ++i) {
        for (size_t b = 0; b < 4; ++b) f[i * 4 + b] = static_cast<uint8_t>(words[i] >> (8 * b));
    }
    if (n != 0) std::memcpy(f.data() + 28, payload, n);
    const uint32_t crc = kvn::crc32(0, f.data() + 4, 24 + n);
    for (size_t b = 0; b < 4; ++b) f[28 + n + b] = static_cast<uint8_t>(crc >> (8 * b));
    return f;
}

struct Records {
    kvn_led_setting leds[KVN_BUZZER_COUNT];
    kvn_audio_setting audio[KVN_AUDIO_COUNT];
    kvn_media_list list;
    kvn_lcd_setting lcd;
    kvn_device_notification_setting note;
    kvn_biometric_setting bio;
    kvn_multi_user_verification_setting multi;
    kvn_fingerprint_sensor_test test;
    kvn_proximity_sensor_setting prox;
    kvn_next_sensor_setting next;
    kvn_antishock_setting shock;
    kvn_dac_setting dac;
    uint32_t u;
};

// Each case owns its record, kept between runs so that stale contents (counts,
// lengths) left by earlier answers are exercised too.
template <class T>
T* keep() {
    static auto r = std::make_unique<T>();
    return r.get();
}

// Transfers read a local file of two packets and write into a scratch file.
kvn_file_transfer_request* fuzz_transfer(bool upload) {
    static kvn_file_transfer_request r{5, nullptr, "f"};
    static const bool made = [] {
        static const uint8_t zeros[70000] = {};
        std::FILE* f = std::fopen("fuzz_upload.bin", "wb");
        return f != nullptr && std::fwrite(zeros, 1, sizeof zeros, f) + std::fclose(f) == sizeof zeros;
    }();
    r.local_path = made && upload ? "fuzz_upload.bin" : "fuzz_download.bin";
    return &r;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    // Two bytes pick the export (low 15 bits) and whether the rest is wrapped in a
    // well-formed frame (top bit clear) or sent raw.
    const unsigned pick = data[0] | (data[1] << 8);
    std::vector<uint8_t> input =
        (pick & 0x8000) ? std::vector<uint8_t>(data + 2, data + size) : frame(data + 2, size - 2);
    static auto r = std::make_unique<Records>();
    kvnfuzz::feed(input.data(), input.size());
    kvn_device_conn c = kvnfuzz::connection();
    uint8_t buffer[256];
    uint32_t length = sizeof buffer;
    switch (pick & 0x7FFF) {
        case 0: kvn_get_led_setting(&c, r->leds); break;
        case 1: kvn_get_buzzer_setting(&c, r->leds); break;
        case 2: kvn_get_audio_setting(&c, r->audio); break;
        case 3: kvn_retrieve_audio_list(&c, &r->list); break;
        case 4: kvn_retrieve_image_list(&c, &r->list); break;
        case 5: kvn_get_lcd_settings(&c, &r->lcd); break;
        case 6: kvn_get_device_notification_setting(&c, &r->note); break;
        case 7: kvn_get_biometric_setting(&c, &r->bio); break;
        case 8: kvn_get_multi_user_verification_setting(&c, &r->multi); break;
        case 9: kvn_test_fingerprint_sensor(&c, &r->test); break;
        case 10: kvn_get_proximity_sensor_settings(&c, &r->prox); break;
        case 11: kvn_get_next_sensor_settings(&c, &r->next); break;
        case 12: kvn_get_antishock_settings(&c, &r->shock); break;
        case 13: kvn_get_fire_alarm_state(&c, &r->u); break;
        case 14: kvn_get_fingerprint_sensor_autoon_status(&c, &r->u); break;
        case 15: kvn_get_dac_settings(&c, &r->dac); break;
        case 16: kvn_set_dac_settings(&c, &r->dac); break;
        case 17: kvn_send_reset_command(&c, 121); break;

        // Network and device management: cases 100 to 199.
        // @@NETWORK@@

        // Specific-purpose I/O, time attendance, job codes, VoIP, schedules: cases 200 to 299.
        // @@TABLES@@

        // Users, enrolment, identification, verification, smart cards: cases 300 to 399.
        // @@USERS@@

        // Transaction logs, file transfer, user groups: cases 400 to 499.
        case 400: kvn_get_transaction_logs(&c, keep<kvn_transaction_log_query>()); break;
        case 401: kvn_get_unread_transaction_logs(&c, keep<kvn_transaction_log_query>()); break;
        case 402: kvn_get_read_transaction_logs(&c, keep<kvn_transaction_log_query>()); break;
        case 403: kvn_get_transaction_logs_for_date(&c, keep<kvn_transaction_log_query>()); break;
        case 404: kvn_get_transaction_logs_for_criteria(&c, keep<kvn_transaction_log_query>()); break;
        case 405: kvn_get_transaction_log_total_count(&c, keep<uint32_t>()); break;
        case 406: kvn_get_transaction_log_unread_count(&c, keep<uint32_t>()); break;
        case 407: kvn_get_transaction_log_read_count(&c, keep<uint32_t>()); break;
        case 408: kvn_get_transaction_log_count_for_date(&c, keep<kvn_transaction_log_query>()); break;
        case 409: kvn_get_transaction_log_count_for_criteria(&c, keep<kvn_transaction_log_query>()); break;
        case 410: kvn_retrieve_user_group(&c, keep<kvn_user_group_page>()); break;
        case 411: kvn_get_total_user_group_count(&c, keep<uint32_t>()); break;
        case 412: kvn_retrieve_user_display_image_setting(&c, keep<uint32_t>()); break;
        case 413: kvn_upload_file(&c, fuzz_transfer(true)); break;
        case 414: kvn_download_file(&c, fuzz_transfer(false)); break;
        // @@LOGS@@

        // Card reading and layouts, card server, Wiegand: cases 500 to 599.
        // @@CARDS@@

        default: kvn_receive_response(&c, buffer, &length); break;
    }
    // Text fields must stay inside their records whatever arrived.
    return 0;
}
