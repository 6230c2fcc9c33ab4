"""The cookbook's Python programs (examples/python) against kvn-sim: how each one ends
and what it prints, the failures a recipe is about included."""
import contextlib
import os
import signal
import socket
import subprocess
import sys
import time

import pytest

from kvnsdk2 import records
from kvnsdk2.testing import simulator

EXAMPLES = os.path.join(os.path.dirname(__file__), "..", "..", "examples", "python")


def run(name, *args, timeout=60):
    p = subprocess.run([sys.executable, os.path.join(EXAMPLES, name), *map(str, args)], capture_output=True,
                       text=True, timeout=timeout)
    return p.returncode, p.stdout + p.stderr


def dead_address():
    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        return f"127.0.0.1:{s.getsockname()[1]}"


@pytest.fixture
def sims():
    with contextlib.ExitStack() as stack:
        yield [stack.enter_context(simulator(prefill_logs=n)) for n in (300, 20, 5)]


def with_users(sim, ids):
    with sim.terminal() as t:
        for uid in ids:
            t.call("kvn_enrollment", records.kvn_enrollment_request(user_id=uid.encode(), attr_t09=1))
    return sim


CASES = [
    ("nightly_sync.py", lambda s, d: [d / "j.db", s[0].address, s[1].address], 0,
     ["300 read, 300 new", "20 read, 20 new"]),
    ("nightly_sync.py", lambda s, d: [d / "j.db", s[2].address, dead_address()], 1,
     ["5 read, 5 new", "Connection failed (-5)"]),
    ("clone_users.py", lambda s, d: [with_users(s[0], ["amy", "bo"]).address, s[1].address], 0,
     ["amy: 1 template(s)", "2 users cloned"]),
    ("clone_users.py", lambda s, d: [s[0].address, s[1].address, "ghost"], 1, ["User not found"]),
    ("firmware_upgrade.py", lambda s, d: [s[0].address, blob(d / "fw-2.0.bin", 200000)], 0,
     ["fw-2.0.bin installed", "200000/200000"]),
    ("firmware_upgrade.py", lambda s, d: [s[0].address, d / "missing.bin"], 1, ["not a readable file"]),
    ("poll_events.py", lambda s, d: [s[2].address, 0.1, 2], 0, ["Access granted"]),
    ("fleet_read.py", lambda s, d: [x.address for x in s], 0, ["SIM0000000001", "300 unread", "5 unread"]),
    ("fleet_read.py", lambda s, d: [s[0].address, dead_address()], 1, ["Connection failed"]),
] + [(name, lambda s, d: [], 2, [name]) for name in
     ("nightly_sync.py", "clone_users.py", "firmware_upgrade.py", "poll_events.py", "fleet_read.py")]


def blob(path, size):
    path.write_bytes(os.urandom(size))
    return path


@pytest.mark.parametrize("name,args,code,expected", CASES)
def test_example(sims, tmp_path, name, args, code, expected):
    rc, out = run(name, *args(sims, tmp_path))
    assert rc == code, out
    for text in expected:
        assert text in out


def test_poll_events_prints_each_event_once(sims):
    rc, out = run("poll_events.py", sims[2].address, 0.1, 3)
    assert rc == 0 and len([line for line in out.splitlines() if "Access" in line]) == 5


def test_firmware_upgrade_cancelled_with_ctrl_c(tmp_path):
    with simulator(faults=["--latency-ms", "50"]) as sim:
        p = subprocess.Popen([sys.executable, os.path.join(EXAMPLES, "firmware_upgrade.py"), sim.address,
                              blob(tmp_path / "large.bin", 3000000)], stdout=subprocess.PIPE,
                             stderr=subprocess.PIPE)
        deadline = time.monotonic() + 30
        seen = b""
        while b"upload [" not in seen and time.monotonic() < deadline:
            seen += os.read(p.stderr.fileno(), 4096)
        p.send_signal(signal.SIGINT)
        out, err = p.communicate(timeout=30)
        assert p.returncode == 130, (seen + err).decode()[-2000:]
        assert b"nothing was installed" in err
