#!/usr/bin/env bash
# demo.sh [PHOTO...]: builds the command-line host and looks for faces in photographs: a table on standard
# output, and a copy of each with the faces drawn in build/demo/.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
out=$root/build/linux
demo=$root/build/demo
models=$root/models

complain() { echo "demo: $*" >&2; }

checkArguments() { # PHOTO...
  local photo
  for photo in "$@"; do
    if [[ $photo == -* ]]; then
      complain "usage: demo.sh [PHOTO...]"
      exit 2
    fi
    if [[ ! -f $photo || ! -r $photo ]]; then
      complain "there is no photograph $photo"
      exit 2
    fi
  done
}

# Quiet unless it fails: what the compiler has to say is for that case.
buildHost() {
  local log=$demo/build.log
  if [[ ! -x $out/qorfaces ]]; then
    echo "demo: building, which takes a minute or two the first time"
  fi
  if ! (cd "$root" && cmake --preset linux -DQOROCV460_TESTS=ON &&
    cmake --build --preset linux --parallel "$(nproc)" --target qorfaces make_models) >"$log" 2>&1; then
    tail -n 30 "$log" >&2
    complain "the build failed; all of its output is in $log"
    exit 1
  fi
}

# A well-known picture that OpenCV ships with its samples, for a checkout without photographs beside it.
downloadSample() { # FILE
  local part
  part=$(mktemp "$demo/.download.XXXXXX")
  if curl --fail --silent --location --proto '=https' --connect-timeout 5 --max-time 60 \
    --output "$part" https://raw.githubusercontent.com/opencv/opencv/4.6.0/samples/data/messi5.jpg; then
    mv -- "$part" "$1"
  else
    rm -f -- "$part"
    return 1
  fi
}

# Where the annotated copy of a photograph goes: never onto the photograph, nor onto another one's copy.
declare -A taken=()
chooseCopy() { # PHOTO -> copy
  local stem=${1##*/} number=1
  stem=${stem%.*}
  stem=${stem:-photo}
  copy=$demo/$stem.png
  while [[ -n ${taken[$copy]-} || $copy -ef $1 ]]; do
    copy=$demo/$stem-$((++number)).png
  done
  taken[$copy]=yes
}

annotate() { # MODELS PHOTO
  local copy
  chooseCopy "$2"
  "$out/qorfaces" --models "$1" --annotate "$copy" -- "$2" || return
  echo "  annotated copy: $copy"
}

showMadeModels() {
  local made=$demo/made
  echo "The models and the picture below are made by this project. They are not real: they show the"
  echo "library at work, not how well it finds faces."
  mkdir -p "$made"
  "$out/make_models" "$made" >/dev/null
  annotate "$made" "$made/made_face.png"
}

checkArguments "$@"
# Paths go through the locale's encoding, and photographs may be named in any language.
if [[ $(locale charmap 2>/dev/null) != UTF-8 ]]; then
  export LC_ALL=C.UTF-8
fi
"$root/scripts/install-deps.sh" build
mkdir -p "$demo"
buildHost

# The host takes the landmark model and the cascade; it can do without the others.
if ! "$root/scripts/get-models.sh" && ! [[ -s $models/model05.yaml && -s $models/model06.xml ]]; then
  complain "no real models, so no real photograph can be looked at; put them into $models as told above"
  showMadeModels
  exit $(($# > 0 ? 1 : 0))
fi

photos=("$@")
if ((${#photos[@]} == 0)); then
  photos=("${root%/*}/shared/photos/couple.jpg") # beside the checkout
  if [[ ! -f ${photos[0]} ]]; then
    photos=("$demo/messi5.jpg")
    if [[ ! -f ${photos[0]} ]] && ! downloadSample "${photos[0]}"; then
      complain "no photograph named, and none could be downloaded; try demo.sh PHOTO"
      showMadeModels
      exit 0
    fi
  fi
fi

failed=0
for photo in "${photos[@]}"; do
  annotate "$models" "$photo" || failed=1
done
exit "$failed"
