// Base64 tables and the quantum of the Base64 line reader.
//
// Whole quads go through four tables that hold each sextet already shifted
// to its place among the three output bytes, in memory order, so a quad
// costs four loads, three ORs and one store. Any byte outside the alphabet
// sets a bit above those three bytes and sends the quad to the byte path.
#ifndef TARNEX_SRC_LEX_B64_H
#define TARNEX_SRC_LEX_B64_H

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#if defined(__x86_64__) || defined(__i386__)
#include <tmmintrin.h>
#endif

#include "lex_scan.h"

namespace tarnex::lex {

// 0..63 for the alphabet, then classes for the other bytes.
enum : uint8_t { kB64Pad = 64, kB64Blank = 65, kB64Eol = 66, kB64Other = 67 };

inline constexpr std::array<uint8_t, 256> kB64 = [] {
  std::array<uint8_t, 256> t{};
  for (auto &v : t) v = kB64Other;
  constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (int i = 0; i < 64; ++i) t[static_cast<uint8_t>(kAlphabet[i])] = static_cast<uint8_t>(i);
  t['='] = kB64Pad;
  t[' '] = kB64Blank;
  t['\t'] = kB64Blank;
  t['\r'] = kB64Eol;
  t['\n'] = kB64Eol;
  return t;
}();

static_assert(kB64['A'] == 0 && kB64['Z'] == 25 && kB64['a'] == 26 && kB64['z'] == 51);
static_assert(kB64['0'] == 52 && kB64['9'] == 61 && kB64['+'] == 62 && kB64['/'] == 63);

inline constexpr bool kLittle = std::endian::native == std::endian::little;
// Where output byte k of a quad sits in the word stored for it.
inline constexpr int byteShift(int k) { return kLittle ? 8 * k : 24 - 8 * k; }
inline constexpr uint32_t kQuadBad = kLittle ? 0x01000000u : 0x00000001u;

// Table of the quad's character at `pos` (0..3).
template <int Pos>
constexpr std::array<uint32_t, 256> quadTable() {
  std::array<uint32_t, 256> t{};
  for (int b = 0; b < 256; ++b) {
    const uint32_t v = kB64[b];
    if (v >= 64) {
      t[b] = kQuadBad;
      continue;
    }
    uint32_t o0 = 0, o1 = 0, o2 = 0;
    if constexpr (Pos == 0) o0 = v << 2;
    if constexpr (Pos == 1) o0 = v >> 4, o1 = (v & 0xF) << 4;
    if constexpr (Pos == 2) o1 = v >> 2, o2 = (v & 0x3) << 6;
    if constexpr (Pos == 3) o2 = v;
    t[b] = o0 << byteShift(0) | o1 << byteShift(1) | o2 << byteShift(2);
  }
  return t;
}

inline constexpr auto kQuad0 = quadTable<0>();
inline constexpr auto kQuad1 = quadTable<1>();
inline constexpr auto kQuad2 = quadTable<2>();
inline constexpr auto kQuad3 = quadTable<3>();

inline uint32_t quadWord(const uint8_t *p) {
  return kQuad0[p[0]] | kQuad1[p[1]] | kQuad2[p[2]] | kQuad3[p[3]];
}

#if defined(__x86_64__) || defined(__i386__)
#define TARNEX_LEX_B64_SIMD 1

// Sixteen characters a step where the processor has SSSE3 (checked once at
// run time). A byte is outside the alphabet when its low-nibble row and
// high-nibble column share a bit (0x10 marks high nibbles that are never
// valid; 0x01 '+' and '/', 0x02 digits, 0x04 'A'-'O' and 'a'-'o', 0x08
// 'P'-'Z' and 'p'-'z'). Gives a mask with a bit for each alphabet byte.
#define TARNEX_SSSE3 __attribute__((target("ssse3")))

TARNEX_SSSE3 inline uint32_t alphabetMask(__m128i x, __m128i hi) {
  const __m128i lutLo = _mm_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11,
                                      0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A);
  const __m128i lutHi = _mm_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10,
                                      0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10);
  const __m128i lo = _mm_and_si128(x, _mm_set1_epi8(0x0F));
  const __m128i bad = _mm_and_si128(_mm_shuffle_epi8(lutLo, lo), _mm_shuffle_epi8(lutHi, hi));
  return static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(bad, _mm_setzero_si128())));
}

TARNEX_SSSE3 inline __m128i highNibbles(__m128i x) {
  return _mm_and_si128(_mm_srli_epi32(x, 4), _mm_set1_epi8(0x0F));
}

