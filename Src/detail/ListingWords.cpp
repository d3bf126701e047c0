#include "detail/ListingWords.h"

#include <cstring>

#include "detail/Object.h"
#include "ostrel/FldItem.h"
#include "ostrel/XmmsEd.h"

namespace ostrel::detail {
namespace {

struct Letter {
  char upper;
  int32_t bit;
};
// In the order they are written.
constexpr Letter kLetters[] = {
    {'D', FLD_PERM_DELETE}, {'R', FLD_PERM_READ}, {'W', FLD_PERM_WRITE}};

struct StatusRow {
  int32_t value;
  const char *word;
};
constexpr StatusRow kStatus[] = {
    {XMMS_STAT_DEF, "def"},       {XMMS_STAT_UNREAD, "unread"}, {XMMS_STAT_READ, "read"},
    {XMMS_STAT_UNSENT, "unsent"}, {XMMS_STAT_SENT, "sent"},
};

}  // namespace

void permsFromText(const char *text, int32_t *perms) {
  if (!OSTREL_REQUIRE(perms != nullptr && text != nullptr, "perms && str")) return;
  int32_t sum = 0;
  for (const char *p = text; *p != '\0'; ++p) {
    const char c = (*p >= 'a' && *p <= 'z') ? static_cast<char>(*p - 'a' + 'A') : *p;
    bool known = false;
    for (const Letter &l : kLetters)
      if (c == l.upper) {
        sum |= l.bit;
        known = true;
      }
    OSTREL_REQUIRE(known, "0");
  }
  *perms = sum;
}

bool permsToText(int32_t perms, KvoStr *text) {
  if (!OSTREL_REQUIRE(text != nullptr, "cstr")) return false;
  KvoStr_clear(text);
  if (perms == -1) return false;
  for (const Letter &l : kLetters)
    if (perms & l.bit) KvoStr_appdChar(text, l.upper);
  return true;
}

void statusFromWord(const char *word, int32_t *stat) {
  if (!OSTREL_REQUIRE(word != nullptr && stat != nullptr, "str && stat")) return;
  for (const StatusRow &row : kStatus)
    if (std::strcmp(word, row.word) == 0) {
      *stat |= row.value;
      return;
    }
  OSTREL_REQUIRE(false, "0");
}

const char *statusWord(int32_t stat) {
  for (const StatusRow &row : kStatus)
    if (stat == row.value) return row.word;
  OSTREL_REQUIRE(false, "0");
  return "";
}

namespace {

struct Special {
  char c;
  const char *entity;
};
constexpr Special kSpecials[] = {
    {'<', "&lt;"}, {'>', "&gt;"}, {'&', "&amp;"}, {'\'', "&apos;"}, {'"', "&quot;"}};

const char *entityOf(uint32_t unit) {
  for (const Special &s : kSpecials)
    if (unit == static_cast<unsigned char>(s.c)) return s.entity;
  return nullptr;
}

bool isHigh(uint32_t u) { return u >= 0xD800 && u <= 0xDBFF; }
bool isLow(uint32_t u) { return u >= 0xDC00 && u <= 0xDFFF; }

void appendEscapedWide(const KvoWcs *name, KvoStr *out) {
  const KvoWchar *units = KvoWcs_buf(name);
  const int32_t n = KvoWcs_len(name);
  for (int32_t i = 0; i < n; ++i) {
    const uint32_t u = units[i];
    if (const char *e = entityOf(u)) {
      KvoStr_appdStr(out, e);
    } else if (isHigh(u) && i + 1 < n && isLow(units[i + 1])) {
      KvoStr_appdWchar(out, u);  // the foundation joins the pair into one sequence
      KvoStr_appdWchar(out, units[++i]);
    } else if (isHigh(u) || isLow(u)) {
      KvoStr_appdWchar(out, 0xFFFD);
    } else {
      KvoStr_appdWchar(out, u);
    }
  }
}

void appendEscapedText(const KvoStr *name, KvoStr *out) {
  const char *p = KvoStr_buf(name);
  for (int32_t i = 0, n = KvoStr_len(name); i < n; ++i) {
    if (const char *e = entityOf(static_cast<unsigned char>(p[i])))
      KvoStr_appdStr(out, e);
    else
      KvoStr_appdChar(out, p[i]);
  }
}

void readWideName(void *m, const char *v) { KvoWcs_setStr(static_cast<KvoWcs *>(m), v); }
bool writeWideName(const void *m, EntryLine &line) {
  appendEscapedWide(static_cast<const KvoWcs *>(m), line);
  return true;
}

void readName(void *m, const char *v) { KvoStr_setStr(static_cast<KvoStr *>(m), v); }
bool writeName(const void *m, EntryLine &line) {
  appendEscapedText(static_cast<const KvoStr *>(m), line);
  return true;
}

void readPerms(void *m, const char *v) { permsFromText(v, static_cast<int32_t *>(m)); }
bool writePerms(const void *m, EntryLine &line) {
  tarnex::ScratchStr<8> letters;
  if (!permsToText(*static_cast<const int32_t *>(m), letters)) return false;
  KvoStr_appdCstr(line, letters);
  return true;
}

void readStatus(void *m, const char *v) { statusFromWord(v, static_cast<int32_t *>(m)); }
bool writeStatus(const void *m, EntryLine &line) {
  KvoStr_appdStr(line, statusWord(*static_cast<const int32_t *>(m)));
  return true;
}

void readSize(void *m, const char *v) { *static_cast<uint32_t *>(m) = readNumber32(v); }
bool writeSize(const void *m, EntryLine &line) {
  KvoStr_appdUlong(line, *static_cast<const uint32_t *>(m));
  return true;
}

}  // namespace

void xmd_escape(const KvoWcs *name, KvoStr *out) {
  KvoStr_clear(out);
  appendEscapedWide(name, out);
}

void xmms_escape(const KvoStr *name, KvoStr *out) {
  KvoStr_clear(out);
  appendEscapedText(name, out);
}

const ValueType kWideName = {readWideName, writeWideName};
const ValueType kEscapedName = {readName, writeName};
const ValueType kPermsText = {readPerms, writePerms};
const ValueType kStatusWord = {readStatus, writeStatus};
const ValueType kSize = {readSize, writeSize};

}  // namespace ostrel::detail
