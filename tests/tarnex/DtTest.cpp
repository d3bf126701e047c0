// Dates, durations, their ISO 8601 text and version words.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "tarnex/dt.h"
#include "tarnex/scratch.hpp"

namespace {

using tarnex::ScratchStr;

constexpr int32_t U = KVO_DT_UNSET;
constexpr int32_t NZ = KVO_DT_NOZONE;

KvoDt mk(int32_t y, int32_t mo, int32_t d, int32_t h = U, int32_t mi = 0, int32_t s = 0,
         int32_t ms = 0, int32_t zone = NZ) {
  return KvoDt{y, mo, d, h, mi, s, ms, zone};
}

std::string w(int32_t v) { return v == U ? std::string("-") : std::to_string(v); }
std::string show(const KvoDt &dt) {
  return w(dt.year) + "/" + w(dt.month) + "/" + w(dt.day) + " " + w(dt.hour) + ":" +
         w(dt.minute) + ":" + w(dt.second) + "." + w(dt.msec) + " z" + w(dt.zone);
}
std::string show(const KvoDur &d) {
  return w(d.years) + "Y" + w(d.months) + "M" + w(d.weeks) + "W" + w(d.days) + "D " +
         w(d.hours) + "H" + w(d.minutes) + "M" + w(d.seconds) + "S";
}

// The writers must replace what the string held.
template <typename Write>
std::string written(Write write) {
  ScratchStr<32> s;
  KvoStr_setStr(s, "junk");
  return std::string(write(s.get())->buf);
}
std::string enc(const KvoDt &dt) { return written([&](KvoStr *s) { return iso_dt_enc(s, &dt); }); }
std::string encx(const KvoDt &dt, int32_t zone) {
  return written([&](KvoStr *s) { return iso_dt_encx__(s, &dt, zone); });
}
std::string encDur(const KvoDur &d) {
  return written([&](KvoStr *s) { return iso_dur_enc(s, &d); });
}
std::optional<KvoDt> dec(const char *text) {
  KvoDt dt = mk(7, 7, 7, 7, 7, 7, 7, 7);  // a refusal must reset it (KvoDt_init)
  const int32_t ok = iso_dt_dec(text, &dt);
  if (ok) return dt;
  EXPECT_EQ(show(dt), "-/0/0 -:0:0.0 z-") << "refused \"" << text << "\" must leave it unset";
  return std::nullopt;
}

TEST(KvoDt, ChkTable) {
  const struct { KvoDt dt; int32_t flags, want; } rows[] = {
      {mk(1997, 1, 1, 9), 0, 1}, {mk(1997, 1, 1), 0, 0},  // a date alone needs flag 1
      {mk(1997, 1, 1), 1, 1}, {mk(0, 1, 1), 1, 0}, {mk(1, 1, 1), 1, 1},  // month ends: below
      {mk(9999, 12, 31, 23, 59, 59, 999), 0, 1}, {mk(10000, 1, 1), 1, 0}, {mk(1997, 0, 1), 1, 0},
      {mk(1997, 13, 1), 1, 0}, {mk(1997, 1, 0), 1, 0}, {mk(1997, 1, 1, 24), 1, 0},
      {mk(1997, 1, 1, -1), 1, 0}, {mk(1997, 1, 1, 9, 60), 1, 0}, {mk(1997, 1, 1, 9, 0, 60), 1, 0},
      {mk(1997, 1, 1, 9, 0, 0, 1000), 1, 0}, {mk(1997, 1, 1, 9, 0, 0, -1), 1, 0},
      {mk(1997, 1, 1, 9, 0, 0, 0, 1439), 1, 1}, {mk(1997, 1, 1, 9, 0, 0, 0, -1440), 1, 0},
      {mk(U, 1, 1, 9), 1, 0}, {mk(INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX), 1, 0},
  };
  for (const auto &r : rows) EXPECT_EQ(KvoDt_chk(&r.dt, r.flags) != 0, r.want != 0) << show(r.dt);
}

TEST(IsoDt, DecodesWhatPhonesSend) {
  const struct { const char *text; KvoDt want; } rows[] = {
      {"19970101T090000", mk(1997, 1, 1, 9)}, {"1997-01-01", mk(1997, 1, 1)},
      {"1997-07-16T19:20:30+01:00", mk(1997, 7, 16, 19, 20, 30, 0, 60)},
      {"19970716T192030-0530", mk(1997, 7, 16, 19, 20, 30, 0, -330)},
      {"19970716T192030+01", mk(1997, 7, 16, 19, 20, 30, 0, 60)},
      {"19970716T192030-0000", mk(1997, 7, 16, 19, 20, 30, 0, 0)},
      {"19970716T1920", mk(1997, 7, 16, 19, 20)},
      {"1997-07-16T19:20Z", mk(1997, 7, 16, 19, 20, 0, 0, 0)},
      {"19970716T192030.5", mk(1997, 7, 16, 19, 20, 30, 500)},
      {"19970716T192030,123Z", mk(1997, 7, 16, 19, 20, 30, 123, 0)},
      {"19970716T192030.0456789012345678901234567890", mk(1997, 7, 16, 19, 20, 30, 45)},
      {"  \t19970716T192030Z \r\n", mk(1997, 7, 16, 19, 20, 30, 0, 0)},
  };
  for (const auto &r : rows) {
    const auto got = dec(r.text);
    ASSERT_TRUE(got) << r.text;
    EXPECT_EQ(show(*got), show(r.want)) << r.text;
  }
}

TEST(IsoDt, RefusesNonDates) {
  const char *const bad[] = {
      "", "   ", "1997", "199701", "1997010", "19970101T", "19970101T09", "19970101T0900000",
      "00000101", "19970101T240000",
      "19970101T086000", "19970101T085960", "19970101Z", "19970101+0100", "19970101T090000X",
      "19970101T090000+2400", "19970101T090000+0160", "19970101T090000+1", "19970101T090000+01:",
      "19970101T090000.", "19970101T0900.5", "19970101t090000", "1997-0101", "199701-01",
      "1997-01-01T09:0000", "19970101T090000ZZ", "19970101 090000", "+19970101", "-19970101",
      "1997-1-1", "19970101T090000Zjunk", "W1 MO #5", "#5", "19970101T090000\x01",
      "\xff" "19970101",
  };
  for (const char *text : bad) EXPECT_FALSE(dec(text)) << '"' << text << '"';
  KvoDt dt = mk(1, 1, 1, 1);
  EXPECT_EQ(iso_dt_dec(nullptr, &dt), 0);
  EXPECT_EQ(dt.year, U);
}

TEST(IsoDt, EncodesBasicForm) {
  const struct { KvoDt dt; const char *want; } rows[] = {
      {mk(1997, 1, 1, 9), "19970101T090000"}, {mk(1997, 1, 1, 9, 0, 0, 0, 0), "19970101T090000Z"},
      {mk(1997, 1, 1, 9, 5, 7, 0, 60), "19970101T090507+0100"},
      {mk(1997, 1, 1, 9, 5, 7, 0, -330), "19970101T090507-0530"},
      {mk(1997, 1, 1, 9, 5, 7, 50, NZ), "19970101T090507.050"}, {mk(1997, 1, 1), "19970101"},
      {mk(1997, 1, 1, U, 0, 0, 0, 60), "19970101"},  // a date has no zone to write
      {mk(1, 2, 3, 4, 5, 6), "00010203T040506"}, {mk(U, 1, 1, 9), ""}, {mk(1997, 2, 30, 9), ""},
      {mk(1997, 1, 1, 9, 0, 0, 0, 5000), ""},
  };
  for (const auto &r : rows) EXPECT_EQ(enc(r.dt), r.want) << show(r.dt);
}

// Leap rules and range ends: every month end round trips, the day after is refused.
TEST(IsoDt, MonthEndSweepRoundTrips) {
  const int32_t years[] = {1, 4, 100, 1600, 1900, 1970, 1999, 2000, 2004, 2100, 2400, 9999};
  const int32_t zones[] = {NZ, 0, 59, -720, 1439};
  for (int32_t y : years) {
    for (int32_t m = 1; m <= 12; ++m) {
      const bool leap = (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
      const bool shortMonth = m == 4 || m == 6 || m == 9 || m == 11;
      const int32_t last = m == 2 ? (leap ? 29 : 28) : shortMonth ? 30 : 31;
      std::vector<KvoDt> dts = {mk(y, m, last)};
      for (int32_t z : zones) dts.push_back(mk(y, m, last, 23, 59, 58, 7, z));
      for (const KvoDt &dt : dts) {
        const std::string text = enc(dt);
        const auto back = dec(text.c_str());
        ASSERT_TRUE(back) << text;
        EXPECT_EQ(show(*back), show(dt)) << text;
      }
      const KvoDt after = mk(y, m, last + 1);
      EXPECT_EQ(KvoDt_chk(&after, 1), 0) << show(after);
      char text[32];
      std::snprintf(text, sizeof text, "%04d%02d%02d", y, m, last + 1);
      EXPECT_FALSE(dec(text));
    }
  }
}

TEST(IsoDt, EncxWritesUtc) {
  const struct { KvoDt dt; int32_t zone; const char *want; } rows[] = {
      {mk(1997, 1, 1, 9), NZ, "19970101T090000"},  // plain offsets: EncxAgreesWithGmtime
      {mk(1997, 1, 1, 0, 30), 60, "19961231T233000Z"},  // back over a year
      {mk(2000, 2, 28, 23, 0, 0, 0, -90), 0, "20000229T003000Z"},  // own zone wins
      {mk(1900, 2, 28, 23, 0, 0, 0, -90), 600, "19000301T003000Z"},
      {mk(1997, 1, 1, 9, 0, 0, 250, 0), 120, "19970101T090000.250Z"},
      {mk(1997, 1, 1), 60, "19970101"},
      {mk(1997, 1, 1, 9), 0x7FFFFFFF, "19970101T090000"},  // no such offset
      {mk(1, 1, 1, 0, 30), 60, "00010101T003000+0100"},  // UTC is before year 1
      {mk(9999, 12, 31, 23, 0, 0, 0, -120), 0, "99991231T230000-0200"}, {mk(U, 1, 1, 9), 60, ""},
  };
  for (const auto &r : rows) EXPECT_EQ(encx(r.dt, r.zone), r.want) << show(r.dt) << " @" << r.zone;
}

// Calendar arithmetic checked against gmtime_r over a spread of instants.
TEST(IsoDt, EncxAgreesWithGmtime) {
  for (int64_t t = -62135596800LL; t < 253402300799LL; t += 86400LL * 379 + 3607) {
    const time_t tt = static_cast<time_t>(t);
    struct tm tm {};
    ASSERT_TRUE(gmtime_r(&tt, &tm));
    KvoDt fromSecs;
    ASSERT_TRUE(KvoDt_fromSecs(&fromSecs, t));
    EXPECT_EQ(show(fromSecs), show(mk(tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour,
                                      tm.tm_min, tm.tm_sec, 0, 0)));
    for (int32_t zone : {0, 345, -600}) {
      const time_t shifted = tt + zone * 60;
      struct tm loc {};
      ASSERT_TRUE(gmtime_r(&shifted, &loc));
      const KvoDt own = mk(loc.tm_year + 1900, loc.tm_mon + 1, loc.tm_mday, loc.tm_hour,
                           loc.tm_min, loc.tm_sec, 0, zone);
      if (!KvoDt_chk(&own, 0)) continue;  // the wall clock is outside years 1..9999
      KvoDt floating = own;
      floating.zone = NZ;
      char want[80];
      std::snprintf(want, sizeof want, "%04d%02d%02dT%02d%02d%02dZ", tm.tm_year + 1900,
                    tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec);
      EXPECT_EQ(encx(own, 0), want) << show(own);
      EXPECT_EQ(encx(floating, zone), want) << show(floating);
    }
  }
}

TEST(KvoDt, FromSecsRefusesYearsPast9999) {
  for (int64_t secs : {int64_t{-62135596801}, int64_t{253402300800}, INT64_MAX, INT64_MIN}) {
    KvoDt dt = mk(2000, 1, 1, 0, 0, 0, 0, 0);
    EXPECT_EQ(KvoDt_fromSecs(&dt, secs), 0) << secs;
    EXPECT_EQ(show(dt), "-/0/0 -:0:0.0 z-") << secs;
  }
}

TEST(KvoDt, ToLocUsesProcessZone) {
  const char *old = std::getenv("TZ");
  const std::string saved = old ? old : "";
  setenv("TZ", "UTC-2", 1);  // POSIX sign: two hours east of UTC
  tzset();
  const struct { KvoDt src; const char *want; } rows[] = {
      {mk(1997, 1, 1, 9, 0, 0, 0, 0), "1997/1/1 11:0:0.0 z-"},
      {mk(1997, 12, 31, 23, 30, 0, 5, 0), "1998/1/1 1:30:0.5 z-"},
      {mk(1997, 1, 1, 9, 0, 0, 0, -300), "1997/1/1 16:0:0.0 z-"},
      {mk(1997, 1, 1, 9), "1997/1/1 9:0:0.0 z-"},  // floating: unchanged
      {mk(1997, 1, 1), "1997/1/1 -:0:0.0 z-"},  // date alone: unchanged
      {mk(1997, 2, 30, 9, 0, 0, 0, 0), "1997/2/30 9:0:0.0 z0"},  // unusable: unchanged
  };
  for (const auto &r : rows) {
    KvoDt dst;
    KvoDt_init(&dst);
    EXPECT_EQ(show(*KvoDt_toLoc(&dst, &r.src)), r.want);
    KvoDt same = r.src;
    EXPECT_EQ(show(*KvoDt_toLoc(&same, &same)), r.want) << "in place";
  }
  if (old) setenv("TZ", saved.c_str(), 1);
  else unsetenv("TZ");
  tzset();
}

std::optional<KvoDur> decDur(const char *text) {
  KvoDur d{7, 7, 7, 7, 7, 7, 7};
  if (iso_dur_dec(text, &d)) return d;
  EXPECT_EQ(show(d), "-Y0M0W0D -H0M0S") << "refused \"" << text << "\" must leave it unset";
  return std::nullopt;
}

TEST(IsoDur, DecodesToNormalForm) {
  const struct { const char *text; KvoDur want; const char *back; } rows[] = {
      {"P1DT2H", {0, 0, 0, 1, 2, 0, 0}, "P1DT2H"}, {"-PT15M", {0, 0, 0, 0, 0, -15, 0}, "-PT15M"},
      {"+P1D", {0, 0, 0, 1, 0, 0, 0}, "P1D"}, {"P0D", {0, 0, 0, 0, 0, 0, 0}, "PT0S"},
      {"-P0D", {0, 0, 0, 0, 0, 0, 0}, "PT0S"}, {"PT1H30M5S", {0, 0, 0, 0, 1, 30, 5}, "PT1H30M5S"},
      {"PT90M", {0, 0, 0, 0, 1, 30, 0}, "PT1H30M"}, {"P14D", {0, 0, 2, 0, 0, 0, 0}, "P2W"},
      {"P2WT1H", {0, 0, 0, 14, 1, 0, 0}, "P14DT1H"}, {"P1M14D", {0, 1, 0, 14, 0, 0, 0}, "P1M14D"},
      {"P1Y13M", {2, 1, 0, 0, 0, 0, 0}, "P2Y1M"},
      {"PT24H", {0, 0, 0, 0, 24, 0, 0}, "PT24H"},  // not a day
      {" -P1Y2M3DT4H5M6S\t", {-1, -2, 0, -3, -4, -5, -6}, "-P1Y2M3DT4H5M6S"},
      {"PT2147483647S", {0, 0, 0, 0, 596523, 14, 7}, "PT596523H14M7S"},
      {"P000000000000000001D", {0, 0, 0, 1, 0, 0, 0}, "P1D"},
  };
  for (const auto &r : rows) {
    const auto got = decDur(r.text);
    ASSERT_TRUE(got) << r.text;
    EXPECT_EQ(show(*got), show(r.want)) << r.text;
    EXPECT_EQ(encDur(*got), r.back) << r.text;
  }
}

TEST(IsoDur, RefusesBadText) {
  const char *const bad[] = {
      "", "P", "PT", "-P", "P1DT", "T5M", "5M", "P5", "PT5", "P1H", "PT1D", "P1D1D", "P1M1Y",
      "PT1S1M", "P-1D", "--P1D", "+-P1D", "P1.5D", "PT1,5S", "p1d", "P1DX", "P1D T1H",
      "P2147483648D", "PT99999999999999999999S", "P2147483647Y2147483647M", "PT5M#",
  };
  for (const char *text : bad) EXPECT_FALSE(decDur(text)) << '"' << text << '"';
  KvoDur d{1, 1, 1, 1, 1, 1, 1};
  EXPECT_EQ(iso_dur_dec(nullptr, &d), 0);
  EXPECT_EQ(d.years, U);
}

TEST(IsoDur, EncodesCallerValues) {
  const struct { KvoDur dur; const char *want; } rows[] = {
      {{U, 0, 0, 0, U, 0, 0}, ""}, {{0, 0, 0, 0, 0, 0, 0}, "PT0S"},
      {{U, 0, 0, 0, 0, 5, 0}, "PT5M"},  // one unset word counts as 0
      {{0, 0, 0, 0, U, 5, 0}, "PT5M"}, {{0, 0, 1, 0, 0, 0, 0}, "P1W"},
      {{0, 0, 1, 1, 0, 0, 0}, "P8D"}, {{0, 0, 0, 7, 0, 0, 0}, "P1W"},
      {{0, 0, 0, 0, 0, 0, -3600}, "-PT1H"},
      {{0, 0, 0, 1, -1, 0, 0}, ""},  // measures of both signs have no ISO text
      {{0, 0, 0, 0, INT32_MAX, INT32_MAX, 0}, ""},  // its hours do not fit
      {{INT32_MAX, 11, 0, 0, 0, 0, 0}, "P2147483647Y11M"},
  };
  for (const auto &r : rows) EXPECT_EQ(encDur(r.dur), r.want) << show(r.dur);
}

TEST(Version, WordsAndText) {
  const std::pair<uint32_t, const char *> rows[] = {
      {0x201, "2.1"}, {0x100, "1.0"}, {0x300, "3.0"}, {0x20A, "2.10"}, {0x2FF, "2.255"}};
  for (const auto &[ver, text] : rows) {
    char buf[16] = "xxxxxxxxxxxxxxx";
    EXPECT_STREQ(ver_to_ver_str(ver, buf, sizeof buf, 0), text);
    EXPECT_EQ(ver_str_to_ver(text), ver) << text;
  }
  char small[3] = {'x', 'x', 'x'};
  EXPECT_STREQ(ver_to_ver_str(0x201, small, sizeof small, 0), "2.");
  EXPECT_EQ(ver_to_ver_str(0x201, small, 0, 0), small);
  EXPECT_EQ(ver_str_to_ver(" 2.1 "), 0x201u);
  EXPECT_EQ(ver_str_to_ver("3"), 0x300u);
  for (const char *bad : {"", "2.", ".1", "2.1.1", "v2.1", "2.256", "2.-1", "16777216.0", "2,1"})
    EXPECT_EQ(ver_str_to_ver(bad), 0u) << bad;
  EXPECT_EQ(ver_str_to_ver(nullptr), 0u);
}

}  // namespace
