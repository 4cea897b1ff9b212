#!/usr/bin/env bash
# installed_package_test.sh BUILD_DIRECTORY VERSION MAKE_MODELS RESOLVE_NAMES: what `cmake --install` puts
# into a fresh prefix serves hosts from there, and from wherever the prefix is moved: one that is built with
# CMake, one with pkg-config, one that loads the library by its name, and qorfaces.
set -euo pipefail

build=$1
version=$2
make_models=$3
resolve_names=$4
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
exports=$(cd "$here/../../.." && pwd)/exports.txt
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# Everything is to be found by the prefix alone.
unset LD_LIBRARY_PATH CMAKE_PREFIX_PATH PKG_CONFIG_PATH

fail() {
  echo "$*"
  exit 1
}

quietly() { # COMMAND...: its output only where it fails
  "$@" >"$work/log" 2>&1 || fail "$* failed: $(cat "$work/log")"
}

expectFace() { # HOST: finds the face of the made picture, with the version that was installed
  local printed
  printed=$("$1" "$work/made/" "$work/made/made_face.png" 2>&1) || fail "$1 failed: $printed"
  # OpenCV prints a line of its own before.
  [[ $printed == *"QOROCV460 $version found 1" ]] || fail "$1 printed: $printed"
}

servesCMakeHost() { # PREFIX
  local host
  host=$(mktemp -d -p "$work")
  quietly cmake -S "$here/cmake_host" -B "$host" -D CMAKE_PREFIX_PATH="$1" -D WANTED_VERSION="$version"
  quietly cmake --build "$host"
  expectFace "$host/host"
  expectFace "$host/client_host"
  expectFace "$host/safe_host"
}

servesPkgConfigHost() { # PREFIX HOST.C PACKAGE LIBRARY
  local host=$work/pkg_config_host flags libraries
  PKG_CONFIG_LIBDIR=$(dirname "$(find "$1" -name qorocv460.pc)")
  export PKG_CONFIG_LIBDIR
  [[ $(pkg-config --modversion "$3") == "$version" ]] || fail "pkg-config gives another version"
  read -ra flags < <(pkg-config --cflags --libs "$3")
  libraries=$(pkg-config --variable=libdir "$3")
  quietly "$CC" "$here/$2" -o "$host" "${flags[@]}" "-Wl,-rpath,$libraries"
  expectFace "$host"
  # By this name the loader looks for the library, and a later release of the same interface has it too.
  objdump --private-headers "$host" | grep -q "NEEDED *lib$4\.so\.0\$" || fail "the host needs another name"
}

servesHostThatLoadsIt() { # PREFIX
  quietly "$resolve_names" "$(find "$1" -name libQOROCV460.so)" "$exports"
}

startsQorfaces() { # PREFIX
  local printed
  printed=$("$1/bin/qorfaces" --models "$work/made" "$work/made/made_face.png" 2>&1) ||
    fail "qorfaces failed: $printed"
  [[ $printed == *"1 face"* ]] || fail "qorfaces printed: $printed"
}

servesFrom() { # PREFIX
  servesCMakeHost "$1"
  servesPkgConfigHost "$1" host.c qorocv460 QOROCV460
  servesPkgConfigHost "$1" safe_host.c qorocv460-safe QOROCV460Safe
  servesHostThatLoadsIt "$1"
  startsQorfaces "$1"
  echo "served from $1"
}

quietly "$make_models" "$work/made"
quietly cmake --install "$build" --prefix "$work/prefix"
servesFrom "$work/prefix"
mv "$work/prefix" "$work/elsewhere"
servesFrom "$work/elsewhere"
