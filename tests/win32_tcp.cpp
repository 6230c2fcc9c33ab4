// The Windows Sockets transport: start-up and clean-up pairing, per-chunk waits of the
// select-based movers, and what a failed connect leaves behind. A peer that never
// reads is tested with the frames (test_frame.cpp), on both platforms.
//
// The pairing tests talk to the terminal stand-in in another process (see
// win32_terminal.h), so that nothing in this process starts Windows Sockets but the
// library; the other tests use the in-process loopback peer.
#include <winsock2.h>
#include <ws2tcpip.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "kvnsdk2.h"
#include "peer.h"
#include "win32_terminal.h"

using kvntest::Bytes;
using kvntest::LoopbackPeer;
using kvntest::sock_t;

namespace {

// True when Windows Sockets is not started in this process: a socket() without a
// start-up of the caller's own fails with WSANOTINITIALISED. A socket made while it
// is started is closed again at once, which leaves the start-up count as it was.
bool winsock_stopped() {
    const SOCKET s = ::socket(AF_INET, SOCK_STREAM, 0);
    if (s != INVALID_SOCKET) ::closesocket(s);
    return s == INVALID_SOCKET && ::WSAGetLastError() == WSANOTINITIALISED;
}

// The stand-in's TCP address (port 0 outside the fixture); `ip` must outlive the record.
kvn_device_conn terminal_conn(const kvntest::TerminalConfig& cfg, uint16_t port = 0) {
    kvn_device_conn c = kvntest::tcp_conn(port != 0 ? port : cfg.tcp_port);
    c.ip_address = cfg.tcp_ip.c_str();
    return c;
}

// One echo exchange (command 2); 0 when the payload came back unchanged.
int32_t echo(kvn_device_conn& c, uint8_t tag) {
    const uint8_t payload[3] = {0x10, 0x01, tag};
    const uint32_t word = KVN_REQUEST_WORD(KVN_REQ_GET);
    if (int32_t rc = kvn_send_command(&c, &word, 2, payload, sizeof payload); rc != 0) return rc;
    uint8_t buf[16];
    uint32_t len = sizeof buf;
    if (int32_t rc = kvn_receive_response(&c, buf, &len); rc != 0) return rc;
    return len == sizeof payload && std::memcmp(buf, payload, len) == 0 ? 0 : 1;
}

void set_buffer(uintptr_t s, int option, int bytes) {
    ::setsockopt(static_cast<SOCKET>(s), SOL_SOCKET, option, reinterpret_cast<const char*>(&bytes), sizeof bytes);
}

}  // namespace

TEST(Win32Winsock, EveryOpenStartsAndEveryCloseCleansUpOnce) {
    const kvntest::TerminalConfig cfg = kvntest::terminal_config();
    if (cfg.tcp_port == 0) KVN_SKIP_WITHOUT_TERMINAL();
    ASSERT_TRUE(winsock_stopped()) << "Windows Sockets was started before the test began";

    // Interleaved: A and B open, A closes while B is still in use, C opens, B closes,
    // C closes. If a close cleaned up more than once, the platform would have stopped
    // Windows Sockets (and reset B's socket) at A's close; if an open started it more
    // than once, or a close cleaned up less, it would still run at the end.
    kvn_device_conn a = terminal_conn(cfg), b = terminal_conn(cfg), c = terminal_conn(cfg);
    ASSERT_EQ(kvn_open_device_conn(&a), 0);
    ASSERT_EQ(kvn_open_device_conn(&b), 0);
    EXPECT_EQ(echo(a, 1), 0);
    EXPECT_EQ(echo(b, 2), 0);
    EXPECT_EQ(kvn_close_device_conn(&a), 0);
    EXPECT_FALSE(winsock_stopped()) << "A's close must not stop Windows Sockets under B";
    EXPECT_EQ(echo(b, 3), 0) << "B still works after A's clean-up";
    ASSERT_EQ(kvn_open_device_conn(&c), 0);
    EXPECT_EQ(kvn_close_device_conn(&b), 0);
    EXPECT_EQ(echo(c, 4), 0);
    EXPECT_FALSE(winsock_stopped());
    EXPECT_EQ(kvn_close_device_conn(&c), 0);
    EXPECT_TRUE(winsock_stopped()) << "three opens, three closes: nothing may stay started";

    // The same across threads: opens and closes on different records may interleave.
    std::vector<std::thread> threads;
    std::atomic<int> failures{0};
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 5; ++i) {
                kvn_device_conn k = terminal_conn(cfg);
                if (kvn_open_device_conn(&k) != 0 || echo(k, static_cast<uint8_t>(t * 16 + i)) != 0) ++failures;
                if (kvn_close_device_conn(&k) != 0) ++failures;
            }
        });
    }
    for (auto& th : threads) th.join();
    EXPECT_EQ(failures.load(), 0);
    EXPECT_TRUE(winsock_stopped()) << "twenty opens and twenty closes on four threads";
}

