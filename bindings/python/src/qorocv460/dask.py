"""Many photographs on many machines, with Dask: tables of faces and of photographs.

A task is a bounded number of photographs, which one thread of a worker analyses one after the other. The
threads of a worker process share one pool of nine slots and one set of models. The rows are those of
find_many and to_pandas, however many workers there are.
"""

from __future__ import annotations

import ctypes
import functools
import os
import uuid
from typing import Any, Iterable, List, Optional, Union

from . import _find, _models, _tables
from ._many import find_many

Path = Union[str, "os.PathLike[str]"]

PARTITION = 32


def find_faces(
    paths: Iterable[Path],
    client: Optional[Any] = None,
    *,
    partition: int = PARTITION,
    models: Optional[Path] = None,
    detector: str = "ssd",
    max_side: int = 1000,
    landmarks: bool = True,
    head_centres: bool = True,
) -> Any:
    """The faces of photographs as a ``dask.dataframe``, one row a face, in the order of ``paths``.

    The columns are those of :func:`qorocv460.to_records`, with the 68 landmarks where ``landmarks`` is true.
    A photograph that could not be analysed is a row with face -1 and its error.

    paths      as the workers' machines name them; read at once
    client     a ``distributed.Client``: the work starts there at once, and its results stay in the memory of
               the workers as long as the frame lives. None: it starts when the frame is computed, wherever
               Dask then computes
    partition  photographs of a task, at least 1
    models     the directory of the models on the workers' machines, as :func:`qorocv460.use_models` takes it;
               None: what each worker has by QOROCV460_MODELS, or the package's own

    The other arguments are those of :func:`qorocv460.find`.
    """
    options = _find.Options(detector, max_side, landmarks, head_centres)
    return _frame(paths, client, partition, models, "faces", options)


def photos(
    paths: Iterable[Path],
    client: Optional[Any] = None,
    *,
    partition: int = PARTITION,
    models: Optional[Path] = None,
    detector: str = "ssd",
    max_side: int = 1000,
) -> Any:
    """The photographs as a ``dask.dataframe``, one row each, in the order of ``paths``: sizes, the number of
    faces found, or the error. The arguments are those of :func:`find_faces`; the faces themselves are not
    looked at any further, which is quicker."""
    options = _find.Options(detector, max_side, landmarks=False, head_centres=False)
    return _frame(paths, client, partition, models, "photos", options)


def _frame(
    paths: Iterable[Path],
    client: Optional[Any],
    partition: int,
    models: Optional[Path],
    rows: str,
    options: _find.Options,
) -> Any:
    import dask.dataframe

    if isinstance(paths, (str, bytes)):
        raise TypeError("a table is of several photographs: name them in a list")
    if partition < 1:
        raise ValueError(f"a task has at least 1 photograph, not {partition}")
    names = [os.fspath(path) for path in paths]
    parts = [names[start : start + partition] for start in range(0, len(names), partition)] or [[]]
    # It lacks types.
    from_map: Any = getattr(dask.dataframe, "from_map")
    frame = from_map(
        analyse,
        parts,
        meta=_tables.to_pandas([], rows=rows, landmarks=options.landmarks),
        rows=rows,
        options=options,
        models=None if models is None else os.fspath(models),
        # Files change under their names: what was computed once says nothing about the next time.
        token=f"qorocv460-{rows}-{uuid.uuid4().hex}",
        enforce_metadata=False,
    )
    return frame if client is None else client.persist(frame)


def analyse(paths: List[str], rows: str, options: _find.Options, models: Optional[str]) -> Any:
    """A task: the rows of some photographs as a ``pandas.DataFrame``."""
    _keep_memory()
    if models is not None:
        _models.use_models(models)
    # Dask's threads are the threads: one more here would only wait for this one.
    results = find_many(
        paths,
        workers=1,
        on_error="return",
        progress=False,
        detector=options.detector,
        max_side=options.max_side,
        landmarks=options.landmarks,
        head_centres=options.head_centres,
    )
    return _tables.to_pandas(results, rows=rows, landmarks=options.landmarks)


@functools.lru_cache(maxsize=None)
def _keep_memory() -> None:
    """Undoes, once in a process, what Dask's nanny tells glibc for the sake of tables: to give memory back to
    the system from 64 KiB on. Every picture would be put into new pages then, at the cost of a sixth of the
    time and more. The numbers are those that glibc otherwise arrives at by itself."""
    if os.name != "posix" or os.environ.get("MALLOC_TRIM_THRESHOLD_") != "65536":
        return  # not glibc's, or somebody's own choice
    mallopt = getattr(ctypes.CDLL(None), "mallopt", None)
    if mallopt is not None:
        mallopt(-3, 32 << 20)  # M_MMAP_THRESHOLD
        mallopt(-1, 64 << 20)  # M_TRIM_THRESHOLD
