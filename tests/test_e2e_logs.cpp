// Transaction logs, file transfer and user groups against the simulated terminal:
// interoperation only (the bytes are pinned down in test_wire_logs.cpp).
#if KVN_HAVE_SIM
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "kvnsdk2.h"
#include "e2e.h"
#include "kvnsim.h"
#include "peer.h"
#include "transfer.h"

using namespace kvntest;

TEST(LogsE2E, FilesOfEverySizeComeBackWhole) {
    Session s(false);
    kvn_device_conn* c = &s.conn;
    ASSERT_EQ(kvn_open_device_conn(c), 0);
    for (size_t n : {size_t{0}, size_t{1}, size_t{65536}, size_t{65537}, size_t{5000000}}) {
        const std::vector<uint8_t> data = pattern(n);
        ASSERT_TRUE(write_file("e2e_up.bin", data));
        const std::string name = "f" + std::to_string(n);
        const auto up = transfer("e2e_up.bin", name.c_str()), down = transfer("e2e_down.bin", name.c_str());
        EXPECT_EQ(kvn_upload_file(c, &up), 0) << n;
        EXPECT_EQ(kvn_download_file(c, &down), 0) << n;
        EXPECT_TRUE(file_bytes("e2e_down.bin") == data) << n;
        EXPECT_EQ(kvn_delete_file(c, &down), 0) << n;
    }
    // With progress: the last call has seen every byte and packet.
    ASSERT_TRUE(write_file("e2e_up.bin", pattern(200000)));
    const auto up = transfer("e2e_up.bin", "p"), down = transfer("e2e_down.bin", "p");
    kvn_ext_transfer_progress last{};
    auto keep = [](const kvn_ext_transfer_progress* p, void* ctx) -> int32_t {
        *static_cast<kvn_ext_transfer_progress*>(ctx) = *p;
        return 0;
    };
    for (auto fn : {kvn_ext_upload_file, kvn_ext_download_file}) {
        last = {};
        EXPECT_EQ(fn(c, fn == kvn_ext_upload_file ? &up : &down, keep, &last), 0);
        EXPECT_EQ(last.bytes_done, 200000u);
        EXPECT_EQ(last.packets_done, 4u);
        EXPECT_EQ(last.packets_total, 4u);
    }
    // The 601 actions on what the terminal holds: a firmware package, the users as CSV.
    const auto firmware = transfer("e2e_up.bin", "fw.pkg", 1), csv = transfer("e2e_down.bin", "users.csv", 3);
    EXPECT_EQ(kvn_upload_file(c, &firmware), 0);
    EXPECT_EQ(kvn_upgrade_firware(c), 0);
    EXPECT_EQ(kvn_upgrade_firware_export_csv_file(c, "users.csv"), 0);
    EXPECT_EQ(kvn_download_file(c, &csv), 0);
    EXPECT_FALSE(file_bytes("e2e_down.bin").empty());
    EXPECT_EQ(kvn_upgrade_firware_import_csv_file(c, "users.csv"), 0);
    EXPECT_EQ(kvn_close_device_conn(c), 0);
}

TEST(LogsE2E, GroupsPageAndTheDisplayImageSettingRoundTrips) {
    Session s(false);
    kvn_device_conn* c = &s.conn;
    ASSERT_EQ(kvn_open_device_conn(c), 0);
    const char* names[] = {"day", "night", "guests"};
    for (uint32_t i = 0; i < 3; ++i) {
        kvn_user_group g{10 + i, {}};
        std::strcpy(g.group_name, names[i]);
        ASSERT_EQ(kvn_store_user_group(c, &g), 0) << i;
    }
    uint32_t count = 0;
    EXPECT_EQ(kvn_get_total_user_group_count(c, &count), 0);
    EXPECT_EQ(count, 3u);
    auto page = std::make_unique<kvn_user_group_page>();
    page->range_start = 1, page->range_end = 3;
    ASSERT_EQ(kvn_retrieve_user_group(c, page.get()), 0);
    EXPECT_EQ(page->groups[0].group_id, 11u);
    EXPECT_STREQ(page->groups[1].group_name, "guests");
    EXPECT_EQ(page->total, 3u);
    kvn_user_group night{11, "night"};
    EXPECT_EQ(kvn_delete_user_group(c, &night), 0);
    EXPECT_EQ(kvn_get_total_user_group_count(c, &count), 0);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(kvn_delete_all_user_group(c), 0);
    EXPECT_EQ(kvn_get_total_user_group_count(c, &count), 0);
    EXPECT_EQ(count, 0u);
    round_trip(
        c, "display image", uint32_t{0x1560},
        [](auto c2, const uint32_t* v) { return kvn_store_user_display_image_setting(c2, *v); },
        kvn_retrieve_user_display_image_setting, kvn_reset_user_display_image_setting);
    EXPECT_EQ(kvn_close_device_conn(c), 0);
}

