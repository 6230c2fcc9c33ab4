// CRC-32 over frame bytes: IEEE 802.3 polynomial in reflected form (0xEDB88320),
// initial value 0xFFFFFFFF, final complement. Results equal zlib's crc32().
//
// A component of its own: it needs nothing but the standard library, and the
// simulator links it too (the build's kvn_crc32 object library).
#pragma once

#include <cstddef>
#include <cstdint>

namespace kvn {

// CRC of `len` bytes at `data`, continuing from `crc`. Pass 0 to start; pass a
// finished CRC to continue it over more bytes (the complement is undone, the bytes
// are run through, and the result is complemented again), so that
// crc32(crc32(0, a, n), b, m) is the CRC of a followed by b. With len 0 the
// result is `crc` unchanged and `data` is not read.
//
// Computed with the fastest path this CPU and its operating system support, chosen
// once at first use (any thread may be first). The environment variable
// KVN_CRC_IMPL, read at that moment, forces a path by name (see CrcPath) for tests
// and benchmarks; a name that is unknown or not supported here is ignored.
uint32_t crc32(uint32_t crc, const void* data, size_t len) noexcept;

// The same function under the name the frame layer's description uses for
// continuing a finished CRC over the payload.
inline uint32_t crc32_continue(uint32_t crc, const void* data, size_t len) noexcept {
    return crc32(crc, data, len);
}

// The implementations; every one computes the same value.
enum class CrcPath : uint8_t {
    portable,    // "portable": slicing-by-8 tables, any CPU
    pclmul,      // "pclmul": x86 PCLMULQDQ folding over 128-bit lanes (SSE4.1)
    vpclmul256,  // "vpclmul256": VPCLMULQDQ folding over 256-bit lanes (AVX2)
    vpclmul512,  // "vpclmul512": VPCLMULQDQ folding over 512-bit lanes (AVX-512F)
    armcrc,      // "armcrc": the arm64 CRC32 instructions, which use this polynomial
};
inline constexpr size_t kCrcPathCount = 5;

// Whether this build, CPU and operating system can run the path.
bool crc32_supported(CrcPath path) noexcept;

// crc32() computed with the given path, which must be supported; an unsupported one
// falls back to the portable tables. For tests and benchmarks.
uint32_t crc32_on(CrcPath path, uint32_t crc, const void* data, size_t len) noexcept;

// Same contract as crc32(), always computed with the portable tables.
inline uint32_t crc32_portable(uint32_t crc, const void* data, size_t len) noexcept {
    return crc32_on(CrcPath::portable, crc, data, len);
}

// The path crc32() uses (choosing it now if no call has yet).
CrcPath crc32_path() noexcept;

// The path's name as KVN_CRC_IMPL takes it; "unknown" for a value out of range.
const char* crc32_path_name(CrcPath path) noexcept;

// The path with that name: true and *path set, or false.
bool crc32_path_from_name(const char* name, CrcPath* path) noexcept;

}  // namespace kvn
