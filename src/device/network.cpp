// Wired network (101), serial port (102) and USB auxiliary port (103).
//
// The Ethernet addresses are dotted-quad texts in the record and numbers on the
// wire. A set checks every address before anything is sent; address mode 1 takes
// the addresses from the network, so none is sent then. The port goes out before
// the addresses, and only when it is set.
#include "core/command.h"
#include "kvnsdk2.h"
#include "link/commands.h"

namespace kvn {
namespace {

using namespace row;

#define ETH(member) KVN_MEMBER(kvn_ethernet_setting, member)
constexpr Gate kStaticAddresses = is_not(ETH(address_mode), 1);
constexpr Field kEthernet[] = {
    u32(1, ETH(address_mode)),
    u32(3, ETH(port)).nonzero(),
    address(2, ETH(ip_address)).when(kStaticAddresses),
    address(4, ETH(address_4)).when(kStaticAddresses),
    address(5, ETH(address_5)).when(kStaticAddresses),
    address(6, ETH(address_6)).when(kStaticAddresses),
    address(7, ETH(address_7)).when(kStaticAddresses),
    bytes(8, ETH(mac_address)).decode_only(),
};
#undef ETH

#define SERIAL(n) u32(n, KVN_MEMBER(kvn_serial_setting, value_##n))
constexpr Field kSerial[] = {SERIAL(1), SERIAL(2), SERIAL(3), SERIAL(4)};
#undef SERIAL

constexpr Field kUsbAuxiliary[] = {u32(1, KVN_MEMBER(kvn_usb_auxiliary_setting, value))};

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_set_ethernet_setting(kvn_device_conn* conn, const kvn_ethernet_setting* setting) {
    return cmd::set(conn, id::ethernet, kEthernet, setting);
}
KVN_API int32_t kvn_get_ethernet_setting(kvn_device_conn* conn, kvn_ethernet_setting* setting) {
    return cmd::get(conn, id::ethernet, kEthernet, setting);
}
KVN_API int32_t kvn_reset_ethernet_setting(kvn_device_conn* conn) { return cmd::reset(conn, id::ethernet); }

KVN_API int32_t kvn_set_serial_setting(kvn_device_conn* conn, const kvn_serial_setting* setting) {
    return cmd::set(conn, id::serial, kSerial, setting);
}
KVN_API int32_t kvn_get_serial_setting(kvn_device_conn* conn, kvn_serial_setting* setting) {
    return cmd::get(conn, id::serial, kSerial, setting);
}
KVN_API int32_t kvn_reset_serial_setting(kvn_device_conn* conn) { return cmd::reset(conn, id::serial); }

KVN_API int32_t kvn_set_usb_auxiliary_setting(kvn_device_conn* conn, const kvn_usb_auxiliary_setting* setting) {
    return cmd::set(conn, id::usb_auxiliary, kUsbAuxiliary, setting);
}
KVN_API int32_t kvn_get_usb_auxiliary_setting(kvn_device_conn* conn, kvn_usb_auxiliary_setting* setting) {
    return cmd::get(conn, id::usb_auxiliary, kUsbAuxiliary, setting);
}
KVN_API int32_t kvn_reset_usb_auxiliary_setting(kvn_device_conn* conn) { return cmd::reset(conn, id::usb_auxiliary); }

}  // extern "C"
