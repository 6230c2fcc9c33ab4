// Door relay and DAC (command 115): the DAC settings record and three one-shot
// door actions. This family works in 1024-byte buffers and reads the answer to a
// set with the length just sent as its capacity.
#include "core/command.h"
#include "kvnsdk2.h"
#include "link/commands.h"

namespace kvn {
namespace {

using namespace row;

#define DAC(n, member) u32(n, KVN_MEMBER(kvn_dac_setting, member))
// Tag 8 reports the open time the terminal holds; a set never sends it.
constexpr Field kDac[] = {
    u8(1, KVN_MEMBER(kvn_dac_setting, dac_value_1)),
    DAC(2, dac_value_2), DAC(3, dac_value_3), DAC(4, dac_value_4), DAC(10, dac_value_10), DAC(11, dac_value_11),
    DAC(12, dac_value_12), DAC(13, dac_value_13), DAC(14, dac_value_14), DAC(6, dac_value_6),
    DAC(8, door_open_time).decode_only(), DAC(16, dac_value_16),
};
#undef DAC

int32_t door_action(kvn_device_conn* conn, uint32_t open_time, int32_t option, bool clear_alarm) noexcept {
    return call<cmd::kSmallBuffer>(
        conn, Request{id::door, KVN_REQ_SET, Capacity::sent_length},
        [&](tlv::Writer& w) {
            if (clear_alarm) return w.u32(15, 1);
            w.u32(8, open_time);
            w.i32(7, option);
        },
        status_only);
}

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_set_dac_settings(kvn_device_conn* conn, const kvn_dac_setting* setting) {
    return cmd::set<cmd::kSmallBuffer>(conn, id::door, kDac, setting, Capacity::sent_length);
}
// An empty element is malformed in this family's answers.
KVN_API int32_t kvn_get_dac_settings(kvn_device_conn* conn, kvn_dac_setting* setting) {
    return cmd::get<cmd::kSmallBuffer>(conn, id::door, kDac, setting, tlv::Empty::error);
}
KVN_API int32_t kvn_reset_dac_settings(kvn_device_conn* conn) { return cmd::reset(conn, id::door); }

KVN_API int32_t kvn_open_door_for_time(kvn_device_conn* conn, uint32_t open_time, int32_t option) {
    return door_action(conn, open_time, option, false);
}
KVN_API int32_t kvn_close_door(kvn_device_conn* conn) { return door_action(conn, 0, 0, false); }
KVN_API int32_t kvn_clear_door_force_open_alarm(kvn_device_conn* conn) { return door_action(conn, 0, 0, true); }

}  // extern "C"
