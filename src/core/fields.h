// Records described as data.
//
// A record is a table of rows in emission order, one row per element: its tag,
// its place in the record, how it travels (wire kind), when it is sent and how a
// decoded value is copied back. Repeated containers are rows too: a `List` names
// the array, the entry's own rows and how a decoded element finds its entry.
// One walker encodes (`encode`) and one decodes (`decode`), recursively, so a
// list can sit inside a list entry.
//
// Rows are built by constexpr functions that check the member they name at
// compile time: a 4-byte kind on a one-byte member, a text kind on a non-array or
// a copy limit beyond the member does not compile.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>
#include <utility>

#include "link/tlv.h"

namespace kvn {

struct List;
struct Field;
using Desc = std::span<const Field>;

// How an element travels.
enum class Kind : uint8_t {
    u8,         // one byte
    u16,        // two bytes, little-endian
    u32,        // four bytes, little-endian
    u32_as_u8,  // a u32 member sent as its low byte, read back zero-extended
    address,    // a dotted-quad text sent as its 32-bit number
    text,       // the text up to its NUL, without it
    bytes,      // the whole member
    counted,    // `length` bytes of the member, the length held in a member of its own
    constant,   // no member: a fixed value
    position,   // no member: the entry's place in its list (plus a base)
    list,       // a repeated container, see List
    record,     // a record of its own kind inside this one (Desc at the member)
    self,       // the value is decoded by the same table into the same record
    custom,     // a store function of the family's own
};

// When the encoder writes the row.
enum class Send : uint8_t {
    always,
    nonzero,  // integers: non-zero; texts: not empty; counted: a non-zero length
    gated,    // when the gate holds
    never,    // the decoder's only
};

// How the decoder stores a value.
enum class Copy : uint8_t {
    value,      // integers: the value's first bytes, zero-extended; arrays: at most `limit` bytes, the rest kept
    raw,        // at most the member's width, as it is; a shorter value changes only the low bytes
    zero_fill,  // at most `limit` bytes, the rest of the member cleared
    lossy,      // up to `limit` bytes copied; a longer value stores only its first byte
    exact,      // exactly `limit` bytes, any other length stops with `status`
    terminate,  // cut to `limit - 1` bytes and terminated
    remember,   // up to `limit` bytes as they are; a longer value is kept out and `status` is
                // remembered while decoding goes on, then returned
    result,     // record/self/list: the nested result is remembered and returned at the end
    none,       // the encoder's only
};

// A condition on a member: sent (or an entry taken) when (member == value) == equal.
struct Gate {
    uint32_t offset = 0;
    uint8_t width = 0;  // 0: no gate
    bool equal = true;
    uint32_t value = 0;
};

using StoreFn = int32_t (*)(uint8_t* member, const uint8_t* value, uint32_t length) noexcept;

struct Field {
    uint8_t tag = 0;
    Kind kind = Kind::u32;
    Send send = Send::always;
    Copy copy = Copy::value;
    uint32_t offset = 0;  // member offset in the record (or the entry)
    uint32_t size = 0;    // member bytes; the wire width of constants and positions
    uint32_t limit = 0;   // decoder's copy bound for arrays
    uint32_t value = 0;   // constant value; position base
    uint32_t length_offset = 0;  // counted: where the length lives
    uint8_t length_width = 0;    // counted: 1 or 4 bytes
    bool shortest = false;       // record containers: shortest length form instead of 0x84
    bool by_reference = false;   // bytes, counted: sent from where they lie, not copied
    int32_t status = 0;          // exact, remember: the status
    Gate gate{};
    const List* list = nullptr;
    Desc desc{};                 // record: the nested record's rows
    StoreFn store = nullptr;     // custom
    uint32_t column = 0;         // in a list over parallel arrays: the step from entry to entry
    bool outer_member = false;   // in a list entry: the member belongs to the list's owner, not the entry

