"""kvn-sim, the simulated terminal, for tests and examples.

    from kvnsdk2.testing import simulator
    with simulator(prefill_logs=100) as sim:
        with sim.terminal() as t:
            print(t.logs.count_unread())

The simulator listens on a free loopback port. faults are kvn-sim's own options
(kvn-sim --help lists them), for example ("--bad-crc",) or ("--close-after", "10").
With pytest, the fixture kvn_sim gives one per test (kvnsdk2.pytest_plugin).
"""
import contextlib
import os
import select
import socket
import subprocess
import tempfile
import time

from ._native import find_simulator

STARTUP_TIMEOUT = 10.0


class Simulator:
    """A running kvn-sim: host, port, state_dir (None: in memory), the process."""

    def __init__(self, host, port, state_dir, process, args):
        self.host = host
        self.port = port
        self.state_dir = state_dir
        self.process = process
        self.args = args

    @property
    def address(self):
        """"host:port", as kvnctl's --host takes it."""
        return f"{self.host}:{self.port}"

    def terminal(self, timeout=5.0):
        """A kvnsdk2.Terminal connected to this simulator."""
        from .terminal import Terminal
        return Terminal.connect(self.host, self.port, timeout=timeout)

    def stop(self):
        """Stops the simulator (SIGTERM, then SIGKILL after 5 s); stopping twice is harmless."""
        p = self.process
        if p.poll() is None:
            p.terminate()
            try:
                p.wait(5)
            except subprocess.TimeoutExpired:
                p.kill()
                p.wait()

    def __repr__(self):
        return f"<kvn-sim {self.address} pid {self.process.pid}>"


def _read_address(process, deadline):
    line = b""
    while not line.endswith(b"\n"):
        left = deadline - time.monotonic()
        if left <= 0 or process.poll() is not None:
            return None
        ready, _, _ = select.select([process.stdout], [], [], min(left, 0.2))
        if ready:
            chunk = os.read(process.stdout.fileno(), 256)
            if not chunk:
                return None
            line += chunk
    return line.decode().strip()


def _wait_listening(host, port, deadline):
    while time.monotonic() < deadline:
        try:
            with socket.create_connection((host, port), timeout=1.0):
                return True
        except OSError:
            time.sleep(0.05)
    return False


@contextlib.contextmanager
def simulator(state_dir=None, prefill_logs=0, faults=(), program=None):
    """Starts kvn-sim on a free loopback port, waits until it takes connections, yields
    a Simulator and stops it on exit. state_dir keeps its state across restarts (None:
    in memory); prefill_logs gives a new journal that many entries; faults are kvn-sim
    options; program is kvn-sim's path (default: KVN_SIM, else PATH)."""
    exe = program or find_simulator()
    if isinstance(faults, str):
        faults = (faults,)
    args = [exe, "--listen", "127.0.0.1:0"]
    if state_dir is not None:
        state_dir = os.fspath(state_dir)
        args += ["--state", state_dir]
    if prefill_logs:
        args += ["--prefill-logs", str(int(prefill_logs))]
    args += [str(f) for f in faults]
    with tempfile.TemporaryFile() as err:
        process = subprocess.Popen(args, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=err)
        sim = None
        try:
            deadline = time.monotonic() + STARTUP_TIMEOUT
            address = _read_address(process, deadline)
            if address:
                host, _, port = address.rpartition(":")
                if _wait_listening(host, int(port), deadline):
                    sim = Simulator(host, int(port), state_dir, process, args)
            if sim is None:
                if process.poll() is None:
                    process.kill()
                process.wait()
                err.seek(0)
                raise RuntimeError(f"kvn-sim did not start ({' '.join(args)}): exit {process.returncode}: "
                                   f"{err.read().decode(errors='replace').strip()}")
            yield sim
        finally:
            if sim is not None:
                sim.stop()
            elif process.poll() is None:
                process.kill()
                process.wait()
            process.stdout.close()
