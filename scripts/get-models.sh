#!/usr/bin/env bash
# get-models.sh: fills models/ in the checkout with the seven model files under the short names that
# initModelsAtPath takes. Each comes from models/ itself, else from ../shared/models, else from the public
# place that it was published at. Ends with 0 when all seven are there.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
models=$root/models
shared=../shared/models # beside the checkout
raw=https://raw.githubusercontent.com

# Short name, public name, digests of the published file, where it is published.
catalogue() {
  cat <<EOF
model01.prototxt deploy.prototxt sha256:dcd661dc48fc9de0a341db1f666a2164ea63a67265c7f779bc12d6b3f2fa67e9 $raw/opencv/opencv/4.6.0/samples/dnn/face_detector/deploy.prototxt
model02.caffemodel res10_300x300_ssd_iter_140000_fp16.caffemodel sha1:31fc22bfdd907567a04bb45b7cfad29966caddc1,blob:0e9cd4ab63a5a134cd5581c19b78b05c06f056e9 $raw/opencv/opencv_3rdparty/dnn_samples_face_detector_20180205_fp16/res10_300x300_ssd_iter_140000_fp16.caffemodel
model03.pbtxt opencv_face_detector.pbtxt sha256:ca0eb6b3a0e0b124282d093a3d8a9d453967f37af3c1a933978ac55605a8f2cb $raw/opencv/opencv/4.6.0/samples/dnn/face_detector/opencv_face_detector.pbtxt
model04.pb opencv_face_detector_uint8.pb sha256:5c71d752ef2cbf2f457ac82fdd580fcb2522fd04c5efdaed18eb6d9e2843fbed,sha1:4f2fdf6f231d759d7bbdb94353c5a68690f3d2ae $raw/opencv/opencv_3rdparty/dnn_samples_face_detector_20180220_uint8/opencv_face_detector_uint8.pb
model05.yaml lbfmodel.yaml blob:417d6db318df9867ebd1f8a0a7cf3a2a82eb1610 $raw/kurnianggoro/GSOC2017/HEAD/data/lbfmodel.yaml
model06.xml haarcascade_frontalface_alt.xml sha256:6281df13459cc218ff047d02b2ae3859b12ff14a93ffe8952f7b33fad7b9697b $raw/opencv/opencv/4.6.0/data/haarcascades/haarcascade_frontalface_alt.xml
model07.onnx human_segmentation_pphumanseg_2023mar.onnx sha256:552d8a984054e59b5d773d24b9b12022b22046ceb2bbc4c9aaeaceb36a9ddf24 https://media.githubusercontent.com/media/opencv/opencv_zoo/main/models/human_segmentation_pphumanseg/human_segmentation_pphumanseg_2023mar.onnx
EOF
}

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
