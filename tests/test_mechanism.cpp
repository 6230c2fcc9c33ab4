// The record tables: each list kind and copy rule, on small records of the test's own.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "core/command.h"
#include "core/fields.h"
#include "kvnsdk2.h"
#include "link/transport.h"
#include "peer.h"

using namespace kvn;
using namespace kvn::row;
using kvntest::Bytes;
using kvntest::cat;

namespace {

Bytes encoded(Desc desc, const void* rec, int32_t* rc = nullptr, const Slice* slice = nullptr) {
    Bytes b(4096);
    tlv::Writer w(b.data(), static_cast<uint32_t>(b.size()));
    encode(w, desc, rec, slice);
    if (rc != nullptr) *rc = w.result();
    ConstBuf p[tlv::Writer::kMaxPieces];
    Bytes out;
    for (size_t i = 0, n = w.pieces(p); i < n; ++i) out.insert(out.end(), p[i].data, p[i].data + p[i].size);
    return out;
}

// Three levels: a table of schedules, each of days, as the schedule families nest them.
struct Day { uint8_t slot[2]; };
struct Sched { uint32_t enabled; char name[8]; Day days[2]; };
struct Table { uint32_t value; Sched s[3]; };
constexpr Field kDay[] = {position(9, 1), u8(10, KVN_MEMBER(Day, slot[0])), u8(11, KVN_MEMBER(Day, slot[1]))};
constexpr List kDays = array(KVN_MEMBER(Sched, days)).in(8).by(9, 0, -1009).of(kDay);
constexpr Field kSched[] = {position(4, 1), u32(5, KVN_MEMBER(Sched, enabled)), text(6, KVN_MEMBER(Sched, name)),
                            list(kDays)};
constexpr List kScheds = array(KVN_MEMBER(Table, s)).in(3).by(4, 0, -1009).only(is(KVN_MEMBER(Sched, enabled), 1)).of(kSched);
constexpr Field kTable[] = {u32(1, KVN_MEMBER(Table, value)), list(kScheds)};

}  // namespace

TEST(Lists, NestedContainersWithPositionsAndGatesRoundTrip) {
    Table t{};
    t.value = 0x01020304;
    t.s[1] = Sched{1, "ab", {{{7, 8}}, {{9, 10}}}};
    t.s[2].enabled = 2;  // only exactly 1 is sent
    const Bytes b = encoded(kTable, &t);
    const Bytes want = {
        0x01, 0x04, 0x04, 0x03, 0x02, 0x01,              // value
        0x03, 0x84, 0x00, 0x00, 0x00, 0x2B,              // schedule 1
        0x04, 0x01, 0x01, 0x05, 0x04, 0x01, 0x00, 0x00, 0x00, 0x06, 0x02, 'a', 'b',
        0x08, 0x84, 0x00, 0x00, 0x00, 0x09, 0x09, 0x01, 0x00, 0x0A, 0x01, 0x07, 0x0B, 0x01, 0x08,
        0x08, 0x84, 0x00, 0x00, 0x00, 0x09, 0x09, 0x01, 0x01, 0x0A, 0x01, 0x09, 0x0B, 0x01, 0x0A,
    };
    EXPECT_EQ(b, want);
    Table back{};
    EXPECT_EQ(decode(kTable, b.data(), static_cast<uint32_t>(b.size()), &back), 0);
    EXPECT_EQ(std::memcmp(&back.s[1], &t.s[1], sizeof(Sched)), 0);
    EXPECT_EQ(back.value, t.value);

    // A selector beyond the array stops with the list's status; what came before stays.
    Bytes bad = b;
    bad[b.size() - 7] = 2;  // second day's position: 2 of 2
    Table partial{};
    EXPECT_EQ(decode(kTable, bad.data(), static_cast<uint32_t>(bad.size()), &partial), -1009);
    EXPECT_EQ(partial.s[1].days[0].slot[1], 8);
    EXPECT_EQ(partial.s[1].days[1].slot[0], 0);
}

