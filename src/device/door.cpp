// Door relay and DAC (command 115): the DAC settings record and three one-shot
// door actions. This family works in 1024-byte buffers and reads the answer to a
// set with the length just sent as its capacity.
#include "kvnsdk2.h"
#include "settings/command.h"
#include "settings/fields.h"

namespace kvn {
namespace {

constexpr uint32_t kDoor = 115;
constexpr uint32_t kDoorBuffer = 1024;

#define DAC(member, tag) KVN_FIELD(kvn_dac_setting, member, tag, u32)
// As a set sends it: the door open time (tag 8) never goes out.
constexpr Field kDacWrite[] = {
    KVN_FIELD(kvn_dac_setting, dac_value_1, 1, u8),
    DAC(dac_value_2, 2), DAC(dac_value_3, 3), DAC(dac_value_4, 4), DAC(dac_value_10, 10), DAC(dac_value_11, 11),
    DAC(dac_value_12, 12), DAC(dac_value_13, 13), DAC(dac_value_14, 14), DAC(dac_value_6, 6), DAC(dac_value_16, 16),
};
// As a get stores it: tag 8 reports the open time the terminal holds.
constexpr Field kDacRead[] = {
    KVN_FIELD(kvn_dac_setting, dac_value_1, 1, u8),
    DAC(dac_value_2, 2), DAC(dac_value_3, 3), DAC(dac_value_4, 4), DAC(dac_value_10, 10), DAC(dac_value_11, 11),
    DAC(dac_value_12, 12), DAC(dac_value_13, 13), DAC(dac_value_14, 14), DAC(dac_value_6, 6),
    DAC(door_open_time, 8), DAC(dac_value_16, 16),
};
#undef DAC

int32_t door_action(kvn_device_conn* conn, Encoder encode) noexcept {
    return cmd::set<kDoorBuffer>(conn, kDoor, encode, Capacity::sent_length);
}

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_set_dac_settings(kvn_device_conn* conn, const kvn_dac_setting* setting) {
    return cmd::set_record<kDoorBuffer>(conn, kDoor, kDacWrite, setting, Capacity::sent_length);
}
// An empty element is malformed in this family's answers.
KVN_API int32_t kvn_get_dac_settings(kvn_device_conn* conn, kvn_dac_setting* setting) {
    return cmd::get_record<kDoorBuffer>(conn, kDoor, kDacRead, setting, tlv::Empty::error);
}
KVN_API int32_t kvn_reset_dac_settings(kvn_device_conn* conn) { return cmd::reset(conn, kDoor); }

KVN_API int32_t kvn_open_door_for_time(kvn_device_conn* conn, uint32_t open_time, int32_t option) {
    return door_action(conn, [&](tlv::Writer& w) {
        w.u32(8, open_time);
        w.i32(7, option);
    });
}
KVN_API int32_t kvn_close_door(kvn_device_conn* conn) { return kvn_open_door_for_time(conn, 0, 0); }
KVN_API int32_t kvn_clear_door_force_open_alarm(kvn_device_conn* conn) {
    return door_action(conn, [](tlv::Writer& w) { w.u32(15, 1); });
}

}  // extern "C"
