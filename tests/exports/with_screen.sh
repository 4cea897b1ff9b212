#!/usr/bin/env bash
# with_screen.sh DIRECTORY COMMAND...: runs it before a screen whose pixels lie in DIRECTORY/Xvfb_screen0. The
# server takes a free number by itself; xvfb-run chooses one first, which another run may be choosing as well.
set -euo pipefail

directory=$1
shift
: >"$directory/display" # an earlier run's number would be taken for this one's
Xvfb -displayfd 3 -screen 0 1280x1024x24 -fbdir "$directory" 3>"$directory/display" >/dev/null 2>&1 &
screen=$!
trap 'kill "$screen"; wait "$screen" || true' EXIT
until read -r number <"$directory/display"; do # a whole line
  kill -0 "$screen"
  sleep 0.1
done
DISPLAY=:$number "$@"
