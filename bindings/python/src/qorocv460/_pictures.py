"""Photographs as the library takes them: by path. Pictures in memory get a path for as long as a call."""

from __future__ import annotations

import contextlib
import os
import tempfile
from typing import Iterator, Optional, Tuple, Union

import numpy as np
import numpy.typing as npt

Source = Union[str, "os.PathLike[str]", bytes, bytearray, memoryview, "npt.NDArray[np.uint8]"]
"""A photograph: the path of a file, the bytes of one, or its pixels (rows x columns x 3: red, green, blue;
or rows x columns: grey; 8 bits each)."""


def name_of(source: Source) -> str:
    """What messages and tables call the photograph."""
    if isinstance(source, (str, os.PathLike)):
        return os.fspath(source)
    if isinstance(source, np.ndarray):
        return "array of " + " x ".join(str(side) for side in source.shape)
    return f"picture of {len(_content(source)):,} bytes"


@contextlib.contextmanager
def path_of(source: Source) -> Iterator[bytes]:
    """The path to hand to the library; a temporary one ends with the block."""
    if isinstance(source, (str, os.PathLike)):
        with _readable_path(source) as path:
            yield path
    else:
        with _temporary_file(_content(source)) as path:
            yield path


def encoded_path(path: Union[str, "os.PathLike[str]"]) -> bytes:
    """UTF-8, as the library reads paths; bytes that are no text pass through as they are."""
    text = os.fspath(path)
    if "\0" in text:
        raise ValueError("a path holds no NUL character")
    return text.encode("utf-8", "surrogateescape" if os.name == "posix" else "strict")


@contextlib.contextmanager
def _readable_path(path: Union[str, "os.PathLike[str]"]) -> Iterator[bytes]:
    """A path that the library can read in any locale, also where the name is no text.

    The library turns bytes that are not UTF-8 into other characters, and characters into the bytes of the
    user's locale. A descriptor, which on Linux opens nothing yet, leads to the same file.
    """
    encoded = encoded_path(path)
    descriptor = None if encoded.isascii() else descriptor_of(path)
    if descriptor is None:
        yield encoded
        return
    try:
        yield path_of_descriptor(descriptor)
    finally:
        os.close(descriptor)


def descriptor_of(path: Union[str, "os.PathLike[str]"]) -> Optional[int]:
    """A descriptor that leads to a file or directory, for the caller to close; None where there is none, as
    for what is not there, which is for the library to say."""
    if hasattr(os, "O_PATH") and os.path.isdir("/proc/self/fd"):
        with contextlib.suppress(OSError):
            return os.open(path, os.O_PATH)
    return None


def path_of_descriptor(descriptor: int) -> bytes:
    return f"/proc/self/fd/{descriptor}".encode()


def _content(source: Union[bytes, bytearray, memoryview, "npt.NDArray[np.uint8]"]) -> memoryview:
    if isinstance(source, np.ndarray):
        return memoryview(_portable_pixmap(source))
    if isinstance(source, (bytes, bytearray, memoryview)):
        return memoryview(source).cast("B")
    raise TypeError(f"a photograph is a path, bytes or an array, not {type(source).__name__}")


def _portable_pixmap(pixels: "npt.NDArray[np.uint8]") -> bytes:
    """The pixels as the plainest file that is read without loss."""
    shape: Tuple[int, ...] = pixels.shape
    if pixels.dtype != np.uint8:
        raise TypeError(f"pixels are uint8, not {pixels.dtype}")
    if len(shape) == 2:
        kind = "P5"
    elif len(shape) == 3 and shape[2] == 3:
        kind = "P6"
    else:
        raise ValueError(f"pixels are rows x columns or rows x columns x 3, not {shape}")
    if 0 in shape:
        raise ValueError("a picture has at least one pixel")
    return f"{kind}\n{shape[1]} {shape[0]}\n255\n".encode() + pixels.tobytes()


@contextlib.contextmanager
def _temporary_file(content: memoryview) -> Iterator[bytes]:
    if hasattr(os, "memfd_create") and os.path.isdir("/proc/self/fd"):
        # In memory, and gone with the process, however that ends.
        with open(os.memfd_create("qorocv460"), "wb", buffering=0) as in_memory:
            _write(in_memory.fileno(), content)
            yield path_of_descriptor(in_memory.fileno())
        return
    # Where an open file cannot be opened a second time, it is closed before the call.
    descriptor, path = tempfile.mkstemp(prefix="qorocv460-")
    try:
        try:
            _write(descriptor, content)
        finally:
            os.close(descriptor)
        yield encoded_path(path)
    finally:
        os.unlink(path)


def _write(descriptor: int, content: memoryview) -> None:
    while content:
        content = content[os.write(descriptor, content) :]
