// The simulator's records and operations, driven with hand-written payloads:
// users and their templates, enrolment and matching, the journal, files, cards,
// Wiegand formats, Wi-Fi, certificates and user groups.
#include "test_sim_helpers.h"

#if KVN_HAVE_SIM

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <unistd.h>

using simtest::Answer;
using simtest::box;
using simtest::Bytes;
using simtest::cat;
using simtest::elements;
using simtest::le32;
using simtest::raw;
using simtest::SimTest;
using simtest::str;
using simtest::text;
using simtest::u32;
using simtest::u8;
using simtest::value_of;

namespace {

// A user record as a store sends it: outer tag 1, the fields, template groups.
Bytes user(const std::string& id, const std::string& name, const std::vector<std::pair<uint8_t, Bytes>>& templates = {},
           uint32_t group = 0) {
    Bytes fields = cat({text(2, id), text(3, name), u8(6, 1), u8(29, 7)});
    if (group) fields = cat({fields, u32(5, group)});
    fields = cat({fields, u8(11, 1), u8(12, 2), u8(13, 3), u8(14, 4), u8(16, 5), u32(18, 6), raw(19, Bytes(64, 'a')),
                  raw(20, Bytes(64, 'b')), u8(33, 1), raw(32, Bytes(16, 0xEE))});
    for (const auto& [finger, data] : templates)
        fields = cat({fields, box(22, cat({u8(7, finger), u8(15, 0), u8(21, 0), u8(17, 0), raw(23, data)}))});
    return box(1, fields);
}

std::vector<Bytes> all(const Bytes& payload, uint8_t tag) {
    std::vector<Bytes> out;
    for (const auto& e : elements(payload))
        if (e.tag == tag) out.push_back(e.value);
    return out;
}

}  // namespace

class SimUsers : public SimTest {};

TEST_F(SimUsers, StoreGetDeleteAndCount) {
    const Bytes tmpl(500, 0x5A);
    ASSERT_EQ(set(7, user("amy", "Amy", {{3, tmpl}})).rc, 0);
    EXPECT_EQ(set(7, user("amy", "Again")).rc, KVN_E_USERID_ALREADY_EXISTS);
    // The answer carries everything but attributes 29 and 32.
    const Answer a = get(7, text(2, "amy"));
    ASSERT_EQ(a.rc, 0);
    const auto outer = elements(a.payload);
    ASSERT_EQ(outer.size(), 1u);
    ASSERT_EQ(outer[0].tag, 1);
    const auto fields = elements(outer[0].value);
    EXPECT_EQ(str(*value_of(fields, 3)), "Amy");
    EXPECT_EQ(value_of(fields, 29), nullptr);
    EXPECT_EQ(value_of(fields, 32), nullptr);
    EXPECT_EQ(*value_of(fields, 11), Bytes({1}));
    const auto slot = elements(*value_of(fields, 22));
    EXPECT_EQ(*value_of(slot, 7), Bytes({3}));
    EXPECT_EQ(*value_of(slot, 23), tmpl);
    EXPECT_EQ(get(8).payload, u32(26, 1));
    EXPECT_EQ(get(508).payload, u32(26, 1));
    EXPECT_EQ(reset(7, text(2, "amy")).rc, 0);
    EXPECT_EQ(reset(7, text(2, "amy")).rc, KVN_E_USER_NOT_FOUND);
    EXPECT_EQ(get(8).payload, u32(26, 0));
}

TEST_F(SimUsers, StoreRejectsBadRecords) {
    EXPECT_EQ(set(7, box(1, text(3, "no id"))).rc, KVN_E_INVALID_USERRECORD_ID);
    EXPECT_EQ(set(7, box(1, text(2, std::string(65, 'x')))).rc, KVN_E_INVALID_USERRECORD_ID);
    EXPECT_EQ(set(7, box(1, cat({text(2, "x"), u8(40, 1)}))).rc, KVN_E_INVALID_TAG_RECEIVED);
    EXPECT_EQ(set(7, box(1, cat({text(2, "x"), u32(6, 1)}))).rc, KVN_E_INVALID_LENGTH_RECEIVED);
    std::vector<std::pair<uint8_t, Bytes>> eleven;
    for (uint8_t f = 0; f < 11; ++f) eleven.emplace_back(f, Bytes(10, f));
    EXPECT_EQ(set(7, user("many", "", eleven)).rc, KVN_E_MAX_BIOMETRIC_USER_RECORDS);
}

