// Transaction logs, file transfer and user groups on the wire, against a loopback
// peer: the requests of every export that sends a payload (bytes derived by hand, one
// row each; a transfer's start and packets in order), the decoders on answers in which
// every field carries a value of its own, and the transfer rules only a scripted
// terminal can show.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "kvnsdk2.h"
#include "link/transport.h"
#include "peer.h"
#include "records.h"
#include "transfer.h"

using namespace kvntest;

namespace {

struct Req { uint32_t word, command; Bytes payload; };

// Runs `call` against a peer that answers request k with answers[k] (a status-only
// success beyond them); returns every request (read once the peer's thread has ended).
std::vector<Req> converse(const Call& call, const std::vector<Bytes>& answers, int32_t* rc) {
    std::vector<Req> seen;
    {
        LoopbackPeer peer([&](sock_t s) {
            for (size_t k = 0;; ++k) {
                const Bytes r = read_request(s);
                if (r.size() < 28) return;
                seen.push_back({get_le32(&r[8]), get_le32(&r[16]), Bytes(r.begin() + 24, r.end() - 4)});
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

// A journal entry with a value of its own in every field (tags in the answer's order,
// members in the record's), and the entry its elements give.
const Bytes kEntryElements = box(1, cat({u32(7, 0x07), u32(8, 0x08), u32(9, 0x09), u32(10, 0x0A), u32(11, 0x0B), u32(21, 0x21),
                                         text(12, "amy"), text(13, "in"), text(23, "dev"), u8(14, 0x14), u8(15, 0x15), u32(16, 0x16),
                                         u8(17, 0x17), u8(18, 0x18), u8(19, 0x19), u32(20, 20260102), u8(99, 1)}));
const kvn_transaction_log kEntry = {7, 8, 9, 0x0A, 0x0B, 0x21, "amy", "in", "dev", 0x14, 0x15, 0x16, 0x17, 0x18, 0x19, 20260102};

}  // namespace

TEST(LogsWire, EveryExportsRequests) {
    constexpr uint32_t kUp = 0x00040002, kDown = 0x00050002;
    auto q = std::make_unique<kvn_transaction_log_query>(), all = std::make_unique<kvn_transaction_log_query>();
    all->attr_t02 = 0x22, all->attr_t03 = 0x33, all->attr_t04 = 0x44, all->attr_t05 = 0x55, all->attr_t11 = 0x1111;
    std::strcpy(all->text_t12, "amy"), std::strcpy(all->text_t13, "door");
    kvn_transaction_log_id_list ids{3, {0x0A, 0x0B0C, 0xFFFFFFFE, 9}}, none{};
    kvn_user_group g{0x0A0B, "night"};
    auto page = std::make_unique<kvn_user_group_page>();
    page->range_start = 3, page->range_end = 0x35;
    ASSERT_TRUE(write_file("wire_up.bin", {1, 2, 3}));
    const auto up = transfer("wire_up.bin", "a.bin"), down = transfer("wire_down.bin", "b.bin", 6);
    uint32_t u = 0;
    // Reads send tags 2 and 3 always, then the criteria in the order 4, 5, 11, 12, 13; counts never 2 and 3.
    const Bytes criteria = cat({u32(4, 0x44), u32(5, 0x55), u32(11, 0x1111), text(12, "amy"), text(13, "door")});
    const Bytes read = cat({{0x02, 0x01, 0x22, 0x03, 0x01, 0x33}, criteria});
    const Bytes file_b = cat({u32(4, 6), text(5, "b.bin")});
    struct Row { Call call; std::vector<Req> want; std::vector<Bytes> answers; };
#define CALL(...) [&](kvn_device_conn* c) { return __VA_ARGS__; }
    const Row rows[] = {
        {CALL(kvn_get_transaction_log_count_for_date(c, q.get())), {{kGet, 408, {}}}},
        {CALL(kvn_get_transaction_log_count_for_criteria(c, all.get())), {{kGet, 411, criteria}}},
        {CALL(kvn_get_transaction_logs(c, all.get())), {{kGet, 401, read}}},
        {CALL(kvn_get_unread_transaction_logs(c, q.get())), {{kGet, 402, {2, 1, 0, 3, 1, 0}}}},
        {CALL(kvn_get_read_transaction_logs(c, all.get())), {{kGet, 403, read}}},
        {CALL(kvn_get_transaction_logs_for_date(c, all.get())), {{kGet, 404, read}}},
        {CALL(kvn_get_transaction_logs_for_criteria(c, all.get())), {{kGet, 412, read}}},
        {CALL(kvn_mark_transaction_log_as_read(c, 0x01020304)), {{kSet, 409, {7, 4, 4, 3, 2, 1}}}},
        {CALL(kvn_mark_transaction_logs_as_read(c, &ids)), {{kSet, 409, cat({u32(7, 0x0A), u32(7, 0x0B0C), u32(7, 0xFFFFFFFE)})}}},
        {CALL(kvn_mark_transaction_logs_as_read(c, &none)), {{kSet, 409, {}}}},
        {CALL(kvn_mark_transaction_log_as_online(c, 0x0410)), {{kGet, 410, {7, 4, 0x10, 4, 0, 0}}}},
        {kvn_delete_all_transaction_logs, {{kReset, 413, Bytes(20480, 0)}}},
        // The start answer names the transfer; the packet carries the file's bytes.
        {CALL(kvn_upload_file(c, &up)), {{kUp, 120, cat({u32(4, 5), text(5, "a.bin"), u32(6, 3), u32(7, 1)})},
          {kSet, 120, cat({u32(1, 0x77), u32(3, 1), el(8, {1, 2, 3})})}},
         {response(0, u32(1, 0x77))}},
        {CALL(kvn_download_file(c, &down)), {{kDown, 120, file_b}, {kGet, 120, cat({u32(1, 0x66), u32(3, 1)})}},
         {response(0, cat({u32(1, 0x66), u32(6, 3), u32(7, 1)})), response(0, cat({u32(3, 1), el(8, {9, 8, 7})}))}},
        {CALL(kvn_delete_file(c, &down)), {{kReset, 120, file_b}}},
        {kvn_upgrade_firware, {{kSet, 601, {5, 1, 1}}}},
        {kvn_restore_backup_file, {{kSet, 601, {7, 1, 1}}}},
        {CALL(kvn_upgrade_firware_export_csv_file(c, "u.csv")), {{kGet, 601, {8, 1, 1, 10, 5, 'u', '.', 'c', 's', 'v'}}}},
        {CALL(kvn_upgrade_firware_import_csv_file(c, "in")), {{kSet, 601, {9, 1, 1, 10, 2, 'i', 'n'}}}},
        {CALL(kvn_store_user_group(c, &g)), {{kSet, 10, cat({u32(2, 0x0A0B), text(3, "night")})}}},
        {CALL(kvn_delete_user_group(c, &g)), {{kReset, 10, cat({u32(2, 0x0A0B), text(3, "night")})}}},
        {CALL(kvn_retrieve_user_group(c, page.get())), {{kGet, 10, cat({u32(4, 3), u32(5, 0x35)})}}},
        {CALL(kvn_store_user_display_image_setting(c, 0x0156)), {{kSet, 156, {4, 4, 0x56, 1, 0, 0}}}},
        {CALL(kvn_retrieve_user_display_image_setting(c, &u)), {{kGet, 156, Bytes(1024, 0)}}},
    };
#undef CALL
    for (const Row& r : rows) {
        int32_t rc = 99;
        const std::vector<Req> seen = converse(r.call, r.answers, &rc);
        const uint32_t id = r.want[0].command;
        EXPECT_EQ(rc, 0) << id;
        ASSERT_EQ(seen.size(), r.want.size()) << id;
        for (size_t k = 0; k < seen.size(); ++k) {
            EXPECT_EQ(std::make_pair(seen[k].word, seen[k].command), std::make_pair(r.want[k].word, id)) << " request " << k;
            EXPECT_BYTES(seen[k].payload, r.want[k].payload) << id << " request " << k;
        }
    }
    EXPECT_EQ(file_bytes("wire_down.bin"), (Bytes{9, 8, 7}));
}

TEST(LogsWire, DecodersStoreByTagWithinBounds) {
    auto q = std::make_unique<kvn_transaction_log_query>();
    q->log_count = 0xABCDEF07;  // the low byte is cleared, the rest kept
    const std::string long_text(60, 'L');  // cut at its field's 51 bytes
    const Bytes logs = cat({kEntryElements, u32(6, 5), box(1, text(13, long_text))});
    EXPECT_EQ(capture([&](auto c) { return kvn_get_transaction_logs(c, q.get()); }, response(0, logs)).rc, 0);
    EXPECT_EQ(q->log_count, 0xABCDEF02u);
    EXPECT_EQ(std::memcmp(&q->entries[0], &kEntry, sizeof kEntry), 0);
    EXPECT_EQ(std::string(q->entries[1].text_t13, 51) + q->entries[1].text_t23, long_text.substr(0, 51));
    // 257 entries: the one-byte index wraps, so the last lands in entry 0.
    const Bytes many = each(257, [](size_t i) { return box(1, u32(7, uint32_t(i))); });
    EXPECT_EQ(capture([&](auto c) { return kvn_get_unread_transaction_logs(c, q.get()); }, response(0, many)).rc, 0);
    EXPECT_EQ(q->log_count, 0xABCDEF01u);
    EXPECT_EQ(q->entries[0].log_id, 256u);
    // Without a tag-1 container: none, and the low byte cleared.
    const Bytes none = u32(6, 1);
    EXPECT_EQ(capture([&](auto c) { return kvn_get_transaction_logs_for_date(c, q.get()); }, response(0, none)).rc, 0);
    EXPECT_EQ(q->log_count, 0xABCDEF00u);
    // Filtered counts write the whole log_count; the plain values are one u32 under their tag.
    const Bytes count = cat({u32(2, 9), u32(6, 0x0605)});
    EXPECT_EQ(capture([&](auto c) { return kvn_get_transaction_log_count_for_date(c, q.get()); }, response(0, count)).rc, 0);
    EXPECT_EQ(q->log_count, 0x0605u);
    const std::pair<int32_t (*)(kvn_device_conn*, uint32_t*), uint8_t> values[] = {
        {kvn_get_transaction_log_total_count, 6}, {kvn_get_transaction_log_unread_count, 6},
        {kvn_get_transaction_log_read_count, 6}, {kvn_get_total_user_group_count, 1},
        {kvn_retrieve_user_display_image_setting, 4}};
    for (const auto& [get, tag] : values)
        expect_decodes("value", get, cat({u32(uint8_t(tag + 1), 1), u32(tag, 0x01020300u + tag)}), uint32_t{0x01020300u + tag});
}

TEST(LogsWire, GroupPageStopsAtItsLimit) {
    auto page = std::make_unique<kvn_user_group_page>();
    std::memset(page.get(), 'x', sizeof *page);
    page->range_start = 10, page->range_end = 12;
    // Two groups asked for: the third and the malformed rest are not read; names get no NUL.
    const Bytes answer = cat({u32(6, 0xBAD), box(1, cat({u32(2, 0x21), text(3, "day"), u32(6, 0x77)})),
                              box(1, cat({text(3, std::string(60, 'n')), u32(2, 0x22), u32(6, 0x78)})),
                              box(1, u32(2, 0x23)), {0xFF}});
    EXPECT_EQ(capture([&](auto c) { return kvn_retrieve_user_group(c, page.get()); }, response(0, answer)).rc, 0);
    EXPECT_EQ(std::vector<uint32_t>({page->groups[0].group_id, page->groups[1].group_id, page->total, page->groups[2].group_id}),
              std::vector<uint32_t>({0x21, 0x22, 0x78, 0x78787878}));
    EXPECT_EQ(std::string(page->groups[0].group_name, 4) + std::string(page->groups[1].group_name, 52), "dayx" + std::string(50, 'n') + "xx");
    page->range_end = 10;  // an empty range reads nothing
    EXPECT_EQ(capture([&](auto c) { return kvn_retrieve_user_group(c, page.get()); }, response(0, {0xFF})).rc, 0);
    page->range_end = 4;  // a range that wraps is bounded by the 50 groups held
    const Bytes many = each(51, [](size_t i) { return box(1, cat({u32(2, uint32_t(i)), u32(6, uint32_t(100 + i))})); });
    EXPECT_EQ(capture([&](auto c) { return kvn_retrieve_user_group(c, page.get()); }, response(0, many)).rc, 0);
    EXPECT_EQ(page->groups[49].group_id, 49u);
    EXPECT_EQ(page->total, 149u);
}

TEST(LogsWire, DownloadRetriesWithinItsBudgetFollowsTheTerminalsNumbersAndBoundsChunks) {
    const auto rq = transfer("wire_got.bin", "f");
    const Bytes start = response(0, cat({u32(1, 9), u32(6, 6), u32(7, 2)}));
    auto packet = [](uint32_t n, const Bytes& d) { return response(0, cat({u32(3, n), el(8, d)})); };
    // ext: the extension, which stops at the first failure.
    struct Case { bool ext; std::vector<Bytes> answers; int32_t rc; size_t requests; Bytes file; };
    const Case cases[] = {
        // A failed packet is asked again; the two attempts are spent, so packet 2 never comes.
        {false, {start, response(KVN_E_INVALID_PACKET_ID), packet(1, {1, 2})}, 0, 3, {1, 2}},
        {true, {start, response(KVN_E_INVALID_PACKET_ID)}, KVN_E_INVALID_PACKET_ID, 2, {}},
        {false, {start, packet(2, {4, 5})}, 0, 2, {4, 5}},       // the terminal's number 2 is the last
        {true, {start, packet(1, Bytes(65537, 1))}, -1, 2, {}},  // refused, not cut
    };
    for (const Case& k : cases) {
        int32_t rc = 0;
        const Call call = [&](auto c) { return k.ext ? kvn_ext_download_file(c, &rq, nullptr, nullptr) : kvn_download_file(c, &rq); };
        EXPECT_EQ(converse(call, k.answers, &rc).size(), k.requests);
        EXPECT_EQ(rc, k.rc);
        EXPECT_EQ(file_bytes("wire_got.bin"), k.file);
    }
}

namespace {
// A link whose second send fails and whose answers are status-only successes;
// records the number and first data byte of each upload packet that went out.
struct FlakyLink {
    static inline int sends = 0;
    static inline size_t at = 0;
    static inline std::vector<std::pair<uint32_t, uint8_t>> packets;
    static int32_t send(kvn_conn_link*, const kvn::ConstBuf* parts, size_t count) {
        if (++sends == 2) return KVN_E_WRITE_TIMEOUT;
        // Header, the packet's tags 1 and 3 and tag 8's head, the chunk itself, the CRC.
        if (count == 4 && get_le32(parts[0].data + 8) == kSet)
            packets.emplace_back(get_le32(parts[1].data + 8), parts[2].data[0]);
        at = 0;
        return 0;
    }
    static int32_t receive(kvn_conn_link*, uint8_t* b, uint32_t n) {
        static const Bytes answer = response(0);
        if (at + n > answer.size()) return KVN_E_READ_TIMEOUT;
        std::memcpy(b, answer.data() + at, n);
        at += n;
        return 0;
    }
    static int32_t open(kvn_device_conn*) { return 0; }
};
}  // namespace

TEST(LogsWire, UploadSendsTheNextChunkUnderTheNumberOfAPacketThatFailedToGoAndRefusesLocalFailures) {
    ASSERT_TRUE(write_file("wire_flaky.bin", pattern(3 * 65536)));  // chunks start with 0, 1, 2
    const auto rq = transfer("wire_flaky.bin", "f");
    const kvn::Transport flaky{FlakyLink::send, FlakyLink::receive, FlakyLink::open, FlakyLink::open};
    kvn::set_transport_override(&flaky);
    kvn_device_conn c{};
    c.link.conn_type = KVN_CONN_TCP;
    EXPECT_EQ(kvn_upload_file(&c, &rq), 0);
    kvn::set_transport_override(nullptr);
    EXPECT_EQ(FlakyLink::packets, (std::vector<std::pair<uint32_t, uint8_t>>{{1, 1}, {2, 2}}));
    // A missing file, a directory that is not there, 4 GiB (beyond a u32): -13, nothing sent.
    std::filesystem::resize_file((write_file("wire_huge.bin", {}), "wire_huge.bin"), uint64_t{1} << 32);
    const auto missing = transfer("no_such_dir/x.bin", "x"), huge = transfer("wire_huge.bin", "h");
    for (const Call& call : std::vector<Call>{[&](auto c2) { return kvn_upload_file(c2, &missing); },
                                              [&](auto c2) { return kvn_download_file(c2, &missing); },
                                              [&](auto c2) { return kvn_upload_file(c2, &huge); }}) {
        int32_t rc = 0;
        EXPECT_TRUE(converse(call, {}, &rc).empty());
        EXPECT_EQ(rc, KVN_E_OPENING_FILE);
    }
    std::filesystem::remove("wire_huge.bin");
}
