"""Photographs as rows."""

from __future__ import annotations

import math
from typing import List

import pytest

import qorocv460

UNREADABLE = qorocv460.UnreadablePhotoError("gone.jpg", "cannot be read as a picture")
COLUMNS = [
    "photo", "width", "height", "found", "face", "left", "top", "right", "bottom", "nose_bridge_x", "nose_bridge_y",
    "chin_x", "chin_y", "head_centre_x", "head_centre_y", "error",
]  # fmt: skip


def test_a_face_is_a_row(astronaut: str) -> None:
    photo = qorocv460.find(astronaut)
    (row,) = photo.to_records()
    assert list(row) == COLUMNS
    assert (row["photo"], row["width"], row["found"], row["face"], row["error"]) == (astronaut, 512, 1, 0, "")
    assert (row["left"], row["chin_y"]) == (photo.faces[0].box.left, photo.faces[0].chin.y)  # type: ignore[union-attr]


def test_landmarks_are_columns_where_they_are_wanted(astronaut: str) -> None:
    photo = qorocv460.find(astronaut)
    (row,) = photo.to_records(landmarks=True)
    assert len(row) == len(COLUMNS) + 136 and photo.faces[0].landmarks is not None
    assert row["landmark_67_y"] == photo.faces[0].landmarks[67, 1]


def test_what_is_not_known_is_nan(astronaut: str) -> None:
    (row,) = qorocv460.find(astronaut, landmarks=False, head_centres=False).to_records(landmarks=True)
    assert math.isnan(row["chin_x"]) and math.isnan(row["landmark_0_x"]) and not math.isnan(row["left"])


def test_an_error_is_a_row(astronaut: str) -> None:
    rows = qorocv460.to_records([UNREADABLE, qorocv460.find(astronaut)])
    assert [(row["photo"], row["found"], row["face"]) for row in rows] == [("gone.jpg", -1, -1), (astronaut, 1, 0)]
    assert rows[0]["error"] == "cannot be read as a picture" and math.isnan(rows[0]["left"])


def test_a_photograph_without_faces_is_a_row_of_photographs_alone() -> None:
    photo = qorocv460.Photo("empty.jpg", 64, 48, 0, ())
    assert photo.to_records() == []
    assert photo.to_records(rows="photos") == [
        {"photo": "empty.jpg", "width": 64, "height": 48, "found": 0, "error": ""}
    ]


def test_an_error_is_a_row_of_photographs() -> None:
    assert qorocv460.to_records([UNREADABLE], rows="photos") == [
        {"photo": "gone.jpg", "width": 0, "height": 0, "found": -1, "error": "cannot be read as a picture"}
    ]


def test_rows_of_something_else_are_an_error() -> None:
    with pytest.raises(ValueError, match="rows"):
        qorocv460.to_records([], rows="people")


@pytest.mark.parametrize("rows", ["faces", "photos"])
def test_a_frame_has_the_same_columns_for_any_photographs(astronaut: str, rows: str) -> None:
    pytest.importorskip("pandas")
    lists: List[List[qorocv460.Photo]] = [[], [qorocv460.find(astronaut)]]
    empty, full = (qorocv460.to_pandas(photos, rows=rows, landmarks=True) for photos in lists)
    assert len(empty) == 0 and len(full) == 1
    assert empty.dtypes.to_dict() == full.dtypes.to_dict()
    assert full.to_dict("records") == lists[1][0].to_records(rows=rows, landmarks=True)


def test_a_photograph_gives_its_own_frame(astronaut: str) -> None:
    pytest.importorskip("pandas")
    assert list(qorocv460.find(astronaut).to_pandas()["face"]) == [0]
