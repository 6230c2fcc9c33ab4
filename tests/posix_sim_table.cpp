// The simulator's command table and settings groups, checked in-process: every row
// is found by its id, every request the library's exports send is taken, the
// default rows of every group fit the group's fields, and numbered entries are
// refused outside the ranges the simulator's README gives.
#if KVN_HAVE_SIM && !KVN_REMOTE_SIM
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "command_table.h"
#include "setting_groups.h"
#include "kvnsdk2.h"
#include "store.h"
#include "terminal.h"

namespace {

using kvnsim::Bytes;
using kvnsim::Cmd;

// The library's command exports: id, request type, export (tests/command_table.txt).
const char kExports[] =
#include "command_table.inc"
    ;

// A terminal in memory, asked directly, without a connection.
struct Bench {
    kvnsim::Store store{""};
    kvnsim::Terminal terminal{store, 0};
    kvnsim::Session session;
    Bench() {
        std::string error;
        EXPECT_TRUE(terminal.load(&error)) << error;
    }
    int32_t status(uint32_t command, uint16_t type, const Bytes& payload = {}) {
        kvnsim::Request rq;
        rq.word = uint32_t(type) << 16 | 2;
        rq.type = type;
        rq.command = command;
        rq.data = payload.data();
        rq.size = uint32_t(payload.size());
        return terminal.handle(session, rq).status;
    }
};

Bytes el(uint8_t tag, const Bytes& v) {
    kvnsim::Out o;
    o.element(tag, v);
    return o.bytes;
}
Bytes u8(uint8_t tag, uint32_t v) { return el(tag, {uint8_t(v)}); }
Bytes u32(uint8_t tag, uint32_t v) { return el(tag, {uint8_t(v), uint8_t(v >> 8), uint8_t(v >> 16), uint8_t(v >> 24)}); }
Bytes box(uint8_t tag, const Bytes& inner) {
    kvnsim::Out o;
    const size_t at = o.open();
    o.bytes.insert(o.bytes.end(), inner.begin(), inner.end());
    o.close(at, tag);
    return o.bytes;
}
Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// Why a group's default rows do not fit its fields, or "" when they do.
std::string misfit(const std::vector<kvnsim::Field>& fields, const std::vector<kvnsim::Preset>& rows) {
    using kvnsim::Kind;
    for (const kvnsim::Preset& row : rows) {
        const std::string at = "row for tag " + std::to_string(row.tag);
        const kvnsim::Field* f = nullptr;
        for (const kvnsim::Field& x : fields)
            if (x.tag == row.tag) f = &x;
        if (f == nullptr) return at + ": no field has that tag";
        if (f->kind == Kind::box) {
            if (row.count == 0) return at + ": a container row without entries";
            if (f->key != 0 && (row.key_first < f->key_min || row.key_first + row.count - 1 > f->key_max))
                return at + ": entries numbered outside the keys the field takes";
            if (row.names_tag != 0 && row.names.size() < row.count) return at + ": fewer names than entries";
            if (std::string inner = misfit(f->inner, row.each); !inner.empty()) return at + ", " + inner;
            continue;
        }
        if (row.count != 0) return at + ": entries for a field that is no container";
        if ((f->kind == Kind::text) != row.is_text) return at + ": a text for a number or a number for a text";
        if (row.is_text && row.text.size() > f->max) return at + ": text longer than the field takes";
        if (f->kind == Kind::exact) return at + ": a preset for a fixed-length field";
        if ((f->kind == Kind::u8 && row.number > 0xFF) || (f->kind == Kind::u16 && row.number > 0xFFFF))
            return at + ": value wider than the field";
    }
    return "";
}

}  // namespace

// The terminal finds a command by a search over the table, which must be in id
// order without repeats; ids between the groups are unknown.
TEST(SimCommandTable, EveryRowIsFoundByItsIdAndOnlyThose) {
    uint32_t previous = 0;
    for (const kvnsim::Command& row : kvnsim::command_table()) {
        EXPECT_GT(kvnsim::id_of(row.id), previous) << "row " << kvnsim::id_of(row.id) << " out of order";
        previous = kvnsim::id_of(row.id);
        EXPECT_EQ(kvnsim::find_command(kvnsim::id_of(row.id)), &row) << kvnsim::id_of(row.id);
        EXPECT_NE(row.handler, nullptr) << kvnsim::id_of(row.id);
        EXPECT_NE(row.types, 0) << kvnsim::id_of(row.id);
    }
    for (uint32_t id : {0u, 2u, 9u, 17u, 100u, 114u, 117u, 132u, 148u, 200u, 300u, 400u, 414u, 506u, 1000u, 1008u, 0xFFFFFFFFu})
        EXPECT_EQ(kvnsim::find_command(id), nullptr) << id;
}

// Whatever the library's exports send (id and request type) is taken.
TEST(SimCommandTable, TakesEveryRequestTheExportsSend) {
    const std::map<std::string, uint16_t> types = {{"set", 1}, {"get", 2}, {"reset", 3}, {"upload", 4}, {"download", 5}};
    size_t rows = 0;
    std::istringstream in(kExports);
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream row(line);
        uint32_t id = 0;
        std::string type, name;
        row >> id >> type >> name;
        const kvnsim::Command* cmd = kvnsim::find_command(id);
        ++rows;
        ASSERT_NE(cmd, nullptr) << name << " sends command " << id;
        EXPECT_TRUE(cmd->types & (1u << types.at(type))) << name << " sends command " << id << " as " << type;
    }
    EXPECT_GT(rows, 200u);  // the loop saw the exports
}

