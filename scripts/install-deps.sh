#!/usr/bin/env bash
# install-deps.sh [build|all|proof|bench]: installs the Debian packages that are missing, and only those.
#   build  what building the library and its command-line host takes
#   all    that and what tests, Windows cross-build and checks take (the default)
#   proof  that and what coverage, memory check and fuzzers take
#   bench  all and what the pictures of the benchmarks take
set -euo pipefail

complain() { echo "install-deps: $*" >&2; }

# The configuration looks for the test library and Python too, whatever is built afterwards.
build=(build-essential cmake make ccache git curl ca-certificates xz-utils python3
  libopencv-dev libopencv-contrib-dev opencv-data
  libjpeg62-turbo-dev zlib1g-dev libcli11-dev nlohmann-json3-dev libboost1.81-dev libgtest-dev)
checks=(googletest g++-mingw-w64-x86-64-posix libz-mingw-w64-dev wine wine64 locales-all
  dpkg-dev protobuf-compiler nasm llvm zip unzip pkgconf mono-mcs mono-runtime fp-compiler
  libdlib-dev xvfb xdotool clang-format clang-tidy shellcheck
  python3-build python3-wheel python3-setuptools python3-venv python3-numpy python3-pytest python3-pandas
  python3-tqdm python3-dask python3-distributed mypy
  chromium chromium-driver python3-selenium python3-jsonschema parallel abigail-tools strace)

proof=(gcovr valgrind clang)
bench=(python3-matplotlib)

case ${1:-all} in
  build) wanted=("${build[@]}") ;;
  all) wanted=("${build[@]}" "${checks[@]}") ;;
  proof) wanted=("${build[@]}" "${checks[@]}" "${proof[@]}") ;;
  bench) wanted=("${build[@]}" "${checks[@]}" "${bench[@]}") ;;
  *)
    complain "usage: install-deps.sh [build|all|proof|bench]"
    exit 2
    ;;
esac

if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
  complain "this is no Debian system; install the equivalents of: ${wanted[*]}"
  exit 1
fi

isInstalled() {
  [[ $(dpkg-query --show --showformat='${db:Status-Status}' "$1" 2>/dev/null) == installed ]]
}

missing=()
for package in "${wanted[@]}"; do
  isInstalled "$package" || missing+=("$package")
done
if ((${#missing[@]} == 0)); then
  exit 0
fi

asRoot=()
if ((EUID != 0)); then
  if ! command -v sudo >/dev/null; then
    complain "missing: ${missing[*]}"
    complain "installing them takes root or sudo: apt-get install --no-install-recommends ${missing[*]}"
    exit 1
  fi
  asRoot=(sudo)
fi

aptGet() { "${asRoot[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq "$@" >/dev/null; }

echo "install-deps: installing ${missing[*]}"
if ! aptGet update || ! aptGet install --yes --no-install-recommends "${missing[@]}"; then
  complain "could not install ${missing[*]}"
  exit 1
fi
