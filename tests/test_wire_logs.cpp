// Transaction logs, file transfer and user groups on the wire, against a loopback
// peer: every export's requests (bytes derived by hand, one row each), the decoders
// on answers in which every field carries a value of its own, and the transfer
// rules: start answers that change the plan, packet failures, bounds, local files.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "kvnsdk2.h"
#include "link/transport.h"
#include "peer.h"
#include "transfer.h"

using namespace kvntest;

namespace {

constexpr uint32_t kUpload = 0x00040002, kDownload = 0x00050002;

struct Req {
    uint32_t word, command;
    Bytes payload;
};

// Runs `call` against a peer that answers the k-th request with answers[k] (a
// status-only success beyond them) and records every request.
std::vector<Req> converse(const Call& call, const std::vector<Bytes>& answers, int32_t* rc) {
    std::vector<Req> seen;
    std::mutex mu;
    {
        LoopbackPeer peer([&](sock_t s) {
            for (size_t k = 0;; ++k) {
                const Bytes r = read_request(s);
                if (r.size() < 28) return;
                {
                    std::lock_guard<std::mutex> lock(mu);
                    seen.push_back({get_le32(&r[8]), get_le32(&r[16]), Bytes(r.begin() + 24, r.end() - 4)});
                }
                write_bytes(s, k < answers.size() ? answers[k] : response(0));
            }
        });
        kvn_device_conn c = peer.conn();
        EXPECT_EQ(kvn_open_device_conn(&c), 0);
        *rc = call(&c);
        kvn_close_device_conn(&c);
    }
    return seen;
}

// A journal entry with a value of its own in every field, and its elements.
kvn_transaction_log entry(uint32_t k) {
    kvn_transaction_log e{};
    e.log_id = 0x700 + k, e.attr_t08 = 0x800 + k, e.attr_t09 = 0x900 + k, e.attr_t10 = 0xA00 + k;
    e.attr_t11 = 0xB00 + k, e.attr_t21 = 0x2100 + k;
    std::snprintf(e.text_t12, sizeof e.text_t12, "user %u", k);
    std::snprintf(e.text_t13, sizeof e.text_t13, "text %u", k);
    std::snprintf(e.text_t23, sizeof e.text_t23, "dev %u", k);
    e.attr_t14 = uint8_t(0x14 + k), e.attr_t15 = uint8_t(0x15 + k), e.attr_t16 = 0x1600 + k;
    e.attr_t17 = uint8_t(0x17 + k), e.attr_t18 = uint8_t(0x18 + k), e.attr_t19 = uint8_t(0x19 + k);
    e.attr_t20 = 20260000 + k;
    return e;
}
Bytes entry_bytes(uint32_t k) {
    const std::string n = std::to_string(k);
    return box(1, cat({u32(7, 0x700 + k), u32(8, 0x800 + k), u32(9, 0x900 + k), u32(10, 0xA00 + k),
                       u32(11, 0xB00 + k), u32(21, 0x2100 + k), text(12, "user " + n), text(13, "text " + n),
                       text(23, "dev " + n), u8(14, uint8_t(0x14 + k)), u8(15, uint8_t(0x15 + k)),
                       u32(16, 0x1600 + k), u8(17, uint8_t(0x17 + k)), u8(18, uint8_t(0x18 + k)),
                       u8(19, uint8_t(0x19 + k)), u32(20, 20260000 + k)}));
}

}  // namespace

