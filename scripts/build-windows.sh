#!/usr/bin/env bash
# build-windows.sh: builds build/windows/QOROCV460.dll, and qorfaces.exe and the tests beside it, from
# nothing on a fresh Debian 12. The first run builds OpenCV for Windows, which takes about 10 minutes on two
# processors and is kept.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

"$root/scripts/install-deps.sh"
"$root/scripts/build-preset.sh" windows
