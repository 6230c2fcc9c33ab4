"""Terminal against kvn-sim: the JSON form against kvnctl's, settings groups, users,
transfers, errors and the reopen rule."""
import ctypes
import errno
import json
import os
import shutil
import socket
import subprocess
import threading
from datetime import datetime, timezone

import pytest

import kvnsdk2
from kvnsdk2 import records
from kvnsdk2.testing import simulator

GROUPS = kvnsdk2.Terminal.groups()


def run_kvnctl(kvnctl, sim, *args):
    p = subprocess.run([kvnctl, "--host", sim.address, "--json", *args], capture_output=True, text=True, timeout=60)
    return p.returncode, p.stdout


@pytest.mark.parametrize("group", GROUPS + ["<info>"])
def test_json_form_is_kvnctls(shared_sim, kvnctl, group):
    with shared_sim.terminal() as t:
        read = (lambda: t.info().to_dict()) if group == "<info>" else (lambda: t.get(group))
        args = ("info",) if group == "<info>" else ("get", group)
        try:
            before = read()
        except kvnsdk2.RefusedError as e:  # refused alike by both
            assert run_kvnctl(kvnctl, shared_sim, *args)[0] == 5, e
            return
        rc, out = run_kvnctl(kvnctl, shared_sim, *args)
        after = read()
    assert rc == 0
    theirs = json.loads(out)
    if group == "<info>":
        theirs = theirs["device_info"]
    assert theirs in (before, after)  # a clock may tick between the reads


CHANGES = {
    "dac": {"dac_value_3": 7, "dac_value_2": 9},
    "ethernet": {"ip_address": "10.1.2.3", "port": 6006},
    "job-code-list": {"codes": [{"id": 4, "name": "night"}, {"id": 9, "name": "day"}]},
    "door-open-schedule": {"value": 1, "days": [{"slots": "0102030405060708"}]},
    "wiegand-pulse": {"attr_t07": 3, "attr_t08": 500},
    "pacs": {"value": 12},
    "voip": {"text_2": "sip.example", "value_7": 5070},
    "led": [{"index": 1, "enable": 0}, {"index": 2, "option": 3}],
}


def test_every_settings_group_survives_its_json_form(terminal):
    changed = 0
    for g in GROUPS:
        before = terminal.get(g)
        try:
            terminal.set(g, before)
        except ValueError as e:
            assert "read only" in str(e)
            continue
        assert terminal.get(g) == before, g
        if g in CHANGES:
            terminal.set(g, CHANGES[g], merge=True)
            after = terminal.get(g)
            pairs = enumerate(CHANGES[g]) if isinstance(after, list) else CHANGES[g].items()
            for k, v in pairs:
                assert after[k] == (dict(before[k], **v) if isinstance(after, list) else v), (g, k)
            changed += 1
    assert changed == len(CHANGES)


@pytest.mark.kvn_sim(faults=["--no-answer"])
@pytest.mark.parametrize("group,value,message", [
    ("dac", {"bogus": 1}, "dac: unknown field 'bogus'"),
    ("pacs", {"value": -1}, "pacs.value: -1 is out of range"),
    ("pacs", 5000000000, "pacs.value: 5000000000 is out of range"),
    ("led", [{}] * 18, "led: more than 17 elements"),
    ("audio-list", {}, "audio-list is read only"),
    ("nothing", {}, "'nothing' is not a settings group"),
])
def test_bad_settings_are_refused_before_anything_is_sent(kvn_sim, group, value, message):
    # The simulator never answers: anything sent would wait out the timeout.
    with kvn_sim.terminal(timeout=30) as t, pytest.raises(ValueError, match=message):
        t.set(group, value)


def enrolled(t, user, fingers):
    for f in fingers:
        req = records.kvn_enrollment_request(user_id=user.encode(), attr_t09=f)
        t.call("kvn_enrollment", req)
    return t.users.get(user)


@pytest.mark.parametrize("user,fingers,extra", [
    ("plain", [], {"text_t03": "Plain User"}),
    ("two-fingers", [1, 2], {"text_t03": "Two Fingers", "attr_t05": 3}),
    ("accents", [3], {"text_t03": "Zoë Ångström", "text_t10": "PIN"}),
])
def test_users_and_templates_round_trip(terminal, user, fingers, extra):
    if fingers:
        d = enrolled(terminal, user, fingers).to_dict()
        assert len(d["templates"]) == len(fingers) and all(t["template_length"] for t in d["templates"])
        terminal.users.delete(user)
    else:
        d = {"user_id": user}
    d.update(extra)
    terminal.users.put(d)
    got = terminal.users.get(user).to_dict()
    assert {k: got[k] for k in d if not k.endswith("_length")} == {k: v for k, v in d.items()
                                                                  if not k.endswith("_length")}
    with pytest.raises(kvnsdk2.RefusedError) as e:
        terminal.users.put(got)
    assert e.value.code == -2012
    terminal.users.put(dict(got, text_t03="Renamed"), replace=True)
    assert terminal.users.get(user).to_dict()["text_t03"] == "Renamed"
    terminal.users.delete(user)
    with pytest.raises(kvnsdk2.RefusedError, match="User not found"):
        terminal.users.get(user)


