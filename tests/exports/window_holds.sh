#!/usr/bin/env bash
# window_holds.sh WIDTH HEIGHT: whether a visible "Display window" has room for a picture of that size.
# OpenCV's window may carry tool bars, so it is at least that large.
set -euo pipefail

window=$(xdotool search --onlyvisible --name '^Display window$' | tail -n 1)
eval "$(xdotool getwindowgeometry --shell "$window")"
((WIDTH >= $1 && HEIGHT >= $2))
