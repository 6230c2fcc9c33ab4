// kvnctl against the in-process simulator: every settings group through its JSON form,
// the JSON reader's refusals, and `logs sync` killed at random points.
#if defined(KVN_HAVE_KVNCTL)
#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <thread>

#include "e2e.h"
#include "groups.h"

namespace {

using kvnctl::json;

struct Kvnctl : ::testing::Test {
    kvnsim::Simulator sim;
    kvn_device_conn conn{};
    void SetUp() override {
        ASSERT_TRUE(sim.start());
        conn.ip_address = "127.0.0.1";
        conn.port = sim.port();
        conn.link.conn_type = KVN_CONN_TCP;
        ASSERT_EQ(kvn_open_device_conn(&conn), 0);
    }
    void TearDown() override { kvn_close_device_conn(&conn); }
};

// JSON -> set -> get -> JSON: what a get answers sets back unchanged, and values that
// differ from the defaults come back as written.
TEST_F(Kvnctl, EverySettingsGroupSurvivesItsJsonForm) {
    const std::map<std::string, json> changes = {
        {"dac", {{"dac_value_3", 7}, {"dac_value_2", 9}}},
        {"ethernet", {{"ip_address", "10.1.2.3"}, {"port", 6006}}},
        {"job-code-list", {{"codes", {{{"id", 4}, {"name", "night"}}, {{"id", 9}, {"name", "day"}}}}}},
        {"door-open-schedule", {{"value", 1}, {"days", {{{"slots", "0102030405060708"}}}}}},
        {"wiegand-pulse", {{"attr_t07", 3}, {"attr_t08", 500}}},
        {"pacs", {{"value", 12}}},
        {"voip", {{"text_2", "sip.example"}, {"value_7", 5070}}},
    };
    size_t changed = 0;
    for (const auto& g : kvnctl::groups()) {
        if (!g.set) continue;
        SCOPED_TRACE(g.name);
        json before;
        ASSERT_EQ(g.get(&conn, before), 0);
        ASSERT_EQ(g.set(&conn, before), 0);
        json after;
        ASSERT_EQ(g.get(&conn, after), 0);
        EXPECT_EQ(after, before);
        if (auto c = changes.find(g.name); c != changes.end()) {
            json wanted = before;
            wanted.merge_patch(c->second);
            ASSERT_EQ(g.set(&conn, wanted), 0);
            ASSERT_EQ(g.get(&conn, after), 0);
            EXPECT_EQ(after, wanted);
            ++changed;
        }
    }
    EXPECT_EQ(changed, changes.size());
}

TEST(KvnctlJson, RefusesWhatDoesNotFitTheRecord) {
    struct Case {
        json in;
        const char* message;
    } cases[] = {
        {{{"bogus", 1}}, "dac: unknown field \"bogus\""},
        {{{"dac_value_1", 256}}, "dac.dac_value_1: 256 is out of range"},
        {{{"dac_value_2", -1}}, "dac.dac_value_2: -1 is out of range"},
        {{{"door_open_time", "5"}}, "dac.door_open_time: an integer is expected"},
        {json::array(), "dac: an object is expected"},
    };
    for (const auto& c : cases) {
        kvn_dac_setting d{};
        try {
            kvnctl::from_json(c.in, d, "dac");
            ADD_FAILURE() << c.in.dump();
        } catch (const kvnctl::BadJson& e) {
            EXPECT_STREQ(e.what(), c.message);
        }
    }
    kvn_wiegand_format f{};
    const std::pair<json, const char*> more[] = {
        {{{"format_name", std::string(52, 'x')}}, "f.format_name: longer than 51 bytes"},
        {{{"mask_t06", "0g"}}, "f.mask_t06: not a hex digit"},
        {{{"mask_t06", "abc"}}, "f.mask_t06: an even number of hex digits, at most 128 is expected"},
        {{{"parity_masks_t24", json::array({"", "", "", "", ""})}}, "f.parity_masks_t24: more than 4 elements"},
        {{{"parity_masks_t24", json::array({"", "ff"})}, {"wiegand_type", 2}}, nullptr},
    };
    for (const auto& [in, message] : more) {
        try {
            kvnctl::from_json(in, f, "f");
            EXPECT_EQ(message, nullptr) << in.dump();
        } catch (const kvnctl::BadJson& e) {
            EXPECT_STREQ(e.what(), message ? message : "");
        }
    }
}

// The program's answer to bad input: the exit code and the message naming what was wrong.
TEST(KvnctlProgram, BadInputGetsItsExitCodeAndMessage) {
    struct Case {
        const char* args;
        const char* input;
        int code;
        const char* message;
    } cases[] = {
        {"get nothing", "", 2, "unknown group \"nothing\""},
        {"set dac", "{\"dac_value_1\": 300}", 3, "dac.dac_value_1: 300 is out of range"},
        {"set dac", "not json", 3, "stdin: "},
        {"set device-info", "{}", 2, "device-info is read only"},
        {"set dac /nonexistent.json", "", 3, "/nonexistent.json: cannot be read"},
        {"--host 127.0.0.1:1 info", "", 4, "Connection failed (-5)"},
        {"users get nobody", "", 5, "user nobody: "},
        {"logs sync --db /nonexistent/logs.db", "", 6, "unable to open database file"},
    };
    char dir[] = "/tmp/kvnctl-bad-XXXXXX";
    ASSERT_NE(mkdtemp(dir), nullptr);
    const std::string in = std::string(dir) + "/in", err = std::string(dir) + "/err";
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args);
        FILE* f = fopen(in.c_str(), "w");
        ASSERT_NE(f, nullptr);
        fputs(c.input, f);
        fclose(f);
        const std::string cmd = std::string(KVNCTL_PROGRAM) + " " + c.args + " < " + in + " > /dev/null 2> " + err;
        const int status = std::system(cmd.c_str());
        ASSERT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), c.code);
        std::ifstream e(err);
        const std::string text((std::istreambuf_iterator<char>(e)), {});
        EXPECT_NE(text.find(c.message), std::string::npos) << text;
    }
    unlink(in.c_str());
    unlink(err.c_str());
    rmdir(dir);
}

