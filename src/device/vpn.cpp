// VPN profile (1001) and status (1002), and the certificate store behind it: the
// user, CA and uploaded certificate lists (1003, 1004, 1007), installing an
// uploaded certificate (1005) and uninstalling one (1006). The family works in
// 1024-byte buffers and reads the answer to a set with the length it sent as the
// capacity.
#include <cstddef>

#include "core/command.h"
#include "kvnsdk2.h"
#include "link/commands.h"

namespace kvn {
namespace {

using namespace row;

constexpr uint32_t kBuffer = cmd::kSmallBuffer;

// All sixteen elements in record order, empty texts too; a read takes at most 50
// bytes of a text.
#define VPN_VALUE(n) u32(n, KVN_MEMBER(kvn_vpn_profile, value_##n))
#define VPN_TEXT(n) text(n, KVN_MEMBER(kvn_vpn_profile, text_##n)).bound(50)
constexpr Field kProfile[] = {
    VPN_VALUE(17), VPN_TEXT(2),  VPN_VALUE(3),  VPN_TEXT(4),  VPN_TEXT(5),  VPN_TEXT(6),  VPN_TEXT(7),  VPN_TEXT(8),
    VPN_TEXT(9),   VPN_VALUE(10), VPN_TEXT(11), VPN_TEXT(12), VPN_TEXT(13), VPN_TEXT(14), VPN_TEXT(15), VPN_TEXT(16),
};
#undef VPN_VALUE
#undef VPN_TEXT

constexpr Field kStatus[] = {
    u32(28, KVN_MEMBER(kvn_vpn_status, state)),
    address(29, KVN_MEMBER(kvn_vpn_status, address)),
};

// The three lists share one reading: user (14), CA (15) and uploaded (21) names
// append at the caller's count; a tag-20 container holds more of the same, and
// the result of the last one is the result.
constexpr Member<char[51]> kName{0};
constexpr Field kCertName[] = {text(14, kName).bound(50), text(15, kName).bound(50), text(21, kName).bound(50)};
constexpr List kCertNames = array(KVN_MEMBER(kvn_vpn_cert_list, names))
                                .of(kCertName)
                                .appending()
                                .counting(Counter::u8_keep, offsetof(kvn_vpn_cert_list, count));
constexpr Field kCertList[] = {list(kCertNames), self(20)};

constexpr Field kInstall[] = {
    text(21, KVN_MEMBER(kvn_vpn_certificate_install, name)),
    text(22, KVN_MEMBER(kvn_vpn_certificate_install, secret)),
};

// A caller's NUL-terminated name under the tag of its kind, sent even when empty;
// one too long for the buffer is not sent.
constexpr Field kUninstallUser[] = {text(14, Member<char[kBuffer]>{0})};
constexpr Field kUninstallCa[] = {text(15, Member<char[kBuffer]>{0})};

int32_t set(kvn_device_conn* conn, uint32_t command, Desc desc, const void* record) noexcept {
    return cmd::send<kBuffer>(conn, Request{command, KVN_REQ_SET, Capacity::sent_length}, desc, record);
}

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_set_vpn_profile(kvn_device_conn* conn, const kvn_vpn_profile* profile) {
    return set(conn, id::vpn_profile, kProfile, profile);
}
KVN_API int32_t kvn_get_vpn_profile(kvn_device_conn* conn, kvn_vpn_profile* profile) {
    return cmd::get<kBuffer>(conn, id::vpn_profile, kProfile, profile);
}
KVN_API int32_t kvn_reset_vpn_profile(kvn_device_conn* conn) { return cmd::reset(conn, id::vpn_profile); }
KVN_API int32_t kvn_get_vpn_status(kvn_device_conn* conn, kvn_vpn_status* status) {
    return cmd::get<kBuffer>(conn, id::vpn_status, kStatus, status);
}

KVN_API int32_t kvn_get_user_cert_list(kvn_device_conn* conn, kvn_vpn_cert_list* list) {
    return cmd::get<kBuffer>(conn, id::user_certs, kCertList, list);
}
KVN_API int32_t kvn_get_ca_cert_list(kvn_device_conn* conn, kvn_vpn_cert_list* list) {
    return cmd::get<kBuffer>(conn, id::ca_certs, kCertList, list);
}
KVN_API int32_t kvn_get_uploaded_cert_list(kvn_device_conn* conn, kvn_vpn_cert_list* list) {
    return cmd::get<kBuffer>(conn, id::uploaded_certs, kCertList, list);
}

KVN_API int32_t kvn_install_uploaded_certificate(kvn_device_conn* conn, const kvn_vpn_certificate_install* install) {
    return set(conn, id::install_certificate, kInstall, install);
}
KVN_API int32_t kvn_uninstall_user_certificate(kvn_device_conn* conn, const char* name) {
    return set(conn, id::uninstall_certificate, kUninstallUser, name);
}
KVN_API int32_t kvn_uninstall_ca_certificate(kvn_device_conn* conn, const char* name) {
    return set(conn, id::uninstall_certificate, kUninstallCa, name);
}

}  // extern "C"