TEST(LogsWire, EveryExportsRequests) {
    auto q = std::make_unique<kvn_transaction_log_query>();
    auto all = std::make_unique<kvn_transaction_log_query>();  // every criterion set
    all->attr_t02 = 0x22, all->attr_t03 = 0x33, all->attr_t04 = 0x44, all->attr_t05 = 0x55, all->attr_t11 = 0x1111;
    std::strcpy(all->text_t12, "amy");
    std::strcpy(all->text_t13, "door");
    auto part = std::make_unique<kvn_transaction_log_query>();  // some criteria empty
    part->attr_t02 = 0x22, part->attr_t03 = 0x33, part->attr_t05 = 0x55;
    std::strcpy(part->text_t13, "in");
    kvn_transaction_log_id_list ids{};
    ids.count = 3, ids.log_ids[0] = 0x0A, ids.log_ids[1] = 0x0B0C, ids.log_ids[2] = 0xFFFFFFFE, ids.log_ids[3] = 9;
    kvn_user_group g{0x0A0B, "night"};
    auto page = std::make_unique<kvn_user_group_page>();
    page->range_start = 3, page->range_end = 0x35;
    ASSERT_TRUE(write_file("wire_up.bin", {1, 2, 3}));
    const kvn_file_transfer_request up = transfer("wire_up.bin", "a.bin"), down = transfer("wire_down.bin", "b.bin", 6);
    uint32_t u = 0;
    const Bytes criteria = cat({u32(4, 0x44), u32(5, 0x55), u32(11, 0x1111), text(12, "amy"), text(13, "door")});
    struct Row {
        const char* name;
        Call call;
        std::vector<Req> want;
        std::vector<Bytes> answers;
    };
    const Row rows[] = {
        {"total count", [&](auto c) { return kvn_get_transaction_log_total_count(c, &u); }, {{kGet, 405, {}}}, {}},
        {"unread count", [&](auto c) { return kvn_get_transaction_log_unread_count(c, &u); }, {{kGet, 406, {}}}, {}},
        {"read count", [&](auto c) { return kvn_get_transaction_log_read_count(c, &u); }, {{kGet, 407, {}}}, {}},
        // The counts never send tags 2 and 3; with all criteria empty they send nothing.
        {"count for date", [&](auto c) { return kvn_get_transaction_log_count_for_date(c, q.get()); },
         {{kGet, 408, {}}}, {}},
        {"count for criteria", [&](auto c) { return kvn_get_transaction_log_count_for_criteria(c, all.get()); },
         {{kGet, 411, criteria}}, {}},
        {"logs", [&](auto c) { return kvn_get_transaction_logs(c, all.get()); },
         {{kGet, 401, cat({u8(2, 0x22), u8(3, 0x33), criteria})}}, {}},
        // All criteria empty: exactly tags 2 and 3, one byte each.
        {"unread logs", [&](auto c) { return kvn_get_unread_transaction_logs(c, q.get()); },
         {{kGet, 402, {0x02, 0x01, 0x00, 0x03, 0x01, 0x00}}}, {}},
        {"read logs", [&](auto c) { return kvn_get_read_transaction_logs(c, part.get()); },
         {{kGet, 403, cat({u8(2, 0x22), u8(3, 0x33), u32(5, 0x55), text(13, "in")})}}, {}},
        {"logs for date", [&](auto c) { return kvn_get_transaction_logs_for_date(c, all.get()); },
         {{kGet, 404, cat({u8(2, 0x22), u8(3, 0x33), criteria})}}, {}},
        {"logs for criteria", [&](auto c) { return kvn_get_transaction_logs_for_criteria(c, part.get()); },
         {{kGet, 412, cat({u8(2, 0x22), u8(3, 0x33), u32(5, 0x55), text(13, "in")})}}, {}},
        {"mark read", [](auto c) { return kvn_mark_transaction_log_as_read(c, 0x01020304); },
         {{kSet, 409, {0x07, 0x04, 0x04, 0x03, 0x02, 0x01}}}, {}},
        {"mark list read", [&](auto c) { return kvn_mark_transaction_logs_as_read(c, &ids); },
         {{kSet, 409, cat({u32(7, 0x0A), u32(7, 0x0B0C), u32(7, 0xFFFFFFFE)})}}, {}},
        {"mark online", [](auto c) { return kvn_mark_transaction_log_as_online(c, 0x0410); },
         {{kGet, 410, u32(7, 0x0410)}}, {}},
        {"delete all logs", kvn_delete_all_transaction_logs, {{kReset, 413, Bytes(20480, 0)}}, {}},
        // The start answer gives the transfer id; the packet carries the file's bytes.
        {"upload", [&](auto c) { return kvn_upload_file(c, &up); },
         {{kUpload, 120, cat({u32(4, 5), text(5, "a.bin"), u32(6, 3), u32(7, 1)})},
          {kSet, 120, cat({u32(1, 0x77), u32(3, 1), el(8, {1, 2, 3})})}},
         {response(0, u32(1, 0x77))}},
        {"download", [&](auto c) { return kvn_download_file(c, &down); },
         {{kDownload, 120, cat({u32(4, 6), text(5, "b.bin")})}, {kGet, 120, cat({u32(1, 0x66), u32(3, 1)})}},
         {response(0, cat({u32(1, 0x66), u32(6, 3), u32(7, 1)})),
          response(0, cat({u32(1, 0x66), u32(3, 1), el(8, {9, 8, 7})}))}},
        {"delete file", [&](auto c) { return kvn_delete_file(c, &down); },
         {{kReset, 120, cat({u32(4, 6), text(5, "b.bin")})}}, {}},
        {"upgrade firmware", kvn_upgrade_firware, {{kSet, 601, {0x05, 0x01, 0x01}}}, {}},
        {"restore backup", kvn_restore_backup_file, {{kSet, 601, {0x07, 0x01, 0x01}}}, {}},
        {"export csv", [](auto c) { return kvn_upgrade_firware_export_csv_file(c, "users.csv"); },
         {{kGet, 601, cat({{0x08, 0x01, 0x01}, text(10, "users.csv")})}}, {}},
        {"import csv", [](auto c) { return kvn_upgrade_firware_import_csv_file(c, "in.csv"); },
         {{kSet, 601, cat({{0x09, 0x01, 0x01}, text(10, "in.csv")})}}, {}},
        {"store group", [&](auto c) { return kvn_store_user_group(c, &g); },
         {{kSet, 10, cat({u32(2, 0x0A0B), text(3, "night")})}}, {}},
        {"delete group", [&](auto c) { return kvn_delete_user_group(c, &g); },
         {{kReset, 10, cat({u32(2, 0x0A0B), text(3, "night")})}}, {}},
        {"group page", [&](auto c) { return kvn_retrieve_user_group(c, page.get()); },
         {{kGet, 10, cat({u32(4, 3), u32(5, 0x35)})}}, {}},
        {"group count", [&](auto c) { return kvn_get_total_user_group_count(c, &u); }, {{kGet, 11, {}}}, {}},
        {"delete all groups", kvn_delete_all_user_group, {{kReset, 12, {}}}, {}},
        {"store display image", [](auto c) { return kvn_store_user_display_image_setting(c, 0x0156); },
         {{kSet, 156, {0x04, 0x04, 0x56, 0x01, 0x00, 0x00}}}, {}},
        {"get display image", [&](auto c) { return kvn_retrieve_user_display_image_setting(c, &u); },
         {{kGet, 156, Bytes(1024, 0)}}, {}},
        {"reset display image", kvn_reset_user_display_image_setting, {{kReset, 156, {}}}, {}},
    };
    for (const Row& r : rows) {
        int32_t rc = 99;
        const std::vector<Req> seen = converse(r.call, r.answers, &rc);
        EXPECT_EQ(rc, 0) << r.name;
        ASSERT_EQ(seen.size(), r.want.size()) << r.name;
        for (size_t k = 0; k < seen.size(); ++k) {
            EXPECT_EQ(seen[k].word, r.want[k].word) << r.name << " request " << k;
            EXPECT_EQ(seen[k].command, r.want[k].command) << r.name << " request " << k;
            EXPECT_BYTES(seen[k].payload, r.want[k].payload) << r.name << " request " << k;
        }
    }
    EXPECT_EQ(file_bytes("wire_down.bin"), (Bytes{9, 8, 7}));
    EXPECT_EQ(criteria.size(), 6u * 3 + 5 + 6);
}

