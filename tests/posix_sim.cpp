// The simulator as a terminal on the wire: frames byte for byte, statuses for bad
// requests, fault injection seen through the library, serial lines, many
// connections, and state that survives restarts and kill -9.
#include "test_sim_helpers.h"

#if KVN_HAVE_SIM

#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <poll.h>
#include <termios.h>
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <thread>

#include "peer.h"

using simtest::Answer;
using simtest::Bytes;
using simtest::exchange;
using simtest::ShortWaits;
using simtest::SimTest;

namespace {

int raw_connect(uint16_t port) {
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_port = htons(port);
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(::connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a), 0);
    return fd;
}

Bytes hex(const char* text) {
    Bytes b;
    for (const char* p = text; *p;) {
        if (*p == ' ') {
            ++p;
            continue;
        }
        b.push_back(static_cast<uint8_t>(std::strtoul(std::string(p, 2).c_str(), nullptr, 16)));
        p += 2;
    }
    return b;
}

std::string temp_dir(const char* name) {
    const auto dir = std::filesystem::temp_directory_path() /
                     (std::string("kvnsim-") + name + "-" + std::to_string(::getpid()));
    std::filesystem::remove_all(dir);
    return dir.string();
}

// LCD settings (149): tag 1 value, tag 2 text.
Bytes lcd_payload(uint32_t value, const std::string& text) {
    Bytes p = {1, 4, uint8_t(value), uint8_t(value >> 8), uint8_t(value >> 16), uint8_t(value >> 24)};
    p.push_back(2);
    p.push_back(uint8_t(text.size()));
    p.insert(p.end(), text.begin(), text.end());
    return p;
}

}  // namespace

// Frames as the terminal writes them, derived by hand: the USB auxiliary group
// (103) holds tag 1 = 0 by default.
TEST(SimWire, GetAnswersWithEchoedHeaderPayloadAndCrc) {
    kvnsim::Simulator sim;
    ASSERT_TRUE(sim.start());
    const int fd = raw_connect(sim.port());
    kvntest::write_bytes(fd, hex("dd cc bb aa 04 03 02 01 02 00 02 00 00 00 00 00 67 00 00 00 00 00 00 00 d1 1e fc dc"));
    EXPECT_EQ(kvntest::read_bytes(fd, 38),
              hex("dd cc bb aa 04 03 02 01 02 00 02 00 00 00 00 00 00 00 00 00 00 00 00 00 06 00 00 00"
                  " 01 04 00 00 00 00 c0 ba db c6"));
    // Command 9 does not exist: "Command not found" (-1002) with no payload.
    kvntest::write_bytes(fd, hex("dd cc bb aa 04 03 02 01 02 00 02 00 00 00 00 00 09 00 00 00 00 00 00 00 58 ac 9d 19"));
    EXPECT_EQ(kvntest::read_bytes(fd, 32),
              hex("dd cc bb aa 04 03 02 01 02 00 02 00 00 00 00 00 16 fc ff ff 00 00 00 00 00 00 00 00 bb 5c 46 0a"));
    ::close(fd);
}

// A request whose sync word is wrong cannot be framed: the terminal drops the
// connection, and other connections carry on.
TEST(SimWire, WrongSyncWordClosesTheConnection) {
    kvnsim::Simulator sim;
    ASSERT_TRUE(sim.start());
    const int fd = raw_connect(sim.port());
    kvntest::write_bytes(fd, hex("dd cc bb ab 04 03 02 01 02 00 02 00 00 00 00 00 67 00 00 00 00 00 00 00 d1 1e fc dc"));
    uint8_t b;
    EXPECT_EQ(::recv(fd, &b, 1, 0), 0);
    ::close(fd);
    kvn_device_conn c = simtest::tcp_conn(sim.port());
    ASSERT_EQ(kvn_open_device_conn(&c), 0);
    EXPECT_EQ(exchange(c, KVN_REQ_GET, 103).rc, 0);
    kvn_close_device_conn(&c);
}

