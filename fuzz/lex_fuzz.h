// Shared by the lexer's fuzz targets: runs a reader over the same bytes
// through three feeds (the string stream's own peek window, no peek at all,
// and peek windows of a few bytes) and checks that they agree call for
// call, and that every call either moves the stream on or ends.
#ifndef OSTREL_FUZZ_LEX_FUZZ_H
#define OSTREL_FUZZ_LEX_FUZZ_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

#include "fuzz_check.h"
#include "tarnex/lex.h"
#include "tarnex/scratch.hpp"

namespace lexfuzz {

// A string stream seen through a narrower (or no) peek window.
struct Narrow {
  IStrm base;
  IStrm *inner;
  int64_t chunk;
};

inline Narrow *narrow(IStrm *s) { return reinterpret_cast<Narrow *>(s); }
inline void nDel(IStrm *) {}
inline int32_t nPutc(IStrm *s, int32_t c) { return IStrm_putc(narrow(s)->inner, c); }
inline int32_t nGetc(IStrm *s) { return IStrm_getc(narrow(s)->inner); }
inline int32_t nUngetc(IStrm *s, int32_t c) { return IStrm_ungetc(narrow(s)->inner, c); }
inline int32_t nRead(IStrm *s, void *b, int32_t n) { return IStrm_read(narrow(s)->inner, b, n); }
inline int32_t nWrite(IStrm *s, const void *b, int32_t n) {
  return IStrm_write(narrow(s)->inner, b, n);
}
inline int32_t nSeek(IStrm *s, uint32_t lo, int32_t hi, int32_t wh) {
  return narrow(s)->inner->ops->seek(narrow(s)->inner, lo, hi, wh);
}
inline int64_t nTell(IStrm *s) { return IStrm_tell(narrow(s)->inner); }
inline int64_t nSize(IStrm *s) { return IStrm_size(narrow(s)->inner); }
inline int32_t nClear(IStrm *s) { return IStrm_clear(narrow(s)->inner); }
inline int64_t nPeek(IStrm *s, const uint8_t **p) {
  const int64_t n = IStrm_peek(narrow(s)->inner, p);
  return n < narrow(s)->chunk ? n : narrow(s)->chunk;
}
inline constexpr IStrmOps kNarrowOps = {nDel,  nPutc, nGetc, nUngetc, nRead, nWrite,
                                        nSeek, nTell, nSize, nClear,  nPeek};
inline constexpr IStrmOps kNoPeekOps = {nDel,  nPutc, nGetc, nUngetc, nRead, nWrite,
                                        nSeek, nTell, nSize, nClear,  nullptr};

// One call of a reader: reads from `in`, writes the value to `val`.
using Step = std::function<int32_t(IStrm *in, IStrm *val)>;

inline std::string contents(IStrm *s) {
  std::string out(static_cast<size_t>(IStrm_size(s)), '\0');
  IStrm_rewind(s);
  if (!out.empty()) IStrm_read(s, out.data(), static_cast<int32_t>(out.size()));
  return out;
}

// Calls step until it gives a negative code; gives every value, code and
// position in one text. A call that gives 0 or more must have moved the
// stream, and no value may be longer than the bytes it was read from
// (decoding never grows a value).
inline std::string trace(const Step &step, IStrm *in) {
  std::string out;
  const int64_t size = IStrm_size(in);
  for (;;) {
    tarnex::ScratchMemStrm val(0);
    const int64_t before = IStrm_tell(in);
    const int32_t code = step(in, val);
    const int64_t after = IStrm_tell(in);
    FUZZ_CHECK(after >= before && after <= size);
    FUZZ_CHECK(IStrm_size(val) <= after - before);
    out += contents(val);
    out += "|" + std::to_string(code) + "@" + std::to_string(after) + "\n";
    if (code < 0) {
      FUZZ_CHECK(code == KVO_EOS);
      FUZZ_CHECK(after == size);
      return out;
    }
    FUZZ_CHECK(after > before);
  }
}

// Runs step over text through the three feeds; they must agree.
inline void checkFeeds(const std::string &text, int64_t chunk, const Step &step) {
  tarnex::ScratchStrStrm own(text);
  const std::string want = trace(step, own);

  tarnex::ScratchStrStrm in1(text);
  Narrow none{{&kNoPeekOps}, in1.get(), 0};
  FUZZ_CHECK(trace(step, &none.base) == want);

  tarnex::ScratchStrStrm in2(text);
  Narrow some{{&kNarrowOps}, in2.get(), chunk};
  FUZZ_CHECK(trace(step, &some.base) == want);
}

}  // namespace lexfuzz

#endif  // OSTREL_FUZZ_LEX_FUZZ_H