TEST(LogsWire, ReaderFillsEntriesAtTheLowByteOfTheCount) {
    auto q = std::make_unique<kvn_transaction_log_query>();
    auto want = std::make_unique<kvn_transaction_log_query>();
    q->log_count = want->log_count = 0xABCDEF07;  // the low byte is cleared, the rest kept
    // Two entries, an unknown tag skipped, and a text longer than its field: cut at 51.
    const std::string long_text(60, 'L');
    Bytes second = entry_bytes(2);
    second = cat({{second.begin(), second.end()}, u32(99, 1)});
    second[5] = uint8_t(second.size() - 6);
    const Bytes answer = cat({entry_bytes(1), u32(6, 5), second, box(1, text(13, long_text))});
    want->entries[0] = entry(1), want->entries[1] = entry(2);
    std::memcpy(want->entries[2].text_t13, long_text.data(), 51);
    want->log_count = 0xABCDEF03;
    EXPECT_EQ(capture([&](auto c) { return kvn_get_transaction_logs(c, q.get()); }, response(0, answer)).rc, 0);
    EXPECT_EQ(std::memcmp(q.get(), want.get(), sizeof *q), 0);
    EXPECT_EQ(q->entries[2].text_t23[0], 0);

    // 257 entries: the one-byte index wraps, so the last one lands in entry 0.
    Bytes many;
    for (uint32_t i = 0; i < 257; ++i) many = cat({many, box(1, u32(7, i))});
    EXPECT_EQ(capture([&](auto c) { return kvn_get_unread_transaction_logs(c, q.get()); }, response(0, many)).rc, 0);
    EXPECT_EQ(q->log_count, 0xABCDEF01u);
    EXPECT_EQ(q->entries[0].log_id, 256u);
    EXPECT_EQ(q->entries[255].log_id, 255u);

    // No tag-1 container: nothing decoded; a malformed answer keeps what came before it.
    EXPECT_EQ(capture([&](auto c) { return kvn_get_read_transaction_logs(c, q.get()); }, response(0, u32(6, 1))).rc, 0);
    EXPECT_EQ(q->log_count, 0xABCDEF00u);
    const Bytes bad = cat({box(1, u32(7, 0x51)), {0xFF}});
    EXPECT_EQ(capture([&](auto c) { return kvn_get_transaction_logs_for_date(c, q.get()); }, response(0, bad)).rc, -1);
    EXPECT_EQ(q->log_count, 0xABCDEF01u);
    EXPECT_EQ(q->entries[0].log_id, 0x51u);
}

