#!/usr/bin/env bash
# demo.sh [PHOTO...]: builds the command-line host and looks for faces in photographs, by default in that of an
# astronaut: a table on standard output, and a copy of each with the faces drawn in build/demo/. It takes no
# network once the packages are installed.
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
  if ! (cd "$root" && cmake --preset linux &&
    cmake --build --preset linux --parallel "$(nproc)" --target qorfaces) >"$log" 2>&1; then
    tail -n 30 "$log" >&2
    complain "the build failed; all of its output is in $log"
    exit 1
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

# By the network: the cascade takes the suit of the astronaut for another face.
annotate() { # PHOTO
  local copy
  chooseCopy "$1"
  "$out/qorfaces" --detector ssd --models "$models" --annotate "$copy" -- "$1" || return
  echo "  annotated copy: $copy"
}

checkArguments "$@"
# Paths go through the locale's encoding, and photographs may be named in any language.
if [[ $(locale charmap 2>/dev/null) != UTF-8 ]]; then
  export LC_ALL=C.UTF-8
fi
"$root/scripts/install-deps.sh" build
mkdir -p "$demo"
buildHost

"$root/scripts/get-models.sh" || complain "going on with the models that are there"

photos=("$@")
if ((${#photos[@]} == 0)); then
  photos=("$root/assets/photos/astronaut.jpg")
fi
failed=0
for photo in "${photos[@]}"; do
  annotate "$photo" || failed=1
done
exit "$failed"
