/*
 * tarnex/dt.h - date-time and duration values, ISO 8601 text, version words.
 *
 * KvoDt is eight 32-bit words: year, month (1-12), day (1-31), hour, minute,
 * second, msec, zone. `zone` is the offset from UTC in minutes east, or
 * KVO_DT_NOZONE for a floating (local) time; "Z" reads as zone 0. The unset
 * mark KVO_DT_UNSET in `year` means no date, in `hour` no time of day (a
 * date alone). Usable values are those KvoDt_chk accepts: years 1..9999,
 * hours 0..23, seconds 0..59 (no leap second), msec 0..999, offsets within
 * -23:59..+23:59.
 *
 * KvoDur is seven 32-bit words: years, months, weeks, days, hours, minutes,
 * seconds. A negative duration ("-PT15M") holds negative components. The
 * unset mark in `years` and `hours` means unset (both must hold it; a
 * caller filling a duration by hand sets them to 0 first). iso_dur_dec
 * gives the normal form, spread over the largest units each measure holds:
 * 12 months are a year, 60 seconds a minute, 60 minutes an hour, 7 days a
 * week when weeks are all there is ("P14D" reads as 2 weeks, "PT90M" as 1
 * hour 30 minutes). Days and hours are never merged: a day across a clock
 * change is not 24 hours.
 *
 * A text the readers refuse leaves the value unset (as after _init), so a
 * caller that ignores the result never keeps half a value. The writers
 * emit only texts the readers take back to an equal value; a value they
 * cannot write that way gives the empty text.
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
 * with a valid time of day and zone; with flags bit 0 set, an unset time
 * (a date alone, whose other time words are then ignored) is allowed too.
 * An unset date gives 0. */
TARNEX_API int32_t KvoDt_chk(const KvoDt *dt, int32_t flags);
/* Sets dt to the UTC time secs seconds after 1970-01-01 00:00:00 (zone 0,
 * msec 0) and gives not 0; a moment outside years 1..9999 gives 0 and
 * leaves dt unset. Pure arithmetic: the process's time zone is not read. */
TARNEX_API int32_t KvoDt_fromSecs(KvoDt *dt, int64_t secs);
/* Converts src (UTC or with an offset) to the process's local time in dst
 * (which may be src); the result is floating, msec kept. A floating,
 * date-only or unusable (KvoDt_chk) src is copied unchanged. */
TARNEX_API KvoDt *KvoDt_toLoc(KvoDt *dst, const KvoDt *src);

/* Basic form: "19970101T090000", ".mmm" behind the seconds when msec is
 * not 0, "Z" for zone 0, "+hhmm"/"-hhmm" for another offset, a date alone
 * ("19970101") when the time is unset; the empty text for an unset date
 * or one KvoDt_chk(dt, 1) refuses. Replace str; give str. */
TARNEX_API KvoStr *iso_dt_enc(KvoStr *str, const KvoDt *dt);
/* As iso_dt_enc when zone is KVO_DT_NOZONE or any value outside
 * -1439..1439, and for a date alone. Otherwise the time is written in UTC
 * with "Z": a time with its own zone is converted from it, a floating time
 * is taken to be `zone` minutes east of UTC. When UTC falls outside years
 * 1..9999 the time is written as it stands with the offset it was taken
 * at. */
TARNEX_API KvoStr *iso_dt_encx__(KvoStr *str, const KvoDt *dt, int32_t zone);
/* "P1W", "PT5M", "P1DT2H", "-PT15M", "PT0S" for a zero duration, in the
 * normal form described above (a single unset word counts as 0); the empty
 * text for an unset duration, for one whose measures differ in sign, and
 * for one whose normal form does not fit 32-bit words. */
TARNEX_API KvoStr *iso_dur_enc(KvoStr *str, const KvoDur *dur);

/* Reads basic ("19970101T090000Z") and extended ("1997-01-01T09:00:00+01:00")
 * forms, a date alone, a time without seconds ("T0900"), a fraction of
 * seconds after "." or "," (any digits, cut to msec), "Z" or an offset
 * (+hh, +hhmm, +hh:mm), surrounding blanks. Refuses anything else: reduced
 * dates, a zone on a date alone, fields out of range, trailing text. Gives
 * not 0 on success; a null text is refused. */
TARNEX_API int32_t iso_dt_dec(const char *text, KvoDt *dt);
/* Reads "[+|-]P[nY][nM][nW][nD][T[nH][nM][nS]]" with at least one part and,
 * after a "T", at least one time part; integers only, each at most
 * 2147483647, and the normal form must fit 32-bit words. */
TARNEX_API int32_t iso_dur_dec(const char *text, KvoDur *dur);

/* 0x201 -> "2.1", 0x20A -> "2.10": the bits above the low byte, ".", the
 * low byte, in decimal. Gives buf (terminated, cut to size); a size below
 * 1 writes nothing. flags: pass 0. */
TARNEX_API char *ver_to_ver_str(uint32_t ver, char *buf, int32_t size, int32_t flags);
/* "2.1" -> 0x201, "3" -> 0x300, surrounding blanks allowed; a text that is
 * not "major[.minor]" with major at most 0xFFFFFF and minor at most 255
 * gives 0. */
TARNEX_API uint32_t ver_str_to_ver(const char *text);

#ifdef __cplusplus
}
#endif

#endif /* TARNEX_DT_H */
