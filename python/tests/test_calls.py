from __future__ import annotations

import base64
import datetime
import decimal
import email
import http.server
import os
import pickle
import subprocess
import threading

import pytest
from conftest import DATA, command

import ztbaseclient as zt

SHOP = DATA / "call" / "shop.wsdl"


@pytest.fixture
def shop():
    return zt.load_service(SHOP)


@pytest.fixture
def server(tmp_path):
    """A stand-in that answers 7 to everything that is sent."""
    (tmp_path / "send.json").write_text('{"number": 7, "total": 1.50, "line": ["a"], "paid": true}')
    program = os.environ.get("ZTCLIENT", "ztclient")
    process = subprocess.Popen([program, "mock", SHOP, "--answers", tmp_path], stdout=subprocess.PIPE, text=True)
    yield process.stdout.readline().strip()
    process.kill()
    process.communicate()


def test_requests_are_the_commands(shop):
    values = {
        "price": [decimal.Decimal("1.10"), 2],
        "when": datetime.datetime(2026, 2, 28, 1, 2, 3),
        "circle": {"r": float("inf")},
        "money": {"@currency": "AB1", "$": 0.5},
        "colour": None,
    }
    fields = ["price:=[1.10, 2]", "when=2026-02-28T01:02:03", 'circle:={"r": "INF"}', "colour:=null"]
    fields += ['money:={"@currency": "AB1", "$": 0.5}']
    printed = command("call", SHOP, "send", *fields, "--dry-run")
    assert shop.request("send", values).decode() == printed
    assert shop.template("send", full=False) == command("call", SHOP, "send", "--template", "minimal")


def test_refused_values_name_their_paths(shop):
    with pytest.raises(zt.RequestError) as refused:
        shop.call("send", cod="x", price=[1.234])
    assert refused.value.findings == [
        ("cod", 'there is no such member; did you mean "code"?'),
        ("price[0]", "1.234 has 3 fraction digits, 2 allowed"),
    ]
    assert pickle.loads(pickle.dumps(refused.value)).findings == refused.value.findings
    deep = {}
    for _ in range(1000):
        deep = {"self": deep}
    for bad in ({"code": object()}, deep):
        with pytest.raises((TypeError, ValueError)):
            shop.request("send", bad)
    with pytest.raises(KeyError):
        shop.call("sent")


def test_answers_and_faults(shop, server):
    caller = shop.caller(address=server)
    answer = caller.call("send", code="AB1")
    assert answer == {"number": 7, "line": ["a"], "paid": True, "total": 1.5}
    assert answer.warnings == [] and answer.headers is None
    assert caller.send(code="AB1")["number"] == 7
    with pytest.raises(zt.FaultError) as fault:
        caller.call("send", code="x", check=False)
    assert fault.value.code == "Client" and "pattern" in fault.value.fault_reason
    with pytest.raises(zt.ServiceError):
        shop.caller(address="http://127.0.0.1:1/", timeout=5).call("send")


PARTS = b"""--b\r\n\r\n<s:Envelope xmlns:s='http://schemas.xmlsoap.org/soap/envelope/'><s:Body><p:picture xmlns:p='urn:pictures'>
<p:bytes><x:Include xmlns:x='http://www.w3.org/2004/08/xop/include' href='cid:1'/></p:bytes></p:picture></s:Body></s:Envelope>
--b\r\nContent-ID: <1>\r\n\r\nbytes\r\n--b\r\nContent-ID: <2>\r\nContent-Type: a/b; name="../x"\r\n\r\nmore\r\n--b--"""


def test_files_go_and_come_beside_messages(tmp_path):
    pictures = zt.load_service(DATA / "call" / "pictures.wsdl")
    file = tmp_path / "picture"
    file.write_bytes(b"\xff" * 2000)
    inside = pictures.request("keep", {"bytes": [file]})
    assert base64.b64encode(file.read_bytes()) in inside and inside == pictures.request("keep", bytes=[file.read_bytes()])
    with pytest.raises(ValueError):
        pictures.request("keep", bytes=[{"$file": str(file)}])
    requests = []

    class Handler(http.server.BaseHTTPRequestHandler):
        def log_message(self, *arguments):
            pass

        def do_POST(self):
            requests.append((self.headers["Content-Type"], self.rfile.read(int(self.headers["Content-Length"]))))
            self.send_response(200)
            self.send_header("Content-Type", "multipart/related; boundary=b")
            self.send_header("Content-Length", str(len(PARTS)))
            self.end_headers()
            self.wfile.write(PARTS)

    with http.server.HTTPServer(("127.0.0.1", 0), Handler) as server:
        threading.Thread(target=server.serve_forever, daemon=True).start()
        address = f"http://127.0.0.1:{server.server_port}/"
        answer = pictures.caller(address=address, mtom=True, wsse=("ada", "secret")).keep(bytes=[{"$file": file, "$mediaType": "image/x"}])
        saving = pictures.caller(address=address, save_attachments=tmp_path / "saved").keep()
        server.shutdown()
    assert answer == {"bytes": [base64.b64encode(b"bytes").decode()]}
    assert answer.attachments == [{"id": "2", "part": "", "name": "../x", "media_type": 'a/b; name="../x"', "content": b"more"}]
    message = email.message_from_bytes(b"Content-Type: " + requests[0][0].encode() + b"\r\n\r\n" + requests[0][1])
    root, picture = message.get_payload()
    assert picture.get_content_type() == "image/x" and picture.get_payload(decode=True) == file.read_bytes()
    assert b"secret" not in root.get_payload(decode=True) and b">ada<" in root.get_payload(decode=True)
    assert open(saving["bytes"][0]["$file"], "rb").read() == b"bytes"
    assert open(saving.attachments[0]["file"], "rb").read() == b"more" and (tmp_path / "saved" / "x").exists()


def test_several_threads_call_at_once(shop, server):
    caller, numbers = shop.caller(address=server), []
    threads = [threading.Thread(target=lambda: numbers.append(caller.send()["number"])) for _ in range(8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert numbers == [7] * 8
