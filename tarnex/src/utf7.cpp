// UTF-7 (RFC 2152) against UTF-8.
//
// Outside a shift, characters stand for themselves; "+" opens a shift of
// modified Base64 (no "=" padding) carrying UTF-16 units, and "+-" is "+"
// itself. A shift ends at "-", which is absorbed, or at any other byte
// outside the Base64 alphabet, which is read as a direct character.
#include <array>
#include <cstdint>
#include <string_view>

#include "charset_io.h"
#include "tarnex/charset.h"
#include "utf8.h"

namespace {

using tarnex::charset::Sink;
using tarnex::charset::StrmReader;
namespace utf8 = tarnex::utf8;

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Value of each byte in the Base64 alphabet, -1 outside it.
constexpr std::array<int8_t, 256> kSextet = [] {
  std::array<int8_t, 256> t{};
  t.fill(-1);
  for (int i = 0; i < 64; ++i) t[static_cast<uint8_t>(kAlphabet[i])] = static_cast<int8_t>(i);
  return t;
}();

// What the encoder writes as it is: RFC 2152's Set D, Set O without "\"
// and "~" (national variants of ISO 646 put other letters there), and the
// white space it lets stand. "+" is never direct.
constexpr std::array<bool, 256> kDirect = [] {
  std::array<bool, 256> t{};
  for (int c = 'A'; c <= 'Z'; ++c) t[c] = true;
  for (int c = 'a'; c <= 'z'; ++c) t[c] = true;
  for (int c = '0'; c <= '9'; ++c) t[c] = true;
  for (char c : std::string_view("'(),-./:?")) t[static_cast<uint8_t>(c)] = true;
  for (char c : std::string_view("!\"#$%&*;<=>@[]^_`{|}")) t[static_cast<uint8_t>(c)] = true;
  for (char c : std::string_view(" \t\r\n")) t[static_cast<uint8_t>(c)] = true;
  return t;
}();

static_assert(kSextet['+'] == 62 && kSextet['/'] == 63 && kSextet['-'] == -1);
static_assert(!kDirect['+'] && !kDirect['\\'] && !kDirect['~'] && kDirect['-']);

class Utf7Writer {
 public:
  explicit Utf7Writer(Sink &sink) : sink_(sink) {}

  // Direct characters (not "+"). An open shift ends first; it needs its
  // "-" only when the next byte could be read as part of it.
  void direct(const uint8_t *p, size_t n) {
    if (shifted_) close(kSextet[p[0]] >= 0 || p[0] == '-');
    sink_.put(p, n);
  }
  void plus() {
    if (shifted_) close(true);
    sink_.put("+-", 2);
  }
  void unit(uint32_t u) {
    if (!shifted_) {
      sink_.put('+');
      shifted_ = true;
    }
    bits_ = bits_ << 16 | u;
    nbits_ += 16;
    while (nbits_ >= 6) {
      nbits_ -= 6;
      sink_.put(kAlphabet[(bits_ >> nbits_) & 0x3F]);
    }
    bits_ &= (1u << nbits_) - 1;
  }
  void end() {
    if (shifted_) close(true);
  }

 private:
  void close(bool dash) {
    if (nbits_) sink_.put(kAlphabet[(bits_ << (6 - nbits_)) & 0x3F]);  // zero fill
    bits_ = 0;
    nbits_ = 0;
    shifted_ = false;
    if (dash) sink_.put('-');
  }

  Sink &sink_;
  uint32_t bits_ = 0;
  int nbits_ = 0;
  bool shifted_ = false;
};

class Utf7Reader {
 public:
  explicit Utf7Reader(Sink &sink) : sink_(sink) {}

