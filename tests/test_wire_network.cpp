// The network and device management exports on the wire: the payload of each export
// that sends one (derived by hand; request type and command id are held in
// test_commands.cpp), and the decoders on hand-made answers in which every field
// carries a value of its own, so that a field under the wrong tag shows.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include "kvnsdk2.h"
#include "peer.h"
#include "records.h"

using namespace kvntest;

namespace {

// Records at namespace scope: their padding is zero, so they compare byte for byte.
// clang-format off
const kvn_ethernet_setting kEth{0, "192.168.1.10", 5005, "255.255.255.0", "192.168.1.1", "8.8.8.8", "8.8.4.4", ""};
const kvn_ethernet_setting kEthMac{0, "192.168.1.10", 5005, "255.255.255.0", "192.168.1.1", "8.8.8.8", "8.8.4.4", "00:1A:2B:3C:4D:5E"};
// 192.168.1.10 is 0xC0A8010A, sent little-endian; the port (5005, 0x138D) goes before the addresses.
const Bytes kEthBytes = {1, 4, 0, 0, 0, 0,   3, 4, 0x8D, 0x13, 0, 0,   2, 4, 0x0A, 0x01, 0xA8, 0xC0,
                         4, 4, 0, 0xFF, 0xFF, 0xFF,   5, 4, 1, 1, 0xA8, 0xC0,   6, 4, 8, 8, 8, 8,   7, 4, 4, 4, 8, 8};
const kvn_serial_setting kSerial{0x1021, 0x1022, 0x1023, 0x1024};
const kvn_usb_auxiliary_setting kUsb{0x103};
const kvn_product_info kProduct{0x116, "KVN-9"};
const kvn_device_security kSecurity{0x128, "pin"};
const kvn_device_status kStatus{0x128, "pin"};
const kvn_device_vnc_setting kVnc{0x34, "vnc-pass"};
const kvn_system_notification_setting kNote{0x125, ""};
const kvn_wifi_status kWifi{7};
const kvn_wifi_connect_setting kJoin{"office", "secret99", 0, "192.168.20.31", "255.255.255.0", "192.168.20.1",
                                     "192.168.20.2", "8.8.8.8"};
const kvn_ethernet_security_setting kSec{2, {"", "", "10.0.0.1"}, {"00:1A:2B:3C:4D:5E"}};
const kvn_vpn_profile kVpn{17, "t2", 3, "t4", "t5", "t6", "t7", "t8", "t9", 10, "t11", "t12", "t13", "t14", "t15", "t16"};
const kvn_vpn_profile kVpnEmpty{};
const kvn_wifi_network_info kNet{2, "office", "wpa2", 5, 8, "10.0.0.9", "10.0.0.11", "10.0.0.10", "10.0.0.12", "10.0.0.13", 0x0F};
// Device information: values carry their tags, addresses are 10.0.0.<tag>.
const kvn_device_info kInfo{1, "name", 20, 5, "10.0.0.9", "10.0.0.10", "10.0.0.11", "10.0.0.12", "host", "10.0.0.22",
    "10.0.0.23", "10.0.0.24", "10.0.0.25", 0x1A, 0x1C, "10.0.0.29", "mac13", "t14", 8, "sn", "mac15", 16, 30, 17, 6,
    18, 19, 31, 32, 0, 7, 0x1B, "fw", 35, {1, 2, 3}, "t37", 38, 39};
// clang-format on
Bytes vpn_bytes(bool empty) {
    auto t = [&](uint8_t tag) { return empty ? el(tag, {}) : text(tag, "t" + std::to_string(tag)); };
    return cat({u32(17, empty ? 0 : 17), t(2), u32(3, empty ? 0 : 3), t(4), t(5), t(6), t(7), t(8), t(9),
                u32(10, empty ? 0 : 10), t(11), t(12), t(13), t(14), t(15), t(16)});
}
const Bytes kSecBytes = cat({u32(1, 2), box(2, text(3, "10.0.0.1")), box(4, text(5, "00:1A:2B:3C:4D:5E"))});

}  // namespace

