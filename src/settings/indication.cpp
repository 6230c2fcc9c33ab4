// Indication families: LED (104), buzzer (111), audio (110, 801-803), images
// (140, 205), LCD (149) and device notification (507).
#include <cstddef>

#include "kvnsdk2.h"
#include "settings/command.h"
#include "settings/fields.h"

namespace kvn {
namespace {

constexpr uint32_t kLed = 104, kBuzzer = 111, kAudio = 110, kPlayAudio = 801, kStopAudio = 802,
                   kAudioList = 803, kImageList = 140, kDisplayImage = 205, kLcd = 149, kNotification = 507;

// LED and buzzer entry, in emission order: the matrix goes column by column.
#define LED(member, tag, wire) KVN_FIELD(kvn_led_setting, member, tag, wire)
constexpr Field kLedEntry[] = {
    LED(index, 3, u32),         LED(enable, 2, u8),         LED(option, 13, u32),
    LED(matrix[0][0], 4, u32),  LED(matrix[1][0], 7, u32),  LED(matrix[2][0], 10, u32),
    LED(matrix[0][1], 5, u32),  LED(matrix[1][1], 8, u32),  LED(matrix[2][1], 11, u32),
    LED(matrix[0][2], 6, u32),  LED(matrix[1][2], 9, u32),  LED(matrix[2][2], 12, u32),
};
#undef LED

// Audio entry as the single-entry set sends it: whole text arrays, value under tag 8.
#define AUDIO(member, tag, wire) KVN_FIELD(kvn_audio_setting, member, tag, wire)
constexpr Field kAudioSingle[] = {
    AUDIO(index, 3, u32), AUDIO(short_text, 4, text_whole), AUDIO(flag, 5, u8),
    AUDIO(long_text, 6, text_whole), AUDIO(value, 8, u32),
};
// ...as the all-entries set sends it: texts at their own length, value under tag 7.
constexpr Field kAudioAll[] = {
    AUDIO(index, 3, u32), AUDIO(short_text, 4, text), AUDIO(flag, 5, u8),
    AUDIO(long_text, 6, text), AUDIO(value, 7, u32),
};
// ...as a read stores it: both texts take at most 51 bytes.
constexpr Field kAudioRead[] = {
    AUDIO(index, 3, u32), AUDIO(short_text, 4, text), AUDIO(flag, 5, u8),
    KVN_FIELD_LIMIT(kvn_audio_setting, long_text, 6, text, 51), AUDIO(value, 7, u32),
};
#undef AUDIO

constexpr Field kPlay[] = {
    KVN_FIELD(kvn_audio_play_request, short_text, 4, text),
    KVN_FIELD(kvn_audio_play_request, long_text, 6, text),
    KVN_FIELD(kvn_audio_play_request, value, 8, u32),
};

constexpr Field kDisplay[] = {KVN_FIELD(kvn_display_image_request, name, 3, text)};

constexpr Field kLcdFields[] = {
    KVN_FIELD(kvn_lcd_setting, value, 1, u32),
    KVN_FIELD(kvn_lcd_setting, short_text, 2, text),
};

constexpr Field kNotificationFields[] = {
    KVN_FIELD(kvn_device_notification_setting, flag, 1, u8),
    KVN_FIELD(kvn_device_notification_setting, text_a, 2, text),
    KVN_FIELD(kvn_device_notification_setting, text_b, 3, text),
    KVN_FIELD(kvn_device_notification_setting, text_c, 4, text),
    KVN_FIELD(kvn_device_notification_setting, value, 5, u32),
};

// Each entry travels as one tag-1 container of its fields.
template <class Rec>
void encode_entries(tlv::Writer& w, FieldTable table, const Rec* entries, uint32_t first, uint32_t count) noexcept {
    for (uint32_t i = first; i < first + count; ++i) {
        const auto mark = w.open();
        encode_fields(w, table, &entries[i]);
        w.close(mark, 1);
    }
}

// Reads tag-1 containers; inside each, tag 3 names the 1-based entry that receives
// the fields after it. The terminal's entry numbers are all accepted, but one
// outside the caller's array selects nothing, so its fields are dropped.
template <class Rec>
int32_t decode_entries(const uint8_t* p, uint32_t n, FieldTable table, Rec* entries, uint32_t count) noexcept {
    return tlv::decode(p, n, [&](uint8_t tag, const uint8_t* v, uint32_t len) -> int32_t {
        if (tag != 1) return 0;
        Rec* entry = nullptr;
        return tlv::decode(v, len, [&](uint8_t t, const uint8_t* fv, uint32_t fl) {
            if (t == 3) {
                const uint32_t number = tlv::value_u32(fv, fl);
                entry = (number >= 1 && number <= count) ? &entries[number - 1] : nullptr;
            }
            if (entry != nullptr) store_field(table, t, fv, fl, entry);
            return 0;
        });
    });
}

template <class Rec>
int32_t set_entries(kvn_device_conn* conn, uint32_t command, FieldTable table, const Rec* entries, uint32_t first,
                    uint32_t count) noexcept {
    if (entries == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    return cmd::set(conn, command, [&](tlv::Writer& w) { encode_entries(w, table, entries, first, count); });
}

template <class Rec>
int32_t set_single(kvn_device_conn* conn, uint32_t command, FieldTable table, const Rec* entries, uint32_t entry,
                   uint32_t count) noexcept {
    if (entry < 1 || entry > count) return KVN_E_INVALID_VALUE_RECEIVED;
    return set_entries(conn, command, table, entries, entry - 1, 1);
}

template <class Rec>
int32_t get_entries(kvn_device_conn* conn, uint32_t command, FieldTable table, Rec* entries, uint32_t count) noexcept {
    if (entries == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    return cmd::get(conn, command,
                    [&](const uint8_t* p, uint32_t n) { return decode_entries(p, n, table, entries, count); });
}

// Media lists: the k-th name element and the k-th text element fill entry k. The
// list is rebuilt by every read; entries past the array are counted, not stored.
int32_t get_media_list(kvn_device_conn* conn, uint32_t command, uint8_t name_tag, uint8_t text_tag,
                       kvn_media_list* list) noexcept {
    if (list == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    return cmd::get(conn, command, [&](const uint8_t* p, uint32_t n) {
        list->count = list->total = 0;
        uint32_t seen[2] = {0, 0};  // names, texts
        return tlv::decode(p, n, [&](uint8_t tag, const uint8_t* v, uint32_t len) {
            if (tag != name_tag && tag != text_tag) return 0;
            uint32_t& k = seen[tag == name_tag ? 0 : 1];
            if (k < KVN_MEDIA_LIST_MAX) {
                kvn_media_list_entry& e = list->entries[k];
                if (k >= list->count) e = kvn_media_list_entry{};  // a new entry starts empty
                tlv::copy_text(tag == name_tag ? e.name : e.text, sizeof e.name, v, len);
            }
            ++k;
            list->total = seen[0] > seen[1] ? seen[0] : seen[1];
            list->count = list->total < KVN_MEDIA_LIST_MAX ? list->total : KVN_MEDIA_LIST_MAX;
            return 0;
        });
    });
}

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_set_single_led_setting(kvn_device_conn* conn, const kvn_led_setting* leds, uint32_t entry) {
    return set_single(conn, kLed, kLedEntry, leds, entry, KVN_LED_COUNT);
}
KVN_API int32_t kvn_set_all_led_setting(kvn_device_conn* conn, const kvn_led_setting* leds) {
    return set_entries(conn, kLed, kLedEntry, leds, 0, KVN_LED_COUNT);
}
KVN_API int32_t kvn_get_led_setting(kvn_device_conn* conn, kvn_led_setting* leds) {
    return get_entries(conn, kLed, kLedEntry, leds, KVN_LED_COUNT);
}
KVN_API int32_t kvn_reset_led_setting(kvn_device_conn* conn) { return cmd::reset(conn, kLed); }

KVN_API int32_t kvn_set_single_buzzer_setting(kvn_device_conn* conn, const kvn_led_setting* buzzers, uint32_t entry) {
    return set_single(conn, kBuzzer, kLedEntry, buzzers, entry, KVN_BUZZER_COUNT);
}
KVN_API int32_t kvn_set_all_buzzer_setting(kvn_device_conn* conn, const kvn_led_setting* buzzers) {
    return set_entries(conn, kBuzzer, kLedEntry, buzzers, 0, KVN_BUZZER_COUNT);
}
KVN_API int32_t kvn_get_buzzer_setting(kvn_device_conn* conn, kvn_led_setting* buzzers) {
    return get_entries(conn, kBuzzer, kLedEntry, buzzers, KVN_BUZZER_COUNT);
}
KVN_API int32_t kvn_reset_buzzer_setting(kvn_device_conn* conn) { return cmd::reset(conn, kBuzzer); }

KVN_API int32_t kvn_set_single_audio_setting(kvn_device_conn* conn, const kvn_audio_setting* audio, uint32_t entry) {
    return set_single(conn, kAudio, kAudioSingle, audio, entry, KVN_AUDIO_COUNT);
}
KVN_API int32_t kvn_set_all_audio_setting(kvn_device_conn* conn, const kvn_audio_setting* audio) {
    return set_entries(conn, kAudio, kAudioAll, audio, 0, KVN_AUDIO_COUNT);
}
KVN_API int32_t kvn_get_audio_setting(kvn_device_conn* conn, kvn_audio_setting* audio) {
    return get_entries(conn, kAudio, kAudioRead, audio, KVN_AUDIO_COUNT);
}
KVN_API int32_t kvn_reset_audio_setting(kvn_device_conn* conn) { return cmd::reset(conn, kAudio); }

KVN_API int32_t kvn_play_audio(kvn_device_conn* conn, const kvn_audio_play_request* request) {
    return cmd::set_record(conn, kPlayAudio, kPlay, request);
}

// The terminal ignores the content, but expects the whole settings buffer.
KVN_API int32_t kvn_stop_audio(kvn_device_conn* conn) {
    uint8_t buffer[cmd::kSettingsBuffer];
    Exchange ex{kStopAudio, KVN_REQ_SET};
    ex.send_length = cmd::kSettingsBuffer;
    return exchange(conn, buffer, sizeof buffer, ex);
}

KVN_API int32_t kvn_retrieve_audio_list(kvn_device_conn* conn, kvn_media_list* list) {
    return get_media_list(conn, kAudioList, 11, 12, list);
}
KVN_API int32_t kvn_retrieve_image_list(kvn_device_conn* conn, kvn_media_list* list) {
    return get_media_list(conn, kImageList, 1, 2, list);
}
KVN_API int32_t kvn_display_image(kvn_device_conn* conn, const kvn_display_image_request* request) {
    return cmd::set_record(conn, kDisplayImage, kDisplay, request);
}

KVN_API int32_t kvn_set_lcd_settings(kvn_device_conn* conn, const kvn_lcd_setting* setting) {
    return cmd::set_record(conn, kLcd, kLcdFields, setting);
}
KVN_API int32_t kvn_get_lcd_settings(kvn_device_conn* conn, kvn_lcd_setting* setting) {
    return cmd::get_record(conn, kLcd, kLcdFields, setting);
}
KVN_API int32_t kvn_reset_lcd_settings(kvn_device_conn* conn) { return cmd::reset(conn, kLcd); }

KVN_API int32_t kvn_set_device_notification_setting(kvn_device_conn* conn,
                                                    const kvn_device_notification_setting* setting) {
    return cmd::set_record(conn, kNotification, kNotificationFields, setting);
}
KVN_API int32_t kvn_get_device_notification_setting(kvn_device_conn* conn, kvn_device_notification_setting* setting) {
    return cmd::get_record(conn, kNotification, kNotificationFields, setting);
}
KVN_API int32_t kvn_reset_device_notification_setting(kvn_device_conn* conn) {
    return cmd::reset(conn, kNotification);
}

}  // extern "C"
