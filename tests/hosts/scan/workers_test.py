"""Workers that end, and photographs that are none."""

import fcntl
import os
import pty
import shlex
import shutil
import signal
import struct
import subprocess
import termios
import time
import unittest
from pathlib import Path

from scan_host import FACE, ScanTest, children_of

PORTRAIT = next((Path(__file__).parents[3] / "assets" / "photos").glob("*.jpg"))
POISON = {"LD_PRELOAD": os.environ["POISON"]}
NO_THREADS = {"LD_PRELOAD": os.environ["NO_THREADS"]}


NAMESPACE = ["unshare", "--map-root-user", "--mount", "sh", "-c"]  # mounts there are nobody else's


def can_mount() -> bool:
    """Not everybody may."""
    if shutil.which("unshare") is None:
        return False
    script = "mount --bind /tmp /tmp && mount -o remount,bind,ro /tmp"
    return subprocess.run([*NAMESPACE, script], check=False, capture_output=True).returncode == 0


class Workers(ScanTest):
    def expect_poison_alone(self, *words: str) -> None:
        self.add_many(30)
        self.add("poison.png")
        done = self.scan(self.photos, *words, environment=POISON)
        self.expect_code(done, 1)
        status = {line["name"]: line["status"] for line in self.lines()}
        self.assertEqual(len(self.lines()), 31)
        self.assertEqual([name for name, each in status.items() if each != "ok"], ["poison.png"])
        self.assertIn("signal 6", next(line["error"] for line in self.lines() if line["name"] == "poison.png"))

    def test_a_photograph_that_ends_its_worker_takes_none_with_it(self) -> None:
        self.expect_poison_alone()

    def test_nor_where_a_worker_has_many_slots(self) -> None:
        self.expect_poison_alone("--jobs", "4", "--slots", "4")

    def wait_for_endless(self, count: int) -> int:
        """Until so many workers were given endless.png; the number of the last one."""
        while len(begun := sorted(self.photos.glob("endless.png.*"), key=lambda file: file.stat().st_mtime_ns)) < count:
            time.sleep(0.01)
        return int(begun[-1].suffix[1:])

    def test_what_was_looked_at_when_the_scan_was_ended_has_not_failed(self) -> None:
        self.add("endless.png")
        command = self.command(self.photos, "--quiet")
        with subprocess.Popen(command, stderr=subprocess.PIPE, env={**os.environ, **POISON}) as process:
            assert process.stderr is not None
            os.kill(self.wait_for_endless(1), signal.SIGKILL)
            alone = self.wait_for_endless(2)
            process.send_signal(signal.SIGTERM)
            self.assertIn(b"ending", process.stderr.readline())
            os.kill(alone, signal.SIGKILL)
        self.assertEqual(process.returncode, 130)
        self.assertEqual(self.lines(), [])

    def test_tries_again_what_has_failed(self) -> None:
        self.add_many(3)
        self.add("poison.png")
        gone = self.add("gone.jpg", b"no picture")
        self.expect_code(self.scan(environment=POISON), 1)
        self.expect_code(self.scan(), 1)
        gone.unlink()
        self.expect_code(self.scan(self.photos, "--retry-failed"), 0)
        self.assertEqual(len(self.lines()), 4)
        self.assertEqual({line["status"] for line in self.lines()}, {"ok"})

    def test_tries_again_in_a_new_folder(self) -> None:
        self.add_many(1)
        self.expect_code(self.scan(self.photos, "--retry-failed"), 0)

    def test_fails_no_photograph_where_there_can_be_no_threads(self) -> None:
        self.add_many(3)
        done = self.scan(self.photos, "--quiet", environment=NO_THREADS)
        self.expect_code(done, 1)
        self.assertIn("workers end before they begin", done.stderr)
        self.assertEqual(self.lines(), [])

    def test_odd_files_fail_alone(self) -> None:
        self.add("face.png")
        self.add("cut.png", FACE[:40])
        self.add("empty.jpg", b"")
        self.add("text.jpg", b"no picture")
        self.expect_code(self.scan(), 1)
        status = {line["name"]: line["status"] for line in self.lines()}
        self.assertEqual(
            status, {"face.png": "ok", "cut.png": "failed", "empty.jpg": "failed", "text.jpg": "failed"}
        )

    def test_reads_a_photograph_of_one_row(self) -> None:
        row = bytes(3 * 60000)
        header = b"BM" + (54 + len(row)).to_bytes(4, "little") + bytes(4) + (54).to_bytes(4, "little")
        size = (40).to_bytes(4, "little") + (60000).to_bytes(4, "little") + (1).to_bytes(4, "little")
        picture = header + size + b"\1\0\x18\0" + bytes(4) + len(row).to_bytes(4, "little") + bytes(16) + row
        self.add("row.bmp", picture)
        self.add("face.png")
        self.assertIn(self.scan().returncode, (0, 1))
        self.assertEqual(self.names(), ["face.png", "row.bmp"])
        self.assertEqual(self.lines()[0]["status"], "ok")

    def test_tells_which_photographs_are_damaged(self) -> None:
        self.add_many(6)
        portrait = PORTRAIT.read_bytes()
        self.add("whole.jpg", portrait)
        self.add("cut.jpg", portrait[: len(portrait) * 2 // 3])
        for slots in ("1", "3"):
            with self.subTest(slots=slots):
                self.run_folder = self.place / slots
                self.expect_code(self.scan(self.photos, "--jobs", "3", "--slots", slots), 0)
                damaged = [line["name"] for line in self.lines() if line["damaged"]]
                self.assertEqual(damaged, ["cut.jpg"])

    @unittest.skipUnless(can_mount(), "the place for temporary files can be made read-only")
    def test_tells_of_damage_without_a_place_for_temporary_files(self) -> None:
        portrait = PORTRAIT.read_bytes()
        self.add("cut.jpg", portrait[: len(portrait) * 2 // 3])
        place = shlex.quote(str(self.place))  # which can be written to
        mounts = f"mount --bind /tmp /tmp && mount --bind {place} {place} && mount -o remount,bind,ro /tmp"
        script = f'{mounts} && exec "$@"'
        done = subprocess.run([*NAMESPACE, script, "sh", *self.command(self.photos)], capture_output=True, check=False)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual([line["damaged"] for line in self.lines()], [True])

    def test_keeps_its_progress_on_one_line(self) -> None:
        self.add_many(1)
        columns = 30
        ours, its = pty.openpty()
        fcntl.ioctl(its, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
        with subprocess.Popen(self.command("-"), stdin=subprocess.PIPE, stderr=its) as process:
            os.close(its)
            shown = b""
            while shown.count(b"\r") < 3:
                shown += os.read(ours, 4096)
            process.kill()
        os.close(ours)
        first, *whole, _ = shown.split(b"\r")
        self.assertEqual(first, b"")
        for text in whole:
            self.assertRegex(text, b"^0 photographs, ")
            self.assertLess(len(text), columns)

    def test_wants_models(self) -> None:
        self.add("face.png")
        done = self.qorfaces("scan", self.photos, "--out", self.run_folder, "--models", self.place)
        self.expect_code(done, 3)
        self.assertIn("lacks model01.prototxt", done.stderr)
        self.assertIn("scripts/get-models.sh fills", done.stderr)

    def test_finds_the_same_on_many_slots(self) -> None:
        self.add_many(20)
        self.expect_code(self.scan(self.photos, "--jobs", "1"), 0)
        alone = (self.run_folder / "faces.ndjson").read_bytes()
        self.run_folder = self.place / "many"
        self.expect_code(self.scan(self.photos, "--jobs", "6", "--slots", "3"), 0)
        self.assertEqual((self.run_folder / "faces.ndjson").read_bytes(), alone)

    def most_threads(self, *words: str) -> int:
        """That a worker has at once."""
        most = 0
        self.run_folder = self.place / "-".join(words)
        with subprocess.Popen(self.command(self.photos, "--quiet", *words)) as process:
            while process.poll() is None:
                for worker in children_of(process.pid):
                    try:
                        most = max(most, len(os.listdir(f"/proc/{worker}/task")))
                    except FileNotFoundError:
                        pass  # it has ended
        self.assertEqual(process.returncode, 0)
        return most

    def test_has_no_more_slots_than_jobs(self) -> None:
        self.add_many(100)
        one = self.most_threads("--jobs", "1")
        self.assertEqual(self.most_threads("--jobs", "1", "--slots", "4"), one)
        self.assertEqual(self.most_threads("--jobs", "3", "--slots", "4"), one + 2)

    def test_says_nothing_where_it_is_to_be_quiet(self) -> None:
        self.add("face.png")
        self.assertEqual(self.scan(self.photos, "--quiet").stderr, "")

    def test_sums_up_for_people(self) -> None:
        self.add("face.png")
        self.assertIn("1 photograph, 0 failed, 1 face;", self.scan().stderr)


if __name__ == "__main__":
    unittest.main()
