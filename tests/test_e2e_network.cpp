// The network and device management exports against the simulated terminal (over TCP;
// test_e2e_settings.cpp shows the serial line): each settings group set, read back and
// reset, the reads and actions accepted, a Wi-Fi network scanned, joined and left. The
// payload bytes are pinned down in test_wire_network.cpp; here only interoperation is shown.
#if KVN_HAVE_SIM
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "e2e.h"
#include "kvnsdk2.h"
#include "exports.h"

using namespace kvntest;

namespace {

// Records at namespace scope: their padding is zero, so they compare byte for byte.
// clang-format off
const kvn_ethernet_setting kEth{0, "192.168.1.10", 5006, "255.255.255.0", "192.168.1.1", "8.8.8.8", "8.8.4.4", ""};
const kvn_ethernet_security_setting kSec{2, {"10.0.0.1", "10.0.0.2"}, {"00:1A:2B:3C:4D:5E"}};
const kvn_vpn_profile kVpn{1, "corp", 3, "", "", "", "", "", "vpn.example.test", 10, "", "", "", "", "", "a.pfx"};
const kvn_product_info kProduct{7, "KVN-9"};
const kvn_device_security kSecurity{1, "pin"};
const kvn_device_date_time kClock{1700000000, 2, "Europe/Paris", 6};
// The network joined: the first one the scan finds.
const kvn_wifi_connect_setting kJoin{"", "secret99", 0, "192.168.20.40", "255.255.255.0", "192.168.20.1",
                                     "192.168.20.2", "8.8.8.8"};
// clang-format on

}  // namespace

TEST(NetworkE2E, EveryGroupRoundTripsAndEveryRequestIsUnderstood) {
    Session s;
    kvn_device_conn* c = s.c;
    // The MAC is the terminal's own, never written.
    auto get_eth = [](auto c2, kvn_ethernet_setting* e) {
        const int32_t rc = kvn_get_ethernet_setting(c2, e);
        std::memset(e->mac_address, 0, sizeof e->mac_address);
        return rc;
    };
    round_trip(c, "ethernet", kEth, kvn_set_ethernet_setting, get_eth, kvn_reset_ethernet_setting);
    ROUND_TRIP(c, serial_setting, kvn_serial_setting{9600, 7, 2, 3});
    ROUND_TRIP(c, usb_auxiliary_setting, kvn_usb_auxiliary_setting{9});
    ROUND_TRIP(c, product_info, kProduct);
    ROUND_TRIP(c, device_debug_log, kvn_device_debug_log{0, 2});
    ROUND_TRIP(c, device_security, kSecurity);
    ROUND_TRIP(c, device_vnc_setting, kvn_device_vnc_setting{1, "pw"});
    ROUND_TRIP(c, ssl_setting, kvn_ssl_setting{0, "ca.pem", "", 3});
    ROUND_TRIP(c, system_notification_setting, kvn_system_notification_setting{2, "smtp"});
    ROUND_TRIP(c, wifi_status, kvn_wifi_status{2});
    ROUND_TRIP(c, ethernet_security_setting, kSec);
    ROUND_TRIP(c, vpn_profile, kVpn);
    // Date and time: the terminal's clock (value 1) keeps running, and there is no reset.
    auto clock = std::make_unique<kvn_device_date_time>();
    ASSERT_EQ(kvn_set_device_date_time(c, &kClock), 0);
    ASSERT_EQ(kvn_get_device_date_time(c, clock.get()), 0);
    clock->value_1 = kClock.value_1;
    EXPECT_EQ(std::memcmp(clock.get(), &kClock, sizeof kClock), 0);

    // Reads, and the certificate requests: success or one of the certificate statuses.
    Args a;  // zeroed records
    auto cert = [](int32_t rc) { return rc == 0 || (rc <= -9001 && rc >= -9006) || (rc <= -11001 && rc >= -11008); };
    const kvn_vpn_certificate_install install{"client.pfx", "secret"};
    EXPECT_EQ(kvn_get_device_info(c, a.ptr(1)) | kvn_get_device_status(c, a.ptr(1)) | kvn_get_vpn_status(c, a.ptr(1)) |
                  kvn_get_ssl_cert_list(c, a.ptr(1)) | kvn_get_user_cert_list(c, a.ptr(1)) |
                  kvn_get_ca_cert_list(c, a.ptr(1)) | kvn_get_uploaded_cert_list(c, a.ptr(1)),
              0);
    EXPECT_TRUE(cert(kvn_install_uploaded_certificate(c, &install)));
    EXPECT_TRUE(cert(kvn_uninstall_user_certificate(c, "client.pfx")));
    EXPECT_TRUE(cert(kvn_uninstall_ca_certificate(c, "root.crt")));

    // Wi-Fi: the first network scanned is joined with addresses of our own, and left.
    kvn_wifi_connection_info joined{};
    kvn_wifi_scan_entry nets[8]{};
    uint8_t count = 8;
    ASSERT_TRUE(kvn_get_wifi_scan_list(c, &joined, nets, &count) == 0 && count > 0);
    kvn_wifi_connect_setting join = kJoin;
    std::memcpy(join.name, nets[0].name, sizeof join.name - 1);
    ASSERT_EQ(kvn_connect_wifi(c, &join), 0);
    kvn_wifi_network_info net{};
    ASSERT_EQ(kvn_get_wifi_network_info(c, &net), 0);
    auto addresses = [](const auto& n) {
        return std::string(n.name) + n.ip_address + n.address_b + n.address_c + n.address_d + n.address_e;
    };
    EXPECT_EQ(addresses(net), addresses(join));
    ASSERT_EQ(kvn_get_wifi_scan_list(c, &joined, nets, &count), 0);
    EXPECT_EQ(std::string(joined.name) + joined.address_e, std::string(join.name) + join.address_e);
    EXPECT_EQ(kvn_disconnect_wifi(c, join.name), 0);

    // Maintenance: factory default, then the reboots, each of which ends the connection.
    EXPECT_EQ(kvn_device_factory_default(c), 0);
    EXPECT_EQ(kvn_device_reboot_gracefully(c), 0);
    EXPECT_EQ(s.close(), 0);
    ASSERT_EQ(s.open(), 0);
    EXPECT_EQ(kvn_device_reboot_forcefully(c), 0);
}

#endif
