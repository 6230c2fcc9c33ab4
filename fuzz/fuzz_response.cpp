// Feeds arbitrary terminal answers to every reading export (the `fuzz_covers_every_reader`
// test holds the list below against the header's description). The first input byte
// picks the export and whether the rest is wrapped in a well-formed frame (so the
// decoders see it) or sent raw (so the frame checks do).
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include <stdlib.h>  // mkdtemp

#include "kvnsdk2.h"
#include "link/crc32.h"
#include "memory_transport.h"

namespace {

std::vector<uint8_t> frame(const uint8_t* payload, size_t n) {
    std::vector<uint8_t> f;
    auto put = [&f](uint32_t v) { for (int b = 0; b < 32; b += 8) f.push_back(static_cast<uint8_t>(v >> b)); };
    for (uint32_t w : {0xAABBCCDDu, 1u, 0x00020002u, 0u, 0u, 0u, static_cast<uint32_t>(n)}) put(w);
    f.insert(f.end(), payload, payload + n);
    put(kvn::crc32(0, f.data() + 4, 24 + n));
    return f;
}

// Each record is kept between runs (one per type, shared by the exports that take
// it) so that stale contents (counts, lengths) left by earlier answers are exercised too.
template <class T> T* keep() { static auto r = std::make_unique<T>(); return r.get(); }
template <class T, size_t N> T* keep_array() { return keep<std::array<T, N>>()->data(); }
// An export that takes one record after the connection, given that record.
template <class T>
void run(int32_t (*get)(kvn_device_conn*, T*), kvn_device_conn* c) { get(c, keep<std::remove_const_t<T>>()); }

// An enrolment request with its answer buffers (the second one only sometimes).
kvn_enrollment_request* enrolment(bool both) {
    auto* e = keep<std::pair<kvn_enrollment_request, std::array<uint8_t, 2 * KVN_ENROLLMENT_DATA_SIZE>>>();
    e->first.data_t03 = e->second.data();
    e->first.data_t06 = both ? e->second.data() + KVN_ENROLLMENT_DATA_SIZE : nullptr;
    return &e->first;
}

// Transfers read a local file of two packets and write into a scratch file, both in
// a directory of the run's own under the system's temporary directory.
kvn_file_transfer_request* fuzz_transfer(bool upload) {
    static kvn_file_transfer_request r{5, nullptr, "f"};
    static const std::string dir = [] {
        std::string d = (std::filesystem::temp_directory_path() / "kvn-fuzz-XXXXXX").string();
        return mkdtemp(d.data()) ? d : std::string(".");
    }();
    static const std::string up = dir + "/upload.bin", down = dir + "/download.bin";
    static const bool made = [] {
        static const uint8_t zeros[70000] = {};
        std::FILE* f = std::fopen(up.c_str(), "wb");
        return f != nullptr && std::fwrite(zeros, 1, sizeof zeros, f) + std::fclose(f) == sizeof zeros;
    }();
    r.local_path = made && upload ? up.c_str() : down.c_str();
    return &r;
}

}  // namespace

