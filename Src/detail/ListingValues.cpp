// How the listings' members are read from attribute values and written.
#include <cstring>

#include "detail/Listing.h"
#include "detail/Trace.h"

namespace ostrel::detail {

uint32_t readNumber32(const char *text) {
  const char *p = text;
  while (*p == ' ' || (*p >= '\t' && *p <= '\r')) ++p;
  const bool minus = *p == '-';
  if (*p == '-' || *p == '+') ++p;
  uint64_t v = 0;
  for (; *p >= '0' && *p <= '9'; ++p) {
    v = v * 10 + static_cast<uint64_t>(*p - '0');
    if (v > 0xFFFFFFFFu) return 0xFFFFFFFFu;  // out of range, as strtoul says
  }
  return minus ? static_cast<uint32_t>(0u - static_cast<uint32_t>(v)) : static_cast<uint32_t>(v);
}

namespace {

void readText(void *m, const char *v) { KvoStr_setStr(static_cast<KvoStr *>(m), v); }
bool writeText(const void *m, EntryLine &line) {
  const KvoStr *s = static_cast<const KvoStr *>(m);
  if (s->len == 0) return false;
  KvoStr_appdStrx(line, s->buf, s->len);
  return true;
}

void readDate(void *m, const char *v) { iso_dt_dec(v, static_cast<KvoDt *>(m)); }
bool writeDate(const void *m, EntryLine &line) {
  const KvoDt *dt = static_cast<const KvoDt *>(m);
  if (!dateSet(*dt)) return false;
  tarnex::ScratchStr<48> text;
  iso_dt_enc(text, dt);
  KvoStr_appdStrx(line, text.c_str(), text.len());
  return true;
}

void readNumber(void *m, const char *v) {
  const uint32_t n = readNumber32(v);
  std::memcpy(m, &n, sizeof n);
}
bool writeNever(const void *, EntryLine &) { return false; }

}  // namespace

const ValueType kRawText = {readText, writeText};
const ValueType kIsoDate = {readDate, writeDate};
const ValueType kNumber = {readNumber, writeNever};

}  // namespace ostrel::detail
