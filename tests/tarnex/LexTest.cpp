// The property lexer and line readers. Every case runs over the stream's own
// peek window, no peek at all and windows of 1, 2 and 5 bytes: all must agree.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <string_view>

#include "tarnex/codec.h"
#include "tarnex/lex.h"
#include "tarnex/scratch.hpp"

namespace {

using tarnex::ScratchMemStrm;
using tarnex::ScratchStr;
using tarnex::ScratchStrStrm;
using Encoder = int32_t (*)(IStrm *, IStrm *, int32_t, int32_t);

// Forwards to a string stream but shows at most `chunk` bytes through peek,
// or has no peek at all (chunk 0). `failAt` >= 0 makes getc fail there.
struct FeedStrm {
  IStrm base;
  IStrm *inner;
  int64_t chunk, failAt;
};

IStrm *innerOf(IStrm *s) { return reinterpret_cast<FeedStrm *>(s)->inner; }
int32_t fGetc(IStrm *s) {
  const FeedStrm *f = reinterpret_cast<FeedStrm *>(s);
  return f->failAt >= 0 && IStrm_tell(f->inner) >= f->failAt ? -5 : IStrm_getc(f->inner);
}
int64_t fPeek(IStrm *s, const uint8_t **p) {
  return std::min(IStrm_peek(innerOf(s), p), reinterpret_cast<FeedStrm *>(s)->chunk);
}
// The readers only read, so the writing operations are left out.
constexpr IStrmOps kChunkOps = {
    [](IStrm *) {}, nullptr, fGetc, [](IStrm *s, int32_t c) { return IStrm_ungetc(innerOf(s), c); },
    [](IStrm *s, void *b, int32_t n) { return IStrm_read(innerOf(s), b, n); }, nullptr,
    [](IStrm *s, uint32_t lo, int32_t hi, int32_t w) { return innerOf(s)->ops->seek(innerOf(s), lo, hi, w); },
    [](IStrm *s) { return IStrm_tell(innerOf(s)); }, [](IStrm *s) { return IStrm_size(innerOf(s)); },
    nullptr, fPeek};
constexpr IStrmOps kNoPeekOps = [] {
  IStrmOps ops = kChunkOps;
  ops.peek = nullptr;
  return ops;
}();

constexpr int64_t kOwnPeek = -1;
constexpr int64_t kFeeds[] = {kOwnPeek, 0, 1, 2, 5};

struct Opened {
  explicit Opened(std::string_view text, int64_t chunk, int64_t failAt = -1)
      : str(text), f{{chunk == 0 ? &kNoPeekOps : &kChunkOps}, str.get(), chunk, failAt} {}
  IStrm *get() { return f.chunk == kOwnPeek && f.failAt < 0 ? str.get() : &f.base; }
  ScratchStrStrm str;
  FeedStrm f;
};

std::string shown(std::string_view bytes) {
  std::string out;
  char hex[8];
  for (unsigned char c : bytes) {
    std::snprintf(hex, sizeof hex, c >= 0x20 && c < 0x7F && c != '\\' ? "%c" : "\\x%02X", c);
    out += hex;
  }
  return out;
}

std::string contents(IStrm *s) {
  std::string out(static_cast<size_t>(IStrm_size(s)), '\0');
  IStrm_rewind(s);
  if (!out.empty()) IStrm_read(s, out.data(), static_cast<int32_t>(out.size()));
  return out;
}

using Reader = std::function<int32_t(IStrm *in, IStrm *val)>;

std::string everyFeed(const std::function<std::string(IStrm *)> &run, std::string_view text) {
  std::string first;
  for (int64_t chunk : kFeeds) {
    Opened in(text, chunk);
    const std::string got = run(in.get());
    if (chunk == kOwnPeek) first = got;
    EXPECT_EQ(got, first) << "feed with chunk " << chunk << " on \"" << shown(text) << "\"";
  }
  return first;
}

// Calls the reader until it gives a negative code: "[value]code@position" each.
std::string calls(const Reader &read, std::string_view text) {
  return everyFeed([&](IStrm *in) {
    std::string out;
    for (int32_t i = 0, code = 0; i < 50 && code >= 0; ++i) {
      ScratchMemStrm val(16);
      code = read(in, val);
      out += "[" + shown(contents(val)) + "]" + std::to_string(code) + "@" +
             std::to_string(IStrm_tell(in)) + " ";
    }
    return out;
  }, text);
}

const Reader kPlain = [](IStrm *in, IStrm *v) { return KvoLex_getLine(in, v, 1, 0); };
const Reader kPlainSoft = [](IStrm *in, IStrm *v) { return KvoLex_getLine(in, v, 1, 1); };
const Reader kPlainFlat = [](IStrm *in, IStrm *v) { return KvoLex_getLine(in, v, 0, 0); };
const Reader kQp = [](IStrm *in, IStrm *v) { return KvoLex_getLineQp(in, v, 1); };
const Reader kB64 = [](IStrm *in, IStrm *v) { return KvoLex_getLineBase(in, v, 1); };
const Reader kB64Flat = [](IStrm *in, IStrm *v) { return KvoLex_getLineBase(in, v, 0); };
const Reader kSkip = [](IStrm *in, IStrm *) { return KvoLex_skipLine(in, 1); };
const Reader kSkipFlat = [](IStrm *in, IStrm *) { return KvoLex_skipLine(in, 0); };

TEST(LexLine, Readers) {
  const struct { const Reader *reader; const char *text, *want; } rows[] = {
      {&kPlain, "ab\r\ncd", "[ab]0@4 [cd]-202@6 "}, {&kPlain, "ab\ncd", "[ab]0@3 [cd]-202@5 "},
      {&kPlain, "ab\rcd", "[ab]0@3 [cd]-202@5 "}, {&kPlain, "ab\n\rcd", "[ab]0@3 []0@4 [cd]-202@6 "},
      {&kQp, "=41\r\n=42", "[A]0@5 [B]-202@8 "},  // LF and CR: the shared line-end code
      // After a line end a Base64 value looks at the next line: ";:" stops it.
      {&kB64, "QUJD\r\n;:QUJD", "[ABC]0@6 [ABC]-202@12 "},
      {&kB64, "QUJD\n;:QUJD", "[ABC]0@5 [ABC]-202@11 "},
      {&kB64, "QUJD\r;:QUJD", "[ABC]0@5 [ABC]-202@11 "},
      // CR CR LF (iOS 5) is one line end, also in a fold; CR CR alone is two.
      {&kPlain, "ab\r\r\ncd", "[ab]0@5 [cd]-202@7 "},
      {&kPlain, "ab\r\r\n cd\r\r\n", "[abcd]0@11 []-202@11 "},
      {&kPlain, "ab\r\rcd", "[ab]0@3 []0@4 [cd]-202@6 "},
      {&kPlain, "ab\r\r", "[ab]0@3 []0@4 []-202@4 "},
      {&kQp, "=41=\r\r\n=42\r\r\n", "[AB]0@13 []-202@13 "},
      {&kB64, "QU\r\r\n JD\r\r\n\r\r\nX:1", "[ABC]0@14 [_]-202@17 "},
      // Folds join with one blank dropped.
      {&kPlain, "ab\r\n cd\n\tef\r gh\r\nX", "[abcdefgh]0@17 [X]-202@18 "},
      {&kPlain, "ab\r\n  cd\r\n", "[ab cd]0@10 []-202@10 "},
      {&kPlainFlat, "ab\r\n cd\r\n", "[ab]0@4 [ cd]0@9 []-202@9 "},
      // An empty line ends the value, even when a fold follows it.
      {&kPlain, "ab\r\n\r\n cd", "[ab]0@4 [cd]-202@9 "},
      {&kQp, "a=\r\n\r\nb", "[a]0@6 [b]-202@7 "}, {&kQp, "ab\r\n cd", "[abcd]-202@7 "},
      // Soft breaks. The property layer passes 0: a plain value keeps its "=".
      {&kPlain, "sign=\nTEL:1", "[sign=]0@6 [TEL:1]-202@11 "},
      {&kPlainSoft, "ab=\r\ncd=\ref=\ngh\r\n", "[abcdefgh]0@17 []-202@17 "},
      {&kPlainSoft, "a=b=", "[a=b=]-202@4 "},
      // The line after a soft break is text from its first byte.
      {&kQp, "come=\r\n to\r\n", "[come to]0@12 []-202@12 "},
      {&kQp, "=\r\n=41=\n=42=\r=43\r\nX", "[ABC]0@18 [X]-202@19 "},
      {&kQp, "Joseph=\n\nTEL;HOME:028\n", "[Joseph]0@9 [TEL;HOME:028]0@22 []-202@22 "},  // empty line ends
      // Escapes in either case; a "=" that starts no escape stays.
      {&kQp, "H=C3=B6r=c3=b6", "[H\\xC3\\xB6r\\xC3\\xB6]-202@14 "},
      {&kQp, "a=G1b", "[a=G1b]-202@5 "}, {&kQp, "a=4G", "[a=4G]-202@4 "},
      {&kQp, "a=4\r\nb", "[a=4]0@5 [b]-202@6 "}, {&kQp, "a=4", "[a=4]-202@3 "},
      {&kQp, "a=", "[a=]-202@2 "}, {&kQp, "=0D=0A=00", "[\\x0D\\x0A\\x00]-202@9 "},
      // Base64 runs on over indented or plain lines to a blank line (taken) or a property
      // line; a fold may cut a quantum; other bytes on its own lines (even ':') drop.
      {&kB64, "QUJD\r\n    REVG\r\n\r\nTEL:1", "[ABCDEF]0@18 [LB\\xF5]-202@23 "},
      {&kB64, "QUJD\r\nREVG\r\nTEL;HOME:1\r\n", "[ABCDEF]0@12 [LB\\xC78\\xC15]0@24 []-202@24 "},
      {&kB64, "QU\r\n JDREVG\r\nEND:VCARD\r\n", "[ABCDEF]0@13 [\\x10\\xD0\\xD5\\x08\\x04C]0@24 []-202@24 "},
      {&kB64, "QU*J D\t\r\n QQ==\r\n", "[ABCA]0@16 []-202@16 "},
      {&kB64, "QUJD\r\n", "[ABC]0@6 []-202@6 "}, {&kB64, "QUJD\r\nQUJD", "[ABCABC]-202@10 "},
      {&kB64Flat, "QUJD\r\n REVG\r\n", "[ABC]0@6 [DEF]0@13 []-202@13 "},
      {&kB64, "QUJD:QUJD==\r\n\r\nEND:VCARD", "[ABCABC]0@15 [\\x10\\xD0\\xD5\\x08\\x04C]-202@24 "},
      // Padding, missing or in the middle, and a lone last digit.
      {&kB64, "QUI", "[AB]-202@3 "}, {&kB64, "Q", "[]-202@1 "}, {&kB64, "====", "[]-202@4 "},
      {&kB64, "QQ==QUI=", "[AAB]-202@8 "},
      {&kSkip, "abc\r\n def\r\nX", "[]0@11 []-202@12 "}, {&kSkip, "abc\rX", "[]0@4 []-202@5 "},
      {&kSkipFlat, "abc\r\n def\r\nX", "[]0@5 []0@11 []-202@12 "}, {&kSkip, "abc", "[]-202@3 "},
  };
  for (const auto &r : rows) EXPECT_EQ(calls(*r.reader, r.text), r.want) << shown(r.text);
}

// The block decoder of wide windows agrees with byte by byte for any byte anywhere.
TEST(LexLine, Base64EveryByteInEveryPlaceOfABlock) {
  for (int b = 0; b < 256; ++b) {
    for (int at = 0; at < 20; ++at) {
      std::string text = "QUJDREVGR0hJSktMTU5PUFFSU1RVVldY";
      text[static_cast<size_t>(at)] = static_cast<char>(b);
      calls(kB64, text + "\r\n" + text);
    }
  }
}

// Long values as the encoders write them come back whole through every feed,
// and the reader stops at the next property, past a closing blank line.
TEST(LexLine, WrittenValuesReadBackWhole) {
  std::string raw, plain, joined;
  for (int i = 0; i < 4000; ++i) {
    raw += static_cast<char>((i * 7 + i / 256) & 0xFF);
    joined += static_cast<char>('a' + i % 26);
    plain += joined.back() + std::string(i % 70 == 69 ? "\r\n " : "");
  }
  auto encoded = [&](Encoder enc, int32_t column) {
    ScratchStrStrm src(raw);
    ScratchMemStrm text(0);
    enc(text, src, 76, column);
    return contents(text);
  };
  const struct { const Reader *reader; std::string text, want; } rows[] = {
      {&kB64, encoded(b64_enc_strm_from_strm, 22), raw},
      {&kB64, encoded(b64_enc_strm_from_strm, -1), raw},  // on the property's line, no blank line
      {&kQp, encoded(qp_enc_strm_from_strm, 43), raw},
      {&kQp, encoded(qp_enc_strm_from_strm, 80), raw},  // begins with a soft break
      {&kPlain, plain, joined},
  };
  for (const auto &r : rows) {
    const std::string doc = r.text + "\r\nEND:X";
    EXPECT_EQ(everyFeed([&](IStrm *in) {
      ScratchMemStrm val(0);
      const int32_t code = (*r.reader)(in, val);
      return std::to_string(code) + "@" + std::to_string(IStrm_tell(in)) + ":" + contents(val);
    }, doc), "0@" + std::to_string(doc.size() - 5) + ":" + r.want);
  }
}

// The value is written at val's position; a null val drops it.
TEST(LexLine, ValueGoesToThePositionOfValOrNowhere) {
  ScratchStrStrm in("ab\r\n=41\r\nQUJD\r\n\r\nab\r\n");
  ScratchMemStrm val(0);
  IStrm_puts(val, "0123456", -1);
  IStrm_seek(val, 2, KVO_SEEK_SET);
  EXPECT_EQ(KvoLex_getLine(in, val, 1, 0), 0);
  EXPECT_EQ(IStrm_tell(val), 4);
  EXPECT_EQ(contents(val), "01ab456");
  EXPECT_EQ(KvoLex_getLineQp(in, nullptr, 1), 0);
  EXPECT_EQ(KvoLex_getLineBase(in, nullptr, 1), 0);
  EXPECT_EQ(KvoLex_getLine(in, nullptr, 1, 0), 0);
  EXPECT_EQ(IStrm_tell(in), IStrm_size(in));
}

// Faults of either stream are passed on; a null stream is reported misuse.
TEST(LexLine, StreamFaultsAndMisuse) {
  for (const Reader *r : {&kPlain, &kQp, &kB64}) {
    Opened in("abcdefgh=41\r\n", 0, 4);
    ScratchMemStrm val(0);
    EXPECT_EQ((*r)(in.get(), val), -5);
    ScratchStrStrm in2("abc\r\n"), readOnly("");
    EXPECT_EQ((*r)(in2, readOnly), -1);
  }
  static int reports = 0;
  void *old = nullptr;
  const KvoAssertHandler prev = Tarnex_setAssertHandler(
      [](void *, const char *, const char *, int32_t) { ++reports; }, nullptr, &old);
  ScratchMemStrm val(0);
  EXPECT_EQ(KvoLex_getLine(nullptr, val, 1, 0), KVO_EOS);
  EXPECT_EQ(KvoLex_getLineBase(nullptr, val, 1), KVO_EOS);
  EXPECT_EQ(KvoLex_get(nullptr, nullptr, ";", 0, 1), KVO_EOS);
  Tarnex_setAssertHandler(prev, old, nullptr);
  EXPECT_EQ(reports, 3);
}

TEST(LexGet, Tokens) {
  const struct {
    std::string_view text;
    const char *delims;
    int32_t flags, eol;
    const char *want;
  } rows[] = {
      {"TEL;TYPE=HOME,VOICE;X=\"a:b\":123\r\n", ";:=,", 0, 1,
       "W(TEL) ;=59 W(TYPE) ==61 W(HOME) ,=44 W(VOICE) ;=59 W(X) ==61 W(\"a:b\") :=58 "
       "W(123) EOL EOS"},
      {"X=\"a:b\":1", ":", KVO_LEX_NO_QUOTES, 1, "W(X=\"a) :=58 W(b\") :=58 E(1) EOS"},
      // Quotes open anywhere in a word; one left open ends at the line end.
      {";GEO=\"geo:1,2\";L=\"x:y\":v", ":", 0, 1, "W(;GEO=\"geo:1,2\";L=\"x:y\") :=58 E(v) EOS"},
      {"A=\"b:c\r\n:d", ":", 0, 1, "W(A=\"b:c) EOL :=58 E(d) EOS"},
      {"a\"b", "\"", 0, 1, "W(a) \"=34 E(b) EOS"},
      // Line ends, given or skipped, and folds.
      {"A\r\n\nB\rC", ";", 0, 1, "W(A) EOL EOL W(B) EOL E(C) EOS"},
      {"A\r\n\nB\rC\r\n", ";", 0, 0, "W(A) W(B) W(C) EOS"},
      {"TE\r\n L;\r\n\t;X\r\n", ";", 0, 1, "W(TEL) ;=59 ;=59 W(X) EOL EOS"},
      {"A\r\r\nB;\r\r\n C", ";", 0, 1, "W(A) EOL W(B) ;=59 E(C) EOS"},
      {"A\r\n", nullptr, 0, 1, "W(A) EOL EOS"}, {"", ";", 0, 1, "EOS"},
      {std::string_view("a\0b;", 4), ";", 0, 1, "W(a\\x00b) ;=59 EOS"},
  };
  for (const auto &r : rows) {
    EXPECT_EQ(everyFeed([&](IStrm *in) {
      std::string out;
      ScratchStr<8> tok;
      for (int32_t i = 0, code = 0; i < 60 && code >= 0; ++i) {
        code = KvoLex_get(in, tok, r.delims, r.flags, r.eol);
        const std::string word = "(" + shown(tok.view()) + ") ";
        out += code == KVO_LEX_WORD       ? "W" + word
               : code == KVO_LEX_WORD_EOS ? "E" + word
               : code == KVO_LEX_EOL      ? "EOL "
               : code == KVO_EOS ? "EOS" : std::string(tok.view()) + "=" + std::to_string(code) + " ";
      }
      return out;
    }, r.text), r.want) << shown(r.text);
  }
  ScratchStrStrm in("AB;C");  // a null token only moves on
  EXPECT_EQ(KvoLex_get(in, nullptr, ";", 0, 1), KVO_LEX_WORD);
  EXPECT_EQ(IStrm_tell(in), 2);
}

// Reads a file as the property decoder does: the value of the first property `key`.
std::string valueIn(const std::string &path, std::string_view key) {
  std::ifstream f(path, std::ios::binary);
  const std::string text((std::istreambuf_iterator<char>(f)), {});
  ScratchStrStrm in(text);
  ScratchStr<64> tok;
  for (int32_t code; (code = KvoLex_get(in, tok, ";:", 0, 1)) >= 0;) {
    if (code != KVO_LEX_WORD) {
      if (code != KVO_LEX_EOL && KvoLex_skipLine(in, 1) < 0) break;
      continue;
    }
    std::string prop(tok.view());
    if ((code = KvoLex_get(in, tok, ":", 0, 1)) == KVO_LEX_WORD) {
      prop += tok.view();
      code = KvoLex_get(in, tok, ":", 0, 1);
    }
    if (code != ':') return "<malformed>";
    auto has = [&](const char *word) { return prop.find(word) != std::string::npos; };
    ScratchMemStrm val(0);
    code = has("QUOTED-PRINTABLE")                   ? KvoLex_getLineQp(in, val, 1)
           : has("BASE64") || has("ENCODING=b") ? KvoLex_getLineBase(in, val, 1)
                                                    : KvoLex_getLine(in, val, 1, 0);
    if (prop == key) return contents(val);
    if (code < 0) break;
  }
  return "<not found>";
}

TEST(LexLine, RealFilesOfPhones) {
  const char *dir = std::getenv("OSTREL_CORPUS");
  if (dir == nullptr || !std::ifstream(std::string(dir) + "/vcard/gammu__se-1.vcf"))
    GTEST_SKIP() << "corpus not found";
  const std::string vc = std::string(dir) + "/vcard/";
  EXPECT_EQ(valueIn(vc + "aosp-vcard__v21_complicated.vcf", "NOTE;ENCODING=QUOTED-PRINTABLE"),
            "Now's the time for all folk to come to the aid of their country.");
  EXPECT_EQ(valueIn(vc + "gammu__line-continuation.vcf", "TEL;WORK"), "55554444");
  EXPECT_EQ(valueIn(vc + "aosp-vcard__v21_invalid_multiple_line.vcf", "EMAIL;INTERNET"),
            "\"Omega\" <omega@example.com>");
  EXPECT_EQ(valueIn(vc + "gammu__se-1.vcf", "ADR;WORK;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE"), ";;100 rue des Maths;Saint Martin d'H\xC3\xA8res;;38402;");
  EXPECT_EQ(valueIn(vc + "aosp-vcard__v21_base64_no_2_crlf.vcf", "PHOTO;ENCODING=BASE64;TYPE=JPEG").substr(0, 3), "\xFF\xD8\xFF");
  EXPECT_EQ(valueIn(vc + "aosp-vcard__v21_blackberry_photo.vcf", "TEL;TYPE=WORK"), "+5555555");
  EXPECT_EQ(valueIn(vc + "gammu__photo.vcf", "END"), "VCARD");
  EXPECT_EQ(valueIn(vc + "opensync__kdepim-kdepim-photo1-2.1.vcf", "N;CHARSET=UTF-8;ENCODING=8BIT"),
            "familynames;givenname;additional names;prefix;suffix");
}

}  // namespace
