#!/usr/bin/env bash
# exports_list_test.sh EXPORTS.TXT EXPORTS_SAFE.TXT: the safe library has each of the nineteen under its prefix, and
# what they do not tell.
set -euo pipefail

diff <(sed 's/^/qorocv460_/' "$1" && printf 'qorocv460_%s\n' version lastError missingModels) "$2"
