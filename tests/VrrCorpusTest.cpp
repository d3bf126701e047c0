// Rules of real calendar files, read as the calendar decoder reads them
// (property by property, the first component of RRULE and EXRULE with its
// escapes undone): rules of the vCalendar 1.0 language read and survive
// the round trip, iCalendar rules are no rule, and the models agree with
// another program's reading of the same files.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "ostrel/ostrel.h"
#include "tarnex/scratch.hpp"

namespace {

namespace fs = std::filesystem;

std::vector<std::string> ruleValues(const std::string &data) {
  tarnex::ScratchStrStrm in(data);
  tarnex::ScratchStr<32> name, params, text;
  tarnex::ScratchMemStrm val(512);
  std::vector<std::string> out;
  for (;;) {
    const int32_t rc = VpiDec_getStrm(in, name, params, val);
    if (rc == 0) break;
    if (rc < 0) {  // a line the reader refuses is passed over
      if (KvoLex_skipLine(in, 1) < 0) break;
      continue;
    }
    if (kvo_stricmp(name.c_str(), "RRULE") != 0 && kvo_stricmp(name.c_str(), "EXRULE") != 0)
      continue;
    VpiVal_getCstr(val, text, 1, nullptr);
    out.emplace_back(text.view());
  }
  return out;
}

std::string encode(const RrItem &item) {
  tarnex::ScratchStr<64> out;
  Vrr_enc(out, &item);
  return std::string(out.view());
}

// Another program's reading of the KOrganizer test files, in its own terms:
// kind, interval, count (-1: until), until's date and time, and the days.
struct KdeReading {
  const char *file;
  RrType type;
  int32_t interval, count;
  const char *until;  // "" with a count
};
constexpr KdeReading kKde[] = {
    {"vCalTestCase01", RR_MONTH_POS, 3, 17, ""},
    {"vCalTestCase02", RR_MONTH_DAY, 3, 17, ""},
    {"vCalTestCase03", RR_WEEKLY, 2, 27, ""},
    {"vCalTestCase04", RR_MONTH_DAY, 3, -1, "20060630T000000"},
    {"vCalTestCase05", RR_WEEKLY, 2, -1, "20050630T000000"},
    {"vCalTestCase06", RR_DAILY, 3, 50, ""},
    {"vCalTestCase09", RR_MONTH_POS, 3, 17, ""},
    {"vCalTestCase10", RR_YEAR_MONTH, 2, 13, ""},
    {"vCalTestCase11", RR_YEAR_DAY, 1, 17, ""},
    {"vCalTestCase12", RR_DAILY, 3, -1, "20050630T000000"},
    {"vCalTestCase13", RR_MONTH_POS, 3, -1, "20061231T000000"},
};

// The days each reading names: BYDAY=-2FR, BYMONTHDAY=20, BYDAY=TU,TH, ...
bool sameDays(const std::string &file, const RrItem &item) {
  const RrRule &r = item.arule;
  if (file == "vCalTestCase01") return r.monthPos.pos[0].bits == ((1u << 26) | (1u << 5));
  if (file == "vCalTestCase09") return r.monthPos.pos[0].bits == ((1u << 19) | (1u << 5));
  if (file == "vCalTestCase13") return r.monthPos.pos[0].bits == ((1u << 25) | (1u << 4));
  if (file == "vCalTestCase02" || file == "vCalTestCase04") return r.monthDay.days.days == 1u << 20;
  if (file == "vCalTestCase03") return r.weekly.days == ((1u << 2) | (1u << 4));
  if (file == "vCalTestCase05") return r.weekly.days == ((1u << 1) | (1u << 3) | (1u << 5));
  if (file == "vCalTestCase10") return r.yearMonth.months == 1u << 5;
  if (file == "vCalTestCase11") return YearDays_dayNum(&r.yearDay.days) == 1 && YearDays_chkDay(&r.yearDay.days, 141);
  return true;
}

TEST(VrrCorpus, RealRulesReadAndRoundTrip) {
  const char *root = std::getenv("OSTREL_CORPUS");
  if (root == nullptr || !fs::is_directory(fs::path(root) / "vcalendar")) GTEST_SKIP();
  Ostrel_init();
  std::map<int32_t, int> byResult;
  std::set<std::string> distinct, heads;
  int values = 0, checked = 0;
  for (const auto &entry : fs::directory_iterator(fs::path(root) / "vcalendar")) {
    if (!entry.is_regular_file()) continue;
    std::ifstream f(entry.path(), std::ios::binary);
    const std::string data{std::istreambuf_iterator<char>(f), {}};
    const std::string file = entry.path().filename().string();
    for (const std::string &value : ruleValues(data)) {
      SCOPED_TRACE(file + ": " + value);
      ++values;
      RrItem item;
      const int32_t rc = Vrr_dec(value.c_str(), &item);
      ++byResult[rc];
      // iCalendar parts ("FREQ=...") are no rule of this language; the only
      // malformed ones are mail addresses written where the rule belongs.
      const bool iCalendar = value.find('=') != std::string::npos;
      EXPECT_EQ(rc, iCalendar ? 0 : value.find("MAILTO:") == 0 ? OSTREL_MALFORMED : 1);
      if (rc != 1) continue;
      distinct.insert(value);
      const std::string text = encode(item);
      heads.insert(text.substr(0, text.find_first_of("0123456789")));
      RrItem again;
      ASSERT_EQ(Vrr_dec(text.c_str(), &again), 1);
      EXPECT_EQ(std::memcmp(&item, &again, sizeof item), 0);
      EXPECT_EQ(encode(again), text);
      for (const KdeReading &k : kKde) {
        if (file.find(k.file) == std::string::npos) continue;
        ++checked;
        EXPECT_EQ(item.type, k.type);
        EXPECT_EQ(item.arule.head.interval, k.interval);
        EXPECT_EQ(item.arule.head.duration, k.count);
        tarnex::ScratchStr<32> until;
        iso_dt_enc(until, &item.endDt);
        EXPECT_EQ(until.view(), k.until);
        EXPECT_TRUE(sameDays(k.file, item));
      }
    }
  }
  std::printf("%d rule values: %d read, %d not a vCalendar 1.0 rule, %d malformed; %zu distinct, "
              "%zu heads; %d checked against another reading\n",
              values, byResult[1], byResult[0], byResult[OSTREL_MALFORMED], distinct.size(),
              heads.size(), checked);
  // Every head of the language but "M" occurs in these files.
  EXPECT_EQ(heads, (std::set<std::string>{"D", "W", "MP", "MD", "YM", "YD"}));
  EXPECT_EQ(checked, 11);
  Ostrel_exit();
}

}  // namespace
