#!/usr/bin/env bash
# compare_systems_test.sh LINUX-BUILD WINDOWS-BUILD: the library hands out the same on both. Ends with 77,
# skipped, where there is no Linux build.
set -euo pipefail

linux=$1
windows=$2
if [[ ! -x $linux/print_results ]]; then
  echo "there is no Linux build to compare with"
  exit 77
fi
results=$(mktemp -d)
trap 'rm -rf "$results"' EXIT
"$linux/print_results" "$results/linux"
wine "$windows/print_results.exe" "Z:$results/windows"
"$linux/compare_results" "$results/linux" "$results/windows"
