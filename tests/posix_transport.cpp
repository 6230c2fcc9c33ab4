// POSIX transport: serial over a pseudo-terminal pair, descriptors above 1024,
// no SIGPIPE, connection failures.
#include <fcntl.h>
#include <pty.h>
#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <termios.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "kvnsdk2.h"
#include "link/transport.h"
#include "peer.h"

using kvntest::Bytes;
using kvntest::LoopbackPeer;
using kvntest::serial_conn;
using kvntest::sock_t;

namespace {

struct Pty {
    int master = -1, slave = -1;
    std::wstring name;
    Pty() {
        char path[128];
        if (::openpty(&master, &slave, path, nullptr, nullptr) == 0) name.assign(path, path + std::strlen(path));
    }
    ~Pty() {
        if (master >= 0) ::close(master);
        if (slave >= 0) ::close(slave);
    }
};

Bytes read_fd(int fd, size_t n) {
    Bytes b(n);
    size_t got = 0;
    for (ssize_t r; got < n && (r = ::read(fd, b.data() + got, n - got)) > 0;) got += static_cast<size_t>(r);
    b.resize(got);
    return b;
}

}  // namespace

TEST(SerialLink, ExchangeOverPseudoTerminal) {
    Pty pty;
    ASSERT_GE(pty.master, 0);
    // The line starts with flow control on and carrier detect honoured, and holds
    // bytes from before the connection (the far end's line stays open meanwhile).
    termios tio;
    ASSERT_EQ(::tcgetattr(pty.slave, &tio), 0);
    ::cfmakeraw(&tio);
    tio.c_cflag = (tio.c_cflag | CRTSCTS) & ~static_cast<tcflag_t>(CLOCAL);
    tio.c_iflag |= IXON | IXOFF | IXANY;
    ASSERT_EQ(::tcsetattr(pty.slave, TCSANOW, &tio), 0);
    const uint8_t stale[] = {0xDD, 0xCC, 0xBB, 0xAA, 1, 2, 3};
    ASSERT_EQ(::write(pty.master, stale, sizeof stale), static_cast<ssize_t>(sizeof stale));
    pollfd arrived{pty.slave, POLLIN, 0};
    ASSERT_EQ(::poll(&arrived, 1, 5000), 1);

    kvn_device_conn c = serial_conn(pty.name, 115200);
    ASSERT_EQ(kvn_open_device_conn(&c), 0);
    EXPECT_EQ(kvn_ext_last_os_error(), 0);

    // The port is raw 8N1 at the requested speed, without flow control, ignores
    // carrier detect, and is a blocking descriptor that a program's exec drops.
    ASSERT_EQ(::tcgetattr(c.link.serial_handle, &tio), 0);
    EXPECT_EQ(cfgetospeed(&tio), static_cast<speed_t>(B115200));
    EXPECT_EQ(tio.c_cflag & (CSIZE | PARENB | CSTOPB | CRTSCTS | CLOCAL | CREAD), static_cast<tcflag_t>(CS8 | CLOCAL | CREAD));
    EXPECT_EQ(tio.c_iflag & (IXON | IXOFF | IXANY), 0u);
    EXPECT_EQ(tio.c_lflag & ICANON, 0u);
    EXPECT_EQ(::fcntl(c.link.serial_handle, F_GETFL) & O_NONBLOCK, 0);
    EXPECT_NE(::fcntl(c.link.serial_handle, F_GETFD) & FD_CLOEXEC, 0);

    Bytes request;
    const Bytes payload = {1, 4, 0xFF, 0x00, 0x00, 0x80};  // bytes a cooked line would mangle
    std::thread terminal([&] {
        request = read_fd(pty.master, 28);
        // The answer arrives in two pieces: reads must gather the whole count.
        const Bytes answer = kvntest::response(0, payload);
        ASSERT_EQ(::write(pty.master, answer.data(), 10), 10);
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        ASSERT_EQ(::write(pty.master, answer.data() + 10, answer.size() - 10), static_cast<ssize_t>(answer.size() - 10));
    });
    const uint32_t word = KVN_REQUEST_WORD(KVN_REQ_GET);
    EXPECT_EQ(kvn_send_command(&c, &word, 202, nullptr, 0), 0);
    uint8_t buf[64];
    uint32_t len = sizeof buf;
    EXPECT_EQ(kvn_receive_response(&c, buf, &len), 0) << "the stale bytes were taken for the answer";
    terminal.join();
    EXPECT_EQ(Bytes(buf, buf + len), payload);
    ASSERT_EQ(request.size(), 28u);
    EXPECT_EQ(kvntest::get_le32(request.data() + 16), 202u);
    EXPECT_EQ(kvn_close_device_conn(&c), 0);
}

