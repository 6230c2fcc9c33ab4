// Every command export sends the request type and command id of the command table
// (tests/command_table.txt, transcribed by hand), whatever its arguments.
#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <utility>

#include "exports.h"
#include "peer.h"

namespace {

const char kTable[] =
#include "command_table.inc"
    ;

struct Request {
    uint32_t word = 0, command = 0;
    bool empty = false;  // the request carries no payload
    bool operator==(const Request&) const = default;
};

// export -> its request; a row ending in "-" sends no payload.
std::map<std::string, Request> table() {
    const std::map<std::string, uint32_t> types = {{"set", 1}, {"get", 2}, {"reset", 3}, {"upload", 4}, {"download", 5}};
    std::map<std::string, Request> rows;
    std::istringstream in(kTable);
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream row(line);
        uint32_t id = 0;
        std::string type, name, payload;
        row >> id >> type >> name >> payload;
        rows[name] = {KVN_REQUEST_WORD(types.at(type)), id, payload == "-"};
    }
    return rows;
}

}  // namespace

TEST(Commands, EveryExportSendsTheTablesRequestTypeAndCommandId) {
    const auto rows = table();
    std::mutex mu;
    std::vector<Request> seen;
    kvntest::LoopbackPeer peer([&](kvntest::sock_t s) {
        for (kvntest::Bytes r; (r = kvntest::read_request(s)).size() >= 28;) {
            const std::scoped_lock lock(mu);
            seen.push_back({kvntest::get_le32(&r[8]), kvntest::get_le32(&r[16]), r.size() == 28});
            kvntest::write_bytes(s, kvntest::response(0));
        }
    });
    auto count = [&] { const std::scoped_lock lock(mu); return seen.size(); };
    kvntest::Args args;
    kvn_device_conn c = peer.conn();
    ASSERT_EQ(kvn_open_device_conn(&c), 0);
    args.conn = &c;
    for (const auto& e : kvntest::export_calls()) {
        const auto row = rows.find(e.name);
        const size_t before = count();
        args.clear();
        if (const kvntest::Setup setup = kvntest::setup_for(e.name)) setup(args);
        e.call(args);
        // A call that reads no answer returns before its request has been read.
        const bool sent = kvntest::wait_until([&] { return count() > before; }, std::chrono::milliseconds(1000));
        if (row == rows.end() || !sent) {
            ADD_FAILURE() << e.name << (sent ? " is not in the command table" : " sent nothing");
            continue;
        }
        const Request first = [&] { const std::scoped_lock lock(mu); return seen[before]; }();
        Request want = row->second;
        want.empty = want.empty || first.empty;  // only a "-" row insists on an empty request
        EXPECT_TRUE(first == want) << e.name << ": word " << std::hex << first.word << " command " << std::dec
                                   << first.command << (first.empty ? " without" : " with") << " a payload";
    }
    kvn_close_device_conn(&c);
    EXPECT_GE(kvntest::export_calls().size(), 240u);  // every command export
}

// The request each export's comment states (read into the header's description)
// against the table: the reference cannot promise another command than the one sent.
TEST(Commands, EveryExportsCommentStatesTheTablesRequest) {
    const std::map<std::string, uint32_t> types = {{"set", 1}, {"get", 2}, {"reset", 3}, {"upload", 4}, {"download", 5}};
    struct Described {
        const char* name;
        const char* type;
        uint32_t command;
    };
    static const Described described[] = {
#include "described_requests.inc"
    };
    const auto rows = table();
    for (const auto& d : described) {
        const auto row = rows.find(d.name);
        if (row == rows.end()) {
            ADD_FAILURE() << d.name << " is described but not in the command table";
            continue;
        }
        EXPECT_EQ(KVN_REQUEST_WORD(types.at(d.type)), row->second.word) << d.name;
        EXPECT_EQ(d.command, row->second.command) << d.name;
    }
    EXPECT_EQ(std::size(described), kvntest::export_calls().size());
}
