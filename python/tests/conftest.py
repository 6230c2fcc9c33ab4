"""The package's tests run against kvn-sim (the kvn_sim fixture of kvnsdk2.pytest_plugin)
and compare with the description and with kvnctl. They find them through:

  KVN_SIM              kvn-sim (else on PATH)
  KVNSDK2_DESCRIPTION  kvnsdk2.json (else the build tree's)
  KVNCTL               kvnctl (else the build tree's)
"""
import json
import os
import shutil

import pytest

from kvnsdk2._native import find_simulator
from kvnsdk2.testing import simulator

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
BUILD = os.path.join(ROOT, "build", "default")


def pytest_sessionstart(session):
    # A test run without the simulator would skip most tests and prove nothing.
    find_simulator()


@pytest.fixture(scope="session")
def description():
    path = os.environ.get("KVNSDK2_DESCRIPTION") or os.path.join(BUILD, "share", "kvnsdk2", "kvnsdk2.json")
    with open(path, encoding="utf-8") as f:
        return json.load(f)


@pytest.fixture(scope="session")
def kvnctl():
    path = os.environ.get("KVNCTL") or os.path.join(BUILD, "tools", "kvnctl", "kvnctl")
    if not os.path.exists(path):
        path = shutil.which("kvnctl")
    assert path, "kvnctl was not found: set KVNCTL"
    return path


@pytest.fixture(scope="module")
def shared_sim():
    """One simulator for a module's tests that do not change what others read."""
    with simulator() as sim:
        yield sim


@pytest.fixture
def terminal(kvn_sim):
    with kvn_sim.terminal() as t:
        yield t
