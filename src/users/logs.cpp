// Transaction logs (401 to 413): counts, the five reads through one reader, marks
// and delete-all. Every exchange uses a 20480-byte buffer.
#include <cstddef>

#include "core/command.h"
#include "kvnsdk2.h"
#include "link/commands.h"

namespace kvn {
namespace {

using namespace row;
using Query = kvn_transaction_log_query;
using Entry = kvn_transaction_log;

#define E32(tag, m) u32(tag, KVN_MEMBER(Entry, m))
#define E8(tag, m) u8(tag, KVN_MEMBER(Entry, m))
#define TEXT(tag, m) text(tag, KVN_MEMBER(Entry, m))
// Strings are copied at most their field's size, the rest of the field kept.
constexpr Field kEntry[] = {
    E32(7, log_id),    E32(8, attr_t08),  E32(9, attr_t09),  E32(10, attr_t10),
    E32(11, attr_t11), E32(21, attr_t21), TEXT(12, text_t12), TEXT(13, text_t13),
    TEXT(23, text_t23), E8(14, attr_t14), E8(15, attr_t15),   E32(16, attr_t16),
    E8(17, attr_t17),  E8(18, attr_t18),  E8(19, attr_t19),  E32(20, attr_t20),
};
#undef E32
#undef E8
#undef TEXT

// Each tag-1 container fills entries[low byte of log_count]; the reader clears that
// byte before the request and leaves the upper 24 bits alone.
constexpr List kEntries =
    array(KVN_MEMBER(Query, entries)).in(1).of(kEntry).counting(Counter::low_byte, offsetof(Query, log_count));
constexpr Field kEntriesRead[] = {list(kEntries)};

// The criteria in wire order: tag 11 goes before the two texts. Only the reads send 2 and 3.
#define CRITERIA                                         \
    u32(4, KVN_MEMBER(Query, attr_t04)).nonzero(),       \
        u32(5, KVN_MEMBER(Query, attr_t05)).nonzero(),   \
        u32(11, KVN_MEMBER(Query, attr_t11)).nonzero(),  \
        text(12, KVN_MEMBER(Query, text_t12)).nonzero(), \
        text(13, KVN_MEMBER(Query, text_t13)).nonzero()
constexpr Field kReadCriteria[] = {u8(2, KVN_MEMBER(Query, attr_t02)), u8(3, KVN_MEMBER(Query, attr_t03)), CRITERIA};
constexpr Field kCountCriteria[] = {CRITERIA};
#undef CRITERIA
constexpr Field kCountRead[] = {u32(6, KVN_MEMBER(Query, log_count))};

constexpr Field kMarkRow[] = {u32(7, Member<uint32_t>{0})};
constexpr List kMarks = array(KVN_MEMBER(kvn_transaction_log_id_list, log_ids))
                            .of(kMarkRow)
                            .sending(Range::count_u8, offsetof(kvn_transaction_log_id_list, count));
constexpr Field kMarkList[] = {list(kMarks)};

int32_t read_logs(kvn_device_conn* conn, uint32_t command, Query* q) noexcept {
    return cmd::query(conn, Request{command, KVN_REQ_GET}, kReadCriteria, q, kEntriesRead, q);
}
int32_t count_logs(kvn_device_conn* conn, uint32_t command, Query* q) noexcept {
    return cmd::query(conn, Request{command, KVN_REQ_GET}, kCountCriteria, q, kCountRead, q);
}

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_get_transaction_log_total_count(kvn_device_conn* conn, uint32_t* count) {
    return cmd::get_u32(conn, id::log_total_count, 6, count);
}
KVN_API int32_t kvn_get_transaction_log_unread_count(kvn_device_conn* conn, uint32_t* count) {
    return cmd::get_u32(conn, id::log_unread_count, 6, count);
}
KVN_API int32_t kvn_get_transaction_log_read_count(kvn_device_conn* conn, uint32_t* count) {
    return cmd::get_u32(conn, id::log_read_count, 6, count);
}
KVN_API int32_t kvn_get_transaction_log_count_for_date(kvn_device_conn* conn, kvn_transaction_log_query* query) {
    return count_logs(conn, id::log_count_for_date, query);
}
KVN_API int32_t kvn_get_transaction_log_count_for_criteria(kvn_device_conn* conn, kvn_transaction_log_query* query) {
    return count_logs(conn, id::log_count_for_criteria, query);
}

KVN_API int32_t kvn_get_transaction_logs(kvn_device_conn* conn, kvn_transaction_log_query* query) {
    return read_logs(conn, id::logs, query);
}
KVN_API int32_t kvn_get_unread_transaction_logs(kvn_device_conn* conn, kvn_transaction_log_query* query) {
    return read_logs(conn, id::unread_logs, query);
}
KVN_API int32_t kvn_get_read_transaction_logs(kvn_device_conn* conn, kvn_transaction_log_query* query) {
    return read_logs(conn, id::read_logs, query);
}
KVN_API int32_t kvn_get_transaction_logs_for_date(kvn_device_conn* conn, kvn_transaction_log_query* query) {
    return read_logs(conn, id::logs_for_date, query);
}
KVN_API int32_t kvn_get_transaction_logs_for_criteria(kvn_device_conn* conn, kvn_transaction_log_query* query) {
    return read_logs(conn, id::logs_for_criteria, query);
}

KVN_API int32_t kvn_mark_transaction_log_as_read(kvn_device_conn* conn, uint32_t log_id) {
    return cmd::set_u32(conn, id::mark_logs_read, 7, log_id);
}
KVN_API int32_t kvn_mark_transaction_logs_as_read(kvn_device_conn* conn, const kvn_transaction_log_id_list* ids) {
    return cmd::set(conn, id::mark_logs_read, kMarkList, ids);
}
// Marking as online travels as a get request.
KVN_API int32_t kvn_mark_transaction_log_as_online(kvn_device_conn* conn, uint32_t log_id) {
    return call<cmd::kSettingsBuffer>(conn, Request{id::mark_log_online, KVN_REQ_GET},
                                      [&](tlv::Writer& w) { w.u32(7, log_id); }, status_only);
}
// A reset that announces the whole buffer, zeros.
KVN_API int32_t kvn_delete_all_transaction_logs(kvn_device_conn* conn) {
    return call<cmd::kSettingsBuffer>(conn, Request{id::delete_all_logs, KVN_REQ_RESET, Capacity::buffer, 20480},
                                      no_payload, status_only);
}

}  // extern "C"
