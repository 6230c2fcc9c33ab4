// tour: one step of each family against the built-in simulator.
#include <sqlite3.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <iostream>

#include "commands.h"
#include "sync.h"

namespace kvnctl {
namespace {

// Rows in the sync's table, or -1 when the database cannot be read.
int64_t rows_in(const std::string& db) {
    sqlite3* h = nullptr;
    int64_t rows = -1;
    if (sqlite3_open(db.c_str(), &h) == SQLITE_OK) {
        sqlite3_stmt* q = nullptr;
        if (sqlite3_prepare_v2(h, "SELECT count(*) FROM transaction_log", -1, &q, nullptr) == SQLITE_OK &&
            sqlite3_step(q) == SQLITE_ROW)
            rows = sqlite3_column_int64(q, 0);
        sqlite3_finalize(q);
    }
    sqlite3_close(h);
    return rows;
}

// An 8 MiB file of varied bytes under /tmp, uploaded as NAME and removed.
void upload_firmware_sized(const Context& ctx, Session& s, const std::string& name) {
    char path[] = "/tmp/kvnctl-tour-XXXXXX";
    const int fd = mkstemp(path);
    if (fd < 0) throw Failure(kBadInput, "cannot create a temporary file");
    std::vector<uint8_t> block(1 << 20);
    for (size_t i = 0; i < block.size(); ++i) block[i] = static_cast<uint8_t>(i * 2654435761u >> 24);
    bool written = true;
    for (int i = 0; i < 8 && written; ++i)
        written = write(fd, block.data(), block.size()) == static_cast<ssize_t>(block.size());
    close(fd);
    try {
        if (!written) throw Failure(kBadInput, std::string(path) + ": cannot be written");
        upload(ctx, s, path, name, 1);
    } catch (...) {
        std::remove(path);
        throw;
    }
    std::remove(path);
}

int tour(const Context& ctx, const std::string& tour_db) {
    // It enrols, uploads and marks the journal read: not something to do to a real terminal.
    if (!ctx.hosts.empty() || !ctx.serial.empty())
        throw Failure(kUsage, "tour runs against the built-in simulator only");
    auto s = ctx.open();
    const bool text = !ctx.json_output;
    auto step = [text](const std::string& t) { if (text) std::cout << "== " << t << "\n"; };
    json out;

    step("information");
    auto info = std::make_unique<kvn_device_info>();
    check(kvn_get_device_info(&s->conn, info.get()), "device information");
    out["terminal"] = {{"library", kvn_get_sdk2_version()}, {"firmware", info->text_3}, {"serial", info->text_4}};
    if (text) std::cout << "library " << kvn_get_sdk2_version() << ", firmware " << info->text_3
                        << ", serial " << info->text_4 << "\n";

    step("door opened for 3 s");
    check(kvn_open_door_for_time(&s->conn, 3, 0), "door open");
    out["door"] = "opened";

    step("a user enrolled, its template stored and read back");
    kvn_enrollment_request req{};
    std::snprintf(req.user_id, sizeof req.user_id, "tour-%ld", static_cast<long>(std::time(nullptr)));
    req.attr_t09 = 1;
    check(kvn_enrollment(&s->conn, &req), "enrolment");
    auto rec = get_user(*s, req.user_id);
    out["user"] = {{"user_id", rec->user_id}, {"templates", rec->template_count},
                   {"template_length", rec->templates[0].template_length}};
    if (text) std::cout << rec->user_id << ": " << rec->template_count << " template(s), "
                        << rec->templates[0].template_length << " bytes read back\n";

    step("a firmware-sized file uploaded");
    upload_firmware_sized(ctx, *s, "tour-firmware.bin");
    out["file"] = {{"name", "tour-firmware.bin"}, {"bytes", 8 << 20}};
    if (text) std::cout << "8 MiB uploaded as tour-firmware.bin\n";

    step("logs synced into SQLite and counted");
    std::string db = tour_db;
    if (db.empty()) {
        char dbt[] = "/tmp/kvnctl-tour-db-XXXXXX";
        const int dfd = mkstemp(dbt);
        if (dfd >= 0) close(dfd);
        db = dbt;
    }
    const SyncResult r = sync_logs(&s->conn, s->name, db, [&ctx](uint64_t done, uint64_t total) {
        ctx.draw_bar("sync", done, std::max(done, total));
        return !g_interrupted;
    });
    ctx.end_bar();
    if (r.database_error) throw Failure(kDatabase, r.error);
    check(r.status, r.error.empty() ? "sync" : r.error);
    const int64_t rows = rows_in(db);
    if (tour_db.empty())
        for (const char* sfx : {"", "-wal", "-shm"}) std::remove((db + sfx).c_str());
    const uint32_t unread = s->count(kvn_get_transaction_log_unread_count, "unread count");
    out["logs"] = {{"synced", r.read}, {"rows", rows}, {"unread", unread}};
    if (text) std::cout << r.read << " entries synced, " << rows << " rows in the database, " << unread
                        << " unread on the terminal\n";
    else ctx.emit(out);
    return kOk;
}

}  // namespace

void register_tour(CLI::App& app, Context& ctx) {
    auto db = std::make_shared<std::string>();
    auto* tour_cmd = app.add_subcommand(
        "tour", "a walk through the families against the built-in simulator: information, door, a user, a file, logs");
    tour_cmd->add_option("--db", *db, "SQLite database for the log step (default: a temporary file)");
    ctx.on(tour_cmd, [&ctx, db] { return tour(ctx, *db); });
}

}  // namespace kvnctl
