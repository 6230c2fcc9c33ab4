// TLV primitives with their kept quirks, and the internal writer and decoder.
#include <gtest/gtest.h>

#include <vector>

#include "kvnsdk2.h"
#include "link/tlv.h"

using Bytes = std::vector<uint8_t>;

TEST(TlvLength, ShortestFormsAsWritten) {
    struct Case {
        uint32_t length;
        Bytes bytes;
    };
    const Case cases[] = {
        {0, {0x00}},
        {127, {0x7F}},
        {128, {0x81, 0x80}},
        {255, {0x81, 0xFF}},
        {256, {0x82, 0x01, 0x00}},
        {65535, {0x82, 0xFF, 0xFF}},
        {65536, {0x84, 0x00, 0x01, 0x00, 0x00}},
        {0xDEADBEEF, {0x84, 0xDE, 0xAD, 0xBE, 0xEF}},
    };
    for (const Case& k : cases) {
        uint8_t buf[8] = {};
        uint8_t* cur = buf;
        uint32_t rem = sizeof buf;
        ASSERT_EQ(kvn_set_tlv_length(k.length, &cur, &rem), 0);
        EXPECT_EQ(Bytes(buf, cur), k.bytes) << k.length;
        EXPECT_EQ(rem, sizeof buf - k.bytes.size());
        // A buffer one byte short takes nothing.
        uint8_t small[8];
        cur = small;
        rem = static_cast<uint32_t>(k.bytes.size() - 1);
        EXPECT_EQ(kvn_set_tlv_length(k.length, &cur, &rem), -1);
        EXPECT_EQ(cur, small);
        EXPECT_EQ(rem, k.bytes.size() - 1);
        // The reader gives the length back.
        cur = buf;
        rem = static_cast<uint32_t>(k.bytes.size());
        EXPECT_EQ(static_cast<uint32_t>(kvn_read_tlv_length(&cur, &rem)), k.length);
        EXPECT_EQ(rem, 0u);
    }
}

TEST(TlvLength, FourByteFormAlwaysTakesFiveBytes) {
    uint8_t buf[5];
    uint8_t* cur = buf;
    uint32_t rem = 5;
    ASSERT_EQ(kvn_set_tlv_4byte_length(3, &cur, &rem), 0);
    EXPECT_EQ(Bytes(buf, buf + 5), (Bytes{0x84, 0, 0, 0, 3}));
    cur = buf;
    rem = 4;
    EXPECT_EQ(kvn_set_tlv_4byte_length(3, &cur, &rem), -1);
}

TEST(TlvLength, ReaderQuirks) {
    struct Case {
        Bytes in;
        int32_t length;
        uint32_t consumed;
    };
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
        Bytes in = k.in;
        uint8_t* cur = in.data();
        uint32_t rem = static_cast<uint32_t>(in.size());
        EXPECT_EQ(kvn_read_tlv_length(&cur, &rem), k.length);
        EXPECT_EQ(static_cast<uint32_t>(cur - in.data()), k.consumed);
        EXPECT_EQ(rem, in.size() - k.consumed);
    }
}

TEST(TlvTag, ReadAsSignedByte) {
    Bytes in = {0x7F, 0x80, 0xFF};
    uint8_t* cur = in.data();
    uint32_t rem = 3;
    EXPECT_EQ(kvn_read_tlv_tag(&cur, &rem), 127);
    EXPECT_EQ(kvn_read_tlv_tag(&cur, &rem), -128);
    EXPECT_EQ(kvn_read_tlv_tag(&cur, &rem), -1);
    EXPECT_EQ(kvn_read_tlv_tag(&cur, &rem), -1);  // nothing left
    uint8_t out;
    cur = &out;
    rem = 0;
    EXPECT_EQ(kvn_set_tlv_tag(5, &cur, &rem), -1);
}

TEST(TlvCreate, ResultsAndWhatStaysWritten) {
    Bytes value(300, 0xAB);
    uint8_t buf[400];
    // The length form does not fit after the tag: 65535, tag stays written.
    uint8_t* cur = buf;
    uint32_t rem = 3;
    EXPECT_EQ(kvn_create_tlv(0x21, value.data(), 300, &cur, &rem), 65535);
    EXPECT_EQ(cur, buf + 1);
    EXPECT_EQ(buf[0], 0x21);
    EXPECT_EQ(rem, 2u);
    // The value does not fit: -1, tag and length stay written.
    cur = buf;
    rem = 10;
    EXPECT_EQ(kvn_create_tlv(0x21, value.data(), 300, &cur, &rem), -1);
    EXPECT_EQ(Bytes(buf, cur), (Bytes{0x21, 0x82, 0x01, 0x2C}));
    // Nothing at all remains: -1 and nothing written.
    cur = buf;
    rem = 0;
    EXPECT_EQ(kvn_create_tlv(0x21, value.data(), 1, &cur, &rem), -1);
    EXPECT_EQ(cur, buf);
    // Fits.
    cur = buf;
    rem = sizeof buf;
    const uint8_t v[] = {1, 2};
    EXPECT_EQ(kvn_create_tlv(9, v, 2, &cur, &rem), 0);
    EXPECT_EQ(Bytes(buf, cur), (Bytes{9, 2, 1, 2}));
    EXPECT_EQ(kvn_skip_tlv_length(rem + 1, &cur, &rem), -1);
    EXPECT_EQ(kvn_skip_tlv_length(rem, &cur, &rem), 0);
    EXPECT_EQ(rem, 0u);
}

