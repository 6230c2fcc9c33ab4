// CRC-32 (reflected 0xEDB88320, initial 0xFFFFFFFF, final complement).
//
// Every path computes the same value:
//  - portable: slicing-by-8, eight 256-entry tables built at compile time, eight
//    bytes per step; also the tail of every x86 path (the last 0 to 15 bytes, and
//    inputs too short to fold);
//  - pclmul: carry-less multiply folding (x86 PCLMULQDQ + SSE4.1): four 128-bit
//    lanes are folded forward 64 bytes at a time, folded into one lane, then
//    reduced to 32 bits with a Barrett reduction;
//  - vpclmul256 / vpclmul512: the same folding on four 256-bit (AVX2) or 512-bit
//    (AVX-512F) lanes, 128 or 256 bytes a step, each 128-bit part of a lane folded
//    exactly as the pclmul path folds its lanes; shorter inputs go to pclmul;
//  - armcrc: the arm64 CRC32X/W/H/B instructions, which compute this polynomial.
//
// Each path is compiled with a target attribute, so the library needs no global
// instruction-set flags; the path is chosen once, at first use, from CPUID and
// XGETBV (whether the operating system saves the wider registers) or, on arm64,
// the kernel's hardware capabilities.
//
// Internally the running value is the non-complemented register; the public entry
// points complement on the way in and on the way out.
#include "link/crc32.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>

#if (defined(__x86_64__) || defined(__i386__)) && (defined(__GNUC__) || defined(__clang__))
#define KVN_CRC32_X86 1
#include <cpuid.h>
#include <immintrin.h>
#else
#define KVN_CRC32_X86 0
#endif

#if defined(__aarch64__) && defined(__GNUC__) && defined(__BYTE_ORDER__) && \
    __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
#define KVN_CRC32_ARM 1
#include <arm_acle.h>
#if defined(__linux__)
#include <sys/auxv.h>
#endif
#else
#define KVN_CRC32_ARM 0
#endif

