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

# Records are taken in the order they begin, whatever comes before them: a
# hex PDU line ahead of a card is read too.
{ printf '00040C9194711132547600006211422143000005E8329BFD06\r\nBEGIN:VCALENDAR\r\nEND:VCALENDAR\r\n'; card z; } >"$tmp/mixed.txt"
expect_status 0 "$tool" inspect "$tmp/mixed.txt"
expect_line "$tmp/out" 'mixed\.txt: 1 received message, 1 contact$'

# Targets: the registry's, in any case; anything else is a usage error.
for t in vcard21 VCARD30 vCard21; do
  expect_status 0 "$tool" convert "$tmp/two.vcf" --to "$t"
done
for t in vcard40 vcard99 vcal; do
  expect_status 2 "$tool" convert "$tmp/two.vcf" --to "$t"
  expect_line "$tmp/err" 'the targets are: vcard21, vcard30, vnote11, vbkm11, vcal10, pdu, vsms20, calls, media, folders, mms$'
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
expect_line "$tmp/out" 'calendar\.vcs: 2 events, 1 to-do$'
expect_line "$tmp/out" '^  Summary: Caf.+ mit dem Team$'
expect_line "$tmp/out" '^  Start: 2026-12-28$'
expect_line "$tmp/out" '^  Due: 2026-11-30T17:00:00$'
expect_line "$tmp/out" '^  Repeats: W1 TU #10 \(every week on Tuesday, 10 times\)$'
expect_status 0 "$tool" convert "$samples/calendar.vcs" --to vcal10 -o "$tmp/cal10.vcs"
"$tool" inspect "$samples/calendar.vcs" | grep -v 'calendar\.vcs' >"$tmp/a"
"$tool" inspect "$tmp/cal10.vcs" | grep -v 'cal10\.vcs' >"$tmp/b"
cmp -s "$tmp/a" "$tmp/b" || fail "vcal10 conversion changed a calendar record"
printf 'BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nX-FOO:1\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n' >"$tmp/x.vcs"
expect_status 0 "$tool" --dropped inspect "$tmp/x.vcs"
expect_line "$tmp/out" 'x\.vcs: record 1, line 3: X-FOO dropped$'

# The two zone arguments: --local reads Z times as local time and leaves
# floating ones; --zone writes floating times in UTC from the given offset.
TZ=CET-1CEST,M3.5.0,M10.5.0/3 expect_status 0 "$tool" convert "$samples/calendar.vcs" --to vcal10 --local
expect_line "$tmp/out" $'^DTSTART:20261124T100000\r$'
expect_line "$tmp/out" $'^DUE:20261130T170000\r$'
expect_status 0 "$tool" convert "$samples/calendar.vcs" --to vcal10 --zone +0100
expect_line "$tmp/out" $'^DTSTART:20261124T090000Z\r$'
expect_line "$tmp/out" $'^DUE:20261130T160000Z\r$'
for z in 0100 +1 +01:00 +2460 ''; do
  expect_status 2 "$tool" convert "$samples/calendar.vcs" --to vcal10 --zone "$z"
done

# An object of several entries, which the library merges, is one record an
# entry: each with its own dropped lines and rule, the journal named.
printf 'BEGIN:VCALENDAR\r\nVERSION:1.0\r\nBEGIN:VEVENT\r\nSUMMARY:a\r\nX-A:1\r\nRRULE:MD1 1 LD #0\r\nEND:VEVENT\r\nBEGIN:VTODO\r\nSUMMARY:b\r\nX-B:1\r\nEND:VTODO\r\nBEGIN:VJOURNAL\r\nSUMMARY:j\r\nEND:VJOURNAL\r\nEND:VCALENDAR\r\n' >"$tmp/multi.vcs"
expect_status 1 "$tool" --dropped inspect "$tmp/multi.vcs"
expect_line "$tmp/out" 'multi\.vcs: 1 event, 1 to-do from 1 object; 1 record failed; 2 lines dropped \(X-A 1, X-B 1\)$'
expect_line "$tmp/out" 'multi\.vcs: record 1, line 5: X-A dropped$'
expect_line "$tmp/out" 'multi\.vcs: record 2, line 10: X-B dropped$'
expect_line "$tmp/out" '^# recurRule reads: every month on the 1st, last day, forever$'
[ "$(grep -c '^summ = [ab]$' "$tmp/out")" -eq 2 ] || fail "the entries of one object were not read apart"
expect_line "$tmp/err" 'multi\.vcs: record 3 \(calendar entry\) at byte 135, line 12: a VJOURNAL entry, which the calendar record does not hold$'
expect_status 1 "$tool" convert "$tmp/multi.vcs" --to vcal10
[ "$(grep -c '^BEGIN:VCALENDAR' "$tmp/out")" -eq 2 ] || fail "two entries should convert to two objects"

