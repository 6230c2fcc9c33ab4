// User records: store, read and delete (7), counts (8, 508), template maintenance
// (505, 13, 14).
#include <cstring>

#include "core/command.h"
#include "kvnsdk2.h"
#include "link/commands.h"
#include "users/user_record.h"

namespace kvn {
namespace {

using namespace row;

constexpr Field kUserId[] = {text(2, KVN_MEMBER(kvn_user_record, user_id))};

constexpr Field kStoreResult[] = {
    text(2, KVN_MEMBER(kvn_user_store_result, user_id)).bound(64),
    u32(30, KVN_MEMBER(kvn_user_store_result, attr_t30)),
    counted(31, KVN_MEMBER(kvn_user_store_result, data_t31), KVN_MEMBER(kvn_user_store_result, data_t31_length)),
};

constexpr Field kTemplateIndexes[] = {
    text(2, KVN_MEMBER(kvn_user_template_indexes, user_id)),
    counted(7, KVN_MEMBER(kvn_user_template_indexes, finger_indexes),
            KVN_MEMBER(kvn_user_template_indexes, finger_index_count)),
};

// A store answered without a payload succeeded (or failed with the status alone); a
// payload names what stood in the way, and the store did not happen.
int32_t store_answer(kvn_user_store_result* result, const uint8_t* p, uint32_t n) noexcept {
    if (n == 0) return 0;
    const int32_t rc = decode(kStoreResult, p, n, result);
    return rc != 0 ? rc : KVN_E_USER_RECORD_STORE;
}

// Commands 13 and 14 carry the user id under tag 1, in a request of 1024 bytes.
void user_and_finger(tlv::Writer& w, const char* user_id, uint8_t finger) noexcept {
    w.text(1, user_id, cmd::kSmallBuffer, true);
    w.u8(2, finger);
}

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_store_user_record(kvn_device_conn* conn, kvn_user_store_request* request) {
    if (request == nullptr || request->record == nullptr || request->result == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    return call<cmd::kSettingsBuffer>(conn, Request{id::user_record, KVN_REQ_SET}, Encode{users::kRecord, request->record},
                                      [&](const uint8_t* p, uint32_t n) { return store_answer(request->result, p, n); });
}

// The record is cleared only once the answer is in: a failed read leaves it as it was.
KVN_API int32_t kvn_get_user_record(kvn_device_conn* conn, kvn_user_record* record) {
    if (record == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    return call<cmd::kSettingsBuffer>(conn, Request{id::user_record, KVN_REQ_GET}, Encode{kUserId, record},
                                      [&](const uint8_t* p, uint32_t n) {
                                          std::memset(record, 0, sizeof *record);
                                          return decode(users::kFields, p, n, record);
                                      });
}

KVN_API int32_t kvn_delete_user_record(kvn_device_conn* conn, kvn_user_record* record) {
    return cmd::query(conn, Request{id::user_record, KVN_REQ_RESET}, kUserId, record, users::kFields, record);
}

KVN_API int32_t kvn_get_user_count(kvn_device_conn* conn, uint32_t* count) {
    return cmd::get_u32(conn, id::user_count, 26, count);
}

KVN_API int32_t kvn_get_biometric_count(kvn_device_conn* conn, uint32_t* count) {
    return cmd::get_u32(conn, id::biometric_count, 26, count);
}

KVN_API int32_t kvn_delete_user_templete_indexes(kvn_device_conn* conn, const kvn_user_template_indexes* indexes) {
    return cmd::set(conn, id::delete_template_indexes, kTemplateIndexes, indexes);
}

KVN_API int32_t kvn_user_validate_user_id_finger_index(kvn_device_conn* conn, const char* user_id,
                                                       uint8_t finger_index) {
    if (user_id == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    return call<cmd::kSmallBuffer>(conn, Request{id::validate_finger_index, KVN_REQ_GET},
                                   [&](tlv::Writer& w) { user_and_finger(w, user_id, finger_index); }, status_only);
}

KVN_API int32_t kvn_user_update_biometric_template(kvn_device_conn* conn, const char* user_id, uint8_t finger_index,
                                                   const void* template_data, uint32_t length) {
    if (user_id == nullptr || (template_data == nullptr && length != 0)) return KVN_E_TLV_BUFFER_OVERFLOW;
    return call<cmd::kSmallBuffer>(conn, Request{id::update_template, KVN_REQ_GET},
                                   [&](tlv::Writer& w) {
                                       user_and_finger(w, user_id, finger_index);
                                       w.element(3, template_data, length);
                                   },
                                   status_only);
}

}  // extern "C"
