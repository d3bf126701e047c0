// Quoted-printable for property values.
//
// The encoder must keep three promises at once: no line longer than the
// width, no blank or tab where a reader would drop it (at the end of the
// value or before a soft break) or take it for a fold (at the start of a
// line), and no escape cut by a break. It does so with one byte of
// lookahead: a blank is written as it is only if the line has room for it,
// for whatever may follow it and for a soft break behind that.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "codec_sink.h"
#include "tarnex/codec.h"

namespace {

using tarnex::codec::readFull;
using tarnex::codec::StrmSink;

enum : uint8_t { kLiteral, kBlank, kEscape };

constexpr std::array<uint8_t, 256> kClass = [] {
  std::array<uint8_t, 256> t{};
  for (int c = 0; c < 256; ++c)
    t[c] = (c >= 0x21 && c <= 0x7E && c != '=') ? kLiteral
           : (c == ' ' || c == '\t')            ? kBlank
                                                : kEscape;
  return t;
}();

// 0/1 forms of the classes, for the branch-free run scan below.
constexpr std::array<uint8_t, 256> kIsLiteral = [] {
  std::array<uint8_t, 256> t{};
  for (int c = 0; c < 256; ++c) t[c] = kClass[c] == kLiteral;
  return t;
}();
constexpr std::array<uint8_t, 256> kIsBlank = [] {
  std::array<uint8_t, 256> t{};
  for (int c = 0; c < 256; ++c) t[c] = kClass[c] == kBlank;
  return t;
}();

// Eight bytes at once: true if all are written as they are, blanks being
// single spaces each followed by such a byte (p[8] for the last of them).
// Tabs and everything else take the byte-wise scan.
bool runOfEight(const uint8_t *p) {
  constexpr uint64_t kOnes = 0x0101010101010101ULL;
  constexpr uint64_t kHigh = 0x8080808080808080ULL;
  constexpr uint64_t kLow7 = 0x7F7F7F7F7F7F7F7FULL;
  uint64_t x;
  std::memcpy(&x, p, 8);
  // High bit of each byte equal to c (exact, no carries between bytes).
  const auto equal = [x](uint8_t c) {
    const uint64_t t = x ^ (kOnes * c);
    return ~(((t & kLow7) + kLow7) | t | kLow7);
  };
  // Whether any byte is below 0x20 or above 0x7E (borrows and carries may
  // mark a byte beside a true one, never a lone one).
  const uint64_t below = (x - kOnes * 0x20) & ~x & kHigh;
  const uint64_t above = ((x + kOnes) | x) & kHigh;
  const uint64_t spaces = equal(' ');
  if (below | above | equal('=') | (spaces & (spaces >> 8))) return false;
  return p[7] != ' ' || kIsLiteral[p[8]];
}

constexpr char kHexUpper[] = "0123456789ABCDEF";

// Hex digit values, 0xFF for anything else (either case is read).
constexpr std::array<uint8_t, 256> kHexVal = [] {
  std::array<uint8_t, 256> t{};
  t.fill(0xFF);
  for (int c = 0; c < 10; ++c) t['0' + c] = static_cast<uint8_t>(c);
  for (int c = 0; c < 6; ++c) {
    t['A' + c] = static_cast<uint8_t>(10 + c);
    t['a' + c] = static_cast<uint8_t>(10 + c);
  }
  return t;
}();

constexpr int32_t kInBlock = 4096;

class QpWriter {
 public:
  QpWriter(StrmSink &sink, int32_t width, int32_t column)
      : sink_(sink),
        width_(width >= 4 ? width : 0),
        // Without breaks only "at the start of a line or not" matters; with
        // them, a column past the width means the same as the width.
        col_(std::clamp(column, int32_t{0}, width_ ? width_ : int32_t{1})) {}

  // Bytes written as they are, and blanks each followed by such a byte;
  // none of them the last of the value, and the last of them no blank.
  // Copied a line's worth at a time.
  void run(const uint8_t *p, int32_t n) {
    while (n > 0 && !sink_.failed()) {
      // A blank that begins a line or would end one goes the long way.
      if (kClass[*p] == kBlank && (col_ == 0 || (width_ && col_ + 3 > width_))) {
        byte(p[0], p[1]);
        ++p;
        --n;
        continue;
      }
      int32_t k = n;
      if (width_) {
        const int32_t room = width_ - 1 - col_;  // keep one place for "="
        if (room <= 0) {
          softBreak();
          continue;
        }
        k = std::min(n, room);
        // Only the last place before "=" is too late for a blank (above).
        if (k < n && kClass[p[k - 1]] == kBlank) --k;
      }
      sink_.put(reinterpret_cast<const char *>(p), k);
      advance(k);
      p += k;
      n -= k;
    }
  }

