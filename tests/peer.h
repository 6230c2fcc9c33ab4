// Test helpers shared by every test file: byte builders for payloads and frames, a
// hex dump when bytes differ, short waits, and a loopback TCP peer that plays a script.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <initializer_list>
#include <string>
#include <thread>
#include <vector>

#include "kvnsdk2.h"

namespace kvntest {

using Bytes = std::vector<uint8_t>;

// --- Bytes -----------------------------------------------------------------------

inline void put_le32(Bytes& b, uint32_t v) {
    for (int i = 0; i < 4; ++i) b.push_back(static_cast<uint8_t>(v >> (8 * i)));
}
inline uint32_t get_le32(const uint8_t* p) {
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}
inline Bytes cat(std::initializer_list<Bytes> parts) {
    Bytes out;
    for (const Bytes& p : parts) out.insert(out.end(), p.begin(), p.end());
    return out;
}
// One element: tag, the shortest length form, value.
inline Bytes el(uint8_t tag, const Bytes& v) {
    const auto n = static_cast<uint32_t>(v.size());
    Bytes b = {tag};
    if (n >= 0x10000) b.insert(b.end(), {0x84, uint8_t(n >> 24), uint8_t(n >> 16), uint8_t(n >> 8), uint8_t(n)});
    else if (n >= 0x100) b.insert(b.end(), {0x82, uint8_t(n >> 8), uint8_t(n)});
    else if (n >= 0x80) b.insert(b.end(), {0x81, uint8_t(n)});
    else b.push_back(uint8_t(n));
    return cat({b, v});
}
inline Bytes u32(uint8_t tag, uint32_t v) { return el(tag, {uint8_t(v), uint8_t(v >> 8), uint8_t(v >> 16), uint8_t(v >> 24)}); }
inline Bytes u8(uint8_t tag, uint8_t v) { return el(tag, {v}); }
inline Bytes text(uint8_t tag, const std::string& s) { return el(tag, Bytes(s.begin(), s.end())); }
// A container with the five-byte length form, as encoders write it.
inline Bytes box(uint8_t tag, const Bytes& inner) {
    const auto n = static_cast<uint32_t>(inner.size());
    return cat({{tag, 0x84, uint8_t(n >> 24), uint8_t(n >> 16), uint8_t(n >> 8), uint8_t(n)}, inner});
}

// CRC-32 by its definition (reflected 0xEDB88320, initial 0xFFFFFFFF, complemented),
// continued from a finished CRC: the reference for frames built here.
inline uint32_t crc32(uint32_t crc, const uint8_t* p, size_t n) {
    uint32_t c = ~crc;
    for (size_t i = 0; i < n; ++i) {
        c ^= p[i];
        for (int k = 0; k < 8; ++k) c = (c >> 1) ^ (0xEDB88320u & (0u - (c & 1u)));
    }
    return ~c;
}

// A response frame: sync, three header words, status, word 5, N, payload, CRC.
inline Bytes response(int32_t status, const Bytes& payload = {}) {
    Bytes b;
    for (uint32_t w : {0xAABBCCDDu, 0x01010101u, 0x00020002u, 0u, uint32_t(status), 0u, uint32_t(payload.size())})
        put_le32(b, w);
    b.insert(b.end(), payload.begin(), payload.end());
    put_le32(b, crc32(0, b.data() + 4, b.size() - 4));
    return b;
}

inline std::string hex_dump(const Bytes& b) {
    std::string out;
    char cell[8];
    for (size_t i = 0; i < b.size(); ++i) {
        std::snprintf(cell, sizeof cell, "%s%02x", i % 16 == 0 ? "\n  " : " ", b[i]);
        out += cell;
    }
    return out;
}
// EXPECT_BYTES(got, want): on a difference, where it starts and both sides in hex.
inline ::testing::AssertionResult same_bytes(const Bytes& got, const Bytes& want) {
    if (got == want) return ::testing::AssertionSuccess();
    size_t at = 0;
    while (at < got.size() && at < want.size() && got[at] == want[at]) ++at;
    return ::testing::AssertionFailure() << "bytes differ from offset " << at << " (got " << got.size()
                                         << " bytes, want " << want.size() << ")\ngot:" << hex_dump(got)
                                         << "\nwant:" << hex_dump(want);
}
#define EXPECT_BYTES(got, want) EXPECT_TRUE(::kvntest::same_bytes((got), (want)))

// --- Waits -----------------------------------------------------------------------

// Polls `done` until it holds or `limit` passes; whether it held.
inline bool wait_until(const std::function<bool()>& done,
                       std::chrono::milliseconds limit = std::chrono::milliseconds(10000)) {
    const auto end = std::chrono::steady_clock::now() + limit;
    for (; !done(); std::this_thread::sleep_for(std::chrono::milliseconds(2)))
        if (std::chrono::steady_clock::now() >= end) return false;
    return true;
}

// The library's read and write limits (and whether serial links obey them) for the
// life of the object; the previous settings come back after it.
struct Limits {
    int32_t r, w, c;
    Limits(int32_t read_ms, int32_t write_ms, bool serial = false) {
        kvn_ext_get_timeouts(&r, &w, &c);
        kvn_ext_set_timeouts(read_ms, write_ms, -1);
        kvn_ext_apply_timeouts_to_serial(serial ? 1 : 0);
    }
    ~Limits() {
        kvn_ext_set_timeouts(r, w, c);
        kvn_ext_apply_timeouts_to_serial(0);
    }
};
// The same read and write limit, `ms`, for one scope.
struct ShortWaits : Limits { explicit ShortWaits(int32_t ms) : Limits(ms, ms) {} };

// --- Loopback peer ---------------------------------------------------------------

// A TCP connection record for 127.0.0.1:port.
inline kvn_device_conn tcp_conn(uint16_t port) {
    return {.ip_address = "127.0.0.1", .port = port, .link = {.conn_type = KVN_CONN_TCP}};
}
// A serial connection record; `name` must outlive it.
inline kvn_device_conn serial_conn(const std::wstring& name, uint32_t baud) {
    return {.serial_port = name.c_str(), .baud_rate = baud, .link = {.conn_type = KVN_CONN_SERIAL}};
}

#ifndef _WIN32
using sock_t = int;
#else
using sock_t = uintptr_t;
#endif

// Listens on 127.0.0.1 on an ephemeral port; the first accepted connection runs
// `script` on the peer's thread. The destructor stops waiting for a connection at
// once, gives a running script 10 s to end and then shuts its connection down, so
// that a failed test cannot hang on its peer.
class LoopbackPeer {
public:
    explicit LoopbackPeer(std::function<void(sock_t)> script);
    ~LoopbackPeer();
    LoopbackPeer(const LoopbackPeer&) = delete;
    LoopbackPeer& operator=(const LoopbackPeer&) = delete;
    uint16_t port() const { return port_; }
    kvn_device_conn conn() const { return tcp_conn(port_); }

private:
    sock_t listener_;
    uint16_t port_ = 0;
    std::atomic<bool> stop_{false}, ended_{false};
    std::atomic<sock_t> peer_;
    std::thread thread_;
};

// Reads exactly n bytes (fewer if the connection ends).
Bytes read_bytes(sock_t s, size_t n);
// Reads one whole request frame (header, payload and CRC).
Bytes read_request(sock_t s);
void write_bytes(sock_t s, const Bytes& b);
void close_socket(sock_t s);

// One export against a peer that records its first request and answers `answer`.
using Call = std::function<int32_t(kvn_device_conn*)>;
constexpr uint32_t kSet = 0x00010002, kGet = 0x00020002, kReset = 0x00030002;

struct Seen { uint32_t word = 0, command = 0; Bytes payload; int32_t rc = 99; };

inline Seen capture(const Call& call, const Bytes& answer = response(0)) {
    Seen seen;
    LoopbackPeer peer([&](sock_t s) {
        const Bytes req = read_request(s);
        if (req.size() >= 28) {
            seen.word = get_le32(req.data() + 8);
            seen.command = get_le32(req.data() + 16);
            seen.payload.assign(req.begin() + 24, req.end() - 4);
        }
        write_bytes(s, answer);
    });
    kvn_device_conn c = peer.conn();
    EXPECT_EQ(kvn_open_device_conn(&c), 0);
    seen.rc = call(&c);
    kvn_close_device_conn(&c);
    return seen;
}

// A text field's whole array: the text, then NULs.
inline Bytes whole(const std::string& s, size_t size) {
    Bytes b(s.begin(), s.end());
    b.resize(size, 0);
    return b;
}

}  // namespace kvntest
