// The Windows build against the Linux simulated terminal: each test gets a fresh
// kvn-sim of its own on the Linux side (kvntest::RemoteSimulator, win32_terminal.h)
// and reaches it over loopback TCP through Windows Sockets, or over a COM port
// through the Win32 serial path.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "kvnsdk2.h"
#include "win32_terminal.h"

using kvntest::RemoteSimulator;

namespace {

// Without a simulator the tests skip, unless the run asks for one
// (scripts/test-windows.sh does when the source tree has the simulator).
#define REQUIRE_SIMULATOR()                                                                              \
    do {                                                                                                 \
        if (!RemoteSimulator::available()) {                                                             \
            if (std::getenv("KVN_TEST_REQUIRE_SIM") != nullptr) FAIL() << "no Linux kvn-sim was started"; \
            GTEST_SKIP() << "no Linux kvn-sim: build it (preset default) and run through ctest";         \
        }                                                                                                \
    } while (0)

kvn_device_conn tcp_conn(const RemoteSimulator& sim) {
    kvn_device_conn c;
    std::memset(&c, 0, sizeof c);
    c.ip_address = sim.ip().c_str();
    c.port = sim.port();
    c.link.conn_type = KVN_CONN_TCP;
    return c;
}

kvn_lcd_setting lcd(uint32_t value, const char* text) {
    kvn_lcd_setting s;
    std::memset(&s, 0, sizeof s);
    s.value = value;
    std::strncpy(s.short_text, text, sizeof s.short_text - 1);
    return s;
}

bool same(const kvn_lcd_setting& a, const kvn_lcd_setting& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// Set, read back, reset, read again: the terminal keeps what was written until reset.
void lcd_round_trip(kvn_device_conn& c, const kvn_lcd_setting& written) {
    kvn_lcd_setting read;
    std::memset(&read, 0, sizeof read);
    ASSERT_EQ(kvn_set_lcd_settings(&c, &written), 0);
    ASSERT_EQ(kvn_get_lcd_settings(&c, &read), 0);
    EXPECT_TRUE(same(read, written)) << "read back: " << read.value << " \"" << read.short_text << "\"";
    ASSERT_EQ(kvn_reset_lcd_settings(&c), 0);
    std::memset(&read, 0, sizeof read);
    ASSERT_EQ(kvn_get_lcd_settings(&c, &read), 0);
    EXPECT_FALSE(same(read, written)) << "the reset kept the written values";
}

struct ShortWaits {
    int32_t r, w, c;
    explicit ShortWaits(int32_t ms) {
        kvn_ext_get_timeouts(&r, &w, &c);
        kvn_ext_set_timeouts(ms, ms, -1);
    }
    ~ShortWaits() { kvn_ext_set_timeouts(r, w, c); }
};

}  // namespace

TEST(Win32Simulator, SettingsRoundTripOverTcp) {
    REQUIRE_SIMULATOR();
    RemoteSimulator sim;
    std::string error;
    ASSERT_TRUE(sim.start(&error)) << error;
    kvn_device_conn c = tcp_conn(sim);
    ASSERT_EQ(kvn_open_device_conn(&c), 0);
    lcd_round_trip(c, lcd(42, "Welcome"));

    // A second connection sees what the first one stored: one terminal behind both.
    const kvn_lcd_setting stored = lcd(7, "Door 3");
    ASSERT_EQ(kvn_set_lcd_settings(&c, &stored), 0);
    kvn_device_conn other = tcp_conn(sim);
    ASSERT_EQ(kvn_open_device_conn(&other), 0);
    kvn_lcd_setting read;
    std::memset(&read, 0, sizeof read);
    ASSERT_EQ(kvn_get_lcd_settings(&other, &read), 0);
    EXPECT_TRUE(same(read, stored));
    EXPECT_EQ(kvn_close_device_conn(&other), 0);
    EXPECT_EQ(kvn_close_device_conn(&c), 0);

    // A terminal of its own for every simulator: a fresh one has its defaults.
    RemoteSimulator fresh;
    ASSERT_TRUE(fresh.start(&error)) << error;
    kvn_device_conn f = tcp_conn(fresh);
    ASSERT_EQ(kvn_open_device_conn(&f), 0);
    std::memset(&read, 0, sizeof read);
    ASSERT_EQ(kvn_get_lcd_settings(&f, &read), 0);
    EXPECT_FALSE(same(read, stored));
    EXPECT_EQ(kvn_close_device_conn(&f), 0);
}

TEST(Win32Simulator, SettingsRoundTripOverSerial) {
    REQUIRE_SIMULATOR();
    RemoteSimulator sim("--serial");
    std::string error;
    ASSERT_TRUE(sim.start(&error)) << error;
    kvn_device_conn c;
    std::memset(&c, 0, sizeof c);
    c.serial_port = sim.serial_port().c_str();
    c.baud_rate = 115200;
    c.link.conn_type = KVN_CONN_SERIAL;
    ASSERT_EQ(kvn_open_device_conn(&c), 0);
    lcd_round_trip(c, lcd(9, "Serial line"));
    EXPECT_EQ(kvn_close_device_conn(&c), 0);
}

// The terminal's misbehaviour reaches the caller as the matching status code.
TEST(Win32Simulator, FaultsBecomeStatusCodes) {
    REQUIRE_SIMULATOR();
    ShortWaits waits(500);
    const struct {
        const char* options;
        int32_t rc;
    } cases[] = {
        {"", 0},
        {"--byte-by-byte", 0},  // one byte per write: reads gather them
        {"--no-answer", -2},    // the read wait runs out
        {"--close-after 10", -2},
        {"--bad-sync", -12},
        {"--bad-crc", -6},
    };
    for (const auto& k : cases) {
        RemoteSimulator sim(k.options);
        std::string error;
        ASSERT_TRUE(sim.start(&error)) << k.options << ": " << error;
        kvn_device_conn c = tcp_conn(sim);
        ASSERT_EQ(kvn_open_device_conn(&c), 0) << k.options;
        kvn_lcd_setting read;
        std::memset(&read, 0, sizeof read);
        EXPECT_EQ(kvn_get_lcd_settings(&c, &read), k.rc) << k.options;
        EXPECT_EQ(kvn_close_device_conn(&c), 0) << k.options;
    }
}
