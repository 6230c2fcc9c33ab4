// Exported TLV primitives. Each works through a cursor and a remaining count and
// moves both by what it consumed.
#include <cstring>

#include "kvnsdk2.h"
#include "link/tlv.h"

namespace {

bool bad(uint8_t** cursor, const uint32_t* remaining) noexcept {
    return cursor == nullptr || *cursor == nullptr || remaining == nullptr;
}

}  // namespace

extern "C" {

KVN_API int32_t kvn_set_tlv_tag(uint8_t tag, uint8_t** cursor, uint32_t* remaining) {
    if (bad(cursor, remaining) || *remaining == 0) return -1;
    *(*cursor)++ = tag;
    --*remaining;
    return 0;
}

KVN_API int32_t kvn_set_tlv_length(uint32_t length, uint8_t** cursor, uint32_t* remaining) {
    if (bad(cursor, remaining)) return -1;
    const uint32_t size = kvn::tlv::length_size(length);
    if (*remaining < size) return -1;
    uint8_t* p = *cursor;
    if (size == 1) {
        p[0] = static_cast<uint8_t>(length);
    } else {
        p[0] = static_cast<uint8_t>(0x80 | (size - 1));
        for (uint32_t i = 1; i < size; ++i) p[i] = static_cast<uint8_t>(length >> (8 * (size - 1 - i)));
    }
    *cursor += size;
    *remaining -= size;
    return 0;
}

KVN_API int32_t kvn_set_tlv_4byte_length(uint32_t length, uint8_t** cursor, uint32_t* remaining) {
    if (bad(cursor, remaining) || *remaining < 5) return -1;
    uint8_t* p = *cursor;
    p[0] = 0x84;
    p[1] = static_cast<uint8_t>(length >> 24);
    p[2] = static_cast<uint8_t>(length >> 16);
    p[3] = static_cast<uint8_t>(length >> 8);
    p[4] = static_cast<uint8_t>(length);
    *cursor += 5;
    *remaining -= 5;
    return 0;
}

KVN_API int32_t kvn_set_tlv_data(const void* value, uint32_t length, uint8_t** cursor, uint32_t* remaining) {
    if (bad(cursor, remaining) || *remaining < length) return -1;
    if (length != 0) {
        if (value == nullptr) return -1;
        std::memcpy(*cursor, value, length);
    }
    *cursor += length;
    *remaining -= length;
    return 0;
}

KVN_API int32_t kvn_create_tlv(uint8_t tag, const void* value, uint32_t length, uint8_t** cursor,
                               uint32_t* remaining) {
    if (bad(cursor, remaining) || *remaining == 0) return -1;
    kvn_set_tlv_tag(tag, cursor, remaining);
    // The length's result travels back through 16 bits: a form that does not fit
    // makes this function return 65535, which callers rely on.
    const uint16_t rc = static_cast<uint16_t>(kvn_set_tlv_length(length, cursor, remaining));
    if (rc != 0) return rc;
    return kvn_set_tlv_data(value, length, cursor, remaining);
}

KVN_API int32_t kvn_skip_tlv_length(uint32_t count, uint8_t** cursor, uint32_t* remaining) {
    if (bad(cursor, remaining) || *remaining < count) return -1;
    *cursor += count;
    *remaining -= count;
    return 0;
}

KVN_API int32_t kvn_read_tlv_length(uint8_t** cursor, uint32_t* remaining) {
    if (bad(cursor, remaining) || *remaining == 0) return -1;
    const uint8_t first = *(*cursor)++;
    --*remaining;
    if (first < 0x80) return first;
    const uint32_t count = first & 0x0Fu;
    uint32_t v = 0;
    for (uint32_t i = 0; i < count; ++i) {
        if (*remaining == 0) return -1;
        v = (v << 8) + *(*cursor)++;
        --*remaining;
    }
    return static_cast<int32_t>(v);
}

KVN_API int32_t kvn_read_tlv_tag(uint8_t** cursor, uint32_t* remaining) {
    if (bad(cursor, remaining) || *remaining == 0) return -1;
    const int8_t tag = static_cast<int8_t>(*(*cursor)++);
    --*remaining;
    return tag;
}

KVN_API int32_t kvn_serch_tlv_tag(uint8_t** cursor, uint32_t* remaining, uint8_t tag) {
    if (bad(cursor, remaining)) return -1;
    for (;;) {
        if (*remaining == 0) return -1;
        // The tag is read as a signed byte and compared with the unsigned wanted
        // tag, so tags 0x80 to 0xFE never match.
        const int32_t found = kvn_read_tlv_tag(cursor, remaining);
        if (found == -1 || *remaining == 0) return -1;
        const int32_t length = kvn_read_tlv_length(cursor, remaining);
        if (length < 0) return -1;
        if (static_cast<int32_t>(*remaining) < length) return -1;
        if (found == static_cast<int32_t>(tag)) {
            *remaining -= static_cast<uint32_t>(length);
            return length;
        }
        *cursor += length;
        *remaining -= static_cast<uint32_t>(length);
    }
}

}  // extern "C"