    // Modifiers, each returning the changed row.
    constexpr Field nonzero() const { Field f = *this; f.send = Send::nonzero; return f; }
    constexpr Field decode_only() const { Field f = *this; f.send = Send::never; return f; }
    constexpr Field encode_only() const { Field f = *this; f.copy = Copy::none; return f; }
    constexpr Field when(Gate g) const { Field f = *this; f.send = Send::gated; f.gate = g; return f; }
    constexpr Field bound(uint32_t n) const { check_limit(n); Field f = *this; f.limit = n; return f; }
    constexpr Field raw() const { Field f = *this; f.copy = Copy::raw; return f; }
    constexpr Field zero_fill(uint32_t n) const { Field f = bound(n); f.copy = Copy::zero_fill; return f; }
    constexpr Field lossy(uint32_t n) const { Field f = bound(n); f.copy = Copy::lossy; return f; }
    constexpr Field exact(uint32_t n, int32_t code) const { Field f = bound(n); f.copy = Copy::exact; f.status = code; return f; }
    constexpr Field terminate(uint32_t n) const { Field f = bound(n); f.copy = Copy::terminate; return f; }
    constexpr Field remember(uint32_t n, int32_t code) const { Field f = bound(n); f.copy = Copy::remember; f.status = code; return f; }
    constexpr Field result() const { Field f = *this; f.copy = Copy::result; return f; }
    constexpr Field by_ref() const { Field f = *this; f.by_reference = true; return f; }
    constexpr Field each(uint32_t step) const { Field f = *this; f.column = step; return f; }
    constexpr Field shortest_form() const { Field f = *this; f.shortest = true; return f; }
    // A row of a list entry that stores into the owner of the list (a page's total
    // reported inside each entry); decode only.
    constexpr Field outer() const { Field f = *this; f.outer_member = true; f.send = Send::never; return f; }

private:
    static void limit_beyond_member() {}  // not constexpr: a call stops compilation
    constexpr void check_limit(uint32_t n) const {
        if (size != 0 && n > size && kind != Kind::record) limit_beyond_member();
    }
};

// How a decoded element finds its entry.
enum class Select : uint8_t {
    next,         // each container fills the next entry
    next_on_tag,  // inside a container, entry `counter`; the counter advances after `key`
    selector,     // `key` inside the container names the entry (value - base); fields before it are dropped
    append,       // flat: each element of an entry's tag fills the next entry
    pair,         // flat: the k-th element of each entry tag fills entry k
};

// Where the counter of filled entries lives.
enum class Counter : uint8_t {
    local,        // starts at 0 with every decode
    u8_keep,      // the record's u8 at `count`, as the caller left it
    u8_clear,     // the record's u8 at `count`, cleared before the request goes out
    low_byte,     // the low byte of the record's u32 (or i32) at `count`, cleared before the request
    low_byte_keep,// the low byte of that u32, as the caller left it
    capacity_in,  // the u8 at `count` holds the capacity going in and the entries filled coming out
    count_total,  // pair lists: u32 `count` (entries stored) and `total` (entries seen), rebuilt by each read
};

// Which entries the encoder sends.
enum class Range : uint8_t {
    all,        // every entry of the array
    count_i32,  // entries below the record's i32 at `send_count` (signed; above the array: -1)
    count_u8,   // entries below the record's u8 at `send_count` (above the array: -1)
    none,       // the decoder's only
};

struct List {
    uint8_t tag = 0;                  // container tag; 0 for a flat list
    Select select = Select::next;
    uint8_t key = 0;                  // selector tag, advancing tag
    uint32_t key_base = 0;            // selector value of entry 0
    int32_t out_of_range = 0;         // selector beyond the array: 0 drops the fields, else stops with it
    uint32_t offset = 0;              // first entry in the owner
    uint32_t stride = 0;              // entry size; 0 for parallel arrays (rows carry their columns)
    uint32_t capacity = 0;            // entries in the array
    Desc entry{};                     // the entry's rows, offsets relative to the entry
    Counter counter = Counter::local;
    uint32_t count = 0;               // counter member in the owner
    uint32_t total = 0;               // count_total: the total member
    Range range = Range::all;
    uint32_t send_count = 0;          // range member in the owner
    uint32_t first = 0;               // first entry sent (Range::all)
    Gate entry_gate{};                // entry sent only when its gate holds (offset relative to the entry)
    uint32_t limit_from = 0, limit_to = 0;  // with limit_to != limit_from: decoding ends with 0 after
                                            // u32@limit_to - u32@limit_from entries
    bool remember_result = false;     // a container's result is remembered, not returned at once
    bool clear_new = false;           // an entry is cleared when it is first filled
    bool indirect = false;            // `offset` holds a pointer to the first entry, not the entries

