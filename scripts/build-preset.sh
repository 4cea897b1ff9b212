#!/usr/bin/env bash
# build-preset.sh PRESET: configures and builds a preset; says more only where that fails.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

log=build/$1.log
mkdir -p build
echo "build-preset: building $1"
if ! (cmake --preset "$1" && cmake --build --preset "$1" --parallel "$(nproc)") >"$log" 2>&1; then
  tail -n 40 "$log" >&2
  echo "build-preset: building $1 failed; all of its output is in $log" >&2
  exit 1
fi
