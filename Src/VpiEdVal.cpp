// Value components: ";"-separated, with "\" protecting the bytes of an
// escape set. Undone in one left-to-right pass, so an escaped backslash
// followed by "n" stays a backslash and an "n".
#include <array>
#include <cstring>

#include "detail/ByteReader.h"
#include "detail/Object.h"
#include "detail/Vpi.h"
#include "tarnex/scratch.hpp"

namespace {

using ostrel::detail::ByteReader;
using ostrel::detail::escapeSet;
using ostrel::detail::inSet;

int32_t writeEscaped(IStrm *strm, const char *text, const char *set) {
  return ostrel::detail::escapeText(text, set, [strm](const char *p, int32_t n) {
    const int32_t rc = IStrm_write(strm, p, n);
    return rc < 0 ? rc : 0;
  });
}

// The component loop, shared by the 8-bit and the 16-bit reader. `Source`
// gives the next character (or `kEnd`) and `Sink` appends one.
template <class Source, class Sink>
int32_t readComponent(Source next, Sink append, const char *set, int32_t kEnd,
                      bool *any) {
  for (;;) {
    int32_t c = next();
    if (c == kEnd) break;
    if (c == ';') return 1;
    if (c == '\\') {
      const int32_t d = next();
      if (d == kEnd) {
        append('\\');
        break;
      }
      if (!inSet(set, d)) {
        append('\\');
        if (d == ';') return 1;
      }
      c = d;
    }
    append(c);
    *any = true;
  }
  return 0;
}

// Bytes that end a run of plain component bytes: separator and escape when
// components are split, the 0 byte when it ends the value.
enum : uint8_t { kSplitStop = 1, kNulStop = 2 };
constexpr std::array<uint8_t, 256> kRunStops = [] {
  std::array<uint8_t, 256> t{};
  t[';'] = kSplitStop;
  t['\\'] = kSplitStop;
  t[0] = kNulStop;
  return t;
}();

// The next component's bytes into out, escapes undone (set null: the whole
// rest, unescaped). With nulEnds a 0 byte ends the value as the end of the
// stream does. Gives readComponent's "more".
int32_t readBytes(IStrm *strm, KvoStr *out, const char *set, bool nulEnds) {
  ByteReader in(strm);
  const uint8_t stops = (set != nullptr ? kSplitStop : 0) | (nulEnds ? kNulStop : 0);
  // In place, the bytes up to the next byte that matters go over in one
  // piece; the component loop below sees only what stops such a run.
  int64_t n = 0;
  if (const uint8_t *p = in.rest(&n)) {
    int64_t run = 0;
    while (run < n && (kRunStops[p[run]] & stops) == 0) ++run;
    KvoStr_appdStrx(out, reinterpret_cast<const char *>(p), static_cast<int32_t>(run));
    in.skip(run);
  }
  auto next = [&]() -> int32_t {
    const int32_t c = in.next();
    return nulEnds && c == 0 ? -1 : c;
  };
  auto append = [&](int32_t c) { KvoStr_appdChar(out, static_cast<char>(c)); };
  if (set == nullptr) {
    for (int32_t c = next(); c >= 0; c = next()) append(c);
    return 0;
  }
  bool any = false;
  return readComponent(next, append, set, -1, &any);
}

}  // namespace

extern "C" {

OSTREL_API int32_t VpiVal_addStr(IStrm *strm, const char *text, int32_t len,
                                 int32_t escaped, const char *escChars, int32_t noSep) {
  if (text == nullptr || *text == '\0') return 0;
  if (!OSTREL_REQUIRE(strm, "strm")) return 0;
  if (noSep == 0) {
    const int32_t rc = IStrm_putc(strm, ';');
    if (rc < 0) return rc;
  }
  if (escaped != 0) return writeEscaped(strm, text, escapeSet(escChars));
  const int32_t n = len < 0 ? static_cast<int32_t>(std::strlen(text)) : len;
  const int32_t rc = IStrm_write(strm, text, n);
  return rc < 0 ? rc : 0;
}

OSTREL_API int32_t VpiVal_addStrW(IStrm *strm, const KvoWchar *wtext, int32_t len,
                                  int32_t escaped, const char *escChars, int32_t noSep) {
  if (wtext == nullptr || *wtext == 0) return 0;
  const KvoWcs wide = tarnex::wcsView(wtext, -1);
  tarnex::ScratchStr<256> utf8;
  wcs_str_to_utf8_cstr(&wide, utf8);
  return VpiVal_addStr(strm, utf8.c_str(), utf8.len(), escaped, escChars, noSep);
}

OSTREL_API int32_t VpiVal_getCstr(IStrm *strm, KvoStr *out, int32_t escaped,
                                  const char *escChars) {
  if (!OSTREL_REQUIRE(strm && out, "strm && out")) return 0;
  KvoStr_clear(out);
  if (escaped == 0) {
    KvoStr_appdStrm(out, strm, -1);
    return KvoStr_len(out) != 0;
  }
  const int32_t more = readBytes(strm, out, escapeSet(escChars), false);
  return more || KvoStr_len(out) != 0;
}

// The component is unescaped as bytes and converted once: escape bytes are
// ASCII and never occur inside a UTF-8 sequence, so this reads as the
// character-by-character walk would, a 0 character ending the value.
OSTREL_API int32_t VpiVal_getCwcs(IStrm *strm, KvoWcs *out, int32_t escaped,
                                  const char *escChars) {
  if (!OSTREL_REQUIRE(strm && out, "strm && out")) return 0;
  // Room for what the text frame's value stream holds on the stack, so a
  // note's body of a few hundred bytes needs no heap on its way through.
  tarnex::ScratchStr<512> bytes;
  const int32_t more = readBytes(strm, bytes, escaped ? escapeSet(escChars) : nullptr, true);
  KvoWcs_setStr(out, bytes.c_str());
  return (escaped && more) || KvoWcs_len(out) != 0;
}

OSTREL_API char *VpiVal_getStr(IStrm *strm, int32_t escaped, const char *escChars) {
  tarnex::ScratchStr<256> text;
  if (VpiVal_getCstr(strm, text, escaped, escChars) == 0) return nullptr;
  return kvo_strdupx(text.c_str(), text.len());
}

OSTREL_API KvoWchar *VpiVal_getStrW(IStrm *strm, int32_t escaped, const char *escChars) {
  tarnex::ScratchStr<256> text;
  if (VpiVal_getCstr(strm, text, escaped, escChars) == 0) return nullptr;
  return utf8_str_to_wcs_out(text.c_str());
}

}  // extern "C"
