#!/usr/bin/env python3
"""Firmware upgrade with a progress bar: upload the package, then install it.

    firmware_upgrade.py IP[:PORT] PACKAGE

Ctrl-C during the upload cancels it cleanly (exit 130); nothing is installed then.
"""
import os
import sys

import kvnsdk2


def address(text):
    host, _, port = text.partition(":")
    return host, int(port) if port else 5005


def bar(done, total):
    width = 30
    fill = width * done // total if total else width
    print(f"\rupload [{'#' * fill}{' ' * (width - fill)}] {done}/{total}", end="", file=sys.stderr, flush=True)


def main(argv):
    if len(argv) != 3:
        print(__doc__.strip(), file=sys.stderr)
        return 2
    package = argv[2]
    try:
        with kvnsdk2.Terminal.connect(*address(argv[1]), timeout=30) as t:
            before = t.info().to_dict()["text_3"]
            try:
                t.files.upload(package, os.path.basename(package), progress=bar, file_type=1)
            finally:
                print(file=sys.stderr)
            t.call("kvn_upgrade_firware")
            print(f"{t.name}: firmware {before}, {os.path.basename(package)} installed")
    except KeyboardInterrupt:
        print("cancelled: nothing was installed", file=sys.stderr)
        return 130
    except (kvnsdk2.KvnError, ValueError) as e:
        print(f"firmware_upgrade: {e}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
