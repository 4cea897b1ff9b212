#!/usr/bin/env bash
# bench-pages.sh TABLES/: writes the two pages about time from what bench.sh measured: every table for those
# who work on the library, and for its users what follows from the tables, with a picture.
# shellcheck disable=SC2016 # the backticks are those of Markdown
set -euo pipefail

tables=$(cd "$1" && pwd)
cd "$(dirname "${BASH_SOURCE[0]}")/.."

parts=(engines slots head-measures calls)
for part in "${parts[@]}"; do
  if [[ ! -e $tables/$part.md ]]; then
    echo "bench-pages: the pages stay: $part was never measured here" >&2
    exit 1
  fi
done

measuredOn() { # PART
  date --utc --reference="$tables/$1.md" '+%-d %B %Y'
}

writeMeasurements() {
  local part
  cat <<'TEXT'
# Measurements

For those who change the library: every time and size that `scripts/bench.sh` measures, which also writes this
page. For those who use it: [performance](../reference/performance.md).

Each time stands beside the OpenCV calls that the export cannot do without, on the same photograph in the same
run: reading it, scaling it, detector, fitter, and, for masks and head measures, what those need. Loading is
left out where it is not named. One OpenCV thread on both sides.

TEXT
  cat "$tables/machine.md"
  for part in "${parts[@]}"; do
    echo
    # Without the empty lines at the end.
    sed "0,/^$/s//\nMeasured on $(measuredOn "$part").\n/" "$tables/$part.md" |
      sed -e :a -e '/^\n*$/{$d;N;ba' -e '}'
  done
}

# The rows of calls.md as PHOTO SIDE EXPORT OURS BARE RATIO.
calls() {
  sed -n 's/^| \([^ ]*\.jpg\) | \([0-9]*\) | `\([A-Za-z0-9_]*\)` | \([0-9.]*\) | \([0-9.]*\) | \([0-9.]*\) |$/\1 \2 \3 \4 \5 \6/p' \
    "$tables/calls.md"
}
if [[ -z $(calls) ]]; then
  echo "bench-pages: the pages stay: the calls were measured without the photographs" >&2
  exit 1
fi

# The rows of engines.md as PHOTO SIDE OPENCV OURS TIMES DLIB.
cascades() {
  sed -n 's/^| \([^ ]*\.jpg\) | \([0-9]*\) | \([0-9.]*\) | \([0-9.]*\) | \([0-9.]*\) | [0-9.]* | [0-9.]* | \([0-9.]*\) | .*$/\1 \2 \3 \4 \5 \6/p' \
    "$tables/engines.md"
}

cascadeRows() {
  local photo side opencv ours times dlib
  echo '| photograph | longer side | OpenCV ms | dlib ms | QOROCV460 ms | times as fast as OpenCV |'
  echo '|---|--:|--:|--:|--:|--:|'
  cascades | while read -r photo side opencv ours times dlib; do
    ((side > 0)) || side='its own'
    echo "| $photo | $side | $opencv | $dlib | $ours | $times |"
  done
}

worstRatios() {
  local photo side name ours bare ratio
  echo '| photograph | maxSide | function | ms | OpenCV alone, ms | ratio |'
  echo '|---|--:|---|--:|--:|--:|'
  calls | sort --key=6,6nr --key=1,3 | head -n 5 | while read -r photo side name ours bare ratio; do
    echo "| $photo | $side | \`$name\` | $ours | $bare | $ratio |"
  done
}

slowestCall() {
  local photo side name ours bare ratio
  read -r photo side name ours bare ratio < <(calls | sort --key=4,4nr)
  echo "The slowest call of all: \`$name\` on $photo at \`maxSide\` $side, $ours ms beside $bare ms ($ratio)."
}

perHour() { # PHOTO SIDE EXPORT: with thousands apart
  calls | awk -v photo="$1" -v side="$2" -v name="$3" '
    $1 == photo && $2 == side && $3 == name {
      hundreds = int(3600000 / $4 / 100 + 0.5)
      if (hundreds < 10) { printf "%d", hundreds * 100 }
      else if (hundreds < 10000) { printf "%d,%d00", hundreds / 10, hundreds % 10 }
      else { printf "%d,%03d,%d00", hundreds / 10000, int(hundreds / 10) % 1000, hundreds % 10 }
    }'
}

