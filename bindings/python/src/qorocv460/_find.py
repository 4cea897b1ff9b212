"""One photograph: its faces, its person mask, the close-up of its only face."""

from __future__ import annotations

import ctypes
import dataclasses
import operator
import os
from typing import Any, Dict, List, NamedTuple, Optional, Sequence, Tuple

import numpy as np
import numpy.typing as npt

from . import _models, _native, _pictures, _slots
from .errors import DetectionError, UnreadablePhotoError

DETECTORS = ("ssd", "haar")


class Point(NamedTuple):
    """A point, in pixels of the upright photograph from its left and top edge."""

    x: float
    y: float


class Box(NamedTuple):
    """A rectangle, in pixels of the upright photograph; it may reach beyond its edges."""

    left: float
    top: float
    right: float
    bottom: float


@dataclasses.dataclass(frozen=True, eq=False)
class Face:
    """A face. All values are pixels of the upright photograph, whatever ``max_side`` was.

    What was not asked for, or is not known, is None.
    """

    box: Box
    """The face's box as the detector found it."""
    nose_bridge: Optional[Point]
    """Top of the nose bridge, between the eyes."""
    chin: Optional[Point]
    """Tip of the chin."""
    head_centre: Optional[Point]
    """Halfway between the chin and the estimated top of the head, on the vertical of the nose bridge."""
    landmarks: Optional["npt.NDArray[np.float64]"]
    """68 x 2: x and y of each landmark. 0 to 16 jaw, 17 to 26 eyebrows, 27 to 30 nose bridge, 31 to 35 below
    the nose, 36 to 47 eyes, 48 to 67 lips. Fitted to the cascade's box of this face: None where the cascade
    does not see the face that the network sees."""


@dataclasses.dataclass(frozen=True, eq=False)
class Photo:
    """A photograph that was analysed."""

    name: str
    """Its path as it was given, or what stands for a picture in memory."""
    width: int
    """Columns of the upright photograph, in pixels."""
    height: int
    """Rows of the upright photograph, in pixels."""
    found: int
    """Boxes that the detector found: more than there are faces where there are more than 30, or where no
    landmarks could be fitted."""
    faces: Tuple[Face, ...]
    """At most 30, in the detector's order."""

    def to_records(self, *, rows: str = "faces", landmarks: bool = False) -> List[Dict[str, Any]]:
        """This photograph's rows, as :func:`qorocv460.to_records` makes them."""
        from ._tables import to_records

        return to_records([self], rows=rows, landmarks=landmarks)

    def to_pandas(self, *, rows: str = "faces", landmarks: bool = False) -> Any:
        """This photograph's rows as a ``pandas.DataFrame``, as :func:`qorocv460.to_pandas` makes it."""
        from ._tables import to_pandas

        return to_pandas([self], rows=rows, landmarks=landmarks)


@dataclasses.dataclass(frozen=True, eq=False)
class CloseUp:
    """The surroundings of a photograph's only face, and who is a person in them."""

    box: Box
    """The surroundings: three times the face's box in each direction, as far as the photograph goes."""
    mask: "npt.NDArray[np.bool_]"
    """192 x 192, row by row from the top, stretched from ``box``: True for a person."""


@dataclasses.dataclass(frozen=True)
class Options:
    """How photographs are looked at. What is wrong is said here, before anything is loaded."""

    detector: str = "ssd"
    max_side: int = 1000
    landmarks: bool = True
    head_centres: bool = True

    def __post_init__(self) -> None:
        if self.detector not in DETECTORS:
            raise ValueError(f"detector is one of {', '.join(DETECTORS)}, not {self.detector!r}")
        if isinstance(self.max_side, bool) or not hasattr(self.max_side, "__index__"):
            raise TypeError(f"max_side is a whole number of pixels, not {self.max_side!r}")
        object.__setattr__(self, "max_side", operator.index(self.max_side))  # numpy's numbers too
        if not 0 <= self.max_side < 2**31:
            raise ValueError(f"max_side is 0 (the photograph's own size) or more pixels, not {self.max_side}")


def find(
    photo: _pictures.Source,
    *,
    detector: str = "ssd",
    max_side: int = 1000,
    landmarks: bool = True,
    head_centres: bool = True,
) -> Photo:
    """Finds the faces of a photograph. May be called from any number of threads.

    photo         the path of a file; the bytes of one; or pixels, uint8, rows x columns x 3 (red, green,
                  blue) or rows x columns (grey)
    detector      "ssd": the network, which looks at 300 x 300 pixels whatever ``max_side`` is; "haar": the
                  cascade, which finds small faces, and more often takes for a face what is none
    max_side      length in pixels that the photograph's longer side is scaled to first; 0: its own
    landmarks     all 68 landmarks. They take a second call, with the cascade, which runs on one thread of
                  the process at a time; without them photographs go side by side on nine
    head_centres  the centre of the head. Without it and ``landmarks`` the network reports boxes alone, in
                  the shortest time

    Raises UnreadablePhotoError, DetectionError or ModelsError.
    """
    return find_with(photo, Options(detector, max_side, landmarks, head_centres))


def person_mask(photo: _pictures.Source) -> "npt.NDArray[np.bool_]":
    """Tells the persons of a photograph from its background.

    Returns 192 x 192 values, row by row from the top, stretched from the whole photograph: True for a
    person. Raises as :func:`find` does.
    """
    mask = _native.MaskPixels()
    _detect(_native.NETWORK_MASK, photo, 0, [_native.ViewPixels(), mask])
    return _mask_of(mask)


