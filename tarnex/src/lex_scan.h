// Internal byte source, byte sink and line-end rules shared by the lexer and
// the line readers.
//
// Source reads a stream through its peek window when the stream has one:
// bytes are taken by moving a pointer, and the stream itself is moved once
// per window (commit), not once per byte. Streams without peek are read
// with getc/ungetc. Both paths give the same bytes, so the readers are
// written once against next()/back() and add fast loops over the window.
//
// next() gives a byte or -1. The -1 means the end, or a fault of the stream
// when fault() is not 0; readers end either way and report through
// finish().
#ifndef TARNEX_SRC_LEX_SCAN_H
#define TARNEX_SRC_LEX_SCAN_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "tarnex/strm.h"

namespace tarnex::lex {

inline constexpr bool isEol(int c) { return c == '\r' || c == '\n'; }
inline constexpr bool isFoldBlank(int c) { return c == ' ' || c == '\t'; }

// The first byte in [p, lim) that is one of Needles, or lim. Line ends are
// found with it, so it runs over every byte of a value: 32 bytes a step
// where SSE2 is there (most lines take one or two steps), 8 with word
// arithmetic elsewhere.
#if defined(__SSE2__)
template <uint8_t... Needles>
inline uint32_t hits16(const uint8_t *p) {
  const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
  __m128i m = _mm_setzero_si128();
  ((m = _mm_or_si128(m, _mm_cmpeq_epi8(v, _mm_set1_epi8(static_cast<char>(Needles))))), ...);
  return static_cast<uint32_t>(_mm_movemask_epi8(m));
}
#endif

template <uint8_t... Needles>
inline const uint8_t *findAny(const uint8_t *p, const uint8_t *lim) {
#if defined(__SSE2__)
  while (lim - p >= 32) {
    const uint32_t mask = hits16<Needles...>(p) | hits16<Needles...>(p + 16) << 16;
    if (mask != 0) return p + __builtin_ctz(mask);
    p += 32;
  }
  if (lim - p >= 16) {
    const uint32_t mask = hits16<Needles...>(p);
    if (mask != 0) return p + __builtin_ctz(mask);
    p += 16;
  }
#elif defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
  // A byte equal to x makes (w ^ x..x) hold a zero byte; the lowest flagged
  // byte of the zero test is exact (only bytes above a true zero can be
  // flagged falsely), which is the one we want on a little-endian load.
  constexpr uint64_t kOnes = 0x0101010101010101ull, kHigh = 0x8080808080808080ull;
  auto zeros = [](uint64_t w) { return (w - kOnes) & ~w & kHigh; };
  while (lim - p >= 8) {
    uint64_t w;
    std::memcpy(&w, p, 8);
    const uint64_t m = (zeros(w ^ (Needles * kOnes)) | ...);
    if (m != 0) return p + (__builtin_ctzll(m) >> 3);
    p += 8;
  }
#endif
  while (p < lim && ((*p != Needles) && ...)) ++p;
  return p;
}

inline const uint8_t *findEol(const uint8_t *p, const uint8_t *lim) {
  return findAny<'\r', '\n'>(p, lim);
}

class Source {
 public:
  explicit Source(IStrm *s) : s_(s), peekable_(s->ops->peek != nullptr) {}
  ~Source() { commit(); }
  Source(const Source &) = delete;
  Source &operator=(const Source &) = delete;

  // The window: bytes that can be taken without a call. Empty for streams
  // without peek, and whenever it has been used up (next() refills it).
  const uint8_t *cur() const { return cur_; }
  const uint8_t *lim() const { return lim_; }
  // Takes the window's bytes up to p (cur() <= p <= lim()).
  void take(const uint8_t *p) {
    cur_ = p;
    last_ = Last::None;
  }
  // Opens a new window when the current one is used up, so that fast
  // loops see the stream's bytes before next() has to.
  void fill() {
    if (cur_ == lim_ && peekable_ && fault_ == 0) refill();
  }
  bool peekable() const { return peekable_; }
  // Whether the byte of the last next() came from the window (it then
  // stands at cur() - 1).
  bool tookFromWindow() const { return last_ == Last::Window; }
  int32_t fault() const { return fault_; }

