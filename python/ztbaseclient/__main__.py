"""python3 -m ztbaseclient: the version, and what there is beside it."""

from __future__ import annotations

import importlib.util
import platform
import shutil
import sys

from . import __version__, _core


def main() -> int:
    print(f"ztbaseclient {__version__}")
    print(f"python {platform.python_version()}, {sys.executable}")
    print(f"module {_core.__file__}")
    for name in ("numpy", "pandas", "dask"):
        found = importlib.util.find_spec(name)
        if found is None:
            print(f"{name}: not found")
        else:
            version = getattr(__import__(name), "__version__", "?")
            print(f"{name} {version}")
    print(f"ztclient: {shutil.which('ztclient') or 'not found'}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
