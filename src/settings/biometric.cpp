// Biometric settings (108) and multi-user verification settings (139).
#include "core/command.h"
#include "kvnsdk2.h"
#include "link/commands.h"

namespace kvn {
namespace {

using namespace row;

#define BIO(n) u32(n, KVN_MEMBER(kvn_biometric_setting, setting_##n))
constexpr Field kBiometric[] = {
    BIO(1), BIO(2), BIO(3), BIO(4), BIO(5), u8(8, KVN_MEMBER(kvn_biometric_setting, setting_8)),
    BIO(9), BIO(10), BIO(11), BIO(12), BIO(13), BIO(14), BIO(15),
};
#undef BIO

// A group travels as a tag-3 container: its position (0 to 2) under tag 4, then
// its fields; the text is always sent, even empty. A read picks the group by the
// position, drops a group whose position is outside 0 to 2, and keeps at most 63
// bytes of the text and its NUL.
#define GROUP(member) KVN_MEMBER(kvn_verification_group, member)
constexpr Field kGroup[] = {
    position(4, 1),
    u32(5, GROUP(group_value_a)),
    text(6, GROUP(group_text)).terminate(64),
    u32(7, GROUP(group_value_b)),
};
#undef GROUP
constexpr List kGroups = array(KVN_MEMBER(kvn_multi_user_verification_setting, groups)).in(3).by(4, 0).of(kGroup);

constexpr Field kMultiUser[] = {
    u32(1, KVN_MEMBER(kvn_multi_user_verification_setting, value)),
    u8(2, KVN_MEMBER(kvn_multi_user_verification_setting, flag)),
    list(kGroups),
};

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_set_biometric_setting(kvn_device_conn* conn, const kvn_biometric_setting* setting) {
    return cmd::set(conn, id::biometric, kBiometric, setting);
}
KVN_API int32_t kvn_get_biometric_setting(kvn_device_conn* conn, kvn_biometric_setting* setting) {
    return cmd::get(conn, id::biometric, kBiometric, setting);
}
KVN_API int32_t kvn_reset_biometric_setting(kvn_device_conn* conn) { return cmd::reset(conn, id::biometric); }

KVN_API int32_t kvn_set_multi_user_verification_setting(kvn_device_conn* conn,
                                                        const kvn_multi_user_verification_setting* setting) {
    return cmd::set(conn, id::multi_user_verification, kMultiUser, setting);
}
KVN_API int32_t kvn_get_multi_user_verification_setting(kvn_device_conn* conn,
                                                        kvn_multi_user_verification_setting* setting) {
    return cmd::get(conn, id::multi_user_verification, kMultiUser, setting);
}
KVN_API int32_t kvn_reset_multi_user_verification_setting(kvn_device_conn* conn) {
    return cmd::reset(conn, id::multi_user_verification);
}

}  // extern "C"
