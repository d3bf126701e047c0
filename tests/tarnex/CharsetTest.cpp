#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "tarnex/charset.h"
#include "tarnex/scratch.hpp"

namespace {

using tarnex::ScratchMemStrm;
using tarnex::ScratchStr;
using tarnex::ScratchStrStrm;
using tarnex::ScratchWcs;
using Units = std::vector<uint16_t>;

// Reference encodings, written apart from the library's.
std::string refUtf8(uint32_t c) {
  if (c < 0x80) return std::string(1, static_cast<char>(c));
  const int n = c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
  std::string s(static_cast<size_t>(n), '\0');
  for (int i = n - 1; i > 0; --i, c >>= 6) s[static_cast<size_t>(i)] = static_cast<char>(0x80 | (c & 0x3F));
  s[0] = static_cast<char>((0xF00 >> n) | c);  // C0, E0 or F0 and the top bits
  return s;
}
void refUtf16(uint32_t c, Units &out) {
  if (c < 0x10000) return out.push_back(static_cast<uint16_t>(c));
  out.push_back(static_cast<uint16_t>(0xD800 + ((c - 0x10000) >> 10)));
  out.push_back(static_cast<uint16_t>(0xDC00 + (c & 0x3FF)));
}
std::string bigEndian(const Units &u) {
  std::string s;
  for (uint16_t x : u) s += {static_cast<char>(x >> 8), static_cast<char>(x & 0xFF)};
  return s;
}

// Every scalar value in steps, with each boundary of the encodings.
std::vector<uint32_t> sampleCodePoints() {
  std::vector<uint32_t> cps = {0x01,   0x7F,   0x80,    0x7FF,   0x800,    0xD7FF, 0xE000,
                               0xFFFD, 0xFFFF, 0x10000, 0x10FFF, 0x10FFFF, '+',    '-'};
  for (uint32_t c = 1; c <= 0x10FFFF; c += 0x3E1)
    if (c < 0xD800 || c > 0xDFFF) cps.push_back(c);
  return cps;
}

// No peek, at most `chunk` bytes a read (characters cut between reads); writes fail with -7.
struct ChunkStrm {
  IStrm base;
  std::string data;
  size_t pos = 0, chunk = 1;
  static ChunkStrm *self(IStrm *s) { return reinterpret_cast<ChunkStrm *>(s); }
  static int32_t read(IStrm *s, void *buf, int32_t n) {
    ChunkStrm *c = self(s);
    const size_t k = std::min({static_cast<size_t>(n), c->chunk, c->data.size() - c->pos});
    std::memcpy(buf, c->data.data() + c->pos, k);
    c->pos += k;
    return static_cast<int32_t>(k);
  }
  static int32_t seek(IStrm *s, uint32_t low, int32_t high, int32_t whence) {
    ChunkStrm *c = self(s);
    const int64_t from = whence == 1 ? c->pos : whence == 2 ? c->data.size() : 0;
    const int64_t to = static_cast<int64_t>(static_cast<uint64_t>(high) << 32 | low) + from;
    if (to < 0) return -1;
    c->pos = std::min(static_cast<size_t>(to), c->data.size());
    return 0;
  }
  static constexpr IStrmOps kOps = {
      [](IStrm *) {}, nullptr, nullptr, nullptr, read,
      [](IStrm *, const void *, int32_t) { return -7; }, seek,
      [](IStrm *s) { return static_cast<int64_t>(self(s)->pos); },
      [](IStrm *s) { return static_cast<int64_t>(self(s)->data.size()); }, nullptr, nullptr};
  ChunkStrm(std::string d, size_t k) : base{&kOps}, data(std::move(d)), chunk(k) {}
};

using Converter = int32_t (*)(IStrm *, IStrm *);

std::string run(Converter fn, std::string_view in) {
  ScratchStrStrm src(in);
  ScratchMemStrm dst(0);
  const int32_t n = fn(src, dst);
  EXPECT_EQ(n, IStrm_size(dst));
  EXPECT_EQ(IStrm_tell(src), static_cast<int64_t>(in.size()));
  return {reinterpret_cast<const char *>(MemStrm_data(dst)), static_cast<size_t>(IStrm_size(dst))};
}
// The same through the no-peek stream at several read sizes must agree.
std::string runAllWays(Converter fn, std::string_view in) {
  const std::string whole = run(fn, in);
  for (size_t chunk : {1, 2, 3, 5, 4096}) {
    ChunkStrm src{std::string(in), chunk};
    ScratchMemStrm dst(0);
    EXPECT_EQ(fn(&src.base, dst), static_cast<int32_t>(whole.size()));
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(MemStrm_data(dst)), IStrm_size(dst)), whole)
        << "read size " << chunk;
  }
  return whole;
}

