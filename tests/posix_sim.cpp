// The simulator's own features, which no library test reaches: state that survives a
// kill -9, a serial line that finds the next frame after noise, fault controls that
// apply to the connections opened after them, and an answer to every command id
// whatever its payload. The terminal behaviour itself is shown through the library in
// test_e2e_settings.cpp.
#if KVN_HAVE_SIM
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "e2e.h"
#include "kvnsdk2.h"
#include "kvnsim.h"
#include "peer.h"

using namespace kvntest;

namespace {

// One request with a hand-made payload, through the library's frame functions: status and answer.
struct Answer { int32_t rc; Bytes payload; };
Answer exchange(kvn_device_conn* c, uint16_t type, uint32_t command, const Bytes& payload = {}) {
    const uint32_t word = KVN_REQUEST_WORD(type);
    Answer a{kvn_send_command(c, &word, command, payload.empty() ? nullptr : payload.data(), uint32_t(payload.size())),
             Bytes(1 << 20)};
    uint32_t length = static_cast<uint32_t>(a.payload.size());
    if (a.rc == 0) a.rc = kvn_receive_response(c, a.payload.data(), &length);
    a.payload.resize(a.rc == 0 ? length : 0);
    return a;
}

// A simulator in a child process with its state in a directory of its own, killed and
// reaped, the directory removed, whatever becomes of the test.
struct Child {
    std::string dir = (std::filesystem::temp_directory_path() / ("kvnsim-" + std::to_string(::getpid()))).string();
    pid_t pid = -1;
    uint16_t port = 0;
    Child() {
        std::filesystem::remove_all(dir);
        int fds[2];
        if (::pipe(fds) != 0) return;
        if ((pid = ::fork()) == 0) {
            kvnsim::Simulator sim({.state_dir = dir});
            if (!sim.start()) ::_exit(1);
            const uint16_t p = sim.port();
            (void)!::write(fds[1], &p, sizeof p);
            for (;;) ::pause();
        }
        ::close(fds[1]);
        if (pid > 0 && ::read(fds[0], &port, sizeof port) != static_cast<ssize_t>(sizeof port)) port = 0;
        ::close(fds[0]);
    }
    void kill9() {
        if (pid > 0) ::kill(pid, SIGKILL), ::waitpid(pid, nullptr, 0);
        pid = -1;
    }
    ~Child() {
        kill9();
        std::filesystem::remove_all(dir);
    }
};

}  // namespace

// Whatever was answered before a kill -9 is there after a restart; a temporary file
// that a write cut short would leave is cleared away.
TEST(SimState, NothingAnsweredIsLostToKill9) {
    Child child;
    ASSERT_NE(child.port, 0) << "the simulator did not start";
    kvn_device_conn c = tcp_conn(child.port);
    ASSERT_EQ(kvn_open_device_conn(&c), 0);
    auto lcd = kvn_lcd_setting{0, "kept"};
    for (lcd.value = 1; lcd.value <= 50; ++lcd.value) ASSERT_EQ(kvn_set_lcd_settings(&c, &lcd), 0);
    for (int u = 0; u < 20; ++u)  // user records: tag 1 holding the user id under tag 2
        ASSERT_EQ(exchange(&c, KVN_REQ_SET, 7, box(1, text(2, "u" + std::to_string(u)))).rc, 0);
    ASSERT_EQ(kvn_open_door_for_time(&c, 3, 0), 0);
    child.kill9();
    kvn_close_device_conn(&c);
    const std::string stray = child.dir + "/settings/149.tmp.999.0";
    std::ofstream(stray) << "torn";

    Session s({.state_dir = child.dir});
    EXPECT_FALSE(std::filesystem::exists(stray));
    kvn_lcd_setting read{};
    ASSERT_EQ(kvn_get_lcd_settings(s.c, &read), 0);
    EXPECT_EQ(read.value, 50u);
    EXPECT_STREQ(read.short_text, "kept");
    EXPECT_BYTES(exchange(s.c, KVN_REQ_GET, 7, text(2, "u19")).payload, box(1, text(2, "u19")));
    EXPECT_BYTES(exchange(s.c, KVN_REQ_GET, 8).payload, u32(26, 20));   // users
    EXPECT_BYTES(exchange(s.c, KVN_REQ_GET, 405).payload, u32(6, 1));   // journal entries: the door action
}

