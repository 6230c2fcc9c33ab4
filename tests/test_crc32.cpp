// CRC-32 used by request/response frames: both implementations against a reference
// (zlib when the build has it, otherwise the bit-at-a-time definition), at every
// short length and alignment, on large buffers, and when continued across pieces.
#include "link/crc32.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "peer.h"

#if KVN_HAVE_ZLIB
#include <zlib.h>
#endif

namespace {

using CrcFn = uint32_t (*)(uint32_t, const void*, size_t) noexcept;
struct Impl { const char* name; CrcFn fn; };
void PrintTo(const Impl& impl, std::ostream* os) { *os << impl.name; }

uint32_t reference_crc(uint32_t crc, const unsigned char* p, size_t n) {
#if KVN_HAVE_ZLIB
    return static_cast<uint32_t>(::crc32(crc, p, static_cast<uInt>(n)));
#else
    return kvntest::crc32(crc, p, n);
#endif
}

std::vector<unsigned char> random_bytes(size_t n, unsigned stream) {
    std::mt19937 gen(1000u + stream);
    std::vector<unsigned char> v(n);
    for (auto& b : v) b = static_cast<unsigned char>(gen());
    return v;
}

class Crc32Test : public ::testing::TestWithParam<Impl> {
  protected:
    uint32_t run(uint32_t crc, const void* p, size_t n) const { return GetParam().fn(crc, p, n); }
};

// The check values of the common CRC-32, independent of the reference below.
TEST_P(Crc32Test, KnownVectors) {
    EXPECT_EQ(run(0, "", 0), 0x00000000u);
    EXPECT_EQ(run(0, "123456789", 9), 0xCBF43926u);
    EXPECT_EQ(run(0, "The quick brown fox jumps over the lazy dog", 43), 0x414FA339u);
    EXPECT_EQ(run(0, std::string(1000, '\0').data(), 1000), 0x060B1780u);
}

// Every short length at every alignment, then large buffers at an even and an odd address.
TEST_P(Crc32Test, MatchesReference) {
    const auto buf = random_bytes(300 + 16, 1);
    for (size_t align = 0; align < 16; ++align)
        for (size_t len = 0; len <= 300; ++len)
            ASSERT_EQ(run(0, buf.data() + align, len), reference_crc(0, buf.data() + align, len)) << align << "+" << len;
    const auto big = random_bytes((size_t{1} << 20) + 14, 2);
    for (size_t len : {size_t{64} << 10, size_t{512} << 10, (size_t{1} << 20) + 13})
        for (size_t at : {0, 1}) EXPECT_EQ(run(0, big.data() + at, len), reference_crc(0, big.data() + at, len)) << at << "+" << len;
}

TEST_P(Crc32Test, ContinuesAFinishedCrc) {
    const auto buf = random_bytes(5000, 3);
    const uint32_t whole = reference_crc(0, buf.data(), buf.size());
    ASSERT_EQ(run(0, buf.data(), buf.size()), whole);
    for (size_t split : {0, 1, 7, 8, 15, 16, 24, 63, 64, 65, 127, 128, 1000, 4095, 4936, 4999, 5000})
        EXPECT_EQ(run(run(0, buf.data(), split), buf.data() + split, buf.size() - split), whole) << "split at " << split;
    // Three uneven pieces, the middle one long enough for the wide path.
    EXPECT_EQ(run(run(run(0, buf.data(), 3), buf.data() + 3, 4001), buf.data() + 4004, 996), whole);
    // A zero-length continuation returns its input and does not touch the pointer.
    for (uint32_t v : {0u, 0xCBF43926u, 0xFFFFFFFFu}) EXPECT_EQ(run(v, nullptr, 0), v);
}

INSTANTIATE_TEST_SUITE_P(Impl, Crc32Test,
                         ::testing::Values(Impl{"Dispatch", &kvn::crc32}, Impl{"Portable", &kvn::crc32_portable}),
                         [](const ::testing::TestParamInfo<Impl>& p) { return std::string(p.param.name); });

}  // namespace
