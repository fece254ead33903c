"""How pip builds the package (PEP 517): CMake makes the libraries and the module, and a wheel takes them in.

Needs nothing that has to be installed from an index: CMake, Ninja or make, a compiler, and the headers of Python and
pybind11, which `scripts/setup build libraries binding` installs.
"""

import base64
import hashlib
import os
import re
import subprocess
import sys
import sysconfig
import tempfile
import zipfile
from pathlib import Path

HERE = Path(__file__).resolve().parent.parent
SOURCE = HERE.parent
NAME = "ztbaseclient"


def _version():
    text = (SOURCE / "CMakeLists.txt").read_text(encoding="utf-8")
    return re.search(r"project\(ztbaseclient VERSION ([0-9.]+)", text).group(1)


def _metadata():
    return (
        f"Metadata-Version: 2.1\nName: {NAME}\nVersion: {_version()}\n"
        "Summary: The client-side base library of a scientific workflow server\n"
        "Requires-Python: >=3.9\nProvides-Extra: tables\nRequires-Dist: numpy; extra == 'tables'\n"
        "Requires-Dist: pandas; extra == 'tables'\n"
    )


def _tag():
    tag = f"cp{sys.version_info.major}{sys.version_info.minor}"
    return f"{tag}-{tag}-{re.sub(r'[-.]', '_', sysconfig.get_platform())}"


def get_requires_for_build_wheel(config_settings=None):
    return []


def get_requires_for_build_sdist(config_settings=None):
    return []


def _run(*command):
    subprocess.run([str(part) for part in command], check=True, stdout=sys.stderr)


def _build(build, stage):
    """The package's files, with the libraries beside the module."""
    jobs = os.environ.get("CMAKE_BUILD_PARALLEL_LEVEL") or str(os.cpu_count() or 1)
    options = ["-DCMAKE_BUILD_TYPE=Release", "-DZTB_BUILD_COMMAND=OFF", "-DZTB_BUILD_PYTHON=ON", "-DZTB_HARDENING=ON"]
    options += ["-DCMAKE_INSTALL_RPATH=$ORIGIN", "-DZTB_PYTHON_FOLDER=.", "-DCMAKE_INSTALL_LIBDIR=" + NAME]
    _run("cmake", "-S", SOURCE, "-B", build, f"-DPython3_EXECUTABLE={sys.executable}", *options)
    _run("cmake", "--build", build, "--parallel", jobs, "--target", "pythonPackage")
    for component in ("python", "runtime"):
        _run("cmake", "--install", build, "--prefix", stage, "--component", component, "--strip")


def _record_line(name, data):
    digest = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()
    return f"{name},sha256={digest},{len(data)}\n"


def _files_of(stage):
    """Names and bytes; of a library the name that programs load it by, for a wheel has no links."""
    for path in sorted((stage / NAME).iterdir()):
        if not path.is_file() or path.suffix == ".so" and path.name.startswith("lib"):
            continue
        if re.search(r"\.so\.\d+\.\d+\.\d+$", path.name):
            continue
        yield f"{NAME}/{path.name}", path.read_bytes()


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    version = _version()
    info = f"{NAME}-{version}.dist-info"
    wheel = f"{NAME}-{version}-{_tag()}.whl"
    with tempfile.TemporaryDirectory() as folder:
        _build(Path(folder) / "build", Path(folder) / "stage")
        files = list(_files_of(Path(folder) / "stage"))
    files.append((f"{info}/METADATA", _metadata().encode()))
    about = f"Wheel-Version: 1.0\nGenerator: ztb_backend\nRoot-Is-Purelib: false\nTag: {_tag()}\n"
    files.append((f"{info}/WHEEL", about.encode()))
    record = "".join(_record_line(name, data) for name, data in files) + f"{info}/RECORD,,\n"
    files.append((f"{info}/RECORD", record.encode()))
    with zipfile.ZipFile(Path(wheel_directory) / wheel, "w", zipfile.ZIP_DEFLATED) as archive:
        for name, data in files:
            archive.writestr(name, data)
    return wheel


def build_sdist(sdist_directory, config_settings=None):
    raise RuntimeError("The package is built out of the whole source tree: pip install ./python")