// A template already held by someone else: the store is answered with who holds
// it (tag 2), the finger (tag 30) and the clashing slots (tag 31); the library
// reports that as "User Record Store".
TEST_F(SimUsers, DuplicateTemplateAnswersWithTheStoreResult) {
    const Bytes tmpl(300, 0x33);
    ASSERT_EQ(set(7, user("amy", "Amy", {{4, tmpl}})).rc, 0);
    const Answer a = set(7, user("bob", "Bob", {{1, Bytes(300, 0x44)}, {2, tmpl}}));
    ASSERT_EQ(a.rc, 0);
    EXPECT_EQ(a.payload, cat({text(2, "amy"), u32(30, 4), raw(31, {1})}));
    EXPECT_EQ(get(7, text(2, "bob")).rc, KVN_E_USER_NOT_FOUND);
}

// Enrolment captures the finger on the sensor (by default the enrolling user's
// own); identification finds who enrolled it; verifying someone else fails.
TEST_F(SimUsers, EnrolIdentifyVerify) {
    const Answer amy = get(1, cat({text(1, "amy"), u8(9, 1)}));
    ASSERT_EQ(amy.rc, 0);
    const Bytes amy_tmpl = *value_of(elements(amy.payload), 3);
    EXPECT_EQ(le32(*value_of(elements(amy.payload), 4)), amy_tmpl.size());
    ASSERT_EQ(get(1, cat({text(1, "bob"), u8(9, 2)})).rc, 0);
    EXPECT_EQ(get(508).payload, u32(26, 2));

    // Bob, who enrolled last, is still at the terminal.
    Answer id = get(6);
    ASSERT_EQ(id.rc, 0);
    EXPECT_EQ(str(*value_of(elements(id.payload), 2)), "bob");
    EXPECT_EQ(*value_of(elements(id.payload), 3), Bytes({2}));
    EXPECT_EQ(get(4, text(1, "amy")).rc, KVN_E_FAILED_TO_VERIFY_USER);
    const Answer ok = get(4, text(1, "bob"));
    ASSERT_EQ(ok.rc, 0);
    EXPECT_EQ(le32(*value_of(elements(ok.payload), 2)), 2u);
    EXPECT_EQ(get(4, text(1, "carl")).rc, KVN_E_USER_NOT_FOUND);

    sim_->present_finger("amy", 1);
    id = get(6);
    EXPECT_EQ(str(*value_of(elements(id.payload), 2)), "amy");
    const uint32_t len = uint32_t(amy_tmpl.size());
    EXPECT_EQ(get(3, cat({u8(1, 0), u32(2, len), raw(3, amy_tmpl)})).rc, 0);
    EXPECT_EQ(get(16, raw(1, amy_tmpl)).rc, 0);
    EXPECT_EQ(get(16, raw(1, Bytes(384, 1))).rc, KVN_E_FAILED_TO_IDENTIFY_USER);
    sim_->present_finger("stranger", 0);
    EXPECT_EQ(get(3, cat({u8(1, 0), u32(2, len), raw(3, amy_tmpl)})).rc, KVN_E_FAILED_TO_VERIFY_USER);
    EXPECT_EQ(get(6).rc, KVN_E_FAILED_TO_IDENTIFY_USER);

    // Enrolling Amy's finger under another id is caught by command 15.
    sim_->present_finger("amy", 1);
    const Answer dup = get(15, cat({text(1, "carl"), u8(9, 0)}));
    ASSERT_EQ(dup.rc, 0);
    EXPECT_EQ(dup.payload, cat({text(10, "amy"), u8(11, 1)}));
    EXPECT_EQ(get(7, text(2, "carl")).rc, KVN_E_USER_NOT_FOUND);

    // Verification by user record uses the record's templates.
    EXPECT_EQ(get(5, user("amy", "", {{1, amy_tmpl}})).rc, 0);
    EXPECT_EQ(get(5, user("bob", "", {{1, Bytes(384, 9)}})).rc, KVN_E_FAILED_TO_VERIFY_USER);
    // Every match and miss was journalled, with the enrolments.
    EXPECT_GE(le32(*value_of(elements(get(405).payload), 6)), 12u);
}

