// The network and device management exports on the wire: one row per export with its
// request word, command id and the payload derived by hand, and the decoders on
// hand-made answers in which every field carries a value of its own.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

#include "kvnsdk2.h"
#include "peer.h"
#include "records.h"

using namespace kvntest;

namespace {

// 192.168.1.10 travels as 0xC0A8010A, little-endian: 0A 01 A8 C0.
const Bytes kEthernet = {0x01, 4, 0, 0, 0, 0,          0x03, 4, 0x8D, 0x13, 0, 0,    0x02, 4, 0x0A, 0x01, 0xA8, 0xC0,
                         0x04, 4, 0x00, 0xFF, 0xFF, 0xFF, 0x05, 4, 0x01, 0x01, 0xA8, 0xC0, 0x06, 4, 8, 8, 8, 8,
                         0x07, 4, 4, 4, 8, 8};
kvn_ethernet_setting ethernet() {
    auto e = zeroed<kvn_ethernet_setting>();
    e.port = 5005;
    std::strcpy(e.ip_address, "192.168.1.10"), std::strcpy(e.address_4, "255.255.255.0");
    std::strcpy(e.address_5, "192.168.1.1"), std::strcpy(e.address_6, "8.8.8.8"), std::strcpy(e.address_7, "8.8.4.4");
    return e;
}

kvn_wifi_connect_setting join() {
    auto j = zeroed<kvn_wifi_connect_setting>();
    std::strcpy(j.name, "office"), std::strcpy(j.key, "secret99");
    std::strcpy(j.ip_address, "192.168.20.31"), std::strcpy(j.address_b, "255.255.255.0");
    std::strcpy(j.address_c, "192.168.20.1"), std::strcpy(j.address_d, "192.168.20.2");
    std::strcpy(j.address_e, "8.8.8.8");
    return j;
}

kvn_vpn_profile profile() {  // values carry their tags, the texts their tags' names
    auto p = zeroed<kvn_vpn_profile>();
    p.value_17 = 17, p.value_3 = 3, p.value_10 = 10;
    char* texts[] = {p.text_2, p.text_4, p.text_5, p.text_6, p.text_7, p.text_8, p.text_9,
                     p.text_11, p.text_12, p.text_13, p.text_14, p.text_15, p.text_16};
    const int tags[] = {2, 4, 5, 6, 7, 8, 9, 11, 12, 13, 14, 15, 16};
    for (int i = 0; i < 13; ++i) std::snprintf(texts[i], 51, "t%d", tags[i]);
    return p;
}
Bytes profile_bytes(bool empty) {
    auto t = [&](uint8_t tag) { return empty ? el(tag, {}) : text(tag, "t" + std::to_string(tag)); };
    return cat({u32(17, empty ? 0 : 17), t(2), u32(3, empty ? 0 : 3), t(4), t(5), t(6), t(7), t(8), t(9),
                u32(10, empty ? 0 : 10), t(11), t(12), t(13), t(14), t(15), t(16)});
}

template <class Rec, class Get>
std::unique_ptr<Rec> decoded(Get get, const Bytes& answer, int32_t rc = 0, int fill = 0) {
    auto r = std::make_unique<Rec>();
    std::memset(r.get(), fill, sizeof(Rec));
    EXPECT_EQ(capture([&](kvn_device_conn* c) { return get(c, r.get()); }, response(0, answer)).rc, rc);
    return r;
}
template <class Rec>
bool same(const Rec& a, const Rec& b) {
    return std::memcmp(&a, &b, sizeof(Rec)) == 0;
}

}  // namespace

