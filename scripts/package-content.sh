#!/usr/bin/env bash
# package-content.sh: for the scripts that make packages, which read it: what every package holds, and what makes
# the same content the same file.

# One time for everything: the last commit's, unless the environment has one.
setTime() {
  SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct 2>/dev/null || date +%s)}
  export SOURCE_DATE_EPOCH
}

productVersion() { sed -n 's/^#define QOROCV460_VERSION "\(.*\)"$/\1/p' include/qorocv460/qorocv460.h; }

addPages() { # PACKAGE README: README stands at the top; every link of every page leads to a file of the package
  cp "$2" "$1/README.md"
  mkdir -p "$1/docs"
  cp -r docs/{guides,languages,reference,licences.md} "$1/docs/"
  mkdir "$1"/docs/{examples,pictures}
  cp docs/examples/*.{c,cpp,cs,py,pas} "$1/docs/examples/"
  cp docs/pictures/*.{jpg,png,svg} "$1/docs/pictures/"
  cp -r bindings "$1/"
  find "$1/bindings" -name __pycache__ -prune -exec rm -r {} +
  find "$1" -name '*.md' -exec scripts/check-links.sh {} +
}

# As initModelsAtPath names them, and nothing that stands for another file: Windows has no links.
addModels() { # DIRECTORY
  local unpacked file
  unpacked=$(mktemp -d)
  scripts/get-models.sh "$unpacked" >/dev/null
  mkdir -p "$1"
  for file in "$unpacked"/model0*; do
    cp --dereference "$file" "$1/"
  done
  rm -r "$unpacked"
}

addNotices() { # PACKAGE SYSTEM OPENCV-PREFIX: what is linked in, in words, and as a bill of materials
  mkdir "$1/notices"
  cp "$3"/share/notices/*.txt "$1/notices/"
  {
    echo "Linked into the library, from Debian's source packages:"
    sed 's/\.dsc$//; s/_/ /; s/^/  /' "$3/share/notices/versions"
    if [[ $2 == windows ]]; then
      echo "and zlib, the run-time of MinGW-w64 and that of GCC."
    fi
    echo "The files here hold their licences; sbom.spdx.json names versions and digests for programs."
  } >"$1/notices/README.txt"
  scripts/sbom.py "$2" "$3/share/sources" >"$1/notices/sbom.spdx.json"
}

# Names in order, one time, no owner, and the same rights whatever the checkout's were.
evenOut() { # PACKAGE
  find "$1" -type d -exec chmod 755 {} +
  find "$1" -type f -perm /111 -exec chmod 755 {} +
  find "$1" -type f ! -perm /111 -exec chmod 644 {} +
  find "$1" -exec touch --no-dereference --date="@$SOURCE_DATE_EPOCH" {} +
}
