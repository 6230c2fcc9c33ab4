// TLV primitives with their kept quirks, and the internal writer and decoder.
#include <gtest/gtest.h>

#include <vector>

#include "kvnsdk2.h"
#include "link/tlv.h"

using Bytes = std::vector<uint8_t>;

namespace {
// Input for the exports' cursor and remaining count, kept with its bytes.
struct Cursor {
    Bytes b;
    uint8_t* cur;
    uint32_t rem;
    explicit Cursor(Bytes in) : b(std::move(in)), cur(b.data()), rem(static_cast<uint32_t>(b.size())) {}
    Cursor(size_t size, uint32_t room) : b(size), cur(b.data()), rem(room) {}
    Bytes written() const { return Bytes(b.begin(), b.begin() + static_cast<long>(used())); }
    size_t used() const { return static_cast<size_t>(cur - b.data()); }
};
}  // namespace

TEST(TlvLength, ShortestFormsAsWritten) {
    const std::pair<uint32_t, Bytes> cases[] = {
        {0, {0x00}}, {127, {0x7F}}, {128, {0x81, 0x80}}, {255, {0x81, 0xFF}}, {256, {0x82, 0x01, 0x00}},
        {65535, {0x82, 0xFF, 0xFF}}, {65536, {0x84, 0x00, 0x01, 0x00, 0x00}},
        {0xDEADBEEF, {0x84, 0xDE, 0xAD, 0xBE, 0xEF}},
    };
    for (const auto& [length, bytes] : cases) {
        SCOPED_TRACE(length);
        Cursor w(8, 8);
        ASSERT_EQ(kvn_set_tlv_length(length, &w.cur, &w.rem), 0);
        EXPECT_EQ(w.written(), bytes);
        EXPECT_EQ(w.rem, 8 - bytes.size());
        // A buffer one byte short takes nothing.
        Cursor small(8, static_cast<uint32_t>(bytes.size() - 1));
        EXPECT_EQ(kvn_set_tlv_length(length, &small.cur, &small.rem), -1);
        EXPECT_EQ(small.used(), 0u);
        EXPECT_EQ(small.rem, bytes.size() - 1);
        // The reader gives the length back.
        Cursor r(bytes);
        EXPECT_EQ(static_cast<uint32_t>(kvn_read_tlv_length(&r.cur, &r.rem)), length);
        EXPECT_EQ(r.rem, 0u);
    }
    // The four-byte form always takes five bytes.
    Cursor w(5, 5);
    ASSERT_EQ(kvn_set_tlv_4byte_length(3, &w.cur, &w.rem), 0);
    EXPECT_EQ(w.written(), (Bytes{0x84, 0, 0, 0, 3}));
    Cursor small(5, 4);
    EXPECT_EQ(kvn_set_tlv_4byte_length(3, &small.cur, &small.rem), -1);
}

TEST(TlvLength, ReaderQuirks) {
    struct Case { Bytes in; int32_t length; uint32_t consumed; };
    const Case cases[] = {
        {{0x80, 0x55}, 0, 1},                       // long form with no bytes: length 0
        {{0x90, 0x55}, 0, 1},                       // bits 4 to 6 are ignored
        {{0x83, 0x01, 0x02, 0x03}, 0x010203, 4},    // never written, accepted on reading
        {{0xF1, 0x40}, 0x40, 2},                    // only the low four bits count
        {{0x84, 0x80, 0, 0, 1}, static_cast<int32_t>(0x80000001u), 5},  // comes back negative
        {{0x82, 0x01}, -1, 2},                      // runs out
        {{}, -1, 0},
    };
    for (const Case& k : cases) {
        Cursor r(k.in);
        EXPECT_EQ(kvn_read_tlv_length(&r.cur, &r.rem), k.length);
        EXPECT_EQ(r.used(), k.consumed);
        EXPECT_EQ(r.rem, k.in.size() - k.consumed);
    }
}

TEST(TlvTag, ReadAsSignedByte) {
    Cursor r({0x7F, 0x80, 0xFF});
    for (int32_t tag : {127, -128, -1, -1})  // the last: nothing left
        EXPECT_EQ(kvn_read_tlv_tag(&r.cur, &r.rem), tag);
    Cursor w(1, 0);
    EXPECT_EQ(kvn_set_tlv_tag(5, &w.cur, &w.rem), -1);
}

// The length form does not fit after the tag: 65535, the tag stays written. The value
// does not fit: -1, tag and length stay written. Nothing remains: -1, nothing written.
TEST(TlvCreate, ResultsAndWhatStaysWritten) {
    const Bytes value(300, 0xAB);
    struct Case { uint32_t room, length; int32_t rc; Bytes written; };
    const Case cases[] = {{3, 300, 65535, {0x21}}, {10, 300, -1, {0x21, 0x82, 0x01, 0x2C}}, {0, 1, -1, {}},
                          {400, 2, 0, {0x21, 2, 0xAB, 0xAB}}};
    for (const Case& k : cases) {
        Cursor w(400, k.room);
        EXPECT_EQ(kvn_create_tlv(0x21, value.data(), k.length, &w.cur, &w.rem), k.rc) << k.room;
        EXPECT_EQ(w.written(), k.written) << k.room;
        EXPECT_EQ(w.rem, k.room - k.written.size()) << k.room;
    }
    Cursor d(4, 4);
    EXPECT_EQ(kvn_skip_tlv_length(5, &d.cur, &d.rem), -1);
    EXPECT_EQ(kvn_skip_tlv_length(4, &d.cur, &d.rem), 0);
    EXPECT_EQ(d.rem, 0u);
}

