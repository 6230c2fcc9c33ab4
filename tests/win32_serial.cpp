// The Win32 serial transport against a real communication port: under Wine, a
// pseudo-terminal whose Linux side answers request frames (see win32_terminal.h).
#include <winsock2.h>
#include <windows.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "kvnsdk2.h"
#include "peer.h"
#include "win32_terminal.h"

using kvntest::Bytes;
using kvntest::serial_conn;

namespace {

// Each test that talks to the far end has a port of its own (0 or 1), so that tests
// running in parallel processes never share one.
std::wstring served_port(size_t which) {
    const kvntest::TerminalConfig cfg = kvntest::terminal_config();
    return cfg.serial.size() > which ? cfg.serial[which] : std::wstring();
}

#define REQUIRE_PORT(var, name)  \
    const std::wstring var = name; \
    if (var.empty()) KVN_SKIP_WITHOUT_TERMINAL()

// Whether `h` is an open handle of this process.
bool handle_open(kvn_handle_t h) {
    DWORD flags = 0;
    return h != INVALID_HANDLE_VALUE && h != nullptr && GetHandleInformation(h, &flags);
}

// All five port timeouts are zero: reads and writes block until done.
bool timeouts_zero(kvn_handle_t h) {
    COMMTIMEOUTS t;
    return GetCommTimeouts(h, &t) && (t.ReadIntervalTimeout | t.ReadTotalTimeoutMultiplier | t.ReadTotalTimeoutConstant |
                                      t.WriteTotalTimeoutMultiplier | t.WriteTotalTimeoutConstant) == 0;
}

struct Answer { int32_t rc = 99; Bytes payload; };

Answer exchange(kvn_device_conn& c, uint32_t command, const Bytes& payload) {
    Answer a;
    const uint32_t word = KVN_REQUEST_WORD(KVN_REQ_GET);
    a.rc = kvn_send_command(&c, &word, command, payload.empty() ? nullptr : payload.data(),
                            static_cast<uint32_t>(payload.size()));
    if (a.rc != 0) return a;
    std::vector<uint8_t> buf(payload.size() + 64);
    uint32_t len = static_cast<uint32_t>(buf.size());
    a.rc = kvn_receive_response(&c, buf.data(), &len);
    if (a.rc == 0) a.payload.assign(buf.begin(), buf.begin() + len);
    return a;
}

}  // namespace

TEST(Win32Serial, OpenSetsEightDataBitsNoParityOneStopBitAtTheRequestedSpeed) {
    REQUIRE_PORT(name, served_port(0));
    // The far end starts each port at 9600 7E2; every open must leave it at <speed> 8N1.
    for (const uint32_t baud : {115200u, 19200u}) {
        SCOPED_TRACE(baud);
        kvn_device_conn c = serial_conn(name, baud);
        ASSERT_EQ(kvn_open_device_conn(&c), 0);
        // What Windows reports back for the open handle...
        DCB dcb{};
        dcb.DCBlength = sizeof dcb;
        ASSERT_TRUE(GetCommState(c.link.serial_handle, &dcb));
        EXPECT_EQ(dcb.BaudRate, baud);
        EXPECT_EQ((Bytes{dcb.ByteSize, dcb.Parity, dcb.StopBits}), (Bytes{8, NOPARITY, ONESTOPBIT}));
        EXPECT_TRUE(timeouts_zero(c.link.serial_handle));
        // ...and what the line itself carries, as seen from the far end: speed, data
        // bits, parity, stop bits, and a raw line (no line editing, echo or signals).
        const Answer a = exchange(c, 1, {});
        ASSERT_EQ(a.rc, 0);
        ASSERT_EQ(a.payload.size(), 8u);
        EXPECT_EQ(kvntest::get_le32(a.payload.data()), baud);
        EXPECT_EQ((Bytes{a.payload[4], a.payload[5], a.payload[6], uint8_t(a.payload[7] & 1)}), (Bytes{8, 0, 1, 1}));
        EXPECT_EQ(kvn_close_device_conn(&c), 0);
    }
}

