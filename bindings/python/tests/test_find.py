"""One photograph."""

from __future__ import annotations

import os
import pathlib
import pickle
import shutil
import subprocess
import sys
import threading
from typing import Any, Callable, List

import numpy as np
import pytest

import qorocv460
from qorocv460 import _native

from conftest import REPOSITORY, Run


def boxes(photo: qorocv460.Photo) -> List[qorocv460.Box]:
    return [face.box for face in photo.faces]


def view_of(path: str) -> "np.ndarray[Any, np.dtype[np.uint8]]":
    """The pixels of a photograph, stretched to 1000 x 1000."""
    qorocv460.find(path)  # has models in place
    view = _native.ViewPixels()
    _native.detect(_native.NETWORK_MASK, os.fsencode(path), 0, 1, [view, _native.MaskPixels()])
    return np.frombuffer(memoryview(view), dtype=np.uint8).reshape(1000, 1000, 4)[:, :, :3].copy()


def test_the_network_finds_the_face_in_pixels(astronaut: str) -> None:
    photo = qorocv460.find(astronaut)
    assert (photo.name, photo.width, photo.height, photo.found) == (astronaut, 512, 512, 1)
    assert boxes(photo)[0] == pytest.approx((179.7, 58.4, 273.4, 180.2), abs=0.5)


def test_the_cascade_finds_the_face_too(astronaut: str) -> None:
    photo = qorocv460.find(astronaut, detector="haar", max_side=480)
    assert boxes(photo)[0] == pytest.approx((174, 65, 274, 165), abs=1.5)


@pytest.mark.parametrize("detector", ["ssd", "haar"])
def test_landmarks_lie_in_the_face(astronaut: str, detector: str) -> None:
    face = qorocv460.find(astronaut, detector=detector, max_side=480).faces[0]
    assert face.landmarks is not None
    assert face.landmarks.shape == (68, 2) and face.landmarks.dtype == np.float64
    middle = face.landmarks.mean(axis=0)
    assert face.box.left < middle[0] < face.box.right and face.box.top < middle[1] < face.box.bottom


@pytest.mark.parametrize("head_centres", [False, True])
def test_a_face_without_landmarks_is_the_same_otherwise(astronaut: str, head_centres: bool) -> None:
    without = qorocv460.find(astronaut, landmarks=False, head_centres=head_centres).faces[0]
    face = qorocv460.find(astronaut).faces[0]
    assert without.landmarks is None and without.box == face.box
    assert (without.head_centre == face.head_centre) == head_centres


def test_boxes_alone_come_without_points(astronaut: str) -> None:
    face = qorocv460.find(astronaut, landmarks=False, head_centres=False).faces[0]
    assert (face.nose_bridge, face.chin, face.head_centre, face.landmarks) == (None, None, None, None)


def test_the_cascades_own_landmarks_hold_nose_bridge_and_chin(astronaut: str) -> None:
    face = qorocv460.find(astronaut, detector="haar", max_side=480, head_centres=False).faces[0]
    assert face.landmarks is not None
    assert face.nose_bridge == tuple(face.landmarks[27]) and face.chin == tuple(face.landmarks[8])
    both = qorocv460.find(astronaut, detector="haar", max_side=480).faces[0]
    assert both.landmarks is not None and both.nose_bridge == face.nose_bridge
    assert np.array_equal(both.landmarks, face.landmarks)


def test_the_head_centre_lies_under_the_nose_bridge(astronaut: str) -> None:
    face = qorocv460.find(astronaut).faces[0]
    assert face.head_centre is not None and face.nose_bridge is not None
    assert face.head_centre.x == face.nose_bridge.x


def test_a_path_may_be_an_object(astronaut: str) -> None:
    assert boxes(qorocv460.find(pathlib.Path(astronaut))) == boxes(qorocv460.find(astronaut))


def test_a_path_may_hold_any_characters(astronaut: str, tmp_path: pathlib.Path) -> None:
    other = tmp_path / "дом 家 \U0001f600.jpg"
    other.write_bytes(pathlib.Path(astronaut).read_bytes())
    assert qorocv460.find(other).found == 1


def test_a_path_may_hold_any_characters_in_any_locale(astronaut: str, tmp_path: pathlib.Path, fresh: Run) -> None:
    other = tmp_path / "дом.jpg"
    other.write_bytes(pathlib.Path(astronaut).read_bytes())
    done = fresh("import qorocv460, sys; print(qorocv460.find(sys.argv[1]).found)", str(other), LC_ALL="C")
    assert done.stdout == "1\n", done.stderr


@pytest.fixture
def no_text(tmp_path: pathlib.Path) -> str:
    """A name whose bytes are no UTF-8, as Python has it."""
    return os.fsdecode(os.fsencode(tmp_path) + b"/caf\xe9.jpg")


