// Settings records in which every field carries a value of its own (padding cleared),
// so that a field sent, stored or read under the wrong tag shows. The wire test writes
// their bytes out by hand; the end-to-end tests send them to the simulator. At the end,
// the checks the wire tests of every family share.
#pragma once

#include <cstring>
#include <initializer_list>
#include <memory>
#include <utility>

#include "kvnsdk2.h"
#include "peer.h"

namespace kvntest {

template <class T>
T zeroed() {
    T t;
    std::memset(&t, 0, sizeof t);
    return t;
}

// LED and buzzer entries 1 to `count`; the rest stay cleared.
struct Leds { kvn_led_setting e[KVN_BUZZER_COUNT]; };
inline Leds leds(uint32_t count) {
    auto l = zeroed<Leds>();
    for (uint32_t i = 1; i <= count; ++i) {
        kvn_led_setting& x = l.e[i - 1];
        x.index = i, x.enable = uint8_t(0x80 + i), x.option = i << 8 | 13;
        for (uint32_t k = 0; k < 9; ++k) x.matrix[k / 3][k % 3] = i << 8 | (4 + k);
    }
    return l;
}

// Audio entries 1 to 18; only entry 3 has texts.
struct Audio { kvn_audio_setting e[KVN_AUDIO_COUNT]; };
inline Audio audio() {
    auto a = zeroed<Audio>();
    for (uint32_t i = 1; i <= KVN_AUDIO_COUNT; ++i) a.e[i - 1].index = i, a.e[i - 1].flag = uint8_t(0x50 + i), a.e[i - 1].value = 0x700 + i;
    std::strcpy(a.e[2].short_text, "hi"), std::strcpy(a.e[2].long_text, "long text");
    return a;
}

inline kvn_multi_user_verification_setting multi_user() {  // group 1 alone has a text
    auto m = zeroed<kvn_multi_user_verification_setting>();
    m.value = 0x101, m.flag = 0x22;
    for (uint32_t g = 0; g < 3; ++g) m.groups[g].group_value_a = 0x500 + g, m.groups[g].group_value_b = 0x700 + g;
    std::strcpy(m.groups[1].group_text, "night");
    return m;
}

inline kvn_biometric_setting biometric() {
    auto b = zeroed<kvn_biometric_setting>();
    b.setting_1 = 0x101, b.setting_2 = 0x102, b.setting_3 = 0x103, b.setting_4 = 0x104, b.setting_5 = 0x105;
    b.setting_8 = 0x88, b.setting_9 = 0x109, b.setting_10 = 0x10A, b.setting_11 = 0x10B, b.setting_12 = 0x10C;
    b.setting_13 = 0x10D, b.setting_14 = 0x10E, b.setting_15 = 0x10F;
    return b;
}

inline kvn_lcd_setting lcd() {
    auto l = zeroed<kvn_lcd_setting>();
    l.value = 0x149, std::strcpy(l.short_text, "Welcome");
    return l;
}

inline kvn_device_notification_setting notification() {  // text_b empty
    auto n = zeroed<kvn_device_notification_setting>();
    n.flag = 0x11, n.value = 0x55, std::strcpy(n.text_a, "smtp.example.test"), std::strcpy(n.text_c, "alarm");
    return n;
}

inline kvn_dac_setting dac() {
    auto d = zeroed<kvn_dac_setting>();
    d.dac_value_1 = 0xD1, d.dac_value_2 = 0x202, d.dac_value_3 = 0x303, d.dac_value_4 = 0x404;
    d.dac_value_10 = 0xA0A, d.dac_value_11 = 0xB0B, d.dac_value_12 = 0xC0C, d.dac_value_13 = 0xD0D;
    d.dac_value_14 = 0xE0E, d.dac_value_6 = 0x606, d.door_open_time = 0x808, d.dac_value_16 = 0x1010;
    return d;
}

const kvn_proximity_sensor_setting kProx{0xA1, 0xB2, 0xC3};
const kvn_next_sensor_setting kNext{0xA1, 0xB2};
const kvn_antishock_setting kShock{0x61, 0x62, 0x63, 0x64, 0x65, 0x66, 0x67};

// --- Wire checks. The request type and command id of every export are held against the
// command table in test_commands.cpp (and that gets and resets send no payload); these
// check the payloads and the decoders.

// piece(0) .. piece(n - 1), one after the other.
template <class Piece>
Bytes each(size_t n, Piece piece) {
    Bytes b;
    for (size_t k = 0; k < n; ++k) b = cat({b, piece(k)});
    return b;
}

// Each call, answered with a status-only success, succeeds and sends exactly its payload.
inline void expect_payloads(std::initializer_list<std::pair<Call, Bytes>> rows) {
    for (const auto& [call, payload] : rows) {
        const Seen s = capture(call);
        EXPECT_EQ(s.rc, 0) << "command " << s.command;
        EXPECT_BYTES(s.payload, payload) << "command " << s.command;
    }
}

// `answer` decoded into a record of `fill` bytes, which gives status `rc`.
template <class Rec, class Get>
std::unique_ptr<Rec> decoded(Get get, const Bytes& answer, int32_t rc = 0, int fill = 0) {
    auto r = std::make_unique<Rec>();
    std::memset(static_cast<void*>(r.get()), fill, sizeof(Rec));
    EXPECT_EQ(capture([&](kvn_device_conn* c) { return get(c, r.get()); }, response(0, answer)).rc, rc);
    return r;
}
// ... and the record is `want`, every byte of it.
template <class Rec, class Get>
void expect_decodes(const char* name, Get get, const Bytes& answer, const Rec& want, int fill = 0, int32_t rc = 0) {
    SCOPED_TRACE(name);
    EXPECT_EQ(std::memcmp(decoded<Rec>(get, answer, rc, fill).get(), &want, sizeof(Rec)), 0) << "a field differs";
}

// Both ways: the set of `rec` sends `bytes`, and `bytes` decoded into a cleared record give `rec`.
template <class Rec, class Set, class Get>
void expect_both_ways(const char* name, Set set, Get get, const Bytes& bytes, const Rec& rec) {
    EXPECT_BYTES(capture([&](kvn_device_conn* c) { return set(c, &rec); }).payload, bytes) << name;
    expect_decodes(name, get, bytes, rec);
}

}  // namespace kvntest
