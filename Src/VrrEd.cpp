// The vCalendar 1.0 rule language ("W1 MO WE$ #10", "MP1 2- 1+ MO #3",
// "YM1 6 #5 MP1 1+ SU #2 19991231T235959") to the recurrence model and
// back. Reading is lenient: a word that does not fit ends the list it stood
// in, and only a text that does not start with a usable head fails.
#include <climits>
#include <cstdio>
#include <cstring>

#include "detail/BoundedInt.h"
#include "detail/Object.h"
#include "detail/Trace.h"
#include "ostrel/VrrEd.h"
#include "tarnex/scratch.hpp"

namespace {

using ostrel::detail::kCatPos;
using ostrel::detail::kCatUnknown;

constexpr StrIdMap kDayMap[] = {{0, "SU"}, {1, "MO"}, {2, "TU"}, {3, "WE"},
                                {4, "TH"}, {5, "FR"}, {6, "SA"}, {0, nullptr}};

// The kinds a sub-rule may be of, by the kind of its parent.
constexpr uint32_t subMask(RrType kind) {
  switch (kind) {
    case RR_DAILY:
    case RR_WEEKLY: return RR_MINUTELY;
    case RR_MONTH_POS:
    case RR_MONTH_DAY: return RR_MINUTELY | RR_DAILY | RR_WEEKLY;
    case RR_YEAR_MONTH:
    case RR_YEAR_DAY: return RR_MINUTELY | RR_DAILY | RR_WEEKLY | RR_MONTH_POS | RR_MONTH_DAY;
    default: return 0;
  }
}

// "W99999999999" is a huge interval, not undefined behaviour.
using ostrel::detail::boundedAtoi;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

enum TokType { kUnkn = 0, kRule, kDur, kNum, kWday, kDate, kLast, kTime };
constexpr uint32_t kMarked = 0x1, kMinus = 0x2;

struct Token {
  TokType type = kUnkn;
  uint32_t flags = 0;
  RrType kind = RR_NONE;
  int32_t value = 0;  // interval, count, number or weekday
  KvoDt date{};
};

// Words of an upper-cased private copy, with one token of push-back.
class Lexer {
 public:
  explicit Lexer(const char *rule) {
    KvoStr_setStr(text_, rule);
    kvo_strupr(KvoStr_buf(text_));
    pos_ = KvoStr_buf(text_);
  }

  // The next token, or null at the end of the text or at a bad word (which
  // is gone: the next call reads the word behind it).
  const Token *next() {
    if (bak_) {
      bak_ = false;
      OSTREL_REQUIRE(cur_.type != kUnkn, "_this->cur.type != VRTT_UNKN");
      return &cur_;
    }
    char *word = kvo_strtok(&pos_, " \t");
    if (word == nullptr) return nullptr;
    cur_.type = kUnkn;
    cur_.flags = 0;
    return read(word) ? &cur_ : nullptr;
  }

  void pushBack() {
    if (OSTREL_REQUIRE(!bak_ && cur_.type != kUnkn, "!_this->bak && _this->cur.type != VRTT_UNKN"))
      bak_ = true;
  }

 private:
  bool head(const char *word, RrType kind, int skip) {
    cur_.type = kRule;
    cur_.kind = kind;
    cur_.value = boundedAtoi(word + skip);
    return true;
  }

  bool read(char *word) {
    const char c0 = word[0], c1 = word[1];
    switch (c0) {
      case 'D': return head(word, RR_DAILY, 1);
      case 'W':
        if (c1 != 'E') return head(word, RR_WEEKLY, 1);
        break;
      case 'M':
        if (c1 == 'P') return head(word, RR_MONTH_POS, 2);
        if (c1 == 'D') return head(word, RR_MONTH_DAY, 2);
        if (c1 != 'O') return head(word, RR_MINUTELY, 1);
        break;
      case 'Y':
        if (c1 == 'M') return head(word, RR_YEAR_MONTH, 2);
        if (c1 == 'D') return head(word, RR_YEAR_DAY, 2);
        return false;
      case '#':
        cur_.type = kDur;
        cur_.value = boundedAtoi(word + 1);
        return true;
      default: break;
    }
    if (isDigit(c0)) return number(word);
    if (c0 == 'L' && c1 == 'D' && word[2] == '\0') {
      cur_.type = kLast;
      return true;
    }
    return weekday(word);
  }

