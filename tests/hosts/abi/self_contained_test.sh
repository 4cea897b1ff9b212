#!/usr/bin/env bash
# self_contained_test.sh FILE...: libraries and programs need nothing but each other and the C and C++ run-time
# libraries, in versions that Debian 12 has, glibc 2.36 among them.
set -euo pipefail

newest=(GLIBC_2.36 GLIBCXX_3.4.30 CXXABI_1.3.13 GCC_12.0.0)
failed=0

complain() {
  echo "$*"
  failed=1
}

for library in "$@"; do
  while read -r needed; do
    case $needed in
      libQOROCV460.so.0 | libc.so.6 | libm.so.6 | libstdc++.so.6 | libgcc_s.so.1 | ld-linux-x86-64.so.2) ;;
      *) complain "$library needs $needed" ;;
    esac
  done < <(readelf --dynamic --wide "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]$/\1/p')
  mapfile -t versions < <(readelf --version-info --wide "$library" |
    grep -oE 'Name: (GLIBC|GLIBCXX|CXXABI|GCC)_[0-9.]+' | cut -d' ' -f2 | sort --unique)
  ((${#versions[@]} > 0)) || complain "$library asks for no version of anything"
  for version in "${versions[@]}"; do
    for limit in "${newest[@]}"; do
      if [[ ${version%%_*} == "${limit%%_*}" ]] &&
        [[ $(printf '%s\n' "$version" "$limit" | sort --version-sort | tail -n 1) != "$limit" ]]; then
        complain "$library needs $version"
      fi
    done
  done
done
exit "$failed"
