"""Comparison of result files, console logs, checksums."""

from __future__ import annotations

import os as _os
import time as _time
from collections.abc import Iterable, Iterator, Sequence
from dataclasses import dataclass
from typing import Any, NamedTuple, Optional, Union

from . import _core

_Path = Union[str, bytes, "_os.PathLike[str]"]


class FieldDifference(NamedTuple):
    """What differs in a field; `kind` is "number" or "text", `field1` and `field2` count from 1, 0 for none.

    Texts have neither distances nor digits that agree.
    """

    kind: str
    field1: int
    field2: int
    column: Optional[str]
    text1: str
    text2: str
    absolute: Optional[float]
    relative: Optional[float]
    digits: Optional[int]
    within: bool


class Difference(NamedTuple):
    """A line that differs; `kind` is "changed", "added" or "removed" ("equal" for context), lines count from 1."""

    kind: str
    line1: int
    line2: int
    text1: str
    text2: str
    fields: tuple[FieldDifference, ...]


@dataclass(frozen=True)
class Comparison:
    """What :func:`compare` found; an iterable of :class:`Difference`. True if the files are equal or within tolerance.

    `within` and `different` count fields, `added` and `removed` lines.
    """

    differences: tuple[Difference, ...] = ()
    within: int = 0
    different: int = 0
    added: int = 0
    removed: int = 0
    largest_absolute: float = 0.0
    largest_relative: float = 0.0
    aligned_by_blocks: bool = False
    binary: bool = False

    @property
    def equal(self) -> bool:
        """Whether nothing differs, not even within tolerance."""
        return self.within_tolerance and self.within == 0

    @property
    def within_tolerance(self) -> bool:
        """Whether whatever differs is within tolerance."""
        return not (self.binary or self.different or self.added or self.removed)

    def __bool__(self) -> bool:
        return self.within_tolerance

    def __iter__(self) -> Iterator[Difference]:
        return iter(self.differences)

    def __len__(self) -> int:
        return len(self.differences)

    def to_pandas(self) -> Any:
        """A ``pandas.DataFrame`` with a row a field that differs, or a line that stands alone."""
        import pandas  # type: ignore[import]

        names = ["kind", "line1", "line2", "field1", "field2", "column", "text1", "text2"]
        names += ["absolute", "relative", "digits", "within"]
        rows: list[tuple[Any, ...]] = []
        for line in self.differences:
            if line.kind == "equal":
                continue
            for f in line.fields:
                rows.append(
                    (line.kind, line.line1, line.line2, f.field1, f.field2, f.column, f.text1, f.text2)
                    + (f.absolute, f.relative, f.digits, f.within)
                )
            if not line.fields:
                rows.append(
                    (line.kind, line.line1, line.line2, 0, 0, None, line.text1, line.text2)
                    + (None, None, None, False)
                )
        return pandas.DataFrame(rows, columns=names)

    def __repr__(self) -> str:
        if self.equal:
            return "<Comparison: equal>"
        state = "within tolerance" if self.within_tolerance else "different"
        return f"<Comparison: {state}, {len(self.differences)} lines differ>"


def compare(
    a: _Path,
    b: _Path,
    tolerance: Optional[int] = None,
    *,
    absolute: Optional[float] = None,
    relative: Optional[float] = None,
    ignore_case: bool = False,
    ignore_blank_lines: bool = False,
    ignore_columns: Iterable[Union[str, int]] = (),
    key: Optional[str] = None,
    delimiter: Optional[str] = None,
) -> Comparison:
    """Finds every difference of two files.

    Parameters
    ----------
    a, b : str, bytes or os.PathLike
    tolerance : int, optional
        So many significant digits of decimal numbers must agree, 0 for all; 5 unless a distance is given.
    absolute, relative : float, optional
        Distances of numbers that are within tolerance.
    ignore_case, ignore_blank_lines : bool
    ignore_columns : iterable of str or int
        Names out of the heading, or numbers from 1.
    key : str, optional
        Rows with the same text in this column belong together, in any order.
    delimiter : str, optional
        One character; blanks, quotation marks and ``<=>,;`` if left out.

    Returns
    -------
    Comparison

    Raises
    ------
    FileError
        For a file that cannot be read.
    """
    if tolerance is not None and (not isinstance(tolerance, int) or isinstance(tolerance, bool)):
        raise TypeError("tolerance must be an int")
    if tolerance is not None and not 0 <= tolerance < 2**31:
        raise ValueError("tolerance must be from 0 to 2147483647")
    if isinstance(ignore_columns, (str, int)):
        ignore_columns = [ignore_columns]
    found = _core.compare(
        a,
        b,
        {
            "tolerance": tolerance,
            "absolute": absolute,
            "relative": relative,
            "ignore_case": bool(ignore_case),
            "ignore_blank_lines": bool(ignore_blank_lines),
            "ignore_columns": [str(column) for column in ignore_columns],
            "key": key,
            "delimiter": delimiter,
        },
    )
    lines = tuple(Difference._make((*line[:5], tuple(FieldDifference(*field) for field in line[5]))) for line in found[8])
    return Comparison(lines, *found[:8])


