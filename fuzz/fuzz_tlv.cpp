// The exported TLV readers on arbitrary bytes.
#include <cstdint>
#include <vector>

#include "kvnsdk2.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    std::vector<uint8_t> in(data + 1, data + size);
    uint8_t* cur = in.data();
    auto rem = static_cast<uint32_t>(in.size());
    // Walk every element the way a caller of the primitives would.
    while (rem > 0) {
        uint8_t* start = cur;
        const uint32_t before = rem;
        const int32_t length = kvn_serch_tlv_tag(&cur, &rem, data[0] & 0x7F);
        if (length < 0) break;
        if (cur + length > in.data() + in.size() || rem > before) __builtin_trap();
        cur += length;
        (void)start;
    }
    cur = in.data();
    rem = static_cast<uint32_t>(in.size());
    while (rem > 0) {
        if (kvn_read_tlv_tag(&cur, &rem) == -1 && rem == 0) break;
        if (kvn_read_tlv_length(&cur, &rem) < 0) break;
    }
    return 0;
}
