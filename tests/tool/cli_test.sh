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
expect_line "$tmp/err" 'cut\.vcf: record 2 \(contact\) at byte 42, line 5: '
expect_line "$tmp/out" 'cut\.vcf: 1 contact; 1 record failed$'

# A bad card in the middle of four: the walk goes on at the next card and
# names the record's line and the bad line; the contacts around it are read.
card() { printf 'BEGIN:VCARD\r\nVERSION:2.1\r\nN:%s\r\n%bEND:VCARD\r\n' "$1" "${2:-}"; }
{ card a; card b 'FN\r\n'; card c 'X-FOO:1\r\nitem1.EMAIL:x@y\r\n'; card d 'X-FOO:2\r\n'; } >"$tmp/four.vcf"
expect_status 1 "$tool" inspect --dropped "$tmp/four.vcf"
expect_line "$tmp/err" 'four\.vcf: record 2 \(contact\) at byte 42, line 5: malformed property line at line 8 \(-251\)$'
expect_line "$tmp/out" 'four\.vcf: 3 contacts; 1 record failed; 3 lines dropped \(X-FOO 2, item1\.EMAIL 1\)$'
expect_line "$tmp/out" 'four\.vcf: record 3, line 14: item1\.EMAIL dropped$'
expect_line "$tmp/out" 'four\.vcf: record 4, line 19: X-FOO dropped$'

# A byte-order mark, and UTF-16 either way with or without one, read alike.
{ card a; card b; } >"$tmp/two.vcf"
printf '\xEF\xBB\xBF' | cat - "$tmp/two.vcf" >"$tmp/bom.vcf"
iconv -f UTF-8 -t UTF-16LE "$tmp/two.vcf" >"$tmp/le.vcf"
iconv -f UTF-8 -t UTF-16BE "$tmp/two.vcf" >"$tmp/be.vcf"
printf '\xFF\xFE' | cat - "$tmp/le.vcf" >"$tmp/le-mark.vcf"
printf '\xFE\xFF' | cat - "$tmp/be.vcf" >"$tmp/be-mark.vcf"
for f in bom le be le-mark be-mark; do
  expect_status 0 "$tool" inspect "$tmp/$f.vcf"
  expect_line "$tmp/out" "$f\\.vcf: 2 contacts\$"
done
expect_line "$tmp/err" 'be-mark\.vcf: UTF-16BE text with a byte-order mark, read as UTF-8'

# Records are taken in the order they begin, whatever comes before them.
{ printf '0791947106004034040D91\r\nBEGIN:VCALENDAR\r\nEND:VCALENDAR\r\n'; card z; } >"$tmp/mixed.txt"
expect_status 0 "$tool" inspect "$tmp/mixed.txt"
expect_line "$tmp/out" 'mixed\.txt: 1 contact$'

# Targets: the registry's, in any case; anything else is a usage error.
for t in vcard21 VCARD30 vCard21; do
  expect_status 0 "$tool" convert "$tmp/two.vcf" --to "$t"
done
for t in vcard40 vcard99 vcal; do
  expect_status 2 "$tool" convert "$tmp/two.vcf" --to "$t"
  expect_line "$tmp/err" 'the targets are: vcard21, vcard30, vnote11, vbkm11, vcal10$'
done

# show and --json on the samples.
expect_status 0 "$tool" show "$samples/contacts.vcf"
expect_line "$tmp/out" '^  Phone \(cell, preferred\): \+491701234567$'
expect_line "$tmp/out" '^  Photo: PNG photo, 77 bytes$'
expect_line "$tmp/out" '^  Birthday: 1984-03-07$'
expect_line "$tmp/out" 'record 4: group \(vCard 2\.1\), line 37$'
expect_status 0 "$tool" --json-binary show "$samples/contacts.vcf"
[ "$(wc -l <"$tmp/out")" -eq 4 ] || fail "--json: expected four lines"
expect_line "$tmp/out" '"binary":\{"what":"PNG photo","size":77,"base64":"iVBORw0KGgo'
expect_line "$tmp/err" 'contacts\.vcf: 3 contacts, 1 group$'

# Files that are not what they seem: a clear answer, never a crash.
printf '' >"$tmp/empty"
expect_status 1 "$tool" inspect "$tmp/empty"
expect_line "$tmp/err" 'empty: empty$'
printf 'BEGIN:VCALENDAR\r\nEND:VCALENDAR\r\n' >"$tmp/cal.vcs"
expect_status 1 "$tool" inspect "$tmp/cal.vcs"
expect_line "$tmp/err" 'not a known format .*it starts with "BEGIN:VCALENDAR"'
for bytes in '\xEF\xBB' '\xFF\xFE' '\xFE\xFF\x00' '\xFF\xFEB\x00E\x00G' 'N:\x00\x00a\r\n'; do
  printf "$bytes" >"$tmp/odd"
  "$tool" inspect "$tmp/odd" >/dev/null 2>&1
  [ $? -le 1 ] || fail "inspect of '$bytes' crashed"
