from __future__ import annotations

import http.server
import os
import pickle
import signal
import threading
import time

import pytest
from conftest import command, json_lines

import ztbaseclient as zt



def write(path, text):
    path.write_text(text)
    return path


@pytest.mark.parametrize(
    "a, b, how, equal, within",
    [
        ("x 1.0\n", "x 1.0\n", {}, True, True),
        ("x 1.0000001\n", "x 1.0000002\n", {}, False, True),
        ("x 1.1\n", "x 1.2\n", {"tolerance": 5}, False, False),
        ("x 1.1\n", "x 1.2\n", {"absolute": 0.2}, False, True),
        ("a\nb\n", "a\nc\nb\n", {}, False, False),
        ("k,v\n1,2\n3,4\n", "k,v\n3,4\n1,2\n", {"key": "k", "delimiter": ","}, True, True),
        ("A\n", "a\n", {"ignore_case": True}, True, True),
        ("x a 1\n", "x b 2\n", {}, False, False),
    ],
)
def test_comparisons_say_what_differs(tmp_path, a, b, how, equal, within):
    one, two = write(tmp_path / "a", a), write(tmp_path / "b", b)
    found = zt.compare(one, str(two), **how)
    assert (found.equal, found.within_tolerance) == (equal, within)
    assert pickle.loads(pickle.dumps(found)) == found
    assert len(found.to_pandas()) == sum(max(1, len(line.fields)) for line in found)
    for line in found:
        assert all((f.kind == "text") == (f.absolute is None) == (f.digits is None) for f in line.fields)
    if not how and not (within and not equal):
        printed = [line for line in json_lines(command("diff", one, two, "--all", "--json")) if "kind" in line]
        assert len(printed) == sum(max(1, len(line.fields)) for line in found)


ENTRY = "<<<ConsoleEntry\nstate\t{}\nText\ta%tb\nConsoleEntry>>>\n"


def test_logs_are_entries_and_tables(tmp_path):
    path = write(tmp_path / "log", ENTRY.format("one") + "noise\n" + ENTRY.format("two"))
    entries = list(zt.Log(path))
    assert [entry["STATE"] for entry in entries] == ["one", "two"] and entries[0]["text"] == "a\tb"
    printed = json_lines(command("log", path, "--json"))
    assert [[list(pair) for pair in e] for e in entries] == [line["values"] for line in printed]
    assert [e.position for e in entries] == [line["position"] for line in printed]
    assert zt.log_table(path)["state"].tolist() == ["one", "two"]
    assert zt.log_table(path, columns=["none", "text"])["none"].tolist() == [None, None]


def test_a_log_is_followed(tmp_path):
    path = write(tmp_path / "log", ENTRY.format("one") + "<<<ConsoleEntry\nstate\ttw")

    def later():
        time.sleep(0.1)
        with open(path, "a") as file:
            file.write("o\nConsoleEntry>>>\n")
        time.sleep(0.1)
        write(path, ENTRY.format("new"))

    thread = threading.Thread(target=later)
    thread.start()
    log = zt.Log(path, follow=True, pause=0.02)
    assert [next(log)["state"] for _ in range(3)] == ["one", "two", "new"]
    thread.join()
    threading.Timer(0.1, os.kill, (os.getpid(), signal.SIGINT)).start()
    with pytest.raises(KeyboardInterrupt):
        next(log)


def test_the_keyboard_ends_a_comparison(tmp_path):
    for name, digit in (("a", 1), ("b", 2)):
        write(tmp_path / name, "".join(f"row {i} {i}.{digit}5\n" for i in range(1_000_000)))
    threading.Timer(0.2, os.kill, (os.getpid(), signal.SIGINT)).start()
    start = time.monotonic()
    with pytest.raises(KeyboardInterrupt):
        zt.compare(tmp_path / "a", tmp_path / "b", key="1")
    assert time.monotonic() - start < 30


def test_checksums_and_requests_are_the_commands():
    assert zt.checksum("one", "two") + "\n" == command("checksum", "one", "two")
    assert zt.end_point("atlas:80", release=403) + "\n" == command("endpoint", "atlas:80", "--release", "403")
    assert zt.host_of("https://a:9943/dravolin/locator") + "\n" == command("endpoint", "--reverse", "https://a:9943/dravolin/locator")
    assert zt.link("a", "P q", {"b": 1, "A": "ä"}, session="s") + "\n" == command(
        "link", "a", "P q", "--param", "b=1", "--param", "A=ä", "--as", "session:s")  # fmt: skip
    assert zt.cache_arguments({"user": "a b", "jobid": "7"}, mask=["jobid"]) + "\n" == command(
        "cache", "--arg", "user=a b", "--arg", "jobid=7", "--mask", "jobid")  # fmt: skip
    with pytest.raises(zt.FormatError):
        zt.cache_arguments({"user": "a"}, require=["jobid"])