TEST_F(SimUsers, NoFingerOnTheSensorTimesOut) {
    EXPECT_EQ(get(6).rc, KVN_E_FINGER_CAPTURE_TIMEOUT);
}

TEST_F(SimUsers, TemplateMaintenance) {
    ASSERT_EQ(get(1, cat({text(1, "amy"), u8(9, 1)})).rc, 0);
    EXPECT_EQ(get(13, cat({text(1, "amy"), u8(2, 1)})).rc, 0);
    EXPECT_EQ(get(13, cat({text(1, "amy"), u8(2, 3)})).rc, KVN_E_INVALID_VALUE_RECEIVED);
    EXPECT_EQ(get(13, cat({text(1, "zed"), u8(2, 1)})).rc, KVN_E_USER_NOT_FOUND);
    ASSERT_EQ(get(14, cat({text(1, "amy"), u8(2, 3), raw(3, Bytes(200, 3))})).rc, 0);
    EXPECT_EQ(get(508).payload, u32(26, 2));
    ASSERT_EQ(set(505, cat({text(2, "amy"), raw(7, {1, 3})})).rc, 0);
    EXPECT_EQ(get(508).payload, u32(26, 0));
    EXPECT_EQ(set(505, cat({text(2, "zed"), raw(7, {1})})).rc, KVN_E_USER_NOT_FOUND);
}

TEST_F(SimUsers, GroupsPageAndRules) {
    ASSERT_EQ(set(10, cat({u32(2, 1), text(3, "staff")})).rc, 0);
    ASSERT_EQ(set(10, cat({u32(2, 2), text(3, "guests")})).rc, 0);
    EXPECT_EQ(set(10, cat({u32(2, 3), text(3, "staff")})).rc, KVN_E_GROUP_NAME_ALREADY_EXISTS);
    EXPECT_EQ(get(11).payload, u32(1, 2));
    const Answer page = get(10, cat({u32(4, 0), u32(5, 10)}));
    ASSERT_EQ(page.rc, 0);
    EXPECT_EQ(page.payload, cat({box(1, cat({u32(2, 1), text(3, "staff"), u32(6, 2)})),
                                 box(1, cat({u32(2, 2), text(3, "guests"), u32(6, 2)}))}));
    EXPECT_EQ(get(10, cat({u32(4, 5), u32(5, 10)})).rc, KVN_E_OUT_OF_RANGE_GROUP_RETRIEVE_REQUEST);
    ASSERT_EQ(set(7, user("amy", "Amy", {}, 1)).rc, 0);
    EXPECT_EQ(reset(10, cat({u32(2, 1), text(3, "staff")})).rc, KVN_E_GROUP_CONTAINS_USERS_FAILED_TO_DELETE);
    EXPECT_EQ(reset(10, cat({u32(2, 2), text(3, "guests")})).rc, 0);
    EXPECT_EQ(reset(10, cat({u32(2, 2), text(3, "guests")})).rc, KVN_E_GROUP_DOES_NOT_EXIST);
    ASSERT_EQ(reset(7, text(2, "amy")).rc, 0);
    EXPECT_EQ(reset(12).rc, 0);
    EXPECT_EQ(get(10, cat({u32(4, 0), u32(5, 10)})).rc, KVN_E_GROUP_DOES_NOT_EXIST);
}

class SimJournal : public SimTest {
protected:
    void SetUp() override {
        kvnsim::Options o;
        o.prefill_logs = 1000;
        start(o);
    }
    uint32_t count(uint32_t command, const Bytes& criteria = {}) {
        return le32(*value_of(elements(get(command, criteria).payload), 6));
    }
};

