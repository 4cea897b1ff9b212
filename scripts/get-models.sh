#!/usr/bin/env bash
# get-models.sh [--published|--list] [DIRECTORY]: fills a directory, models/ in the checkout by default, with
# the seven model files under their public names, and with links under the short names that initModelsAtPath
# takes. They are the embedded ones, of assets/models; the cascade is that of Debian's package opencv-data.
#   --published  puts the published files there instead, and fetches those that differ from the embedded ones
#   --list       only tells which of the two each model is
# A file is checked before it gets its name. One that is neither embedded nor published belongs to somebody,
# and stays. Ends with 0 when all seven are there.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
assets=$root/assets/models
cascades=/usr/share/opencv4/haarcascades

complain() { echo "get-models: $*" >&2; }

usage() {
  complain "usage: get-models.sh [--published|--list] [DIRECTORY]"
  exit 2
}

catalogue() { grep -v '^#' "$root/scripts/models.txt"; } # lines of SHORT PUBLIC DIGESTS URL

digestOf() { # ALGORITHM FILE
  case $1 in
    # As git names a file: the digest of its length and its bytes.
    blob) { printf 'blob %d\0' "$(stat --dereference --format=%s -- "$2")" && cat -- "$2"; } | sha1sum ;;
    *) "${1}sum" <"$2" ;;
  esac | cut -d' ' -f1
}

matches() { # FILE DIGESTS
  local digest
  [[ -n $2 ]] || return 1
  for digest in ${2//,/ }; do
    [[ $(digestOf "${digest%%:*}" "$1") == "${digest#*:}" ]] || return 1
  done
}

embeddedDigest() { # PUBLIC
  awk -v name="$1" '$2 == name { print "sha256:" $1 }' "$assets/SHA256SUMS"
}

originOf() { # FILE PUBLIC DIGESTS: embedded, published, both or own
  local embedded=false published=false
  if matches "$1" "$(embeddedDigest "$2")"; then embedded=true; fi
  if matches "$1" "$3"; then published=true; fi
  case $embedded,$published in
    true,true) echo both ;;
    true,*) echo embedded ;;
    *,true) echo published ;;
    *) echo own ;;
  esac
}

stateOf() { # SHORT PUBLIC DIGESTS: the origin of what lies under either name, or missing
  local short=$models/$1 public=$models/$2 state=missing
  if [[ -s $public ]]; then
    state=$(originOf "$public" "$2" "$3")
  fi
  if [[ -s $short && $state != own && ! $short -ef $public ]]; then
    state=$(originOf "$short" "$2" "$3")
  fi
  echo "$state"
}

readStates() { # -> state, by public names
  local short public digests
  declare -gA state=()
  while read -r short public digests _; do
    state[$public]=$(stateOf "$short" "$public" "$digests")
  done < <(catalogue)
}

list() {
  local short public
  while read -r short public _; do
    printf '%-19s %-47s %s\n' "$short" "$public" "${state[$public]/both/embedded and published}"
  done < <(catalogue)
}

# Models that are both count as either.
reportSet() {
  local set
  readStates
  set=$(printf '%s\n' "${state[@]}" | sort --unique | tr '\n' ' ')
  case ${set/both /} in
    'embedded ') echo "get-models: $models holds the embedded models" ;;
    'published ') echo "get-models: $models holds the published models" ;;
    *) echo "get-models: $models holds" && list ;;
  esac
}

sourceOf() { # PUBLIC: the file that holds the embedded model
  local file
  for file in "$assets/$1" "$assets/$1.xz" "$cascades/$1"; do
    if [[ -f $file ]]; then
      echo "$file"
      return
    fi
  done
  complain "there is no $cascades/$1; on Debian: apt-get install opencv-data"
  complain "elsewhere put OpenCV's file of that name into $models, or run get-models.sh --published"
  return 1
}