// A corrupted CRC is "Invalid data received"; the link stays usable.
TEST(SimWire, BadRequestCrcIsInvalidData) {
    kvnsim::Simulator sim;
    ASSERT_TRUE(sim.start());
    const int fd = raw_connect(sim.port());
    kvntest::write_bytes(fd, hex("dd cc bb aa 04 03 02 01 02 00 02 00 00 00 00 00 67 00 00 00 00 00 00 00 d1 1e fc dd"));
    const Bytes head = kvntest::read_bytes(fd, 32);
    ASSERT_EQ(head.size(), 32u);
    EXPECT_EQ(static_cast<int32_t>(kvntest::get_le32(head.data() + 16)), KVN_E_INVALID_DATA_RECEIVED);
    EXPECT_EQ(kvntest::get_le32(head.data() + 24), 0u);
    kvntest::write_bytes(fd, hex("dd cc bb aa 04 03 02 01 02 00 02 00 00 00 00 00 67 00 00 00 00 00 00 00 d1 1e fc dc"));
    EXPECT_EQ(kvntest::read_bytes(fd, 38).size(), 38u);
    ::close(fd);
}

class SimStatus : public SimTest {};

// Each bad request gets its status with an empty payload, which the library
// returns as the call's result.
TEST_F(SimStatus, BadRequestsGetTheTerminalsStatus) {
    struct Case {
        const char* what;
        uint16_t type;
        uint32_t command;
        Bytes payload;
        int32_t status;
    };
    const Case cases[] = {
        {"unknown command", KVN_REQ_GET, 9, {}, KVN_E_COMMAND_NOT_FOUND},
        {"unknown command 2000", KVN_REQ_SET, 2000, {1, 1, 0}, KVN_E_COMMAND_NOT_FOUND},
        {"get on a set-only action", KVN_REQ_GET, 205, {}, KVN_E_INVALID_REQUEST_TYPE},
        {"upload on a settings group", KVN_REQ_UPLOAD, 149, {}, KVN_E_INVALID_REQUEST_TYPE},
        {"request type 9", 9, 149, {}, KVN_E_INVALID_REQUEST_TYPE},
        {"no getter for access keys", KVN_REQ_GET, 903, {}, KVN_E_INVALID_REQUEST_TYPE},
        {"truncated element", KVN_REQ_SET, 149, {1, 4, 1, 0}, KVN_E_INVALID_DATA_RECEIVED},
        {"tag 0xFF", KVN_REQ_SET, 149, {0xFF, 1, 0}, KVN_E_INVALID_DATA_RECEIVED},
        {"lone tag byte", KVN_REQ_SET, 149, {1, 4, 1, 0, 0, 0, 2}, KVN_E_INVALID_DATA_RECEIVED},
        {"tag the group does not have", KVN_REQ_SET, 149, {3, 4, 1, 0, 0, 0}, KVN_E_INVALID_TAG_RECEIVED},
        {"value of the wrong width", KVN_REQ_SET, 149, {1, 2, 1, 0}, KVN_E_INVALID_LENGTH_RECEIVED},
        {"text longer than its field", KVN_REQ_SET, 116, lcd_payload(1, std::string(51, 'x')),
         KVN_E_INVALID_LENGTH_RECEIVED},
        {"user read without a user id", KVN_REQ_GET, 7, {}, KVN_E_PAYLOAD_NOT_RECEIVED},
        {"unknown user", KVN_REQ_GET, 7, {2, 3, 'b', 'o', 'b'}, KVN_E_USER_NOT_FOUND},
    };
    for (const Case& c : cases) {
        const Answer a = exchange(conn_, c.type, c.command, c.payload);
        EXPECT_EQ(a.rc, c.status) << c.what;
        EXPECT_EQ(a.status, c.status) << c.what;
        EXPECT_TRUE(a.payload.empty()) << c.what;
    }
    // The connection still serves.
    EXPECT_EQ(get(149).rc, 0);
}

// A request announcing more payload than a terminal takes is refused and the
// connection closed (its length cannot be trusted to find the next frame).
TEST_F(SimStatus, OversizedRequestIsRefused) {
    const int fd = raw_connect(sim_->port());
    Bytes head = hex("dd cc bb aa 00 00 00 00 02 00 01 00 00 00 00 00 95 00 00 00 00 00 00 7f");
    kvntest::write_bytes(fd, head);
    const Bytes answer = kvntest::read_bytes(fd, 32);
    ASSERT_EQ(answer.size(), 32u);
    EXPECT_EQ(static_cast<int32_t>(kvntest::get_le32(answer.data() + 16)), KVN_E_INVALID_LENGTH_RECEIVED);
    uint8_t b;
    EXPECT_EQ(::recv(fd, &b, 1, 0), 0);
    ::close(fd);
}

