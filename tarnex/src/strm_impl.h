// Internal helpers shared by the built-in streams.
#ifndef TARNEX_SRC_STRM_IMPL_H
#define TARNEX_SRC_STRM_IMPL_H

#include <cstdint>
#include <cstring>

#include "tarnex/strm.h"

namespace tarnex::strm {

// IStrm_seek splits a 64-bit offset into two words so that the operation
// table stays callable from C compilers without 64-bit arguments; this
// joins them again (a negative high word gives a negative offset).
inline int64_t joinOffset(uint32_t low, int32_t high) {
  const uint64_t bits = (static_cast<uint64_t>(static_cast<uint32_t>(high)) << 32) | low;
  return static_cast<int64_t>(bits);
}

// The absolute target of a seek, or false when whence is unknown, the
// target lies before the start, or it cannot be held in 64 bits (a caller's
// offset must not be able to wrap a position around).
inline bool seekTarget(uint32_t low, int32_t high, int32_t whence, int64_t pos, int64_t size,
                       int64_t *target) {
  int64_t base = 0;
  switch (whence) {
    case KVO_SEEK_SET: base = 0; break;
    case KVO_SEEK_CUR: base = pos; break;
    case KVO_SEEK_END: base = size; break;
    default: return false;
  }
  int64_t to = 0;
  if (__builtin_add_overflow(base, joinOffset(low, high), &to) || to < 0) return false;
  *target = to;
  return true;
}

// The shared answer to a read or write with a bad length or buffer.
inline bool badSpan(const void *buf, int32_t n) { return n < 0 || (n > 0 && !buf); }

// read() of the streams whose bytes lie in one buffer: up to n bytes from
// *pos (which may stand behind the end), moving *pos on.
inline int32_t readSpan(const uint8_t *data, int64_t size, int64_t *pos, void *buf,
                        int32_t n) {
  if (badSpan(buf, n)) return -1;
  if (*pos >= size || n == 0) return 0;
  const auto k = static_cast<int32_t>(n < size - *pos ? n : size - *pos);
  std::memcpy(buf, data + *pos, static_cast<size_t>(k));
  *pos += k;
  return k;
}

}  // namespace tarnex::strm

#endif  // TARNEX_SRC_STRM_IMPL_H