TEST(SerialLink, OpenFailures) {
    Pty pty;
    ASSERT_GE(pty.master, 0);
    struct Case { std::wstring name; uint32_t baud; int32_t rc; int os_error; };
    const Case cases[] = {
        {L"/nonexistent/ttyKVN0", 9600, -5, ENOENT},  // cannot be opened
        {L"/dev/null", 9600, -5, ENOTTY},             // opens, but is no terminal: querying fails
        {L"/tmp", 9600, -5, EISDIR},
        {pty.name, 12345, -3, EINVAL},                // a speed the port cannot take is a failed configuration
        {L"", 9600, -5, EINVAL},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(std::string(k.name.begin(), k.name.end()));
        kvn_device_conn c = serial_conn(k.name, k.baud);
        EXPECT_EQ(kvn_open_device_conn(&c), k.rc);
        EXPECT_EQ(kvn_ext_last_os_error(), k.os_error);
        // Nothing stays open, and the record keeps no descriptor a later open could reuse.
        EXPECT_EQ(c.link.serial_handle, -1);
        EXPECT_EQ(kvn_close_device_conn(&c), 0);
    }
    kvn_device_conn c = serial_conn(pty.name, 9600);
    c.serial_port = nullptr;
    EXPECT_EQ(kvn_open_device_conn(&c), -5);
}

// As with share mode 0 on Windows, a port in use by one connection cannot be opened
// by another; closing gives it back, exclusivity included.
TEST(SerialLink, PortIsHeldExclusively) {
    Pty pty;
    ASSERT_GE(pty.master, 0);
    kvn_device_conn first = serial_conn(pty.name, 9600), second = serial_conn(pty.name, 9600);
    ASSERT_EQ(kvn_open_device_conn(&first), 0);
    EXPECT_EQ(kvn_open_device_conn(&second), -5);
    EXPECT_EQ(kvn_ext_last_os_error(), EBUSY);
    EXPECT_EQ(second.link.serial_handle, -1);
    int exclusive = 0;
    ASSERT_EQ(::ioctl(pty.slave, TIOCGEXCL, &exclusive), 0);
    EXPECT_EQ(exclusive, 1) << "other programs are kept out too";
    EXPECT_EQ(kvn_close_device_conn(&first), 0);
    ASSERT_EQ(::ioctl(pty.slave, TIOCGEXCL, &exclusive), 0);
    EXPECT_EQ(exclusive, 0) << "the line is free again for everyone";
    ASSERT_EQ(kvn_open_device_conn(&second), 0);
    EXPECT_EQ(kvn_close_device_conn(&second), 0);
}

// Serial waits are unbounded unless the integrator asks: then a silent line ends a
// read, and a line nobody reads ends a write, each after one wait. A hang-up ends a
// read at once instead of spinning.
TEST(SerialLink, WaitsAreBoundedOnlyWhenAsked) {
    Pty pty;
    ASSERT_GE(pty.master, 0);
    kvn_device_conn c = serial_conn(pty.name, 115200);
    ASSERT_EQ(kvn_open_device_conn(&c), 0);
    uint8_t byte = 0;
    {
        kvntest::Limits limits(100, 100);
        std::thread late([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(400));
            ASSERT_EQ(::write(pty.master, "\x5A", 1), 1);
        });
        EXPECT_EQ(kvn_receive_data(&c.link, &byte, 1), 0) << "by default a serial read waits for its bytes";
        late.join();
        EXPECT_EQ(byte, 0x5A);
    }
    {
        kvntest::Limits limits(200, 200, true);
        EXPECT_EQ(kvn_receive_data(&c.link, &byte, 1), -2);
        EXPECT_EQ(kvn_ext_last_os_error(), ETIMEDOUT);
        const Bytes big(KVN_MAX_REQUEST_PAYLOAD, 0x11);
        const uint32_t word = KVN_REQUEST_WORD(KVN_REQ_SET);
        EXPECT_EQ(kvn_send_command(&c, &word, 120, big.data(), static_cast<uint32_t>(big.size())), -3);
        EXPECT_EQ(kvn_ext_last_os_error(), ETIMEDOUT);
        EXPECT_EQ(::fcntl(c.link.serial_handle, F_GETFL) & O_NONBLOCK, 0) << "the descriptor is left blocking";
    }
    ::close(pty.master);  // waits unbounded again: only the hang-up can end this read
    pty.master = -1;
    EXPECT_EQ(kvn_receive_data(&c.link, &byte, 1), -2);
    kvn_close_device_conn(&c);
}