  int next() {
    if (cur_ != lim_) {
      last_ = Last::Window;
      return *cur_++;
    }
    return nextSlow();
  }

  // Puts back the byte of the last next() (one level only).
  void back() {
    if (last_ == Last::Window) {
      --cur_;
    } else if (last_ == Last::Getc) {
      const int32_t r = IStrm_ungetc(s_, lastByte_);
      if (r < 0) setFault(r);
    }
    last_ = Last::None;
  }

  // Puts back the k bytes last taken (k small: a line end).
  void unread(int32_t k) {
    last_ = Last::None;
    if (cur_ - start_ >= k) {
      cur_ -= k;
      return;
    }
    commit();
    drop();
    const int32_t r = IStrm_seek(s_, -static_cast<int64_t>(k), KVO_SEEK_CUR);
    if (r < 0) setFault(r);
  }

  // Moves the stream to what has been taken. Gives the fault, or 0.
  int32_t commit() {
    if (cur_ != base_) {
      const int64_t k = cur_ - base_;
      base_ = cur_;
      const int32_t r = IStrm_seek(s_, k, KVO_SEEK_CUR);
      if (r < 0) setFault(r);
    }
    return fault_;
  }

  // The stream position of the next byte, for a later rewindTo; negative
  // when the stream cannot tell.
  int64_t mark() {
    commit();
    drop();
    if (fault_ != 0) return -1;
    return IStrm_tell(s_);
  }

  void rewindTo(int64_t pos) {
    drop();
    last_ = Last::None;
    const int32_t r = IStrm_seek(s_, pos, KVO_SEEK_SET);
    if (r < 0) setFault(r);
  }

 private:
  enum class Last : uint8_t { None, Window, Getc };

  int nextSlow() {
    if (fault_ != 0) return -1;
    if (peekable_ && refill()) {
      last_ = Last::Window;
      return *cur_++;
    }
    if (fault_ != 0) return -1;
    const int32_t c = IStrm_getc(s_);
    if (c >= 0) {
      last_ = Last::Getc;
      lastByte_ = c & 0xFF;
      return lastByte_;
    }
    last_ = Last::None;
    if (c < -1) setFault(c);
    return -1;
  }

  // A new window at the stream's position; false when the stream shows none
  // (then getc decides whether there is a byte).
  bool refill() {
    if (commit() != 0) return false;
    const uint8_t *p = nullptr;
    const int64_t n = s_->ops->peek(s_, &p);
    if (n <= 0 || p == nullptr) {
      drop();
      return false;
    }
    start_ = base_ = cur_ = p;
    lim_ = p + n;
    return true;
  }

  void drop() { start_ = base_ = cur_ = lim_ = nullptr; }
  void setFault(int32_t r) {
    if (fault_ == 0) fault_ = r;
  }

  IStrm *s_;
  const uint8_t *start_ = nullptr;  // where the window began
  const uint8_t *base_ = nullptr;   // what the stream's position stands for
  const uint8_t *cur_ = nullptr;
  const uint8_t *lim_ = nullptr;
  bool peekable_;
  Last last_ = Last::None;
  int lastByte_ = 0;
  int32_t fault_ = 0;
};

// Collects output bytes and writes them in runs; a null stream drops them.
class Sink {
 public:
  static constexpr int32_t kCap = 512;

  explicit Sink(IStrm *v) : v_(v) {}
  Sink(const Sink &) = delete;
  Sink &operator=(const Sink &) = delete;

  void put(uint8_t c) {
    if (n_ == kCap) flush();
    buf_[n_++] = c;
  }

  // A run of the input: written straight through when nothing waits in
  // the buffer (a value on one line costs one write and no copy), else
  // gathered with what waits.
  void put(const uint8_t *p, size_t n) {
    if (n_ == 0 && n >= kDirect) {
      writeRun(p, n);
      return;
    }
    if (n <= static_cast<size_t>(kCap - n_)) {
      if (n != 0) std::memcpy(buf_ + n_, p, n);
      n_ += static_cast<int32_t>(n);
      return;
    }
    flush();
    writeRun(p, n);
  }

