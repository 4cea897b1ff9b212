#!/usr/bin/env bash
# hardening_test.sh FILE...: libraries and programs lie at random addresses, run no data, and, on Linux, resolve
# every name before they start, in tables that are read-only from then on.
set -euo pipefail

failed=0

complain() {
  echo "$*"
  failed=1
}

has() { grep -qE -- "$1" <<<"$2"; } # PATTERN TEXT

checkElf() { # FILE
  local header segments dynamic
  header=$(readelf --file-header --wide "$1")
  segments=$(readelf --segments --wide "$1")
  dynamic=$(readelf --dynamic --wide "$1")
  has 'Type: +DYN' "$header" || complain "$1 has an address of its own"
  has '^ +GNU_RELRO ' "$segments" || complain "$1 leaves its tables writable"
  has '^ +GNU_STACK .* RW +0x' "$segments" || complain "$1 has a stack that runs"
  has '\(FLAGS_1\).* NOW' "$dynamic" || complain "$1 resolves names while it runs"
  if has 'TEXTREL' "$dynamic"; then
    complain "$1 has code that is written to"
  fi
}

checkPe() { # FILE
  local header flag
  header=$(x86_64-w64-mingw32-objdump --private-headers "$1")
  for flag in HIGH_ENTROPY_VA DYNAMIC_BASE NX_COMPAT; do
    has "^[[:space:]]+$flag\$" "$header" || complain "$1 lacks $flag"
  done
  if has 'relocations stripped' "$header"; then
    complain "$1 cannot be moved"
  fi
}

for file in "$@"; do
  case $(head -c 4 "$file" | od -A n -t x1) in
    ' 7f 45 4c 46') checkElf "$file" ;;
    ' 4d 5a '*) checkPe "$file" ;;
    *) complain "$file is no program" ;;
  esac
done
exit "$failed"
