#!/usr/bin/env bash
# unchanged_test.sh LIBRARY HEADERS RECORDED: hosts that were built against the recorded version of the nineteen
# functions work with this library: no function is gone, and no parameter has become another.
#
# A version is recorded from its library, whose exports.cpp has been compiled with -g, by
#   abidw --no-corpus-path --no-comp-dir-path --no-show-locs --exported-interfaces-only --headers-dir include
set -euo pipefail

abidiff --fail-no-debug-info --ignore-soname --no-architecture --exported-interfaces-only \
  --headers-dir2 "$2" "$3" "$1"
