#!/usr/bin/env python3
"""get_models_test.py GET-MODELS: the script in a checkout of its own, whose models are a line of text each.

It knows two networks: `same` is published as it is embedded, of `other` a larger one is published. The
internet is a directory, which a program named curl reads.
"""

import hashlib
import lzma
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest

SCRIPT = pathlib.Path()

SAME = b"the same\n"
EMBEDDED = b"small\n"
PUBLISHED = b"large\n"

CURL = """#!/usr/bin/env bash
while (($# > 1)); do
  [[ $1 != --output ]] || output=$2
  shift
done
exec cp -- "$INTERNET/${1##*/}" "$output"
"""

# Says that it has begun, and never ends.
ENDLESS_XZ = """#!/usr/bin/env bash
echo half
echo begun >"$BEGUN"
exec sleep 600
"""


def sha256(data: bytes) -> str:
    return hashlib.sha256(data).hexdigest()


def git_blob(data: bytes) -> str:
    return hashlib.sha1(b"blob %d\0" % len(data) + data).hexdigest()


class GetModels(unittest.TestCase):
    def setUp(self) -> None:
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.work = pathlib.Path(temporary.name)
        checkout = self.work / "checkout"
        self.script = checkout / "scripts" / "get-models.sh"
        self.assets = checkout / "assets" / "models"
        self.models = checkout / "models"
        self.programs = self.work / "programs"
        self.internet = self.work / "internet"
        for directory in (self.script.parent, self.assets, self.programs, self.internet):
            directory.mkdir(parents=True)
        shutil.copy(SCRIPT, self.script)
        (self.assets / "same.net").write_bytes(SAME)
        (self.assets / "other.net.xz").write_bytes(lzma.compress(EMBEDDED))
        (self.assets / "SHA256SUMS").write_text(f"{sha256(SAME)}  same.net\n{sha256(EMBEDDED)}  other.net\n")
        (self.script.parent / "models.txt").write_text(
            "# A comment.\n"
            f"model01.net same.net sha256:{sha256(SAME)} https://example.org/same.net\n"
            f"model02.net other.net blob:{git_blob(PUBLISHED)} https://example.org/other.net\n"
        )
        self.add_program("curl", CURL)

    def add_program(self, name: str, text: str) -> None:
        (self.programs / name).write_text(text)
        (self.programs / name).chmod(0o755)

    def environment(self) -> dict[str, str]:
        return os.environ | {
            "PATH": f"{self.programs}:{os.environ['PATH']}",
            "INTERNET": str(self.internet),
            "BEGUN": str(self.work / "begun"),
        }

    def get_models(self, *arguments: str) -> subprocess.CompletedProcess[str]:
        return subprocess.run(
            [self.script, *arguments],
            env=self.environment(),
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            check=False,
        )

    def succeed(self, *arguments: str) -> str:
        run = self.get_models(*arguments)
        self.assertEqual(run.returncode, 0, run.stdout)
        return run.stdout

    def fail_to_get(self, *arguments: str) -> str:
        run = self.get_models(*arguments)
        self.assertEqual(run.returncode, 1, run.stdout)
        return run.stdout

    def publish(self) -> None:
        (self.internet / "other.net").write_bytes(PUBLISHED)

    def place(self, name: str, data: bytes) -> None:
        self.models.mkdir(exist_ok=True)
        (self.models / name).write_bytes(data)

    def assert_other_is(self, data: bytes) -> None:
        self.assertEqual((self.models / "model02.net").read_bytes(), data)

    def assert_only_models_lie_there(self) -> None:
        self.assertEqual(
            sorted(path.name for path in self.models.iterdir()),
            ["model01.net", "model02.net", "other.net", "same.net"],
        )

    def test_places_the_embedded_models_without_a_network(self) -> None:
        self.assertIn("holds the embedded models", self.succeed())
        self.assertEqual((self.models / "model01.net").read_bytes(), SAME)
        self.assert_other_is(EMBEDDED)
        self.assert_only_models_lie_there()

    def test_links_short_names_to_public_ones_in_the_same_directory(self) -> None:
        self.succeed()
        self.assertEqual(os.readlink(self.models / "model02.net"), "other.net")

    def test_fills_another_directory_that_is_named(self) -> None:
        elsewhere = self.work / "else where"
        self.succeed(str(elsewhere))
        self.assertEqual((elsewhere / "model02.net").read_bytes(), EMBEDDED)
        self.assertFalse(self.models.exists())

    def test_is_silent_where_nothing_is_to_do(self) -> None:
        self.succeed()
        self.assertEqual(self.succeed(), "")

    def test_fills_the_gap_where_one_model_is_missing(self) -> None:
        self.succeed()
        (self.models / "other.net").unlink()
        self.assertIn("holds the embedded models", self.succeed())
        self.assert_other_is(EMBEDDED)

    def test_keeps_what_is_there_when_published_models_cannot_be_fetched(self) -> None:
        self.succeed()
        self.assertIn("other.net from https://example.org/other.net", self.fail_to_get("--published"))
        self.assert_other_is(EMBEDDED)
        self.assert_only_models_lie_there()

    def test_places_nothing_when_one_published_model_cannot_be_fetched(self) -> None:
        self.fail_to_get("--published")
        self.assertEqual(list(self.models.iterdir()), [])

    def test_replaces_embedded_models_by_published_ones(self) -> None:
        self.succeed()
        self.publish()
        self.assertIn("holds the published models", self.succeed("--published"))
        self.assert_other_is(PUBLISHED)
        self.assert_only_models_lie_there()

    def test_is_silent_where_the_published_models_are_there(self) -> None:
        self.publish()
        self.succeed("--published")
        self.assertEqual(self.succeed("--published"), "")

    def test_leaves_published_models_in_a_plain_run(self) -> None:
        self.publish()
        self.succeed("--published")
        self.assertEqual(self.succeed(), "")
        self.assert_other_is(PUBLISHED)

    def test_lists_the_origin_of_each_model(self) -> None:
        self.publish()
        self.succeed("--published")
        lines = [line.split(maxsplit=2) for line in self.succeed("--list").splitlines()]
        self.assertEqual(
            lines,
            [["model01.net", "same.net", "embedded and published"], ["model02.net", "other.net", "published"]],
        )

    def test_lists_what_is_missing(self) -> None:
        self.assertEqual(self.succeed("--list").count("missing"), 2)
        self.assertFalse(self.models.exists())

    def test_takes_a_published_file_that_was_put_there_by_hand(self) -> None:
        self.place("other.net", PUBLISHED)
        self.assertIn("holds the published models", self.succeed("--published"))
        self.assert_other_is(PUBLISHED)

    def test_keeps_a_file_of_the_users_own(self) -> None:
        self.place("other.net", b"mine\n")
        self.assertIn("other.net", self.succeed())
        self.assert_other_is(b"mine\n")

    def test_keeps_a_file_of_the_users_own_under_its_short_name(self) -> None:
        self.place("model02.net", b"mine\n")
        self.assertIn("other.net", self.succeed())
        self.assert_other_is(b"mine\n")
        self.assertFalse((self.models / "other.net").exists())

    def test_does_not_replace_a_file_of_the_users_own_by_a_published_one(self) -> None:
        self.publish()
        self.place("other.net", b"mine\n")
        self.assertIn("neither embedded nor published: other.net", self.fail_to_get("--published"))
        self.assert_other_is(b"mine\n")

    def test_never_writes_through_a_link(self) -> None:
        outside = self.work / "outside.net"
        outside.write_bytes(EMBEDDED)
        self.models.mkdir()
        for name in ("other.net", "model02.net"):
            (self.models / name).symlink_to(outside)
        self.publish()
        self.succeed("--published")
        self.assert_other_is(PUBLISHED)
        self.assertEqual(outside.read_bytes(), EMBEDDED)

    def test_replaces_a_link_that_leads_nowhere(self) -> None:
        self.models.mkdir()
        (self.models / "model02.net").symlink_to(self.work / "gone")
        self.succeed()
        self.assert_other_is(EMBEDDED)
        self.assertFalse((self.work / "gone").exists())

    def test_does_not_use_a_download_that_is_not_the_published_file(self) -> None:
        self.succeed()
        (self.internet / "other.net").write_bytes(b"damaged\n")
        self.assertIn("not the published other.net", self.fail_to_get("--published"))
        self.assert_other_is(EMBEDDED)

    def test_does_not_use_a_damaged_embedded_file(self) -> None:
        packed = self.assets / "other.net.xz"
        packed.write_bytes(packed.read_bytes()[:-20])
        self.assertIn(f"{packed} cannot be unpacked", self.fail_to_get())
        self.assertEqual(sorted(path.name for path in self.models.iterdir()), ["model01.net", "same.net"])

    def test_does_not_use_an_embedded_file_of_other_content(self) -> None:
        (self.assets / "other.net.xz").write_bytes(lzma.compress(b"something else\n"))
        self.assertIn("does not hold the other.net", self.fail_to_get())
        self.assertFalse((self.models / "model02.net").exists())

    def test_tells_what_to_do_where_a_model_is_not_installed(self) -> None:
        (self.assets / "other.net.xz").unlink()
        self.assertIn("apt-get install opencv-data", self.fail_to_get())

    def test_tells_what_to_do_without_xz(self) -> None:
        for name in ("awk", "bash", "cp", "cut", "dirname", "grep", "ln", "mkdir", "mktemp", "mv", "rm"):
            (self.programs / name).symlink_to(str(shutil.which(name)))
        for name in ("cat", "env", "sha1sum", "sha256sum", "sort", "stat", "tr"):
            (self.programs / name).symlink_to(str(shutil.which(name)))
        run = subprocess.run(
            [self.script], env={"PATH": str(self.programs)}, capture_output=True, text=True, check=False
        )
        self.assertEqual(run.returncode, 1)
        self.assertIn("apt-get install xz-utils", run.stderr)

    def test_leaves_no_half_file_when_it_is_stopped(self) -> None:
        self.add_program("xz", ENDLESS_XZ)
        begun = self.work / "begun"
        os.mkfifo(begun)
        with subprocess.Popen(
            [self.script], env=self.environment(), start_new_session=True, stderr=subprocess.DEVNULL
        ) as run:
            begun.read_text()
            os.killpg(run.pid, signal.SIGTERM)
        self.assertEqual(sorted(path.name for path in self.models.iterdir()), ["model01.net", "same.net"])


if __name__ == "__main__":
    SCRIPT = pathlib.Path(sys.argv.pop()).resolve()
    unittest.main()
