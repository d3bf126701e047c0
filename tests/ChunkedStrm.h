// A read-only stream over a caller's bytes that gives at most `chunk` bytes
// a read (0: all that is asked) and has no peek, so that a reader must
// gather and may never look ahead: what the listing suites run every case
// through.
#ifndef OSTREL_TESTS_CHUNKEDSTRM_H
#define OSTREL_TESTS_CHUNKEDSTRM_H

#include <algorithm>
#include <cstring>
#include <string_view>

#include "tarnex/strm.h"

namespace testutil {

struct ChunkedStrm {
  IStrm base;
  std::string_view bytes;
  size_t pos = 0;
  int32_t chunk = 0;

  ChunkedStrm(std::string_view b, int32_t c) : base{&kOps}, bytes(b), chunk(c) {}
  IStrm *get() { return &base; }

 private:
  static ChunkedStrm *self(IStrm *s) { return reinterpret_cast<ChunkedStrm *>(s); }
  static int32_t read(IStrm *s, void *buf, int32_t n) {
    ChunkedStrm *c = self(s);
    if (n < 0 || (buf == nullptr && n > 0)) return -1;
    size_t take = std::min<size_t>(static_cast<size_t>(n), c->bytes.size() - c->pos);
    if (c->chunk > 0) take = std::min<size_t>(take, static_cast<size_t>(c->chunk));
    if (take != 0) std::memcpy(buf, c->bytes.data() + c->pos, take);
    c->pos += take;
    return static_cast<int32_t>(take);
  }
  static int32_t getc(IStrm *s) {
    unsigned char b;
    return read(s, &b, 1) == 1 ? b : -1;
  }
  static int32_t seek(IStrm *s, uint32_t lo, int32_t hi, int32_t whence) {
    ChunkedStrm *c = self(s);
    const int64_t off = static_cast<int64_t>((static_cast<uint64_t>(static_cast<uint32_t>(hi)) << 32) | lo);
    const int64_t base = whence == KVO_SEEK_SET ? 0
                         : whence == KVO_SEEK_CUR ? static_cast<int64_t>(c->pos)
                                                  : static_cast<int64_t>(c->bytes.size());
    const int64_t to = base + off;
    if (to < 0) return -1;
    c->pos = std::min<size_t>(static_cast<size_t>(to), c->bytes.size());
    return 0;
  }
  static constexpr IStrmOps kOps = {
      [](IStrm *) {}, nullptr, getc, [](IStrm *, int32_t) { return -1; }, read, nullptr, seek,
      [](IStrm *s) { return static_cast<int64_t>(self(s)->pos); },
      [](IStrm *s) { return static_cast<int64_t>(self(s)->bytes.size()); }, nullptr, nullptr};
};

// The read sizes every listing case runs at: a byte, an odd few, a page,
// and all at once.
inline constexpr int32_t kReadSizes[] = {1, 7, 4096, 0};

}  // namespace testutil

#endif  // OSTREL_TESTS_CHUNKEDSTRM_H