// One export per case: the record it reads into is the one its signature names.
#define GET(n, f) case n: run(f, &c); break;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    // Two bytes pick the export (low 15 bits) and whether the rest is wrapped in a
    // well-formed frame (top bit clear) or sent raw.
    const unsigned pick = data[0] | (data[1] << 8);
    std::vector<uint8_t> input =
        (pick & 0x8000) ? std::vector<uint8_t>(data + 2, data + size) : frame(data + 2, size - 2);
    kvnfuzz::feed(input.data(), input.size());
    kvn_device_conn c = kvnfuzz::connection();
    uint8_t buffer[256];
    uint32_t length = sizeof buffer;
    switch (pick & 0x7FFF) {
        case 0: kvn_get_led_setting(&c, keep_array<kvn_led_setting, KVN_BUZZER_COUNT>()); break;
        case 1: kvn_get_buzzer_setting(&c, keep_array<kvn_led_setting, KVN_BUZZER_COUNT>()); break;
        case 2: kvn_get_audio_setting(&c, keep_array<kvn_audio_setting, KVN_AUDIO_COUNT>()); break;
        GET(3, kvn_retrieve_audio_list) GET(4, kvn_retrieve_image_list) GET(5, kvn_get_lcd_settings)
        GET(6, kvn_get_device_notification_setting) GET(7, kvn_get_biometric_setting)
        GET(8, kvn_get_multi_user_verification_setting) GET(9, kvn_test_fingerprint_sensor)
        GET(10, kvn_get_proximity_sensor_settings) GET(11, kvn_get_next_sensor_settings)
        GET(12, kvn_get_antishock_settings) GET(13, kvn_get_fire_alarm_state)
        GET(14, kvn_get_fingerprint_sensor_autoon_status) GET(15, kvn_get_dac_settings) GET(16, kvn_set_dac_settings)
        case 17: kvn_send_reset_command(&c, 121); break;

        // Network and device management: cases 100 to 199.
        GET(100, kvn_get_ethernet_setting) GET(101, kvn_get_serial_setting) GET(102, kvn_get_usb_auxiliary_setting)
        GET(103, kvn_get_device_info) GET(104, kvn_get_product_info) GET(105, kvn_get_device_debug_log)
        GET(106, kvn_get_device_security) GET(107, kvn_get_device_date_time) GET(108, kvn_get_device_status)
        GET(109, kvn_get_device_vnc_setting) GET(110, kvn_get_ssl_setting) GET(111, kvn_get_ssl_cert_list)
        GET(112, kvn_get_system_notification_setting) GET(113, kvn_get_wifi_status)
        case 114: {  // the whole capacity every time: the count only shrinks otherwise
            uint8_t n = UINT8_MAX;
            kvn_get_wifi_scan_list(&c, keep<kvn_wifi_connection_info>(), keep_array<kvn_wifi_scan_entry, UINT8_MAX>(), &n);
        } break;
        GET(115, kvn_get_wifi_network_info) GET(116, kvn_get_ethernet_security_setting) GET(117, kvn_get_vpn_profile)
        GET(118, kvn_get_vpn_status) GET(119, kvn_get_user_cert_list) GET(120, kvn_get_ca_cert_list)
        GET(121, kvn_get_uploaded_cert_list)

        // Specific-purpose I/O, time attendance, job codes, VoIP, schedules: cases 200 to 299.
        GET(200, kvn_get_specific_purpose_input_setting) GET(201, kvn_get_specific_purpose_output_setting)
        GET(202, kvn_get_time_attendance_setting) GET(203, kvn_get_job_code_list) GET(204, kvn_get_voip_setting)
        GET(205, kvn_get_voip_contact_list) GET(206, kvn_get_voip_default_contact)
        GET(207, kvn_get_biometric_schedule_setting) GET(208, kvn_get_door_open_schedule_setting)
        GET(209, kvn_get_all_holiday_schedule_setting) GET(210, kvn_get_all_access_schedule_setting)
        GET(211, kvn_get_access_schedule_list)

        // Users, enrolment, identification, verification, smart cards: cases 300 to 399.
        GET(300, kvn_get_user_record) GET(301, kvn_delete_user_record)
        case 302: {
            kvn_user_store_request rq{keep<kvn_user_record>(), keep<kvn_user_store_result>()};
            kvn_store_user_record(&c, &rq);
        } break;
        GET(303, kvn_get_user_count) GET(304, kvn_get_biometric_count)
        case 305: kvn_enrollment(&c, enrolment(false)); break;
        case 306: kvn_enrollment_with_duplicate_identify(&c, enrolment(true)); break;
        GET(307, kvn_identify_user) GET(308, kvn_identify_user_with_biometric_template) GET(309, kvn_verify_by_template)
        GET(310, kvn_verify_by_user_id)
        case 311: {
            kvn_verify_user_record_request verify{keep<kvn_user_record>(), nullptr, {}};
            kvn_verify_by_user_record(&c, &verify);
        } break;
        GET(312, kvn_read_data_on_smart_card) GET(313, kvn_get_revoked_smart_card_count)
        GET(314, kvn_get_revoked_smart_card_list)

        // Transaction logs, file transfer, user groups: cases 400 to 499.
        GET(400, kvn_get_transaction_logs) GET(401, kvn_get_unread_transaction_logs)
        GET(402, kvn_get_read_transaction_logs) GET(403, kvn_get_transaction_logs_for_date)
        GET(404, kvn_get_transaction_logs_for_criteria) GET(405, kvn_get_transaction_log_total_count)
        GET(406, kvn_get_transaction_log_unread_count) GET(407, kvn_get_transaction_log_read_count)
        GET(408, kvn_get_transaction_log_count_for_date) GET(409, kvn_get_transaction_log_count_for_criteria)
        GET(410, kvn_retrieve_user_group) GET(411, kvn_get_total_user_group_count)
        GET(412, kvn_retrieve_user_display_image_setting)
        case 413: kvn_upload_file(&c, fuzz_transfer(true)); break;
        case 414: kvn_download_file(&c, fuzz_transfer(false)); break;

        // Card reading and layouts, card server, Wiegand: cases 500 to 599.
        GET(500, kvn_read_card_serial_number)
        case 501: kvn_read_prox_card_serial_number(&c, keep_array<uint8_t, KVN_CARD_SERIAL_SIZE>()); break;
        GET(502, kvn_get_csn_setting) GET(503, kvn_get_pacs_setting) GET(504, kvn_get_mifare_cards_layout)
        GET(505, kvn_get_hid_cards_layout) GET(506, kvn_get_desfire_settings) GET(507, kvn_get_key_manipulation_flags)
        GET(508, kvn_get_srl_server_settings) GET(509, kvn_get_card_preference_settings)
        GET(510, kvn_get_wiegand_format_list) GET(511, kvn_get_wiegand_input_setting)
        GET(512, kvn_get_wiegand_output_setting) GET(513, kvn_get_wiegand_pulse_setting)
        GET(514, kvn_get_multi_wiegand_input_setting) GET(515, kvn_upload_wiegand_format)

        default: kvn_receive_response(&c, buffer, &length); break;
    }
    return 0;
}
