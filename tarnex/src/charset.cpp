// UTF-8 against 16-bit text: UTF-16 in memory, UCS-2 on the wire, and the
// legacy 8-bit code page read through iconv.
#include "tarnex/charset.h"

#include <iconv.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <mutex>

#include "charset_io.h"
#include "utf8.h"

namespace {

using tarnex::charset::Sink;
using tarnex::charset::StrmReader;
namespace utf8 = tarnex::utf8;

constexpr KvoWchar highUnit(uint32_t cp) { return static_cast<KvoWchar>(0xD800 + ((cp - 0x10000) >> 10)); }
constexpr KvoWchar lowUnit(uint32_t cp) { return static_cast<KvoWchar>(0xDC00 + (cp & 0x3FF)); }
constexpr bool isContinuation(uint8_t b) { return b >= 0x80 && b <= 0xBF; }

bool usable(const void *in, const void *out, const char *file, int32_t line) {
  if (!in || !out || in == out) {
    kvo_assert__("distinct non-null streams", file, line);
    return false;
  }
  return true;
}

// One unit per byte at most (a 4-byte sequence gives two units), so `out`
// needs room for e - p units.
size_t toUtf16(const uint8_t *p, const uint8_t *e, KvoWchar *out) {
  KvoWchar *o = out;
  while (p < e) {
    uint64_t word;
    if (e - p >= 8 && (std::memcpy(&word, p, 8), (word & 0x8080808080808080ull) == 0)) {
      for (int i = 0; i < 8; ++i) o[i] = p[i];
      p += 8;
      o += 8;
      continue;
    }
    if (*p < 0x80) {
      *o++ = *p++;
      continue;
    }
    int len = 1;
    const uint32_t cp = utf8::decode(p, e, &len);
    p += len;
    if (cp > 0xFFFF) {
      *o++ = highUnit(cp);
      *o++ = lowUnit(cp);
    } else {
      *o++ = static_cast<KvoWchar>(cp);
    }
  }
  return static_cast<size_t>(o - out);
}

// Reads up to n bytes; a stream may hand them out in shorter reads.
int32_t readUpTo(IStrm *strm, uint8_t *buf, int32_t n) {
  int32_t got = 0;
  while (got < n) {
    const int32_t r = IStrm_read(strm, buf + got, n - got);
    if (r <= 0) break;
    got += r;
  }
  return got;
}

// The low half of a character above U+FFFF whose high half an earlier
// call gave: that call left the stream one byte into the sequence, which
// no other reading does (a valid lead byte is never taken alone). `pos` is
// the position of the byte after the lead. On success the stream stands
// behind the sequence.
bool lowHalfAt(IStrm *strm, int64_t pos, KvoWchar *low) {
  if (pos < 1 || IStrm_seek(strm, pos - 1, KVO_SEEK_SET) != 0) return false;
  uint8_t seq[utf8::kMaxLen];
  if (readUpTo(strm, seq, utf8::kMaxLen) == utf8::kMaxLen) {
    int len = 1;
    const uint32_t cp = utf8::decode(seq, seq + utf8::kMaxLen, &len);
    if (cp > 0xFFFF) {
      *low = lowUnit(cp);
      return true;
    }
  }
  IStrm_seek(strm, pos, KVO_SEEK_SET);
  return false;
}

int32_t ucs2ToUtf8(IStrm *in, Sink &sink) {
  StrmReader rd(in);
  bool bigEndian = true;
  if (rd.fill(2) && rd.end - rd.cur >= 2) {
    const uint8_t a = rd.cur[0], b = rd.cur[1];
    if ((a == 0xFE && b == 0xFF) || (a == 0xFF && b == 0xFE)) {
      bigEndian = a == 0xFE;
      rd.cur += 2;
    }
  }
  uint32_t high = 0;  // a high surrogate waiting for its partner
  while (!sink.failed() && rd.fill(2)) {
    const uint8_t *p = rd.cur;
    const uint8_t *const e = rd.end;
    if (e - p < 2) {  // the odd last byte
      rd.cur = e;
      break;
    }
    for (; e - p >= 2 && !sink.failed(); p += 2) {
      const uint32_t u = bigEndian ? (p[0] << 8 | p[1]) : (p[1] << 8 | p[0]);
      if (high) {
        if (utf8::isLowSurrogate(u)) {
          sink.putCp(utf8::joinSurrogates(high, u));
          high = 0;
          continue;
        }
        sink.putCp(utf8::kReplacement);
        high = 0;
      }
      if (utf8::isHighSurrogate(u)) high = u;
      else if (utf8::isLowSurrogate(u)) sink.putCp(utf8::kReplacement);
      else if (u < 0x80) sink.put(static_cast<char>(u));
      else sink.putCp(u);
    }
    rd.cur = p;
  }
  if (high) sink.putCp(utf8::kReplacement);
  return tarnex::charset::result(rd, sink);
}

// ---- The legacy code page -------------------------------------------------

constexpr size_t kCodepageMax = 64;

// The process-wide choice; each thread keeps its own converter for it and
// opens a new one when the generation moves on.
struct AnsiChoice {
  std::mutex lock;
  char name[kCodepageMax] = "WINDOWS-1252";
  std::atomic<uint32_t> generation{1};
};

AnsiChoice &ansiChoice() {
  static AnsiChoice choice;
  return choice;
}

const iconv_t kNoConv = reinterpret_cast<iconv_t>(-1);

struct ThreadConv {
  iconv_t cd = kNoConv;
  uint32_t generation = 0;
  ~ThreadConv() {
    if (cd != kNoConv) iconv_close(cd);
  }
};

iconv_t threadConv() noexcept {
  thread_local ThreadConv conv;
  AnsiChoice &choice = ansiChoice();
  if (conv.generation == choice.generation.load(std::memory_order_acquire)) return conv.cd;
  char name[kCodepageMax];
  {
    std::lock_guard<std::mutex> hold(choice.lock);
    std::memcpy(name, choice.name, sizeof name);
    conv.generation = choice.generation.load(std::memory_order_relaxed);
  }
  if (conv.cd != kNoConv) iconv_close(conv.cd);
  conv.cd = iconv_open("UTF-8", name);
  return conv.cd;
}

int32_t setCodepage(const char *name) noexcept {
  if (!name || !*name || std::strlen(name) >= kCodepageMax) return -1;
  const iconv_t probe = iconv_open("UTF-8", name);
  if (probe == kNoConv) return -1;
  iconv_close(probe);
  AnsiChoice &choice = ansiChoice();
  std::lock_guard<std::mutex> hold(choice.lock);
  std::strcpy(choice.name, name);
  choice.generation.fetch_add(1, std::memory_order_release);
  return 0;
}

constexpr char kReplacementUtf8[] = "\xEF\xBF\xBD";

int32_t ansiToUtf8(const char *src, char *dst, int32_t size) noexcept {
  if (!dst || size < 1) return 0;
  dst[0] = 0;
  if (!src) return 0;
  char *in = const_cast<char *>(src);
  size_t inLeft = std::strlen(src);
  char *out = dst;
  size_t outLeft = static_cast<size_t>(size) - 1;
  const iconv_t cd = threadConv();
  if (cd != kNoConv) iconv(cd, nullptr, nullptr, nullptr, nullptr);
  while (inLeft > 0) {
    if (cd != kNoConv) {
      if (iconv(cd, &in, &inLeft, &out, &outLeft) != static_cast<size_t>(-1)) break;
      // iconv writes whole characters only, so a full buffer is a clean cut.
      if (errno == E2BIG) break;
    } else if (static_cast<uint8_t>(*in) < 0x80) {  // no converter: ASCII only
      if (outLeft < 1) break;
      *out++ = *in++;
      --inLeft;
      --outLeft;
      continue;
    }
    // A byte the code page leaves undefined, or a cut multibyte sequence.
    if (outLeft < 3) break;
    std::memcpy(out, kReplacementUtf8, 3);
    out += 3;
    outLeft -= 3;
    ++in;
    --inLeft;
  }
  *out = 0;
  return static_cast<int32_t>(out - dst);
}

}  // namespace

