#!/usr/bin/env bash
# The manual page and `ostrel --help` must say the same things: every
# command, option, convert target and trace category the tool's help names
# is in the page's source, and every option the page names is one the tool
# knows. Usage: man_test.sh OSTREL PAGE.scd
set -u
tool=$1
page=$2
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

help=$("$tool" --help; for c in show inspect convert sms; do "$tool" "$c" --help; done)
[ -n "$help" ] || fail "the tool printed no help"
# Words the page sets in bold: *word*.
bold=$(grep -o '\*[^* ]*\*' "$page" | tr -d '*' | sort -u)

# What the help names: options, the commands and targets of its indented
# lists, and the trace categories of its --trace line.
named=$(
  printf '%s\n' "$help" | grep -oE '(^|[ [|])--?[a-z][a-z-]*' | tr -d ' [|'
  printf '%s\n' "$help" | sed -n '/^commands:/,/^$/p; /^targets:/,/^$/p' |
    grep -oE '^  [a-z][a-z0-9]*' | tr -d ' '
  printf '%s\n' "$help" | grep -oE 'commas: [a-z, ]+' | cut -c8- | tr ',' '\n' | tr -d ' '
)
for word in $(printf '%s\n' "$named" | sort -u); do
  printf '%s\n' "$bold" | grep -qxF -- "$word" || fail "'$word' is in the help but not in the page"
done
for option in $(printf '%s\n' "$bold" | grep -E '^--?[a-z]'); do
  printf '%s\n' "$help" | grep -qE -- "(^|[ [|])$option([^a-z-]|$)" ||
    fail "'$option' is in the page but not in the help"
done

[ "$failures" -eq 0 ] || { echo "$failures failures"; exit 1; }
echo "the manual page names what the help names"
