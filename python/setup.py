"""The build step of the package: the modules generated from the header's description
(records, lib and the settings groups, with their .pyi stubs) are written into the
build, and the shared library is bundled when asked for.

  KVNSDK2_DESCRIPTION     the description (kvnsdk2.json); default: the build tree's,
                          ../build/default/share/kvnsdk2/kvnsdk2.json
  KVNSDK2_BUNDLE_LIBRARY  a libkvnsdk2 shared library to bundle in kvnsdk2/_native/; the
                          wheel is then tagged for this platform (scripts/build-python-wheel.sh)
"""
import os
import shutil
import sys

from setuptools import setup
from setuptools.command.build_py import build_py

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(HERE)
GENERATOR_DIR = os.path.join(ROOT, "tools", "describe")


def description():
    path = os.environ.get("KVNSDK2_DESCRIPTION") or os.path.join(ROOT, "build", "default", "share", "kvnsdk2",
                                                                 "kvnsdk2.json")
    if not os.path.isfile(path):
        sys.exit(f"kvnsdk2: the description {path} was not found: build the C side first "
                 "(cmake --build --preset default --target kvnsdk2_description) or set KVNSDK2_DESCRIPTION")
    return path


class BuildPy(build_py):
    """build_py, then the generated modules and the bundled library."""

    def run(self):
        super().run()
        sys.path.insert(0, GENERATOR_DIR)
        try:
            import kvn_python
        except ImportError:
            sys.exit(f"kvnsdk2: the generator {GENERATOR_DIR}/kvn_python.py was not found: build from the "
                     "project's source tree")
        out = os.path.join(self.build_lib, "kvnsdk2")
        try:
            kvn_python.generate(description(), out)
        except kvn_python.Unsupported as e:
            sys.exit(f"kvnsdk2: {e}")
        bundle = os.environ.get("KVNSDK2_BUNDLE_LIBRARY")
        if bundle:
            native = os.path.join(out, "_native")
            os.makedirs(native, exist_ok=True)
            name = "kvnsdk2.dll" if bundle.lower().endswith(".dll") else \
                "libkvnsdk2.dylib" if bundle.endswith(".dylib") else "libkvnsdk2.so"
            shutil.copyfile(os.path.realpath(bundle), os.path.join(native, name))


commands = {"build_py": BuildPy}
try:
    from wheel.bdist_wheel import bdist_wheel

    class BdistWheel(bdist_wheel):
        """A wheel with the bundled library is for this platform only."""

        def finalize_options(self):
            super().finalize_options()
            if os.environ.get("KVNSDK2_BUNDLE_LIBRARY"):
                self.root_is_pure = False

        def get_tag(self):
            python, abi, plat = super().get_tag()
            if not self.root_is_pure:
                python, abi = "py3", "none"
            return python, abi, plat

    commands["bdist_wheel"] = BdistWheel
except ImportError:
    pass

setup(cmdclass=commands)