int64_t query_int(sqlite3* db, const char* sql) {
    sqlite3_stmt* s = nullptr;
    int64_t v = -1;
    if (sqlite3_prepare_v2(db, sql, -1, &s, nullptr) == SQLITE_OK && sqlite3_step(s) == SQLITE_ROW)
        v = sqlite3_column_int64(s, 0);
    sqlite3_finalize(s);
    return v;
}

// `logs sync` killed with SIGKILL at random points, then run to the end: every entry of the
// journal is in the database once and none is left unread.
TEST(KvnctlSync, KilledAtRandomPointsLosesAndDuplicatesNothing) {
    kvnsim::Options o;
    o.prefill_logs = 10000;
    o.faults.latency_ms = 3;  // answers take a while, so kills land mid-exchange as well as between
    kvnsim::Simulator sim(o);
    ASSERT_TRUE(sim.start());
    const std::string host = "127.0.0.1:" + std::to_string(sim.port());
    char dir[] = "/tmp/kvnctl-sync-XXXXXX";
    ASSERT_NE(mkdtemp(dir), nullptr);
    const std::string db = std::string(dir) + "/logs.db";
    auto spawn = [&] {
        const pid_t pid = fork();
        if (pid == 0) {
            const int null = open("/dev/null", O_WRONLY);
            dup2(null, 1);
            execl(KVNCTL_PROGRAM, "kvnctl", "--host", host.c_str(), "logs", "sync", "--db", db.c_str(),
                  static_cast<char*>(nullptr));
            _exit(127);
        }
        return pid;
    };
    std::mt19937 rng(std::random_device{}());
    std::uniform_int_distribution<int> delay_us(0, 40000);
    int kills = 0;
    int rounds = 0;
    for (; rounds < 300 && kills < 25; ++rounds) {
        const pid_t pid = spawn();
        ASSERT_GT(pid, 0);
        std::this_thread::sleep_for(std::chrono::microseconds(delay_us(rng)));
        kill(pid, SIGKILL);
        int status = 0;
        ASSERT_EQ(waitpid(pid, &status, 0), pid);
        if (WIFSIGNALED(status)) ++kills;
        else ASSERT_EQ(WEXITSTATUS(status), 0);
    }
    EXPECT_GE(kills, 20);
    sqlite3* h = nullptr;
    ASSERT_EQ(sqlite3_open(db.c_str(), &h), SQLITE_OK);
    std::printf("[   INFO   ] %d kills in %d runs; %lld rows stored before the last run\n", kills, rounds,
                static_cast<long long>(query_int(h, "SELECT count(*) FROM transaction_log")));
    int status = 0;
    const pid_t last = spawn();
    ASSERT_EQ(waitpid(last, &status, 0), last);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);

    EXPECT_EQ(query_int(h, "SELECT count(*) FROM transaction_log"), 10000);
    EXPECT_EQ(query_int(h, "SELECT count(DISTINCT log_id) FROM transaction_log"), 10000);
    EXPECT_EQ(query_int(h, "SELECT max(log_id) - min(log_id) + 1 FROM transaction_log"), 10000);
    sqlite3_close(h);
    kvn_device_conn conn{};
    conn.ip_address = "127.0.0.1";
    conn.port = sim.port();
    conn.link.conn_type = KVN_CONN_TCP;
    ASSERT_EQ(kvn_open_device_conn(&conn), 0);
    uint32_t unread = 1, total = 0;
    EXPECT_EQ(kvn_get_transaction_log_unread_count(&conn, &unread), 0);
    EXPECT_EQ(kvn_get_transaction_log_total_count(&conn, &total), 0);
    kvn_close_device_conn(&conn);
    EXPECT_EQ(unread, 0u);
    EXPECT_EQ(total, 10000u);
    for (const char* f : {"/logs.db", "/logs.db-wal", "/logs.db-shm"}) unlink((dir + std::string(f)).c_str());
    rmdir(dir);
}

}  // namespace
#endif
