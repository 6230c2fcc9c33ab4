// Specific-purpose input (112) and output (113) settings.
#include "core/command.h"
#include "kvnsdk2.h"
#include "link/commands.h"

namespace kvn {
namespace {

using namespace row;

// Three inputs, each value A, flag, value B: the tags interleave in record order.
#define IN(member) KVN_MEMBER(kvn_specific_purpose_input_setting, member)
constexpr Field kInput[] = {
    u32(2, IN(input_1_value_a)), u8(3, IN(input_1_flag)), u32(1, IN(input_1_value_b)),
    u32(5, IN(input_2_value_a)), u8(6, IN(input_2_flag)), u32(4, IN(input_2_value_b)),
    u32(8, IN(input_3_value_a)), u8(9, IN(input_3_flag)), u32(7, IN(input_3_value_b)),
};
#undef IN

// The three trailing bytes go out first, then each output as a tag-1 container; a
// read fills the outputs in container order and drops those past the ninth.
#define OUT(member) KVN_MEMBER(kvn_specific_purpose_output_entry, member)
constexpr Field kOutputEntry[] = {
    u32(2, OUT(value_2)), u32(3, OUT(value_3)), u32(4, OUT(value_4)), u8(5, OUT(flag_5)), u32(6, OUT(value_6)),
};
#undef OUT
#define OUTS(member) KVN_MEMBER(kvn_specific_purpose_output_setting, member)
constexpr List kOutputs = array(OUTS(entries)).in(1).of(kOutputEntry);
constexpr Field kOutput[] = {u8(7, OUTS(byte_7)), u8(8, OUTS(byte_8)), u8(9, OUTS(byte_9)), list(kOutputs)};
#undef OUTS

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_set_specific_purpose_input_setting(kvn_device_conn* conn,
                                                       const kvn_specific_purpose_input_setting* setting) {
    return cmd::set(conn, id::specific_purpose_input, kInput, setting);
}
KVN_API int32_t kvn_get_specific_purpose_input_setting(kvn_device_conn* conn,
                                                       kvn_specific_purpose_input_setting* setting) {
    return cmd::get(conn, id::specific_purpose_input, kInput, setting);
}
KVN_API int32_t kvn_reset_specific_purpose_input_setting(kvn_device_conn* conn) {
    return cmd::reset(conn, id::specific_purpose_input);
}

KVN_API int32_t kvn_set_specific_purpose_output_setting(kvn_device_conn* conn,
                                                        const kvn_specific_purpose_output_setting* setting) {
    return cmd::set(conn, id::specific_purpose_output, kOutput, setting);
}
KVN_API int32_t kvn_get_specific_purpose_output_setting(kvn_device_conn* conn,
                                                        kvn_specific_purpose_output_setting* setting) {
    return cmd::get(conn, id::specific_purpose_output, kOutput, setting);
}
KVN_API int32_t kvn_reset_specific_purpose_output_setting(kvn_device_conn* conn) {
    return cmd::reset(conn, id::specific_purpose_output);
}

}  // extern "C"
