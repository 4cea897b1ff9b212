#!/usr/bin/env bash
# binding_values_test.sh CSHARP PASCAL PYTHON HEADER_VALUES...: the constants of the bindings are those of the
# header, which the command HEADER_VALUES prints. C# and Pascal have all of them, without the prefix.
set -euo pipefail

csharp=$1
pascal=$2
python=$3
shift 3
values=$("$@")
values=${values//$'\r'/} # Windows ends lines with one
failed=0

complain() {
  echo "$*"
  failed=1
}

inCamelCase() { # NAME_LIKE_THIS
  local word words
  IFS=_ read -ra words <<<"${1,,}"
  for word in "${words[@]}"; do
    printf '%s' "${word^}"
  done
}

while read -r name _ value; do
  [[ $name != QOROCV460_FAILED ]] || continue # of the safe library, whose bindings have tests of their own
  constant=$(inCamelCase "${name#QOROCV460_}")
  for binding in "$csharp" "$pascal"; do
    grep -qE "^ +(public const int )?$constant = $value;$" "$binding" || complain "$binding: no $constant = $value"
  done
done <<<"$values"
while read -r line; do
  grep -qxF -- "$line" <<<"$values" || complain "$python: $line"
done < <(grep '^QOROCV460_' "$python")
exit "$failed"
