// The table families on the wire. Each record's bytes are written out by hand from its
// fields (the builders below); a set must send exactly those bytes, and a read of them
// into a cleared record must give a record whose bytes are the same again, so that a
// field stored under the wrong tag shows. Records are patterned: every field differs.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>

#include "records.h"

using namespace kvntest;

namespace {

template <class T> std::unique_ptr<T> blank() { return std::make_unique<T>(zeroed<T>()); }
template <class T>
std::unique_ptr<T> pattern() {  // no byte is 0, so texts fill their arrays
    auto r = std::make_unique<T>();
    for (size_t i = 0; i < sizeof(T); ++i) reinterpret_cast<uint8_t*>(r.get())[i] = uint8_t(i % 251 + 1);
    return r;
}
// A text up to its NUL; opt leaves an empty one out.
template <size_t N> Bytes txt(uint8_t tag, const char (&s)[N]) { return el(tag, Bytes(s, s + strnlen(s, N))); }
template <size_t N> Bytes opt(uint8_t tag, const char (&s)[N]) { return s[0] != 0 ? txt(tag, s) : Bytes{}; }

Bytes input_bytes(const kvn_specific_purpose_input_setting& r) {
    return cat({u32(2, r.input_1_value_a), u8(3, r.input_1_flag), u32(1, r.input_1_value_b), u32(5, r.input_2_value_a),
                u8(6, r.input_2_flag), u32(4, r.input_2_value_b), u32(8, r.input_3_value_a), u8(9, r.input_3_flag),
                u32(7, r.input_3_value_b)});
}
Bytes output_bytes(const kvn_specific_purpose_output_setting& r, uint32_t outputs = 9) {
    return cat({u8(7, r.byte_7), u8(8, r.byte_8), u8(9, r.byte_9), each(outputs, [&](size_t k) {
                    const kvn_specific_purpose_output_entry& e = r.entries[k % 9];
                    return box(1, cat({u32(2, e.value_2), u32(3, e.value_3), u32(4, e.value_4), u8(5, e.flag_5), u32(6, e.value_6)})); })});
}
Bytes attendance_bytes(const kvn_time_attendance_setting& r) {  // items 1 to 16, then the entries
    return cat({u32(10, r.value_10), u32(11, r.value_11), u32(19, r.value_19), each(16, [&](size_t k) {
                    return box(1, cat({u8(3, uint8_t(k + 1)), txt(12, r.texts_a[k + 1]), txt(13, r.texts_b[k + 1]), u32(14, r.values[k + 1])})); }),
                each(24, [&](size_t k) {
                    const kvn_time_attendance_entry& e = r.entries[k];
                    return box(2, cat({u8(6, e.bytes[0]), u8(7, e.bytes[1]), u8(8, e.bytes[2]), u8(9, e.bytes[3]), u32(4, e.value)})); })});
}
Bytes job(const kvn_job_code& c) { return cat({u32(17, c.id), txt(18, c.name)}); }
Bytes job_bytes(const kvn_job_code_list& r, uint32_t end = 32, uint32_t first = 0) {
    return each(end - first, [&](size_t k) { return box(16, job(r.codes[(first + k) % 32])); });
}
Bytes voip_bytes(const kvn_voip_setting& r) {
    return cat({u32(1, r.value_1), opt(2, r.text_2), opt(3, r.text_3), opt(4, r.text_4), opt(5, r.text_5), u32(7, r.value_7)});
}
Bytes contact_bytes(const kvn_voip_contact_list& r, uint32_t count = 10) {
    return each(count, [&](size_t k) {
        const kvn_voip_contact& c = r.contacts[k % 10];
        return box(1, cat({opt(2, c.text_2), opt(3, c.text_3), u32(4, c.value_4)}));
    });
}
Bytes day(uint8_t tag, size_t d, const kvn_day_schedule& s) {  // the index, then the slots under the next eight tags
    return cat({u8(tag, uint8_t(d)), each(8, [&](size_t k) { return u8(uint8_t(tag + 1 + k), s.slots[k]); })});
}
Bytes week_bytes(const kvn_week_schedule& r) {
    return cat({u32(1, r.value), each(7, [&](size_t d) { return box(2, day(3, d, r.days[d])); })});
}
Bytes holiday_schedule(const kvn_holiday_schedule& r, uint8_t s) {  // enabled holidays only; 16 between 6 and 7
    return box(1, cat({u8(2, s), u32(3, 1), txt(4, r.name), each(50, [&](size_t h) {
                           const kvn_holiday& x = r.holidays[h];
                           const Bytes slots = each(8, [&](size_t k) { return u8(uint8_t(8 + k), x.slots[k]); });
                           return x.enabled != 1 ? Bytes{} : box(5, cat({u8(6, uint8_t(h)), u32(16, 1), txt(7, x.name), slots})); })}));
}
Bytes holiday_bytes(const kvn_holiday_schedule_table& r) {
    return each(64, [&](size_t s) { return r.schedules[s].enabled == 1 ? holiday_schedule(r.schedules[s], uint8_t(s)) : Bytes{}; });
}
Bytes access_bytes(const kvn_access_schedule_table& r) {
    return cat({u32(1, r.value), u8(2, r.flag), each(64, [&](size_t s) {
                    const kvn_access_schedule& x = r.schedules[s];
                    return x.enabled != 1 ? Bytes{} : box(3, cat({u8(4, uint8_t(s)), u32(5, 1), txt(6, x.name), u8(7, x.value),
                                                                  each(7, [&](size_t d) { return box(8, day(9, d, x.days[d])); })})); })});
}

// The set sends bytes(r) (of `size` bytes, when given); the read of `answer` (else of
// those bytes) gives a record whose bytes are bytes(r).
template <class Rec, class Set, class Get, class Build>
void both_ways(const char* name, Set set, Get get, Build bytes, const Rec& r, size_t size = 0, const Bytes& answer = {}) {
    const Seen sent = capture([&](auto c) { return set(c, &r); });
    EXPECT_BYTES(sent.payload, bytes(r)) << name;
    if (size != 0) EXPECT_EQ(sent.payload.size(), size) << name;
    auto got = blank<Rec>();
    EXPECT_EQ(capture([&](auto c) { return get(c, got.get()); }, response(0, answer.empty() ? bytes(r) : answer)).rc, 0) << name;
    EXPECT_BYTES(bytes(*got), bytes(r)) << name;
}

}  // namespace