TEST_F(SimJournal, CountsReadsMarksAndDelete) {
    EXPECT_EQ(count(405), 1000u);
    EXPECT_EQ(count(406), 1000u);
    EXPECT_EQ(count(407), 0u);
    // A read returns as many entries as fit one answer, oldest first.
    Answer r = get(401, cat({u8(2, 0), u8(3, 0)}));
    ASSERT_EQ(r.rc, 0);
    EXPECT_LT(r.payload.size(), 20480u);
    std::vector<Bytes> entries = all(r.payload, 1);
    ASSERT_GT(entries.size(), 100u);
    ASSERT_LE(entries.size(), 255u);
    EXPECT_EQ(le32(*value_of(elements(entries[0]), 7)), 1u);
    // Tag 2 limits the number; tag 3 = 1 reads from the newest.
    r = get(401, cat({u8(2, 2), u8(3, 1)}));
    entries = all(r.payload, 1);
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(le32(*value_of(elements(entries[0]), 7)), 1000u);

    ASSERT_EQ(set(409, cat({u32(7, 1), u32(7, 2), u32(7, 3)})).rc, 0);
    EXPECT_EQ(count(407), 3u);
    EXPECT_EQ(count(406), 997u);
    entries = all(get(402, cat({u8(2, 1), u8(3, 0)})).payload, 1);
    EXPECT_EQ(le32(*value_of(elements(entries[0]), 7)), 4u);
    entries = all(get(403, cat({u8(2, 0), u8(3, 0)})).payload, 1);
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(*value_of(elements(entries[2]), 17), Bytes({1}));
    EXPECT_EQ(set(409, u32(7, 5000)).rc, KVN_E_INVALID_VALUE_RECEIVED);

    ASSERT_EQ(get(410, u32(7, 5)).rc, 0);
    entries = all(get(412, cat({u8(2, 0), u8(3, 0), u32(4, 1767225600 + 4 * 37), u32(5, 1767225600 + 4 * 37)})).payload, 1);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(le32(*value_of(elements(entries[0]), 7)), 5u);
    EXPECT_EQ(*value_of(elements(entries[0]), 18), Bytes({1}));

    // Criteria and dates.
    EXPECT_EQ(count(411, text(12, "user1")), 20u);
    EXPECT_EQ(count(408, u32(4, 20260101)), 1000u);
    EXPECT_EQ(count(408, u32(4, 20260102)), 0u);
    EXPECT_EQ(get(408, u8(2, 1)).rc, KVN_E_INVALID_TAG_RECEIVED);

    // Delete all; ids keep rising after it.
    ASSERT_EQ(reset(413, Bytes(20480, 0)).rc, 0);
    EXPECT_EQ(count(405), 0u);
    EXPECT_TRUE(get(401, cat({u8(2, 0), u8(3, 0)})).payload.empty());
    ASSERT_EQ(set(115, {8, 4, 1, 0, 0, 0, 7, 4, 0, 0, 0, 0}).rc, 0);
    entries = all(get(401, cat({u8(2, 0), u8(3, 0)})).payload, 1);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(le32(*value_of(elements(entries[0]), 7)), 1001u);
}

class SimFiles : public SimTest {
protected:
    // Uploads `data` under (type, name) with the packet protocol; returns the first failure.
    int32_t upload(uint32_t type, const std::string& name, const Bytes& data) {
        const uint32_t size = uint32_t(data.size()), packets = (size + 65535) / 65536;
        Answer start = simtest::exchange(conn_, KVN_REQ_UPLOAD, 120,
                                         cat({u32(4, type), text(5, name), u32(6, size), u32(7, packets)}));
        if (start.rc != 0) return start.rc;
        const uint32_t id = le32(*value_of(elements(start.payload), 1));
        for (uint32_t p = 1; p <= packets; ++p) {
            const size_t from = size_t(p - 1) * 65536, n = std::min<size_t>(65536, data.size() - from);
            const Bytes chunk(data.begin() + long(from), data.begin() + long(from + n));
            const Answer a = set(120, cat({u32(1, id), u32(3, p), raw(8, chunk)}));
            if (a.rc != 0) return a.rc;
        }
        return 0;
    }
    Bytes download(uint32_t type, const std::string& name, int32_t* rc) {
        Answer start = simtest::exchange(conn_, KVN_REQ_DOWNLOAD, 120, cat({u32(4, type), text(5, name)}));
        *rc = start.rc;
        Bytes data;
        if (start.rc != 0) return data;
        const auto es = elements(start.payload);
        const uint32_t id = le32(*value_of(es, 1)), packets = le32(*value_of(es, 7));
        for (uint32_t p = 1; p <= packets; ++p) {
            const Answer a = get(120, cat({u32(1, id), u32(3, p)}));
            *rc = a.rc;
            if (a.rc != 0) break;
            const Bytes chunk = *value_of(elements(a.payload), 8);
            data.insert(data.end(), chunk.begin(), chunk.end());
        }
        return data;
    }
};