TEST(NetworkWire, EveryExportsRequest) {
    const kvn_ethernet_setting eth = ethernet();
    auto eth_dhcp = zeroed<kvn_ethernet_setting>();
    eth_dhcp.address_mode = 1;
    std::strcpy(eth_dhcp.ip_address, "junk");
    const kvn_serial_setting serial{0x1021, 0x1022, 0x1023, 0x1024};
    const kvn_usb_auxiliary_setting usb{0x103};
    kvn_serial_setting serial_read{};
    kvn_usb_auxiliary_setting usb_read{};
    kvn_product_info product{0x116, "KVN-9"};
    kvn_device_debug_log debug{0x1291, 0x1292};
    kvn_device_security security{0x128, ""};
    auto clock = std::make_unique<kvn_device_date_time>(zeroed<kvn_device_date_time>());
    clock->value_1 = 0x1261, clock->value_2 = 0x1262, clock->value_6 = 0x1266;
    kvn_device_vnc_setting vnc{0x34, "vnc-pass"};
    kvn_ssl_setting ssl_own{0x66, "ignored", "ignored", 0x33}, ssl_cert{0, "ca.pem", "", 0x33};
    auto note = std::make_unique<kvn_system_notification_setting>(zeroed<kvn_system_notification_setting>());
    note->value = 0x125;
    kvn_wifi_status wifi{1};
    kvn_wifi_connect_setting wifi_join = join(), wifi_dhcp = join();
    wifi_dhcp.source = 1;
    auto sec = zeroed<kvn_ethernet_security_setting>();
    sec.mode = 2;
    std::strcpy(sec.addresses[2], "10.0.0.1"), std::strcpy(sec.macs[0], "00:1A:2B:3C:4D:5E");
    kvn_vpn_profile vpn = profile(), vpn_empty = zeroed<kvn_vpn_profile>();
    const kvn_vpn_certificate_install install{"client.pfx", "pw"};
    auto info = std::make_unique<kvn_device_info>();
    auto ssl_list = std::make_unique<kvn_ssl_cert_list>();
    auto vpn_list = std::make_unique<kvn_vpn_cert_list>();
    kvn_wifi_connection_info joined{};
    kvn_wifi_scan_entry nets[2]{};
    uint8_t count = 2;
    kvn_wifi_network_info net{};
    kvn_device_status status{};
    kvn_vpn_status vpn_status{};
    struct Row {
        const char* name;
        Call call;
        uint32_t word, command;
        Bytes payload;
    };
    const Row rows[] = {
        {"set ethernet", [&](auto c) { return kvn_set_ethernet_setting(c, &eth); }, kSet, 101, kEthernet},
        {"set ethernet, mode 1", [&](auto c) { return kvn_set_ethernet_setting(c, &eth_dhcp); }, kSet, 101,
         {1, 4, 1, 0, 0, 0}},
        {"get ethernet", [&](auto c) { return kvn_get_ethernet_setting(c, &eth_dhcp); }, kGet, 101, {}},
        {"reset ethernet", kvn_reset_ethernet_setting, kReset, 101, {}},
        {"set serial", [&](auto c) { return kvn_set_serial_setting(c, &serial); }, kSet, 102,
         cat({u32(1, 0x1021), u32(2, 0x1022), u32(3, 0x1023), u32(4, 0x1024)})},
        {"get serial", [&](auto c) { return kvn_get_serial_setting(c, &serial_read); }, kGet, 102, {}},
        {"reset serial", kvn_reset_serial_setting, kReset, 102, {}},
        {"set usb", [&](auto c) { return kvn_set_usb_auxiliary_setting(c, &usb); }, kSet, 103, {1, 4, 3, 1, 0, 0}},
        {"get usb", [&](auto c) { return kvn_get_usb_auxiliary_setting(c, &usb_read); }, kGet, 103, {}},
        {"reset usb", kvn_reset_usb_auxiliary_setting, kReset, 103, {}},
        {"device info", [&](auto c) { return kvn_get_device_info(c, info.get()); }, kGet, 201, {}},
        {"set product", [&](auto c) { return kvn_set_product_info(c, &product); }, kSet, 116,
         cat({u32(1, 0x116), text(2, "KVN-9")})},
        {"get product", [&](auto c) { return kvn_get_product_info(c, &product); }, kGet, 116, {}},
        {"reset product", kvn_reset_product_info, kReset, 116, {}},
        {"set debug", [&](auto c) { return kvn_set_device_debug_log(c, &debug); }, kSet, 129,
         cat({u32(1, 0x1291), u32(2, 0x1292)})},
        {"get debug", [&](auto c) { return kvn_get_device_debug_log(c, &debug); }, kGet, 129, {}},
        {"reset debug", kvn_reset_device_debug_log, kReset, 129, {}},
        {"reboot forcefully", kvn_device_reboot_forcefully, kReset, 121, {}},
        {"reboot gracefully", kvn_device_reboot_gracefully, kReset, 131, {}},
        {"factory default", kvn_device_factory_default, kReset, 122, {}},
        {"set security", [&](auto c) { return kvn_set_device_security(c, &security); }, kSet, 128, u32(1, 0x128)},
        {"get security", [&](auto c) { return kvn_get_device_security(c, &security); }, kGet, 128, {}},
        {"reset security", kvn_reset_device_security, kReset, 128, {}},
        {"set date time", [&](auto c) { return kvn_set_device_date_time(c, clock.get()); }, kSet, 126,
         cat({u32(1, 0x1261), u32(2, 0x1262), {5, 0}, u32(6, 0x1266)})},
        {"get date time", [&](auto c) { return kvn_get_device_date_time(c, clock.get()); }, kGet, 126, {}},
        {"device status", [&](auto c) { return kvn_get_device_status(c, &status); }, kGet, 202, {}},
        {"set vnc", [&](auto c) { return kvn_set_device_vnc_setting(c, &vnc); }, kSet, 134,
         cat({{2, 1, 0x34}, text(3, "vnc-pass")})},
        {"get vnc", [&](auto c) { return kvn_get_device_vnc_setting(c, &vnc); }, kGet, 134, {}},
        {"reset vnc", kvn_reset_device_vnc_setting, kReset, 134, {}},
        {"set ssl, value 6", [&](auto c) { return kvn_set_ssl_setting(c, &ssl_own); }, kSet, 127,
         cat({u32(3, 0x33), u32(6, 0x66)})},
        {"set ssl, certificate", [&](auto c) { return kvn_set_ssl_setting(c, &ssl_cert); }, kSet, 127,
         cat({u32(3, 0x33), text(4, "ca.pem"), {5, 0}})},
        {"get ssl", [&](auto c) { return kvn_get_ssl_setting(c, &ssl_cert); }, kGet, 127, {}},
        {"reset ssl", kvn_reset_ssl_setting, kReset, 127, {}},
        {"ssl certificates", [&](auto c) { return kvn_get_ssl_cert_list(c, ssl_list.get()); }, kGet, 133, {}},
        {"set notification", [&](auto c) { return kvn_set_system_notification_setting(c, note.get()); }, kSet, 125,
         cat({u32(1, 0x125), {2, 0}})},
        {"get notification", [&](auto c) { return kvn_get_system_notification_setting(c, note.get()); }, kGet, 125,
         {}},
        {"reset notification", kvn_reset_system_notification_setting, kReset, 125, {}},
        {"set wifi status", [&](auto c) { return kvn_set_wifi_status(c, &wifi); }, kSet, 135, {2, 1, 1}},
        {"get wifi status", [&](auto c) { return kvn_get_wifi_status(c, &wifi); }, kGet, 135, {}},
        {"reset wifi status", kvn_reset_wifi_status, kReset, 135, {}},
        {"wifi scan", [&](auto c) { return kvn_get_wifi_scan_list(c, &joined, nets, &count); }, kGet, 136, {}},
        // Tags 10 and 11 carry addresses C and B; address E goes out again under tag 15.
        {"connect wifi", [&](auto c) { return kvn_connect_wifi(c, &wifi_join); }, kSet, 137,
         cat({text(3, "office"), text(7, "secret99"), {8, 1, 0}, u32(9, 0xC0A8141F), u32(10, 0xC0A81401),
              u32(11, 0xFFFFFF00), u32(12, 0xC0A81402), u32(13, 0x08080808), u32(15, 0x08080808)})},
        {"connect wifi, source 1", [&](auto c) { return kvn_connect_wifi(c, &wifi_dhcp); }, kSet, 137,
         cat({text(3, "office"), text(7, "secret99"), {8, 1, 1}})},
        {"disconnect wifi", [](auto c) { return kvn_disconnect_wifi(c, "office"); }, kReset, 137, text(3, "office")},
        {"disconnect wifi, no name", [](auto c) { return kvn_disconnect_wifi(c, ""); }, kReset, 137, {}},
        {"wifi network", [&](auto c) { return kvn_get_wifi_network_info(c, &net); }, kGet, 138, {}},
        {"set ethernet security", [&](auto c) { return kvn_set_ethernet_security_setting(c, &sec); }, kSet, 163,
         cat({u32(1, 2), box(2, text(3, "10.0.0.1")), box(4, text(5, "00:1A:2B:3C:4D:5E"))})},
        {"get ethernet security", [&](auto c) { return kvn_get_ethernet_security_setting(c, &sec); }, kGet, 163, {}},
        {"reset ethernet security", kvn_reset_ethernet_security_setting, kReset, 163, {}},
        {"set vpn profile", [&](auto c) { return kvn_set_vpn_profile(c, &vpn); }, kSet, 1001, profile_bytes(false)},
        {"set empty vpn profile", [&](auto c) { return kvn_set_vpn_profile(c, &vpn_empty); }, kSet, 1001,
         profile_bytes(true)},
        {"get vpn profile", [&](auto c) { return kvn_get_vpn_profile(c, &vpn_empty); }, kGet, 1001, {}},
        {"reset vpn profile", kvn_reset_vpn_profile, kReset, 1001, {}},
        {"vpn status", [&](auto c) { return kvn_get_vpn_status(c, &vpn_status); }, kGet, 1002, {}},
        {"user certificates", [&](auto c) { return kvn_get_user_cert_list(c, vpn_list.get()); }, kGet, 1003, {}},
        {"ca certificates", [&](auto c) { return kvn_get_ca_cert_list(c, vpn_list.get()); }, kGet, 1004, {}},
        {"uploaded certificates", [&](auto c) { return kvn_get_uploaded_cert_list(c, vpn_list.get()); }, kGet, 1007,
         {}},
        {"install certificate", [&](auto c) { return kvn_install_uploaded_certificate(c, &install); }, kSet, 1005,
         cat({text(21, "client.pfx"), text(22, "pw")})},
        {"uninstall user certificate", [](auto c) { return kvn_uninstall_user_certificate(c, "client.pfx"); }, kSet,
         1006, text(14, "client.pfx")},
        {"uninstall ca certificate", [](auto c) { return kvn_uninstall_ca_certificate(c, "client.pfx"); }, kSet, 1006,
         text(15, "client.pfx")},
    };
    for (const Row& r : rows) {
        const Seen s = capture(r.call);
        EXPECT_EQ(s.rc, 0) << r.name;
        EXPECT_EQ(s.word, r.word) << r.name;
        EXPECT_EQ(s.command, r.command) << r.name;
        EXPECT_BYTES(s.payload, r.payload) << r.name;
    }
    EXPECT_EQ(kEthernet.size(), 42u);
    EXPECT_EQ(profile_bytes(true).size(), 44u);  // three values of 6 bytes, thirteen empty texts of 2
}