TEST(TablesWire, RecordsBothWays) {
    auto ta = pattern<kvn_time_attendance_setting>();
    for (auto* t : {ta->texts_a, ta->texts_b})
        for (int i = 0; i < 17; ++i) t[i][50] = 0;  // a read keeps 50 bytes
    auto jobs = pattern<kvn_job_code_list>();
    for (kvn_job_code& c : jobs->codes) c.name[51] = 0;  // a read keeps 51 bytes
    auto hol = pattern<kvn_holiday_schedule_table>();
    for (uint32_t s = 0; s < 64; ++s) {  // only exactly 1 is sent
        hol->schedules[s].enabled = s % 2 != 0 ? 1 : 0x101, hol->schedules[s].name[51] = 0;
        for (uint32_t h = 0; h < 50; ++h) hol->schedules[s].holidays[h].enabled = h % 3 == 0 ? 1 : 0;
    }
    auto acc = pattern<kvn_access_schedule_table>();
    for (uint32_t s = 0; s < 64; ++s) acc->schedules[s].enabled = s % 3 != 0 ? 1 : 2;
    both_ways("input", kvn_set_specific_purpose_input_setting, kvn_get_specific_purpose_input_setting, input_bytes,
              *pattern<kvn_specific_purpose_input_setting>(), 45);
    auto out = pattern<kvn_specific_purpose_output_setting>();
    both_ways("output", kvn_set_specific_purpose_output_setting, kvn_get_specific_purpose_output_setting,
              [](auto& r) { return output_bytes(r); }, *out, 306, output_bytes(*out, 11));  // past the ninth: dropped
    both_ways("attendance", kvn_set_time_attendance_setting, kvn_get_time_attendance_setting, attendance_bytes, *ta);
    both_ways("empty attendance", kvn_set_time_attendance_setting, kvn_get_time_attendance_setting, attendance_bytes,
              *blank<kvn_time_attendance_setting>(), 898);
    // Job codes move on after each name, not at a container's end, and stop after 32.
    both_ways("job codes", kvn_set_job_code_list, kvn_get_job_code_list, [](auto& r) { return job_bytes(r); }, *jobs, 0,
              cat({box(16, cat({job(jobs->codes[0]), job(jobs->codes[1])})), job_bytes(*jobs, 33, 2)}));
    both_ways("empty job codes", kvn_set_job_code_list, kvn_get_job_code_list, [](auto& r) { return job_bytes(r); },
              *blank<kvn_job_code_list>(), 448);
    both_ways("voip", kvn_set_voip_setting, kvn_get_voip_setting, voip_bytes, *pattern<kvn_voip_setting>());
    both_ways("empty voip", kvn_set_voip_setting, kvn_get_voip_setting, voip_bytes, *blank<kvn_voip_setting>(), 12);
    auto cl = pattern<kvn_voip_contact_list>();
    both_ways("contacts", kvn_set_voip_contact_list, kvn_get_voip_contact_list, [](auto& r) { return contact_bytes(r); },
              *cl, 0, contact_bytes(*cl, 12));  // past the tenth: dropped
    both_ways("empty contacts", kvn_set_voip_contact_list, kvn_get_voip_contact_list,
              [](auto& r) { return contact_bytes(r); }, *blank<kvn_voip_contact_list>(), 120);
    auto w = pattern<kvn_week_schedule>();
    both_ways("biometric week", kvn_set_biometric_schedule_setting, kvn_get_biometric_schedule_setting, week_bytes, *w, 237);
    both_ways("door week", kvn_set_door_open_schedule_setting, kvn_get_door_open_schedule_setting, week_bytes, *w, 237);
    both_ways("holidays", kvn_set_all_holiday_schedule_setting, kvn_get_all_holiday_schedule_setting, holiday_bytes, *hol);
    both_ways("access", kvn_set_all_access_schedule_setting, kvn_get_all_access_schedule_setting, access_bytes, *acc);
#define CALL(...) [&](kvn_device_conn* c) { return __VA_ARGS__; }
    expect_payloads({
        // One schedule: the index's low byte counts; a disabled one still goes out, empty.
        {CALL(kvn_set_single_holiday_schedule_setting(c, hol.get(), 256 + 63)), holiday_schedule(hol->schedules[63], 63)},
        {CALL(kvn_set_single_holiday_schedule_setting(c, hol.get(), 62)), {}},
        // The index resets: four bytes under tag 2 (holiday) and 4 (access), not limited.
        {CALL(kvn_reset_holiday_schedule_setting(c, 261)), u32(2, 261)},
        {CALL(kvn_reset_access_schedule_setting(c, 5)), {0x04, 0x04, 0x05, 0x00, 0x00, 0x00}},
    });
#undef CALL
}

