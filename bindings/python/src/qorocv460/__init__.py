"""Faces, landmarks, head centres and person masks of photographs, by the library QOROCV460.

>>> import qorocv460
>>> photo = qorocv460.find("photo.jpg")
>>> photo.faces[0].box

Detectors are loaded by the first photograph and kept. Every function may be called from any number of
threads.
"""

from ._find import Box, CloseUp, Face, Photo, Point, close_up, find, person_mask
from ._many import find_many
from ._models import use_models
from ._native import version
from ._tables import to_pandas, to_records
from .errors import DetectionError, ModelsError, PhotoError, QorocvError, UnreadablePhotoError

__all__ = [
    "Box",
    "CloseUp",
    "DetectionError",
    "Face",
    "ModelsError",
    "Photo",
    "PhotoError",
    "Point",
    "QorocvError",
    "UnreadablePhotoError",
    "close_up",
    "find",
    "find_many",
    "person_mask",
    "to_pandas",
    "to_records",
    "use_models",
    "version",
]