done
printf '\xFF\xFE' | cat - "$tmp/le.vcf" | head -c -1 >"$tmp/le-odd.vcf"
expect_status 0 "$tool" inspect "$tmp/le-odd.vcf"
expect_line "$tmp/err" 'odd last byte was dropped'
{ card a; printf 'N:\x00b\r\n'; card b; } >"$tmp/nul.vcf"
expect_status 0 "$tool" inspect "$tmp/nul.vcf"
for i in $(seq 1 10000); do printf 'BEGIN:VCARD\r\nFN\r\n'; done >"$tmp/many.vcf"
expect_status 1 "$tool" inspect "$tmp/many.vcf"
[ "$(wc -l <"$tmp/err")" -eq 21 ] || fail "10,000 failures: expected 20 messages and a count"
expect_line "$tmp/err" 'many\.vcf: 9980 more failed records not listed$'
# Cards that never end: one failure, not one read to the end per card.
for i in $(seq 1 10000); do printf 'BEGIN:VCARD\r\nN:b\r\n'; done >"$tmp/unended.vcf"
expect_status 1 "$tool" inspect "$tmp/unended.vcf"
expect_line "$tmp/out" 'unended\.vcf: no records; 1 record failed$'
expect_line "$tmp/err" 'no end line follows, so no later contact is looked for$'

truncate -s 3G "$tmp/huge.vcf"  # sparse: refused by its size, never read
expect_status 1 "$tool" inspect "$tmp/huge.vcf"
expect_line "$tmp/err" 'huge\.vcf: larger than 2 GiB, not read$'
rm -f "$tmp/huge.vcf"

# convert -o onto its own input: never loses records.
cp "$tmp/four.vcf" "$tmp/self.vcf"
expect_status 1 "$tool" convert "$tmp/self.vcf" --to vcard30 -o "$tmp/self.vcf"
expect_line "$tmp/err" 'not overwritten'
cmp -s "$tmp/four.vcf" "$tmp/self.vcf" || fail "convert -o onto a failing input changed it"
cp "$tmp/two.vcf" "$tmp/self.vcf"
expect_status 0 "$tool" convert "$tmp/self.vcf" --to vcard30 -o "$tmp/self.vcf"
expect_line "$tmp/self.vcf" '^VERSION:3\.0'

# Notes and bookmarks: read, converted and read back the same; mixed with
# cards in one file, every record is read in order.
for f in notes.vnt:vnote11:'2 notes' bookmarks.vbk:vbkm11:'2 bookmarks'; do
  IFS=: read -r name target count <<<"$f"
  expect_status 0 "$tool" show "$samples/$name"
  cp "$tmp/out" "$tmp/show1"
  expect_status 0 "$tool" convert "$samples/$name" --to "$target" -o "$tmp/$name"
  expect_status 0 "$tool" show "$tmp/$name"
  diff <(sed 1d "$tmp/show1" | grep -v "$name") <(sed 1d "$tmp/out" | grep -v "$name") >/dev/null ||
    fail "$name changed through convert --to $target"
  expect_line "$tmp/out" ": $count\$"
  # From the second pass on, the text is a fixed point.
  expect_status 0 "$tool" convert "$tmp/$name" --to "$target" -o "$tmp/again.$name"
  cmp -s "$tmp/$name" "$tmp/again.$name" || fail "$name is no fixed point of convert --to $target"
done
expect_line "$tmp/show1" '^  Title: Fahrpläne$'
{ cat "$samples/notes.vnt"; card m; cat "$samples/bookmarks.vbk"; printf 'BEGIN:VNOTE\r\nBODY:cut'; } >"$tmp/mixed.all"
expect_status 1 "$tool" inspect "$tmp/mixed.all"
expect_line "$tmp/out" 'mixed\.all: 2 notes, 1 contact, 2 bookmarks; 1 record failed$'
expect_line "$tmp/err" 'record 6 \(note\) at byte [0-9]+, line 31: no record'
expect_status 1 "$tool" convert "$tmp/mixed.all" --to vnote11
expect_line "$tmp/err" 'a contact cannot be written as vnote11$'

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