TEST(NetworkWire, EveryPayload) {
    auto dhcp = kEth;
    auto no_source = kJoin;
    dhcp.address_mode = 1, no_source.source = 1;
    std::strcpy(dhcp.ip_address, "junk");
    const kvn_device_debug_log debug{0x1291, 0x1292};
    auto clock = std::make_unique<kvn_device_date_time>(kvn_device_date_time{0x1261, 0x1262, "", 0x1266});
    const kvn_ssl_setting ssl_own{0x66, "unsent", "unsent", 0x33}, ssl_cert{0, "ca.pem", "", 0x33};
    const kvn_vpn_certificate_install install{"client.pfx", "pw"};
    // clang-format off
#define SET(fn, rec) [&](kvn_device_conn* c) { return fn(c, rec); }
    expect_payloads({
        {SET(kvn_set_ethernet_setting, &kEth), kEthBytes},
        {SET(kvn_set_ethernet_setting, &dhcp), {1, 4, 1, 0, 0, 0, 3, 4, 0x8D, 0x13, 0, 0}},  // no addresses
        {SET(kvn_set_serial_setting, &kSerial), cat({u32(1, 0x1021), u32(2, 0x1022), u32(3, 0x1023), u32(4, 0x1024)})},
        {SET(kvn_set_usb_auxiliary_setting, &kUsb), {1, 4, 3, 1, 0, 0}},
        {SET(kvn_set_device_debug_log, &debug), cat({u32(1, 0x1291), u32(2, 0x1292)})},
        {SET(kvn_set_device_date_time, clock.get()), cat({u32(1, 0x1261), u32(2, 0x1262), {5, 0}, u32(6, 0x1266)})},  // empty text sent
        {SET(kvn_set_ssl_setting, &ssl_own), cat({u32(3, 0x33), u32(6, 0x66)})},
        {SET(kvn_set_ssl_setting, &ssl_cert), cat({u32(3, 0x33), text(4, "ca.pem"), {5, 0}})},
        {SET(kvn_set_system_notification_setting, &kNote), cat({u32(1, 0x125), {2, 0}})},
        // Tags 10 and 11 carry addresses C and B; address E goes out again under tag 15.
        {SET(kvn_connect_wifi, &kJoin), cat({text(3, "office"), text(7, "secret99"), {8, 1, 0}, u32(9, 0xC0A8141F),
            u32(10, 0xC0A81401), u32(11, 0xFFFFFF00), u32(12, 0xC0A81402), u32(13, 0x08080808), u32(15, 0x08080808)})},
        {SET(kvn_connect_wifi, &no_source), cat({text(3, "office"), text(7, "secret99"), {8, 1, 1}})},
        {SET(kvn_disconnect_wifi, "office"), text(3, "office")},
        {SET(kvn_disconnect_wifi, ""), {}},
        {SET(kvn_set_ethernet_security_setting, &kSec), kSecBytes},
        {SET(kvn_set_vpn_profile, &kVpnEmpty), vpn_bytes(true)},
        {SET(kvn_install_uploaded_certificate, &install), cat({text(21, "client.pfx"), text(22, "pw")})},
        {SET(kvn_uninstall_user_certificate, "a.pfx"), text(14, "a.pfx")},
        {SET(kvn_uninstall_ca_certificate, "a.pfx"), text(15, "a.pfx")},  // only the tag differs
    });
#undef SET
    // clang-format on
    EXPECT_EQ(vpn_bytes(true).size(), 44u);  // three values of 6 bytes, thirteen empty texts of 2
}

TEST(NetworkWire, RejectedAddressesAndOversizedNamesSendNothing) {
    for (const char* bad : {"256.1.1.1", "1.1.1", "1.1.1.1.", "1234567890123456", ""}) {
        auto e = kEth;
        auto j = kJoin;
        std::strncpy(e.address_6, bad, 16), std::strncpy(j.address_e, bad, 16);  // 16 characters: no NUL
        const Seen s = capture([&](auto c) { return kvn_set_ethernet_setting(c, &e); });
        EXPECT_EQ(s.rc + int32_t(s.command), KVN_E_INVALID_IP_ADDRESS) << bad;
        EXPECT_EQ(capture([&](auto c) { return kvn_connect_wifi(c, &j); }).rc, KVN_E_INVALID_IP_ADDRESS) << bad;
    }
    const std::string long_name(1100, 'n');
    EXPECT_EQ(capture([&](auto c) { return kvn_uninstall_ca_certificate(c, long_name.c_str()); }).command, 0u);
    EXPECT_EQ(capture([&](auto c) { return kvn_disconnect_wifi(c, long_name.c_str()); }).rc, -1);
}

