// Test helpers: a loopback TCP peer that plays a script, and response frames.
#pragma once

#include <cstdint>
#include <functional>
#include <thread>
#include <vector>

#include "kvnsdk2.h"

namespace kvntest {

using Bytes = std::vector<uint8_t>;

#ifndef _WIN32
using sock_t = int;
#else
using sock_t = uintptr_t;
#endif

// Listens on 127.0.0.1 on an ephemeral port; the first accepted connection runs
// `script` on the peer's thread. The destructor joins the thread.
class LoopbackPeer {
public:
    explicit LoopbackPeer(std::function<void(sock_t)> script);
    ~LoopbackPeer();
    uint16_t port() const { return port_; }
    // A connection record for this peer (TCP).
    kvn_device_conn conn() const;

private:
    sock_t listener_;
    uint16_t port_ = 0;
    std::thread thread_;
};

// Reads exactly n bytes (fewer if the connection ends).
Bytes read_bytes(sock_t s, size_t n);
// Reads one whole request frame (header, payload and CRC).
Bytes read_request(sock_t s);
void write_bytes(sock_t s, const Bytes& b);
void close_socket(sock_t s);

// A response frame: sync, three header words, status, word 5, N, payload, CRC.
Bytes response(int32_t status, const Bytes& payload = {});

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

void put_le32(Bytes& b, uint32_t v);
uint32_t get_le32(const uint8_t* p);

}  // namespace kvntest
