// Command ids, one list: the id and the name the families use for it.
#pragma once

#include <cstdint>

// X(id, name)
#define KVN_COMMAND_LIST(X)                                                                              \
    X(1, enrollment) X(3, verify_by_template) X(4, verify_by_user_id) X(5, verify_by_user_record)        \
    X(6, identify_user) X(7, user_record) X(8, user_count) X(10, user_group) X(11, user_group_count)     \
    X(12, delete_all_user_groups) X(13, validate_finger_index) X(14, update_template)                    \
    X(15, enrollment_with_duplicate_check) X(16, identify_with_template)                                 \
    X(101, ethernet) X(102, serial) X(103, usb_auxiliary) X(104, led) X(105, access_schedule)            \
    X(106, holiday_schedule) X(107, biometric_schedule) X(108, biometric) X(109, time_attendance)        \
    X(110, audio) X(111, buzzer) X(112, specific_purpose_input) X(113, specific_purpose_output)          \
    X(115, door) X(116, product_info) X(119, access_schedule_list) X(120, file_transfer)                 \
    X(121, reboot_forcefully) X(122, factory_default) X(123, wiegand_input) X(124, wiegand_output)       \
    X(125, system_notification) X(126, date_time) X(127, ssl) X(128, device_security) X(129, debug_log)  \
    X(130, wiegand_pulse) X(131, reboot_gracefully) X(133, ssl_cert_list) X(134, vnc)                    \
    X(135, wifi_status) X(136, wifi_scan) X(137, wifi_connection) X(138, wifi_network_info)              \
    X(139, multi_user_verification) X(140, image_list) X(141, srl_server) X(142, voip)                   \
    X(145, voip_contacts) X(146, job_codes) X(147, voip_default_contact) X(149, lcd)                     \
    X(155, door_open_schedule) X(156, user_display_image) X(163, ethernet_security)                      \
    X(165, multi_wiegand_input) X(166, next_sensor) X(201, device_info) X(202, device_status)            \
    X(205, display_image) X(301, sensor_test) X(302, sensor_reset) X(303, sensor_auto_on)                \
    X(304, proximity_sensor) X(305, fire_alarm) X(306, antishock)                                        \
    X(401, logs) X(402, unread_logs) X(403, read_logs) X(404, logs_for_date) X(405, log_total_count)     \
    X(406, log_unread_count) X(407, log_read_count) X(408, log_count_for_date) X(409, mark_logs_read)     \
    X(410, mark_log_online) X(411, log_count_for_criteria) X(412, logs_for_criteria)                     \
    X(413, delete_all_logs) X(505, delete_template_indexes) X(507, device_notification)                  \
    X(508, biometric_count) X(601, device_action) X(701, wiegand_format_upload)                          \
    X(702, wiegand_format_list) X(703, prox_card_serial) X(704, wiegand_format_delete)                   \
    X(801, play_audio) X(802, stop_audio) X(803, audio_list) X(901, card_serial) X(902, csn)             \
    X(903, access_keys) X(904, mifare_layout) X(905, smart_card_data) X(906, secure_card)                \
    X(907, format_card) X(908, desfire) X(909, read_card) X(910, revoked_cards)                          \
    X(911, revoked_card_count) X(912, key_manipulation) X(913, hid_layout) X(916, card_preference)       \
    X(917, pacs) X(1001, vpn_profile) X(1002, vpn_status) X(1003, user_certs) X(1004, ca_certs)          \
    X(1005, install_certificate) X(1006, uninstall_certificate) X(1007, uploaded_certs)

namespace kvn::id {

#define KVN_COMMAND_ENUM(value, name) name = value,
enum : uint32_t { KVN_COMMAND_LIST(KVN_COMMAND_ENUM) };
#undef KVN_COMMAND_ENUM

}  // namespace kvn::id
