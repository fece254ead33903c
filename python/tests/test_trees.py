from __future__ import annotations

import copy
import gc
import io
import math
import pickle
import threading
from pathlib import Path

import pytest
from conftest import DATA, command, json_lines
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st

import ztbaseclient as zt

FILES = [path for path in sorted(DATA.rglob("*")) if path.suffix in (".wsdl", ".xsd", ".xml", ".record")]
VALUES = [
    "", "text", "a\0b", "\ud800", "😀ä", None, 1.5, math.inf, -0.0, 0, -(2**31), 2**31 - 1,
    ["a", None, ""], [1, -2], zt.Bits([0, 9], 12), zt.Bits([], 0),
]  # fmt: skip


def shown(value):
    """A value as the command's JSON has it."""
    if isinstance(value, float) and not math.isfinite(value):
        return "NaN" if math.isnan(value) else "Infinity" if value > 0 else "-Infinity"
    return list(value) if isinstance(value, zt.Bits) else value


@pytest.mark.parametrize("path", FILES, ids=lambda path: path.name)
def test_trees_are_the_commands(path):
    printed = json_lines(command("tree", path, "--json"))
    try:
        root = zt.parse(path)
    except zt.Error:
        assert not printed
        return
    nodes = list(root.walk())
    assert [node.name for node in nodes] == [line["name"] for line in printed]
    for node, line in zip(nodes, printed):
        assert node.class_name == line["class"]
        properties = {p["name"]: (p["value"], p["flags"]) for p in line["properties"]}
        assert {k: (shown(v), node.properties.flags(k)) for k, v in node.properties.items()} == properties
    assert str(root) + "\n" == command("tree", path)
    for again in (pickle.loads(pickle.dumps(root)), copy.deepcopy(root), zt.read_record(root.write_record())):
        assert again == root and not again.is_same(root)


@pytest.mark.parametrize("value", VALUES, ids=repr)
def test_values_come_back(value):
    node = zt.Node("n", {"p": value}, value=value)
    for one in (node, pickle.loads(pickle.dumps(node))):
        assert one["@P"] == value and type(one["@p"]) is type(value)
        assert one.value == value
    del node["@p"]
    assert "@p" not in node


def test_a_tree_lives_as_long_as_one_of_its_nodes(job):
    last = job.children[-1]
    del job
    gc.collect()
    assert last.parent["@name"] == "ä😀" and last.root.children[4].is_same(last)
    other = zt.Node("other")
    moved = last.parent.children[0]
    other.children.append(moved)
    del other
    gc.collect()
    assert moved.parent.name == "other" and len(last.parent) == 4
    gone = last.parent.children.pop(0)
    assert gone.parent is None and gone.root.is_same(gone)


def test_a_node_has_one_place(job):
    first, second = job.children[:2]
    for wrong in (lambda: first.children.append(job), lambda: job.children.__setitem__(0, second)):
        with pytest.raises(ValueError):
            wrong()
    assert len(job) == 5
    first.children.append(second)
    assert len(job) == 4 and second.parent.is_same(first)


indices = st.one_of(st.none(), st.integers(-7, 7))
changes = st.lists(
    st.one_of(
        st.tuples(st.just("insert"), st.integers(-7, 7)),
        st.tuples(st.just("get"), st.slices(6)),
        st.tuples(st.just("delete"), st.slices(6)),
        st.tuples(st.just("pop"), st.integers(-7, 7)),
        st.tuples(st.just("set"), st.slices(6)),
        st.tuples(st.just("reverse"), st.none()),
    ),
    max_size=12,
)


@settings(max_examples=150, deadline=None)
@given(changes)
def test_children_are_a_list(steps):
    node, model = zt.Node("n"), []
    for number, (what, where) in enumerate(steps):
        for target, make in ((node.children, zt.Node), (model, str)):
            try:
                if what == "insert":
                    target.insert(where, make(f"i{number}"))
                elif what == "get":
                    target = target[where]
                elif what == "delete":
                    del target[where]
                elif what == "pop":
                    target.pop(where)
                elif what == "reverse":
                    target.reverse()
                else:
                    target[where] = [make(f"s{number}.{i}") for i in range(len(target[where]))]
            except IndexError:
                assert what == "pop"
        assert [child.name for child in node.children] == model
        if what == "get":
            assert [child.name for child in node.children[where]] == model[where]


names = st.sampled_from(["a", "B", "b", "c", "x:y", "ä"])
texts = st.text(max_size=5)
cells = st.one_of(texts, st.none(), st.floats(allow_nan=False), st.integers(-(2**31), 2**31 - 1))