  bool number(char *word) {
    int digits = 0;
    while (digits < 5 && isDigit(word[digits])) ++digits;
    if (digits < 4) {
      cur_.type = kNum;
      cur_.value = boundedAtoi(word);
      const size_t len = std::strlen(word);
      if (word[len - 1] == '$') cur_.flags |= kMarked;
      if (std::strchr(word, '-') != nullptr) cur_.flags |= kMinus;
      return true;
    }
    if (digits == 4) {  // a time of day: the model has no place for it
      cur_.type = kTime;
      return true;
    }
    if (iso_dt_dec(word, &cur_.date) == 0) return false;
    cur_.type = kDate;
    return true;
  }

  // The day table compares whole words, so a mark is set aside for it.
  bool weekday(char *word) {
    size_t len = std::strlen(word);
    const bool marked = len > 0 && word[len - 1] == '$';
    if (len < 2) return false;
    char name[4] = {};
    const size_t nameLen = marked ? len - 1 : len;
    if (nameLen != 2) return false;
    std::memcpy(name, word, 2);
    int32_t id = 0;
    if (StrIdMap_findByStr(kDayMap, name, &id) == 0) return false;
    cur_.type = kWday;
    cur_.value = id;
    if (marked) cur_.flags |= kMarked;
    return true;
  }

