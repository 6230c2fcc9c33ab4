// Time attendance settings (109) and the job code list (146).
#include "core/command.h"
#include "kvnsdk2.h"
#include "link/commands.h"

namespace kvn {
namespace {

using namespace row;

#define TA(member) KVN_MEMBER(kvn_time_attendance_setting, member)

// Item i is slot i of three parallel arrays: the list has no entry record of its
// own, each row steps through its array. Items 1 to 16 go out, each a tag-1
// container numbered under tag 3 with both texts even when empty; a read puts an
// item in the slot of its number (above 16: -1009) and keeps at most 50 bytes of a text.
constexpr Field kItem[] = {
    position(3, 1),
    text(12, TA(texts_a[0])).each(KVN_TIME_ATTENDANCE_TEXT).bound(50),
    text(13, TA(texts_b[0])).each(KVN_TIME_ATTENDANCE_TEXT).bound(50),
    u32(14, TA(values[0])).each(sizeof(uint32_t)),
};
constexpr List parallel_slots(uint32_t slots) {
    List l;
    l.capacity = slots;
    return l;
}
constexpr List kItems =
    parallel_slots(KVN_TIME_ATTENDANCE_SLOTS).in(1).by(3, 0, KVN_E_INVALID_VALUE_RECEIVED).from(1).of(kItem);

// Entries: tag-2 containers in array order, the four bytes before the value.
#define TAE(member) KVN_MEMBER(kvn_time_attendance_entry, member)
constexpr Field kEntry[] = {
    u8(6, TAE(bytes[0])), u8(7, TAE(bytes[1])), u8(8, TAE(bytes[2])), u8(9, TAE(bytes[3])), u32(4, TAE(value)),
};
#undef TAE
constexpr List kEntries = array(TA(entries)).in(2).of(kEntry);

constexpr Field kAttendance[] = {
    u32(10, TA(value_10)), u32(11, TA(value_11)), u32(19, TA(value_19)), list(kItems), list(kEntries),
};
#undef TA

// Job codes: every code a tag-16 container, its name sent even when empty. A read
// moves to the next code after each name, not at the container's end, and fills at
// most 32; a name keeps at most 51 bytes.
constexpr Field kJobCode[] = {
    u32(17, KVN_MEMBER(kvn_job_code, id)),
    text(18, KVN_MEMBER(kvn_job_code, name)).bound(51),
};
constexpr List kJobCodeList = array(KVN_MEMBER(kvn_job_code_list, codes)).in(16).advancing_on(18).of(kJobCode);
constexpr Field kJobCodes[] = {list(kJobCodeList)};

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_set_time_attendance_setting(kvn_device_conn* conn, const kvn_time_attendance_setting* setting) {
    return cmd::set(conn, id::time_attendance, kAttendance, setting);
}
KVN_API int32_t kvn_get_time_attendance_setting(kvn_device_conn* conn, kvn_time_attendance_setting* setting) {
    return cmd::get(conn, id::time_attendance, kAttendance, setting);
}
KVN_API int32_t kvn_reset_time_attendance_setting(kvn_device_conn* conn) {
    return cmd::reset(conn, id::time_attendance);
}

KVN_API int32_t kvn_set_job_code_list(kvn_device_conn* conn, const kvn_job_code_list* list) {
    return cmd::set(conn, id::job_codes, kJobCodes, list);
}
KVN_API int32_t kvn_get_job_code_list(kvn_device_conn* conn, kvn_job_code_list* list) {
    return cmd::get(conn, id::job_codes, kJobCodes, list);
}
KVN_API int32_t kvn_reset_job_code_list(kvn_device_conn* conn) { return cmd::reset(conn, id::job_codes); }

}  // extern "C"
