"""The kvn_sim pytest fixture (registered through the pytest11 entry point).

    def test_door(kvn_sim):
        with kvn_sim.terminal() as t:
            t.door.open(3)

    @pytest.mark.kvn_sim(prefill_logs=500, faults=["--latency-ms", "20"])
    def test_slow_sync(kvn_sim, tmp_path): ...

The marker's keywords are those of kvnsdk2.testing.simulator(). Without kvn-sim
(KVN_SIM unset and none on PATH) the tests that use the fixture are skipped.
"""
import pytest

from ._native import SimulatorNotFoundError, find_simulator
from .testing import simulator


def pytest_configure(config):
    config.addinivalue_line("markers", "kvn_sim(**options): options of the kvn_sim fixture's simulator "
                                       "(state_dir, prefill_logs, faults)")


@pytest.fixture
def kvn_sim(request):
    """A kvn-sim of this test's own on a free loopback port (a kvnsdk2.testing.Simulator)."""
    try:
        program = find_simulator()
    except SimulatorNotFoundError as e:
        pytest.skip(str(e))
    marker = request.node.get_closest_marker("kvn_sim")
    options = dict(marker.kwargs) if marker else {}
    with simulator(program=program, **options) as sim:
        yield sim
