// The simulator's settings groups, driven with payloads written out by hand:
// set stores, get answers what was stored, reset restores the defaults, and the
// groups' own asymmetries and rules.
#include "test_sim_helpers.h"

#if KVN_HAVE_SIM

#include <algorithm>
#include <chrono>

using simtest::Answer;
using simtest::Bytes;
using simtest::elements;
using simtest::le32;
using simtest::SimTest;
using simtest::value_of;
using simtest::box;
using simtest::cat;
using simtest::text;
using simtest::u32;
using simtest::u8;

namespace {

// The containers of one tag in an answer, in order.
std::vector<Bytes> boxes(const Bytes& payload, uint8_t tag) {
    std::vector<Bytes> out;
    for (const auto& e : elements(payload))
        if (e.tag == tag) out.push_back(e.value);
    return out;
}

// The elements of a payload in tag order: decoders store by tag, so where the
// terminal keeps merged elements in another order, only the set matters.
std::vector<std::pair<uint8_t, Bytes>> by_tag(const Bytes& payload) {
    std::vector<std::pair<uint8_t, Bytes>> out;
    for (const auto& e : elements(payload)) out.emplace_back(e.tag, e.value);
    std::stable_sort(out.begin(), out.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    return out;
}

}  // namespace

class SimSettings : public SimTest {};

// Flat groups: what a set stores, a get answers byte for byte; a reset brings
// back what the group answered before.
TEST_F(SimSettings, SetGetResetRoundTrip) {
    struct Case {
        uint32_t command;
        Bytes payload;
    };
    const Case cases[] = {
        {102, cat({u32(1, 9600), u32(2, 7), u32(3, 2), u32(4, 2)})},
        {103, u32(1, 7)},
        {108, cat({u32(1, 1), u32(2, 2), u32(3, 3), u32(4, 4), u32(5, 5), u8(8, 1), u32(9, 9), u32(10, 10),
                   u32(11, 11), u32(12, 12), u32(13, 13), u32(14, 14), u32(15, 15)})},
        {112, cat({u32(2, 1), u8(3, 1), u32(1, 2), u32(5, 3), u8(6, 0), u32(4, 4), u32(8, 5), u8(9, 1), u32(7, 6)})},
        {116, cat({u32(1, 3), text(2, "front door")})},
        {123, cat({u8(3, 2), u32(9, 26), u32(29, 1), u8(1, 1)})},
        {130, {7, 1, 5, 8, 2, 0xE8, 0x03}},
        {134, cat({u8(2, 1), text(3, "secret")})},
        {141, cat({u32(1, 1), u32(3, 2), text(2, "srl.example.net")})},
        {149, cat({u32(1, 4), text(2, "Hello")})},
        {166, {1, 4, 2, 0, 0, 0, 2, 4, 1, 0, 0, 0}},
        {304, cat({u32(5, 1), u32(4, 2), u32(8, 3)})},
        {507, cat({u8(1, 1), text(2, "a"), text(3, "b"), text(4, "c"), u32(5, 5)})},
        {902, cat({u32(1, 0x11), u32(2, 0x22)})},
        {908, cat({u32(13, 1), u8(14, 2), u32(15, 3)})},
        {912, cat({u32(5, 1), u32(20, 2), u32(19, 3)})},
        {916, {0x28, 2, 2, 1}},
        {1001, cat({u32(17, 0), text(2, "vpn"), u32(3, 1), text(4, ""), text(5, ""), text(6, ""), text(7, ""),
                    text(8, ""), text(9, ""), u32(10, 2), text(11, ""), text(12, ""), text(13, ""), text(14, ""),
                    text(15, ""), text(16, "")})},
    };
    for (const Case& c : cases) {
        const Answer before = get(c.command);
        ASSERT_EQ(before.rc, 0) << c.command;
        EXPECT_EQ(set(c.command, c.payload).rc, 0) << c.command;
        EXPECT_EQ(get(c.command).payload, c.payload) << c.command;
        EXPECT_EQ(reset(c.command).rc, 0) << c.command;
        EXPECT_EQ(get(c.command).payload, before.payload) << c.command;
    }
}

// Values that are written but never answered.
TEST_F(SimSettings, WriteOnlyValuesAreNotReadBack) {
    ASSERT_EQ(set(129, cat({u32(1, 5), u32(2, 6)})).rc, 0);
    EXPECT_EQ(get(129).payload, u32(2, 6));
    ASSERT_EQ(set(127, cat({u32(3, 1), text(4, "server"), text(5, "password")})).rc, 0);
    EXPECT_EQ(get(127).payload, cat({u32(3, 1), text(4, "server")}));
    // Access keys have no getter at all.
    const Bytes key(16, 0xA5);
    EXPECT_EQ(set(903, cat({{6, 16}, key, {3, 16}, key, {4, 16}, key, {16, 16}, key})).rc, 0);
    EXPECT_EQ(get(903).rc, KVN_E_INVALID_REQUEST_TYPE);
}

// PACS is written under tag 41 and read under tag 1.
TEST_F(SimSettings, PacsWrittenUnderTag41ReadUnderTag1) {
    ASSERT_EQ(set(917, {0x29, 4, 1, 0, 0, 0}).rc, 0);
    EXPECT_EQ(get(917).payload, Bytes({1, 4, 1, 0, 0, 0}));
    EXPECT_EQ(set(917, {1, 4, 2, 0, 0, 0}).rc, KVN_E_INVALID_TAG_RECEIVED);
    EXPECT_EQ(reset(917).rc, 0);
    EXPECT_EQ(get(917).payload, Bytes({1, 4, 0, 0, 0, 0}));
}

// The DAC record: its set never carries tag 8; the door-open action sets it.
TEST_F(SimSettings, DacRecordAndDoorActions) {
    const Bytes record = cat({u8(1, 2), u32(2, 3), u32(3, 4), u32(4, 5), u32(10, 10), u32(11, 11), u32(12, 12),
                              u32(13, 13), u32(14, 14), u32(6, 6), u32(16, 16)});
    ASSERT_EQ(record.size(), 63u);
    ASSERT_EQ(set(115, record).rc, 0);
    ASSERT_EQ(set(115, {8, 4, 12, 0, 0, 0, 7, 4, 0xFF, 0xFF, 0xFF, 0xFF}).rc, 0);  // open 12 s
    auto es = elements(get(115).payload);
    for (uint8_t tag : {2, 3, 4, 6, 10, 11, 12, 13, 14, 16}) {
        ASSERT_NE(value_of(es, tag), nullptr) << int(tag);
        EXPECT_EQ(le32(*value_of(es, tag)), tag == 2 ? 3u : tag == 3 ? 4u : tag == 4 ? 5u : tag) << int(tag);
    }
    EXPECT_EQ(*value_of(es, 1), Bytes({2}));
    EXPECT_EQ(le32(*value_of(es, 8)), 12u);
    EXPECT_EQ(value_of(es, 7), nullptr);
    // Close: open time 0. Clear alarm: tag 15 = 1, not stored.
    ASSERT_EQ(set(115, {8, 4, 0, 0, 0, 0, 7, 4, 0, 0, 0, 0}).rc, 0);
    ASSERT_EQ(set(115, {15, 4, 1, 0, 0, 0}).rc, 0);
    es = elements(get(115).payload);
    EXPECT_EQ(le32(*value_of(es, 8)), 0u);
    EXPECT_EQ(value_of(es, 15), nullptr);
    // Open, close and clear were journalled.
    EXPECT_EQ(get(405).payload, Bytes({6, 4, 3, 0, 0, 0}));
}

// LED entries are tag-1 containers named by their tag-3 entry number; setting
// one entry leaves the others as they were.
TEST_F(SimSettings, LedEntriesMergeByEntryNumber) {
    const std::vector<Bytes> before = boxes(get(104).payload, 1);
    ASSERT_EQ(before.size(), 17u);
    Bytes entry = cat({u32(3, 5), u8(2, 0), u32(13, 7)});
    for (uint8_t t : {4, 7, 10, 5, 8, 11, 6, 9, 12}) entry = cat({entry, u32(t, t)});
    ASSERT_EQ(box(1, entry).size(), 75u);
    ASSERT_EQ(set(104, box(1, entry)).rc, 0);
    const std::vector<Bytes> after = boxes(get(104).payload, 1);
    ASSERT_EQ(after.size(), 17u);
    for (size_t i = 0; i < 17; ++i) {
        if (i == 4) continue;
        EXPECT_EQ(after[i], before[i]) << i;
    }
    const auto e5 = elements(after[4]);
    EXPECT_EQ(*value_of(e5, 2), Bytes({0}));
    EXPECT_EQ(le32(*value_of(e5, 13)), 7u);
    EXPECT_EQ(le32(*value_of(e5, 9)), 9u);
    EXPECT_EQ(set(104, box(1, cat({u32(3, 18), u8(2, 1)}))).rc, KVN_E_INVALID_VALUE_RECEIVED);
    EXPECT_EQ(boxes(get(111).payload, 1).size(), 18u);  // the buzzer has 18 entries
}

// Audio entries set one at a time carry their value under tag 8 and whole-array
// texts; the terminal answers the value under tag 7 and the texts as texts.
TEST_F(SimSettings, AudioSingleEntryFormIsNormalised) {
    std::string short_text = "Ding";
    short_text.resize(51, '\0');
    std::string long_text = "A longer announcement";
    long_text.resize(256, '\0');
    const Bytes entry = cat({u32(3, 2), text(4, short_text), u8(5, 1), {6, 0x82, 1, 0}, Bytes(long_text.begin(), long_text.end()),
                             u32(8, 33)});
    ASSERT_EQ(set(110, box(1, entry)).rc, 0);
    const std::vector<Bytes> entries = boxes(get(110).payload, 1);
    ASSERT_EQ(entries.size(), 18u);
    EXPECT_EQ(by_tag(entries[1]),
              by_tag(cat({u32(3, 2), text(4, "Ding"), u8(5, 1), text(6, "A longer announcement"), u32(7, 33)})));
}

// Multi-user verification groups are keyed by their tag-4 position (0 to 2).
TEST_F(SimSettings, MultiUserGroupsKeyedByPosition) {
    Bytes p = cat({u32(1, 2), u8(2, 1)});
    for (uint8_t g = 0; g < 3; ++g)
        p = cat({p, box(3, cat({u8(4, g), u32(5, 10u + g), text(6, g == 1 ? "night" : ""), u32(7, 20u + g)}))});
    ASSERT_EQ(p.size(), 6 + 3 + 3 * (6 + 3 + 6 + 2 + 6) + 5u);
    ASSERT_EQ(set(139, p).rc, 0);
    EXPECT_EQ(get(139).payload, p);
    EXPECT_EQ(set(139, box(3, cat({u8(4, 3), u32(5, 1)}))).rc, KVN_E_INVALID_VALUE_RECEIVED);
}

TEST_F(SimSettings, EthernetAddressesMacAndDeviceInformation) {
    const uint32_t ip = 0xC0A8010A;  // 192.168.1.10
    ASSERT_EQ(set(101, cat({u32(1, 0), u32(3, 6000), u32(2, ip), u32(4, 0xFFFFFF00), u32(5, 0xC0A80101),
                            u32(6, 0x08080808), u32(7, 0x08080404)}))
                  .rc,
              0);
    // Mode 1 sends no addresses; those held stay.
    ASSERT_EQ(set(101, u32(1, 1)).rc, 0);
    auto es = elements(get(101).payload);
    EXPECT_EQ(le32(*value_of(es, 1)), 1u);
    EXPECT_EQ(le32(*value_of(es, 2)), ip);
    ASSERT_NE(value_of(es, 8), nullptr);
    EXPECT_EQ(std::string(value_of(es, 8)->begin(), value_of(es, 8)->end()), "00:1A:2B:3C:4D:5E");
    EXPECT_EQ(set(101, cat({u32(1, 0), u32(2, 0)})).rc, KVN_E_INVALID_IPADDRESS);
    EXPECT_EQ(set(101, u32(1, 5)).rc, KVN_E_INVALID_NETWORK_MODE);

    const Answer info = get(201);
    ASSERT_EQ(info.rc, 0);
    EXPECT_LT(info.payload.size(), 1024u);  // the reader's buffer
    es = elements(info.payload);
    EXPECT_EQ(std::string(value_of(es, 3)->begin(), value_of(es, 3)->end()), "1.2.21.0");
    EXPECT_EQ(le32(*value_of(es, 9)), ip);
    EXPECT_EQ(le32(*value_of(es, 20)), 6000u);
    EXPECT_EQ(value_of(es, 13)->size(), 17u);
    EXPECT_LT(value_of(es, 14)->size(), 26u);
}

TEST_F(SimSettings, ClockRunsFromTheTimeSet) {
    const auto now = std::chrono::duration_cast<std::chrono::seconds>(
                         std::chrono::system_clock::now().time_since_epoch())
                         .count();
    auto es = elements(get(126).payload);
    EXPECT_NEAR(double(le32(*value_of(es, 1))), double(now), 5.0);
    const uint32_t then = 1800000000;
    ASSERT_EQ(set(126, cat({u32(1, then), u32(2, 60), text(5, ""), u32(6, 1)})).rc, 0);
    es = elements(get(126).payload);
    EXPECT_NEAR(double(le32(*value_of(es, 1))), double(then), 5.0);
    EXPECT_EQ(le32(*value_of(es, 2)), 60u);
    EXPECT_EQ(le32(*value_of(es, 6)), 1u);
    EXPECT_EQ(reset(126).rc, KVN_E_INVALID_REQUEST_TYPE);
}

// Clearing an alarm is a set on the alarm's command that changes no setting.
TEST_F(SimSettings, AlarmClearActionsLeaveTheSettings) {
    ASSERT_EQ(set(305, u32(7, 1)).rc, 0);
    ASSERT_EQ(set(305, {9, 4, 1, 0, 0, 0}).rc, 0);
    EXPECT_EQ(get(305).payload, u32(7, 1));
    const Bytes shock = cat({u32(2, 1), u32(3, 2), u32(4, 3), u32(5, 4), u32(6, 5), u32(7, 6), u32(8, 7)});
    ASSERT_EQ(set(306, shock).rc, 0);
    ASSERT_EQ(set(306, u32(1, 1)).rc, 0);
    EXPECT_EQ(get(306).payload, shock);
}

TEST_F(SimSettings, VoipAndJobCodeRules) {
    auto contact = [](const std::string& id, const std::string& name, uint32_t def) {
        Bytes inner;
        if (!id.empty()) inner = cat({inner, text(2, id)});
        if (!name.empty()) inner = cat({inner, text(3, name)});
        return box(1, cat({inner, u32(4, def)}));
    };
    Bytes list;
    for (int i = 0; i < 10; ++i) list = cat({list, contact(i < 2 ? "10" + std::to_string(i) : "", i < 2 ? "desk" : "", i == 1)});
    ASSERT_EQ(set(145, list).rc, 0);
    EXPECT_EQ(get(145).payload, list);
    EXPECT_EQ(get(147).payload, cat({text(2, "101"), text(3, "desk")}));
    EXPECT_EQ(set(145, cat({contact("1", "a", 1), contact("2", "b", 1)})).rc, KVN_E_ONLY_ONE_CONTACT_MUST_BE_DEFAULT);
    EXPECT_EQ(set(145, cat({contact("1", "a", 0), contact("1", "b", 0)})).rc, KVN_E_VOIPID_MUST_BE_UNIQUE);

    Bytes jobs;
    for (uint32_t i = 0; i < 32; ++i) jobs = cat({jobs, box(16, cat({u32(17, 0), text(18, "")}))});
    ASSERT_EQ(jobs.size(), 448u);
    EXPECT_EQ(set(146, jobs).rc, 0);  // empty entries repeat id 0 and are fine
    EXPECT_EQ(set(146, cat({box(16, cat({u32(17, 4), text(18, "a")})), box(16, cat({u32(17, 4), text(18, "b")}))})).rc,
              KVN_E_JOBCODE_ID_MUST_BE_UNIQUE);
}

TEST_F(SimSettings, SchedulesResetOneIndex) {
    auto schedule = [](uint8_t s, const std::string& name) {
        Bytes inner = cat({u8(4, s), u32(5, 1), text(6, name), u8(7, 0)});
        for (uint8_t d = 0; d < 7; ++d) {
            Bytes day = u8(9, d);
            for (uint8_t t = 10; t <= 17; ++t) day = cat({day, u8(t, d)});
            inner = cat({inner, box(8, day)});
        }
        return box(3, inner);
    };
    ASSERT_EQ(set(105, cat({u32(1, 0), u8(2, 0), schedule(2, "day shift"), schedule(5, "night")})).rc, 0);
    EXPECT_EQ(get(119).payload, cat({box(1, cat({u8(2, 2), text(3, "day shift")})), box(1, cat({u8(2, 5), text(3, "night")}))}));
    ASSERT_EQ(reset(105, {4, 4, 5, 0, 0, 0}).rc, 0);
    EXPECT_EQ(get(119).payload, box(1, cat({u8(2, 2), text(3, "day shift")})));
    EXPECT_EQ(set(105, schedule(64, "x")).rc, KVN_E_INVALID_VALUE_RECEIVED);
    // Week schedules always hold seven days.
    EXPECT_EQ(boxes(get(155).payload, 2).size(), 7u);
    EXPECT_EQ(set(155, box(2, cat({u8(3, 7), u8(4, 1)}))).rc, KVN_E_INVALID_VALUE_RECEIVED);
}

TEST_F(SimSettings, MifareLayoutsResetOneAtATime) {
    const Bytes k1(255, 0x11), k4(255, 0x44);
    const Bytes both = cat({u8(8, 1), {7, 0x81, 0xFF}, k1, u8(10, 1), {9, 0x81, 0xFF}, k4});
    ASSERT_EQ(set(904, both).rc, 0);
    EXPECT_EQ(by_tag(get(904).payload), by_tag(both));
    ASSERT_EQ(reset(904, {0x0B, 4, 0x18, 0, 0, 0}).rc, 0);  // the 4K layout
    EXPECT_EQ(by_tag(get(904).payload), by_tag(cat({u8(8, 1), {7, 0x81, 0xFF}, k1, u8(10, 0)})));
    EXPECT_EQ(reset(904, {0x0B, 4, 9, 0, 0, 0}).rc, KVN_E_INVALID_VALUE_RECEIVED);
}

TEST_F(SimSettings, StateIsSharedBetweenConnections) {
    ASSERT_EQ(set(149, cat({u32(1, 9), text(2, "shared")})).rc, 0);
    kvn_device_conn other = simtest::tcp_conn(sim_->port());
    ASSERT_EQ(kvn_open_device_conn(&other), 0);
    EXPECT_EQ(simtest::exchange(other, KVN_REQ_GET, 149).payload, cat({u32(1, 9), text(2, "shared")}));
    kvn_close_device_conn(&other);
}

#endif  // KVN_HAVE_SIM