namespace {

struct Entry { uint32_t id; char name[6]; };
struct Rec { uint32_t low; uint8_t count; uint32_t from, to; Entry e[4]; };  // counters, a range, entries
constexpr Field kEntry[] = {u32(17, KVN_MEMBER(Entry, id)), text(18, KVN_MEMBER(Entry, name))};
struct Far { uint8_t count; Entry* e; };  // entries passed beside the record
constexpr Field kNameOnly[] = {text(4, KVN_MEMBER(Entry, name)), text(5, KVN_MEMBER(Entry, name))};

int32_t run(Desc desc, const Bytes& p, Rec& r) {
    prepare(desc, &r);
    return decode(desc, p.data(), static_cast<uint32_t>(p.size()), &r);
}

Bytes group(uint8_t tag, const Bytes& inner) { return kvntest::el(tag, inner); }

}  // namespace

TEST(Lists, HowADecodedElementFindsItsEntry) {
    const Bytes one = group(16, {17, 1, 0x11, 18, 1, 'a'});
    const Bytes two = group(16, {17, 1, 0x22, 18, 1, 'b', 17, 1, 0x33, 18, 1, 'c'});
    // Next: each container the next entry; those beyond the array are dropped.
    {
        static constexpr List l = array(KVN_MEMBER(Rec, e)).in(16).of(kEntry);
        static constexpr Field d[] = {list(l)};
        Rec r{};
        EXPECT_EQ(run(d, cat({one, two, one, one, one}), r), 0);
        EXPECT_EQ(r.e[0].id, 0x11u);
        EXPECT_EQ(r.e[1].id, 0x33u);  // one container, one entry
        EXPECT_EQ(r.e[3].id, 0x11u);
    }
    // Advancing on a tag: a container may fill several entries; stops at the array's end.
    {
        static constexpr List l = array(KVN_MEMBER(Rec, e)).in(16).advancing_on(18).of(kEntry);
        static constexpr Field d[] = {list(l)};
        Rec r{};
        EXPECT_EQ(run(d, cat({one, two, two}), r), 0);
        EXPECT_EQ(r.e[1].id, 0x22u);
        EXPECT_EQ(r.e[2].id, 0x33u);
        EXPECT_EQ(r.e[3].id, 0x22u);
        EXPECT_STREQ(r.e[3].name, "b");
    }
    // Counter in the low byte of a u32, cleared before the request; the upper bytes stay.
    {
        static constexpr List l =
            array(KVN_MEMBER(Rec, e)).in(16).of(kEntry).counting(Counter::low_byte, offsetof(Rec, low));
        static constexpr Field d[] = {list(l)};
        Rec r{};
        r.low = 0xAB000003;
        EXPECT_EQ(run(d, cat({one, one}), r), 0);
        EXPECT_EQ(r.low, 0xAB000002u);
    }
    // Capacity in, entries filled out.
    {
        static constexpr List l =
            array(KVN_MEMBER(Rec, e)).in(16).of(kEntry).counting(Counter::capacity_in, offsetof(Rec, count));
        static constexpr Field d[] = {list(l)};
        Rec r{};
        r.count = 2;
        EXPECT_EQ(run(d, cat({one, one, one}), r), 0);
        EXPECT_EQ(r.count, 2);
        EXPECT_EQ(r.e[2].id, 0u);
    }
    // A limit from the request: decoding ends with success, input left or not.
    {
        static constexpr List l =
            array(KVN_MEMBER(Rec, e)).in(16).of(kEntry).until(offsetof(Rec, from), offsetof(Rec, to));
        static constexpr Field d[] = {list(l)};
        Rec r{};
        r.from = 5;
        r.to = 6;
        EXPECT_EQ(run(d, cat({one, two, {0xFF}}), r), 0);
        EXPECT_EQ(r.e[0].id, 0x11u);
        EXPECT_EQ(r.e[1].id, 0u);
        r.to = 5;
        EXPECT_EQ(run(d, {0xFF}, r), 0);  // a limit of 0 reads nothing
    }
    // Entries where the record points, capacity in and filled out; a null pointer holds none.
    {
        static constexpr List l =
            array_at(KVN_MEMBER(Far, e), 255).in(16).of(kEntry).counting(Counter::capacity_in, offsetof(Far, count));
        static constexpr Field d[] = {list(l)};
        Entry e[3]{};
        Far f{2, e}, none{3, nullptr};
        const Bytes in = cat({one, one, one});
        const auto n = static_cast<uint32_t>(in.size());
        EXPECT_EQ(decode(d, in.data(), n, &f) | decode(d, in.data(), n, &none), 0);
        EXPECT_EQ(f.count * 100 + none.count * 10 + e[2].id, 200u);
        EXPECT_EQ(e[1].id, 0x11u);
    }
    // An entry row stored in the list's owner (a page's total inside each entry).
    {
        static constexpr Field kWithTotal[] = {u32(17, KVN_MEMBER(Entry, id)), u32(19, KVN_MEMBER(Rec, to)).outer()};
        static constexpr List l = array(KVN_MEMBER(Rec, e)).in(16).of(kWithTotal);
        static constexpr Field d[] = {list(l)};
        Rec r{};
        EXPECT_EQ(run(d, cat({group(16, {17, 1, 0x11, 19, 1, 7}), group(16, {19, 1, 9, 17, 1, 0x22})}), r), 0);
        EXPECT_EQ(r.to, 9u);
        EXPECT_EQ(r.e[0].id, 0x11u);
        EXPECT_EQ(r.e[1].id, 0x22u);
        EXPECT_EQ(r.e[0].name[0], 0);  // not written at the entry's own offset
        EXPECT_EQ(encoded(d, &r).size(), 4u * (6 + 6));  // four containers of one id: the outer row is decode only
    }
    // Flat, appending at the caller's u8 count (kept), several tags alike.
    {
        static constexpr List l =
            array(KVN_MEMBER(Rec, e)).of(kNameOnly).appending().counting(Counter::u8_keep, offsetof(Rec, count));
        static constexpr Field d[] = {list(l)};
        Rec r{};
        r.count = 1;
        EXPECT_EQ(run(d, {4, 1, 'x', 5, 1, 'y', 9, 1, 'z'}, r), 0);
        EXPECT_EQ(r.count, 3);
        EXPECT_STREQ(r.e[1].name, "x");
        EXPECT_STREQ(r.e[2].name, "y");
    }
}

