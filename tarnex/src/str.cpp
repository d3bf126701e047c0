// KvoStr: the growing 8-bit string. Storage rules live in strbuf.h; this
// file adds the 8-bit operations: text, numbers, formats, streams and the
// UTF-16 to UTF-8 appends.
#include <charconv>
#include <cstdio>
#include <cstring>

#include "strbuf.h"
#include "tarnex/str.h"
#include "tarnex/strm.h"
#include "utf8.h"

namespace {

namespace sb = tarnex::strbuf;
namespace u8 = tarnex::utf8;

// Bytes asked of a stream at a time when it cannot tell its size.
constexpr int64_t kStrmChunk = 4096;

int64_t textLen(const char *text) {
  return text ? static_cast<int64_t>(std::strlen(text)) : 0;
}

// The high surrogate whose 3-byte form ends s, or 0. A low surrogate
// appended next joins it, so a pair that arrives in two calls still becomes
// one 4-byte sequence.
uint32_t trailingHighSurrogate(const KvoStr *s) {
  if (s->len < 3) return 0;
  const auto *p = reinterpret_cast<const uint8_t *>(s->buf + s->len - 3);
  if (p[0] != 0xED || p[1] < 0xA0 || p[1] > 0xAF || (p[2] & 0xC0) != 0x80) return 0;
  return 0xD000u | ((p[1] & 0x3Fu) << 6) | (p[2] & 0x3Fu);
}

// UTF-8 bytes of n units, pairs joined.
int64_t utf8Size(const KvoWchar *p, const KvoWchar *end) {
  int64_t n = 0;
  while (p < end) {
    const uint32_t u = *p++;
    if (u < 0x80) {
      n += 1;
    } else if (u < 0x800) {
      n += 2;
    } else if (u8::isHighSurrogate(u) && p < end && u8::isLowSurrogate(*p)) {
      ++p;
      n += 4;
    } else {
      n += 3;
    }
  }
  return n;
}

// Reads from strm behind the content until `limit` bytes came or the
// stream ended. A stream that knows its size lets the storage be taken in
// one step; otherwise it grows geometrically in chunks.
void readStrm(KvoStr *s, IStrm *strm, int64_t limit) {
  limit = std::min(limit, sb::kMaxLen - s->len);
  const int64_t left = IStrm_size(strm) - IStrm_tell(strm);
  int64_t step = left > 0 ? left : kStrmChunk;
  int64_t got = 0;
  while (got < limit) {
    int64_t room = s->cap > 0 ? int64_t{s->cap} - 1 - s->len : 0;
    if (room <= 0) {
      if (!sb::reserve(s, s->len + std::min(limit - got, step), s->len)) break;
      room = int64_t{s->cap} - 1 - s->len;
      step = kStrmChunk;
    }
    const auto ask = static_cast<int32_t>(std::min(room, limit - got));
    int32_t r = IStrm_read(strm, s->buf + s->len, ask);
    if (r <= 0) break;
    r = std::min(r, ask);  // a caller's stream may claim more than was asked
    s->len += r;
    got += r;
  }
  sb::terminate(s);
}

}  // namespace