@pytest.mark.skipif(sys.platform != "linux", reason="names are text there")
def test_a_name_need_not_be_text(astronaut: str, no_text: str) -> None:
    shutil.copy(astronaut, no_text)
    photo = qorocv460.find(no_text)
    assert photo.name == no_text and boxes(photo) == boxes(qorocv460.find(astronaut))
    assert np.array_equal(qorocv460.person_mask(no_text), qorocv460.person_mask(astronaut))
    assert [found.name for found in qorocv460.find_many([no_text] * 3)] == [no_text] * 3


@pytest.mark.skipif(sys.platform != "linux", reason="names are text there")
def test_a_name_that_is_no_text_leaves_no_descriptor(astronaut: str, no_text: str) -> None:
    shutil.copy(astronaut, no_text)
    qorocv460.find(no_text)
    before = os.listdir("/proc/self/fd")
    qorocv460.find(no_text)
    assert os.listdir("/proc/self/fd") == before


@pytest.mark.skipif(sys.platform != "linux", reason="names are text there")
def test_an_unreadable_photograph_keeps_a_name_that_is_no_text(no_text: str) -> None:
    with pytest.raises(qorocv460.UnreadablePhotoError) as caught:
        qorocv460.find(no_text)
    assert caught.value.photo == no_text
    os.mkfifo(no_text)  # nobody waits for somebody to write into it
    with pytest.raises(qorocv460.UnreadablePhotoError):
        qorocv460.find(no_text)


@pytest.mark.skipif(sys.platform != "linux", reason="names are text there")
def test_the_first_program_prints_any_name(astronaut: str, no_text: str) -> None:
    shutil.copy(astronaut, no_text)
    program = str(REPOSITORY / "docs" / "examples" / "first_program.py")
    done = subprocess.run(
        [sys.executable, program, no_text, no_text + "x"],
        env={**os.environ, "PYTHONIOENCODING": "utf-8:strict"},
        capture_output=True,
        text=True,
    )
    good, bad = done.stdout.splitlines()[-2:]
    assert "caf\\udce9.jpg: from 180, 58 to 273, 180" in good, done.stderr
    assert bad.endswith("caf\\udce9.jpgx: there is no such file")


def test_bytes_are_found_as_the_file_is(astronaut: str) -> None:
    content = pathlib.Path(astronaut).read_bytes()
    for picture in (content, bytearray(content), memoryview(content)):
        photo = qorocv460.find(picture)
        assert boxes(photo) == boxes(qorocv460.find(astronaut))
        assert photo.name == "picture of 81,556 bytes"


def test_pixels_are_red_green_blue(astronaut: str) -> None:
    pixels = view_of(astronaut)
    photo = qorocv460.find(pixels)
    assert (photo.width, photo.height, photo.name) == (1000, 1000, "array of 1000 x 1000 x 3")
    assert boxes(photo)[0] == pytest.approx((351, 114, 534, 352), abs=20)
    header = b"P6\n1000 1000\n255\n"
    assert boxes(qorocv460.find(header + pixels.tobytes())) == boxes(photo)


def test_an_array_may_be_a_cut_or_grey(astronaut: str) -> None:
    pixels = view_of(astronaut)
    cut = pixels[:600, 200:800]
    assert qorocv460.find(cut).faces and not cut.flags.c_contiguous
    grey = qorocv460.find(np.ascontiguousarray(pixels[:, :, 1]))
    assert grey.found == 1 and grey.name == "array of 1000 x 1000"


@pytest.mark.parametrize(
    ("pixels", "error"),
    [
        (np.zeros((4, 4, 3)), TypeError),
        (np.zeros((4, 4, 4), np.uint8), ValueError),
        (np.zeros((0, 4), np.uint8), ValueError),
        (12, TypeError),
    ],
)
def test_what_is_no_photograph_is_said_so(pixels: Any, error: "type[Exception]") -> None:
    with pytest.raises(error):
        qorocv460.find(pixels)


def test_no_file_is_left_of_a_picture_in_memory(astronaut: str, tmp_path: pathlib.Path, fresh: Run) -> None:
    code = """
import os, sys
del os.memfd_create
import qorocv460
print(qorocv460.find(open(sys.argv[1], "rb").read()).found)
try:
    qorocv460.find(b"no picture")
except qorocv460.UnreadablePhotoError as error:
    print(error.photo)
"""
    done = fresh(code, astronaut, TMPDIR=str(tmp_path))
    assert done.stdout.split("\n")[0] == "1" and "picture of 10 bytes" in done.stdout, done.stderr
    assert list(tmp_path.iterdir()) == []


