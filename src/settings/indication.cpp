// Indication families: LED (104), buzzer (111), audio (110, 801-803), images
// (140, 205), LCD (149) and device notification (507).
#include "core/command.h"
#include "kvnsdk2.h"
#include "link/commands.h"

namespace kvn {
namespace {

using namespace row;

// LED and buzzer entry, in emission order: the matrix goes column by column.
#define LED(member) KVN_MEMBER(kvn_led_setting, member)
constexpr Field kLedEntry[] = {
    u32(3, LED(index)),         u8(2, LED(enable)),         u32(13, LED(option)),
    u32(4, LED(matrix[0][0])),  u32(7, LED(matrix[1][0])),  u32(10, LED(matrix[2][0])),
    u32(5, LED(matrix[0][1])),  u32(8, LED(matrix[1][1])),  u32(11, LED(matrix[2][1])),
    u32(6, LED(matrix[0][2])),  u32(9, LED(matrix[1][2])),  u32(12, LED(matrix[2][2])),
};
#undef LED

// Audio entry as the single-entry set sends it: whole text arrays, value under tag 8.
#define AUDIO(member) KVN_MEMBER(kvn_audio_setting, member)
constexpr Field kAudioSingle[] = {
    u32(3, AUDIO(index)), bytes(4, AUDIO(short_text)).nonzero(), u8(5, AUDIO(flag)),
    bytes(6, AUDIO(long_text)).nonzero(), u32(8, AUDIO(value)),
};
// ...as the all-entries set sends it and a read stores it: texts at their own
// length, value under tag 7; a read fills at most 51 bytes of either text.
constexpr Field kAudioAll[] = {
    u32(3, AUDIO(index)), text(4, AUDIO(short_text)).nonzero(), u8(5, AUDIO(flag)),
    text(6, AUDIO(long_text)).nonzero().bound(51), u32(7, AUDIO(value)),
};
#undef AUDIO

// Each entry is one tag-1 container; inside it tag 3 names the 1-based entry that
// receives the fields after it. Every entry number is accepted, but one outside
// the caller's array selects nothing, so its fields are dropped.
constexpr List kLedList = array<kvn_led_setting, KVN_LED_COUNT>().in(1).by(3, 1).of(kLedEntry);
constexpr List kBuzzerList = array<kvn_led_setting, KVN_BUZZER_COUNT>().in(1).by(3, 1).of(kLedEntry);
constexpr List kAudioSingleList = array<kvn_audio_setting, KVN_AUDIO_COUNT>().in(1).by(3, 1).of(kAudioSingle);
constexpr List kAudioAllList = array<kvn_audio_setting, KVN_AUDIO_COUNT>().in(1).by(3, 1).of(kAudioAll);
constexpr Field kLeds[] = {list(kLedList)};
constexpr Field kBuzzers[] = {list(kBuzzerList)};
constexpr Field kAudioOne[] = {list(kAudioSingleList)};
constexpr Field kAudio[] = {list(kAudioAllList)};

// Media lists: the k-th name element and the k-th text element fill entry k; the
// list is rebuilt by every read, and entries past the array are counted only.
#define MEDIA(member) KVN_MEMBER(kvn_media_list_entry, member)
constexpr Field kAudioListEntry[] = {text(11, MEDIA(name)).terminate(51), text(12, MEDIA(text)).terminate(51)};
constexpr Field kImageListEntry[] = {text(1, MEDIA(name)).terminate(51), text(2, MEDIA(text)).terminate(51)};
#undef MEDIA
constexpr List media(Desc entry) {
    return array(KVN_MEMBER(kvn_media_list, entries))
        .of(entry)
        .pairing()
        .clearing_new()
        .counting(Counter::count_total, offsetof(kvn_media_list, count), offsetof(kvn_media_list, total));
}
constexpr List kAudioMedia = media(kAudioListEntry);
constexpr List kImageMedia = media(kImageListEntry);
constexpr Field kAudioList[] = {list(kAudioMedia)};
constexpr Field kImageList[] = {list(kImageMedia)};

constexpr Field kPlay[] = {
    text(4, KVN_MEMBER(kvn_audio_play_request, short_text)).nonzero(),
    text(6, KVN_MEMBER(kvn_audio_play_request, long_text)).nonzero(),
    u32(8, KVN_MEMBER(kvn_audio_play_request, value)),
};

constexpr Field kDisplay[] = {text(3, KVN_MEMBER(kvn_display_image_request, name)).nonzero()};

constexpr Field kLcd[] = {
    u32(1, KVN_MEMBER(kvn_lcd_setting, value)),
    text(2, KVN_MEMBER(kvn_lcd_setting, short_text)).nonzero(),
};

#define NOTE(member) KVN_MEMBER(kvn_device_notification_setting, member)
constexpr Field kNotification[] = {
    u8(1, NOTE(flag)), text(2, NOTE(text_a)).nonzero(), text(3, NOTE(text_b)).nonzero(),
    text(4, NOTE(text_c)).nonzero(), u32(5, NOTE(value)),
};
#undef NOTE

// One entry, 1-based; an entry number outside the array sends nothing.
int32_t set_one(kvn_device_conn* conn, uint32_t command, Desc desc, const void* entries, uint32_t entry,
                uint32_t count) noexcept {
    if (entry < 1 || entry > count) return KVN_E_INVALID_VALUE_RECEIVED;
    const Slice one{entry - 1, 1};
    return cmd::set(conn, command, desc, entries, Capacity::buffer, &one);
}

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_set_single_led_setting(kvn_device_conn* conn, const kvn_led_setting* leds, uint32_t entry) {
    return set_one(conn, id::led, kLeds, leds, entry, KVN_LED_COUNT);
}
KVN_API int32_t kvn_set_all_led_setting(kvn_device_conn* conn, const kvn_led_setting* leds) {
    return cmd::set(conn, id::led, kLeds, leds);
}
KVN_API int32_t kvn_get_led_setting(kvn_device_conn* conn, kvn_led_setting* leds) {
    return cmd::get(conn, id::led, kLeds, leds);
}
KVN_API int32_t kvn_reset_led_setting(kvn_device_conn* conn) { return cmd::reset(conn, id::led); }

KVN_API int32_t kvn_set_single_buzzer_setting(kvn_device_conn* conn, const kvn_led_setting* buzzers, uint32_t entry) {
    return set_one(conn, id::buzzer, kBuzzers, buzzers, entry, KVN_BUZZER_COUNT);
}
KVN_API int32_t kvn_set_all_buzzer_setting(kvn_device_conn* conn, const kvn_led_setting* buzzers) {
    return cmd::set(conn, id::buzzer, kBuzzers, buzzers);
}
KVN_API int32_t kvn_get_buzzer_setting(kvn_device_conn* conn, kvn_led_setting* buzzers) {
    return cmd::get(conn, id::buzzer, kBuzzers, buzzers);
}
KVN_API int32_t kvn_reset_buzzer_setting(kvn_device_conn* conn) { return cmd::reset(conn, id::buzzer); }

KVN_API int32_t kvn_set_single_audio_setting(kvn_device_conn* conn, const kvn_audio_setting* audio, uint32_t entry) {
    return set_one(conn, id::audio, kAudioOne, audio, entry, KVN_AUDIO_COUNT);
}
KVN_API int32_t kvn_set_all_audio_setting(kvn_device_conn* conn, const kvn_audio_setting* audio) {
    return cmd::set(conn, id::audio, kAudio, audio);
}
KVN_API int32_t kvn_get_audio_setting(kvn_device_conn* conn, kvn_audio_setting* audio) {
    return cmd::get(conn, id::audio, kAudio, audio);
}
KVN_API int32_t kvn_reset_audio_setting(kvn_device_conn* conn) { return cmd::reset(conn, id::audio); }

KVN_API int32_t kvn_play_audio(kvn_device_conn* conn, const kvn_audio_play_request* request) {
    return cmd::set(conn, id::play_audio, kPlay, request);
}

// The terminal ignores the content, but expects the whole settings buffer.
KVN_API int32_t kvn_stop_audio(kvn_device_conn* conn) {
    return call<cmd::kSettingsBuffer>(conn, Request{id::stop_audio, KVN_REQ_SET, Capacity::buffer, cmd::kSettingsBuffer},
                                      no_payload, status_only);
}

KVN_API int32_t kvn_retrieve_audio_list(kvn_device_conn* conn, kvn_media_list* list) {
    return cmd::get(conn, id::audio_list, kAudioList, list);
}
KVN_API int32_t kvn_retrieve_image_list(kvn_device_conn* conn, kvn_media_list* list) {
    return cmd::get(conn, id::image_list, kImageList, list);
}
KVN_API int32_t kvn_display_image(kvn_device_conn* conn, const kvn_display_image_request* request) {
    return cmd::set(conn, id::display_image, kDisplay, request);
}

KVN_API int32_t kvn_set_lcd_settings(kvn_device_conn* conn, const kvn_lcd_setting* setting) {
    return cmd::set(conn, id::lcd, kLcd, setting);
}
KVN_API int32_t kvn_get_lcd_settings(kvn_device_conn* conn, kvn_lcd_setting* setting) {
    return cmd::get(conn, id::lcd, kLcd, setting);
}
KVN_API int32_t kvn_reset_lcd_settings(kvn_device_conn* conn) { return cmd::reset(conn, id::lcd); }

KVN_API int32_t kvn_set_device_notification_setting(kvn_device_conn* conn,
                                                    const kvn_device_notification_setting* setting) {
    return cmd::set(conn, id::device_notification, kNotification, setting);
}
KVN_API int32_t kvn_get_device_notification_setting(kvn_device_conn* conn, kvn_device_notification_setting* setting) {
    return cmd::get(conn, id::device_notification, kNotification, setting);
}
KVN_API int32_t kvn_reset_device_notification_setting(kvn_device_conn* conn) {
    return cmd::reset(conn, id::device_notification);
}

}  // extern "C"