  tarnex::ScratchStr<256> text_;
  char *pos_ = nullptr;
  Token cur_;
  bool bak_ = false;
};

// ---- reading -------------------------------------------------------------

void skipTimes(Lexer &lex) {
  while (const Token *t = lex.next()) {
    if (t->type != kTime) {
      lex.pushBack();
      return;
    }
  }
}

void readDuration(Lexer &lex, RrHead &head) {
  const Token *t = lex.next();
  if (t == nullptr) return;
  if (t->type == kDur)
    head.duration = t->value;
  else
    lex.pushBack();
}

// Calls use(token) for each token of a list while it says yes; the first
// token it refuses is pushed back.
template <class Use>
void readList(Lexer &lex, Use use) {
  while (const Token *t = lex.next()) {
    if (!use(*t)) {
      lex.pushBack();
      return;
    }
  }
}

void readWeekdays(Lexer &lex, uint32_t &days) {
  readList(lex, [&](const Token &t) {
    if (t.type != kWday) return false;
    days |= 1u << t.value;
    if (t.flags & kMarked) days |= 1u << (16 + t.value);
    skipTimes(lex);
    return true;
  });
}

// Groups of weeks, then weekdays, then times; a group without a week or
// without a weekday ends them and is not kept. Past eight they are read and
// dropped.
void readGroups(Lexer &lex, WeekDays (&pos)[RR_POS_MAX]) {
  for (int stored = 0;;) {
    WeekDays group{0, 0};
    bool anyWeek = false, anyDay = false;
    readList(lex, [&](const Token &t) {
      if (t.type != kNum) return false;
      if (t.value >= 1 && t.value <= 5) {
        WeekDays_addWeek(&group, (t.flags & kMinus) ? -t.value : t.value, t.flags & kMarked);
        anyWeek = true;
      }
      return true;
    });
    readList(lex, [&](const Token &t) {
      if (t.type != kWday) return false;
      WeekDays_addDay(&group, t.value, t.flags & kMarked);
      anyDay = true;
      return true;
    });
    skipTimes(lex);
    if (!anyWeek || !anyDay) return;
    if (stored < RR_POS_MAX) pos[stored++] = group;
  }
}

void readMonthDays(Lexer &lex, MonDays &days) {
  readList(lex, [&](const Token &t) {
    if (t.type == kLast) {
      MonDays_addLast(&days);
      return true;
    }
    if (t.type != kNum) return false;
    if (t.value >= 1 && t.value <= 31)
      MonDays_addDay(&days, (t.flags & kMinus) ? -t.value : t.value, t.flags & kMarked);
    return true;
  });
}

void readMonths(Lexer &lex, uint32_t &months) {
  readList(lex, [&](const Token &t) {
    if (t.type != kNum) return false;
    if (t.value >= 1 && t.value <= 12) {
      months |= 1u << t.value;
      if (t.flags & kMarked) months |= 1u << (16 + t.value);
    }
    return true;
  });
}

void readYearDays(Lexer &lex, YearDays &days) {
  readList(lex, [&](const Token &t) {
    if (t.type != kNum) return false;
    if (t.value >= 1 && t.value <= 366) {
      YearDays_addDay(&days, t.value);
      if (t.flags & kMarked) YearDays_setEndm(&days, t.value);
    }
    return true;
  });
}

int32_t readRule(Lexer &lex, void *place, RrType *kind, uint32_t mask);

// The parts of one kind behind its head, then its sub-rule.
template <class Rule, class Parts>
void readBody(Lexer &lex, Rule &rule, RrType kind, Parts parts) {
  parts();
  readDuration(lex, reinterpret_cast<RrHead &>(rule));
  if constexpr (requires { rule.sub; }) readRule(lex, &rule.sub, &rule.subType, subMask(kind));
}

// A rule at `place` (a union holding every kind of `mask`), its kind to
// *kind: 1 read, 0 no token, -251 no usable head.
int32_t readRule(Lexer &lex, void *place, RrType *kind, uint32_t mask) {
  const Token *t = lex.next();
  if (t == nullptr) return 0;
  if (t->type != kRule || t->value <= 0) {
    lex.pushBack();
    return OSTREL_MALFORMED;
  }
  const RrType k = t->kind;
  if ((static_cast<uint32_t>(k) & mask) == 0) return OSTREL_MALFORMED;
  auto &head = *static_cast<RrHead *>(place);
  head.interval = t->value;
  head.duration = -1;
  auto *rule = static_cast<RrRule *>(place);
  switch (k) {
    case RR_MINUTELY: readDuration(lex, head); break;
    case RR_DAILY: readBody(lex, rule->daily, k, [&] { skipTimes(lex); }); break;
    case RR_WEEKLY: readBody(lex, rule->weekly, k, [&] { readWeekdays(lex, rule->weekly.days); }); break;
    case RR_MONTH_POS: readBody(lex, rule->monthPos, k, [&] { readGroups(lex, rule->monthPos.pos); }); break;
    case RR_MONTH_DAY: readBody(lex, rule->monthDay, k, [&] { readMonthDays(lex, rule->monthDay.days); }); break;
    case RR_YEAR_MONTH: readBody(lex, rule->yearMonth, k, [&] { readMonths(lex, rule->yearMonth.months); }); break;
    case RR_YEAR_DAY: readBody(lex, rule->yearDay, k, [&] { readYearDays(lex, rule->yearDay.days); }); break;
    default: return OSTREL_MALFORMED;
  }
  *kind = k;
  return 1;
}

// ---- writing -------------------------------------------------------------

void put(KvoStr *out, const char *text) { KvoStr_appdStr(out, text); }

void putNum(KvoStr *out, const char *before, int32_t n, const char *after) {
  char buf[40];
  std::snprintf(buf, sizeof buf, "%s%d%s", before, n, after);
  put(out, buf);
}

void putWeekdays(KvoStr *out, uint32_t bits, uint32_t marks, int markShift) {
  for (int32_t d = 0; d < 7; ++d) {
    if ((bits & (1u << d)) == 0) continue;
    const char *name = nullptr;
    if (!OSTREL_REQUIRE(StrIdMap_findById(kDayMap, d, &name) != 0, "0")) continue;
    put(out, " ");
    put(out, name);
    if (marks & (1u << (d + markShift))) put(out, "$");
  }
}

// " 2-", " 1+$": from -n upward, skipping 0.
template <class Check>
void putSigned(KvoStr *out, int32_t n, Check check) {
  for (int32_t v = -n; v <= n; ++v) {
    if (v == 0) continue;
    uint32_t mark = 0;
    if (check(v, &mark))
      putNum(out, " ", v < 0 ? -v : v, v < 0 ? (mark ? "-$" : "-") : (mark ? "+$" : "+"));
  }
}

const char *headText(RrType kind) {
  switch (kind) {
    case RR_MINUTELY: return "M";
    case RR_DAILY: return "D";
    case RR_WEEKLY: return "W";
    case RR_MONTH_POS: return "MP";
    case RR_MONTH_DAY: return "MD";
    case RR_YEAR_MONTH: return "YM";
    case RR_YEAR_DAY: return "YD";
    default: return nullptr;
  }
}

// `rule` is a union that may hold every kind of `allowed`; a kind outside
// it is not read at all, since its members could lie beyond the union.
void writeRule(KvoStr *out, const void *place, RrType kind, uint32_t allowed, bool first) {
  const auto &head = *static_cast<const RrHead *>(place);
  OSTREL_TRACE(kCatPos, 3, "Vrr.enc_rule[arule.interval : %d] [arule.duration : %d] [type : %ld]",
               head.interval, head.duration, static_cast<long>(kind));
  if (kind == RR_NONE || head.interval <= 0) return;
  const char *name = headText(kind);
  if (!OSTREL_REQUIRE(name != nullptr && (static_cast<uint32_t>(kind) & allowed) != 0, "0")) return;
  if (!first) put(out, " ");
  put(out, name);
  putNum(out, "", head.interval, "");
  const auto *rule = static_cast<const RrRule *>(place);
  switch (kind) {
    case RR_WEEKLY: putWeekdays(out, rule->weekly.days, rule->weekly.days, 16); break;
    case RR_MONTH_POS:
      for (const WeekDays &g : rule->monthPos.pos) {
        if (WeekDays_noo(&g)) continue;
        putSigned(out, 5, [&](int32_t w, uint32_t *m) { return WeekDays_chkWeek(&g, w, m) != 0; });
        putWeekdays(out, g.bits, g.endms, 0);
      }
      break;
    case RR_MONTH_DAY: {
      const MonDays &d = rule->monthDay.days;
      putSigned(out, 31, [&](int32_t v, uint32_t *m) { return MonDays_chkDay(&d, v, m) != 0; });
      if (MonDays_chkLast(&d)) put(out, " LD");
      break;
    }
    case RR_YEAR_MONTH:
      for (int32_t m = 1; m <= 12; ++m)
        if (rule->yearMonth.months & (1u << m))
          putNum(out, " ", m, (rule->yearMonth.months & (1u << (16 + m))) ? "$" : "");
      break;
    case RR_YEAR_DAY: {
      const YearDays &d = rule->yearDay.days;
      for (int32_t n = 1; n <= 366; ++n)
        if (YearDays_chkDay(&d, n)) putNum(out, " ", n, d.endm == n ? "$" : "");
      break;
    }
    default: break;
  }
  if (head.duration != -1) putNum(out, " #", head.duration, "");
  switch (kind) {
    case RR_DAILY: writeRule(out, &rule->daily.sub, rule->daily.subType, subMask(kind), false); break;
    case RR_WEEKLY: writeRule(out, &rule->weekly.sub, rule->weekly.subType, subMask(kind), false); break;
    case RR_MONTH_POS: writeRule(out, &rule->monthPos.sub, rule->monthPos.subType, subMask(kind), false); break;
    case RR_MONTH_DAY: writeRule(out, &rule->monthDay.sub, rule->monthDay.subType, subMask(kind), false); break;
    case RR_YEAR_MONTH: writeRule(out, &rule->yearMonth.sub, rule->yearMonth.subType, subMask(kind), false); break;
    case RR_YEAR_DAY: writeRule(out, &rule->yearDay.sub, rule->yearDay.subType, subMask(kind), false); break;
    default: break;
  }
}

}  // namespace

