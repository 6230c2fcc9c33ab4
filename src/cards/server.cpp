// Card server (SRL, 141) and card preference (916). Both work in 1024-byte buffers.
#include "core/command.h"
#include "kvnsdk2.h"
#include "link/commands.h"

namespace kvn {
namespace {

using namespace row;
constexpr uint32_t kBuffer = cmd::kSmallBuffer;

// The text, third in the record, goes out last, even when empty; a read copies up
// to the whole field without terminating it.
constexpr Field kSrl[] = {
    u32(1, KVN_MEMBER(kvn_srl_server_settings, srl_value_1)),
    u32(3, KVN_MEMBER(kvn_srl_server_settings, srl_value_2)),
    text(2, KVN_MEMBER(kvn_srl_server_settings, server)),
};

// A value of up to two bytes is stored as it is (one byte changes only the low
// byte); a longer one is kept out and reported once the answer is read.
constexpr Field kPreference[] = {
    u16(40, Member<uint16_t>{0}).remember(2, KVN_E_INVALID_LENGTH_RECEIVED),
};

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_set_srl_server_settings(kvn_device_conn* conn, const kvn_srl_server_settings* setting) {
    return cmd::set<kBuffer>(conn, id::srl_server, kSrl, setting);
}
KVN_API int32_t kvn_get_srl_server_settings(kvn_device_conn* conn, kvn_srl_server_settings* setting) {
    return cmd::get<kBuffer>(conn, id::srl_server, kSrl, setting);
}
KVN_API int32_t kvn_reset_srl_server_settings(kvn_device_conn* conn) { return cmd::reset(conn, id::srl_server); }

KVN_API int32_t kvn_set_card_preference_settings(kvn_device_conn* conn, const uint16_t* preference) {
    return cmd::set<kBuffer>(conn, id::card_preference, kPreference, preference);
}
KVN_API int32_t kvn_get_card_preference_settings(kvn_device_conn* conn, uint16_t* preference) {
    return cmd::get<kBuffer>(conn, id::card_preference, kPreference, preference);
}
KVN_API int32_t kvn_reset_card_preference_settings(kvn_device_conn* conn) {
    return cmd::reset(conn, id::card_preference);
}

}  // extern "C"