// Fault injection, seen through the library's results.
class SimFaults : public ::testing::Test {
protected:
    Answer run(const kvnsim::Faults& f, int32_t wait_ms = 300) {
        kvnsim::Simulator sim;
        EXPECT_TRUE(sim.start());
        sim.set_faults(f);
        ShortWaits waits(wait_ms);
        kvn_device_conn c = simtest::tcp_conn(sim.port());
        EXPECT_EQ(kvn_open_device_conn(&c), 0);
        Answer a = exchange(c, KVN_REQ_GET, 149);
        kvn_close_device_conn(&c);
        return a;
    }
};

TEST_F(SimFaults, EachFaultGivesTheLibrarysStatus) {
    kvnsim::Faults f;
    f.latency_ms = 600;
    EXPECT_EQ(run(f, 150).rc, KVN_E_READ_TIMEOUT) << "latency beyond the read wait";
    f = {};
    f.latency_ms = 50;
    EXPECT_EQ(run(f, 2000).rc, 0) << "latency within the read wait";
    f = {};
    f.no_answer = true;
    EXPECT_EQ(run(f, 150).rc, KVN_E_READ_TIMEOUT) << "no answer";
    for (int64_t n : {0, 3, 10, 30}) {
        f = {};
        f.close_after_bytes = n;
        EXPECT_EQ(run(f).rc, KVN_E_READ_TIMEOUT) << "closed after " << n << " bytes";
    }
    f = {};
    f.bad_sync = true;
    EXPECT_EQ(run(f).rc, KVN_E_INVALID_SYNC_WORD);
    f = {};
    f.bad_crc = true;
    EXPECT_EQ(run(f).rc, KVN_E_CRC_MISMATCH);
}

TEST_F(SimFaults, ByteByByteAnswersStillArriveWhole) {
    kvnsim::Faults f;
    f.byte_by_byte = true;
    f.byte_delay_us = 200;
    const Answer a = run(f, 2000);
    ASSERT_EQ(a.rc, 0);
    // Default LCD group: tag 1 = 1, tag 2 = "Welcome".
    EXPECT_EQ(a.payload, lcd_payload(1, "Welcome"));
}

TEST_F(SimFaults, FaultsApplyToConnectionsOpenedAfterThem) {
    kvnsim::Simulator sim;
    ASSERT_TRUE(sim.start());
    ShortWaits waits(300);
    kvn_device_conn before = simtest::tcp_conn(sim.port());
    ASSERT_EQ(kvn_open_device_conn(&before), 0);
    ASSERT_EQ(exchange(before, KVN_REQ_GET, 149).rc, 0);  // accepted by now
    kvnsim::Faults f;
    f.bad_crc = true;
    sim.set_faults(f);
    kvn_device_conn after = simtest::tcp_conn(sim.port());
    ASSERT_EQ(kvn_open_device_conn(&after), 0);
    EXPECT_EQ(exchange(before, KVN_REQ_GET, 149).rc, 0);
    EXPECT_EQ(exchange(after, KVN_REQ_GET, 149).rc, KVN_E_CRC_MISMATCH);
    kvn_close_device_conn(&before);
    kvn_close_device_conn(&after);
}

// Many connections at once against one terminal.
TEST(SimConnections, ManyClientsAtOnce) {
    kvnsim::Simulator sim;
    ASSERT_TRUE(sim.start());
    std::atomic<int> good{0};
    std::vector<std::thread> clients;
    for (int t = 0; t < 8; ++t) {
        clients.emplace_back([&, t] {
            kvn_device_conn c = simtest::tcp_conn(sim.port());
            if (kvn_open_device_conn(&c) != 0) return;
            for (int i = 0; i < 50; ++i) {
                const uint32_t v = uint32_t(t * 1000 + i);
                Bytes p = {1, 4, uint8_t(v), uint8_t(v >> 8), 0, 0};
                if (exchange(c, KVN_REQ_SET, 303, p).rc == 0 && exchange(c, KVN_REQ_GET, 201).rc == 0) ++good;
            }
            kvn_close_device_conn(&c);
        });
    }
    for (auto& c : clients) c.join();
    EXPECT_EQ(good.load(), 400);
    EXPECT_EQ(sim.connections(), 8u);
}

