// CRC-32 used by request/response frames. Every path this machine can run is checked
// against the CRC's bit-at-a-time definition at every length 0-4096 and every
// alignment 0-63, against the portable tables on random buffers up to 1 MiB, and
// when continued across pieces; the dispatching crc32() must use the path that
// KVN_CRC_IMPL forces (scripts/test-crc-paths.sh runs the link tests once per path).
#include "link/crc32.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#if KVN_HAVE_ZLIB
#include <zlib.h>
#endif

namespace kvn {
// Test names and failure messages show the path by name.
inline void PrintTo(CrcPath path, std::ostream* os) { *os << crc32_path_name(path); }
}  // namespace kvn

namespace {

using kvn::CrcPath;

std::vector<CrcPath> supported_paths() {
    std::vector<CrcPath> out;
    for (size_t i = 0; i < kvn::kCrcPathCount; ++i)
        if (kvn::crc32_supported(static_cast<CrcPath>(i))) out.push_back(static_cast<CrcPath>(i));
    return out;
}

// One byte through the register, by the definition: reflected 0xEDB88320.
uint32_t definition_step(uint32_t reg, uint8_t byte) {
    reg ^= byte;
    for (int k = 0; k < 8; ++k) reg = (reg >> 1) ^ (0xEDB88320u & (0u - (reg & 1u)));
    return reg;
}

// A buffer whose data() + offset is 64-byte aligned for offset 0.
struct Aligned {
    explicit Aligned(size_t n, unsigned salt) : storage(n + 64) {
        const auto at = reinterpret_cast<uintptr_t>(storage.data());
        base = storage.data() + ((64 - at % 64) % 64);
        std::mt19937 gen(salt);
        for (size_t i = 0; i < n; ++i) base[i] = static_cast<uint8_t>(gen());
    }
    std::vector<uint8_t> storage;
    uint8_t* base;
};

class Crc32Path : public ::testing::TestWithParam<CrcPath> {
  protected:
    uint32_t run(uint32_t crc, const void* p, size_t n) const { return kvn::crc32_on(GetParam(), crc, p, n); }
};

// The check values of the common CRC-32.
TEST_P(Crc32Path, KnownVectors) {
    struct Case { std::string data; uint32_t crc; };
    const Case cases[] = {
        {"", 0x00000000u},
        {"a", 0xE8B7BE43u},
        {"123456789", 0xCBF43926u},
        {"The quick brown fox jumps over the lazy dog", 0x414FA339u},
        {std::string(1000, '\0'), 0x060B1780u},
        {std::string(4096, '\xFF'), 0xF154670Au},
    };
    for (const Case& k : cases) EXPECT_EQ(run(0, k.data.data(), k.data.size()), k.crc) << k.data.size() << " bytes";
}

// Every length 0-4096 at every alignment 0-63 of a 64-byte aligned buffer. The
// reference grows one byte at a time by the definition, so it costs nothing.
TEST_P(Crc32Path, EveryLengthAtEveryAlignment) {
    constexpr size_t kMaxLen = 4096, kAlignments = 64;
    const Aligned buf(kMaxLen + kAlignments, 11);
    for (size_t align = 0; align < kAlignments; ++align) {
        const uint8_t* p = buf.base + align;
        uint32_t reg = 0xFFFFFFFFu;
        for (size_t len = 0; len <= kMaxLen; ++len) {
            ASSERT_EQ(run(0, p, len), ~reg) << "alignment " << align << ", length " << len;
            if (len < kMaxLen) reg = definition_step(reg, p[len]);
        }
    }
}

// Random lengths up to 1 MiB at random alignments, continuing random finished CRCs,
// against the portable tables (and the tables against zlib where the build has it).
TEST_P(Crc32Path, RandomLargeBuffersMatchThePortableTables) {
    constexpr size_t kMax = size_t{1} << 20;
    const Aligned buf(kMax + 64, 12);
    std::mt19937 gen(13);
    for (int i = 0; i < 48; ++i) {
        const size_t len = i == 0 ? kMax : gen() % (kMax + 1), align = gen() % 64;
        const uint32_t start = i % 3 == 0 ? 0u : static_cast<uint32_t>(gen());
        const uint32_t want = kvn::crc32_portable(start, buf.base + align, len);
        ASSERT_EQ(run(start, buf.base + align, len), want) << "alignment " << align << ", length " << len;
#if KVN_HAVE_ZLIB
        ASSERT_EQ(want, static_cast<uint32_t>(::crc32_z(start, buf.base + align, len)));
#endif
    }
}

// crc32_continue at every split point of a 300-byte buffer, and at every pair of
// split points (three pieces); a zero-length piece returns its input untouched.
TEST_P(Crc32Path, ContinuesAtEverySplit) {
    constexpr size_t kLen = 300;
    const Aligned buf(kLen, 14);
    const uint8_t* p = buf.base;
    uint32_t reg = 0xFFFFFFFFu;
    for (size_t i = 0; i < kLen; ++i) reg = definition_step(reg, p[i]);
    const uint32_t whole = ~reg;
    for (size_t a = 0; a <= kLen; ++a) {
        ASSERT_EQ(kvn::crc32_continue(run(0, p, a), p + a, kLen - a), kvn::crc32_continue(whole, p, 0));
        const uint32_t head = run(0, p, a);
        ASSERT_EQ(run(head, p + a, kLen - a), whole) << "split at " << a;
        for (size_t b = a; b <= kLen; ++b)
            ASSERT_EQ(run(run(head, p + a, b - a), p + b, kLen - b), whole) << "split at " << a << " and " << b;
    }
    for (uint32_t v : {0u, 0xCBF43926u, 0xFFFFFFFFu}) EXPECT_EQ(run(v, nullptr, 0), v);
}

INSTANTIATE_TEST_SUITE_P(Supported, Crc32Path, ::testing::ValuesIn(supported_paths()),
                         [](const ::testing::TestParamInfo<CrcPath>& p) {
                             return std::string(kvn::crc32_path_name(p.param));
                         });

// KVN_CRC_IMPL names a path that crc32() then uses; without it, crc32() takes a
// folding or instruction path whenever this machine has one.
TEST(Crc32Dispatch, UsesTheForcedOrTheFastestPath) {
    const CrcPath chosen = kvn::crc32_path();
    ASSERT_TRUE(kvn::crc32_supported(chosen));
    if (const char* forced = std::getenv("KVN_CRC_IMPL"); forced != nullptr && *forced != '\0') {
        CrcPath want;
        ASSERT_TRUE(kvn::crc32_path_from_name(forced, &want)) << "KVN_CRC_IMPL=" << forced << " names no path";
        ASSERT_TRUE(kvn::crc32_supported(want)) << forced << " does not run on this machine";
        EXPECT_EQ(chosen, want);
    } else if (supported_paths().size() > 1) {
        EXPECT_NE(chosen, CrcPath::portable);
    }
    const Aligned buf(70000, 15);
    for (size_t len : {size_t{0}, size_t{28}, size_t{300}, size_t{65536}, size_t{69999}})
        EXPECT_EQ(kvn::crc32(0x12345678u, buf.base + 1, len), kvn::crc32_portable(0x12345678u, buf.base + 1, len));
}

TEST(Crc32Dispatch, PathNames) {
    struct Case { const char* name; bool known; CrcPath path; };
    const Case cases[] = {
        {"portable", true, CrcPath::portable},     {"pclmul", true, CrcPath::pclmul},
        {"vpclmul256", true, CrcPath::vpclmul256}, {"vpclmul512", true, CrcPath::vpclmul512},
        {"armcrc", true, CrcPath::armcrc},         {"", false, CrcPath::portable},
        {"PCLMUL", false, CrcPath::portable},      {"vpclmul", false, CrcPath::portable},
        {"portable ", false, CrcPath::portable},   {nullptr, false, CrcPath::portable},
    };
    for (const Case& k : cases) {
        CrcPath got = CrcPath::portable;
        EXPECT_EQ(kvn::crc32_path_from_name(k.name, &got), k.known) << (k.name ? k.name : "null");
        EXPECT_EQ(got, k.path);
        if (k.known) {
            EXPECT_STREQ(kvn::crc32_path_name(k.path), k.name);
        }
    }
    EXPECT_STREQ(kvn::crc32_path_name(static_cast<CrcPath>(kvn::kCrcPathCount)), "unknown");
}

}  // namespace