TEST(Lists, PairingByOccurrenceRebuildsTheList) {
    struct Item { char a[4], b[4]; };
    struct Pairs { uint32_t count, total; Item items[2]; };
    static constexpr Field item[] = {text(1, KVN_MEMBER(Item, a)).terminate(4), text(2, KVN_MEMBER(Item, b)).terminate(4)};
    static constexpr List l = array(KVN_MEMBER(Pairs, items)).of(item).pairing().clearing_new().counting(
        Counter::count_total, offsetof(Pairs, count), offsetof(Pairs, total));
    static constexpr Field d[] = {list(l)};
    Pairs p{};
    std::memset(p.items, 'q', sizeof p.items);
    const Bytes in = {1, 1, 'a', 1, 5, 'l', 'o', 'n', 'g', '!', 2, 1, 'c', 1, 1, 'e'};
    EXPECT_EQ(decode(d, in.data(), static_cast<uint32_t>(in.size()), &p), 0);
    EXPECT_EQ(p.count, 2u);
    EXPECT_EQ(p.total, 3u);
    EXPECT_STREQ(p.items[0].a, "a");
    EXPECT_STREQ(p.items[0].b, "c");
    EXPECT_STREQ(p.items[1].a, "lon");  // cut and terminated
    EXPECT_STREQ(p.items[1].b, "");     // a new entry starts empty
}

