#include "wire.h"

#include "link/crc32.h"

namespace kvnsim {

// The frame CRC is the CRC component the library is built with too (link/crc32.h,
// standard library only): one fast implementation, chosen for this CPU at run time.
uint32_t crc32(uint32_t crc, const uint8_t* p, size_t n) noexcept { return kvn::crc32(crc, p, n); }

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
