#include "RuleText.h"

#include <array>

#include "Describe.h"
#include "ostrel/ostrel.h"

namespace ostrel_tool {
namespace {

constexpr std::array<std::string_view, 7> kDays{"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                 "Thursday", "Friday", "Saturday"};

std::string joined(const std::string &a, const std::string &b, const char *sep = ", ") {
  return a.empty() ? b : a + sep + b;
}

// "every day", "every 3 days".
std::string every(int32_t interval, const char *unit) {
  return interval == 1 ? std::string("every ") + unit
                       : "every " + std::to_string(interval) + " " + unit + "s";
}

// Day 1..31, or days from the end as "2nd last".
std::string ordinal(int32_t n) {
  const int32_t a = n < 0 ? -n : n;
  const char *suffix = (a % 100 >= 11 && a % 100 <= 13) ? "th"
                       : a % 10 == 1                    ? "st"
                       : a % 10 == 2                    ? "nd"
                       : a % 10 == 3                    ? "rd"
                                                        : "th";
  if (n == -1) return "last";
  return std::to_string(a) + suffix + (n < 0 ? " last" : "");
}

std::string weekdays(uint32_t bits) {
  std::string s;
  for (int d = 0; d < 7; ++d)
    if (bits & (1u << d)) s = joined(s, std::string(kDays[static_cast<size_t>(d)]));
  return s;
}

std::string positions(const RrMonthPos &r) {
  std::string groups;
  for (const WeekDays &g : r.pos) {
    if (WeekDays_noo(&g)) continue;
    std::string weeks;
    for (int32_t w = -5; w <= 5; ++w)
      if (w != 0 && WeekDays_chkWeek(&g, w, nullptr)) weeks = joined(weeks, ordinal(w));
    groups = joined(groups, "the " + weeks + " " + weekdays(g.bits), "; ");
  }
  return groups;
}

std::string monthDays(const MonDays &m) {
  std::string s;
  for (int32_t d = -31; d <= 31; ++d)
    if (d != 0 && MonDays_chkDay(&m, d, nullptr)) s = joined(s, ordinal(d));
  if (MonDays_chkLast(&m)) s = joined(s, "last day");
  return s;
}

std::string numbers(const RrYearDay &r) {
  std::string s;
  for (int32_t d = 1; d <= 366; ++d)
    if (YearDays_chkDay(&r.days, d)) s = joined(s, std::to_string(d));
  return s;
}

std::string months(uint32_t bits) {
  static constexpr std::array<std::string_view, 12> kMonths{
      "January", "February", "March",     "April",   "May",      "June",
      "July",    "August",   "September", "October", "November", "December"};
  std::string s;
  for (int m = 1; m <= 12; ++m)
    if (bits & (1u << m)) s = joined(s, std::string(kMonths[static_cast<size_t>(m - 1)]));
  return s;
}

std::string withCount(std::string s, const RrHead &head) {
  if (head.duration == -1) return s;
  if (head.duration == 0) return s + ", forever";
  return s + (head.duration == 1 ? ", once" : ", " + std::to_string(head.duration) + " times");
}

template <class Rule>
std::string withSub(std::string s, const Rule &r);

// One rule of the union U (RrRule or the union of a sub-rule's place), the
// member read being the one `type` names; a kind U has no place for reads
// as no rule.
template <class U>
std::string reading(RrType type, const U &r) {
  if constexpr (requires { r.minutely; })
    if (type == RR_MINUTELY) return withCount(every(r.minutely.interval, "minute"), r.head);
  if constexpr (requires { r.daily; })
    if (type == RR_DAILY) return withSub(every(r.daily.interval, "day"), r.daily);
  if constexpr (requires { r.weekly; })
    if (type == RR_WEEKLY) {
      std::string s = every(r.weekly.interval, "week");
      if (r.weekly.days & 0x7F) s += " on " + weekdays(r.weekly.days);
      return withSub(s, r.weekly);
    }
  if constexpr (requires { r.monthPos; })
    if (type == RR_MONTH_POS) {
      std::string s = every(r.monthPos.interval, "month");
      if (const std::string p = positions(r.monthPos); !p.empty()) s += " on " + p;
      return withSub(s, r.monthPos);
    }
  if constexpr (requires { r.monthDay; })
    if (type == RR_MONTH_DAY) {
      std::string s = every(r.monthDay.interval, "month");
      if (const std::string d = monthDays(r.monthDay.days); !d.empty()) s += " on the " + d;
      return withSub(s, r.monthDay);
    }
  if constexpr (requires { r.yearMonth; })
    if (type == RR_YEAR_MONTH) {
      std::string s = every(r.yearMonth.interval, "year");
      if (const std::string m = months(r.yearMonth.months); !m.empty()) s += " in " + m;
      return withSub(s, r.yearMonth);
    }
  if constexpr (requires { r.yearDay; })
    if (type == RR_YEAR_DAY) {
      std::string s = every(r.yearDay.interval, "year");
      if (const std::string d = numbers(r.yearDay); !d.empty()) s += " on days " + d;
      return withSub(s, r.yearDay);
    }
  return "no rule";
}

template <class Rule>
std::string withSub(std::string s, const Rule &r) {
  s = withCount(std::move(s), RrHead{r.interval, r.duration});
  if (r.subType != RR_NONE) s += "; within it " + reading(r.subType, r.sub);
  return s;
}

}  // namespace

std::string ruleReading(std::string_view rule) {
  const std::string text(rule);
  RrItem item;
  RrItem_init(&item);
  const int32_t rc = Vrr_dec(text.c_str(), &item);
  if (rc < 0) return "no rule head the codec reads (" + std::to_string(rc) + ")";
  if (rc == 0 || item.type == RR_NONE) return "no vCalendar 1.0 rule the codec reads";
  std::string s = reading(item.type, item.arule);
  if (const std::string until = dateText(item.endDt); !until.empty()) s += ", until " + until;
  return s;
}

}  // namespace ostrel_tool
