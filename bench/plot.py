"""Pictures of benchmarks: plot.py RESULTS... FOLDER, RESULTS being what Google Benchmark wrote as JSON.

FOLDER gets an SVG for each group of peers, in which bars are the median of a time by ours and whiskers its least and
largest, one for each that was measured in several sizes, on logarithmic scales with the slope in words, and index.html,
which shows all of them.
"""

from __future__ import annotations

import html
import json
import math
import platform
import statistics
import sys
from collections import defaultdict
from datetime import date
from pathlib import Path

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt  # noqa: E402

plt.rcParams.update({"svg.fonttype": "none", "svg.hashsalt": "ztbaseclient", "font.size": 9})

# What is compared, ours first, with the names for people.
GROUPS: dict[str, dict[str, str]] = {
    "Writing a record of 99,499 nodes": {"RecordWrite": "node record", "RecordWriteProtobuf": "protobuf", "RecordWriteMsgpack": "msgpack-cxx"},
    "Reading it": {"RecordRead": "node record", "RecordReadProtobuf": "protobuf", "RecordReadMsgpack": "msgpack-cxx"},
    "A document of 10 MB into nodes": {"DocumentNodes": "nodes", "DocumentExpatAlone": "expat alone", "DocumentLibxml2": "libxml2", "DocumentPugixml": "pugixml"},
    "Making credentials": {"CredentialsGenerate": "credentials", "CredentialsGenerateBare": "its passes alone"},
    "Reading credentials": {"CredentialsRead": "credentials", "CredentialsReadBare": "its passes alone"},
    "Asking for a role": {"RolesIsMemberOf": "roles", "RolesUnorderedMap": "unordered_map"},
    "Building a link": {"LinkBuilder": "link", "LinkCurlEscape": "curl's escape"},
    "An upload of 64 MiB": {"UploadFile": "upload", "UploadDeflateAlone": "deflate alone", "UploadGzipAndCurl": "gzip, then curl"},
    "A request of 100 items": {"call/request/ztservice/100": "ztservice", "call/request/gsoap/100": "gSOAP's code"},
    "Reading its answer": {"call/answer/ztservice/100": "ztservice", "call/answer/gsoap/100": "gSOAP's code"},
    "A call on the loopback": {"call/whole/ztservice": "values to values", "call/send/ztservice": "sending alone", "call/whole/curl": "curl, body ready"},
    "A service of real documents": {"BM_Real": "whole service", "BM_RealExpatAlone": "expat alone"},
}
GROUPS.update({f"{what} from the pool": {f"PoolAllocate<{what}>": "pool", f"PoolNewDelete<{what}>": "new and delete"}
               for what in ("CProperty", "CPropertyCollection", "CBaseNode", "tovin::StringValue")})

UNITS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}


def read(files: list[Path]) -> tuple[dict[str, list[float]], dict[str, float]]:
    """Seconds of each repetition, and bytes an element where they were counted, by the benchmark's name."""
    times: dict[str, list[float]] = defaultdict(list)
    memory: dict[str, float] = {}
    for file in files:
        for one in json.loads(file.read_text())["benchmarks"]:
            if one.get("run_type") != "iteration":
                continue
            name = one.get("run_name", one["name"]).removesuffix("/real_time")
            times[name].append(one["real_time"] * UNITS[one["time_unit"]])
            if "bytes/element" in one:
                memory[name] = one["bytes/element"]
    return times, memory


def save(figure, folder: Path, name: str) -> str:
    file = "".join(c if c.isalnum() else "-" for c in name.lower()).strip("-") + ".svg"
    figure.tight_layout()
    figure.savefig(folder / file, metadata={"Date": None})
    plt.close(figure)
    return file


def bars(title: str, label: str, rows: list[tuple[str, float, float, float]], folder: Path) -> str:
    figure, axes = plt.subplots(figsize=(7, 0.8 + 0.4 * len(rows)))
    names = [row[0] for row in rows][::-1]
    middle = [row[1] for row in rows][::-1]
    spread = [[row[1] - row[2] for row in rows][::-1], [row[3] - row[1] for row in rows][::-1]]
    axes.barh(names, middle, xerr=spread, color=["#8c959f"] * (len(rows) - 1) + ["#0969da"], capsize=3)
    for place, value in enumerate(middle):
        axes.text(value, place + 0.22, f" {value:.3g}", va="bottom", fontsize=8)
    axes.set_xlabel(label)
    axes.set_title(title)
    return save(figure, folder, title)


def ratios(title: str, names: dict[str, str], times: dict[str, list[float]], folder: Path) -> str | None:
    present = [name for name in names if name in times]
    ours = next(iter(names))
    if ours not in present or len(present) < 2:
        return None
    base = statistics.median(times[ours])
    rows = []
    for name in present:
        values = [time / base for time in times[name]]
        rows.append((names[name], statistics.median(values), min(values), max(values)))
    return bars(title, "time by ours; whiskers: least and largest", rows, folder)


def slope(points: list[tuple[float, float]]) -> float:
    """Of the straight line through the logarithms: 1 is linear."""
    xs, ys = [math.log(x) for x, _ in points], [math.log(y) for _, y in points]
    mean_x, mean_y = statistics.mean(xs), statistics.mean(ys)
    return sum((x - mean_x) * (y - mean_y) for x, y in zip(xs, ys)) / sum((x - mean_x) ** 2 for x in xs)


def words(exponent: float) -> str:
    if exponent < 0.25:
        return "hardly grows"
    if exponent < 0.85:
        return "grows slower than the size"
    if exponent < 1.15:
        return "grows as the size"
    return "grows faster than the size"


def sizes(times: dict[str, list[float]], folder: Path) -> list[str]:
    families: dict[str, list[tuple[float, float]]] = defaultdict(list)
    for name, values in times.items():
        family, _, size = name.rpartition("/")
        if size.isdigit():
            families[family].append((float(size), statistics.median(values)))
    files = []
    for family, points in sorted(families.items()):
        if len(points) < 2:
            continue
        points.sort()
        exponent = slope(points)
        figure, axes = plt.subplots(figsize=(5, 3.2))
        axes.loglog([x for x, _ in points], [y for _, y in points], marker="o", color="#0969da")
        axes.set_xlabel("size")
        axes.set_ylabel("seconds")
        axes.set_title(f"{family}: {words(exponent)} (exponent {exponent:.2f})")
        axes.grid(True, which="major", alpha=0.3)
        files.append(save(figure, folder, "size " + family))
    return files


def main() -> None:
    *results, folder = map(Path, sys.argv[1:])
    folder.mkdir(parents=True, exist_ok=True)
    times, memory = read(results)
    files = [file for title, names in GROUPS.items() if (file := ratios(title, names, times, folder))]
    if memory:
        rows = [(GROUPS["A document of 10 MB into nodes"].get(name, name), value, value, value) for name, value in memory.items()]
        files.append(bars("Bytes an element of the document", "bytes", rows, folder))
    files += sizes(times, folder)
    if not files:
        sys.exit("plot: nothing to show: no group was measured whole")
    made = f"Made on {date.today().isoformat()}, {platform.machine()}, {platform.system()}"
    images = "\n".join(f'<p><img src="{file}" alt="{html.escape(file.removesuffix(".svg").replace("-", " "))}"></p>' for file in files)
    (folder / "index.html").write_text(
        f'<!DOCTYPE html>\n<html lang="en">\n<meta charset="utf-8">\n<title>Benchmarks</title>\n<h1>Benchmarks</h1>\n<p>{html.escape(made)}</p>\n{images}\n</html>\n')
    print(f"plot: {len(files)} pictures in {folder}/index.html")


main()