def test_users_list_pages_through_everyone(terminal):
    ids = [f"u{i:02d}" for i in range(7)]
    for uid in ids:
        terminal.users.put({"user_id": uid, "text_t03": uid.upper()})
    assert terminal.users.count() == 7
    got = list(terminal.users.list(page_size=3))
    assert sorted(r.to_dict()["user_id"] for r in got) == ids
    assert all(r.to_dict()["text_t03"] == r.to_dict()["user_id"].upper() for r in got)


def test_time_and_door(terminal):
    when = datetime(2030, 1, 2, 3, 4, 5, tzinfo=timezone.utc)
    terminal.time = when
    assert 0 <= (terminal.time - when).total_seconds() < 5
    before = terminal.logs.count()
    terminal.door.open(3)
    terminal.door.close()
    assert terminal.logs.count() == before + 2  # the terminal journals door actions


@pytest.mark.parametrize("size", [0, 1000, 3 * 65536 + 17])
def test_transfer_with_progress(terminal, tmp_path, size):
    data = os.urandom(size)
    src, dst = tmp_path / "src.bin", tmp_path / "dst.bin"
    src.write_bytes(data)
    seen = {"up": [], "down": []}
    terminal.files.upload(src, "blob.bin", progress=lambda d, t: seen["up"].append((d, t)))
    terminal.files.download("blob.bin", dst, progress=lambda d, t: seen["down"].append((d, t)))
    assert dst.read_bytes() == data
    for calls in seen.values():
        assert calls[-1] == (size, size)
        assert [d for d, _ in calls] == sorted(d for d, _ in calls)
    assert sorted(os.listdir(tmp_path)) == ["dst.bin", "src.bin"]


class Boom(Exception):
    pass


def cancel(d, t):
    return False


def boom(d, t):
    raise Boom()


@pytest.mark.parametrize("direction", ["upload", "download"])
@pytest.mark.parametrize("progress,raised", [(cancel, kvnsdk2.TransferCancelled), (boom, Boom)])
def test_transfer_cancelled_by_its_progress(terminal, tmp_path, direction, progress, raised):
    src = tmp_path / "src.bin"
    src.write_bytes(os.urandom(200000))
    terminal.files.upload(src, "big.bin")
    with pytest.raises(raised):
        if direction == "upload":
            terminal.files.upload(src, "other.bin", progress=progress)
        else:
            terminal.files.download("big.bin", tmp_path / "dst.bin", progress=progress)
    assert os.listdir(tmp_path) == ["src.bin"]  # no file, no temporary left
    assert terminal.info().to_dict()["text_4"]  # the connection goes on


def free_port():
    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        return s.getsockname()[1]


def test_unreachable_port_is_a_link_error():
    with pytest.raises(kvnsdk2.LinkError) as e:
        kvnsdk2.Terminal.connect("127.0.0.1", free_port(), timeout=2)
    assert e.value.code == -5 and e.value.message == "Connection failed"
    assert e.value.os_error.errno == errno.ECONNREFUSED


def test_refused_command_is_the_terminals_status(terminal):
    with pytest.raises(kvnsdk2.RefusedError) as e:
        terminal.users.get("nobody")
    assert (e.value.code, e.value.message) == (-2021, "User not found")
    assert terminal.raw(9999, "get") == (-1002, b"")  # raw() returns statuses, never raises them


@pytest.mark.parametrize("faults,error,code", [
    pytest.param(["--bad-crc"], kvnsdk2.ProtocolError, -6, marks=pytest.mark.kvn_sim(faults=["--bad-crc"])),
    pytest.param(["--bad-sync"], kvnsdk2.ProtocolError, -12, marks=pytest.mark.kvn_sim(faults=["--bad-sync"])),
    pytest.param(["--close-after"], kvnsdk2.LinkError, -2,
                 marks=pytest.mark.kvn_sim(faults=["--close-after", "10"])),
    pytest.param(["--no-answer"], kvnsdk2.LinkError, -2, marks=pytest.mark.kvn_sim(faults=["--no-answer"])),
])
def test_faulty_terminal_raises_its_code(kvn_sim, faults, error, code):
    with kvn_sim.terminal(timeout=0.5) as t:
        for _ in range(2):  # the second exchange goes over a reopened connection
            with pytest.raises(error) as e:
                t.info()
            assert e.value.code == code