Units wcsOut(const std::string &utf8) {
  std::unique_ptr<KvoWchar, void (*)(KvoWchar *)> w(utf8_str_to_wcs_out(utf8.c_str()),
                                                    [](KvoWchar *p) { kvo_free__(p, "", 0); });
  Units u;
  for (const KvoWchar *p = w.get(); *p; ++p) u.push_back(*p);
  return u;
}

// Units back to UTF-8 through the string form; its length must match the text.
std::string utf8Of(const Units &u) {
  ScratchWcs<16> wide;
  KvoWcs_setWcsx(wide, u.data(), static_cast<int32_t>(u.size()));
  ScratchStr<16> out;
  return std::string(out.c_str(), static_cast<size_t>(wcs_str_to_utf8_cstr(wide, out)->len));
}

TEST(Charset, RoundTripsWholeRange) {
  std::string text;
  Units units;
  for (uint32_t c : sampleCodePoints()) {
    text += refUtf8(c);
    refUtf16(c, units);
  }
  EXPECT_EQ(wcsOut(text), units);
  EXPECT_EQ(runAllWays(utf8_strm_to_ucs2_strm, text), bigEndian(units));
  EXPECT_EQ(runAllWays(ucs2_strm_to_utf8_strm, bigEndian(units)), text);
  EXPECT_EQ(utf8Of(units), text);
  // UTF-7 is 7-bit; each printable character also meets a shifted one.
  for (char c = 0x20; c < 0x7F; ++c) text += std::string(1, c) + "\xC3\xA9";
  const std::string utf7 = runAllWays(utf8_strm_to_utf7_strm, text);
  for (unsigned char c : utf7) ASSERT_LT(c, 0x80);
  EXPECT_EQ(runAllWays(utf7_strm_to_utf8_strm, utf7), text);
}

// In memory a lone surrogate keeps its unit (on the wire it is U+FFFD: LenientDecoding).
TEST(Charset, LoneSurrogateKeepsItsUnitInMemory) {
  const std::string wtf8 = "a\xED\xA0\x80" "b\xED\xBF\xBF";  // D800, DFFF
  EXPECT_EQ(wcsOut(wtf8), (Units{'a', 0xD800, 'b', 0xDFFF}));
  EXPECT_EQ(utf8Of(wcsOut(wtf8)), wtf8);
}

// One U+FFFD per maximal bad subpart (Unicode chapter 3; Table 3-8 is the last row).
TEST(Charset, MalformedUtf8GivesOneReplacementPerMaximalSubpart) {
  constexpr uint16_t R = 0xFFFD;
  const std::pair<const char *, Units> rows[] = {
      {"\x80", {R}}, {"\xBF\x80", {R, R}}, {"\xF5\x80", {R, R}}, {"\xFE\xFF", {R, R}},
      {"\xC0\xAF", {R, R}}, {"\xC1\xBF", {R, R}}, {"\xE0\x80\xAF", {R, R, R}},  // overlong
      {"\xF0\x80\x80\x80", {R, R, R, R}},  // overlong 4-byte
      {"\xF4\x90\x80\x80", {R, R, R, R}},  // above U+10FFFF
      {"\xE1\x80", {R}}, {"\xF0\x90\x80", {R}},  // cut at the end
      {"\xE1\x80z", {R, 'z'}},             // cut by a new character
      {"\xF0\x9F\x98\x80\x80", {0xD83D, 0xDE00, R}},
      {"a\xF1\x80\x80\xE1\x80\xC2" "b\x80" "c\x80\xBF" "d", {'a', R, R, R, 'b', R, 'c', R, R, 'd'}},
  };
  for (const auto &[in, want] : rows) {
    const size_t n = std::strlen(in);
    EXPECT_EQ(wcsOut(in), want) << in;
    EXPECT_EQ(runAllWays(utf8_strm_to_ucs2_strm, {in, n}), bigEndian(want)) << in;
    std::unique_ptr<char[]> exact(new char[n]);
    std::memcpy(exact.get(), in, n);
    ScratchStrStrm s(exact.get(), static_cast<int32_t>(n));  // no terminator to lean on
    Units got;
    for (KvoWchar c; (c = utf8_strm_to_wcs_char(s)) != 0;) got.push_back(c);
    EXPECT_EQ(got, want) << in;
  }
}

