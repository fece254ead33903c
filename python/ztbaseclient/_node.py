"""Trees of nodes."""

from __future__ import annotations

import html as _html
import os as _os
from collections.abc import Iterable, Iterator, Mapping, MutableMapping, MutableSequence, Set
from typing import Any, Optional, Union

from . import _core
from ._errors import FormatError, RangeError, of_system


class Bits(Set):  # type: ignore[type-arg]
    """An unchanging set of bit numbers in a row of `size` bits.

    Parameters
    ----------
    on : iterable of int
        The bits that are on, from 0.
    size : int, optional
        How many bits there are; as many as the highest one needs if left out.

    Examples
    --------
    >>> Bits([0, 5], size=8) | {2}
    Bits([0, 2, 5], size=8)
    """

    __slots__ = ("_on", "_size")

    def __init__(self, on: Iterable[int] = (), size: Optional[int] = None) -> None:
        self._on = frozenset(on)
        if any(not isinstance(bit, int) or bit < 0 for bit in self._on):
            raise ValueError("a bit is an int from 0 on")
        least = max(self._on, default=-1) + 1
        if size is not None and size < least:
            raise ValueError(f"{size} bits are less than the {least} that are needed")
        self._size = least if size is None else size

    @property
    def size(self) -> int:
        """How many bits there are."""
        return self._size

    def __contains__(self, bit: object) -> bool:
        return bit in self._on

    def __iter__(self) -> Iterator[int]:
        return iter(sorted(self._on))

    def __len__(self) -> int:
        return len(self._on)

    def __eq__(self, other: object) -> bool:
        if isinstance(other, Bits):
            return self._on == other._on and self._size == other._size
        return Set.__eq__(self, other)

    def __hash__(self) -> int:
        return hash(self._on)

    def _combine(self, on: frozenset[int], other: object) -> "Bits":
        size = max(self._size, getattr(other, "size", 0), max(on, default=-1) + 1)
        return Bits(on, size)

    def __or__(self, other: Any) -> "Bits":
        return self._combine(self._on | frozenset(other), other)

    def __and__(self, other: Any) -> "Bits":
        return self._combine(self._on & frozenset(other), other)

    def __sub__(self, other: Any) -> "Bits":
        return self._combine(self._on - frozenset(other), other)

    def __xor__(self, other: Any) -> "Bits":
        return self._combine(self._on ^ frozenset(other), other)

    def __repr__(self) -> str:
        return f"Bits({list(self)}, size={self._size})"

    def __reduce__(self) -> Any:
        return Bits, (list(self), self._size)


class Properties(MutableMapping):  # type: ignore[type-arg]
    """The properties of a node by name, in their order; names are equal with A to Z folded.

    Values are str, float, int (32 bits), None, lists of str or of int, and :class:`Bits`.
    """

    __slots__ = ("_node",)

    def __init__(self, node: "Node") -> None:
        self._node = node

    def __getitem__(self, name: str) -> Any:
        return _core.property(self._node, name)

    def __setitem__(self, name: str, value: Any) -> None:
        _core.set_property(self._node, name, value, None)

    def __delitem__(self, name: str) -> None:
        _core.remove_property(self._node, name)

    def __iter__(self) -> Iterator[str]:
        return iter(_core.property_names(self._node))

    def __len__(self) -> int:
        return int(_core.property_count(self._node))

    def __contains__(self, name: object) -> bool:
        return bool(_core.has_property(self._node, name))

    def clear(self) -> None:
        _core.clear_properties(self._node)

    def flags(self, name: str) -> int:
        """The flags word of a property."""
        return int(_core.property_flags(self._node, name))

    def define(self, name: str, value: Any, flags: int = 0) -> None:
        """Sets a property and its flags word."""
        _core.set_property(self._node, name, value, flags)

    def __repr__(self) -> str:
        return repr(dict(_core.property_items(self._node)))