hourlyRows() {
  local name what photo side
  echo '| function | what it gives | maxSide | small | large | crowd |'
  echo '|---|---|--:|--:|--:|--:|'
  while read -r name what; do
    for side in 480 1000 0; do
      printf '| `%s` | %s | %s |' "$name" "$what" "$side"
      for photo in painting.jpg quartet.jpg crowd.jpg; do
        printf ' %s |' "$(perHour "$photo" "$side" "$name")"
      done
      echo
    done
  done <<'EXPORTS'
findQORFacesDUNInTread02 boxes, by the network
findQORFacesDUNInTread01 boxes and landmarks, by the network
findQORFacesDUNInTreadWithMask02 those, head centres and person masks
findQORFacesInTread01 boxes and landmarks, by the cascade
EXPORTS
}

firstCalls() {
  sed -n 's/^| `\([A-Za-z0-9_]*\)` | \([0-9.]*\) | [0-9.]* | [0-9.]* | \([0-9.]*\) | \([0-9.]*\) |$/| `\1` | \2 | \3 | \4 |/p' \
    "$tables/slots.md"
}

threads() {
  sed -n 's/^| `\([A-Za-z0-9_]*\)` | \([0-9]*\) | \([0-9.]*\) | [0-9.]* | [0-9.]* |$/| `\1` | \2 | \3 |/p' \
    "$tables/slots.md"
}

writePerformance() {
  cat <<TEXT
# Performance

For those who plan how many machines they need. Written by \`scripts/bench.sh\` from what it measured on
$(measuredOn calls); \`docs/contributing/measurements.md\` in the sources has every row.

## Finding faces by the cascade

![Bars: OpenCV's cascade, dlib's HOG detector and the library on three photographs](../pictures/performance.svg)

Detection alone on the grey picture, models loaded, one thread, a processor with AVX2. OpenCV's cascade finds the
same boxes to the last bit; dlib's detector is what many programs use instead, and finds others.

$(cascadeRows)

A fit of 68 landmarks takes a fraction of a millisecond for each face, and the landmark model, which all slots
share, is read in a twentieth of a second: the rows stand with all others in the sources.

## The worst rows

The library's own work beside the OpenCV calls that it cannot do without: of all functions, photographs and
sizes, these are furthest above.

$(worstRatios)

$(slowestCall)

## Photographs an hour, on one core

Models loaded, one OpenCV thread. Small: 184 x 274, one face. Large: 3648 x 2406, four faces. Crowd: 2048 x 1150.
Decoding is part of it. \`maxSide\` 0 is the photograph's own size.

$(hourlyRows)

- The network looks at 300 x 300 pixels whatever \`maxSide\` is, so that its time hardly changes. Faces that are
  small in the photograph take [tiles](../guides/choose-a-function.md).
- The cascade's time grows with the pixels that it looks at: give it a \`maxSide\`.

## The first call

A slot loads what it lacks in its first call, and keeps it.

| function | first call, ms | MiB for each slot | MiB more in a call |
|---|--:|--:|--:|
$(firstCalls)

## Threads

Photographs a second of so many threads, each with [its own slot](../guides/threads-and-slots.md), on the
cores of this machine: couple.jpg at \`maxSide\` 480.

| function | threads | photographs a second |
|---|--:|--:|
$(threads)

## The machine

$(cat "$tables/machine.md")
TEXT
}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
writeMeasurements >"$work/measurements.md"
writePerformance >"$work/performance.md"
/usr/bin/python3 scripts/bench-picture.py "$tables/engines.md" "$work/performance.svg"
cat "$work/measurements.md" >docs/contributing/measurements.md
cat "$work/performance.md" >docs/reference/performance.md
cat "$work/performance.svg" >docs/pictures/performance.svg
