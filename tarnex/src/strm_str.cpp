// String streams: read a caller's text in place, without a copy.
//
// Decoders are mostly handed text that already sits in memory; reading it
// through this stream costs no allocation beyond the stream object, and none
// at all when the object lives in the caller's storage.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "strm_impl.h"
#include "tarnex/strm.h"

namespace {

using tarnex::strm::readSpan;
using tarnex::strm::seekTarget;

StrStrm *self(IStrm *s) { return reinterpret_cast<StrStrm *>(s); }

// The text is the caller's: every operation that would change it refuses.
int32_t strPutc(IStrm *, int32_t) { return -1; }
int32_t strWrite(IStrm *, const void *, int32_t) { return -1; }
int32_t strClear(IStrm *) { return -1; }

int32_t strGetc(IStrm *s) {
  StrStrm *t = self(s);
  return t->pos < t->size ? t->data[t->pos++] : -1;
}

int32_t strUngetc(IStrm *s, int32_t) {
  StrStrm *t = self(s);
  if (t->pos <= 0) return -1;
  return t->data[--t->pos];
}

int32_t strRead(IStrm *s, void *buf, int32_t n) {
  StrStrm *t = self(s);
  return readSpan(t->data, t->size, &t->pos, buf, n);
}

int32_t strSeek(IStrm *s, uint32_t low, int32_t high, int32_t whence) {
  StrStrm *t = self(s);
  int64_t to = 0;
  if (!seekTarget(low, high, whence, t->pos, t->size, &to)) return -1;
  // Nothing can ever fill a gap behind the text, so the position never
  // leaves it: readers can rely on pos <= size.
  t->pos = std::min(to, t->size);
  return 0;
}

int64_t strTell(IStrm *s) { return self(s)->pos; }
int64_t strSize(IStrm *s) { return self(s)->size; }

int64_t strPeek(IStrm *s, const uint8_t **p) {
  StrStrm *t = self(s);
  *p = t->data + t->pos;
  return t->size - t->pos;
}

void strDel(IStrm *s) {
  if (self(s)->ownSelf) kvo_free__(s, __FILE__, __LINE__);
}

constexpr IStrmOps kStrOps = {strDel,  strPutc, strGetc, strUngetc, strRead, strWrite,
                              strSeek, strTell, strSize, strClear,  strPeek};

// Stands in for a null text, so data is never null and peek needs no check.
const uint8_t kEmpty[1] = {0};

}  // namespace

extern "C" {

TARNEX_API IStrm *StrStrm_xcreate__(StrStrm *storage, const char *text, int32_t len,
                                    const char *file, int32_t line) {
  StrStrm *t =
      storage ? storage : static_cast<StrStrm *>(kvo_malloc__(sizeof(StrStrm), file, line));
  *t = StrStrm{};
  t->base.ops = &kStrOps;
  t->ownSelf = storage == nullptr;
  if (!text) {
    t->data = kEmpty;
  } else {
    t->data = reinterpret_cast<const uint8_t *>(text);
    t->size = len >= 0 ? len : static_cast<int64_t>(std::strlen(text));
  }
  return &t->base;
}

}  // extern "C"