namespace kvn {
namespace {

constexpr uint32_t kReflectedPoly = 0xEDB88320u;

// Register form of every path: runs the non-complemented register over n bytes.
using PathFn = uint32_t (*)(uint32_t c, const unsigned char* p, size_t n) noexcept;

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

uint32_t path_portable(uint32_t c, const unsigned char* p, size_t n) noexcept { return slice8(c, p, n); }

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

// The pair of constants that moves a 128-bit part forward by `distance` bits. The
// low 64-bit half of a part holds the earlier bytes, which are the higher-degree
// terms, so it travels 64 bits further than the high half.
struct FoldPair {
    uint64_t hi, lo;
};
constexpr FoldPair fold_by(unsigned distance) noexcept {
    return {fold_constant(distance - 32), fold_constant(distance + 32)};
}

constexpr FoldPair kFold128 = fold_by(128);
constexpr FoldPair kFold4x128 = fold_by(4 * 128);    // pclmul main loop
constexpr FoldPair kFold256 = fold_by(256);
constexpr FoldPair kFold4x256 = fold_by(4 * 256);    // vpclmul256 main loop
constexpr FoldPair kFold512 = fold_by(512);
constexpr FoldPair kFold4x512 = fold_by(4 * 512);    // vpclmul512 main loop
constexpr uint64_t kFold64 = fold_constant(64);
constexpr uint64_t kBarrettMu = reflect(barrett_quotient(), 33);
constexpr uint64_t kBarrettPoly = reflect(kPoly33, 33);

static_assert(kFold4x128.lo == 0x154442BD4u && kFold128.hi == 0xCCAA009Eu,
              "folding constants for the reflected IEEE polynomial");
static_assert(kBarrettMu == 0x1F7011641u && kBarrettPoly == 0x1DB710641u,
              "Barrett constants for the reflected IEEE polynomial");

#define KVN_CLMUL_TARGET __attribute__((target("pclmul,sse4.1")))
#define KVN_V256_TARGET __attribute__((target("pclmul,sse4.1,avx2,vpclmulqdq")))
#define KVN_V512_TARGET __attribute__((target("pclmul,sse4.1,avx2,avx512f,vpclmulqdq")))

KVN_CLMUL_TARGET inline __m128i load128(const unsigned char* p) noexcept {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

// Builds a lane from two 64-bit constants: high half first, as _mm_set_epi64x.
KVN_CLMUL_TARGET inline __m128i pair(uint64_t hi, uint64_t lo) noexcept {
    return _mm_set_epi64x(static_cast<long long>(hi), static_cast<long long>(lo));
}
KVN_CLMUL_TARGET inline __m128i pair(FoldPair k) noexcept { return pair(k.hi, k.lo); }

// Moves lane x forward by the distance encoded in k and adds the data lane d.
KVN_CLMUL_TARGET inline __m128i fold(__m128i x, __m128i k, __m128i d) noexcept {
    const __m128i lo = _mm_clmulepi64_si128(x, k, 0x00);
    const __m128i hi = _mm_clmulepi64_si128(x, k, 0x11);
    return _mm_xor_si128(_mm_xor_si128(lo, hi), d);
}

// Folds the remaining 16-byte blocks into x (n is a multiple of 16) and reduces
// the 128-bit lane to the 32-bit register.
KVN_CLMUL_TARGET uint32_t finish(__m128i x1, const unsigned char* p, size_t n) noexcept {
    __m128i k = pair(kFold128);
    while (n >= 16) {
        x1 = fold(x1, k, load128(p));
        p += 16;
        n -= 16;
    }

    // 128 -> 96 bits: the low half moves forward past the high half.
    const __m128i low32 = _mm_setr_epi32(-1, 0, -1, 0);
    __m128i x2 = _mm_clmulepi64_si128(x1, k, 0x10);
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

// Runs the register c over n bytes; n is a multiple of 16 and at least 64.
KVN_CLMUL_TARGET uint32_t fold_clmul(uint32_t c, const unsigned char* p, size_t n) noexcept {
    __m128i x1 = _mm_xor_si128(load128(p), _mm_cvtsi32_si128(static_cast<int>(c)));
    __m128i x2 = load128(p + 16);
    __m128i x3 = load128(p + 32);
    __m128i x4 = load128(p + 48);
    p += 64;
    n -= 64;

    // Four independent lanes hide the multiplier latency.
    __m128i k = pair(kFold4x128);
    while (n >= 64) {
        x1 = fold(x1, k, load128(p));
        x2 = fold(x2, k, load128(p + 16));
        x3 = fold(x3, k, load128(p + 32));
        x4 = fold(x4, k, load128(p + 48));
        p += 64;
        n -= 64;
    }

    // Four lanes into one, then the rest.
    k = pair(kFold128);
    x1 = fold(x1, k, x2);
    x1 = fold(x1, k, x3);
    x1 = fold(x1, k, x4);
    return finish(x1, p, n);
}

// The folding loop needs one full block of four lanes to start from.
constexpr size_t kClmulMinLen = 64;

uint32_t path_pclmul(uint32_t c, const unsigned char* p, size_t n) noexcept {
    if (n >= kClmulMinLen) {
        const size_t bulk = n & ~size_t{15};
        c = fold_clmul(c, p, bulk);
        p += bulk;
        n -= bulk;
    }
    return slice8(c, p, n);
}

// ---- 256-bit lanes (AVX2 + VPCLMULQDQ)

KVN_V256_TARGET inline __m256i load256(const unsigned char* p) noexcept {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

KVN_V256_TARGET inline __m256i pair256(FoldPair k) noexcept {
    const auto hi = static_cast<long long>(k.hi), lo = static_cast<long long>(k.lo);
    return _mm256_set_epi64x(hi, lo, hi, lo);
}

KVN_V256_TARGET inline __m256i fold256(__m256i x, __m256i k, __m256i d) noexcept {
    const __m256i lo = _mm256_clmulepi64_epi128(x, k, 0x00);
    const __m256i hi = _mm256_clmulepi64_epi128(x, k, 0x11);
    return _mm256_xor_si256(_mm256_xor_si256(lo, hi), d);
}

// n is a multiple of 16 and at least 128.
KVN_V256_TARGET uint32_t fold_v256(uint32_t c, const unsigned char* p, size_t n) noexcept {
    const __m256i first = _mm256_zextsi128_si256(_mm_cvtsi32_si128(static_cast<int>(c)));
    __m256i x1 = _mm256_xor_si256(load256(p), first);
    __m256i x2 = load256(p + 32);
    __m256i x3 = load256(p + 64);
    __m256i x4 = load256(p + 96);
    p += 128;
    n -= 128;

    __m256i k = pair256(kFold4x256);
    while (n >= 128) {
        x1 = fold256(x1, k, load256(p));
        x2 = fold256(x2, k, load256(p + 32));
        x3 = fold256(x3, k, load256(p + 64));
        x4 = fold256(x4, k, load256(p + 96));
        p += 128;
        n -= 128;
    }

    k = pair256(kFold256);
    x1 = fold256(x1, k, x2);
    x1 = fold256(x1, k, x3);
    x1 = fold256(x1, k, x4);
    while (n >= 32) {
        x1 = fold256(x1, k, load256(p));
        p += 32;
        n -= 32;
    }

    // The lane's two 128-bit parts into one: the earlier (low) part moves forward.
    const __m128i x = fold(_mm256_castsi256_si128(x1), pair(kFold128), _mm256_extracti128_si256(x1, 1));
    return finish(x, p, n);
}

constexpr size_t kV256MinLen = 128;

uint32_t path_vpclmul256(uint32_t c, const unsigned char* p, size_t n) noexcept {
    if (n < kV256MinLen) return path_pclmul(c, p, n);
    const size_t bulk = n & ~size_t{15};
    return slice8(fold_v256(c, p, bulk), p + bulk, n - bulk);
}

// ---- 512-bit lanes (AVX-512F + VPCLMULQDQ)

KVN_V512_TARGET inline __m512i load512(const unsigned char* p) noexcept { return _mm512_loadu_si512(p); }

KVN_V512_TARGET inline __m512i pair512(FoldPair k) noexcept {
    const auto hi = static_cast<long long>(k.hi), lo = static_cast<long long>(k.lo);
    return _mm512_set_epi64(hi, lo, hi, lo, hi, lo, hi, lo);
}

// The three-way exclusive or is one instruction (truth table 0x96).
KVN_V512_TARGET inline __m512i fold512(__m512i x, __m512i k, __m512i d) noexcept {
    return _mm512_ternarylogic_epi64(_mm512_clmulepi64_epi128(x, k, 0x00), _mm512_clmulepi64_epi128(x, k, 0x11), d,
                                     0x96);
}

// n is a multiple of 16 and at least 256.
KVN_V512_TARGET uint32_t fold_v512(uint32_t c, const unsigned char* p, size_t n) noexcept {
    const __m512i first = _mm512_zextsi128_si512(_mm_cvtsi32_si128(static_cast<int>(c)));
    __m512i x1 = _mm512_xor_si512(load512(p), first);
    __m512i x2 = load512(p + 64);
    __m512i x3 = load512(p + 128);
    __m512i x4 = load512(p + 192);
    p += 256;
    n -= 256;

    __m512i k = pair512(kFold4x512);
    while (n >= 256) {
        x1 = fold512(x1, k, load512(p));
        x2 = fold512(x2, k, load512(p + 64));
        x3 = fold512(x3, k, load512(p + 128));
        x4 = fold512(x4, k, load512(p + 192));
        p += 256;
        n -= 256;
    }

    k = pair512(kFold512);
    x1 = fold512(x1, k, x2);
    x1 = fold512(x1, k, x3);
    x1 = fold512(x1, k, x4);
    while (n >= 64) {
        x1 = fold512(x1, k, load512(p));
        p += 64;
        n -= 64;
    }

    // The lane's four 128-bit parts into one, earliest first. They pass through
    // memory: this runs once per call, and GCC's part extractions warn about an
    // uninitialised value of their own.
    unsigned char parts[64];
    _mm512_storeu_si512(parts, x1);
    const __m128i k128 = pair(kFold128);
    __m128i x = load128(parts);
    x = fold(x, k128, load128(parts + 16));
    x = fold(x, k128, load128(parts + 32));
    x = fold(x, k128, load128(parts + 48));
    return finish(x, p, n);
}

constexpr size_t kV512MinLen = 256;

uint32_t path_vpclmul512(uint32_t c, const unsigned char* p, size_t n) noexcept {
    if (n < kV512MinLen) return path_pclmul(c, p, n);
    const size_t bulk = n & ~size_t{15};
    return slice8(fold_v512(c, p, bulk), p + bulk, n - bulk);
}

#undef KVN_CLMUL_TARGET
#undef KVN_V256_TARGET
#undef KVN_V512_TARGET

// ---- What this CPU and operating system offer

struct X86Features {
    bool pclmul = false;      // PCLMULQDQ and SSE4.1
    bool vpclmul256 = false;  // and AVX2, VPCLMULQDQ, the OS saving ymm state
    bool vpclmul512 = false;  // and AVX-512F, the OS saving zmm and mask state
};

// XCR0, the register state the operating system saves and restores. Only valid
// when CPUID reports OSXSAVE.
uint64_t read_xcr0() noexcept {
    uint32_t lo = 0, hi = 0;
    __asm__ volatile("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
    return (static_cast<uint64_t>(hi) << 32) | lo;
}

X86Features probe_x86() noexcept {
    X86Features f;
    unsigned a = 0, b = 0, c = 0, d = 0;
    if (__get_cpuid(1, &a, &b, &c, &d) == 0) return f;
    f.pclmul = (c & (1u << 1)) != 0 && (c & (1u << 19)) != 0;
    const bool osxsave = (c & (1u << 27)) != 0, avx = (c & (1u << 28)) != 0;
    if (!f.pclmul || !osxsave || !avx) return f;
    const uint64_t xcr0 = read_xcr0();
    const bool ymm_saved = (xcr0 & 0x6u) == 0x6u;     // SSE and AVX state
    const bool zmm_saved = (xcr0 & 0xE6u) == 0xE6u;   // and opmask, ZMM0-15 upper, ZMM16-31
    if (__get_cpuid_count(7, 0, &a, &b, &c, &d) == 0) return f;
    const bool avx2 = (b & (1u << 5)) != 0, avx512f = (b & (1u << 16)) != 0, vpclmul = (c & (1u << 10)) != 0;
    f.vpclmul256 = ymm_saved && avx2 && vpclmul;
    f.vpclmul512 = f.vpclmul256 && zmm_saved && avx512f;
    return f;
}

const X86Features& x86_features() noexcept {
    static const X86Features features = probe_x86();
    return features;
}
#endif  // KVN_CRC32_X86

#if KVN_CRC32_ARM
// ---------------------------------------------------------------------------
// arm64 CRC32 instructions
// ---------------------------------------------------------------------------

__attribute__((target("+crc"))) uint32_t path_armcrc(uint32_t c, const unsigned char* p, size_t n) noexcept {
    uint64_t w[4];
    while (n >= 32) {
        std::memcpy(w, p, 32);
        c = __crc32d(c, w[0]);
        c = __crc32d(c, w[1]);
        c = __crc32d(c, w[2]);
        c = __crc32d(c, w[3]);
        p += 32;
        n -= 32;
    }
    while (n >= 8) {
        std::memcpy(w, p, 8);
        c = __crc32d(c, w[0]);
        p += 8;
        n -= 8;
    }
    if (n >= 4) {
        uint32_t v;
        std::memcpy(&v, p, 4);
        c = __crc32w(c, v);
        p += 4;
        n -= 4;
    }
    if (n >= 2) {
        uint16_t v;
        std::memcpy(&v, p, 2);
        c = __crc32h(c, v);
        p += 2;
        n -= 2;
    }
    if (n != 0) c = __crc32b(c, *p);
    return c;
}

bool arm_has_crc() noexcept {
#if defined(__ARM_FEATURE_CRC32) || defined(__APPLE__)
    return true;
#elif defined(__linux__)
    constexpr unsigned long kHwcapCrc32 = 1ul << 7;  // HWCAP_CRC32
    return (getauxval(AT_HWCAP) & kHwcapCrc32) != 0;
#else
    return false;
#endif
}
#endif  // KVN_CRC32_ARM

// ---------------------------------------------------------------------------
// Choosing a path
// ---------------------------------------------------------------------------

constexpr const char* kNames[kCrcPathCount] = {"portable", "pclmul", "vpclmul256", "vpclmul512", "armcrc"};

PathFn function_of(CrcPath path) noexcept {
    switch (path) {
#if KVN_CRC32_X86
        case CrcPath::pclmul: return &path_pclmul;
        case CrcPath::vpclmul256: return &path_vpclmul256;
        case CrcPath::vpclmul512: return &path_vpclmul512;
#endif
#if KVN_CRC32_ARM
        case CrcPath::armcrc: return &path_armcrc;
#endif
        default: return &path_portable;
    }
}

CrcPath best_path() noexcept {
#if KVN_CRC32_X86
    const X86Features& f = x86_features();
    if (f.vpclmul512) return CrcPath::vpclmul512;
    if (f.vpclmul256) return CrcPath::vpclmul256;
    if (f.pclmul) return CrcPath::pclmul;
#endif
#if KVN_CRC32_ARM
    if (arm_has_crc()) return CrcPath::armcrc;
#endif
    return CrcPath::portable;
}

CrcPath choose_path() noexcept {
    CrcPath forced;
    const char* name = std::getenv("KVN_CRC_IMPL");
    if (name != nullptr && crc32_path_from_name(name, &forced) && crc32_supported(forced)) return forced;
    return best_path();
}

uint32_t path_first_use(uint32_t c, const unsigned char* p, size_t n) noexcept;

// The chosen path, or the function that chooses it. Two threads making their
// first call together both choose, and both store the same answer.
std::atomic<PathFn> g_path_fn{&path_first_use};
std::atomic<int> g_path{-1};

CrcPath settle() noexcept {
    const int known = g_path.load(std::memory_order_acquire);
    if (known >= 0) return static_cast<CrcPath>(known);
    const CrcPath path = choose_path();
    g_path_fn.store(function_of(path), std::memory_order_relaxed);
    g_path.store(static_cast<int>(path), std::memory_order_release);
    return path;
}

uint32_t path_first_use(uint32_t c, const unsigned char* p, size_t n) noexcept {
    return function_of(settle())(c, p, n);
}

}  // namespace

uint32_t crc32(uint32_t crc, const void* data, size_t len) noexcept {
    if (len == 0) return crc;
    return ~g_path_fn.load(std::memory_order_relaxed)(~crc, static_cast<const unsigned char*>(data), len);
}

bool crc32_supported(CrcPath path) noexcept {
    switch (path) {
        case CrcPath::portable: return true;
#if KVN_CRC32_X86
        case CrcPath::pclmul: return x86_features().pclmul;
        case CrcPath::vpclmul256: return x86_features().vpclmul256;
        case CrcPath::vpclmul512: return x86_features().vpclmul512;
#endif
#if KVN_CRC32_ARM
        case CrcPath::armcrc: return arm_has_crc();
#endif
        default: return false;
    }
}

uint32_t crc32_on(CrcPath path, uint32_t crc, const void* data, size_t len) noexcept {
    if (len == 0) return crc;
    const PathFn fn = crc32_supported(path) ? function_of(path) : &path_portable;
    return ~fn(~crc, static_cast<const unsigned char*>(data), len);
}

CrcPath crc32_path() noexcept { return settle(); }

const char* crc32_path_name(CrcPath path) noexcept {
    const auto i = static_cast<size_t>(path);
    return i < kCrcPathCount ? kNames[i] : "unknown";
}

bool crc32_path_from_name(const char* name, CrcPath* path) noexcept {
    if (name == nullptr) return false;
    for (size_t i = 0; i < kCrcPathCount; ++i) {
        if (std::strcmp(name, kNames[i]) == 0) {
            if (path != nullptr) *path = static_cast<CrcPath>(i);
            return true;
        }
    }
    return false;
}

}  // namespace kvn
