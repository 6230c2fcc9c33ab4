// Fingerprint sensor (301-303), proximity sensor (304), fire alarm (305),
// anti-shock alarm (306) and next-sensor settings (166).
#include <cstdlib>
#include <cstring>

#include "kvnsdk2.h"
#include "settings/command.h"
#include "settings/fields.h"

namespace kvn {
namespace {

constexpr uint32_t kSensorTest = 301, kSensorReset = 302, kAutoOn = 303, kProximity = 304, kFireAlarm = 305,
                   kAntishock = 306, kNextSensor = 166;

// The sensor test answers with up to a mebibyte: too much for a thread's stack.
constexpr uint32_t kSensorTestBuffer = 1048576;

constexpr Field kProximityFields[] = {
    KVN_FIELD(kvn_proximity_sensor_setting, value_a, 5, u32),
    KVN_FIELD(kvn_proximity_sensor_setting, value_b, 4, u32),
    KVN_FIELD(kvn_proximity_sensor_setting, value_c, 8, u32),
};

// The second field goes out first.
constexpr Field kNextSensorFields[] = {
    KVN_FIELD(kvn_next_sensor_setting, value_b, 1, u32),
    KVN_FIELD(kvn_next_sensor_setting, value_a, 2, u32),
};

#define SHOCK(n) KVN_FIELD(kvn_antishock_setting, value_##n, n + 1, u32)
constexpr Field kAntishockFields[] = {SHOCK(1), SHOCK(2), SHOCK(3), SHOCK(4), SHOCK(5), SHOCK(6), SHOCK(7)};
#undef SHOCK

int32_t test_sensor(kvn_device_conn* conn, kvn_fingerprint_sensor_test* test) noexcept {
    auto* buffer = static_cast<uint8_t*>(std::malloc(kSensorTestBuffer));
    if (buffer == nullptr) return KVN_E_FAILED_TO_ALLOCATE_MEMORY;
    auto write = [&](tlv::Writer& w) { w.u32(7, test->test_value); };
    auto read = [&](const uint8_t* p, uint32_t n) {
        return tlv::decode(p, n, [&](uint8_t tag, const uint8_t* v, uint32_t len) {
            if (tag == 6) test->data_length = tlv::copy_bounded(test->data, sizeof test->data, v, len);
            return 0;
        });
    };
    // The references must not outlive the lambdas they name.
    const Encoder encode = write;
    const Decoder decode = read;
    const int32_t rc =
        exchange(conn, buffer, kSensorTestBuffer, Exchange{kSensorTest, KVN_REQ_GET, Capacity::buffer, &encode, &decode});
    std::free(buffer);
    return rc;
}

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_test_fingerprint_sensor(kvn_device_conn* conn, kvn_fingerprint_sensor_test* test) {
    if (test == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    return test_sensor(conn, test);
}
KVN_API int32_t kvn_reset_fingerprint_sensor(kvn_device_conn* conn) { return cmd::reset(conn, kSensorReset); }

KVN_API int32_t kvn_set_fingerprint_sensor_autoon_status(kvn_device_conn* conn, uint32_t status) {
    return cmd::set_u32(conn, kAutoOn, 1, status);
}
KVN_API int32_t kvn_get_fingerprint_sensor_autoon_status(kvn_device_conn* conn, uint32_t* status) {
    return cmd::get_u32(conn, kAutoOn, 1, status);
}
KVN_API int32_t kvn_reset_fingerprint_sensor_autoon_status(kvn_device_conn* conn) { return cmd::reset(conn, kAutoOn); }

KVN_API int32_t kvn_set_proximity_sensor_settings(kvn_device_conn* conn, const kvn_proximity_sensor_setting* setting) {
    return cmd::set_record(conn, kProximity, kProximityFields, setting);
}
KVN_API int32_t kvn_get_proximity_sensor_settings(kvn_device_conn* conn, kvn_proximity_sensor_setting* setting) {
    return cmd::get_record(conn, kProximity, kProximityFields, setting);
}
KVN_API int32_t kvn_reset_proximity_sensor_settings(kvn_device_conn* conn) { return cmd::reset(conn, kProximity); }

KVN_API int32_t kvn_set_next_sensor_settings(kvn_device_conn* conn, const kvn_next_sensor_setting* setting) {
    return cmd::set_record(conn, kNextSensor, kNextSensorFields, setting);
}
KVN_API int32_t kvn_get_next_sensor_settings(kvn_device_conn* conn, kvn_next_sensor_setting* setting) {
    return cmd::get_record(conn, kNextSensor, kNextSensorFields, setting);
}
KVN_API int32_t kvn_next_sensor_settings(kvn_device_conn* conn) { return cmd::reset(conn, kNextSensor); }

KVN_API int32_t kvn_set_antishock_settings(kvn_device_conn* conn, const kvn_antishock_setting* setting) {
    return cmd::set_record(conn, kAntishock, kAntishockFields, setting);
}
KVN_API int32_t kvn_get_antishock_settings(kvn_device_conn* conn, kvn_antishock_setting* setting) {
    return cmd::get_record(conn, kAntishock, kAntishockFields, setting);
}
KVN_API int32_t kvn_reset_antishock_settings(kvn_device_conn* conn) { return cmd::reset(conn, kAntishock); }
KVN_API int32_t kvn_clear_reenable_antishock_alarm(kvn_device_conn* conn) { return cmd::set_u32(conn, kAntishock, 1, 1); }

KVN_API int32_t kvn_set_fire_alarm_state(kvn_device_conn* conn, uint32_t state) {
    return cmd::set_u32(conn, kFireAlarm, 7, state);
}
KVN_API int32_t kvn_get_fire_alarm_state(kvn_device_conn* conn, uint32_t* state) {
    return cmd::get_u32(conn, kFireAlarm, 7, state);
}
KVN_API int32_t kvn_reset_fire_alarm_state(kvn_device_conn* conn) { return cmd::reset(conn, kFireAlarm); }
KVN_API int32_t kvn_clear_reenable_fire_alarm(kvn_device_conn* conn) { return cmd::set_u32(conn, kFireAlarm, 9, 1); }

}  // extern "C"
