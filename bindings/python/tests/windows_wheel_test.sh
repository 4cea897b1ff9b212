#!/usr/bin/env bash
# windows_wheel_test.sh BUILD HOST PHOTO: the wheel of the libraries in BUILD, unpacked, serves a host in C that is
# put beside them, with the models that it carries. Runs under Wine, whose environment is the caller's.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
  echo "$*"
  exit 1
}

"$root/scripts/build-wheel.sh" windows "$1" "$work/wheels"
unzip -q "$work"/wheels/qorocv460-*-py3-none-win_amd64.whl -d "$work/unpacked"
package=$work/unpacked/qorocv460
mkdir "$work/models"
while read -r short public _; do
  [[ $short == \#* ]] || xz --decompress --stdout "$package/_models/$public.xz" >"$work/models/$short"
done <"$package/_models/models.txt"
[[ -s $package/notices/opencv.txt ]] || fail "the notices are missing"
cp "$2" "$package/_native/host.exe"
cd "$work" # away from other copies of the libraries
printed=$(wine "$package/_native/host.exe" "Z:$work/models" "Z:$3" | tr -d '\r') || fail "the host failed: $printed"
grep -qE '^from [0-9]+, [0-9]+ to [0-9]+, [0-9]+$' <<<"$printed" || fail "the host printed: $printed"
echo "$printed"
