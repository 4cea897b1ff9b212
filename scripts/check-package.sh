#!/usr/bin/env bash
# check-package.sh linux|windows: makes the package, unpacks it into an empty directory and runs qorfaces from
# there on the astronaut's photograph, with the models that it brings. Wine's environment is the caller's.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
system=${1:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
  echo "check-package: $*" >&2
  exit 1
}

case $system in
  linux)
    "$root/scripts/package-linux.sh"
    archive=$(echo "$root"/build/QOROCV460-*-linux-x86_64.tar.xz)
    tar --extract --file "$archive" --directory "$work"
    own=(lib/libQOROCV460{,Safe}.so lib/pkgconfig/qorocv460{,-safe}.pc lib/cmake/QOROCV460/QOROCV460Config.cmake
      bin/qorfaces)
    program=bin/qorfaces
    runner=()
    photo=$root/assets/photos/astronaut.jpg
    ;;
  windows)
    "$root/scripts/package-windows.sh"
    archive=$(echo "$root"/build/QOROCV460-*-win64.zip)
    unzip -q "$archive" -d "$work"
    own=(QOROCV460{,Safe}.dll qorfaces.exe get-models.ps1 models.txt
      lib/QOROCV460{,Safe}.{lib,def} lib/libQOROCV460{,Safe}.dll.a)
    program=qorfaces.exe
    runner=(wine)
    photo=Z:$root/assets/photos/astronaut.jpg
    ;;
  *) fail "usage: check-package.sh linux|windows" ;;
esac

cd "$work"/QOROCV460-*
for file in "${own[@]}" README.md include/qorocv460/{qorocv460,safe}.h docs/guides/{linux,windows}.md \
  docs/examples/Qorocv460.cs docs/examples/qorocv460.pas \
  bindings/dotnet/Qorocv460.cs bindings/pascal/qorocv460safe.pas bindings/python/README.md \
  models/model0{1.prototxt,2.caffemodel,3.pbtxt,4.pb,5.yaml,6.xml,7.onnx} \
  notices/{README,opencv,zlib}.txt notices/sbom.spdx.json; do
  [[ -s $file ]] || fail "$file is missing"
done
if [[ $system == windows ]]; then
  for definition in QOROCV460.def:exports.txt QOROCV460Safe.def:exports_safe.txt; do
    diff <(sort "$root/${definition#*:}") <(sed '1,/^EXPORTS/d; s/^ *//; s/\r$//' "lib/${definition%:*}" | sort) ||
      fail "${definition%:*} names other functions"
  done
fi
# But for OpenCV's account of the flags that it was built with, which the libraries carry.
ownBuild='^[^:]*: +(C|C[+][+]) flags [(](Release|Debug)[)]: '
named=$(find . -type f -exec grep -aHF "$root" {} + | grep -avE "$ownBuild" | cut -c1-200 || true)
[[ -z $named ]] || fail "these name the directory that they were built in: $named"

findsTheFace() { # COMMAND...
  "$@" "$photo" >"$work/faces.txt" 2>"$work/errors.txt" || fail "$* failed: $(cat "$work/errors.txt")"
  grep -q '1 face' "$work/faces.txt" || fail "$* found: $(cat "$work/faces.txt")"
}

unset LD_LIBRARY_PATH
unpacked=$PWD
findsTheFace "${runner[@]}" "./$program" --crop-mask person.png
cd "$work" # where there are no models
findsTheFace "${runner[@]}" "$unpacked/$program" --detector haar
echo "check-package: $(basename "$archive") works where it is unpacked"
