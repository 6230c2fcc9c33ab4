// Wiegand formats: upload (701), list (702) and delete (704). A format is encoded
// by its type; upload and delete read the answer with the length of the request
// just sent as capacity, and delete is a set request.
#include "core/command.h"
#include "kvnsdk2.h"
#include "link/commands.h"

namespace kvn {
namespace {

using namespace row;
constexpr uint32_t kBuffer = cmd::kSmallBuffer;

#define FORMAT(member) KVN_MEMBER(kvn_wiegand_format, member)
constexpr Field kType0[] = {u32(2, FORMAT(wiegand_type)), u8(3, FORMAT(format_id)), u8(5, FORMAT(attr_t05))};
constexpr Field kType1[] = {
    u32(2, FORMAT(wiegand_type)), u8(3, FORMAT(format_id)), u16(19, FORMAT(attr_t19)),
    text(4, FORMAT(format_name)), bytes(6, FORMAT(mask_t06)),
};
// Type 2: the used parity definitions follow the masks, the tag-25 ones first.
constexpr Field kParity25[] = {bytes(25, Member<uint8_t[64]>{0})};
constexpr Field kParity24[] = {bytes(24, Member<uint8_t[64]>{0})};
constexpr List kParities25 =
    array(FORMAT(parity_masks_t25)).of(kParity25).sending(Range::count_u8, offsetof(kvn_wiegand_format, parity_count_t25));
constexpr List kParities24 =
    array(FORMAT(parity_masks_t24)).of(kParity24).sending(Range::count_u8, offsetof(kvn_wiegand_format, parity_count_t24));
constexpr Field kType2[] = {
    u32(2, FORMAT(wiegand_type)), u8(3, FORMAT(format_id)), u16(19, FORMAT(attr_t19)),
    text(4, FORMAT(format_name)), bytes(6, FORMAT(mask_t06)), bytes(20, FORMAT(mask_t20)),
    bytes(21, FORMAT(mask_t21)), bytes(22, FORMAT(mask_t22)), bytes(23, FORMAT(mask_t23)),
    list(kParities25), list(kParities24),
};
#undef FORMAT

constexpr Field kDelete[] = {u8(3, Member<uint8_t>{0})};

// Each tag-1 container fills the next entry of the parallel id and name arrays (a
// name cut to 50 bytes); the count is cleared before the request goes out, and
// containers beyond the list are dropped. A container's result is the result.
#define LIST(member) KVN_MEMBER(kvn_wiegand_format_list, member)
constexpr Field kListEntry[] = {
    u8(3, LIST(format_ids[0])).each(1),
    text(4, LIST(format_names[0])).bound(50).each(51),
};
#undef LIST
constexpr List kFormats = List{.capacity = KVN_WIEGAND_FORMAT_LIST_MAX}
                              .in(1)
                              .of(kListEntry)
                              .counting(Counter::u8_clear, offsetof(kvn_wiegand_format_list, count))
                              .remembering();
constexpr Field kList[] = {list(kFormats)};

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_upload_wiegand_format(kvn_device_conn* conn, kvn_wiegand_format* format) {
    if (format == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    Desc rows;
    switch (format->wiegand_type) {
        case 0:
            format->format_id = 1;  // the caller sees it
            rows = kType0;
            break;
        case 1: rows = kType1; break;
        case 2:
            if (format->parity_count_t25 > KVN_WIEGAND_PARITY_MAX || format->parity_count_t24 > KVN_WIEGAND_PARITY_MAX)
                return KVN_E_PARITIES_CREATED_THAN_SUPPORTED;
            rows = kType2;
            break;
        default: return KVN_E_INVALID_WIEGAND_TYPE;
    }
    return cmd::set<kBuffer>(conn, id::wiegand_format_upload, rows, format, Capacity::sent_length);
}

KVN_API int32_t kvn_delete_wiegand_format(kvn_device_conn* conn, uint8_t format_id) {
    return cmd::set<kBuffer>(conn, id::wiegand_format_delete, kDelete, &format_id, Capacity::sent_length);
}

KVN_API int32_t kvn_get_wiegand_format_list(kvn_device_conn* conn, kvn_wiegand_format_list* list) {
    return cmd::get<kBuffer>(conn, id::wiegand_format_list, kList, list);
}

}  // extern "C"
