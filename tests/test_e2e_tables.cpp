// The schedule tables against the simulated terminal: written, read back equal, one
// schedule reset by its index. The bytes are pinned down in test_wire_tables.cpp.
#if KVN_HAVE_SIM
#include <gtest/gtest.h>

#include "e2e.h"
#include "records.h"

using namespace kvntest;

TEST(TablesE2E, ScheduleTablesRoundTrip) {
    Session s;
    auto acc = std::make_unique<kvn_access_schedule_table>(zeroed<kvn_access_schedule_table>());
    acc->value = 0xA1, acc->flag = 0xF2;
    for (uint32_t i = 0; i < KVN_ACCESS_SCHEDULE_COUNT; i += 3) {
        kvn_access_schedule& a = acc->schedules[i];
        a.enabled = 1, a.value = uint8_t(i);
        std::snprintf(a.name, sizeof a.name, "access %u", i);
        for (uint32_t d = 0; d < KVN_WEEKDAY_COUNT; ++d) std::memset(a.days[d].slots, int(i + d), 8);
    }
    round_trip(s.c, "access", *acc, kvn_set_all_access_schedule_setting, kvn_get_all_access_schedule_setting,
               [](auto c) { return kvn_reset_access_schedule_setting(c, 3); });
    auto names = std::make_unique<kvn_access_schedule_name_list>(zeroed<kvn_access_schedule_name_list>());
    ASSERT_EQ(kvn_get_access_schedule_list(s.c, names.get()), 0);  // schedule 3 was reset
    EXPECT_STREQ(names->names[63], "access 63");
    EXPECT_STREQ(names->names[3], "");
    // Every schedule and holiday enabled: names of 21 bytes still fit the 204800-byte buffer.
    auto hol = std::make_unique<kvn_holiday_schedule_table>(zeroed<kvn_holiday_schedule_table>());
    for (uint32_t i = 0; i < KVN_HOLIDAY_SCHEDULE_COUNT; ++i) {
        hol->schedules[i].enabled = 1;
        std::memset(hol->schedules[i].name, 'A' + i % 26, 21);
        for (uint32_t h = 0; h < KVN_HOLIDAY_COUNT; ++h) {
            kvn_holiday& x = hol->schedules[i].holidays[h];
            x.enabled = 1, std::memset(x.name, 'a' + h % 26, 21), std::memset(x.slots, int(i + h), 8);
        }
    }
    round_trip(s.c, "holidays", *hol, kvn_set_all_holiday_schedule_setting, kvn_get_all_holiday_schedule_setting,
               [](auto c) { return kvn_reset_holiday_schedule_setting(c, 63); });
}
#endif
