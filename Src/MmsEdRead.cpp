// The value readers of binary MMS. Lengths come from the network, so none
// of them allocates by a length it was told: an encoded string is taken in
// place from the stream's buffer, or copied as its bytes arrive.
#include <algorithm>
#include <cstring>

#include "detail/MmsRead.h"
#include "detail/Object.h"
#include "detail/Trace.h"

namespace ostrel::detail {

namespace {

constexpr uint8_t kQuote = 0x7F;       // the quote of the Text-string form
constexpr int32_t kAnsiRoom = 512;     // legacy text is converted into this much
constexpr uint32_t kUtf8 = 106, kUcs2 = 1000, kUtf16 = 2026;

void traceShort() { OSTREL_TRACE(kCatField, 1, "%s", "mms_dec_str_val"); }

// The charset and text of an encoded string, appended to str. A charset
// field with no room behind it leaves str as it was.
void decodeEncoded(KvoStr *str, std::string_view t) {
  if (t.empty()) return;
  const auto at = [t](size_t i) { return static_cast<uint8_t>(t[i]); };
  const uint8_t c = at(0);
  uint32_t charset;
  size_t pos;
  if (c > 0x7F) {
    charset = c & 0x7Fu;
    pos = 1;
  } else {
    if (c >= t.size() - 1) return;
    // Only the last two bytes of a long charset integer count.
    charset = c >= 2 ? (uint32_t{at(c - 1)} << 8 | at(c)) : c == 1 ? at(1) : 0;
    pos = 1u + c;
  }
  if (pos < t.size() && at(pos) == kQuote) ++pos;
  // Strings and streams count in 32 bits: a value beyond 1 GiB is cut.
  const std::string_view text = t.substr(pos, size_t{1} << 30);
  if (charset == kUtf8) {
    // Kept as sent, a closing 0x00 inside the length included.
    KvoStr_appdStrx(str, text.data(), static_cast<int32_t>(text.size()));
  } else if (charset == kUcs2 || charset == kUtf16) {
    tarnex::ScratchStrStrm ucs2(text);
    ucs2_strm_to_utf8_cstr(ucs2, str);
  } else {
    // The converted text is cut at kAnsiRoom bytes; every input byte gives
    // at least one, so no more input than that is needed.
    char src[kAnsiRoom], utf8[kAnsiRoom];
    const size_t n = std::min(text.size(), sizeof src - 1);
    std::memcpy(src, text.data(), n);
    src[n] = '\0';
    ansi_str_to_utf8_str(src, utf8, kAnsiRoom);
    KvoStr_appdStr(str, utf8);
  }
}

// Text up to a 0x00 or the end, every quote byte left out.
void plainText(KvoStr *str, int32_t first, MmsIn &in) {
  char run[128];
  size_t n = 0;
  for (int32_t b = first; b > 0; b = in.byte()) {
    if (b == kQuote) continue;
    run[n++] = static_cast<char>(b);
    if (n == sizeof run) {
      KvoStr_appdStrx(str, run, static_cast<int32_t>(n));
      n = 0;
    }
  }
  KvoStr_appdStrx(str, run, static_cast<int32_t>(n));
}

// Cuts str before the first place of suffix, case ignored.
void cutAt(KvoStr *str, const char *suffix) {
  if (const char *at = kvo_stristr(KvoStr_buf(str), suffix))
    KvoStr_setLen(str, static_cast<int32_t>(at - KvoStr_buf(str)));
}

}  // namespace

MmsIn::MmsIn(IStrm *s) : s_(s) {
  const int64_t n = IStrm_peek(s, &begin_);
  if (begin_ != nullptr) {
    p_ = begin_;
    end_ = begin_ + n;
  }
}

void MmsIn::leaveWindow() {
  if (begin_ == nullptr) return;
  if (p_ != begin_) IStrm_seek(s_, p_ - begin_, KVO_SEEK_CUR);
  begin_ = p_ = end_ = nullptr;
}

int32_t MmsIn::slowByte() {
  leaveWindow();
  const int32_t c = IStrm_getc(s_);
  if (c < 0) eos_ = true;
  return c;
}

void MmsIn::unget() {
  if (begin_ == nullptr)
    IStrm_seek(s_, -1, KVO_SEEK_CUR);
  else if (p_ > begin_)
    --p_;
}

int64_t MmsIn::pos() const {
  const int64_t here = IStrm_tell(s_);
  return begin_ != nullptr ? here + (p_ - begin_) : here;
}

int64_t MmsIn::left() const {
  const int64_t at = pos(), size = IStrm_size(s_);
  return at < size ? size - at : 0;
}

bool MmsIn::copyTo(IStrm *dst, uint64_t n) {
  if (n > static_cast<uint64_t>(left())) return false;
  if (begin_ != nullptr && n <= static_cast<uint64_t>(end_ - p_)) {
    // A memory stream's write takes at most 2^31 - 1 bytes a call.
    for (uint64_t done = 0; done < n;) {
      const auto piece = static_cast<int32_t>(std::min<uint64_t>(n - done, INT32_MAX));
      IStrm_write(dst, p_, piece);
      p_ += piece;
      done += static_cast<uint64_t>(piece);
    }
    return true;
  }
  leaveWindow();
  char chunk[4096];
  for (uint64_t done = 0; done < n;) {
    const auto want = static_cast<int32_t>(std::min<uint64_t>(n - done, sizeof chunk));
    const int32_t got = IStrm_read(s_, chunk, want);
    if (got <= 0) {
      eos_ = true;
      break;
    }
    IStrm_write(dst, chunk, got);
    done += static_cast<uint64_t>(got);
  }
  return true;
}

bool MmsIn::skip(uint64_t n) {
  if (begin_ != nullptr && n <= static_cast<uint64_t>(end_ - p_)) {
    p_ += n;
    return true;
  }
  leaveWindow();
  const int64_t here = IStrm_tell(s_), size = IStrm_size(s_);
  if (here > size || n > static_cast<uint64_t>(size - here)) {
    IStrm_seek(s_, 0, KVO_SEEK_END);
    eos_ = true;
    return false;
  }
  IStrm_seek(s_, static_cast<int64_t>(n), KVO_SEEK_CUR);
  return true;
}

bool MmsIn::take(uint64_t n, std::string_view *out, tarnex::ScratchStr<256> &spill) {
  if (begin_ != nullptr && n <= static_cast<uint64_t>(end_ - p_)) {
    *out = {reinterpret_cast<const char *>(p_), static_cast<size_t>(n)};
    p_ += n;
    return true;
  }
  leaveWindow();
  // A string the stream has no room for is not copied only to be refused.
  const int64_t here = IStrm_tell(s_), size = IStrm_size(s_);
  if (here <= size && n > static_cast<uint64_t>(size - here)) return skip(n);
  KvoStr_clear(spill);
  char chunk[4096];
  uint64_t done = 0;
  while (done < n) {
    const auto want = static_cast<int32_t>(std::min<uint64_t>(n - done, sizeof chunk));
    const int32_t got = IStrm_read(s_, chunk, want);
    if (got <= 0) {
      eos_ = true;
      break;
    }
    KvoStr_appdStrx(spill, chunk, got);
    done += static_cast<uint64_t>(got);
  }
  *out = spill.view();
  return done == n;
}

uint32_t mms_dec_uintvar(MmsIn &in) {
  uint32_t v = 0;
  for (;;) {
    const int32_t b = in.byte();
    if (b < 0) return v;  // -1 has bit 7 set: test it first
    v = v << 7 | (static_cast<uint32_t>(b) & 0x7Fu);
    if ((b & 0x80) == 0) return v;
  }
}

uint32_t mms_dec_long(MmsIn &in) {
  const int32_t n = in.byte();
  uint32_t v = 0;
  for (int32_t i = 0; i < n; ++i) {
    const int32_t b = in.byte();
    if (b < 0) break;
    v = v << 8 | static_cast<uint32_t>(b);
  }
  return v;
}

uint32_t mms_dec_int(MmsIn &in) {
  const int32_t b = in.byte();
  if (b < 0) return 0;
  if (b <= 0x1E) {
    in.unget();
    return mms_dec_long(in);
  }
  return static_cast<uint32_t>(b) & 0x7Fu;
}

int64_t mms_dec_len(MmsIn &in) {
  const int32_t c = in.byte();
  if (c == 0) {
    in.unget();
    return 0;
  }
  if (c > 0 && c <= 30) return c;
  if (c == 31) return mms_dec_uintvar(in);
  return -1;
}

int32_t mms_dec_str_val(KvoStr *str, MmsIn &in) {
  if (!OSTREL_REQUIRE(str, "str")) return 0;
  KvoStr_clear(str);
  const int32_t b = in.byte();
  if (b < 0) return 0;
  if (b <= 0x1F) {
    const uint32_t len = b == 0x1F ? mms_dec_uintvar(in) : static_cast<uint32_t>(b);
    tarnex::ScratchStr<256> spill;
    std::string_view value;
    if (!in.take(len, &value, spill)) {
      traceShort();
      return OSTREL_SHORT;
    }
    decodeEncoded(str, value);
    return 0;
  }
  if (b >= 0x80) {
    traceShort();  // a token where text was due: the byte is the whole value
    return 0;
  }
  plainText(str, b, in);
  return 0;
}

int32_t mms_dec_addr(KvoStr *addr, MmsIn &in) {
  const int32_t rc = mms_dec_str_val(addr, in);
  if (rc < 0) return rc;
  cutAt(addr, "/TYPE=PLMN");
  return 0;
}

void mms_dec_from(KvoStr *from, MmsIn &in) {
  if (mms_dec_len(in) == 0) return;
  tarnex::ScratchStr<128> sender;
  if (in.byte() == 0x80) mms_dec_str_val(sender, in);  // else an insert-address token
  cutAt(sender, "/TYPE=");
  KvoStr_setCstr(from, sender);
}

void mms_dec_ctype(MmsIn &in) {
  const int32_t b = in.byte();
  if (b < 0 || b >= 0x80) return;
  if (b >= 0x20) {
    for (int32_t c = in.byte(); c > 0; c = in.byte()) {
    }
  } else if (b == 0x1F) {
    in.skip(mms_dec_uintvar(in));
  } else if (b > 0) {
    in.skip(static_cast<uint64_t>(b));
  } else {
    kvo_assert__("0", __FILE__, __LINE__);
  }
}

void mms_dec_date(KvoDt *date, uint32_t secs) {
  KvoDt utc;
  if (!KvoDt_fromSecs(&utc, secs)) {
    KvoDt_init(date);
    return;
  }
  KvoDt_toLoc(date, &utc);
  if (date->zone != KVO_DT_NOZONE) KvoDt_init(date);  // no local time for it
}

}  // namespace ostrel::detail