TEST(LogsWire, CountsWriteTheirWholeOutput) {
    auto q = std::make_unique<kvn_transaction_log_query>();
    q->log_count = 0xFFFFFFFF;
    EXPECT_EQ(capture([&](auto c) { return kvn_get_transaction_log_count_for_criteria(c, q.get()); },
                      response(0, cat({u32(2, 9), u32(6, 0x0605)})))
                  .rc,
              0);
    EXPECT_EQ(q->log_count, 0x0605u);
    struct Row {
        const char* name;
        std::function<int32_t(kvn_device_conn*, uint32_t*)> get;
        uint8_t tag;
    };
    const Row rows[] = {
        {"total", kvn_get_transaction_log_total_count, 6},
        {"unread", kvn_get_transaction_log_unread_count, 6},
        {"read", kvn_get_transaction_log_read_count, 6},
        {"groups", kvn_get_total_user_group_count, 1},
        {"display image", kvn_retrieve_user_display_image_setting, 4},
    };
    for (const Row& r : rows) {
        uint32_t v = 0;
        const Bytes answer = cat({u32(uint8_t(r.tag + 1), 1), u32(r.tag, 0x01020300u + r.tag)});
        EXPECT_EQ(capture([&](auto c) { return r.get(c, &v); }, response(0, answer)).rc, 0) << r.name;
        EXPECT_EQ(v, 0x01020300u + r.tag) << r.name;
        EXPECT_EQ(capture([&](auto c) { return r.get(c, &v); }).rc, 0) << r.name;  // no payload: untouched
        EXPECT_EQ(v, 0x01020300u + r.tag) << r.name;
    }
}

TEST(LogsWire, GroupPageStopsAtItsLimit) {
    auto page = std::make_unique<kvn_user_group_page>();
    std::memset(page.get(), 'x', sizeof *page);
    page->range_start = 10, page->range_end = 12;
    const std::string sixty(60, 'n');
    // Two groups are asked for: the third and the malformed rest are never read.
    const Bytes answer = cat({u32(6, 0xBAD), box(1, cat({u32(2, 0x21), text(3, "day"), u32(6, 0x77)})),
                              box(1, cat({text(3, sixty), u32(2, 0x22), u32(6, 0x78)})),
                              box(1, cat({u32(2, 0x23), u32(6, 0x79)})), {0xFF}});
    EXPECT_EQ(capture([&](auto c) { return kvn_retrieve_user_group(c, page.get()); }, response(0, answer)).rc, 0);
    EXPECT_EQ(page->groups[0].group_id, 0x21u);
    EXPECT_EQ(std::string(page->groups[0].group_name, 4), "dayx");  // no terminator added
    EXPECT_EQ(page->groups[1].group_id, 0x22u);
    EXPECT_EQ(std::string(page->groups[1].group_name, 52), sixty.substr(0, 50) + "xx");
    EXPECT_EQ(page->total, 0x78u);
    EXPECT_EQ(page->groups[2].group_id, 0x78787878u);
    // An empty range decodes nothing, even a malformed answer.
    page->range_end = 10;
    EXPECT_EQ(capture([&](auto c) { return kvn_retrieve_user_group(c, page.get()); }, response(0, {0xFF})).rc, 0);
    EXPECT_EQ(page->groups[0].group_id, 0x21u);
    // A range that wraps is bounded by the 50 groups held; total is not overwritten by a 51st.
    page->range_start = 5, page->range_end = 4;
    Bytes many;
    for (uint32_t i = 0; i < 51; ++i) many = cat({many, box(1, cat({u32(2, i), u32(6, 100 + i)}))});
    EXPECT_EQ(capture([&](auto c) { return kvn_retrieve_user_group(c, page.get()); }, response(0, many)).rc, 0);
    EXPECT_EQ(page->groups[49].group_id, 49u);
    EXPECT_EQ(page->total, 149u);
}

