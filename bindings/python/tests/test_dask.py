"""Many photographs on several worker processes."""

from __future__ import annotations

import os
import pathlib
import signal
import subprocess
import sys
from typing import Any, Iterator, List

import pytest

import qorocv460

from conftest import REPOSITORY

pandas = pytest.importorskip("pandas")
distributed = pytest.importorskip("distributed")
tables = pytest.importorskip("qorocv460.dask")


@pytest.fixture(scope="module")
def client() -> Iterator[Any]:
    """Two worker processes on this machine."""
    with distributed.LocalCluster(
        n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None
    ) as cluster, distributed.Client(cluster) as connected:
        yield connected


@pytest.fixture
def paths(astronaut: str, tmp_path: pathlib.Path) -> List[str]:
    """Fourteen photographs under names of their own, of which one cannot be read and one shows no face."""
    names = [tmp_path / f"{number:02}.jpg" for number in range(14)]
    for name in names:
        name.symlink_to(astronaut)
    names[5].unlink()
    names[9].unlink()
    names[9].write_bytes(b"P5\n64 48\n255\n" + bytes(64 * 48))
    return [str(name) for name in names]


def computed(frame: Any, **scheduler: Any) -> Any:
    return frame.compute(**scheduler).reset_index(drop=True)


@pytest.mark.parametrize("rows", ["faces", "photos"])
def test_rows_are_those_of_find_many(client: Any, paths: List[str], rows: str) -> None:
    options: Any = {"faces": {}, "photos": {"landmarks": False, "head_centres": False}}[rows]
    table = {"faces": tables.find_faces, "photos": tables.photos}[rows]
    found = qorocv460.find_many(paths, on_error="return", **options)
    expected = qorocv460.to_pandas(found, rows=rows, landmarks=rows == "faces")
    assert len(expected) == {"faces": 13, "photos": 14}[rows] and list(expected["found"]).count(-1) == 1
    pandas.testing.assert_frame_equal(computed(table(paths, client, partition=3)), expected, check_exact=True)


def test_rows_are_the_same_without_workers(client: Any, paths: List[str]) -> None:
    alone = computed(tables.find_faces(paths[:6], partition=4), scheduler="synchronous")
    spread = computed(tables.find_faces(paths[:6], client, partition=1))
    pandas.testing.assert_frame_equal(alone, spread, check_exact=True)


def test_both_workers_work(client: Any, paths: List[str]) -> None:
    frame = tables.photos(paths, client, partition=1)
    distributed.wait(frame)
    who = client.who_has(frame).values()
    assert len({worker for holders in who for worker in holders}) == 2


def test_a_worker_killed_in_the_middle_loses_no_photograph(client: Any, paths: List[str]) -> None:
    many = paths * 3
    frame = tables.find_faces(many, client, partition=1)
    tasks = distributed.futures_of(frame)
    distributed.wait(tasks, return_when="FIRST_COMPLETED")
    killed = sorted(client.run(os.getpid).values())[0]
    os.kill(killed, signal.SIGKILL)
    assert not all(task.done() for task in tasks)
    rows = computed(frame)
    assert list(rows["photo"]) == [path for path in many if path != paths[9]]
    client.wait_for_workers(2)
    assert killed not in client.run(os.getpid).values()


def test_the_guides_example_counts_the_faces_of_each_photograph(client: Any, paths: List[str]) -> None:
    example = REPOSITORY / "docs" / "examples" / "many_machines.py"
    command = [sys.executable, str(example), client.scheduler_info()["address"], *paths[4:6]]
    done = subprocess.run(command, capture_output=True, text=True)
    lines = [line.split() for line in done.stdout.splitlines()]
    assert [paths[4], "1"] in lines and [paths[5], "0"] in lines, done.stderr


def test_tasks_have_a_bounded_number_of_photographs(paths: List[str]) -> None:
    assert [tables.photos(paths, partition=size).npartitions for size in (1, 3, 14, 100)] == [14, 5, 1, 1]
    assert tables.photos(map(str, range(1000))).npartitions == 32


def test_columns_are_known_before_anything_is_computed(paths: List[str]) -> None:
    expected = qorocv460.to_pandas([], landmarks=True)
    assert tables.find_faces(paths).dtypes.to_dict() == expected.dtypes.to_dict()


def test_of_no_photographs_there_are_no_rows() -> None:
    assert len(tables.find_faces([]).compute(scheduler="synchronous")) == 0


@pytest.mark.parametrize(
    ("arguments", "error"),
    [
        ({"paths": "a.jpg"}, TypeError),
        ({"partition": 0}, ValueError),
        ({"detector": "dnn"}, ValueError),
    ],
)
def test_a_wrong_argument_is_an_error_at_once(arguments: Any, error: "type[Exception]") -> None:
    with pytest.raises(error):
        tables.find_faces(**{"paths": [], **arguments})


def test_models_that_workers_lack_are_an_error(client: Any, paths: List[str]) -> None:
    frame = tables.photos(paths[:1], client, models="/nowhere")
    with pytest.raises(qorocv460.ModelsError, match="/nowhere"):
        frame.compute()