# Rules beneath the trace, as the rule codec reads them: sub-rules, end
# dates, refusals.
while IFS='|' read -r rule reading; do
  printf 'BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nRRULE:%s\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n' "$rule" >"$tmp/r.vcs"
  expect_status 0 "$tool" inspect "$tmp/r.vcs"
  grep -qxF "# recurRule reads: $reading" "$tmp/out" || fail "rule '$rule': $(grep '^# recur' "$tmp/out")"
done <<'ROWS'
YM1 6 7 #5 MP1 1+ SU #2|every year in June, July, 5 times; within it every month on the 1st Sunday, 2 times
MP1 1+ 2- MO TU #3|every month on the 2nd last, 1st Monday, Tuesday, 3 times
YD1 1 100$ #3|every year on days 1, 100, 3 times
D1 19991231T235959|every day, until 1999-12-31T23:59:59
w2 mo we$ #10|every 2 weeks on Monday, Wednesday, 10 times
MO|no rule head the codec reads (-251)
FREQ=YEARLY|no vCalendar 1.0 rule the codec reads
ROWS

if [ -n "$corpus" ] && [ -d "$corpus/vcalendar" ]; then
  expect_status 1 "$tool" inspect "$corpus/vcalendar/gammu__p990.vcs"
  expect_line "$tmp/err" 'malformed property line at line 21 \(-251\)'
  expect_status 1 "$tool" inspect "$corpus/vcalendar/syncevolution__eds_memo.ics"
  expect_line "$tmp/err" 'record 4 \(calendar entry\) at byte 544, line 30: a VJOURNAL entry'
  expect_status 0 "$tool" inspect "$corpus/vcalendar/gammu__UK32Holidays.ics"
  expect_line "$tmp/out" 'UK32Holidays\.ics: 69 events from 1 object; 82 lines dropped'
  "$tool" inspect "$corpus"/vcalendar/*.vcs "$corpus"/vcalendar/*.ics "$corpus"/vcalendar/*.vcf >"$tmp/out" 2>&1
  [ $? -le 1 ] || fail "inspect of the calendar corpus crashed"
  entries=$(grep -Eo '^[^ ]+: [0-9]+ (events?|to-dos?)(, [0-9]+ to-dos?)?' "$tmp/out" |
            sed 's/^[^ ]* //' | tr -c '0-9\n' ' ' | awk '{ for (i = 1; i <= NF; i++) n += $i } END { print n }')
  echo "calendar corpus: $entries events and to-dos after splitting"
  [ "$entries" -eq 195 ] || fail "calendar corpus: $entries entries, expected 195"
fi

# Short messages: the worked examples through sms encode (the hex line on
# standard output, a summary line on standard error) ...
while IFS='|' read -r args hex; do
  eval "set -- $args"
  expect_status 0 "$tool" sms encode "$@"
  [ "$(cat "$tmp/out")" = "$hex" ] || fail "sms encode $args gave $(cat "$tmp/out"), expected $hex"
  expect_line "$tmp/err" '^sms encode: SMS-[A-Z-]+, [0-9]+ octets'
done <<'ROWS'
--number +491711234567 --text hello|0011000C9194711132547600002205E8329BFD06
--number +491711234567 --text hi --udh 050003A50201|0051000C9194711132547600002209050003A50201D069
--number +491711234567 --text 你|0011000C91947111325476000822024F60
--number +491711234567 --text hello --ref 0x1F --request-report|00310F0C9194711132547600002205E8329BFD06
--type report --ref 0x2A --number +491711234567|00022A0C91947111325476000000000000000000000000000000
ROWS
expect_status 0 "$tool" sms encode --number +491711234567 --text hello -o "$tmp/pdu.bin"
[ "$(od -An -tx1 "$tmp/pdu.bin" | tr -d ' \n')" = "0011000c9194711132547600002205e8329bfd06" ] ||
  fail "sms encode -o did not write the PDU's octets"
expect_status 1 "$tool" sms encode --number 1 --text "$(printf '%0161d' 0)"
expect_line "$tmp/err" 'does not fit one PDU: value cannot be handled \(-81\)$'

# ... and through sms decode: the record's trace, and beneath it what the
# record does not hold.
expect_status 0 "$tool" sms decode 00040C9194711132547600006211422143000005E8329BFD06 \
  0051000C9194711132547600002209050003A50201D069
for l in '^tel = \+491711234567$' '^data = hello$' '^flags = SMS_F_MORE_MSG$' '^type = SMS_DELIVER$' \
         '^xptTime = 20261124T123400Z$' '^data = hi$' '^# smsc = none$' '^# dcs = 0x00, GSM 7-bit$' \
         '^# concatenated: part 1 of 2, reference 165$' '^sms decode: 1 received message, 1 outgoing message$'; do
  expect_line "$tmp/out" "$l"
done
# Without a service centre field: a report is read as one, others behind 00.
expect_status 0 "$tool" sms decode --no-smsc 11000C9194711132547600002205E8329BFD06 \
  022A0C91947111325476621142214300006211422143000000
expect_line "$tmp/out" '^type = SMS_REPORT$'
expect_line "$tmp/out" '^msgRef = 42$'
expect_line "$tmp/out" '^# smsc = not in the PDU$'
expect_line "$tmp/out" '^sms decode: 1 outgoing message, 1 status report$'
expect_status 1 "$tool" sms decode 0011 00040C9194711132547600006211422143000005E8329BFD06
expect_line "$tmp/err" '^ostrel: argument 1: value cannot be handled \(-81\)$'
expect_line "$tmp/out" '^sms decode: 1 received message; 1 record failed$'

# A file of hex lines: the sample, shown, as JSON, converted back byte for
# byte; modem lines between the PDUs are passed over.
expect_status 0 "$tool" show "$samples/sms.hex"
expect_line "$tmp/out" 'sms\.hex: 5 received messages, 1 outgoing message, 1 status report$'
expect_line "$tmp/out" '^  Text: Guten Morgen! Kaffee um 10\? Ich bringe \{Croissants\} mit\.$'
expect_line "$tmp/out" '^  Text: Привет из Москвы 👋$'
expect_line "$tmp/out" '^  From: Ostrel$'
expect_line "$tmp/out" '^  Part: part 2 of 2, reference 7$'
expect_line "$tmp/out" '^  Data: 8-bit data, 4 bytes$'
expect_line "$tmp/out" '^  Time stamp: 2026-11-24T10:20:00\+02:00$'
expect_status 0 "$tool" --json show "$samples/sms.hex"
[ "$(grep -c '"format":"pdu"' "$tmp/out")" -eq 7 ] || fail "--json: expected seven PDU records"
expect_status 0 "$tool" convert "$samples/sms.hex" --to pdu
grep -v '^+CMGL\|^OK' "$samples/sms.hex" | tr -d '\r' | cmp -s - "$tmp/out" ||
  fail "sms.hex changed through convert --to pdu"
expect_status 0 "$tool" sms decode -f "$samples/sms.hex"
expect_line "$tmp/out" 'sms\.hex: 5 received messages, 1 outgoing message, 1 status report$'

# An odd-length and a non-hex line: each named with its record, offset and
# line, the code and why; the lines around them are read.
good=0011000C9194711132547600002205E8329BFD06
printf '%s\r\n%s\r\n%s\r\n%s\r\n' $good ${good%?} ${good%?}G $good >"$tmp/bad.hex"
expect_status 1 "$tool" inspect "$tmp/bad.hex"
expect_line "$tmp/out" 'bad\.hex: 2 outgoing messages; 2 records failed$'
expect_line "$tmp/err" 'bad\.hex: record 2 \(short message\) at byte 42, line 2: value cannot be handled: 39 hex digits, an odd number \(-81\)$'
expect_line "$tmp/err" "bad\\.hex: record 3 \\(short message\\) at byte 83, line 3: value cannot be handled: 'G' at column 40 is no hex digit.*\\(-81\\)\$"

# The PDUs of the interop vectors as hex files: those with a service centre
# field read as they are, those without under --no-smsc, every one of
# which the codec takes.
if [ -n "$corpus" ] && [ -f "$corpus/sms-pdu/vectors.tsv" ]; then
  grep -v '^#' "$corpus/sms-pdu/vectors.tsv" | awk -F'\t' '$4 == "yes" { print $5 }' >"$tmp/with.hex"
  grep -v '^#' "$corpus/sms-pdu/vectors.tsv" | awk -F'\t' '$4 == "no" { print $5 }' >"$tmp/without.hex"
  "$tool" inspect "$tmp/with.hex" >"$tmp/out" 2>"$tmp/err"
  [ $? -le 1 ] || fail "inspect of the PDU vectors crashed"
  echo "PDU vectors with a service centre field: $(tail -n 1 "$tmp/out")"
  expect_status 0 "$tool" sms decode --no-smsc -f "$tmp/without.hex"
  echo "PDU vectors without one: $(tail -n 1 "$tmp/out")"
fi

# Usage errors of the sms commands.
for args in 'sms' 'sms frobnicate' 'sms decode' "sms decode $good -f $tmp/bad.hex" 'sms encode x' \
            'sms encode --type fax' 'sms encode --text a --data 00' 'sms encode --data 0' \
            "inspect --text a $samples/sms.hex" \
            'sms encode --udh 0500' 'sms encode --ref 300' 'sms encode --ref x' 'sms encode --json'; do
  expect_status 2 "$tool" $args
done
expect_status 0 "$tool" sms --help
expect_line "$tmp/out" '^usage: ostrel sms decode'
# Short messages: VSMS and the 3G text read, converted to VSMS and read back
# the same, written as PDU hex lines; mixed with notes and cards in order.
expect_status 0 "$tool" show "$samples/messages.vsms"
cp "$tmp/out" "$tmp/show1"
expect_line "$tmp/out" 'messages\.vsms: 4 messages$'
expect_line "$tmp/out" '^  Data: binary payload, 5 bytes$'
expect_status 0 "$tool" convert "$samples/messages.vsms" --to vsms20 -o "$tmp/m.vsms"
expect_status 0 "$tool" show "$tmp/m.vsms"
diff <(grep -v 'messages\.vsms' "$tmp/show1") <(grep -v 'm\.vsms' "$tmp/out") >/dev/null ||
  fail "messages.vsms changed through convert --to vsms20"
expect_status 0 "$tool" convert "$tmp/m.vsms" --to vsms20 -o "$tmp/m2.vsms"
cmp -s "$tmp/m.vsms" "$tmp/m2.vsms" || fail "messages.vsms is no fixed point of convert --to vsms20"
expect_status 0 "$tool" convert "$samples/message-3g.txt" --to vsms20 -o "$tmp/3g.vsms"
expect_status 0 "$tool" show "$tmp/3g.vsms"
expect_line "$tmp/out" '^  Text: Paket liegt bei Nachbarn; Klingel 3$'
expect_line "$tmp/out" '3g\.vsms: 1 message$'
expect_status 0 "$tool" convert "$samples/messages.vsms" "$samples/message-3g.txt" --to pdu
[ "$(grep -Ec '^[0-9A-F]+$' "$tmp/out")" -eq 5 ] || fail "--to pdu: expected five hex lines"
{ cat "$samples/message-3g.txt"; cat "$samples/notes.vnt"; card m; cat "$samples/messages.vsms"
  printf 'BEGIN:X-VMSG\r\nX-BODY:cut'; } >"$tmp/mixed.msg"
expect_status 1 "$tool" inspect "$tmp/mixed.msg"
expect_line "$tmp/out" 'mixed\.msg: 1 3G message, 2 notes, 1 contact, 4 messages; 1 record failed$'
expect_line "$tmp/err" 'record 9 \(3G message\) at byte [0-9]+, line [0-9]+: no record'
expect_status 1 "$tool" convert "$tmp/mixed.msg" --to pdu
expect_line "$tmp/err" 'a note cannot be written as pdu$'

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
expect_line "$tmp/err" 'cut\.mms: record 1 \(MMS message\) at byte 0, line 1: header string ends early \(-51\)'
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
    got=$(grep -cE ": 1 MMS (header|message) \(${want% *}(: [^)]*)?\)\$" "$tmp/out")
    [ "$got" -eq "${want#* }" ] || fail "expected ${want#* } of ${want% *}, got $got"
  done
  [ "$(grep -c '^hdrEnd = ' "$tmp/out")" -eq 6 ] || fail "expected six headers ending early"
  # Whole messages: 42 read with their body, the 25 others shown as headers.
  [ "$(grep -c ': 1 MMS message (' "$tmp/out")" -eq 42 ] || fail "expected 42 whole messages"
  media=$(grep -c '^medium = ' "$tmp/out"); slides=$(grep -c '^slide [0-9]* = ' "$tmp/out")
  echo "MMS corpus: 42 messages, $media media, $slides slides"
  [ "$media" -eq 77 ] && [ "$slides" -eq 38 ] || fail "expected 77 media and 38 slides"
  grep -A12 '^hdrEnd = ' "$tmp/out" | grep -E '^hdrEnd|: 1 MMS (header|message)' | paste - - >"$tmp/early"
  for want in 'byte 78 \(0x20\).*worldcupupdate_nosmil' 'byte 78 \(0x20\).*worldcupupdate_withsmil' \
              'byte 24 \(0x52\).*m-delivery_2' 'byte 38 \(0x34\).*m-retrieve_5' \
              'byte 92 \(0x58\).*con-281' 'byte 95 \(0x77\).*con-282'; do
    expect_line "$tmp/early" "$want"
  done
  "$tool" --json show "$corpus"/mms/* >/dev/null 2>&1
  [ $? -le 1 ] || fail "reading every MMS file crashed"
fi

# Call listings: the sample, each repair said (and none with --strict), a
# failure with its entry, words, line and column, an unknown root, and a
# conversion that reads back as the same entries.
expect_status 0 "$tool" inspect "$samples/calls.xml"
expect_line "$tmp/out" 'calls\.xml: 12 calls$'
[ "$(grep -c '^# CallItem end !!!!!!$' "$tmp/out")" -eq 12 ] || fail "expected twelve call traces"
printf '<call-listing>\n<Call number="1" type="Tom & Jerry"/>\n<Call type="&#55357;&#56838;"/>\n<!-- a & b -->\n</call-listing>\n' >"$tmp/rep.xml"
expect_status 0 "$tool" show "$tmp/rep.xml"
expect_line "$tmp/err" 'rep\.xml: line 2: a bare & written as &amp;'
expect_line "$tmp/err" 'rep\.xml: line 3: the surrogate references &#55357;&#56838; joined as &#128518;'
[ "$(grep -c 'rep\.xml: line' "$tmp/err")" -eq 2 ] || fail "the comment's & was repaired"
expect_line "$tmp/out" '^  Type: Tom & Jerry$'
expect_line "$tmp/out" $'^  Type: \xF0\x9F\x98\x86$'
expect_status 1 "$tool" inspect --strict "$tmp/rep.xml"
expect_line "$tmp/err" 'rep\.xml: call 1: not well-formed, line 2, column [0-9]+ \(-251\)$'
grep -q 'written as' "$tmp/err" && fail "--strict still repaired"
printf '<call-listing><Call number="1"/>\n<Call number="2"/>\n<Call num' >"$tmp/cut.xml"
expect_status 1 "$tool" inspect "$tmp/cut.xml"
expect_line "$tmp/err" 'cut\.xml: call 3: cut short, line 3, column 1 \(-261\)$'
expect_line "$tmp/out" 'cut\.xml: 2 calls; 1 record failed$'
printf '<?xml version="1.0"?>\n<media-list><media name="a"/></media-list>\n' >"$tmp/root.xml"
expect_status 1 "$tool" inspect "$tmp/root.xml"
expect_line "$tmp/err" 'root\.xml: starts with <\?xml .*XML listing, a format this build does not read'
printf '<?xml version="1.0" encoding="UTF-16"?>\n<call-listing><Call number="1"/></call-listing>\n' |
  iconv -f UTF-8 -t UTF-16 >"$tmp/u16.xml"
expect_status 0 "$tool" inspect "$tmp/u16.xml"
expect_line "$tmp/err" 'its XML declaration now names UTF-8$'
expect_line "$tmp/out" 'u16\.xml: 1 call$'
expect_status 0 "$tool" convert "$samples/calls.xml" "$tmp/rep.xml" --to calls -o "$tmp/conv.xml"
expect_line "$tmp/conv.xml" '^<call-listing version="1\.0">'
expect_line "$tmp/conv.xml" 'type="Tom &amp; Jerry"'
expect_status 0 "$tool" show --strict "$tmp/conv.xml"
expect_line "$tmp/out" 'conv\.xml: 14 calls$'
"$tool" show "$samples/calls.xml" "$tmp/rep.xml" 2>/dev/null | grep -v '^\(.*calls\.xml\|.*rep\.xml\|.*conv\.xml\)\|Date:\|Device id:' >"$tmp/a"
"$tool" show "$tmp/conv.xml" | grep -v 'conv\.xml\|Date:\|Device id:' >"$tmp/b"
cmp -s "$tmp/a" "$tmp/b" || fail "the converted call listing reads back differently (but for dates and ids)"

# Media, folder and MMS listings: each sample counted by kind and a fixed
# point through convert; a name with "&" repaired (and failing under
# --strict after the entries before it); the heads real folder listings
# have, mended; letters outside the tables counted, not printed.
for row in 'media.xml|media|4 media files' 'folders.xml|folders|2 folders, 1 removable device, 3 files' \
           'mms-listing.xml|mms|2 folders, 5 messages'; do
  IFS='|' read -r file target summary <<<"$row"
  expect_status 0 "$tool" inspect "$samples/$file"
  expect_line "$tmp/out" "${file//./\\.}: $summary\$"
  expect_status 0 "$tool" convert "$samples/$file" --to "$target" -o "$tmp/l1.xml"
  expect_status 0 "$tool" convert --strict "$tmp/l1.xml" --to "$target" -o "$tmp/l2.xml"
  cmp -s "$tmp/l1.xml" "$tmp/l2.xml" || fail "$file is no fixed point through convert --to $target"
done
expect_status 0 "$tool" show "$samples/folders.xml"
expect_line "$tmp/out" "^  Name: Tom & Jerry's theme\.mp3$"
expect_line "$tmp/out" '^  Name: 旅行 🌋\.jpg$'
printf '<folder-listing>\n<folder name="a"/>\n<file name="Tom & Jerry.mp3" user-perm="RXW"/>\n</folder-listing>\n' >"$tmp/tj.xml"
expect_status 0 "$tool" inspect "$tmp/tj.xml"
expect_line "$tmp/err" 'tj\.xml: line 3: a bare & written as &amp;'
expect_line "$tmp/out" '^# 1 letter or word outside the listing.s tables, left out$'
grep -q 'assert failed' "$tmp/err" && fail "a letter outside the tables printed a report"
expect_status 1 "$tool" inspect --strict "$tmp/tj.xml"
expect_line "$tmp/out" 'tj\.xml: 1 folder; 1 record failed$'
expect_line "$tmp/err" 'tj\.xml: entry 2: not well-formed, line 3, column [0-9]+ \(-251\)$'
printf '<!-- listing -->\n<?xml version=" 1.0"?>\n<folder-listing><folder name="a"/></folder-listing>\n' >"$tmp/head.xml"
expect_status 0 "$tool" inspect "$tmp/head.xml"
expect_line "$tmp/err" 'head\.xml: line 2: the XML declaration moved ahead of the comment before it'
expect_line "$tmp/err" 'head\.xml: line 2: the blanks in the declaration.s version number left out'
expect_status 1 "$tool" inspect --strict "$tmp/head.xml"
if [ -n "$corpus" ] && [ -d "$corpus/obex-folder-listing" ]; then
  "$tool" inspect "$corpus"/obex-folder-listing/*.xml >"$tmp/out" 2>"$tmp/err"
  [ $? -le 1 ] || fail "reading the folder listings crashed"
  expect_line "$tmp/out" 'c60-java\.xml: 1 folder$'
  expect_line "$tmp/out" 'invalid-document-2\.xml: 2 folders$'
  expect_line "$tmp/out" 'sample_folder_listing_3\.xml: 2 folders, 2 files$'
  expect_line "$tmp/err" 'obexftp-frontend__invalid-document\.xml: entry 5: cut short'
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
expect_line "$tmp/out" '^.*m\.mms: 1 MMS message \(m-send-req: 3 media, 1 slide\)$'
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
