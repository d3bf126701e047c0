/*
 * ostrel/RrItem.h - the recurrence model: one vCalendar 1.0 rule in a
 * fixed-size structure, built from three bit sets.
 *
 * The model only holds a rule; nothing here expands it into dates. RrItem
 * and the sets carry no tag word and own nothing: they live in the caller's
 * storage, and zeroing them (RrItem_init) is all the setting up they need.
 *
 * Layout. Every rule record starts with RrHead (interval, duration). A rule
 * may hold one sub-rule by value, of a kind its own kind allows:
 *
 *   yearly (YM, YD)      -> minutely, daily, weekly, monthly (MP, MD)
 *   monthly (MP, MD)     -> minutely, daily, weekly
 *   daily, weekly        -> minutely
 *   minutely             -> none
 *
 * so each place for a sub-rule is a union of just the variants allowed
 * there (RrDaySub, RrMonthSub, RrYearSub), and the outermost rule is a union
 * of all seven (RrRule). `subType` says which variant its `sub` holds; the
 * `head` member of every union reads the shared interval and duration
 * whatever the variant. An RrItem is therefore as deep as the longest chain
 * allowed: yearly, monthly, weekly or daily, minutely.
 *
 * Bit positions:
 *   WeekDays  bits 0-6 weekdays (0 Sunday .. 6 Saturday); bits 17-21 weeks
 *             1..5 of the month (16 + week); bits 25-29 weeks -1..-5 from
 *             its end (24 - week). `endms` marks the same positions ("$").
 *   RrWeekly.days    bit d weekday d, bit 16 + d its end mark.
 *   MonDays   bit n (1..31) of `days` day n, of `back` day n from the end;
 *             bit 0 of `back` the last day ("LD"), not the same as day -1.
 *   RrYearMonth.months  bit m (1..12) month m, bit 16 + m its end mark.
 *   YearDays  day n (1..366) is bit n % 32 of days[n / 32]; a single marked
 *             day in `endm` (0: none).
 *
 * Arguments out of range are reported through kvo_assert__ (with the
 * texts "day < 7", "week > -6 && week < 6 && week", "day > -32 && day < 32
 * && day", "day > 0 && day < 367") and the call then changes nothing and
 * answers 0. YearDays_listDay reports a set bit 0 of days[0] (no such day)
 * and lists the other days all the same.
 */
#ifndef OSTREL_RRITEM_H
#define OSTREL_RRITEM_H

#include "ostrel/Ostrel.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A rule's kind; one bit each, so kinds combine into masks. */
typedef int32_t RrType;
#define RR_NONE 0x00
#define RR_MINUTELY 0x01   /* "M"  */
#define RR_DAILY 0x02      /* "D"  */
#define RR_WEEKLY 0x04     /* "W"  */
#define RR_MONTH_POS 0x08  /* "MP" */
#define RR_MONTH_DAY 0x10  /* "MD" */
#define RR_YEAR_MONTH 0x20 /* "YM" */
#define RR_YEAR_DAY 0x40   /* "YD" */

/* Number of position groups of a monthly rule by position. */
#define RR_POS_MAX 8

typedef struct WeekDays {
  uint32_t bits;
  uint32_t endms;
} WeekDays;

typedef struct MonDays {
  uint32_t days;
  uint32_t back;
  uint32_t daysEndm;
  uint32_t backEndm;
} MonDays;

typedef struct YearDays {
  uint32_t days[12];
  int32_t endm;
} YearDays;

/* What every rule record starts with. interval: the head's number (a rule
 * with 0 or less is not written); duration: the "#" count, -1 for none. */
typedef struct RrHead {
  int32_t interval;
  int32_t duration;
} RrHead;

typedef struct RrMinutely {
  int32_t interval;
  int32_t duration;
} RrMinutely;

/* The sub-rule of a daily or weekly rule. */
typedef union RrDaySub {
  RrHead head;
  RrMinutely minutely;
} RrDaySub;

typedef struct RrDaily {
  int32_t interval;
  int32_t duration;
  RrType subType;
  RrDaySub sub;
} RrDaily;

typedef struct RrWeekly {
  int32_t interval;
  int32_t duration;
  uint32_t days;
  RrType subType;
  RrDaySub sub;
} RrWeekly;

/* The sub-rule of a monthly rule. */
typedef union RrMonthSub {
  RrHead head;
  RrMinutely minutely;
  RrDaily daily;
  RrWeekly weekly;
} RrMonthSub;

typedef struct RrMonthPos {
  int32_t interval;
  int32_t duration;
  WeekDays pos[RR_POS_MAX];
  RrType subType;
  RrMonthSub sub;
} RrMonthPos;