    // Modifiers, each returning the changed list.
    constexpr List of(Desc rows) const { List l = *this; l.entry = rows; return l; }
    constexpr List in(uint8_t container) const { List l = *this; l.tag = container; return l; }
    constexpr List by(uint8_t selector, uint32_t base, int32_t beyond = 0) const {
        List l = *this; l.select = Select::selector; l.key = selector; l.key_base = base; l.out_of_range = beyond; return l;
    }
    constexpr List advancing_on(uint8_t t) const { List l = *this; l.select = Select::next_on_tag; l.key = t; return l; }
    constexpr List appending() const { List l = *this; l.select = Select::append; return l; }
    constexpr List pairing() const { List l = *this; l.select = Select::pair; return l; }
    constexpr List counting(Counter c, uint32_t member = 0, uint32_t total_member = 0) const {
        List l = *this; l.counter = c; l.count = member; l.total = total_member; return l;
    }
    constexpr List sending(Range r, uint32_t member = 0) const { List l = *this; l.range = r; l.send_count = member; return l; }
    constexpr List from(uint32_t first_entry) const { List l = *this; l.first = first_entry; return l; }
    constexpr List only(Gate g) const { List l = *this; l.entry_gate = g; return l; }
    constexpr List until(uint32_t from_member, uint32_t to_member) const {
        List l = *this; l.limit_from = from_member; l.limit_to = to_member; return l;
    }
    constexpr List remembering() const { List l = *this; l.remember_result = true; return l; }
    constexpr List clearing_new() const { List l = *this; l.clear_new = true; return l; }
    constexpr List through_pointer() const { List l = *this; l.indirect = true; return l; }
};

// Rows. `Member<T>` carries a member's offset and type so that a row can check it.
template <class T>
struct Member {
    uint32_t offset;
};

#define KVN_MEMBER(Rec, member) \
    ::kvn::Member<std::remove_cvref_t<decltype(std::declval<Rec&>().member)>> { static_cast<uint32_t>(offsetof(Rec, member)) }

namespace row {

template <class T>
inline constexpr bool is_byte_array = std::is_array_v<T> && sizeof(std::remove_all_extents_t<T>) == 1;

template <class T>
constexpr Field make(uint8_t tag, Kind kind, Member<T> m) {
    Field f;
    f.tag = tag;
    f.kind = kind;
    f.offset = m.offset;
    f.size = sizeof(T);
    f.limit = sizeof(T);
    return f;
}

// Integer rows: the member must be an integer of the wire's width (u32_as_u8: of four bytes).
template <Kind K, size_t Width, class T>
constexpr Field integer(uint8_t tag, Member<T> m) {
    static_assert(std::is_integral_v<T> && sizeof(T) == Width, "the row's width does not fit the member");
    return make(tag, K, m);
}
template <class T>
constexpr Field u8(uint8_t tag, Member<T> m) { return integer<Kind::u8, 1>(tag, m); }
template <class T>
constexpr Field u16(uint8_t tag, Member<T> m) { return integer<Kind::u16, 2>(tag, m); }
template <class T>
constexpr Field u32(uint8_t tag, Member<T> m) { return integer<Kind::u32, 4>(tag, m); }
template <class T>
constexpr Field u32_as_u8(uint8_t tag, Member<T> m) { return integer<Kind::u32_as_u8, 4>(tag, m); }
template <class T>
constexpr Field address(uint8_t tag, Member<T> m) {
    static_assert(is_byte_array<T> && sizeof(T) >= 16, "an address row needs a text of at least 16 bytes");
    return make(tag, Kind::address, m);
}
template <class T>
constexpr Field text(uint8_t tag, Member<T> m) {
    static_assert(is_byte_array<T>, "a text row needs a character array");
    return make(tag, Kind::text, m);
}
template <class T>
constexpr Field bytes(uint8_t tag, Member<T> m) {
    static_assert(is_byte_array<T>, "a bytes row needs a byte array");
    return make(tag, Kind::bytes, m);
}
// `length` bytes of the array, the length in a u8 or u32 member of its own.
template <class T, class L>
constexpr Field counted(uint8_t tag, Member<T> m, Member<L> length) {
    static_assert(is_byte_array<T>, "a counted row needs a byte array");
    static_assert(std::is_integral_v<L> && (sizeof(L) == 1 || sizeof(L) == 4), "a length member is a u8 or a u32");
    Field f = make(tag, Kind::counted, m);
    f.length_offset = length.offset;
    f.length_width = sizeof(L);
    return f;
}
template <class T>
constexpr Field record(uint8_t tag, Member<T> m, Desc desc) {
    static_assert(std::is_class_v<T>, "a record row needs a record member");
    Field f = make(tag, Kind::record, m);
    f.desc = desc;
    return f;
}
template <class T>
constexpr Field custom(uint8_t tag, Member<T> m, StoreFn store) {
    Field f = make(tag, Kind::custom, m);
    f.store = store;
    f.send = Send::never;
    return f;
}
constexpr Field constant_u8(uint8_t tag, uint8_t v) {
    Field f;
    f.tag = tag;
    f.kind = Kind::constant;
    f.size = 1;
    f.value = v;
    f.copy = Copy::none;
    return f;
}
constexpr Field constant_u32(uint8_t tag, uint32_t v) {
    Field f = constant_u8(tag, 0);
    f.size = 4;
    f.value = v;
    return f;
}
// The entry's place in its list, plus `base`, as `width` bytes.
constexpr Field position(uint8_t tag, uint8_t width, uint32_t base = 0) {
    Field f;
    f.tag = tag;
    f.kind = Kind::position;
    f.size = width;
    f.value = base;
    f.copy = Copy::none;
    return f;
}
constexpr Field list(const List& l) {
    Field f;
    f.tag = l.tag;
    f.kind = Kind::list;
    f.list = &l;
    return f;
}
// A container around rows of the same record (offset 0): sent with 0x84 lengths,
// or the shortest form with `.shortest_form()`; decoded into the same record.
constexpr Field container(uint8_t tag, Desc desc) {
    Field f;
    f.tag = tag;
    f.kind = Kind::record;
    f.desc = desc;
    return f;
}
constexpr Field self(uint8_t tag) {
    Field f;
    f.tag = tag;
    f.kind = Kind::self;
    f.send = Send::never;
    f.copy = Copy::result;
    return f;
}

// Gates on a member: `when(is(M, v))`, `when(is_not(M, v))`.
template <class T>
constexpr Gate is(Member<T> m, uint32_t v) {
    static_assert(std::is_integral_v<T> || is_byte_array<T>, "a gate reads an integer or a text's first byte");
    return Gate{m.offset, static_cast<uint8_t>(std::is_integral_v<T> ? sizeof(T) : 1), true, v};
}
template <class T>
constexpr Gate is_not(Member<T> m, uint32_t v) {
    Gate g = is(m, v);
    g.equal = false;
    return g;
}

}  // namespace row

// Lists over an array member, or over an array passed on its own (offset 0).
template <class T, size_t N>
constexpr List array(Member<T[N]> m) {
    List l;
    l.offset = m.offset;
    l.stride = sizeof(T);
    l.capacity = N;
    return l;
}
template <class T, size_t N>
constexpr List array() {
    return array(Member<T[N]>{0});
}

// A list over an array the owner points at (a caller's array passed beside its
// record): `capacity` entries at most; a null pointer holds none.
template <class T>
constexpr List array_at(Member<T*> m, uint32_t capacity) {
    List l;
    l.offset = m.offset;
    l.stride = sizeof(T);
    l.capacity = capacity;
    return l.through_pointer();
}

// Encodes the record's rows in order. `first`/`count`, when given, replace the
// range of the table's top-level lists (a single-entry set).
struct Slice {
    uint32_t first;
    uint32_t count;
};
void encode(tlv::Writer& w, Desc desc, const void* record, const Slice* slice = nullptr) noexcept;

// Decodes a payload into the record: elements stored by tag, unknown tags skipped.
int32_t decode(Desc desc, const uint8_t* payload, uint32_t length, void* record,
               tlv::Empty empty = tlv::Empty::skip) noexcept;

// What the lists of a table do before the request goes out (counters the call clears).
void prepare(Desc desc, void* record) noexcept;

}  // namespace kvn
