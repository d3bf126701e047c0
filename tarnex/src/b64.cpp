// Base64 (RFC 4648 alphabet, "=" padding) for property values.
//
// The encoder works on blocks of whole groups and folds the text while it
// copies it out, so the inner loop never looks at the line width. The
// decoder is lenient in the way phones need: it skips anything outside the
// alphabet, because values arrive folded, indented and sometimes with stray
// bytes of a broken transfer.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "codec_sink.h"
#include "tarnex/codec.h"

namespace {

using tarnex::codec::readFull;
using tarnex::codec::StrmSink;

constexpr char kAlphabet[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The two digits of every 12-bit value: a group of three bytes is two
// lookups instead of four.
constexpr std::array<std::array<char, 2>, 4096> kPair = [] {
  std::array<std::array<char, 2>, 4096> t{};
  for (int v = 0; v < 4096; ++v) t[v] = {kAlphabet[v >> 6], kAlphabet[v & 63]};
  return t;
}();

// Decoder classes beside the 64 digit values.
constexpr uint8_t kSkip = 64;  // white space, stray bytes
constexpr uint8_t kStop = 65;  // "=" or the terminator

constexpr std::array<uint8_t, 256> kDigit = [] {
  std::array<uint8_t, 256> t{};
  t.fill(kSkip);
  for (uint8_t i = 0; i < 64; ++i) t[static_cast<uint8_t>(kAlphabet[i])] = i;
  t['='] = kStop;
  t[0] = kStop;
  return t;
}();

// Input is taken in whole groups so that only the last block can need
// padding.
constexpr int32_t kInBlock = 3 * 1024;
constexpr int32_t kOutBlock = kInBlock / 3 * 4;

// Encodes n bytes (padding the last group) into out; gives the characters.
int32_t encodeBlock(const uint8_t *in, int32_t n, char *out) {
  char *o = out;
  int32_t i = 0;
  for (; i + 3 <= n; i += 3) {
    const uint32_t v = (uint32_t{in[i]} << 16) | (uint32_t{in[i + 1]} << 8) | in[i + 2];
    std::memcpy(o, kPair[v >> 12].data(), 2);
    std::memcpy(o + 2, kPair[v & 4095].data(), 2);
    o += 4;
  }
  if (n - i == 1) {
    const uint32_t v = uint32_t{in[i]} << 16;
    o[0] = kAlphabet[v >> 18];
    o[1] = kAlphabet[(v >> 12) & 63];
    o[2] = '=';
    o[3] = '=';
    o += 4;
  } else if (n - i == 2) {
    const uint32_t v = (uint32_t{in[i]} << 16) | (uint32_t{in[i + 1]} << 8);
    o[0] = kAlphabet[v >> 18];
    o[1] = kAlphabet[(v >> 12) & 63];
    o[2] = kAlphabet[(v >> 6) & 63];
    o[3] = '=';
    o += 4;
  }
  return static_cast<int32_t>(o - out);
}

// Copies encoded text out, folding it with CR LF and a blank whenever a
// line is full and more text follows.
class Folder {
 public:
  Folder(StrmSink &sink, int32_t width, int32_t column)
      : sink_(sink), width_(width), col_(column) {}

  void put(const char *p, int32_t n) {
    if (width_ < 4) {
      sink_.put(p, n);
      return;
    }
    while (n > 0 && !sink_.failed()) {
      if (col_ >= width_) {
        sink_.put("\r\n ", 3);
        col_ = 1;
      }
      const int32_t k = std::min(n, width_ - col_);
      sink_.put(p, k);
      col_ += k;
      p += k;
      n -= k;
    }
  }

 private:
  StrmSink &sink_;
  const int32_t width_;
  int32_t col_;
};

}  // namespace

extern "C" {

TARNEX_API int32_t b64_enc_strm_from_strm(IStrm *out, IStrm *in, int32_t width,
                                          int32_t start) {
  if (!out || !in) {
    kvo_assert__("out && in", __FILE__, __LINE__);
    return 0;
  }
  // Behind an uncounted column the first line is filled as a continuation
  // line is, the blank that leads those counted as the one column.
  StrmSink sink(out);
  Folder folder(sink, width, start == -1 ? 1 : std::max(start, int32_t{0}));
  uint8_t block[kInBlock];
  char text[kOutBlock];
  for (;;) {
    const int32_t n = readFull(in, block, kInBlock);
    if (n == 0) break;
    folder.put(text, encodeBlock(block, n, text));
    if (n < kInBlock || sink.failed()) break;
  }
  return sink.finish();
}

TARNEX_API int32_t b64_dec_str_to_buf(const char *text, uint8_t *buf, int32_t size) {
  if (!text || size < 1) return 0;
  if (!buf) {
    kvo_assert__("buf", __FILE__, __LINE__);
    return 0;
  }
  const auto *p = reinterpret_cast<const uint8_t *>(text);
  uint8_t *o = buf;
  uint8_t *const end = buf + size;
  uint32_t acc = 0;
  int n = 0;  // digits in acc
  for (;;) {
    // Whole groups of unbroken text take the short way. The checks run in
    // order, so nothing behind a terminator is read.
    while (n == 0 && end - o >= 3) {
      const uint32_t a = kDigit[p[0]];
      if (a >= 64) break;
      const uint32_t b = kDigit[p[1]];
      if (b >= 64) break;
      const uint32_t c = kDigit[p[2]];
      if (c >= 64) break;
      const uint32_t d = kDigit[p[3]];
      if (d >= 64) break;
      const uint32_t v = (a << 18) | (b << 12) | (c << 6) | d;
      o[0] = static_cast<uint8_t>(v >> 16);
      o[1] = static_cast<uint8_t>(v >> 8);
      o[2] = static_cast<uint8_t>(v);
      o += 3;
      p += 4;
    }
    if (o == end) break;
    const uint8_t v = kDigit[*p];
    if (v == kStop) break;
    ++p;
    if (v == kSkip) continue;
    acc = (acc << 6) | v;
    if (++n < 4) continue;
    const uint8_t group[3] = {static_cast<uint8_t>(acc >> 16), static_cast<uint8_t>(acc >> 8),
                              static_cast<uint8_t>(acc)};
    for (int i = 0; i < 3 && o < end; ++i) *o++ = group[i];
    acc = 0;
    n = 0;
  }
  // A cut group: 2 digits carry 1 byte, 3 carry 2.
  if (n == 2 && o < end) {
    *o++ = static_cast<uint8_t>(acc >> 4);
  } else if (n == 3) {
    if (o < end) *o++ = static_cast<uint8_t>(acc >> 10);
    if (o < end) *o++ = static_cast<uint8_t>(acc >> 2);
  }
  return static_cast<int32_t>(o - buf);
}

}  // extern "C"
