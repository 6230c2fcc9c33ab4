// Biometric and multi-user verification settings, the fingerprint sensor and
// the alarms: the groups, the sensor test image, and the alarm clears that share
// their command with the alarm's settings.
#include "handlers.h"
#include "kvnsdk2.h"

namespace kvnsim::sensors {
namespace {

// Clearing and re-enabling an alarm is a set carrying only the action tag with
// the value 1; any other set is the alarm's settings.
Reply alarm(Call& c, uint8_t action, const char* text) {
    if (c.rq.type != kSet) return settings::plain(c);
    std::vector<Node> in;
    if (int32_t rc = settings::parse_set(c, &in); rc != 0) return Reply::of(rc);
    if (find(in, action) == nullptr) return settings::store(c, std::move(in));
    if (in.size() != 1 || in[0].u32() != 1) return Reply::of(KVN_E_INVALID_VALUE_RECEIVED);
    c.st.log_event(kEventAlarmClear, 0, "", 0, 0, text);
    return Reply{};
}

}  // namespace

const Group kBiometric{
    cat({range(U32, 1, 5), {U8(8)}, range(U32, 9, 15)}),
    {{1, 3}, {2, 1}, {3, 5}, {4, 0}, {5, 10}, {8, 1}, {9, 60}, {10, 0}, {11, 0}, {12, 0}, {13, 0}, {14, 0}, {15, 0}},
    {}};
const Group kMultiUser{{U32(1), U8(2), KEYED(3, 4, 0, 2, {U8(4), U32(5), TXT(6, 64), U32(7)})},
                           {{1, 0}, {2, 0}, entries(3, 3, 0, {{5, 0}, {6, ""}, {7, 0}})},
                           {}};
const Group kNextSensor{{U32(1), U32(2)}, {{1, 0}, {2, 0}}, {}};
const Group kAutoOn{{U32(1)}, {{1, 1}}, {}};
const Group kProximity{{U32(5), U32(4), U32(8)}, {{5, 1}, {4, 30}, {8, 0}}, {}};
// Tag 9 is the fire alarm's clear action, never answered.
const Group kFireAlarm{{U32(7), U32(9)}, {{7, 0}}, {9}};
// Tag 1 is the tamper alarm's clear action, never answered.
const Group kAntiShock{range(U32, 1, 8), {{2, 1}, {3, 0}, {4, 0}, {5, 0}, {6, 0}, {7, 0}, {8, 0}}, {1}};

// The sensor test: a 320 x 308 grey image with a ridge pattern.
Reply test(Call& c) {
    static const std::vector<Field> fields = {U32(7)};
    std::vector<Node> in;
    if (int32_t rc = parse(fields, c.rq.data, c.rq.size, &in); rc != 0) return Reply::of(rc);
    Bytes img(320 * 308);
    for (size_t y = 0; y < 308; ++y)
        for (size_t x = 0; x < 320; ++x) img[y * 320 + x] = uint8_t(((x + y) / 6) % 2 ? 0x30 : 0xD0);
    Out o;
    o.element(6, img);
    return Reply::with(std::move(o));
}

Reply reset(Call&) { return Reply{}; }

Reply fire_alarm(Call& c) { return alarm(c, 9, "Fire alarm cleared"); }

Reply antishock(Call& c) { return alarm(c, 1, "Tamper alarm cleared"); }

}  // namespace kvnsim::sensors