unpack() { # PUBLIC
  local source
  source=$(sourceOf "$1") || return 1
  if [[ $source != *.xz ]]; then
    cp -- "$source" "$scratch/$1" || return 1
  elif ! command -v xz >/dev/null; then
    complain "unpacking $source takes xz; on Debian: apt-get install xz-utils"
    return 1
  elif ! xz --decompress --stdout -- "$source" >"$scratch/$1"; then
    complain "$source cannot be unpacked"
    return 1
  fi
  if ! matches "$scratch/$1" "$(embeddedDigest "$1")"; then
    complain "$source does not hold the $1 that $assets/SHA256SUMS lists"
    return 1
  fi
}

fetch() { # PUBLIC DIGESTS URL
  echo "get-models: downloading $1"
  if ! curl --fail --silent --show-error --location --proto '=https' --connect-timeout 5 \
    --speed-limit 1024 --speed-time 30 --output "$scratch/$1" -- "$3"; then
    return 1
  fi
  if ! matches "$scratch/$1" "$2"; then
    complain "what was downloaded is not the published $1"
    return 1
  fi
}

# Beside its goal, because renaming does not reach another file system.
makeScratch() {
  if [[ ! -v scratch ]]; then
    mkdir -p -- "$models"
    scratch=$(mktemp -d -- "$models/.get-models.XXXXXX")
    trap 'rm -rf -- "$scratch"' EXIT
  fi
}

# Renaming is one step: whoever looks finds the former file or the new one, and so does a later run.
rename() {
  mv --force --no-target-directory -- "$1" "$2"
  changed=true
}

link() { # SHORT PUBLIC
  ln -s -- "$2" "$scratch/$1"
  rename "$scratch/$1" "$models/$1"
}

place() { # SHORT PUBLIC
  rename "$scratch/$2" "$models/$2"
  link "$1" "$2"
}

# Files that somebody put there under their public names.
linkPublicNames() {
  local short public
  while read -r short public _; do
    if [[ -s $models/$public && ! -s $models/$short ]]; then
      makeScratch
      link "$short" "$public"
    fi
  done < <(catalogue)
}

fillWithEmbedded() {
  local short public
  while read -r short public _; do
    case ${state[$public]} in
      own) complain "$public in $models is neither the embedded nor the published one, and stays" ;;
      missing)
        makeScratch
        if unpack "$public"; then
          place "$short" "$public"
        else
          good=false
        fi
        ;;
    esac
  done < <(catalogue)
}

obtainPublished() { # PUBLIC DIGESTS URL
  if [[ ,$2, == *",$(embeddedDigest "$1"),"* ]] && unpack "$1" 2>/dev/null; then
    return 0
  fi
  fetch "$1" "$2" "$3"
}

isPublished() { [[ ${state[$1]} == published || ${state[$1]} == both ]]; } # PUBLIC

obtainAllPublished() {
  local public digests url
  while read -r _ public digests url; do
    isPublished "$public" || obtainPublished "$public" "$digests" "$url" || return 1
  done < <(catalogue)
}

# All or none: models of one set belong together.
replaceByPublished() {
  local short public url own=() wanted=()
  while read -r _ public _ url; do
    if [[ ${state[$public]} == own ]]; then
      own+=("$public")
    elif ! isPublished "$public"; then
      wanted+=("$public from $url")
    fi
  done < <(catalogue)
  if ((${#own[@]} > 0)); then
    complain "neither embedded nor published: ${own[*]}"
    complain "move what lies there in its place out of $models and run this again"
    good=false
    return
  fi
  if ((${#wanted[@]} == 0)); then
    return
  fi
  makeScratch
  if ! obtainAllPublished; then
    complain "the models in $models stay; without a network, put these files there and run this again:"
    printf '  %s\n' "${wanted[@]}" >&2
    good=false
    return
  fi
  while read -r short public _; do
    isPublished "$public" || place "$short" "$public"
  done < <(catalogue)
}

action=fill
case ${1-} in
  --published) action=replace ;;
  --list) action=list ;;
  -*) usage ;;
esac
if [[ $action != fill ]]; then
  shift
fi
(($# <= 1)) || usage
models=${1:-$root/models}

if [[ $action == list ]]; then
  readStates
  list
  exit
fi
good=true
changed=false
linkPublicNames
readStates
if [[ $action == fill ]]; then
  fillWithEmbedded
else
  replaceByPublished
fi
if $changed; then
  reportSet
fi
$good
