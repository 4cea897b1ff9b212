#!/usr/bin/env bash
# version_test.sh HEADER CHANGELOG VERSION: hosts, the build and whoever reads the changes know one version.
set -euo pipefail

header=$(sed -n 's/^#define QOROCV460_VERSION "\(.*\)"$/\1/p' "$1")
newest=$(sed -n 's/^## \[\([0-9.]*\)\].*/\1/p' "$2" | head -n 1)
echo "header $header, changelog $newest, build $3"
[[ -n $header && $header == "$newest" && $header == "$3" ]]
