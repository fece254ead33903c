"""Tables out of trees, and trees out of tables."""

from __future__ import annotations

from collections.abc import Mapping
from typing import Any, Optional

from . import _core
from ._node import Node


def _columns(columns: Mapping[str, Any]) -> list[tuple[str, str, Any]]:
    if not isinstance(columns, Mapping):
        raise TypeError("columns must be a mapping of names and queries")
    out = []
    for name, column in columns.items():
        expression, dtype = column if isinstance(column, tuple) else (column, None)
        out.append((name, expression, dtype))
    return out


def table(node: Node, rows: str, columns: Mapping[str, Any]) -> dict[str, Any]:
    """Makes a table of what queries select, in one pass.

    Parameters
    ----------
    node : Node
    rows : str
        The query for the rows.
    columns : mapping
        Of each column's name its query, relative to the row, or a tuple of the query and int, float or str.

    Returns
    -------
    dict of numpy.ndarray
        One dimension each, as long as there are rows. Without a type a column is of int64 or float64 where all its
        cells are numbers (a missing one makes it float64 with NaN), of bool for truths, else of str and None. Texts
        with leading zeros are no numbers.

    Examples
    --------
    >>> from ztbaseclient import parse
    >>> job = parse(b'<job><row id="1" x="0.5"/><row id="2"/></job>')
    >>> table(job, "//row", {"id": "@id", "x": "@x"})
    {'id': array([1, 2]), 'x': array([0.5, nan])}
    """
    return dict(_core.table(node, rows, _columns(columns)))


def to_pandas(data: Any, rows: Optional[str] = None, columns: Optional[Mapping[str, Any]] = None) -> Any:
    """A ``pandas.DataFrame``.

    Parameters
    ----------
    data : Node, or mapping of columns
        Of a node what :func:`table` gives with `rows` and `columns`; else a table that is there already, such as
        :func:`log_table` makes.
    """
    import pandas  # type: ignore[import]

    if isinstance(data, Node):
        if rows is None or columns is None:
            raise TypeError("of a node, rows and columns are needed")
        data = table(data, rows, columns)
    elif hasattr(data, "to_pandas"):
        return data.to_pandas()
    elif not isinstance(data, Mapping):
        raise TypeError(f"a Node or a mapping of columns is needed, not {type(data).__name__}")
    return pandas.DataFrame(data)


def _plain(value: Any) -> Any:
    """A cell as a value of a property: what is missing is None."""
    item = getattr(value, "item", None)
    if item is not None and getattr(value, "ndim", 0) == 0:
        value = item()
    if value is None or (isinstance(value, float) and value != value):
        return None
    if isinstance(value, bool):
        return int(value)
    if isinstance(value, int) and not -(2**31) <= value < 2**31:
        return str(value)
    if isinstance(value, (str, int, float)):
        return value
    if type(value).__name__ in ("NAType", "NaTType"):
        return None
    return str(value)


def from_table(data: Any, name: str = "table", row: str = "row") -> Node:
    """Makes a tree of a table: a node a row, a property a cell. Missing cells are left out.

    Parameters
    ----------
    data : pandas.DataFrame, or mapping of equally long columns
    name, row : str
        Of the root and of each row.

    Examples
    --------
    >>> print(from_table({"id": [1, 2], "x": [0.5, None]}))
    table
      row id=1 x=0.5
      row id=2
    """
    if not hasattr(data, "keys"):
        raise TypeError("a DataFrame or a mapping of columns is needed")
    columns = {str(key): list(data[key]) for key in data.keys()}
    if len({len(cells) for cells in columns.values()}) > 1:
        raise ValueError("the columns are not equally long")
    root = Node(name)
    children = []
    for cells in zip(*columns.values()):
        node = Node(row)
        for key, cell in zip(columns, cells):
            value = _plain(cell)
            if value is not None:
                _core.set_property(node, key, value, None)
        children.append(node)
    root.children.extend(children)
    return root


__all__ = ["from_table", "table", "to_pandas"]
