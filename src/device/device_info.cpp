// Device information (201), product information (116), debug log (129), device
// security (128), date and time (126), device status (202), VNC (134), and the
// maintenance requests: forced reboot (121), graceful reboot (131) and factory
// default (122).
#include <cstddef>
#include <cstring>

#include "core/command.h"
#include "kvnsdk2.h"
#include "link/commands.h"

namespace kvn {
namespace {

using namespace row;

// The status is read by the security table.
static_assert(sizeof(kvn_device_status) == sizeof(kvn_device_security) &&
                  offsetof(kvn_device_status, value) == offsetof(kvn_device_security, value) &&
                  offsetof(kvn_device_status, text) == offsetof(kvn_device_security, text),
              "kvn_device_status has the layout of kvn_device_security");

// Tag 14 of 26 bytes or more is stored as 26 bytes from the start of tag 13's
// text, running on into its own; a shorter one goes into its own text alone.
static_assert(offsetof(kvn_device_info, text_14) == offsetof(kvn_device_info, mac_13) + 18,
              "the tag-14 text follows the tag-13 text");
constexpr uint32_t kSpill = 26;
int32_t store_tag14(uint8_t* mac_13, const uint8_t* v, uint32_t length) noexcept {
    if (length >= kSpill) std::memcpy(mac_13, v, kSpill);
    else std::memcpy(mac_13 + 18, v, length);
    return 0;
}

// Every value lands through a cleared scratch area: short integers are
// zero-extended, one-byte fields take the low byte, tags 36 and 37 fill their
// whole field. Tags 33 and 34 are not the record's.
#define INFO(member) KVN_MEMBER(kvn_device_info, member)
constexpr Field kDeviceInfo[] = {
    u32(1, INFO(value_1)),          text(2, INFO(text_2)),          u32(20, INFO(value_20)),
    u32(5, INFO(value_5)),          address(9, INFO(address_9)),   address(10, INFO(address_10)),
    address(11, INFO(address_11)),  address(12, INFO(address_12)), text(21, INFO(text_21)),
    address(22, INFO(address_22)),  address(23, INFO(address_23)), address(24, INFO(address_24)),
    address(25, INFO(address_25)),  u8(26, INFO(byte_26)),         u8(28, INFO(byte_28)),
    address(29, INFO(address_29)),  text(13, INFO(mac_13)),        custom(14, INFO(mac_13), store_tag14),
    u32(8, INFO(value_8)),          text(4, INFO(text_4)),          text(15, INFO(mac_15)),
    u32(16, INFO(value_16)),        u32(30, INFO(value_30)),        u32(17, INFO(value_17)),
    u32(6, INFO(value_6)),          u32(18, INFO(value_18)),        u32(19, INFO(value_19)),
    u32(31, INFO(value_31)),        u32(32, INFO(value_32)),        u32(7, INFO(value_7)),
    u8(27, INFO(byte_27)),          text(3, INFO(text_3)),          u32(35, INFO(value_35)),
    bytes(36, INFO(data_36)).zero_fill(1024), text(37, INFO(text_37)).zero_fill(50),
    u32(38, INFO(value_38)),        u32(39, INFO(value_39)),
};
#undef INFO

constexpr Field kProduct[] = {
    u32(1, KVN_MEMBER(kvn_product_info, value)),
    text(2, KVN_MEMBER(kvn_product_info, text)).nonzero(),
};

// Value 1 is written, never read back.
constexpr Field kDebugLog[] = {
    u32(1, KVN_MEMBER(kvn_device_debug_log, value_1)).encode_only(),
    u32(2, KVN_MEMBER(kvn_device_debug_log, value_2)),
};

constexpr Field kSecurity[] = {
    u32(1, KVN_MEMBER(kvn_device_security, value)),
    text(2, KVN_MEMBER(kvn_device_security, text)).nonzero(),
};

// The text goes out even when empty, and a read fills the whole field.
#define CLOCK(member) KVN_MEMBER(kvn_device_date_time, member)
constexpr Field kDateTime[] = {
    u32(1, CLOCK(value_1)),
    u32(2, CLOCK(value_2)),
    text(5, CLOCK(text)).zero_fill(1024),
    u32(6, CLOCK(value_6)),
};
#undef CLOCK

constexpr Field kVnc[] = {
    u8(2, KVN_MEMBER(kvn_device_vnc_setting, value)),
    text(3, KVN_MEMBER(kvn_device_vnc_setting, text)).nonzero(),
};

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_get_device_info(kvn_device_conn* conn, kvn_device_info* info) {
    return cmd::get<cmd::kSmallBuffer>(conn, id::device_info, kDeviceInfo, info);
}

KVN_API int32_t kvn_set_product_info(kvn_device_conn* conn, const kvn_product_info* info) {
    return cmd::set(conn, id::product_info, kProduct, info);
}
KVN_API int32_t kvn_get_product_info(kvn_device_conn* conn, kvn_product_info* info) {
    return cmd::get(conn, id::product_info, kProduct, info);
}
KVN_API int32_t kvn_reset_product_info(kvn_device_conn* conn) { return cmd::reset(conn, id::product_info); }

KVN_API int32_t kvn_set_device_debug_log(kvn_device_conn* conn, const kvn_device_debug_log* log) {
    return cmd::set(conn, id::debug_log, kDebugLog, log);
}
KVN_API int32_t kvn_get_device_debug_log(kvn_device_conn* conn, kvn_device_debug_log* log) {
    return cmd::get(conn, id::debug_log, kDebugLog, log);
}
KVN_API int32_t kvn_reset_device_debug_log(kvn_device_conn* conn) { return cmd::reset(conn, id::debug_log); }

// The terminal goes away at once: the request is sent and no answer is awaited.
KVN_API int32_t kvn_device_reboot_forcefully(kvn_device_conn* conn) {
    return call<cmd::kSmallBuffer>(conn, Request{id::reboot_forcefully, KVN_REQ_RESET, Capacity::buffer, 0, false},
                                   no_payload, status_only);
}
KVN_API int32_t kvn_device_reboot_gracefully(kvn_device_conn* conn) {
    return cmd::reset<cmd::kSettingsBuffer>(conn, id::reboot_gracefully);
}
KVN_API int32_t kvn_device_factory_default(kvn_device_conn* conn) {
    return cmd::reset<cmd::kSettingsBuffer>(conn, id::factory_default);
}

KVN_API int32_t kvn_set_device_security(kvn_device_conn* conn, const kvn_device_security* security) {
    return cmd::set(conn, id::device_security, kSecurity, security);
}
KVN_API int32_t kvn_get_device_security(kvn_device_conn* conn, kvn_device_security* security) {
    return cmd::get(conn, id::device_security, kSecurity, security);
}
KVN_API int32_t kvn_reset_device_security(kvn_device_conn* conn) { return cmd::reset(conn, id::device_security); }
KVN_API int32_t kvn_get_device_status(kvn_device_conn* conn, kvn_device_status* status) {
    return cmd::get(conn, id::device_status, kSecurity, status);
}

KVN_API int32_t kvn_set_device_date_time(kvn_device_conn* conn, const kvn_device_date_time* date_time) {
    return cmd::set(conn, id::date_time, kDateTime, date_time);
}
KVN_API int32_t kvn_get_device_date_time(kvn_device_conn* conn, kvn_device_date_time* date_time) {
    return cmd::get(conn, id::date_time, kDateTime, date_time);
}

KVN_API int32_t kvn_set_device_vnc_setting(kvn_device_conn* conn, const kvn_device_vnc_setting* setting) {
    return cmd::set(conn, id::vnc, kVnc, setting);
}
KVN_API int32_t kvn_get_device_vnc_setting(kvn_device_conn* conn, kvn_device_vnc_setting* setting) {
    return cmd::get(conn, id::vnc, kVnc, setting);
}
KVN_API int32_t kvn_reset_device_vnc_setting(kvn_device_conn* conn) { return cmd::reset(conn, id::vnc); }

}  // extern "C"
