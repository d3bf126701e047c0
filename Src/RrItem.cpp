// The recurrence model's bit sets. An argument out of range is the caller's
// fault: it is reported once and the set stays as it was.
#include <cstring>

#include "detail/Object.h"
#include "ostrel/RrItem.h"

namespace {

// Unsigned, as the tests of the ranges are: a negative day fails too.
bool weekDayOk(int32_t day) { return OSTREL_REQUIRE(static_cast<uint32_t>(day) < 7, "day < 7"); }

bool weekOk(int32_t week) {
  return OSTREL_REQUIRE(week > -6 && week < 6 && week != 0, "week > -6 && week < 6 && week");
}

bool monDayOk(int32_t day) {
  return OSTREL_REQUIRE(day > -32 && day < 32 && day != 0, "day > -32 && day < 32 && day");
}

bool yearDayOk(int32_t day) {
  return OSTREL_REQUIRE(static_cast<uint32_t>(day) - 1 < 366, "day > 0 && day < 367");
}

uint32_t weekBit(int32_t week) { return 1u << (week > 0 ? 16 + week : 24 - week); }

void setBit(uint32_t &word, uint32_t bit, bool on) { word = on ? word | bit : word & ~bit; }

uint32_t check(uint32_t bits, uint32_t marks, uint32_t bit, uint32_t *endm) {
  if (endm != nullptr) *endm = marks & bit;
  return bits & bit;
}

// Day words and mark words of a month day: from the start or from the end.
struct MonSlot {
  uint32_t &days, &marks;
  uint32_t bit;
};
MonSlot monSlot(MonDays *set, int32_t day) {
  return day > 0 ? MonSlot{set->days, set->daysEndm, 1u << day}
                 : MonSlot{set->back, set->backEndm, 1u << -day};
}

}  // namespace

extern "C" {

OSTREL_API int32_t WeekDays_noo(const WeekDays *set) { return set->bits == 0; }
OSTREL_API void WeekDays_clear(WeekDays *set) { *set = WeekDays{0, 0}; }

OSTREL_API void WeekDays_addDay(WeekDays *set, int32_t day, int32_t endm) {
  if (!weekDayOk(day)) return;
  set->bits |= 1u << day;
  setBit(set->endms, 1u << day, endm != 0);
}

OSTREL_API void WeekDays_delDay(WeekDays *set, int32_t day) {
  if (!weekDayOk(day)) return;
  set->bits &= ~(1u << day);
  set->endms &= ~(1u << day);
}

OSTREL_API uint32_t WeekDays_chkDay(const WeekDays *set, int32_t day, uint32_t *endm) {
  if (!weekDayOk(day)) return 0;
  return check(set->bits, set->endms, 1u << day, endm);
}

OSTREL_API void WeekDays_addWeek(WeekDays *set, int32_t week, int32_t endm) {
  if (!weekOk(week)) return;
  set->bits |= weekBit(week);
  setBit(set->endms, weekBit(week), endm != 0);
}

OSTREL_API void WeekDays_delWeek(WeekDays *set, int32_t week) {
  if (!weekOk(week)) return;
  set->bits &= ~weekBit(week);
  set->endms &= ~weekBit(week);
}

OSTREL_API uint32_t WeekDays_chkWeek(const WeekDays *set, int32_t week, uint32_t *endm) {
  if (!weekOk(week)) return 0;
  return check(set->bits, set->endms, weekBit(week), endm);
}

OSTREL_API int32_t MonDays_noo(const MonDays *set) { return set->days == 0 && set->back == 0; }

OSTREL_API void MonDays_addDay(MonDays *set, int32_t day, int32_t endm) {
  if (!monDayOk(day)) return;
  const MonSlot s = monSlot(set, day);
  s.days |= s.bit;
  setBit(s.marks, s.bit, endm != 0);
}

OSTREL_API void MonDays_delDay(MonDays *set, int32_t day) {
  if (!monDayOk(day)) return;
  const MonSlot s = monSlot(set, day);
  s.days &= ~s.bit;
  s.marks &= ~s.bit;
}

OSTREL_API uint32_t MonDays_chkDay(const MonDays *set, int32_t day, uint32_t *endm) {
  if (!monDayOk(day)) return 0;
  const MonSlot s = monSlot(const_cast<MonDays *>(set), day);
  return check(s.days, s.marks, s.bit, endm);
}

OSTREL_API void MonDays_addLast(MonDays *set) { set->back |= 1u; }
OSTREL_API void MonDays_delLast(MonDays *set) { set->back &= ~1u; }
OSTREL_API uint32_t MonDays_chkLast(const MonDays *set) { return set->back & 1u; }

OSTREL_API int32_t YearDays_noo(const YearDays *set) {
  for (const uint32_t w : set->days)
    if (w != 0) return 0;
  return 1;
}

OSTREL_API void YearDays_addDay(YearDays *set, int32_t day) {
  if (yearDayOk(day)) set->days[day / 32] |= 1u << (day % 32);
}

OSTREL_API void YearDays_delDay(YearDays *set, int32_t day) {
  if (!yearDayOk(day)) return;
  set->days[day / 32] &= ~(1u << (day % 32));
  if (set->endm == day) set->endm = 0;
}

OSTREL_API uint32_t YearDays_chkDay(const YearDays *set, int32_t day) {
  return yearDayOk(day) ? set->days[day / 32] & (1u << (day % 32)) : 0;
}

OSTREL_API void YearDays_setEndm(YearDays *set, int32_t day) { set->endm = day; }
OSTREL_API int32_t YearDays_getEndm(const YearDays *set) { return set->endm; }

OSTREL_API int32_t YearDays_dayNum(const YearDays *set) {
  int32_t n = 0;
  for (const uint32_t w : set->days)
    if (w != 0) n += u32_bit_num(w);
  return n;
}

OSTREL_API int32_t YearDays_listDay(const YearDays *set, int32_t *buf, int32_t size) {
  if (!OSTREL_REQUIRE(buf != nullptr && size > 0, "buf && size > 0")) return 0;
  // Bit 0 of the first word is no day: reported, and not listed.
  OSTREL_REQUIRE((set->days[0] & 1u) == 0, "!u32_chk_bit(_this->days[0], 0)");
  int32_t n = 0;
  for (int32_t w = 0; w < 12; ++w) {
    for (uint32_t bits = set->days[w]; bits != 0; bits &= bits - 1) {
      const int32_t bit = __builtin_ctz(bits);
      if (w == 0 && bit == 0) continue;
      buf[n++] = w * 32 + bit;
      if (n == size) return n;
    }
  }
  return n;
}

OSTREL_API void RrItem_init(RrItem *item) {
  std::memset(item, 0, sizeof *item);
  KvoDt_init(&item->endDt);
}

OSTREL_API void RrItem_clear(RrItem *item) { RrItem_init(item); }

}  // extern "C"

// The layout is part of the interface: a change of size is a change of ABI.
static_assert(sizeof(RrHead) == 8 && sizeof(RrMinutely) == 8);
static_assert(sizeof(RrDaily) == 20 && sizeof(RrWeekly) == 24);
static_assert(sizeof(RrMonthSub) == 24);
static_assert(sizeof(RrMonthPos) == 8 + 64 + 4 + 24 && sizeof(RrMonthDay) == 8 + 16 + 4 + 24);
static_assert(sizeof(RrYearSub) == 100);
static_assert(sizeof(RrYearMonth) == 8 + 4 + 4 + 100 && sizeof(RrYearDay) == 8 + 52 + 4 + 100);
static_assert(sizeof(RrRule) == 164 && sizeof(RrItem) == 4 + 164 + 32);