extern "C" {

// ---- life -------------------------------------------------------------------

TARNEX_API KvoStr *KvoStr_new(KvoStr *s) {
  if (sb::missing(s)) return nullptr;
  sb::init(s, static_cast<char *>(nullptr), 0);
  return s;
}

TARNEX_API KvoStr *StrExt_new__(KvoStr *s, char *buf, int32_t size) {
  if (sb::missing(s)) return nullptr;
  sb::init(s, buf, size);
  return s;
}

TARNEX_API void KvoStr_delete(KvoStr *s) {
  if (!sb::missing(s)) sb::release(s);
}

TARNEX_API void KvoStr_clear(KvoStr *s) {
  if (!sb::missing(s)) sb::clear(s);
}

TARNEX_API void KvoStr_clearx(KvoStr *s) {
  if (!sb::missing(s)) sb::release(s);
}

TARNEX_API char *KvoStr_buf(const KvoStr *s) {
  if (sb::missing(s) || !s->buf) return sb::kEmptyText<char>;
  return s->buf;
}

TARNEX_API int32_t KvoStr_len(const KvoStr *s) {
  if (sb::missing(s)) return 0;
  return s->len;
}

TARNEX_API char *KvoStr_reserve(KvoStr *s, int32_t n) {
  if (sb::missing(s)) return nullptr;
  if (!sb::reserve(s, int64_t{s->len} + std::max(n, 0), s->len)) return nullptr;
  return s->buf + s->len;
}

TARNEX_API void KvoStr_setLen(KvoStr *s, int32_t n) {
  if (!sb::missing(s)) sb::setLen(s, n);
}

// ---- replace ---------------------------------------------------------------

TARNEX_API KvoStr *KvoStr_setStr(KvoStr *s, const char *text) {
  if (sb::missing(s)) return nullptr;
  return sb::put(s, 0, text, textLen(text));
}

TARNEX_API KvoStr *KvoStr_setStrx(KvoStr *s, const char *text, int32_t n) {
  if (sb::missing(s)) return nullptr;
  return sb::put(s, 0, text, n < 0 ? textLen(text) : n);
}

TARNEX_API KvoStr *KvoStr_setCstr(KvoStr *s, const KvoStr *other) {
  if (sb::missing(s)) return nullptr;
  if (other == s) return s;
  return other ? sb::put(s, 0, other->buf, other->len) : sb::put(s, 0, "", 0);
}

TARNEX_API KvoStr *KvoStr_setCwcs(KvoStr *s, const KvoWcs *wide) {
  if (sb::missing(s)) return nullptr;
  sb::clear(s);
  const KvoWchar *p = wide ? wide->buf : nullptr;
  const KvoWchar *end = p ? p + std::max(wide->len, 0) : nullptr;
  const int64_t size = utf8Size(p, end);
  if ((size == 0 && s->cap == 0) || !sb::reserve(s, size, 0)) return s;
  char *out = s->buf;
  while (p < end) {
    uint32_t u = *p++;
    if (u < 0x80) {
      *out++ = static_cast<char>(u);
      continue;
    }
    if (u8::isHighSurrogate(u) && p < end && u8::isLowSurrogate(*p)) {
      u = u8::joinSurrogates(u, *p++);
    }
    out += u8::encode(u, out);
  }
  s->len = static_cast<int32_t>(out - s->buf);
  sb::terminate(s);
  return s;
}

TARNEX_API KvoStr *KvoStr_setStrm(KvoStr *s, IStrm *strm, int32_t n) {
  if (sb::missing(s)) return nullptr;
  if (!strm) {
    kvo_assert__("strm", __FILE__, __LINE__);
    return s;
  }
  sb::clear(s);
  readStrm(s, strm, n < 0 ? sb::kMaxLen : n);
  return s;
}

TARNEX_API KvoStr *KvoStr_setf(KvoStr *s, const char *format, ...) {
  if (sb::missing(s)) return nullptr;
  sb::clear(s);
  va_list ap;
  va_start(ap, format);
  KvoStr_appdv(s, format, ap);
  va_end(ap);
  return s;
}

// ---- append ------------------------------------------------------------------

TARNEX_API KvoStr *KvoStr_appdChar(KvoStr *s, char c) {
  if (sb::missing(s)) return nullptr;
  const int32_t len = s->len;
  if (len + 1 < s->cap) {  // the common case needs no call into strbuf
    char *b = s->buf;
    b[len] = c;
    b[len + 1] = 0;
    s->len = len + 1;
    return s;
  }
  return sb::put(s, s->len, &c, 1);
}

TARNEX_API KvoStr *KvoStr_appdStr(KvoStr *s, const char *text) {
  if (sb::missing(s)) return nullptr;
  return sb::put(s, s->len, text, textLen(text));
}

TARNEX_API KvoStr *KvoStr_appdStrx(KvoStr *s, const char *text, int32_t n) {
  if (sb::missing(s)) return nullptr;
  return sb::put(s, s->len, text, n < 0 ? textLen(text) : n);
}

TARNEX_API KvoStr *KvoStr_appdCstr(KvoStr *s, const KvoStr *other) {
  if (sb::missing(s)) return nullptr;
  if (!other) return s;
  return sb::put(s, s->len, other->buf, other->len);
}

TARNEX_API KvoStr *KvoStr_appdStrm(KvoStr *s, IStrm *strm, int32_t n) {
  if (sb::missing(s)) return nullptr;
  if (!strm) {
    kvo_assert__("strm", __FILE__, __LINE__);
    return s;
  }
  readStrm(s, strm, n < 0 ? sb::kMaxLen : n);
  return s;
}

TARNEX_API KvoStr *KvoStr_appdLong(KvoStr *s, int64_t v) {
  if (sb::missing(s)) return nullptr;
  char digits[24];
  const auto r = std::to_chars(digits, digits + sizeof digits, v);
  return sb::put(s, s->len, digits, r.ptr - digits);
}

TARNEX_API KvoStr *KvoStr_appdUlong(KvoStr *s, uint64_t v) {
  if (sb::missing(s)) return nullptr;
  char digits[24];
  const auto r = std::to_chars(digits, digits + sizeof digits, v);
  return sb::put(s, s->len, digits, r.ptr - digits);
}

TARNEX_API KvoStr *KvoStr_appdWchar(KvoStr *s, uint32_t unit) {
  if (sb::missing(s)) return nullptr;
  if (unit > 0x10FFFF) unit = u8::kReplacement;
  int32_t pos = s->len;
  if (u8::isLowSurrogate(unit)) {
    if (const uint32_t hi = trailingHighSurrogate(s)) {
      unit = u8::joinSurrogates(hi, unit);
      pos -= 3;  // the 4-byte form replaces the high surrogate's 3 bytes
    }
  }
  char bytes[u8::kMaxLen];
  return sb::put(s, pos, bytes, u8::encode(unit, bytes));
}

TARNEX_API KvoStr *KvoStr_appdf(KvoStr *s, const char *format, ...) {
  if (sb::missing(s)) return nullptr;
  va_list ap;
  va_start(ap, format);
  KvoStr_appdv(s, format, ap);
  va_end(ap);
  return s;
}

// Formats straight into the room behind the content; most formats fit, and
// the rest are formatted a second time once the room is there.
TARNEX_API KvoStr *KvoStr_appdv(KvoStr *s, const char *format, va_list ap) {
  if (sb::missing(s)) return nullptr;
  if (!format) return s;
  const int32_t room = s->cap > 0 ? s->cap - s->len : 0;
  va_list aq;
  va_copy(aq, ap);
  const int r = std::vsnprintf(room > 0 ? s->buf + s->len : nullptr,
                               static_cast<size_t>(room), format, aq);
  va_end(aq);
  if (r < 0) {  // an encoding error: keep the content as it was
    sb::terminate(s);
    return s;
  }
  if (r < room) {
    s->len += r;
    return s;
  }
  if (!sb::reserve(s, int64_t{s->len} + r, s->len)) {
    sb::terminate(s);
    return s;
  }
  va_copy(aq, ap);
  std::vsnprintf(s->buf + s->len, static_cast<size_t>(r) + 1, format, aq);
  va_end(aq);
  s->len += r;
  return s;
}

}  // extern "C"
