// The user record on the wire: one table for the store form (also sent by
// verification by record) and one for the smart-card form, built from the same
// rows; one decoder (the store form's table) for every answer that carries a record.
//
// Store form, in wire order: 2, 3, 4, 6, 29, 5, 8, 9, 10, 11, 12, 13, 14, 16, 18, 19,
// 20, 33, 32, then a tag-22 group per used template slot and a tag-34 group per used
// attr_t35 entry, all inside tag 1 with the 0x84 length form.
// Card form: the same without 29 and 32, attr_t11 and attr_t12 as four bytes, tag 1
// in the shortest length form.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

#include "core/fields.h"
#include "kvnsdk2.h"

namespace kvn::users {

using namespace row;

#define KVN_USER(m) KVN_MEMBER(kvn_user_record, m)
#define KVN_SLOT(m) KVN_MEMBER(kvn_user_template, m)

// Rows of several tables joined into one, in order.
template <size_t... N>
constexpr auto join(const std::array<Field, N>&... parts) {
    std::array<Field, (N + ...)> out{};
    size_t i = 0;
    ((std::copy(parts.begin(), parts.end(), out.begin() + i), i += N), ...);
    return out;
}

// One template slot. A length beyond the slot is refused by the encoder; a longer
// value is cut to the slot by the decoder.
inline constexpr Field kSlot[] = {
    u8(7, KVN_SLOT(finger_index)),
    u8(15, KVN_SLOT(attr_t15)),
    u8(21, KVN_SLOT(attr_t21)),
    u8(17, KVN_SLOT(attr_t17)),
    counted(23, KVN_SLOT(template_data), KVN_SLOT(template_length)),
};
// Slots below template_count are sent (a count above 10 is refused); each group read
// fills the slot the low byte of template_count names, then only that byte counts up,
// so a stale count in a record that was not cleared never reaches past the array.
inline constexpr List kTemplates = array(KVN_USER(templates))
                                       .in(22)
                                       .of(kSlot)
                                       .sending(Range::count_i32, offsetof(kvn_user_record, template_count))
                                       .counting(Counter::low_byte_keep, offsetof(kvn_user_record, template_count));

inline constexpr Field kValue[] = {u32(35, Member<uint32_t>{0})};
inline constexpr List kValues = array(KVN_USER(attr_t35))
                                    .in(34)
                                    .of(kValue)
                                    .sending(Range::count_u8, offsetof(kvn_user_record, attr_t35_count))
                                    .counting(Counter::u8_keep, offsetof(kvn_user_record, attr_t35_count));

inline constexpr std::array<Field, 4> kHead = {
    text(2, KVN_USER(user_id)).bound(64),
    counted(3, KVN_USER(text_t03), KVN_USER(text_t03_length)).bound(50),
    counted(4, KVN_USER(text_t04), KVN_USER(text_t04_length)).bound(50).nonzero(),
    u8(6, KVN_USER(attr_t06)),
};
inline constexpr std::array<Field, 4> kMiddle = {
    u32(5, KVN_USER(attr_t05)).nonzero(),
    u32(8, KVN_USER(attr_t08)).nonzero(),
    u32(9, KVN_USER(attr_t09)).nonzero(),
    text(10, KVN_USER(text_t10)).bound(10).nonzero(),
};
inline constexpr std::array<Field, 7> kTail = {
    u8(13, KVN_USER(attr_t13)),
    u8(14, KVN_USER(attr_t14)),
    u32_as_u8(16, KVN_USER(attr_t16)),
    u32(18, KVN_USER(attr_t18)),
    bytes(19, KVN_USER(text_t19)),
    bytes(20, KVN_USER(text_t20)),
    u8(33, KVN_USER(attr_t33)),
};
// Tag 1 inside an answer is the record again, decoded into the same record; its
// result is the result.
inline constexpr std::array<Field, 3> kGroups = {list(kTemplates), list(kValues), self(1)};

// Sent by a store and never read back.
inline constexpr std::array<Field, 1> kStoreOnly29 = {u8(29, KVN_USER(attr_t29)).encode_only()};
inline constexpr std::array<Field, 1> kStoreOnly32 = {bytes(32, KVN_USER(data_t32)).encode_only()};
inline constexpr std::array<Field, 2> kNarrow = {u32_as_u8(11, KVN_USER(attr_t11)), u32_as_u8(12, KVN_USER(attr_t12))};
inline constexpr std::array<Field, 2> kWide = {u32(11, KVN_USER(attr_t11)), u32(12, KVN_USER(attr_t12))};

// The record's fields: the store form, and the decoder of every answer.
inline constexpr auto kFields = join(kHead, kStoreOnly29, kMiddle, kNarrow, kTail, kStoreOnly32, kGroups);
inline constexpr auto kCardFields = join(kHead, kMiddle, kWide, kTail, kGroups);

inline constexpr Field kRecord[] = {container(1, kFields)};
inline constexpr Field kCardRecord[] = {container(1, kCardFields).shortest_form()};

#undef KVN_USER
#undef KVN_SLOT

}  // namespace kvn::users
