#!/usr/bin/env bash
# lint.sh: format, static analysis, types and shell checks over everything that is ours. Quiet where all is well.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

complain() { echo "lint: $*" >&2; }

ownFiles() { # PATTERN...: files of the checkout, without what was built or fetched
  local pattern names=()
  for pattern in "$@"; do
    names+=(-o -name "$pattern")
  done
  find . \( -path ./build -o -path ./models -o -path ./.git \) -prune -o \
    -type f \( "${names[@]:1}" \) -print0 | sort --zero-terminated
}

# The compiler's own list of what is built, each source by itself: those for another system cannot be analysed here.
builtSources() {
  sed -n 's/^ *"file": "\(.*\)",\{0,1\}$/\1/p' build/lint/compile_commands.json |
    awk -v root="$root" 'index($0, root "/src/") == 1 || index($0, root "/client/") == 1 || index($0, root "/tools/") == 1' |
    sort --unique | tr '\n' '\0'
}

checkFormat() { ownFiles '*.c' '*.cpp' '*.h' | xargs -0 clang-format --dry-run -Werror; }

configure() {
  local log=build/lint-configure.log
  mkdir -p build
  if ! cmake --preset linux -B build/lint -D CMAKE_UNITY_BUILD=OFF >"$log" 2>&1; then
    cat "$log" >&2
    return 1
  fi
}

# Left out: the count of warnings, which are those of system headers, too.
checkCode() {
  builtSources | xargs -0 -n 1 -P "$(nproc)" clang-tidy --quiet -p build/lint 2>&1 |
    sed -E '/^[0-9]+ warnings? generated\.$/d'
}

checkPython() {
  local package=bindings/python
  mypy --no-error-summary --cache-dir build/mypy --config-file "$package/pyproject.toml" \
    "$package"/{src,tests,measure,setup.py} docs/examples/first_program.py
}

checkScripts() { { ownFiles '*.sh' && printf '.ci/run\0'; } | xargs -0 shellcheck; }

"$root/scripts/install-deps.sh"
configure
failed=0
found() {
  complain "$1"
  failed=1
}
checkFormat || found "clang-format would change the files above"
checkCode || found "clang-tidy found the above"
checkPython || found "mypy found the above"
checkScripts || found "shellcheck found the above"
exit "$failed"
