#!/usr/bin/env python3
"""mutants.py: changes one condition, constant, order or cast of src/ or client/ at a time, and says which changes no
test sees.

Works in copies of the checkout, build/mutants/1, /2 and so on, whose own builds are kept for the next run. The same
seed chooses the same mutants of the same sources. Ends with 1 where mutants survive, and with 2 where the unchanged
sources do not pass.
"""

from __future__ import annotations

import argparse
import contextlib
import dataclasses
import hashlib
import json
import os
import pathlib
import queue
import random
import re
import shutil
import subprocess
import sys
import threading
from concurrent import futures

ROOT = pathlib.Path(__file__).resolve().parent.parent
COPIES = ROOT / "build" / "mutants"
# Whole programs that take seconds and see most mutants, and programs whose tests want processes of their own.
WHOLE = ("unit_tests", "cascade_engine_tests")
SINGLE = (
    *("registry_tests", "platform_tests", "loaded_library_tests", "window_tests"),
    *("client_tests", "exports_tests", "safe_tests", "safe_exports_tests"),
)
# Tests of whole programs that want them, too.
FRESH = ("DetectorSlots.", "Exports/FewerLandmarkSets.")
# Mutants that never end are killed after this time, in seconds: no test takes a tenth of it. Builds have longer.
TIMEOUT = 150
BUILD_TIMEOUT = 3600


@dataclasses.dataclass(frozen=True)
class Mutant:
    path: pathlib.Path  # below the checkout
    line: int
    start: int  # of the text that is replaced, in the file
    old: str
    new: str

    def __str__(self) -> str:
        return f"{self.path}:{self.line}: {self.old} -> {self.new}"


# What to look for, and what to put there. The texts before and after keep templates, references, includes,
# arrows, streams and shifts out.
RULES: tuple[tuple[re.Pattern[str], str], ...] = (
    (re.compile(r"(?<=\s)==(?=\s)"), "!="),
    (re.compile(r"(?<=\s)!=(?=\s)"), "=="),
    (re.compile(r"(?<=\s)<=(?=\s)"), "<"),
    (re.compile(r"(?<=\s)>=(?=\s)"), ">"),
    (re.compile(r"(?<=\s)<(?=\s)"), "<="),
    (re.compile(r"(?<=\s)>(?=\s)"), ">="),
    (re.compile(r"(?<=\s)&&(?=\s)"), "||"),
    (re.compile(r"(?<=\s)\|\|(?=\s)"), "&&"),
    (re.compile(r"(?<=\s)\+(?=\s)"), "-"),
    (re.compile(r"(?<=\s)-(?=\s)"), "+"),
    (re.compile(r"(?<=\s)\*(?=\s)"), "/"),
    (re.compile(r"(?<=\s)/(?=\s)"), "*"),
    (re.compile(r"\btrue\b"), "false"),
    (re.compile(r"\bfalse\b"), "true"),
    (re.compile(r"\bstd::max\b"), "std::min"),
    (re.compile(r"\bstd::min\b"), "std::max"),
    (re.compile(r"(?<=[(\s])!(?=[\w(])"), ""),
    (re.compile(r"\bcvRound\b"), "cvFloor"),
    (re.compile(r"\bstd::(floor|round|nearbyint)\b"), "std::ceil"),
    (re.compile(r"\bstd::ceil\b"), "std::floor"),
    (re.compile(r"\bstatic_cast<[\w:]+>(?=\()"), ""),
)
ORDER = re.compile(r"(?<=\()(\w+), (\w+)(?=\))")
NUMBER = re.compile(r"(?<![\w.\"])(\d+)(\.\d+)?(?=[UuFf]?\b)(?![xX.])")
COMMENT_OR_TEXT = re.compile(r"//[^\n]*|/\*.*?\*/|\"(?:\\.|[^\"\\\n])*\"|'(?:\\.|[^'\\\n])+'|^[ \t]*#[^\n]*", re.S | re.M)


def code_only(source: str) -> str:
    """The source with blanks for comments, texts and preprocessor lines; every place stays where it is."""
    return COMMENT_OR_TEXT.sub(lambda found: re.sub(r"[^\n]", " ", found.group()), source)


