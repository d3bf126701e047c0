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

}  // namespace ostrel::detail
