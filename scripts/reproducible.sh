#!/usr/bin/env bash
# reproducible.sh [linux|windows]...: makes the packages twice, each time from the last commit in a directory of
# another name, and compares them byte for byte. Without arguments both. OpenCV is built once, where it is not yet.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"
systems=("$@")
if ((${#systems[@]} == 0)); then
  systems=(linux windows)
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
export SOURCE_DATE_EPOCH
# Compiled twice, and not taken from what another directory compiled.
unset CMAKE_C_COMPILER_LAUNCHER CMAKE_CXX_COMPILER_LAUNCHER

failed=0
for system in "${systems[@]}"; do
  case $system in
    linux) packages='QOROCV460-*-linux-x86_64.tar.xz' ;;
    windows) packages='QOROCV460-*-win64.zip' ;;
    *)
      echo "reproducible: usage: reproducible.sh [linux|windows]..." >&2
      exit 2
      ;;
  esac
  digests=()
  for place in first elsewhere; do
    mkdir -p "$work/$place/$system"
    git archive HEAD | tar --extract --directory "$work/$place/$system"
    "$work/$place/$system/scripts/package-$system.sh"
    # shellcheck disable=SC2086 # a pattern
    digests+=("$(cd "$work/$place/$system/build" && sha256sum $packages)")
  done
  if [[ ${digests[0]} == "${digests[1]}" ]]; then
    echo "reproducible: twice the same ${digests[0]##* }, ${digests[0]%% *}"
  else
    echo "reproducible: for $system the packages differ: ${digests[*]}" >&2
    failed=1
  fi
done
exit "$failed"