def mutants_of(path: pathlib.Path, source: str) -> list[Mutant]:
    code = code_only(source)
    found: list[Mutant] = []

    def add(start: int, old: str, new: str) -> None:
        found.append(Mutant(path, source.count("\n", 0, start) + 1, start, old, new))

    for pattern, new in RULES:
        for match in pattern.finditer(code):
            if "static_assert" not in code[code.rfind("\n", 0, match.start()) + 1 : match.start()]:
                add(match.start(), match.group(), new)
    for match in NUMBER.finditer(code):
        whole, fraction = match.group(1), match.group(2) or ""
        add(match.start(), match.group(), str(int(whole) + 1) + fraction)
    for match in ORDER.finditer(code):
        if match.group(1) != match.group(2):
            add(match.start(), match.group(), f"{match.group(2)}, {match.group(1)}")
    return sorted(found, key=lambda mutant: (mutant.start, mutant.new))


def all_mutants(only: re.Pattern[str]) -> list[Mutant]:
    found: list[Mutant] = []
    for file in sorted([*(ROOT / "src").rglob("*"), *(ROOT / "client").rglob("*")]):
        path = file.relative_to(ROOT)
        other_system = path.name.startswith("windows")
        if file.suffix in {".cpp", ".h"} and not other_system and only.search(str(path)):
            found += mutants_of(path, file.read_text())
    return found


def mutated(mutant: Mutant) -> str:
    source = (ROOT / mutant.path).read_text()
    end = mutant.start + len(mutant.old)
    assert source[mutant.start : end] == mutant.old
    return source[: mutant.start] + mutant.new + source[end:]


class Copy:
    """A checkout of its own with its build, in which one mutant at a time is tried."""

    # Tests that write the report file, which has one place on a machine, take turns.
    report_file = threading.Lock()
    # The program that saw the last mutant of a file, to be asked first about the next.
    seen_by: dict[pathlib.Path, str] = {}

    def __init__(self, number: int) -> None:
        self.place = COPIES / str(number)
        self.checkout = self.place / "checkout"
        self.build_directory = self.place / "build"
        self.unchanged: dict[pathlib.Path, bytes] = {}  # digests of what the unchanged sources give

    def run(
        self, *command: str | pathlib.Path, log: str, environment: dict[str, str] | None = None, timeout: int = TIMEOUT
    ) -> bool:
        with open(self.place / log, "w", encoding="utf-8") as output, contextlib.suppress(subprocess.TimeoutExpired):
            result = subprocess.run(
                command, stdout=output, stderr=subprocess.STDOUT, check=False, timeout=timeout,
                env={**os.environ, **(environment or {})}, cwd=self.build_directory,
            )
            return result.returncode == 0
        return False

    def update(self) -> None:
        """Files that are the same keep their time, so that little is built again."""
        self.checkout.mkdir(parents=True, exist_ok=True)
        self.build_directory.mkdir(parents=True, exist_ok=True)
        listing = subprocess.run(
            ("git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"),
            cwd=ROOT, check=True, stdout=subprocess.PIPE, text=True,
        )
        wanted = {name for name in listing.stdout.split("\0") if name and (ROOT / name).is_file()}
        for file in [file for file in self.checkout.rglob("*") if file.is_file()]:
            if str(file.relative_to(self.checkout)) not in wanted:
                file.unlink()
        for name in sorted(wanted):
            source, copy = ROOT / name, self.checkout / name
            if not copy.exists() or copy.read_bytes() != source.read_bytes():
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(source, copy)

    def configure(self) -> bool:
        return self.run(
            *("cmake", "-S", self.checkout, "-B", self.build_directory),
            *("-DCMAKE_BUILD_TYPE=Release", "-DQOROCV460_BENCH=OFF", f"-DQOROCV460_TEST_TIMEOUT={TIMEOUT}"),
            # What a mutant does counts, not what the compiler says to it.
            "-DQOROCV460_WARNINGS_AS_ERRORS=OFF",
            log="configure.log",
        )

    def build(self, targets: tuple[str, ...]) -> bool:
        return self.run(
            "cmake", "--build", self.build_directory, "--target", *targets, log="build.log", timeout=BUILD_TIMEOUT
        )

    def digests(self) -> dict[pathlib.Path, bytes]:
        """Of the programs and of the libraries that they load."""
        files = [*map(self.build_directory.joinpath, (*WHOLE, *SINGLE)), *self.build_directory.glob("*.so")]
        return {file: hashlib.sha256(file.read_bytes()).digest() for file in files}

    def changed(self) -> set[str]:
        """The names of the programs that are not what the unchanged sources give, or load a library that is not: the
        others do what they did."""
        files = {file for file, digest in self.digests().items() if digest != self.unchanged.get(file)}
        if any(file.suffix == ".so" for file in files):
            return {*SINGLE, *(file.name for file in files)}
        return {file.name for file in files}

    def whole_pass(self, path: pathlib.Path) -> bool:
        locale = {"LC_ALL": "C.UTF-8"}
        changed = self.changed()
        for program in sorted(WHOLE, key=lambda each: each != Copy.seen_by.get(path)):
            if program not in changed:
                continue
            others = "--gtest_filter=-" + ":".join(start + "*" for start in FRESH)
            command = (self.build_directory / program, "--gtest_fail_fast", others)
            if not self.run(*command, log=f"{program}.log", environment=locale):
                Copy.seen_by[path] = program
                return False
        return True

    def single_pass(self) -> bool:
        """Whether the tests pass that want processes of their own, as the test runner would start them."""
        listing = subprocess.run(
            ("ctest", "--test-dir", str(self.build_directory), "--show-only=json-v1"),
            check=True, stdout=subprocess.PIPE, text=True,
        )
        changed = self.changed()
        tests = [
            test for test in json.loads(listing.stdout)["tests"]
            if (test["name"].startswith(FRESH) and changed & {*WHOLE})
            or any(pathlib.Path(word).name in changed & {*SINGLE} for word in test.get("command", ()))
        ]
        assert tests or not changed
        for test in tests:
            properties = {item["name"]: item["value"] for item in test.get("properties", ())}
            environment = dict(setting.split("=", 1) for setting in properties.get("ENVIRONMENT", ()))
            with contextlib.ExitStack() as turn:
                if "RESOURCE_LOCK" in properties:
                    turn.enter_context(Copy.report_file)
                if not self.run(*test["command"], log="single.log", environment=environment):
                    return False
        return True

    def verdict(self, mutant: Mutant) -> str:
        """What became of a mutant: "unbuilt", "killed", "SURVIVED", or "same" where it is the same machine code."""
        file = self.checkout / mutant.path
        file.write_text(mutated(mutant))
        try:
            if not self.build(WHOLE):
                return "unbuilt"
            if not self.whole_pass(mutant.path):
                return "killed"
            if not self.build(SINGLE):
                return "unbuilt"
            if not self.changed():
                return "same"
            return "SURVIVED" if self.single_pass() else "killed"
        finally:
            file.write_text((ROOT / mutant.path).read_text())


