// Fingerprint sensor (301-303), proximity sensor (304), fire alarm (305),
// anti-shock alarm (306) and next-sensor settings (166).
#include "core/command.h"
#include "kvnsdk2.h"
#include "link/commands.h"

namespace kvn {
namespace {

using namespace row;

// The sensor test answers with up to a mebibyte: the buffer is taken from the
// heap for the length of the call.
constexpr uint32_t kSensorTestBuffer = 1048576;

constexpr Field kTestSent[] = {u32(7, KVN_MEMBER(kvn_fingerprint_sensor_test, test_value))};
// Tag 6 fills `data` (at most its 98560 bytes) and its length member.
constexpr Field kTestRead[] = {
    counted(6, KVN_MEMBER(kvn_fingerprint_sensor_test, data), KVN_MEMBER(kvn_fingerprint_sensor_test, data_length)),
};

constexpr Field kProximity[] = {
    u32(5, KVN_MEMBER(kvn_proximity_sensor_setting, value_a)),
    u32(4, KVN_MEMBER(kvn_proximity_sensor_setting, value_b)),
    u32(8, KVN_MEMBER(kvn_proximity_sensor_setting, value_c)),
};

// The second field goes out first.
constexpr Field kNextSensor[] = {
    u32(1, KVN_MEMBER(kvn_next_sensor_setting, value_b)),
    u32(2, KVN_MEMBER(kvn_next_sensor_setting, value_a)),
};

#define SHOCK(n) u32(n + 1, KVN_MEMBER(kvn_antishock_setting, value_##n))
constexpr Field kAntishock[] = {SHOCK(1), SHOCK(2), SHOCK(3), SHOCK(4), SHOCK(5), SHOCK(6), SHOCK(7)};
#undef SHOCK

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_test_fingerprint_sensor(kvn_device_conn* conn, kvn_fingerprint_sensor_test* test) {
    return cmd::query<kSensorTestBuffer>(conn, Request{id::sensor_test, KVN_REQ_GET}, kTestSent, test, kTestRead, test);
}
KVN_API int32_t kvn_reset_fingerprint_sensor(kvn_device_conn* conn) { return cmd::reset(conn, id::sensor_reset); }

KVN_API int32_t kvn_set_fingerprint_sensor_autoon_status(kvn_device_conn* conn, uint32_t status) {
    return cmd::set_u32(conn, id::sensor_auto_on, 1, status);
}
KVN_API int32_t kvn_get_fingerprint_sensor_autoon_status(kvn_device_conn* conn, uint32_t* status) {
    return cmd::get_u32(conn, id::sensor_auto_on, 1, status);
}
KVN_API int32_t kvn_reset_fingerprint_sensor_autoon_status(kvn_device_conn* conn) {
    return cmd::reset(conn, id::sensor_auto_on);
}

KVN_API int32_t kvn_set_proximity_sensor_settings(kvn_device_conn* conn, const kvn_proximity_sensor_setting* setting) {
    return cmd::set(conn, id::proximity_sensor, kProximity, setting);
}
KVN_API int32_t kvn_get_proximity_sensor_settings(kvn_device_conn* conn, kvn_proximity_sensor_setting* setting) {
    return cmd::get(conn, id::proximity_sensor, kProximity, setting);
}
KVN_API int32_t kvn_reset_proximity_sensor_settings(kvn_device_conn* conn) {
    return cmd::reset(conn, id::proximity_sensor);
}

KVN_API int32_t kvn_set_next_sensor_settings(kvn_device_conn* conn, const kvn_next_sensor_setting* setting) {
    return cmd::set(conn, id::next_sensor, kNextSensor, setting);
}
KVN_API int32_t kvn_get_next_sensor_settings(kvn_device_conn* conn, kvn_next_sensor_setting* setting) {
    return cmd::get(conn, id::next_sensor, kNextSensor, setting);
}
KVN_API int32_t kvn_next_sensor_settings(kvn_device_conn* conn) { return cmd::reset(conn, id::next_sensor); }

KVN_API int32_t kvn_set_antishock_settings(kvn_device_conn* conn, const kvn_antishock_setting* setting) {
    return cmd::set(conn, id::antishock, kAntishock, setting);
}
KVN_API int32_t kvn_get_antishock_settings(kvn_device_conn* conn, kvn_antishock_setting* setting) {
    return cmd::get(conn, id::antishock, kAntishock, setting);
}
KVN_API int32_t kvn_reset_antishock_settings(kvn_device_conn* conn) { return cmd::reset(conn, id::antishock); }
KVN_API int32_t kvn_clear_reenable_antishock_alarm(kvn_device_conn* conn) {
    return cmd::set_u32(conn, id::antishock, 1, 1);
}

KVN_API int32_t kvn_set_fire_alarm_state(kvn_device_conn* conn, uint32_t state) {
    return cmd::set_u32(conn, id::fire_alarm, 7, state);
}
KVN_API int32_t kvn_get_fire_alarm_state(kvn_device_conn* conn, uint32_t* state) {
    return cmd::get_u32(conn, id::fire_alarm, 7, state);
}
KVN_API int32_t kvn_reset_fire_alarm_state(kvn_device_conn* conn) { return cmd::reset(conn, id::fire_alarm); }
KVN_API int32_t kvn_clear_reenable_fire_alarm(kvn_device_conn* conn) { return cmd::set_u32(conn, id::fire_alarm, 9, 1); }

}  // extern "C"
