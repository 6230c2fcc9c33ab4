// Internal TLV writer and reader used by every command family.
//
// Element: tag (1 byte) | length | value. Lengths below 128 take one byte; longer
// ones take 0x81, 0x82 or 0x84 followed by 1, 2 or 4 big-endian bytes. Integers
// inside values are little-endian.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "link/bytes.h"
#include "link/frame.h"

namespace kvn::tlv {

// Bytes that the shortest length form of `length` takes.
constexpr uint32_t length_size(uint32_t length) noexcept {
    return length < 0x80 ? 1 : length < 0x100 ? 2 : length < 0x10000 ? 3 : 5;
}

// Writes elements into a caller's buffer. Every field is attempted; a field that
// does not fit counts as -1 and the writer goes on with the next one, so the
// result is the bitwise OR of the per-field results (0 or -1, or -15 from an
// address conversion).
//
// A value may also stay where the caller keeps it (`element_ref`): its tag and
// length go into the buffer, the value itself joins the gather write at that
// place (`pieces`), so large caller-owned data is never copied. The capacity
// still counts those bytes, so the limits are those of a copying encoder.
class Writer {
public:
    // Each value by reference may split the encoded bytes in two, so n of them make
    // at most 2n + 1 pieces: as many as fit in one request's payload pieces.
    static constexpr size_t kMaxRefs = (kMaxPayloadPieces - 1) / 2;
    static constexpr size_t kMaxPieces = 2 * kMaxRefs + 1;
    static_assert(kMaxRefs >= 1 && kMaxPieces <= kMaxPayloadPieces, "the writer's pieces must fit one frame");

    Writer(uint8_t* buffer, uint32_t capacity) noexcept : start_(buffer), cur_(buffer), remaining_(capacity) {}

    // One element: tag, shortest length form, value.
    void element(uint8_t tag, const void* value, uint32_t length) noexcept { rc_ |= put(tag, value, length); }

    // One element whose value is sent from where it lies; the caller keeps it
    // alive and unchanged until the frame is sent.
    void element_ref(uint8_t tag, const void* value, uint32_t length) noexcept {
        if (length == 0 || refs_ == kMaxRefs) {
            if (length != 0) rc_ |= -1;
            else element(tag, value, 0);
            return;
        }
        if (int32_t rc = put(tag, nullptr, 0, length); rc != 0) {
            rc_ |= rc;
            return;
        }
        ref_[refs_++] = Ref{static_cast<uint32_t>(cur_ - start_), static_cast<const uint8_t*>(value), length};
        remaining_ -= length;
        virtual_ += length;
    }

    void u8(uint8_t tag, uint8_t v) noexcept { element(tag, &v, 1); }
    void u16(uint8_t tag, uint16_t v) noexcept {
        uint8_t b[2];
        store_le16(b, v);
        element(tag, b, 2);
    }
    void u32(uint8_t tag, uint32_t v) noexcept {
        uint8_t b[4];
        store_le32(b, v);
        element(tag, b, 4);
    }
    void i32(uint8_t tag, int32_t v) noexcept { u32(tag, static_cast<uint32_t>(v)); }

    // A text with its own length (without the NUL), read at most `capacity` bytes
    // far; omitted when empty unless `always` is set.
    void text(uint8_t tag, const char* s, size_t capacity, bool always = false) noexcept {
        const size_t n = bounded_length(s, capacity);
        if (n == 0 && !always) return;
        element(tag, s, static_cast<uint32_t>(n));
    }
    // A text sent as its whole fixed-size array, NUL and what follows included;
    // omitted when empty.
    void text_whole(uint8_t tag, const char* s, size_t capacity) noexcept {
        if (s == nullptr || s[0] == 0) return;
        element(tag, s, static_cast<uint32_t>(capacity));
    }