// On a serial line there is no connection to drop: after bytes that are not a frame
// (a partial sync word among them) the terminal finds the next sync word and answers.
TEST(SimSerial, LineResynchronisesOnTheNextSyncWord) {
    Session s({.serial = true});
    const uint8_t noise[] = {0x00, 0xdd, 0xcc, 0x17, 0xaa, 0xdd, 0xcc, 0xbb};
    ASSERT_EQ(kvn_send_data(&s.conn.link, noise, sizeof noise), 0);
    ShortWaits waits(5000);
    EXPECT_EQ(kvn_send_reset_command(s.c, 103), 0);
}

// Faults set on a running simulator apply to the connections accepted after them.
TEST(SimFaults, ApplyToConnectionsOpenedAfterThem) {
    Session s;
    ShortWaits waits(300);
    kvn_device_conn after = s.conn;
    ASSERT_EQ(kvn_send_reset_command(s.c, 103), 0);  // accepted by now
    s.sim->set_faults({.bad_crc = true});
    EXPECT_TRUE(s.sim->faults().bad_crc);
    ASSERT_EQ(kvn_open_device_conn(&after), 0);
    EXPECT_EQ(kvn_send_reset_command(s.c, 103), 0);
    EXPECT_EQ(kvn_send_reset_command(&after, 103), KVN_E_CRC_MISMATCH);
    kvn_close_device_conn(&after);
    EXPECT_EQ(s.sim->connections(), 2u);
}

// Random payloads, well-formed or not, to every command id under every request type:
// each gets an answer, and the terminal keeps serving.
TEST(SimRobustness, EveryCommandAnswersWhateverItIsSent) {
    Session s;
    s.sim->present_card({1, 2, 3, 4});
    ShortWaits waits(5000);
    uint32_t x = 2024;
    auto next = [&] { return (x = x * 1664525u + 1013904223u) >> 8; };
    auto noise = [&](size_t n) { Bytes v(n); for (auto& b : v) b = static_cast<uint8_t>(next()); return v; };
    std::function<Bytes(int)> elements = [&](int depth) {  // containers of the same inside some
        static const size_t widths[] = {0, 1, 2, 4, 4, 4, 16, 17, 64, 200};
        Bytes p;
        for (uint32_t i = next() % 6; i > 0; --i) {
            const auto tag = static_cast<uint8_t>(next() % 48);
            p = cat({p, depth < 2 && next() % 4 == 0 ? box(tag, elements(depth + 1)) : el(tag, noise(widths[next() % 10]))});
        }
        return p;
    };
    std::vector<uint32_t> commands = {0, 2, 9, 999, 0xFFFFFFFF};
    for (uint32_t id = 1; id <= 1007; ++id) commands.push_back(id);
    for (uint32_t command : commands) {
        if (command == 121 || command == 131) continue;  // reboots drop the connection on purpose
        for (uint16_t type = 1; type <= 5; ++type) {  // plain noise now and then
            const int32_t rc = exchange(s.c, type, command, command % 7 == type ? noise(next() % 300) : elements(0)).rc;
            ASSERT_TRUE(rc != KVN_E_READ_TIMEOUT && rc != KVN_E_WRITE_TIMEOUT) << "no answer to " << command << "/" << type;
        }
    }
    auto lcd = kvn_lcd_setting{};
    EXPECT_EQ(kvn_get_lcd_settings(s.c, &lcd), 0);
}
#endif  // KVN_HAVE_SIM
