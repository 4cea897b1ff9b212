#!/usr/bin/env python3
"""mutants.py: changes one condition or constant of src/ at a time, and says which changes no test sees.

Works in a copy of the checkout, build/mutants/, whose own build is kept for the next run. The same seed
chooses the same mutants of the same sources. Ends with 1 where mutants survive, and with 2 where the
unchanged sources do not pass.
"""

from __future__ import annotations

import argparse
import dataclasses
import pathlib
import random
import re
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
COPY = ROOT / "build" / "mutants" / "checkout"
BUILD = ROOT / "build" / "mutants" / "build"
TARGETS = (
    *("unit_tests", "registry_tests", "platform_tests", "cascade_engine_tests"),
    *("exports_tests", "loaded_library_tests", "window_tests"),
)
# Mutants that never end are killed after this time.
TEST_TIMEOUT = 300  # seconds
# Tests that are listed though their programs are not among the targets.
NOT_RUN = "_NOT_BUILT|^(soak|load_unload|example|abi|hosts|systems|fuzz)"


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
)
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
    return sorted(found, key=lambda mutant: (mutant.start, mutant.new))


def all_mutants(only: re.Pattern[str]) -> list[Mutant]:
    found: list[Mutant] = []
    for file in sorted((ROOT / "src").rglob("*")):
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


def run(*command: str, log: str) -> bool:
    with open(BUILD.parent / log, "w", encoding="utf-8") as output:
        return subprocess.run(command, stdout=output, stderr=subprocess.STDOUT, check=False).returncode == 0


def copy_checkout() -> None:
    """Brings the copy up to date; files that are the same keep their time, so that little is built again."""
    COPY.mkdir(parents=True, exist_ok=True)
    BUILD.mkdir(parents=True, exist_ok=True)
    listing = subprocess.run(
        ("git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"),
        cwd=ROOT, check=True, stdout=subprocess.PIPE, text=True,
    )
    wanted = {name for name in listing.stdout.split("\0") if name and (ROOT / name).is_file()}
    for file in [file for file in COPY.rglob("*") if file.is_file()]:
        if str(file.relative_to(COPY)) not in wanted:
            file.unlink()
    for name in sorted(wanted):
        source, copy = ROOT / name, COPY / name
        if not copy.exists() or copy.read_bytes() != source.read_bytes():
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, copy)


def build(jobs: int) -> bool:
    return run("cmake", "--build", str(BUILD), "--parallel", str(jobs), "--target", *TARGETS, log="build.log")


def tests_pass(jobs: int, tests: str) -> bool:
    return run(
        *("ctest", "--test-dir", str(BUILD), "--parallel", str(jobs), "--stop-on-failure"),
        *("--no-tests=error", "--tests-regex", tests, "--exclude-regex", NOT_RUN),
        log="tests.log",
    )


def verdict(mutant: Mutant, jobs: int, tests: str) -> str:
    """What became of a mutant: "unbuilt", "killed" or "SURVIVED"."""
    file = COPY / mutant.path
    file.write_text(mutated(mutant))
    try:
        if not build(jobs):
            return "unbuilt"
        return "SURVIVED" if tests_pass(jobs, tests) else "killed"
    finally:
        file.write_text((ROOT / mutant.path).read_text())


def parse() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=(__doc__ or "").split("\n\n")[0])
    parser.add_argument("--count", type=int, default=100, help="how many mutants (100)")
    parser.add_argument("--seed", type=int, default=1, help="which ones (1)")
    parser.add_argument("--files", default=".", metavar="REGEX", help="of files that match")
    parser.add_argument("--tests", default=".", metavar="REGEX", help="against tests that match")
    parser.add_argument("--jobs", type=int, default=2)
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
    copy_checkout()
    configure = (
        *("cmake", "-S", str(COPY), "-B", str(BUILD), "-DCMAKE_BUILD_TYPE=Release", "-DQOROCV460_BENCH=OFF"),
        f"-DQOROCV460_TEST_TIMEOUT={TEST_TIMEOUT}",
    )
    if not (run(*configure, log="configure.log") and build(options.jobs)):
        print(f"mutants: the unchanged sources do not build; see {BUILD.parent}", file=sys.stderr)
        return 2
    if not tests_pass(options.jobs, options.tests):
        print(f"mutants: the unchanged sources do not pass; see {BUILD.parent}/tests.log", file=sys.stderr)
        return 2
    counts = {"killed": 0, "SURVIVED": 0, "unbuilt": 0}
    for mutant in chosen:
        result = verdict(mutant, options.jobs, options.tests)
        counts[result] += 1
        print(f"{result:8} {mutant}", flush=True)
    print(f"{len(chosen)} of {len(mutants)} mutants: {counts['killed']} killed, {counts['SURVIVED']} survived, ", end="")
    print(f"{counts['unbuilt']} did not build")
    return 1 if counts["SURVIVED"] else 0


if __name__ == "__main__":
    sys.exit(main())
