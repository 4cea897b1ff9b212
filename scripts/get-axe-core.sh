#!/usr/bin/env bash
# get-axe-core.sh DIRECTORY: puts axe.min.js of axe-core, which looks for what keeps people from using a page,
# into the directory. Ends with 77, and a line, where there is no npm or no registry to have it from.
set -euo pipefail

version=4.10.3
sha512=5e6edba515e70d25f6604d9815f064d859c5d1ea7ab661bbc4f87c88779ef0c21cae0abbeb636471ef39e9d62d2582e4b88a1866f19f4ecfcf6d986275e4dc12

skip() {
  echo "get-axe-core: skipped: $*"
  exit 77
}

if (($# != 1)); then
  echo "get-axe-core: usage: get-axe-core.sh DIRECTORY" >&2
  exit 2
fi
mkdir -p "$1"
cd "$1"
if [[ -f axe.min.js && -f version && $(<version) == "$version" ]]; then
  exit 0
fi

command -v npm >/dev/null || skip "there is no npm"
npm pack --silent "axe-core@$version" >/dev/null 2>npm.log || skip "npm has no axe-core $version; see $PWD/npm.log"
package=axe-core-$version.tgz
if ! sha512sum --check --status <<<"$sha512  $package"; then
  echo "get-axe-core: $package is not the one that is wanted" >&2
  rm -f "$package"
  exit 1
fi
tar --extract --gzip --file "$package" --strip-components 1 package/axe.min.js
rm -f "$package" npm.log
echo "$version" >version
