// Feeds arbitrary terminal answers to every reading export. The first input byte
// picks the export and whether the rest is wrapped in a well-formed frame (so the
// decoders see it) or sent raw (so the frame checks do).
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>
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

// An enrolment request with its answer buffers (the second one only sometimes).
kvn_enrollment_request* enrolment(bool both) {
    struct Enrol {
        kvn_enrollment_request rq;
        uint8_t data[2][KVN_ENROLLMENT_DATA_SIZE];
    };
    Enrol* e = keep<Enrol>();
    e->rq.data_t03 = e->data[0];
    e->rq.data_t06 = both ? e->data[1] : nullptr;
    return &e->rq;
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
        case 100: kvn_get_ethernet_setting(&c, keep<kvn_ethernet_setting>()); break;
        case 101: kvn_get_serial_setting(&c, keep<kvn_serial_setting>()); break;
        case 102: kvn_get_usb_auxiliary_setting(&c, keep<kvn_usb_auxiliary_setting>()); break;
        case 103: kvn_get_device_info(&c, keep<kvn_device_info>()); break;
        case 104: kvn_get_product_info(&c, keep<kvn_product_info>()); break;
        case 105: kvn_get_device_debug_log(&c, keep<kvn_device_debug_log>()); break;
        case 106: kvn_get_device_security(&c, keep<kvn_device_security>()); break;
        case 107: kvn_get_device_date_time(&c, keep<kvn_device_date_time>()); break;
        case 108: kvn_get_device_status(&c, keep<kvn_device_status>()); break;
        case 109: kvn_get_device_vnc_setting(&c, keep<kvn_device_vnc_setting>()); break;
        case 110: kvn_get_ssl_setting(&c, keep<kvn_ssl_setting>()); break;
        case 111: kvn_get_ssl_cert_list(&c, keep<kvn_ssl_cert_list>()); break;
        case 112: kvn_get_system_notification_setting(&c, keep<kvn_system_notification_setting>()); break;
        case 113: kvn_get_wifi_status(&c, keep<kvn_wifi_status>()); break;
        case 114: {  // the whole capacity every time: the count only shrinks otherwise
            auto* s = keep<std::pair<kvn_wifi_connection_info, std::array<kvn_wifi_scan_entry, UINT8_MAX>>>();
            uint8_t count = UINT8_MAX;
            kvn_get_wifi_scan_list(&c, &s->first, s->second.data(), &count);
            break;
        }
        case 115: kvn_get_wifi_network_info(&c, keep<kvn_wifi_network_info>()); break;
        case 116: kvn_get_ethernet_security_setting(&c, keep<kvn_ethernet_security_setting>()); break;
        case 117: kvn_get_vpn_profile(&c, keep<kvn_vpn_profile>()); break;
        case 118: kvn_get_vpn_status(&c, keep<kvn_vpn_status>()); break;
        case 119: kvn_get_user_cert_list(&c, keep<kvn_vpn_cert_list>()); break;
        case 120: kvn_get_ca_cert_list(&c, keep<kvn_vpn_cert_list>()); break;
        case 121: kvn_get_uploaded_cert_list(&c, keep<kvn_vpn_cert_list>()); break;
        // @@NETWORK@@

        // Specific-purpose I/O, time attendance, job codes, VoIP, schedules: cases 200 to 299.
        case 200: kvn_get_specific_purpose_input_setting(&c, keep<kvn_specific_purpose_input_setting>()); break;
        case 201: kvn_get_specific_purpose_output_setting(&c, keep<kvn_specific_purpose_output_setting>()); break;
        case 202: kvn_get_time_attendance_setting(&c, keep<kvn_time_attendance_setting>()); break;
        case 203: kvn_get_job_code_list(&c, keep<kvn_job_code_list>()); break;
        case 204: kvn_get_voip_setting(&c, keep<kvn_voip_setting>()); break;
        case 205: kvn_get_voip_contact_list(&c, keep<kvn_voip_contact_list>()); break;
        case 206: kvn_get_voip_default_contact(&c, keep<kvn_voip_contact>()); break;
        case 207: kvn_get_biometric_schedule_setting(&c, keep<kvn_week_schedule>()); break;
        case 208: kvn_get_door_open_schedule_setting(&c, keep<kvn_week_schedule>()); break;
        case 209: kvn_get_all_holiday_schedule_setting(&c, keep<kvn_holiday_schedule_table>()); break;
        case 210: kvn_get_all_access_schedule_setting(&c, keep<kvn_access_schedule_table>()); break;
        case 211: kvn_get_access_schedule_list(&c, keep<kvn_access_schedule_name_list>()); break;
        // @@TABLES@@

        // Users, enrolment, identification, verification, smart cards: cases 300 to 399.
        // @@USERS@@
        case 300: kvn_get_user_record(&c, keep<kvn_user_record>()); break;
        case 301: kvn_delete_user_record(&c, keep<kvn_user_record>()); break;
        case 302: {
            kvn_user_store_request store{keep<kvn_user_record>(), keep<kvn_user_store_result>()};
            kvn_store_user_record(&c, &store);
        } break;
        case 303: kvn_get_user_count(&c, keep<uint32_t>()); break;
        case 304: kvn_get_biometric_count(&c, keep<uint32_t>()); break;
        case 305: kvn_enrollment(&c, enrolment(false)); break;
        case 306: kvn_enrollment_with_duplicate_identify(&c, enrolment(true)); break;
        case 307: kvn_identify_user(&c, keep<kvn_identify_request>()); break;
        case 308: kvn_identify_user_with_biometric_template(&c, keep<kvn_identify_request>()); break;
        case 309: kvn_verify_by_template(&c, keep<kvn_verify_template_request>()); break;
        case 310: kvn_verify_by_user_id(&c, keep<kvn_verify_user_id_request>()); break;
        case 311: {
            kvn_verify_user_record_request verify{keep<kvn_user_record>(), nullptr, {}};
            kvn_verify_by_user_record(&c, &verify);
        } break;
        case 312: kvn_read_data_on_smart_card(&c, keep<kvn_smart_card_data>()); break;
        case 313: kvn_get_revoked_smart_card_count(&c, keep<uint32_t>()); break;
        case 314: kvn_get_revoked_smart_card_list(&c, keep<kvn_revoked_card_list>()); break;

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
        case 500: kvn_read_card_serial_number(&c, keep<kvn_card_serial_number>()); break;
        case 501: kvn_read_prox_card_serial_number(&c, keep<std::array<uint8_t, KVN_CARD_SERIAL_SIZE>>()->data()); break;
        case 502: kvn_get_csn_setting(&c, keep<kvn_csn_setting>()); break;
        case 503: kvn_get_pacs_setting(&c, keep<uint32_t>()); break;
        case 504: kvn_get_mifare_cards_layout(&c, keep<kvn_mifare_cards_layout>()); break;
        case 505: kvn_get_hid_cards_layout(&c, keep<kvn_hid_cards_layout>()); break;
        case 506: kvn_get_desfire_settings(&c, keep<kvn_desfire_settings>()); break;
        case 507: kvn_get_key_manipulation_flags(&c, keep<kvn_key_manipulation_flags>()); break;
        case 508: kvn_get_srl_server_settings(&c, keep<kvn_srl_server_settings>()); break;
        case 509: kvn_get_card_preference_settings(&c, keep<uint16_t>()); break;
        case 510: kvn_get_wiegand_format_list(&c, keep<kvn_wiegand_format_list>()); break;
        case 511: kvn_get_wiegand_input_setting(&c, keep<kvn_wiegand_input_setting>()); break;
        case 512: kvn_get_wiegand_output_setting(&c, keep<kvn_wiegand_output_setting>()); break;
        case 513: kvn_get_wiegand_pulse_setting(&c, keep<kvn_wiegand_pulse_setting>()); break;
        case 514: kvn_get_multi_wiegand_input_setting(&c, keep<kvn_multi_wiegand_input_setting>()); break;
        // @@CARDS@@

        default: kvn_receive_response(&c, buffer, &length); break;
    }
    // Text fields must stay inside their records whatever arrived.
    return 0;
}
