// Internal stream plumbing of the charset converters: a reader that hands
// out windows of input bytes and a sink that collects output in chunks, so
// the converters loop over plain pointers instead of calling the stream's
// operations once per byte.
#ifndef TARNEX_SRC_CHARSET_IO_H
#define TARNEX_SRC_CHARSET_IO_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "tarnex/str.h"
#include "tarnex/strm.h"
#include "utf8.h"

namespace tarnex::charset {

// Windows of unread input [cur, end). Where the stream has `peek` the
// window is the stream's own memory and the stream is moved only when the
// window is given back; otherwise bytes are read into a local buffer. A
// short tail left in a window (half a character) is carried into the next
// one, so a converter may ask for a few bytes of look-ahead.
class StrmReader {
 public:
  static constexpr size_t kBufSize = 4096;
  static constexpr size_t kMaxWant = 8;

  explicit StrmReader(IStrm *s) : s_(s) {}
  StrmReader(const StrmReader &) = delete;
  StrmReader &operator=(const StrmReader &) = delete;

  // Makes at least `want` (<= kMaxWant) bytes readable at cur, fewer only
  // when the stream ends first. Gives false when nothing is left.
  bool fill(size_t want) {
    size_t left = static_cast<size_t>(end - cur);
    if (left >= want) return left > 0;
    if (inPlace_) advance(end - base_);
    if (left) std::memmove(buf_, cur, left);  // cur may point into the stream's memory
    inPlace_ = false;
    base_ = cur = buf_;
    end = buf_ + left;
    if (left == 0) {
      const uint8_t *p = nullptr;
      const int64_t n = IStrm_peek(s_, &p);
      if (n >= static_cast<int64_t>(want) && p) {
        inPlace_ = true;
        base_ = cur = p;
        end = p + n;
        return true;
      }
    }
    while (static_cast<size_t>(end - cur) < want && err_ == 0) {
      const int32_t r = IStrm_read(s_, buf_ + left, static_cast<int32_t>(kBufSize - left));
      if (r < 0) err_ = r;
      if (r <= 0) break;
      left += static_cast<size_t>(r);
      end = buf_ + left;
    }
    return end > cur;
  }

  // Leaves the stream behind the bytes consumed so far.
  void finish() {
    if (inPlace_) {
      advance(cur - base_);
      base_ = cur;
    } else if (end > cur) {
      IStrm_seek(s_, -static_cast<int64_t>(end - cur), KVO_SEEK_CUR);
      end = cur;
    }
  }

  int32_t error() const { return err_; }

  const uint8_t *cur = nullptr;
  const uint8_t *end = nullptr;

 private:
  void advance(ptrdiff_t n) {
    if (n > 0) IStrm_seek(s_, n, KVO_SEEK_CUR);
  }

  IStrm *s_;
  const uint8_t *base_ = nullptr;
  bool inPlace_ = false;
  int32_t err_ = 0;
  uint8_t buf_[kBufSize];
};

// Output gathered in a local buffer and handed on whole: to a stream
// (written at its position) or to the end of a KvoStr.
class Sink {
 public:
  static constexpr size_t kBufSize = 4096;

  explicit Sink(IStrm *out) : out_(out) {}
  explicit Sink(KvoStr *str) : str_(str) {}
  Sink(const Sink &) = delete;
  Sink &operator=(const Sink &) = delete;

  bool failed() const { return err_ != 0; }
  // Room for n (<= kBufSize) more bytes at the returned pointer; the caller
  // then reports what it wrote with commit().
  char *room(size_t n) {
    if (kBufSize - len_ < n) flush();
    return buf_ + len_;
  }
  void commit(size_t n) { len_ += n; }

  void put(char c) {
    *room(1) = c;
    ++len_;
  }
  void put(const void *p, size_t n) {
    if (n > kBufSize - len_) {
      flush();
      if (n >= kBufSize / 2) {
        hand(p, n);
        return;
      }
    }
    std::memcpy(buf_ + len_, p, n);
    len_ += n;
  }
  // A code point as UTF-8 (anything above U+10FFFF as U+FFFD).
  void putCp(uint32_t cp) { len_ += static_cast<size_t>(utf8::encode(cp, room(utf8::kMaxLen))); }

  // Hands on what is left; gives the byte count, or the first fault of the
  // output stream.
  int32_t finish() {
    flush();
    if (err_) return err_;
    return total_ > INT32_MAX ? INT32_MAX : static_cast<int32_t>(total_);
  }

 private:
  void flush() {
    if (len_) hand(buf_, len_);
    len_ = 0;
  }
  void hand(const void *p, size_t n) {
    const char *c = static_cast<const char *>(p);
    while (n > 0 && !err_) {  // a window handed out by peek may pass 2 GiB
      const int32_t k = n > static_cast<size_t>(kMaxPiece) ? kMaxPiece : static_cast<int32_t>(n);
      if (str_) {
        const int32_t before = KvoStr_len(str_);
        KvoStr_appdStrx(str_, c, k);
        total_ += KvoStr_len(str_) - before;
      } else {
        const int32_t r = IStrm_write(out_, c, k);
        if (r < 0) err_ = r;
        else total_ += r;
      }
      c += k;
      n -= static_cast<size_t>(k);
    }
  }
  static constexpr int32_t kMaxPiece = 1 << 30;

  IStrm *out_ = nullptr;
  KvoStr *str_ = nullptr;
  int64_t total_ = 0;
  int32_t err_ = 0;
  size_t len_ = 0;
  char buf_[kBufSize];
};

// Decodes the UTF-8 of `in` to its end: runs of ASCII go whole to
// ascii(p, n), every other character (U+FFFD for a bad stretch) to cp(c).
// A character is decoded only once all of it is in the window, or when
// the input ends inside it. Stops early when the sink has failed.
template <class OnAscii, class OnCp>
void decodeUtf8(StrmReader &in, const Sink &sink, OnAscii ascii, OnCp cp) {
  while (!sink.failed() && in.fill(utf8::kMaxLen)) {
    const uint8_t *p = in.cur;
    const uint8_t *const e = in.end;
    const uint8_t *const stop = e - p >= utf8::kMaxLen ? e - (utf8::kMaxLen - 1) : e;
    while (p < stop && !sink.failed()) {
      if (*p < 0x80) {
        const uint8_t *q = p + 1;
        while (q < e && *q < 0x80) ++q;
        ascii(p, static_cast<size_t>(q - p));
        p = q;
        continue;
      }
      int len = 1;
      cp(utf8::decode(p, e, &len));
      p += len;
    }
    in.cur = p;
  }
}

// A converter's result: the output's fault first, then the input's, else
// the byte count.
inline int32_t result(StrmReader &in, Sink &out) {
  in.finish();
  const int32_t n = out.finish();
  if (n < 0) return n;
  return in.error() < 0 ? in.error() : n;
}

}  // namespace tarnex::charset

#endif  // TARNEX_SRC_CHARSET_IO_H
