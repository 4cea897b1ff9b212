"""dask_overhead.py PHOTO [PHOTOGRAPHS [ROUNDS]]: what Dask adds to find_many.

The same photograph so many times, by find_many on one thread and by find_faces on one worker process of one
thread, in turns; of each the medians by the clock and by the processors. Then tasks and bytes per photograph.
"""

from __future__ import annotations

import os
import pickle
import statistics
import sys
import time
from typing import Any, Callable, List, Tuple

import cloudpickle
import distributed

import qorocv460
import qorocv460.dask

Spent = Tuple[float, float]


def spend(work: Callable[[], Any], processors: Callable[[], float]) -> Spent:
    """Seconds by the clock and by the processors."""
    clock, used = time.perf_counter(), processors()
    work()
    return time.perf_counter() - clock, processors() - used


def own_processors() -> float:
    return time.process_time()


def report(name: str, rounds: List[Spent], photographs: int) -> Spent:
    clock, used = (1000 * statistics.median(column) / photographs for column in zip(*rounds))
    print(f"{name:9}  {clock:8.2f} ms a photograph by the clock  {used:8.2f} ms by the processors")
    return clock, used


def main(photo: str, photographs: int = 128, rounds: int = 5) -> None:
    paths = [photo] * photographs
    dask_distributed: Any = distributed  # it lacks types
    with dask_distributed.LocalCluster(
        n_workers=1, threads_per_worker=1, processes=True, dashboard_address=None
    ) as cluster, dask_distributed.Client(cluster) as client:

        def by_find_many() -> Any:
            return qorocv460.to_pandas(qorocv460.find_many(paths, 1), landmarks=True)

        def by_dask() -> Any:
            return qorocv460.dask.find_faces(paths, client).compute()

        def all_processors() -> float:
            # Scheduler and client are this process.
            return own_processors() + float(sum(client.run(time.process_time).values()))

        by_find_many()
        by_dask()  # both have their models loaded now
        many, dask = [], []
        for _ in range(rounds):
            many.append(spend(by_find_many, own_processors))
            dask.append(spend(by_dask, all_processors))
        plain = report("find_many", many, photographs)
        spread = report("Dask", dask, photographs)
        for name, without, with_dask in zip(("clock", "processors"), plain, spread):
            print(f"overhead by the {name}: {100 * (with_dask / without - 1):.1f} %")

        frame = qorocv460.dask.find_faces(paths)
        rows = frame.compute()
        print(f"tasks a photograph: {len(frame.dask) / photographs:.4f}")
        print(f"bytes a photograph to the scheduler: {len(cloudpickle.dumps(frame.dask)) / photographs:.0f}")
        print(f"bytes a photograph back, {len(rows) / photographs:.1f} faces: {len(pickle.dumps(rows)) / photographs:.0f}")
        print(f"load of the machine: {os.getloadavg()[0]:.1f}")


if __name__ == "__main__":
    main(sys.argv[1], *(int(argument) for argument in sys.argv[2:]))
