#!/usr/bin/env bash
# windows_file_test.sh QOROCV460.DLL BUILD-DIRECTORY VERSION: what can be read off the product itself.
set -euo pipefail

dll=$1
build=$2
version=$3
objdump=x86_64-w64-mingw32-objdump
objcopy=x86_64-w64-mingw32-objcopy

fail() {
  echo "$*"
  exit 1
}

"$objdump" -f "$dll" | grep -q 'file format pei-x86-64' || fail "not for x86-64"

# Windows has these; whatever else the library needs must be inside it.
system='ADVAPI32|comdlg32|GDI32|KERNEL32|msvcrt|USER32'
foreign=$("$objdump" -p "$dll" | sed -n 's/^\tDLL Name: //p' | grep -viE "^($system)\.dll$" || true)
[[ -z $foreign ]] || fail "needs $foreign"

# The version resource, in UTF-16.
resource=$(mktemp)
trap 'rm -f "$resource" "$resource.dll"' EXIT
"$objcopy" --dump-section .rsrc="$resource" "$dll" "$resource.dll"
for text in VS_VERSION_INFO QOROCV460 "$version"; do
  iconv -f UTF-16LE -t UTF-8 -c "$resource" | grep -caF "$text" >/dev/null ||
    fail "the version resource lacks $text"
done

# The stack is aligned to 16 bytes: an aligned move of a longer vector to it would fault.
aligned=$("$objdump" -d --no-show-raw-insn "$dll" |
  grep -E 'vmov(aps|apd|dqa|dqa32|dqa64) .*%[yz]mm' | grep -E '\((%rsp|%rbp)' || true)
[[ -z $aligned ]] || fail "aligned moves to the stack: $(head -n 3 <<<"$aligned")"

# The import library for Microsoft's linker names the same exports. Each export has a second name
# there, for the pointer to it.
functions() { sed -n 's/.* T //p' | grep -v '^__imp_' | sort; }
[[ -s $build/QOROCV460.lib && -s $build/libQOROCV460.dll.a ]] || fail "an import library is missing"
diff <(x86_64-w64-mingw32-nm "$build/libQOROCV460.dll.a" 2>/dev/null | functions) \
  <(llvm-nm "$build/QOROCV460.lib" 2>/dev/null | functions) ||
  fail "the import libraries differ"
echo "$dll is self-contained"
