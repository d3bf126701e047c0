// ISO 8601 text of dates and durations.
//
// Readers are lenient about form (basic or extended, reduced seconds,
// fractions, offsets, blanks) and strict about content: every field is
// range-checked, every number bounded, and nothing may follow the value,
// because the recurrence rules rely on a refusal to tell dates from other
// words. Writers emit one form only, the basic one, and only texts the
// readers take back to the same value.
#include <array>
#include <cstring>

#include "dt_civil.h"
#include "tarnex/dt.h"

namespace {

namespace civil = tarnex::civil;

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// A window [p, end) over the trimmed text; nothing reads past end.
struct Cursor {
  const char *p;
  const char *end;

  static Cursor trimmed(const char *text) {
    const char *b = text;
    const char *e = text + std::strlen(text);
    while (b < e && isBlank(*b)) ++b;
    while (e > b && isBlank(e[-1])) --e;
    return {b, e};
  }
  bool atEnd() const { return p == end; }
  bool nextIsDigit() const { return p < end && isDigit(*p); }
  bool eat(char c) {
    if (p == end || *p != c) return false;
    ++p;
    return true;
  }
  // Exactly n digits.
  bool fixed(int n, int32_t *out) {
    if (end - p < n) return false;
    int32_t v = 0;
    for (int i = 0; i < n; ++i) {
      if (!isDigit(p[i])) return false;
      v = v * 10 + (p[i] - '0');
    }
    p += n;
    *out = v;
    return true;
  }
  // One or more digits, refused once the value passes INT32_MAX.
  bool number(int64_t *out) {
    if (!nextIsDigit()) return false;
    int64_t v = 0;
    for (; nextIsDigit(); ++p) {
      v = v * 10 + (*p - '0');
      if (v > INT32_MAX) return false;  // bounded: v never exceeds 10 * INT32_MAX + 9
    }
    *out = v;
    return true;
  }
};

// Output of the writers; the longest text (a duration of seven 10-digit
// parts) is far below its size.
class Text {
 public:
  void put(char c) {
    if (n_ < buf_.size()) buf_[n_++] = c;
  }
  void padded(int64_t v, int width) {
    char tmp[24];
    int k = 0;
    do {
      tmp[k++] = static_cast<char>('0' + v % 10);
      v /= 10;
    } while (v > 0 && k < 20);
    for (int i = k; i < width; ++i) put('0');
    while (k > 0) put(tmp[--k]);
  }
  KvoStr *to(KvoStr *str) const {
    return KvoStr_setStrx(str, buf_.data(), static_cast<int32_t>(n_));
  }

