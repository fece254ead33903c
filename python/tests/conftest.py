"""What the tests share: the data of the project and the command beside the package."""

from __future__ import annotations

import json
import os
import subprocess
from pathlib import Path

import pytest
from hypothesis import settings

# Leaves nothing in the source tree.
settings.register_profile("project", database=None)
settings.load_profile("project")

if os.environ.get("ZTB_NO_POOLS"):
    import ztbaseclient._core

    ztbaseclient._core.use_pools(False)

ROOT = Path(__file__).resolve().parents[2]
DATA = ROOT / "tests" / "data"


def command(*arguments: object) -> str:
    """Standard output of the command."""
    program = os.environ.get("ZTCLIENT", "ztclient")
    run = subprocess.run([program, *map(str, arguments)], capture_output=True, check=False)
    return run.stdout.decode("utf-8", "surrogatepass")


def json_lines(text: str) -> list:
    return [json.loads(line) for line in text.splitlines()]


@pytest.fixture
def job():
    import ztbaseclient as zt

    rows = b"".join(b'<row id="%d" x="%.1f"/>' % (i, i / 2) for i in range(1, 6))
    return zt.parse(b'<job name="\xc3\xa4\xf0\x9f\x98\x80">' + rows + b"</job>")
