// Shared by the charset fuzz targets: a strict UTF-8 check and a stream
// without `peek` that hands out input in small reads, so both ways the
// converters read their input are covered.
#ifndef OSTREL_FUZZ_CHARSET_FUZZ_H
#define OSTREL_FUZZ_CHARSET_FUZZ_H

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_check.h"
#include "tarnex/scratch.hpp"
#include "tarnex/strm.h"

namespace charset_fuzz {

// Well-formed UTF-8 as Unicode defines it: shortest forms, no surrogates,
// nothing above U+10FFFF, no cut sequence.
inline bool validUtf8(const uint8_t *p, size_t n) {
  const uint8_t *e = p + n;
  while (p < e) {
    const uint8_t b = *p++;
    if (b < 0x80) continue;
    int more;
    uint8_t lo = 0x80, hi = 0xBF;
    if (b >= 0xC2 && b <= 0xDF) more = 1;
    else if (b == 0xE0) more = 2, lo = 0xA0;
    else if (b == 0xED) more = 2, hi = 0x9F;
    else if (b >= 0xE1 && b <= 0xEF) more = 2;
    else if (b == 0xF0) more = 3, lo = 0x90;
    else if (b == 0xF4) more = 3, hi = 0x8F;
    else if (b >= 0xF1 && b <= 0xF3) more = 3;
    else return false;
    if (e - p < more || p[0] < lo || p[0] > hi) return false;
    for (int i = 1; i < more; ++i)
      if (p[i] < 0x80 || p[i] > 0xBF) return false;
    p += more;
  }
  return true;
}

// Reads at most `chunk` bytes a call; no peek.
struct ChunkStrm {
  IStrm base;
  const uint8_t *data;
  size_t size, pos = 0, chunk;

  static ChunkStrm *self(IStrm *s) { return reinterpret_cast<ChunkStrm *>(s); }
  static int32_t read(IStrm *s, void *buf, int32_t n) {
    ChunkStrm *c = self(s);
    size_t k = c->size - c->pos;
    if (k > c->chunk) k = c->chunk;
    if (n < 0) return -1;
    if (k > static_cast<size_t>(n)) k = static_cast<size_t>(n);
    if (k) std::memcpy(buf, c->data + c->pos, k);
    c->pos += k;
    return static_cast<int32_t>(k);
  }
  static int32_t seek(IStrm *s, uint32_t low, int32_t high, int32_t whence) {
    ChunkStrm *c = self(s);
    const int64_t off = static_cast<int64_t>(static_cast<uint64_t>(static_cast<uint32_t>(high)) << 32 | low);
    const size_t from = whence == KVO_SEEK_CUR ? c->pos : whence == KVO_SEEK_END ? c->size : 0;
    const int64_t to = off + static_cast<int64_t>(from);
    if (to < 0) return -1;
    c->pos = static_cast<size_t>(to) < c->size ? static_cast<size_t>(to) : c->size;
    return 0;
  }
  static int64_t tell(IStrm *s) { return static_cast<int64_t>(self(s)->pos); }
  static int64_t size_(IStrm *s) { return static_cast<int64_t>(self(s)->size); }
  static int32_t noWrite(IStrm *, const void *, int32_t) { return -1; }
  static void noDel(IStrm *) {}
  static constexpr IStrmOps kOps = {noDel,  nullptr, nullptr, nullptr, read, noWrite,
                                    seek,   tell,    size_,   nullptr, nullptr};

  ChunkStrm(const uint8_t *d, size_t n, size_t k) : base{&kOps}, data(d), size(n), chunk(k) {}
};

inline std::string memText(IStrm *s) {
  return {reinterpret_cast<const char *>(MemStrm_data(s)), static_cast<size_t>(IStrm_size(s))};
}

// Converts the whole input with `convert` into a memory stream and checks
// that the count is the stream's size and the text well-formed UTF-8.
template <class Convert>
std::string convertChecked(Convert convert, const uint8_t *data, size_t size) {
  tarnex::ScratchStrStrm in(reinterpret_cast<const char *>(data), static_cast<int32_t>(size));
  tarnex::ScratchMemStrm utf8(0);
  const int32_t n = convert(in, utf8);
  FUZZ_CHECK(n >= 0 && n == IStrm_size(utf8));
  std::string text = memText(utf8);
  FUZZ_CHECK(validUtf8(reinterpret_cast<const uint8_t *>(text.data()), text.size()));
  return text;
}

}  // namespace charset_fuzz

#endif  // OSTREL_FUZZ_CHARSET_FUZZ_H