@pytest.mark.parametrize(
    ("options", "error"),
    [
        ({"detector": "dnn"}, ValueError),
        ({"max_side": -1}, ValueError),
        ({"max_side": 2**31}, ValueError),
        ({"max_side": 0.5}, TypeError),
    ],
)
def test_a_wrong_option_is_an_error_before_anything_else(options: Any, error: "type[Exception]") -> None:
    with pytest.raises(error):
        qorocv460.find("nowhere.jpg", **options)


def test_max_side_may_be_numpys(astronaut: str) -> None:
    by_numpy: Any = np.int64(480)
    assert boxes(qorocv460.find(astronaut, max_side=by_numpy)) == boxes(qorocv460.find(astronaut, max_side=480))


def test_a_missing_photograph_is_named() -> None:
    with pytest.raises(qorocv460.UnreadablePhotoError, match="^nowhere.jpg: ") as caught:
        qorocv460.find("nowhere.jpg")
    assert caught.value.photo == "nowhere.jpg"


def test_what_is_no_picture_is_unreadable(text_file: str) -> None:
    for path in (text_file, os.path.dirname(text_file)):
        calls: List[Callable[[str], Any]] = [qorocv460.find, qorocv460.person_mask, qorocv460.close_up]
        for call in calls:
            with pytest.raises(qorocv460.UnreadablePhotoError):
                call(path)


def test_a_picture_that_claims_too_many_pixels_is_an_error_with_the_librarys_text(tmp_path: pathlib.Path) -> None:
    path = tmp_path / "huge.ppm"
    path.write_bytes(b"P6\n1000000 1000000\n255\n")
    with pytest.raises(qorocv460.DetectionError, match="huge.ppm: .*OpenCV"):
        qorocv460.find(path)


def test_a_path_with_a_nul_is_an_error() -> None:
    with pytest.raises(ValueError, match="NUL"):
        qorocv460.find("a\0b.jpg")


def test_errors_cross_processes() -> None:
    error = pickle.loads(pickle.dumps(qorocv460.UnreadablePhotoError("a.jpg", "gone")))
    assert (type(error), error.photo, str(error)) == (qorocv460.UnreadablePhotoError, "a.jpg", "a.jpg: gone")
    models = pickle.loads(pickle.dumps(qorocv460.ModelsError("lacks one", ("model01",))))
    assert (str(models), models.missing) == ("lacks one", ("model01",))


def test_a_person_mask_tells_person_from_background(astronaut: str) -> None:
    mask = qorocv460.person_mask(astronaut)
    assert mask.shape == (192, 192) and mask.dtype == np.bool_
    face = mask[30:60, 75:95]
    assert face.mean() > 0.9 and 0.1 < mask.mean() < 0.9


def test_a_close_up_is_three_times_the_faces_box(astronaut: str) -> None:
    close_up = qorocv460.close_up(astronaut)
    assert close_up is not None
    box = qorocv460.find(astronaut).faces[0].box
    width = box.right - box.left
    assert close_up.box.right - close_up.box.left == pytest.approx(3 * width, abs=2)
    assert close_up.box.top == 0 and close_up.mask.shape == (192, 192) and 0 < close_up.mask.mean() < 1


def test_a_close_up_takes_an_only_face(astronaut: str) -> None:
    grey = np.full((64, 64), 128, np.uint8)
    assert qorocv460.close_up(grey) is None
    assert qorocv460.find(astronaut, detector="haar", max_side=0).found == 2
    assert qorocv460.close_up(astronaut, detector="haar", max_side=0) is None


def test_a_picture_without_faces_has_none() -> None:
    photo = qorocv460.find(np.full((48, 64, 3), 128, np.uint8))
    assert (photo.found, photo.faces, photo.width, photo.height) == (0, (), 64, 48)


def test_no_two_threads_are_ever_on_one_slot(astronaut: str, monkeypatch: pytest.MonkeyPatch) -> None:
    detect, lock = _native.detect, threading.Lock()
    at_work: List[int] = []
    twice: List[int] = []
    most = 0

    def watched(export: _native.Export, path: bytes, max_side: int, slot: int, *buffers: Any) -> _native.Detection:
        nonlocal most
        with lock:
            twice.extend([slot] if slot in at_work else [])
            at_work.append(slot)
            most = max(most, len(at_work))
        try:
            return detect(export, path, max_side, slot, *buffers)
        finally:
            with lock:
                at_work.remove(slot)

    monkeypatch.setattr(_native, "detect", watched)
    found: List[int] = []
    # More than there are slots.
    threads = [threading.Thread(target=lambda: found.append(qorocv460.find(astronaut).found)) for _ in range(12)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert found == [1] * 12 and twice == [] and most > 1
