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

using Units = std::vector<KvoWchar>;

// Counts misuse reports while it lives.
struct AssertCounter {
  int n = 0;
  void *oldCtx = nullptr;
  KvoAssertHandler old = Tarnex_setAssertHandler(
      [](void *c, const char *, const char *, int32_t) { ++static_cast<AssertCounter *>(c)->n; },
      this, &oldCtx);
  ~AssertCounter() { Tarnex_setAssertHandler(old, oldCtx, nullptr); }
};

Units units(const KvoWcs *w) {
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
    Units want;
  };
  const Row rows[] = {
      {"ascii", "Az~", {'A', 'z', '~'}}, {"two-byte", "\xC3\xA9", {0xE9}},
      {"three-byte max", "\xEF\xBF\xBF", {0xFFFF}},
      {"four-byte", "\xF0\x9F\x98\x80", {0xD83D, 0xDE00}},
      {"last code point", "\xF4\x8F\xBF\xBF", {0xDBFF, 0xDFFF}},
      {"truncated 2 at end", "a\xC3", {'a', R}},
      {"truncated 3 in text", "a\xE2\x82z", {'a', R, 'z'}}, {"truncated 4", "\xF0\x9F\x98", {R}},
      {"truncated 4 then 4", "\xF0\x9F\xF0\x9F\x98\x80", {R, 0xD83D, 0xDE00}},
      {"overlong 2", "\xC0\xAF", {R, R}}, {"overlong 3", "\xE0\x80\xAF", {R, R, R}},
      {"overlong 4", "\xF0\x8F\xBF\xBF", {R, R, R, R}},
      {"above 10FFFF", "\xF4\x90\x80\x80", {R, R, R, R}}, {"F5 lead", "\xF5\x80", {R, R}},
      {"FF FE", "\xFF\xFE", {R, R}}, {"stray continuation", "\x80" "ab\xBF", {R, 'a', 'b', R}},
      {"lone high surrogate form", "\xED\xA0\xBD", {0xD83D}},
      {"lone low surrogate form", "\xED\xB8\x80", {0xDE00}},
      {"surrogate forms in pair", "\xED\xA0\xBD\xED\xB8\x80", {0xD83D, 0xDE00}}, {"empty", "", {}},
      {"null", nullptr, {}},
  };
  for (const Row &r : rows) {
    tarnex::ScratchWcs<4> w;
    KvoWcs_setStr(w, "old content");
    KvoWcs_setStr(w, r.utf8);
    EXPECT_EQ(units(w.get()), r.want) << r.name;
  }
}

// Every unit in order (which runs lone highs into each other, pairs DBFF
// with DC00 and lone lows into each other), then the orders it misses.
TEST(KvoWcs, SurvivesTheTripThroughUtf8UnitForUnit) {
  Units every;
  for (uint32_t u = 1; u <= 0xFFFF; ++u) every.push_back(static_cast<KvoWchar>(u));
  for (const Units &row : {every, Units{0xD800}, Units{0xD800, 'a'}, Units{0xDC00, 0xD800},
                           Units{'x', 0xDBFF}}) {
    tarnex::ScratchWcs<4> w, back;
    KvoWcs_setWcsx(w, row.data(), static_cast<int32_t>(row.size()));
    tarnex::ScratchStr<8> s;
    KvoStr_setCwcs(s, w);
    KvoWcs_setStr(back, s.c_str());
    EXPECT_EQ(units(back.get()), row) << row.size() << " units from " << row[0];
  }
}