TEST_F(SimFiles, UploadDownloadDelete) {
    Bytes data(70000);
    for (size_t i = 0; i < data.size(); ++i) data[i] = uint8_t(i * 7);
    ASSERT_EQ(upload(4, "door.png", data), 0);
    int32_t rc = 0;
    EXPECT_EQ(download(4, "door.png", &rc), data);
    EXPECT_EQ(rc, 0);
    ASSERT_EQ(upload(0, "empty.bin", {}), 0);
    EXPECT_TRUE(download(0, "empty.bin", &rc).empty());
    EXPECT_EQ(rc, 0);
    // The uploaded image can be shown and is listed.
    EXPECT_EQ(set(205, text(3, "door.png")).rc, 0);
    EXPECT_EQ(set(205, text(3, "nothing.png")).rc, KVN_E_INVALID_FILE_NAME);
    const auto names = all(get(140).payload, 1);
    EXPECT_NE(std::find(names.begin(), names.end(), Bytes({'d', 'o', 'o', 'r', '.', 'p', 'n', 'g'})), names.end());
    EXPECT_EQ(reset(120, cat({u32(4, 4), text(5, "door.png")})).rc, 0);
    EXPECT_EQ(reset(120, cat({u32(4, 4), text(5, "door.png")})).rc, KVN_E_FAILED_TO_REMOVE_FILE);
    download(4, "door.png", &rc);
    EXPECT_EQ(rc, KVN_E_DEVICE_FAILED_TO_OPEN_FILE);
}

TEST_F(SimFiles, PacketProtocolStatuses) {
    auto start = [&](const std::string& name, uint32_t size, uint32_t packets) {
        return simtest::exchange(conn_, KVN_REQ_UPLOAD, 120,
                                 cat({u32(4, 0), text(5, name), u32(6, size), u32(7, packets)}));
    };
    EXPECT_EQ(start("a/b", 10, 1).rc, KVN_E_INVALID_FILE_NAME);
    EXPECT_EQ(start("", 10, 1).rc, KVN_E_INVALID_FILE_NAME);
    EXPECT_EQ(start("f", 65537, 1).rc, KVN_E_INVALID_FILE_LENGTH);
    const Answer ok = start("f", 65537, 2);
    ASSERT_EQ(ok.rc, 0);
    EXPECT_EQ(ok.payload, cat({u32(1, le32(*value_of(elements(ok.payload), 1))), u32(6, 65537), u32(7, 2)}));
    const uint32_t id = le32(*value_of(elements(ok.payload), 1));
    EXPECT_EQ(set(120, cat({u32(1, id), u32(3, 2), raw(8, Bytes(1, 0))})).rc, KVN_E_INVALID_PACKET_ID);
    EXPECT_EQ(set(120, cat({u32(1, id), u32(3, 1), raw(8, Bytes(100, 0))})).rc, KVN_E_INVALID_PACKET_SIZE);
    EXPECT_EQ(set(120, cat({u32(1, id + 100), u32(3, 1), raw(8, Bytes(65536, 0))})).rc, KVN_E_INVALID_FILE_ID);
    EXPECT_EQ(set(120, cat({u32(1, id), u32(3, 1), raw(8, Bytes(65536, 0))})).rc, 0);
    EXPECT_EQ(set(120, cat({u32(1, id), u32(3, 2), raw(8, Bytes(1, 0))})).rc, 0);
    EXPECT_EQ(simtest::exchange(conn_, KVN_REQ_UPLOAD, 120, cat({u32(4, 99), text(5, "x"), u32(6, 0), u32(7, 0)})).rc,
              KVN_E_INVALID_FILE_TYPE);
}

