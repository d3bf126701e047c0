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
// nothing but tables derived from the arguments. A set of up to 15 bytes is
// its own key, packed into two words, so a lookup compares words instead of
// strings.
struct SetKey {
  uint64_t w[2] = {0, 0};
  bool operator==(const SetKey &) const = default;
};

// False for a set too long to be a key.
bool packKey(const char *delims, bool quotes, SetKey &key) {
  constexpr int kMax = 15;
  uint8_t bytes[16] = {};
  int n = 0;
  if (delims != nullptr)
    for (; delims[n] != '\0'; ++n) {
      if (n == kMax) return false;
      bytes[n] = static_cast<uint8_t>(delims[n]);
    }
  bytes[15] = quotes ? 1 : 0;  // never a set byte: a key holds at most 15
  std::memcpy(key.w, bytes, sizeof bytes);
  return true;
}

const ClassTable &classFor(const char *delims, bool quotes) {
  struct Entry {
    SetKey key;
    bool used;
    ClassTable table;
  };
  // One thread-local object, so a lookup costs one address resolution.
  struct Cache {
    Entry entries[4];
    unsigned nextSlot;
    ClassTable uncached;
  };
  thread_local Cache cache;
  SetKey key;
  if (!packKey(delims, quotes, key)) {
    cache.uncached = classify(delims, quotes);
    return cache.uncached;
  }
  for (const Entry &e : cache.entries)
    if (e.used && e.key == key) return e.table;
  Entry &e = cache.entries[cache.nextSlot++ % 4];
  e.key = key;
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
    // A byte the window still shows joins the run behind it: one append
    // for the whole word in the common case.
    const uint8_t *run;
    if (src.tookFromWindow()) {
      run = src.cur() - 1;
    } else {
      out.put(c);
      src.fill();
      run = src.cur();
    }
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
    out.put(run, p);
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

// Text saved as UTF-8 by desktop programs often starts with the byte-order
// mark EF BB BF. It is no part of the first word, or "\xEF\xBB\xBFBEGIN"
// would not be a BEGIN line. Only the very start of the stream is looked
// at; a window that does not start with 0xEF settles it without a tell.
void skipByteOrderMark(IStrm *strm) {
  static constexpr uint8_t kMark[3] = {0xEF, 0xBB, 0xBF};
  const uint8_t *p = nullptr;
  const int64_t n = IStrm_peek(strm, &p);
  if (n > 0 && p != nullptr && p[0] != kMark[0]) return;
  if (IStrm_tell(strm) != 0) return;
  if (n >= 3 && p != nullptr) {
    if (std::memcmp(p, kMark, 3) == 0) IStrm_seek(strm, 3, KVO_SEEK_CUR);
    return;
  }
  uint8_t head[3];
  const int32_t got = IStrm_read(strm, head, 3);
  if (got != 3 || std::memcmp(head, kMark, 3) != 0) IStrm_seek(strm, 0, KVO_SEEK_SET);
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
  skipByteOrderMark(strm);
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
