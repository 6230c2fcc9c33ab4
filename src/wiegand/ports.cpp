// Wiegand port settings: input (123), output (124), pulse (130) and multi-input
// (165). Every exchange works in a 1024-byte buffer.
#include "core/command.h"
#include "kvnsdk2.h"
#include "link/commands.h"

namespace kvn {
namespace {

using namespace row;
constexpr uint32_t kBuffer = cmd::kSmallBuffer;

#define INPUT(member) KVN_MEMBER(kvn_wiegand_input_setting, member)
constexpr Field kInput[] = {u8(3, INPUT(attr_t03)), u32(9, INPUT(attr_t09)), u32(29, INPUT(attr_t29)),
                            u8(1, INPUT(attr_t01))};
// Inside the multi-input record the values are copied whole, bounded by the field.
constexpr Field kInputWhole[] = {u8(3, INPUT(attr_t03)).raw(), u32(9, INPUT(attr_t09)).raw(),
                                 u32(29, INPUT(attr_t29)).raw(), u8(1, INPUT(attr_t01)).raw()};
#undef INPUT

#define OUTPUT(n) u8(n, KVN_MEMBER(kvn_wiegand_output_setting, attr_t##n))
constexpr Field kOutput[] = {
    u32(10, KVN_MEMBER(kvn_wiegand_output_setting, attr_t10)),
    u32(26, KVN_MEMBER(kvn_wiegand_output_setting, attr_t26)).raw(),
    OUTPUT(11), OUTPUT(12), OUTPUT(13), OUTPUT(14), OUTPUT(15), OUTPUT(16), OUTPUT(17), OUTPUT(18),
    OUTPUT(27), OUTPUT(28),
};
#undef OUTPUT

constexpr Field kPulse[] = {
    u8(7, KVN_MEMBER(kvn_wiegand_pulse_setting, attr_t07)),
    u16(8, KVN_MEMBER(kvn_wiegand_pulse_setting, attr_t08)),
};

// Three values, then every input as a tag-31 container; a read fills the inputs in
// the answer's order and skips containers beyond the fifth. The payload is 138
// bytes whatever the record holds, so this set cannot run out of room.
#define MULTI(member) KVN_MEMBER(kvn_multi_wiegand_input_setting, member)
constexpr List kInputs = array(MULTI(inputs)).in(31).of(kInputWhole);
constexpr Field kMulti[] = {u32(32, MULTI(attr_t32)).raw(), u32(33, MULTI(attr_t33)).raw(),
                            u32(34, MULTI(attr_t34)).raw(), list(kInputs)};
#undef MULTI

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_set_wiegand_input_setting(kvn_device_conn* conn, const kvn_wiegand_input_setting* setting) {
    return cmd::set<kBuffer>(conn, id::wiegand_input, kInput, setting);
}
KVN_API int32_t kvn_get_wiegand_input_setting(kvn_device_conn* conn, kvn_wiegand_input_setting* setting) {
    return cmd::get<kBuffer>(conn, id::wiegand_input, kInput, setting);
}
KVN_API int32_t kvn_reset_wiegand_input_setting(kvn_device_conn* conn) { return cmd::reset(conn, id::wiegand_input); }

KVN_API int32_t kvn_set_wiegand_output_setting(kvn_device_conn* conn, const kvn_wiegand_output_setting* setting) {
    return cmd::set<kBuffer>(conn, id::wiegand_output, kOutput, setting);
}
KVN_API int32_t kvn_get_wiegand_output_setting(kvn_device_conn* conn, kvn_wiegand_output_setting* setting) {
    return cmd::get<kBuffer>(conn, id::wiegand_output, kOutput, setting);
}
KVN_API int32_t kvn_reset_wiegand_output_setting(kvn_device_conn* conn) {
    return cmd::reset(conn, id::wiegand_output);
}

KVN_API int32_t kvn_set_wiegand_pulse_setting(kvn_device_conn* conn, const kvn_wiegand_pulse_setting* setting) {
    return cmd::set<kBuffer>(conn, id::wiegand_pulse, kPulse, setting);
}
KVN_API int32_t kvn_get_wiegand_pulse_setting(kvn_device_conn* conn, kvn_wiegand_pulse_setting* setting) {
    return cmd::get<kBuffer>(conn, id::wiegand_pulse, kPulse, setting);
}
KVN_API int32_t kvn_reset_wiegand_pulse_setting(kvn_device_conn* conn) { return cmd::reset(conn, id::wiegand_pulse); }

KVN_API int32_t kvn_set_multi_wiegand_input_setting(kvn_device_conn* conn,
                                                    const kvn_multi_wiegand_input_setting* setting) {
    return cmd::set<kBuffer>(conn, id::multi_wiegand_input, kMulti, setting);
}
KVN_API int32_t kvn_get_multi_wiegand_input_setting(kvn_device_conn* conn, kvn_multi_wiegand_input_setting* setting) {
    return cmd::get<kBuffer>(conn, id::multi_wiegand_input, kMulti, setting);
}
KVN_API int32_t kvn_reset_multi_wiegand_input_setting(kvn_device_conn* conn) {
    return cmd::reset(conn, id::multi_wiegand_input);
}

}  // extern "C"