class Proxy:
    """Forwards one port to the simulator, spoiling the first answer of the first connection."""

    def __init__(self, target, spoil):
        self.target, self.spoil, self.connections = target, spoil, 0
        self.server = socket.create_server(("127.0.0.1", 0))
        self.port = self.server.getsockname()[1]
        threading.Thread(target=self.serve, daemon=True).start()

    def serve(self):
        while True:
            try:
                client, _ = self.server.accept()
            except OSError:
                return
            self.connections += 1
            upstream = socket.create_connection(self.target)
            threading.Thread(target=self.pipe, args=(client, upstream, None), daemon=True).start()
            threading.Thread(target=self.pipe, args=(upstream, client, self.spoil if self.connections == 1 else None),
                             daemon=True).start()

    @staticmethod
    def pipe(src, dst, spoil):
        try:
            while data := src.recv(65536):
                if spoil:
                    data, spoil = spoil(data), None
                    if data is None:
                        break
                dst.sendall(data)
        except OSError:
            pass
        for s in (src, dst):
            try:
                s.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass


@pytest.mark.parametrize("spoil,error,code", [
    (lambda d: bytes([d[0] ^ 0xFF]) + d[1:], kvnsdk2.ProtocolError, -12),   # bad sync word, rest unread
    (lambda d: d[:-1] + bytes([d[-1] ^ 0xFF]), kvnsdk2.ProtocolError, -6),  # bad CRC
    (lambda d: None, kvnsdk2.LinkError, -2),                                # closed before the answer
])
def test_connection_is_reopened_after_a_broken_answer(kvn_sim, spoil, error, code):
    proxy = Proxy((kvn_sim.host, kvn_sim.port), spoil)
    with kvnsdk2.Terminal.connect("127.0.0.1", proxy.port, timeout=2) as t:
        with pytest.raises(error) as e:
            t.info()
        assert e.value.code == code
        assert t.info().to_dict()["text_4"] == "SIM0000000001"
        assert t.users.count() == 0
    assert proxy.connections == 2
    proxy.server.close()


@pytest.mark.parametrize("call", [
    lambda t: t.info(), lambda t: t.get("led"), lambda t: t.set("pacs", 1), lambda t: t.users.count(),
    lambda t: t.raw(201, "get"), lambda t: list(t.logs.unread()), lambda t: t.door.open(1),
])
def test_a_closed_terminal_raises(terminal, call):
    terminal.close()
    terminal.close()
    with pytest.raises(ValueError, match="closed"):
        call(terminal)


@pytest.mark.parametrize("env,bundled,system,found,said", [
    ("nowhere.so", True, True, None, ["KVNSDK2_LIBRARY=", "nowhere.so"]),  # named: that one or none
    (None, True, False, "bundle", []),
    (None, False, True, "system", []),
    (None, False, False, None, ["KVNSDK2_LIBRARY: not set", "no bundled copy", 'find_library("kvnsdk2")']),
])
def test_library_is_looked_for_in_order(monkeypatch, tmp_path, env, bundled, system, found, said):
    from kvnsdk2 import _native, lib
    real = os.path.realpath(lib.LIBRARY_PATH)
    bundle = tmp_path / "bundle"
    bundle.mkdir()
    if bundled:
        shutil.copyfile(real, bundle / "libkvnsdk2.so")
    monkeypatch.setattr(_native, "_loaded", None)
    monkeypatch.setattr(_native, "_BUNDLE_DIR", str(bundle))
    monkeypatch.setattr(_native, "_BUNDLED_NAMES", ("libkvnsdk2.so",))
    monkeypatch.setattr(_native.ctypes.util, "find_library", lambda name: real if system else None)
    if env:
        monkeypatch.setenv("KVNSDK2_LIBRARY", str(tmp_path / env))
    else:
        monkeypatch.delenv("KVNSDK2_LIBRARY", raising=False)
    if found is None:
        with pytest.raises(kvnsdk2.LibraryNotFoundError) as e:
            _native.load_library()
        for text in said:
            assert text in str(e.value)
    else:
        assert _native.load_library()._name == (str(bundle / "libkvnsdk2.so") if found == "bundle" else real)


def test_serial_line(tmp_path):
    sim = subprocess.Popen([os.environ["KVN_SIM"], "--serial"], stdout=subprocess.PIPE, text=True)
    try:
        path = sim.stdout.readline().strip()
        with kvnsdk2.Terminal.serial(path, 115200, timeout=5) as t:
            assert t.name == path and t.info().to_dict()["text_4"] == "SIM0000000001"
        with pytest.raises(kvnsdk2.LinkError) as e:
            kvnsdk2.Terminal.serial(tmp_path / "no-such-port")
        assert e.value.code == -5 and e.value.os_error.errno == errno.ENOENT
    finally:
        sim.terminate()
        sim.wait()


def test_timeouts_follow_the_open_terminals(shared_sim):
    from kvnsdk2 import lib
    limits = [ctypes.c_int32() for _ in range(3)]

    def read_ms():
        lib.kvn_ext_get_timeouts(*map(ctypes.byref, limits))
        return [v.value for v in limits]
    with shared_sim.terminal(timeout=0.5):
        assert read_ms() == [500] * 3
        with shared_sim.terminal(timeout=2):
            assert read_ms() == [2000] * 3  # the largest of those open
        assert read_ms() == [500] * 3


def test_simulator_reports_a_bad_option():
    with pytest.raises(RuntimeError, match="unknown option --bogus"):
        with simulator(faults=["--bogus"]):
            pass