TEST(Rows, CopyRules) {
    struct R { uint16_t small; uint32_t word, byte_word; uint8_t blob[6], length; char ip[16]; };
    struct Case { Field row; Bytes value; int32_t rc; Bytes after; };  // after: the member, from 0xEE
    const Case cases[] = {
        {u16(1, KVN_MEMBER(R, small)), {0x01}, 0, {0x01, 0x00}},                           // zero-extended
        {u16(1, KVN_MEMBER(R, small)).raw(), {0x01}, 0, {0x01, 0xEE}},                     // partial store
        {u16(1, KVN_MEMBER(R, small)).remember(2, -1010), {1, 2, 3}, -1010, {0xEE, 0xEE}},  // kept out
        {u32_as_u8(1, KVN_MEMBER(R, byte_word)), {0x7F, 0x55}, 0, {0x7F, 0, 0, 0}},
        {bytes(1, KVN_MEMBER(R, blob)), {1, 2}, 0, {1, 2, 0xEE, 0xEE, 0xEE, 0xEE}},
        {bytes(1, KVN_MEMBER(R, blob)).zero_fill(6), {1, 2}, 0, {1, 2, 0, 0, 0, 0}},
        {bytes(1, KVN_MEMBER(R, blob)).lossy(5), {1, 2, 3, 4, 5}, 0, {1, 2, 3, 4, 5, 0xEE}},
        {bytes(1, KVN_MEMBER(R, blob)).lossy(5), {1, 2, 3, 4, 5, 6}, 0, {1, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE}},
        {bytes(1, KVN_MEMBER(R, blob)).exact(3, -1010), {1, 2}, -1010, {0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE}},
        {bytes(1, KVN_MEMBER(R, blob)).terminate(3), {'a', 'b', 'c'}, 0, {'a', 'b', 0, 0xEE, 0xEE, 0xEE}},
        {counted(1, KVN_MEMBER(R, blob), KVN_MEMBER(R, length)).bound(4), {1, 2, 3, 4, 5}, 0, {1, 2, 3, 4, 0xEE, 0xEE}},
        {address(1, KVN_MEMBER(R, ip)), {0x0A, 0x01, 0xA8, 0xC0}, 0, Bytes{'1', '9', '2', '.', '1', '6', '8', '.', '1', '.', '1', '0', 0, 0xEE, 0xEE, 0xEE}},
    };
    for (const Case& k : cases) {
        R r;
        std::memset(&r, 0xEE, sizeof r);
        const Field d[] = {k.row, u32(9, KVN_MEMBER(R, word))};
        const Bytes in = cat({group(1, k.value), {9, 1, 0x42}});  // a later element: stored unless the rule stopped
        EXPECT_EQ(decode(d, in.data(), static_cast<uint32_t>(in.size()), &r), k.rc) << int(k.row.copy);
        const auto* m = reinterpret_cast<const uint8_t*>(&r) + k.row.offset;
        EXPECT_EQ(Bytes(m, m + k.after.size()), k.after) << int(k.row.copy);
        const bool stopped = k.row.copy == Copy::exact;
        EXPECT_EQ(r.word, stopped ? 0xEEEEEEEEu : 0x42u) << int(k.row.copy);
        if (k.row.kind == Kind::counted) EXPECT_EQ(r.length, 4);
    }
}

