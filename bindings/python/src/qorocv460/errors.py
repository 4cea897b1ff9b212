"""What goes wrong, as exceptions. All of them can be pickled, and so cross processes."""

from __future__ import annotations

from typing import Tuple


class QorocvError(Exception):
    """Whatever this package raises of its own."""


class PhotoError(QorocvError):
    """A photograph that could not be analysed.

    ``photo`` is its name (the path as it was given, or what stands for a picture in memory), ``reason``
    the rest of the message.
    """

    def __init__(self, photo: str, reason: str) -> None:
        super().__init__(photo, reason)
        self.photo = photo
        self.reason = reason

    def __str__(self) -> str:
        return f"{self.photo}: {self.reason}"


class UnreadablePhotoError(PhotoError):
    """The file is not there, may not be read, or is no picture."""


class DetectionError(PhotoError):
    """The library gave up on this photograph, or on a model that it loaded for it; ``reason`` is its
    own text."""


class ModelsError(QorocvError):
    """Models are missing, damaged, or chosen too late.

    ``missing`` holds the short names of those that cannot be opened, where it is that.
    """

    def __init__(self, reason: str, missing: Tuple[str, ...] = ()) -> None:
        super().__init__(reason, missing)
        self.reason = reason
        self.missing = missing

    def __str__(self) -> str:
        return self.reason
