"""What clients send: credentials, end points, links, cache requests, uploads."""

from __future__ import annotations

import operator as _operator
import os as _os
import shutil as _shutil
import tempfile as _tempfile
from collections.abc import Iterable, Mapping
from dataclasses import dataclass
from typing import Any, Callable, Optional, Union

from . import _core


class RoleNames:
    """The names of a server's roles and their numbers. Names are equal with A to Z folded.

    Parameters
    ----------
    bits : mapping of str to int
        The number of each role.

    Examples
    --------
    >>> names = RoleNames({"Administrators": 0, "Chemists": 3})
    >>> names["chemists"]
    3
    >>> names.of([3, 9])
    ['Chemists']
    """

    def __init__(self, bits: Mapping[str, int]) -> None:
        self._bits = {name: _operator.index(bit) for name, bit in dict(bits).items()}
        if any(bit < 0 for bit in self._bits.values()):
            raise ValueError("a role's bit is negative")
        self._table = _core.RoleTable(self._bits)

    def __getitem__(self, name: str) -> int:
        return int(self._table.bit(name))

    def __contains__(self, name: object) -> bool:
        return bool(name in self._table)

    def __len__(self) -> int:
        return len(self._table)

    def of(self, roles: Iterable[int]) -> list[str]:
        """The names of these roles; those without a name are left out."""
        named = (self._table.name(role) for role in roles)
        return [name for name in named if name is not None]

    def __reduce__(self) -> Any:
        return RoleNames, (self._bits,)

    def __repr__(self) -> str:
        return f"RoleNames({self._bits!r})"


@dataclass(frozen=True)
class Credentials:
    """What a credentials string says; see :func:`read_credentials`.

    `roles` are the numbers of the roles that the user has, of `role_bits` that there are. `repr` hides the password.
    """

    user: str = ""
    password: str = ""
    domain: str = ""
    client_description: str = ""
    machine: str = ""
    client_version: str = ""
    xmldb: str = ""
    log: str = ""
    locator: str = ""
    server_ip: str = "0.0.0.0"
    client_ip: str = "0.0.0.0"
    login_time: int = 0
    body_flags: int = 0
    header_flags: int = 0
    roles: tuple[int, ...] = ()
    role_bits: int = 0
    format_version: int = 2
    random_number: int = 0
    encrypted_length: int = 0
    quick_checksum: int = 0
    checksum_ok: bool = True

    def is_member_of(self, role: str, names: RoleNames) -> bool:
        """Whether the user has a role; False for one that nobody defines."""
        return role in names and names[role] in self.roles

    def __repr__(self) -> str:
        return f"<Credentials of {self.user!r}, roles {list(self.roles)}>"


def make_credentials(
    user: str = "",
    password: str = "",
    *,
    domain: str = "",
    client_description: str = "",
    machine: str = "",
    client_version: str = "",
    xmldb: str = "",
    log: str = "",
    locator: str = "",
    server_ip: str = "",
    client_ip: str = "",
    login_time: int = 0,
    body_flags: int = 0,
    header_flags: int = 0,
    roles: Iterable[Union[int, str]] = (),
    role_bits: Optional[int] = None,
    role_names: Optional[RoleNames] = None,
) -> str:
    """Makes a credentials string, which is a session id too.

    The string hides the password from the eye, not from an attacker: send it over HTTPS only.

    Parameters
    ----------
    user, password, domain, … : str
        Up to 255 UTF-16 units each.
    roles : iterable of int or str
        The numbers of the user's roles, or their names where `role_names` are given.
    role_bits : int, optional
        How many roles there are; up to the last that is given if left out.
    role_names : RoleNames, optional

    Raises
    ------
    FormatError
        For a text that is too long.
    KeyError
        For a role that `role_names` does not know.

    Examples
    --------
    >>> read_credentials(make_credentials("ann", roles=[3])).roles
    (3,)
    """
    bits = [role if role_names is None or not isinstance(role, str) else role_names[role] for role in roles]
    texts = {
        "user": user,
        "password": password,
        "domain": domain,
        "client_description": client_description,
        "machine": machine,
        "client_version": client_version,
        "xmldb": xmldb,
        "log": log,
        "locator": locator,
    }
    return str(
        _core.make_credentials(
            texts, server_ip, client_ip, login_time, body_flags, header_flags, bits, role_bits
        )
    )


def read_credentials(text: str) -> Credentials:
    """Reads a credentials string. A wrong checksum is no error: see `checksum_ok`.

    Raises
    ------
    FormatError
        For a text that is none.
    """
    read = _core.read_credentials(text)
    read["roles"] = tuple(read["roles"])
    return Credentials(**read)


def end_point(server: str, *, release: int = 801) -> str:
    """The locator's end point of what people write.

    >>> end_point("atlas")
    'https://atlas:9943/dravolin/locator'
    """
    return str(_core.end_point(server, release))


