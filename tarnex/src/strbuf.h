// Storage rules shared by KvoStr and KvoWcs. The two structures have the
// same members (buf, len, cap, ext, extSize, onHeap) and differ only in the
// unit type, so one set of templates keeps their growth, their move from the
// caller's buffer to the heap and their aliasing rules identical.
#ifndef TARNEX_SRC_STRBUF_H
#define TARNEX_SRC_STRBUF_H

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "tarnex/base.h"

namespace tarnex::strbuf {

// Units before the terminator; storage with the terminator must still fit
// the int32_t cap.
inline constexpr int64_t kMaxLen = INT32_MAX - 1;
// The first heap block; small enough to waste little, large enough that a
// string built by single appends does not reallocate on every few units.
inline constexpr int64_t kMinCap = 32;

// The shared empty text of strings without storage. cap 0 marks it, and no
// code path writes through a buffer whose cap is 0.
template <class U>
inline U kEmptyText[1] = {};

template <class S>
using UnitOf = std::remove_pointer_t<decltype(S::buf)>;

// Null string pointers are misuse: report them where the caller stands.
inline bool missing(const void *p, const char *file = __builtin_FILE(),
                    int32_t line = __builtin_LINE()) {
  if (p) return false;
  kvo_assert__("s", file, line);
  return true;
}

template <class S>
void init(S *s, UnitOf<S> *ext, int32_t size) {
  using U = UnitOf<S>;
  if (ext && size >= 1) {
    ext[0] = 0;
    s->buf = ext;
    s->cap = size;
    s->ext = ext;
    s->extSize = size;
  } else {
    s->buf = kEmptyText<U>;
    s->cap = 0;
    s->ext = nullptr;
    s->extSize = 0;
  }
  s->len = 0;
  s->onHeap = 0;
}

template <class S>
inline void terminate(S *s) {
  if (s->cap > 0) s->buf[s->len] = 0;
}

// Empties the content, keeping the storage. A string without storage of its
// own (cap 0: the shared empty text, or a read-only view of someone's text)
// is pointed at the shared empty text, so its buffer agrees with its length.
template <class S>
void clear(S *s) {
  s->len = 0;
  if (s->cap > 0) {
    s->buf[0] = 0;
  } else {
    s->buf = kEmptyText<UnitOf<S>>;
  }
}

// Frees heap storage and goes back to the caller's buffer, or to the shared
// empty text. Used by _clearx and _delete, so a deleted string is still a
// valid empty one and a second delete is harmless.
template <class S>
void release(S *s) {
  using U = UnitOf<S>;
  if (s->onHeap) kvo_free__(s->buf, __FILE__, __LINE__);
  s->onHeap = 0;
  s->len = 0;
  if (s->ext && s->extSize >= 1) {
    s->buf = s->ext;
    s->cap = s->extSize;
    s->buf[0] = 0;
  } else {
    s->buf = kEmptyText<U>;
    s->cap = 0;
  }
}

// Makes the storage writable with room for `need` units and a terminator.
// The first `keep` units are carried over when the storage moves. Growth is
// geometric, so a run of appends costs amortised O(1) per unit. Gives false
// (storage unchanged) when need cannot be held.
template <class S>
bool reserve(S *s, int64_t need, int32_t keep) {
  using U = UnitOf<S>;
  if (need < s->cap && s->buf) return true;
  if (need < 0 || need > kMaxLen) {
    kvo_assert__("string length below 2^31", __FILE__, __LINE__);
    return false;
  }
  int64_t cap = std::max({need + 1, int64_t{s->cap} * 2, kMinCap});
  cap = std::min(cap, kMaxLen + 1);
  const size_t bytes = static_cast<size_t>(cap) * sizeof(U);
  U *p;
  if (s->onHeap) {
    p = static_cast<U *>(kvo_realloc__(s->buf, bytes, __FILE__, __LINE__));
  } else {
    p = static_cast<U *>(kvo_malloc__(bytes, __FILE__, __LINE__));
    // Not our storage to free; its first len units are readable (for a
    // view of a caller's text too, whose cap is 0).
    keep = std::min(keep, s->len);
    if (keep > 0 && s->buf) std::memcpy(p, s->buf, static_cast<size_t>(keep) * sizeof(U));
  }
  s->buf = p;
  s->cap = static_cast<int32_t>(cap);
  s->onHeap = 1;
  return true;
}

// Puts n units of text at pos (0 <= pos <= len) and ends the content behind
// them. The text may lie in s's own storage (a string appended to itself):
// its offset is taken before the storage can move.
template <class S>
S *put(S *s, int32_t pos, const UnitOf<S> *text, int64_t n) {
  using U = UnitOf<S>;
  if (!text || n < 0) n = 0;
  if (n == 0 && s->cap == 0) {  // nothing to write, and no storage to write in
    if (pos == 0) clear(s);
    return s;
  }
  const auto base = reinterpret_cast<uintptr_t>(s->buf);
  const auto at = reinterpret_cast<uintptr_t>(text);
  const bool inside =
      s->cap > 0 && at >= base && at < base + static_cast<size_t>(s->cap) * sizeof(U);
  if (!reserve(s, int64_t{pos} + n, inside ? s->len : pos)) return s;
  if (inside) text = s->buf + (at - base) / sizeof(U);
  if (n > 0) std::memmove(s->buf + pos, text, static_cast<size_t>(n) * sizeof(U));
  s->len = pos + static_cast<int32_t>(n);
  s->buf[s->len] = 0;
  return s;
}

// Sets the length within the storage, as a caller that wrote into the room
// of reserve/useBufBeg asks.
template <class S>
void setLen(S *s, int32_t n) {
  const int32_t room = s->cap > 0 ? s->cap - 1 : 0;
  if (n < 0) n = 0;
  if (n > room) {
    kvo_assert__("length within the reserved room", __FILE__, __LINE__);
    n = room;
  }
  s->len = n;
  terminate(s);
}

}  // namespace tarnex::strbuf

#endif  // TARNEX_SRC_STRBUF_H
