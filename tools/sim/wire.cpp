#include "wire.h"

#include <array>

namespace kvnsim {

namespace {

// One table entry per byte value: the register after shifting that byte through.
constexpr std::array<uint32_t, 256> make_crc_table() noexcept {
    std::array<uint32_t, 256> t{};
    for (uint32_t i = 0; i < 256; ++i) {
        uint32_t c = i;
        for (int bit = 0; bit < 8; ++bit) c = (c >> 1) ^ (0xEDB88320u & (0u - (c & 1u)));
        t[i] = c;
    }
    return t;
}
constexpr std::array<uint32_t, 256> kCrcTable = make_crc_table();

}  // namespace

uint32_t crc32(uint32_t crc, const uint8_t* p, size_t n) noexcept {
    uint32_t c = ~crc;
    for (size_t i = 0; i < n; ++i) c = kCrcTable[(c ^ p[i]) & 0xFFu] ^ (c >> 8);
    return ~c;
}

bool split(const uint8_t* p, size_t n, std::vector<Elem>* out) {
    out->clear();
    while (n > 0) {
        const uint8_t tag = p[0];
        if (tag == 0xFF || n < 2) return false;
        const uint8_t first = p[1];
        size_t used = 1;
        uint32_t length = first;
        if (first >= 0x80) {
            const uint32_t count = first & 0x0Fu;
            if (count > 4 || 2 + count > n) return false;
            length = 0;
            for (uint32_t i = 0; i < count; ++i) length = (length << 8) | p[2 + i];
            used += count;
        }
        p += 1 + used;
        n -= 1 + used;
        if (length > n) return false;
        out->push_back(Elem{tag, p, length});
        p += length;
        n -= length;
    }
    return true;
}

}  // namespace kvnsim
