// Buffered output for the text codecs.
//
// Encoders produce a few characters per input byte; going through the
// stream's operation table for each of them would cost more than the
// encoding itself. The sink gathers output in a block and hands the stream
// whole blocks, and it keeps the first fault of the stream so an encoder
// can stop at once and report it.
#ifndef TARNEX_SRC_CODEC_SINK_H
#define TARNEX_SRC_CODEC_SINK_H

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>

#include "tarnex/strm.h"

namespace tarnex::codec {

class StrmSink {
 public:
  static constexpr int32_t kCap = 4096;

  explicit StrmSink(IStrm *out) : out_(out) {}
  StrmSink(const StrmSink &) = delete;
  StrmSink &operator=(const StrmSink &) = delete;

  bool failed() const { return err_ < 0; }

  void put(const char *p, int32_t n) {
    while (n > 0 && !failed()) {
      if (len_ == kCap) flush();
      const int32_t k = std::min(n, kCap - len_);
      std::memcpy(buf_ + len_, p, static_cast<size_t>(k));
      len_ += k;
      p += k;
      n -= k;
    }
  }

  void put1(char c) {
    if (len_ == kCap) flush();
    buf_[len_++] = c;
  }

  // Contiguous room for n bytes (n <= kCap) at the end of the block; the
  // caller fills what it uses and commits that count.
  char *room(int32_t n) {
    if (kCap - len_ < n) flush();
    return buf_ + len_;
  }
  void commit(int32_t n) { len_ += n; }

  // Hands the rest to the stream; gives the bytes written or its fault.
  int32_t finish() {
    flush();
    if (failed()) return err_;
    return total_ > INT32_MAX ? INT32_MAX : static_cast<int32_t>(total_);
  }

 private:
  void flush() {
    const char *p = buf_;
    int32_t n = len_;
    len_ = 0;
    while (n > 0 && !failed()) {
      const int32_t r = IStrm_write(out_, p, n);
      if (r < 0) {
        err_ = r;
      } else if (r == 0) {
        err_ = -1;  // a stream that takes nothing would loop for ever
      } else {
        const int32_t k = std::min(r, n);
        p += k;
        n -= k;
        total_ += k;
      }
    }
  }

  IStrm *out_;
  int32_t len_ = 0;
  int32_t err_ = 0;
  int64_t total_ = 0;
  char buf_[kCap];
};

// Reads until buf holds n bytes or the stream ends: a stream of a caller may
// hand out fewer bytes than asked without being at its end.
inline int32_t readFull(IStrm *in, uint8_t *buf, int32_t n) {
  int32_t have = 0;
  while (have < n) {
    const int32_t r = IStrm_read(in, buf + have, n - have);
    if (r <= 0) break;
    have += std::min(r, n - have);
  }
  return have;
}

}  // namespace tarnex::codec

#endif  // TARNEX_SRC_CODEC_SINK_H
