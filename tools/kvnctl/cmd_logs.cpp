// logs count|pull|mark|sync: the transaction journal.
#include <algorithm>
#include <atomic>
#include <iostream>
#include <sstream>
#include <thread>

#include "commands.h"
#include "sync.h"

namespace kvnctl {
namespace {

json log_page(Session& s, bool unread, uint32_t limit) {
    auto q = std::make_unique<kvn_transaction_log_query>();
    q->attr_t02 = static_cast<uint8_t>(std::min<uint32_t>(limit ? limit : 255, 255));
    check(unread ? kvn_get_unread_transaction_logs(&s.conn, q.get()) : kvn_get_transaction_logs(&s.conn, q.get()),
          "reading the journal");
    json a = json::array();
    for (uint32_t i = 0; i < (q->log_count & 0xFFu); ++i) a.push_back(to_json(q->entries[i]));
    return a;
}

// One thread and one connection per terminal, all into the same database.
int run_sync(const Context& ctx, const std::string& db) {
    std::vector<std::string> hosts = ctx.hosts;
    if (!ctx.hosts_file.empty()) {
        std::istringstream in(read_input(ctx.hosts_file));
        for (std::string h; in >> h;) hosts.push_back(h);
    }
    if (hosts.empty() || ctx.sim) hosts.assign(1, "");  // the serial line or the built-in simulator
    std::vector<SyncResult> results(hosts.size());
    std::vector<std::string> names(hosts.size());
    std::vector<std::string> open_errors(hosts.size());
    std::vector<int> open_codes(hosts.size(), 0);
    std::atomic<uint64_t> done{0}, total{0};
    std::vector<std::thread> threads;
    for (size_t i = 0; i < hosts.size(); ++i)
        threads.emplace_back([&, i] {
            Session s;
            try {
                if (hosts[i].empty()) s.open_default(ctx); else s.open_host(hosts[i]);
            } catch (const Failure& f) {
                open_errors[i] = f.what();
                open_codes[i] = f.code;
                return;
            }
            names[i] = s.name;
            uint64_t mine = 0, seen_total = 0;
            results[i] = sync_logs(&s.conn, s.name, db, [&](uint64_t read, uint64_t unread) {
                if (seen_total == 0) total += seen_total = std::max<uint64_t>(unread, 1);
                done += read - mine;
                mine = read;
                if (hosts.size() == 1 || i == 0) ctx.draw_bar("sync", done, std::max<uint64_t>(done, total));
                return !g_interrupted;
            });
        });
    for (auto& t : threads) t.join();
    ctx.end_bar();
    int code = kOk;
    json out = json::array();
    for (size_t i = 0; i < hosts.size(); ++i) {
        const auto& r = results[i];
        json j = {{"terminal", names[i].empty() ? hosts[i] : names[i]}, {"read", r.read}, {"inserted", r.inserted}};
        int c = kOk;
        std::string err = open_errors[i];
        if (!err.empty()) c = open_codes[i];
        else if (g_interrupted) c = kInterrupted, err = "interrupted";
        else if (r.database_error) c = kDatabase, err = r.error;
        else if (r.status) c = exit_for(r.status), err = r.error + ": " + status_text(r.status);
        if (c) {
            j["error"] = err;
            if (open_errors[i].empty()) err = j["terminal"].get<std::string>() + ": " + err;
            std::cerr << "kvnctl: " << err << "\n";
            if (!code) code = c;
        }
        out.push_back(j);
    }
    if (ctx.json_output) ctx.emit(out);
    else for (auto& j : out) std::cout << j["terminal"].get<std::string>() << ": " << j["read"] << " read, "
                                       << j["inserted"] << " new in " << db << "\n";
    return code;
}

}  // namespace

void register_logs(CLI::App& app, Context& ctx) {
    struct Args {
        bool unread = false;
        uint32_t limit = 0;
        std::vector<uint32_t> ids;
        std::string db;
    };
    auto a = std::make_shared<Args>();
    auto* logs = app.add_subcommand("logs", "the transaction journal");
    logs->require_subcommand(1);

    ctx.on(logs->add_subcommand("count", "total, unread and read entries"), [&ctx] {
        auto s = ctx.open();
        const uint32_t t = s->count(kvn_get_transaction_log_total_count, "total count");
        const uint32_t u = s->count(kvn_get_transaction_log_unread_count, "unread count");
        const uint32_t r = s->count(kvn_get_transaction_log_read_count, "read count");
        ctx.emit(json{{"total", t}, {"unread", u}, {"read", r}},
                 std::to_string(t) + " entries, " + std::to_string(u) + " unread, " + std::to_string(r) + " read");
        return kOk;
    });

    auto* pull = logs->add_subcommand("pull", "one page of entries as JSON (nothing is marked)");
    pull->add_flag("--unread", a->unread, "only unread entries");
    pull->add_option("--limit", a->limit, "at most N entries (1 to 255)");
    ctx.on(pull, [&ctx, a] {
        auto s = ctx.open();
        ctx.emit(log_page(*s, a->unread, a->limit));
        return kOk;
    });

    auto* mark = logs->add_subcommand("mark", "mark entries as read");
    mark->add_option("ID", a->ids, "log ids")->required();
    ctx.on(mark, [&ctx, a] {
        auto s = ctx.open();
        for (size_t i = 0; i < a->ids.size(); i += KVN_TRANSACTION_LOG_ID_MAX) {
            kvn_transaction_log_id_list ids{};
            for (size_t k = i; k < a->ids.size() && k < i + KVN_TRANSACTION_LOG_ID_MAX; ++k)
                ids.log_ids[ids.count++] = a->ids[k];
            check(kvn_mark_transaction_logs_as_read(&s->conn, &ids), "marking");
        }
        return kOk;
    });

    auto* sync = logs->add_subcommand(
        "sync", std::string("copy unread entries into SQLite exactly once, then mark them read.\nSchema:\n") +
                    kSyncSchema);
    sync->add_option("--db", a->db, "SQLite database file")->required();
    ctx.on(sync, [&ctx, a] { return run_sync(ctx, a->db); });
}

}  // namespace kvnctl
