// Byte-at-a-time reading of a stream without a call through the table per
// byte: streams that can lend their buffer (peek) are read in place and
// moved on once, when the reader ends; others fall back to getc.
#ifndef OSTREL_DETAIL_BYTEREADER_H
#define OSTREL_DETAIL_BYTEREADER_H

#include <cstdint>

#include "tarnex/strm.h"

namespace ostrel::detail {

class ByteReader {
 public:
  explicit ByteReader(IStrm *s) : s_(s) {
    const int64_t n = IStrm_peek(s, &begin_);
    if (begin_ != nullptr) {
      p_ = begin_;
      end_ = begin_ + n;
    }
  }
  ~ByteReader() {
    if (begin_ != nullptr && p_ != begin_) IStrm_seek(s_, p_ - begin_, KVO_SEEK_CUR);
  }
  ByteReader(const ByteReader &) = delete;
  ByteReader &operator=(const ByteReader &) = delete;

  // The next byte, or -1 at the end.
  int32_t next() {
    if (begin_ == nullptr) return IStrm_getc(s_);
    return p_ < end_ ? *p_++ : -1;
  }

  // In-place mode only: the bytes not yet read, so that callers can copy
  // whole runs; null when the stream reads byte by byte.
  const uint8_t *rest(int64_t *n) const {
    *n = begin_ ? end_ - p_ : 0;
    return begin_ ? p_ : nullptr;
  }
  void skip(int64_t n) { p_ += n; }

 private:
  IStrm *s_;
  const uint8_t *begin_ = nullptr;
  const uint8_t *p_ = nullptr;
  const uint8_t *end_ = nullptr;
};

}  // namespace ostrel::detail

#endif  // OSTREL_DETAIL_BYTEREADER_H
