// Users, enrolment, identification, verification and smart cards on the wire: one
// row per export that sends a payload, its bytes written out by hand from the wire
// format (request type and command id are held in test_commands.cpp), and the decoders
// on hand-made answers in which every field carries a value of its own.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kvnsdk2.h"
#include "peer.h"
#include "records.h"
#include "user_fixture.h"

using namespace kvntest;

namespace {

using U32s = std::vector<uint32_t>;

Bytes groups() {  // ten template groups, then three value groups
    return cat({each(10, [](size_t k) { const auto i = uint8_t(k);
                    return box(22, cat({u8(7, i), u8(15, 0x50 + i), u8(21, 0x60 + i), u8(17, 0x70 + i), el(23, template_bytes(i + uint32_t('u')))})); }),
                box(34, u32(35, 0x3501)), box(34, u32(35, 0x3502)), box(34, u32(35, 0x3503))});
}
const Bytes kHead = cat({text(2, "u7"), text(3, "three"), text(4, "four"), u8(6, 0x06)});
const Bytes kMiddle = cat({u32(5, 0x505), u32(8, 0x808), u32(9, 0x909), text(10, "ten")});
const Bytes kTail = cat({u8(13, 0x13), u8(14, 0x14), u8(16, 0x16), u32(18, 0x1818), el(19, whole("nineteen", 64)),
                         el(20, whole("twenty", 64)), u8(33, 0x33)});
const Bytes kData32 = {0x32, 0x33, 0x34, 0x35, 0x36, 0x37, 0x38, 0x39, 0x3A, 0x3B, 0x3C, 0x3D, 0x3E, 0x3F, 0x40, 0x41};
// Store form: 29 after 6, 11 and 12 as their low byte, 32 after 33, 0x84 lengths.
const Bytes kStored = box(1, cat({kHead, u8(29, 0x29), kMiddle, u8(11, 0x11), u8(12, 0x12), kTail, el(32, kData32), groups()}));
// Card form: no 29 or 32, 11 and 12 as four bytes, tag 1 in its shortest length form.
const Bytes kOnCard = el(1, cat({kHead, kMiddle, u32(11, 0x0A11), u32(12, 0x0B12), kTail, groups()}));

const Bytes kCardId = [] { Bytes b(64); for (uint8_t i = 0; i < 64; ++i) b[i] = uint8_t(0xC0 + i); return b; }();

}  // namespace

TEST(UsersWire, EveryPayload) {
    auto user = full_user(), read = full_user();  // a read clears its record
    user->attr_t11 = 0x0A11, user->attr_t12 = 0x0B12, user->attr_t16 = 0x0C16;  // a store sends the low byte
    kvn_user_store_result result{};
    kvn_user_store_request store{user.get(), &result};
    kvn_user_template_indexes indexes{"u7", {3, 5, 9}, 3};
    auto enrol = std::make_unique<kvn_enrollment_request>();
    *enrol = {"u7", 2};
    auto ident = std::make_unique<kvn_identify_request>();
    ident->template_length = 3, ident->sample_length = 200;
    std::memcpy(ident->template_data, "\x09\x08\x07", 3);
    const uint8_t tmpl[] = {1, 2, 3};
    kvn_verify_template_request by_template{tmpl, 3, 5, {}};
    kvn_verify_user_id_request by_id{"u7", {}};
    kvn_verify_user_record_request by_record{user.get(), nullptr, {}};
    const kvn_smart_card_raw_data raw{reinterpret_cast<const uint8_t*>("\xDE\xAD\xBE"), 3};
    auto empty = std::make_unique<kvn_user_record>();  // all zero but its id
    empty->user_id[0] = 'm';
    kvn_verify_user_record_request by_empty{empty.get(), nullptr, {}};
    auto revoked = std::make_unique<kvn_revoked_card_list>();
    revoked->request_value_2 = 10;
#define CALL(...) [&](kvn_device_conn* c) { return __VA_ARGS__; }
    expect_payloads({
        {CALL(kvn_store_user_record(c, &store)), kStored},
        {CALL(kvn_get_user_record(c, read.get())), text(2, "u7")},
        {CALL(kvn_delete_user_record(c, user.get())), text(2, "u7")},
        {CALL(kvn_delete_user_templete_indexes(c, &indexes)), cat({text(2, "u7"), el(7, {3, 5, 9})})},
        {CALL(kvn_user_validate_user_id_finger_index(c, "u7", 4)), cat({text(1, "u7"), u8(2, 4)})},
        {CALL(kvn_user_update_biometric_template(c, "u7", 4, tmpl, 3)), cat({text(1, "u7"), u8(2, 4), el(3, {1, 2, 3})})},
        {CALL(kvn_enrollment(c, enrol.get())), cat({text(1, "u7"), u8(9, 2)})},
        {CALL(kvn_enrollment_with_duplicate_identify(c, enrol.get())), cat({text(1, "u7"), u8(9, 2)})},
        {CALL(kvn_identify_user_with_biometric_template(c, ident.get())), cat({el(1, {9, 8, 7}), el(2, Bytes(200, 0))})},
        {CALL(kvn_verify_by_template(c, &by_template)), cat({u8(1, 5), u32(2, 3), el(3, {1, 2, 3})})},
        {CALL(kvn_verify_by_user_id(c, &by_id)), text(1, "u7")},
        {CALL(kvn_verify_by_user_record(c, &by_record)), kStored},
        // Without templates, values, tag-4 length, attributes 5, 8, 9 and text 10, those tags stay out; tag 3 goes out empty.
        {CALL(kvn_verify_by_user_record(c, &by_empty)), box(1, cat({text(2, "m"), el(3, {}), u8(6, 0), u8(29, 0), u8(11, 0), u8(12, 0), u8(13, 0),
            u8(14, 0), u8(16, 0), u32(18, 0), el(19, Bytes(64)), el(20, Bytes(64)), u8(33, 0), el(32, Bytes(16))}))},
        {CALL(kvn_write_data_on_smart_card(c, &raw)), {0xDE, 0xAD, 0xBE}},
        {CALL(kvn_write_user_record_on_smart_card(c, user.get())), kOnCard},
        {CALL(kvn_revoke_smart_card(c, kCardId.data())), cat({{0x0C, 0x40}, kCardId})},
        {CALL(kvn_unrevoke_smart_card(c, kCardId.data())), cat({{0x0C, 0x40}, kCardId})},
        {CALL(kvn_get_revoked_smart_card_list(c, revoked.get())), {0x1B, 0x01, 0x00, 0x1C, 0x01, 0x0A}},
    });
#undef CALL
}

