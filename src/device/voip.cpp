// VoIP settings (142), the contact list (145) and the default contact (147).
#include "core/command.h"
#include "kvnsdk2.h"
#include "link/commands.h"

namespace kvn {
namespace {

using namespace row;

// The contact list travels in the large buffer.
constexpr uint32_t kContactBuffer = 204800;

// Tags in ascending order although text 5 comes before texts 3 and 4 in the record;
// empty texts are left out.
#define VOIP(member) KVN_MEMBER(kvn_voip_setting, member)
constexpr Field kSetting[] = {
    u32(1, VOIP(value_1)),         text(2, VOIP(text_2)).nonzero(), text(3, VOIP(text_3)).nonzero(),
    text(4, VOIP(text_4)).nonzero(), text(5, VOIP(text_5)).nonzero(), u32(7, VOIP(value_7)),
};
#undef VOIP

// Every contact a tag-1 container, empty ones too; a read fills them in container order.
#define CONTACT(member) KVN_MEMBER(kvn_voip_contact, member)
constexpr Field kContact[] = {
    text(2, CONTACT(text_2)).nonzero(), text(3, CONTACT(text_3)).nonzero(), u32(4, CONTACT(value_4)),
};
// The default contact: its two texts only.
constexpr Field kDefaultContact[] = {text(2, CONTACT(text_2)), text(3, CONTACT(text_3))};
#undef CONTACT
constexpr List kContactList = array(KVN_MEMBER(kvn_voip_contact_list, contacts)).in(1).of(kContact);
constexpr Field kContacts[] = {list(kContactList)};

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_set_voip_setting(kvn_device_conn* conn, const kvn_voip_setting* setting) {
    return cmd::set(conn, id::voip, kSetting, setting);
}
KVN_API int32_t kvn_get_voip_setting(kvn_device_conn* conn, kvn_voip_setting* setting) {
    return cmd::get(conn, id::voip, kSetting, setting);
}
KVN_API int32_t kvn_reset_voip_setting(kvn_device_conn* conn) { return cmd::reset(conn, id::voip); }

KVN_API int32_t kvn_set_voip_contact_list(kvn_device_conn* conn, const kvn_voip_contact_list* list) {
    return cmd::set<kContactBuffer>(conn, id::voip_contacts, kContacts, list);
}
KVN_API int32_t kvn_get_voip_contact_list(kvn_device_conn* conn, kvn_voip_contact_list* list) {
    return cmd::get<kContactBuffer>(conn, id::voip_contacts, kContacts, list);
}
KVN_API int32_t kvn_reset_voip_contact_list(kvn_device_conn* conn) { return cmd::reset(conn, id::voip_contacts); }

KVN_API int32_t kvn_get_voip_default_contact(kvn_device_conn* conn, kvn_voip_contact* contact) {
    return cmd::get<cmd::kSmallBuffer>(conn, id::voip_default_contact, kDefaultContact, contact);
}

}  // extern "C"