extern "C" {

TARNEX_API KvoStr *wcs_str_to_utf8_cstr(const KvoWcs *wide, KvoStr *str) {
  if (!str) {
    kvo_assert__("str", __FILE__, __LINE__);
    return str;
  }
  KvoStr_clear(str);
  if (!wide || !wide->buf || wide->len <= 0) return str;
  Sink sink(str);
  const KvoWchar *p = wide->buf;
  const KvoWchar *const e = p + wide->len;
  while (p < e) {
    const uint32_t u = *p++;
    if (u < 0x80) {
      sink.put(static_cast<char>(u));
    } else if (utf8::isHighSurrogate(u) && p < e && utf8::isLowSurrogate(*p)) {
      sink.putCp(utf8::joinSurrogates(u, *p++));
    } else {
      sink.putCp(u);  // an unpaired surrogate keeps its 3-byte form
    }
  }
  sink.finish();
  return str;
}

TARNEX_API KvoWchar *utf8_str_to_wcs_out(const char *text) {
  const size_t n = text ? std::strlen(text) : 0;
  auto *wide = static_cast<KvoWchar *>(kvo_malloc__((n + 1) * sizeof(KvoWchar), __FILE__, __LINE__));
  const auto *p = reinterpret_cast<const uint8_t *>(text);
  wide[n ? toUtf16(p, p + n, wide) : 0] = 0;
  return wide;
}

// Stateless across calls: after the high half of a 4-byte sequence the
// stream is left one byte into it, and a call that starts on that
// continuation byte looks back for the lead and gives the low half.
TARNEX_API KvoWchar utf8_strm_to_wcs_char(IStrm *strm) {
  if (!strm) {
    kvo_assert__("strm", __FILE__, __LINE__);
    return 0;
  }
  const uint8_t *p = nullptr;
  int64_t n = IStrm_peek(strm, &p);
  uint8_t copy[utf8::kMaxLen];
  int64_t start = -1;  // where the copy was read from
  if (n < utf8::kMaxLen || !p) {
    start = IStrm_tell(strm);
    const int32_t r = readUpTo(strm, copy, utf8::kMaxLen);
    if (r <= 0) return 0;
    p = copy;
    n = r;
  }
  auto moveOn = [&](int64_t k) {
    if (start < 0) IStrm_seek(strm, k, KVO_SEEK_CUR);
    else IStrm_seek(strm, start + k, KVO_SEEK_SET);
  };
  if (isContinuation(p[0])) {
    KvoWchar low;
    if (lowHalfAt(strm, start < 0 ? IStrm_tell(strm) : start, &low)) return low;
    moveOn(1);
    return utf8::kReplacement;
  }
  int len = 1;
  const uint32_t cp = utf8::decode(p, p + n, &len);
  if (cp > 0xFFFF) {
    moveOn(1);
    return highUnit(cp);
  }
  moveOn(len);
  return static_cast<KvoWchar>(cp);
}

TARNEX_API int32_t utf8_strm_to_ucs2_strm(IStrm *in, IStrm *out) {
  if (!usable(in, out, __FILE__, __LINE__)) return KVO_CANT;
  StrmReader rd(in);
  Sink sink(out);
  tarnex::charset::decodeUtf8(
      rd, sink,
      [&](const uint8_t *p, size_t n) {
        while (n > 0) {
          const size_t k = n < Sink::kBufSize / 2 ? n : Sink::kBufSize / 2;
          char *o = sink.room(2 * k);
          for (size_t i = 0; i < k; ++i) {
            o[2 * i] = 0;
            o[2 * i + 1] = static_cast<char>(p[i]);
          }
          sink.commit(2 * k);
          p += k;
          n -= k;
        }
      },
      [&](uint32_t cp) {
        char *o = sink.room(4);
        const KvoWchar units[2] = {cp > 0xFFFF ? highUnit(cp) : static_cast<KvoWchar>(cp),
                                   lowUnit(cp)};
        const int count = cp > 0xFFFF ? 2 : 1;
        for (int i = 0; i < count; ++i) {
          o[2 * i] = static_cast<char>(units[i] >> 8);
          o[2 * i + 1] = static_cast<char>(units[i] & 0xFF);
        }
        sink.commit(2 * static_cast<size_t>(count));
      });
  return tarnex::charset::result(rd, sink);
}

TARNEX_API int32_t ucs2_strm_to_utf8_strm(IStrm *in, IStrm *out) {
  if (!usable(in, out, __FILE__, __LINE__)) return KVO_CANT;
  Sink sink(out);
  return ucs2ToUtf8(in, sink);
}

TARNEX_API int32_t ucs2_strm_to_utf8_cstr(IStrm *in, KvoStr *str) {
  if (!usable(in, str, __FILE__, __LINE__)) return KVO_CANT;
  Sink sink(str);
  return ucs2ToUtf8(in, sink);
}

TARNEX_API int32_t kvo_set_ansi_codepage(const char *name) { return setCodepage(name); }

TARNEX_API int32_t ansi_str_to_utf8_str(const char *src, char *dst, int32_t size) {
  return ansiToUtf8(src, dst, size);
}

}  // extern "C"