typedef struct RrMonthDay {
  int32_t interval;
  int32_t duration;
  MonDays days;
  RrType subType;
  RrMonthSub sub;
} RrMonthDay;

/* The sub-rule of a yearly rule. */
typedef union RrYearSub {
  RrHead head;
  RrMinutely minutely;
  RrDaily daily;
  RrWeekly weekly;
  RrMonthPos monthPos;
  RrMonthDay monthDay;
} RrYearSub;

typedef struct RrYearMonth {
  int32_t interval;
  int32_t duration;
  uint32_t months;
  RrType subType;
  RrYearSub sub;
} RrYearMonth;

typedef struct RrYearDay {
  int32_t interval;
  int32_t duration;
  YearDays days;
  RrType subType;
  RrYearSub sub;
} RrYearDay;

/* The outermost rule: any kind. */
typedef union RrRule {
  RrHead head;
  RrMinutely minutely;
  RrDaily daily;
  RrWeekly weekly;
  RrMonthPos monthPos;
  RrMonthDay monthDay;
  RrYearMonth yearMonth;
  RrYearDay yearDay;
} RrRule;

typedef struct RrItem {
  RrType type;  /* kind of arule; RR_NONE: no rule */
  RrRule arule;
  KvoDt endDt;  /* end of the whole rule; unset when there is none */
} RrItem;

/* ---- WeekDays ------------------------------------------------------------ */
/* Not 0 when no weekday or week is set (marks are not looked at). */
OSTREL_API int32_t WeekDays_noo(const WeekDays *set);
OSTREL_API void WeekDays_clear(WeekDays *set);
/* endm not 0 marks the day, 0 unmarks it. */
OSTREL_API void WeekDays_addDay(WeekDays *set, int32_t day, int32_t endm);
OSTREL_API void WeekDays_delDay(WeekDays *set, int32_t day);
/* The day's bit (0 or not 0); *endm (when not null) gets its mark's bit. */
OSTREL_API uint32_t WeekDays_chkDay(const WeekDays *set, int32_t day, uint32_t *endm);
/* Weeks 1..5 from the start of the month, -1..-5 from its end. */
OSTREL_API void WeekDays_addWeek(WeekDays *set, int32_t week, int32_t endm);
OSTREL_API void WeekDays_delWeek(WeekDays *set, int32_t week);
OSTREL_API uint32_t WeekDays_chkWeek(const WeekDays *set, int32_t week, uint32_t *endm);

/* ---- MonDays ------------------------------------------------------------- */
/* Not 0 when no day and no "LD" is set. */
OSTREL_API int32_t MonDays_noo(const MonDays *set);
/* Day 1..31 from the start, -1..-31 from the end. */
OSTREL_API void MonDays_addDay(MonDays *set, int32_t day, int32_t endm);
OSTREL_API void MonDays_delDay(MonDays *set, int32_t day);
OSTREL_API uint32_t MonDays_chkDay(const MonDays *set, int32_t day, uint32_t *endm);
/* "LD", the last day of the month. */
OSTREL_API void MonDays_addLast(MonDays *set);
OSTREL_API void MonDays_delLast(MonDays *set);
OSTREL_API uint32_t MonDays_chkLast(const MonDays *set);

/* ---- YearDays ------------------------------------------------------------ */
OSTREL_API int32_t YearDays_noo(const YearDays *set);
/* Day 1..366 of the year. */
OSTREL_API void YearDays_addDay(YearDays *set, int32_t day);
/* Also clears endm when it names this day. */
OSTREL_API void YearDays_delDay(YearDays *set, int32_t day);
OSTREL_API uint32_t YearDays_chkDay(const YearDays *set, int32_t day);
/* The marked day; not checked, and need not be in the set. */
OSTREL_API void YearDays_setEndm(YearDays *set, int32_t day);
OSTREL_API int32_t YearDays_getEndm(const YearDays *set);
OSTREL_API int32_t YearDays_dayNum(const YearDays *set);
/* The set's days in rising order into buf, at most size; the number written.
 * A null buf or a size below 1 is reported and gives 0. */
OSTREL_API int32_t YearDays_listDay(const YearDays *set, int32_t *buf, int32_t size);

/* ---- RrItem -------------------------------------------------------------- */
/* Zero bytes, then an unset endDt: type RR_NONE, every duration 0. */
OSTREL_API void RrItem_init(RrItem *item);
OSTREL_API void RrItem_clear(RrItem *item);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_RRITEM_H */
