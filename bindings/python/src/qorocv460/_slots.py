"""Who may use which detectors: nine slots, handed out one thread at a time, and the shared pair."""

from __future__ import annotations

import contextlib
import os
import queue
import threading
from typing import Iterator

SLOTS = 9

_free: "queue.LifoQueue[int]"
_pair: threading.Lock


def _fill() -> None:
    global _free, _pair
    _free = queue.LifoQueue()
    for slot in range(SLOTS, 0, -1):
        _free.put(slot)
    _pair = threading.Lock()


_fill()
if hasattr(os, "register_at_fork"):
    # A forked child has none of the threads that held slots in its parent.
    os.register_at_fork(after_in_child=_fill)


@contextlib.contextmanager
def slot() -> Iterator[int]:
    """A slot that no other thread of this process uses meanwhile; waits while all nine are taken.

    The slot given back last comes first: as few as possible are loaded.
    """
    free = _free
    taken = free.get()
    try:
        yield taken
    finally:
        free.put(taken)


@contextlib.contextmanager
def shared_pair() -> Iterator[None]:
    """The detectors of the functions that have no slot, one thread at a time."""
    with _pair:
        yield


def processors() -> int:
    """The processors that this process may use."""
    if hasattr(os, "sched_getaffinity"):
        return len(os.sched_getaffinity(0))
    return os.cpu_count() or 1