class Children(MutableSequence):  # type: ignore[type-arg]
    """The children of a node, in order.

    A node has one place: one that comes in leaves where it was before.
    """

    __slots__ = ("_node",)

    def __init__(self, node: "Node") -> None:
        self._node = node

    def __len__(self) -> int:
        return int(_core.child_count(self._node))

    def _index(self, index: Any) -> int:
        number = int(index.__index__())
        count = len(self)
        if number < 0:
            number += count
        if not 0 <= number < count:
            raise RangeError(f"child index {index} out of range, there are {count}")
        return number

    def __getitem__(self, index: Any) -> Any:
        if isinstance(index, slice):
            return _core.child_list(self._node)[index]
        return _core.child_at(self._node, self._index(index))

    def __setitem__(self, index: Any, value: Any) -> None:
        children = _core.child_list(self._node)
        if isinstance(index, slice):
            children[index] = list(value)
        else:
            children[self._index(index)] = value
        _core.set_children(self._node, children)

    def __delitem__(self, index: Any) -> None:
        if isinstance(index, slice):
            children = _core.child_list(self._node)
            del children[index]
            _core.set_children(self._node, children)
        else:
            _core.remove_child(self._node, self._index(index))

    def insert(self, index: int, value: "Node") -> None:
        count = len(self)
        _core.insert_child(self._node, max(index + count, 0) if index < 0 else min(index, count), value)

    def append(self, value: "Node") -> None:
        _core.insert_child(self._node, len(self), value)

    def extend(self, values: Iterable["Node"]) -> None:
        for value in list(values):
            self.append(value)

    def pop(self, index: int = -1) -> "Node":
        if not len(self):
            raise RangeError("pop from a node without children")
        removed: Node = _core.remove_child(self._node, self._index(index))
        return removed

    def remove(self, value: "Node") -> None:
        """Removes the very node, or else the first that is equal to it."""
        children = _core.child_list(self._node)
        for i, child in enumerate(children):
            if isinstance(value, Node) and child.is_same(value):
                break
        else:
            i = children.index(value)
        _core.remove_child(self._node, i)

    def reverse(self) -> None:
        self[:] = _core.child_list(self._node)[::-1]

    def clear(self) -> None:
        _core.set_children(self._node, [])

    def sort(self, *, key: Any, reverse: bool = False) -> None:
        """Orders the children by what `key` gives of each."""
        self[:] = sorted(_core.child_list(self._node), key=key, reverse=reverse)

    def __iter__(self) -> Iterator["Node"]:
        return iter(_core.child_list(self._node))

    def __eq__(self, other: object) -> bool:
        if isinstance(other, (Children, list, tuple)):
            return list(self) == list(other)
        return NotImplemented

    __hash__ = None  # type: ignore[assignment]

    def __repr__(self) -> str:
        return f"[{', '.join(repr(child) for child in self[:10])}{', …' if len(self) > 10 else ''}]"


