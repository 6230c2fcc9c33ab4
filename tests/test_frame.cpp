// Request frames byte for byte and every response rule against a loopback peer.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>

#include "kvnsdk2.h"
#include "peer.h"

using kvntest::Bytes;
using kvntest::LoopbackPeer;
using kvntest::sock_t;

namespace {

using kvntest::crc32;

// Runs `client` against a peer playing `script`; returns when both are done.
template <class Script, class Client>
void with_peer(Script script, Client client) {
    LoopbackPeer peer(script);
    kvn_device_conn c = peer.conn();
    ASSERT_EQ(kvn_open_device_conn(&c), 0);
    client(c);
    kvn_close_device_conn(&c);
}

// Sends a get request, lets the peer answer with `answer`; what kvn_receive_response returned.
int32_t exchange(const Bytes& answer, uint8_t* buffer, uint32_t* length) {
    int32_t rc = 99;
    with_peer(
        [&](sock_t s) {
            kvntest::read_request(s);
            kvntest::write_bytes(s, answer);
        },
        [&](kvn_device_conn& c) {
            const uint32_t word = KVN_REQUEST_WORD(KVN_REQ_GET);
            ASSERT_EQ(kvn_send_command(&c, &word, 104, nullptr, 0), 0);
            rc = kvn_receive_response(&c, buffer, length);
        });
    return rc;
}

}  // namespace

TEST(RequestFrame, GetWithoutPayloadIs28BytesWithHeaderCrc) {
    Bytes seen;
    with_peer([&](sock_t s) { seen = kvntest::read_bytes(s, 29); },
              [](kvn_device_conn& c) {
                  c.header_id = 0x11223344;
                  const uint32_t word = KVN_REQUEST_WORD(KVN_REQ_GET);
                  ASSERT_EQ(kvn_send_command(&c, &word, 104, nullptr, 0), 0);
              });
    const Bytes head = {0xDD, 0xCC, 0xBB, 0xAA,   // sync word, little-endian
                        0x44, 0x33, 0x22, 0x11,   // header_id
                        0x02, 0x00, 0x02, 0x00,   // request word 0x00020002
                        0x00, 0x00, 0x00, 0x00,   // reserved
                        0x68, 0x00, 0x00, 0x00,   // command 104
                        0x00, 0x00, 0x00, 0x00};  // payload length
    ASSERT_EQ(seen.size(), 28u);
    EXPECT_BYTES(Bytes(seen.begin(), seen.begin() + 24), head);
    const uint32_t crc = crc32(0, head.data() + 4, 20);
    EXPECT_EQ(kvntest::get_le32(seen.data() + 24), crc);
    EXPECT_EQ(kvn_calculate_req_header_crc(head.data() + 4), crc);
}

TEST(RequestFrame, PayloadFollowsHeaderAndIsCovered) {
    Bytes seen;
    const uint8_t payload[] = {0x09, 0x04, 0x01, 0x00, 0x00, 0x00};
    with_peer([&](sock_t s) { seen = kvntest::read_bytes(s, 35); },
              [&](kvn_device_conn& c) {
                  c.header_id = 7;
                  const uint32_t word = KVN_REQUEST_WORD(KVN_REQ_SET);
                  ASSERT_EQ(kvn_send_command(&c, &word, 305, payload, sizeof payload), 0);
              });
    const Bytes head = {0xDD, 0xCC, 0xBB, 0xAA, 0x07, 0x00, 0x00, 0x00, 0x02, 0x00, 0x01, 0x00,
                        0x00, 0x00, 0x00, 0x00, 0x31, 0x01, 0x00, 0x00, 0x06, 0x00, 0x00, 0x00};
    ASSERT_EQ(seen.size(), 34u);
    EXPECT_BYTES(Bytes(seen.begin(), seen.begin() + 24), head);
    EXPECT_BYTES(Bytes(seen.begin() + 24, seen.begin() + 30), Bytes(payload, payload + 6));
    EXPECT_EQ(kvntest::get_le32(seen.data() + 30), crc32(0, seen.data() + 4, 26));
}

