#!/usr/bin/env python3
"""scan.py BUILD MODELS PHOTO...: what a scan costs beside the calls in it, how its memory grows, how fast it goes on,
and whether every photograph stands once in everything that it writes when it is killed now and then.

BUILD is a build directory with qorfaces and bare_calls. The photographs are scaled to 400 of 0.3 to 9 megapixels.
"""

import argparse
import csv
import json
import os
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
from pathlib import Path

from PIL import Image

MEGAPIXELS = (0.3, 0.6, 1, 2, 3, 5, 7, 9)


def make_photographs(sources: list[Path], folder: Path, count: int) -> list[Path]:
    photographs = []
    for i in range(count):
        picture = Image.open(sources[i % len(sources)]).convert("RGB")
        scale = (MEGAPIXELS[i // len(sources) % len(MEGAPIXELS)] * 1e6 / (picture.width * picture.height)) ** 0.5
        path = folder / f"{i:04d}.jpg"
        if i < len(sources) * len(MEGAPIXELS):
            picture.resize((round(picture.width * scale), round(picture.height * scale))).save(path, quality=90)
        else:
            shutil.copy(photographs[i % (len(sources) * len(MEGAPIXELS))], path)
        photographs.append(path)
    return photographs


def seconds(*commands: list[str]) -> float:
    start = time.monotonic()
    running = [subprocess.Popen(command, stdout=subprocess.DEVNULL) for command in commands]
    if any(process.wait() != 0 for process in running):
        sys.exit(f"failed: {commands}")
    return time.monotonic() - start


def resident(process: int) -> int:
    """Bytes of a process and of those that it has started, pages that they share by the share of each."""
    total = 0
    for each in [process, *children(process)]:
        try:
            for line in Path(f"/proc/{each}/smaps_rollup").read_text().splitlines():
                if line.startswith("Pss:"):
                    total += int(line.split()[1]) * 1024
        except (FileNotFoundError, ProcessLookupError):
            pass
    return total


def children(process: int) -> list[int]:
    try:
        return [int(child) for child in Path(f"/proc/{process}/task/{process}/children").read_text().split()]
    except (FileNotFoundError, ProcessLookupError):
        return []


def throughput(qorfaces: str, bare: str, models: str, photographs: list[Path], place: Path, rounds: int) -> None:
    jobs = os.cpu_count() or 1
    for number in range(rounds):
        run = place / f"run{number}"
        scanned = seconds([qorfaces, "scan", "--quiet", "--models", models, "--out", str(run), str(photographs[0].parent)])
        shares = [[str(path) for path in photographs[i::jobs]] for i in range(jobs)]
        called = seconds(*([bare, models + "/", *share] for share in shares))
        print(f"{len(photographs) / scanned:.1f} photographs a second, bare calls {len(photographs) / called:.1f}: "
              f"{called / scanned:.3f}", flush=True)


def make_links(photographs: list[Path], folder: Path, count: int) -> None:
    folder.mkdir()
    for i in range(count):
        (folder / f"{i:06d}.jpg").symlink_to(photographs[i % len(photographs)])


def memory(qorfaces: str, models: str, photographs: list[Path], place: Path, count: int, words: list[str]) -> None:
    links = place / "links"
    make_links(photographs, links, count)
    run = place / "many"
    command = [qorfaces, "scan", "--quiet", *words, "--models", models, "--out", str(run), str(links)]
    process = subprocess.Popen(command)
    ended = threading.Event()
    samples: list[tuple[int, int]] = []

    def watch() -> None:
        while not ended.wait(0.2):
            try:
                done = (run / "faces.ndjson").read_bytes().count(b"\n")
            except FileNotFoundError:
                continue
            samples.append((done, resident(process.pid)))

    watcher = threading.Thread(target=watch)
    watcher.start()
    code = process.wait()
    ended.set()
    watcher.join()
    def around(goal: int) -> float:
        near = [size for done, size in samples if abs(done - goal) <= goal * 0.1]
        return sum(near) / max(1, len(near)) / 1e6
    print(f"exit code {code}; {around(count // 10):.1f} MB around the {count // 10}th photograph, "
          f"{around(int(count * 0.95)):.1f} MB around the {int(count * 0.95)}th", flush=True)


def restart(qorfaces: str, models: str, place: Path, count: int) -> None:
    folder, run = place / "finished", place / "finished-run"
    folder.mkdir()
    source = Image.new("RGB", (16, 16))
    for i in range(count):
        source.save(folder / f"{i}.bmp")
    command = [qorfaces, "scan", "--quiet", "--models", models, "--out", str(run), str(folder)]
    print(f"{count} tiny ones: {seconds(command):.1f} s", flush=True)
    source.save(folder / "new.bmp")
    journal = run / "faces.ndjson"
    size = journal.stat().st_size
    start = time.monotonic()
    process = subprocess.Popen(command)
    while journal.stat().st_size == size and process.poll() is None:
        time.sleep(0.01)
    print(f"started again: the new one is written after {time.monotonic() - start:.2f} s", flush=True)
    process.wait()
    print(f"all of it {time.monotonic() - start:.1f} s", flush=True)
    print(f"report: {seconds([qorfaces, 'report', str(run)]):.1f} s")


def kills(qorfaces: str, models: str, photographs: list[Path], place: Path, count: int, times: int) -> None:
    """Kills the scan, its workers or all of them at a random photograph each."""
    links, run = place / "killed", place / "killed-run"
    make_links(photographs, links, count)
    journal = run / "faces.ndjson"
    command = [qorfaces, "scan", "--quiet", "--models", models, "--out", str(run), str(links)]
    chance = random.Random(460)
    for goal in sorted(chance.randrange(count) for _ in range(times)):
        process = subprocess.Popen(command, stderr=subprocess.DEVNULL)
        while process.poll() is None and not (journal.exists() and journal.read_bytes().count(b"\n") >= goal):
            time.sleep(0.05)
        workers = children(process.pid)
        whom = chance.choice([[process.pid], workers, [process.pid, *workers]])
        for victim in whom:
            try:
                os.kill(victim, signal.SIGKILL)
            except ProcessLookupError:
                pass
        if process.pid not in whom:
            process.send_signal(signal.SIGTERM)
        process.wait()
    code = subprocess.run(command, check=False).returncode
    names = {path.name for path in links.iterdir()}
    journalled = [json.loads(line)["name"] for line in journal.read_text(encoding="utf-8").splitlines()]
    with open(run / "photos.csv", encoding="utf-8", newline="") as file:
        listed = [row["name"] for row in csv.DictReader(file)]
    once = all(len(found) == len(names) and set(found) == names for found in (journalled, listed))
    print(f"{count} photographs, {times} kills: exit code {code}, each once in the journal and in photos.csv: {once}")


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=Path)
    parser.add_argument("models")
    parser.add_argument("photos", type=Path, nargs="+")
    parser.add_argument("--only", choices=["throughput", "memory", "restart", "kills"])
    parser.add_argument("--count", type=int, default=0)
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--words", default="", help="further words for the scan whose memory is watched")
    given = parser.parse_args()
    qorfaces, bare = str(given.build / "qorfaces"), str(given.build / "bare_calls")
    with tempfile.TemporaryDirectory(prefix="scan-bench-") as name:
        place = Path(name)
        folder = place / "photographs"
        folder.mkdir()
        if given.only in (None, "throughput"):
            throughput(qorfaces, bare, given.models, make_photographs(given.photos, folder, 400), place, given.rounds)
        if given.only in (None, "memory"):
            small = place / "small"
            small.mkdir()
            memory(qorfaces, given.models, make_photographs(given.photos, small, 40), place, given.count or 10000, given.words.split())
        if given.only in (None, "restart"):
            restart(qorfaces, given.models, place, given.count or 100000)
        if given.only in (None, "kills"):
            tiny = place / "tiny"
            tiny.mkdir()
            photographs = make_photographs(given.photos, tiny, 40)
            kills(qorfaces, given.models, photographs, place, given.count or 100000, 20)


if __name__ == "__main__":
    main()