// Reboots: the graceful one answers, then the connection drops; the forced one
// drops it without an answer (the library does not wait for one).
TEST_F(SimStatus, RebootsDropTheConnection) {
    ShortWaits waits(300);
    EXPECT_EQ(reset(131).rc, 0);
    EXPECT_NE(get(149).rc, 0);
    close();
    open();
    const uint32_t word = KVN_REQUEST_WORD(KVN_REQ_RESET);
    ASSERT_EQ(kvn_send_command(&conn_, &word, 121, nullptr, 0), 0);
    uint8_t buf[64];
    uint32_t len = sizeof buf;
    EXPECT_EQ(kvn_receive_response(&conn_, buf, &len), KVN_E_READ_TIMEOUT);
    close();
    open();
    EXPECT_EQ(get(149).rc, 0);
}

// The serial transport against the simulator's pseudo-terminal.
TEST(SimSerial, ExchangesOverAPseudoTerminal) {
    kvnsim::Options o;
    o.serial = true;
    kvnsim::Simulator sim(o);
    std::string error;
    ASSERT_TRUE(sim.start(&error)) << error;
    const std::string path = sim.serial_path();
    ASSERT_FALSE(path.empty());
    const std::wstring wpath(path.begin(), path.end());
    for (int round = 0; round < 2; ++round) {  // clients come and go on one line
        kvn_device_conn c{};
        c.link.conn_type = KVN_CONN_SERIAL;
        c.serial_port = wpath.c_str();
        c.baud_rate = 115200;
        ASSERT_EQ(kvn_open_device_conn(&c), 0);
        const Bytes p = lcd_payload(7 + uint32_t(round), "serial");
        EXPECT_EQ(exchange(c, KVN_REQ_SET, 149, p).rc, 0);
        const Answer a = exchange(c, KVN_REQ_GET, 149);
        EXPECT_EQ(a.rc, 0);
        EXPECT_EQ(a.payload, p);
        EXPECT_EQ(exchange(c, KVN_REQ_GET, 9).rc, KVN_E_COMMAND_NOT_FOUND);
        // A 98 KB answer crosses the line too.
        const Answer big = exchange(c, KVN_REQ_GET, 301, {7, 4, 0, 0, 0, 0});
        EXPECT_EQ(big.rc, 0);
        EXPECT_GT(big.payload.size(), 98560u);
        EXPECT_EQ(kvn_close_device_conn(&c), 0);
    }
}

// The device-link exports end to end, over TCP and over the simulator's
// pseudo-terminal: connection, frames, reset commands, raw movers, TLV primitives.
class SimFoundation : public ::testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        kvnsim::Options o;
        o.serial = GetParam();
        sim_ = std::make_unique<kvnsim::Simulator>(o);
        ASSERT_TRUE(sim_->start());
        const std::string path = sim_->serial_path();
        path_.assign(path.begin(), path.end());
        if (GetParam()) {
            c_.link.conn_type = KVN_CONN_SERIAL;
            c_.serial_port = path_.c_str();
            c_.baud_rate = 115200;
        } else {
            c_ = simtest::tcp_conn(sim_->port());
        }
        c_.header_id = 0x01020304;
        ASSERT_EQ(kvn_open_device_conn(&c_), 0);
    }
    void TearDown() override { EXPECT_EQ(kvn_close_device_conn(&c_), 0); }

    std::unique_ptr<kvnsim::Simulator> sim_;
    std::wstring path_;
    kvn_device_conn c_{};
};

