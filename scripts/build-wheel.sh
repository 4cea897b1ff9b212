#!/usr/bin/env bash
# build-wheel.sh linux|windows|here [BUILD [OUTPUT]]: the wheel of the Python package, with the libraries, the
# embedded models and the notices in it.
#   linux    for any Linux with glibc 2.36 or newer, of the self-contained library
#   windows  for 64-bit Windows
#   here     for this machine alone, of a library that takes the distribution's OpenCV: for tests
# The libraries come from the build directory BUILD; without it, linux and windows build them first. The wheel
# goes to OUTPUT, build/wheels by default. It is put there only once it has been looked through.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
assets=$root/assets/models
cascades=/usr/share/opencv4/haarcascades
python=/usr/bin/python3 # Debian's, for which the packages of install-deps.sh are; PATH may name another one
largest=25              # MB

fail() {
  echo "build-wheel: $*" >&2
  exit 1
}

usage="usage: build-wheel.sh linux|windows|here [BUILD [OUTPUT]]"
platform=${1:?$usage}
built=${2:-}
output=${3:-$root/build/wheels}

case $platform in
  linux) tag=manylinux_2_36_x86_64 ;;
  windows) tag=win_amd64 ;;
  here) tag=linux_x86_64 ;;
  *) fail "$usage" ;;
esac

if [[ -z $built ]]; then
  "$root/scripts/install-deps.sh"
  case $platform in
    linux)
      built=$root/build/linux-static
      "$root/scripts/build-preset.sh" linux-static QOROCV460 QOROCV460Safe
      ;;
    windows)
      built=$root/build/windows
      "$root/scripts/build-preset.sh" windows QOROCV460 QOROCV460Safe
      ;;
    here) fail "say which build the libraries are of" ;;
  esac
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
package=$work/package/src/qorocv460

addNatives() {
  mkdir "$package/_native"
  if [[ $platform == windows ]]; then
    cp "$built"/{QOROCV460,QOROCV460Safe}.dll "$package/_native/"
    x86_64-w64-mingw32-strip "$package"/_native/*.dll
  else
    # Under the names that they ask each other for.
    cp --dereference "$built/libQOROCV460.so.0" "$built/libQOROCV460Safe.so" "$package/_native/"
    chmod u+w "$package"/_native/*
    strip "$package"/_native/*.so*
  fi
}

addModels() {
  local digest name source
  mkdir "$package/_models"
  cp "$assets/SHA256SUMS" "$root/scripts/models.txt" "$package/_models/"
  while read -r digest name; do
    for source in "$assets/$name.xz" "$assets/$name" "$cascades/$name"; do
      [[ ! -f $source ]] || break
    done
    [[ -f $source ]] || fail "there is no $cascades/$name; on Debian: apt-get install opencv-data"
    if [[ $source == *.xz ]]; then
      cp "$source" "$package/_models/"
    else
      xz --stdout "$source" >"$package/_models/$name.xz"
    fi
    [[ $(xz --decompress --stdout "$package/_models/$name.xz" | sha256sum) == "$digest "* ]] ||
      fail "$source does not hold the $name that $assets/SHA256SUMS lists"
  done <"$assets/SHA256SUMS"
}

# The OpenCV that was linked in has them with it, somewhere above its CMake package.
addNotices() {
  local place
  mkdir "$package/notices"
  cp "$root/docs/licences.md" "$package/notices/"
  if [[ $platform == here ]]; then # where nothing is linked in
    return
  fi
  place=$(sed -n 's/^OpenCV_DIR:[A-Z]*=//p' "$built/CMakeCache.txt")
  while [[ $place == /*/* && ! -d $place/share/notices ]]; do
    place=$(dirname "$place")
  done
  [[ -d $place/share/notices ]] || fail "the OpenCV of $built has no notices with it"
  cp "$place"/share/notices/*.txt "$package/notices/"
}

# What a manylinux tag promises: nothing but the C and C++ run-times, no newer than the tag says.
checkSelfContained() { # LIBRARY
  local others newest
  others=$(objdump --private-headers "$1" | awk '$1 == "NEEDED" { print $2 }' |
    grep -vE '^(libQOROCV460\.so\.0|libc\.so\.6|libm\.so\.6|libstdc\+\+\.so\.6|libgcc_s\.so\.1|ld-linux-x86-64\.so\.2)$' || true)
  [[ -z $others ]] || fail "${1##*/} also needs ${others//$'\n'/, }"
  newest=$(objdump --dynamic-syms "$1" | grep -oE 'GLIBC_2\.[0-9]+' | sort --version-sort | tail -n 1)
  [[ $(printf '%s\nGLIBC_2.36\n' "$newest" | sort --version-sort | tail -n 1) == GLIBC_2.36 ]] ||
    fail "${1##*/} needs $newest"
}

mkdir "$work/package"
cp -r "$root"/bindings/python/{src,pyproject.toml,setup.py,README.md} "$work/package/"
find "$work/package" -name __pycache__ -prune -exec rm -rf {} +
sed -n 's/^#define QOROCV460_VERSION "\(.*\)"$/\1/p' "$root/include/qorocv460/qorocv460.h" >"$work/package/VERSION"
addNatives
if [[ $platform == linux ]]; then
  for library in "$package"/_native/*; do
    checkSelfContained "$library"
  done
fi
addModels
addNotices

# The same content gives the same file: one time, that of the last commit.
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git -C "$root" log -1 --format=%ct 2>/dev/null || date +%s)}
export SOURCE_DATE_EPOCH QOROCV460_PLATFORM=$tag
(cd "$work/package" && "$python" -m build --wheel --no-isolation --outdir "$work/wheel") >"$work/log" 2>&1 ||
  fail "the wheel cannot be built: $(cat "$work/log")"
wheel=$(echo "$work"/wheel/qorocv460-*-py3-none-"$tag".whl)
bytes=$(stat --format=%s "$wheel")
((bytes <= largest * 1000000)) || fail "${wheel##*/} has $bytes bytes, more than $largest MB"
mkdir -p "$output"
# Renaming is one step, within one file system.
cp "$wheel" "$output/.${wheel##*/}.new"
mv "$output/.${wheel##*/}.new" "$output/${wheel##*/}"
echo "build-wheel: $output/${wheel##*/}, $(((bytes + 50000) / 100000 / 10)).$(((bytes + 50000) / 100000 % 10)) MB"
