#!/usr/bin/env python3
"""Clone users, templates included, from one terminal to another.

    clone_users.py FROM_IP[:PORT] TO_IP[:PORT] [USER_ID...]

Without user ids every user is cloned; one the target already holds is replaced.
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
    try:
        with kvnsdk2.Terminal.connect(*address(argv[1])) as src, kvnsdk2.Terminal.connect(*address(argv[2])) as dst:
            users = (src.users.get(uid) for uid in argv[3:]) if len(argv) > 3 else src.users.list()
            n = 0
            for user in users:
                dst.users.put(user, replace=True)
                print(f"{user.to_dict()['user_id']}: {user.template_count} template(s)")
                n += 1
            print(f"{n} users cloned to {dst.name}")
    except kvnsdk2.KvnError as e:
        print(f"clone_users: {e}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    try:
        sys.exit(main(sys.argv))
    except KeyboardInterrupt:
        sys.exit(130)