TEST(NetworkWire, AddressesAreCheckedBeforeAnythingIsSent) {
    for (const char* bad : {"256.1.1.1", "1.1.1", "1.1.1.1.", "1234567890123456", ""}) {
        kvn_ethernet_setting e = ethernet();
        std::strcpy(e.address_6, bad);
        const Seen s = capture([&](auto c) { return kvn_set_ethernet_setting(c, &e); });
        EXPECT_EQ(s.rc, KVN_E_INVALID_IP_ADDRESS) << bad;
        EXPECT_EQ(s.command, 0u) << bad << ": sent";
        kvn_wifi_connect_setting j = join();
        std::strcpy(j.address_e, bad);
        EXPECT_EQ(capture([&](auto c) { return kvn_connect_wifi(c, &j); }).rc, KVN_E_INVALID_IP_ADDRESS) << bad;
    }
    kvn_ethernet_setting leading_zeros = ethernet();
    std::strcpy(leading_zeros.address_7, "01.002.3.4");
    EXPECT_BYTES(capture([&](auto c) { return kvn_set_ethernet_setting(c, &leading_zeros); }).payload,
                 cat({Bytes(kEthernet.begin(), kEthernet.end() - 6), u32(7, 0x01020304)}));
    // Too long for the 1024-byte request: nothing is sent.
    const std::string long_name(1100, 'n');
    EXPECT_EQ(capture([&](auto c) { return kvn_uninstall_ca_certificate(c, long_name.c_str()); }).command, 0u);
    EXPECT_EQ(capture([&](auto c) { return kvn_disconnect_wifi(c, long_name.c_str()); }).rc, -1);
}

