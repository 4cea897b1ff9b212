#!/usr/bin/env bash
# docs-pictures.sh: makes all that docs/pictures/ shows again, from the build and the models of models/: the
# pictures, and what qorfaces prints about them. Run it when something that they show has changed, and look
# at them.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

photo=assets/photos/astronaut.jpg
pictures=docs/pictures
built=build/linux
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

scripts/install-deps.sh
scripts/build-preset.sh linux qorfaces draw_pictures example_crop_portrait
scripts/get-models.sh

"$built/qorfaces" --head-centre --annotate "$work/faces.png" \
  --crop-mask "$work/close-up.png" "$photo" >"$pictures/faces.txt"
"$built/qorfaces" --mask "$work/person.png" "$photo" >/dev/null
"$built/draw_pictures" models/ "$photo" "$work/faces.png" "$work/person.png" \
  "$work/close-up.png" "$pictures/"
"$built/example_crop_portrait" models/ "$photo" "$pictures/portrait.jpg" \
  >"$pictures/portrait.txt"

# The page of a folder with all of these, and a file that is no photograph.
mkdir "$work/Photographs"
cp "$photo" "$pictures"/{front,portrait}.jpg "$work/Photographs/"
echo "no photograph" >"$work/Photographs/notes.jpg"
"$built/qorfaces" scan "$work/Photographs" --out "$work/Run" --models models --crop 4:5 --report --quiet || (($? == 1))
chromium --headless=new --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking \
  --disable-component-update --disable-sync --hide-scrollbars --user-data-dir="$work/browser" \
  --window-size=1000,540 --virtual-time-budget=5000 --screenshot="$pictures/report.png" \
  "file://$work/Run/report/index.html" >/dev/null 2>&1

for picture in "$pictures"/*.jpg; do
  size=$(stat --format=%s "$picture")
  if ((size >= 150000)); then
    echo "docs-pictures: $picture has $size bytes, too many for a page" >&2
    exit 1
  fi
done
