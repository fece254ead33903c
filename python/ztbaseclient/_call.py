"""Calls of services: ``service.call("PlaceOrder", item={"id": 7})``."""

from __future__ import annotations

import base64 as _base64
import decimal as _decimal
import os as _os
from typing import Any, Optional, Union

from . import _core
from ._errors import FaultError


def as_value(value: Any) -> Any:
    """What the extension does not know by itself, as a value of a request."""
    if isinstance(value, float):
        special = {"inf": "INF", "-inf": "-INF", "nan": "NaN"}.get(repr(value))
        return _core.CallValue.text(special) if special else _core.CallValue.number(repr(value))
    if isinstance(value, _decimal.Decimal):
        return _core.CallValue.number(format(value, "f"))
    if isinstance(value, (bytes, bytearray, memoryview)):
        return _core.CallValue.text(_base64.b64encode(value).decode())
    if hasattr(value, "isoformat"):
        return _core.CallValue.text(value.isoformat())
    if hasattr(value, "item"):  # of an array
        return _plain(value.item())
    raise TypeError(f"{type(value).__name__} is no value of a request")


def _plain(value: Any) -> Any:
    """Of what the extension knows elsewhere, too."""
    if isinstance(value, str):
        return _core.CallValue.text(value)
    return _core.CallValue.number(str(int(value))) if isinstance(value, int) else as_value(value)


def number(text: str) -> Union[int, float, _decimal.Decimal]:
    """int, float where it holds all digits, else Decimal."""
    if not any(c in text for c in ".eE"):
        return int(text)
    exact = _decimal.Decimal(text)
    real = float(text)
    return real if len(exact.as_tuple().digits) <= 15 else exact


class Answer(dict[str, Any]):
    """The values of an answer by name.

    Attributes
    ----------
    headers : dict or None
    warnings : list of str
        What the types do not foresee.
    attachments : list of dict
        What came beside the answer and no value is made of: "id", "part", "name", "media_type", and "content" or
        "file".
    """

    headers: Optional[dict[str, Any]] = None
    warnings: list[str] = []
    attachments: list[dict[str, Any]] = []


class Caller:
    """Calls operations of a service over connections that are kept. Any number of threads may call.

    Parameters
    ----------
    service : Service
    address : str
        Another address than the port's.
    port : str
        The port to call; the first of SOAP that has the operation unless given.
    timeout : float
        Seconds that a call may take.
    user : str
        "NAME:PASSWORD", for servers that ask.
    bearer : str
        A token that goes along.
    authorities : path, optional
        Certificates to trust.
    headers : dict
        More headers of HTTP.
    retries : int
        How often a connection is tried again that cannot be made.
    strict : bool
        Whether an answer that is not as the types want it is an error.
    mtom : bool
        Whether files and larger binary values go beside the message.
    gzip : bool
        Whether requests go compressed.
    wsse : tuple of str, optional
        User and password in the message (WS-Security), the password as a digest.
    wsse_text : bool
        Whether the password goes as it is.
    wsse_seconds : int
        How long a message is good for; 0 says nothing of it.
    save_attachments : path, optional
        A folder for what comes beside answers.
    """

    def __init__(
        self,
        service: Any,
        *,
        address: str = "",
        port: str = "",
        timeout: float = 300.0,
        user: str = "",
        bearer: str = "",
        authorities: Union[None, str, "_os.PathLike[str]"] = None,
        headers: Optional[dict[str, str]] = None,
        retries: int = 0,
        strict: bool = False,
        mtom: bool = False,
        gzip: bool = False,
        wsse: Optional[tuple[str, str]] = None,
        wsse_text: bool = False,
        wsse_seconds: int = 0,
        save_attachments: Union[None, str, "_os.PathLike[str]"] = None,
    ) -> None:
        self._model = service._model
        self._address = address
        self._port = port
        self._headers = dict(headers or {})
        for name, value in self._headers.items():
            if any(ord(c) < 32 for c in name + value) or ":" in name or not name:
                raise ValueError(f"{name!r} is no header")
        trusted = "" if authorities is None else _os.fsdecode(authorities)
        security = None if wsse is None else (*wsse, bool(wsse_text), int(wsse_seconds))
        folder = "" if save_attachments is None else _os.fsdecode(save_attachments)
        self._client = _core.Client(
            self._model, float(timeout), user, bearer, trusted, int(retries), bool(strict), bool(mtom), bool(gzip), security, folder
        )

    def call(self, operation: str, values: Optional[dict[str, Any]] = None, /, *, check: bool = True, **fields: Any) -> Answer:
        """Makes a request, checks it by its types, sends it, and reads the answer.

        Parameters
        ----------
        operation : str
        values : dict, optional
            The members of the request by name; "@name" is an attribute, "$" the text of what has attributes,
            "$type" the type that stands in, "$headers" are the headers of SOAP.
        check : bool
            Whether values that are not as the types want them are refused.
        **fields
            More members.

        Returns
        -------
        Answer

        Raises
        ------
        KeyError
            There is no such operation.
        RequestError
            The values are not as the types want them.
        FaultError
            The service answers a fault.
        ServiceError
            There is no answer, or none of SOAP.
        """
        whole = {**(values or {}), **fields}
        given, headers, fault, warnings, attachments = self._client.call(
            self._model, operation, self._port, whole, self._address, check, self._headers
        )
        if fault is not None:
            raise FaultError(*fault)
        answer = Answer(given if isinstance(given, dict) else {"$": given})
        answer.headers = headers
        answer.warnings = warnings
        answer.attachments = attachments
        return answer

    def __getattr__(self, operation: str) -> Any:
        if operation.startswith("_"):
            raise AttributeError(operation)
        return lambda values=None, /, **fields: self.call(operation, values, **fields)


def request_of(service: Any, operation: str, values: Optional[dict[str, Any]], fields: dict[str, Any], address: str, port: str, check: bool) -> bytes:
    wire: bytes = _core.request_of(service._model, operation, port, {**(values or {}), **fields}, address, check)
    return wire


def template_of(service: Any, operation: str, full: bool, port: str) -> str:
    text: str = _core.template_of(service._model, operation, port, full)
    return text


__all__ = ["Answer", "Caller"]