TEST(NetworkDecoders, WiredAndDeviceRecordsByTag) {
    // Ethernet: numbers back to dotted quads; a 17-byte MAC keeps the eighteenth byte.
    const Bytes mac = text(8, "00:1A:2B:3C:4D:5E");
    kvn_ethernet_setting want = ethernet();
    std::strcpy(want.mac_address, "00:1A:2B:3C:4D:5E");
    EXPECT_TRUE(same(*decoded<kvn_ethernet_setting>(kvn_get_ethernet_setting, cat({kEthernet, mac})), want));
    EXPECT_EQ(std::string(decoded<kvn_ethernet_setting>(kvn_get_ethernet_setting, mac, 0, '#')->mac_address, 18),
              "00:1A:2B:3C:4D:5E#");
    const kvn_serial_setting serial{0x21, 0x22, 0x23, 0x24};
    EXPECT_TRUE(same(*decoded<kvn_serial_setting>(kvn_get_serial_setting,
                                                  cat({u32(4, 0x24), u32(2, 0x22), u32(1, 0x21), u32(3, 0x23)})),
                     serial));
    EXPECT_EQ(decoded<kvn_usb_auxiliary_setting>(kvn_get_usb_auxiliary_setting, cat({u32(2, 9), u32(1, 7)}))->value,
              7u);
    auto product = zeroed<kvn_product_info>();
    product.value = 0x116, std::strcpy(product.text, "KVN-9");
    EXPECT_TRUE(same(*decoded<kvn_product_info>(kvn_get_product_info, cat({u32(1, 0x116), text(2, "KVN-9")})), product));
    auto debug = decoded<kvn_device_debug_log>(kvn_get_device_debug_log, cat({u32(1, 5), u32(2, 6)}), 0, 0x11);
    EXPECT_EQ(debug->value_1, 0x11111111u) << "value 1 is never read back";
    EXPECT_EQ(debug->value_2, 6u);
    const Bytes eleven = cat({u32(1, 0x128), text(2, "0123456789ABC")});  // a text of 13: 11 kept
    EXPECT_EQ(std::string(decoded<kvn_device_security>(kvn_get_device_security, eleven, 0, '#')->text, 12),
              "0123456789A#");
    EXPECT_EQ(std::string(decoded<kvn_device_status>(kvn_get_device_status, eleven, 0, '#')->text, 12),
              "0123456789A#");
    auto clock = decoded<kvn_device_date_time>(kvn_get_device_date_time,
                                               cat({u32(1, 1), u32(2, 2), text(5, "UTC"), u32(6, 6)}), 0, '#');
    EXPECT_EQ(clock->value_2 + clock->value_6, 8u);
    EXPECT_EQ(std::string(clock->text, 5), std::string("UTC\0\0", 5));
    EXPECT_EQ(clock->text[1023], 0);
    auto vnc = decoded<kvn_device_vnc_setting>(kvn_get_device_vnc_setting, cat({u8(2, 0x34), text(3, "pw")}));
    EXPECT_EQ(vnc->value, 0x34);
    EXPECT_STREQ(vnc->text, "pw");
}

