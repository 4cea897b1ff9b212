#!/usr/bin/env bash
# exported_names_test.sh LIBRARY EXPORTS.TXT: the library exports the names in the list and not one more.
set -euo pipefail

exportedNames() {
  case $1 in
    *.dll)
      x86_64-w64-mingw32-objdump -p "$1" |
        sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/s/^\t\[ *[0-9]*\] //p'
      ;;
    *) nm --dynamic --defined-only --format=posix "$1" | cut -d' ' -f1 ;;
  esac
}

diff <(sort "$2") <(exportedNames "$1" | sort)
echo "exactly $(wc -l <"$2") names exported"