class Node(_core.NodeBase):
    """An element of a tree: a name, a value, properties, children.

    Parameters
    ----------
    name : str
    properties : mapping, optional
    children : iterable of Node, optional
    value : optional
        The node's own value.

    Examples
    --------
    >>> job = Node("job", {"id": 7})
    >>> job.children.append(Node("row", {"similarity": 0.5}))
    >>> job.query("//row/@similarity")
    [0.5]
    >>> job["@id"]
    7
    """

    __slots__ = ()

    def __init__(
        self,
        name: str = "",
        properties: Optional[Mapping[str, Any]] = None,
        children: Iterable["Node"] = (),
        value: Any = None,
    ) -> None:
        self.name = name
        if properties:
            self.properties.update(properties)
        if value is not None:
            self.value = value
        self.children.extend(children)

    @property
    def properties(self) -> Properties:
        """The properties by name."""
        return Properties(self)

    @properties.setter
    def properties(self, values: Mapping[str, Any]) -> None:
        items = dict(values)
        _core.clear_properties(self)
        for name, value in items.items():
            _core.set_property(self, name, value, None)

    @property
    def children(self) -> Children:
        """The children in order."""
        return Children(self)

    @children.setter
    def children(self, nodes: Iterable["Node"]) -> None:
        _core.set_children(self, list(nodes))

    @property
    def class_name(self) -> str:
        """The framework's class of the node."""
        return str(_core.class_name(self))

    def _property(self, key: Any) -> str:
        if isinstance(key, str) and key.startswith("@"):
            return key[1:]
        raise TypeError('a key is "@" and the name of a property, or the index of a child')

    def __getitem__(self, key: Any) -> Any:
        if isinstance(key, (int, slice)):
            return Children(self)[key]
        return _core.property(self, self._property(key))

    def __setitem__(self, key: Any, value: Any) -> None:
        if isinstance(key, (int, slice)):
            Children(self)[key] = value
        else:
            _core.set_property(self, self._property(key), value, None)

    def __delitem__(self, key: Any) -> None:
        if isinstance(key, (int, slice)):
            del Children(self)[key]
        else:
            _core.remove_property(self, self._property(key))

    def __contains__(self, key: object) -> bool:
        if isinstance(key, str) and key.startswith("@"):
            return bool(_core.has_property(self, key[1:]))
        return key in Children(self)

    def __len__(self) -> int:
        return int(_core.child_count(self))

    def __bool__(self) -> bool:
        return True

    def __iter__(self) -> Iterator["Node"]:
        return iter(_core.child_list(self))

    def query(self, expression: str) -> Any:
        """Runs a path query (XPath 1.0) with this node as context.

        Returns
        -------
        list, bool, float or str
            By what the query gives: of a node set the nodes, and for attributes their values.

        Raises
        ------
        QueryError
            For a text that is no query.
        """
        return _core.query(self, expression)

    def query_one(self, expression: str) -> Any:
        """The first that a query selects, None if there is none; of any other query its value."""
        return _core.query_one(self, expression)

    def to_numpy(self, expression: str, dtype: Any = None) -> Any:
        """What a query selects as a NumPy array of one dimension.

        Parameters
        ----------
        expression : str
        dtype : {int, float, str}, optional
            By the cells if left out: int64 or float64 where all are numbers, else objects of str.
        """
        return _core.to_numpy(self, expression, dtype)

    def to_python(self) -> Any:
        """The object that :func:`to_node` made the node of; of any other node a dict of name, properties, children."""
        return _core.to_python(self)

    def write_record(self) -> bytes:
        """The binary record of the node and all below it."""
        record: bytes = _core.write_record(self)
        return record

    def is_same(self, other: "Node") -> bool:
        """Whether both are one node, not only equal ones."""
        return bool(_core.same(self, other))

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Node):
            return NotImplemented
        return bool(_core.equal(self, other))

    __hash__ = None  # type: ignore[assignment]

    def __copy__(self) -> "Node":
        """A child has one parent: the copy has copies of all children."""
        copy: Node = _core.clone(self)
        return copy

    def __deepcopy__(self, memo: Any) -> "Node":
        return self.__copy__()

    def __reduce__(self) -> Any:
        return _of_record, (self.write_record(),)

    def __str__(self) -> str:
        text: str = _core.tree_text(self, _MOST_LINES)
        return text.rstrip("\n")

    def __repr__(self) -> str:
        properties, children = _core.property_count(self), len(self)
        name = self.name if len(self.name) < 60 else self.name[:59] + "…"
        return f"<Node {name!r}, {properties} properties, {children} children>"

    def _repr_html_(self) -> str:
        return _tree_html(self)


# As many lines as there are: the command prints all of them.
_MOST_LINES = 2**62
# What a browser bears of one answer of a notebook, and how deep it nests.
_MOST_NODES = 2000
_MOST_DEPTH = 60
_MOST_TEXT = 200


def _of_record(record: bytes) -> Node:
    node: Node = _core.read_record(record, None)[0]
    return node


def _short(value: Any) -> str:
    text = value if isinstance(value, str) else repr(value)
    return text if len(text) <= _MOST_TEXT else text[:_MOST_TEXT] + "…"


def _escaped(text: str) -> str:
    return _html.escape(text.encode("utf-8", "replace").decode("utf-8"), quote=True)


def _line_html(node: Node) -> str:
    cells = [f"<b>{_escaped(_short(node.name))}</b>"]
    for name, value in _core.property_items(node)[:50]:
        cells.append(f"<span style='color:#666'>{_escaped(_short(name))}=</span>{_escaped(_short(value))}")
    return " ".join(cells)