TEST(LogsWire, UploadFollowsTheStartAnswerAndStopsOnAPacketStatus) {
    const Bytes data = pattern(65537);
    ASSERT_TRUE(write_file("wire_big.bin", data));
    const kvn_file_transfer_request rq = transfer("wire_big.bin", "big");
    int32_t rc = 0;
    // 65537 bytes: two packets, the second of one byte.
    auto seen = converse([&](auto c) { return kvn_upload_file(c, &rq); }, {response(0, u32(1, 4))}, &rc);
    EXPECT_EQ(rc, 0);
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_BYTES(seen[0].payload, cat({u32(4, 5), text(5, "big"), u32(6, 65537), u32(7, 2)}));
    EXPECT_BYTES(seen[1].payload, cat({u32(1, 4), u32(3, 1), el(8, Bytes(data.begin(), data.begin() + 65536))}));
    EXPECT_BYTES(seen[2].payload, cat({u32(1, 4), u32(3, 2), el(8, {data.back()})}));
    // Tag 7 of the start answer sets how many packets go out.
    seen = converse([&](auto c) { return kvn_upload_file(c, &rq); }, {response(0, u32(7, 1))}, &rc);
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(seen.size(), 2u);
    // A packet's status ends the transfer with it.
    seen = converse([&](auto c) { return kvn_upload_file(c, &rq); }, {response(0), response(KVN_E_INVALID_PACKET_ID)},
                    &rc);
    EXPECT_EQ(rc, KVN_E_INVALID_PACKET_ID);
    EXPECT_EQ(seen.size(), 2u);
    // Tag 6 claiming more than the file holds: the short read is -13.
    seen = converse([&](auto c) { return kvn_upload_file(c, &rq); }, {response(0, cat({u32(6, 200000), u32(7, 4)}))},
                    &rc);
    EXPECT_EQ(rc, KVN_E_OPENING_FILE);
    EXPECT_EQ(seen.size(), 2u);  // the second chunk reads short
    // An empty file: the start packet alone, size 0 and count 0.
    ASSERT_TRUE(write_file("wire_empty.bin", {}));
    const kvn_file_transfer_request empty = transfer("wire_empty.bin", "e");
    seen = converse([&](auto c) { return kvn_upload_file(c, &empty); }, {response(KVN_E_INVALID_FILE_NAME)}, &rc);
    EXPECT_EQ(rc, KVN_E_INVALID_FILE_NAME);
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_BYTES(seen[0].payload, cat({u32(4, 5), text(5, "e"), u32(6, 0), u32(7, 0)}));
}

TEST(LogsWire, DownloadRetriesWithinItsBudgetAndFollowsTheTerminalsNumbers) {
    const kvn_file_transfer_request rq = transfer("wire_got.bin", "f");
    const Bytes start = response(0, cat({u32(1, 9), u32(6, 6), u32(7, 2)}));
    auto packet = [](uint32_t n, const Bytes& d) { return response(0, cat({u32(1, 9), u32(3, n), el(8, d)})); };
    int32_t rc = 0;
    // A failed packet is asked again; the two attempts are spent, so the second packet never comes.
    auto seen = converse([&](auto c) { return kvn_download_file(c, &rq); },
                         {start, response(KVN_E_INVALID_PACKET_ID), packet(1, {1, 2, 3})}, &rc);
    EXPECT_EQ(rc, 0);
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_BYTES(seen[2].payload, cat({u32(1, 9), u32(3, 1)}));
    EXPECT_EQ(file_bytes("wire_got.bin"), (Bytes{1, 2, 3}));
    // The extension stops at the first failure instead.
    seen = converse([&](auto c) { return kvn_ext_download_file(c, &rq, nullptr, nullptr); },
                    {start, response(KVN_E_INVALID_PACKET_ID)}, &rc);
    EXPECT_EQ(rc, KVN_E_INVALID_PACKET_ID);
    EXPECT_EQ(seen.size(), 2u);
    // The terminal numbers its packet 2: that is the last one.
    seen = converse([&](auto c) { return kvn_download_file(c, &rq); }, {start, packet(2, {4, 5})}, &rc);
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(seen.size(), 2u);
    EXPECT_EQ(file_bytes("wire_got.bin"), (Bytes{4, 5}));
    // Data beyond the 64 KiB chunk is refused, not cut, and nothing is written.
    seen = converse([&](auto c) { return kvn_ext_download_file(c, &rq, nullptr, nullptr); },
                    {start, packet(1, Bytes(65537, 1))}, &rc);
    EXPECT_EQ(rc, -1);
    EXPECT_TRUE(file_bytes("wire_got.bin").empty());
}

