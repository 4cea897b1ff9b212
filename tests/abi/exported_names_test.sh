#!/usr/bin/env bash
# exported_names_test.sh LIBRARY EXPORTS.TXT: the library exports the names in the list and not one more.
set -euo pipefail

diff <(sort "$2") <(nm --dynamic --defined-only --format=posix "$1" | cut -d' ' -f1 | sort)
echo "exactly $(wc -l <"$2") names exported"
