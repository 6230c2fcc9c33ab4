"""kvnsdk2.Terminal for asyncio: the same methods as coroutines.

    async with kvnsdk2.aio.connect("192.168.1.20") as t:
        info = await t.info()
        async for user in t.users.list():
            ...

The clock is read and set with await t.get_time() and await t.set_time(dt) (an
attribute cannot be awaited). Each terminal has one worker thread of its own, where its calls run one after the
other (the library's calls release the GIL while they wait for the terminal), so the
event loop never waits for a terminal and many terminals are served at once. Progress
callbacks of file transfers run in the worker thread.
"""
import asyncio
import concurrent.futures
import functools

from .terminal import DEFAULT_PORT, Terminal as _Terminal


class _Async:
    """Runs the methods of a synchronous object in the terminal's worker thread."""

    _methods = ()
    _iterators = ()

    def __init__(self, target, worker):
        self._target = target
        self._worker = worker

    async def _run(self, fn, *args, **kwargs):
        loop = asyncio.get_running_loop()
        try:
            future = loop.run_in_executor(self._worker, functools.partial(fn, *args, **kwargs))
        except RuntimeError:  # the worker has ended with close()
            raise ValueError("kvnsdk2: the terminal is closed") from None
        return await future

    def __getattr__(self, name):
        if name in self._methods:
            fn = getattr(self._target, name)

            @functools.wraps(fn)
            async def method(*args, **kwargs):
                return await self._run(fn, *args, **kwargs)
            return method
        if name in self._iterators:
            fn = getattr(self._target, name)

            @functools.wraps(fn)
            async def iterate(*args, **kwargs):
                it = await self._run(lambda: iter(fn(*args, **kwargs)))
                done = object()
                while True:
                    item = await self._run(next, it, done)
                    if item is done:
                        return
                    yield item
            return iterate
        raise AttributeError(name)


class Door(_Async):
    """await t.door.open(seconds), await t.door.close()."""
    _methods = ("open", "close")


class Users(_Async):
    """count, ids, get, put, delete as coroutines; list() as an async iterator."""
    _methods = ("count", "ids", "get", "put", "delete")
    _iterators = ("list",)


class Logs(_Async):
    """count, count_unread, mark, sync as coroutines; unread() as an async iterator."""
    _methods = ("count", "count_unread", "mark", "sync")
    _iterators = ("unread",)


class Files(_Async):
    """upload, download, delete as coroutines."""
    _methods = ("upload", "download", "delete")


class Terminal(_Async):
    """A kvnsdk2.Terminal whose methods are coroutines; open one with connect() or serial()."""

    _methods = ("info", "get", "set", "reset", "raw", "call", "get_time", "set_time")

    def __init__(self, terminal, worker):
        super().__init__(terminal, worker)
        self.name = terminal.name
        self.door = Door(terminal.door, worker)
        self.users = Users(terminal.users, worker)
        self.logs = Logs(terminal.logs, worker)
        self.files = Files(terminal.files, worker)

    @property
    def terminal(self):
        """The synchronous Terminal underneath (use it only from the worker, or after close)."""
        return self._target

    @property
    def closed(self):
        return self._target.closed

    def groups(self):
        """The settings groups' names (no exchange: not a coroutine)."""
        return self._target.groups()

    async def close(self):
        """Closes the connection and ends the worker thread."""
        try:
            await self._run(self._target.close)
        finally:
            self._worker.shutdown(wait=False)

    async def __aenter__(self):
        return self

    async def __aexit__(self, *exc):
        await self.close()

    def __repr__(self):
        return f"<kvnsdk2.aio.Terminal {self.name}{' closed' if self.closed else ''}>"


class _Opening:
    """What connect() and serial() return: await it, or use it with async with."""

    def __init__(self, opener, label):
        self._opener = opener
        self._label = label
        self._terminal = None

    async def _open(self):
        worker = concurrent.futures.ThreadPoolExecutor(1, thread_name_prefix=f"kvnsdk2 {self._label}")
        try:
            t = await asyncio.get_running_loop().run_in_executor(worker, self._opener)
        except BaseException:
            worker.shutdown(wait=False)
            raise
        return Terminal(t, worker)

    def __await__(self):
        return self._open().__await__()

    async def __aenter__(self):
        self._terminal = await self._open()
        return self._terminal

    async def __aexit__(self, *exc):
        await self._terminal.close()


def connect(host, port=DEFAULT_PORT, timeout=5.0):
    """Opens a TCP connection as kvnsdk2.Terminal.connect() does, in the terminal's worker."""
    return _Opening(functools.partial(_Terminal.connect, host, port, timeout), f"{host}:{port}")


def serial(device, baud=115200, timeout=None):
    """Opens a serial line as kvnsdk2.Terminal.serial() does, in the terminal's worker."""
    return _Opening(functools.partial(_Terminal.serial, device, baud, timeout), str(device))