TEST(RequestFrame, NullPayloadWithLengthAnnouncesBytesThatNeverFollow) {
    Bytes seen;
    with_peer([&](sock_t s) { seen = kvntest::read_bytes(s, 40); },
              [](kvn_device_conn& c) {
                  const uint32_t word = KVN_REQUEST_WORD(KVN_REQ_SET);
                  ASSERT_EQ(kvn_send_command(&c, &word, 802, nullptr, 12), 0);
              });
    ASSERT_EQ(seen.size(), 28u);
    EXPECT_EQ(kvntest::get_le32(seen.data() + 20), 12u);
    EXPECT_EQ(kvntest::get_le32(seen.data() + 24), crc32(0, seen.data() + 4, 20));
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

TEST(ResponseFrame, StatusWordIsTheResultWithoutPayload) {
    for (int32_t status : {0, -2021, -1002, 7, 0x7FFFFFFF}) {
        uint8_t buf[64];
        uint32_t len = sizeof buf;
        const int32_t rc = exchange(kvntest::response(status), buf, &len);
        EXPECT_EQ(rc, status);
        EXPECT_EQ(len, 0u);
    }
}

TEST(ResponseFrame, PayloadWithNonZeroStatusIsSuccess) {
    const Bytes payload = {1, 4, 0x2A, 0, 0, 0};
    uint8_t buf[64] = {};
    uint32_t len = sizeof buf;
    const int32_t rc = exchange(kvntest::response(-5001, payload), buf, &len);
    EXPECT_EQ(rc, 0);
    ASSERT_EQ(len, payload.size());
    EXPECT_EQ(Bytes(buf, buf + len), payload);
}

TEST(ResponseFrame, PayloadAsLongAsTheCapacityIsRefused) {
    struct Case {
        uint32_t payload, capacity;
        int32_t rc;
        uint32_t length_after;
    };
    const Case cases[] = {
        {16, 16, -1, 16},   // equal: refused, length untouched
        {17, 16, -1, 16},   // larger: refused
        {15, 16, 0, 15},    // one byte spare: accepted
        {1, 2, 0, 1},
        {1, 1, -1, 1},
    };
    for (const Case& k : cases) {
        Bytes buf(k.capacity + 8, 0xEE);
        uint32_t len = k.capacity;
        const int32_t rc = exchange(kvntest::response(0, Bytes(k.payload, 0x5A)), buf.data(), &len);
        EXPECT_EQ(rc, k.rc) << k.payload << "/" << k.capacity;
        EXPECT_EQ(len, k.length_after) << k.payload << "/" << k.capacity;
        if (k.rc != 0) EXPECT_EQ(buf[0], 0xEE) << "nothing read into the buffer";
    }
}

TEST(ResponseFrame, BadSyncWordLeavesTheRestUnread) {
    Bytes answer = kvntest::response(0, {1, 1, 9});
    answer[0] ^= 0x01;
    Bytes rest;
    int32_t rc = 0;
    with_peer([&](sock_t s) {
                  kvntest::read_request(s);
                  kvntest::write_bytes(s, answer);
              },
              [&](kvn_device_conn& c) {
                  const uint32_t word = KVN_REQUEST_WORD(KVN_REQ_GET);
                  ASSERT_EQ(kvn_send_command(&c, &word, 104, nullptr, 0), 0);
                  uint8_t buf[64];
                  uint32_t len = sizeof buf;
                  rc = kvn_receive_response(&c, buf, &len);
                  rest.resize(answer.size() - 4);
                  EXPECT_EQ(kvn_receive_data(&c.link, rest.data(), static_cast<uint32_t>(rest.size())), 0);
              });
    EXPECT_EQ(rc, -12);
    EXPECT_BYTES(rest, Bytes(answer.begin() + 4, answer.end()));
}

TEST(ResponseFrame, CorruptedBytesGiveCrcMismatch) {
    const Bytes payload = {3, 4, 1, 0, 0, 0, 2, 1, 1};
    const Bytes good = kvntest::response(0, payload);
    // Every byte after the sync word is covered: header words, length-neutral
    // payload bytes and the CRC itself.
    for (size_t at : {size_t{4}, size_t{16}, size_t{22}, size_t{28}, size_t{36}, good.size() - 1}) {
        Bytes bad = good;
        bad[at] ^= 0x40;
        uint8_t buf[64];
        uint32_t len = sizeof buf;
        EXPECT_EQ(exchange(bad, buf, &len), -6) << "byte " << at;
    }
    Bytes bad_empty = kvntest::response(-2021);
    bad_empty.back() ^= 1;
    uint8_t buf[8];
    uint32_t len = sizeof buf;
    EXPECT_EQ(exchange(bad_empty, buf, &len), -6);
}

TEST(ResponseFrame, PeerClosingMidFrameGivesReadErrorWithoutWaiting) {
    kvntest::ShortWaits waits(20000);  // a hang would show up as a 20 s test, not a pass
    const Bytes full = kvntest::response(0, Bytes(100, 1));
    for (size_t cut : {size_t{0}, size_t{2}, size_t{4}, size_t{20}, size_t{28}, size_t{60}, full.size() - 2}) {
        uint8_t buf[256];
        uint32_t len = sizeof buf;
        const int32_t rc = exchange(Bytes(full.begin(), full.begin() + static_cast<long>(cut)), buf, &len);
        EXPECT_EQ(rc, -2) << "cut at " << cut;
    }
}

TEST(ResponseFrame, SilentPeerTimesOutWithReadError) {
    kvntest::ShortWaits waits(150);
    std::atomic<bool> done{false};
    int32_t rc = 0;
    with_peer([&](sock_t s) {
                  kvntest::read_request(s);
                  kvntest::wait_until([&] { return done.load(); });
              },
              [&](kvn_device_conn& c) {
                  const uint32_t word = KVN_REQUEST_WORD(KVN_REQ_GET);
                  ASSERT_EQ(kvn_send_command(&c, &word, 104, nullptr, 0), 0);
                  uint8_t buf[64];
                  uint32_t len = sizeof buf;
                  rc = kvn_receive_response(&c, buf, &len);
                  done = true;
              });
    EXPECT_EQ(rc, -2);
}

TEST(ResponseFrame, PeerThatNeverReadsGivesWriteError) {
    kvntest::ShortWaits waits(150);
    std::atomic<bool> done{false};
    int32_t rc = 0;
    Bytes big(KVN_MAX_REQUEST_PAYLOAD, 0x11);
    with_peer([&](sock_t) { kvntest::wait_until([&] { return done.load(); }); },
              [&](kvn_device_conn& c) {
                  const uint32_t word = KVN_REQUEST_WORD(KVN_REQ_SET);
                  // Socket buffers take a few frames; the write that finds them full waits and fails.
                  for (int i = 0; i < 200 && rc == 0; ++i) rc = kvn_send_command(&c, &word, 120, big.data(), KVN_MAX_REQUEST_PAYLOAD);
                  done = true;
              });
    EXPECT_EQ(rc, -3);
}

TEST(ResponseFrame, ResetCommandSendsResetAndReturnsStatus) {
    Bytes seen;
    int32_t rc = 0;
    with_peer([&](sock_t s) {
                  seen = kvntest::read_request(s);
                  kvntest::write_bytes(s, kvntest::response(-2021, Bytes(40, 7)));  // payload discarded
                  kvntest::read_request(s);
                  kvntest::write_bytes(s, kvntest::response(-1002));
              },
              [&](kvn_device_conn& c) {
                  EXPECT_EQ(kvn_send_reset_command(&c, 121), 0);
                  rc = kvn_send_reset_command(&c, 122);
              });
    ASSERT_EQ(seen.size(), 28u);
    EXPECT_EQ(kvntest::get_le32(seen.data() + 8), 0x00030002u);
    EXPECT_EQ(kvntest::get_le32(seen.data() + 16), 121u);
    EXPECT_EQ(rc, -1002);
}

TEST(ResponseFrame, ResetResponseLargerThanItsBufferIsRefused) {
    int32_t rc = 0;
    with_peer([&](sock_t s) {
                  kvntest::read_request(s);
                  kvntest::write_bytes(s, kvntest::response(0, Bytes(1024, 7)));
              },
              [&](kvn_device_conn& c) { rc = kvn_send_reset_command(&c, 131); });
    EXPECT_EQ(rc, -1);
}
