// Internal calendar arithmetic shared by the date values and their ISO text.
//
// Proleptic Gregorian days counted from 1970-01-01, in 64 bits so that any
// pair of 32-bit words can be combined without overflow. It never consults
// the process's time zone: only KvoDt_toLoc does that, on purpose.
#ifndef TARNEX_SRC_DT_CIVIL_H
#define TARNEX_SRC_DT_CIVIL_H

#include <cstdint>

#include "tarnex/dt.h"

namespace tarnex::civil {

inline constexpr int32_t kMinYear = 1;
inline constexpr int32_t kMaxYear = 9999;
// An offset of a full day or more is no zone any clock shows.
inline constexpr int32_t kMaxZoneMinutes = 23 * 60 + 59;

inline constexpr bool isLeap(int64_t y) { return y % 4 == 0 && (y % 100 != 0 || y % 400 == 0); }

inline constexpr int32_t daysInMonth(int64_t y, int32_t m) {
  constexpr int8_t kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (m < 1 || m > 12) return 0;
  return kDays[m - 1] + (m == 2 && isLeap(y) ? 1 : 0);
}

inline constexpr int64_t floorDiv(int64_t a, int64_t b) {
  int64_t q = a / b;
  return (a % b != 0 && (a < 0) != (b < 0)) ? q - 1 : q;
}

// The year is taken to start in March, so that the leap day falls at the
// end of it and the month lengths before it follow the 153-days-per-five-
// months pattern; 400-year eras make the count exact.
inline constexpr int64_t daysFromCivil(int64_t y, int32_t m, int32_t d) {
  y -= m <= 2 ? 1 : 0;
  const int64_t era = floorDiv(y, 400);
  const int64_t yoe = y - era * 400;
  const int64_t mp = m > 2 ? m - 3 : m + 9;
  const int64_t doy = (153 * mp + 2) / 5 + d - 1;
  const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468;
}

struct Ymd {
  int64_t y;
  int32_t m, d;
};

inline constexpr Ymd civilFromDays(int64_t days) {
  const int64_t z = days + 719468;
  const int64_t era = floorDiv(z, 146097);
  const int64_t doe = z - era * 146097;
  const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const int64_t mp = (5 * doy + 2) / 153;
  const int32_t d = static_cast<int32_t>(doy - (153 * mp + 2) / 5 + 1);
  const int32_t m = static_cast<int32_t>(mp < 10 ? mp + 3 : mp - 9);
  return {yoe + era * 400 + (m <= 2 ? 1 : 0), m, d};
}

static_assert(daysFromCivil(1970, 1, 1) == 0);
static_assert(daysFromCivil(2000, 3, 1) == 11017);
static_assert(daysFromCivil(1, 1, 1) == -719162);
static_assert(civilFromDays(-719162).y == 1 && civilFromDays(-719162).m == 1);
static_assert(civilFromDays(11016).m == 2 && civilFromDays(11016).d == 29);

// Seconds since 1970-01-01 00:00 of the wall-clock fields, zone ignored.
// The caller has checked the fields (KvoDt_chk), so the words are small.
inline int64_t wallSeconds(const KvoDt &dt) {
  return daysFromCivil(dt.year, dt.month, dt.day) * 86400 + int64_t{dt.hour} * 3600 +
         int64_t{dt.minute} * 60 + dt.second;
}

// Sets the calendar and clock words of dt from wall seconds; msec and zone
// stay. Gives false when the year leaves 1..9999 (dt is then not touched).
inline bool setWallSeconds(KvoDt *dt, int64_t secs) {
  const int64_t days = floorDiv(secs, 86400);
  const int64_t rest = secs - days * 86400;
  const Ymd ymd = civilFromDays(days);
  if (ymd.y < kMinYear || ymd.y > kMaxYear) return false;
  dt->year = static_cast<int32_t>(ymd.y);
  dt->month = ymd.m;
  dt->day = ymd.d;
  dt->hour = static_cast<int32_t>(rest / 3600);
  dt->minute = static_cast<int32_t>(rest / 60 % 60);
  dt->second = static_cast<int32_t>(rest % 60);
  return true;
}

}  // namespace tarnex::civil

#endif  // TARNEX_SRC_DT_CIVIL_H