def parse() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=(__doc__ or "").split("\n\n")[0])
    parser.add_argument("--count", type=int, default=100, help="how many mutants (100)")
    parser.add_argument("--seed", type=int, default=1, help="which ones (1)")
    parser.add_argument("--files", default=".", metavar="REGEX", help="of files that match")
    parser.add_argument("--jobs", type=int, default=2, help="how many at a time (2)")
    parser.add_argument("--list", action="store_true", help="only say which mutants these are")
    return parser.parse_args()


def main() -> int:
    options = parse()
    mutants = all_mutants(re.compile(options.files))
    chosen = random.Random(options.seed).sample(mutants, min(options.count, len(mutants)))
    chosen.sort(key=lambda mutant: (str(mutant.path), mutant.start))
    if options.list:
        print(*chosen, sep="\n")
        return 0
    copies = [Copy(number + 1) for number in range(options.jobs)]
    for copy in copies:
        copy.update()
        if not (copy.configure() and copy.build((*WHOLE, *SINGLE))):
            print(f"mutants: the unchanged sources do not build; see {copy.place}", file=sys.stderr)
            return 2
    if not (copies[0].whole_pass(pathlib.Path()) and copies[0].single_pass()):
        print(f"mutants: the unchanged sources do not pass; see {copies[0].place}", file=sys.stderr)
        return 2
    free: queue.Queue[Copy] = queue.Queue()
    for copy in copies:
        copy.unchanged = copy.digests()
        free.put(copy)

    def tried(mutant: Mutant) -> str:
        copy = free.get()
        try:
            result = copy.verdict(mutant)
        finally:
            free.put(copy)
        print(f"{result:8} {mutant}", flush=True)
        return result

    with futures.ThreadPoolExecutor(options.jobs) as pool:
        results = list(pool.map(tried, chosen))
    counts = {result: results.count(result) for result in ("killed", "SURVIVED", "same", "unbuilt")}
    print(f"{len(chosen)} of {len(mutants)} mutants: {counts['killed']} killed, {counts['SURVIVED']} survived, ", end="")
    print(f"{counts['same']} are the same machine code, {counts['unbuilt']} did not build")
    return 1 if counts["SURVIVED"] else 0


if __name__ == "__main__":
    sys.exit(main())
