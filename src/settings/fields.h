// Records described as data: one row per field with its tag, its place in the
// record and how it travels. One walker writes a record in row order, one stores
// decoded elements by tag.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include "link/tlv.h"
#include "settings/command.h"

namespace kvn {

enum class Wire : uint8_t {
    u8,           // one byte
    u16,          // two bytes, little-endian
    u32,          // four bytes, little-endian
    text,         // text at its own length, omitted when empty
    text_always,  // text at its own length, sent even when empty (length 0)
    text_whole,   // the whole array, NUL included, omitted when empty
    bytes,        // the whole array as it is
};

struct Field {
    uint8_t tag;
    Wire wire;
    uint16_t offset;
    uint16_t size;   // bytes of the member
    uint16_t limit;  // decoding copies at most this many bytes (texts and arrays)
};

// Rows of a field table. `limit` is the decoder's copy bound; it defaults to the
// member's size.
#define KVN_FIELD(Rec, member, tag, wire) \
    ::kvn::Field { tag, ::kvn::Wire::wire, offsetof(Rec, member), sizeof(Rec::member), sizeof(Rec::member) }
#define KVN_FIELD_LIMIT(Rec, member, tag, wire, limit) \
    ::kvn::Field { tag, ::kvn::Wire::wire, offsetof(Rec, member), sizeof(Rec::member), limit }

using FieldTable = std::span<const Field>;

// Writes every field of the table, in table order.
void encode_fields(tlv::Writer& w, FieldTable table, const void* record) noexcept;

// Stores one decoded element into the record by its tag; false for a tag the
// table does not know (the element is skipped).
bool store_field(FieldTable table, uint8_t tag, const uint8_t* value, uint32_t length, void* record) noexcept;

// Decodes a flat payload into the record.
int32_t decode_fields(FieldTable table, const uint8_t* payload, uint32_t length, void* record,
                      tlv::Empty empty = tlv::Empty::skip) noexcept;

namespace cmd {

// The set/get shapes for a flat record described by a field table.
template <uint32_t Size = kSettingsBuffer, class Rec>
int32_t set_record(kvn_device_conn* conn, uint32_t command, FieldTable table, const Rec* record,
                   Capacity capacity = Capacity::buffer) noexcept {
    if (record == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    return set<Size>(conn, command, [&](tlv::Writer& w) { encode_fields(w, table, record); }, capacity);
}

template <uint32_t Size = kSettingsBuffer, class Rec>
int32_t get_record(kvn_device_conn* conn, uint32_t command, FieldTable table, Rec* record,
                   tlv::Empty empty = tlv::Empty::skip) noexcept {
    if (record == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    return get<Size>(conn, command, [&](const uint8_t* p, uint32_t n) {
        return decode_fields(table, p, n, record, empty);
    });
}

// A single u32 under one tag: sent by value, read through a pointer.
template <uint32_t Size = kSettingsBuffer>
int32_t set_u32(kvn_device_conn* conn, uint32_t command, uint8_t tag, uint32_t value) noexcept {
    return set<Size>(conn, command, [&](tlv::Writer& w) { w.u32(tag, value); });
}

template <uint32_t Size = kSettingsBuffer>
int32_t get_u32(kvn_device_conn* conn, uint32_t command, uint8_t tag, uint32_t* value) noexcept {
    if (value == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    return get<Size>(conn, command, [&](const uint8_t* p, uint32_t n) {
        return tlv::decode(p, n, [&](uint8_t t, const uint8_t* v, uint32_t len) {
            if (t == tag) *value = tlv::value_u32(v, len);
            return 0;
        });
    });
}

}  // namespace cmd
}  // namespace kvn