TEST(Win32Winsock, FailedConnectKeepsSocketAndStartUpUntilClose) {
    const kvntest::TerminalConfig cfg = kvntest::terminal_config();
    if (cfg.tcp_port == 0) KVN_SKIP_WITHOUT_TERMINAL();
    ASSERT_TRUE(winsock_stopped());
    // Port 1 on loopback: nothing listens there, the connection is refused at once.
    kvn_device_conn c = terminal_conn(cfg, 1);
    c.link.conn_type = 7;  // any non-zero value is TCP
    EXPECT_EQ(kvn_open_device_conn(&c), -5);
    EXPECT_EQ(kvn_ext_last_os_error(), WSAECONNREFUSED);
    char text[128];
    EXPECT_GT(kvn_ext_last_os_error_text(text, sizeof text), 0);
    EXPECT_NE(c.link.socket, static_cast<kvn_socket_t>(INVALID_SOCKET)) << "stored before connecting";
    EXPECT_FALSE(winsock_stopped()) << "the failed open leaves Windows Sockets started";
    EXPECT_EQ(kvn_close_device_conn(&c), 0) << "the socket was still open";
    EXPECT_TRUE(winsock_stopped()) << "the close cleans up the failed open's start-up";

    // A text that is no address fails the same way, and closes the same way.
    c.ip_address = "not an address";
    EXPECT_EQ(kvn_open_device_conn(&c), -5);
    EXPECT_EQ(kvn_close_device_conn(&c), 0);
    EXPECT_TRUE(winsock_stopped());

    // Closing twice: the socket is gone and so is the start-up, so the second close
    // reports closesocket's failure and its clean-up changes nothing.
    EXPECT_EQ(kvn_close_device_conn(&c), -1);
    EXPECT_TRUE(winsock_stopped());
}

// Each select() wait covers one chunk, not the whole read: an answer that trickles in
// over several times the wait still arrives. (A pause longer than the wait gives -2:
// the terminal fault cases, which run here against the Linux simulator.)
TEST(Win32TcpWaits, ReadWaitIsPerChunk) {
    kvntest::Limits waits(400, 400);
    const Bytes payload = {0x41, 0x42, 0x43, 0x44, 0x45, 0x46, 0x47, 0x48};
    const Bytes answer = kvntest::response(0, payload);
    LoopbackPeer peer([&](sock_t s) {
        kvntest::read_request(s);
        for (size_t i = 0; i < answer.size(); i += 4) {  // 10 pieces, 100 ms apart: 1 s in all
            kvntest::write_bytes(s, Bytes(answer.begin() + static_cast<long>(i), answer.begin() + static_cast<long>(i + 4)));
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
    });
    kvn_device_conn c = peer.conn();
    const uint32_t word = KVN_REQUEST_WORD(KVN_REQ_GET);
    ASSERT_EQ(kvn_open_device_conn(&c), 0);
    ASSERT_EQ(kvn_send_command(&c, &word, 104, nullptr, 0), 0);
    uint8_t buf[64];
    uint32_t len = sizeof buf;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(kvn_receive_response(&c, buf, &len), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(600))
        << "the answer took longer than one wait to arrive";
    EXPECT_EQ(Bytes(buf, buf + len), payload);
    kvn_close_device_conn(&c);
}

// The write side: a peer that reads slowly but steadily takes a request larger than
// the socket buffers, though the whole write lasts several waits, since every chunk
// becomes writable within one.
TEST(Win32TcpWaits, WriteWaitIsPerChunk) {
    kvntest::Limits waits(2000, 200);
    Bytes big(KVN_MAX_REQUEST_PAYLOAD, 0x5A);
    const uint32_t word = KVN_REQUEST_WORD(KVN_REQ_SET);
    size_t seen = 0;
    int32_t rc = 0;
    std::chrono::steady_clock::duration took{};
    {
        LoopbackPeer peer([&](sock_t s) {
            set_buffer(s, SO_RCVBUF, 32768);
            char chunk[16384];
            for (int r; (r = ::recv(static_cast<SOCKET>(s), chunk, sizeof chunk, 0)) > 0;) {
                seen += static_cast<size_t>(r);
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            }
        });
        kvn_device_conn c = peer.conn();
        ASSERT_EQ(kvn_open_device_conn(&c), 0);
        // Small buffers on both ends, so that the request cannot vanish into them.
        set_buffer(c.link.socket, SO_SNDBUF, 32768);
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < 4 && rc == 0; ++i) rc = kvn_send_command(&c, &word, 120, big.data(), KVN_MAX_REQUEST_PAYLOAD);
        took = std::chrono::steady_clock::now() - start;
        kvn_close_device_conn(&c);
    }  // the peer reads to the end before it is joined
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(seen, 4u * (28u + KVN_MAX_REQUEST_PAYLOAD));
    EXPECT_GE(took, std::chrono::milliseconds(400)) << "the writes outlasted two waits";
}
