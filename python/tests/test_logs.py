"""The journal: unread entries, marks, and the exactly-once sync into kvnctl's schema."""
import sqlite3
import subprocess

import pytest

import kvnsdk2
from kvnsdk2 import _sync
from kvnsdk2.testing import simulator

ENTRIES = 600


def rows(db):
    with sqlite3.connect(db) as c:
        return c.execute("SELECT terminal, log_id, time, event, user_id, record FROM transaction_log "
                         "ORDER BY log_id").fetchall()


@pytest.mark.kvn_sim(prefill_logs=300)
@pytest.mark.parametrize("mark", [False, True])
def test_unread_ends_where_marks_stop(terminal, mark):
    seen = []
    for e in terminal.logs.unread():
        seen.append(e.log_id)
        if mark:
            terminal.logs.mark([e.log_id])
    assert seen == list(range(1, len(seen) + 1))
    # Unmarked, the oldest page comes back again: one page (as many as fit an answer) and no more.
    assert len(seen) == 300 if mark else 0 < len(seen) < 300
    assert terminal.logs.count_unread() == 300 - (len(seen) if mark else 0)


class Stop(Exception):
    pass


def stop_by_progress(monkeypatch, t):
    return lambda read, unread: False


def fail_marking(monkeypatch, t):
    """The page is committed, then marking it fails: stored, still unread."""
    def mark(self, ids):
        monkeypatch.undo()
        raise Stop()
    monkeypatch.setattr(kvnsdk2.terminal.Logs, "mark", mark)


def fail_storing(monkeypatch, t):
    """A row of the second page cannot be made: that page is rolled back, not marked."""
    calls = []

    def record_json(entry):
        calls.append(entry.log_id)
        if len(calls) == 300:
            raise Stop()
        return original(entry)
    original = _sync._record_json
    monkeypatch.setattr(_sync, "_record_json", record_json)


def drop_link(monkeypatch, t):
    """The connection breaks after the first page is stored and marked."""
    def progress(read, unread):
        t.close()
        return True
    return progress


@pytest.mark.kvn_sim(prefill_logs=ENTRIES)
@pytest.mark.parametrize("interrupt", [stop_by_progress, fail_marking, fail_storing, drop_link])
def test_sync_is_exactly_once_after_an_interrupted_run(kvn_sim, tmp_path, monkeypatch, interrupt):
    db = tmp_path / "logs.db"
    with kvn_sim.terminal() as t:
        progress = interrupt(monkeypatch, t)
        try:
            result = t.logs.sync(db, progress=progress)
            assert not result.complete and 0 < result.read < ENTRIES
        except (Stop, ValueError):
            pass
    monkeypatch.undo()
    with kvn_sim.terminal() as t:
        result = t.logs.sync(db)
        assert result.complete and t.logs.count_unread() == 0
    got = rows(db)
    assert [r[1] for r in got] == list(range(1, ENTRIES + 1))  # each entry once, none missing
    assert {r[0] for r in got} == {kvn_sim.address}


def test_sync_shares_kvnctls_database(kvnctl, tmp_path):
    """A run of each tool over the same journal writes the same rows, and either may
    finish what the other began."""
    ours, theirs, both = (tmp_path / n for n in ("ours.db", "theirs.db", "both.db"))
    with simulator(prefill_logs=ENTRIES) as a, simulator(prefill_logs=ENTRIES) as b, \
            simulator(prefill_logs=ENTRIES) as c:
        with a.terminal() as t:
            t.logs.sync(ours)
        subprocess.run([kvnctl, "--host", b.address, "logs", "sync", "--db", str(theirs)], check=True,
                       capture_output=True, timeout=120)
        with c.terminal() as t:
            assert not t.logs.sync(both, progress=lambda read, unread: False).complete
        subprocess.run([kvnctl, "--host", c.address, "logs", "sync", "--db", str(both)], check=True,
                       capture_output=True, timeout=120)
        with c.terminal() as t:
            assert t.logs.sync(both).read == 0
    strip = [r[1:] for r in rows(ours)]
    assert strip == [r[1:] for r in rows(theirs)] == [r[1:] for r in rows(both)]
    assert len(strip) == ENTRIES
    schema = [sqlite3.connect(p).execute("SELECT sql FROM sqlite_master WHERE name = 'transaction_log'").fetchone()
              for p in (ours, theirs)]
    assert schema[0] == schema[1]
