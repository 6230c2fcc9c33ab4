// Exactly-once transfer of a terminal's unread journal entries into SQLite.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "kvnsdk2.h"

namespace kvnctl {

// The database schema; `kvnctl logs sync --help` and the README show it.
extern const char* const kSyncSchema;

struct SyncResult {
    int32_t status = 0;      // the library's status of the call that stopped the sync, or 0
    std::string error;       // what went wrong, for the message (empty on success)
    bool database_error = false;
    uint64_t inserted = 0;   // rows new to the database
    uint64_t read = 0;       // entries read from the terminal
};

// Reads unread entries a page at a time, stores each page in one transaction keyed by
// (terminal, log_id) and commits, and only then marks exactly those ids as read.
// progress(read so far, unread at the start) after every page; it returns false to stop.
SyncResult sync_logs(kvn_device_conn* conn, const std::string& terminal, const std::string& db_path,
                     const std::function<bool(uint64_t, uint64_t)>& progress);

}  // namespace kvnctl