def _tree_html(root: Node) -> str:
    out: list[str] = ["<div style='font-family:monospace;line-height:1.4;text-align:left'>"]
    shown = 0
    work: list[Union[str, tuple[Node, int]]] = [(root, 0)]
    while work:
        step = work.pop()
        if isinstance(step, str):
            out.append(step)
            continue
        node, depth = step
        if shown >= _MOST_NODES:
            continue
        shown += 1
        count = len(node)
        if not count:
            out.append(f"<div style='margin-left:1.2em'>{_line_html(node)}</div>")
            continue
        state = " open" if depth < 2 and count <= 100 else ""
        out.append(f"<details style='margin-left:1.2em'{state}><summary>{_line_html(node)}</summary>")
        room = _MOST_NODES - shown
        if depth >= _MOST_DEPTH:
            out.append("<div style='margin-left:1.2em'>… deeper</div></details>")
            continue
        work.append("</details>")
        if count > room:
            work.append(f"<div style='margin-left:1.2em'>… of {count} children</div>")
        work.extend((_core.child_at(node, i), depth + 1) for i in reversed(range(min(count, room))))
    if shown >= _MOST_NODES:
        out.append(f"<div>… only the first {_MOST_NODES} nodes are shown</div>")
    out.append("</div>")
    return "".join(out)


_core.set_node_class(Node)
_core.set_bits_class(Bits)


def _bytes_of(source: Any) -> tuple[Any, Optional[str]]:
    """Bytes, and the name of the file that they come from."""
    if isinstance(source, (bytes, bytearray, memoryview)):
        return source, None
    if hasattr(source, "read"):
        data = source.read()
        if isinstance(data, str):
            raise TypeError("the file must be opened for bytes")
        return data, None
    path = _os.fspath(source)
    try:
        with open(path, "rb") as file:
            return file.read(), _os.fsdecode(path)
    except OSError as error:
        raise of_system(error, path) from None


def parse(source: Any) -> Node:
    """Reads an XML document, or a node record: its first byte tells.

    Parameters
    ----------
    source : str, os.PathLike, bytes-like or file object
        A path, the bytes themselves, or a file that is open for bytes.

    Returns
    -------
    Node
        The root element. There are elements and attributes; text content is passed over.

    Raises
    ------
    ParseError, FormatError, FileError

    Examples
    --------
    >>> parse(b'<job id="7"><row/></job>').children[0].name
    'row'
    """
    data, name = _bytes_of(source)
    if bytes(memoryview(data).cast("B")[:1]) in (b"\x01", b"\x02", b"\x03"):
        return _whole_record(data, name)
    node: Node = _core.parse(data, name)
    return node


def _whole_record(data: Any, name: Optional[str]) -> Node:
    node, used = _core.read_record(data, name)
    rest = memoryview(data).nbytes - used
    if rest:
        raise FormatError(f"{rest} bytes stand behind the record", file=name)
    read: Node = node
    return read


def read_record(source: Any) -> Node:
    """Reads a node record.

    Parameters
    ----------
    source : str, os.PathLike, bytes-like or file object
        Of a file that can seek, what stands behind the record is left for the next call.

    Raises
    ------
    FormatError, FileError
    """
    if hasattr(source, "read") and hasattr(source, "seekable") and source.seekable():
        start = source.tell()
        data, _ = _bytes_of(source)
        node, used = _core.read_record(data, None)
        source.seek(start + used)
        read: Node = node
        return read
    return _whole_record(*_bytes_of(source))


def to_node(value: Any, name: str = "value") -> Node:
    """Makes a node of nested dicts, lists, tuples and plain values; :meth:`Node.to_python` gives them back.

    Parameters
    ----------
    value : dict, list, tuple, str, bytes, int, float, bool or None
        Keys are str. Ints may have any size.
    name : str
        Of the node.

    Raises
    ------
    TypeError
        For anything else in it.
    ValueError
        For one that contains itself.

    Examples
    --------
    >>> to_node({"id": 7, "scores": [0.5, 1.5]}).to_python()
    {'id': 7, 'scores': [0.5, 1.5]}
    """
    node: Node = _core.to_node(value, name)
    return node


def live_objects() -> dict[str, int]:
    """How many objects of each of the library's classes are alive."""
    return dict(_core.live_objects())


__all__ = ["Bits", "Children", "Node", "Properties", "live_objects", "parse", "read_record", "to_node"]
