#!/usr/bin/env bash
# compare_builds_test.sh LINUX-BUILD SELF-CONTAINED-BUILD: every export gives a host the same on every photograph, to
# the bit, whether OpenCV is the distribution's or inside the library. Ends with 77, skipped, where there is no
# Linux build.
set -euo pipefail

program=$1/print_digests
static=$2
if [[ ! -x $program ]]; then
  echo "there is no build with the distribution's OpenCV to compare with"
  exit 77
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The program takes whichever of the two libraries the loader finds first.
loaded() { ldd "$program" | sed -n 's/^\tlibQOROCV460\.so\.0 => \(.*\) (.*/\1/p'; }

expectLoaded() { # DIRECTORY
  if [[ ! $(loaded) -ef $1/libQOROCV460.so ]]; then
    echo "the program takes $(loaded), and not the library of $1"
    exit 1
  fi
}

unset LD_LIBRARY_PATH
expectLoaded "$1"
"$program" >"$work/distribution"
export LD_LIBRARY_PATH=$static
expectLoaded "$static"
"$program" >"$work/self-contained"
grep -c ' found, ' "$work/distribution"
diff "$work/distribution" "$work/self-contained"
echo "the same to the bit"
