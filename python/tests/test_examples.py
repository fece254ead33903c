from __future__ import annotations

import doctest
import importlib
import pkgutil
import subprocess
import sys

import pytest
from conftest import ROOT

import ztbaseclient as zt

EXAMPLES = ROOT / "examples" / "python"
ENTRY = "<<<ConsoleEntry\nstate\t{}\nConsoleEntry>>>\n"


def run(*command):
    return subprocess.run([sys.executable, *map(str, command)], capture_output=True, text=True, check=True, timeout=120).stdout


@pytest.mark.parametrize("name", [m.name for m in pkgutil.iter_modules(zt.__path__) if m.name not in ("_core", "__main__")])
def test_docstrings_run(name):
    failed, _ = doctest.testmod(importlib.import_module(f"ztbaseclient.{name}"))
    assert failed == 0


def test_examples_run():
    assert "['beta']" in run(EXAMPLES / "first_steps.py")
    assert "runProtocol(" in run(EXAMPLES / "service_report.py", ROOT / "examples" / "jobs.wsdl")
    assert zt.__version__ in run("-m", "ztbaseclient")


def test_many_results_on_a_cluster(tmp_path):
    for folder in ("results", "references", "logs"):
        (tmp_path / folder).mkdir()
    for i in range(6):
        (tmp_path / "references" / f"r{i}.txt").write_text("x 1.0\n")
        (tmp_path / "results" / f"r{i}.txt").write_text(f"x 1.{i}\n")
        (tmp_path / "logs" / f"{i}.log").write_text(ENTRY.format(f"s{i}") * 2)
    out = run(EXAMPLES / "many_results.py", *(tmp_path / f for f in ("results", "references", "logs")))
    assert out.count("True") == 2 and out.count("s5") == 2 and "r5.txt" in out


def test_the_notebook_runs(tmp_path):
    out = tmp_path / "tour.ipynb"
    run("-m", "jupyter", "nbconvert", "--to", "notebook", "--execute", "--output", out, EXAMPLES / "tour.ipynb")
    assert "<details" in out.read_text() and '"output_type": "error"' not in out.read_text()
