// kvnctl against the in-process simulator: every settings group through its JSON form,
// the JSON reader's refusals, every command group through the program, and `logs sync`
// killed at random points.
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

// What the program printed and how it ended.
struct Outcome {
    int code = -1;
    std::string out, err;
};

std::string slurp(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), {});
}

// Runs kvnctl ARGS with INPUT on stdin; DIR holds the input and the captured output.
Outcome run_kvnctl(const std::string& dir, const std::string& args, const std::string& input) {
    const std::string in = dir + "/in", out = dir + "/out", err = dir + "/err";
    std::ofstream(in, std::ios::binary) << input;
    const std::string cmd = std::string(KVNCTL_PROGRAM) + " " + args + " < " + in + " > " + out + " 2> " + err;
    const int status = std::system(cmd.c_str());
    Outcome o;
    if (WIFEXITED(status)) o.code = WEXITSTATUS(status);
    o.out = slurp(out);
    o.err = slurp(err);
    for (const auto& f : {in, out, err}) unlink(f.c_str());
    return o;
}

std::string replace_all(std::string s, const std::string& from, const std::string& to) {
    for (size_t at = 0; (at = s.find(from, at)) != std::string::npos; at += to.size()) s.replace(at, from.size(), to);
    return s;
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
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args);
        const Outcome o = run_kvnctl(dir, c.args, c.input);
        EXPECT_EQ(o.code, c.code);
        EXPECT_NE(o.err.find(c.message), std::string::npos) << o.err;
    }
    rmdir(dir);
}

// Every command group through the program, in order against one simulator state where
// a step needs an earlier one's work: the exit code, and a piece of what it printed.
// In ARGS, @ stands for --state DIR/st and DIR for the test's directory.
TEST(KvnctlProgram, EveryCommandGroupAnswers) {
    struct Case {
        const char* args;
        const char* input;
        int code;
        const char* out;
    } cases[] = {
        {"groups", "", 0, "\naccess-schedule-list        get\n"},
        {"--json status -5", "", 0, "{\"code\":-5,\"message\":\"Connection failed\"}\n"},
        {"info", "", 0, "terminal sim: firmware 1.2.21.0, serial SIM0000000001, 0 users"},
        {"raw 201 get", "", 0, "6b766e2d73696d"},  // the device name in the answer
        {"--json raw 201 get zz", "", 3, "{\"error\":\"payload: not hex\",\"exit\":3}"},
        {"@ set dac", "{\"dac_value_2\": 9}", 0, ""},
        {"@ --json get dac", "", 0, "\"dac_value_2\":9"},
        {"@ reset access-schedule --index 3", "", 0, ""},
        {"@ reset holiday-schedule", "", 0, ""},
        {"@ --json get access-schedule-list", "", 0, "{"},
        {"@ time set 1000000", "", 0, ""},
        {"@ time get", "", 0, "1970-01-12T13:4"},  // the clock runs on from there
        {"@ time set 4294967296", "", 3, ""},
        {"@ door open 3", "", 0, ""},
        {"@ door close", "", 0, ""},
        {"@ door clear-alarm", "", 0, ""},
        {"@ users put", "{\"user_id\": \"u1\"}", 0, ""},
        {"@ users list", "", 0, "u1\n"},
        {"@ --json users count", "", 0, "{\"users\":1,\"templates\":0}\n"},
        {"@ enroll u1 --finger 2", "", 0, "enrolled u1, finger 2, 1 templates held\n"},
        {"@ enroll u1 --finger 12", "", 2, ""},
        {"@ --finger u1:2 identify", "", 0, "u1 (finger 2, score "},
        {"@ --finger u1:2 verify u1", "", 0, "verified u1 (score "},
        {"@ --finger u1:3 verify u1", "", 5, ""},
        {"@ --json users get u1", "", 0, "\"user_id\":\"u1\""},
        {"@ users delete u1", "", 0, ""},
        {"@ users get u1", "", 5, ""},
        {"--state DIR/logs --prefill-logs 20 logs mark 1 2 3", "", 0, ""},
        {"--state DIR/logs logs count", "", 0, "20 entries, 17 unread, 3 read\n"},
        {"--state DIR/logs --json logs pull --unread --limit 1", "", 0, "[{\"log_id\":4,"},
        {"--state DIR/logs logs sync --db DIR/logs.db", "", 0, "sim: 17 read, 17 new in DIR/logs.db\n"},
        {"--state DIR/logs --json logs sync --db DIR/logs.db", "", 0, "[{\"terminal\":\"sim\",\"read\":0,\"inserted\":0}]"},
        {"@ file upload DIR/f.txt", "", 0, ""},
        {"@ file download f.txt DIR/back.txt", "", 0, ""},
        {"@ file download nothing.txt DIR/none.txt", "", 5, ""},
        {"@ file delete f.txt", "", 0, ""},
        {"@ file delete f.txt", "", 5, ""},
        {"@ firmware upgrade DIR/f.txt", "", 0, ""},
        {"--card 0a0b cards read", "", 0, "\"serial\": \"0a0b\""},
        {"cards read", "", 5, ""},
        {"@ cards revoke 0102", "", 0, ""},
        {"@ --json get revoked-smart-card-list", "", 0, "\"entries\":[\"0102\"]"},
        {"@ cards unrevoke 0102", "", 0, ""},
        {"@ cards revoke zz", "", 3, ""},
        {"@ wiegand upload", "{\"format_name\": \"x\"}", 0, "format 1\n"},
        {"@ --json get wiegand-format-list", "", 0, "\"format_ids\":\"01\""},
        {"@ wiegand delete 300", "", 2, ""},
        {"--host 127.0.0.1:1 tour", "", 2, ""},
        {"--json tour --db DIR/tour.db", "", 0, "\"file\":{\"name\":\"tour-firmware.bin\",\"bytes\":8388608}"},
        // Removed: each did what a settings group does.
        {"schedules names", "", 2, ""},
        {"schedules reset access 1", "", 2, ""},
        {"cards revoked", "", 2, ""},
        {"wiegand list", "", 2, ""},
    };
    char dir[] = "/tmp/kvnctl-all-XXXXXX";
    ASSERT_NE(mkdtemp(dir), nullptr);
    const std::string d = dir;
    std::ofstream(d + "/f.txt") << "hello";
    for (const auto& c : cases) {
        const std::string args = replace_all(replace_all(c.args, "@", "--state DIR/st"), "DIR", d);
        SCOPED_TRACE(args);
        const Outcome o = run_kvnctl(d, args, c.input);
        EXPECT_EQ(o.code, c.code) << o.err;
        EXPECT_NE(o.out.find(replace_all(c.out, "DIR", d)), std::string::npos) << o.out;
        if (c.code != 0 && c.code != 2) EXPECT_EQ(o.err.rfind("kvnctl: ", 0), 0u) << o.err;
    }
    EXPECT_EQ(slurp(d + "/back.txt"), "hello");
    EXPECT_NE(access((d + "/none.txt").c_str(), F_OK), 0);  // a failed download leaves nothing
    EXPECT_EQ(std::system(("rm -rf " + d).c_str()), 0);
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
