#include "groups.h"

#include <memory>

namespace kvnctl {
namespace {

// Records are value-initialised on the heap: some are far too large for the stack.
template <class T> struct Box {
    T v{};
    auto ptr() {
        if constexpr (std::is_array_v<T>) return v; else return &v;
    }
};

template <class T> json wrap(const T& v) {
    if constexpr (std::is_arithmetic_v<T>) return json{{"value", to_json(v)}};
    else return to_json(v);
}

template <class T> void unwrap(const json& j, T& v, const std::string& name) {
    if constexpr (std::is_arithmetic_v<T>) {
        if (!j.is_object() || j.size() != 1 || !j.contains("value"))
            throw BadJson(name + ": an object {\"value\": N} is expected");
        from_json(j["value"], v, name + ".value");
    } else {
        from_json(j, v, name);
    }
}

template <class T, class Fn> auto getter(Fn fn) {
    return [fn](kvn_device_conn* c, json& out) {
        auto b = std::make_unique<Box<T>>();
        const int32_t rc = fn(c, b->ptr());
        if (rc == 0) out = wrap(b->v);
        return rc;
    };
}

// Setters take a pointer to the record, or the number itself for single-number groups.
template <class T, class Fn> auto setter(const char* name, Fn fn) {
    return [fn, name](kvn_device_conn* c, const json& j) {
        auto b = std::make_unique<Box<T>>();
        unwrap(j, b->v, name);
        if constexpr (std::is_invocable_v<Fn, kvn_device_conn*, T>) return fn(c, b->v);
        else return fn(c, b->ptr());
    };
}

constexpr uint32_t kNoIndex = 0xFFFFFFFFu;

// Schedule tables reset one schedule by index, or the whole table by a reset without one.
template <class Fn> auto resetter(Fn fn, uint32_t command = 0) {
    return [fn, command](kvn_device_conn* c, uint32_t index) {
        if constexpr (std::is_invocable_v<Fn, kvn_device_conn*, uint32_t>)
            return index == kNoIndex ? kvn_send_reset_command(c, command) : fn(c, index);
        else return fn(c);
    };
}

using Ts = kvn_led_setting[KVN_LED_COUNT];
using Bz = kvn_led_setting[KVN_BUZZER_COUNT];
using Au = kvn_audio_setting[KVN_AUDIO_COUNT];

}  // namespace

// NAME: the group's name on the command line; T: its record; get, set, reset functions.
#define GSR(name, T, g, s, r) {name, getter<T>(g), setter<T>(name, s), resetter(r)}
#define GS(name, T, g, s) {name, getter<T>(g), setter<T>(name, s), nullptr}
#define G(name, T, g) {name, getter<T>(g), nullptr, nullptr}

const std::vector<Group>& groups() {
    static const std::vector<Group> all = {
        GSR("led", Ts, kvn_get_led_setting, kvn_set_all_led_setting, kvn_reset_led_setting),
        GSR("buzzer", Bz, kvn_get_buzzer_setting, kvn_set_all_buzzer_setting, kvn_reset_buzzer_setting),
        GSR("audio", Au, kvn_get_audio_setting, kvn_set_all_audio_setting, kvn_reset_audio_setting),
        G("audio-list", kvn_media_list, kvn_retrieve_audio_list),
        G("image-list", kvn_media_list, kvn_retrieve_image_list),
        GSR("lcd", kvn_lcd_setting, kvn_get_lcd_settings, kvn_set_lcd_settings, kvn_reset_lcd_settings),
        GSR("device-notification", kvn_device_notification_setting, kvn_get_device_notification_setting,
            kvn_set_device_notification_setting, kvn_reset_device_notification_setting),
        GSR("biometric", kvn_biometric_setting, kvn_get_biometric_setting, kvn_set_biometric_setting,
            kvn_reset_biometric_setting),
        GSR("multi-user-verification", kvn_multi_user_verification_setting, kvn_get_multi_user_verification_setting,
            kvn_set_multi_user_verification_setting, kvn_reset_multi_user_verification_setting),
        GSR("fingerprint-sensor-autoon", uint32_t, kvn_get_fingerprint_sensor_autoon_status,
            kvn_set_fingerprint_sensor_autoon_status, kvn_reset_fingerprint_sensor_autoon_status),
        GSR("proximity-sensor", kvn_proximity_sensor_setting, kvn_get_proximity_sensor_settings,
            kvn_set_proximity_sensor_settings, kvn_reset_proximity_sensor_settings),
        GS("next-sensor", kvn_next_sensor_setting, kvn_get_next_sensor_settings, kvn_set_next_sensor_settings),
        GSR("antishock", kvn_antishock_setting, kvn_get_antishock_settings, kvn_set_antishock_settings,
            kvn_reset_antishock_settings),
        GSR("fire-alarm", uint32_t, kvn_get_fire_alarm_state, kvn_set_fire_alarm_state, kvn_reset_fire_alarm_state),
        GSR("dac", kvn_dac_setting, kvn_get_dac_settings, kvn_set_dac_settings, kvn_reset_dac_settings),
        GSR("pacs", uint32_t, kvn_get_pacs_setting, kvn_set_pacs_setting, kvn_reset_pacs_setting),
        GSR("user-display-image", uint32_t, kvn_retrieve_user_display_image_setting,
            kvn_store_user_display_image_setting, kvn_reset_user_display_image_setting),
        GSR("ethernet", kvn_ethernet_setting, kvn_get_ethernet_setting, kvn_set_ethernet_setting,
            kvn_reset_ethernet_setting),
        GSR("serial", kvn_serial_setting, kvn_get_serial_setting, kvn_set_serial_setting, kvn_reset_serial_setting),
        GSR("usb-auxiliary", kvn_usb_auxiliary_setting, kvn_get_usb_auxiliary_setting, kvn_set_usb_auxiliary_setting,
            kvn_reset_usb_auxiliary_setting),
        G("device-info", kvn_device_info, kvn_get_device_info),
        GSR("product-info", kvn_product_info, kvn_get_product_info, kvn_set_product_info, kvn_reset_product_info),
        GSR("debug-log", kvn_device_debug_log, kvn_get_device_debug_log, kvn_set_device_debug_log,
            kvn_reset_device_debug_log),
        GSR("security", kvn_device_security, kvn_get_device_security, kvn_set_device_security,
            kvn_reset_device_security),
        GS("date-time", kvn_device_date_time, kvn_get_device_date_time, kvn_set_device_date_time),
        G("device-status", kvn_device_status, kvn_get_device_status),
        GSR("vnc", kvn_device_vnc_setting, kvn_get_device_vnc_setting, kvn_set_device_vnc_setting,
            kvn_reset_device_vnc_setting),
        GSR("ssl", kvn_ssl_setting, kvn_get_ssl_setting, kvn_set_ssl_setting, kvn_reset_ssl_setting),
        G("ssl-cert-list", kvn_ssl_cert_list, kvn_get_ssl_cert_list),
        GSR("system-notification", kvn_system_notification_setting, kvn_get_system_notification_setting,
            kvn_set_system_notification_setting, kvn_reset_system_notification_setting),
        GSR("wifi-status", kvn_wifi_status, kvn_get_wifi_status, kvn_set_wifi_status, kvn_reset_wifi_status),
        G("wifi-network-info", kvn_wifi_network_info, kvn_get_wifi_network_info),
        GSR("ethernet-security", kvn_ethernet_security_setting, kvn_get_ethernet_security_setting,
            kvn_set_ethernet_security_setting, kvn_reset_ethernet_security_setting),
        GSR("vpn-profile", kvn_vpn_profile, kvn_get_vpn_profile, kvn_set_vpn_profile, kvn_reset_vpn_profile),
        G("vpn-status", kvn_vpn_status, kvn_get_vpn_status),
        G("user-cert-list", kvn_vpn_cert_list, kvn_get_user_cert_list),
        G("ca-cert-list", kvn_vpn_cert_list, kvn_get_ca_cert_list),
        G("uploaded-cert-list", kvn_vpn_cert_list, kvn_get_uploaded_cert_list),
        GSR("specific-purpose-input", kvn_specific_purpose_input_setting, kvn_get_specific_purpose_input_setting,
            kvn_set_specific_purpose_input_setting, kvn_reset_specific_purpose_input_setting),
        GSR("specific-purpose-output", kvn_specific_purpose_output_setting, kvn_get_specific_purpose_output_setting,
            kvn_set_specific_purpose_output_setting, kvn_reset_specific_purpose_output_setting),
        GSR("time-attendance", kvn_time_attendance_setting, kvn_get_time_attendance_setting,
            kvn_set_time_attendance_setting, kvn_reset_time_attendance_setting),
        GSR("job-codes", kvn_job_code_list, kvn_get_job_code_list, kvn_set_job_code_list, kvn_reset_job_code_list),
        GSR("voip", kvn_voip_setting, kvn_get_voip_setting, kvn_set_voip_setting, kvn_reset_voip_setting),
        GSR("voip-contacts", kvn_voip_contact_list, kvn_get_voip_contact_list, kvn_set_voip_contact_list,
            kvn_reset_voip_contact_list),
        G("voip-default-contact", kvn_voip_contact, kvn_get_voip_default_contact),
        GSR("biometric-schedule", kvn_week_schedule, kvn_get_biometric_schedule_setting,
            kvn_set_biometric_schedule_setting, kvn_reset_biometric_schedule_setting),
        GSR("door-open-schedule", kvn_week_schedule, kvn_get_door_open_schedule_setting,
            kvn_set_door_open_schedule_setting, kvn_reset_door_open_schedule_setting),
        {"holiday-schedules", getter<kvn_holiday_schedule_table>(kvn_get_all_holiday_schedule_setting),
         setter<kvn_holiday_schedule_table>("holiday-schedules", kvn_set_all_holiday_schedule_setting),
         resetter(kvn_reset_holiday_schedule_setting, 106)},
        {"access-schedules", getter<kvn_access_schedule_table>(kvn_get_all_access_schedule_setting),
         setter<kvn_access_schedule_table>("access-schedules", kvn_set_all_access_schedule_setting),
         resetter(kvn_reset_access_schedule_setting, 105)},
        G("access-schedule-names", kvn_access_schedule_name_list, kvn_get_access_schedule_list),
        GSR("card-preference", uint16_t, kvn_get_card_preference_settings, kvn_set_card_preference_settings,
            kvn_reset_card_preference_settings),
        GSR("csn", kvn_csn_setting, kvn_get_csn_setting, kvn_set_csn_setting, kvn_reset_csn_setting),
        GSR("desfire", kvn_desfire_settings, kvn_get_desfire_settings, kvn_set_desfire_settings,
            kvn_reset_desfire_settings),
        GS("mifare-layout", kvn_mifare_cards_layout, kvn_get_mifare_cards_layout, kvn_set_mifare_cards_layout),
        GSR("hid-layout", kvn_hid_cards_layout, kvn_get_hid_cards_layout, kvn_set_hid_cards_layout,
            kvn_reset_hid_card_layout),
        GSR("key-manipulation", kvn_key_manipulation_flags, kvn_get_key_manipulation_flags,
            kvn_set_key_manipulation_flags, kvn_reset_key_manipulation_flags),
        GSR("srl-server", kvn_srl_server_settings, kvn_get_srl_server_settings, kvn_set_srl_server_settings,
            kvn_reset_srl_server_settings),
        G("revoked-cards", kvn_revoked_card_list, kvn_get_revoked_smart_card_list),
        G("wiegand-formats", kvn_wiegand_format_list, kvn_get_wiegand_format_list),
        GSR("wiegand-input", kvn_wiegand_input_setting, kvn_get_wiegand_input_setting, kvn_set_wiegand_input_setting,
            kvn_reset_wiegand_input_setting),
        GSR("wiegand-output", kvn_wiegand_output_setting, kvn_get_wiegand_output_setting,
            kvn_set_wiegand_output_setting, kvn_reset_wiegand_output_setting),
        GSR("wiegand-pulse", kvn_wiegand_pulse_setting, kvn_get_wiegand_pulse_setting, kvn_set_wiegand_pulse_setting,
            kvn_reset_wiegand_pulse_setting),
        GSR("multi-wiegand-input", kvn_multi_wiegand_input_setting, kvn_get_multi_wiegand_input_setting,
            kvn_set_multi_wiegand_input_setting, kvn_reset_multi_wiegand_input_setting),
    };
    return all;
}

const Group* find_group(const std::string& name) {
    for (const auto& g : groups())
        if (g.name == name) return &g;
    return nullptr;
}

}  // namespace kvnctl