// Decodes blocks into o (room up to end). The sextet is the byte plus an
// offset chosen by its high nibble, '/' taking the row before '+'; pairs
// and then pairs of pairs are packed, and the three bytes of each word
// put in order. A block that holds the line end still gives the whole
// quads before it.
TARNEX_SSSE3 inline const uint8_t *decodeBlocks(const uint8_t *p, const uint8_t *lim, uint8_t *&o,
                                                const uint8_t *end) {
  const __m128i lutOffset =
      _mm_setr_epi8(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0);
  const __m128i pairs = _mm_set1_epi32(0x01400140);  // a << 6 | b
  const __m128i quads = _mm_set1_epi32(0x00011000);  // ab << 12 | cd
  const __m128i order = _mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
  while (lim - p >= 16 && end - o >= 16) {
    const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
    const __m128i hi = highNibbles(x);
    const uint32_t good = alphabetMask(x, hi);
    const int whole = good == 0xFFFF ? 4 : __builtin_ctz(~good) / 4;
    if (whole == 0) break;
    const __m128i slash = _mm_cmpeq_epi8(x, _mm_set1_epi8('/'));
    const __m128i sextets = _mm_add_epi8(x, _mm_shuffle_epi8(lutOffset, _mm_add_epi8(slash, hi)));
    const __m128i words = _mm_madd_epi16(_mm_maddubs_epi16(sextets, pairs), quads);
    _mm_storeu_si128(reinterpret_cast<__m128i *>(o), _mm_shuffle_epi8(words, order));
    o += 3 * whole;
    p += 4 * whole;
    if (whole != 4) break;
  }
  return p;
}

// The first byte from p that is not of the alphabet, or where fewer than
// sixteen bytes are left.
TARNEX_SSSE3 inline const uint8_t *skipBlocks(const uint8_t *p, const uint8_t *lim) {
  while (lim - p >= 16) {
    const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
    const uint32_t good = alphabetMask(x, highNibbles(x));
    if (good != 0xFFFF) return p + __builtin_ctz(~good);
    p += 16;
  }
  return p;
}

inline bool haveSimd() {
  static const bool yes = __builtin_cpu_supports("ssse3");
  return yes;
}
#endif

// Decodes whole quads of alphabet bytes from p straight into the sink's
// buffer; gives where they stop. Each quad's word is stored whole (4
// bytes) and the next one overwrites its spare byte.
inline const uint8_t *decodeQuads(const uint8_t *p, const uint8_t *lim, Sink &out) {
  constexpr int32_t kSlack = 16;  // the widest store
  for (;;) {
    uint8_t *const start = out.room(kSlack);
    uint8_t *o = start;
    uint8_t *const end = start + out.space();
#ifdef TARNEX_LEX_B64_SIMD
    if (haveSimd()) {
      p = decodeBlocks(p, lim, o, end);
      // Stopped with room and input left: a quad that is not all alphabet.
      if (lim - p >= 16 && end - o >= 16) {
        out.claim(static_cast<int32_t>(o - start));
        return p;
      }
    }
#endif
    while (lim - p >= 8 && end - o >= 8) {
      const uint32_t w0 = quadWord(p);
      const uint32_t w1 = quadWord(p + 4);
      if (((w0 | w1) & kQuadBad) != 0) break;
      std::memcpy(o, &w0, 4);
      std::memcpy(o + 3, &w1, 4);
      o += 6;
      p += 8;
    }
    bool full = end - o < kSlack;
    if (!full && lim - p >= 4) {
      const uint32_t w = quadWord(p);
      if ((w & kQuadBad) == 0) {
        std::memcpy(o, &w, 4);
        o += 3;
        p += 4;
        full = end - o < kSlack;
      }
    }
    out.claim(static_cast<int32_t>(o - start));
    if (!full || lim - p < 4) return p;
  }
}

// Passes over alphabet bytes from p, mostly four or sixteen at a time;
// stops at or a little before the first byte outside the alphabet.
inline const uint8_t *skipAlphabet(const uint8_t *p, const uint8_t *lim) {
#ifdef TARNEX_LEX_B64_SIMD
  if (haveSimd()) p = skipBlocks(p, lim);
#endif
  while (lim - p >= 4 &&
         ((kQuad0[p[0]] | kQuad0[p[1]] | kQuad0[p[2]] | kQuad0[p[3]]) & kQuadBad) == 0)
    p += 4;
  return p;
}

// Up to four sextets waiting to become bytes.
class Quantum {
 public:
  void add(uint32_t v, Sink &out) {
    acc_ = acc_ << 6 | v;
    if (++n_ == 4) {
      uint8_t *o = out.room(3);
      o[0] = static_cast<uint8_t>(acc_ >> 16);
      o[1] = static_cast<uint8_t>(acc_ >> 8);
      o[2] = static_cast<uint8_t>(acc_);
      out.claim(3);
      acc_ = 0;
      n_ = 0;
    }
  }
  // At "=" padding or the end: the whole bytes of a partial quantum. A
  // missing pad is tolerated; a lone sextet holds no byte.
  void flush(Sink &out) {
    if (n_ == 2) {
      out.put(static_cast<uint8_t>(acc_ >> 4));
    } else if (n_ == 3) {
      out.put(static_cast<uint8_t>(acc_ >> 10));
      out.put(static_cast<uint8_t>(acc_ >> 2));
    }
    acc_ = 0;
    n_ = 0;
  }
  bool empty() const { return n_ == 0; }

 private:
  uint32_t acc_ = 0;
  int n_ = 0;
};

}  // namespace tarnex::lex

#endif  // TARNEX_SRC_LEX_B64_H