// Selectors beyond their arrays stop with -1009 and keep what came before; copies stay
// inside their fields. Records start from pattern<T>(), which the checks compare with.
TEST(TablesWire, SelectorsAndBounds) {
    auto ta = pattern<kvn_time_attendance_setting>();
    auto w = pattern<kvn_week_schedule>();
    auto hol = pattern<kvn_holiday_schedule_table>();
    auto acc = pattern<kvn_access_schedule_table>();
    auto names = pattern<kvn_access_schedule_name_list>();
    auto vs = pattern<kvn_voip_setting>();
    auto def = pattern<kvn_voip_contact>(), want = pattern<kvn_voip_contact>();
    std::memcpy(want->text_2, "100", 3), std::memcpy(want->text_3, "desk", 4);
    const std::string x60(60, 'x'), x1100(1100, 'x');
    struct Case { const char* name; Call call; Bytes answer; int32_t rc; std::function<bool()> kept; };
#define CALL(...) [&](kvn_device_conn* c) { return __VA_ARGS__; }
    const Case cases[] = {
        {"item 17", CALL(kvn_get_time_attendance_setting(c, ta.get())),
         cat({box(1, cat({u8(3, 16), text(12, x60), u32(14, 0x16)})), box(1, cat({u8(3, 17), u32(14, 1)})), u32(10, 5)}), -1009,
         [&] { const auto p = pattern<kvn_time_attendance_setting>();
               return ta->values[16] == 0x16 && std::string(ta->texts_a[16], 51) == x60.substr(0, 50) + p->texts_a[16][50] &&
                      ta->value_10 == p->value_10; }},
        {"weekday 7", CALL(kvn_get_biometric_schedule_setting(c, w.get())),
         cat({box(2, cat({u8(3, 6), u8(4, 0x66)})), box(2, cat({u8(3, 7), u8(4, 1)})), u32(1, 5)}), -1009,
         [&] { return w->days[6].slots[0] == 0x66 && w->value == pattern<kvn_week_schedule>()->value; }},
        {"holiday 50", CALL(kvn_get_all_holiday_schedule_setting(c, hol.get())),
         box(1, cat({u8(2, 63), text(4, x60), box(5, cat({u8(6, 49), u32(16, 7)})), box(5, cat({u8(6, 50), u32(16, 1)})), u32(3, 1)})),
         -1009, [&] { return hol->schedules[63].holidays[49].enabled == 7 && hol->schedules[63].name[50] == 'x' &&
                            hol->schedules[63].name[51] != 'x' && hol->schedules[63].enabled == pattern<kvn_holiday_schedule_table>()->schedules[63].enabled; }},
        {"holiday schedule 64", CALL(kvn_get_all_holiday_schedule_setting(c, hol.get())), box(1, cat({u8(2, 64), u32(3, 1)})), -1009,
         [] { return true; }},
        {"access weekday 7", CALL(kvn_get_all_access_schedule_setting(c, acc.get())),
         box(3, cat({u8(4, 63), box(8, cat({u8(9, 6), u8(10, 0x66)})), box(8, cat({u8(9, 7), u8(10, 1)})), u32(5, 1)})), -1009,
         [&] { return acc->schedules[63].days[6].slots[0] == 0x66 &&
                      acc->schedules[63].enabled == pattern<kvn_access_schedule_table>()->schedules[63].enabled; }},
        {"access schedule 64", CALL(kvn_get_all_access_schedule_setting(c, acc.get())),
         cat({u8(2, 0x12), box(3, cat({u8(4, 64), u32(5, 1)})), u32(1, 5)}), -1009,
         [&] { return acc->flag == 0x12 && acc->value == pattern<kvn_access_schedule_table>()->value; }},
        {"name 64", CALL(kvn_get_access_schedule_list(c, names.get())),  // names keep their 51 bytes, no NUL
         cat({box(1, cat({u8(2, 0), text(3, "a")})), box(1, cat({u8(2, 63), text(3, x60)})), box(1, cat({u8(2, 64), text(3, "b")}))}), -1009,
         [&] { const auto p = pattern<kvn_access_schedule_name_list>();
               return names->names[0][0] == 'a' && names->names[0][1] == p->names[0][1] &&
                      std::string(names->names[63], 51) == x60.substr(0, 51); }},
        {"default contact: its two texts only", CALL(kvn_get_voip_default_contact(c, def.get())),
         cat({text(2, "100"), text(3, "desk"), u32(4, 1)}), 0, [&] { return std::memcmp(def.get(), want.get(), sizeof *want) == 0; }},
        {"voip text 2", CALL(kvn_get_voip_setting(c, vs.get())), text(2, x1100), 0,
         [&] { return std::string(vs->text_2, 1025) == x1100.substr(0, 1025) && vs->text_5[0] == pattern<kvn_voip_setting>()->text_5[0]; }},
    };
#undef CALL
    for (const Case& k : cases) {
        EXPECT_EQ(capture(k.call, response(0, k.answer)).rc, k.rc) << k.name;
        EXPECT_TRUE(k.kept()) << k.name;
    }
}

// The single holiday set checks the index's low byte before sending anything, and a
// table larger than its 204800-byte buffer is not sent either (nor is the link opened).
TEST(TablesWire, HolidayIndexAndOverflow) {
    auto hol = blank<kvn_holiday_schedule_table>();
    kvn_device_conn closed{};
    EXPECT_EQ(kvn_set_single_holiday_schedule_setting(&closed, hol.get(), 64), KVN_E_INVALID_DATA_RECEIVED);
    for (kvn_holiday_schedule& s : hol->schedules) {
        s.enabled = 1;
        for (kvn_holiday& h : s.holidays) h.enabled = 1, std::memset(h.name, 'h', 50);
    }
    EXPECT_EQ(kvn_set_all_holiday_schedule_setting(&closed, hol.get()), -1);
}
