#!/usr/bin/env bash
# package-windows.sh: build/QOROCV460-<version>-win64.zip, ready for a Windows developer. Builds first.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

scripts/build-windows.sh
prefix=$(scripts/build-opencv.sh windows)
version=$(sed -n 's/^#define QOROCV460_VERSION "\(.*\)"$/\1/p' include/qorocv460/qorocv460.h)
name=QOROCV460-$version-win64
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
package=$work/$name

built=build/windows
mkdir -p "$package"/{lib,include/qorocv460,docs,notices}
cp "$built/QOROCV460.dll" "$built/qorfaces.exe" scripts/models.txt "$package/"
cp "$built/QOROCV460.lib" "$built/libQOROCV460.dll.a" "$built/QOROCV460.def" "$package/lib/"
cp include/qorocv460/qorocv460.h "$package/include/qorocv460/"
cp scripts/windows/README.md scripts/windows/get-models.ps1 "$package/"
cp -r docs/{guides,reference,licences.md} "$package/docs/"
mkdir "$package"/docs/{examples,pictures}
cp docs/examples/*.{c,cpp,cs,py,pas} "$package/docs/examples/"
cp docs/pictures/*.{jpg,svg} "$package/docs/pictures/"
find "$package" -name '*.md' -exec scripts/check-links.sh {} +
cp "$prefix"/share/notices/*.txt "$package/notices/"
{
  echo "Linked into QOROCV460.dll, from Debian's source packages:"
  sed 's/\.dsc$//; s/_/ /; s/^/  /' "$prefix/share/notices/versions"
  echo "and zlib, the run-time of MinGW-w64 and that of GCC. The files here hold their licences."
} >"$package/notices/README.txt"

# The same content gives the same file: sorted names and one time, that of the last commit.
when=$(git log -1 --format=%ct 2>/dev/null || date +%s)
find "$package" -exec touch --no-dereference --date="@$when" {} +
rm -f "build/$name.zip"
(cd "$work" && find "$name" -type f | sort | TZ=UTC zip -X -q -@ "$root/build/$name.zip")
echo "package-windows: build/$name.zip, $(du -h "build/$name.zip" | cut -f1)"