TEST(Win32Serial, EveryByteValueCrossesTheLineBothWays) {
    REQUIRE_PORT(name, served_port(0));
    kvn_device_conn c = serial_conn(name, 115200);
    ASSERT_EQ(kvn_open_device_conn(&c), 0);
    // All 256 values, including XON/XOFF, CR/LF, ^C, ^Z and DEL, which any character
    // processing would eat or rewrite; then a payload larger than a pty's queue
    // (4 KiB), which the far end answers in three pieces: reads gather the count.
    Bytes all(256), large(20000);
    for (size_t i = 0; i < all.size(); ++i) all[i] = static_cast<uint8_t>(i);
    for (size_t i = 0; i < large.size(); ++i) large[i] = static_cast<uint8_t>(i * 7 + (i >> 8));
    for (const Bytes* payload : {&all, &large}) {
        const Answer a = exchange(c, 2, *payload);
        ASSERT_EQ(a.rc, 0) << "a bad request CRC is answered with -6";
        EXPECT_EQ(a.payload, *payload);
    }
    EXPECT_EQ(kvn_close_device_conn(&c), 0);
}

TEST(Win32Serial, ReadsWithZeroTimeoutsWaitForALateAnswer) {
    REQUIRE_PORT(name, served_port(1));
    kvn_device_conn c = serial_conn(name, 9600);
    ASSERT_EQ(kvn_open_device_conn(&c), 0);
    const Bytes payload = {0x13, 0x11, 0x00, 0xFF};
    const DWORD start = GetTickCount();
    const Answer a = exchange(c, 3, payload);  // answered after 1.5 s of silence
    EXPECT_GE(GetTickCount() - start, 1000u) << "the answer cannot have arrived before the far end sent it";
    EXPECT_EQ(a.rc, 0);
    EXPECT_EQ(a.payload, payload);

    // Bounded on request: the far end only answers requests, so a read now waits
    // for bytes that never come and ends after one wait; the port's timeouts are
    // zero again once the limits no longer apply.
    {
        kvntest::Limits limits(300, 300, true);
        uint8_t none = 0;
        EXPECT_EQ(kvn_receive_data(&c.link, &none, 1), -2);
        EXPECT_EQ(kvn_ext_last_os_error(), static_cast<int32_t>(ERROR_TIMEOUT));
    }
    EXPECT_EQ(exchange(c, 2, payload).rc, 0);
    EXPECT_TRUE(timeouts_zero(c.link.serial_handle));
    EXPECT_EQ(kvn_close_device_conn(&c), 0);
}

TEST(Win32Serial, OpenFailuresReturnMinusFiveAndLeaveNoHandle) {
    REQUIRE_PORT(served, served_port(1));
    REQUIRE_PORT(not_a_port, kvntest::terminal_config().not_a_port);
    const std::pair<std::wstring, const char*> cases[] = {
        {L"\\\\.\\COM98", "no such port: CreateFileW fails"},
        {not_a_port, "opens, but is no communication port: GetCommState fails and the handle is closed"},
        {L"", "empty name"},
    };
    kvn_ext_last_os_error();  // the thread's error slot is made once, before handles are counted
    for (const auto& [name, why] : cases) {
        SCOPED_TRACE(why);
        // Handle slots are reused lowest (Wine) or last (Windows) freed first: a slot
        // freed just before the open is the one its CreateFileW takes, and it must be
        // free again afterwards.
        const HANDLE probe = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        ASSERT_NE(probe, nullptr);
        CloseHandle(probe);
        kvn_device_conn c = serial_conn(name, 9600);
        EXPECT_EQ(kvn_open_device_conn(&c), -5);
        EXPECT_NE(kvn_ext_last_os_error(), 0);
        EXPECT_FALSE(handle_open(c.link.serial_handle));
        const HANDLE next = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        EXPECT_EQ(next, probe) << "the failed open kept a handle";
        CloseHandle(next);
        // Closing after a failed open is harmless: nothing of anyone else's is closed.
        const HANDLE bystander = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        EXPECT_EQ(kvn_close_device_conn(&c), 0);
        EXPECT_TRUE(handle_open(bystander)) << "closing the failed connection closed another handle";
        CloseHandle(bystander);
    }
    kvn_device_conn c = serial_conn(served, 9600);
    c.serial_port = nullptr;
    EXPECT_EQ(kvn_open_device_conn(&c), -5);

    // Closing releases the handle; the port opens again afterwards.
    for (int i = 0; i < 2; ++i) {
        c = serial_conn(served, 9600);
        ASSERT_EQ(kvn_open_device_conn(&c), 0);
        EXPECT_TRUE(handle_open(c.link.serial_handle));
        EXPECT_EQ(kvn_close_device_conn(&c), 0);
        EXPECT_FALSE(handle_open(c.link.serial_handle));
    }
}
