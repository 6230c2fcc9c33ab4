#!/usr/bin/env python3
"""Poll a terminal's journal for new events: print each unread entry, then mark it read.

    poll_events.py IP[:PORT] [INTERVAL_SECONDS [ROUNDS]]

Polls every INTERVAL_SECONDS (default 2) for ROUNDS rounds (default: until Ctrl-C).
A dropped connection is reopened by the next call; the entries not marked then come again.
"""
import sys
import time
from datetime import datetime, timezone

import kvnsdk2

EVENTS = {1: "verify", 2: "identify", 3: "enrol", 4: "door open", 5: "door close", 6: "alarm clear", 7: "card"}


def address(text):
    host, _, port = text.partition(":")
    return host, int(port) if port else 5005


def main(argv):
    if not 2 <= len(argv) <= 4:
        print(__doc__.strip(), file=sys.stderr)
        return 2
    interval = float(argv[2]) if len(argv) > 2 else 2.0
    rounds = int(argv[3]) if len(argv) > 3 else None
    try:
        with kvnsdk2.Terminal.connect(*address(argv[1])) as t:
            n = 0
            while rounds is None or n < rounds:
                for e in t.logs.unread():
                    d = e.to_dict()
                    when = datetime.fromtimestamp(d["attr_t08"], timezone.utc).strftime("%Y-%m-%d %H:%M:%S")
                    print(f"{d['log_id']:>8} {when} {EVENTS.get(d['attr_t09'], d['attr_t09']):<11} "
                          f"{d['text_t12'] or '-'} {d['text_t13']}", flush=True)
                    t.logs.mark([e.log_id])
                n += 1
                if rounds is None or n < rounds:
                    time.sleep(interval)
    except kvnsdk2.KvnError as e:
        print(f"poll_events: {e}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    try:
        sys.exit(main(sys.argv))
    except KeyboardInterrupt:
        sys.exit(130)
