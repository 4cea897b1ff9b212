#!/usr/bin/env bash
# coverage.sh: which lines and branches of src/ the tests run. Ends with 1 below 95 % of the lines or 85 %
# of the branches. Branches that only an exception in a called function takes are not counted.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install-deps.sh proof
preset=linux-coverage
scripts/build-preset.sh $preset
find build/$preset -name '*.gcda' -delete
# Tests that end their process on purpose or by the clock add nothing here.
ctest --test-dir build/$preset --parallel 2 --exclude-regex 'soak|load_unload|exhaustion|Damaged|Corrupt' \
  >"build/$preset-tests.log" 2>&1 || {
  grep -A 20 'tests FAILED' "build/$preset-tests.log" >&2
  exit 1
}
gcovr --root . --object-directory build/$preset --filter src/ --exclude-throw-branches \
  --exclude-unreachable-branches --branches --txt
gcovr --root . --object-directory build/$preset --filter src/ --exclude-throw-branches \
  --exclude-unreachable-branches --fail-under-line 95 --fail-under-branch 85 --txt
