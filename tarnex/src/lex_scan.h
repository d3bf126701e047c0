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

// The first byte in [p, lim) equal to a, b or c, or lim. Line ends are
// found with it, so it runs over every byte of a value: 16 bytes a step
// where SSE2 is there, 8 with word arithmetic elsewhere.
inline const uint8_t *findAny(const uint8_t *p, const uint8_t *lim, uint8_t a, uint8_t b,
                              uint8_t c) {
#if defined(__SSE2__)
  const __m128i va = _mm_set1_epi8(static_cast<char>(a));
  const __m128i vb = _mm_set1_epi8(static_cast<char>(b));
  const __m128i vc = _mm_set1_epi8(static_cast<char>(c));
  while (lim - p >= 16) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
    const __m128i hit = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(v, va), _mm_cmpeq_epi8(v, vb)),
                                     _mm_cmpeq_epi8(v, vc));
    const int mask = _mm_movemask_epi8(hit);
    if (mask != 0) return p + __builtin_ctz(static_cast<unsigned>(mask));
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
    const uint64_t m = zeros(w ^ (a * kOnes)) | zeros(w ^ (b * kOnes)) | zeros(w ^ (c * kOnes));
    if (m != 0) return p + (__builtin_ctzll(m) >> 3);
    p += 8;
  }
#endif
  while (p < lim && *p != a && *p != b && *p != c) ++p;
  return p;
}

inline const uint8_t *findEol(const uint8_t *p, const uint8_t *lim) {
  return findAny(p, lim, '\r', '\n', '\n');
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
  bool peekable() const { return peekable_; }
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

  void put(const uint8_t *p, size_t n) {
    if (n <= static_cast<size_t>(kCap - n_)) {
      if (n != 0) std::memcpy(buf_ + n_, p, n);
      n_ += static_cast<int32_t>(n);
      return;
    }
    flush();
    constexpr size_t kChunk = size_t{1} << 30;
    while (n > static_cast<size_t>(kCap)) {
      const size_t k = n < kChunk ? n : kChunk;
      write(p, static_cast<int32_t>(k));
      p += k;
      n -= k;
    }
    std::memcpy(buf_, p, n);
    n_ = static_cast<int32_t>(n);
  }

  // Room for k (<= kCap) bytes at the end of the buffer, to be claimed
  // with claim(k).
  uint8_t *room(int32_t k) {
    if (kCap - n_ < k) flush();
    return buf_ + n_;
  }
  void claim(int32_t k) { n_ += k; }

  int32_t flush() {
    if (n_ != 0) write(buf_, n_);
    n_ = 0;
    return fault_;
  }
  int32_t fault() const { return fault_; }

 private:
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

// After a CR or LF from next(): takes the LF that completes a CR LF.
inline void takeEol(Source &src, int c) {
  if (c != '\r') return;
  const int d = src.next();
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
