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

# Binary MMS: one message a file, recognised by its first field and type.
# A header cut inside a field ends there; a To whose encoded string runs
# past the end fails the record; a file that only starts like an MMS is
# not one, and one that ends its header early says where.
expect_status 0 "$tool" show "$samples/notification.mms"
expect_line "$tmp/out" '^  Subject: Urlaub .+ber 5$'
expect_line "$tmp/out" 'notification\.mms: 1 MMS header \(m-notification-ind\)$'
printf '\x8C\x82\x98T1\0\x96Hi\0\x89\x0A\x80+1/TYPE=PLMN\0\x97\x1F' >"$tmp/n.ind"
expect_status 0 "$tool" inspect "$tmp/n.ind"
expect_line "$tmp/out" 'n\.ind: 1 MMS header \(m-notification-ind\)$'
expect_line "$tmp/out" '^from = \+1$'
expect_line "$tmp/out" '^title = Hi$'
printf '\x8C\x80\x97\x1F\x8F\xFF\xFF\xFF\x7F\xEAabc' >"$tmp/cut.mms"
expect_status 1 "$tool" inspect "$tmp/cut.mms"
expect_line "$tmp/err" 'cut\.mms: record 1 \(MMS header\) at byte 0, line 1: header string ends early \(-51\)'
printf '\x8C\x20hello\r\n' >"$tmp/like.mms"
expect_status 1 "$tool" inspect "$tmp/like.mms"
expect_line "$tmp/err" 'like\.mms: not a known format'
printf '\x8C\x20\r\nBEGIN:VCARD\r\nN:x\r\nEND:VCARD\r\n' >"$tmp/like.vcf"
expect_status 0 "$tool" inspect "$tmp/like.vcf"
expect_line "$tmp/out" 'like\.vcf: 1 contact$'
printf '\x8C\x80hello\0BEGIN:VCARD\r\nN:x\r\nEND:VCARD\r\n' >"$tmp/early.mms"
expect_status 0 "$tool" inspect "$tmp/early.mms"
expect_line "$tmp/out" '^hdrEnd = byte 2 \(0x68\)$'
expect_line "$tmp/out" 'early\.mms: 1 MMS header \(m-send-req\)$'
if [ -n "$corpus" ] && [ -d "$corpus/mms" ]; then
  # The first collection: a later one of one source's tests is counted apart.
  mms=()
  for f in "$corpus"/mms/*; do
    case ${f##*/} in
      mms-engine__test_delivery_ind-*|mms-engine__test_retrieve-Base64-m-retrieve.conf|\
      mms-engine__test_retrieve-QuotedPrintable-m-retrieve.conf) mms+=("$f") ;;
      mms-engine__test_*) ;;
      *) mms+=("$f") ;;
    esac
  done
  [ "${#mms[@]}" -eq 67 ] || fail "expected 67 MMS files, found ${#mms[@]}"
  expect_status 0 "$tool" inspect "${mms[@]}"
  for want in 'm-retrieve-conf 34' 'm-send-req 13' 'm-notification-ind 8' 'm-send-conf 5' \
              'm-delivery-ind 3' 'm-notifyresp-ind 1' 'm-acknowledge-ind 1' 'm-read-rec-ind 1' \
              'm-read-orig-ind 1'; do
    got=$(grep -c ": 1 MMS header (${want% *})\$" "$tmp/out")
    [ "$got" -eq "${want#* }" ] || fail "expected ${want#* } of ${want% *}, got $got"
  done
  [ "$(grep -c '^hdrEnd = ' "$tmp/out")" -eq 6 ] || fail "expected six headers ending early"
  grep -A3 '^hdrEnd = ' "$tmp/out" | grep -E '^hdrEnd|MMS header' | paste - - >"$tmp/early"
  for want in 'byte 78 \(0x20\).*worldcupupdate_nosmil' 'byte 78 \(0x20\).*worldcupupdate_withsmil' \
              'byte 24 \(0x52\).*m-delivery_2' 'byte 38 \(0x34\).*m-retrieve_5' \
              'byte 92 \(0x58\).*con-281' 'byte 95 \(0x77\).*con-282'; do
    expect_line "$tmp/early" "$want"
  done
  "$tool" --json show "$corpus"/mms/* >/dev/null 2>&1
  [ $? -le 1 ] || fail "reading every MMS file crashed"
fi

if [ "$failures" -ne 0 ]; then
  echo "$failures check(s) failed"
  exit 1
fi
echo "all checks passed"
