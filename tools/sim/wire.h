// The simulator's own TLV reading and writing.
//
// Element: tag (1 byte) | length | value. A length below 0x80 is one byte; a long
// form's first byte carries the count of big-endian length bytes in its low four
// bits. Integers inside values are little-endian. Containers are elements whose
// value is again a sequence of elements; this side writes their length in the
// five-byte form (0x84 and four bytes), as terminals do.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace kvnsim {

using Bytes = std::vector<uint8_t>;

// One element; `kids` is filled only when the element was opened as a container.
struct Node {
    uint8_t tag = 0;
    Bytes value;
    std::vector<Node> kids;

    uint32_t u32() const noexcept {
        uint8_t b[4] = {0, 0, 0, 0};
        if (!value.empty()) std::memcpy(b, value.data(), value.size() < 4 ? value.size() : 4);
        return uint32_t(b[0]) | uint32_t(b[1]) << 8 | uint32_t(b[2]) << 16 | uint32_t(b[3]) << 24;
    }
    uint8_t u8() const noexcept { return value.empty() ? 0 : value[0]; }
    // The value as text, cut at the first NUL.
    std::string text() const {
        if (value.empty()) return {};
        const void* nul = std::memchr(value.data(), 0, value.size());
        const size_t n = nul ? size_t(static_cast<const uint8_t*>(nul) - value.data()) : value.size();
        return std::string(reinterpret_cast<const char*>(value.data()), n);
    }
};

// A flat view of one element inside a payload (no copy).
struct Elem {
    uint8_t tag;
    const uint8_t* value;
    uint32_t length;
    uint32_t u32() const noexcept {
        uint8_t b[4] = {0, 0, 0, 0};
        if (length != 0) std::memcpy(b, value, length < 4 ? length : 4);
        return uint32_t(b[0]) | uint32_t(b[1]) << 8 | uint32_t(b[2]) << 16 | uint32_t(b[3]) << 24;
    }
    uint8_t u8() const noexcept { return length ? value[0] : 0; }
    std::string text() const {
        if (length == 0) return {};
        const void* nul = std::memchr(value, 0, length);
        const size_t n = nul ? size_t(static_cast<const uint8_t*>(nul) - value) : length;
        return std::string(reinterpret_cast<const char*>(value), n);
    }
    Bytes bytes() const { return Bytes(value, value + length); }
};

// Splits a payload into its elements. False for a malformed payload: tag 0xFF, a
// lone tag byte, a truncated length or a value running past the end.
bool split(const uint8_t* p, size_t n, std::vector<Elem>* out);
inline bool split(const Bytes& b, std::vector<Elem>* out) { return split(b.data(), b.size(), out); }

inline uint32_t le32(const uint8_t* p) noexcept {
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}
inline void put_le32(uint8_t* p, uint32_t v) noexcept {
    p[0] = uint8_t(v);
    p[1] = uint8_t(v >> 8);
    p[2] = uint8_t(v >> 16);
    p[3] = uint8_t(v >> 24);
}

// The frame CRC: CRC-32 with the reflected polynomial 0xEDB88320, initial value
// 0xFFFFFFFF and a final complement (zlib's crc32). Pass 0 to start; pass a
// finished CRC to continue it over more bytes.
uint32_t crc32(uint32_t crc, const uint8_t* p, size_t n) noexcept;

// Builds a payload in a growing buffer.
class Out {
public:
    Bytes bytes;

    void element(uint8_t tag, const void* value, size_t length) {
        bytes.push_back(tag);
        length_of(uint32_t(length));
        const auto* v = static_cast<const uint8_t*>(value);
        if (length != 0) bytes.insert(bytes.end(), v, v + length);
    }
    void element(uint8_t tag, const Bytes& v) { element(tag, v.data(), v.size()); }
    // Only the tag and length of an element whose value the caller appends.
    void head(uint8_t tag, uint32_t length) {
        bytes.push_back(tag);
        length_of(length);
    }
    void u8(uint8_t tag, uint8_t v) { element(tag, &v, 1); }
    void u16(uint8_t tag, uint16_t v) {
        const uint8_t b[2] = {uint8_t(v), uint8_t(v >> 8)};
        element(tag, b, 2);
    }
    void u32(uint8_t tag, uint32_t v) {
        uint8_t b[4];
        put_le32(b, v);
        element(tag, b, 4);
    }
    void text(uint8_t tag, std::string_view s) { element(tag, s.data(), s.size()); }
    // A text padded with NULs (or cut) to exactly `width` bytes.
    void fixed(uint8_t tag, std::string_view s, size_t width) {
        std::string t(s.substr(0, width));
        t.resize(width, '\0');
        element(tag, t.data(), t.size());
    }
    void node(const Node& n) {
        if (n.kids.empty() && !n.value.empty()) {
            element(n.tag, n.value);
        } else if (!n.kids.empty()) {
            const size_t at = open();
            for (const Node& k : n.kids) node(k);
            close(at, n.tag);
        } else {
            element(n.tag, nullptr, 0);
        }
    }
    void nodes(const std::vector<Node>& ns) {
        for (const Node& n : ns) node(n);
    }

    // Containers: six bytes reserved, filled with tag, 0x84 and the length.
    size_t open() {
        const size_t at = bytes.size();
        bytes.resize(at + 6);
        return at;
    }
    void close(size_t at, uint8_t tag) {
        const uint32_t n = uint32_t(bytes.size() - at - 6);
        bytes[at] = tag;
        bytes[at + 1] = 0x84;
        bytes[at + 2] = uint8_t(n >> 24);
        bytes[at + 3] = uint8_t(n >> 16);
        bytes[at + 4] = uint8_t(n >> 8);
        bytes[at + 5] = uint8_t(n);
    }

private:
    void length_of(uint32_t n) {
        if (n < 0x80) {
            bytes.push_back(uint8_t(n));
        } else if (n < 0x100) {
            bytes.push_back(0x81);
            bytes.push_back(uint8_t(n));
        } else if (n < 0x10000) {
            bytes.push_back(0x82);
            bytes.push_back(uint8_t(n >> 8));
            bytes.push_back(uint8_t(n));
        } else {
            bytes.push_back(0x84);
            bytes.push_back(uint8_t(n >> 24));
            bytes.push_back(uint8_t(n >> 16));
            bytes.push_back(uint8_t(n >> 8));
            bytes.push_back(uint8_t(n));
        }
    }
};

}  // namespace kvnsim