TEST_F(SimFiles, FirmwareBackupAndCsv) {
    EXPECT_EQ(set(601, u8(5, 1)).rc, KVN_E_INVALID_FIRMWARE_UPGRADE_PACKAGE);
    EXPECT_EQ(set(601, u8(7, 1)).rc, KVN_E_INVALID_RESTORE_PACKAGE);
    ASSERT_EQ(upload(1, "fw.pkg", Bytes(1000, 1)), 0);
    ASSERT_EQ(upload(2, "backup.pkg", Bytes(10, 2)), 0);
    EXPECT_EQ(set(601, u8(5, 1)).rc, 0);
    EXPECT_EQ(set(601, u8(7, 1)).rc, 0);

    const std::string csv = "user_id,name\namy,Amy\nbob,Bob\n";
    ASSERT_EQ(upload(3, "in.csv", Bytes(csv.begin(), csv.end())), 0);
    ASSERT_EQ(set(601, cat({u8(9, 1), text(10, "in.csv")})).rc, 0);
    EXPECT_EQ(get(8).payload, u32(26, 2));
    EXPECT_EQ(set(601, cat({u8(9, 1), text(10, "missing.csv")})).rc, KVN_E_DEVICE_FAILED_TO_OPEN_FILE);
    ASSERT_EQ(get(601, cat({u8(8, 1), text(10, "out.csv")})).rc, 0);
    int32_t rc = 0;
    EXPECT_EQ(str(download(3, "out.csv", &rc)), csv);
}

TEST(SimFilesOnDisk, UploadedFilesLiveUnderTheStateDirectory) {
    const std::string dir =
        (std::filesystem::temp_directory_path() / ("kvnsim-files-" + std::to_string(::getpid()))).string();
    std::filesystem::remove_all(dir);
    kvnsim::Options o;
    o.state_dir = dir;
    kvnsim::Simulator sim(o);
    ASSERT_TRUE(sim.start());
    kvn_device_conn c = simtest::tcp_conn(sim.port());
    ASSERT_EQ(kvn_open_device_conn(&c), 0);
    const Answer s = simtest::exchange(c, KVN_REQ_UPLOAD, 120, cat({u32(4, 5), text(5, "ab"), u32(6, 3), u32(7, 1)}));
    ASSERT_EQ(s.rc, 0);
    const uint32_t id = le32(*value_of(elements(s.payload), 1));
    ASSERT_EQ(simtest::exchange(c, KVN_REQ_SET, 120, cat({u32(1, id), u32(3, 1), raw(8, {'x', 'y', 'z'})})).rc, 0);
    kvn_close_device_conn(&c);
    sim.stop();
    // Type 5, name "ab" in hex.
    std::ifstream f(dir + "/files/5/6162", std::ios::binary);
    std::string content((std::istreambuf_iterator<char>(f)), std::istreambuf_iterator<char>());
    EXPECT_EQ(content, "xyz");
    std::filesystem::remove_all(dir);
}

class SimCards : public SimTest {};

