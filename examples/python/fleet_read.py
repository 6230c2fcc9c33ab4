#!/usr/bin/env python3
"""Read a whole fleet at once with asyncio: firmware, serial number, users and unread
journal entries of every terminal, one line each, in the order given.

    fleet_read.py IP[:PORT]...     (or a file of addresses with @FILE)

Every terminal has its own worker thread: a slow or unreachable one delays nobody.
"""
import asyncio
import sys

import kvnsdk2
import kvnsdk2.aio


def address(text):
    host, _, port = text.partition(":")
    return host, int(port) if port else 5005


async def read(target):
    try:
        async with kvnsdk2.aio.connect(*address(target), timeout=5) as t:
            info = (await t.info()).to_dict()
            return (f"{target:<22} firmware {info['text_3']:<10} serial {info['text_4']:<14} "
                    f"{await t.users.count():>5} users {await t.logs.count_unread():>7} unread"), True
    except kvnsdk2.KvnError as e:
        return f"{target:<22} {e}", False


async def main(targets):
    results = await asyncio.gather(*(read(t) for t in targets))
    for line, _ in results:
        print(line)
    return 0 if all(ok for _, ok in results) else 1


if __name__ == "__main__":
    args = sys.argv[1:]
    if not args:
        print(__doc__.strip(), file=sys.stderr)
        sys.exit(2)
    targets = []
    for a in args:
        targets += open(a[1:]).read().split() if a.startswith("@") else [a]
    try:
        sys.exit(asyncio.run(main(targets)))
    except KeyboardInterrupt:
        sys.exit(130)
