"""What was installed."""

from __future__ import annotations

import ctypes
import importlib.metadata
import os
import pathlib
import re
import subprocess
import sys

import pytest

import qorocv460
from qorocv460 import _native

from conftest import REPOSITORY, Run

HEADER = (REPOSITORY / "include" / "qorocv460" / "safe.h").read_text()
PLAIN_HEADER = (REPOSITORY / "include" / "qorocv460" / "qorocv460.h").read_text()

TYPES = {
    "const char*": ctypes.c_char_p,
    "double*": ctypes.POINTER(ctypes.c_double),
    "int*": ctypes.POINTER(ctypes.c_int),
    "unsigned char*": ctypes.POINTER(ctypes.c_ubyte),
    "void*": ctypes.c_void_p,
    "intptr_t": ctypes.c_ssize_t,
    "int": ctypes.c_int,
    "bool": ctypes.c_bool,
}


@pytest.mark.parametrize("export", _native.EXPORTS, ids=[export.name for export in _native.EXPORTS])
def test_arguments_are_declared_as_in_the_header(export: _native.Export) -> None:
    declared = re.search(rf"\bqorocv460_{export.name}\(([^)]*)\)", HEADER)
    assert declared is not None
    parameters = [" ".join(parameter.split()) for parameter in declared[1].split(",")]
    types = [re.sub(r"\s*\w+$", "", parameter) for parameter in parameters]
    assert export.argument_types() == [TYPES[name] for name in types]


@pytest.mark.parametrize(
    ("name", "value"),
    [
        ("UNREADABLE", _native.UNREADABLE),
        ("FAILED", _native.FAILED),
        ("MAX_RECORDS", _native.MAX_RECORDS),
        ("CAFFE", _native.CAFFE),
        ("LANDMARKS", _native.LANDMARKS),
        ("CHIN", _native.CHIN),
        ("NOSE_BRIDGE", _native.NOSE_BRIDGE),
        ("MASK_SIDE", _native.MASK_SIDE),
        ("VIEW_SIDE", round((ctypes.sizeof(_native.ViewPixels) / 4) ** 0.5)),
        ("CROP_BOX", len(_native.CropBox())),
    ],
)
def test_numbers_are_the_headers(name: str, value: int) -> None:
    assert re.search(rf"\bQOROCV460_{name} = {value}\b", PLAIN_HEADER + HEADER)


def test_the_version_is_the_librarys() -> None:
    assert qorocv460.version() == importlib.metadata.version("qorocv460")


def test_the_package_is_typed() -> None:
    assert (pathlib.Path(qorocv460.__file__).parent / "py.typed").is_file()


def test_the_command_tells_the_version() -> None:
    done = subprocess.run([sys.executable, "-m", "qorocv460", "--version"], capture_output=True, text=True)
    assert done.stdout.strip() == qorocv460.version()


def test_a_library_that_cannot_be_loaded_is_said_so(fresh: Run) -> None:
    done = fresh("import qorocv460; qorocv460.version()", QOROCV460_LIBRARY="/nowhere.so")
    assert "ImportError: the library of qorocv460 cannot be loaded: /nowhere.so" in done.stderr


def test_another_library_under_its_name_is_said_so(fresh: Run) -> None:
    done = fresh("import qorocv460; qorocv460.version()", QOROCV460_LIBRARY="libc.so.6")
    assert "ImportError: the library of qorocv460 cannot be loaded: " in done.stderr


@pytest.mark.skipif("QOROCV460_SELF_CONTAINED" not in os.environ, reason="takes the distribution's OpenCV")
def test_nothing_of_the_distributions_opencv_is_loaded(astronaut: str) -> None:
    qorocv460.find(astronaut)
    loaded = pathlib.Path("/proc/self/maps").read_text()
    assert "libQOROCV460.so" in loaded and "opencv" not in loaded
