"""Finding the native pieces: the shared library and the simulator program.

The library comes from, in this order:
  1. the environment variable KVNSDK2_LIBRARY (a path; when set, only there);
  2. the copy bundled in the package (kvnsdk2/_native/, in a wheel built with it);
  3. the system's, as ctypes.util.find_library("kvnsdk2") finds it.
The simulator (kvn-sim) comes from KVN_SIM, else from PATH.
"""
import ctypes
import ctypes.util
import os
import shutil
import sys

_HERE = os.path.dirname(os.path.abspath(__file__))
_BUNDLE_DIR = os.path.join(_HERE, "_native")

if sys.platform == "win32":
    _BUNDLED_NAMES = ("kvnsdk2.dll", "libkvnsdk2.dll")
elif sys.platform == "darwin":
    _BUNDLED_NAMES = ("libkvnsdk2.dylib",)
else:
    _BUNDLED_NAMES = ("libkvnsdk2.so", "libkvnsdk2.so.1")


class LibraryNotFoundError(ImportError):
    """The shared library could not be loaded; the message lists every place tried."""

    def __init__(self, tried):
        self.tried = list(tried)
        lines = "\n".join(f"  - {place}: {why}" for place, why in self.tried)
        super().__init__("kvnsdk2: the shared library libkvnsdk2 was not found. Looked at:\n" + lines +
                         "\nSet KVNSDK2_LIBRARY to the library's path, or install a wheel that bundles it.")


class SimulatorNotFoundError(FileNotFoundError):
    """kvn-sim could not be found; the message says where it looked."""


_loaded = None


def load_library():
    """The shared library as a ctypes.CDLL (loaded once per process)."""
    global _loaded
    if _loaded is not None:
        return _loaded
    tried = []
    env = os.environ.get("KVNSDK2_LIBRARY")
    if env:  # named by the user: that one or none
        try:
            _loaded = ctypes.CDLL(env)
            return _loaded
        except OSError as e:
            raise LibraryNotFoundError([(f"KVNSDK2_LIBRARY={env}", str(e))]) from None
    tried.append(("KVNSDK2_LIBRARY", "not set"))
    bundled = [os.path.join(_BUNDLE_DIR, n) for n in _BUNDLED_NAMES]
    present = [p for p in bundled if os.path.exists(p)]
    for path in present:
        try:
            _loaded = ctypes.CDLL(path)
            return _loaded
        except OSError as e:
            tried.append((path, str(e)))
    if not present:
        tried.append((os.path.join(_BUNDLE_DIR, _BUNDLED_NAMES[0]), "no bundled copy in this installation"))
    name = ctypes.util.find_library("kvnsdk2")
    if name:
        try:
            _loaded = ctypes.CDLL(name)
            return _loaded
        except OSError as e:
            tried.append((f"the system's {name}", str(e)))
    else:
        tried.append(('ctypes.util.find_library("kvnsdk2")', "found nothing on the system's search path"))
    raise LibraryNotFoundError(tried)


def bind(dll, name, restype, argtypes, doc=None):
    """One export of dll with its result and argument types; a missing one is an
    ImportError naming it, since the library and the description then disagree."""
    try:
        fn = getattr(dll, name)
    except AttributeError:
        raise ImportError(f"kvnsdk2: {dll._name} has no export {name}: the library is older or newer "
                          "than the description this package was generated from") from None
    fn.restype = restype
    fn.argtypes = argtypes
    fn.__doc__ = doc
    return fn


def find_simulator():
    """The path of kvn-sim: KVN_SIM, else kvn-sim on PATH."""
    env = os.environ.get("KVN_SIM")
    if env:
        if os.path.isfile(env) and os.access(env, os.X_OK):
            return env
        raise SimulatorNotFoundError(f"KVN_SIM={env} is not an executable file")
    path = shutil.which("kvn-sim")
    if path:
        return path
    raise SimulatorNotFoundError("kvn-sim was not found: KVN_SIM is not set and there is no kvn-sim on PATH")
