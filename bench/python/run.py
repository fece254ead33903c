"""The package beside its peers, in one run: run.py [ROUNDS]

Each line is a peer's time by ours on the same data, the median of the rounds with the least and the largest; above 1
ours is faster. Rounds alternate, so that what else the computer does meets both.
"""

from __future__ import annotations

import gc
import json
import logging
import multiprocessing
import pickle
import socket
import statistics
import sys
import threading
import time
import warnings
from concurrent.futures import ProcessPoolExecutor
from pathlib import Path

import lxml.etree
import msgpack
import zeep

import ztbaseclient as zt

ROOT = Path(__file__).resolve().parents[2]
ROWS = 50_000
DOCUMENT = (
    "<job>"
    + "".join(f'<row id="{i}" similarity="{i % 1000 / 1000}" name="compound {i}"/>' for i in range(ROWS))
    + "</job>"
).encode()
RECORDS = [{"id": i, "name": f"compound {i}", "score": i / 7, "tags": ["a", "b"], "hits": [i, 2, 3]} for i in range(5000)]


def seconds(work):
    gc.collect()
    start = time.perf_counter()
    work()
    return time.perf_counter() - start


def ratio(name, ours, theirs, rounds):
    pairs = [(seconds(ours), seconds(theirs)) for _ in range(rounds)]
    ratios = sorted(b / a for a, b in pairs)
    mine = statistics.median(a for a, _ in pairs)
    print(f"{name:44} {statistics.median(ratios):6.2f} × ({ratios[0]:.2f} to {ratios[-1]:.2f}), ours {mine * 1000:.1f} ms")


def build_ours():
    root = zt.Node("job")
    append = root.children.append
    for i in range(10_000):
        append(zt.Node("row", {"id": i}))


def build_theirs():
    root = lxml.etree.Element("job")
    for i in range(10_000):
        lxml.etree.SubElement(root, "row", {"id": str(i)})


def walk_in_python(node):
    return {
        "name": node.name,
        "properties": dict(node.properties.items()),
        "children": [walk_in_python(child) for child in node.children],
    }


def visit(nodes):
    for _ in nodes:
        pass


def node_of(value, name="value"):
    """The walk that to_node does, in Python."""
    if isinstance(value, dict):
        node = zt.Node(name)
        for key, item in value.items():
            node.children.append(node_of(item, key))
        return node
    if isinstance(value, list):
        return zt.Node(name, children=[node_of(item, "item") for item in value])
    return zt.Node(name, value=value)


def read(record):
    return sum(1 for _ in zt.read_record(record).walk())


def per_second(record, workers):
    batch = [record] * 40
    with ProcessPoolExecutor(workers) as pool:
        list(pool.map(read, batch[:workers]))
        spent = seconds(lambda: list(pool.map(read, batch)))
    return len(batch) / spent


def services(rounds):
    """The largest documents of the tests that the peer reads too."""
    warnings.simplefilter("ignore")
    ratios = []
    for path in sorted(ROOT.glob("tests/data/*/documents/**/*.wsdl"), key=lambda path: -path.stat().st_size)[:30]:
        try:
            zeep.Client(str(path))
        except Exception:  # whatever the peer makes of it
            continue
        pairs = [
            (seconds(lambda: zt.load_service(path)), seconds(lambda: zeep.Client(str(path)))) for _ in range(rounds)
        ]
        ratios.append(statistics.median(theirs / ours for ours, theirs in pairs))
    ratios.sort()
    print(f"load_service / zeep, {len(ratios)} documents {statistics.median(ratios):13.2f} × ({ratios[0]:.2f} to {ratios[-1]:.2f})")


STATUS = b"""HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nContent-Length: LENGTH\r\n\r\n<s:Envelope
xmlns:s="http://schemas.xmlsoap.org/soap/envelope/"><s:Body><jobStatusResponse xmlns="urn:workflow:jobs:1"><id>j7</id><state>running</state>
<progress>0.5</progress><started>2026-11-27T08:00:00Z</started></jobStatusResponse></s:Body></s:Envelope>"""


def answer_all(listener):
    """Answers the same to every request, over connections that stay; a process of its own."""
    head, body = STATUS.split(b"\r\n\r\n")
    answer = head.replace(b"LENGTH", str(len(body)).encode()) + b"\r\n\r\n" + body

    def serve(connection):
        stream = connection.makefile("rb")
        while line := stream.readline():
            length = 0
            while line not in (b"\r\n", b""):
                if line.lower().startswith(b"content-length:"):
                    length = int(line.split(b":")[1])
                line = stream.readline()
            stream.read(length)
            connection.sendall(answer)

    while True:
        threading.Thread(target=serve, args=(listener.accept()[0],), daemon=True).start()


