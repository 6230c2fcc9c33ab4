#include "sync.h"

#include <sqlite3.h>

#include <memory>

#include "records.h"

namespace kvnctl {

const char* const kSyncSchema =
    "CREATE TABLE IF NOT EXISTS transaction_log (\n"
    "  terminal TEXT NOT NULL,     -- the --host as given (or 'sim')\n"
    "  log_id   INTEGER NOT NULL,  -- the terminal's journal id\n"
    "  time     INTEGER NOT NULL,  -- seconds since 1970 (attr_t08)\n"
    "  event    INTEGER NOT NULL,  -- event code (attr_t09)\n"
    "  user_id  TEXT NOT NULL,     -- text_t12, empty when none\n"
    "  record   TEXT NOT NULL,     -- the whole entry as JSON\n"
    "  synced   INTEGER NOT NULL DEFAULT (strftime('%s','now')),\n"
    "  PRIMARY KEY (terminal, log_id)\n"
    ");";

namespace {

struct Db {
    sqlite3* db = nullptr;
    ~Db() { sqlite3_close(db); }
    bool exec(const char* sql) { return sqlite3_exec(db, sql, nullptr, nullptr, nullptr) == SQLITE_OK; }
    std::string error() const { return db ? sqlite3_errmsg(db) : "cannot open the database"; }
};

struct Stmt {
    sqlite3_stmt* s = nullptr;
    ~Stmt() { sqlite3_finalize(s); }
};

}  // namespace

SyncResult sync_logs(kvn_device_conn* conn, const std::string& terminal, const std::string& db_path,
                     const std::function<bool(uint64_t, uint64_t)>& progress) {
    SyncResult res;
    Db db;
    auto fail_db = [&](const std::string& what) {
        res.database_error = true;
        res.error = db_path + ": " + what + ": " + db.error();
        db.exec("ROLLBACK");
        return res;
    };
    if (sqlite3_open(db_path.c_str(), &db.db) != SQLITE_OK) return fail_db("cannot open");
    sqlite3_busy_timeout(db.db, 60000);
    if (!db.exec("PRAGMA journal_mode=WAL") || !db.exec(kSyncSchema)) return fail_db("cannot create the schema");
    Stmt ins;
    if (sqlite3_prepare_v2(db.db,
                           "INSERT OR IGNORE INTO transaction_log (terminal, log_id, time, event, user_id, record) "
                           "VALUES (?1, ?2, ?3, ?4, ?5, ?6)",
                           -1, &ins.s, nullptr) != SQLITE_OK)
        return fail_db("cannot prepare");

    uint32_t unread = 0;
    if ((res.status = kvn_get_transaction_log_unread_count(conn, &unread)) != 0) {
        res.error = "unread count";
        return res;
    }
    auto query = std::make_unique<kvn_transaction_log_query>();
    auto ids = std::make_unique<kvn_transaction_log_id_list>();
    for (;;) {
        *query = kvn_transaction_log_query{};
        query->attr_t02 = 255;  // at most 255 entries a page, so that the count's byte holds them
        if ((res.status = kvn_get_unread_transaction_logs(conn, query.get())) != 0) {
            res.error = "reading unread entries";
            return res;
        }
        const uint32_t n = query->log_count & 0xFFu;
        if (n == 0) break;
        if (!db.exec("BEGIN IMMEDIATE")) return fail_db("cannot begin");
        for (uint32_t i = 0; i < n; ++i) {
            const kvn_transaction_log& e = query->entries[i];
            const std::string user(e.text_t12, strnlen(e.text_t12, sizeof e.text_t12));
            const std::string rec = to_json(e).dump();
            sqlite3_reset(ins.s);
            sqlite3_bind_text(ins.s, 1, terminal.c_str(), -1, SQLITE_TRANSIENT);
            sqlite3_bind_int64(ins.s, 2, e.log_id);
            sqlite3_bind_int64(ins.s, 3, e.attr_t08);
            sqlite3_bind_int64(ins.s, 4, e.attr_t09);
            sqlite3_bind_text(ins.s, 5, user.c_str(), -1, SQLITE_TRANSIENT);
            sqlite3_bind_text(ins.s, 6, rec.c_str(), -1, SQLITE_TRANSIENT);
            if (sqlite3_step(ins.s) != SQLITE_DONE) return fail_db("cannot insert");
            res.inserted += static_cast<uint64_t>(sqlite3_changes(db.db));
        }
        if (!db.exec("COMMIT")) return fail_db("cannot commit");
        // Stored for good: only now are these entries marked as read on the terminal.
        for (uint32_t i = 0; i < n; i += KVN_TRANSACTION_LOG_ID_MAX) {
            *ids = kvn_transaction_log_id_list{};
            const uint32_t m = std::min<uint32_t>(n - i, KVN_TRANSACTION_LOG_ID_MAX);
            for (uint32_t k = 0; k < m; ++k) ids->log_ids[k] = query->entries[i + k].log_id;
            ids->count = static_cast<uint8_t>(m);
            if ((res.status = kvn_mark_transaction_logs_as_read(conn, ids.get())) != 0) {
                res.error = "marking entries as read";
                return res;
            }
        }
        res.read += n;
        if (progress && !progress(res.read, unread)) {
            res.error = "interrupted";
            return res;
        }
    }
    return res;
}

}  // namespace kvnctl
