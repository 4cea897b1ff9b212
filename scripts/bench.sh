#!/usr/bin/env bash
# bench.sh [PART...]: measures the library beside the bare OpenCV calls, prints the tables and writes
# docs/performance.md anew with them. The parts: slots, head-measures, calls. Without one it measures all;
# that takes an hour and wants a machine with nothing else to do. A part that is not measured keeps what it
# last gave on this machine. Ends with 1 where a bound is broken.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

parts=(slots head-measures calls)
for part in "$@"; do
  if [[ " ${parts[*]} " != *" $part "* ]]; then
    echo "bench: there is no part $part; usage: bench.sh [slots|head-measures|calls]..." >&2
    exit 2
  fi
done

scripts/install-deps.sh
scripts/build-preset.sh linux

tables=build/linux/performance
mkdir -p "$tables"
kept=0
for part in "${@:-${parts[@]}}"; do
  build/linux/qorbench "$part" | sed -u '/^loading data from/d' | tee "$tables/$part.new" || kept=$?
  ((kept <= 1)) || exit "$kept" # it broke off
  mv "$tables/$part.new" "$tables/$part.md"
done

field() { # FILE NAME: the first value under a name
  sed -n "s/^$2[[:space:]]*: //p" "$1" | head -n 1
}

for part in "${parts[@]}"; do
  if [[ ! -e $tables/$part.md ]]; then
    echo "bench: docs/performance.md stays: $part was never measured here" >&2
    exit 1
  fi
done
page=$(mktemp)
trap 'rm -f "$page"' EXIT
{
  cat <<TEXT
# Performance

Written by \`scripts/bench.sh\`. Each time stands beside the OpenCV calls that the export cannot do without, on
the same photograph in the same run: reading it, scaling it, detector, fitter, and, for masks and head
measures, what those need. Loading is left out where it is not named. One OpenCV thread on both sides.

| | |
|---|---|
| processor | $(field /proc/cpuinfo 'model name'), $(nproc) of them |
| memory | $(awk '/MemTotal/ { printf "%.0f GiB", $2 / 1048576 }' /proc/meminfo) |
| system | $(sed -n 's/^PRETTY_NAME="\(.*\)"$/\1/p' /etc/os-release), Linux $(uname -r) |
| compiler | $(c++ --version | head -n 1) |
| OpenCV | $(dpkg-query --show --showformat='${Version}' libopencv-dev) |

TEXT
  for part in "${parts[@]}"; do
    sed "0,/^$/s//\nMeasured on $(date --utc --reference="$tables/$part.md" '+%-d %B %Y').\n/" "$tables/$part.md"
  done
} >"$page"
sed -i -e :a -e '/^\n*$/{$d;N;ba' -e '}' "$page" # no empty lines at the end
cat "$page" >docs/performance.md
exit "$kept"
