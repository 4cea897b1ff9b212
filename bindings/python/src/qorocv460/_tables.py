"""Photographs as tables: rows of plain values, and pandas."""

from __future__ import annotations

import math
from typing import Any, Dict, Iterable, List, Optional

from . import _find, _many, _native
from .errors import PhotoError

Row = Dict[str, Any]

_PHOTO_TYPES = {"photo": "object", "width": "int64", "height": "int64", "found": "int64"}
_POINTS = ("nose_bridge", "chin", "head_centre")
_LANDMARKS = [f"landmark_{at}_{axis}" for at in range(_native.LANDMARKS) for axis in "xy"]


def column_types(rows: str, landmarks: bool) -> Dict[str, str]:
    """The columns of a table in order, with numpy's names of their types."""
    if rows not in ("faces", "photos"):
        raise ValueError(f'rows is "faces" or "photos", not {rows!r}')
    types = dict(_PHOTO_TYPES)
    if rows == "faces":
        types["face"] = "int64"
        types.update(dict.fromkeys(_find.Box._fields, "float64"))
        types.update({f"{point}_{axis}": "float64" for point in _POINTS for axis in "xy"})
        if landmarks:
            types.update(dict.fromkeys(_LANDMARKS, "float64"))
    types["error"] = "object"
    return types


def to_records(photos: Iterable[_many.Result], *, rows: str = "faces", landmarks: bool = False) -> List[Row]:
    """Rows of plain values, one dictionary each.

    photos     what find and find_many return, errors included
    rows       "faces": one row a face, and one with face -1 for a photograph that could not be analysed;
               "photos": one row a photograph
    landmarks  whether rows of faces have the 68 landmarks, landmark_0_x to landmark_67_y

    Columns: photo (its name), width and height (pixels), found (boxes; -1: not analysed), error (empty where
    there is none); of a face also face (its number in the photograph, from 0), left, top, right, bottom,
    nose_bridge_x, nose_bridge_y, chin_x, chin_y, head_centre_x, head_centre_y (pixels; NaN: not known).
    """
    columns = column_types(rows, landmarks)
    table: List[Row] = []
    for photo in photos:
        if isinstance(photo, PhotoError):
            table.append(_row(columns, photo=photo.photo, found=-1, face=-1, error=photo.reason))
        elif rows == "photos":
            table.append(_row(columns, **_photo_values(photo)))
        else:
            for number, face in enumerate(photo.faces):
                table.append(_row(columns, **_photo_values(photo), **_face_values(number, face, landmarks)))
    return table


def to_pandas(photos: Iterable[_many.Result], *, rows: str = "faces", landmarks: bool = False) -> Any:
    """The rows of :func:`to_records` as a ``pandas.DataFrame``, which takes pandas. Columns and their types
    are the same for any photographs, none included."""
    import pandas

    columns = column_types(rows, landmarks)
    table = to_records(photos, rows=rows, landmarks=landmarks)
    return pandas.DataFrame(table, columns=list(columns)).astype(columns)


def _row(columns: Dict[str, str], **values: Any) -> Row:
    empty = {"int64": 0, "float64": math.nan, "object": ""}
    return {column: values.get(column, empty[kind]) for column, kind in columns.items()}


def _photo_values(photo: _find.Photo) -> Row:
    return {"photo": photo.name, "width": photo.width, "height": photo.height, "found": photo.found}


def _face_values(number: int, face: _find.Face, landmarks: bool) -> Row:
    values: Row = {"face": number, **face.box._asdict()}
    for name in _POINTS:
        point: Optional[_find.Point] = getattr(face, name)
        if point is not None:
            values[f"{name}_x"], values[f"{name}_y"] = point
    if landmarks and face.landmarks is not None:
        values.update(zip(_LANDMARKS, face.landmarks.ravel().tolist()))
    return values
