// Internal frame-layer pieces shared by the command families.
#pragma once

#include <cstdint>

#include "kvnsdk2.h"

namespace kvn {

inline constexpr uint32_t kRequestHeaderSize = 24;   // sync word included
inline constexpr uint32_t kResponseHeaderSize = 24;  // after the sync word

// kvn_receive_response, also reporting the status word of the header when one was read.
int32_t receive_response(kvn_device_conn* conn, uint8_t* buffer, uint32_t* length, int32_t* status_word) noexcept;

}  // namespace kvn