TEST(TlvSearch, CursorAndRemainingContract) {
    Bytes in = {0x01, 0x02, 0xAA, 0xBB,        // tag 1
                0x05, 0x81, 0x03, 0x01, 0x02, 0x03,  // tag 5 in the long form
                0x07, 0x01, 0x99};             // tag 7
    uint8_t* cur = in.data();
    uint32_t rem = static_cast<uint32_t>(in.size());
    EXPECT_EQ(kvn_serch_tlv_tag(&cur, &rem, 5), 3);
    EXPECT_EQ(cur, in.data() + 7) << "cursor on the first value byte";
    EXPECT_EQ(rem, 3u) << "remaining excludes the found value";
    cur += 3;  // the caller steps over the value itself
    EXPECT_EQ(kvn_serch_tlv_tag(&cur, &rem, 7), 1);
    EXPECT_EQ(*cur, 0x99);
    EXPECT_EQ(rem, 0u);

    cur = in.data();
    rem = static_cast<uint32_t>(in.size());
    EXPECT_EQ(kvn_serch_tlv_tag(&cur, &rem, 9), -1);
}

TEST(TlvSearch, HighTagsNeverMatchAndBadInputStops) {
    struct Case {
        Bytes in;
        uint8_t tag;
        int32_t result;
    };
    const Case cases[] = {
        {{0x80, 0x01, 0x00}, 0x80, -1},        // present, yet never found
        {{0xFE, 0x01, 0x00}, 0xFE, -1},
        {{0x7F, 0x01, 0x00}, 0x7F, 1},
        {{0xFF, 0x01, 0x00, 0x02, 0x01, 0x00}, 0x02, -1},  // 0xFF ends the search
        {{0x02}, 0x02, -1},                     // lone tag
        {{0x02, 0x05, 0x00}, 0x02, -1},         // value longer than what remains
        {{0x02, 0x84, 0xFF, 0xFF, 0xFF, 0xFF}, 0x02, -1},
        {{0x01, 0x00, 0x02, 0x00}, 0x02, 0},    // empty values are found and skipped
    };
    for (const Case& k : cases) {
        Bytes in = k.in;
        uint8_t* cur = in.data();
        uint32_t rem = static_cast<uint32_t>(in.size());
        EXPECT_EQ(kvn_serch_tlv_tag(&cur, &rem, k.tag), k.result);
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

namespace {
struct Seen {
    size_t fields = 0;
    int32_t rc = 0;
};
Seen walk(const Bytes& in, kvn::tlv::Empty empty = kvn::tlv::Empty::skip) {
    Seen s;
    s.rc = kvn::tlv::decode(in.data(), static_cast<uint32_t>(in.size()), [&](uint8_t, const uint8_t*, uint32_t) {
        ++s.fields;
        return 0;
    }, empty);
    return s;
}
}  // namespace

TEST(TlvDecode, StopsOnMalformedInputKeepingEarlierFields) {
    struct Case {
        Bytes in;
        int32_t rc;
        size_t fields;
    };
    const Case cases[] = {
        {{}, 0, 0},
        {{0xFF}, -1, 0},
        {{0x01, 0x01, 0x05, 0x02}, -1, 1},               // lone tag at the end
        {{0x01, 0x01, 0x05, 0x02, 0x82, 0x01}, -1, 1},   // truncated length
        {{0x01, 0x01, 0x05, 0x02, 0x03, 0x01}, -1, 1},   // value longer than what remains
        {{0x01, 0x84, 0xFF, 0xFF, 0xFF, 0xFF}, -1, 0},   // 0xFFFFFFFF
        {{0x01, 0x01, 0x05, 0xFF, 0x01, 0x00}, -1, 1},
        {{0x01, 0x80, 0x02, 0x01, 0x07}, 0, 1},          // empty value skipped
        {{0x01, 0x01, 0x05, 0x02, 0x81, 0x01, 0x07}, 0, 2},
    };
    for (const Case& k : cases) {
        const Seen s = walk(k.in);
        EXPECT_EQ(s.rc, k.rc);
        EXPECT_EQ(s.fields, k.fields);
    }
    EXPECT_EQ(walk({0x01, 0x80, 0x02, 0x01, 0x07}, kvn::tlv::Empty::error).rc, -1);
}

// The bounded copies are pinned down by the settings decoder tests; an integer value
// shorter than four bytes fills the low bytes, a longer one gives its first four.
TEST(TlvDecode, IntegerValuesOfOtherWidths) {
    const uint8_t n[] = {0x34, 0x12}, w[] = {1, 0, 0, 0, 9};
    EXPECT_EQ(kvn::tlv::value_u32(n, 2), 0x1234u);
    EXPECT_EQ(kvn::tlv::value_u32(w, 5), 1u);
}
