// The vCalendar codec: the frame, the property rows, users' cases, the
// encoder's lines and round trips. Records are compared as their trace
// text, so that a failure shows every member.
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "CalTestUtil.h"

namespace {

using V = std::vector<std::string>;
using caltest::memText;

std::string crlf(const V &lines) {
  std::string s;
  for (const auto &l : lines) s += l + "\r\n";
  return s;
}

// The trace between its head and end lines.
std::string body(CalItem *item) {
  std::string t = caltest::trace(item);
  t.erase(0, t.find('\n') + 1);
  return t.substr(0, t.rfind("# CalItem end"));
}

// One event around the lines, read with the zone given.
std::string decodeEvent(const V &lines, int32_t zone = VCAL_ZONE_ASIS) {
  V all{"BEGIN:VCALENDAR", "VERSION:1.0", "BEGIN:VEVENT"};
  all.insert(all.end(), lines.begin(), lines.end());
  all.insert(all.end(), {"END:VEVENT", "END:VCALENDAR"});
  const std::string text = crlf(all);
  tarnex::ScratchStrStrm in(text);
  CalItem item;
  CalItem_new(&item);
  const int32_t rc = Vcal_decx(in, &item, nullptr, nullptr, zone);
  std::string out = rc == 1 ? body(&item) : "rc " + std::to_string(rc);
  CalItem_delete(&item);
  return out;
}

// Every object of a text: "rc N" for what ends the reading, else the body.
V decodeAll(const std::string &text) {
  tarnex::ScratchStrStrm in(text);
  CalItem item;
  CalItem_new(&item);
  V got;
  for (int guard = 0; guard < 100; ++guard) {
    const int32_t rc = Vcal_dec(in, &item, nullptr);
    if (rc != 1) {
      got.push_back("rc " + std::to_string(rc) + (body(&item) == "type = UNKN\n" ? "" : " dirty"));
      break;
    }
    got.push_back(body(&item));
  }
  CalItem_delete(&item);
  return got;
}

TEST(Vcal, Frame) {
  const struct {
    V lines;
    V want;
  } rows[] = {
      // Lines before the object and before the entry are dropped; case is ignored.
      {{"SUMMARY:out", "begin:vcalendar", "PRODID:x", "BEGIN:VTIMEZONE", "SUMMARY:tz",
        "END:VTIMEZONE", "Begin:vEvent", "SUMMARY:in", "END:VEVENT", "END:VCALENDAR"},
       {"type = EVENT\nsumm = in\n", "rc 0"}},
      // END:VCALENDAR before END:VEVENT is ignored: the object never ends.
      {{"BEGIN:VCALENDAR", "BEGIN:VEVENT", "SUMMARY:a", "END:VCALENDAR", "END:VEVENT"},
       {"rc 0"}},
      // An object with no entry runs into the next one.
      {{"BEGIN:VCALENDAR", "END:VCALENDAR", "BEGIN:VCALENDAR", "BEGIN:VTODO", "SUMMARY:b",
        "END:VTODO", "END:VCALENDAR"},
       {"type = TODO\nsumm = b\n", "rc 0"}},
      // END:VTODO closes a VEVENT; a second entry merges into the first.
      {{"BEGIN:VCALENDAR", "BEGIN:VEVENT", "SUMMARY:a", "UID:1", "ATTENDEE:x", "END:VTODO",
        "BEGIN:VTODO", "SUMMARY:b", "ATTENDEE:y", "END:VTODO", "END:VCALENDAR"},
       {"type = EVENT\nsumm = b\nattends :\n{\n"
        "\trsvp = KVO_FALSE\n\troleId = 1\n\tstatId = 1\n\texpectId = 1\n\tinfoLoc = 0\n\tinfoVal = x\n\t.\n"
        "\trsvp = KVO_FALSE\n\troleId = 1\n\tstatId = 1\n\texpectId = 1\n\tinfoLoc = 0\n\tinfoVal = y\n\t.\n"
        "}\nuid = 1\n",
        "rc 0"}},
      // A broken line inside gives -251 and an empty record; before BEGIN it is 0.
      {{"BEGIN:VCALENDAR", "BEGIN:VEVENT", "ATTENDEE", "SUMMARY:x", "END:VEVENT", "END:VCALENDAR"},
       {"rc -251"}},
      {{"broken", "BEGIN:VCALENDAR"}, {"rc 0"}},
  };
  for (const auto &r : rows) EXPECT_EQ(decodeAll(crlf(r.lines)), r.want) << r.lines[0];
  // The last bytes of the stream may be END:VCALENDAR without a line end.
  EXPECT_EQ(decodeAll("BEGIN:VCALENDAR\r\nBEGIN:VTODO\r\nEND:VTODO\r\nEND:VCALENDAR"),
            (V{"type = TODO\n", "rc 0"}));
}

TEST(Vcal, CutAtEveryByteGivesZeroAndClearedRecord) {
  const std::string text = crlf({"BEGIN:VCALENDAR", "BEGIN:VEVENT", "SUMMARY:a", "ATTENDEE:x",
                                 "ATTACH:y", "DALARM:20240101T000000;;;z", "END:VEVENT",
                                 "END:VCALENDAR"});
  for (size_t n = 0; n + 2 < text.size(); ++n)
    EXPECT_EQ(decodeAll(text.substr(0, n)), V{"rc 0"}) << n;
}

TEST(Vcal, Rows) {
  const struct {
    V lines;
    std::string want;
  } rows[] = {
      {{"PRIORITY:1"}, "prio = 2\n"},
      {{"PRIORITY:2"}, "prio = 4\n"},
      {{"PRIORITY:3"}, "prio = 8\n"},
      {{"PRIORITY:4"}, "prio = 4\n"},
      {{"PRIORITY:0"}, ""},
      {{"PRIORITY:99999999999999999999999999999"}, "prio = 2147483647\n"},
      {{"SEQUENCE:-99999999999999999999"}, ""},
      {{"SEQUENCE: +12x", "TRANSP:3"}, "chgCount = 12\ntimeTransp = 3\n"},
      {{"CATEGORIES:BUSINESS;FOO;MEETING;BAR"}, "cateIds = 18\ncateExts = FOO,BAR\n"},
      {{"CATEGORIES:A;;B", "CATEGORIES:travel"}, "cateIds = 1024\ncateExts = A,,B\n"},
      {{"CLASS:SECRET", "STATUS:needs action"}, "clsExt = SECRET\nstatId = 1\n"},
      {{"CLASS:"}, "clsId = 1\n"},
      {{"SUMMARY:a;b"}, "summ = a\n"},
      {{"SUMMARY:a\\;b", "SUMMARY:c"}, "summ = c\n"},
      {{"ATTENDEE;RSVP=yes;ROLE=OWNER;TYPE=VCARD:x"},
       "attends :\n{\n\trsvp = KVO_TRUE\n\troleId = 4\n\tstatId = 1\n\texpectId = 1\n"
       "\tinfoFmt = VCARD\n\tinfoLoc = 0\n\tinfoVal = x\n\t.\n}\n"},
      // Parameters are cut at 64 bytes, the TYPE at 12.
      {{"ATTENDEE;ROLE=" + std::string(70, 'R') + ";TYPE=ABCDEFGHIJKLMNOP;VALUE=URL:x"},
       ("attends :\n{\n\trsvp = KVO_FALSE\n\troleId = 0\n\troleExt = " + std::string(63, 'R') +
        "\n\tstatId = 1\n\texpectId = 1\n\tinfoFmt = ABCDEFGHIJK\n\tinfoLoc = 3\n\tinfoVal = x\n\t.\n}\n")},
      {{"DALARM:19970101T000000;PT5M;3;Wake"},
       "dalarm :\n{\n\trunTime = 19970101T000000\n\tsnoozeTime = PT5M\n\trepeatCount = 3\n"
       "\tdispVal = Wake\n}\n"},
      {{"DALARM:19970101T000000;;;Wake;more"},
       "dalarm :\n{\n\trunTime = 19970101T000000\n\trepeatCount = 0\n\tdispVal = Wake\n}\n"},
      // Without VALUE a procedure alarm's location is 0, not its start value 3.
      {{"PALARM:19970101T000000;;;run"},
       "palarm :\n{\n\trunTime = 19970101T000000\n\trepeatCount = 0\n\tprocLoc = 0\n"
       "\tprocName = run\n}\n"},
      {{"MALARM:19970101T000000"},
       "malarm :\n{\n\trunTime = 19970101T000000\n\trepeatCount = 0\n}\n"},
      {{"EXDATE:1997\\;x;19970102", "RRULE:W1 MO #5"},
       "dtExcepts= 1997\\;x;19970102\nrecurRule = W1 MO #5\n"},
      {{"DTSTART:19971332T256161", "DTEND:", "DUE:20240101T000000"},
       "dtDue = 20240101T000000\n"},
      // All-day dates; "T000000" stays a time; floating, Z and offset apart.
      {{"DTSTART:20240301", "DTEND:20240303", "COMPLETED:20240301T000000",
        "DCREATED:20240301T000000Z", "LAST-MODIFIED:20240301T000000+0100"},
       "dtStart = 20240301\ndtEnd = 20240303\ndtDone = 20240301T000000\n"
       "dtCreate = 20240301T000000Z\nmodified = 20240301T000000+0100\n"},
      // A soft break without a leading blank on the next line.
      {{"SUMMARY;ENCODING=QUOTED-PRINTABLE;CHARSET=UTF-8:Caf=C3=A9 =", "au lait"},
       "summ = Caf\xC3\xA9 au lait\n"},
      {{"BEGIN:VALARM", "X-FOO:1", "END:VALARM", "URL;VALUE=URL:http://x"},
       "url = http://x\n"},
  };
  for (const auto &r : rows) EXPECT_EQ(decodeEvent(r.lines), "type = EVENT\n" + r.want) << r.lines[0];
}

TEST(Vcal, ZoneConvertsOnlyDatesWithAZone) {
  setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
  tzset();
  const V lines{"DTSTART:20240701T120000Z", "DTEND:20240101T120000+0300", "COMPLETED:20240101T120000Z",
                "DCREATED:20240101T120000Z", "DUE:20240101T120000Z", "LAST-MODIFIED:20240101T120000Z",
                "AALARM:20240101T120000Z", "DALARM:20240101T120000Z", "MALARM:20240101T120000Z",
                "PALARM:20240101T120000Z", "EXDATE:20240101T120000Z", "RDATE:20240101T120000Z"};
  const std::string got = decodeEvent(lines, VCAL_ZONE_LOCAL);
  EXPECT_NE(got.find("dtStart = 20240701T140000\ndtDue = 20240101T130000\n"
                     "dtEnd = 20240101T100000\ndtDone = 20240101T130000\n"
                     "dtCreate = 20240101T130000\ndtExcepts= 20240101T120000Z\n"
                     "dtRecurs = 20240101T120000Z\n"),
            std::string::npos) << got;
  EXPECT_EQ(got.find("Z\n\t"), std::string::npos) << got;  // no alarm kept its Z
  EXPECT_NE(got.find("modified = 20240101T130000\n"), std::string::npos);
  EXPECT_EQ(decodeEvent({"DTSTART:20240701T120000", "DTEND:20240701"}, VCAL_ZONE_LOCAL),
            "type = EVENT\ndtStart = 20240701T120000\ndtEnd = 20240701\n");
  unsetenv("TZ");
  tzset();
}

}  // namespace
