#!/usr/bin/env bash
# expect_output.sh EXIT_CODE PATTERN PROGRAM [ARGUMENT...]: the program ends with that code, and what it
# prints has lines that match the extended regular expression.
set -euo pipefail

expected=$1
pattern=$2
shift 2
code=0
output=$("$@" 2>&1) || code=$?
output=${output//$'\r'/} # Windows ends lines with one
printf '%s\n' "$output"
[[ $code == "$expected" ]] || {
  echo "ended with $code, not $expected"
  exit 1
}
grep -qE -- "$pattern" <<<"$output" || {
  echo "nothing matches $pattern"
  exit 1
}
