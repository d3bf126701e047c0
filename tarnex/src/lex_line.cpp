// The line readers: the rest of a property value, plain, quoted-printable
// or Base64, with its lines joined and its transfer encoding undone.
//
// What phones write decides the joins:
//   - a fold (line end + blank or tab) joins in every reader when unfolding;
//   - a quoted-printable soft break ("=" + line end) joins, and the byte
//     after it is text even when it is a blank ("come=\r\n to" is "come to");
//   - a 2.1 Base64 value runs on over following lines, indented or not,
//     until a blank line or a line that cannot be Base64 (the next property,
//     which always holds a ':' or ';').
#include <array>
#include <cstdint>

#include "lex_b64.h"
#include "lex_scan.h"
#include "tarnex/lex.h"

namespace {

using namespace tarnex::lex;

// ---- Tables ---------------------------------------------------------------------

// Hex digit values, -1 for any other byte.
constexpr std::array<int8_t, 256> kHex = [] {
  std::array<int8_t, 256> t{};
  for (auto &v : t) v = -1;
  for (int i = 0; i < 10; ++i) t['0' + i] = static_cast<int8_t>(i);
  for (int i = 0; i < 6; ++i) {
    t['A' + i] = static_cast<int8_t>(10 + i);
    t['a' + i] = static_cast<int8_t>(10 + i);
  }
  return t;
}();

static_assert(kHex['f'] == 15 && kHex['F'] == 15 && kHex['g'] == -1 && kHex['9'] == 9);

// ---- What stops a run ----------------------------------------------------------------

// What the plain and quoted-printable readers find behind a run of text: the
// end of the value (with the reader's result), a fold to read on over, or a
// byte that is the reader's own to handle.
struct Stop {
  enum Kind { Done, Fold, Byte } kind;
  int32_t result;  // Done: what the reader gives
  int c;           // Byte: the byte
};

// Inlined: it runs once per line of every value.
[[gnu::always_inline]] inline Stop stopAfterRun(Source &src, Sink &out, bool unfold) {
  if (out.fault() != 0) return {Stop::Done, finish(src, out, 0), 0};
  const LineEnd end = takeLineEndIn(src, unfold);
  if (end == LineEnd::Fold) return {Stop::Fold, 0, 0};
  if (end == LineEnd::End) return {Stop::Done, finish(src, out, 0), 0};
  const int c = src.next();
  if (c < 0) return {Stop::Done, finish(src, out, KVO_EOS), 0};
  if (isEol(c)) {
    takeEol(src, c);
    if (unfold && takeFold(src)) return {Stop::Fold, 0, 0};
    return {Stop::Done, finish(src, out, 0), 0};
  }
  return {Stop::Byte, 0, c};
}

// ---- Plain --------------------------------------------------------------------------

int32_t readPlain(IStrm *strm, IStrm *val, bool unfold, bool softBreaks) {
  Source src(strm);
  Sink out(val);
  for (;;) {
    src.fill();
    const uint8_t *const p = src.cur();
    const uint8_t *const q =
        softBreaks ? findAny<'\r', '\n', '='>(p, src.lim()) : findEol(p, src.lim());
    out.put(p, static_cast<size_t>(q - p));
    src.take(q);
    const Stop stop = stopAfterRun(src, out, unfold);
    if (stop.kind == Stop::Done) return stop.result;
    if (stop.kind == Stop::Fold) continue;
    const int c = stop.c;
    if (c == '=' && softBreaks) {
      const int d = src.next();
      if (isEol(d)) {
        takeEol(src, d);
        continue;
      }
      if (d >= 0) src.back();
    }
    out.put(static_cast<uint8_t>(c));
  }
}

// ---- Quoted-printable ---------------------------------------------------------------

// Text and whole "=XX" escapes of the window; stops at a line end, at a "="
// that is not followed by two hex digits inside the window, or at its end.
void decodeQpRun(Source &src, Sink &out) {
  const uint8_t *p = src.cur();
  const uint8_t *const lim = src.lim();
  while (p != lim) {
    if (*p == '=') {
      if (lim - p < 3) break;
      const int hi = kHex[p[1]];
      const int lo = kHex[p[2]];
      if ((hi | lo) < 0) break;
      out.put(static_cast<uint8_t>(hi << 4 | lo));
      p += 3;
      continue;
    }
    const uint8_t *const q = findAny<'\r', '\n', '='>(p, lim);
    out.put(p, static_cast<size_t>(q - p), lim);
    p = q;
    if (p != lim && *p != '=') break;
  }
  src.take(p);
}

// The "=" has been taken: a soft break, an escape, or a "=" kept as text.
void readQpEscape(Source &src, Sink &out) {
  const int d = src.next();
  if (isEol(d)) {
    takeEol(src, d);
    return;
  }
  if (d < 0 || kHex[d] < 0) {
    out.put('=');
    if (d >= 0) src.back();
    return;
  }
  const int e = src.next();
  if (e >= 0 && kHex[e] >= 0) {
    out.put(static_cast<uint8_t>(kHex[d] << 4 | kHex[e]));
    return;
  }
  out.put('=');
  out.put(static_cast<uint8_t>(d));
  if (e >= 0) src.back();
}

int32_t readQp(IStrm *strm, IStrm *val, bool unfold) {
  Source src(strm);
  Sink out(val);
  for (;;) {
    src.fill();
    decodeQpRun(src, out);
    const Stop stop = stopAfterRun(src, out, unfold);
    if (stop.kind == Stop::Done) return stop.result;
    if (stop.kind == Stop::Fold) continue;
    if (stop.c == '=') {
      readQpEscape(src, out);
    } else {
      out.put(static_cast<uint8_t>(stop.c));
    }
  }
}

// ---- Base64 -------------------------------------------------------------------------

// Decodes the window up to a line end or its end.
void decodeB64Run(Source &src, Sink &out, Quantum &q) {
  const uint8_t *p = src.cur();
  const uint8_t *const lim = src.lim();
  for (;;) {
    if (q.empty()) p = decodeQuads(p, lim, out);
    if (p == lim) break;
    const uint8_t k = kB64[*p];
    if (k == kB64Eol) break;
    if (k < 64) {
      q.add(k, out);
    } else if (k == kB64Pad) {
      q.flush(out);
    }
    ++p;
  }
  src.take(p);
}

enum class NextLine { Data, Blank, Other };

// Looks at the line after a line end of a Base64 value without taking it,
// except a blank line, which belongs to the value as its end.
NextLine lookAtNextLine(Source &src) {
  const int d = src.next();
  if (d < 0) return NextLine::Other;
  if (isEol(d)) {
    takeEol(src, d);
    return NextLine::Blank;
  }
  src.back();
  for (const uint8_t *p = skipAlphabet(src.cur(), src.lim()); p != src.lim(); ++p) {
    const uint8_t k = kB64[*p];
    if (k == kB64Eol) return NextLine::Data;
    if (k == kB64Other) return NextLine::Other;
  }
  // The line goes on past the window (or there is none): read it and come
  // back. A stream that cannot tell its position cannot come back, so the
  // line is left to the caller.
  const int64_t pos = src.mark();
  if (pos < 0) return NextLine::Other;
  NextLine kind = NextLine::Data;
  for (;;) {
    const int c = src.next();
    if (c < 0) break;
    const uint8_t k = kB64[c];
    if (k == kB64Eol) break;
    if (k == kB64Other) {
      kind = NextLine::Other;
      break;
    }
  }
  src.rewindTo(pos);
  return kind;
}

int32_t readB64(IStrm *strm, IStrm *val, bool unfold) {
  Source src(strm);
  Sink out(val);
  Quantum q;
  for (;;) {
    src.fill();
    decodeB64Run(src, out, q);
    if (out.fault() != 0) return finish(src, out, 0);
    const LineEnd end = takeLineEndIn(src, unfold);
    if (end == LineEnd::Fold) continue;
    if (end == LineEnd::End) {
      if (unfold && lookAtNextLine(src) == NextLine::Data) continue;
      q.flush(out);
      return finish(src, out, 0);
    }
    const int c = src.next();
    if (c < 0) {
      q.flush(out);
      return finish(src, out, KVO_EOS);
    }
    const uint8_t k = kB64[c];
    if (k == kB64Eol) {
      takeEol(src, c);
      if (unfold && takeFold(src)) continue;
      if (unfold && lookAtNextLine(src) == NextLine::Data) continue;
      q.flush(out);
      return finish(src, out, 0);
    }
    if (k < 64) {
      q.add(k, out);
    } else if (k == kB64Pad) {
      q.flush(out);
    }
  }
}

IStrm *checked(IStrm *strm) {
  if (strm == nullptr) kvo_assert__("strm", __FILE__, __LINE__);
  return strm;
}

}  // namespace

extern "C" {

TARNEX_API int32_t KvoLex_getLine(IStrm *strm, IStrm *val, int32_t unfold, int32_t softBreaks) {
  if (checked(strm) == nullptr) return KVO_EOS;
  return readPlain(strm, val, unfold != 0, softBreaks != 0);
}

TARNEX_API int32_t KvoLex_getLineQp(IStrm *strm, IStrm *val, int32_t unfold) {
  if (checked(strm) == nullptr) return KVO_EOS;
  return readQp(strm, val, unfold != 0);
}

TARNEX_API int32_t KvoLex_getLineBase(IStrm *strm, IStrm *val, int32_t unfold) {
  if (checked(strm) == nullptr) return KVO_EOS;
  return readB64(strm, val, unfold != 0);
}

}  // extern "C"
