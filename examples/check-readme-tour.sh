#!/bin/sh
# check-readme-tour.sh - fails when the README's tour (its first ```cpp
# block) holds a line that Tour.cpp does not, so that the README cannot show
# code that was never built and run.
#
#   sh check-readme-tour.sh README.md examples/Tour.cpp
#
# Lines are compared without their leading and trailing blanks; blank lines
# are skipped.
set -eu
readme=$1
source=$2

trim() { sed -e 's/^[[:space:]]*//' -e 's/[[:space:]]*$//'; }

tour=$(awk '/^```cpp[[:space:]]*$/ && !seen { inside = 1; seen = 1; next }
            inside && /^```[[:space:]]*$/ { exit }
            inside { print }' "$readme" | trim | grep -v '^$' || true)
if [ -z "$tour" ]; then
  echo "no \`\`\`cpp block found in $readme" >&2
  exit 1
fi

code=$(trim < "$source")
checked=0
missing=0
while IFS= read -r line; do
  checked=$((checked + 1))
  if ! printf '%s\n' "$code" | grep -Fxq -e "$line"; then
    echo "README line not in $source: $line" >&2
    missing=$((missing + 1))
  fi
done <<END
$tour
END

if [ "$missing" -gt 0 ]; then
  echo "$missing of $checked tour lines are not in $source" >&2
  exit 1
fi
echo "all $checked tour lines of $readme are in $source"
