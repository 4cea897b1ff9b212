#!/usr/bin/env bash
# install_wheel.sh linux|here BUILD PLACE: makes the wheel of the libraries in BUILD and installs it into a fresh
# environment, PLACE/environment, which sees Debian's numpy and pytest and else nothing of ours.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../.." && pwd)
place=$3
rm -rf "$place/wheels" "$place/environment"
"$root/scripts/build-wheel.sh" "$1" "$2" "$place/wheels"
/usr/bin/python3 -m venv --system-site-packages "$place/environment"
"$place/environment/bin/python" -m pip --quiet --disable-pip-version-check install --no-index "$place"/wheels/*.whl