TEST(KvoWcs, GrowsPastStackBufferAndAppendsItself) {
  tarnex::ScratchWcs<4> w;
  const KvoWchar abc[] = {'a', 'b', 'c', 0};
  KvoWcs_setWcsx(w, abc, -1);
  EXPECT_EQ(w.get()->buf, w.get()->ext);
  Units model(abc, abc + 3);
  for (int i = 0; i < 5; ++i) {
    KvoWcs_appdCwcs(w, w);
    model.insert(model.end(), model.begin(), model.end());
    ASSERT_EQ(units(w.get()), model);
  }
  EXPECT_TRUE(w.get()->onHeap);
  tarnex::ScratchWcs<4> copy;
  KvoWcs_setCwcs(copy, w);
  EXPECT_EQ(units(copy.get()), model);
  KvoWcs_clearx(w);
  EXPECT_EQ(w.get()->buf, w.get()->ext);
  KvoWcs_setWcsx(w, abc, 2);
  EXPECT_EQ(units(w.get()), (Units{'a', 'b'}));
}

TEST(KvoWcs, CallerFillsTheBufferBetweenUseBufBegAndEnd) {
  AssertCounter asserts;
  tarnex::ScratchWcs<4> w;
  KvoWcs_setWcsx(w, Units{'a', 'b'}.data(), 2);
  KvoWchar *p = KvoWcs_useBufBeg(w, 2 + 10);  // room behind the content, which stays
  ASSERT_EQ(p, w.get()->buf);
  EXPECT_EQ(Units(p, p + 2), (Units{'a', 'b'}));
  for (int i = 0; i < 10; ++i) p[2 + i] = static_cast<KvoWchar>('0' + i);
  KvoWcs_useBufEnd(w, 12);
  EXPECT_EQ(units(w.get()), (Units{'a', 'b', '0', '1', '2', '3', '4', '5', '6', '7', '8', '9'}));
  EXPECT_EQ(asserts.n, 0);
  KvoWcs_useBufEnd(w, w.get()->cap);  // one past the room: reported, held to the room
  EXPECT_EQ(asserts.n, 1);
  EXPECT_EQ(units(w.get()).size(), static_cast<size_t>(w.get()->cap - 1));
  KvoWcs_useBufEnd(w, -3);
  EXPECT_EQ(units(w.get()), Units{});

  KvoWcs e;  // a negative count still gives writable storage for the terminator
  KvoWcs_new(&e);
  ASSERT_NE(KvoWcs_useBufBeg(&e, -5), nullptr);
  KvoWcs_useBufEnd(&e, 0);
  EXPECT_EQ(units(&e), Units{});
  KvoWcs_delete(&e);
}

// A view of constant units has no storage of its own (cap 0): every write
// must take a copy first, since the units may be read-only memory.
TEST(KvoWcs, TurnSwapsBytesAndWritesToAViewCopyFirst) {
  static const KvoWchar kUnits[] = {0x1234, 0x00FF, 0xFF00, 0};
  KvoWcs v = tarnex::wcsView(kUnits, -1);
  KvoWcs_turn(&v);
  EXPECT_EQ(units(&v), (Units{0x3412, 0xFF00, 0x00FF}));
  KvoWcs_turn(&v);
  EXPECT_EQ(units(&v), (Units{0x1234, 0x00FF, 0xFF00}));
  KvoWcs_delete(&v);
  v = tarnex::wcsView(kUnits, -1);
  KvoWcs_appdChar(&v, 'c');
  EXPECT_EQ(units(&v), (Units{0x1234, 0x00FF, 0xFF00, 'c'}));
  KvoWcs_delete(&v);
  v = tarnex::wcsView(kUnits, 2);
  KvoWcs_clear(&v);
  EXPECT_EQ(units(&v), Units{});
  EXPECT_EQ(kUnits[0], 0x1234);
}

TEST(KvoWcs, SetStrmDecodesZeroBytesToo) {
  tarnex::ScratchStrStrm in("a\0\xC3\xA9\xF0\x9F", 6);
  tarnex::ScratchWcs<2> w;
  KvoWcs_setStrm(w, in, 4);
  EXPECT_EQ(units(w.get()), (Units{'a', 0, 0xE9}));
  KvoWcs_setStrm(w, in, -1);  // the rest: a truncated sequence
  EXPECT_EQ(units(w.get()), Units{R});
}

}  // namespace
