// The text utilities, table by table.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tarnex/text.h"

namespace {

int sign(int32_t v) { return (v > 0) - (v < 0); }

TEST(Text, StricmpFoldsAsciiOnly) {
  struct Row {
    const char *a, *b;
    int want;
  };
  const Row rows[] = {
      {"abc", "ABC", 0}, {"ABC", "abd", -1}, {"abcd", "ABC", 1}, {"", "", 0}, {nullptr, "", 0},
      {nullptr, "a", -1}, {"a", nullptr, 1}, {"[", "{", -1},
      {"@", "`", -1},                   // around the letters: no folding
      {"\xC3\xA4", "\xC3\x84", 1},  // UTF-8 letters compare as bytes
      {"Z", "a", 1},                    // 'z' > 'a' once folded
  };
  for (const Row &r : rows) {
    EXPECT_EQ(sign(kvo_stricmp(r.a, r.b)), r.want) << (r.a ? r.a : "null") << "|" << (r.b ? r.b : "null");
  }
}

TEST(Text, StristrAndStrrchrsFindTheirPlace) {
  // stristr: the first place of the needle, case ignored; strrchrs: the last
  // of any of the bytes. -1: not found.
  const char *hay = "Begin:VCARD begin:vcard", *path = "a/b\\c/d.e";
  struct Row {
    bool last;
    const char *what;
    int at;
  };
  const Row rows[] = {
      {false, "vcard", 6}, {false, "BEGIN", 0},  {false, "n:v", 4},   {false, "", 0},
      {false, nullptr, 0}, {false, "cardx", -1}, {false, "VCARD BEGIN:VCARDS", -1},
      {false, "d", 10},    {true, "/\\", 5},     {true, "\\", 3},      {true, ".", 7},
      {true, "xyz", -1},   {true, "", -1},       {true, nullptr, -1},  {true, "a", 0},
  };
  for (const Row &r : rows) {
    const char *in = r.last ? path : hay;
    const char *got = r.last ? kvo_strrchrs(in, r.what) : kvo_stristr(in, r.what);
    EXPECT_EQ(got ? got - in : -1, r.at) << (r.what ? r.what : "null");
  }
  EXPECT_EQ(kvo_stristr(nullptr, "a"), nullptr);
  EXPECT_EQ(kvo_strrchrs(nullptr, "/"), nullptr);
  EXPECT_NE(kvo_strrchrs("\xC3\xA9", "\xA9"), nullptr);  // high bytes are bytes too
}

TEST(Text, StrtokSplitsAtAnySeparator) {
  struct Row {
    std::string text;
    const char *seps;
    std::vector<std::string> words;
  };
  const Row rows[] = {
      {"a,b;c", ",;", {"a", "b", "c"}}, {";;a,,b;;", ",;", {"a", "b"}},
      {"  one  two ", " ", {"one", "two"}}, {"", ",", {}}, {",;,", ",;", {}},
      {"no separators here", nullptr, {"no separators here"}}, {"x", ",", {"x"}},
  };
  for (const Row &r : rows) {
    std::string buf = r.text;
    char *pos = buf.data();
    std::vector<std::string> got;
    while (char *w = kvo_strtok(&pos, r.seps)) got.emplace_back(w);
    EXPECT_EQ(got, r.words) << r.text;
    EXPECT_EQ(kvo_strtok(&pos, r.seps), nullptr);  // stays at the end
  }
  // All state is in the position: two splits interleave.
  std::string a = "1 2", b = "x,y";
  char *pa = a.data(), *pb = b.data();
  for (const char *want : {"1", "x", "2", "y"}) {
    EXPECT_STREQ(want[0] < 'a' ? kvo_strtok(&pa, " ") : kvo_strtok(&pb, ","), want);
  }
  char *none = nullptr;
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
  struct Row {
    const char *src;
    int32_t size;
    const char *want;  // null: dst untouched
  };
  const Row rows[] = {
      {"hello", 0, nullptr}, {"hello", -3, nullptr}, {"hello", 1, ""},      {"hello", 2, "h"},
      {"hello", 5, "hell"},  {"hello", 6, "hello"},  {"hello", 16, "hello"}, {nullptr, 8, ""},
  };
  for (const Row &r : rows) {
    char dst[16];
    std::memset(dst, '#', sizeof dst);
    EXPECT_EQ(kvo_strxfrm(dst, r.src, r.size), dst);
    if (!r.want) {
      EXPECT_EQ(dst[0], '#');
      continue;
    }
    EXPECT_STREQ(dst, r.want) << r.size;
    EXPECT_EQ(dst[std::strlen(r.want) + 1], '#') << "wrote past the terminator";
  }
  char overlap[] = "abcdef";
  kvo_strxfrm(overlap, overlap + 2, 4);
  EXPECT_STREQ(overlap, "cde");
  EXPECT_EQ(kvo_strxfrm(nullptr, "x", 4), nullptr);
}

TEST(Text, StrdupxCopiesBytesAndTerminates) {
  struct Row {
    const char *text;
    int32_t n;
    std::string want;
  };
  const Row rows[] = {{"abc", -1, "abc"}, {"abc", 2, "ab"},  {"a\0b", 3, std::string("a\0b", 3)},
                      {"abc", 0, ""},     {nullptr, -1, ""}, {nullptr, 4, ""}};
  for (const Row &r : rows) {
    char *p = kvo_strdupx(r.text, r.n);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(std::string(p, r.want.size()), r.want);
    EXPECT_EQ(p[r.want.size()], '\0');
    kvo_free__(p, __FILE__, __LINE__);
  }
}

TEST(Text, AllAsciiSeesAHighByteAnywhere) {
  std::string text(37, 'a');
  EXPECT_TRUE(kvo_str_all_ascii(text.c_str(), -1));
  EXPECT_TRUE(kvo_str_all_ascii(text.c_str(), 37));
  // A high byte at each place, inside and outside the counted bytes.
  for (size_t i = 0; i < text.size(); ++i) {
    std::string t = text;
    t[i] = '\x80';
    for (int32_t n : {-1, 0, 5, 8, 9, 16, 36, 37}) {
      const bool counted = n < 0 || static_cast<int32_t>(i) < n;
      EXPECT_EQ(kvo_str_all_ascii(t.c_str(), n) != 0, !counted) << i << " n=" << n;
    }
  }
  const char zeros[] = {'a', 0, 'b', '\xFF'};
  EXPECT_TRUE(kvo_str_all_ascii(zeros, 3));  // an explicit length passes 0 bytes
  EXPECT_FALSE(kvo_str_all_ascii(zeros, 4));
  EXPECT_TRUE(kvo_str_all_ascii(nullptr, -1));
}

TEST(Text, WideLengthAndComparisons) {
  const KvoWchar abc[] = {'a', 'b', 'c', 0};
  const KvoWchar ABD[] = {'A', 'B', 'D', 0};
  const KvoWchar high[] = {'a', 0xFF21, 0};  // fullwidth A: not folded
  const KvoWchar highLow[] = {'a', 0xFF41, 0};
  EXPECT_EQ(kvo_wcslen(abc), 3);
  EXPECT_EQ(kvo_wcslen(nullptr), 0);
  EXPECT_EQ(kvo_wcscmp(abc, abc), 0);
  EXPECT_LT(kvo_wcscmp(ABD, abc), 0);
  EXPECT_GT(kvo_wcscmp(high, abc), 0);  // units compare unsigned
  EXPECT_EQ(kvo_wcscmp(nullptr, nullptr), 0);
  EXPECT_LT(kvo_wcscmp(nullptr, abc), 0);

  struct Row {
    const KvoWchar *a, *b;
    int32_t n;
    int want;
  };
  const Row rows[] = {{abc, ABD, 2, 0},  {abc, ABD, 3, -1},      {abc, ABD, 0, 0},
                      {abc, ABD, -1, 0}, {abc, abc, 99, 0},      {high, highLow, 2, -1},
                      {nullptr, abc, 1, -1}, {abc, nullptr, 0, 0}};
  for (const Row &r : rows) EXPECT_EQ(sign(kvo_wcsincmp(r.a, r.b, r.n)), r.want) << r.n;
}

TEST(Text, BitNumCountsSetBits) {
  for (uint32_t v : {0u, 1u, 0x80000000u, 0xFFFFFFFFu, 0x12345678u, 0xF0F0F0F0u}) {
    int32_t want = 0;
    for (uint32_t x = v; x; x >>= 1) want += x & 1;
    EXPECT_EQ(u32_bit_num(v), want) << v;
  }
}

}  // namespace