// 0 means no limit for every wait: a late answer is still read, on a descriptor above
// 1024 (beyond select's reach), and a peer that closes is told apart from a wait that
// ran out.
TEST(TcpLink, ZeroLimitsAndDescriptorsAbove1024) {
    rlimit lim;
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &lim), 0);
    lim.rlim_cur = std::max<rlim_t>(lim.rlim_cur, std::min<rlim_t>(lim.rlim_max, 1600));
    if (lim.rlim_cur < 1600 || ::setrlimit(RLIMIT_NOFILE, &lim) != 0) GTEST_SKIP() << "descriptor limit too low";
    kvntest::Limits limits(0, 0);
    LoopbackPeer peer([](sock_t s) {
        kvntest::read_request(s);
        std::this_thread::sleep_for(std::chrono::milliseconds(300));  // the client has to wait
        kvntest::write_bytes(s, kvntest::response(-2012));
    });
    kvn_device_conn c = peer.conn();
    ASSERT_EQ(kvn_open_device_conn(&c), 0);
    ASSERT_EQ(::dup2(c.link.socket, 1500), 1500);
    ::close(c.link.socket);
    c.link.socket = 1500;
    const uint32_t word = KVN_REQUEST_WORD(KVN_REQ_GET);
    EXPECT_EQ(kvn_send_command(&c, &word, 8, nullptr, 0), 0);
    uint8_t buf[16];
    uint32_t len = sizeof buf;
    EXPECT_EQ(kvn_receive_response(&c, buf, &len), -2012);
    EXPECT_EQ(kvn_receive_data(&c.link, buf, 1), -2);
    EXPECT_EQ(kvn_ext_last_os_error(), ECONNRESET) << "the peer closed";
    EXPECT_EQ(kvn_close_device_conn(&c), 0);
}

