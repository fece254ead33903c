"""The client-side base library of a scientific workflow server, for Python.

>>> import ztbaseclient as zt
>>> root = zt.parse(b'<job><row id="1" similarity="0.5"/><row id="4" similarity="0.9"/></job>')
>>> root.query("//row[@id>3]/@similarity")
['0.9']
>>> zt.table(root, "//row", {"id": "@id", "similarity": "@similarity"})
{'id': array([1, 4]), 'similarity': array([0.5, 0.9])}
"""

from ._call import Answer, Caller
from ._core import __version__
from ._errors import (
    BusyError,
    Error,
    FaultError,
    FileError,
    FormatError,
    HttpError,
    MissingError,
    OutOfMemoryError,
    ParseError,
    QueryError,
    RangeError,
    RequestError,
    ServiceError,
)
from ._node import Bits, Children, Node, Properties, live_objects, parse, read_record, to_node
from ._requests import (
    CACHE_ARGUMENTS,
    Credentials,
    RoleNames,
    cache_arguments,
    end_point,
    host_of,
    link,
    make_credentials,
    read_credentials,
    upload,
)
from ._service import Name, Service, load_service
from ._tables import from_table, table, to_pandas
from ._tools import Comparison, Difference, Entry, FieldDifference, Log, checksum, compare, log_table

__all__ = [
    "Answer",
    "Bits",
    "BusyError",
    "CACHE_ARGUMENTS",
    "Caller",
    "Children",
    "Comparison",
    "Credentials",
    "Difference",
    "Entry",
    "Error",
    "FaultError",
    "FieldDifference",
    "FileError",
    "FormatError",
    "HttpError",
    "Log",
    "MissingError",
    "Name",
    "Node",
    "OutOfMemoryError",
    "ParseError",
    "Properties",
    "QueryError",
    "RangeError",
    "RequestError",
    "Service",
    "ServiceError",
    "__version__",
    "cache_arguments",
    "checksum",
    "compare",
    "end_point",
    "from_table",
    "host_of",
    "link",
    "live_objects",
    "load_service",
    "log_table",
    "RoleNames",
    "make_credentials",
    "parse",
    "read_credentials",
    "read_record",
    "table",
    "to_node",
    "to_pandas",
    "upload",
]