// The decoders; where a set sends what its get reads, both ways at once.
TEST(NetworkDecoders, RecordsByTag) {
    const Bytes mac = text(8, kEthMac.mac_address);
    expect_decodes("ethernet", kvn_get_ethernet_setting, cat({kEthBytes, mac}), kEthMac);
    EXPECT_EQ(std::string(decoded<kvn_ethernet_setting>(kvn_get_ethernet_setting, mac, 0, '#')->mac_address, 18),
              std::string(kEthMac.mac_address) + "#");  // 17 bytes: the eighteenth kept
    expect_decodes("serial", kvn_get_serial_setting, cat({u32(4, 0x1024), u32(2, 0x1022), u32(1, 0x1021), u32(3, 0x1023)}), kSerial);
    expect_decodes("usb auxiliary", kvn_get_usb_auxiliary_setting, cat({u32(2, 9), u32(1, 0x103)}), kUsb);
    expect_both_ways("product info", kvn_set_product_info, kvn_get_product_info, cat({u32(1, 0x116), text(2, "KVN-9")}), kProduct);
    expect_both_ways("device security", kvn_set_device_security, kvn_get_device_security, cat({u32(1, 0x128), text(2, "pin")}), kSecurity);
    expect_decodes("device status", kvn_get_device_status, cat({u32(1, 0x128), text(2, "pin")}), kStatus);
    expect_both_ways("device vnc", kvn_set_device_vnc_setting, kvn_get_device_vnc_setting, cat({u8(2, 0x34), text(3, "vnc-pass")}), kVnc);
    expect_decodes("system notification", kvn_get_system_notification_setting, u32(1, 0x125), kNote);
    expect_both_ways("wifi status", kvn_set_wifi_status, kvn_get_wifi_status, u8(2, 7), kWifi);
    expect_both_ways("vpn profile", kvn_set_vpn_profile, kvn_get_vpn_profile, vpn_bytes(false), kVpn);
    expect_decodes("vpn status", kvn_get_vpn_status, cat({u32(28, 1), u32(29, 0x0A080002)}), kvn_vpn_status{1, "10.8.0.2"});
    // Texts cut at their field: security 11 bytes; the rest of the field kept.
    EXPECT_EQ(std::string(decoded<kvn_device_security>(kvn_get_device_security, text(2, "0123456789ABC"), 0, '#')->text, 12),
        "0123456789A#");
    // Debug value 1 and the SSL secret are never read back; the date-time text fills its field.
    EXPECT_EQ(decoded<kvn_device_debug_log>(kvn_get_device_debug_log, cat({u32(1, 5), u32(2, 6)}), 0, 1)->value_1, 0x01010101u);
    auto clock = decoded<kvn_device_date_time>(kvn_get_device_date_time, cat({u32(2, 2), text(5, "UTC"), u32(6, 6)}), 0, '#');
    EXPECT_EQ(std::string(clock->text, 4) + char(clock->text[1023] + '0') + char(clock->value_2 + clock->value_6 + '0'),
              std::string("UTC\0" "08", 6));
    auto ssl = decoded<kvn_ssl_setting>(kvn_get_ssl_setting, cat({u32(3, 3), u32(6, 6), text(4, std::string(60, 'n')), text(5, "x")}), 0, '#');
    EXPECT_EQ(std::string(ssl->name, 51) + ssl->secret[0] + char(ssl->value_3 + ssl->value_6 * 2 + '0'), std::string(50, 'n') + "##?");
    expect_decodes("wifi network info", kvn_get_wifi_network_info, cat({u8(2, 2), text(3, "office"), text(4, "wpa2"), u32(5, 5), u8(8, 8),
        u32(9, 0x0A000009), u32(10, 0x0A00000A), u32(11, 0x0A00000B), u32(12, 0x0A00000C), u32(13, 0x0A00000D), u32(15, 0x10F)}), kNet);
}

TEST(NetworkDecoders, DeviceInformation) {
    // Values carry their tags; short values zero-extend, one-byte fields take the
    // low byte; tags 33, 34 and 40 are not the record's.
    Bytes answer = cat({text(2, "name"), text(21, "host"), text(13, "mac13"), text(4, "sn"), text(15, "mac15"),
                        text(3, "fw"), el(36, {1, 2, 3}), text(37, "t37"), text(14, "t14"), el(5, {5}), u32(26, 0x11A),
                        u32(27, 0x11B), u32(28, 0x11C), u32(33, 1), u32(34, 1), u32(40, 1)});
    for (uint8_t t : {1, 20, 8, 16, 30, 17, 6, 18, 19, 31, 32, 7, 35, 38, 39}) answer = cat({answer, u32(t, t)});
    for (uint8_t t : {9, 10, 11, 12, 22, 23, 24, 25, 29}) answer = cat({answer, u32(t, 0x0A000000u + t)});
    expect_decodes("device info", kvn_get_device_info, answer, kInfo);
    // Tag 14 of 26 bytes or more: 26 bytes from the tag-13 field on; of 25, its
    // own field only.
    const std::string b26(26, 'B'), c25(25, 'C');
    auto spill = decoded<kvn_device_info>(kvn_get_device_info, cat({text(13, "mac"), text(14, b26 + "xx")}), 0, '#');
    EXPECT_EQ(std::string(spill->mac_13, 18) + std::string(spill->text_14, 26), b26 + std::string(18, '#'));
    auto own = decoded<kvn_device_info>(kvn_get_device_info, cat({text(13, "mac"), text(14, c25)}), 0, '#');
    EXPECT_EQ(std::string(own->mac_13, 4) + std::string(own->text_14, 26), "mac#" + c25 + "#");
    // Tags 36 and 37 fill their whole fields; tag 2 of 60 bytes keeps 50.
    auto whole = decoded<kvn_device_info>(
        kvn_get_device_info, cat({el(36, Bytes(10, 9)), text(37, std::string(60, 'x')), text(2, std::string(60, 'n'))}),
        0, '#');
    EXPECT_EQ(Bytes(whole->data_36, whole->data_36 + 1024), cat({Bytes(10, 9), Bytes(1014, 0)}));
    EXPECT_EQ(std::string(whole->text_37, 50) + std::string(whole->text_2, 50) + char(whole->value_20),
              std::string(50, 'x') + std::string(50, 'n') + "#");
}

