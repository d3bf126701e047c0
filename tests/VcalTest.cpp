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

namespace {

// A record written with the given settings, as text.
std::string encode(CalItem *item, uint32_t ver = 0, const char *luid = nullptr,
                   int32_t zone = VCAL_ZONE_ASIS, const VpiEncOpts *opts = nullptr) {
  tarnex::ScratchMemStrm out(0);
  EXPECT_EQ(Vcal_encx(out, item, ver, 0, luid, zone, opts), 0);
  return memText(out);
}

struct Item {
  CalItem c;
  Item() { CalItem_new(&c); }
  ~Item() { CalItem_delete(&c); }
};

TEST(Vcal, EncodeWholeEvent) {
  Item i;
  i.c.type = CAL_TYPE_EVENT;
  caltest::setW(&i.c.summ, "Team");
  i.c.clsId = 2;
  i.c.cateIds = 0x12;
  i.c.dtStart = caltest::dt("19970101T090000");
  i.c.dalarm.runTime = caltest::dt("19970101T084500");
  i.c.dalarm.snoozeTime = caltest::dur("PT5M");
  i.c.dalarm.repeatCount = 3;
  caltest::setW(&i.c.dalarm.dispVal, "Wake");
  KvoStr_setStr(&i.c.recurRule, "W1 MO #5");
  const std::string text = encode(&i.c);
  EXPECT_EQ(text, crlf({"BEGIN:VCALENDAR", "VERSION:1.0", "BEGIN:VEVENT", "SUMMARY:Team",
                        "CLASS:PRIVATE", "CATEGORIES:BUSINESS;MEETING", "DTSTART:19970101T090000",
                        "DALARM:19970101T084500;PT5M;3;Wake", "RRULE:W1 MO #5", "END:VEVENT",
                        "END:VCALENDAR"}));
  // Read back equal, every absent member at its start value.
  Item back;
  tarnex::ScratchStrStrm in(text);
  EXPECT_EQ(Vcal_dec(in, &back.c, nullptr), 1);
  EXPECT_EQ(caltest::trace(&back.c), caltest::trace(&i.c));
}

TEST(Vcal, EncodeRows) {
  const struct {
    void (*set)(CalItem &);
    V lines;  // the lines between BEGIN:VTODO and END:VTODO
  } rows[] = {
      {[](CalItem &) {}, {}},
      {[](CalItem &c) { c.chgCount = 0; c.timeTransp = -1; }, {"SEQUENCE:0"}},
      {[](CalItem &c) { c.clsId = 2; KvoStr_setStr(&c.clsExt, "X"); c.statId = 3; }, {"CLASS:X", "STATUS:UNKNOWN"}},
      {[](CalItem &c) { KvoStr_setStr(&c.cateExts, "FOO,BAR"); }, {"CATEGORIES:FOO,BAR"}},
      {[](CalItem &c) { c.cateIds = 1; KvoStr_setStr(&c.cateExts, "FOO"); c.prio = 3; }, {"CATEGORIES:APPOINTMENT;FOO", "PRIORITY:3"}},
      {[](CalItem &c) { c.attends = CalAttend_new(); }, {"ATTENDEE;RSVP=NO:"}},
      {[](CalItem &c) { c.palarm.runTime = caltest::dt("20240101T000000Z"); }, {"PALARM;VALUE=URL:20240101T000000Z;;;"}},
      {[](CalItem &c) {
         c.malarm.runTime = caltest::dt("20240101");
         caltest::setW(&c.malarm.mailAddr, "a@b");
         caltest::setW(&c.malarm.mailNote, "n;x");
       }, {"MALARM:20240101;;;a@b;n\\;x"}},
      {[](CalItem &c) {
         std::memcpy(c.aalarm.audioFmt, "ABCDEFGHIJKL", 12);  // no end byte: read 12 only
         c.aalarm.runTime = caltest::dt("20240101T000000");
         c.aalarm.repeatCount = 2;
       }, {"AALARM;TYPE=ABCDEFGHIJKL:20240101T000000;;2;"}},
      {[](CalItem &c) { KvoStr_setStr(&c.dtExcepts, "a\\b;c"); KvoStr_setStr(&c.rscExt, "X;Y"); c.rscIds = 0x80; },
       {"EXDATE:a\\\\b;c", "RESOURCES:TV;X;Y"}},
  };
  for (const auto &r : rows) {
    Item i;
    i.c.type = CAL_TYPE_TODO;
    r.set(i.c);
    V all{"BEGIN:VCALENDAR", "VERSION:1.0", "BEGIN:VTODO"};
    all.insert(all.end(), r.lines.begin(), r.lines.end());
    all.insert(all.end(), {"END:VTODO", "END:VCALENDAR"});
    EXPECT_EQ(encode(&i.c), crlf(all));
  }
}

TEST(Vcal, EncodeSettings) {
  Item i;
  i.c.type = CAL_TYPE_EVENT;
  caltest::setW(&i.c.summ, "a;b");
  i.c.dtStart = caltest::dt("20240101T120000");
  i.c.dtEnd = caltest::dt("20240101");
  i.c.dalarm.runTime = caltest::dt("20240101T113000");
  caltest::setW(&i.c.dalarm.dispVal, "x;y");
  VpiEncOpts raw{};
  raw.csKeyed = raw.encKeyed = 1;
  raw.maxLine = -1;
  raw.escape = 0;
  // Escape 0 leaves the summary as it is, alarm components are escaped;
  // zone 60 writes floating times in UTC, a date alone as it is.
  EXPECT_EQ(encode(&i.c, 0x200, "7", 60, &raw),
            crlf({"BEGIN:VCALENDAR", "VERSION:2.0", "BEGIN:VEVENT", "X-IRMC-LUID:7", "SUMMARY:a;b",
                  "DTSTART:20240101T110000Z", "DTEND:20240101", "DALARM:20240101T103000Z;;;x\\;y",
                  "END:VEVENT", "END:VCALENDAR"}));
  EXPECT_EQ(encode(&i.c, 0, "").find("LUID"), std::string::npos);
}

// A memory stream whose writes fail once `budget` bytes are written.
struct FailStrm {
  IStrm base;
  IStrm *mem;
  int32_t budget;
  static FailStrm &self(IStrm *s) { return *reinterpret_cast<FailStrm *>(s); }
  static int32_t write(IStrm *s, const void *buf, int32_t n) {
    FailStrm &f = self(s);
    if (n > f.budget) return -7;
    f.budget -= n;
    return IStrm_write(f.mem, buf, n);
  }
  static int32_t putc(IStrm *s, int32_t c) {
    const char b = static_cast<char>(c);
    return write(s, &b, 1) == 1 ? c : -7;
  }
};
const IStrmOps kFailOps = {
    [](IStrm *) {},
    FailStrm::putc,
    [](IStrm *s) { return IStrm_getc(FailStrm::self(s).mem); },
    [](IStrm *s, int32_t c) { return IStrm_ungetc(FailStrm::self(s).mem, c); },
    [](IStrm *s, void *b, int32_t n) { return IStrm_read(FailStrm::self(s).mem, b, n); },
    FailStrm::write,
    [](IStrm *s, uint32_t lo, int32_t hi, int32_t w) { return FailStrm::self(s).mem->ops->seek(FailStrm::self(s).mem, lo, hi, w); },
    [](IStrm *s) { return IStrm_tell(FailStrm::self(s).mem); },
    [](IStrm *s) { return IStrm_size(FailStrm::self(s).mem); },
    [](IStrm *s) { return IStrm_clear(FailStrm::self(s).mem); },
    [](IStrm *, const uint8_t **) -> int64_t { return -1; },
};

TEST(Vcal, StreamFailingAtEveryByte) {
  Item i;
  caltest::fill(&i.c, 2);
  const std::string whole = encode(&i.c);
  for (size_t n = 0; n < whole.size(); ++n) {
    tarnex::ScratchMemStrm mem(0);
    FailStrm f{{&kFailOps}, mem, static_cast<int32_t>(n)};
    ASSERT_EQ(Vcal_encx(&f.base, &i.c, 0, 0, nullptr, VCAL_ZONE_ASIS, nullptr), -7) << n;
    EXPECT_EQ(whole.compare(0, IStrm_size(mem), memText(mem)), 0) << n;
  }
}

TEST(Vcal, RoundTrips) {
  for (int32_t prio : {2, 4, 8}) {
    Item i, back;
    caltest::fill(&i.c, prio);
    const std::string text = encode(&i.c);
    tarnex::ScratchStrStrm in(text);
    ASSERT_EQ(Vcal_dec(in, &back.c, nullptr), 1);
    EXPECT_EQ(caltest::trace(&back.c), caltest::trace(&i.c));
    EXPECT_EQ(encode(&back.c), text);  // a fixed point after one pass
  }
  // Pinned asymmetries: a backslash in EXDATE doubles each pass; an unknown
  // category holding ";" comes back split.
  Item i, back;
  i.c.type = CAL_TYPE_EVENT;
  KvoStr_setStr(&i.c.dtExcepts, "a\\b");
  KvoStr_setStr(&i.c.cateExts, "X;Y");
  const std::string text = encode(&i.c);
  tarnex::ScratchStrStrm in(text);
  ASSERT_EQ(Vcal_dec(in, &back.c, nullptr), 1);
  EXPECT_STREQ(KvoStr_buf(&back.c.dtExcepts), "a\\\\b");
  EXPECT_STREQ(KvoStr_buf(&back.c.cateExts), "X,Y");
}

}  // namespace
