// User groups (10 to 12) and the users' display-image setting (156).
#include <cstddef>

#include "core/command.h"
#include "kvnsdk2.h"
#include "link/commands.h"

namespace kvn {
namespace {

using namespace row;
using Page = kvn_user_group_page;

constexpr uint32_t kPageBuffer = 204800;

// Store and delete send the same elements; the name goes out at its own length.
constexpr Field kGroup[] = {
    u32(2, KVN_MEMBER(kvn_user_group, group_id)),
    text(3, KVN_MEMBER(kvn_user_group, group_name)),
};

constexpr Field kPageSent[] = {
    u32(4, KVN_MEMBER(Page, range_start)),
    u32(5, KVN_MEMBER(Page, range_end)),
};
// A name is cut at 50 bytes and gets no terminator; tag 6 inside a group is the page's total.
constexpr Field kGroupRead[] = {
    u32(2, KVN_MEMBER(kvn_user_group, group_id)),
    text(3, KVN_MEMBER(kvn_user_group, group_name)).bound(50),
    u32(6, KVN_MEMBER(Page, total)).outer(),
};
// Decoding ends with success after range_end - range_start groups (at most the 50 held).
constexpr List kGroups =
    array(KVN_MEMBER(Page, groups)).in(1).of(kGroupRead).until(offsetof(Page, range_start), offsetof(Page, range_end));
constexpr Field kPageRead[] = {list(kGroups)};

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_store_user_group(kvn_device_conn* conn, kvn_user_group* group) {
    return cmd::set(conn, id::user_group, kGroup, group);
}
// A delete is a reset that carries the whole group.
KVN_API int32_t kvn_delete_user_group(kvn_device_conn* conn, kvn_user_group* group) {
    return cmd::send(conn, Request{id::user_group, KVN_REQ_RESET}, kGroup, group);
}
KVN_API int32_t kvn_retrieve_user_group(kvn_device_conn* conn, kvn_user_group_page* page) {
    return cmd::query<kPageBuffer>(conn, Request{id::user_group, KVN_REQ_GET}, kPageSent, page, kPageRead, page);
}
KVN_API int32_t kvn_get_total_user_group_count(kvn_device_conn* conn, uint32_t* count) {
    return cmd::get_u32(conn, id::user_group_count, 1, count);
}
KVN_API int32_t kvn_delete_all_user_group(kvn_device_conn* conn) {
    return cmd::reset(conn, id::delete_all_user_groups);
}

KVN_API int32_t kvn_store_user_display_image_setting(kvn_device_conn* conn, uint32_t value) {
    return cmd::set_u32<cmd::kSmallBuffer>(conn, id::user_display_image, 4, value);
}
// The get announces the whole 1024-byte buffer, zeros.
KVN_API int32_t kvn_retrieve_user_display_image_setting(kvn_device_conn* conn, uint32_t* value) {
    if (value == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    const Field rows[] = {u32(4, Member<uint32_t>{0})};
    return call<cmd::kSmallBuffer>(conn, Request{id::user_display_image, KVN_REQ_GET, Capacity::buffer, 1024},
                                   no_payload, Decode{rows, value});
}
KVN_API int32_t kvn_reset_user_display_image_setting(kvn_device_conn* conn) {
    return cmd::reset(conn, id::user_display_image);
}

}  // extern "C"
