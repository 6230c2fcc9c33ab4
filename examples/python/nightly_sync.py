#!/usr/bin/env python3
"""Nightly sync: copy every terminal's new journal entries into one SQLite database,
exactly once (kvnctl's schema: `kvnctl logs sync` may share the database).

    nightly_sync.py DATABASE IP[:PORT]...

Entries are marked as read on a terminal only once they are stored: a run that is
stopped, or a terminal that goes away, loses nothing and stores nothing twice.
"""
import sys

import kvnsdk2


def address(text):
    host, _, port = text.partition(":")
    return host, int(port) if port else 5005


def main(argv):
    if len(argv) < 3:
        print(__doc__.strip(), file=sys.stderr)
        return 2
    db, failed = argv[1], 0
    for target in argv[2:]:
        try:
            with kvnsdk2.Terminal.connect(*address(target), timeout=10) as t:
                r = t.logs.sync(db)
            print(f"{t.name}: {r.read} read, {r.inserted} new in {db}")
        except kvnsdk2.KvnError as e:
            print(f"{target}: {e}", file=sys.stderr)
            failed += 1
    return 1 if failed else 0


if __name__ == "__main__":
    try:
        sys.exit(main(sys.argv))
    except KeyboardInterrupt:
        sys.exit(130)