  // A run of the window ending at most at lim; short runs are copied with
  // one fixed-size move (reading up to 16 bytes when the window has them)
  // instead of a call.
  void put(const uint8_t *p, size_t n, const uint8_t *lim) {
    if (n <= 16 && lim - p >= 16 && kCap - n_ >= 16) {
      std::memcpy(buf_ + n_, p, 16);
      n_ += static_cast<int32_t>(n);
      return;
    }
    put(p, n);
  }

  // Room for k (<= kCap) bytes at the end of the buffer, to be claimed
  // with claim(k).
  uint8_t *room(int32_t k) {
    if (kCap - n_ < k) flush();
    return buf_ + n_;
  }
  void claim(int32_t k) { n_ += k; }
  // Bytes free behind the buffered ones.
  int32_t space() const { return kCap - n_; }

  int32_t flush() {
    if (n_ != 0) write(buf_, n_);
    n_ = 0;
    return fault_;
  }
  int32_t fault() const { return fault_; }

 private:
  static constexpr size_t kDirect = 32;

  void writeRun(const uint8_t *p, size_t n) {
    constexpr size_t kChunk = size_t{1} << 30;
    while (n != 0) {
      const size_t k = n < kChunk ? n : kChunk;
      write(p, static_cast<int32_t>(k));
      p += k;
      n -= k;
    }
  }

  void write(const uint8_t *p, int32_t n) {
    if (v_ == nullptr || fault_ != 0) return;
    const int32_t r = IStrm_write(v_, p, n);
    if (r < 0) fault_ = r;
  }

  IStrm *v_;
  int32_t fault_ = 0;
  int32_t n_ = 0;
  uint8_t buf_[kCap];
};

// With q at a CR or LF of the window: the byte behind the whole line end,
// when the window shows it too (so that a fold can be told without a
// call), else null and the line end is left to next().
inline const uint8_t *lineEndIn(const uint8_t *q, const uint8_t *lim) {
  const uint8_t *e = q + 1;
  if (*q == '\r') {
    if (e == lim) return nullptr;
    if (*e == '\n') {
      ++e;
    } else if (*e == '\r') {
      // CR CR LF is one line end: some phones write it (iOS 5 did).
      if (e + 1 == lim) return nullptr;
      if (e[1] == '\n') e += 2;
    }
  }
  return e != lim ? e : nullptr;
}

enum class LineEnd { None, Fold, End };

// Takes a line end at the window's cursor when the window shows it whole,
// with the blank of a fold when unfolding. None: no line end there, or one
// the window cannot tell, left to next().
inline LineEnd takeLineEndIn(Source &src, bool unfold) {
  const uint8_t *const q = src.cur();
  if (q == src.lim() || !isEol(*q)) return LineEnd::None;
  const uint8_t *const e = lineEndIn(q, src.lim());
  if (e == nullptr) return LineEnd::None;
  if (unfold && isFoldBlank(*e)) {
    src.take(e + 1);
    return LineEnd::Fold;
  }
  src.take(e);
  return LineEnd::End;
}

// After a CR or LF from next(): takes the LF that completes a CR LF.
// CR CR LF counts as one line end, as in lineEndIn.
inline void takeEol(Source &src, int c) {
  if (c != '\r') return;
  const int d = src.next();
  if (d == '\r') {
    const int f = src.next();
    if (f != '\n') src.unread(f >= 0 ? 2 : 1);
    return;
  }
  if (d >= 0 && d != '\n') src.back();
}

// Whether the line end just taken is a fold; its blank is then taken too.
inline bool takeFold(Source &src) {
  const int d = src.next();
  if (isFoldBlank(d)) return true;
  if (d >= 0) src.back();
  return false;
}

// Result of a reader: a fault of either stream wins over the code.
inline int32_t finish(Source &src, Sink &out, int32_t code) {
  const int32_t w = out.flush();
  const int32_t r = src.commit();
  if (r != 0) return r;
  if (w != 0) return w;
  return code;
}

}  // namespace tarnex::lex

#endif  // TARNEX_SRC_LEX_SCAN_H
