#!/usr/bin/env bash
# bench.sh [OPTION...]: measures the library beside the bare OpenCV calls, prints the tables and writes them
# to docs/performance.md. Takes the options of build/linux/qorbench; the whole takes an hour on one thread,
# and wants a machine with nothing else to do. Ends with 1 where a bound is broken.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install-deps.sh
scripts/build-preset.sh linux

page=docs/performance.md
new=$(mktemp)
trap 'rm -f "$new"' EXIT

field() { # FILE NAME: the first value under a name
  sed -n "s/^$2[[:space:]]*: //p" "$1" | head -n 1
}

{
  cat <<TEXT
# Performance

Written by \`scripts/bench.sh\`. Each time stands beside the OpenCV calls that the export cannot do without, on
the same photograph in the same run: reading it, scaling it, detector, fitter, and, for masks and head
measures, what those need. Loading is left out where it is not named.

| | |
|---|---|
| date | $(date --utc '+%-d %B %Y') |
| processor | $(field /proc/cpuinfo 'model name'), $(nproc) of them |
| memory | $(awk '/MemTotal/ { printf "%.0f GiB", $2 / 1048576 }' /proc/meminfo) |
| system | $(sed -n 's/^PRETTY_NAME="\(.*\)"$/\1/p' /etc/os-release), Linux $(uname -r) |
| compiler | $(c++ --version | head -n 1) |
| OpenCV | $(dpkg-query --show --showformat='${Version}' libopencv-dev) |
| options | ${*:-none} |

TEXT
} >"$new"
kept=0
for part in slots head-measures calls; do
  build/linux/qorbench "$@" "$part" | sed -u '/^loading data from/d' | tee -a "$new" || kept=$?
done
sed -i -e :a -e '/^\n*$/{$d;N;ba' -e '}' "$new" # no empty lines at the end
cat "$new" >"$page"
exit "$kept"