TEST(NetworkDecoders, DeviceInformation) {
    // Values carry their tags; short values are zero-extended, one-byte fields take the
    // low byte; tags 33, 34 and 40 are not the record's.
    Bytes answer = cat({text(2, "name"), text(21, "host"), text(13, "mac13"), text(4, "serial"), text(15, "mac15"),
                        text(3, "fw"), el(36, {1, 2, 3}), text(37, "t37"), text(14, "t14"), el(5, {5}),
                        u32(26, 0x11A), u32(27, 0x11B), u32(28, 0x11C), u32(33, 1), u32(34, 1), u32(40, 1)});
    for (uint8_t t : {1, 20, 8, 16, 30, 17, 6, 18, 19, 31, 32, 7, 35, 38, 39}) answer = cat({answer, u32(t, t)});
    for (uint8_t t : {9, 10, 11, 12, 22, 23, 24, 25, 29}) answer = cat({answer, u32(t, 0x0A000000u + t)});
    auto got = decoded<kvn_device_info>(kvn_get_device_info, answer);
    auto w = std::make_unique<kvn_device_info>(zeroed<kvn_device_info>());
    w->value_1 = 1, w->value_20 = 20, w->value_5 = 5, w->value_8 = 8, w->value_16 = 16, w->value_30 = 30;
    w->value_17 = 17, w->value_6 = 6, w->value_18 = 18, w->value_19 = 19, w->value_31 = 31, w->value_32 = 32;
    w->value_7 = 7, w->value_35 = 35, w->value_38 = 38, w->value_39 = 39;
    w->byte_26 = 0x1A, w->byte_27 = 0x1B, w->byte_28 = 0x1C;
    std::strcpy(w->text_2, "name"), std::strcpy(w->text_21, "host"), std::strcpy(w->mac_13, "mac13");
    std::strcpy(w->text_14, "t14"), std::strcpy(w->text_4, "serial"), std::strcpy(w->mac_15, "mac15");
    std::strcpy(w->text_3, "fw"), std::strcpy(w->text_37, "t37");
    w->data_36[0] = 1, w->data_36[1] = 2, w->data_36[2] = 3;
    char* quads[] = {w->address_9, w->address_10, w->address_11, w->address_12, w->address_22,
                     w->address_23, w->address_24, w->address_25, w->address_29};
    const int tags[] = {9, 10, 11, 12, 22, 23, 24, 25, 29};
    for (int i = 0; i < 9; ++i) std::snprintf(quads[i], 16, "10.0.0.%d", tags[i]);
    EXPECT_TRUE(same(*got, *w));

    // Tag 14 of 26 bytes or more: 26 bytes from the tag-13 field on; of 25, its own field only.
    const std::string b26(26, 'B'), c25(25, 'C');
    auto spill = decoded<kvn_device_info>(kvn_get_device_info, cat({text(13, "mac"), text(14, b26 + "xx")}), 0, '#');
    EXPECT_EQ(std::string(spill->mac_13, 18) + std::string(spill->text_14, 26), b26 + std::string(18, '#'));
    auto own = decoded<kvn_device_info>(kvn_get_device_info, cat({text(13, "mac"), text(14, c25)}), 0, '#');
    EXPECT_EQ(std::string(own->mac_13, 4) + std::string(own->text_14, 26), "mac#" + c25 + "#");
    EXPECT_EQ(own->unused, 0x23232323u) << "never written";
    // Tags 36 and 37 fill their whole fields; tag 2 of 60 bytes keeps 50.
    auto whole = decoded<kvn_device_info>(kvn_get_device_info,
                                          cat({el(36, Bytes(10, 9)), text(37, std::string(60, 'x')),
                                               text(2, std::string(60, 'n'))}), 0, '#');
    EXPECT_EQ(Bytes(whole->data_36, whole->data_36 + 1024), cat({Bytes(10, 9), Bytes(1014, 0)}));
    EXPECT_EQ(std::string(whole->text_37, 50), std::string(50, 'x'));
    EXPECT_EQ(std::string(whole->text_2, 50) + char(whole->value_20), std::string(50, 'n') + "#");
}

