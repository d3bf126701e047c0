// Internal UTF-8 helpers shared by the strings and the charset converters.
//
// The decoder follows the "maximal subpart" rule of Unicode: each bad
// stretch becomes one U+FFFD and decoding resumes at the first byte that
// cannot continue it. It accepts the 3-byte form of a surrogate (ED A0..BF
// xx) and gives the surrogate itself, because KvoStr keeps unpaired
// surrogates that way and they must come back to 16-bit text unchanged.
#ifndef TARNEX_SRC_UTF8_H
#define TARNEX_SRC_UTF8_H

#include <cstdint>

namespace tarnex::utf8 {

inline constexpr uint32_t kReplacement = 0xFFFD;
inline constexpr int kMaxLen = 4;

inline constexpr bool isHighSurrogate(uint32_t u) { return u >= 0xD800 && u <= 0xDBFF; }
inline constexpr bool isLowSurrogate(uint32_t u) { return u >= 0xDC00 && u <= 0xDFFF; }
inline constexpr uint32_t joinSurrogates(uint32_t hi, uint32_t lo) {
  return 0x10000 + ((hi - 0xD800) << 10) + (lo - 0xDC00);
}

// Writes cp (0..0x10FFFF; anything above becomes U+FFFD) to out, which has
// room for kMaxLen bytes. Gives the byte count.
inline int encode(uint32_t cp, char *out) {
  if (cp > 0x10FFFF) cp = kReplacement;
  if (cp < 0x80) {
    out[0] = static_cast<char>(cp);
    return 1;
  }
  if (cp < 0x800) {
    out[0] = static_cast<char>(0xC0 | (cp >> 6));
    out[1] = static_cast<char>(0x80 | (cp & 0x3F));
    return 2;
  }
  if (cp < 0x10000) {
    out[0] = static_cast<char>(0xE0 | (cp >> 12));
    out[1] = static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out[2] = static_cast<char>(0x80 | (cp & 0x3F));
    return 3;
  }
  out[0] = static_cast<char>(0xF0 | (cp >> 18));
  out[1] = static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
  out[2] = static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
  out[3] = static_cast<char>(0x80 | (cp & 0x3F));
  return 4;
}

// Decodes one character from [p, end) (p < end). Sets *len to the bytes
// used (at least 1) and gives the code point, or U+FFFD for a bad stretch.
inline uint32_t decode(const uint8_t *p, const uint8_t *end, int *len) {
  const uint32_t b0 = p[0];
  *len = 1;
  if (b0 < 0x80) return b0;
  int need;
  uint32_t cp;
  uint8_t lo = 0x80, hi = 0xBF;  // allowed range of the second byte
  if (b0 >= 0xC2 && b0 <= 0xDF) {
    need = 1;
    cp = b0 & 0x1F;
  } else if (b0 >= 0xE0 && b0 <= 0xEF) {
    need = 2;
    cp = b0 & 0x0F;
    if (b0 == 0xE0) lo = 0xA0;  // no overlong forms
  } else if (b0 >= 0xF0 && b0 <= 0xF4) {
    need = 3;
    cp = b0 & 0x07;
    if (b0 == 0xF0) lo = 0x90;
    if (b0 == 0xF4) hi = 0x8F;  // nothing above U+10FFFF
  } else {
    return kReplacement;
  }
  for (int i = 1; i <= need; ++i) {
    if (p + i >= end) return kReplacement;
    const uint8_t b = p[i];
    if (i == 1 ? (b < lo || b > hi) : (b < 0x80 || b > 0xBF)) return kReplacement;
    cp = (cp << 6) | (b & 0x3F);
    *len = i + 1;
  }
  return cp;
}

}  // namespace tarnex::utf8

#endif  // TARNEX_SRC_UTF8_H