def close_up(photo: _pictures.Source, *, detector: str = "ssd", max_side: int = 1000) -> Optional[CloseUp]:
    """Tells the person from the background around a photograph's only face.

    ``detector`` and ``max_side`` are those of :func:`find`. Returns None unless exactly one face is found,
    and where its box does not lie in the photograph. Raises as :func:`find` does.
    """
    export = _native.NETWORK_CLOSE_UP if Options(detector, max_side).detector == "ssd" else _native.CASCADE_CLOSE_UP
    mask, fractions = _native.MaskPixels(), _native.CropBox()
    detection = _detect(export, photo, max_side, [_native.ViewPixels(), _native.MaskPixels(), mask, fractions])
    left, top, width, height = fractions
    if detection.found != 1 or width <= 0 or height <= 0:
        return None
    box = _box(np.array([left, top, left + width, top + height]), detection)
    return CloseUp(box, _mask_of(mask))


def find_with(photo: _pictures.Source, options: Options) -> Photo:
    """As :func:`find`, with options that were looked at before."""
    with _pictures.path_of(photo) as path:
        name = _pictures.name_of(photo)
        if options.detector == "haar" and options.landmarks and not options.head_centres:
            detection = _detect_path(_native.CASCADE_LANDMARKS, path, name, options.max_side)
            return _photo(name, detection, detection)
        detection = _detect_path(_export(options), path, name, options.max_side)
        with_landmarks = None
        if options.landmarks and detection.records.size:
            with_landmarks = _detect_path(_native.CASCADE_LANDMARKS, path, name, options.max_side)
        return _photo(name, detection, with_landmarks)


def _export(options: Options) -> _native.Export:
    if options.detector == "haar":
        return _native.CASCADE_HEAD_CENTRES if options.head_centres else _native.CASCADE
    if options.head_centres:
        return _native.NETWORK_HEAD_CENTRES
    return _native.NETWORK if options.landmarks else _native.NETWORK_BOXES


def _detect(
    export: _native.Export, photo: _pictures.Source, max_side: int, buffers: Sequence["ctypes.Array[Any]"]
) -> _native.Detection:
    with _pictures.path_of(photo) as path:
        return _detect_path(export, path, _pictures.name_of(photo), max_side, buffers)


def _detect_path(
    export: _native.Export, path: bytes, name: str, max_side: int, buffers: Sequence["ctypes.Array[Any]"] = ()
) -> _native.Detection:
    _models.ready()
    try:
        if export.slotted:
            with _slots.slot() as slot:
                detection = _native.detect(export, path, max_side, slot, buffers)
        else:
            with _slots.shared_pair():
                detection = _native.detect(export, path, max_side, 0, buffers)
    except _native.CallFailed as failure:
        raise DetectionError(name, str(failure)) from None
    if detection.found == _native.UNREADABLE:
        reason = "cannot be read as a picture" if os.path.exists(path) else "there is no such file"
        raise UnreadablePhotoError(name, reason)
    return detection


def _photo(name: str, detection: _native.Detection, with_landmarks: Optional[_native.Detection]) -> Photo:
    landmarks = _Landmarks(with_landmarks)
    faces = tuple(_face(record, detection, landmarks) for record in detection.records)
    return Photo(name, detection.width, detection.height, detection.found, faces)


def _face(record: "npt.NDArray[np.float64]", detection: _native.Detection, landmarks: "_Landmarks") -> Face:
    box = _box(record[:4], detection)
    fitted = landmarks.of(box)
    if detection.export.points == _native.LANDMARKS:
        chin = _point(record[4:], _native.CHIN, detection)
        return Face(box, _point(record[4:], _native.NOSE_BRIDGE, detection), chin, None, fitted)
    points = [_point(record[4:], at, detection) for at in range(detection.export.points)] + [None] * 3
    return Face(box, points[0], points[1], points[2], fitted)


class _Landmarks:
    """The landmark sets of one photograph, each given to the face whose box it was fitted to."""

    def __init__(self, detection: Optional[_native.Detection]) -> None:
        self._boxes: List[Box] = []
        self._sets: List["npt.NDArray[np.float64]"] = []
        if detection is not None:
            size = np.array([detection.width, detection.height], dtype=np.float64)
            self._boxes = [_box(record[:4], detection) for record in detection.records]
            self._sets = [record[4:].reshape(-1, 2) * size for record in detection.records]

    def of(self, box: Box) -> Optional["npt.NDArray[np.float64]"]:
        shared = [_shared_part(box, other) for other in self._boxes]
        # A third: boxes of one face by two detectors share more, those of neighbours less.
        if not shared or max(shared) < 1 / 3:
            return None
        return self._sets[shared.index(max(shared))]


def _shared_part(one: Box, other: Box) -> float:
    """The area of both as a part of the area of either."""
    width = min(one.right, other.right) - max(one.left, other.left)
    height = min(one.bottom, other.bottom) - max(one.top, other.top)
    if width <= 0 or height <= 0:
        return 0.0
    return width * height / (_area(one) + _area(other) - width * height)


def _area(box: Box) -> float:
    return (box.right - box.left) * (box.bottom - box.top)


def _box(fractions: "npt.NDArray[np.float64]", detection: _native.Detection) -> Box:
    left, top, right, bottom = (float(value) for value in fractions)
    width, height = detection.width, detection.height
    return Box(left * width, top * height, right * width, bottom * height)


def _point(points: "npt.NDArray[np.float64]", at: int, detection: _native.Detection) -> Optional[Point]:
    return Point(float(points[2 * at]) * detection.width, float(points[2 * at + 1]) * detection.height)


def _mask_of(pixels: "ctypes.Array[Any]") -> "npt.NDArray[np.bool_]":
    side = _native.MASK_SIDE
    values = np.frombuffer(memoryview(pixels), dtype=np.uint8).reshape(side, side, 4)
    return np.asarray(values[:, :, 0] != 0, dtype=np.bool_)