// Nothing goes out when a count or length reaches past its array, when a request does
// not fit its buffer, or when a card's user id is not alphanumeric (its "char" line).
TEST(UsersWire, RefusedBeforeSending) {
    std::unique_ptr<kvn_user_record> spoilt[] = {full_user(), full_user(), full_user(), full_user(), full_user()};
    spoilt[0]->template_count = 11, spoilt[1]->templates[9].template_length = 1573, spoilt[2]->text_t03_length = 52;
    spoilt[3]->text_t04_length = 52, spoilt[4]->attr_t35_count = 11;
    std::vector<std::pair<int32_t, Call>> refused;
    kvn_user_store_result result{};
    kvn_user_store_request stores[5];
    for (size_t i = 0; i < 5; ++i) {
        stores[i] = {spoilt[i].get(), &result};
        refused.push_back({-1, [&, i](auto c) { return kvn_store_user_record(c, &stores[i]); }});
        refused.push_back({-1, [&, i](auto c) { return kvn_write_user_record_on_smart_card(c, spoilt[i].get()); }});
    }
    const Bytes big(1100, 0x5A);
    auto user = full_user("a-b", 0);
    kvn_user_template_indexes indexes{"u7", {}, 11};
    auto ident = std::make_unique<kvn_identify_request>();
    ident->template_length = KVN_USER_TEMPLATE_SIZE, ident->sample_length = KVN_IDENTIFY_SAMPLE_SIZE;
    refused.push_back({-1, [&](auto c) { return kvn_user_update_biometric_template(c, "u7", 1, big.data(), 1100); }});
    refused.push_back({-1, [&](auto c) { return kvn_delete_user_templete_indexes(c, &indexes); }});
    refused.push_back({-1, [&](auto c) { return kvn_identify_user_with_biometric_template(c, ident.get()); }});
    refused.push_back({-2020, [&](auto c) { return kvn_write_user_record_on_smart_card(c, user.get()); }});
    std::string lines;
    kvn_ext_set_diagnostic_sink([](void* to, const char* line) { *static_cast<std::string*>(to) += line; }, &lines);
    for (const auto& [rc, call] : refused) {
        const Seen s = capture(call);
        EXPECT_EQ(U32s({uint32_t(s.rc), s.word}), U32s({uint32_t(rc), 0}));
    }
    kvn_ext_set_diagnostic_sink(nullptr, nullptr);
    EXPECT_EQ(lines, "char -\n");
}

// A read clears the record and takes every field by its tag; 29 and 32 are not read
// back, 11, 12 and 16 are zero-extended from one byte. A card carries the same record.
TEST(UsersDecoders, UserRecordEveryFieldByItsTag) {
    auto got = full_user("zz", 3);
    std::memset(got->reserved, 0xEE, sizeof got->reserved);
    EXPECT_EQ(capture([&](auto c) { return kvn_get_user_record(c, got.get()); }, response(0, kStored)).rc, 0);
    EXPECT_EQ(std::memcmp(got.get(), as_read_back(*full_user()).get(), sizeof *got), 0);
    const Bytes answer = cat({el(12, Bytes(70, 0x5E)), u32(11, 0x1111), el(17, Bytes(kStored.begin() + 6, kStored.end()))});
    const auto card = decoded<kvn_smart_card_data>(kvn_read_data_on_smart_card, answer);
    EXPECT_EQ(U32s({card->serial[63], card->serial_info}), U32s({0x5E, 0x1111}));
    EXPECT_EQ(std::memcmp(&card->user, as_read_back(*full_user()).get(), sizeof card->user), 0);
}

