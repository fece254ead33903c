"""Exceptions of the package: one family under :class:`Error`."""

from __future__ import annotations

import errno as _errno
import os as _os
from typing import Any, Optional


class Error(Exception):
    """What the library refuses.

    Attributes
    ----------
    class_name : str
        The class of the library's exception.
    trail : list of (str, str)
        The calls of the library that it passed, innermost first: class and method.
    file, reason : str or None
    line, column : int or None
        Where the fault stands, from 1, the column in bytes.
    """

    def __init__(
        self,
        message: str = "",
        class_name: str = "Exception",
        trail: Optional[list[tuple[str, str]]] = None,
        file: Optional[str] = None,
        line: Optional[int] = None,
        column: Optional[int] = None,
        reason: Optional[str] = None,
    ) -> None:
        super().__init__(message)
        self.message = message
        self.class_name = class_name
        self.trail = list(trail or [])
        self.file = file
        self.line = line
        self.column = column
        self.reason = reason

    def __str__(self) -> str:
        if self.file is None:
            return self.message
        place = ":".join(str(part) for part in (self.file, self.line, self.column) if part is not None)
        text = self.message if self.reason is None else f"{self.message}: {self.reason}"
        return text if self.file in text else f"{place}: {text}"

    def __reduce__(self) -> Any:
        return (
            type(self),
            (self.message, self.class_name, self.trail, self.file, self.line, self.column, self.reason),
        )


class FormatError(Error, ValueError):
    """Bytes or a text that are not what they should be."""


class ParseError(FormatError):
    """A document that is no XML."""


class QueryError(FormatError):
    """A text that is no path query, or one that gives something else than is asked for."""


class ServiceError(FormatError):
    """A document that is no WSDL 1.1."""


class RequestError(FormatError):
    """Values that make no request.

    Attributes
    ----------
    findings : list of (str, str)
        All that is wrong with them: the path, and what.
    """

    def __init__(self, message: str = "", findings: Optional[list[tuple[str, str]]] = None) -> None:
        super().__init__(message, "RequestError")
        self.findings = list(findings or [])

    def __reduce__(self) -> Any:
        return type(self), (self.message, self.findings)


class FaultError(Error):
    """What a service answers when it could not do what it was asked.

    Attributes
    ----------
    code, fault_reason, actor : str
    detail : dict, str or None
    """

    def __init__(self, code: str = "", reason: str = "", actor: str = "", detail: Any = None) -> None:
        super().__init__(f"{code}: {reason}" if reason else code, "AnswerFault")
        self.code = code
        self.fault_reason = reason
        self.actor = actor
        self.detail = detail

    def __reduce__(self) -> Any:
        return type(self), (self.code, self.fault_reason, self.actor, self.detail)


class FileError(Error, OSError):
    """A file that cannot be opened, read or written; `errno` says why where it is known."""

    def __init__(self, message: str = "", *rest: Any) -> None:
        Error.__init__(self, message, *rest)
        number = _errno_of(self.reason or message)
        if number is not None:
            self.errno = number
        self.filename = self.file


class HttpError(Error, OSError):
    """A request that failed."""


class MissingError(Error, KeyError):
    """A name that nothing has."""


class BusyError(Error, RuntimeError):
    """An object that another thread uses."""


class RangeError(Error, IndexError):
    """An index beyond the end."""


class OutOfMemoryError(Error, MemoryError):
    """Memory that could not be had."""


_families = {
    "FormatError": FormatError,
    "ParseError": ParseError,
    "QueryError": QueryError,
    "ServiceError": ServiceError,
    "FileError": FileError,
    "HttpError": HttpError,
    "IndexError": RangeError,
    "MemoryError": OutOfMemoryError,
}


def _errno_of(text: str) -> Optional[int]:
    for number in _errno.errorcode:
        if text.endswith(_os.strerror(number)):
            return number
    return None


def make(family: str, message: str, *rest: Any) -> Error:
    """The exception for what the library threw."""
    if family == "ServiceError" and _errno_of(message) is not None:
        family = "FileError"
    error: Error = _families[family](message, *rest)
    return error


def of_system(error: OSError, path: Any) -> FileError:
    """The exception for a file that Python could not read."""
    reason = error.strerror or str(error)
    return FileError("Unable to open file", "Exception", [], _os.fsdecode(path), None, None, reason)