TEST(TcpLink, ResetByPeerIsAWriteErrorNotASignal) {
    // With SIGPIPE at its default action a write to a reset connection would kill the test.
    struct sigaction old{}, dfl{};
    dfl.sa_handler = SIG_DFL;
    ::sigaction(SIGPIPE, &dfl, &old);
    int32_t rc = 0;
    {
        LoopbackPeer peer([](sock_t) {});  // accepts and closes at once
        kvn_device_conn c = peer.conn();
        ASSERT_EQ(kvn_open_device_conn(&c), 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        const uint8_t payload[4096] = {};
        const uint32_t word = KVN_REQUEST_WORD(KVN_REQ_SET);
        for (int i = 0; i < 50 && rc == 0; ++i) rc = kvn_send_command(&c, &word, 101, payload, sizeof payload);
        kvn_close_device_conn(&c);
    }
    ::sigaction(SIGPIPE, &old, nullptr);
    EXPECT_EQ(rc, -3);
}

TEST(TcpLink, ConnectFailureAndTransportChoice) {
    // Nothing listens on the port a just-closed listener had.
    uint16_t port;
    { LoopbackPeer probe([](sock_t) {}); port = probe.port(); kvn_device_conn c = probe.conn(); kvn_open_device_conn(&c); kvn_close_device_conn(&c); }
    kvn_device_conn c = kvntest::tcp_conn(port);
    c.link.conn_type = 2;  // any non-zero value is TCP
    EXPECT_EQ(kvn_open_device_conn(&c), -5);
    EXPECT_GE(c.link.socket, 0) << "the socket is stored before connecting";
    EXPECT_NE(::fcntl(c.link.socket, F_GETFD) & FD_CLOEXEC, 0);
    // The cause, for this thread only, with the system's text.
    EXPECT_EQ(kvn_ext_last_os_error(), ECONNREFUSED);
    char text[64];
    EXPECT_EQ(kvn_ext_last_os_error_text(text, sizeof text), static_cast<int32_t>(std::strlen(std::strerror(ECONNREFUSED))));
    EXPECT_STREQ(text, std::strerror(ECONNREFUSED));
    EXPECT_EQ(kvn_ext_last_os_error_text(text, 4), 3);
    std::thread([] { EXPECT_EQ(kvn_ext_last_os_error(), 0); }).join();
    EXPECT_EQ(kvn_close_device_conn(&c), 0);
    EXPECT_EQ(kvn_ext_last_os_error(), 0);
    EXPECT_EQ(kvn_ext_last_os_error_text(text, sizeof text), 0);
    EXPECT_STREQ(text, "");

    c.ip_address = "not an address";
    EXPECT_EQ(kvn_open_device_conn(&c), -5);
    kvn_close_device_conn(&c);
}

// Each transport takes as many parts as one send may carry, in order and empty
// ones skipped; one part more is refused with -3 before a byte leaves.
TEST(Transports, TakeUpToTheGatherLimitOfPartsAndRefuseMore) {
    std::vector<Bytes> data(kvn::kMaxSendParts + 1);
    std::vector<kvn::ConstBuf> parts;
    Bytes want;
    for (size_t i = 0; i < data.size(); ++i) {
        data[i].assign(i % 4 == 3 ? 0 : 3 * i + 1, static_cast<uint8_t>(0xA0 + i));
        parts.push_back({data[i].data(), static_cast<uint32_t>(data[i].size())});
        if (i < kvn::kMaxSendParts) want.insert(want.end(), data[i].begin(), data[i].end());
    }
    struct Seen { int32_t at_limit = 99, beyond = 99; int os_error = 0; Bytes bytes, more; };
    // Sends the parts at the limit, then one more, over an open connection.
    auto send_both = [&](kvn_device_conn& c, Seen& seen) {
        const kvn::Transport& io = kvn::transport_for(&c.link);
        seen.at_limit = io.send(&c.link, parts.data(), kvn::kMaxSendParts);
        seen.beyond = io.send(&c.link, parts.data(), kvn::kMaxSendParts + 1);
        seen.os_error = kvn_ext_last_os_error();
    };

    Seen tcp;
    {
        LoopbackPeer peer([&](sock_t s) {
            tcp.bytes = kvntest::read_bytes(s, want.size());
            tcp.more = kvntest::read_bytes(s, 1);  // until the client closes
        });
        kvn_device_conn c = peer.conn();
        ASSERT_EQ(kvn_open_device_conn(&c), 0);
        send_both(c, tcp);
        kvn_close_device_conn(&c);
    }
    Seen serial;
    {
        Pty pty;
        ASSERT_GE(pty.master, 0);
        kvn_device_conn c = serial_conn(pty.name, 115200);
        ASSERT_EQ(kvn_open_device_conn(&c), 0);
        send_both(c, serial);
        serial.bytes = read_fd(pty.master, want.size());
        pollfd more{pty.master, POLLIN, 0};
        if (::poll(&more, 1, 100) == 1) serial.more = read_fd(pty.master, 1);
        kvn_close_device_conn(&c);
    }

    for (const auto& [name, seen] : {std::pair<const char*, const Seen&>{"tcp", tcp}, {"serial", serial}}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(seen.at_limit, 0);
        EXPECT_BYTES(seen.bytes, want);
        EXPECT_EQ(seen.beyond, -3);
        EXPECT_EQ(seen.os_error, EINVAL);
        EXPECT_TRUE(seen.more.empty()) << "a refused send wrote " << seen.more.size() << " byte(s)";
    }
}