TEST(TlvSearch, CursorAndRemainingContract) {
    Cursor r({0x01, 0x02, 0xAA, 0xBB,              // tag 1
              0x05, 0x81, 0x03, 0x01, 0x02, 0x03,  // tag 5 in the long form
              0x07, 0x01, 0x99});                  // tag 7
    EXPECT_EQ(kvn_serch_tlv_tag(&r.cur, &r.rem, 5), 3);
    EXPECT_EQ(r.used(), 7u) << "cursor on the first value byte";
    EXPECT_EQ(r.rem, 3u) << "remaining excludes the found value";
    r.cur += 3;  // the caller steps over the value itself
    EXPECT_EQ(kvn_serch_tlv_tag(&r.cur, &r.rem, 7), 1);
    EXPECT_EQ(*r.cur, 0x99);
    EXPECT_EQ(r.rem, 0u);
    Cursor again(r.b);
    EXPECT_EQ(kvn_serch_tlv_tag(&again.cur, &again.rem, 9), -1);
}

TEST(TlvSearch, HighTagsNeverMatchAndBadInputStops) {
    struct Case { Bytes in; uint8_t tag; int32_t result; };
    const Case cases[] = {
        {{0x80, 0x01, 0x00}, 0x80, -1}, {{0xFE, 0x01, 0x00}, 0xFE, -1},  // present, yet never found
        {{0x7F, 0x01, 0x00}, 0x7F, 1},
        {{0xFF, 0x01, 0x00, 0x02, 0x01, 0x00}, 0x02, -1},  // 0xFF ends the search
        {{0x02}, 0x02, -1},                     // lone tag
        {{0x02, 0x05, 0x00}, 0x02, -1},         // value longer than what remains
        {{0x02, 0x84, 0xFF, 0xFF, 0xFF, 0xFF}, 0x02, -1},
        {{0x01, 0x00, 0x02, 0x00}, 0x02, 0},    // empty values are found and skipped
    };
    for (const Case& k : cases) {
        Cursor r(k.in);
        EXPECT_EQ(kvn_serch_tlv_tag(&r.cur, &r.rem, k.tag), k.result);
    }
}

// Containers and the text forms are pinned down by the settings wire test. Here: a
// field that does not fit makes the result -1, yet a smaller field after it is still
// written; a text with no NUL inside its array is read no further than the array.
TEST(TlvWriter, OverflowIsMinusOneButLaterFieldsStillTried) {
    uint8_t buf[10];
    const Bytes big(100, 0xAB);
    const char full[4] = {'x', 'y', 'z', 'z'};
    kvn::tlv::Writer w(buf, sizeof buf);
    w.element(1, big.data(), 100);  // tag and length fit, the value does not
    w.text(2, full, 3);
    EXPECT_EQ(w.result(), -1);
    EXPECT_EQ(Bytes(buf, buf + w.used()), (Bytes{1, 100, 2, 3, 'x', 'y', 'z'}));
}

// The decoder stops on malformed input, keeping the fields before it. The bounded
// copies are pinned down by the mechanism tests; an integer value shorter than four
// bytes fills the low bytes, a longer one gives its first four.
TEST(TlvDecode, StopsOnMalformedInputKeepingEarlierFields) {
    struct Case { Bytes in; int32_t rc; size_t fields; };
    const Case cases[] = {
        {{}, 0, 0}, {{0xFF}, -1, 0}, {{0x01, 0x01, 0x05, 0xFF, 0x01, 0x00}, -1, 1},
        {{0x01, 0x01, 0x05, 0x02}, -1, 1},               // lone tag at the end
        {{0x01, 0x01, 0x05, 0x02, 0x82, 0x01}, -1, 1},   // truncated length
        {{0x01, 0x01, 0x05, 0x02, 0x03, 0x01}, -1, 1},   // value longer than what remains
        {{0x01, 0x84, 0xFF, 0xFF, 0xFF, 0xFF}, -1, 0},   // 0xFFFFFFFF
        {{0x01, 0x80, 0x02, 0x01, 0x07}, 0, 1},          // empty value skipped
        {{0x01, 0x01, 0x05, 0x02, 0x81, 0x01, 0x07}, 0, 2},
    };
    auto walk = [](const Bytes& in, size_t& fields, kvn::tlv::Empty empty = kvn::tlv::Empty::skip) {
        fields = 0;
        return kvn::tlv::decode(in.data(), static_cast<uint32_t>(in.size()),
                                [&](uint8_t, const uint8_t*, uint32_t) { ++fields; return 0; }, empty);
    };
    size_t fields;
    for (const Case& k : cases) {
        EXPECT_EQ(walk(k.in, fields), k.rc) << ::testing::PrintToString(k.in);
        EXPECT_EQ(fields, k.fields) << ::testing::PrintToString(k.in);
    }
    EXPECT_EQ(walk({0x01, 0x80, 0x02, 0x01, 0x07}, fields, kvn::tlv::Empty::error), -1);

    const uint8_t n[] = {0x34, 0x12}, w[] = {1, 0, 0, 0, 9};
    EXPECT_EQ(kvn::tlv::value_u32(n, 2), 0x1234u);
    EXPECT_EQ(kvn::tlv::value_u32(w, 5), 1u);
}
