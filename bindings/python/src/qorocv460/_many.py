"""Many photographs, on several threads of this process."""

from __future__ import annotations

import collections
import collections.abc
import concurrent.futures
import operator
import os
import sys
from typing import Any, Deque, Generator, Iterable, Literal, Optional, Union, overload

import numpy as np

from . import _find, _models, _pictures, _slots
from .errors import PhotoError

Result = Union[_find.Photo, PhotoError]


@overload
def find_many(
    photos: Iterable[_pictures.Source],
    workers: Optional[int] = None,
    *,
    on_error: Literal["raise"] = "raise",
    progress: Optional[bool] = None,
    detector: str = "ssd",
    max_side: int = 1000,
    landmarks: bool = True,
    head_centres: bool = True,
) -> Generator[_find.Photo, None, None]: ...


@overload
def find_many(
    photos: Iterable[_pictures.Source],
    workers: Optional[int] = None,
    *,
    on_error: Literal["return"],
    progress: Optional[bool] = None,
    detector: str = "ssd",
    max_side: int = 1000,
    landmarks: bool = True,
    head_centres: bool = True,
) -> Generator[Result, None, None]: ...


def find_many(
    photos: Iterable[_pictures.Source],
    workers: Optional[int] = None,
    *,
    on_error: str = "raise",
    progress: Optional[bool] = None,
    detector: str = "ssd",
    max_side: int = 1000,
    landmarks: bool = True,
    head_centres: bool = True,
) -> Generator[Result, None, None]:
    """Finds the faces of many photographs on several threads, and yields them in the given order.

    photos    what :func:`find` takes; read only a little further than what has been yielded
    workers   threads, 1 to 9; as many as there are processors, at most 9, where it is None
    on_error  "raise": the first photograph that cannot be analysed ends the iteration with its PhotoError;
              "return": the PhotoError is yielded in the photograph's place
    progress  whether to show a bar, which takes tqdm; None: where tqdm is installed and there is a terminal

    The other arguments are those of :func:`find`. ModelsError is raised in both cases. Whoever stops early
    closes the generator, or lets it go: the calls under way end first.
    """
    options = _find.Options(detector, max_side, landmarks, head_centres)
    if on_error not in ("raise", "return"):
        raise ValueError(f'on_error is "raise" or "return", not {on_error!r}')
    if isinstance(workers, bool) or not (workers is None or hasattr(workers, "__index__")):
        raise TypeError(f"workers are a whole number of threads, not {workers!r}")
    threads = min(_slots.processors(), _slots.SLOTS) if workers is None else operator.index(workers)
    if not 1 <= threads <= _slots.SLOTS:
        raise ValueError(f"workers are 1 to {_slots.SLOTS} threads, not {threads}")
    if _is_one_photograph(photos):
        raise TypeError("find_many takes several photographs; find takes one")
    iter(photos)  # or say now that there are none to be had
    _models.ready()
    results = _results(photos, threads, options, on_error == "return")
    bar = _progress_bar(progress)
    if bar is None:
        return results
    total = len(photos) if isinstance(photos, collections.abc.Sized) else None
    return _shown(results, bar(total=total, unit="photo"))


def _is_one_photograph(photos: Any) -> bool:
    if isinstance(photos, np.ndarray) and photos.dtype.kind not in "OSU":  # which may be names
        return photos.ndim < 3 or (photos.ndim == 3 and photos.shape[2] in (3, 4))
    return isinstance(photos, (str, bytes, bytearray, memoryview, os.PathLike))


def _results(
    photos: Iterable[_pictures.Source], threads: int, options: _find.Options, returns: bool
) -> Generator[Result, None, None]:
    pool = concurrent.futures.ThreadPoolExecutor(threads, thread_name_prefix="qorocv460")
    waiting: Deque["concurrent.futures.Future[_find.Photo]"] = collections.deque()
    try:
        for photo in photos:
            waiting.append(pool.submit(_find.find_with, photo, options))
            # Far enough ahead that a slow photograph leaves the other threads work.
            if len(waiting) > 4 * threads:
                yield _result(waiting.popleft(), returns)
        while waiting:
            yield _result(waiting.popleft(), returns)
    finally:
        pool.shutdown(wait=True, cancel_futures=True)


def _result(future: "concurrent.futures.Future[_find.Photo]", returns: bool) -> Result:
    try:
        return future.result()
    except PhotoError as error:
        if not returns:
            raise
        return error


def _progress_bar(wanted: Optional[bool]) -> Optional[Any]:
    if wanted is False or (wanted is None and not sys.stderr.isatty()):
        return None
    try:
        import tqdm
    except ImportError:
        if wanted:
            raise
        return None
    return tqdm.tqdm


def _shown(results: Generator[Result, None, None], bar: Any) -> Generator[Result, None, None]:
    with bar:
        for result in results:
            bar.update()
            yield result
