// The network and device management exports against the simulated terminal, over TCP
// and a serial line: each settings group set, read back and reset, the reads and
// actions accepted, a Wi-Fi network scanned, joined and left. The payload bytes are
// pinned down in test_wire_network.cpp; here only interoperation is shown.
#if KVN_HAVE_SIM
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "e2e.h"
#include "kvnsdk2.h"
#include "records.h"

using namespace kvntest;

namespace {

// The terminal understood a certificate request: success, or one of its certificate statuses.
bool understood(int32_t rc) { return rc == 0 || (rc <= -9001 && rc >= -9006) || (rc <= -11001 && rc >= -11008); }

template <class T, class Fill>
T record(Fill fill) {
    auto r = zeroed<T>();
    fill(r);
    return r;
}

class NetworkE2E : public ::testing::TestWithParam<bool> {};

}  // namespace

TEST_P(NetworkE2E, EveryGroupRoundTripsAndEveryRequestIsUnderstood) {
    Session s(GetParam());
    kvn_device_conn* c = &s.conn;
    ASSERT_EQ(kvn_open_device_conn(c), 0);
    const auto eth = record<kvn_ethernet_setting>([](auto& e) {
        e.port = 5006;
        std::strcpy(e.ip_address, "192.168.1.10"), std::strcpy(e.address_4, "255.255.255.0");
        std::strcpy(e.address_5, "192.168.1.1"), std::strcpy(e.address_6, "8.8.8.8");
        std::strcpy(e.address_7, "8.8.4.4");
    });
    // The MAC is the terminal's own, never written.
    auto get_eth = [](auto c2, kvn_ethernet_setting* e) {
        const int32_t rc = kvn_get_ethernet_setting(c2, e);
        std::memset(e->mac_address, 0, sizeof e->mac_address);
        return rc;
    };
    round_trip(c, "ethernet", eth, kvn_set_ethernet_setting, get_eth, kvn_reset_ethernet_setting);
    round_trip(c, "serial", kvn_serial_setting{9600, 7, 2, 3}, kvn_set_serial_setting, kvn_get_serial_setting,
               kvn_reset_serial_setting);
    round_trip(c, "usb", kvn_usb_auxiliary_setting{0x103}, kvn_set_usb_auxiliary_setting,
               kvn_get_usb_auxiliary_setting, kvn_reset_usb_auxiliary_setting);
    round_trip(c, "product", record<kvn_product_info>([](auto& p) { p.value = 7, std::strcpy(p.text, "KVN-9"); }),
               kvn_set_product_info, kvn_get_product_info, kvn_reset_product_info);
    round_trip(c, "debug log", kvn_device_debug_log{0, 0x1292}, kvn_set_device_debug_log, kvn_get_device_debug_log,
               kvn_reset_device_debug_log);
    round_trip(c, "security",
               record<kvn_device_security>([](auto& p) { p.value = 0x128, std::strcpy(p.text, "pin"); }),
               kvn_set_device_security, kvn_get_device_security, kvn_reset_device_security);
    round_trip(c, "vnc", record<kvn_device_vnc_setting>([](auto& p) { p.value = 1, std::strcpy(p.text, "pw"); }),
               kvn_set_device_vnc_setting, kvn_get_device_vnc_setting, kvn_reset_device_vnc_setting);
    round_trip(c, "ssl", record<kvn_ssl_setting>([](auto& p) { p.value_3 = 0x33, std::strcpy(p.name, "ca.pem"); }),
               kvn_set_ssl_setting, kvn_get_ssl_setting, kvn_reset_ssl_setting);
    round_trip(c, "notification",
               record<kvn_system_notification_setting>([](auto& p) { p.value = 2, std::strcpy(p.text, "smtp"); }),
               kvn_set_system_notification_setting, kvn_get_system_notification_setting,
               kvn_reset_system_notification_setting);
    round_trip(c, "wifi status", kvn_wifi_status{2}, kvn_set_wifi_status, kvn_get_wifi_status, kvn_reset_wifi_status);
    round_trip(c, "ethernet security", record<kvn_ethernet_security_setting>([](auto& p) {
                   p.mode = 2, std::strcpy(p.addresses[0], "10.0.0.1"), std::strcpy(p.addresses[1], "10.0.0.2");
                   std::strcpy(p.macs[0], "00:1A:2B:3C:4D:5E");
               }),
               kvn_set_ethernet_security_setting, kvn_get_ethernet_security_setting,
               kvn_reset_ethernet_security_setting);
    const auto vpn = record<kvn_vpn_profile>([](auto& p) {
        p.value_17 = 1, p.value_3 = 3, p.value_10 = 10;
        std::strcpy(p.text_2, "corp"), std::strcpy(p.text_9, "vpn.example.test"), std::strcpy(p.text_16, "a.pfx");
    });
    round_trip(c, "vpn profile", vpn, kvn_set_vpn_profile, kvn_get_vpn_profile, kvn_reset_vpn_profile);

    // Date and time: the terminal's clock (value 1) keeps running.
    auto clock = record<kvn_device_date_time>([](auto& d) { d.value_1 = 1700000000, d.value_2 = 2, d.value_6 = 6; });
    std::strcpy(clock.text, "Europe/Paris");
    auto clock_read = std::make_unique<kvn_device_date_time>(zeroed<kvn_device_date_time>());
    ASSERT_EQ(kvn_set_device_date_time(c, &clock), 0);
    ASSERT_EQ(kvn_get_device_date_time(c, clock_read.get()), 0);
    clock_read->value_1 = clock.value_1;
    EXPECT_EQ(std::memcmp(clock_read.get(), &clock, sizeof clock), 0);

    // Reads.
    auto info = std::make_unique<kvn_device_info>();
    kvn_device_status status{};
    kvn_vpn_status vpn_status{};
    auto ssl_list = std::make_unique<kvn_ssl_cert_list>();
    auto certs = std::make_unique<kvn_vpn_cert_list>();
    EXPECT_EQ(kvn_get_device_info(c, info.get()), 0);
    EXPECT_EQ(kvn_get_device_status(c, &status), 0);
    EXPECT_EQ(kvn_get_vpn_status(c, &vpn_status), 0);
    EXPECT_EQ(kvn_get_ssl_cert_list(c, ssl_list.get()), 0);
    EXPECT_EQ(kvn_get_user_cert_list(c, certs.get()), 0);
    EXPECT_EQ(kvn_get_ca_cert_list(c, certs.get()), 0);
    EXPECT_EQ(kvn_get_uploaded_cert_list(c, certs.get()), 0);
    const kvn_vpn_certificate_install install{"client.pfx", "secret"};
    EXPECT_TRUE(understood(kvn_install_uploaded_certificate(c, &install)));
    EXPECT_TRUE(understood(kvn_uninstall_user_certificate(c, "client.pfx")));
    EXPECT_TRUE(understood(kvn_uninstall_ca_certificate(c, "root.crt")));

    // Wi-Fi: the first network the scan finds is joined with addresses of our own and left.
    kvn_wifi_connection_info joined{};
    kvn_wifi_scan_entry nets[8]{};
    uint8_t count = 8;
    ASSERT_EQ(kvn_get_wifi_scan_list(c, &joined, nets, &count), 0);
    ASSERT_GT(count, 0);
    auto join = record<kvn_wifi_connect_setting>([&](auto& j) {
        std::memcpy(j.name, nets[0].name, sizeof j.name - 1);
        std::strcpy(j.key, "secret99"), std::strcpy(j.ip_address, "192.168.20.40");
        std::strcpy(j.address_b, "255.255.255.0"), std::strcpy(j.address_c, "192.168.20.1");
        std::strcpy(j.address_d, "192.168.20.2"), std::strcpy(j.address_e, "8.8.8.8");
    });
    ASSERT_EQ(kvn_connect_wifi(c, &join), 0);
    kvn_wifi_network_info net{};
    ASSERT_EQ(kvn_get_wifi_network_info(c, &net), 0);
    EXPECT_STREQ(net.name, join.name);
    EXPECT_EQ(std::string(net.ip_address) + net.address_b + net.address_c + net.address_d + net.address_e,
              std::string(join.ip_address) + join.address_b + join.address_c + join.address_d + join.address_e);
    count = 8;
    ASSERT_EQ(kvn_get_wifi_scan_list(c, &joined, nets, &count), 0);
    EXPECT_STREQ(joined.name, join.name);
    EXPECT_STREQ(joined.address_e, join.address_e);
    EXPECT_EQ(kvn_disconnect_wifi(c, join.name), 0);

    // Maintenance: factory default, then the reboots, each of which ends the connection.
    EXPECT_EQ(kvn_device_factory_default(c), 0);
    EXPECT_EQ(kvn_device_reboot_gracefully(c), 0);
    EXPECT_EQ(kvn_close_device_conn(c), 0);
    ASSERT_EQ(kvn_open_device_conn(c), 0);
    EXPECT_EQ(kvn_device_reboot_forcefully(c), 0);
    EXPECT_EQ(kvn_close_device_conn(c), 0);
}

INSTANTIATE_TEST_SUITE_P(Transports, NetworkE2E, ::testing::Values(false, true),
                         [](const ::testing::TestParamInfo<bool>& i) { return i.param ? "Serial" : "Tcp"; });
#endif
