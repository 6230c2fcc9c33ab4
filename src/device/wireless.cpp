// SSL (127) and its certificate names (133), system notification (125), Wi-Fi
// status, scan, connection and network information (135 to 138), and Ethernet
// security (163).
#include <cstddef>

#include "core/command.h"
#include "kvnsdk2.h"
#include "link/commands.h"

namespace kvn {
namespace {

using namespace row;

// Tag 3 always goes first; a non-zero value 6 is sent alone after it, otherwise
// the name and the secret follow, empty or not. The secret never comes back.
#define SSL(member) KVN_MEMBER(kvn_ssl_setting, member)
constexpr Gate kNoValue6 = is(SSL(value_6), 0);
constexpr Field kSsl[] = {
    u32(3, SSL(value_3)),
    u32(6, SSL(value_6)).nonzero(),
    text(4, SSL(name)).when(kNoValue6).bound(50),
    text(5, SSL(secret)).when(kNoValue6).encode_only(),
};
#undef SSL

// Each name appends at the caller's count, which a read never clears.
constexpr Field kSslName[] = {text(4, Member<char[51]>{0}).bound(50)};
constexpr List kSslNames = array(KVN_MEMBER(kvn_ssl_cert_list, names))
                               .of(kSslName)
                               .appending()
                               .counting(Counter::u8_keep, offsetof(kvn_ssl_cert_list, count));
constexpr Field kSslCertList[] = {list(kSslNames)};

// The text goes out even when empty.
constexpr Field kNotification[] = {
    u32(1, KVN_MEMBER(kvn_system_notification_setting, value)),
    text(2, KVN_MEMBER(kvn_system_notification_setting, text)),
};

constexpr Field kWifiStatus[] = {u8(2, KVN_MEMBER(kvn_wifi_status, value))};

// Addresses only when the source is 0, in tag order 9 to 13; address E goes out
// once more under tag 15.
#define JOIN(member) KVN_MEMBER(kvn_wifi_connect_setting, member)
constexpr Gate kOwnAddresses = is(JOIN(source), 0);
constexpr Field kConnect[] = {
    text(3, JOIN(name)).nonzero(),
    text(7, JOIN(key)).nonzero(),
    u8(8, JOIN(source)),
    address(9, JOIN(ip_address)).when(kOwnAddresses),
    address(10, JOIN(address_c)).when(kOwnAddresses),
    address(11, JOIN(address_b)).when(kOwnAddresses),
    address(12, JOIN(address_d)).when(kOwnAddresses),
    address(13, JOIN(address_e)).when(kOwnAddresses),
    address(15, JOIN(address_e)).when(kOwnAddresses),
};
#undef JOIN

// The network's name, a caller's NUL-terminated text; an empty one sends nothing.
constexpr Field kDisconnect[] = {text(3, Member<char[cmd::kSmallBuffer]>{0}).nonzero()};

// The scan: the caller's info record, its entry array and its count in one place.
// The count goes in as the entries the array holds and comes out as the entries
// filled; containers beyond it are read and dropped.
struct Scan {
    kvn_wifi_connection_info info;
    uint8_t count;
    kvn_wifi_scan_entry* entries;
};
#define NET(member) KVN_MEMBER(kvn_wifi_scan_entry, member)
constexpr Field kScanEntry[] = {text(3, NET(name)), text(4, NET(text)), u32(5, NET(value_5))};
#undef NET
constexpr List kScanEntries = array_at(KVN_MEMBER(Scan, entries), UINT8_MAX)
                                  .in(1)
                                  .of(kScanEntry)
                                  .counting(Counter::capacity_in, offsetof(Scan, count));
#define JOINED(member) KVN_MEMBER(Scan, info.member)
constexpr Field kScan[] = {
    list(kScanEntries),
    text(6, JOINED(name)),
    u8(8, JOINED(source)),
    address(9, JOINED(ip_address)),
    address(10, JOINED(address_c)),
    address(11, JOINED(address_b)),
    address(12, JOINED(address_d)),
    address(13, JOINED(address_e)),
    u8(15, JOINED(value_15)),
};
#undef JOINED

#define INFO(member) KVN_MEMBER(kvn_wifi_network_info, member)
constexpr Field kNetworkInfo[] = {
    u8(2, INFO(value_2)),           text(3, INFO(name)),           text(4, INFO(text)),
    u32(5, INFO(value_5)),          u8(8, INFO(source)),           address(9, INFO(ip_address)),
    address(10, INFO(address_c)),   address(11, INFO(address_b)), address(12, INFO(address_d)),
    address(13, INFO(address_e)),   u8(15, INFO(value_15)),
};
#undef INFO

// Ethernet security: each non-empty text in a container of its own, sent as text.
// A read fills the texts in the order the containers come; a MAC must be exactly
// 17 bytes, and the result is that of the last container.
constexpr Field kSecAddress[] = {text(3, Member<char[16]>{0})};
constexpr Field kSecMac[] = {text(5, Member<char[18]>{0}).exact(17, KVN_E_INVALID_LENGTH_RECEIVED)};
constexpr List kSecAddresses = array(KVN_MEMBER(kvn_ethernet_security_setting, addresses))
                                   .in(2)
                                   .only(is_not(Member<char[16]>{0}, 0))
                                   .of(kSecAddress)
                                   .remembering();
constexpr List kSecMacs = array(KVN_MEMBER(kvn_ethernet_security_setting, macs))
                              .in(4)
                              .only(is_not(Member<char[18]>{0}, 0))
                              .of(kSecMac)
                              .remembering();
constexpr Field kEthernetSecurity[] = {
    u32(1, KVN_MEMBER(kvn_ethernet_security_setting, mode)),
    list(kSecAddresses),
    list(kSecMacs),
};

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_set_ssl_setting(kvn_device_conn* conn, const kvn_ssl_setting* setting) {
    return cmd::set(conn, id::ssl, kSsl, setting);
}
KVN_API int32_t kvn_get_ssl_setting(kvn_device_conn* conn, kvn_ssl_setting* setting) {
    return cmd::get(conn, id::ssl, kSsl, setting);
}
KVN_API int32_t kvn_reset_ssl_setting(kvn_device_conn* conn) { return cmd::reset(conn, id::ssl); }
KVN_API int32_t kvn_get_ssl_cert_list(kvn_device_conn* conn, kvn_ssl_cert_list* list) {
    return cmd::get<cmd::kSmallBuffer>(conn, id::ssl_cert_list, kSslCertList, list);
}

KVN_API int32_t kvn_set_system_notification_setting(kvn_device_conn* conn,
                                                    const kvn_system_notification_setting* setting) {
    return cmd::set<cmd::kSmallBuffer>(conn, id::system_notification, kNotification, setting);
}
KVN_API int32_t kvn_get_system_notification_setting(kvn_device_conn* conn, kvn_system_notification_setting* setting) {
    return cmd::get(conn, id::system_notification, kNotification, setting);
}
KVN_API int32_t kvn_reset_system_notification_setting(kvn_device_conn* conn) {
    return cmd::reset(conn, id::system_notification);
}

KVN_API int32_t kvn_set_wifi_status(kvn_device_conn* conn, const kvn_wifi_status* status) {
    return cmd::set<cmd::kSmallBuffer>(conn, id::wifi_status, kWifiStatus, status);
}
KVN_API int32_t kvn_get_wifi_status(kvn_device_conn* conn, kvn_wifi_status* status) {
    return cmd::get(conn, id::wifi_status, kWifiStatus, status);
}
KVN_API int32_t kvn_reset_wifi_status(kvn_device_conn* conn) { return cmd::reset(conn, id::wifi_status); }

KVN_API int32_t kvn_get_wifi_scan_list(kvn_device_conn* conn, kvn_wifi_connection_info* info,
                                       kvn_wifi_scan_entry* entries, uint8_t* count) {
    if (info == nullptr || count == nullptr || (entries == nullptr && *count != 0)) return KVN_E_TLV_BUFFER_OVERFLOW;
    return call<204800>(conn, Request{id::wifi_scan, KVN_REQ_GET}, no_payload, [&](const uint8_t* p, uint32_t n) {
        Scan scan{*info, *count, entries};
        const int32_t rc = decode(kScan, p, n, &scan);
        *info = scan.info;
        *count = scan.count;
        return rc;
    });
}
KVN_API int32_t kvn_connect_wifi(kvn_device_conn* conn, const kvn_wifi_connect_setting* setting) {
    return cmd::set<cmd::kSmallBuffer>(conn, id::wifi_connection, kConnect, setting);
}
KVN_API int32_t kvn_disconnect_wifi(kvn_device_conn* conn, const char* name) {
    return cmd::send<cmd::kSmallBuffer>(conn, Request{id::wifi_connection, KVN_REQ_RESET}, kDisconnect, name);
}
KVN_API int32_t kvn_get_wifi_network_info(kvn_device_conn* conn, kvn_wifi_network_info* info) {
    return cmd::get(conn, id::wifi_network_info, kNetworkInfo, info);
}

KVN_API int32_t kvn_set_ethernet_security_setting(kvn_device_conn* conn, const kvn_ethernet_security_setting* setting) {
    return cmd::set(conn, id::ethernet_security, kEthernetSecurity, setting);
}
KVN_API int32_t kvn_get_ethernet_security_setting(kvn_device_conn* conn, kvn_ethernet_security_setting* setting) {
    return cmd::get(conn, id::ethernet_security, kEthernetSecurity, setting);
}
KVN_API int32_t kvn_reset_ethernet_security_setting(kvn_device_conn* conn) {
    return cmd::reset(conn, id::ethernet_security);
}

}  // extern "C"
