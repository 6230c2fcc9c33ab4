// CRC-32 over frame bytes: IEEE 802.3 polynomial in reflected form (0xEDB88320),
// initial value 0xFFFFFFFF, final complement. Results equal zlib's crc32().
#pragma once

#include <cstddef>
#include <cstdint>

namespace kvn {

// CRC of `len` bytes at `data`, continuing from `crc`. Pass 0 to start; pass a
// finished CRC to continue it over more bytes (the complement is undone, the bytes
// are run through, and the result is complemented again), so that
// crc32(crc32(0, a, n), b, m) is the CRC of a followed by b. With len 0 the
// result is `crc` unchanged and `data` is not read. Uses carry-less multiply
// folding where the CPU supports it and slicing-by-8 otherwise.
uint32_t crc32(uint32_t crc, const void* data, size_t len) noexcept;

// Same contract, always computed with the portable slicing-by-8 tables.
// Exposed for tests and benchmarks.
uint32_t crc32_portable(uint32_t crc, const void* data, size_t len) noexcept;

// True when crc32() uses the carry-less multiply path on this CPU.
bool crc32_has_clmul() noexcept;

}  // namespace kvn
