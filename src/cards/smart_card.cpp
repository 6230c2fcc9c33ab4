// Smart-card operations: secure (906), format (907), read (909), raw and user-record
// writes and reset (905), revocation (910) and the revoked count (911).
#include <cstring>

#include "core/command.h"
#include "kvnsdk2.h"
#include "link/commands.h"
#include "users/user_record.h"

namespace kvn {
namespace {

using namespace row;

// The user record is built in a buffer this large, but the finished element, header
// included, must fit a card's 20480 bytes.
constexpr uint32_t kCardWriteBuffer = 204800;
constexpr uint32_t kCardRecordLimit = 20480;

constexpr Field kCardRead[] = {
    bytes(12, KVN_MEMBER(kvn_smart_card_data, serial)),
    u32(11, KVN_MEMBER(kvn_smart_card_data, serial_info)),
    record(17, KVN_MEMBER(kvn_smart_card_data, user), users::kFields).result(),
};

constexpr Field kCardId[] = {bytes(12, Member<uint8_t[64]>{0})};

constexpr Field kListSent[] = {
    u8(27, KVN_MEMBER(kvn_revoked_card_list, request_value_1)),
    u8(28, KVN_MEMBER(kvn_revoked_card_list, request_value_2)),
};
// Every tag-12 element fills the next entry; the one-byte count wraps, so it never
// names an entry past the 256 of the array. A shorter identifier is padded with zeros.
constexpr Field kListEntry[] = {bytes(12, Member<uint8_t[64]>{0}).zero_fill(64)};
constexpr List kEntries = array(KVN_MEMBER(kvn_revoked_card_list, entries))
                              .of(kListEntry)
                              .appending()
                              .counting(Counter::u8_clear, offsetof(kvn_revoked_card_list, entry_count));
constexpr Field kListRead[] = {list(kEntries)};

int32_t action(kvn_device_conn* conn, uint32_t command) noexcept {
    return call<cmd::kSmallBuffer>(conn, Request{command, KVN_REQ_SET}, no_payload, status_only);
}

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_secure_smart_card(kvn_device_conn* conn) { return action(conn, id::secure_card); }
KVN_API int32_t kvn_format_desfire_card(kvn_device_conn* conn) { return action(conn, id::format_card); }

KVN_API int32_t kvn_read_data_on_smart_card(kvn_device_conn* conn, kvn_smart_card_data* data) {
    return cmd::get(conn, id::read_card, kCardRead, data);
}

KVN_API int32_t kvn_write_data_on_smart_card(kvn_device_conn* conn, const kvn_smart_card_raw_data* data) {
    if (data == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    return cmd::send_raw(conn, Request{id::smart_card_data, KVN_REQ_SET}, data->data, data->length);
}

KVN_API int32_t kvn_write_user_record_on_smart_card(kvn_device_conn* conn, const kvn_user_record* record) {
    if (record == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    const auto id_length = static_cast<int32_t>(tlv::Writer::bounded_length(record->user_id, sizeof record->user_id));
    if (kvn_utils_validate_alphanumeric_string(record->user_id, id_length) != 0) return KVN_E_INVALID_USERRECORD_ID;
    return call<kCardWriteBuffer>(conn, Request{id::smart_card_data, KVN_REQ_SET},
                                  [&](tlv::Writer& w) {
                                      encode(w, users::kCardRecord, record);
                                      if (w.used() > kCardRecordLimit) w.fail();
                                  },
                                  status_only);
}

KVN_API int32_t kvn_reset_smart_card(kvn_device_conn* conn) { return cmd::reset(conn, id::smart_card_data); }

KVN_API int32_t kvn_revoke_smart_card(kvn_device_conn* conn, const uint8_t* card_id) {
    return cmd::set<cmd::kSmallBuffer>(conn, id::revoked_cards, kCardId, card_id);
}

KVN_API int32_t kvn_unrevoke_smart_card(kvn_device_conn* conn, const uint8_t* card_id) {
    return cmd::send<cmd::kSmallBuffer>(conn, Request{id::revoked_cards, KVN_REQ_RESET}, kCardId, card_id);
}

KVN_API int32_t kvn_get_revoked_smart_card_count(kvn_device_conn* conn, uint32_t* count) {
    return cmd::get_u32<cmd::kSmallBuffer>(conn, id::revoked_card_count, 18, count);
}

KVN_API int32_t kvn_get_revoked_smart_card_list(kvn_device_conn* conn, kvn_revoked_card_list* list) {
    return cmd::query(conn, Request{id::revoked_cards, KVN_REQ_GET}, kListSent, list, kListRead, list);
}

}  // extern "C"
