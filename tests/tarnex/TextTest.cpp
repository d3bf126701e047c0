// The text utilities, table by table.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tarnex/text.h"

namespace {

int sign(int32_t v) { return (v > 0) - (v < 0); }
const char *show(const char *t) { return t ? t : "null"; }

TEST(Text, StricmpFoldsAsciiOnly) {
  struct Row { const char *a, *b; int want; };
  const Row rows[] = {
      {"abc", "ABC", 0}, {"ABC", "abd", -1}, {"abcd", "ABC", 1}, {nullptr, "", 0},
      {nullptr, "a", -1}, {"a", nullptr, 1}, {"Z", "a", 1},  // 'z' > 'a' once folded
      {"[", "{", -1}, {"@", "`", -1},  // just outside the letters: not folded
      {"\xC3\xA4", "\xC3\x84", 1},     // UTF-8 letters compare as bytes
  };
  for (const Row &r : rows)
    EXPECT_EQ(sign(kvo_stricmp(r.a, r.b)), r.want) << show(r.a) << "|" << show(r.b);
}

// stristr: first place of the needle, case ignored; strrchrs: last of any byte.
TEST(Text, StristrAndStrrchrsFindTheirPlace) {
  const char *hay = "Begin:VCARD begin:vcard", *path = "a/b\\c/d.e\xC3\xA9";
  struct Row { bool last; const char *what; int at; };  // at -1: not found
  const Row rows[] = {
      {false, "vcard", 6}, {false, "BEGIN", 0},  {false, "n:v", 4},   {false, "", 0},
      {false, nullptr, 0}, {false, "cardx", -1}, {false, "VCARD BEGIN:VCARDS", -1},
      {false, "d", 10},    {true, "/\\", 5},     {true, "\\", 3},      {true, ".", 7},
      {true, "xyz", -1},   {true, "", -1},       {true, nullptr, -1},  {true, "a", 0},
      {true, "\xA9", 10},  // high bytes are bytes too
  };
  for (const Row &r : rows) {
    const char *in = r.last ? path : hay;
    const char *got = r.last ? kvo_strrchrs(in, r.what) : kvo_stristr(in, r.what);
    EXPECT_EQ(got ? got - in : -1, r.at) << show(r.what);
  }
  EXPECT_EQ(kvo_stristr(nullptr, "a"), nullptr);
  EXPECT_EQ(kvo_strrchrs(nullptr, "/"), nullptr);
}

TEST(Text, StrtokSplitsAtAnySeparator) {
  struct Row { std::string text; const char *seps; std::vector<std::string> words; };
  const Row rows[] = {
      {"a,b;c", ",;", {"a", "b", "c"}}, {";;a,,b;;", ",;", {"a", "b"}}, {",;,", ",;", {}},
      {"no separators here", nullptr, {"no separators here"}},
  };
  for (const Row &r : rows) {
    std::string buf = r.text;
    char *pos = buf.data();
    std::vector<std::string> got;
    while (char *w = kvo_strtok(&pos, r.seps)) got.emplace_back(w);
    EXPECT_EQ(got, r.words) << r.text;
    EXPECT_EQ(kvo_strtok(&pos, r.seps), nullptr) << "stays at the end";
  }
  // All state is in the position: two splits interleave.
  std::string a = "1 2", b = "x,y";
  char *pa = a.data(), *pb = b.data(), *none = nullptr;
  for (const char *want : {"1", "x", "2", "y"})
    EXPECT_STREQ(want[0] < 'a' ? kvo_strtok(&pa, " ") : kvo_strtok(&pb, ","), want);
  EXPECT_EQ(kvo_strtok(&none, ","), nullptr);
  EXPECT_EQ(kvo_strtok(nullptr, ","), nullptr);
}

TEST(Text, StruprChangesAsciiLettersOnly) {
  char text[] = "abz AZ {`@[ \xC3\xA9 09";
  EXPECT_EQ(kvo_strupr(text), text);
  EXPECT_STREQ(text, "ABZ AZ {`@[ \xC3\xA9 09");
  EXPECT_EQ(kvo_strupr(nullptr), nullptr);
}

TEST(Text, StrxfrmCutsToSizeAndTerminates) {
  struct Row { const char *src; int32_t size; const char *want; };  // want null: untouched
  const Row rows[] = {{"hello", 0, nullptr}, {"hello", -3, nullptr}, {"hello", 1, ""},
                      {"hello", 5, "hell"},  {"hello", 6, "hello"},  {nullptr, 8, ""}};
  for (const Row &r : rows) {
    char dst[16];
    std::memset(dst, '#', sizeof dst);
    EXPECT_EQ(kvo_strxfrm(dst, r.src, r.size), dst);
    const size_t end = r.want ? std::strlen(r.want) + 1 : 0;
    EXPECT_STREQ(r.want ? dst : nullptr, r.want) << r.size;
    EXPECT_EQ(dst[end], '#') << "wrote past the terminator, size " << r.size;
  }
  char overlap[] = "abcdef";
  kvo_strxfrm(overlap, overlap + 2, 4);
  EXPECT_STREQ(overlap, "cde");
  EXPECT_EQ(kvo_strxfrm(nullptr, "x", 4), nullptr);
}

TEST(Text, StrdupxCopiesBytesAndTerminates) {
  struct Row { const char *text; int32_t n; std::string want; };
  const Row rows[] = {{"abc", -1, "abc"}, {"a\0b", 3, std::string("a\0b", 3)},
                      {"abc", 0, ""},     {nullptr, -1, ""}, {nullptr, 4, ""}};
  for (const Row &r : rows) {
    char *p = kvo_strdupx(r.text, r.n);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(std::string(p, r.want.size() + 1), r.want + '\0') << r.n;
    kvo_free__(p, __FILE__, __LINE__);
  }
}

TEST(Text, AllAsciiSeesAHighByteAnywhere) {
  // A high byte at each place, inside and outside the counted bytes.
  const std::string text(37, 'a');
  for (size_t i = 0; i <= text.size(); ++i) {
    std::string t = text;
    if (i < t.size()) t[i] = '\x80';
    for (int32_t n : {-1, 0, 5, 8, 9, 16, 36, 37}) {
      const bool counted = i < t.size() && (n < 0 || static_cast<int32_t>(i) < n);
      EXPECT_EQ(kvo_str_all_ascii(t.c_str(), n) != 0, !counted) << i << " n=" << n;
    }
  }
  const char zeros[] = {'a', 0, 'b', '\xFF'};
  EXPECT_TRUE(kvo_str_all_ascii(zeros, 3));  // an explicit length passes 0 bytes
  EXPECT_FALSE(kvo_str_all_ascii(zeros, 4));
  EXPECT_TRUE(kvo_str_all_ascii(nullptr, -1));
}

TEST(Text, WideLengthAndComparisons) {
  const KvoWchar abc[] = {'a', 'b', 'c', 0}, ABD[] = {'A', 'B', 'D', 0};
  const KvoWchar high[] = {'a', 0xFF21, 0}, highLow[] = {'a', 0xFF41, 0};  // fullwidth: not folded
  EXPECT_EQ(kvo_wcslen(abc), 3);
  EXPECT_EQ(kvo_wcslen(nullptr), 0);
  constexpr int32_t kCmp = INT32_MIN;  // n: kvo_wcscmp instead of kvo_wcsincmp
  struct Row { const KvoWchar *a, *b; int32_t n; int want; };
  const Row rows[] = {
      {abc, abc, kCmp, 0},    {ABD, abc, kCmp, -1},  {high, abc, kCmp, 1},  // units are unsigned
      {nullptr, nullptr, kCmp, 0}, {nullptr, abc, kCmp, -1}, {abc, ABD, 2, 0}, {abc, ABD, 3, -1},
      {abc, ABD, 0, 0},       {abc, ABD, -1, 0},     {abc, abc, 99, 0},     {high, highLow, 2, -1},
      {nullptr, abc, 1, -1},  {abc, nullptr, 0, 0}};
  for (const Row &r : rows) {
    const int32_t got = r.n == kCmp ? kvo_wcscmp(r.a, r.b) : kvo_wcsincmp(r.a, r.b, r.n);
    EXPECT_EQ(sign(got), r.want) << "row " << &r - rows;
  }
}

TEST(Text, BitNumCountsSetBits) {
  const struct { uint32_t v; int32_t bits; } rows[] = {
      {0, 0}, {1, 1}, {0x80000000u, 1}, {0xFFFFFFFFu, 32}, {0x12345678u, 13}};
  for (const auto &r : rows) EXPECT_EQ(u32_bit_num(r.v), r.bits) << r.v;
}

}  // namespace
