"""Many photographs on threads of this process."""

from __future__ import annotations

import itertools
import pathlib
import sys
import threading
from typing import Any, Dict, Iterator, List

import numpy as np
import pytest

import qorocv460
from qorocv460 import _find

PIXELS = [b"P5\n%d 2\n255\n" % width + bytes(2 * width) for width in range(1, 60)]
"""Pictures that are told apart by their width."""

QUICK: Any = {"landmarks": False, "head_centres": False}


def test_results_come_in_order() -> None:
    widths = [photo.width for photo in qorocv460.find_many(PIXELS, 4, **QUICK)]
    assert widths == list(range(1, 60))


def test_a_slow_first_photograph_comes_first(monkeypatch: pytest.MonkeyPatch) -> None:
    others, find_with = threading.Event(), _find.find_with

    def delayed(photo: Any, options: Any) -> qorocv460.Photo:
        if photo is PIXELS[0]:
            assert others.wait(60)
        else:
            others.set()
        return find_with(photo, options)

    monkeypatch.setattr(_find, "find_with", delayed)
    assert [photo.width for photo in qorocv460.find_many(PIXELS[:5], 2, **QUICK)] == [1, 2, 3, 4, 5]


@pytest.mark.parametrize("workers", [1, 2, 9])
def test_any_number_of_workers_finds_the_same(astronaut: str, workers: int) -> None:
    alone = qorocv460.find(astronaut).to_records(landmarks=True)
    for photo in qorocv460.find_many([astronaut] * 3, workers):
        assert photo.to_records(landmarks=True) == alone


def test_photographs_are_taken_little_further_than_results() -> None:
    taken: List[int] = []

    def endless() -> Iterator[bytes]:
        for number in itertools.count():
            taken.append(number)
            yield PIXELS[number % len(PIXELS)]

    results = qorocv460.find_many(endless(), 2, **QUICK)
    for _ in range(5):
        next(results)
    results.close()
    assert len(taken) < 20


def test_no_thread_is_left_of_a_closed_generator() -> None:
    before = threading.active_count()
    results = qorocv460.find_many(PIXELS, 3, **QUICK)
    next(results)
    results.close()
    assert threading.active_count() == before


def test_an_error_is_raised_in_its_place(text_file: str) -> None:
    results = qorocv460.find_many([PIXELS[0], PIXELS[1], text_file, PIXELS[2]], 2, **QUICK)
    assert [next(results).width, next(results).width] == [1, 2]
    with pytest.raises(qorocv460.UnreadablePhotoError, match="text.jpg"):
        next(results)
    assert list(results) == []


def test_an_error_is_returned_in_its_place(text_file: str) -> None:
    results = list(qorocv460.find_many([PIXELS[0], text_file, PIXELS[1]], 2, on_error="return", **QUICK))
    assert isinstance(results[1], qorocv460.UnreadablePhotoError) and results[1].photo == text_file
    assert [photo.width for photo in results[::2] if isinstance(photo, qorocv460.Photo)] == [1, 2]


def test_of_no_photographs_there_is_nothing() -> None:
    assert list(qorocv460.find_many([])) == []


@pytest.mark.parametrize(
    ("arguments", "error"),
    [
        ({"workers": 0}, ValueError),
        ({"workers": 10}, ValueError),
        ({"on_error": "ignore"}, ValueError),
        ({"detector": "dnn"}, ValueError),
        ({"workers": 1.5}, TypeError),
        ({"workers": True}, TypeError),
        ({"photos": "a.jpg"}, TypeError),
        ({"photos": pathlib.Path("a.jpg")}, TypeError),
        ({"photos": None}, TypeError),
        ({"photos": np.zeros((4, 5, 3), np.uint8)}, TypeError),
    ],
)
def test_a_wrong_argument_is_an_error_at_once(arguments: Any, error: "type[Exception]") -> None:
    find_many: Any = qorocv460.find_many
    with pytest.raises(error):
        find_many(**{"photos": [], **arguments})


def test_photographs_may_be_a_stack_and_names_an_array(astronaut: str) -> None:
    stack: Any = np.zeros((3, 4, 5, 3), np.uint8)
    assert [photo.width for photo in qorocv460.find_many(stack, **QUICK)] == [5, 5, 5]
    names: Any = np.array([astronaut] * 2)
    assert [photo.width for photo in qorocv460.find_many(names, **QUICK)] == [512, 512]


def test_a_bar_counts_every_photograph(capfd: pytest.CaptureFixture[str]) -> None:
    pytest.importorskip("tqdm")
    assert len(list(qorocv460.find_many(PIXELS[:7], 2, progress=True, **QUICK))) == 7
    assert "7/7" in capfd.readouterr().err


def test_without_tqdm_there_is_no_bar(monkeypatch: pytest.MonkeyPatch) -> None:
    modules: Dict[str, Any] = sys.modules
    monkeypatch.setitem(modules, "tqdm", None)
    monkeypatch.setattr(sys.stderr, "isatty", lambda: True, raising=False)
    assert len(list(qorocv460.find_many(PIXELS[:3], **QUICK))) == 3
    with pytest.raises(ImportError):
        qorocv460.find_many(PIXELS[:3], progress=True, **QUICK)
