#!/usr/bin/env bash
# unfused_arithmetic_test.sh ARCHIVE: no instruction in it rounds a product and a sum only once. Boxes
# are defined rounding by rounding, and processors with such instructions would find others.
set -euo pipefail

code=$(mktemp)
trap 'rm -f "$code"' EXIT
objdump --disassemble --no-show-raw-insn "$1" >"$code"

grep -q 'mulps.*%ymm' "$code" || {
  echo "no product of wide vectors in $1: this is not the code that is meant" >&2
  exit 1
}
if grep -E '\svfn?m(add|sub)' "$code" >&2; then
  echo "fused arithmetic in $1" >&2
  exit 1
fi