class Entry(Sequence):  # type: ignore[type-arg]
    """An entry of a log: (name, value) pairs in order, found by name with A to Z folded."""

    __slots__ = ("pairs", "position")

    def __init__(self, pairs: Iterable[tuple[str, str]], position: int = 0) -> None:
        self.pairs = [tuple(pair) for pair in pairs]
        #: The byte behind the entry.
        self.position = position

    def __getitem__(self, key: Any) -> Any:
        if not isinstance(key, str):
            return self.pairs[key]
        for name, value in self.pairs:
            if _folded(name) == _folded(key):
                return value
        raise KeyError(key)

    def get(self, name: str, default: Any = None) -> Any:
        """The first value of a name."""
        try:
            return self[name]
        except KeyError:
            return default

    def __contains__(self, key: object) -> bool:
        if isinstance(key, str):
            return any(_folded(name) == _folded(key) for name, _ in self.pairs)
        return key in self.pairs

    def __len__(self) -> int:
        return len(self.pairs)

    def __eq__(self, other: object) -> bool:
        return isinstance(other, Entry) and self.pairs == other.pairs

    __hash__ = None  # type: ignore[assignment]

    def to_dict(self) -> dict[str, str]:
        """The values by name, the first of each."""
        out: dict[str, str] = {}
        for name, value in self.pairs:
            out.setdefault(name, value)
        return out

    def __repr__(self) -> str:
        return f"Entry({self.pairs!r})"

    def __reduce__(self) -> Any:
        return Entry, (self.pairs, self.position)


_FOLD = {upper: upper + 32 for upper in range(ord("A"), ord("Z") + 1)}


def _folded(name: str) -> str:
    return name.translate(_FOLD)


class Log:
    """An iterator of the entries of a job's console log.

    Parameters
    ----------
    path : str, bytes or os.PathLike
    position : int
        Begin at this byte.
    follow : bool
        Wait for what is still written; only complete entries. Ends with KeyboardInterrupt or :meth:`close`.
    pause : float
        Seconds between two looks.

    Raises
    ------
    FileError
        For a log that cannot be opened.
    """

    def __init__(self, path: _Path, *, position: int = 0, follow: bool = False, pause: float = 0.2) -> None:
        self._path = path
        self._follow = bool(follow)
        self._pause = float(pause)
        self._reader = _core.LogReader(path, position)
        self._seen = -1
        self._closed = False

    @property
    def position(self) -> int:
        """Behind what was read, in bytes."""
        return int(self._reader.position)

    @property
    def resume_position(self) -> int:
        """Where a reader begins that meets every entry whole, and none twice."""
        return int(self._reader.resume_position)

    def close(self) -> None:
        """Ends the iteration, also for whoever waits in it."""
        self._closed = True

    def __enter__(self) -> "Log":
        return self

    def __exit__(self, *failure: Any) -> None:
        self.close()

    def __iter__(self) -> "Log":
        return self

    def _length(self) -> int:
        try:
            return _os.stat(self._path).st_size
        except OSError:
            return 0

    def __next__(self) -> Entry:
        while not self._closed:
            pairs = self._reader.next(self._follow)
            if pairs is not None:
                return Entry(pairs, self.position)
            if not self._follow:
                break
            self._wait()
        raise StopIteration

    def _wait(self) -> None:
        """Until the log has grown. One that is shorter, or not there for a while, has begun anew."""
        length = self._length()
        if self._seen < 0:
            self._seen = max(length, self.position)
        while length == self._seen and not self._closed:
            _time.sleep(self._pause)
            length = self._length()
        if length < self._seen:
            while not self._closed and self._length() == 0:
                _time.sleep(self._pause)
            if not self._closed:
                self._reader = _core.LogReader(self._path, 0)
                length = 0
        self._seen = length


def log_table(path: _Path, *, columns: Optional[Iterable[str]] = None) -> dict[str, Any]:
    """The entries of a log as a table.

    Parameters
    ----------
    path : str, bytes or os.PathLike
    columns : iterable of str, optional
        All names, in the order in which they come first, if left out.

    Returns
    -------
    dict of numpy.ndarray
        Of objects: the first value of a name as str, None where an entry has none.
    """
    import numpy

    wanted = None if columns is None else list(columns)
    cells: dict[str, list[Any]] = {}
    shown: dict[str, str] = {}
    for name in wanted or ():
        cells[_folded(name)] = []
        shown.setdefault(_folded(name), name)
    count = 0
    for entry in Log(path):
        for name, value in entry.pairs:
            key = _folded(name)
            if key not in cells:
                if wanted is not None:
                    continue
                cells[key] = [None] * count
                shown[key] = name
            if len(cells[key]) == count:
                cells[key].append(value)
        count += 1
        for column in cells.values():
            if len(column) < count:
                column.append(None)
    out = {}
    for key, column in cells.items():
        array = numpy.empty(count, dtype=object)
        array[:] = column
        out[shown[key]] = array
    return out


def checksum(*texts: str) -> str:
    """The digest of texts in their order: 32 hexadecimal digits.

    >>> len(checksum("one", "two"))
    32
    """
    return str(_core.checksum(*texts))


__all__ = ["Comparison", "Difference", "Entry", "FieldDifference", "Log", "checksum", "compare", "log_table"]