TEST(NetworkDecoders, WirelessRecordsAndLists) {
    auto ssl = decoded<kvn_ssl_setting>(kvn_get_ssl_setting,
                                        cat({u32(3, 3), u32(6, 6), text(4, std::string(60, 'n')), text(5, "leak")}),
                                        0, '#');
    EXPECT_EQ(ssl->value_3 * 10 + ssl->value_6, 36u);
    EXPECT_EQ(std::string(ssl->name, 51), std::string(50, 'n') + "#");
    EXPECT_EQ(ssl->secret[0], '#') << "the secret never comes back";
    // SSL names append at the caller's count.
    auto ssl_list = std::make_unique<kvn_ssl_cert_list>();
    ssl_list->count = 5;
    ASSERT_EQ(capture([&](auto c) { return kvn_get_ssl_cert_list(c, ssl_list.get()); },
                      response(0, cat({text(4, "a"), text(4, "b"), text(9, "x"), text(4, "c")})))
                  .rc,
              0);
    EXPECT_EQ(ssl_list->count, 8);
    EXPECT_STREQ(ssl_list->names[5], "a");
    EXPECT_STREQ(ssl_list->names[7], "c");
    auto note = decoded<kvn_system_notification_setting>(kvn_get_system_notification_setting,
                                                         cat({u32(1, 0x125), text(2, "hello")}));
    EXPECT_EQ(note->value, 0x125u);
    EXPECT_STREQ(note->text, "hello");
    EXPECT_EQ(decoded<kvn_wifi_status>(kvn_get_wifi_status, u8(2, 7))->value, 7);
    auto net = decoded<kvn_wifi_network_info>(
        kvn_get_wifi_network_info, cat({u8(2, 2), text(3, "office"), text(4, "wpa2"), u32(5, 5), u8(8, 8),
                                        u32(9, 0x0A000009), u32(10, 0x0A00000A), u32(11, 0x0A00000B),
                                        u32(12, 0x0A00000C), u32(13, 0x0A00000D), u32(15, 0x10F)}));
    EXPECT_EQ(net->value_2 + net->value_5 + net->source + net->value_15, 2 + 5 + 8 + 0x0F);
    EXPECT_STREQ(net->name, "office");
    EXPECT_STREQ(net->text, "wpa2");
    EXPECT_EQ(std::string(net->ip_address) + net->address_c + net->address_b + net->address_d + net->address_e,
              "10.0.0.910.0.0.1010.0.0.1110.0.0.1210.0.0.13");

    // Scan: a capacity of 2 and five networks fills two entries and reports 2.
    Bytes scan = cat({text(6, "office"), u8(8, 1), u32(9, 0x0A000009), u32(11, 0x0A00000B), u32(15, 0x10F)});
    for (int i = 1; i <= 5; ++i)
        scan = cat({scan, box(1, cat({text(3, "net" + std::to_string(i)), text(4, "d"), u32(5, uint32_t(i))}))});
    kvn_wifi_connection_info info;
    kvn_wifi_scan_entry entries[3];
    std::memset(&info, 0, sizeof info), std::memset(entries, '#', sizeof entries);
    uint8_t count = 2;
    auto scan_call = [&](auto c) { return kvn_get_wifi_scan_list(c, &info, entries, &count); };
    ASSERT_EQ(capture(scan_call, response(0, scan)).rc, 0);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(std::string(entries[1].name, 4) + char('0' + entries[1].value_5), "net22");
    EXPECT_EQ(entries[2].value_5, 0x23232323u) << "beyond the capacity";
    EXPECT_EQ(std::string(info.name) + info.ip_address + info.address_b + char('0' + info.source),
              "office10.0.0.910.0.0.111");
    EXPECT_EQ(info.value_15, 0x0F);
    count = 3;  // the count is written only when the whole answer was read
    EXPECT_EQ(capture(scan_call, response(0, cat({scan, {0xFF}}))).rc, -1);
    EXPECT_EQ(count, 3);

    // Ethernet security: texts in container order; a MAC must be 17 bytes, and the last
    // container's result is the result.
    const Bytes good = cat({u32(1, 7), box(2, text(3, "10.0.0.1")), box(4, text(5, "00:1A:2B:3C:4D:5E")),
                            box(2, text(3, "10.0.0.2"))});
    auto sec = decoded<kvn_ethernet_security_setting>(kvn_get_ethernet_security_setting, good);
    EXPECT_EQ(sec->mode, 7u);
    EXPECT_EQ(std::string(sec->addresses[0]) + sec->addresses[1] + sec->macs[0], "10.0.0.110.0.0.200:1A:2B:3C:4D:5E");
    const Bytes short_mac = box(4, text(5, "00:1A:2B:3C:4D:5"));
    sec = decoded<kvn_ethernet_security_setting>(kvn_get_ethernet_security_setting, cat({good, short_mac}), -1010);
    EXPECT_STREQ(sec->macs[1], "") << "a MAC of 16 bytes is not stored";
    decoded<kvn_ethernet_security_setting>(kvn_get_ethernet_security_setting, cat({short_mac, good}), 0);
}