    // Containers: six bytes reserved, the contents written behind them, then the
    // six bytes filled with the tag, 0x84 and the four-byte big-endian length.
    struct Mark {
        uint8_t* at;
        uint32_t position;  // bytes of payload before the header
        size_t refs;        // values by reference before the header
    };
    Mark open() noexcept {
        if (remaining_ < 6) {
            rc_ |= -1;
            return Mark{nullptr, 0, 0};
        }
        Mark m{cur_, used(), refs_};
        cur_ += 6;
        remaining_ -= 6;
        return m;
    }
    void close(Mark m, uint8_t tag) noexcept {
        if (m.at == nullptr) return;
        const uint32_t n = used() - (m.position + 6);
        m.at[0] = tag;
        m.at[1] = 0x84;
        m.at[2] = static_cast<uint8_t>(n >> 24);
        m.at[3] = static_cast<uint8_t>(n >> 16);
        m.at[4] = static_cast<uint8_t>(n >> 8);
        m.at[5] = static_cast<uint8_t>(n);
    }
    // The same container with the shortest length form: the contents move down
    // behind the shorter header. Contents with values by reference cannot move.
    void close_short(Mark m, uint8_t tag) noexcept {
        if (m.at == nullptr) return;
        if (refs_ != m.refs) {
            rc_ |= -1;
            return;
        }
        const uint32_t n = static_cast<uint32_t>(cur_ - (m.at + 6));
        const uint32_t ls = length_size(n);
        const uint32_t saved = 5 - ls;
        m.at[0] = tag;
        uint8_t* p = m.at + 1;
        if (ls == 1) {
            *p = static_cast<uint8_t>(n);
        } else {
            p[0] = static_cast<uint8_t>(0x80 | (ls - 1));
            for (uint32_t i = 1; i < ls; ++i) p[i] = static_cast<uint8_t>(n >> (8 * (ls - 1 - i)));
        }
        std::memmove(m.at + 1 + ls, m.at + 6, n);
        cur_ -= saved;
        remaining_ += saved;
    }

    void fail(int32_t rc = -1) noexcept { rc_ |= rc; }
    int32_t result() const noexcept { return rc_; }
    // Payload bytes, values by reference included.
    uint32_t used() const noexcept { return static_cast<uint32_t>(cur_ - start_) + virtual_; }
    uint32_t remaining() const noexcept { return remaining_; }
    size_t refs() const noexcept { return refs_; }

    // The payload as gather pieces in wire order (at most kMaxPieces);
    // returns how many were written.
    template <class Piece>
    size_t pieces(Piece* out) const noexcept {
        size_t k = 0;
        uint32_t from = 0;
        for (size_t i = 0; i < refs_; ++i) {
            if (ref_[i].at > from) out[k++] = Piece{start_ + from, ref_[i].at - from};
            out[k++] = Piece{ref_[i].data, ref_[i].size};
            from = ref_[i].at;
        }
        const uint32_t end = static_cast<uint32_t>(cur_ - start_);
        if (end > from) out[k++] = Piece{start_ + from, end - from};
        return k;
    }

    static size_t bounded_length(const char* s, size_t capacity) noexcept {
        if (s == nullptr) return 0;
        const void* nul = std::memchr(s, 0, capacity);
        return nul != nullptr ? static_cast<size_t>(static_cast<const char*>(nul) - s) : capacity;
    }

private:
    struct Ref {
        uint32_t at;  // buffer offset the value follows
        const uint8_t* data;
        uint32_t size;
    };

    // Tag, length and (unless `deferred` bytes follow by reference) the value.
    int32_t put(uint8_t tag, const void* value, uint32_t length, uint32_t deferred = 0) noexcept {
        if (remaining_ == 0) return -1;
        *cur_++ = tag;
        --remaining_;
        const uint32_t announced = deferred != 0 ? deferred : length;
        const uint32_t ls = length_size(announced);
        if (remaining_ < ls) return -1;
        put_length(announced, ls);
        if (remaining_ < announced) return -1;
        if (length != 0) std::memcpy(cur_, value, length);
        cur_ += length;
        remaining_ -= length;
        return 0;
    }
    void put_length(uint32_t length, uint32_t ls) noexcept {
        if (ls == 1) {
            *cur_ = static_cast<uint8_t>(length);
        } else {
            cur_[0] = static_cast<uint8_t>(0x80 | (ls - 1));
            for (uint32_t i = 1; i < ls; ++i) cur_[i] = static_cast<uint8_t>(length >> (8 * (ls - 1 - i)));
        }
        cur_ += ls;
        remaining_ -= ls;
    }

