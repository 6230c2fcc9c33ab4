// Schedules: the biometric (107) and door-open (155) week schedules, holiday
// schedules (106), access schedules (105) and the access schedule names (119).
#include "core/command.h"
#include "kvnsdk2.h"
#include "link/commands.h"

namespace kvn {
namespace {

using namespace row;

constexpr uint32_t kTableBuffer = 204800;      // holiday and access tables
constexpr uint32_t kNameListBuffer = 51200;    // access schedule names
constexpr int32_t kBadIndex = KVN_E_INVALID_VALUE_RECEIVED;

// Rows of one weekday: its index, then the eight slots under consecutive tags.
constexpr Field day(uint8_t index_tag, uint8_t n) {
    return u8(uint8_t(index_tag + 1 + n), Member<uint8_t>{uint32_t(offsetof(kvn_day_schedule, slots) + n)});
}
constexpr Field kWeekDay[] = {position(3, 1), day(3, 0), day(3, 1), day(3, 2), day(3, 3),
                              day(3, 4),      day(3, 5), day(3, 6), day(3, 7)};
constexpr Field kAccessDay[] = {position(9, 1), day(9, 0), day(9, 1), day(9, 2), day(9, 3),
                                day(9, 4),      day(9, 5), day(9, 6), day(9, 7)};

// Week schedule: always all seven days, tag-2 containers selected by tag 3.
constexpr List kWeekDays = array(KVN_MEMBER(kvn_week_schedule, days)).in(2).by(3, 0, kBadIndex).of(kWeekDay);
constexpr Field kWeek[] = {u32(1, KVN_MEMBER(kvn_week_schedule, value)), list(kWeekDays)};

// Holiday schedules: a tag-1 container per schedule whose enabled is exactly 1,
// and inside it a tag-5 container per such holiday; tag 16 comes between 6 and 7.
#define HOLIDAY(member) KVN_MEMBER(kvn_holiday, member)
constexpr Field kHoliday[] = {
    position(6, 1),          u32(16, HOLIDAY(enabled)), text(7, HOLIDAY(name)),   u8(8, HOLIDAY(slots[0])),
    u8(9, HOLIDAY(slots[1])), u8(10, HOLIDAY(slots[2])), u8(11, HOLIDAY(slots[3])), u8(12, HOLIDAY(slots[4])),
    u8(13, HOLIDAY(slots[5])), u8(14, HOLIDAY(slots[6])), u8(15, HOLIDAY(slots[7])),
};
constexpr List kHolidays =
    array(KVN_MEMBER(kvn_holiday_schedule, holidays)).in(5).by(6, 0, kBadIndex).only(is(HOLIDAY(enabled), 1)).of(kHoliday);
#undef HOLIDAY
#define HSCHED(member) KVN_MEMBER(kvn_holiday_schedule, member)
constexpr Field kHolidaySchedule[] = {
    position(2, 1), u32(3, HSCHED(enabled)), text(4, HSCHED(name)).bound(KVN_SCHEDULE_NAME), list(kHolidays),
};
constexpr List kHolidaySchedules = array(KVN_MEMBER(kvn_holiday_schedule_table, schedules))
                                       .in(1)
                                       .by(2, 0, kBadIndex)
                                       .only(is(HSCHED(enabled), 1))
                                       .of(kHolidaySchedule);
#undef HSCHED
constexpr Field kHolidayTable[] = {list(kHolidaySchedules)};

// Access schedules: the table's value and flag, then a tag-3 container per
// schedule whose enabled is exactly 1, each with its seven tag-8 days.
#define ASCHED(member) KVN_MEMBER(kvn_access_schedule, member)
constexpr List kAccessDays = array(ASCHED(days)).in(8).by(9, 0, kBadIndex).of(kAccessDay);
constexpr Field kAccessSchedule[] = {
    position(4, 1), u32(5, ASCHED(enabled)), text(6, ASCHED(name)), u8(7, ASCHED(value)), list(kAccessDays),
};
#define ATABLE(member) KVN_MEMBER(kvn_access_schedule_table, member)
constexpr List kAccessSchedules =
    array(ATABLE(schedules)).in(3).by(4, 0, kBadIndex).only(is(ASCHED(enabled), 1)).of(kAccessSchedule);
constexpr Field kAccessTable[] = {u32(1, ATABLE(value)), u8(2, ATABLE(flag)), list(kAccessSchedules)};
#undef ATABLE
#undef ASCHED

// Access schedule names: tag-1 containers, the index under tag 2, the name under tag 3.
constexpr Field kName[] = {text(3, Member<char[KVN_SCHEDULE_NAME]>{0})};
constexpr List kNameList = array(KVN_MEMBER(kvn_access_schedule_name_list, names)).in(1).by(2, 0, kBadIndex).of(kName);
constexpr Field kNames[] = {list(kNameList)};

// The index resets carry the index in four bytes, under the tag that carries it in a set.
constexpr Field kHolidayIndex[] = {u32(2, Member<uint32_t>{0})};
constexpr Field kAccessIndex[] = {u32(4, Member<uint32_t>{0})};

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_set_biometric_schedule_setting(kvn_device_conn* conn, const kvn_week_schedule* schedule) {
    return cmd::set(conn, id::biometric_schedule, kWeek, schedule);
}
KVN_API int32_t kvn_get_biometric_schedule_setting(kvn_device_conn* conn, kvn_week_schedule* schedule) {
    return cmd::get(conn, id::biometric_schedule, kWeek, schedule);
}
KVN_API int32_t kvn_reset_biometric_schedule_setting(kvn_device_conn* conn) {
    return cmd::reset(conn, id::biometric_schedule);
}

KVN_API int32_t kvn_set_door_open_schedule_setting(kvn_device_conn* conn, const kvn_week_schedule* schedule) {
    return cmd::set(conn, id::door_open_schedule, kWeek, schedule);
}
KVN_API int32_t kvn_get_door_open_schedule_setting(kvn_device_conn* conn, kvn_week_schedule* schedule) {
    return cmd::get(conn, id::door_open_schedule, kWeek, schedule);
}
KVN_API int32_t kvn_reset_door_open_schedule_setting(kvn_device_conn* conn) {
    return cmd::reset(conn, id::door_open_schedule);
}

// Only the low byte of the index counts; a disabled schedule still sends an empty payload.
KVN_API int32_t kvn_set_single_holiday_schedule_setting(kvn_device_conn* conn, const kvn_holiday_schedule_table* table,
                                                        uint32_t index) {
    const uint32_t i = index & 0xFFu;
    if (i >= KVN_HOLIDAY_SCHEDULE_COUNT) return KVN_E_INVALID_DATA_RECEIVED;
    const Slice one{i, 1};
    return cmd::set<kTableBuffer>(conn, id::holiday_schedule, kHolidayTable, table, Capacity::buffer, &one);
}
KVN_API int32_t kvn_set_all_holiday_schedule_setting(kvn_device_conn* conn, const kvn_holiday_schedule_table* table) {
    return cmd::set<kTableBuffer>(conn, id::holiday_schedule, kHolidayTable, table);
}
KVN_API int32_t kvn_get_all_holiday_schedule_setting(kvn_device_conn* conn, kvn_holiday_schedule_table* table) {
    return cmd::get<kTableBuffer>(conn, id::holiday_schedule, kHolidayTable, table);
}
KVN_API int32_t kvn_reset_holiday_schedule_setting(kvn_device_conn* conn, uint32_t index) {
    return cmd::send(conn, Request{id::holiday_schedule, KVN_REQ_RESET}, kHolidayIndex, &index);
}

KVN_API int32_t kvn_set_all_access_schedule_setting(kvn_device_conn* conn, const kvn_access_schedule_table* table) {
    return cmd::set<kTableBuffer>(conn, id::access_schedule, kAccessTable, table);
}
KVN_API int32_t kvn_get_all_access_schedule_setting(kvn_device_conn* conn, kvn_access_schedule_table* table) {
    return cmd::get<kTableBuffer>(conn, id::access_schedule, kAccessTable, table);
}
KVN_API int32_t kvn_reset_access_schedule_setting(kvn_device_conn* conn, uint32_t index) {
    return cmd::send(conn, Request{id::access_schedule, KVN_REQ_RESET}, kAccessIndex, &index);
}

KVN_API int32_t kvn_get_access_schedule_list(kvn_device_conn* conn, kvn_access_schedule_name_list* list) {
    return cmd::get<kNameListBuffer>(conn, id::access_schedule_list, kNames, list);
}

}  // extern "C"