@settings(max_examples=150, deadline=None)
@given(st.lists(st.tuples(names, st.one_of(st.just(...), cells)), max_size=15))
def test_properties_are_a_mapping(steps):
    node, model = zt.Node("n"), {}
    for name, value in steps:
        key = next((k for k in model if k.lower() == name.lower()), name) if name.isascii() else name
        if value is ...:
            assert node.properties.pop(name, None) == model.pop(key, None)
        else:
            node.properties[name] = model[key] = value
    assert list(node.properties.items()) == list(model.items())
    assert zt.read_record(node.write_record()) == node


whole = st.recursive(
    st.one_of(st.none(), st.booleans(), st.integers(), st.floats(allow_nan=False), st.binary(max_size=4),
              st.text(st.characters(), max_size=6)),
    lambda inner: st.one_of(
        st.lists(inner, max_size=4), st.lists(inner, max_size=3).map(tuple),
        st.dictionaries(st.one_of(st.sampled_from(["kind", "key", "item", "A", "a", "text-content", "/x", "_"]),
                                  st.text(max_size=3)), inner, max_size=5)),
    max_leaves=25)  # fmt: skip


@settings(max_examples=300, deadline=None, suppress_health_check=[HealthCheck.too_slow])
@given(whole)
def test_nested_values_come_back(value):
    node = zt.to_node(value)
    assert repr(node.to_python()) == repr(value) or node.to_python() == value
    assert zt.read_record(node.write_record()).to_python() == value


def test_depth_takes_no_stack():
    deep = []
    for _ in range(1_000_000):
        deep = [deep]
    node = zt.to_node(deep)
    record = pickle.dumps(node)
    again = pickle.loads(record)
    assert sum(1 for _ in again.walk()) == 1_000_001 and again == node
    value = again.to_python()
    for _ in range(1_000_000):
        deep, value = deep[0], value[0]
    assert value == [] == deep
    assert len(node._repr_html_()) < 100_000
    ring = []
    ring.append(ring)
    with pytest.raises(ValueError):
        zt.to_node(ring)


def test_pages_of_notebooks_escape_and_end(job):
    job.children.append(zt.Node("<script>", {'"a': "</b>&\ud800"}))
    page = job._repr_html_()
    assert "<script>" not in page and "</b>&" not in page and "&lt;script&gt;" in page
    wide = zt.Node("w", children=[zt.Node("c", {"t": "x" * 10_000}) for _ in range(20_000)])
    assert len(wide._repr_html_()) < 2_000_000


def test_records_of_a_stream_follow_each_other(job):
    stream = io.BytesIO(job.write_record() + zt.Node("two").write_record())
    assert zt.read_record(stream) == job and zt.read_record(stream).name == "two"
    with pytest.raises(ValueError, match="stand behind"):
        zt.read_record(stream.getvalue())


def test_a_tree_that_another_thread_uses_raises():
    big = zt.Node("big", children=[zt.Node("c", {"t": "x" * 50}) for _ in range(100_000)])
    seen, done = [], threading.Event()

    def write():
        for _ in range(20):
            big.query("count(//c[contains(@t, 'yy')])")
        done.set()

    thread = threading.Thread(target=write)
    thread.start()
    while not done.is_set():
        try:
            big.name
        except zt.BusyError as error:
            seen.append(error)
    thread.join()
    assert seen and big.name == "big"


def resident():
    return int(Path("/proc/self/statm").read_text().split()[1]) * 4096


def test_nothing_is_left_behind():
    document = b'<job a="\xc3\xa4"><row id="1"/><row id="2" x="text"/></job>'

    def round_trip():
        root = zt.parse(document)
        child = root.children[0]
        pickle.loads(pickle.dumps(root)).children.append(child)
        root.query("//*[@id]/@id")
        zt.table(root, "//row", {"id": "@id", "x": "@x"})
        zt.to_node({"a": [1, "b", {"c": 1.5}]}).to_python()
        copy.copy(root).properties["x"] = zt.Bits([1])
        for wrong in (lambda: root.query("///"), lambda: zt.parse(b"<a"), lambda: root["@none"]):
            with pytest.raises(zt.Error):
                wrong()

    for _ in range(500):
        round_trip()
    gc.collect()
    before, memory = zt.live_objects(), resident()
    for _ in range(10_000):
        round_trip()
    gc.collect()
    assert zt.live_objects() == before
    assert resident() - memory < 4 << 20
