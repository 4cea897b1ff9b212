#!/usr/bin/env bash
# check-package.sh: makes the package for Windows, unpacks it into an empty directory and runs qorfaces.exe
# from there, under Wine, on a photograph with the made models. Wine's environment is the caller's.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
"$root/scripts/package-windows.sh"
zip=$(echo "$root"/build/QOROCV460-*-win64.zip)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
  echo "check-package: $*" >&2
  exit 1
}

unzip -q "$zip" -d "$work"
cd "$work"/QOROCV460-*-win64
for file in QOROCV460.dll qorfaces.exe README.md get-models.ps1 models.txt docs/guides/windows.md \
  include/qorocv460/qorocv460.h lib/QOROCV460.lib lib/libQOROCV460.dll.a lib/QOROCV460.def \
  docs/examples/Qorocv460.cs docs/examples/qorocv460.pas notices/README.txt notices/opencv.txt notices/zlib.txt; do
  [[ -s $file ]] || fail "$file is missing"
done
diff <(sort "$root/exports.txt") <(sed '1,/^EXPORTS/d; s/^ *//; s/\r$//' lib/QOROCV460.def | sort) ||
  fail "the .def names other functions"

wine "$root/build/windows/make_models.exe" "Z:$work/made" >/dev/null
wine ./qorfaces.exe --models "Z:$work/made" "Z:$work/made/made_face.png" >faces.txt 2>errors.txt ||
  fail "qorfaces.exe failed: $(cat errors.txt)"
grep -q '1 face' faces.txt || fail "qorfaces.exe found: $(cat faces.txt)"
echo "check-package: $(basename "$zip") works where it is unpacked"