TEST(Charset, WcsCharGivesSurrogatesOnSuccessiveCallsWithoutSharedState) {
  const std::string a = "x\xF0\x9F\x98\x80y", b = "\xF4\x8F\xBF\xBF";  // U+1F600, U+10FFFF
  ScratchStrStrm sa(a);
  ChunkStrm sb{b, 1};  // no peek
  EXPECT_EQ(utf8_strm_to_wcs_char(sa), 'x');
  EXPECT_EQ(utf8_strm_to_wcs_char(sa), 0xD83D);
  EXPECT_EQ(utf8_strm_to_wcs_char(&sb.base), 0xDBFF);  // interleaved: no state leaks
  EXPECT_EQ(utf8_strm_to_wcs_char(sa), 0xDE00);
  EXPECT_EQ(IStrm_tell(sa), 5);
  EXPECT_EQ(utf8_strm_to_wcs_char(&sb.base), 0xDFFF);
  EXPECT_EQ(IStrm_tell(&sb.base), 4);
  EXPECT_EQ(utf8_strm_to_wcs_char(&sb.base), 0);
}

// Byte order marks, odd bytes and half pairs in UCS-2; loose shifts in UTF-7.
TEST(Charset, LenientDecoding) {
  const std::string R = "\xEF\xBF\xBD";
  const Converter kUcs2 = ucs2_strm_to_utf8_strm, kUtf7 = utf7_strm_to_utf8_strm;
  const std::tuple<Converter, std::string, std::string> rows[] = {
      {kUcs2, {"\xFE\xFF\0A", 4}, "A"},
      {kUcs2, {"\xFF\xFE" "A\0\xAC\x20", 6}, "A\xE2\x82\xAC"}, {kUcs2, {"\xFF\xFE", 2}, ""},
      {kUcs2, {"\0A\0", 3}, "A"},                      // odd last byte dropped
      {kUcs2, {"\0A\xFE\xFF", 4}, "A\xEF\xBB\xBF"},     // a mark later on is text
      {kUcs2, {"\xD8\x3D", 2}, R},                      // high at the end
      {kUcs2, {"\xD8\x3D\0A", 4}, R + "A"},             // high without its low
      {kUcs2, {"\xD8\x3D\xD8\x3D\xDE\x00", 6}, R + "\xF0\x9F\x98\x80"},
      {kUcs2, {"\xDE\x00\0A", 4}, R + "A"},             // lone low
      {kUtf7, "+ZeVnLIqe", "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E"},  // unterminated
      {kUtf7, "+AKM.x", "\xC2\xA3.x"},  // ended by a direct character
      {kUtf7, "+AKM +-", "\xC2\xA3 +"}, {kUtf7, "+!", "!"}, {kUtf7, "+", ""},
      {kUtf7, "+AKMA-", "\xC2\xA3"},    // leftover bits dropped
      {kUtf7, "+2D0-x", R + "x"},        // high surrogate alone
      {kUtf7, "+2AAAQQ-", R + "A"},      // high then not a low
      {kUtf7, "+3gA-", R},               // lone low
      {kUtf7, "\xC3\xA9\xFF", "\xC3\xA9" + R},  // 8-bit text outside a shift
      {kUtf7, "+AKM\xC3\xA9", "\xC2\xA3\xC3\xA9"},
  };
  for (const auto &[fn, in, want] : rows) EXPECT_EQ(runAllWays(fn, in), want);
  ScratchStr<8> str;  // the string form appends
  KvoStr_setStr(str, "pre:");
  ScratchStrStrm in(std::string_view("\0o\0k", 4));
  EXPECT_EQ(ucs2_strm_to_utf8_cstr(in, str), 2);
  EXPECT_EQ(str.view(), "pre:ok");
}