// Delete does not clear: a stale count still lands inside the array, longer values are
// cut to their fields, and only the low byte of the count moves.
TEST(UsersDecoders, BoundedIntoARecordThatWasNotCleared) {
    auto got = full_user("x", 0);
    got->template_count = 0x109;  // low byte 9: the last slot
    const Bytes t60(60, 'T'), long_template = template_bytes(1, 1600);
    const Bytes answer = box(1, cat({el(3, t60), el(4, t60), box(22, cat({u8(7, 7), el(23, long_template)})),
                                     box(22, u8(7, 8)), el(2, Bytes(70, 'i'))}));
    EXPECT_EQ(capture([&](auto c) { return kvn_delete_user_record(c, got.get()); }, response(0, answer)).rc, 0);
    EXPECT_EQ(U32s({got->text_t03_length, got->text_t04_length, got->templates[9].finger_index,
                    got->templates[9].template_length, uint32_t(got->template_count)}),
              U32s({50, 50, 7, 1572, 0x10A}));  // the second group was past the array: dropped
    EXPECT_EQ(std::memcmp(got->templates[9].template_data, long_template.data(), 1572), 0);
    EXPECT_EQ(std::string(got->text_t03, 50) + got->user_id, std::string(50, 'T') + std::string(64, 'i'));
}

TEST(UsersDecoders, AnswersOfStoreEnrolmentIdentificationVerificationRevocation) {
    auto user = full_user();
    kvn_user_store_result result{};
    kvn_user_store_request store{user.get(), &result};
    const Bytes slots = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
    auto stored = [&](const Bytes& a) { return capture([&](auto c) { return kvn_store_user_record(c, &store); }, a).rc; };
    EXPECT_EQ(stored(response(0, cat({text(2, "amy"), u32(30, 0x3030), el(31, slots)}))), KVN_E_USER_RECORD_STORE);
    EXPECT_EQ(std::string(result.user_id) + std::string(result.data_t31, result.data_t31 + 10), "amy" + std::string(slots.begin(), slots.begin() + 10));
    EXPECT_EQ(U32s({result.attr_t30, result.data_t31_length}), U32s({0x3030, 10}));
    EXPECT_EQ(stored(response(KVN_E_USERID_ALREADY_EXISTS)), KVN_E_USERID_ALREADY_EXISTS);

    // Tags 10 and 11 only for command 15; tag 3 whole into the caller's buffer, tag 6 skipped.
    const Bytes t3 = template_bytes(3, 3000), answer = cat({u32(2, 0x22), el(3, t3), u32(4, 0x44), u32(5, 0x55),
                                                          el(6, {6}), u8(7, 0x77), u8(8, 0x88), text(10, "holder"), u8(11, 0xBB)});
    auto buffer = std::make_unique<uint8_t[]>(KVN_ENROLLMENT_DATA_SIZE);
    for (bool checked : {false, true}) {
        kvn_enrollment_request e{};
        e.data_t03 = buffer.get();
        auto call = [&](auto c) { return checked ? kvn_enrollment_with_duplicate_identify(c, &e) : kvn_enrollment(c, &e); };
        EXPECT_EQ(capture(call, response(0, answer)).rc, 0);
        EXPECT_EQ(U32s({e.attr_t02, e.attr_t04, e.attr_t05, e.attr_t07, e.attr_t08, e.attr_t11}),
                  U32s({0x22, 0x44, 0x55, 0x77, 0x88, checked ? 0xBBu : 0u}));
        EXPECT_EQ(std::memcmp(buffer.get(), t3.data(), t3.size()), 0);
        EXPECT_STREQ(e.text_t10, checked ? "holder" : "");
    }
    const auto ident = decoded<kvn_identify_request>(kvn_identify_user, cat({u32(1, 0x5C), text(2, "amy"), u8(3, 3)}), 0, 'x');
    EXPECT_EQ(std::string(ident->user_id, 4), "amyx");  // the rest of the field as it was
    EXPECT_EQ(U32s({ident->attr_t01, ident->attr_t03}), U32s({0x5C, 3}));
    kvn_verify_user_id_request v{"u7", {0x0101, 0x0202}};
    EXPECT_EQ(capture([&](auto c) { return kvn_verify_by_user_id(c, &v); }, response(0, u32(2, 9))).rc, 0);
    EXPECT_EQ(U32s({v.result.attr_t01, v.result.attr_t02}), U32s({0x0101, 9}));

    auto list = std::make_unique<kvn_revoked_card_list>();
    list->entry_count = 200;
    const Bytes listed = cat({el(12, kCardId), u32(18, 1), el(12, Bytes(64, 2)), el(12, {3})});
    EXPECT_EQ(capture([&](auto c) { return kvn_get_revoked_smart_card_list(c, list.get()); }, response(0, listed)).rc, 0);
    EXPECT_EQ(Bytes(list->entries[0], list->entries[0] + 64), kCardId);
    EXPECT_EQ(U32s({list->entry_count, list->entries[1][63], list->entries[2][0], list->entries[2][1]}), U32s({3, 2, 3, 0}));
}
