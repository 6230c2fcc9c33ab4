// Helpers for end-to-end tests against the in-process simulator: a started
// simulator with a connection to it, one-call exchanges, and short waits.
#pragma once

#if KVN_HAVE_SIM

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "kvnsdk2.h"
#include "kvnsim.h"
#include "link/frame.h"

namespace simtest {

using Bytes = std::vector<uint8_t>;

// Shortens the library's per-chunk waits for one test and restores them afterwards.
struct ShortWaits {
    int32_t r, w, c;
    explicit ShortWaits(int32_t ms) {
        kvn_ext_get_timeouts(&r, &w, &c);
        kvn_ext_set_timeouts(ms, ms, -1);
    }
    ~ShortWaits() { kvn_ext_set_timeouts(r, w, c); }
};

struct Answer {
    int32_t rc = 99;      // what kvn_receive_response returned (or the send error)
    int32_t status = 99;  // the status word of the response header
    Bytes payload;
};

// One request and its answer on an open connection.
inline Answer exchange(kvn_device_conn& c, uint16_t type, uint32_t command, const Bytes& payload = {},
                       uint32_t capacity = 1 << 20) {
    Answer a;
    const uint32_t word = KVN_REQUEST_WORD(type);
    a.rc = kvn_send_command(&c, &word, command, payload.empty() ? nullptr : payload.data(),
                            static_cast<uint32_t>(payload.size()));
    if (a.rc != 0) return a;
    a.payload.resize(capacity);
    uint32_t length = capacity;
    a.rc = kvn::receive_response(&c, a.payload.data(), &length, &a.status);
    a.payload.resize(a.rc == 0 ? length : 0);
    return a;
}

inline kvn_device_conn tcp_conn(uint16_t port) {
    kvn_device_conn c{};
    c.ip_address = "127.0.0.1";
    c.port = port;
    c.link.conn_type = KVN_CONN_TCP;
    return c;
}

// A simulator on an ephemeral loopback port with one open connection.
class SimTest : public ::testing::Test {
protected:
    void SetUp() override { start(); }
    void TearDown() override {
        close();
        sim_.reset();
    }
    void start(kvnsim::Options o = {}) {
        sim_ = std::make_unique<kvnsim::Simulator>(std::move(o));
        std::string error;
        ASSERT_TRUE(sim_->start(&error)) << error;
        open();
    }
    void open() {
        conn_ = tcp_conn(sim_->port());
        ASSERT_EQ(kvn_open_device_conn(&conn_), 0);
        open_ = true;
    }
    void close() {
        if (open_) kvn_close_device_conn(&conn_);
        open_ = false;
    }
    Answer get(uint32_t command, const Bytes& payload = {}) { return exchange(conn_, KVN_REQ_GET, command, payload); }
    Answer set(uint32_t command, const Bytes& payload) { return exchange(conn_, KVN_REQ_SET, command, payload); }
    Answer reset(uint32_t command, const Bytes& payload = {}) {
        return exchange(conn_, KVN_REQ_RESET, command, payload);
    }

    std::unique_ptr<kvnsim::Simulator> sim_;
    kvn_device_conn conn_{};
    bool open_ = false;
};

// Elements of a payload, for looking values up in answers.
struct Element {
    uint8_t tag;
    Bytes value;
};
inline std::vector<Element> elements(const Bytes& p) {
    std::vector<Element> out;
    size_t i = 0;
    while (i + 2 <= p.size()) {
        const uint8_t tag = p[i++];
        uint32_t len = p[i++];
        if (len >= 0x80) {
            const uint32_t n = len & 0x0F;
            len = 0;
            for (uint32_t k = 0; k < n && i < p.size(); ++k) len = (len << 8) | p[i++];
        }
        if (i + len > p.size()) break;
        out.push_back({tag, Bytes(p.begin() + static_cast<long>(i), p.begin() + static_cast<long>(i + len))});
        i += len;
    }
    return out;
}
inline const Bytes* value_of(const std::vector<Element>& es, uint8_t tag) {
    for (const Element& e : es)
        if (e.tag == tag) return &e.value;
    return nullptr;
}
// Payload builders: elements and containers (long-form lengths, as encoders write them).
// (Sizes are reserved up front: GCC 12 warns wrongly about inserts that grow.)
inline Bytes cat(std::initializer_list<Bytes> parts) {
    size_t n = 0;
    for (const Bytes& p : parts) n += p.size();
    Bytes b;
    b.reserve(n);
    for (const Bytes& p : parts) b.insert(b.end(), p.begin(), p.end());
    return b;
}
inline Bytes u32(uint8_t tag, uint32_t v) {
    return {tag, 4, uint8_t(v), uint8_t(v >> 8), uint8_t(v >> 16), uint8_t(v >> 24)};
}
inline Bytes u8(uint8_t tag, uint8_t v) { return {tag, 1, v}; }
inline Bytes text(uint8_t tag, const std::string& s) {
    Bytes b;
    b.reserve(2 + s.size());
    b.push_back(tag);
    b.push_back(uint8_t(s.size()));
    b.insert(b.end(), s.begin(), s.end());
    return b;
}
inline Bytes raw(uint8_t tag, const Bytes& v) {
    const uint32_t n = uint32_t(v.size());
    Bytes b;
    b.reserve(6 + v.size());
    b.push_back(tag);
    if (n < 0x80) {
        b.push_back(uint8_t(n));
    } else if (n < 0x100) {
        b.insert(b.end(), {0x81, uint8_t(n)});
    } else if (n < 0x10000) {
        b.insert(b.end(), {0x82, uint8_t(n >> 8), uint8_t(n)});
    } else {
        b.insert(b.end(), {0x84, uint8_t(n >> 24), uint8_t(n >> 16), uint8_t(n >> 8), uint8_t(n)});
    }
    b.insert(b.end(), v.begin(), v.end());
    return b;
}
inline Bytes box(uint8_t tag, const Bytes& inner) {
    const uint32_t n = uint32_t(inner.size());
    Bytes b(6 + inner.size());
    b[0] = tag;
    b[1] = 0x84;
    for (int i = 0; i < 4; ++i) b[2 + i] = uint8_t(n >> (24 - 8 * i));
    if (n != 0) std::memcpy(b.data() + 6, inner.data(), n);
    return b;
}
inline std::string str(const Bytes& b) { return std::string(b.begin(), b.end()); }

inline uint32_t le32(const Bytes& b) {
    return b.size() < 4 ? 0 : uint32_t(b[0]) | uint32_t(b[1]) << 8 | uint32_t(b[2]) << 16 | uint32_t(b[3]) << 24;
}

}  // namespace simtest

#endif  // KVN_HAVE_SIM
