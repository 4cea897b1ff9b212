#!/usr/bin/env bash
# check-docs.sh: what README.md and the pages of docs/ quote is what the tests compile and run, and every link
# leads somewhere. A comment with the file's name stands in the line before each block of code: an example
# (docs/examples/), a part of one ("part of"), or what qorfaces has printed (docs/pictures/).
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

mapfile -t pages < <(find docs -name '*.md' | sort)
pages+=(README.md CONTRIBUTING.md CHANGELOG.md assets/README.md)
quoted=() # files, one for each block that equals its file
failed=0

complain() {
  echo "check-docs: $*" >&2
  failed=1
}

withoutIndent() { sed 's/^ *//'; }

isPart() { # BLOCK FILE: its lines stand in the file in this order, one after the other
  local block whole
  block=$(withoutIndent <<<"$1")
  whole=$(withoutIndent <"$2")
  [[ $'\n'$whole$'\n' == *$'\n'"$block"$'\n'* ]]
}

compare() { # PAGE EXTENT FILE BLOCK
  if [[ -z $3 ]]; then
    complain "$1: a block of code without the name of its example before it"
  elif [[ ! -f $3 ]]; then
    complain "$1: there is no $3"
  elif [[ $2 == part ]]; then
    isPart "${4%$'\n'}" "$3" || complain "$1: not a part of $3:"$'\n'"$4"
  elif ! diff --label "$3" --label "$1" -u "$3" <(printf '%s' "$4"); then
    complain "$1: not the code of $3"
  else
    quoted+=("$3")
  fi
}

checkPage() { # PAGE
  local lines line extent='' file='' block='' inside=false
  local name='^<!-- (part of )?(docs/(examples|pictures)/[^ ]+) -->$'
  local fence='^```(c|cpp|csharp|python|pascal|text)$'
  mapfile -t lines <"$1"
  for line in "${lines[@]}"; do
    if $inside; then
      if [[ $line == '```' ]]; then
        compare "$1" "$extent" "$file" "$block"
        inside=false
        file=''
      else
        block+=$line$'\n'
      fi
    elif [[ $line =~ $fence ]]; then
      inside=true
      block=''
    elif [[ $line =~ $name ]]; then
      extent=${BASH_REMATCH[1]:+part}
      file=${BASH_REMATCH[2]}
    else
      file=''
    fi
  done
  if $inside; then
    complain "$1: a block of code does not end"
  fi
}

for page in "${pages[@]}"; do
  checkPage "$page"
done
for example in docs/examples/*.{c,cpp,cs,pas,py}; do
  if [[ " ${quoted[*]} " != *" $example "* ]] && ! grep -qF "examples/${example##*/})" "${pages[@]}"; then
    complain "$example is quoted and named nowhere"
  fi
done
for page in docs/*/*.md; do
  grep -qF "(${page#docs/})" docs/index.md || complain "$page is not in docs/index.md"
done
scripts/check-links.sh "${pages[@]}" || failed=1
exit "$failed"