TEST_P(SimFoundation, FramesResetsRawMoversAndTlv) {
    // A payload built with the exported TLV writers: LCD value 3, text "tlv".
    uint8_t payload[64];
    uint8_t* cur = payload;
    uint32_t left = sizeof payload;
    const uint8_t value[4] = {3, 0, 0, 0};
    ASSERT_EQ(kvn_create_tlv(1, value, 4, &cur, &left), 0);
    ASSERT_EQ(kvn_create_tlv(2, "tlv", 3, &cur, &left), 0);
    const uint32_t set = KVN_REQUEST_WORD(KVN_REQ_SET), get = KVN_REQUEST_WORD(KVN_REQ_GET);
    ASSERT_EQ(kvn_send_command(&c_, &set, 149, payload, uint32_t(cur - payload)), 0);
    uint8_t answer[1024];
    uint32_t len = sizeof answer;
    ASSERT_EQ(kvn_receive_response(&c_, answer, &len), 0);
    EXPECT_EQ(len, 0u);

    ASSERT_EQ(kvn_send_command(&c_, &get, 149, nullptr, 0), 0);
    len = sizeof answer;
    ASSERT_EQ(kvn_receive_response(&c_, answer, &len), 0);
    ASSERT_EQ(len, 11u);
    cur = answer;
    left = len;
    ASSERT_EQ(kvn_serch_tlv_tag(&cur, &left, 2), 3);
    EXPECT_EQ(std::memcmp(cur, "tlv", 3), 0);

    EXPECT_EQ(kvn_send_reset_command(&c_, 149), 0);
    EXPECT_EQ(kvn_send_reset_command(&c_, 9), KVN_E_COMMAND_NOT_FOUND);
    EXPECT_EQ(kvn_send_reset_command(&c_, 201), KVN_E_INVALID_REQUEST_TYPE);

    // A frame put together by hand and moved with the raw movers: get 103.
    uint8_t frame[28] = {0xDD, 0xCC, 0xBB, 0xAA, 4, 3, 2, 1, 2, 0, 2, 0, 0, 0, 0, 0, 103, 0, 0, 0, 0, 0, 0, 0};
    const uint32_t crc = kvn_calculate_req_header_crc(frame + 4);
    EXPECT_EQ(crc, 0xDCFC1ED1u);
    for (int i = 0; i < 4; ++i) frame[24 + i] = uint8_t(crc >> (8 * i));
    ASSERT_EQ(kvn_send_data(&c_.link, frame, sizeof frame), 0);
    uint8_t got[38];
    ASSERT_EQ(kvn_receive_data(&c_.link, got, sizeof got), 0);
    EXPECT_EQ(Bytes(got, got + 38),
              hex("dd cc bb aa 04 03 02 01 02 00 02 00 00 00 00 00 00 00 00 00 00 00 00 00 06 00 00 00"
                  " 01 04 00 00 00 00 c0 ba db c6"));

    // An answer as long as the buffer is refused (one byte stays spare).
    ASSERT_EQ(kvn_send_command(&c_, &get, 103, nullptr, 0), 0);
    len = 6;
    EXPECT_EQ(kvn_receive_response(&c_, answer, &len), KVN_E_TLV_BUFFER_OVERFLOW);
}

INSTANTIATE_TEST_SUITE_P(Transports, SimFoundation, ::testing::Values(false, true),
                         [](const ::testing::TestParamInfo<bool>& i) { return i.param ? "Serial" : "Tcp"; });

// Random payloads, well-formed or not, to every command under every request type:
// each gets an answer frame, and the terminal keeps serving.
TEST(SimRobustness, EveryCommandAnswersWhateverItIsSent) {
    const uint32_t commands[] = {
        1,   3,   4,   5,   6,   7,   8,   10,  11,  12,  13,  14,  15,  16,  101, 102, 103, 104, 105, 106,
        107, 108, 109, 110, 111, 112, 113, 115, 116, 119, 120, 122, 123, 124, 125, 126, 127, 128, 129, 130,
        133, 134, 135, 136, 137, 138, 139, 140, 141, 142, 145, 146, 147, 149, 155, 156, 163, 165, 166, 201,
        202, 205, 301, 302, 303, 304, 305, 306, 401, 402, 403, 404, 405, 406, 407, 408, 409, 410, 411, 412,
        413, 505, 507, 508, 601, 701, 702, 703, 704, 801, 802, 803, 901, 902, 903, 904, 905, 906, 907, 908,
        909, 910, 911, 912, 913, 916, 917, 1001, 1002, 1003, 1004, 1005, 1006, 1007, 0, 2, 9, 999, 0xFFFFFFFF};
    kvnsim::Simulator sim;
    ASSERT_TRUE(sim.start());
    sim.present_card({1, 2, 3, 4});
    ShortWaits waits(5000);
    kvn_device_conn c = simtest::tcp_conn(sim.port());
    ASSERT_EQ(kvn_open_device_conn(&c), 0);
    uint32_t x = 2024;
    auto next = [&] { return (x = x * 1664525u + 1013904223u) >> 8; };
    // A random element sequence, with containers of the same inside some.
    std::function<Bytes(int)> elements = [&](int depth) {
        Bytes p;
        const uint32_t count = next() % 6;
        for (uint32_t i = 0; i < count; ++i) {
            const uint8_t tag = uint8_t(next() % 48);
            Bytes v;
            if (depth < 2 && next() % 4 == 0) {
                v = elements(depth + 1);
                const uint32_t n = uint32_t(v.size());
                p.insert(p.end(), {tag, 0x84, uint8_t(n >> 24), uint8_t(n >> 16), uint8_t(n >> 8), uint8_t(n)});
            } else {
                const uint32_t widths[] = {0, 1, 2, 4, 4, 4, 16, 17, 64, 200};
                v.resize(widths[next() % 10]);
                for (auto& b : v) b = uint8_t(next());
                p.push_back(tag);
                p.push_back(uint8_t(v.size()));
            }
            p.insert(p.end(), v.begin(), v.end());
        }
        return p;
    };
    int answered = 0, total = 0;
    for (uint32_t command : commands) {
        for (uint16_t type = 1; type <= 5; ++type) {
            for (int k = 0; k < 6; ++k) {
                Bytes payload = elements(0);
                if (k == 5) {  // plain noise
                    payload.resize(next() % 300);
                    for (auto& b : payload) b = uint8_t(next());
                }
                const Answer a = exchange(c, type, command, payload);
                ++total;
                if (a.rc != KVN_E_READ_TIMEOUT && a.rc != KVN_E_WRITE_TIMEOUT) {
                    ++answered;
                    continue;
                }
                ADD_FAILURE() << "no answer to command " << command << " type " << type;
                kvn_close_device_conn(&c);
                ASSERT_EQ(kvn_open_device_conn(&c), 0);
            }
        }
    }
    EXPECT_EQ(answered, total);
    EXPECT_EQ(exchange(c, KVN_REQ_GET, 149).rc, 0);
    kvn_close_device_conn(&c);
}

