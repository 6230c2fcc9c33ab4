"""Exactly-once transfer of a terminal's unread journal entries into SQLite, in the
same database schema as `kvnctl logs sync` (one database may take both).

Each page of unread entries is stored in one transaction keyed by (terminal, log_id)
and committed; only then are exactly those ids marked as read on the terminal. A run
that stops anywhere leaves every entry either stored, or unread on the terminal, or
both; a later run stores nothing twice.
"""
import collections
import json
import sqlite3

# The schema as kvnctl writes it (tools/kvnctl/sync.cpp), so that both tools share databases.
SCHEMA = (
    "CREATE TABLE IF NOT EXISTS transaction_log (\n"
    "  terminal TEXT NOT NULL,     -- the --host as given (or 'sim')\n"
    "  log_id   INTEGER NOT NULL,  -- the terminal's journal id\n"
    "  time     INTEGER NOT NULL,  -- seconds since 1970 (attr_t08)\n"
    "  event    INTEGER NOT NULL,  -- event code (attr_t09)\n"
    "  user_id  TEXT NOT NULL,     -- text_t12, empty when none\n"
    "  record   TEXT NOT NULL,     -- the whole entry as JSON\n"
    "  synced   INTEGER NOT NULL DEFAULT (strftime('%s','now')),\n"
    "  PRIMARY KEY (terminal, log_id)\n"
    ");")

_INSERT = ("INSERT OR IGNORE INTO transaction_log (terminal, log_id, time, event, user_id, record) "
           "VALUES (?1, ?2, ?3, ?4, ?5, ?6)")

SyncResult = collections.namedtuple("SyncResult", "read inserted complete")
SyncResult.__doc__ = ("What a sync did: entries read from the terminal (and marked as read), rows new to the "
                      "database, and whether it ran until no unread entry was left (False: the progress "
                      "callback stopped it).")

PAGE = 255  # entries per read: the answer's one-byte count holds no more


def _text(value):
    """A text for SQLite: str when it is UTF-8, else its bytes (kept as they are)."""
    try:
        value.encode("utf-8")
        return value
    except UnicodeEncodeError:
        return value.encode("utf-8", "surrogateescape")


def _record_json(entry):
    """The entry as kvnctl stores it: compact JSON, non-ASCII text as it is."""
    d = entry.to_dict()
    text = json.dumps(d, separators=(",", ":"), ensure_ascii=False)
    try:
        text.encode("utf-8")
    except UnicodeEncodeError:  # bytes that are not UTF-8 travel as \\udcXX escapes
        text = json.dumps(d, separators=(",", ":"))
    return text


def sync_logs(logs, terminal, path, progress=None):
    """The sync itself, over a Terminal's logs (see Logs.sync)."""
    db = sqlite3.connect(path, timeout=60.0, isolation_level=None)
    try:
        db.execute("PRAGMA journal_mode=WAL")
        db.execute(SCHEMA)
        unread = logs.count_unread()
        read = inserted = 0
        while True:
            entries = logs._read_page(unread=True, limit=PAGE)
            if not entries:
                return SyncResult(read, inserted, True)
            db.execute("BEGIN IMMEDIATE")
            try:
                for e in entries:
                    cur = db.execute(_INSERT, (terminal, e.log_id, e.attr_t08, e.attr_t09,
                                               _text(e.to_dict()["text_t12"]), _record_json(e)))
                    inserted += cur.rowcount
                db.execute("COMMIT")
            except BaseException:
                db.execute("ROLLBACK")
                raise
            # Stored for good: only now are these entries marked as read on the terminal.
            logs.mark([e.log_id for e in entries])
            read += len(entries)
            if progress is not None and progress(read, unread) is False:
                return SyncResult(read, inserted, False)
    finally:
        db.close()
