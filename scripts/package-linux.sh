#!/usr/bin/env bash
# package-linux.sh: build/QOROCV460-<version>-linux-x86_64.tar.xz, the library with OpenCV inside, ready for a
# developer on Linux. Builds first.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"
if (($# > 0)); then
  echo "package-linux: usage: package-linux.sh" >&2
  exit 2
fi
# shellcheck source=scripts/package-content.sh
. scripts/package-content.sh

scripts/install-deps.sh
setTime
scripts/build-preset.sh linux-static QOROCV460 QOROCV460Safe qorfaces
prefix=$(scripts/build-opencv.sh linux)
name=QOROCV460-$(productVersion)-linux-x86_64
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
package=$work/$name

cmake --install build/linux-static --prefix "$package" --strip >/dev/null
addPages "$package" scripts/linux/README.md
addModels "$package/models"
addNotices "$package" linux "$prefix"
evenOut "$package"
tar --create --directory "$work" --sort=name --owner=0 --group=0 --numeric-owner --format=posix \
  --pax-option=exthdr.name=%d/PaxHeaders/%f,delete=atime,delete=ctime "$name" |
  xz --threads=1 --stdout >"$work/$name.tar.xz"
mv "$work/$name.tar.xz" "build/$name.tar.xz"
echo "package-linux: build/$name.tar.xz, $(du -h "build/$name.tar.xz" | cut -f1)"
