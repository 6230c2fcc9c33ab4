// A transport that answers from a byte string: what the fuzzer feeds is what the
// "terminal" sends; requests are discarded.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kvnsdk2.h"

namespace kvnfuzz {

// Installs the transport; every following read consumes `data`, then fails.
void feed(const uint8_t* data, size_t size);
kvn_device_conn connection();

}  // namespace kvnfuzz