// On a serial line there is no connection to drop: after bytes that are not a
// frame the terminal finds the next sync word and answers that frame.
TEST(SimSerial, LineResynchronisesOnTheNextSyncWord) {
    kvnsim::Options o;
    o.serial = true;
    kvnsim::Simulator sim(o);
    ASSERT_TRUE(sim.start());
    const int fd = ::open(sim.serial_path().c_str(), O_RDWR | O_NOCTTY);
    ASSERT_GE(fd, 0);
    termios tio;
    ASSERT_EQ(::tcgetattr(fd, &tio), 0);
    ::cfmakeraw(&tio);
    ASSERT_EQ(::tcsetattr(fd, TCSANOW, &tio), 0);
    const Bytes request = hex("dd cc bb aa 04 03 02 01 02 00 02 00 00 00 00 00 67 00 00 00 00 00 00 00 d1 1e fc dc");
    Bytes line = hex("00 dd cc 17 aa dd cc bb");  // noise, including a partial sync word
    line.insert(line.end(), request.begin(), request.end());
    ASSERT_EQ(::write(fd, line.data(), line.size()), static_cast<ssize_t>(line.size()));
    Bytes got(38);
    size_t have = 0;
    while (have < got.size()) {
        pollfd p{fd, POLLIN, 0};
        ASSERT_EQ(::poll(&p, 1, 5000), 1) << "no answer on the line";
        const ssize_t r = ::read(fd, got.data() + have, got.size() - have);
        ASSERT_GT(r, 0);
        have += size_t(r);
    }
    EXPECT_EQ(got, hex("dd cc bb aa 04 03 02 01 02 00 02 00 00 00 00 00 00 00 00 00 00 00 00 00 06 00 00 00"
                       " 01 04 00 00 00 00 c0 ba db c6"));
    ::close(fd);
}

