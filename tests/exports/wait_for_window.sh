#!/usr/bin/env bash
# wait_for_window.sh WIDTH HEIGHT: waits until a visible "Display window" holds a picture of that size.
# OpenCV's window may carry tool bars, so it is at least that large. Ends with 1 after 20 seconds.
set -euo pipefail

for _ in $(seq 200); do
  window=$(xdotool search --onlyvisible --name '^Display window$' | tail -n 1 || true)
  if [[ -n $window ]]; then
    eval "$(xdotool getwindowgeometry --shell "$window")"
    if ((WIDTH >= $1 && HEIGHT >= $2)); then
      exit 0
    fi
  fi
  sleep 0.1
done
exit 1