# Calendar entries: the sample, a conversion that reads back the same, the
# dropped-property account, and the corpus with its broken file named.
expect_status 0 "$tool" show "$samples/calendar.vcs"
expect_line "$tmp/out" 'calendar\.vcs: 3 calendar entries$'
expect_line "$tmp/out" '^  Summary: Caf.+ mit dem Team$'
expect_line "$tmp/out" '^  Start: 2026-12-28$'
expect_line "$tmp/out" '^  Due: 2026-11-30T17:00:00$'
expect_status 0 "$tool" convert "$samples/calendar.vcs" --to vcal10 -o "$tmp/cal10.vcs"
"$tool" inspect "$samples/calendar.vcs" | grep -v 'calendar\.vcs' >"$tmp/a"
"$tool" inspect "$tmp/cal10.vcs" | grep -v 'cal10\.vcs' >"$tmp/b"
cmp -s "$tmp/a" "$tmp/b" || fail "vcal10 conversion changed a calendar record"
printf 'BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nX-FOO:1\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n' >"$tmp/x.vcs"
expect_status 0 "$tool" --dropped inspect "$tmp/x.vcs"
expect_line "$tmp/out" 'X-FOO'
if [ -n "$corpus" ] && [ -d "$corpus/vcalendar" ]; then
  expect_status 1 "$tool" inspect "$corpus/vcalendar/gammu__p990.vcs"
  expect_line "$tmp/err" 'malformed property line at line 21 \(-251\)'
  "$tool" inspect "$corpus"/vcalendar/*.vcs "$corpus"/vcalendar/*.ics "$corpus"/vcalendar/*.vcf >/dev/null 2>&1
  [ $? -le 1 ] || fail "inspect of the calendar corpus crashed"
fi

# Multimedia messages: extract writes each medium inside DIR under a safe
# name and never over a file without --force; mms-encode refuses an
# address the encoder would drop, and what it writes extracts to the same
# bytes.
printf '\x8c\x84\x02\x0a\x02\x83\x8e../../x\x00hi\x0e\x01\x83\x8e/up/load/\x01y.txt\x00!' >"$tmp/up.mms"
expect_status 0 "$tool" extract "$tmp/up.mms" -d "$tmp/d/inner"
[ -f "$tmp/d/inner/x" ] && [ -f "$tmp/d/inner/y.txt" ] && [ ! -e "$tmp/x" ] && [ ! -e "$tmp/d/x" ] ||
  fail "extract wrote outside DIR or under an unsafe name: $(ls -R "$tmp/d")"
expect_status 1 "$tool" extract "$tmp/up.mms" -d "$tmp/d/inner"
expect_line "$tmp/err" 'exists \(use --force to overwrite\)'
expect_status 0 "$tool" extract "$tmp/up.mms" -d "$tmp/d/inner" --force
expect_status 2 "$tool" mms-encode "$tmp/d/inner/y.txt" -o "$tmp/m.mms" --to abc
expect_line "$tmp/err" "'abc' is not an address"
[ ! -e "$tmp/m.mms" ] || fail "mms-encode wrote a message with a refused address"
printf 'GIF89a-pixels' >"$tmp/d/a.gif"
expect_status 0 "$tool" mms-encode "$tmp/d/a.gif" "$tmp/d/inner/y.txt" "$tmp/d/inner/x" -o "$tmp/m.mms" \
  --to +491701234567 --cc a@b.de --subject 'Grüße'
expect_line "$tmp/out" '^.*m\.mms: 1 MMS message \(m-send-req: 3 media, 1 slides\)$'
expect_status 0 "$tool" extract "$tmp/m.mms" -d "$tmp/back"
for f in a.gif y.txt; do
  cmp -s "$tmp/back/$f" "$tmp/d/$f" 2>/dev/null || cmp -s "$tmp/back/$f" "$tmp/d/inner/$f" ||
    fail "mms-encode and extract changed $f"
done
# A name without an extension comes back with a final dot ("type/unknow" has none).
cmp -s "$tmp/back/x." "$tmp/d/inner/x" || fail "mms-encode and extract changed x"
if [ -n "$corpus" ] && [ -d "$corpus/mms" ]; then
  for f in mms-engine__m-retrieve_9.conf mms-engine__m-retrieve_10.conf gammu__HelloWorld.mms \
           mmsd__rc-mms-1-3-con-210.mms mmsd__sr-mms-mixed.mms; do
    "$tool" extract "$corpus/mms/$f" -d "$tmp/c/$f" >/dev/null 2>&1 || fail "extract of $f failed"
  done
  [ -f "$tmp/c/mms-engine__m-retrieve_9.conf/html.txt" ] || fail "text/html.txt not made html.txt"
  [ -f "$tmp/c/mms-engine__m-retrieve_10.conf/<0501271006243210168400>.txt" ] ||
    fail "a Content-ID name was not kept"
  [ -f "$tmp/c/gammu__HelloWorld.mms/lskdjfie." ] || fail "lskdjfie. not kept"
  [ -z "$(find "$tmp/c" -mindepth 2 -type d)" ] || fail "extract made directories of upload paths"
fi

if [ "$failures" -ne 0 ]; then
  echo "$failures check(s) failed"
  exit 1
fi
echo "all checks passed"
