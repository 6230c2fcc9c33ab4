// The transport seam. The frame layer and the exported raw movers reach the
// terminal only through a Transport; each platform provides a TCP and a serial one.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kvnsdk2.h"

namespace kvn {

struct ConstBuf {
    const uint8_t* data;
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
};

const Transport& tcp_transport() noexcept;
const Transport& serial_transport() noexcept;

// Replaces both transports for every connection (tests and fuzzing); nullptr restores them.
void set_transport_override(const Transport* transport) noexcept;
const Transport* transport_override() noexcept;

// conn_type 0 selects the serial line, any other value TCP.
inline const Transport& transport_for(const kvn_conn_link* link) noexcept {
    if (const Transport* t = transport_override()) return *t;
    return link->conn_type != 0 ? tcp_transport() : serial_transport();
}

}  // namespace kvn
