// Memory streams: one growing buffer on the heap, or first a caller's
// buffer (MemStrm_xcreateExt__) that is left for the heap once outgrown.
//
// The bytes are always followed by a 0 byte that the size does not count,
// so the text a codec wrote can go to C string functions without a copy.
// Capacity therefore always exceeds the size by at least one.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "strm_impl.h"
#include "tarnex/strm.h"

namespace {

using tarnex::strm::badSpan;
using tarnex::strm::readSpan;
using tarnex::strm::seekTarget;

constexpr int64_t kMinCap = 64;

// What MemStrm_data gives for a stream that has never held a byte: a valid
// pointer to the terminator, so callers need no null check.
const uint8_t kNoBytes[1] = {0};

MemStrm *self(IStrm *s) { return reinterpret_cast<MemStrm *>(s); }

// Makes room for `need` bytes and the terminator (need <= MEMSTRM_MAX_SIZE).
// Doubling keeps byte-by-byte writers linear.
// `reserved` marks bytes that are the caller's: never freed or reallocated.
constexpr int32_t kCallersBuffer = 1;

void reserve(MemStrm *m, int64_t need) {
  if (need < m->cap) return;
  int64_t cap = std::max({need + 1, m->cap * 2, kMinCap});
  cap = std::min(cap, MEMSTRM_MAX_SIZE + 1);
  if (m->reserved == kCallersBuffer) {
    auto *heap = static_cast<uint8_t *>(kvo_malloc__(static_cast<size_t>(cap), __FILE__, __LINE__));
    std::memcpy(heap, m->data, static_cast<size_t>(m->size) + 1);
    m->data = heap;
    m->reserved = 0;
  } else {
    m->data = static_cast<uint8_t *>(
        kvo_realloc__(m->data, static_cast<size_t>(cap), __FILE__, __LINE__));
  }
  m->cap = cap;
}

int32_t memWrite(IStrm *s, const void *buf, int32_t n) {
  MemStrm *m = self(s);
  if (badSpan(buf, n)) return -1;
  if (n == 0) return 0;
  if (m->pos > MEMSTRM_MAX_SIZE - n) return -1;
  const int64_t end = m->pos + n;
  const auto *src = static_cast<const uint8_t *>(buf);
  if (end >= m->cap) {
    // A caller may write the stream's own bytes back into it (for example
    // from MemStrm_data); growing moves them, so the source moves along.
    const auto at = reinterpret_cast<uintptr_t>(src);
    const auto lo = reinterpret_cast<uintptr_t>(m->data);
    const bool inside = m->data && at >= lo && at < lo + static_cast<uintptr_t>(m->cap);
    reserve(m, end);
    if (inside) src = m->data + (at - lo);
  }
  if (m->pos > m->size) std::memset(m->data + m->size, 0, static_cast<size_t>(m->pos - m->size));
  std::memmove(m->data + m->pos, src, static_cast<size_t>(n));
  if (end > m->size) {
    m->size = end;
    m->data[end] = 0;
  }
  m->pos = end;
  return n;
}

int32_t memPutc(IStrm *s, int32_t c) {
  MemStrm *m = self(s);
  const auto b = static_cast<uint8_t>(c);
  if (m->pos < m->size) {
    m->data[m->pos++] = b;
    return b;
  }
  if (m->pos == m->size && m->size + 1 < m->cap) {
    m->data[m->size++] = b;
    m->data[m->size] = 0;
    m->pos = m->size;
    return b;
  }
  return memWrite(s, &b, 1) == 1 ? b : -1;
}

int32_t memGetc(IStrm *s) {
  MemStrm *m = self(s);
  return m->pos < m->size ? m->data[m->pos++] : -1;
}

int32_t memUngetc(IStrm *s, int32_t) {
  MemStrm *m = self(s);
  if (m->pos <= 0) return -1;
  --m->pos;
  return m->pos < m->size ? m->data[m->pos] : 0;
}

int32_t memRead(IStrm *s, void *buf, int32_t n) {
  MemStrm *m = self(s);
  return readSpan(m->data, m->size, &m->pos, buf, n);
}

int32_t memSeek(IStrm *s, uint32_t low, int32_t high, int32_t whence) {
  MemStrm *m = self(s);
  int64_t to = 0;
  if (!seekTarget(low, high, whence, m->pos, m->size, &to)) return -1;
  m->pos = to;
  return 0;
}

int64_t memTell(IStrm *s) { return self(s)->pos; }
int64_t memSize(IStrm *s) { return self(s)->size; }

int32_t memClear(IStrm *s) {
  MemStrm *m = self(s);
  // The buffer stays: a cleared stream is usually about to be refilled.
  m->size = 0;
  m->pos = 0;
  if (m->data) m->data[0] = 0;
  return 0;
}

int64_t memPeek(IStrm *s, const uint8_t **p) {
  MemStrm *m = self(s);
  if (m->pos >= m->size) {
    *p = m->data ? m->data + m->size : kNoBytes;
    return 0;
  }
  *p = m->data + m->pos;
  return m->size - m->pos;
}

void memDel(IStrm *s) {
  MemStrm *m = self(s);
  if (m->reserved != kCallersBuffer) kvo_free__(m->data, __FILE__, __LINE__);
  m->data = nullptr;
  if (m->ownSelf) kvo_free__(m, __FILE__, __LINE__);
}

constexpr IStrmOps kMemOps = {memDel,  memPutc, memGetc, memUngetc, memRead, memWrite,
                              memSeek, memTell, memSize, memClear,  memPeek};

}  // namespace

extern "C" {

TARNEX_API IStrm *MemStrm_xcreatex__(MemStrm *storage, int32_t size, const char *file,
                                     int32_t line) {
  MemStrm *m =
      storage ? storage : static_cast<MemStrm *>(kvo_malloc__(sizeof(MemStrm), file, line));
  *m = MemStrm{};
  m->base.ops = &kMemOps;
  m->ownSelf = storage == nullptr;
  if (size > 0) {
    m->cap = static_cast<int64_t>(size) + 1;
    m->data = static_cast<uint8_t *>(kvo_malloc__(static_cast<size_t>(m->cap), file, line));
    m->data[0] = 0;
  }
  return &m->base;
}

TARNEX_API IStrm *MemStrm_xcreateExt__(MemStrm *storage, uint8_t *buf, int32_t size,
                                       const char *file, int32_t line) {
  if (buf == nullptr || size < 1) return MemStrm_xcreatex__(storage, 0, file, line);
  MemStrm *m =
      storage ? storage : static_cast<MemStrm *>(kvo_malloc__(sizeof(MemStrm), file, line));
  *m = MemStrm{};
  m->base.ops = &kMemOps;
  m->ownSelf = storage == nullptr;
  m->data = buf;
  m->cap = size;
  m->reserved = kCallersBuffer;
  m->data[0] = 0;
  return &m->base;
}

TARNEX_API uint8_t *MemStrm_data(IStrm *s) {
  if (!s || s->ops != &kMemOps) return nullptr;
  MemStrm *m = self(s);
  return m->data ? m->data : const_cast<uint8_t *>(kNoBytes);
}

}  // extern "C"