// Every command reaches its handler with each request type it takes, even without
// a payload; the others are "Invalid request type".
TEST(SimCommandTable, EachRequestTypeReachesTheHandlerOrIsRefused) {
    Bench b;
    for (const kvnsim::Command& row : kvnsim::command_table()) {
        const uint32_t id = kvnsim::id_of(row.id);
        for (uint16_t type = 1; type <= 7; ++type) {
            const int32_t rc = b.status(id, type);
            if (row.types & (1u << type)) {
                EXPECT_NE(rc, KVN_E_INVALID_REQUEST_TYPE) << "command " << id << " type " << type;
                EXPECT_NE(rc, KVN_E_COMMAND_NOT_FOUND) << "command " << id << " type " << type;
            } else {
                EXPECT_EQ(rc, KVN_E_INVALID_REQUEST_TYPE) << "command " << id << " type " << type;
            }
        }
    }
}

// A group's defaults are rows of data; a row naming a tag the group has no field
// for, a text for a number, a value too wide or more numbered entries than the
// keys allow would otherwise be answered (or silently dropped) as the default.
TEST(SimSettingsGroups, DefaultRowsFitTheirFields) {
    size_t groups = 0;
    for (const kvnsim::Command& row : kvnsim::command_table()) {
        if (row.group == nullptr) continue;
        ++groups;
        EXPECT_EQ(misfit(row.group->fields, row.group->defaults), "") << "group " << kvnsim::id_of(row.id);
        // The defaults read back through the fields element for element.
        const std::vector<kvnsim::Node> nodes = kvnsim::preset_nodes(*row.group);
        kvnsim::Out o;
        o.nodes(nodes);
        std::vector<kvnsim::Node> back;
        EXPECT_EQ(kvnsim::parse(row.group->fields, o.bytes.data(), o.bytes.size(), &back), 0) << kvnsim::id_of(row.id);
        EXPECT_EQ(back.size(), nodes.size()) << kvnsim::id_of(row.id);
    }
    EXPECT_GT(groups, 40u);  // the loop saw the groups
}

// Numbered entries of the settings groups: the lowest and highest number taken,
// the one past each end "Invalid value received" (the ranges of the README).
TEST(SimSettingsGroups, NumberedEntriesOutsideTheirRangeAreRefused) {
    struct Case {
        const char* what;
        Cmd group;
        std::function<Bytes(uint32_t)> set;  // a set naming entry n
        uint32_t lowest, highest;
    };
    const Case cases[] = {
        {"LED entry", Cmd::Led, [](uint32_t n) { return box(1, u32(3, n)); }, 1, 17},
        {"buzzer entry", Cmd::Buzzer, [](uint32_t n) { return box(1, u32(3, n)); }, 1, 18},
        {"audio entry", Cmd::Audio, [](uint32_t n) { return box(1, u32(3, n)); }, 1, 18},
        {"multi-user group", Cmd::MultiUser, [](uint32_t n) { return box(3, u8(4, n)); }, 0, 2},
        {"biometric schedule day", Cmd::BiometricSchedule, [](uint32_t n) { return box(2, u8(3, n)); }, 0, 6},
        {"door-open schedule day", Cmd::DoorOpenSchedule, [](uint32_t n) { return box(2, u8(3, n)); }, 0, 6},
        {"attendance item", Cmd::TimeAttendance, [](uint32_t n) { return box(1, u8(3, n)); }, 1, 16},
        {"holiday schedule", Cmd::HolidaySchedules, [](uint32_t n) { return box(1, u8(2, n)); }, 0, 63},
        {"holiday", Cmd::HolidaySchedules, [](uint32_t n) { return box(1, u8(2, 0) + box(5, u8(6, n))); }, 0, 49},
        {"access schedule", Cmd::AccessSchedules, [](uint32_t n) { return box(3, u8(4, n)); }, 0, 63},
        {"access schedule day", Cmd::AccessSchedules, [](uint32_t n) { return box(3, u8(4, 0) + box(8, u8(9, n))); }, 0, 6},
    };
    for (const Case& c : cases) {
        Bench b;
        const uint32_t id = kvnsim::id_of(c.group);
        EXPECT_EQ(b.status(id, 1, c.set(c.lowest)), 0) << c.what << " " << c.lowest;
        EXPECT_EQ(b.status(id, 1, c.set(c.highest)), 0) << c.what << " " << c.highest;
        EXPECT_EQ(b.status(id, 1, c.set(c.highest + 1)), KVN_E_INVALID_VALUE_RECEIVED) << c.what << " " << c.highest + 1;
        if (c.lowest > 0)
            EXPECT_EQ(b.status(id, 1, c.set(c.lowest - 1)), KVN_E_INVALID_VALUE_RECEIVED) << c.what << " " << c.lowest - 1;
    }
}

#endif  // KVN_HAVE_SIM && !KVN_REMOTE_SIM
