"""Whole services: what WSDL 1.1 documents and their schemas say."""

from __future__ import annotations

import html as _html
import json as _json
import os as _os
from collections.abc import Iterable, Iterator
from typing import Any, NamedTuple, Optional, Union

from . import _call, _core


class Name(NamedTuple):
    """The name of a component: its namespace and its local name."""

    namespace: str
    local: str

    def __str__(self) -> str:
        return f"{{{self.namespace}}}{self.local}" if self.namespace else self.local


class Service:
    """A whole service; never changes, so that several threads may read it at once.

    Made by :func:`load_service`. What it gives (ports, operations, types …) stays usable without it.

    Attributes
    ----------
    location : str
    target_namespace : str
    services, ports, elements, types : list
    warnings : list of str
        "FILE:LINE:COLUMN: TEXT" for what could not be resolved.
    """

    def __init__(self, model: Any, recipe: tuple[str, bool, list[str], dict[bytes, bytes]]) -> None:
        self._model = model
        self._recipe = recipe
        self._caller: Optional[_call.Caller] = None

    @property
    def location(self) -> str:
        return self._recipe[0]

    @property
    def target_namespace(self) -> str:
        return str(self._model.target_namespace)

    @property
    def services(self) -> list[_core.PortGroup]:
        return list(self._model.services)

    @property
    def ports(self) -> list[_core.Port]:
        return list(self._model.ports)

    @property
    def elements(self) -> list[_core.Element]:
        return list(self._model.elements)

    @property
    def types(self) -> list[_core.Type]:
        return list(self._model.types)

    @property
    def warnings(self) -> list[str]:
        return list(self._model.warnings)

    def _name(self, name: Union[str, Name, tuple[str, str]]) -> tuple[str, str]:
        if isinstance(name, tuple):
            return name[0], name[1]
        if name.startswith("{"):
            space, _, local = name[1:].partition("}")
            return space, local
        return self.target_namespace, name

    def type(self, name: Union[str, Name, tuple[str, str]]) -> _core.Type:
        """A type by name: a Name, "{namespace}local", or a local name of the target namespace.

        Raises
        ------
        KeyError
        """
        found: Optional[_core.Type] = self._model.type(*self._name(name))
        if found is None:
            raise KeyError(name)
        return found

    def element(self, name: Union[str, Name, tuple[str, str]]) -> _core.Element:
        """A global element by name, as in :meth:`type`."""
        found: Optional[_core.Element] = self._model.element(*self._name(name))
        if found is None:
            raise KeyError(name)
        return found

    def narrowed_to(self, operation: str) -> "Service":
        """The same service with the operations of that name only, and what they need."""
        return _Narrowed(self._model.narrowed_to(operation), self._recipe, operation)

    def to_dict(self) -> dict[str, Any]:
        """The whole service as ``ztclient wsdl --all --json`` prints it."""
        whole: dict[str, Any] = _json.loads(self._model.json())
        return whole

    def call(self, operation: str, values: Optional[dict[str, Any]] = None, /, **fields: Any) -> _call.Answer:
        """Calls an operation at the address of its port; see :meth:`Caller.call`, whose options
        :meth:`caller` takes."""
        if self._caller is None:
            self._caller = _call.Caller(self)
        return self._caller.call(operation, values, **fields)

    def caller(self, **options: Any) -> _call.Caller:
        """A :class:`Caller` of this service with its options: address, port, timeout, user …"""
        return _call.Caller(self, **options)

    def request(
        self,
        operation: str,
        values: Optional[dict[str, Any]] = None,
        /,
        *,
        address: str = "",
        port: str = "",
        check: bool = True,
        **fields: Any,
    ) -> bytes:
        """The request of HTTP that a call would send, byte for byte; nothing is sent."""
        return _call.request_of(self, operation, values, fields, address, port, check)

    def template(self, operation: str, *, full: bool = True, port: str = "") -> str:
        """The values of a request to fill in, as JSON with comments."""
        return _call.template_of(self, operation, full, port)

    def __getitem__(self, port: str) -> _core.Port:
        for one in self.ports:
            if one.name == port:
                return one
        raise KeyError(port)

    def __contains__(self, port: object) -> bool:
        return any(one.name == port for one in self._model.ports)

    def __iter__(self) -> Iterator[_core.Port]:
        return iter(self.ports)

    def __len__(self) -> int:
        return len(self._model.ports)

    def __bool__(self) -> bool:
        return True

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Service):
            return NotImplemented
        return self._model is other._model or self._model.json() == other._model.json()

    def __hash__(self) -> int:
        return hash(self.target_namespace)

    def __reduce__(self) -> Any:
        return _replay, self._recipe

    def __repr__(self) -> str:
        return f"<Service {self.target_namespace!r}, {len(self)} ports>"

    def _repr_html_(self) -> str:
        return _service_html(self)


