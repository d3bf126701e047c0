// IRA hexadecimal text: the form in which modems and phones exchange PDUs,
// two upper-case digits an octet. Readers accept either case, because not
// every phone writes upper case.
#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>

#include "codec_sink.h"
#include "tarnex/codec.h"

namespace {

using tarnex::codec::StrmSink;

constexpr char kHexUpper[] = "0123456789ABCDEF";

// The two digits of each octet, so that encoding is one lookup an octet.
constexpr std::array<std::array<char, 2>, 256> kPair = [] {
  std::array<std::array<char, 2>, 256> t{};
  for (int c = 0; c < 256; ++c) t[c] = {kHexUpper[c >> 4], kHexUpper[c & 15]};
  return t;
}();

constexpr uint8_t kNotHex = 0xFF;

constexpr std::array<uint8_t, 256> kHexVal = [] {
  std::array<uint8_t, 256> t{};
  t.fill(kNotHex);
  for (int c = 0; c < 10; ++c) t['0' + c] = static_cast<uint8_t>(c);
  for (int c = 0; c < 6; ++c) {
    t['A' + c] = static_cast<uint8_t>(10 + c);
    t['a' + c] = static_cast<uint8_t>(10 + c);
  }
  return t;
}();

constexpr int32_t kBlock = 1024;

char *encode(const uint8_t *data, int32_t n, char *out) {
  for (int32_t i = 0; i < n; ++i) {
    out[0] = kPair[data[i]][0];
    out[1] = kPair[data[i]][1];
    out += 2;
  }
  return out;
}

// Decodes digit pairs from text (len < 0: terminated) into at most size
// octets. *used gets the characters consumed, so a caller can go on in
// blocks; *stopped is set when a character that is not a digit (or the
// end of the text) was met.
int32_t decode(const char *text, int32_t len, uint8_t *out, int32_t size, int32_t *used,
               bool *stopped) {
  const auto *p = reinterpret_cast<const uint8_t *>(text);
  int32_t i = 0;
  int32_t n = 0;
  *stopped = true;
  while (n < size) {
    if (len >= 0 && len - i < 2) break;
    const uint8_t hi = kHexVal[p[i]];
    if (hi == kNotHex) break;
    // p[i] is a digit, not the terminator, so p[i + 1] may be read.
    const uint8_t lo = kHexVal[p[i + 1]];
    if (lo == kNotHex) break;
    out[n++] = static_cast<uint8_t>((hi << 4) | lo);
    i += 2;
  }
  if (n == size) *stopped = false;
  *used = i;
  return n;
}

}  // namespace

extern "C" {

TARNEX_API int32_t ira_enc_buf_from_buf(char *buf, int32_t size, const uint8_t *data,
                                        int32_t len) {
  if (!buf || size < 1) {
    if (!buf && size > 0) kvo_assert__("buf", __FILE__, __LINE__);
    return 0;
  }
  if (!data && len > 0) {
    kvo_assert__("data || len <= 0", __FILE__, __LINE__);
    len = 0;
  }
  const int32_t n = std::clamp(len, int32_t{0}, (size - 1) / 2);
  char *end = encode(data, n, buf);
  *end = '\0';
  return static_cast<int32_t>(end - buf);
}

TARNEX_API int32_t ira_enc_buf_from_strm(char *buf, int32_t size, IStrm *strm, int32_t len) {
  if (!buf || size < 1) {
    if (!buf && size > 0) kvo_assert__("buf", __FILE__, __LINE__);
    return 0;
  }
  if (!strm && len > 0) {
    kvo_assert__("strm || len <= 0", __FILE__, __LINE__);
    len = 0;
  }
  int32_t left = std::clamp(len, int32_t{0}, (size - 1) / 2);
  char *o = buf;
  uint8_t block[kBlock];
  while (left > 0) {
    const int32_t r = IStrm_read(strm, block, std::min(left, kBlock));
    if (r <= 0) break;
    const int32_t k = std::min(r, left);
    o = encode(block, k, o);
    left -= k;
  }
  *o = '\0';
  return static_cast<int32_t>(o - buf);
}

TARNEX_API KvoStr *ira_enc_cstr_from_buf(KvoStr *str, const uint8_t *data, int32_t len) {
  if (!str) {
    kvo_assert__("str", __FILE__, __LINE__);
    return str;
  }
  KvoStr_clear(str);
  if (!data && len > 0) {
    kvo_assert__("data || len <= 0", __FILE__, __LINE__);
    return str;
  }
  // Twice the octets and a terminator must stay within a 32-bit length.
  const int32_t n = std::clamp(len, int32_t{0}, (INT32_MAX - 1) / 2);
  if (n == 0) return str;
  char *o = KvoStr_reserve(str, 2 * n);
  encode(data, n, o);
  KvoStr_setLen(str, 2 * n);
  return str;
}

TARNEX_API int32_t ira_dec_str_to_buf(const char *text, int32_t len, uint8_t *buf,
                                      int32_t size) {
  if (!text || size < 1) return 0;
  if (!buf) {
    kvo_assert__("buf", __FILE__, __LINE__);
    return 0;
  }
  int32_t used = 0;
  bool stopped = false;
  return decode(text, len, buf, size, &used, &stopped);
}

TARNEX_API int32_t ira_dec_str_to_strm(const char *text, int32_t len, IStrm *strm) {
  if (!strm) {
    kvo_assert__("strm", __FILE__, __LINE__);
    return 0;
  }
  if (!text) return 0;
  StrmSink sink(strm);
  int64_t total = 0;
  for (;;) {
    int32_t used = 0;
    bool stopped = false;
    char *o = sink.room(kBlock);
    const int32_t n =
        decode(text, len, reinterpret_cast<uint8_t *>(o), kBlock, &used, &stopped);
    sink.commit(n);
    total += n;
    text += used;
    if (len >= 0) len -= used;
    if (stopped || sink.failed()) break;
  }
  const int32_t r = sink.finish();
  if (r < 0) return r;
  return total > INT32_MAX ? INT32_MAX : static_cast<int32_t>(total);
}

}  // extern "C"
