// Watches a terminal's journal and prints each new event as it is recorded.
//
//   poll_events ADDRESS [SECONDS]     ADDRESS is IP[:PORT]; watches for SECONDS (default 60)
//
// Once a second it asks for the number of entries, a small exchange; only when the
// number has changed does it read the newest entries and print those it has not
// printed yet. It marks nothing, so it can run beside the nightly sync.
#include <chrono>
#include <cstdio>
#include <ctime>
#include <memory>
#include <thread>

#include "example.h"

namespace {

// Reads up to `most` entries, newest first, into `page`.
int32_t read_newest(kvn_device_conn& conn, kvn_transaction_log_query& page, uint8_t most) {
    page = kvn_transaction_log_query{};  // a read writes only the bytes each value has
    page.attr_t02 = most;                // tag 2: most entries to answer
    page.attr_t03 = 1;                   // tag 3: 1 newest first
    return kvn_get_transaction_logs(&conn, &page);
}

void print_event(const kvn_transaction_log& e) {
    char when[32] = "?";
    const std::time_t t = e.attr_t08;  // tag 8: the time, in seconds since 1970
    if (const std::tm* utc = std::gmtime(&t)) std::strftime(when, sizeof when, "%Y-%m-%d %H:%M:%S", utc);
    // Texts that fill their array carry no NUL: print at most the array.
    std::printf("  #%u  %s UTC  event %u  user %.*s  %.*s\n", unsigned(e.log_id), when, unsigned(e.attr_t09),
                int(sizeof e.text_t12), e.text_t12, int(sizeof e.text_t13), e.text_t13);
    std::fflush(stdout);  // as it happens, also into a pipe or a file
}

}  // namespace

int main(int argc, char** argv) {
    kvn_device_conn conn;
    char host[EXAMPLE_HOST_MAX];
    if (argc < 2 || argc > 3 || parse_address(argv[1], host, &conn) != 0) {
        std::fprintf(stderr, "usage: poll_events IP[:PORT] [SECONDS]\n");
        return 2;
    }
    const auto stop = std::chrono::steady_clock::now() + std::chrono::seconds(argc > 2 ? std::atoi(argv[2]) : 60);
    auto page = std::make_unique<kvn_transaction_log_query>();  // 52 KiB

    // Where we start: the newest entry now. Everything after it is new.
    uint32_t count = 0, last_id = 0;
    int32_t rc = connect_terminal(&conn);
    if (rc == 0) rc = kvn_get_transaction_log_total_count(&conn, &count);
    if (rc == 0) rc = read_newest(conn, *page, 1);
    if (rc == 0 && (page->log_count & 0xFF) == 1) last_id = page->entries[0].log_id;
    if (rc == 0) std::printf("%u entries, the newest #%u; watching for new ones\n", unsigned(count), unsigned(last_id));
    std::fflush(stdout);

    while (rc == 0 && std::chrono::steady_clock::now() < stop) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        uint32_t now = 0;
        rc = kvn_get_transaction_log_total_count(&conn, &now);
        if (rc != 0 || now == count) continue;
        // One read answers at most 255 entries: of more new ones, the oldest are not shown.
        // A count that went down (a cleared journal) reads a full page.
        const uint32_t added = now > count ? now - count : 255;
        count = now;
        rc = read_newest(conn, *page, uint8_t(added < 255 ? added : 255));
        // The page is newest first: print it backwards, skipping what was printed before.
        for (unsigned i = page->log_count & 0xFF; rc == 0 && i-- > 0;) {
            const kvn_transaction_log& e = page->entries[i];
            if (e.log_id > last_id) {
                print_event(e);
                last_id = e.log_id;
            }
        }
    }
    if (rc != 0) std::printf("polling stopped: %s\n", status_text(rc));
    kvn_close_device_conn(&conn);
    return rc == 0 ? 0 : 1;
}
