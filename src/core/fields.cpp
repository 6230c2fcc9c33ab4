#include "core/fields.h"

#include <cstring>

#include "kvnsdk2.h"
#include "link/bytes.h"

namespace kvn {
namespace {

// Deeper nesting than any record has (schedules go three levels, a user record
// may wrap itself once or twice) is a malformed answer, not a reason to recurse.
constexpr int kMaxDepth = 8;
constexpr size_t kMaxLists = 4;

uint32_t load(const uint8_t* p, uint32_t width) noexcept {
    switch (width) {
        case 1: return p[0];
        case 2: return load_le16(p);
        default: return load_le32(p);
    }
}

bool holds(const Gate& g, const uint8_t* base) noexcept {
    if (g.width == 0) return true;
    return (load(base + g.offset, g.width) == g.value) == g.equal;
}

// The first entry of a list: in the owner, or where the owner points.
const uint8_t* first_entry(const List& l, const uint8_t* owner) noexcept {
    const uint8_t* first = owner + l.offset;
    if (!l.indirect) return first;
    const uint8_t* pointed;
    std::memcpy(&pointed, first, sizeof pointed);  // the record is walked as bytes
    return pointed;
}

uint8_t* at(uint8_t* base, const Field& f, uint32_t index) noexcept { return base + f.offset + index * f.column; }
const uint8_t* at(const uint8_t* base, const Field& f, uint32_t index) noexcept {
    return base + f.offset + index * f.column;
}

// ---------------------------------------------------------------- encoding

void encode_rows(tlv::Writer& w, Desc desc, const uint8_t* base, uint32_t index, const Slice* slice) noexcept;

void encode_list(tlv::Writer& w, const List& l, const uint8_t* owner, const Slice* slice) noexcept {
    uint32_t first = l.first;
    uint32_t end = l.capacity;
    switch (l.range) {
        case Range::all: break;
        case Range::none: return;
        case Range::count_i32: {
            const auto n = static_cast<int32_t>(load_le32(owner + l.send_count));
            if (n > static_cast<int32_t>(l.capacity)) return w.fail();
            first = 0;
            end = n > 0 ? static_cast<uint32_t>(n) : 0;
            break;
        }
        case Range::count_u8:
            if (owner[l.send_count] > l.capacity) return w.fail();
            first = 0;
            end = owner[l.send_count];
            break;
    }
    if (first_entry(l, owner) == nullptr) return;
    if (slice != nullptr) {
        if (slice->first >= l.capacity || slice->count > l.capacity - slice->first) return w.fail();
        first = slice->first;
        end = slice->first + slice->count;
    }
    for (uint32_t i = first; i < end; ++i) {
        const uint8_t* entry = first_entry(l, owner) + i * l.stride;
        if (!holds(l.entry_gate, entry)) continue;
        if (l.tag == 0) {
            encode_rows(w, l.entry, entry, i, nullptr);
            continue;
        }
        const auto mark = w.open();
        encode_rows(w, l.entry, entry, i, nullptr);
        w.close(mark, l.tag);
    }
}

bool wanted(const Field& f, const uint8_t* base, const uint8_t* m) noexcept {
    switch (f.send) {
        case Send::always: return true;
        case Send::never: return false;
        case Send::gated: return holds(f.gate, base);
        case Send::nonzero: break;
    }
    switch (f.kind) {
        case Kind::u8: return m[0] != 0;
        case Kind::u16: return load_le16(m) != 0;
        case Kind::counted: return load(base + f.length_offset, f.length_width) != 0;
        case Kind::u32:
        case Kind::u32_as_u8: return load_le32(m) != 0;
        default: return m[0] != 0;  // texts and arrays: not empty
    }
}

void encode_row(tlv::Writer& w, const Field& f, const uint8_t* base, uint32_t index, const Slice* slice) noexcept {
    const uint8_t* m = at(base, f, index);
    if (!wanted(f, base, m)) return;
    switch (f.kind) {
        case Kind::u8: return w.u8(f.tag, m[0]);
        case Kind::u16: return w.u16(f.tag, load_le16(m));
        case Kind::u32: return w.u32(f.tag, load_le32(m));
        case Kind::u32_as_u8: return w.u8(f.tag, m[0]);
        case Kind::address: {
            char text[17];
            std::memcpy(text, m, 16);
            text[16] = 0;
            uint32_t v = 0;
            if (int32_t rc = kvn_convert_ip_string_to_int(text, &v); rc != 0) w.fail(rc);
            return w.u32(f.tag, v);
        }
        case Kind::text: return w.text(f.tag, reinterpret_cast<const char*>(m), f.size, true);
        case Kind::bytes:
            if (f.by_reference) return w.element_ref(f.tag, m, f.size);
            return w.element(f.tag, m, f.size);
        case Kind::counted: {
            const uint32_t n = load(base + f.length_offset, f.length_width);
            if (n > f.size) return w.fail();  // a length beyond the array is never read
            if (f.by_reference) return w.element_ref(f.tag, m, n);
            return w.element(f.tag, m, n);
        }
        case Kind::constant: return f.size == 1 ? w.u8(f.tag, static_cast<uint8_t>(f.value)) : w.u32(f.tag, f.value);
        case Kind::position: {
            const uint32_t v = index + f.value;
            return f.size == 1 ? w.u8(f.tag, static_cast<uint8_t>(v)) : w.u32(f.tag, v);
        }
        case Kind::list: return encode_list(w, *f.list, base, slice);
        case Kind::record: {
            const auto mark = w.open();
            encode_rows(w, f.desc, m, 0, slice);
            return f.shortest ? w.close_short(mark, f.tag) : w.close(mark, f.tag);
        }
        case Kind::self:
        case Kind::custom: return;
    }
}

void encode_rows(tlv::Writer& w, Desc desc, const uint8_t* base, uint32_t index, const Slice* slice) noexcept {
    for (const Field& f : desc) encode_row(w, f, base, index, slice);
}

// ---------------------------------------------------------------- decoding

struct ListState {
    uint32_t counter = 0;
    uint32_t capacity = 0;  // entries that may be filled
    uint32_t limit = 0;     // with `limited`: entries after which decoding ends
    bool limited = false;
    uint32_t seen[2] = {0, 0};  // pair lists: occurrences of each tag
};

// What a decoding step ends with: a status (0 goes on, anything else stops the
// decode with it), or `finished`, when a list with a limit has taken its last
// entry: the whole decode ends there with success.
struct Result {
    int32_t status = 0;
    bool finished = false;
    bool go_on() const noexcept { return status == 0 && !finished; }
};
constexpr Result kFinished{0, true};

struct Level {
    Desc desc;
    uint8_t* base;
    uint32_t index;
    int depth;
    tlv::Empty empty;
    int32_t remembered = 0;
    ListState lists[kMaxLists]{};
    uint8_t* owner = nullptr;  // in a list entry: the record that holds the list (outer rows)
};

Result decode_level(Level& level, const uint8_t* p, uint32_t n) noexcept;
Result element(Level& level, uint8_t tag, const uint8_t* v, uint32_t len) noexcept;

// tlv::decode over a payload, each element handed to `step`. A step that does not
// go on stops the walk, and its Result is the walk's; otherwise the walk ends with
// tlv::decode's own status (0, or -1 for malformed input).
template <class Step>
Result walk(const uint8_t* p, uint32_t n, tlv::Empty empty, Step&& step) noexcept {
    Result last;
    const int32_t rc = tlv::decode(
        p, n,
        [&](uint8_t t, const uint8_t* v, uint32_t len) -> int32_t {
            last = step(t, v, len);
            return last.go_on() ? 0 : -1;  // any non-zero stops tlv::decode
        },
        empty);
    return last.go_on() ? Result{rc} : last;
}

// The counter of a list, wherever it lives.
uint32_t counter(const List& l, const ListState& s, const uint8_t* owner) noexcept {
    switch (l.counter) {
        case Counter::u8_keep:
        case Counter::u8_clear:
        case Counter::low_byte:
        case Counter::low_byte_keep: return owner[l.count];
        default: return s.counter;
    }
}
void advance(const List& l, ListState& s, uint8_t* owner) noexcept {
    switch (l.counter) {
        case Counter::u8_keep:
        case Counter::u8_clear:
        case Counter::low_byte:
        case Counter::low_byte_keep: ++owner[l.count]; break;  // one byte: it wraps after 255
        default: ++s.counter; break;
    }
}

void start_list(const List& l, ListState& s, const uint8_t* owner) noexcept {
    s.capacity = first_entry(l, owner) != nullptr ? l.capacity : 0;
    if (l.counter == Counter::capacity_in && owner[l.count] < s.capacity) s.capacity = owner[l.count];
    if (l.limit_to != l.limit_from) {
        const uint32_t limit = load_le32(owner + l.limit_to) - load_le32(owner + l.limit_from);
        s.limit = limit < l.capacity ? limit : l.capacity;
        s.limited = true;
    }
}

void finish_list(const List& l, const ListState& s, uint8_t* owner) noexcept {
    if (l.counter == Counter::capacity_in) owner[l.count] = static_cast<uint8_t>(s.counter);
}

uint8_t* entry_at(const List& l, uint8_t* owner, uint32_t i) noexcept {
    return const_cast<uint8_t*>(first_entry(l, owner)) + i * l.stride;
}

int32_t store_value(const Field& f, uint8_t* m, const uint8_t* v, uint32_t len, int32_t& remembered) noexcept {
    const bool integer = f.kind == Kind::u8 || f.kind == Kind::u16 || f.kind == Kind::u32;
    if (integer) {
        if (f.copy == Copy::raw || f.copy == Copy::remember) {
            if (len > f.size && f.copy == Copy::remember) {
                remembered = f.status;
                return 0;
            }
            std::memcpy(m, v, len < f.size ? len : f.size);
            return 0;
        }
        if (f.kind == Kind::u8) {
            m[0] = v[0];
        } else if (f.kind == Kind::u16) {
            store_le16(m, tlv::value_u16(v, len));
        } else {
            store_le32(m, tlv::value_u32(v, len));
        }
        return 0;
    }
    switch (f.kind) {
        case Kind::u32_as_u8: store_le32(m, v[0]); return 0;
        case Kind::address: {
            char text[16] = {};
            kvn_convert_ip_int_to_string(tlv::value_u32(v, len), text);
            std::memcpy(m, text, std::strlen(text) + 1);
            return 0;
        }
        default: break;
    }
    const uint32_t n = len < f.limit ? len : f.limit;
    switch (f.copy) {
        case Copy::zero_fill:
            std::memcpy(m, v, n);
            std::memset(m + n, 0, f.size - n);
            break;
        case Copy::lossy:
            if (len <= f.limit) std::memcpy(m, v, len);
            else m[0] = v[0];
            break;
        case Copy::exact:
            if (len != f.limit) return f.status;
            std::memcpy(m, v, len);
            break;
        case Copy::terminate: tlv::copy_text(reinterpret_cast<char*>(m), f.limit, v, len); break;
        case Copy::remember:
            if (len > f.limit) remembered = f.status;
            else std::memcpy(m, v, len);
            break;
        default: std::memcpy(m, v, n); break;
    }
    if (f.kind == Kind::counted) {
        // The length member tells how many bytes the field now holds.
        uint8_t* length = m - f.offset + f.length_offset;
        if (f.length_width == 1) length[0] = static_cast<uint8_t>(n);
        else store_le32(length, n);
    }
    return 0;
}

// Stores one element into `base` by the row that carries its tag.
Result store_row(Level& level, const Field& f, const uint8_t* v, uint32_t len) noexcept {
    uint8_t* m = at(level.base, f, level.index);
    if (f.outer_member) m = level.owner != nullptr ? level.owner + f.offset : nullptr;
    if (m == nullptr) return {};  // an outer row outside a list has no owner
    switch (f.kind) {
        case Kind::record:
        case Kind::self: {
            if (level.depth + 1 > kMaxDepth) return Result{-1};
            Level inner{f.kind == Kind::self ? level.desc : f.desc, f.kind == Kind::self ? level.base : m,
                        level.index, level.depth + 1, level.empty};
            inner.owner = level.owner;
            const Result r = decode_level(inner, v, len);
            if (r.finished || f.copy != Copy::result) return r;
            level.remembered = r.status;
            return {};
        }
        case Kind::custom: return Result{f.store(m, v, len)};
        case Kind::constant:
        case Kind::position:
        case Kind::list: return {};
        default: return Result{store_value(f, m, v, len, level.remembered)};
    }
}

const Field* row_for(Desc desc, uint8_t tag) noexcept {
    for (const Field& f : desc) {
        if (f.tag != tag || f.copy == Copy::none || f.kind == Kind::list) continue;
        return &f;
    }
    return nullptr;
}

// List rows of a level, in order, each with its state.
template <class Fn>
void for_lists(Level& level, Fn&& fn) noexcept {
    size_t j = 0;
    for (const Field& f : level.desc) {
        if (f.kind != Kind::list || j == kMaxLists) continue;
        fn(*f.list, level.lists[j++]);
    }
}

void begin(Level& level) noexcept {
    for_lists(level, [&](const List& l, ListState& s) {
        s = ListState{};
        if (level.base != nullptr) start_list(l, s, level.base);
    });
}

// A level that went through closes its lists and ends with what it remembered; one
// that stopped keeps the Result it stopped with, its lists as they are.
Result end(Level& level, Result r) noexcept {
    if (!r.go_on()) return r;
    for_lists(level, [&](const List& l, ListState& s) {
        if (level.base != nullptr) finish_list(l, s, level.base);
    });
    return Result{level.remembered};
}

Result decode_level(Level& level, const uint8_t* p, uint32_t n) noexcept {
    begin(level);
    return end(level, walk(p, n, level.empty, [&](uint8_t t, const uint8_t* v, uint32_t len) {
                   return element(level, t, v, len);
               }));
}

// Points `entry` at entry i of list `l` in `owner` (nowhere beyond the array) and
// starts its lists.
void enter(Level& entry, const List& l, const ListState& s, uint8_t* owner, uint32_t i) noexcept {
    entry.base = i < s.capacity ? entry_at(l, owner, i) : nullptr;
    entry.index = i;
    begin(entry);
}

// Select::next: the whole container fills the entry the counter names. The counter
// moves on after a success, and after a failure too when the list remembers it.
Result fill_next(Level& level, const List& l, ListState& s, Level& entry, const uint8_t* v, uint32_t len) noexcept {
    enter(entry, l, s, level.base, counter(l, s, level.base));
    const Result r = decode_level(entry, v, len);
    if (!r.finished && (r.status == 0 || l.remember_result)) advance(l, s, level.base);
    return r;
}

// The other rules walk the container element by element: a selector names the
// entry for the fields after it (fields of an entry beyond the array are dropped);
// with next_on_tag, the advancing tag ends one entry and the next one begins.
Result fill_by_element(Level& level, const List& l, ListState& s, Level& entry, const uint8_t* v,
                       uint32_t len) noexcept {
    uint8_t* owner = level.base;
    if (l.select == Select::next_on_tag) enter(entry, l, s, owner, counter(l, s, owner));
    const Result walked = walk(v, len, level.empty, [&](uint8_t t, const uint8_t* fv, uint32_t fl) -> Result {
        if (l.select == Select::selector && t == l.key) {
            const uint32_t number = tlv::value_u32(fv, fl);
            if (number < l.key_base || number - l.key_base >= s.capacity) {
                if (l.out_of_range != 0) return Result{l.out_of_range};
                entry.base = nullptr;  // its fields are dropped
                return {};
            }
            end(entry, {});
            enter(entry, l, s, owner, number - l.key_base);
        }
        if (entry.base == nullptr) return {};
        if (const Result stored = element(entry, t, fv, fl); !stored.go_on()) return stored;
        if (l.select == Select::next_on_tag && t == l.key) {
            end(entry, {});
            advance(l, s, owner);
            entry.base = nullptr;
            if (counter(l, s, owner) < s.capacity) enter(entry, l, s, owner, counter(l, s, owner));
        }
        return {};
    });
    return end(entry, walked);
}

// One container of list `l`: the entry it fills is found by the list's rule. A
// list that remembers its entries' results goes on after a failure and reports it
// at the end; a list with a limit finishes the decode once it has taken that many.
Result decode_container(Level& level, const List& l, ListState& s, const uint8_t* v, uint32_t len) noexcept {
    if (level.depth + 1 > kMaxDepth) return Result{-1};
    const bool in_turn = l.select == Select::next || l.select == Select::next_on_tag;
    if (in_turn && counter(l, s, level.base) >= s.capacity) return {};  // beyond the array: read and dropped
    Level entry{l.entry, nullptr, 0, level.depth + 1, level.empty};
    entry.owner = level.base;
    Result r = l.select == Select::next ? fill_next(level, l, s, entry, v, len)
                                        : fill_by_element(level, l, s, entry, v, len);
    if (r.finished) return r;
    if (l.remember_result) {
        level.remembered = r.status;
        r.status = 0;
    }
    if (r.status == 0 && s.limited && counter(l, s, level.base) >= s.limit) return kFinished;
    return r;
}

// A flat list: elements of its entry's tags at the owner's own level.
Result decode_flat(Level& level, const List& l, ListState& s, const Field& f, uint8_t tag, const uint8_t* v,
                   uint32_t len) noexcept {
    uint32_t i;
    if (l.select == Select::pair) {
        const size_t which = (!l.entry.empty() && l.entry[0].tag == tag) ? 0 : 1;
        i = s.seen[which]++;
        const uint32_t total = s.seen[0] > s.seen[1] ? s.seen[0] : s.seen[1];
        const uint32_t stored = total < l.capacity ? total : l.capacity;
        const bool room = i < l.capacity && first_entry(l, level.base) != nullptr;
        if (room) {
            uint8_t* e = entry_at(l, level.base, i);
            const uint32_t before = load_le32(level.base + l.count);
            if (l.clear_new && i >= before) std::memset(e, 0, l.stride);
        }
        store_le32(level.base + l.count, stored);
        store_le32(level.base + l.total, total);
        if (!room) return {};
    } else {
        i = counter(l, s, level.base);
        if (i >= s.capacity) return {};
        advance(l, s, level.base);
    }
    Level entry{l.entry, entry_at(l, level.base, i), i, level.depth, level.empty};
    entry.owner = level.base;
    return store_row(entry, f, v, len);
}

Result element(Level& level, uint8_t tag, const uint8_t* v, uint32_t len) noexcept {
    Result r;
    bool taken = false;
    for_lists(level, [&](const List& l, ListState& s) {
        if (taken) return;
        if (l.tag != 0) {
            if (l.tag != tag) return;
            taken = true;
            r = decode_container(level, l, s, v, len);
        } else if (const Field* f = row_for(l.entry, tag)) {
            taken = true;
            r = decode_flat(level, l, s, *f, tag, v, len);
        }
    });
    if (taken) return r;
    const Field* f = row_for(level.desc, tag);
    return f != nullptr ? store_row(level, *f, v, len) : Result{};
}

void prepare_rows(Desc desc, uint8_t* base) noexcept {
    for (const Field& f : desc) {
        if (f.kind != Kind::list) continue;
        const List& l = *f.list;
        if (l.counter == Counter::u8_clear || l.counter == Counter::low_byte) base[l.count] = 0;
    }
}

}  // namespace

void encode(tlv::Writer& w, Desc desc, const void* record, const Slice* slice) noexcept {
    encode_rows(w, desc, static_cast<const uint8_t*>(record), 0, slice);
}

void prepare(Desc desc, void* record) noexcept { prepare_rows(desc, static_cast<uint8_t*>(record)); }

int32_t decode(Desc desc, const uint8_t* payload, uint32_t length, void* record, tlv::Empty empty) noexcept {
    Level top{desc, static_cast<uint8_t*>(record), 0, 0, empty};
    // A list whose limit is 0 takes nothing, not even a look at the answer.
    bool none = false;
    begin(top);
    for_lists(top, [&](const List& l, ListState& s) {
        none = none || (s.limited && s.limit == 0);
        if (l.counter == Counter::count_total) {  // rebuilt by every read
            store_le32(top.base + l.count, 0);
            store_le32(top.base + l.total, 0);
        }
    });
    if (none) return 0;
    const Result r = decode_level(top, payload, length);
    return r.finished ? 0 : r.status;
}

}  // namespace kvn