TEST_F(SimCards, PresentedCardRevocationAndCardData) {
    EXPECT_EQ(get(901).rc, KVN_E_CARD_NOT_FOUND);
    const Bytes serial = {0x04, 0xA1, 0xB2, 0xC3};
    sim_->present_card(serial);
    EXPECT_EQ(get(901).payload, cat({raw(12, serial), u32(11, 4)}));
    EXPECT_EQ(get(703).payload, raw(2, serial));

    // A user record written to the card comes back inside tag 17.
    ASSERT_EQ(set(905, raw(1, cat({text(2, "amy"), text(3, "Amy"), u32(11, 1), u32(12, 2)}))).rc, 0);
    const auto card = elements(get(909).payload);
    EXPECT_EQ(*value_of(card, 12), serial);
    const auto rec = elements(*value_of(card, 17));
    EXPECT_EQ(str(*value_of(rec, 2)), "amy");
    EXPECT_EQ(set(905, Bytes(5000, 1)).rc, KVN_E_SMART_CARD_FULL);

    Bytes id = serial;
    id.resize(64, 0);
    ASSERT_EQ(set(910, raw(12, id)).rc, 0);
    EXPECT_EQ(get(911).payload, u32(18, 1));
    EXPECT_EQ(get(910, {0x1B, 1, 0, 0x1C, 1, 0x0A}).payload, raw(12, id));
    EXPECT_EQ(get(909).rc, KVN_E_REVOKED_SMART_CARD);
    EXPECT_EQ(set(906, {}).rc, KVN_E_REVOKED_SMART_CARD);
    ASSERT_EQ(reset(910, raw(12, id)).rc, 0);
    EXPECT_EQ(reset(910, raw(12, id)).rc, KVN_E_CARD_NOT_FOUND);
    EXPECT_EQ(set(906, {}).rc, 0);
    EXPECT_EQ(set(907, {}).rc, 0);
    EXPECT_EQ(value_of(elements(get(909).payload), 17), nullptr);  // formatted
    sim_->remove_card();
    EXPECT_EQ(set(907, {}).rc, KVN_E_CARD_NOT_FOUND);
}

TEST_F(SimCards, WiegandFormatsUpToTwenty) {
    auto type1 = [](uint8_t id, const std::string& name) {
        return cat({u32(2, 1), u8(3, id), {19, 2, 26, 0}, text(4, name), raw(6, Bytes(64, 1))});
    };
    for (uint8_t i = 1; i <= 20; ++i) ASSERT_EQ(set(701, type1(i, "fmt" + std::to_string(i))).rc, 0) << int(i);
    EXPECT_EQ(set(701, type1(21, "fmt21")).rc, KVN_E_MAX_WIEGAND_REACHED);
    EXPECT_EQ(set(701, type1(5, "fmt5b")).rc, 0);  // replacing one is not adding
    EXPECT_EQ(set(701, type1(6, "fmt7")).rc, KVN_E_NAME_ALREADY_EXIST);
    EXPECT_EQ(set(701, cat({u32(2, 3), u8(3, 1)})).rc, KVN_E_INVALID_VALUE_RECEIVED);
    const auto list = all(get(702).payload, 1);
    ASSERT_EQ(list.size(), 20u);
    EXPECT_EQ(list[4], cat({u8(3, 5), text(4, "fmt5b")}));
    EXPECT_EQ(set(704, u8(3, 5)).rc, 0);
    EXPECT_EQ(set(704, u8(3, 5)).rc, KVN_E_INVALID_VALUE_RECEIVED);
    EXPECT_EQ(all(get(702).payload, 1).size(), 19u);
    // Type 0 carries only type, id and one byte.
    EXPECT_EQ(set(701, cat({u32(2, 0), u8(3, 1), u8(5, 9)})).rc, 0);
}

class SimNetwork : public SimTest {};

TEST_F(SimNetwork, WifiScanConnectAndInfo) {
    const auto scan = all(get(136).payload, 1);
    ASSERT_EQ(scan.size(), 5u);
    EXPECT_EQ(str(*value_of(elements(scan[0]), 3)), "office");
    EXPECT_EQ(set(137, cat({text(3, "nowhere"), u8(8, 1)})).rc, KVN_E_FAILED_TO_CONNECT_WI_FI);
    EXPECT_EQ(set(137, cat({text(3, "office"), u8(8, 1)})).rc, KVN_E_FAILED_TO_CONNECT_WI_FI);  // needs its key
    ASSERT_EQ(set(137, cat({text(3, "office"), text(7, "password1"), u8(8, 1)})).rc, 0);
    auto info = elements(get(138).payload);
    EXPECT_EQ(*value_of(info, 2), Bytes({1}));
    EXPECT_EQ(str(*value_of(info, 3)), "office");
    EXPECT_EQ(le32(*value_of(info, 9)), 0xC0A8141Fu);  // 192.168.20.31 from the network
    EXPECT_EQ(value_of(info, 7), nullptr);              // the key is not told
    EXPECT_EQ(str(*value_of(elements(get(136).payload), 6)), "office");
    ASSERT_EQ(reset(137, text(3, "office")).rc, 0);
    EXPECT_EQ(elements(get(138).payload)[0].value, Bytes({0}));
    ASSERT_EQ(set(135, u8(2, 0)).rc, 0);
    EXPECT_EQ(set(137, cat({text(3, "guest"), u8(8, 1)})).rc, KVN_E_FAILED_TO_ENABLE_WI_FI);
}