  // Reads one step at p (p < e, with the whole of a UTF-8 character in
  // [p, e) unless the input ends inside it); gives the next position.
  const uint8_t *step(const uint8_t *p, const uint8_t *e) {
    const uint8_t c = *p;
    if (shifted_) {
      const int v = kSextet[c];
      if (v >= 0) {
        sextet(static_cast<uint32_t>(v));
        return p + 1;
      }
      const bool literalPlus = fresh_ && c == '-';
      end();
      if (c == '-') {
        if (literalPlus) sink_.put('+');
        return p + 1;
      }
    }
    if (c == '+') {
      shifted_ = fresh_ = true;
      return p + 1;
    }
    if (c < 0x80) {
      const uint8_t *q = p + 1;
      while (q < e && *q < 0x80 && *q != '+') ++q;
      sink_.put(p, static_cast<size_t>(q - p));
      return q;
    }
    // 8-bit text has no place in UTF-7; well-formed UTF-8 is let through.
    int len = 1;
    const uint32_t cp = utf8::decode(p, e, &len);
    const bool surrogate = utf8::isHighSurrogate(cp) || utf8::isLowSurrogate(cp);
    sink_.putCp(surrogate ? utf8::kReplacement : cp);
    return p + len;
  }

  // Ends an open shift: a high surrogate still waiting and leftover bits
  // are what a cut shift leaves behind.
  void end() {
    if (high_) sink_.putCp(utf8::kReplacement);
    high_ = 0;
    bits_ = 0;
    nbits_ = 0;
    shifted_ = fresh_ = false;
  }

 private:
  void sextet(uint32_t v) {
    fresh_ = false;
    bits_ = bits_ << 6 | v;
    nbits_ += 6;
    if (nbits_ < 16) return;
    nbits_ -= 16;
    unit((bits_ >> nbits_) & 0xFFFF);
    bits_ &= (1u << nbits_) - 1;
  }
  void unit(uint32_t u) {
    if (high_) {
      if (utf8::isLowSurrogate(u)) {
        sink_.putCp(utf8::joinSurrogates(high_, u));
        high_ = 0;
        return;
      }
      sink_.putCp(utf8::kReplacement);
      high_ = 0;
    }
    if (utf8::isHighSurrogate(u)) high_ = u;
    else sink_.putCp(utf8::isLowSurrogate(u) ? utf8::kReplacement : u);
  }

  Sink &sink_;
  uint32_t bits_ = 0;
  int nbits_ = 0;
  uint32_t high_ = 0;
  bool shifted_ = false;
  bool fresh_ = false;  // just behind the "+" that opened the shift
};

bool usable(const IStrm *in, const IStrm *out) {
  if (!in || !out || in == out) {
    kvo_assert__("distinct non-null streams", __FILE__, __LINE__);
    return false;
  }
  return true;
}

}  // namespace

extern "C" {

TARNEX_API int32_t utf8_strm_to_utf7_strm(IStrm *in, IStrm *out) {
  if (!usable(in, out)) return KVO_CANT;
  StrmReader rd(in);
  Sink sink(out);
  Utf7Writer w(sink);
  tarnex::charset::decodeUtf8(
      rd, sink,
      [&](const uint8_t *p, size_t n) {
        const uint8_t *const e = p + n;
        while (p < e) {
          if (kDirect[*p]) {
            const uint8_t *q = p + 1;
            while (q < e && kDirect[*q]) ++q;
            w.direct(p, static_cast<size_t>(q - p));
            p = q;
          } else if (*p == '+') {
            w.plus();
            ++p;
          } else {
            w.unit(*p++);
          }
        }
      },
      [&](uint32_t cp) {
        if (cp > 0xFFFF) {
          w.unit(0xD800 + ((cp - 0x10000) >> 10));
          w.unit(0xDC00 + (cp & 0x3FF));
        } else {
          w.unit(cp);  // the 3-byte form of a lone surrogate keeps its unit
        }
      });
  w.end();
  return tarnex::charset::result(rd, sink);
}

TARNEX_API int32_t utf7_strm_to_utf8_strm(IStrm *in, IStrm *out) {
  if (!usable(in, out)) return KVO_CANT;
  StrmReader rd(in);
  Sink sink(out);
  Utf7Reader r(sink);
  while (!sink.failed() && rd.fill(utf8::kMaxLen)) {
    const uint8_t *p = rd.cur;
    const uint8_t *const e = rd.end;
    const uint8_t *const stop = e - p >= utf8::kMaxLen ? e - (utf8::kMaxLen - 1) : e;
    while (p < stop && !sink.failed()) p = r.step(p, e);
    rd.cur = p;
  }
  r.end();
  return tarnex::charset::result(rd, sink);
}

}  // extern "C"
