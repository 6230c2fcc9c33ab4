"""kvnsdk2 for Python: the terminal library over ctypes.

    import kvnsdk2
    with kvnsdk2.Terminal.connect("192.168.1.20") as t:
        print(t.info().to_dict())
        for user in t.users.list():
            print(user.user_id)

Modules:
  kvnsdk2.records   every record of the header as a ctypes.Structure (generated)
  kvnsdk2.lib       every export with argtypes and restype (generated; loads the library)
  kvnsdk2.errors    KvnError and its subclasses
  kvnsdk2.aio       the same Terminal for asyncio
  kvnsdk2.testing   kvn-sim as a context manager, and the kvn_sim pytest fixture

The shared library is looked for in KVNSDK2_LIBRARY, then in the package, then on the
system (see kvnsdk2._native); it is loaded on first use, so that importing kvnsdk2 and
kvnsdk2.records needs no library.
"""
import importlib

from ._native import LibraryNotFoundError, SimulatorNotFoundError
from ._sync import SyncResult
from .errors import KvnError, LinkError, ProtocolError, RefusedError, TransferCancelled, status_message
from .terminal import Terminal

__version__ = "1.4.0"

__all__ = [
    "Terminal", "KvnError", "LinkError", "ProtocolError", "RefusedError", "TransferCancelled",
    "LibraryNotFoundError", "SimulatorNotFoundError", "SyncResult", "status_message",
    "library_version", "records", "lib", "aio", "testing", "errors",
]


def library_version():
    """The shared library's own version text (kvn_get_sdk2_version)."""
    from . import lib
    return lib.kvn_get_sdk2_version().decode("ascii")


def __getattr__(name):
    # lib loads the shared library: only when it is asked for.
    if name in ("lib", "records", "aio", "testing"):
        return importlib.import_module(f".{name}", __name__)
    raise AttributeError(f"module 'kvnsdk2' has no attribute {name!r}")
