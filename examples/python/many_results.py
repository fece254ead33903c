"""Compares a folder of results with their references and reads a folder of logs into one table, on Dask.

    many_results.py RESULTS REFERENCES LOGS [--scheduler ADDRESS] [--workers N]

Without --scheduler the work is done by processes of this computer.
"""

from __future__ import annotations

import argparse
from pathlib import Path
from typing import Any

import pandas  # type: ignore[import]
from dask import distributed

import ztbaseclient as zt


def compared(result: Path, reference: Path) -> tuple[str, zt.Comparison]:
    return result.name, zt.compare(reference, result)


def log_frame(path: Path) -> Any:
    frame = pandas.DataFrame(zt.log_table(path))
    frame.insert(0, "log", path.name)
    return frame


def run(client: Any, results: Path, references: Path, logs: Path) -> tuple[Any, Any]:
    """A table of the comparisons, and one of the entries of all logs."""
    pairs = [(path, references / path.name) for path in sorted(results.iterdir()) if (references / path.name).is_file()]
    comparisons = client.map(compared, [a for a, _ in pairs], [b for _, b in pairs], pure=False)
    frames = client.map(log_frame, sorted(logs.iterdir()), pure=False)
    rows = [(name, c.equal, c.within_tolerance, c.within, c.different) for name, c in client.gather(comparisons)]
    table = pandas.DataFrame(rows, columns=["file", "equal", "within_tolerance", "within", "different"])
    entries = client.gather(frames)
    return table, pandas.concat(entries, ignore_index=True) if entries else pandas.DataFrame()


def main() -> None:
    parser = argparse.ArgumentParser(description="Compares results and reads logs, on Dask.")
    for name in ("results", "references", "logs"):
        parser.add_argument(name, type=Path)
    parser.add_argument("--scheduler", help="the address of a cluster that runs already")
    parser.add_argument("--workers", type=int, default=2)
    options = parser.parse_args()
    engine: Any = distributed  # its functions have no types
    cluster = None
    if not options.scheduler:
        cluster = engine.LocalCluster(n_workers=options.workers, threads_per_worker=1, dashboard_address=None)
    client = engine.Client(options.scheduler or cluster)
    try:
        table, entries = run(client, options.results, options.references, options.logs)
        print(table.to_string(index=False))
        print(entries.to_string(index=False))
    finally:
        client.close()
        if cluster is not None:
            cluster.close()


if __name__ == "__main__":
    main()
