from __future__ import annotations

import json
import pickle
import shutil

import pytest
from conftest import DATA, ROOT, command

import ztbaseclient as zt

FILES = sorted(DATA.rglob("*.wsdl")) + [ROOT / "examples" / "jobs.wsdl"]


@pytest.mark.parametrize("path", FILES, ids=lambda path: str(path.relative_to(ROOT)))
def test_services_are_the_commands(path):
    printed = command("wsdl", path, "--all", "--json")
    try:
        service = zt.load_service(path)
    except zt.Error as error:
        assert json.loads(printed) == {"error": str(error)}
        return
    assert service.to_dict() == json.loads(printed)
    assert pickle.loads(pickle.dumps(service)) == service
    whole = service.to_dict()
    ports = [port for group in whole["services"] for port in group["ports"]]
    assert [port.name for port in service.ports] == [port["name"] for port in ports]
    for port, printed_port in zip(service.ports, ports):
        assert [o.name for o in port.operations] == [o["name"] for o in printed_port["operations"]]
    assert [t.name.local for t in service.types] == [t["name"] for t in whole["types"]]


def test_a_service_travels_without_its_files(tmp_path):
    copy = tmp_path / "jobs.wsdl"
    shutil.copy(ROOT / "examples" / "jobs.wsdl", copy)
    service = zt.load_service(str(copy))
    pickled = pickle.dumps(service)
    copy.unlink()
    port = pickle.loads(pickled).ports[0]
    operation = port[port.operations[0].name]
    assert operation.input is not None and operation.name in port
    with pytest.raises(KeyError):
        service["none"]
    assert operation.name in service._repr_html_()
    with pytest.raises(OSError):
        zt.load_service(copy)
