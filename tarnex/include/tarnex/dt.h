/*
 * tarnex/dt.h - date-time and duration values, ISO 8601 text, version words.
 *
 * KvoDt is eight 32-bit words: year, month (1-12), day (1-31), hour, minute,
 * second, msec, zone. `zone` is the offset from UTC in minutes east, or
 * KVO_DT_NOZONE for a floating (local) time; "Z" reads as zone 0. The unset
 * mark KVO_DT_UNSET in `year` means no date, in `hour` no time of day (a
 * date alone).
 *
 * KvoDur is seven 32-bit words: years, months, weeks, days, hours, minutes,
 * seconds. A negative duration ("-PT15M") holds negative components. The
 * unset mark in `years` and `hours` means unset.
 *
 * A text the readers refuse leaves the value unset (as after _init), so a
 * caller that ignores the result never keeps half a value.
 */
#ifndef TARNEX_DT_H
#define TARNEX_DT_H

#include "tarnex/base.h"
#include "tarnex/str.h"

#ifdef __cplusplus
extern "C" {
#endif

#define KVO_DT_UNSET ((int32_t)0x80000000)
#define KVO_DT_NOZONE ((int32_t)0x80000000)

typedef struct KvoDt {
  int32_t year, month, day, hour, minute, second, msec, zone;
} KvoDt;

typedef struct KvoDur {
  int32_t years, months, weeks, days, hours, minutes, seconds;
} KvoDur;

/* All words to 0 but year and hour (unset) and zone (none). */
TARNEX_API KvoDt *KvoDt_init(KvoDt *dt);
/* All words 0, years and hours unset. */
TARNEX_API KvoDur *KvoDur_init(KvoDur *dur);
/* Not 0 if dt is a real calendar date (1..9999, day within its month)
 * with a valid time of day; with flags bit 0 set, an unset time (a date
 * alone) is allowed too. An unset date gives 0. */
TARNEX_API int32_t KvoDt_chk(const KvoDt *dt, int32_t flags);
/* Converts src (UTC or with an offset) to the process's local time in dst
 * (which may be src); the result is floating. A floating or date-only src
 * is copied unchanged. */
TARNEX_API KvoDt *KvoDt_toLoc(KvoDt *dst, const KvoDt *src);

/* Basic form: "19970101T090000", with "Z" for zone 0, "+hhmm"/"-hhmm" for
 * another offset, a date alone ("19970101") when the time is unset; the
 * empty text for an unset date. Replace str; give str. */
TARNEX_API KvoStr *iso_dt_enc(KvoStr *str, const KvoDt *dt);
/* As iso_dt_enc when zone is KVO_DT_NOZONE. Otherwise the time is written
 * in UTC with "Z": a time with its own zone is converted from it, a
 * floating time is taken to be `zone` minutes east of UTC. */
TARNEX_API KvoStr *iso_dt_encx__(KvoStr *str, const KvoDt *dt, int32_t zone);
/* "P1W", "PT5M", "P1DT2H", "-PT15M", "PT0S" for a zero duration; the empty
 * text for an unset one. */
TARNEX_API KvoStr *iso_dur_enc(KvoStr *str, const KvoDur *dur);

/* Reads basic ("19970101T090000Z") and extended ("1997-01-01T09:00:00+01:00")
 * forms, a date alone, fractional seconds, "Z" or an offset, surrounding
 * blanks. Gives not 0 on success. */
TARNEX_API int32_t iso_dt_dec(const char *text, KvoDt *dt);
TARNEX_API int32_t iso_dur_dec(const char *text, KvoDur *dur);

/* 0x201 -> "2.1"; gives buf (terminated, cut to size). flags: pass 0. */
TARNEX_API char *ver_to_ver_str(uint32_t ver, char *buf, int32_t size, int32_t flags);
/* "2.1" -> 0x201; a text that is not "major[.minor]" gives 0. */
TARNEX_API uint32_t ver_str_to_ver(const char *text);

#ifdef __cplusplus
}
#endif

#endif /* TARNEX_DT_H */
