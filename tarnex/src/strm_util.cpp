// Stream utilities that work on any stream through its operation table.
#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <memory>

#include "tarnex/strm.h"

namespace {

// Most formatted output (a property line, a number, a header) fits here, so
// printf reaches the heap only for long values.
constexpr int kStackText = 512;

// Bytes moved per write call: any stream may be larger than one int32 count.
constexpr int64_t kChunk = int64_t{1} << 30;

constexpr int32_t kCopyBuf = 4096;

struct KvoFree {
  void operator()(void *p) const { kvo_free__(p, __FILE__, __LINE__); }
};
using HeapBytes = std::unique_ptr<char[], KvoFree>;

HeapBytes heapBytes(size_t n) {
  return HeapBytes(static_cast<char *>(kvo_malloc__(n, __FILE__, __LINE__)));
}

bool misused(const void *a, const void *b, const char *text) {
  if (a && b) return false;
  kvo_assert__(text, __FILE__, __LINE__);
  return true;
}

// Writes one span completely, or gives the negative code.
int32_t writeAll(IStrm *dst, const void *p, int32_t n) {
  const int32_t w = IStrm_write(dst, p, n);
  return w == n ? 0 : (w < 0 ? w : -1);
}

// Moves everything from src's position to its end onto dst. A stream with
// peek hands over whole runs without a copy; others go through a buffer.
int64_t pump(IStrm *dst, IStrm *src) {
  int64_t total = 0;
  for (;;) {
    const uint8_t *p = nullptr;
    const int64_t run = IStrm_peek(src, &p);
    if (run > 0 && p) {
      const auto k = static_cast<int32_t>(std::min(run, kChunk));
      if (const int32_t r = writeAll(dst, p, k); r < 0) return r;
      if (IStrm_seek(src, k, KVO_SEEK_CUR) != 0) return -1;
      total += k;
      continue;
    }
    uint8_t buf[kCopyBuf];
    const int32_t k = IStrm_read(src, buf, kCopyBuf);
    if (k < 0) return k;
    if (k == 0) return total;
    if (const int32_t r = writeAll(dst, buf, k); r < 0) return r;
    total += k;
  }
}

// Appending a stream to itself: the content is taken whole before the first
// byte is written, or the copy would read its own output.
int64_t appdSelf(IStrm *s) {
  const int64_t at = IStrm_tell(s);
  const int64_t size = IStrm_size(s);
  if (at < 0 || size < 0) return -1;
  if (size > INT32_MAX) return KVO_CANT;
  const auto n = static_cast<int32_t>(size);
  HeapBytes copy = heapBytes(static_cast<size_t>(n) + 1);
  int32_t got = 0;
  if (IStrm_rewind(s) == 0) {
    for (int32_t k = 1; got < n && k > 0; got += k) {
      k = IStrm_read(s, copy.get() + got, n - got);
      if (k < 0) break;
    }
  }
  if (IStrm_seek(s, at, KVO_SEEK_SET) != 0) return -1;
  if (got < n) return -1;
  const int32_t r = writeAll(s, copy.get(), n);
  return r < 0 ? r : n;
}

}  // namespace

extern "C" {

TARNEX_API int32_t IStrm_vprintf(IStrm *s, const char *format, va_list ap) {
  if (misused(s, format, "IStrm_vprintf: null stream or format")) return -1;
  va_list again;
  va_copy(again, ap);
  char text[kStackText];
  const int n = vsnprintf(text, sizeof text, format, ap);
  int32_t r = -1;
  if (n >= 0 && n < kStackText) {
    r = IStrm_write(s, text, n);
  } else if (n >= 0) {
    HeapBytes big = heapBytes(static_cast<size_t>(n) + 1);
    if (vsnprintf(big.get(), static_cast<size_t>(n) + 1, format, again) == n)
      r = IStrm_write(s, big.get(), n);
  }
  va_end(again);
  return r;
}

TARNEX_API int32_t IStrm_printf(IStrm *s, const char *format, ...) {
  va_list ap;
  va_start(ap, format);
  const int32_t r = IStrm_vprintf(s, format, ap);
  va_end(ap);
  return r;
}

TARNEX_API int64_t IStrm_appd(IStrm *dst, IStrm *src) {
  if (misused(dst, src, "IStrm_appd: null stream")) return -1;
  if (dst == src) return appdSelf(dst);
  const int64_t back = IStrm_tell(src);
  if (back < 0 || IStrm_rewind(src) != 0) return -1;
  const int64_t total = pump(dst, src);
  if (IStrm_seek(src, back, KVO_SEEK_SET) != 0 && total >= 0) return -1;
  return total;
}

TARNEX_API int64_t IStrm_copy(IStrm *dst, IStrm *src) {
  if (misused(dst, src, "IStrm_copy: null stream")) return -1;
  if (dst == src) {
    if (IStrm_rewind(src) != 0) return -1;
    return IStrm_size(src);
  }
  if (const int32_t r = IStrm_clear(dst); r < 0) return r;
  if (IStrm_rewind(src) != 0) return -1;
  const int64_t total = pump(dst, src);
  IStrm_rewind(src);
  IStrm_rewind(dst);
  return total;
}

}  // extern "C"
