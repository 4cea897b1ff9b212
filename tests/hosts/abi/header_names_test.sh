#!/usr/bin/env bash
# header_names_test.sh HEADER EXPORTS.TXT: the table that the header opens with names every function, and so
# does a declaration with a comment that says what it returns and to which threads.
set -euo pipefail

header=$1
opening=$(sed '/^ \*\/$/q' "$header")
failed=0
while read -r name; do
  if ! grep -qw -- "$name" <<<"$opening"; then
    echo "the opening does not name $name"
    failed=1
  fi
  # The comment that ends in the line before the declaration.
  comment=$(awk -v declaration="^QOROCV460_API int ${name}[(]" '
    /^\/\*/ { text = "" }
    $0 ~ declaration { print text; exit }
    { text = text $0 "\n" }' "$header")
  for section in ' * Returns ' ' * Threads: '; do
    if [[ $comment != *"$section"* ]]; then
      echo "the comment of $name lacks the line '$section'"
      failed=1
    fi
  done
done <"$2"
exit "$failed"
