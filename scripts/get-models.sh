#!/usr/bin/env bash
# get-models.sh: fills models/ in the checkout with the seven model files under the short names that
# initModelsAtPath takes. Each comes from models/ itself, else from ../shared/models, else from the public
# place that it was published at. Ends with 0 when all seven are there.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
models=$root/models
shared=../shared/models # beside the checkout

catalogue() { grep -v '^#' "$root/scripts/models.txt"; }

complain() { echo "get-models: $*" >&2; }

digestOf() { # ALGORITHM FILE
  case $1 in
    blob) git hash-object --no-filters -- "$2" ;;
    *) "${1}sum" <"$2" | cut -d' ' -f1 ;;
  esac
}

matches() { # FILE DIGESTS
  local digest
  for digest in ${2//,/ }; do
    [[ $(digestOf "${digest%%:*}" "$1") == "${digest#*:}" ]] || return 1
  done
}

link() { # TARGET SHORT
  ln -sfn -- "$1" "$models/$2" && linked+=("$2")
}

fromModels() { # SHORT PUBLIC
  [[ -s $models/$2 ]] && link "$2" "$1"
}

fromShared() { # SHORT PUBLIC
  local file=$root/$shared/$2 listed
  [[ -s $file ]] || return 1
  listed=$(awk -v name="$2" '$2 == name { print $1 }' "$root/$shared/SHA256SUMS" 2>/dev/null || true)
  if [[ -z $listed ]] || ! matches "$file" "sha256:$listed"; then
    complain "$shared/$2 is not what $shared/SHA256SUMS lists; not used"
    return 1
  fi
  link "../$shared/$2" "$1"
}

fromDebian() { # SHORT PUBLIC DIGESTS
  local file=/usr/share/opencv4/haarcascades/$2
  [[ -s $file ]] && matches "$file" "$3" && link "$file" "$1"
}

fromInternet() { # SHORT PUBLIC DIGESTS URL
  local part=$scratch/$2 code=0
  if $offline; then
    return 1
  fi
  echo "get-models: downloading $2"
  curl --fail --silent --show-error --location --proto '=https' --connect-timeout 5 \
    --speed-limit 1024 --speed-time 30 --output "$part" -- "$4" || code=$?
  case $code in
    0) ;;
    5 | 6 | 7 | 28 | 127) # no proxy, name, connection, answer or curl: so it will be for the other files
      offline=true
      return 1
      ;;
    *) return 1 ;;
  esac
  if ! matches "$part" "$3"; then
    complain "$4 is not the published $2; not used"
    return 1
  fi
  mv -- "$part" "$models/$2" && link "$2" "$1"
}

mkdir -p "$models"
scratch=$(mktemp -d "$models/.download.XXXXXX") # beside its goal, so that moving is one step
trap 'rm -rf -- "$scratch"' EXIT

linked=()
missing=()
offline=false
while read -r short public digests url; do
  if [[ -s $models/$short ]]; then
    continue
  fi
  fromModels "$short" "$public" || fromShared "$short" "$public" ||
    fromDebian "$short" "$public" "$digests" ||
    fromInternet "$short" "$public" "$digests" "$url" || missing+=("$short $public $url")
done < <(catalogue)

if ((${#linked[@]} > 0)); then
  echo "get-models: added ${linked[*]} to $models"
fi
if ((${#missing[@]} > 0)); then
  complain "${#missing[@]} of 7 models are missing. Put these files into $models and run this again:"
  for entry in "${missing[@]}"; do
    read -r short public url <<<"$entry"
    complain "  $public ($short), published at $url"
  done
  exit 1
fi
