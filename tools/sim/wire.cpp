#include "wire.h"

#include <array>

namespace kvnsim {

namespace {

// Slicing by eight: table 0 is the register after shifting one byte value through;
// table k, the contribution of a byte followed by k zero bytes.
using CrcTables = std::array<std::array<uint32_t, 256>, 8>;
constexpr CrcTables make_crc_tables() noexcept {
    CrcTables t{};
    for (uint32_t i = 0; i < 256; ++i) {
        uint32_t c = i;
        for (int bit = 0; bit < 8; ++bit) c = (c >> 1) ^ (0xEDB88320u & (0u - (c & 1u)));
        t[0][i] = c;
    }
    for (size_t k = 1; k < 8; ++k)
        for (size_t i = 0; i < 256; ++i) t[k][i] = (t[k - 1][i] >> 8) ^ t[0][t[k - 1][i] & 0xFFu];
    return t;
}
constexpr CrcTables kCrc = make_crc_tables();

}  // namespace

uint32_t crc32(uint32_t crc, const uint8_t* p, size_t n) noexcept {
    uint32_t c = ~crc;
    for (; n >= 8; p += 8, n -= 8) {
        const uint32_t lo = le32(p) ^ c, hi = le32(p + 4);
        c = kCrc[7][lo & 0xFFu] ^ kCrc[6][(lo >> 8) & 0xFFu] ^ kCrc[5][(lo >> 16) & 0xFFu] ^ kCrc[4][lo >> 24] ^
            kCrc[3][hi & 0xFFu] ^ kCrc[2][(hi >> 8) & 0xFFu] ^ kCrc[1][(hi >> 16) & 0xFFu] ^ kCrc[0][hi >> 24];
    }
    for (; n > 0; ++p, --n) c = kCrc[0][(c ^ *p) & 0xFFu] ^ (c >> 8);
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