TEST(LogsWire, LocalFileFailuresAndCancel) {
    int32_t rc = 0;
    const kvn_file_transfer_request missing = transfer("no_such_dir/none.bin", "x");
    for (const Call& call : std::vector<Call>{[&](auto c) { return kvn_upload_file(c, &missing); },
                                              [&](auto c) { return kvn_download_file(c, &missing); }}) {
        EXPECT_TRUE(converse(call, {}, &rc).empty());
        EXPECT_EQ(rc, KVN_E_OPENING_FILE);
    }
    // The callback sees the plan and each packet; a non-zero answer ends the transfer with it.
    ASSERT_TRUE(write_file("wire_three.bin", pattern(3 * 65536)));
    const kvn_file_transfer_request rq = transfer("wire_three.bin", "t");
    std::vector<kvn_ext_transfer_progress> calls;
    auto cb = [](const kvn_ext_transfer_progress* p, void* ctx) -> int32_t {
        auto* v = static_cast<std::vector<kvn_ext_transfer_progress>*>(ctx);
        v->push_back(*p);
        return p->packets_done == 1 ? -77 : 0;
    };
    const auto seen = converse([&](auto c) { return kvn_ext_upload_file(c, &rq, cb, &calls); }, {}, &rc);
    EXPECT_EQ(rc, -77);
    EXPECT_EQ(seen.size(), 2u);
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0].bytes_total, 3u * 65536);
    EXPECT_EQ(calls[0].packets_total, 3u);
    EXPECT_EQ(calls[1].bytes_done, 65536u);
}

namespace {
// A link whose second send fails; every answer is a status-only success. Records the
// packet number and first data byte of each upload packet that went out.
struct FlakyLink {
    static inline int sends = 0;
    static inline Bytes answer;
    static inline size_t at = 0;
    static inline std::vector<std::pair<uint32_t, uint8_t>> packets;
    static int32_t send(kvn_conn_link*, const kvn::ConstBuf* parts, size_t count) {
        Bytes frame;
        for (size_t i = 0; i < count; ++i) frame.insert(frame.end(), parts[i].data, parts[i].data + parts[i].size);
        if (++sends == 2) return KVN_E_WRITE_TIMEOUT;
        if (get_le32(&frame[8]) == kSet) packets.emplace_back(get_le32(&frame[24 + 8]), frame[24 + 12 + 6]);
        at = 0;
        return 0;
    }
    static int32_t receive(kvn_conn_link*, uint8_t* b, uint32_t n) {
        if (at + n > answer.size()) return KVN_E_READ_TIMEOUT;
        std::memcpy(b, answer.data() + at, n);
        at += n;
        return 0;
    }
    static int32_t open(kvn_device_conn*) { return 0; }
};
}  // namespace

// A packet that fails to go out is not repeated: the next chunk goes under its number,
// and the loop still ends after the packet count.
TEST(LogsWire, UploadSendsTheNextChunkUnderTheNumberOfAPacketThatFailedToGo) {
    Bytes data = pattern(3 * 65536);
    for (int k = 0; k < 3; ++k) data[size_t(k) * 65536] = uint8_t(0xC0 + k);
    ASSERT_TRUE(write_file("wire_flaky.bin", data));
    const kvn_file_transfer_request rq = transfer("wire_flaky.bin", "f");
    FlakyLink::answer = response(0);
    const kvn::Transport flaky{FlakyLink::send, FlakyLink::receive, FlakyLink::open, FlakyLink::open};
    kvn::set_transport_override(&flaky);
    kvn_device_conn c{};
    c.link.conn_type = KVN_CONN_TCP;
    const int32_t rc = kvn_upload_file(&c, &rq);
    kvn::set_transport_override(nullptr);
    EXPECT_EQ(rc, 0);
    const std::vector<std::pair<uint32_t, uint8_t>> want = {{1, 0xC1}, {2, 0xC2}};
    EXPECT_EQ(FlakyLink::packets, want);
}
