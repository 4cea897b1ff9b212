"""The safe library through ctypes: the calls that this package makes, and what they return.

Calls run without Python's lock, so that threads detect side by side.
"""

from __future__ import annotations

import ctypes
import dataclasses
import functools
import os
import pathlib
from typing import Any, List, Optional, Sequence, Tuple

import numpy as np
import numpy.typing as npt

UNREADABLE = -1
FAILED = -2
MAX_RECORDS = 30
CAFFE = 1
LANDMARKS = 68
CHIN = 8
NOSE_BRIDGE = 27
MASK_SIDE = 192

ViewPixels = ctypes.c_ubyte * (4 * 1000 * 1000)
MaskPixels = ctypes.c_ubyte * (4 * MASK_SIDE * MASK_SIDE)
CropBox = ctypes.c_double * 4

_PREFIX = "qorocv460_"
_INT_OUT = ctypes.POINTER(ctypes.c_int)
_DOUBLES = ctypes.POINTER(ctypes.c_double)
_BYTES = ctypes.POINTER(ctypes.c_ubyte)


class CallFailed(Exception):
    """A call ended with an exception inside the library, whose text this is."""


@dataclasses.dataclass(frozen=True)
class Export:
    """What tells the detection functions apart for whoever calls them."""

    name: str
    points: int
    """How many points a record has behind its box."""
    slotted: bool = True
    kind: bool = False
    """Whether the kind of the network is asked for."""
    reserved: Optional[Any] = None
    """The type of the argument that is never read, where there is one."""
    buffers: Tuple[Any, ...] = ()
    """Types of the pointers behind the size."""

    def argument_types(self) -> List[Any]:
        types: List[Any] = [ctypes.c_char_p]
        if not self.slotted:
            return types + [ctypes.c_char_p, _DOUBLES, _INT_OUT, ctypes.c_int, ctypes.c_bool, _INT_OUT, _INT_OUT]
        types += [_DOUBLES, _INT_OUT]
        types += [ctypes.c_int] * (3 if self.kind else 2)
        if self.reserved is not None:
            types.append(self.reserved)
        return types + [_INT_OUT, _INT_OUT, *self.buffers]


CASCADE = Export("findQORFacesInTread01", points=2)
CASCADE_HEAD_CENTRES = Export("findQORFacesHAARInTread_TR02", points=3, reserved=ctypes.c_void_p)
CASCADE_LANDMARKS = Export("processImage", points=LANDMARKS, slotted=False)
CASCADE_CLOSE_UP = Export(
    "findQORFacesHAARInTreadWithMask02",
    points=3,
    kind=True,
    reserved=ctypes.c_int,
    buffers=(_BYTES, _BYTES, _BYTES, _DOUBLES),
)
NETWORK_BOXES = Export("findQORFacesDUNInTread02", points=0, kind=True)
NETWORK = Export("findQORFacesDUNInTread01", points=2, kind=True)
NETWORK_HEAD_CENTRES = Export("findQORFacesDUNInTread_TR02", points=3, kind=True, reserved=ctypes.c_void_p)
NETWORK_MASK = Export(
    "findQORFacesDUNInTreadWithMask01", points=3, kind=True, reserved=ctypes.c_ssize_t, buffers=(_BYTES, _BYTES)
)
NETWORK_CLOSE_UP = Export(
    "findQORFacesDUNInTreadWithMask02",
    points=3,
    kind=True,
    reserved=ctypes.c_ssize_t,
    buffers=(_BYTES, _BYTES, _BYTES, _DOUBLES),
)

EXPORTS = (
    CASCADE,
    CASCADE_HEAD_CENTRES,
    CASCADE_LANDMARKS,
    CASCADE_CLOSE_UP,
    NETWORK_BOXES,
    NETWORK,
    NETWORK_HEAD_CENTRES,
    NETWORK_MASK,
    NETWORK_CLOSE_UP,
)


@dataclasses.dataclass(frozen=True, eq=False)
class Detection:
    """What a call has reported."""

    export: Export
    found: int
    """Boxes found, or UNREADABLE."""
    width: int
    height: int
    records: "npt.NDArray[np.float64]"
    """faces x (4 + 2 * points): fractions of width and height."""


def detect(
    export: Export, path: bytes, max_side: int, slot: int, buffers: Sequence["ctypes.Array[Any]"] = ()
) -> Detection:
    """Calls a detection function; raises CallFailed where an exception would have left it."""
    # Boxes alone come in records of the same size as those with two points.
    values = 4 + 2 * max(export.points, 2)
    results = (ctypes.c_double * (1 + MAX_RECORDS * values))()
    count, width, height = ctypes.c_int(len(results)), ctypes.c_int(), ctypes.c_int()
    arguments: List[Any] = [path]
    if export.slotted:
        arguments += [results, ctypes.byref(count)] + ([CAFFE] if export.kind else []) + [slot, max_side]
        arguments += [] if export.reserved is None else [0]
    else:
        arguments += [None, results, ctypes.byref(count), max_side, False]
    found = _call(export.name, *arguments, ctypes.byref(width), ctypes.byref(height), *buffers)
    written = max(count.value - 1, 0) if found > 0 else 0
    records: "npt.NDArray[np.float64]" = np.array(results[1 : 1 + written], dtype=np.float64).reshape(-1, values)
    return Detection(export, found, width.value, height.value, records)


def set_models(directory: bytes) -> List[str]:
    """Sets where models are loaded from, and names those that cannot be opened there."""
    missing = _call("initModelsAtPath", directory)
    if missing == 0:
        return []
    text = _function("missingModels")(missing)
    return str(text.decode()).split(", ")


def version() -> str:
    """The version of the library."""
    return str(_function("version")().decode())


def _call(name: str, *arguments: Any) -> int:
    result = int(_function(name)(*arguments))
    if result == FAILED:
        raise CallFailed(_function("lastError")().decode(errors="replace"))
    return result


def _function(name: str) -> Any:
    return getattr(_library(), _PREFIX + name)


@functools.lru_cache(maxsize=None)
def _library() -> ctypes.CDLL:
    try:
        library = _load()
        _declare(library)
    except (OSError, AttributeError) as error:  # an AttributeError: it lacks a function, so it is another one
        raise ImportError(f"the library of qorocv460 cannot be loaded: {error}") from error
    return library


def _declare(library: ctypes.CDLL) -> None:
    for export in EXPORTS:
        getattr(library, _PREFIX + export.name).argtypes = export.argument_types()
    getattr(library, _PREFIX + "initModelsAtPath").argtypes = [ctypes.c_char_p]
    for name, arguments in (("lastError", []), ("version", []), ("missingModels", [ctypes.c_int])):
        function = getattr(library, _PREFIX + name)
        function.argtypes = arguments
        function.restype = ctypes.c_char_p


def _load() -> ctypes.CDLL:
    named = os.environ.get("QOROCV460_LIBRARY")
    if named:
        return ctypes.CDLL(named)
    natives = pathlib.Path(__file__).parent / "_native"
    if os.name == "nt":
        return ctypes.CDLL(str(natives / "QOROCV460Safe.dll"))
    # The loader finds what the safe library calls by its name once it is loaded.
    ctypes.CDLL(str(natives / "libQOROCV460.so.0"))
    return ctypes.CDLL(str(natives / "libQOROCV460Safe.so"))
