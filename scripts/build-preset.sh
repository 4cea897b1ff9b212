#!/usr/bin/env bash
# build-preset.sh PRESET [TARGET...]: configures and builds a preset, or only some targets of it; says more
# only where that fails. For windows and linux-static the first run builds OpenCV, which takes about 10 minutes on
# two processors and is kept.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

# What was compiled before, in this clone or another, is not compiled again.
if command -v ccache >/dev/null; then
  export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
  export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1
fi

log=build/$1.log
targets=("${@:2}")
if ((${#targets[@]} > 0)); then
  targets=(--target "${targets[@]}")
fi
mkdir -p build
case $1 in
  windows)
    QOROCV460_WINDOWS_PREFIX=$(scripts/build-opencv.sh windows)
    export QOROCV460_WINDOWS_PREFIX
    ;;
  linux-static)
    QOROCV460_LINUX_PREFIX=$(scripts/build-opencv.sh linux)
    export QOROCV460_LINUX_PREFIX
    ;;
esac
echo "build-preset: building $1"
if ! (cmake --preset "$1" && cmake --build --preset "$1" --parallel "$(nproc)" "${targets[@]}") >"$log" 2>&1; then
  tail -n 40 "$log" >&2
  echo "build-preset: building $1 failed; all of its output is in $log" >&2
  exit 1
fi
