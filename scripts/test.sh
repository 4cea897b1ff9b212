#!/usr/bin/env bash
# test.sh [PRESET...]: builds and runs every test of the given presets: linux, linux-static, linux-asan,
# linux-tsan, windows. Without one, those of linux and then those of windows. The total comes last.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

complain() { echo "test: $*" >&2; }

presets=("$@")
if ((${#presets[@]} == 0)); then
  presets=(linux windows)
fi
for preset in "${presets[@]}"; do
  case $preset in
    linux | linux-static | linux-asan | linux-tsan | windows) ;;
    *)
      complain "there is no preset $preset; usage: test.sh [linux|linux-static|linux-asan|linux-tsan|windows]..."
      exit 2
      ;;
  esac
done

stopWine() {
  wineserver -k || true
  wineserver -w || true
  kill "$screen" 2>/dev/null || true
}

# Wine keeps its drives and registry in a prefix; ours lies in the build directory, away from the user's.
useWine() {
  export WINEPREFIX=$root/build/windows/wine
  export WINEDEBUG=-all
  # No .NET, no HTML, no entries in the desktop's menus; a test that crashes just ends.
  export WINEDLLOVERRIDES='mscoree,mshtml,winemenubuilder.exe,winedbg.exe='
  mkdir -p "$WINEPREFIX"
  # A screen for the windows that tests open.
  local display=build/windows/display number
  : >"$display" # an earlier run's number would be taken for this one's
  Xvfb -displayfd 3 3>"$display" >/dev/null 2>&1 &
  screen=$!
  trap stopWine EXIT
  until read -r number <"$display"; do # a whole line
    kill -0 "$screen" || return 1
    sleep 0.1
  done
  export DISPLAY=:$number
  # The server and Wine's services stay until the tests are over, which then start in a fraction of the
  # time. Left to the first test program, they would keep its output open, and its reader waiting.
  wineserver -p >/dev/null 2>&1
  wineboot --update </dev/null >/dev/null 2>&1
  # So does the desktop, as long as there is a program on it. This one waits for input that never comes.
  rm -f build/windows/silence
  mkfifo build/windows/silence
  wine cmd.exe <>build/windows/silence >/dev/null 2>&1 &
}

testPreset() ( # PRESET; a subshell keeps each preset's environment to itself
  set -e
  place=()
  if [[ $1 == windows ]]; then
    useWine
    # Wine's heap begins at a random address, and where it covers 0x7ffe0000, the page that Windows shares
    # with every program, Wine ends with code 1 and no word: one start in 8,000. Without the randomness the
    # heap lies well below. Containers may forbid this; the tests run there all the same.
    if setarch --addr-no-randomize true 2>/dev/null; then
      place=(setarch --addr-no-randomize)
    fi
    "${place[@]}" "$root/scripts/build-windows.sh" # it starts the tests to learn their names
  else
    "$root/scripts/build-preset.sh" "$1"
  fi
  # One more than there are processors, as some tests wait for what they have started.
  "${place[@]}" ctest --preset "$1" --parallel $(($(nproc) + 1)) 2>&1 | tee "build/$1-tests.log"
)

summaryPattern='^[0-9]+% tests passed, ([0-9]+) tests failed out of ([0-9]+)$'

"$root/scripts/install-deps.sh"
good=true
failed=0
total=0
summaries=()
failures=()
for preset in "${presets[@]}"; do
  rm -f "build/$preset-tests.log"
  # A test that fails is counted below, and the other presets still have their turn.
  set +e
  testPreset "$preset"
  code=$?
  set -e
  ((code == 0)) || good=false
  summary=$(grep -E "$summaryPattern" "build/$preset-tests.log" 2>/dev/null || true)
  if ! [[ $summary =~ $summaryPattern ]]; then
    complain "the tests of $preset did not run"
    exit 1
  fi
  failed=$((failed + BASH_REMATCH[1]))
  total=$((total + BASH_REMATCH[2]))
  summaries+=("$preset: $summary")
  while read -r line; do
    failures+=("$preset: $line")
  done < <(sed -n '/^The following tests FAILED:$/,/^$/ { s/^[[:blank:]]\+\([0-9].*\)/\1/p }' "build/$preset-tests.log")
done

echo
printf '%s\n' "${summaries[@]}" "${failures[@]}"
# As ctest rounds it: never 100 where one failed.
percent=$(((100 * (total - failed) + total / 2) / total))
if ((failed > 0 && percent == 100)); then
  percent=99
fi
echo "$percent% tests passed, $failed tests failed out of $total"
$good
