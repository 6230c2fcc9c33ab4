// CRC-32 (reflected 0xEDB88320, initial 0xFFFFFFFF, final complement).
//
// Two implementations compute the same value:
//  - slicing-by-8: eight 256-entry tables built at compile time, eight bytes per
//    step; used on every CPU for short buffers and for the last few bytes;
//  - carry-less multiply folding (x86 PCLMULQDQ + SSE4.1): four 128-bit lanes are
//    folded forward 64 bytes at a time, folded into one lane, then reduced to 32
//    bits with a Barrett reduction. Chosen once at run time when the CPU has it.
//
// Internally the running value is the non-complemented register; the public entry
// points complement on the way in and on the way out.
#include "link/crc32.h"

#include <array>
#include <atomic>

#if (defined(__x86_64__) || defined(__i386__)) && (defined(__GNUC__) || defined(__clang__))
#define KVN_CRC32_X86 1
#include <immintrin.h>
#else
#define KVN_CRC32_X86 0
#endif

namespace kvn {
namespace {

constexpr uint32_t kReflectedPoly = 0xEDB88320u;

// ---------------------------------------------------------------------------
// Slicing-by-8
// ---------------------------------------------------------------------------

using SliceTables = std::array<std::array<uint32_t, 256>, 8>;

// tables[0] is the classic byte-at-a-time table; tables[k][b] is the register
// contribution of byte b followed by k zero bytes.
constexpr SliceTables make_slice_tables() noexcept {
    SliceTables t{};
    for (uint32_t i = 0; i < 256; ++i) {
        uint32_t c = i;
        for (int bit = 0; bit < 8; ++bit) c = (c >> 1) ^ (kReflectedPoly & (0u - (c & 1u)));
        t[0][i] = c;
    }
    for (size_t k = 1; k < 8; ++k) {
        for (size_t i = 0; i < 256; ++i) {
            const uint32_t prev = t[k - 1][i];
            t[k][i] = (prev >> 8) ^ t[0][prev & 0xFFu];
        }
    }
    return t;
}

alignas(64) constexpr SliceTables kSlice = make_slice_tables();

// Little-endian 32-bit load written byte by byte: correct on any host, and
// compiled to a single load on little-endian ones.
inline uint32_t load_le32(const unsigned char* p) noexcept {
    return static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 |
           static_cast<uint32_t>(p[2]) << 16 | static_cast<uint32_t>(p[3]) << 24;
}

uint32_t slice8(uint32_t c, const unsigned char* p, size_t n) noexcept {
    while (n >= 8) {
        const uint32_t lo = load_le32(p) ^ c;
        const uint32_t hi = load_le32(p + 4);
        c = kSlice[7][lo & 0xFFu] ^ kSlice[6][(lo >> 8) & 0xFFu] ^
            kSlice[5][(lo >> 16) & 0xFFu] ^ kSlice[4][lo >> 24] ^
            kSlice[3][hi & 0xFFu] ^ kSlice[2][(hi >> 8) & 0xFFu] ^
            kSlice[1][(hi >> 16) & 0xFFu] ^ kSlice[0][hi >> 24];
        p += 8;
        n -= 8;
    }
    // One four-byte step for the remainder: a 28-byte frame then takes four
    // table rounds instead of seven.
    if (n >= 4) {
        const uint32_t w = load_le32(p) ^ c;
        c = kSlice[3][w & 0xFFu] ^ kSlice[2][(w >> 8) & 0xFFu] ^
            kSlice[1][(w >> 16) & 0xFFu] ^ kSlice[0][w >> 24];
        p += 4;
        n -= 4;
    }
    while (n != 0) {
        c = (c >> 8) ^ kSlice[0][(c ^ *p) & 0xFFu];
        ++p;
        --n;
    }
    return c;
}

#if KVN_CRC32_X86
// ---------------------------------------------------------------------------
// Carry-less multiply folding
// ---------------------------------------------------------------------------

// The polynomial with its x^32 term, most significant bit = highest degree.
constexpr uint64_t kPoly33 = 0x104C11DB7u;

// x^n mod P, as a 32-bit remainder.
constexpr uint64_t xpow_mod(unsigned n) noexcept {
    uint64_t r = 1;
    for (unsigned i = 0; i < n; ++i) {
        r <<= 1;
        if (r & (uint64_t{1} << 32)) r ^= kPoly33;
    }
    return r;
}

constexpr uint64_t reflect(uint64_t v, unsigned bits) noexcept {
    uint64_t r = 0;
    for (unsigned i = 0; i < bits; ++i) {
        r = (r << 1) | (v & 1u);
        v >>= 1;
    }
    return r;
}

// Folding a lane forward by `distance` bits multiplies it by x^distance mod P. In
// the bit-reflected domain each 64-bit half is multiplied by the reflected
// remainder; the extra shift by one accounts for the product of two reflected
// values landing one bit low.
constexpr uint64_t fold_constant(unsigned exponent) noexcept {
    return reflect(xpow_mod(exponent), 32) << 1;
}

// floor(x^64 / P), the Barrett multiplier (33 bits).
constexpr uint64_t barrett_quotient() noexcept {
    uint64_t rem = 0;
    uint64_t q = 0;
    for (int degree = 64; degree >= 0; --degree) {
        rem = (rem << 1) | (degree == 64 ? 1u : 0u);
        q <<= 1;
        if (rem & (uint64_t{1} << 32)) {
            rem ^= kPoly33;
            q |= 1u;
        }
    }
    return q;
}

// Lanes are 128 bits; the low 64-bit half of a lane holds the earlier bytes, which
// are the higher-degree terms, so it travels 64 bits further than the high half.
constexpr uint64_t kFold512Lo = fold_constant(4 * 128 + 32);
constexpr uint64_t kFold512Hi = fold_constant(4 * 128 - 32);
constexpr uint64_t kFold128Lo = fold_constant(128 + 32);
constexpr uint64_t kFold128Hi = fold_constant(128 - 32);
constexpr uint64_t kFold64 = fold_constant(64);
constexpr uint64_t kBarrettMu = reflect(barrett_quotient(), 33);
constexpr uint64_t kBarrettPoly = reflect(kPoly33, 33);

static_assert(kFold512Lo == 0x154442BD4u && kFold128Hi == 0xCCAA009Eu,
              "folding constants for the reflected IEEE polynomial");
static_assert(kBarrettMu == 0x1F7011641u && kBarrettPoly == 0x1DB710641u,
              "Barrett constants for the reflected IEEE polynomial");

#define KVN_CLMUL_TARGET __attribute__((target("pclmul,sse4.1")))

KVN_CLMUL_TARGET inline __m128i load128(const unsigned char* p) noexcept {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

// Moves lane x forward by the distance encoded in k and adds the data lane d.
KVN_CLMUL_TARGET inline __m128i fold(__m128i x, __m128i k, __m128i d) noexcept {
    const __m128i lo = _mm_clmulepi64_si128(x, k, 0x00);
    const __m128i hi = _mm_clmulepi64_si128(x, k, 0x11);
    return _mm_xor_si128(_mm_xor_si128(lo, hi), d);
}

// Builds a lane from two 64-bit constants: high half first, as _mm_set_epi64x.
KVN_CLMUL_TARGET inline __m128i pair(uint64_t hi, uint64_t lo) noexcept {
    return _mm_set_epi64x(static_cast<long long>(hi), static_cast<long long>(lo));
}

// Runs the register c over n bytes; n is a multiple of 16 and at least 64.
KVN_CLMUL_TARGET uint32_t fold_clmul(uint32_t c, const unsigned char* p, size_t n) noexcept {
    __m128i x1 = _mm_xor_si128(load128(p), _mm_cvtsi32_si128(static_cast<int>(c)));
    __m128i x2 = load128(p + 16);
    __m128i x3 = load128(p + 32);
    __m128i x4 = load128(p + 48);
    p += 64;
    n -= 64;

    // Four independent lanes hide the multiplier latency.
    __m128i k = pair(kFold512Hi, kFold512Lo);
    while (n >= 64) {
        x1 = fold(x1, k, load128(p));
        x2 = fold(x2, k, load128(p + 16));
        x3 = fold(x3, k, load128(p + 32));
        x4 = fold(x4, k, load128(p + 48));
        p += 64;
        n -= 64;
    }

    // Four lanes into one, then any remaining 16-byte blocks.
    k = pair(kFold128Hi, kFold128Lo);
    x1 = fold(x1, k, x2);
    x1 = fold(x1, k, x3);
    x1 = fold(x1, k, x4);
    while (n >= 16) {
        x1 = fold(x1, k, load128(p));
        p += 16;
        n -= 16;
    }

    // 128 -> 96 bits: the low half moves forward past the high half.
    const __m128i low32 = _mm_setr_epi32(-1, 0, -1, 0);
    x2 = _mm_clmulepi64_si128(x1, k, 0x10);
    x1 = _mm_xor_si128(_mm_srli_si128(x1, 8), x2);
    // 96 -> 64 bits.
    k = pair(0, kFold64);
    x2 = _mm_srli_si128(x1, 4);
    x1 = _mm_clmulepi64_si128(_mm_and_si128(x1, low32), k, 0x00);
    x1 = _mm_xor_si128(x1, x2);
    // Barrett reduction 64 -> 32 bits: the quotient comes from the low word times
    // mu = floor(x^64 / P); subtracting quotient * P leaves the remainder in word 1.
    k = pair(kBarrettMu, kBarrettPoly);
    x2 = _mm_clmulepi64_si128(_mm_and_si128(x1, low32), k, 0x10);
    x2 = _mm_clmulepi64_si128(_mm_and_si128(x2, low32), k, 0x00);
    x1 = _mm_xor_si128(x1, x2);
    return static_cast<uint32_t>(_mm_extract_epi32(x1, 1));
}

#undef KVN_CLMUL_TARGET

// The folding loop needs one full block of four lanes to start from.
constexpr size_t kClmulMinLen = 64;

// 0: not probed yet, 1: unavailable, 2: available. Probing twice from two threads
// is harmless: both store the same answer.
std::atomic<int> g_clmul_state{0};

bool clmul_available() noexcept {
    int state = g_clmul_state.load(std::memory_order_relaxed);
    if (state == 0) {
        __builtin_cpu_init();
        const bool ok = __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("sse4.1");
        state = ok ? 2 : 1;
        g_clmul_state.store(state, std::memory_order_relaxed);
    }
    return state == 2;
}
#endif  // KVN_CRC32_X86

}  // namespace

uint32_t crc32(uint32_t crc, const void* data, size_t len) noexcept {
    if (len == 0) return crc;
    const auto* p = static_cast<const unsigned char*>(data);
    uint32_t c = ~crc;
#if KVN_CRC32_X86
    if (len >= kClmulMinLen && clmul_available()) {
        const size_t bulk = len & ~size_t{15};
        c = fold_clmul(c, p, bulk);
        p += bulk;
        len -= bulk;
    }
#endif
    return ~slice8(c, p, len);
}

uint32_t crc32_portable(uint32_t crc, const void* data, size_t len) noexcept {
    if (len == 0) return crc;
    return ~slice8(~crc, static_cast<const unsigned char*>(data), len);
}

bool crc32_has_clmul() noexcept {
#if KVN_CRC32_X86
    return clmul_available();
#else
    return false;
#endif
}

}  // namespace kvn
