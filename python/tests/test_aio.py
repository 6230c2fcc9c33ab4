"""kvnsdk2.aio: a fleet read that never blocks the event loop."""
import asyncio
import contextlib
import time

import pytest

import kvnsdk2.aio
from kvnsdk2.testing import simulator

LATENCY_MS = 1000


@pytest.mark.parametrize("terminals,simulators", [(50, 5)])
def test_fleet_read_runs_at_once_without_blocking_the_loop(terminals, simulators):
    with contextlib.ExitStack() as stack:
        sims = [stack.enter_context(simulator(prefill_logs=i + 1, faults=["--latency-ms", str(LATENCY_MS)]))
                for i in range(simulators)]
        targets = [sims[i % simulators] for i in range(terminals)]

        async def read(sim):
            async with kvnsdk2.aio.connect(sim.host, sim.port) as t:
                info = await t.info()
                return info.to_dict()["text_4"], await t.logs.count_unread()

        async def fleet():
            gaps, done = [], False

            async def ticker():
                last = time.monotonic()
                while not done:
                    await asyncio.sleep(0.01)
                    now = time.monotonic()
                    gaps.append(now - last)
                    last = now
            tick = asyncio.create_task(ticker())
            start = time.monotonic()
            results = await asyncio.gather(*(read(s) for s in targets))
            elapsed = time.monotonic() - start
            done = True
            await tick
            return results, elapsed, max(gaps)

        results, elapsed, worst_gap = asyncio.run(fleet())
    # Two exchanges of a second each per terminal: 2 s at once, 100 s one after the other;
    # a loop that waited for a terminal would stand still for a second at a time.
    assert elapsed < 10, elapsed
    assert worst_gap < 0.8, worst_gap
    assert results == [("SIM0000000001", targets.index(s) % simulators + 1) for s in targets]


def test_async_errors_are_the_same(kvn_sim):
    async def go():
        async with kvnsdk2.aio.connect(kvn_sim.host, kvn_sim.port) as t:
            with pytest.raises(kvnsdk2.RefusedError):
                await t.users.get("nobody")
            await t.set("pacs", {"value": 4})
            assert await t.get("pacs") == {"value": 4}
        assert t.closed
        with pytest.raises(ValueError, match="closed"):
            await t.info()
    asyncio.run(go())
