#!/usr/bin/env bash
# memcheck.sh: every export on made models under valgrind, each test in a process of its own. Ends with 1
# where valgrind finds an error in the library's own code, or memory that this code has lost.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install-deps.sh proof
preset=linux-memcheck
scripts/build-preset.sh $preset
program=build/$preset/exports_tests
reports=build/$preset/valgrind
rm -rf "$reports"
mkdir "$reports"
tests=$("$program" --gtest_list_tests \
  --gtest_filter='*reportsOneFace*:*findsNothing*:*cannotBeRead*:*writesThirty*:NetworkMasks*:TileExport*' |
  awk '/^[^ ]/ { suite = $1 } /^ / { print suite $1 }')

check() { # TEST
  # A test that fails is no matter of this script: valgrind leaves out what some processors can.
  valgrind --quiet --leak-check=full --show-leak-kinds=definite \
    --xml=yes --xml-file="$reports/${1//\//-}.xml" "$program" --gtest_filter="$1" >/dev/null 2>&1 || true
}
export -f check
export program reports
xargs -P "$(nproc)" -I TEST bash -c 'check TEST' <<<"$tests"

python3 - "$reports" <<'PYTHON'
import pathlib
import sys
import xml.etree.ElementTree as tree

reports = sorted(pathlib.Path(sys.argv[1]).glob("*.xml"))
ours = others = 0
for report in reports:
    for error in tree.parse(report).getroot().iter("error"):
        frames = [(frame.findtext("obj", ""), frame.findtext("fn", "?")) for frame in error.find("stack").iter("frame")]
        # valgrind's own replacements of malloc and memcpy are nobody's code.
        frames = [frame for frame in frames if "vgpreload" not in frame[0]]
        if frames and "libQOROCV460" in frames[0][0]:
            ours += 1
            print(report.stem, error.findtext("kind"), [name for _, name in frames[:5]])
        else:
            others += 1
print(f"memcheck: {len(reports)} tests, {ours} errors in the library, {others} in what it calls")
sys.exit(1 if ours or not reports else 0)
PYTHON