  // One byte; next is the byte behind it, or -1 when c ends the value.
  void byte(uint8_t c, int next) {
    const bool last = next < 0;
    switch (kClass[c]) {
      case kLiteral:
        fit(1, last);
        sink_.put1(static_cast<char>(c));
        advance(1);
        return;
      case kBlank:
        if (!last && col_ > 0 && blankFits(static_cast<uint8_t>(next))) {
          sink_.put1(static_cast<char>(c));
          advance(1);
          return;
        }
        break;
      default:
        break;
    }
    fit(3, last);
    char *o = sink_.room(3);
    o[0] = '=';
    o[1] = kHexUpper[c >> 4];
    o[2] = kHexUpper[c & 15];
    sink_.commit(3);
    advance(3);
  }

 private:
  // A literal blank needs room behind it for the next byte in its widest
  // form (a blank may become "=20") and a soft break, so that a break can
  // never follow it.
  bool blankFits(uint8_t next) const {
    if (!width_) return true;
    const int32_t need = kClass[next] == kLiteral ? 1 : 3;
    return col_ + 1 + need + 1 <= width_;
  }

  // Breaks the line first unless len characters fit, with a place left for
  // a soft break unless they end the value.
  void fit(int32_t len, bool last) {
    if (width_ && col_ > 0 && col_ + len + (last ? 0 : 1) > width_) softBreak();
  }

  // Without breaks the column is kept at 1, so that a long value cannot
  // overflow it.
  void advance(int32_t n) { col_ = width_ ? col_ + n : 1; }

  void softBreak() {
    sink_.put("=\r\n", 3);
    col_ = 0;
  }

  StrmSink &sink_;
  const int32_t width_;  // 0: no breaks
  int32_t col_;
};

}  // namespace

extern "C" {

TARNEX_API int32_t qp_enc_strm_from_strm(IStrm *out, IStrm *in, int32_t width,
                                         int32_t column) {
  if (!out || !in) {
    kvo_assert__("out && in", __FILE__, __LINE__);
    return 0;
  }
  StrmSink sink(out);
  QpWriter writer(sink, width, column);
  uint8_t block[kInBlock];
  int32_t have = 0;
  for (;;) {
    have += readFull(in, block + have, kInBlock - have);
    const bool atEnd = have < kInBlock;
    // Every byte but the block's last has its successor at hand; the last
    // one waits for the next block unless the value ends with it.
    //
    // A run: bytes written as they are, and blanks each followed by one;
    // words with single blanks between them make one run. The scan is
    // branch-free per byte, because blanks come too often to predict.
    const auto runEnd = [&](int32_t j) {
      while (j + 8 < have - 1 && runOfEight(block + j)) j += 8;
      while (j < have - 2 &&
             (kIsLiteral[block[j]] | (kIsBlank[block[j]] & kIsLiteral[block[j + 1]])))
        ++j;
      if (j == have - 2 && kIsLiteral[block[j]]) ++j;
      return j;
    };
    int32_t i = 0;
    while (i < have - 1 && !sink.failed()) {
      const int32_t j = runEnd(i);
      if (j > i) {
        writer.run(block + i, j - i);
        i = j;
      } else {
        writer.byte(block[i], block[i + 1]);
        ++i;
      }
    }
    if (sink.failed()) break;
    if (atEnd) {
      if (have > 0) writer.byte(block[have - 1], -1);
      break;
    }
    block[0] = block[have - 1];
    have = 1;
  }
  return sink.finish();
}

TARNEX_API int32_t qp_dec_str_to_buf(const char *text, uint8_t *buf, int32_t size) {
  if (!text || size < 1) return 0;
  if (!buf) {
    kvo_assert__("buf", __FILE__, __LINE__);
    return 0;
  }
  const char *p = text;
  uint8_t *o = buf;
  uint8_t *const end = buf + size;
  while (o < end) {
    // Plain text up to the next "=" goes across in one copy.
    const size_t plain = std::strcspn(p, "=");
    const size_t k = std::min(plain, static_cast<size_t>(end - o));
    std::memcpy(o, p, k);
    o += k;
    p += k;
    if (k < plain || *p == '\0' || o == end) break;
    // *p is "=". Blanks before a line end are what a transport may have
    // added behind a soft break.
    const char *q = p + 1;
    while (*q == ' ' || *q == '\t') ++q;
    if (*q == '\r' || *q == '\n') {
      p = q + ((q[0] == '\r' && q[1] == '\n') ? 2 : 1);
      continue;
    }
    const uint8_t hi = kHexVal[static_cast<uint8_t>(p[1])];
    const uint8_t lo = hi == 0xFF ? 0xFF : kHexVal[static_cast<uint8_t>(p[2])];
    if (lo == 0xFF) {
      *o++ = '=';
      ++p;
    } else {
      *o++ = static_cast<uint8_t>((hi << 4) | lo);
      p += 3;
    }
  }
  return static_cast<int32_t>(o - buf);
}

}  // extern "C"