 private:
  std::array<char, 128> buf_{};
  size_t n_ = 0;
};

// ---- Dates ------------------------------------------------------------------

bool readDate(Cursor &c, KvoDt *dt) {
  if (!c.fixed(4, &dt->year)) return false;
  const bool extended = c.eat('-');
  if (!c.fixed(2, &dt->month)) return false;
  if (extended && !c.eat('-')) return false;
  return c.fixed(2, &dt->day);
}

// Seconds may be left out ("T0900"); a fraction needs them and is kept to
// the millisecond, cut rather than rounded so that it never carries over.
bool readTime(Cursor &c, KvoDt *dt) {
  if (!c.fixed(2, &dt->hour)) return false;
  const bool extended = c.eat(':');
  if (!c.fixed(2, &dt->minute)) return false;
  const bool hasSeconds = extended ? c.eat(':') : c.nextIsDigit();
  if (!hasSeconds) return true;
  if (!c.fixed(2, &dt->second)) return false;
  if (!c.eat('.') && !c.eat(',')) return true;
  if (!c.nextIsDigit()) return false;
  int32_t msec = 0;
  int kept = 0;
  for (; c.nextIsDigit(); ++c.p) {
    if (kept < 3) {
      msec = msec * 10 + (*c.p - '0');
      ++kept;
    }
  }
  for (; kept < 3; ++kept) msec *= 10;  // ".5" is 500 ms
  dt->msec = msec;
  return true;
}

bool readZone(Cursor &c, KvoDt *dt) {
  if (c.eat('Z')) {
    dt->zone = 0;
    return true;
  }
  int32_t sign = 0;
  if (c.eat('+')) sign = 1;
  else if (c.eat('-')) sign = -1;
  else return true;  // floating
  int32_t hh = 0, mm = 0;
  if (!c.fixed(2, &hh)) return false;
  if (c.eat(':')) {
    if (!c.fixed(2, &mm)) return false;
  } else if (c.nextIsDigit() && !c.fixed(2, &mm)) {
    return false;
  }
  if (hh > 23 || mm > 59) return false;
  dt->zone = sign * (hh * 60 + mm);
  return true;
}

bool readDateTime(Cursor c, KvoDt *dt) {
  if (!readDate(c, dt)) return false;
  if (c.eat('T') && (!readTime(c, dt) || !readZone(c, dt))) return false;
  return c.atEnd() && KvoDt_chk(dt, 1);
}

void writeDateTime(Text &t, const KvoDt &dt, int32_t zone) {
  t.padded(dt.year, 4);
  t.padded(dt.month, 2);
  t.padded(dt.day, 2);
  if (dt.hour == KVO_DT_UNSET) return;
  t.put('T');
  t.padded(dt.hour, 2);
  t.padded(dt.minute, 2);
  t.padded(dt.second, 2);
  if (dt.msec != 0) {
    t.put('.');
    t.padded(dt.msec, 3);
  }
  if (zone == KVO_DT_NOZONE) return;
  if (zone == 0) {
    t.put('Z');
    return;
  }
  t.put(zone < 0 ? '-' : '+');
  const int32_t mag = zone < 0 ? -zone : zone;
  t.padded(mag / 60, 2);
  t.padded(mag % 60, 2);
}

// ---- Durations ----------------------------------------------------------------

// A duration reduced to its three exact measures: months (a year is twelve),
// days (a week is seven) and seconds. Days and seconds are not merged: a
// day across a clock change is not 24 hours.
struct Span {
  int64_t months = 0, days = 0, secs = 0;
};

// Spreads a non-negative span over the largest units that hold it; weeks
// only stand alone, as ISO 8601 has no form that mixes them with the rest.
bool toNormal(const Span &s, bool negative, KvoDur *out) {
  const int64_t sign = negative ? -1 : 1;
  const bool weeksAlone = s.days != 0 && s.days % 7 == 0 && s.months == 0 && s.secs == 0;
  const int64_t parts[7] = {s.months / 12, s.months % 12, weeksAlone ? s.days / 7 : 0,
                            weeksAlone ? 0 : s.days, s.secs / 3600, s.secs / 60 % 60, s.secs % 60};
  int32_t *words[7] = {&out->years, &out->months, &out->weeks, &out->days,
                       &out->hours, &out->minutes, &out->seconds};
  for (int64_t v : parts)
    if (v > INT32_MAX) return false;
  for (int i = 0; i < 7; ++i) *words[i] = static_cast<int32_t>(sign * parts[i]);
  return true;
}

// Designators in the order they must appear; each at most once.
struct Designator {
  char letter;
  bool timePart;
  int64_t Span::*measure;
  int64_t factor;
};
constexpr std::array<Designator, 7> kDesignators{{
    {'Y', false, &Span::months, 12},
    {'M', false, &Span::months, 1},
    {'W', false, &Span::days, 7},
    {'D', false, &Span::days, 1},
    {'H', true, &Span::secs, 3600},
    {'M', true, &Span::secs, 60},
    {'S', true, &Span::secs, 1},
}};

bool readDuration(Cursor c, KvoDur *dur) {
  const bool negative = c.eat('-');
  if (!negative) c.eat('+');
  if (!c.eat('P')) return false;
  Span span;
  size_t next = 0;  // first designator still allowed
  int parts = 0;
  bool inTime = false;
  for (;;) {
    if (!inTime && c.eat('T')) {
      inTime = true;
      while (next < kDesignators.size() && !kDesignators[next].timePart) ++next;
      if (!c.nextIsDigit()) return false;  // "PT", "P1DT"
    }
    if (c.atEnd()) break;
    int64_t n = 0;
    if (!c.number(&n) || c.atEnd()) return false;
    const char letter = *c.p++;
    while (next < kDesignators.size() &&
           (kDesignators[next].letter != letter || kDesignators[next].timePart != inTime))
      ++next;
    if (next == kDesignators.size() || kDesignators[next].timePart != inTime) return false;
    span.*kDesignators[next].measure += n * kDesignators[next].factor;
    ++next;
    ++parts;
  }
  return parts > 0 && toNormal(span, negative, dur);
}

// Unset words count as 0; the sign is the one all measures share.
bool spanOf(const KvoDur &d, Span *s, bool *negative) {
  auto word = [](int32_t v) -> int64_t { return v == KVO_DT_UNSET ? 0 : v; };
  s->months = word(d.years) * 12 + word(d.months);
  s->days = word(d.weeks) * 7 + word(d.days);
  s->secs = word(d.hours) * 3600 + word(d.minutes) * 60 + word(d.seconds);
  const bool anyNeg = s->months < 0 || s->days < 0 || s->secs < 0;
  const bool anyPos = s->months > 0 || s->days > 0 || s->secs > 0;
  if (anyNeg && anyPos) return false;
  *negative = anyNeg;
  if (anyNeg) *s = Span{-s->months, -s->days, -s->secs};
  return true;
}

void writeDuration(Text &t, const KvoDur &d, bool negative) {
  if (negative) t.put('-');
  t.put('P');
  const int32_t words[7] = {d.years, d.months, d.weeks, d.days, d.hours, d.minutes, d.seconds};
  bool any = false, timeOpen = false;
  for (size_t i = 0; i < kDesignators.size(); ++i) {
    if (words[i] == 0) continue;
    if (kDesignators[i].timePart && !timeOpen) {
      t.put('T');
      timeOpen = true;
    }
    t.padded(words[i], 1);
    t.put(kDesignators[i].letter);
    any = true;
  }
  if (!any) {
    t.put('T');
    t.put('0');
    t.put('S');
  }
}

}  // namespace

