// Transaction logs, file transfer and user groups against the simulated terminal:
// interoperation only (the bytes are pinned down in test_wire_logs.cpp).
#if KVN_HAVE_SIM
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include "kvnsdk2.h"
#include "e2e.h"
#include "kvnsim.h"
#include "transfer.h"

using namespace kvntest;

TEST(LogsE2E, FilesGroupsAndTheDisplayImageInteroperate) {
    Session s;
    kvn_device_conn* c = s.c;
    for (size_t n : {0, 1, 65536, 65537, 5000000}) {
        ASSERT_TRUE(write_file("e2e_up.bin", pattern(n)));
        const std::string name = "f" + std::to_string(n);
        const auto up = transfer("e2e_up.bin", name.c_str()), down = transfer("e2e_down.bin", name.c_str());
        EXPECT_EQ(kvn_upload_file(c, &up), 0) << n;
        EXPECT_EQ(kvn_download_file(c, &down), 0) << n;
        EXPECT_TRUE(file_bytes("e2e_down.bin") == pattern(n)) << n;
        EXPECT_EQ(kvn_delete_file(c, &down), 0) << n;
    }
    // The extension reports every byte and packet; the 601 actions find what was sent.
    const auto fw = transfer("e2e_up.bin", "fw.pkg", 1), csv = transfer("e2e_down.bin", "u.csv", 3);
    kvn_ext_transfer_progress last{};
    auto keep = [](const kvn_ext_transfer_progress* p, void* to) -> int32_t {
        return *static_cast<kvn_ext_transfer_progress*>(to) = *p, 0;
    };
    EXPECT_EQ(kvn_ext_upload_file(c, &fw, keep, &last), 0);
    EXPECT_EQ(std::make_pair(last.bytes_done, last.packets_done), std::make_pair(uint64_t{5000000}, 77u));
    EXPECT_EQ(kvn_upgrade_firware(c), 0);
    EXPECT_EQ(kvn_upgrade_firware_export_csv_file(c, "u.csv"), 0);
    EXPECT_EQ(kvn_ext_download_file(c, &csv, keep, &last), 0);
    EXPECT_EQ(last.bytes_done, file_bytes("e2e_down.bin").size());
    EXPECT_EQ(kvn_upgrade_firware_import_csv_file(c, "u.csv"), 0);
    // Groups page by position; a delete carries the whole group.
    kvn_user_group groups[] = {{10, "day"}, {11, "night"}, {12, "guests"}};
    for (kvn_user_group& g : groups) ASSERT_EQ(kvn_store_user_group(c, &g), 0);
    auto page = std::make_unique<kvn_user_group_page>();
    page->range_start = 1, page->range_end = 3;
    ASSERT_EQ(kvn_retrieve_user_group(c, page.get()), 0);
    EXPECT_EQ(std::make_pair(page->groups[0].group_id, page->total), std::make_pair(11u, 3u));
    EXPECT_STREQ(page->groups[1].group_name, "guests");
    uint32_t count = 0;
    EXPECT_EQ(kvn_delete_user_group(c, &groups[1]), 0);
    EXPECT_TRUE(kvn_get_total_user_group_count(c, &count) == 0 && count == 2);
    EXPECT_EQ(kvn_delete_all_user_group(c), 0);
    round_trip(c, "display image", uint32_t{0x1560}, by_value<kvn_store_user_display_image_setting>,
               kvn_retrieve_user_display_image_setting, kvn_reset_user_display_image_setting);
}

TEST(LogsE2E, TransfersFollowAMiscountingTerminalAndStopWhenTold) {
    ASSERT_TRUE(write_file("e2e_three.bin", pattern(3 * 65536)));
    const auto up = transfer("e2e_three.bin", "three"), down = transfer("e2e_back.bin", "three");
    Session s({.faults = {.start_packets = 2}});  // its count rules: two packets go, two come back
    EXPECT_EQ(kvn_upload_file(s.c, &up), 0);
    EXPECT_EQ(kvn_download_file(s.c, &down), 0);
    EXPECT_TRUE(file_bytes("e2e_back.bin") == pattern(2 * 65536));
    Session t({.faults = {.refuse_packet = 2}});  // a packet's status ends the upload
    EXPECT_EQ(kvn_upload_file(t.c, &up), KVN_E_DEVICE_FAILED_TO_WRITE_FILE);
    auto cancel = [](const kvn_ext_transfer_progress* p, void*) -> int32_t { return p->packets_done == 1 ? -99 : 0; };
    EXPECT_EQ(kvn_ext_upload_file(t.c, &up, cancel, nullptr), -99);
    EXPECT_EQ(kvn_download_file(t.c, &down), KVN_E_DEVICE_FAILED_TO_OPEN_FILE);  // neither was kept
}

#ifndef _WIN32  // a prefilled journal needs the in-process simulator
TEST(LogsE2E, ASeededJournalIsPulledExactlyOnceByReadingAndMarking) {
    Session s({.prefill_logs = 10000});
    kvn_device_conn* c = s.c;
    auto q = std::make_unique<kvn_transaction_log_query>();
    auto ids = std::make_unique<kvn_transaction_log_id_list>();
    std::set<uint32_t> seen;
    uint32_t unread = 0, total = 0, by_event = 0;
    for (int pages = 0; kvn_get_transaction_log_unread_count(c, &unread) == 0 && unread != 0 && pages < 1000; ++pages) {
        ASSERT_EQ(kvn_get_unread_transaction_logs(c, q.get()), 0);
        ids->count = uint8_t(q->log_count);
        for (uint32_t i = 0; i < ids->count; ++i)
            EXPECT_TRUE(seen.insert(ids->log_ids[i] = q->entries[i].log_id).second) << "twice: " << ids->log_ids[i];
        ASSERT_EQ(kvn_mark_transaction_logs_as_read(c, ids.get()), 0);
    }
    EXPECT_EQ(std::make_pair(unread, seen.size()), std::make_pair(0u, size_t{10000}));
    for (uint32_t event = 1; event <= 7; ++event) {  // the counts by event add up to the journal
        q->attr_t11 = event;
        ASSERT_EQ(kvn_get_transaction_log_count_for_criteria(c, q.get()), 0);
        by_event += q->log_count;
    }
    EXPECT_EQ(kvn_get_transaction_log_read_count(c, &total), 0);
    EXPECT_EQ(std::make_pair(by_event, total), std::make_pair(10000u, 10000u));
    EXPECT_EQ(kvn_mark_transaction_log_as_online(c, 1), 0);
    EXPECT_EQ(kvn_delete_all_transaction_logs(c), 0);
    EXPECT_TRUE(kvn_get_transaction_log_total_count(c, &total) == 0 && total == 0);
}

#endif

#endif
