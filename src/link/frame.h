// Internal frame-layer pieces shared by the command families.
#pragma once

#include <cstdint>

#include <cstddef>

#include "kvnsdk2.h"
#include "link/transport.h"

namespace kvn {

inline constexpr uint32_t kRequestHeaderSize = 24;   // sync word included
inline constexpr uint32_t kResponseHeaderSize = 24;  // after the sync word

// Most pieces one request payload may be sent from (a few values by reference
// and the encoded bytes around them).
inline constexpr size_t kMaxPayloadPieces = 9;
static_assert(kMaxPayloadPieces + 2 <= kMaxSendParts, "a frame's parts fit one gather write");

// A request frame whose payload is `count` pieces, `length` bytes in all, sent
// in one gather write.
int32_t send_frame(kvn_device_conn* conn, uint32_t request_word, uint32_t command_id, const ConstBuf* pieces,
                   size_t count, uint32_t length) noexcept;

// kvn_receive_response, also reporting the status word of the header when one was read.
int32_t receive_response(kvn_device_conn* conn, uint8_t* buffer, uint32_t* length, int32_t* status_word) noexcept;

}  // namespace kvn
