// Date values (unset state, checks, local time) and version words.
#include <climits>
#include <cstdio>
#include <ctime>

#include "dt_civil.h"
#include "tarnex/dt.h"

namespace {

namespace civil = tarnex::civil;

bool inRange(int32_t v, int32_t lo, int32_t hi) { return v >= lo && v <= hi; }

bool dateOk(const KvoDt &dt) {
  return inRange(dt.year, civil::kMinYear, civil::kMaxYear) && inRange(dt.month, 1, 12) &&
         inRange(dt.day, 1, civil::daysInMonth(dt.year, dt.month));
}

// A leap second (:60) is refused: the arithmetic here, and every reader of
// these values, counts 60 seconds to the minute.
bool timeOk(const KvoDt &dt) {
  return inRange(dt.hour, 0, 23) && inRange(dt.minute, 0, 59) && inRange(dt.second, 0, 59) &&
         inRange(dt.msec, 0, 999) &&
         (dt.zone == KVO_DT_NOZONE ||
          inRange(dt.zone, -civil::kMaxZoneMinutes, civil::kMaxZoneMinutes));
}

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// Digits into *out, refusing a value above `max`; gives the position after
// them, or null when there is no digit or the value is too large.
const char *readBounded(const char *p, uint32_t max, uint32_t *out) {
  if (*p < '0' || *p > '9') return nullptr;
  uint32_t v = 0;
  for (; *p >= '0' && *p <= '9'; ++p) {
    v = v * 10 + static_cast<uint32_t>(*p - '0');
    if (v > max) return nullptr;  // bounded: v stays far below UINT32_MAX / 10
  }
  *out = v;
  return p;
}

}  // namespace

extern "C" {

TARNEX_API KvoDt *KvoDt_init(KvoDt *dt) {
  if (!dt) {
    kvo_assert__("dt", __FILE__, __LINE__);
    return dt;
  }
  *dt = KvoDt{KVO_DT_UNSET, 0, 0, KVO_DT_UNSET, 0, 0, 0, KVO_DT_NOZONE};
  return dt;
}

TARNEX_API KvoDur *KvoDur_init(KvoDur *dur) {
  if (!dur) {
    kvo_assert__("dur", __FILE__, __LINE__);
    return dur;
  }
  *dur = KvoDur{KVO_DT_UNSET, 0, 0, 0, KVO_DT_UNSET, 0, 0};
  return dur;
}

TARNEX_API int32_t KvoDt_chk(const KvoDt *dt, int32_t flags) {
  if (!dt) {
    kvo_assert__("dt", __FILE__, __LINE__);
    return 0;
  }
  if (!dateOk(*dt)) return 0;
  if (dt->hour == KVO_DT_UNSET) return (flags & 1) ? 1 : 0;
  return timeOk(*dt) ? 1 : 0;
}

TARNEX_API int32_t KvoDt_fromSecs(KvoDt *dt, int64_t secs) {
  if (!dt) {
    kvo_assert__("dt", __FILE__, __LINE__);
    return 0;
  }
  KvoDt_init(dt);
  // Far beyond 9999 either way; bounds the day count before any arithmetic.
  constexpr int64_t kLimit = int64_t{4000000} * 86400;
  if (secs < -kLimit || secs > kLimit) return 0;
  KvoDt out = *dt;
  out.zone = 0;
  if (!civil::setWallSeconds(&out, secs)) return 0;
  *dt = out;
  return 1;
}

TARNEX_API KvoDt *KvoDt_toLoc(KvoDt *dst, const KvoDt *src) {
  if (!dst || !src) {
    kvo_assert__("dst && src", __FILE__, __LINE__);
    return dst;
  }
  const KvoDt in = *src;  // dst may be src
  *dst = in;
  if (in.zone == KVO_DT_NOZONE || !KvoDt_chk(&in, 0)) return dst;

  const int64_t utc = civil::wallSeconds(in) - int64_t{in.zone} * 60;
  const auto t = static_cast<time_t>(utc);
  if (static_cast<int64_t>(t) != utc) return dst;  // a 32-bit time_t cannot hold it
  struct tm tm {};
  if (!localtime_r(&t, &tm)) return dst;
  dst->year = tm.tm_year + 1900;
  dst->month = tm.tm_mon + 1;
  dst->day = tm.tm_mday;
  dst->hour = tm.tm_hour;
  dst->minute = tm.tm_min;
  dst->second = tm.tm_sec;
  dst->zone = KVO_DT_NOZONE;
  return dst;
}

TARNEX_API char *ver_to_ver_str(uint32_t ver, char *buf, int32_t size, int32_t flags) {
  if (!buf || size <= 0) {
    if (!buf && size > 0) kvo_assert__("buf", __FILE__, __LINE__);
    return buf;
  }
  std::snprintf(buf, static_cast<size_t>(size), "%u.%u", ver >> 8, ver & 0xFFu);
  return buf;
}

TARNEX_API uint32_t ver_str_to_ver(const char *text) {
  if (!text) return 0;
  const char *p = text;
  while (isBlank(*p)) ++p;
  uint32_t major = 0, minor = 0;
  // The major number fills the bits above the minor's byte.
  p = readBounded(p, 0xFFFFFFu, &major);
  if (!p) return 0;
  if (*p == '.') {
    p = readBounded(p + 1, 0xFFu, &minor);
    if (!p) return 0;
  }
  while (isBlank(*p)) ++p;
  return *p ? 0 : (major << 8 | minor);
}

}  // extern "C"
