// The property lexer: words, delimiters and line ends of a property line,
// and skipping a line.
//
// Folds are undone everywhere: a line end followed by a blank or a tab is
// dropped together with that one blank, inside a word as between tokens,
// so "TEL;TY\r\n PE=HOME" reads as if it stood on one line.
#include <array>
#include <cstring>
#include <cstdint>

#include "lex_scan.h"
#include "tarnex/lex.h"

namespace {

using namespace tarnex::lex;

// Byte classes of one call of KvoLex_get.
enum : uint8_t { kPlain = 0, kDelim = 1, kQuote = 2, kEol = 3 };

using ClassTable = std::array<uint8_t, 256>;

// Line ends are never delimiters (they have rules of their own), and a
// delimiter wins over the quote: a caller that names '"' wants it as a token.
ClassTable classify(const char *delims, bool quotes) {
  ClassTable t{};
  if (quotes) t['"'] = kQuote;
  if (delims != nullptr) {
    for (const char *d = delims; *d != '\0'; ++d) t[static_cast<uint8_t>(*d)] = kDelim;
  }
  t['\r'] = kEol;
  t['\n'] = kEol;
  return t;
}

// The property decoder asks with the same two or three delimiter sets for
// every line, and building a 256-entry table per token cost as much as
// reading the token; a small per-thread cache keeps the recent ones. It holds
// nothing but tables derived from the arguments.
const ClassTable &classFor(const char *delims, bool quotes) {
  constexpr size_t kKeyMax = 16;
  struct Entry {
    char key[kKeyMax];
    bool quotes;
    bool used;
    ClassTable table;
  };
  thread_local Entry cache[4];
  thread_local unsigned nextSlot = 0;
  thread_local ClassTable uncached;
  const char *key = delims != nullptr ? delims : "";
  const size_t len = std::strlen(key);
  if (len >= kKeyMax) {
    uncached = classify(delims, quotes);
    return uncached;
  }
  for (const Entry &e : cache)
    if (e.used && e.quotes == quotes && std::strcmp(e.key, key) == 0) return e.table;
  Entry &e = cache[nextSlot++ % 4];
  std::memcpy(e.key, key, len + 1);
  e.quotes = quotes;
  e.used = true;
  e.table = classify(delims, quotes);
  return e.table;
}

// The token being built; a null token only lets the lexer move on.
class TokenOut {
 public:
  explicit TokenOut(KvoStr *s) : s_(s) {
    if (s_ != nullptr) KvoStr_clear(s_);
  }
  void put(int c) {
    if (s_ != nullptr) KvoStr_appdChar(s_, static_cast<char>(c));
  }
  void put(const uint8_t *p, const uint8_t *q) {
    if (s_ != nullptr && q != p)
      KvoStr_appdStrx(s_, reinterpret_cast<const char *>(p), static_cast<int32_t>(q - p));
  }

 private:
  KvoStr *s_;
};

int32_t done(Source &src, int32_t code) {
  const int32_t r = src.commit();
  return r != 0 ? r : code;
}

// The rest of a word whose first byte c has been taken.
int32_t readWord(Source &src, TokenOut &out, const ClassTable &cls, int c) {
  bool inQuote = false;
  for (;;) {
    if (cls[c] == kQuote) inQuote = !inQuote;
    out.put(c);
    src.fill();
    const uint8_t *p = src.cur();
    const uint8_t *const lim = src.lim();
    while (p != lim) {
      const uint8_t k = cls[*p];
      if (k == kPlain || (k == kDelim && inQuote)) {
        ++p;
      } else if (k == kQuote) {
        inQuote = !inQuote;
        ++p;
      } else {
        break;
      }
    }
    out.put(src.cur(), p);
    src.take(p);

    for (;;) {
      c = src.next();
      if (c < 0) return done(src, KVO_LEX_WORD_EOS);
      if (!isEol(c)) break;
      // Only a fold lets the word go on; any other line end ends it and
      // must be read again by the next call, so the stream goes back
      // before it.
      int32_t taken = 1;
      if (c == '\r') {
        const int d = src.next();
        if (d == '\n') {
          taken = 2;
        } else if (d == '\r') {
          const int f = src.next();  // CR CR LF: one line end
          if (f == '\n')
            taken = 3;
          else
            src.unread(f >= 0 ? 2 : 1);
        } else if (d >= 0) {
          src.back();
        }
      }
      if (takeFold(src)) continue;
      src.unread(taken);
      return done(src, KVO_LEX_WORD);
    }
    if (cls[c] == kDelim && !inQuote) {
      src.back();
      return done(src, KVO_LEX_WORD);
    }
  }
}

int32_t lexGet(IStrm *strm, KvoStr *token, const char *delims, int32_t flags,
               int32_t eolTokens) {
  const ClassTable &cls = classFor(delims, (flags & KVO_LEX_NO_QUOTES) == 0);
  Source src(strm);
  TokenOut out(token);
  for (;;) {
    const int c = src.next();
    if (c < 0) return done(src, KVO_EOS);
    if (isEol(c)) {
      takeEol(src, c);
      if (takeFold(src)) continue;
      if (eolTokens != 0) return done(src, KVO_LEX_EOL);
      continue;
    }
    if (cls[c] == kDelim) {
      out.put(c);
      return done(src, c);
    }
    return readWord(src, out, cls, c);
  }
}

int32_t skipLine(IStrm *strm, int32_t unfold) {
  Source src(strm);
  for (;;) {
    src.fill();
    src.take(findEol(src.cur(), src.lim()));
    const LineEnd end = takeLineEndIn(src, unfold != 0);
    if (end == LineEnd::Fold) continue;
    if (end == LineEnd::End) return done(src, 0);
    const int c = src.next();
    if (c < 0) return done(src, KVO_EOS);
    if (!isEol(c)) continue;
    takeEol(src, c);
    if (unfold != 0 && takeFold(src)) continue;
    return done(src, 0);
  }
}

}  // namespace

extern "C" {

TARNEX_API int32_t KvoLex_get(IStrm *strm, KvoStr *token, const char *delims, int32_t flags,
                              int32_t eolTokens) {
  if (strm == nullptr) {
    kvo_assert__("strm", __FILE__, __LINE__);
    return KVO_EOS;
  }
  return lexGet(strm, token, delims, flags, eolTokens);
}

TARNEX_API int32_t KvoLex_getDef(IStrm *strm, KvoStr *token, const char *delims) {
  return KvoLex_get(strm, token, delims, 0, 1);
}

TARNEX_API int32_t KvoLex_skipLine(IStrm *strm, int32_t unfold) {
  if (strm == nullptr) {
    kvo_assert__("strm", __FILE__, __LINE__);
    return KVO_EOS;
  }
  return skipLine(strm, unfold);
}

}  // extern "C"
