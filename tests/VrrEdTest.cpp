// The recurrence sets and the rule codec: text to model to text, round
// trips, hand-built models and the misuse reports.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "ostrel/ostrel.h"
#include "tarnex/scratch.hpp"

namespace {

// Collects the texts of kvo_assert__ while it lives.
class Asserts {
 public:
  Asserts() {
    Tarnex_setAssertHandler(
        [](void *ctx, const char *text, const char *, int32_t) {
          static_cast<std::vector<std::string> *>(ctx)->push_back(text);
        },
        &texts, nullptr);
  }
  ~Asserts() { Tarnex_setAssertHandler(nullptr, nullptr, nullptr); }
  std::vector<std::string> texts;
};

std::string encode(const RrItem &item) {
  tarnex::ScratchStr<64> out;
  Vrr_enc(out, &item);
  return std::string(out.view());
}

bool sameItem(const RrItem &a, const RrItem &b) { return std::memcmp(&a, &b, sizeof a) == 0; }

TEST(RrSets, MarksDaysAndTheirLimits) {
  WeekDays w{0, 0};
  WeekDays_addDay(&w, 3, 1);
  WeekDays_addDay(&w, 3, 0);  // again without the mark: kept, unmarked
  uint32_t mark = 1;
  EXPECT_NE(WeekDays_chkDay(&w, 3, &mark), 0u);
  EXPECT_EQ(mark, 0u);
  WeekDays_addWeek(&w, -5, 1);
  WeekDays_addWeek(&w, 5, 0);
  EXPECT_EQ(w.bits, (1u << 3) | (1u << 29) | (1u << 21));
  EXPECT_EQ(w.endms, 1u << 29);
  WeekDays marksOnly{0, 0xFFu};
  EXPECT_TRUE(WeekDays_noo(&marksOnly));

  MonDays m{};
  MonDays_addLast(&m);
  EXPECT_FALSE(MonDays_noo(&m));
  EXPECT_EQ(MonDays_chkDay(&m, -1, nullptr), 0u);  // "LD" is not day -1
  MonDays_addDay(&m, -1, 1);
  MonDays_delLast(&m);
  EXPECT_NE(MonDays_chkDay(&m, -1, &mark), 0u);
  EXPECT_NE(mark, 0u);
  EXPECT_EQ(MonDays_chkLast(&m), 0u);

  YearDays y{};
  YearDays_addDay(&y, 366);
  EXPECT_EQ(y.days[11], 1u << 14);
  YearDays_addDay(&y, 1);
  YearDays_addDay(&y, 40);
  YearDays_setEndm(&y, 40);
  YearDays_delDay(&y, 1);  // not the marked day
  EXPECT_EQ(YearDays_getEndm(&y), 40);
  YearDays_addDay(&y, 1);
  int32_t buf[3] = {};
  EXPECT_EQ(YearDays_listDay(&y, buf, 2), 2);
  EXPECT_EQ(buf[0], 1);
  EXPECT_EQ(buf[1], 40);
  EXPECT_EQ(YearDays_dayNum(&y), 3);
  YearDays_delDay(&y, 40);
  EXPECT_EQ(YearDays_getEndm(&y), 0);
}

TEST(RrSets, ArgumentsOutOfRangeAreReportedAndChangeNothing) {
  Asserts asserts;
  WeekDays w{0, 0};
  MonDays m{};
  YearDays y{};
  WeekDays_addDay(&w, 7, 1);
  WeekDays_addDay(&w, -1, 1);
  WeekDays_addWeek(&w, 0, 1);
  WeekDays_addWeek(&w, 6, 1);
  MonDays_addDay(&m, 32, 1);
  MonDays_addDay(&m, 0, 1);
  YearDays_addDay(&y, 367);
  YearDays_addDay(&y, 0);
  EXPECT_EQ(YearDays_chkDay(&y, 400), 0u);
  EXPECT_TRUE(WeekDays_noo(&w) && w.endms == 0);
  EXPECT_TRUE(MonDays_noo(&m) && m.daysEndm == 0 && m.backEndm == 0);
  EXPECT_TRUE(YearDays_noo(&y));
  EXPECT_EQ(asserts.texts,
            (std::vector<std::string>{"day < 7", "day < 7", "week > -6 && week < 6 && week",
                                      "week > -6 && week < 6 && week",
                                      "day > -32 && day < 32 && day", "day > -32 && day < 32 && day",
                                      "day > 0 && day < 367", "day > 0 && day < 367",
                                      "day > 0 && day < 367"}));
  // A bit for day 0 is no day: reported, and only real days are listed.
  y.days[0] = 0x3;
  int32_t buf[4] = {};
  EXPECT_EQ(YearDays_listDay(&y, buf, 4), 1);
  EXPECT_EQ(buf[0], 1);
  EXPECT_EQ(YearDays_listDay(&y, nullptr, 4), 0);
  EXPECT_EQ(asserts.texts.back(), "buf && size > 0");
}

struct DecodeRow {
  const char *text;
  int32_t rc;
  const char *written;
};

TEST(Vrr, DecodesAndWritesBack) {
  const DecodeRow rows[] = {
      {"w2 mo we$ #10", 1, "W2 MO WE$ #10"},
      {"D1 1200 1800 #3", 1, "D1 #3"},
      {"W1 MO", 1, "W1 MO #2"},
      {"MD1 1 15 LD #0", 1, "MD1 1+ 15+ LD #0"},
      {"MP1 1+ 2- MO TU #3", 1, "MP1 2- 1+ MO TU #3"},
      {"MD1 1- 3 #4", 1, "MD1 1- 3+ #4"},
      {"YM1 6 7 #5 MP1 1+ SU #2", 1, "YM1 6 7 #5 MP1 1+ SU #2"},
      {"YD1 1 100$ #3", 1, "YD1 1 100$ #3"},
      {"W1 WE", 1, "W1 WE #2"},
      {"M60 #5", 1, "M60 #5"},
      {"MO", -251, ""},
      {"XX", 0, ""},
      {"D0", -251, ""},
      {"#3", -251, ""},
      {"W1 WED #4", 1, "W1 #4"},          // a bad word ends the list, "#4" is read on
      {"W1 MO W2 TU", 1, "W1 MO #2"},     // weekly under weekly is not allowed
      {"MP1 1+ #5", 1, "MP1 #5"},          // no weekday: no group
      {"MP1 MO #3", 1, "MP1 #3"},          // no week: no group, count still read
      {"MP1 6+ MO 1+ TU", 1, "MP1 #2"},    // week 6 is passed over and does not count
      {"MD1 0 32 5", 1, "MD1 5+ #2"},
      {"YM1 6- #2", 1, "YM1 6 #2"},
      {"YD1 10$ 20$ #2", 1, "YD1 10 20$ #2"},
      {"D1 19991231T235959", 1, "D1 19991231T235959"},
      {"D1 #0", 1, "D1 #0"},
      {"D1 1999-12-31", 1, "D1 #2"},       // four digits first: a time, dropped
      {"YM1 6 #5 MP1 1+ SU #2 D1 #3", 1, "YM1 6 #5 MP1 1+ SU #2 D1 #3"},
      {"MD1 LD 2$ 3-$\t#1 W1 FR$ 0900 #2 M30", 1, "MD1 3-$ 2+$ LD #1 W1 FR$ #2 M30"},
      {"W99999999999 #99999999999", 1, "W2147483647 #2147483647"},
      {"   ", 0, ""},
      {"1-$-", -251, ""},
  };
  for (const DecodeRow &row : rows) {
    SCOPED_TRACE(row.text);
    RrItem item;
    ASSERT_EQ(Vrr_dec(row.text, &item), row.rc);
    EXPECT_EQ(encode(item), row.written);
    if (row.rc != 1) {
      EXPECT_EQ(item.type, RR_NONE);
      continue;
    }
    // Written text reads back to the same model and is a fixed point.
    RrItem again;
    ASSERT_EQ(Vrr_dec(row.written, &again), 1);
    EXPECT_TRUE(sameItem(item, again));
    EXPECT_EQ(encode(again), row.written);
  }
}

TEST(Vrr, ModelDetails) {
  RrItem item;
  ASSERT_EQ(Vrr_dec("MP1 1+ MO 2+ TU 3+ WE 4+ TH 5+ FR 1- SA 2- SU 3- MO 4- TU #1", &item), 1);
  // Eight groups are kept; the ninth is read (the count behind it still
  // counts) and dropped.
  EXPECT_EQ(item.arule.monthPos.pos[7].bits, (1u << 27) | (1u << 1));
  EXPECT_EQ(encode(item), "MP1 1+ MO 2+ TU 3+ WE 4+ TH 5+ FR 1- SA 2- SU 3- MO #1");
  ASSERT_EQ(Vrr_dec("D1 19991231T235959", &item), 1);
  EXPECT_EQ(item.arule.head.duration, -1);
  EXPECT_EQ(item.endDt.year, 1999);
  ASSERT_EQ(Vrr_dec("YM1 6 #5 MP1 1+ SU #2 D1 #3", &item), 1);
  EXPECT_EQ(item.arule.yearMonth.subType, RR_MONTH_POS);
  EXPECT_EQ(item.arule.yearMonth.sub.monthPos.subType, RR_DAILY);
  EXPECT_EQ(item.arule.yearMonth.sub.monthPos.sub.daily.duration, 3);
  // An empty text leaves the item alone; blanks initialise it.
  item.type = 77;
  EXPECT_EQ(Vrr_dec("", &item), 0);
  EXPECT_EQ(item.type, 77);
  EXPECT_EQ(Vrr_dec(" \t", &item), 0);
  EXPECT_EQ(item.type, RR_NONE);
  EXPECT_EQ(KvoDt_chk(&item.endDt, 1), 0);
}

TEST(Vrr, EncoderAppendsAndRefusesWhatItCannotHold) {
  Asserts asserts;
  RrItem item;
  RrItem_init(&item);
  tarnex::ScratchStr<64> out;
  KvoStr_setStr(out, "RRULE:");
  EXPECT_EQ(Vrr_enc(out, &item), 0);  // RR_NONE: nothing
  ASSERT_EQ(Vrr_dec("W1 MO #3", &item), 1);
  EXPECT_EQ(Vrr_enc(out, &item), 8);
  EXPECT_STREQ(out.c_str(), "RRULE:W1 MO #3");
  // Interval 0: no rule, but a valid end date still goes out behind a blank.
  item.arule.head.interval = 0;
  iso_dt_dec("20001231", &item.endDt);
  EXPECT_EQ(encode(item), " 20001231");
  // Marks on absent days and a mark outside the year-day set are not written.
  RrItem_init(&item);
  item.type = RR_YEAR_DAY;
  item.arule.yearDay.interval = 1;
  item.arule.yearDay.duration = -1;
  YearDays_addDay(&item.arule.yearDay.days, 5);
  YearDays_setEndm(&item.arule.yearDay.days, 9);
  item.arule.yearDay.subType = RR_WEEKLY;
  item.arule.yearDay.sub.weekly = RrWeekly{2, 4, 0x10000u | 0x2u, RR_NONE, {}};
  EXPECT_EQ(encode(item), "YD1 5 W2 MO #4");
  EXPECT_TRUE(asserts.texts.empty());
  // A sub-rule its parent cannot hold, and an unknown kind: reported, not read.
  item.arule.yearDay.subType = RR_YEAR_MONTH;
  EXPECT_EQ(encode(item), "YD1 5");
  item.type = 0x80;
  EXPECT_EQ(encode(item), "");
  EXPECT_EQ(asserts.texts, (std::vector<std::string>{"0", "0"}));
}

TEST(Vrr, OrdinaryRulesNeedNoHeap) {
  RrItem item;
  tarnex::ScratchStr<64> out;
  const uint64_t before = Tarnex_allocCount();
  for (const char *rule : {"YM1 6 #5 MP1 1+ SU #2 D1 #3", "MD1 1 15 LD #0", "W1 MO 19991231T235959"}) {
    ASSERT_EQ(Vrr_dec(rule, &item), 1);
    KvoStr_clear(out);
    Vrr_enc(out, &item);
  }
  EXPECT_EQ(Tarnex_allocCount(), before);
}

}  // namespace
