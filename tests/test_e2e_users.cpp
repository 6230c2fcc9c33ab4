// Users, enrolment and smart cards against simulated terminals: a user copied from
// one terminal to another, a finger enrolled and identified, a user written to a card
// and read back. The request bytes are pinned down in test_wire_users.cpp.
#if KVN_HAVE_SIM
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "e2e.h"
#include "kvnsim.h"
#include "kvnsdk2.h"
#include "user_fixture.h"

using namespace kvntest;

TEST(UsersE2E, UserCopiedBetweenTerminals) {
    Session a, b;
    const auto written = full_user();
    auto read = std::make_unique<kvn_user_record>();
    std::strcpy(read->user_id, "u7");
    kvn_user_store_result result{};
    for (kvn_device_conn* c : {a.c, b.c}) {  // what the first terminal gives back is stored on the second
        kvn_user_store_request store{c == a.c ? written.get() : read.get(), &result};
        ASSERT_EQ(kvn_store_user_record(c, &store), 0);
        ASSERT_EQ(kvn_get_user_record(c, read.get()), 0);
        EXPECT_EQ(std::memcmp(read.get(), as_read_back(*written).get(), sizeof *read), 0);
    }
}

TEST(UsersE2E, EnrolThenIdentify) {
    Session s;
    auto enrol = std::make_unique<kvn_enrollment_request>();
    *enrol = {"amy", 2};
    ASSERT_EQ(kvn_enrollment(s.c, enrol.get()), 0);
    auto ident = std::make_unique<kvn_identify_request>();
    ASSERT_EQ(kvn_identify_user(s.c, ident.get()), 0);
    EXPECT_STREQ(ident->user_id, "amy");
}

TEST(UsersE2E, UserOnACardAndTheRevokedList) {
    Session s({.card = {0x04, 0xA1, 0xB2}});
    const auto written = full_user("card7", 2);
    ASSERT_EQ(kvn_write_user_record_on_smart_card(s.c, written.get()), 0);
    auto card = std::make_unique<kvn_smart_card_data>();
    std::memset(card.get(), 0, sizeof *card);
    ASSERT_EQ(kvn_read_data_on_smart_card(s.c, card.get()), 0);
    EXPECT_EQ(std::memcmp(&card->user, as_read_back(*written).get(), sizeof card->user), 0);
    const uint8_t id[64] = {0x04, 0xA1, 0xB2};
    auto list = std::make_unique<kvn_revoked_card_list>();
    ASSERT_EQ(kvn_revoke_smart_card(s.c, id), 0);
    ASSERT_EQ(kvn_get_revoked_smart_card_list(s.c, list.get()), 0);
    EXPECT_EQ(list->entry_count, 1);
    EXPECT_EQ(std::memcmp(list->entries[0], id, 64), 0);
}
#endif
