// Request frames byte for byte and every response rule against a loopback peer.
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>
#include <vector>

#include "kvnsdk2.h"
#include "peer.h"

using kvntest::Bytes;
using kvntest::crc32;
using kvntest::sock_t;

namespace {

// Runs `client` against a peer playing `script`; returns when both are done.
template <class Script, class Client>
void with_peer(Script script, Client client) {
    kvntest::LoopbackPeer peer(script);
    kvn_device_conn c = peer.conn();
    ASSERT_EQ(kvn_open_device_conn(&c), 0);
    client(c);
    kvn_close_device_conn(&c);
}

// Sends a get request, lets the peer answer with `answer`; what kvn_receive_response
// returned. `after` runs on the client once the response has been read.
int32_t exchange(const Bytes& answer, uint8_t* buffer, uint32_t* length,
                 const std::function<void(kvn_device_conn&)>& after = nullptr) {
    return kvntest::capture([&](kvn_device_conn* c) {
        const uint32_t word = KVN_REQUEST_WORD(KVN_REQ_GET);
        EXPECT_EQ(kvn_send_command(c, &word, 104, nullptr, 0), 0);
        const int32_t rc = kvn_receive_response(c, buffer, length);
        if (after) after(*c);
        return rc;
    }, answer).rc;
}

}  // namespace

// Requests byte for byte: sync word, header_id, request word, 0, command id, length,
// the payload, and the CRC of everything after the sync word.
TEST(RequestFrame, HeaderPayloadAndCrc) {
    const uint8_t payload[] = {0x09, 0x04, 0x01, 0x00, 0x00, 0x00};
    struct Case { uint32_t header_id, word, command; const uint8_t* payload; uint32_t length; Bytes head; size_t follows; };
    const Case cases[] = {
        {0x11223344, 0x00020002, 104, nullptr, 0,
         {0xDD, 0xCC, 0xBB, 0xAA, 0x44, 0x33, 0x22, 0x11, 0x02, 0, 0x02, 0, 0, 0, 0, 0, 0x68, 0, 0, 0, 0, 0, 0, 0}, 0},
        {7, 0x00010002, 305, payload, 6,
         {0xDD, 0xCC, 0xBB, 0xAA, 0x07, 0, 0, 0, 0x02, 0, 0x01, 0, 0, 0, 0, 0, 0x31, 0x01, 0, 0, 0x06, 0, 0, 0}, 6},
        // No payload but a length: the length is announced and no bytes follow.
        {0, 0x00010002, 802, nullptr, 12,
         {0xDD, 0xCC, 0xBB, 0xAA, 0, 0, 0, 0, 0x02, 0, 0x01, 0, 0, 0, 0, 0, 0x22, 0x03, 0, 0, 0x0C, 0, 0, 0}, 0},
    };
    for (const Case& k : cases) {
        Bytes seen;
        with_peer([&](sock_t s) { seen = kvntest::read_bytes(s, 64); },
                  [&](kvn_device_conn& c) {
                      c.header_id = k.header_id;
                      ASSERT_EQ(kvn_send_command(&c, &k.word, k.command, k.payload, k.length), 0);
                  });
        Bytes want = kvntest::cat({k.head, Bytes(payload, payload + k.follows)});
        kvntest::put_le32(want, crc32(0, want.data() + 4, want.size() - 4));
        EXPECT_BYTES(seen, want) << "command " << k.command;
    }
    EXPECT_EQ(kvn_calculate_req_header_crc(cases[0].head.data() + 4), crc32(0, cases[0].head.data() + 4, 20));
}

TEST(RequestFrame, LargestPayloadGoesOutWholeAndOneMoreIsRefused) {
    Bytes big(KVN_MAX_REQUEST_PAYLOAD + 1);
    for (size_t i = 0; i < big.size(); ++i) big[i] = static_cast<uint8_t>(i * 31);
    Bytes seen;
    with_peer([&](sock_t s) { seen = kvntest::read_bytes(s, 28 + KVN_MAX_REQUEST_PAYLOAD + 1); },
              [&](kvn_device_conn& c) {
                  const uint32_t word = KVN_REQUEST_WORD(KVN_REQ_SET);
                  EXPECT_EQ(kvn_send_command(&c, &word, 1, big.data(), KVN_MAX_REQUEST_PAYLOAD + 1), -1);
                  EXPECT_EQ(kvn_send_command(&c, &word, 1, big.data(), KVN_MAX_REQUEST_PAYLOAD), 0);
              });
    // Only the accepted frame reached the peer.
    ASSERT_EQ(seen.size(), 28u + KVN_MAX_REQUEST_PAYLOAD);
    EXPECT_EQ(kvntest::get_le32(seen.data() + 20), KVN_MAX_REQUEST_PAYLOAD);
    EXPECT_EQ(0, std::memcmp(seen.data() + 24, big.data(), KVN_MAX_REQUEST_PAYLOAD));
    EXPECT_EQ(kvntest::get_le32(seen.data() + 24 + KVN_MAX_REQUEST_PAYLOAD),
              crc32(0, seen.data() + 4, 20 + KVN_MAX_REQUEST_PAYLOAD));
}