TEST_F(SimNetwork, CertificatesAndVpn) {
    auto put = [&](const std::string& name) {
        const Answer s = simtest::exchange(conn_, KVN_REQ_UPLOAD, 120, cat({u32(4, 6), text(5, name), u32(6, 4), u32(7, 1)}));
        ASSERT_EQ(s.rc, 0);
        ASSERT_EQ(set(120, cat({u32(1, le32(*value_of(elements(s.payload), 1))), u32(3, 1), raw(8, {1, 2, 3, 4})})).rc, 0);
    };
    put("client.p12");
    put("root.crt");
    put("notes.txt");
    EXPECT_EQ(all(get(1007).payload, 21).size(), 3u);
    EXPECT_EQ(set(1005, cat({text(21, "absent.p12"), text(22, "pw")})).rc, KVN_E_CERTIFICATE_DOES_NOT_EXIST_ON_DEVICE);
    EXPECT_EQ(set(1005, cat({text(21, "notes.txt"), text(22, "pw")})).rc, KVN_E_VPN_CERTIFICATE_BAD_FORMAT);
    EXPECT_EQ(set(1005, cat({text(21, "client.p12"), text(22, "")})).rc, KVN_E_INVALID_VPN_CERTIFICATE_OR_PASSWORD);
    ASSERT_EQ(set(1005, cat({text(21, "client.p12"), text(22, "pw")})).rc, 0);
    ASSERT_EQ(set(1005, cat({text(21, "root.crt"), text(22, "")})).rc, 0);
    EXPECT_EQ(get(1003).payload, text(14, "client.p12"));
    EXPECT_EQ(get(1004).payload, text(15, "root.crt"));
    EXPECT_EQ(get(133).payload, text(4, "client.p12"));

    // A profile naming the certificate keeps it installed; the VPN comes up.
    Bytes profile = cat({u32(17, 1), text(2, "office-vpn"), u32(3, 0)});
    for (uint8_t t = 4; t <= 9; ++t) profile = cat({profile, text(t, t == 4 ? "client.p12" : "")});
    profile = cat({profile, u32(10, 0)});
    for (uint8_t t = 11; t <= 16; ++t) profile = cat({profile, text(t, "")});
    ASSERT_EQ(set(1001, profile).rc, 0);
    EXPECT_EQ(get(1002).payload, cat({u32(28, 1), u32(29, 0x0A080002)}));
    EXPECT_EQ(set(1006, text(14, "client.p12")).rc, KVN_E_VPN_CERTIFICATE_IN_USE);
    ASSERT_EQ(reset(1001).rc, 0);
    EXPECT_EQ(get(1002).payload, cat({u32(28, 0), u32(29, 0)}));
    EXPECT_EQ(set(1006, text(14, "client.p12")).rc, 0);
    EXPECT_EQ(set(1006, text(14, "client.p12")).rc, KVN_E_CERTIFICATE_DOES_NOT_EXIST_ON_DEVICE);
    EXPECT_EQ(set(1006, text(15, "root.crt")).rc, 0);
}

TEST_F(SimNetwork, FactoryDefaultForgetsEverything) {
    ASSERT_EQ(set(149, cat({u32(1, 5), text(2, "x")})).rc, 0);
    ASSERT_EQ(set(7, user("amy", "Amy")).rc, 0);
    const Answer before = get(149);
    ASSERT_EQ(reset(122).rc, 0);
    EXPECT_NE(get(149).payload, before.payload);
    EXPECT_EQ(get(8).payload, u32(26, 0));
}

#endif  // KVN_HAVE_SIM
