#!/usr/bin/env bash
# bench.sh [PART...]: measures the library beside the bare OpenCV calls, prints the tables and writes
# docs/contributing/measurements.md anew with them, and docs/reference/performance.md and its picture with
# what follows from them. The parts: engines, slots, head-measures, calls. Without one it measures all; that
# takes half an hour and wants a machine with nothing else to do. A part that is not measured keeps what it
# last gave on this machine. Ends with 1 where a bound is broken.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

parts=(engines slots head-measures calls)
for part in "$@"; do
  if [[ " ${parts[*]} " != *" $part "* ]]; then
    echo "bench: there is no part $part; usage: bench.sh [engines|slots|head-measures|calls]..." >&2
    exit 2
  fi
done

scripts/install-deps.sh bench
scripts/build-preset.sh linux qorbench bare_calls qorfaces

field() { # FILE NAME: the first value under a name
  sed -n "s/^$2[[:space:]]*: //p" "$1" | head -n 1
}

tables=build/linux/performance
mkdir -p "$tables"
cat >"$tables/machine.md" <<TEXT
| | |
|---|---|
| processor | $(field /proc/cpuinfo 'model name'), $(nproc) of them |
| memory | $(awk '/MemTotal/ { printf "%.0f GiB", $2 / 1048576 }' /proc/meminfo) |
| system | $(sed -n 's/^PRETTY_NAME="\(.*\)"$/\1/p' /etc/os-release), Linux $(uname -r) |
| compiler | $(c++ --version | head -n 1) |
| OpenCV | $(dpkg-query --show --showformat='${Version}' libopencv-dev) |
TEXT
kept=0
for part in "${@:-${parts[@]}}"; do
  build/linux/qorbench "$part" | sed -u '/^loading data from/d' | tee "$tables/$part.new" || kept=$?
  ((kept <= 1)) || exit "$kept" # it broke off
  mv "$tables/$part.new" "$tables/$part.md"
done
scripts/bench-pages.sh "$tables"
exit "$kept"
