from __future__ import annotations

import math

import numpy as np
import pandas as pd
import pytest

import ztbaseclient as zt

ROWS = b"""<t><r i="1" f="0.5" z="007" m="1" e=""/><r i="-4" f="1e3" z="12" e="x"/><r i="0" f="INF" z="3" m="2"/></t>"""


@pytest.mark.parametrize(
    "query, kind, cells",
    [
        ("@i", "int64", [1, -4, 0]),
        ("@f", "float64", [0.5, 1000, math.inf]),
        ("@z", "object", ["007", "12", "3"]),
        ("@m", "float64", [1, math.nan, 2]),
        ("@e", "object", ["", "x", None]),
        ("@none", "float64", [math.nan] * 3),
        ("@i > 0", "bool", [True, False, False]),
        ("number(@i) * 2", "float64", [2, -8, 0]),
        ("name()", "object", ["r"] * 3),
        (("@i", str), "object", ["1", "-4", "0"]),
        (("@i", float), "float64", [1, -4, 0]),
        ("../r[1]/@z", "object", ["007"] * 3),
    ],
    ids=str,
)
def test_columns_take_the_type_that_fits(query, kind, cells):
    column = zt.table(zt.parse(ROWS), "/t/r", {"c": query})["c"]
    assert column.dtype == kind
    assert pd.Series(column).equals(pd.Series(np.array(cells, dtype=kind)))


def test_tables_go_to_pandas_and_back():
    frame = zt.to_pandas(zt.parse(ROWS), "//r", {"i": "@i", "f": "@f", "z": "@z"})
    tree = zt.from_table(frame, row="r")
    assert zt.to_pandas(tree, "//r", {"i": "@i", "f": "@f", "z": "@z"}).equals(frame)
    assert tree.children[0]["@i"] == 1 and tree.children[2]["@f"] == math.inf
    with pytest.raises(ValueError):
        zt.from_table({"a": [1], "b": []})


@pytest.mark.parametrize(
    "query, answer",
    [("count(//r)", 3.0), ("//r[1]/@z = '007'", True), ("string(//r[2]/@z)", "12"), ("//r/@z", ["007", "12", "3"]),
     ("sum(//r/@i) div 2", -1.5), ("//nothing", [])],
)  # fmt: skip
def test_queries_give_what_they_are(query, answer):
    given = zt.parse(ROWS).query(query)
    assert given == answer and type(given) is type(answer)


def test_numbers_go_out_as_arrays():
    tree = zt.parse(ROWS)
    assert tree.to_numpy("//@i").tolist() == [1, -4, 0] and tree.to_numpy("//@i").dtype == "int64"
    node = zt.Node("n", {"list": [3, 1, 2], "d": 1.5})
    assert node.to_numpy("@list").tolist() == [3, 1, 2]
    assert tree.query_one("//r[@i=0]/@f") == "INF" and tree.query_one("//r[9]") is None
    for wrong in ("///", "//r[", "\0"):
        with pytest.raises(ValueError):
            tree.to_numpy(wrong)
    with pytest.raises(ValueError):
        tree.to_numpy("//@z[. = '007']", int)
