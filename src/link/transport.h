// The transport seam. The frame layer and the exported raw movers reach the
// terminal only through a Transport; each platform provides a TCP and a serial one.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kvnsdk2.h"
#include "link/crc32.h"

namespace kvn {

struct ConstBuf {
    const uint8_t* data;
    uint32_t size;
};

struct MutBuf {
    uint8_t* data;
    uint32_t size;
};

// Most parts one send takes: a request's header, its payload pieces and its CRC.
// This one number bounds the gather pieces all the way up: the frame layer leaves
// two parts for header and CRC (kMaxPayloadPieces), the TLV writer sends as many
// values by reference as fit in the rest (tlv::Writer::kMaxRefs), and every
// transport accepts this many parts.
inline constexpr size_t kMaxSendParts = 11;

struct Transport {
    // Writes every byte of the parts (at most kMaxSendParts), in order, as one
    // stream write: 0, or -3 (more parts than that are -3 too).
    int32_t (*send)(kvn_conn_link* link, const ConstBuf* parts, size_t count);
    // Reads exactly count bytes: 0, or -2 (bytes already read stay in the buffer).
    int32_t (*receive)(kvn_conn_link* link, uint8_t* buffer, uint32_t count);
    // Opens the link described by the record: 0, -5 or -3.
    int32_t (*open)(kvn_device_conn* conn);
    // Closes it; returns the platform's close result (TCP) or 0 (serial).
    int32_t (*close)(kvn_device_conn* conn);
    // Reads exactly the bytes of the parts, in order, as one stream read (a scatter
    // read, so one system call when the bytes are there): 0, or -2 (bytes already
    // read stay where they landed). When crc is not null, *crc is continued over the
    // bytes of parts[0] chunk by chunk as they arrive, while they are still in cache.
    // At most kMaxReceiveParts parts. Null where the link cannot scatter: the frame
    // layer then reads part by part with receive().
    int32_t (*receive_parts)(kvn_conn_link* link, const MutBuf* parts, size_t count, uint32_t* crc);
};

inline constexpr size_t kMaxReceiveParts = 4;

const Transport& tcp_transport() noexcept;
const Transport& serial_transport() noexcept;

// Replaces both transports for every connection (tests and fuzzing); nullptr restores them.
void set_transport_override(const Transport* transport) noexcept;
const Transport* transport_override() noexcept;

// Continues a CRC over one buffer while a read fills it front to back: each call
// says how many more bytes of the whole read (that buffer first) have arrived.
class FoldAsRead {
public:
    FoldAsRead(uint32_t* crc, const MutBuf& first) noexcept : crc_(crc), data_(first.data), left_(first.size) {}
    void arrived(size_t bytes) noexcept {
        if (crc_ == nullptr || left_ == 0) return;
        const uint32_t take = bytes < left_ ? static_cast<uint32_t>(bytes) : left_;
        *crc_ = crc32(*crc_, data_, take);
        data_ += take;
        left_ -= take;
    }

private:
    uint32_t* crc_;
    const uint8_t* data_;
    uint32_t left_;
};

// conn_type 0 selects the serial line, any other value TCP.
inline const Transport& transport_for(const kvn_conn_link* link) noexcept {
    if (const Transport* t = transport_override()) return *t;
    return link->conn_type != 0 ? tcp_transport() : serial_transport();
}

}  // namespace kvn