extern "C" {

TARNEX_API KvoStr *iso_dt_enc(KvoStr *str, const KvoDt *dt) {
  if (!str || !dt) {
    kvo_assert__("str && dt", __FILE__, __LINE__);
    return str ? KvoStr_setStrx(str, "", 0) : str;
  }
  Text t;
  if (KvoDt_chk(dt, 1)) writeDateTime(t, *dt, dt->zone);
  return t.to(str);
}

TARNEX_API KvoStr *iso_dt_encx__(KvoStr *str, const KvoDt *dt, int32_t zone) {
  const bool zoneOk = zone >= -civil::kMaxZoneMinutes && zone <= civil::kMaxZoneMinutes;
  if (!str || !dt || !zoneOk || !KvoDt_chk(dt, 0)) return iso_dt_enc(str, dt);  // no time to move
  const int32_t from = dt->zone != KVO_DT_NOZONE ? dt->zone : zone;
  KvoDt utc = *dt;
  utc.zone = 0;
  Text t;
  // Near year 1 or 9999 the UTC time may leave the years we can write;
  // the time is then written as it is, with the offset it was taken at.
  if (civil::setWallSeconds(&utc, civil::wallSeconds(*dt) - int64_t{from} * 60)) {
    writeDateTime(t, utc, 0);
  } else {
    writeDateTime(t, *dt, from);
  }
  return t.to(str);
}

TARNEX_API KvoStr *iso_dur_enc(KvoStr *str, const KvoDur *dur) {
  if (!str || !dur) {
    kvo_assert__("str && dur", __FILE__, __LINE__);
    return str ? KvoStr_setStrx(str, "", 0) : str;
  }
  Text t;
  Span span;
  bool negative = false;
  KvoDur normal{};
  const bool set = dur->years != KVO_DT_UNSET || dur->hours != KVO_DT_UNSET;
  if (set && spanOf(*dur, &span, &negative) && toNormal(span, false, &normal))
    writeDuration(t, normal, negative);
  return t.to(str);
}

TARNEX_API int32_t iso_dt_dec(const char *text, KvoDt *dt) {
  if (!dt) {
    kvo_assert__("dt", __FILE__, __LINE__);
    return 0;
  }
  KvoDt_init(dt);
  if (text && readDateTime(Cursor::trimmed(text), dt)) return 1;
  KvoDt_init(dt);
  return 0;
}

TARNEX_API int32_t iso_dur_dec(const char *text, KvoDur *dur) {
  if (!dur) {
    kvo_assert__("dur", __FILE__, __LINE__);
    return 0;
  }
  KvoDur parsed{};
  if (text && readDuration(Cursor::trimmed(text), &parsed)) {
    *dur = parsed;
    return 1;
  }
  KvoDur_init(dur);
  return 0;
}

}  // extern "C"
