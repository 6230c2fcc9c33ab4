// What passes between the connection loop and the terminal: a request read off the
// line, the reply to send back, and what one connection keeps between requests.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "blob.h"
#include "wire.h"

namespace kvnsim {

// Request types (high half of the request word), and their bits in a command's
// set of accepted types.
enum : uint16_t { kSet = 1, kGet = 2, kReset = 3, kUpload = 4, kDownload = 5 };
constexpr uint8_t bit(uint16_t type) { return uint8_t(1u << type); }

struct Request {
    uint32_t header_id = 0;
    uint32_t word = 0;
    uint16_t type = 0;
    uint32_t command = 0;
    const uint8_t* data = nullptr;
    uint32_t size = 0;
    // Large payloads arrive in a buffer of their own, which a handler may keep
    // (data points into it).
    std::shared_ptr<uint8_t[]> body;
};

struct Reply {
    int32_t status = 0;
    Bytes payload;
    bool close_after = false;  // the terminal restarts after answering
    bool silent = false;       // no answer at all, the connection drops
    static Reply of(int32_t s) {
        Reply r;
        r.status = s;
        return r;
    }
    static Reply with(Out&& o) {
        Reply r;
        r.payload = std::move(o.bytes);
        return r;
    }
};

// One file transfer in progress on a connection.
struct Transfer {
    bool upload = true;
    uint32_t file_type = 0;
    std::string name;
    uint32_t size = 0;
    uint32_t packets = 0;
    uint32_t next = 1;  // packet expected (upload)
    Blob data;
};

// Per-connection state.
struct Session {
    std::map<uint32_t, Transfer> transfers;
    uint32_t start_packets = 0;  // faults of the connection, see Faults
    uint32_t refuse_packet = 0;
};

}  // namespace kvnsim