TEST(Rows, PresenceAddressesAndCountsWhenEncoding) {
    struct R { uint32_t mode, port; char ip[16]; uint8_t data[4]; uint32_t length; };
    static constexpr Field d[] = {
        u32(3, KVN_MEMBER(R, port)).nonzero(),
        address(2, KVN_MEMBER(R, ip)).when(is_not(KVN_MEMBER(R, mode), 1)),
        address(15, KVN_MEMBER(R, ip)).when(is_not(KVN_MEMBER(R, mode), 1)),
        counted(7, KVN_MEMBER(R, data), KVN_MEMBER(R, length)).nonzero(),
        constant_u8(9, 1),
    };
    R r{0, 0, "1.2.3.4", {5, 6, 7, 8}, 2};
    int32_t rc = 0;
    EXPECT_EQ(encoded(d, &r, &rc), (Bytes{2, 4, 4, 3, 2, 1, 15, 4, 4, 3, 2, 1, 7, 2, 5, 6, 9, 1, 1}));
    EXPECT_EQ(rc, 0);
    r.mode = 1;  // the gate keeps both addresses back, whatever they hold
    std::strcpy(r.ip, "junk");
    r.length = 0;
    r.port = 7;
    EXPECT_EQ(encoded(d, &r, &rc), (Bytes{3, 4, 7, 0, 0, 0, 9, 1, 1}));
    r.mode = 0;
    encoded(d, &r, &rc);
    EXPECT_EQ(rc, KVN_E_INVALID_IP_ADDRESS);
    r.length = 5;  // a count beyond the array is never read
    encoded(d, &r, &rc);
    EXPECT_EQ(rc, -1);
}

TEST(Rows, RecursionResultsAndDepth) {
    struct R { uint32_t v; };
    static constexpr Field d[] = {u32(2, KVN_MEMBER(R, v)), self(1)};
    R r{};
    // The nested decode's result is the result: a malformed inner stream gives -1
    // although the outer one is well formed.
    const Bytes inner_bad = {1, 3, 2, 5, 9, 2, 1, 7};
    EXPECT_EQ(decode(d, inner_bad.data(), 8, &r), -1);
    EXPECT_EQ(r.v, 7u);
    Bytes deep = {2, 1, 5};
    for (int i = 0; i < 12; ++i) deep = group(1, deep);
    EXPECT_EQ(decode(d, deep.data(), static_cast<uint32_t>(deep.size()), &r), -1);  // nested too deep
}

TEST(Writer, ValuesByReferenceAndShortestContainers) {
    uint8_t buf[64];
    const uint8_t big[200] = {1, 2, 3};
    tlv::Writer w(buf, 209);
    w.u8(1, 9);
    w.element_ref(8, big, sizeof big);
    w.u8(2, 7);
    ConstBuf p[tlv::Writer::kMaxPieces];
    ASSERT_EQ(w.pieces(p), 3u);
    EXPECT_EQ(p[1].data, big);  // not copied
    EXPECT_EQ(w.used(), 3u + 3u + 200u + 3u);
    EXPECT_EQ(Bytes(p[0].data, p[0].data + p[0].size), (Bytes{1, 1, 9, 8, 0x81, 0xC8}));
    w.u8(3, 1);  // the capacity counts the referenced bytes: no room left
    EXPECT_EQ(w.result(), -1);

    // Values by reference up to the limit, each between encoded bytes: the most
    // pieces a payload has. One more is refused (-1) and adds no piece.
    uint8_t wide[256];
    tlv::Writer full(wide, sizeof wide);
    for (size_t i = 0; i <= tlv::Writer::kMaxRefs; ++i) {
        full.u8(1, static_cast<uint8_t>(i));
        full.element_ref(2, big, 10);
        EXPECT_EQ(full.result(), i < tlv::Writer::kMaxRefs ? 0 : -1) << i;
    }
    full.u8(3, 0);
    ConstBuf most[tlv::Writer::kMaxPieces];
    ASSERT_EQ(full.pieces(most), tlv::Writer::kMaxPieces);
    EXPECT_EQ(full.refs(), tlv::Writer::kMaxRefs);

    tlv::Writer s(buf, sizeof buf);
    const auto mark = s.open();
    s.u8(5, 6);
    s.close_short(mark, 1);
    EXPECT_EQ(Bytes(buf, buf + s.used()), (Bytes{1, 3, 5, 1, 6}));
}

// Buffers the library's 32 KiB frame guard would refuse come from the heap.
static_assert(sizeof(kvn::Buffer<51200>) == sizeof(void*) && sizeof(kvn::Buffer<20480>) == 20480);
