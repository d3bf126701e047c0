// Small text utilities. Case folding is ASCII only, by a table computed at
// compile time, so bytes of UTF-8 sequences always compare as they are.
#include <array>
#include <bit>
#include <cstring>

#include "tarnex/text.h"

namespace {

constexpr std::array<uint8_t, 256> kLower = [] {
  std::array<uint8_t, 256> t{};
  for (int c = 0; c < 256; ++c) t[c] = static_cast<uint8_t>(c >= 'A' && c <= 'Z' ? c + 32 : c);
  return t;
}();
static_assert(kLower['A'] == 'a' && kLower['Z'] == 'z' && kLower['@'] == '@' && kLower[0xC4] == 0xC4);

inline uint8_t lower(char c) { return kLower[static_cast<uint8_t>(c)]; }
inline uint32_t lowerUnit(KvoWchar u) { return u < 0x80 ? kLower[u] : u; }

const char *orEmpty(const char *t) { return t ? t : ""; }

// A set of bytes, for scanning against a list of separators.
class ByteSet {
 public:
  explicit ByteSet(const char *chars) {
    for (const char *p = orEmpty(chars); *p; ++p) add(static_cast<uint8_t>(*p));
  }
  bool has(char c) const {
    const auto b = static_cast<uint8_t>(c);
    return (bits_[b >> 6] >> (b & 63)) & 1;
  }

 private:
  void add(uint8_t b) { bits_[b >> 6] |= uint64_t{1} << (b & 63); }
  uint64_t bits_[4] = {};
};

}  // namespace

extern "C" {

TARNEX_API int32_t kvo_stricmp(const char *a, const char *b) {
  a = orEmpty(a);
  b = orEmpty(b);
  for (;; ++a, ++b) {
    const int32_t d = int32_t{lower(*a)} - int32_t{lower(*b)};
    if (d != 0 || *a == 0) return d;
  }
}

TARNEX_API char *kvo_stristr(const char *hay, const char *needle) {
  if (!hay) return nullptr;
  needle = orEmpty(needle);
  if (!*needle) return const_cast<char *>(hay);
  const uint8_t first = lower(*needle);
  for (const char *h = hay; *h; ++h) {
    if (lower(*h) != first) continue;
    size_t i = 1;
    while (needle[i] && lower(h[i]) == lower(needle[i])) ++i;
    if (!needle[i]) return const_cast<char *>(h);
  }
  return nullptr;
}

TARNEX_API char *kvo_strrchrs(const char *text, const char *chars) {
  if (!text || !chars || !*chars) return nullptr;
  const ByteSet set(chars);
  const char *found = nullptr;
  for (const char *p = text; *p; ++p) {
    if (set.has(*p)) found = p;
  }
  return const_cast<char *>(found);
}

TARNEX_API char *kvo_strtok(char **pos, const char *seps) {
  if (!pos || !*pos) return nullptr;
  const ByteSet set(seps);
  char *p = *pos;
  while (*p && set.has(*p)) ++p;
  if (!*p) {
    *pos = p;
    return nullptr;
  }
  char *word = p;
  while (*p && !set.has(*p)) ++p;
  if (*p) *p++ = 0;
  *pos = p;
  return word;
}

TARNEX_API char *kvo_strupr(char *text) {
  if (!text) return nullptr;
  for (char *p = text; *p; ++p) {
    if (*p >= 'a' && *p <= 'z') *p = static_cast<char>(*p - 32);
  }
  return text;
}

TARNEX_API char *kvo_strxfrm(char *dst, const char *src, int32_t size) {
  if (!dst || size < 1) return dst;
  src = orEmpty(src);
  const size_t n = strnlen(src, static_cast<size_t>(size) - 1);
  std::memmove(dst, src, n);
  dst[n] = 0;
  return dst;
}

TARNEX_API char *kvo_strdupx(const char *text, int32_t n) {
  if (!text) n = 0;
  const size_t len = n < 0 ? std::strlen(text) : static_cast<size_t>(n);
  auto *p = static_cast<char *>(kvo_malloc__(len + 1, __FILE__, __LINE__));
  if (len) std::memcpy(p, text, len);
  p[len] = 0;
  return p;
}

TARNEX_API int32_t kvo_str_all_ascii(const char *text, int32_t n) {
  if (!text) return 1;
  const auto *p = reinterpret_cast<const uint8_t *>(text);
  if (n < 0) {
    for (; *p; ++p) {
      if (*p & 0x80) return 0;
    }
    return 1;
  }
  // Eight bytes at a time: any high bit in the word is a non-ASCII byte.
  const uint8_t *end = p + n;
  for (; end - p >= 8; p += 8) {
    uint64_t word;
    std::memcpy(&word, p, 8);
    if (word & 0x8080808080808080ull) return 0;
  }
  for (; p < end; ++p) {
    if (*p & 0x80) return 0;
  }
  return 1;
}

TARNEX_API int32_t kvo_wcslen(const KvoWchar *text) {
  if (!text) return 0;
  int32_t n = 0;
  while (text[n]) ++n;
  return n;
}

TARNEX_API int32_t kvo_wcscmp(const KvoWchar *a, const KvoWchar *b) {
  static constexpr KvoWchar kEmpty[1] = {0};
  if (!a) a = kEmpty;
  if (!b) b = kEmpty;
  for (;; ++a, ++b) {
    const int32_t d = int32_t{*a} - int32_t{*b};
    if (d != 0 || *a == 0) return d;
  }
}

TARNEX_API int32_t kvo_wcsincmp(const KvoWchar *a, const KvoWchar *b, int32_t n) {
  static constexpr KvoWchar kEmpty[1] = {0};
  if (!a) a = kEmpty;
  if (!b) b = kEmpty;
  for (int32_t i = 0; i < n; ++i) {
    const int32_t d = static_cast<int32_t>(lowerUnit(a[i])) - static_cast<int32_t>(lowerUnit(b[i]));
    if (d != 0 || a[i] == 0) return d;
  }
  return 0;
}

TARNEX_API int32_t u32_bit_num(uint32_t v) { return std::popcount(v); }

}  // extern "C"