// RFC 2152's examples, "+" as "+-", optional direct characters shifted.
TEST(Charset, Utf7EncodesAsRfc2152) {
  const std::pair<const char *, const char *> rows[] = {
      {"A\xE2\x89\xA2\xCE\x91.", "A+ImIDkQ."}, {"Hi Mom -\xE2\x98\xBA-!", "Hi Mom -+Jjo--!"},
      {"\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E", "+ZeVnLIqe-"},
      {"Item 3 is \xC2\xA3" "1.", "Item 3 is +AKM-1."}, {"1+1=2;", "1+-1=2;"},
      {"\xC2\xA3+", "+AKM-+-"}, {"a~b\\", "a+AH4-b+AFw-"}, {"\xF0\x9F\x98\x80", "+2D3eAA-"},
      {"\xE2\x98\xBA\n", "+Jjo\n"},
  };
  for (const auto &[utf8, utf7] : rows) {
    EXPECT_EQ(runAllWays(utf8_strm_to_utf7_strm, utf8), utf7);
    EXPECT_EQ(runAllWays(utf7_strm_to_utf8_strm, utf7), utf8);
  }
}

TEST(Charset, StreamFaultsAndMisuse) {
  ScratchStrStrm in("abc");
  ChunkStrm failing{"", 1};
  EXPECT_EQ(utf8_strm_to_ucs2_strm(in, &failing.base), -7);
  IStrm_rewind(in);
  EXPECT_EQ(utf8_strm_to_utf7_strm(in, &failing.base), -7);
  int reports = 0;
  void *oldCtx = nullptr;
  KvoAssertHandler old = Tarnex_setAssertHandler(
      [](void *ctx, const char *, const char *, int32_t) { ++*static_cast<int *>(ctx); }, &reports,
      &oldCtx);
  EXPECT_EQ(ucs2_strm_to_utf8_strm(nullptr, in), KVO_CANT);
  EXPECT_EQ(utf7_strm_to_utf8_strm(in, in), KVO_CANT);
  EXPECT_EQ(utf8_strm_to_wcs_char(nullptr), 0);
  EXPECT_EQ(wcs_str_to_utf8_cstr(nullptr, nullptr), nullptr);
  Tarnex_setAssertHandler(old, oldCtx, nullptr);
  EXPECT_EQ(reports, 4);
}

std::string ansi(const char *src, int32_t size = 512) {
  std::vector<char> dst(static_cast<size_t>(std::max(size, 1)), '#');
  const int32_t n = ansi_str_to_utf8_str(src, dst.data(), size);
  EXPECT_EQ(static_cast<size_t>(n), std::strlen(dst.data()));
  return {dst.data(), static_cast<size_t>(n)};
}

// Windows-1252 by default, cut only at whole characters.
TEST(Charset, Ansi) {
  EXPECT_EQ(ansi("a\x80" "b\xE9\xA4"), "a\xE2\x82\xAC" "b\xC3\xA9\xC2\xA4");
  EXPECT_EQ(ansi(nullptr), "");
  char keep = '#';
  EXPECT_EQ(ansi_str_to_utf8_str("abc", &keep, 0), 0);
  EXPECT_EQ(keep, '#');
  const std::string full = ansi("a\x80\xE9\x81z");  // 1 + 3 + 2 + 3 (undefined: U+FFFD) + 1
  EXPECT_EQ(full, "a\xE2\x82\xAC\xC3\xA9\xEF\xBF\xBDz");
  for (int32_t size = 1; size <= 12; ++size) {
    size_t want = 0;
    for (size_t end : {1, 4, 6, 9, 10})
      if (end < static_cast<size_t>(size)) want = end;
    EXPECT_EQ(ansi("a\x80\xE9\x81z", size), full.substr(0, want)) << "size " << size;
  }
}

TEST(Charset, AnsiCodepageIsChosenForTheProcess) {
  EXPECT_EQ(kvo_set_ansi_codepage("ISO-8859-15"), 0);
  std::string other;
  std::thread([&] { other = ansi("\xA4"); }).join();
  EXPECT_EQ(other, "\xE2\x82\xAC");
  EXPECT_EQ(kvo_set_ansi_codepage("NO-SUCH-CODEPAGE-X"), -1);
  EXPECT_EQ(kvo_set_ansi_codepage(nullptr), -1);
  EXPECT_EQ(ansi("\xA4"), "\xE2\x82\xAC");  // the refused name left the choice alone
  EXPECT_EQ(kvo_set_ansi_codepage("WINDOWS-1252"), 0);
  EXPECT_EQ(ansi("\xA4"), "\xC2\xA4");
}

}  // namespace
