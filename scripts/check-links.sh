#!/usr/bin/env bash
# check-links.sh PAGE...: every relative link and picture of these Markdown pages leads to a file, and to a
# heading of it where the link names one. Links to other machines are left alone.
set -euo pipefail

failed=0

complain() {
  echo "check-links: $*" >&2
  failed=1
}

# shellcheck disable=SC2016 # the backticks are those of Markdown
# What stands outside of blocks of code, without code in lines and without comments.
prose() { awk '/^ *```/ { code = !code; next } !code' "$1" | sed -e 's/`[^`]*`//g' -e 's/<!--.*-->//g'; }

links() { prose "$1" | grep -oE '\]\([^) ]+\)|(src|href)="[^"]+"' | sed -E 's/^\]\(|^[a-z]+="|[)"]$//g'; }

# As sites make anchors of headings: small letters, hyphens for spaces, no punctuation.
anchors() {
  awk '/^ *```/ { code = !code; next } !code' "$1" | sed -n 's/^##* //p' |
    sed -E -e 's/\[([^]]*)\]\([^)]*\)/\1/g' -e 's/[^[:alnum:] _-]//g' -e 's/ /-/g' | tr '[:upper:]' '[:lower:]'
}

for page in "$@"; do
  while read -r link; do
    case $link in
      http://* | https://* | mailto:*) continue ;;
    esac
    file=${link%%#*}
    target=$(dirname "$page")/$file
    if [[ -z $file ]]; then
      target=$page
    fi
    if [[ ! -e $target ]]; then
      complain "$page: $link leads nowhere"
    elif [[ $link == *'#'* ]] && ! anchors "$target" | grep -qxF -- "${link#*#}"; then
      complain "$page: $link names no heading"
    fi
  done < <(links "$page")
done
exit "$failed"
