// KvoWcs: UTF-8 decoding, the trip through 8-bit text, byte turning and the
// caller-filled buffer.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tarnex/scratch.hpp"
#include "tarnex/str.h"
#include "tarnex/strm.h"
#include "tarnex/text.h"

namespace {

class AssertCounter {
 public:
  AssertCounter() { old_ = Tarnex_setAssertHandler(&count, this, &oldCtx_); }
  ~AssertCounter() { Tarnex_setAssertHandler(old_, oldCtx_, nullptr); }
  int n = 0;

 private:
  static void count(void *ctx, const char *, const char *, int32_t) {
    ++static_cast<AssertCounter *>(ctx)->n;
  }
  KvoAssertHandler old_;
  void *oldCtx_ = nullptr;
};

std::vector<KvoWchar> units(const KvoWcs *w) {
  EXPECT_EQ(w->buf[w->len], 0) << "terminator";
  return {w->buf, w->buf + w->len};
}

constexpr KvoWchar R = 0xFFFD;

// Expected units follow the Unicode "maximal subpart" practice (Unicode
// 15, section 3.9, table 3-8): a valid prefix cut short is one U+FFFD; a
// byte that can begin nothing is one U+FFFD on its own.
TEST(KvoWcs, SetStrReplacesMalformedUtf8) {
  struct Row {
    const char *name;
    const char *utf8;
    std::vector<KvoWchar> want;
  };
  const Row rows[] = {
      {"ascii", "Az~", {'A', 'z', '~'}},
      {"two-byte", "\xC3\xA9", {0xE9}},
      {"three-byte max", "\xEF\xBF\xBF", {0xFFFF}},
      {"four-byte", "\xF0\x9F\x98\x80", {0xD83D, 0xDE00}},
      {"last code point", "\xF4\x8F\xBF\xBF", {0xDBFF, 0xDFFF}},
      {"truncated 2 at end", "a\xC3", {'a', R}},
      {"truncated 3 in text", "a\xE2\x82z", {'a', R, 'z'}},
      {"truncated 4", "\xF0\x9F\x98", {R}},
      {"truncated 4 then 4", "\xF0\x9F\xF0\x9F\x98\x80", {R, 0xD83D, 0xDE00}},
      {"overlong 2", "\xC0\xAF", {R, R}},
      {"overlong 3", "\xE0\x80\xAF", {R, R, R}},
      {"overlong 4", "\xF0\x8F\xBF\xBF", {R, R, R, R}},
      {"above 10FFFF", "\xF4\x90\x80\x80", {R, R, R, R}},
      {"F5 lead", "\xF5\x80", {R, R}},
      {"FF FE", "\xFF\xFE", {R, R}},
      {"stray continuation", "\x80" "ab\xBF", {R, 'a', 'b', R}},
      {"lone high surrogate form", "\xED\xA0\xBD", {0xD83D}},
      {"lone low surrogate form", "\xED\xB8\x80", {0xDE00}},
      {"surrogate forms in pair", "\xED\xA0\xBD\xED\xB8\x80", {0xD83D, 0xDE00}},
      {"empty", "", {}},
      {"null", nullptr, {}},
  };
  for (const Row &r : rows) {
    SCOPED_TRACE(r.name);
    tarnex::ScratchWcs<4> w;
    KvoWcs_setStr(w, "old content");
    KvoWcs_setStr(w, r.utf8);
    EXPECT_EQ(units(w.get()), r.want);
  }
}

// Units that are hard to carry through 8-bit text: boundaries of each
// UTF-8 length, pairs, lone and reversed surrogates.
TEST(KvoWcs, SurvivesTheTripThroughUtf8UnitForUnit) {
  const std::vector<std::vector<KvoWchar>> rows = {
      {0x7F, 0x80, 0x7FF, 0x800, 0xFFFD, 0xFFFE, 0xFFFF},
      {0xD800},
      {0xDFFF},
      {0xD800, 'a'},
      {0xDBFF, 0xDFFF},
      {0xDC00, 0xD800},
      {0xD800, 0xD800, 0xDC00},
      {0xD83D, 0xDE00, 0xDE00},
      {'x', 0xDBFF},
  };
  for (const auto &row : rows) {
    tarnex::ScratchWcs<4> w;
    KvoWcs_setWcsx(w, row.data(), static_cast<int32_t>(row.size()));
    tarnex::ScratchStr<8> s;
    KvoStr_setCwcs(s, w);
    tarnex::ScratchWcs<4> back;
    KvoWcs_setStr(back, s.c_str());
    EXPECT_EQ(units(back.get()), row);
  }
}

TEST(KvoWcs, EveryUnitSurvivesTheTrip) {
  KvoWcs w;
  KvoWcs_new(&w);
  for (uint32_t u = 1; u <= 0xFFFF; ++u) KvoWcs_appdChar(&w, static_cast<KvoWchar>(u));
  KvoStr s;
  KvoStr_new(&s);
  KvoStr_setCwcs(&s, &w);
  KvoWcs back;
  KvoWcs_new(&back);
  KvoWcs_setStr(&back, s.buf);
  EXPECT_EQ(kvo_wcscmp(back.buf, w.buf), 0);
  EXPECT_EQ(back.len, w.len);
  KvoStr_delete(&s);
  KvoWcs_delete(&back);
  KvoWcs_delete(&w);
}

TEST(KvoWcs, GrowsPastStackBufferAndAppendsItself) {
  KvoWchar stack[4];
  KvoWcs w;
  WcsExt_new__(&w, stack, 4);
  const KvoWchar abc[] = {'a', 'b', 'c', 0};
  KvoWcs_setWcsx(&w, abc, -1);
  EXPECT_EQ(w.buf, stack);
  std::vector<KvoWchar> model(abc, abc + 3);
  for (int i = 0; i < 5; ++i) {
    KvoWcs_appdCwcs(&w, &w);
    model.insert(model.end(), model.begin(), model.end());
    ASSERT_EQ(units(&w), model);
  }
  EXPECT_TRUE(w.onHeap);
  KvoWcs copy;
  KvoWcs_new(&copy);
  KvoWcs_setCwcs(&copy, &w);
  EXPECT_EQ(units(&copy), model);
  KvoWcs_delete(&copy);

  KvoWcs_clearx(&w);
  EXPECT_EQ(w.buf, stack);
  EXPECT_EQ(units(&w), std::vector<KvoWchar>{});
  KvoWcs_setWcsx(&w, abc, 2);
  EXPECT_EQ(units(&w), (std::vector<KvoWchar>{'a', 'b'}));
  KvoWcs_delete(&w);
}

TEST(KvoWcs, TurnSwapsTheBytesOfEachUnit) {
  const KvoWchar in[] = {0x1234, 0x00FF, 0xFF00, 0xABCD};
  tarnex::ScratchWcs<8> w;
  KvoWcs_setWcsx(w, in, 4);
  KvoWcs_turn(w);
  EXPECT_EQ(units(w.get()), (std::vector<KvoWchar>{0x3412, 0xFF00, 0x00FF, 0xCDAB}));
  KvoWcs_turn(w);
  EXPECT_EQ(units(w.get()), std::vector<KvoWchar>(in, in + 4));
}

TEST(KvoWcs, CallerFillsTheBufferBetweenUseBufBegAndEnd) {
  AssertCounter asserts;
  KvoWchar stack[4];
  KvoWcs w;
  WcsExt_new__(&w, stack, 4);
  const KvoWchar ab[] = {'a', 'b'};
  KvoWcs_setWcsx(&w, ab, 2);

  // Room behind the content; the content stays where it was.
  KvoWchar *p = KvoWcs_useBufBeg(&w, 2 + 10);
  ASSERT_NE(p, nullptr);
  EXPECT_EQ(p, w.buf);
  EXPECT_EQ(p[0], 'a');
  EXPECT_EQ(p[1], 'b');
  for (int i = 0; i < 10; ++i) p[2 + i] = static_cast<KvoWchar>('0' + i);
  KvoWcs_useBufEnd(&w, 12);
  EXPECT_EQ(units(&w), (std::vector<KvoWchar>{'a', 'b', '0', '1', '2', '3', '4', '5', '6',
                                              '7', '8', '9'}));
  EXPECT_EQ(asserts.n, 0);

  KvoWcs_useBufEnd(&w, w.cap);  // one past the room: reported, held to the room
  EXPECT_EQ(asserts.n, 1);
  EXPECT_EQ(w.len, w.cap - 1);
  EXPECT_EQ(w.buf[w.len], 0);
  KvoWcs_useBufEnd(&w, -3);
  EXPECT_EQ(w.len, 0);

  KvoWcs e;  // a negative count still gives writable storage for the terminator
  KvoWcs_new(&e);
  ASSERT_NE(KvoWcs_useBufBeg(&e, -5), nullptr);
  KvoWcs_useBufEnd(&e, 0);
  EXPECT_EQ(units(&e), std::vector<KvoWchar>{});
  KvoWcs_delete(&e);
  KvoWcs_delete(&w);
}

// A view of constant units has no storage of its own (cap 0): every write
// must take a copy first, since the units may be read-only memory.
TEST(KvoWcs, WritesToAViewCopyFirst) {
  static const KvoWchar kUnits[] = {'a', 'b', 0};
  KvoWcs v = tarnex::wcsView(kUnits, -1);
  KvoWcs_turn(&v);
  EXPECT_EQ(units(&v), (std::vector<KvoWchar>{0x6100, 0x6200}));
  KvoWcs_delete(&v);

  v = tarnex::wcsView(kUnits, -1);
  KvoWcs_appdChar(&v, 'c');
  EXPECT_EQ(units(&v), (std::vector<KvoWchar>{'a', 'b', 'c'}));
  KvoWcs_delete(&v);

  v = tarnex::wcsView(kUnits, 2);
  KvoWcs_clear(&v);
  EXPECT_EQ(units(&v), std::vector<KvoWchar>{});
  EXPECT_EQ(kUnits[0], 'a');
}

TEST(KvoWcs, SetStrmDecodesZeroBytesToo) {
  tarnex::ScratchStrStrm in("a\0\xC3\xA9\xF0\x9F", 6);
  tarnex::ScratchWcs<2> w;
  KvoWcs_setStrm(w, in, 4);
  EXPECT_EQ(units(w.get()), (std::vector<KvoWchar>{'a', 0, 0xE9}));
  KvoWcs_setStrm(w, in, -1);  // the rest: a truncated sequence
  EXPECT_EQ(units(w.get()), std::vector<KvoWchar>{R});
}

}  // namespace
