#!/usr/bin/env bash
# Runs the built ostrel tool on the samples and on bad input, and checks its
# output lines and exit codes. Usage: cli_test.sh OSTREL SAMPLES_DIR [CORPUS_DIR]
set -u
tool=$1
samples=$2
corpus=${3:-}
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
failures=0

fail() { echo "FAIL: $*"; failures=$((failures + 1)); }
# expect_status WANT CMD...: runs CMD, keeps stdout/stderr in $tmp/out, $tmp/err.
expect_status() {
  local want=$1; shift
  "$@" >"$tmp/out" 2>"$tmp/err"
  local got=$?
  [ "$got" -eq "$want" ] || fail "'$*' exited $got, expected $want; stderr: $(head -c 400 "$tmp/err")"
}
expect_line() {  # expect_line FILE REGEX
  grep -Eq -- "$2" "$1" || fail "no line matching '$2' in $(basename "$1"): $(head -c 400 "$1")"
}

# The samples read completely, with one summary line per file.
expect_status 0 "$tool" inspect "$samples/contacts.vcf"
expect_line "$tmp/out" '^.*contacts\.vcf: 3 contacts, 1 group$'
expect_line "$tmp/out" '^# PbItem beg, count=[0-9]+ \.\.\.\.\.\.$'
expect_line "$tmp/out" '^# GrpItem beg'
[ "$(grep -c '^# PbItem end !!!!!!$' "$tmp/out")" -eq 3 ] || fail "expected three contact traces"

# Standard input works as "-".
expect_status 0 "$tool" inspect - <"$samples/contacts.vcf"
expect_line "$tmp/out" '^<stdin>: 3 contacts, 1 group$'

# Converting to 3.0 and reading the result again gives the same records.
expect_status 0 "$tool" convert "$samples/contacts.vcf" --to vcard30 -o "$tmp/c30.vcf"
expect_line "$tmp/c30.vcf" '^VERSION:3\.0'
expect_status 0 "$tool" inspect "$tmp/c30.vcf"
expect_line "$tmp/out" 'c30\.vcf: 3 contacts, 1 group$'
expect_status 0 "$tool" convert "$tmp/c30.vcf" --to vcard21
expect_line "$tmp/out" '^VERSION:2\.1'
expect_line "$tmp/err" 'c30\.vcf: 3 contacts, 1 group$'
grep -q 'contacts' "$tmp/out" && fail "the summary line landed in the converted text"
[ "$(head -n 1 "$tmp/out")" = $'BEGIN:VCARD\r' ] || fail "converted text does not begin with BEGIN:VCARD"

# A file of no known format fails with its name.
printf 'hello, world\n' >"$tmp/plain.txt"
expect_status 1 "$tool" inspect "$tmp/plain.txt"
expect_line "$tmp/err" 'plain\.txt: not a known format'

# A card cut short is reported with its number and offset, and the status says so.
printf 'BEGIN:VCARD\r\nVERSION:2.1\r\nN:a\r\nEND:VCARD\r\nBEGIN:VCARD\r\nN:b\r\n' >"$tmp/cut.vcf"
expect_status 1 "$tool" inspect "$tmp/cut.vcf"
expect_line "$tmp/err" 'cut\.vcf: record 2 \(contact\) at byte 42: '
expect_line "$tmp/out" 'cut\.vcf: 1 contact$'

# A missing file.
expect_status 1 "$tool" inspect "$tmp/none.vcf"
expect_line "$tmp/err" 'none\.vcf: cannot read'

# A directory is no file, and says so.
expect_status 1 "$tool" inspect "$samples"
expect_line "$tmp/err" 'cannot read: Is a directory'

# Usage errors exit 2; help and version exit 0.
expect_status 2 "$tool"
expect_status 2 "$tool" frobnicate
expect_status 2 "$tool" inspect
expect_status 2 "$tool" convert "$samples/contacts.vcf"
expect_status 2 "$tool" convert "$samples/contacts.vcf" --to vcard9x
expect_status 2 "$tool" --trace nonsense inspect "$samples/contacts.vcf"
expect_status 0 "$tool" --help
expect_line "$tmp/out" '^usage: ostrel'
expect_status 0 "$tool" inspect --help
expect_line "$tmp/out" '^usage: ostrel inspect'
expect_status 0 "$tool" --version
expect_line "$tmp/out" '^ostrel [0-9]+\.[0-9]+\.[0-9]+$'

# Tracing goes to standard error and changes nothing on standard output.
expect_status 0 "$tool" --trace all inspect "$samples/contacts.vcf"
expect_line "$tmp/out" 'contacts\.vcf: 3 contacts, 1 group$'
[ -s "$tmp/err" ] || fail "--trace all wrote nothing to stderr"

# Every real vCard file reads without a crash; the count is reported.
if [ -n "$corpus" ] && [ -d "$corpus/vcard" ]; then
  files=0
  for f in "$corpus"/vcard/* "$corpus"/vcard/expected/*; do
    files=$((files + 1))
    "$tool" inspect "$f" >"$tmp/out" 2>"$tmp/err"
    rc=$?
    [ "$rc" -le 1 ] || fail "inspect $f crashed or misused (status $rc)"
    tail -n 1 "$tmp/out"
  done
  echo "inspected $files corpus files"
fi

if [ "$failures" -ne 0 ]; then
  echo "$failures check(s) failed"
  exit 1
fi
echo "all checks passed"