    uint8_t* start_;
    uint8_t* cur_;
    uint32_t remaining_;
    uint32_t virtual_ = 0;  // bytes sent by reference
    Ref ref_[kMaxRefs];
    size_t refs_ = 0;
    int32_t rc_ = 0;
};

// Reads one length at p (n bytes available): the low four bits of a long form's
// first byte count the big-endian bytes that follow. Returns bytes consumed, 0
// when the input runs out.
inline uint32_t read_length(const uint8_t* p, uint32_t n, uint32_t* length) noexcept {
    if (n == 0) return 0;
    const uint8_t first = p[0];
    if (first < 0x80) {
        *length = first;
        return 1;
    }
    const uint32_t count = first & 0x0Fu;
    if (count >= n) return 0;
    uint32_t v = 0;
    for (uint32_t i = 1; i <= count; ++i) v = (v << 8) + p[i];
    *length = v;
    return count + 1;
}

enum class Empty { skip, error };

// Walks the elements of a payload and hands each (tag, value, length) to
// `store`, which returns 0 to go on or a status to stop with. Stops with -1 on
// tag 0xFF, a lone tag byte, a truncated length, a length of 0xFFFFFFFF or a
// value that claims more bytes than remain. Empty values are skipped, or are an
// error where a family says so.
template <class Store>
int32_t decode(const uint8_t* p, uint32_t n, Store&& store, Empty empty = Empty::skip) noexcept {
    while (n > 0) {
        const uint8_t tag = p[0];
        if (tag == 0xFF || n < 2) return -1;
        uint32_t length = 0;
        const uint32_t used = read_length(p + 1, n - 1, &length);
        if (used == 0 || length == 0xFFFFFFFFu) return -1;
        p += 1 + used;
        n -= 1 + used;
        if (length > n) return -1;
        if (length == 0) {
            if (empty == Empty::error) return -1;
            continue;
        }
        if (int32_t rc = store(tag, p, length); rc != 0) return rc;
        p += length;
        n -= length;
    }
    return 0;
}

// Copy rules of the decoders.

// An integer field of `width` bytes takes the value's first bytes, little-endian;
// a shorter value fills the low bytes and clears the rest.
inline uint32_t value_u32(const uint8_t* v, uint32_t length) noexcept {
    uint8_t b[4] = {0, 0, 0, 0};
    std::memcpy(b, v, length < 4 ? length : 4);
    return load_le32(b);
}
inline uint16_t value_u16(const uint8_t* v, uint32_t length) noexcept {
    uint8_t b[2] = {0, 0};
    std::memcpy(b, v, length < 2 ? length : 2);
    return load_le16(b);
}

// "C bytes when the value has C or more, else the value's bytes": the rest of the
// field keeps what it held. Returns the bytes copied.
inline uint32_t copy_bounded(void* field, size_t capacity, const uint8_t* v, uint32_t length) noexcept {
    const uint32_t n = length < capacity ? length : static_cast<uint32_t>(capacity);
    std::memcpy(field, v, n);
    return n;
}

// A text cut to capacity - 1 bytes and terminated.
inline void copy_text(char* field, size_t capacity, const uint8_t* v, uint32_t length) noexcept {
    if (capacity == 0) return;
    const uint32_t n = length < capacity - 1 ? length : static_cast<uint32_t>(capacity - 1);
    std::memcpy(field, v, n);
    field[n] = 0;
}

}  // namespace kvn::tlv
