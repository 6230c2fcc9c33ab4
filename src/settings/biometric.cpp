// Biometric settings (108) and multi-user verification settings (139).
#include "kvnsdk2.h"
#include "settings/command.h"
#include "settings/fields.h"

namespace kvn {
namespace {

constexpr uint32_t kBiometric = 108, kMultiUser = 139;

#define BIO(n) KVN_FIELD(kvn_biometric_setting, setting_##n, n, u32)
constexpr Field kBiometricFields[] = {
    BIO(1), BIO(2), BIO(3), BIO(4), BIO(5), KVN_FIELD(kvn_biometric_setting, setting_8, 8, u8),
    BIO(9), BIO(10), BIO(11), BIO(12), BIO(13), BIO(14), BIO(15),
};
#undef BIO

constexpr Field kMultiUserFields[] = {
    KVN_FIELD(kvn_multi_user_verification_setting, value, 1, u32),
    KVN_FIELD(kvn_multi_user_verification_setting, flag, 2, u8),
};

// A group travels as a tag-3 container: its position under tag 4, then its fields.
// The text is always sent, even empty.
constexpr Field kGroupFields[] = {
    KVN_FIELD(kvn_verification_group, group_value_a, 5, u32),
    KVN_FIELD(kvn_verification_group, group_text, 6, text_always),
    KVN_FIELD(kvn_verification_group, group_value_b, 7, u32),
};

void encode_multi_user(tlv::Writer& w, const kvn_multi_user_verification_setting& s) noexcept {
    encode_fields(w, kMultiUserFields, &s);
    for (uint8_t position = 0; position < 3; ++position) {
        const auto mark = w.open();
        w.u8(4, position);
        encode_fields(w, kGroupFields, &s.groups[position]);
        w.close(mark, 3);
    }
}

// Groups are chosen by their tag-4 position; a position outside 0 to 2 drops the
// group, and a text keeps at most 63 bytes and its NUL.
int32_t decode_multi_user(const uint8_t* p, uint32_t n, kvn_multi_user_verification_setting& s) noexcept {
    return tlv::decode(p, n, [&](uint8_t tag, const uint8_t* v, uint32_t len) -> int32_t {
        if (tag != 3) {
            store_field(kMultiUserFields, tag, v, len, &s);
            return 0;
        }
        kvn_verification_group* group = nullptr;
        return tlv::decode(v, len, [&](uint8_t t, const uint8_t* fv, uint32_t fl) {
            if (t == 4) {
                group = fv[0] < 3 ? &s.groups[fv[0]] : nullptr;
            } else if (group != nullptr && t == 6) {
                tlv::copy_text(group->group_text, sizeof group->group_text, fv, fl);
            } else if (group != nullptr) {
                store_field(kGroupFields, t, fv, fl, group);
            }
            return 0;
        });
    });
}

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_set_biometric_setting(kvn_device_conn* conn, const kvn_biometric_setting* setting) {
    return cmd::set_record(conn, kBiometric, kBiometricFields, setting);
}
KVN_API int32_t kvn_get_biometric_setting(kvn_device_conn* conn, kvn_biometric_setting* setting) {
    return cmd::get_record(conn, kBiometric, kBiometricFields, setting);
}
KVN_API int32_t kvn_reset_biometric_setting(kvn_device_conn* conn) { return cmd::reset(conn, kBiometric); }

KVN_API int32_t kvn_set_multi_user_verification_setting(kvn_device_conn* conn,
                                                        const kvn_multi_user_verification_setting* setting) {
    if (setting == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    return cmd::set(conn, kMultiUser, [&](tlv::Writer& w) { encode_multi_user(w, *setting); });
}
KVN_API int32_t kvn_get_multi_user_verification_setting(kvn_device_conn* conn,
                                                        kvn_multi_user_verification_setting* setting) {
    if (setting == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    return cmd::get(conn, kMultiUser, [&](const uint8_t* p, uint32_t n) { return decode_multi_user(p, n, *setting); });
}
KVN_API int32_t kvn_reset_multi_user_verification_setting(kvn_device_conn* conn) {
    return cmd::reset(conn, kMultiUser);
}

}  // extern "C"
