// KvoWcs: the growing 16-bit string, and its conversion from UTF-8. Storage
// rules live in strbuf.h, shared with KvoStr.
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "strbuf.h"
#include "tarnex/scratch.hpp"
#include "tarnex/str.h"
#include "tarnex/strm.h"
#include "tarnex/text.h"
#include "utf8.h"

namespace {

namespace sb = tarnex::strbuf;
namespace u8 = tarnex::utf8;

// Replaces w's content with n bytes of UTF-8. Every byte gives at most one
// unit (a 4-byte sequence gives two), so n units of room always suffice.
KvoWcs *setUtf8(KvoWcs *w, const uint8_t *p, int64_t n) {
  sb::clear(w);
  if (n <= 0 || !p || !sb::reserve(w, n, 0)) return w;
  const uint8_t *end = p + n;
  KvoWchar *out = w->buf;
  while (p < end) {
#if defined(__SSE2__)
    // ASCII, most of any contact's text, is widened 16 bytes a step. The
    // store may run past the ASCII bytes, never past the room: units written
    // never outnumber bytes read.
    if (end - p >= 16) {
      const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
      const uint32_t high = static_cast<uint32_t>(_mm_movemask_epi8(v));
      const int ascii = high != 0 ? __builtin_ctz(high) : 16;
      const __m128i zero = _mm_setzero_si128();
      _mm_storeu_si128(reinterpret_cast<__m128i *>(out), _mm_unpacklo_epi8(v, zero));
      _mm_storeu_si128(reinterpret_cast<__m128i *>(out + 8), _mm_unpackhi_epi8(v, zero));
      p += ascii;
      out += ascii;
      if (ascii == 16) continue;
    }
#endif
    if (*p < 0x80) {
      *out++ = *p++;
      continue;
    }
    int used = 1;
    const uint32_t cp = u8::decode(p, end, &used);
    p += used;
    if (cp >= 0x10000) {
      *out++ = static_cast<KvoWchar>(0xD800 + ((cp - 0x10000) >> 10));
      *out++ = static_cast<KvoWchar>(0xDC00 + (cp & 0x3FF));
    } else {
      *out++ = static_cast<KvoWchar>(cp);
    }
  }
  w->len = static_cast<int32_t>(out - w->buf);
  sb::terminate(w);
  return w;
}

}  // namespace

extern "C" {

TARNEX_API KvoWcs *KvoWcs_new(KvoWcs *w) {
  if (sb::missing(w)) return nullptr;
  sb::init(w, static_cast<KvoWchar *>(nullptr), 0);
  return w;
}

TARNEX_API KvoWcs *WcsExt_new__(KvoWcs *w, KvoWchar *buf, int32_t size) {
  if (sb::missing(w)) return nullptr;
  sb::init(w, buf, size);
  return w;
}

TARNEX_API void KvoWcs_delete(KvoWcs *w) {
  if (!sb::missing(w)) sb::release(w);
}

TARNEX_API void KvoWcs_clear(KvoWcs *w) {
  if (!sb::missing(w)) sb::clear(w);
}

TARNEX_API void KvoWcs_clearx(KvoWcs *w) {
  if (!sb::missing(w)) sb::release(w);
}

TARNEX_API KvoWchar *KvoWcs_buf(const KvoWcs *w) {
  if (sb::missing(w) || !w->buf) return sb::kEmptyText<KvoWchar>;
  return w->buf;
}

TARNEX_API int32_t KvoWcs_len(const KvoWcs *w) {
  if (sb::missing(w)) return 0;
  return w->len;
}

TARNEX_API KvoWcs *KvoWcs_setStr(KvoWcs *w, const char *utf8) {
  if (sb::missing(w)) return nullptr;
  const int64_t n = utf8 ? static_cast<int64_t>(std::strlen(utf8)) : 0;
  return setUtf8(w, reinterpret_cast<const uint8_t *>(utf8), n);
}

TARNEX_API KvoWcs *KvoWcs_setCwcs(KvoWcs *w, const KvoWcs *other) {
  if (sb::missing(w)) return nullptr;
  if (other == w) return w;
  return other ? sb::put(w, 0, other->buf, other->len) : sb::put(w, 0, nullptr, 0);
}

// The bytes may hold 0 bytes; they become U+0000 units like any other.
TARNEX_API KvoWcs *KvoWcs_setStrm(KvoWcs *w, IStrm *strm, int32_t n) {
  if (sb::missing(w)) return nullptr;
  if (!strm) {
    kvo_assert__("strm", __FILE__, __LINE__);
    return w;
  }
  tarnex::ScratchStr<256> bytes;
  KvoStr_setStrm(bytes, strm, n);
  return setUtf8(w, reinterpret_cast<const uint8_t *>(bytes.c_str()), bytes.len());
}

TARNEX_API KvoWcs *KvoWcs_setWcsx(KvoWcs *w, const KvoWchar *units, int32_t n) {
  if (sb::missing(w)) return nullptr;
  return sb::put(w, 0, units, n < 0 ? kvo_wcslen(units) : n);
}

TARNEX_API KvoWcs *KvoWcs_appdChar(KvoWcs *w, KvoWchar c) {
  if (sb::missing(w)) return nullptr;
  return sb::put(w, w->len, &c, 1);
}

TARNEX_API KvoWcs *KvoWcs_appdCwcs(KvoWcs *w, const KvoWcs *other) {
  if (sb::missing(w)) return nullptr;
  if (!other) return w;
  return sb::put(w, w->len, other->buf, other->len);
}

// A string without storage of its own (cap 0) may be a view of a caller's
// constant units: it takes a copy before anything is written.
TARNEX_API KvoWcs *KvoWcs_turn(KvoWcs *w) {
  if (sb::missing(w)) return nullptr;
  if (w->len <= 0 || !sb::reserve(w, w->len, w->len)) return w;
  sb::terminate(w);
  for (int32_t i = 0; i < w->len; ++i) {
    const KvoWchar u = w->buf[i];
    w->buf[i] = static_cast<KvoWchar>((u >> 8) | (u << 8));
  }
  return w;
}

TARNEX_API KvoWchar *KvoWcs_useBufBeg(KvoWcs *w, int32_t n) {
  if (sb::missing(w)) return nullptr;
  if (!sb::reserve(w, std::max(n, 0), w->len)) return nullptr;
  return w->buf;
}

TARNEX_API void KvoWcs_useBufEnd(KvoWcs *w, int32_t n) {
  if (!sb::missing(w)) sb::setLen(w, n);
}

}  // extern "C"