extern "C" {

OSTREL_API int32_t Vrr_dec(const char *vrule, RrItem *item) {
  if (!OSTREL_REQUIRE(item && vrule, "item && vrule")) return 0;
  OSTREL_TRACE(kCatPos, 3, "vrule : %s", vrule);
  if (*vrule == '\0') {
    OSTREL_TRACE(kCatUnknown, 1, "vrule is null !");
    return 0;
  }
  RrItem_init(item);
  Lexer lex(vrule);
  const int32_t rc = readRule(lex, &item->arule, &item->type, 0x7F);
  if (rc >= 0) {
    if (const Token *t = lex.next(); t != nullptr && t->type == kDate) item->endDt = t->date;
  }
  // Without a count and without an end, a rule runs for two occurrences.
  if (item->arule.head.duration == -1 && KvoDt_chk(&item->endDt, 1) == 0)
    item->arule.head.duration = 2;
  return rc;
}

OSTREL_API int32_t Vrr_enc(KvoStr *vrule, const RrItem *item) {
  if (!OSTREL_REQUIRE(vrule && item, "vrule && item")) return 0;
  if (item->type == RR_NONE) {
    OSTREL_TRACE(kCatUnknown, 1, "unkown RrType");
    return 0;
  }
  const int32_t begLen = KvoStr_len(vrule);
  OSTREL_TRACE(kCatPos, 3, "begLen : %d", begLen);
  writeRule(vrule, &item->arule, item->type, 0x7F, true);
  if (KvoDt_chk(&item->endDt, 1) != 0) {
    tarnex::ScratchStr<32> date;
    iso_dt_enc(date, &item->endDt);
    put(vrule, " ");
    KvoStr_appdStrx(vrule, date.c_str(), date.len());
  }
  OSTREL_TRACE(kCatPos, 3, "vrule : %s", KvoStr_buf(vrule));
  return KvoStr_len(vrule) - begLen;
}

}  // extern "C"
