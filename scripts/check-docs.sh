#!/usr/bin/env bash
# check-docs.sh: the code in README.md and docs/ is the code of docs/examples/, which the tests compile and
# run. A comment with the example's name stands in the line before each block.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

quoted=() # examples, one for each block that equals its file
failed=0

complain() {
  echo "check-docs: $*" >&2
  failed=1
}

compare() { # PAGE EXAMPLE BLOCK
  if [[ -z $2 ]]; then
    complain "$1: a block of code without the name of its example before it"
  elif [[ ! -f $2 ]]; then
    complain "$1: there is no example $2"
  elif ! diff --label "$2" --label "$1" -u "$2" <(printf '%s' "$3"); then
    complain "$1: not the code of $2"
  else
    quoted+=("$2")
  fi
}

checkPage() { # PAGE
  local lines line example='' block='' inside=false
  local name='^<!-- (docs/examples/[^ ]+) -->$' fence='^```(c|cpp|csharp|python|pascal)$'
  mapfile -t lines <"$1"
  for line in "${lines[@]}"; do
    if $inside; then
      if [[ $line == '```' ]]; then
        compare "$1" "$example" "$block"
        inside=false
        example=''
      else
        block+=$line$'\n'
      fi
    elif [[ $line =~ $fence ]]; then
      inside=true
      block=''
    elif [[ $line =~ $name ]]; then
      example=${BASH_REMATCH[1]}
    else
      example=''
    fi
  done
  if $inside; then
    complain "$1: a block of code does not end"
  fi
}

for page in README.md docs/*.md; do
  checkPage "$page"
done
for example in docs/examples/*.{c,cpp,cs,py}; do
  if [[ " ${quoted[*]} " != *" $example "* ]] && ! grep -qF "(${example#docs/})" docs/*.md; then
    complain "$example is quoted and named nowhere"
  fi
done
exit "$failed"
