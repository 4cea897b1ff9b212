#!/usr/bin/env bash
# package-windows.sh: build/QOROCV460-<version>-win64.zip, ready for a Windows developer. Builds first.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"
if (($# > 0)); then
  echo "package-windows: usage: package-windows.sh" >&2
  exit 2
fi
# shellcheck source=scripts/package-content.sh
. scripts/package-content.sh

scripts/install-deps.sh
setTime
scripts/build-preset.sh windows qorfaces QOROCV460{,Safe,_import_library,Safe_import_library}
prefix=$(scripts/build-opencv.sh windows)
name=QOROCV460-$(productVersion)-win64
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
package=$work/$name

built=build/windows
mkdir -p "$package"/{lib,include/qorocv460}
cp "$built"/{QOROCV460,QOROCV460Safe}.dll "$built/qorfaces.exe" scripts/{models.txt,windows/get-models.ps1} "$package/"
for library in QOROCV460 QOROCV460Safe; do
  cp "$built"/{"$library.lib","lib$library.dll.a","$library.def"} "$package/lib/"
done
cp include/qorocv460/*.h "$package/include/qorocv460/"
addPages "$package" scripts/windows/README.md
addModels "$package/models"
addNotices "$package" windows "$prefix"
evenOut "$package"
rm -f "build/$name.zip"
(cd "$work" && find "$name" -type f | LC_ALL=C sort | TZ=UTC zip -X -q -@ "$root/build/$name.zip")
echo "package-windows: build/$name.zip, $(du -h "build/$name.zip" | cut -f1)"