def calls(rounds):
    """Requests made, and whole calls of a server on the loopback."""
    path = str(ROOT / "examples" / "jobs.wsdl")
    service, peer = zt.load_service(path), zeep.Client(path)
    values = {"protocol": "search", "inputFile": "a.sdf", "limit": 20, "similarity": 0.7, "columns": [f"column {i}" for i in range(100)]}
    ratio(
        "1000 requests of 100 columns / zeep",
        lambda: [service.request("runProtocol", values) for _ in range(1000)],
        lambda: [lxml.etree.tostring(peer.create_message(peer.service, "runProtocol", **values)) for _ in range(1000)],
        rounds,
    )
    with socket.create_server(("127.0.0.1", 0)) as listener:
        server = multiprocessing.get_context("fork").Process(target=answer_all, args=(listener,), daemon=True)
        server.start()
        address = f"http://127.0.0.1:{listener.getsockname()[1]}/"
        caller = service.caller(address=address)
        proxy = peer.create_service("{urn:workflow:jobs:1}JobsSoap", address)
        assert caller.jobStatus(jobId="j7")["state"] == proxy.jobStatus(jobId="j7").state
        ratio(
            "200 calls of a server / zeep",
            lambda: [caller.jobStatus(jobId="j7") for _ in range(200)],
            lambda: [proxy.jobStatus(jobId="j7") for _ in range(200)],
            rounds,
        )
        server.kill()


def main() -> None:
    rounds = int(sys.argv[1]) if len(sys.argv) > 1 else 7
    logging.disable(logging.CRITICAL)
    ours, theirs = zt.parse(DOCUMENT), lxml.etree.fromstring(DOCUMENT)
    ratio("parse / lxml", lambda: zt.parse(DOCUMENT), lambda: lxml.etree.fromstring(DOCUMENT), rounds)
    ratio("build in Python / lxml", build_ours, build_theirs, rounds)
    ratio("walk / lxml", lambda: visit(ours.walk()), lambda: visit(theirs.iter()), rounds)
    for query in ("count(//row[@id > 25000])", "sum(//@similarity)"):
        ratio(f"query {query} / lxml", lambda: ours.query(query), lambda: theirs.xpath(query), rounds)
    columns = {"id": "@id", "similarity": "@similarity"}
    ratio(
        "table of two columns / lxml in Python",
        lambda: zt.table(ours, "//row", columns),
        lambda: [(int(row.get("id")), float(row.get("similarity"))) for row in theirs.iter("row")],
        rounds,
    )
    small = zt.parse(DOCUMENT[: DOCUMENT.index(b'<row id="5000"')] + b"</job>")
    ratio("to_python / the walk in Python", small.to_python, lambda: walk_in_python(small), rounds)
    ratio("to_node / the walk in Python", lambda: zt.to_node(RECORDS), lambda: node_of(RECORDS), rounds)
    ratio(
        "record round trip / msgpack",
        lambda: zt.read_record(zt.to_node(RECORDS).write_record()).to_python(),
        lambda: msgpack.unpackb(msgpack.packb(RECORDS)),
        rounds,
    )
    ratio(
        "record round trip / json",
        lambda: zt.read_record(zt.to_node(RECORDS).write_record()).to_python(),
        lambda: json.loads(json.dumps(RECORDS)),
        rounds,
    )
    ratio(
        "write and read a record / pickle of its values",
        lambda: zt.read_record(small.write_record()),
        lambda: pickle.loads(pickle.dumps(small.to_python())),
        rounds,
    )
    wsdl = str(ROOT / "examples" / "jobs.wsdl")
    ratio("load_service / zeep", lambda: zt.load_service(wsdl), lambda: zeep.Client(wsdl), rounds)
    services(rounds)
    calls(rounds)
    record = small.write_record()
    one, two = per_second(record, 1), per_second(record, 2)
    print(f"records of 5000 rows by 1 worker {one:.1f}/s, by 2 workers {two:.1f}/s ({two / one:.2f} ×)")
    print(f"pickling one costs {seconds(lambda: pickle.loads(pickle.dumps(small))) * 1000:.1f} ms")


if __name__ == "__main__":
    main()