// State under --state survives a restart.
TEST(SimState, SettingsUsersAndFilesSurviveARestart) {
    const std::string dir = temp_dir("restart");
    kvnsim::Options o;
    o.state_dir = dir;
    {
        kvnsim::Simulator sim(o);
        ASSERT_TRUE(sim.start());
        kvn_device_conn c = simtest::tcp_conn(sim.port());
        ASSERT_EQ(kvn_open_device_conn(&c), 0);
        EXPECT_EQ(exchange(c, KVN_REQ_SET, 149, lcd_payload(42, "kept")).rc, 0);
        // A user record: tag 1 holding tag 2 (id) and tag 3 (text).
        EXPECT_EQ(exchange(c, KVN_REQ_SET, 7, {1, 9, 2, 3, 'a', 'm', 'y', 3, 2, 'A', 'M'}).rc, 0);
        EXPECT_EQ(exchange(c, KVN_REQ_SET, 115, {8, 4, 9, 0, 0, 0, 7, 4, 0, 0, 0, 0}).rc, 0);  // door open 9 s
        kvn_close_device_conn(&c);
    }
    kvnsim::Simulator again(o);
    ASSERT_TRUE(again.start());
    kvn_device_conn c = simtest::tcp_conn(again.port());
    ASSERT_EQ(kvn_open_device_conn(&c), 0);
    EXPECT_EQ(exchange(c, KVN_REQ_GET, 149).payload, lcd_payload(42, "kept"));
    const Answer user = exchange(c, KVN_REQ_GET, 7, {2, 3, 'a', 'm', 'y'});
    EXPECT_EQ(user.rc, 0);
    EXPECT_EQ(user.payload, Bytes({1, 0x84, 0, 0, 0, 9, 2, 3, 'a', 'm', 'y', 3, 2, 'A', 'M'}));
    const auto dac = simtest::elements(exchange(c, KVN_REQ_GET, 115).payload);
    ASSERT_NE(simtest::value_of(dac, 8), nullptr);
    EXPECT_EQ(simtest::le32(*simtest::value_of(dac, 8)), 9u);
    // The door action was journalled.
    const Answer count = exchange(c, KVN_REQ_GET, 405);
    EXPECT_EQ(count.payload, Bytes({6, 4, 1, 0, 0, 0}));
    kvn_close_device_conn(&c);
    std::filesystem::remove_all(dir);
}

// A simulator killed with SIGKILL right after answering loses nothing it
// answered for. The simulator runs in a child process for this.
TEST(SimState, NothingAnsweredIsLostToKill9) {
    const std::string dir = temp_dir("kill9");
    int ports[2];
    ASSERT_EQ(::pipe(ports), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        kvnsim::Options o;
        o.state_dir = dir;
        kvnsim::Simulator sim(o);
        if (!sim.start()) ::_exit(1);
        const uint16_t port = sim.port();
        (void)!::write(ports[1], &port, sizeof port);
        for (;;) ::pause();
    }
    ::close(ports[1]);
    uint16_t port = 0;
    ASSERT_EQ(::read(ports[0], &port, sizeof port), static_cast<ssize_t>(sizeof port));
    ::close(ports[0]);
    kvn_device_conn c = simtest::tcp_conn(port);
    ASSERT_EQ(kvn_open_device_conn(&c), 0);
    for (uint32_t v = 1; v <= 50; ++v) ASSERT_EQ(exchange(c, KVN_REQ_SET, 149, lcd_payload(v, "v")).rc, 0);
    for (int u = 0; u < 20; ++u) {
        const std::string id = "u" + std::to_string(u);
        Bytes rec = {1, uint8_t(2 + id.size()), 2, uint8_t(id.size())};
        rec.insert(rec.end(), id.begin(), id.end());
        ASSERT_EQ(exchange(c, KVN_REQ_SET, 7, rec).rc, 0);
    }
    ASSERT_EQ(exchange(c, KVN_REQ_SET, 115, {8, 4, 3, 0, 0, 0, 7, 4, 0, 0, 0, 0}).rc, 0);
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    kvn_close_device_conn(&c);
    // What a write cut short by the kill would leave: a temporary file.
    const std::string stray = dir + "/settings/149.tmp.999.0";
    { std::ofstream(stray) << "torn"; }

    kvnsim::Options o;
    o.state_dir = dir;
    kvnsim::Simulator sim(o);
    ASSERT_TRUE(sim.start());
    EXPECT_FALSE(std::filesystem::exists(stray));
    c = simtest::tcp_conn(sim.port());
    ASSERT_EQ(kvn_open_device_conn(&c), 0);
    EXPECT_EQ(exchange(c, KVN_REQ_GET, 149).payload, lcd_payload(50, "v"));
    EXPECT_EQ(exchange(c, KVN_REQ_GET, 8).payload, Bytes({26, 4, 20, 0, 0, 0}));
    EXPECT_EQ(exchange(c, KVN_REQ_GET, 405).payload, Bytes({6, 4, 1, 0, 0, 0}));
    kvn_close_device_conn(&c);
    std::filesystem::remove_all(dir);
}

#endif  // KVN_HAVE_SIM