class _Narrowed(Service):
    def __init__(self, model: Any, recipe: Any, operation: str) -> None:
        super().__init__(model, recipe)
        self._operation = operation

    def __reduce__(self) -> Any:
        return _replay_narrowed, (self._recipe, self._operation)


def _replay(location: str, fetch: bool, catalogs: list[str], files: Optional[dict[bytes, bytes]]) -> Service:
    """Out of the documents that were read then; those of the network are read again."""
    model, read = _core.load_service(location, fetch, catalogs, files)
    return Service(model, (location, fetch, catalogs, read))


def _replay_narrowed(recipe: Any, operation: str) -> Service:
    return _replay(*recipe).narrowed_to(operation)


def _escaped(text: Any) -> str:
    return _html.escape(str(text).encode("utf-8", "replace").decode("utf-8"), quote=True)


_MOST_OPERATIONS = 500


def _service_html(service: Service) -> str:
    out = [f"<div><b>{_escaped(service.target_namespace)}</b>"]
    shown = 0
    for port in service.ports:
        out.append(f"<details open><summary>{_escaped(port.name)} <small>{_escaped(port.protocol)} ")
        out.append(f"{_escaped(port.address)}</small></summary><ul>")
        for operation in port.operations[: max(0, _MOST_OPERATIONS - shown)]:
            parts = ", ".join(part.name for part in operation.input.parts) if operation.input else ""
            out.append(f"<li>{_escaped(operation.name)}({_escaped(parts)})</li>")
        shown += len(port)
        out.append("</ul></details>")
    if shown > _MOST_OPERATIONS:
        out.append(f"<p>… only the first {_MOST_OPERATIONS} operations are shown</p>")
    if service.warnings:
        out.append(f"<p>{len(service.warnings)} warnings</p>")
    out.append("</div>")
    return "".join(out)


def load_service(
    location: Union[str, "_os.PathLike[str]"],
    *,
    fetch: bool = False,
    catalog: Union[None, str, "_os.PathLike[str]", Iterable[Any]] = None,
) -> Service:
    """Reads a whole service.

    Parameters
    ----------
    location : str or os.PathLike
        A file, or an address of HTTP or HTTPS.
    fetch : bool
        Whether documents from files may name others on the network.
    catalog : path or iterable of paths, optional
        XML catalogues that say where copies of documents are; "default" is that of well-known schemas.

    Returns
    -------
    Service

    Raises
    ------
    FileError
        For a document that cannot be read.
    ServiceError
        For one that is no WSDL 1.1. What it refers to and cannot be read is a warning.
    """
    if catalog is None:
        catalogs = []
    elif isinstance(catalog, (str, bytes, _os.PathLike)):
        catalogs = [_os.fsdecode(catalog)]
    else:
        catalogs = [_os.fsdecode(one) for one in catalog]
    return _replay(_os.fsdecode(location), bool(fetch), catalogs, None)


__all__ = ["Name", "Service", "load_service"]