// Without a payload the status word is the result, whatever it is; with one the
// result is 0. A payload as long as the capacity or longer is refused before it is
// read, the caller's length untouched: one byte always stays spare.
TEST(ResponseFrame, StatusPayloadAndCapacity) {
    struct Case { int32_t status; uint32_t payload, capacity; int32_t rc; uint32_t length_after; };
    const Case cases[] = {
        {0, 0, 16, 0, 0},          {-2021, 0, 16, -2021, 0}, {7, 0, 16, 7, 0},   {0x7FFFFFFF, 0, 16, 0x7FFFFFFF, 0},
        {-5001, 6, 16, 0, 6},      {0, 16, 16, -1, 16},      {0, 17, 16, -1, 16}, {0, 15, 16, 0, 15},
        {0, 1, 2, 0, 1},           {0, 1, 1, -1, 1},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(testing::Message() << k.status << " " << k.payload << "/" << k.capacity);
        Bytes buf(k.capacity + 8, 0xEE);
        uint32_t len = k.capacity;
        EXPECT_EQ(exchange(kvntest::response(k.status, Bytes(k.payload, 0x5A)), buf.data(), &len), k.rc);
        EXPECT_EQ(len, k.length_after);
        EXPECT_EQ(buf[0], k.rc == 0 && k.payload > 0 ? 0x5A : 0xEE) << "the payload, and only it, is read";
    }
}

TEST(ResponseFrame, BadSyncWordLeavesTheRestUnread) {
    Bytes answer = kvntest::response(0, {1, 1, 9});
    answer[0] ^= 0x01;
    Bytes rest(answer.size() - 4);
    uint8_t buf[64];
    uint32_t len = sizeof buf;
    EXPECT_EQ(exchange(answer, buf, &len, [&](kvn_device_conn& c) {
                  EXPECT_EQ(kvn_receive_data(&c.link, rest.data(), static_cast<uint32_t>(rest.size())), 0);
              }), -12);
    EXPECT_BYTES(rest, Bytes(answer.begin() + 4, answer.end()));
}

// A flipped bit anywhere after the sync word gives -6: header words, length-neutral
// payload bytes and the CRC itself, also in an answer without payload. A peer that
// closes mid-frame gives -2 at once (a hang would show up as a 20 s test, not a pass).
TEST(ResponseFrame, CorruptedOrCutAnswers) {
    kvntest::ShortWaits waits(20000);
    const Bytes good = kvntest::response(0, {3, 4, 1, 0, 0, 0, 2, 1, 1}), full = kvntest::response(0, Bytes(100, 1));
    std::vector<std::pair<Bytes, int32_t>> bad;
    for (size_t at : {size_t{4}, size_t{16}, size_t{22}, size_t{28}, size_t{36}, good.size() - 1})
        bad.emplace_back(good, -6).first[at] ^= 0x40;
    bad.emplace_back(kvntest::response(-2021), -6).first.back() ^= 1;
    for (size_t cut : {size_t{0}, size_t{2}, size_t{4}, size_t{20}, size_t{28}, size_t{60}, full.size() - 2})
        bad.emplace_back(Bytes(full.begin(), full.begin() + static_cast<long>(cut)), -2);
    for (const auto& [answer, rc] : bad) {
        uint8_t buf[256];
        uint32_t len = sizeof buf;
        EXPECT_EQ(exchange(answer, buf, &len), rc) << kvntest::hex_dump(answer);
    }
}