def test_credentials_come_back():
    text = zt.make_credentials("ann", "pässword", domain="LAB", roles=[3, 9], role_bits=16, login_time=-5, client_ip="1.2.3.4")
    read = zt.read_credentials(text)
    names = pickle.loads(pickle.dumps(zt.RoleNames({"Admins": 3, "Ünited": 9})))
    assert zt.read_credentials(zt.make_credentials(roles=["ADMINS", 4], role_names=names)).roles == (3, 4)
    assert names.of(read.roles) == ["Admins", "Ünited"] and len(names) == 2
    assert read.is_member_of("admins", names) and not read.is_member_of("Guests", names)
    with pytest.raises(KeyError):
        zt.make_credentials(roles=["Guests"], role_names=names)
    for wrong in ({"a": -1}, {"a": 1 << 20}, {1: 1}, {"a": "b"}, {"a\0": 1}, None):
        with pytest.raises((TypeError, ValueError, OverflowError)):
            zt.RoleNames(wrong)
    assert (read.user, read.password, read.domain, read.roles, read.role_bits) == ("ann", "pässword", "LAB", (3, 9), 16)
    assert (read.login_time, read.client_ip, read.checksum_ok) == (-5, "1.2.3.4", True)
    assert "pässword" not in repr(read)
    assert f'userName: "{read.user}"' in command("credentials", "show", text)
    for wrong in ("", "????", text[:20]):
        with pytest.raises(zt.Error):
            zt.read_credentials(wrong)
    with pytest.raises(zt.Error):
        zt.make_credentials("x" * 256)


class Server(http.server.BaseHTTPRequestHandler):
    bodies: list = []
    status = 200

    def do_POST(self):
        body = b""
        while (size := int(self.rfile.readline(), 16)) > 0:
            body += self.rfile.read(size)
            self.rfile.readline()
        self.rfile.readline()
        self.bodies.append(body)
        self.send_response(self.status)
        self.send_header("Content-Length", "0")
        self.end_headers()

    def log_message(self, *_):
        pass


@pytest.fixture
def server():
    running = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Server)
    threading.Thread(target=running.serve_forever, daemon=True).start()
    Server.bodies, Server.status = [], 200
    yield f"http://127.0.0.1:{running.server_port}/upload"
    running.shutdown()
    running.server_close()


def test_files_go_up(server, tmp_path):
    path = tmp_path / "ä.txt"
    path.write_bytes(os.urandom(300_000))
    seen = []
    zt.upload(path, server, "sid", job="7", progress=lambda done, length: seen.append((done, length)))
    assert seen[-1] == (300_000, 300_000) and b'name="SID"' in Server.bodies[0] and "ä.txt".encode() in Server.bodies[0]
    with open(path, "rb") as file:
        zt.upload(file, server, "sid", name="b.bin")
    assert b"b.bin" in Server.bodies[1]

    def fails(done, length):
        raise LookupError("mine")

    with pytest.raises(LookupError, match="mine"):
        zt.upload(path, server, "sid", progress=fails)
    with pytest.raises(zt.HttpError):
        zt.upload(path, server, "sid", progress=lambda *_: False)
    Server.status = 500
    with pytest.raises(OSError) as failure:
        zt.upload(path, server, "sid")
    assert isinstance(failure.value, zt.Error) and failure.value.trail
    assert failure.value.trail[0][0] not in str(failure.value)


WRONG = [None, 7, 1.5, object(), "\0", "\ud800", b"\xff", [], {}, 2**100, -1, float("nan")]


@pytest.mark.parametrize("wrong", WRONG, ids=repr)
def test_wrong_arguments_raise(wrong, tmp_path):
    node = zt.Node("n")
    calls = [
        zt.parse, zt.read_record, zt.load_service, zt.Log, zt.log_table, zt.read_credentials, zt.make_credentials,
        zt.end_point, zt.host_of, zt.checksum, zt.Bits, zt.to_node, zt.from_table, node.query, node.query_one,
        node.to_numpy, node.is_same, node.children.append, node.children.remove, node.children.extend,
        node.children.pop, node.__getitem__, node.__delitem__, node.properties.__getitem__, node.properties.flags,
        zt.Node, zt.cache_arguments, zt._core.set_node_class, zt._core.set_bits_class,
        lambda x: zt.link(x, x), lambda x: zt.link("a", "b", x), lambda x: zt.upload(x, "http://127.0.0.1:1/", "s"),
        lambda x: zt.upload(__file__, x, "s"), lambda x: zt.upload(__file__, "http://127.0.0.1:1/", x),
        lambda x: zt.upload(__file__, "http://127.0.0.1:1/", "s", progress=x), lambda x: zt.compare(x, __file__),
        lambda x: zt.compare(__file__, __file__, x), lambda x: zt.compare(__file__, __file__, delimiter=x),
        lambda x: zt.compare(__file__, __file__, absolute=x), lambda x: zt.table(node, x, {"a": "@a"}),
        lambda x: zt.table(node, "//n", {"a": x}), lambda x: zt.table(x, "//n", {}), lambda x: zt.table(node, "//n", x),
        lambda x: setattr(node, "name", x), lambda x: node.properties.__setitem__(x, 1),
        lambda x: node.properties.__setitem__("p", x), lambda x: setattr(node, "value", x),
        lambda x: node.properties.define("p", 1, x), lambda x: node.children.insert(x, zt.Node()),
        lambda x: zt.make_credentials(roles=x), lambda x: zt.make_credentials(roles=[x]),
        lambda x: zt.load_service(__file__, catalog=x), lambda x: zt.to_node(1, x), lambda x: zt.Log(__file__, position=x),
    ]  # fmt: skip
    for call in calls:
        try:
            call(wrong)
        except (zt.Error, TypeError, ValueError, OverflowError, LookupError, OSError, AttributeError):
            pass
    assert zt.Node("alive").name == "alive"
