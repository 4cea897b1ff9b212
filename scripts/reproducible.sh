#!/usr/bin/env bash
# reproducible.sh [--opencv] [linux|windows]...: makes the packages twice, each time from the last commit in a directory
# of another name, and compares them byte for byte, with the wheels. Without a system both. OpenCV is built once, where
# it is not yet; with --opencv once more, in another directory too, which takes 10 minutes for either system.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"
usage() {
  echo "reproducible: usage: reproducible.sh [--opencv] [linux|windows]..." >&2
  exit 2
}
opencvToo=false
if [[ ${1:-} == --opencv ]]; then
  opencvToo=true
  shift
fi
systems=("$@")
if ((${#systems[@]} == 0)); then
  systems=(linux windows)
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
export SOURCE_DATE_EPOCH
# Compiled twice, and not taken from what another directory compiled.
export CCACHE_DISABLE=1

failed=0
for system in "${systems[@]}"; do
  case $system in
    linux) built='QOROCV460-*-linux-x86_64.tar.xz wheels/*.whl' ;;
    windows) built='QOROCV460-*-win64.zip wheels/*.whl' ;;
    *) usage ;;
  esac
  digests=()
  for place in first elsewhere; do
    mkdir -p "$work/$place/$system"
    git archive HEAD | tar --extract --directory "$work/$place/$system"
    (
      if $opencvToo && [[ $place == elsewhere ]]; then
        export XDG_CACHE_HOME=$work/cache
      fi
      "$work/$place/$system/scripts/package-$system.sh"
      "$work/$place/$system/scripts/build-wheel.sh" "$system"
    )
    # shellcheck disable=SC2086 # patterns
    digest=$(cd "$work/$place/$system/build" && sha256sum $built)
    digests+=("$digest")
  done
  if [[ ${digests[0]} == "${digests[1]}" ]]; then
    printf 'reproducible: twice the same\n%s\n' "${digests[0]}"
  else
    printf 'reproducible: for %s these differ\n%s\n%s\n' "$system" "${digests[@]}" >&2
    failed=1
  fi
done
exit "$failed"