TEST(NetworkDecoders, VpnRecordsAndCertificateLists) {
    EXPECT_TRUE(same(*decoded<kvn_vpn_profile>(kvn_get_vpn_profile, profile_bytes(false)), profile()));
    auto status = decoded<kvn_vpn_status>(kvn_get_vpn_status, cat({u32(28, 1), u32(29, 0x0A080002)}));
    EXPECT_EQ(status->state, 1u);
    EXPECT_STREQ(status->address, "10.8.0.2");
    // A tag-20 container is read into the same list, in payload order; 60 bytes keep 50.
    auto list = std::make_unique<kvn_vpn_cert_list>();
    std::memset(list.get(), '#', sizeof *list);
    list->count = 0;
    const Bytes nested = cat({text(15, "ca1"), box(20, cat({text(14, "u1"), text(14, std::string(60, 'u'))})),
                              text(16, "ignored")});
    ASSERT_EQ(capture([&](auto c) { return kvn_get_ca_cert_list(c, list.get()); }, response(0, nested)).rc, 0);
    EXPECT_EQ(list->count, 3);
    EXPECT_EQ(std::string(list->names[0], 4) + std::string(list->names[1], 3), "ca1#u1#");
    EXPECT_EQ(std::string(list->names[2], 51), std::string(50, 'u') + "#");
    // A malformed container's result is remembered; what follows it is still read.
    const Bytes bad = cat({box(20, Bytes{0xFF}), text(21, "up.pfx")});
    EXPECT_EQ(capture([&](auto c) { return kvn_get_uploaded_cert_list(c, list.get()); }, response(0, bad)).rc, -1);
    EXPECT_EQ(list->count, 4);
    // The count wraps after 255 and never indexes past the names.
    list->count = 255;
    ASSERT_EQ(capture([&](auto c) { return kvn_get_user_cert_list(c, list.get()); },
                      response(0, cat({text(14, "last"), text(14, "first")})))
                  .rc,
              0);
    EXPECT_EQ(list->count, 1);
    EXPECT_EQ(std::string(list->names[255], 5) + std::string(list->names[0], 6), "last#first#");
}