// An answer that arrives in pieces is checked whole: the CRC runs over each chunk of
// the payload as it lands, across any split (inside the header, the payload, at the
// payload's end, inside the CRC), and a bad byte in the last chunk still shows.
TEST(ResponseFrame, AnswerArrivingInPiecesIsCheckedWhole) {
    Bytes payload(5000);
    for (size_t i = 0; i < payload.size(); ++i) payload[i] = static_cast<uint8_t>(i * 7 + i / 251);
    const Bytes good = kvntest::response(0, payload);
    Bytes bad_payload = good, bad_crc = good;
    bad_payload[good.size() - 5] ^= 0x20;  // the payload's last byte
    bad_crc[good.size() - 1] ^= 0x01;
    const size_t end = 28 + payload.size();  // where the CRC starts
    struct Case { const char* what; const Bytes* answer; std::vector<size_t> cuts; int32_t rc; };
    const Case cases[] = {
        {"inside the header", &good, {6, 17, 40}, 0},
        {"every few bytes of the payload's start", &good, {29, 30, 33, 45, 46, 61, 62, 95, 300, 301}, 0},
        {"odd chunks", &good, {1000, 1999, 3001, 4093}, 0},
        {"at the payload's end", &good, {end}, 0},
        {"inside the CRC", &good, {end + 1, end + 3}, 0},
        {"bad payload byte in the last chunk", &bad_payload, {1000, end - 1}, -6},
        {"bad CRC byte, split before it", &bad_crc, {end + 3}, -6},
    };
    for (const Case& k : cases) {
        Bytes got(payload.size() + 1);
        uint32_t len = static_cast<uint32_t>(got.size());
        int32_t rc = 1;
        with_peer(
            [&](sock_t s) {
                kvntest::read_request(s);
                size_t from = 0;
                for (size_t cut : k.cuts) {
                    kvntest::write_bytes(s, Bytes(k.answer->begin() + static_cast<long>(from),
                                                  k.answer->begin() + static_cast<long>(cut)));
                    from = cut;
                    std::this_thread::sleep_for(std::chrono::milliseconds(2));
                }
                kvntest::write_bytes(s, Bytes(k.answer->begin() + static_cast<long>(from), k.answer->end()));
            },
            [&](kvn_device_conn& c) {
                const uint32_t word = KVN_REQUEST_WORD(KVN_REQ_GET);
                ASSERT_EQ(kvn_send_command(&c, &word, 120, nullptr, 0), 0);
                rc = kvn_receive_response(&c, got.data(), &len);
            });
        EXPECT_EQ(rc, k.rc) << k.what;
        EXPECT_EQ(len, payload.size()) << k.what;
        if (k.rc == 0) {
            EXPECT_EQ(0, std::memcmp(got.data(), payload.data(), payload.size())) << k.what;
        }
    }
}

// A peer that accepts and never reads: the socket buffers take a few frames, the
// write that finds them full waits once and fails with a timeout, instead of waiting
// inside send() until the peer goes away (which would show as a reset, not a timeout).
TEST(ResponseFrame, PeerThatNeverReadsGivesWriteError) {
#ifdef _WIN32
    constexpr int32_t kTimedOut = 10060;  // WSAETIMEDOUT
#else
    constexpr int32_t kTimedOut = ETIMEDOUT;
#endif
    kvntest::ShortWaits waits(150);
    std::atomic<bool> done{false};
    int32_t rc = 0, os_error = 0;
    Bytes big(KVN_MAX_REQUEST_PAYLOAD, 0x11);
    with_peer([&](sock_t) { kvntest::wait_until([&] { return done.load(); }, std::chrono::seconds(60)); },
              [&](kvn_device_conn& c) {
                  const uint32_t word = KVN_REQUEST_WORD(KVN_REQ_SET);
                  for (int i = 0; i < 200 && rc == 0; ++i) rc = kvn_send_command(&c, &word, 120, big.data(), KVN_MAX_REQUEST_PAYLOAD);
                  os_error = kvn_ext_last_os_error();
                  done = true;
              });
    EXPECT_EQ(rc, -3);
    EXPECT_EQ(os_error, kTimedOut);
}

// A count of 0 moves nothing, even on a socket that could not be used.
TEST(ResponseFrame, ZeroCountsTouchNothing) {
    kvn_conn_link link{};
    link.conn_type = KVN_CONN_TCP;
    link.socket = static_cast<kvn_socket_t>(-1);  // INVALID_SOCKET on Windows
    uint8_t b = 0;
    EXPECT_EQ(kvn_send_data(&link, &b, 0), 0);
    EXPECT_EQ(kvn_receive_data(&link, &b, 0), 0);
    EXPECT_EQ(kvn_send_data(&link, &b, 1), -3);
    EXPECT_EQ(kvn_receive_data(&link, &b, 1), -2);
}

// The reset command: request type 3 without payload, the status as its result, any
// payload discarded; an answer as long as its 1024-byte buffer is refused.
TEST(ResponseFrame, ResetCommandSendsResetAndReturnsStatus) {
    const Bytes answers[] = {kvntest::response(-2021, Bytes(40, 7)), kvntest::response(-1002),
                             kvntest::response(0, Bytes(1024, 7))};
    const int32_t rcs[] = {0, -1002, -1};
    Bytes seen;
    with_peer(
        [&](sock_t s) {
            for (const Bytes& a : answers) {
                const Bytes req = kvntest::read_request(s);
                if (seen.empty()) seen = req;
                kvntest::write_bytes(s, a);
            }
        },
        [&](kvn_device_conn& c) {
            for (uint32_t i = 0; i < 3; ++i) EXPECT_EQ(kvn_send_reset_command(&c, 121 + i), rcs[i]) << i;
        });
    ASSERT_EQ(seen.size(), 28u);
    EXPECT_EQ(kvntest::get_le32(seen.data() + 8), 0x00030002u);
    EXPECT_EQ(kvntest::get_le32(seen.data() + 16), 121u);
}