def host_of(end_point: str) -> str:
    """Back from the end point.

    >>> host_of("https://atlas:9943/dravolin/locator")
    'atlas'
    """
    return str(_core.host_of(end_point))


def link(
    server: str,
    protocol: str,
    parameters: Optional[Mapping[str, Any]] = None,
    *,
    session: Optional[str] = None,
    anonymous: bool = False,
    message: str = "",
    array_delimiter: str = "",
) -> str:
    """The link that runs a published protocol. Parameters are ordered by name.

    >>> link("atlas:9944", "Find Similar", {"limit": 10})
    'http://atlas:9944/perlbin/runjob.pl?_protocol=Find%20Similar&limit=10'
    """
    if anonymous and session is not None:
        raise ValueError("a link runs as a session's user or as anonymous, not both")
    texts = {}
    for name, value in (parameters or {}).items():
        texts[name] = value if isinstance(value, str) else str(value)
    return str(_core.link(server, protocol, texts, session, anonymous, message, array_delimiter))


#: The bits of the arguments of a cache request.
CACHE_ARGUMENTS = {
    "user": 0x001,
    "jobid": 0x002,
    "cacheid": 0x004,
    "componentattr": 0x010,
    "displayattr": 0x020,
    "recnum": 0x040,
    "nodevector": 0x100,
    "propertyname": 0x200,
    "recordtype": 0x400,
}


def _mask(mask: Union[int, Iterable[str]]) -> int:
    if isinstance(mask, int):
        return mask
    if isinstance(mask, str):
        mask = [mask]
    bits = 0
    for name in mask:
        folded = name.lower()
        if folded not in CACHE_ARGUMENTS:
            raise ValueError(f"no argument {name!r}; there are {', '.join(CACHE_ARGUMENTS)}")
        bits |= CACHE_ARGUMENTS[folded]
    return bits


def cache_arguments(
    arguments: Mapping[str, str],
    *,
    require: Union[int, Iterable[str]] = 0,
    mask: Union[None, int, Iterable[str]] = None,
) -> str:
    """Checks the arguments of a cache request and writes them as URL parameters.

    Parameters
    ----------
    arguments : mapping of str
    require, mask : int or iterable of names
        What must be there, and what is to be written: those given if left out.

    Raises
    ------
    FormatError
        With the reason, for arguments that are refused.

    Examples
    --------
    >>> cache_arguments({"user": "alice", "jobid": "7"}, require=["user"])
    'user=alice&jobid=7'
    """
    texts = {name: value if isinstance(value, str) else str(value) for name, value in arguments.items()}
    return str(_core.cache_arguments(texts, _mask(require), None if mask is None else _mask(mask)))


def upload(
    source: Any,
    url: str,
    session: str,
    *,
    name: Optional[str] = None,
    job: Optional[str] = None,
    progress: Optional[Callable[[int, int], Any]] = None,
    after_continue: bool = False,
) -> None:
    """Sends a file to the server's upload script.

    Parameters
    ----------
    source : path or file object
        A file that is open for bytes needs a name; it is copied to a temporary file first.
    url : str
        Of HTTP or HTTPS.
    session : str
        The session that uploads.
    name : str, optional
        The file's name on the server; its own if left out.
    job : str, optional
        The job it belongs to.
    progress : callable, optional
        Told the bytes that are on their way and the length, after each piece; False gives the upload up, and an
        exception comes out as it is.
    after_continue : bool
        Ask the server before the file is sent.

    Raises
    ------
    HttpError
        For a request that failed.
    FileError

    Notes
    -----
    The GIL is released; KeyboardInterrupt ends it within a fifth of a second.
    """
    if not isinstance(url, str):
        raise TypeError(f"url must be a str, not {type(url).__name__}")
    if not url.lower().startswith(("http://", "https://")):
        raise ValueError(f"url must be one of http or https, not {url!r}")
    if progress is not None and not callable(progress):
        raise TypeError("progress must be callable")
    if hasattr(source, "read"):
        leaf = name if name is not None else _os.path.basename(str(getattr(source, "name", "")))
        if not leaf:
            raise ValueError("a file object without a name needs name=")
        with _tempfile.NamedTemporaryFile() as copy:
            _shutil.copyfileobj(source, copy)
            copy.flush()
            _core.upload(copy.name, leaf, url, session, job, after_continue, progress, leaf)
        return
    leaf = name if name is not None else _os.path.basename(_os.fsdecode(source))
    _core.upload(source, leaf, url, session, job, after_continue, progress, None)


__all__ = [
    "CACHE_ARGUMENTS",
    "Credentials",
    "cache_arguments",
    "end_point",
    "host_of",
    "link",
    "RoleNames",
    "make_credentials",
    "read_credentials",
    "upload",
]