#ifndef _WIN32  // a prefilled journal and transfer faults need the in-process simulator
TEST(LogsE2E, ASeededJournalIsPulledExactlyOnceByReadingAndMarking) {
    kvnsim::Options o;
    o.prefill_logs = 10000;
    kvnsim::Simulator sim(o);
    ASSERT_TRUE(sim.start());
    kvn_device_conn conn = tcp_conn(sim.port());
    kvn_device_conn* c = &conn;
    ASSERT_EQ(kvn_open_device_conn(c), 0);
    auto q = std::make_unique<kvn_transaction_log_query>();
    auto ids = std::make_unique<kvn_transaction_log_id_list>();
    std::set<uint32_t> seen;
    uint32_t unread = 0, pages = 0;
    while (kvn_get_transaction_log_unread_count(c, &unread) == 0 && unread != 0 && pages++ < 1000) {
        ASSERT_EQ(kvn_get_unread_transaction_logs(c, q.get()), 0);
        ids->count = uint8_t(q->log_count);
        ASSERT_NE(ids->count, 0);
        for (uint32_t i = 0; i < ids->count; ++i) {
            EXPECT_TRUE(seen.insert(q->entries[i].log_id).second) << q->entries[i].log_id << " came twice";
            ids->log_ids[i] = q->entries[i].log_id;
        }
        ASSERT_EQ(kvn_mark_transaction_logs_as_read(c, ids.get()), 0);
    }
    EXPECT_EQ(unread, 0u);
    EXPECT_EQ(seen.size(), 10000u);
    uint32_t total = 0, read = 0;
    EXPECT_EQ(kvn_get_transaction_log_total_count(c, &total), 0);
    EXPECT_EQ(kvn_get_transaction_log_read_count(c, &read), 0);
    EXPECT_EQ(total, 10000u);
    EXPECT_EQ(read, 10000u);
    // The counts by event add up to the whole journal; a read by criteria gives only that event.
    uint32_t by_event = 0, common = 0, most = 0;
    for (uint32_t event = 1; event <= 7; ++event) {
        std::memset(q.get(), 0, sizeof *q);
        q->attr_t11 = event;
        ASSERT_EQ(kvn_get_transaction_log_count_for_criteria(c, q.get()), 0);
        by_event += q->log_count;
        if (q->log_count > most) most = q->log_count, common = event;
    }
    EXPECT_EQ(by_event, total);
    q->attr_t11 = common;
    ASSERT_EQ(kvn_get_transaction_logs_for_criteria(c, q.get()), 0);
    ASSERT_NE(q->log_count, 0u);
    for (uint32_t i = 0; i < q->log_count; ++i) EXPECT_EQ(q->entries[i].attr_t09, common);
    EXPECT_EQ(kvn_mark_transaction_log_as_online(c, q->entries[0].log_id), 0);
    EXPECT_EQ(kvn_mark_transaction_log_as_read(c, q->entries[0].log_id), 0);
    EXPECT_EQ(kvn_delete_all_transaction_logs(c), 0);
    EXPECT_EQ(kvn_get_transaction_log_total_count(c, &total), 0);
    EXPECT_EQ(total, 0u);
    kvn_close_device_conn(c);
}

TEST(LogsE2E, TransfersFollowAMiscountingTerminalAndStopWhenTold) {
    ASSERT_TRUE(write_file("e2e_three.bin", pattern(3 * 65536)));
    const auto up = transfer("e2e_three.bin", "three"), down = transfer("e2e_back.bin", "three");
    // The start answer's packet count rules: two packets go, two come back.
    Session s(false, kvnsim::Faults{.start_packets = 2});
    ASSERT_EQ(kvn_open_device_conn(&s.conn), 0);
    EXPECT_EQ(kvn_upload_file(&s.conn, &up), 0);
    EXPECT_EQ(kvn_download_file(&s.conn, &down), 0);
    EXPECT_TRUE(file_bytes("e2e_back.bin") == pattern(2 * 65536));
    kvn_close_device_conn(&s.conn);
    // A packet's status ends the upload; the callback can end it too.
    Session t(false, kvnsim::Faults{.refuse_packet = 2});
    ASSERT_EQ(kvn_open_device_conn(&t.conn), 0);
    EXPECT_EQ(kvn_upload_file(&t.conn, &up), KVN_E_DEVICE_FAILED_TO_WRITE_FILE);
    auto cancel = [](const kvn_ext_transfer_progress* p, void*) -> int32_t { return p->packets_done == 1 ? -99 : 0; };
    EXPECT_EQ(kvn_ext_upload_file(&t.conn, &up, cancel, nullptr), -99);
    EXPECT_EQ(kvn_download_file(&t.conn, &down), KVN_E_DEVICE_FAILED_TO_OPEN_FILE);  // neither was kept
    kvn_close_device_conn(&t.conn);
}
#endif

#endif