TEST(NetworkDecoders, ListsAndContainers) {
    // Scan: a capacity of 2 and five networks fills two entries and reports 2.
    const Bytes scan = cat({text(6, "office"), u8(8, 1), u32(9, 0x0A000009), u32(11, 0x0A00000B), u32(15, 0x10F), each(5, [](size_t k) {
                                return box(1, cat({text(3, "net" + std::to_string(k + 1)), text(4, "d"), u32(5, uint32_t(k + 1))})); })});
    kvn_wifi_connection_info info{};
    kvn_wifi_scan_entry e[3];
    std::memset(e, '#', sizeof e);
    uint8_t count = 2;
    auto scan_call = [&](auto c) { return kvn_get_wifi_scan_list(c, &info, e, &count); };
    ASSERT_EQ(capture(scan_call, response(0, scan)).rc, 0);
    EXPECT_EQ(std::string(e[1].name, 5) + char('0' + e[1].value_5) + char('0' + count) + char(e[2].value_5), "net2#22#");
    EXPECT_EQ(std::string(info.name) + info.ip_address + info.address_b + char('0' + info.source) + char(info.value_15 + '0'),
        "office10.0.0.910.0.0.111?");
    count = 3;  // written only when the whole answer was read
    EXPECT_EQ(capture(scan_call, response(0, cat({scan, {0xFF}}))).rc + count, -1 + 3);
    // Ethernet security: texts in container order; a MAC must be 17 bytes; the
    // last container's result.
    const Bytes more = cat({kSecBytes, box(2, text(3, "10.0.0.2"))}), short_mac = box(4, text(5, "00:1A:2B:3C:4D:5"));
    auto sec = decoded<kvn_ethernet_security_setting>(kvn_get_ethernet_security_setting, cat({more, short_mac}), -1010);
    EXPECT_EQ(std::string(sec->addresses[0]) + sec->addresses[1] + sec->macs[0] + sec->macs[1] + char('0' + sec->mode),
              "10.0.0.110.0.0.200:1A:2B:3C:4D:5E2");
    decoded<kvn_ethernet_security_setting>(kvn_get_ethernet_security_setting, cat({short_mac, more}), 0);
    // Certificate names append at the caller's count; a tag-20 container is read
    // into the same list in payload order; 60 bytes keep 50; a malformed
    // container's result is remembered.
    auto ssl = std::make_unique<kvn_ssl_cert_list>();
    ssl->count = 5;
    capture([&](auto c) { return kvn_get_ssl_cert_list(c, ssl.get()); }, response(0, cat({text(4, "a"), text(9, "x"), text(4, "b")})));
    EXPECT_EQ(std::string(ssl->names[5]) + ssl->names[6] + char('0' + ssl->count), "ab7");
    auto l = std::make_unique<kvn_vpn_cert_list>();
    std::memset(l.get(), '#', sizeof *l);
    l->count = 0;
    const Bytes nested = cat({text(15, "ca1"), box(20, cat({text(14, "u1"), text(14, std::string(60, 'u'))})),
                              text(16, "no"), box(20, Bytes{0xFF}), text(21, "up")});
    EXPECT_EQ(capture([&](auto c) { return kvn_get_ca_cert_list(c, l.get()); }, response(0, nested)).rc, -1);
    EXPECT_EQ(std::string(l->names[0], 4) + std::string(l->names[1], 3) + std::string(l->names[2], 51) +
                  l->names[3][0] + char('0' + l->count),
              "ca1#u1#" + std::string(50, 'u') + "#u4");
    l->count = 255;  // the count wraps after 255 and never indexes past the names
    capture([&](auto c) { return kvn_get_user_cert_list(c, l.get()); }, response(0, cat({text(14, "z"), text(14, "a")})));
    EXPECT_EQ(std::string(l->names[255], 2) + std::string(l->names[0], 2) + char('0' + l->count), "z#aa1");
}
