// KvoWcs: UTF-8 decoding, the trip through 8-bit text, byte turning and the
// caller-filled buffer. (Length limits of the shared storage: StrTest.)
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tarnex/scratch.hpp"
#include "tarnex/str.h"
#include "tarnex/strm.h"

namespace {

using Units = std::vector<KvoWchar>;
constexpr KvoWchar R = 0xFFFD;

// The content, after checking that it is terminated.
Units units(const KvoWcs *w) {
  EXPECT_EQ(w->buf[w->len], 0) << "terminator";
  return {w->buf, w->buf + w->len};
}

// Maximal subpart rule: a valid prefix cut short is one U+FFFD, a byte that
// can begin nothing is one on its own.
TEST(KvoWcs, SetStrReplacesMalformedUtf8) {
  struct Row { const char *name, *utf8; Units want; };
  const Row rows[] = {
      {"ascii", "Az~", {'A', 'z', '~'}}, {"two-byte", "\xC3\xA9", {0xE9}},
      {"three-byte max", "\xEF\xBF\xBF", {0xFFFF}},
      {"four-byte", "\xF0\x9F\x98\x80", {0xD83D, 0xDE00}},
      {"last code point", "\xF4\x8F\xBF\xBF", {0xDBFF, 0xDFFF}},
      {"truncated at end", "a\xC3", {'a', R}}, {"cut before ascii", "a\xE2\x82z", {'a', R, 'z'}},
      {"cut before a lead", "\xF0\x9F\xF0\x9F\x98\x80", {R, 0xD83D, 0xDE00}},
      {"overlong 2", "\xC0\xAF", {R, R}}, {"overlong 3", "\xE0\x80\xAF", {R, R, R}},
      {"overlong 4", "\xF0\x8F\xBF\xBF", {R, R, R, R}},
      {"above 10FFFF", "\xF4\x90\x80\x80", {R, R, R, R}}, {"F5 lead", "\xF5\x80", {R, R}},
      {"stray continuation", "\x80" "ab\xBF", {R, 'a', 'b', R}},
      {"lone high surrogate form", "\xED\xA0\xBD", {0xD83D}},
      {"surrogate forms in pair", "\xED\xA0\xBD\xED\xB8\x80", {0xD83D, 0xDE00}},
      {"null", nullptr, {}},
  };
  for (const Row &r : rows) {
    tarnex::ScratchWcs<4> w;
    KvoWcs_setStr(w, "old content");
    KvoWcs_setStr(w, r.utf8);
    EXPECT_EQ(units(w.get()), r.want) << r.name;
  }
}

// Every unit in order (lone highs into each other, DBFF before DC00, lone
// lows into each other), then the orders that run misses.
TEST(KvoWcs, SurvivesTheTripThroughUtf8UnitForUnit) {
  Units every;
  for (uint32_t u = 1; u <= 0xFFFF; ++u) every.push_back(static_cast<KvoWchar>(u));
  for (const Units &row : {every, Units{0xD800}, Units{0xD800, 'a'}, Units{0xDC00, 0xD800}}) {
    tarnex::ScratchWcs<4> w, back;
    KvoWcs_setWcsx(w, row.data(), static_cast<int32_t>(row.size()));
    tarnex::ScratchStr<8> s;
    KvoStr_setCwcs(s, w);
    KvoWcs_setStr(back, s.c_str());
    EXPECT_EQ(units(back.get()), row) << row.size() << " units from " << row[0];
  }
}

// Appending itself reads from the buffer that growing moves; offsets are in units.
TEST(KvoWcs, GrowsPastStackBufferAndAppendsItself) {
  tarnex::ScratchWcs<4> w, copy;
  const KvoWchar abc[] = {'a', 'b', 'c', 0};
  KvoWcs_setWcsx(w, abc, -1);
  EXPECT_EQ(w.get()->buf, w.get()->ext);
  Units model(abc, abc + 3);
  for (int i = 0; i < 5; ++i) {
    KvoWcs_appdCwcs(w, w);
    model.insert(model.end(), model.begin(), model.end());
    ASSERT_EQ(units(w.get()), model);
  }
  KvoWcs_setCwcs(copy, w);
  EXPECT_EQ(units(copy.get()), model);
  KvoWcs_clearx(w);
  EXPECT_EQ(w.get()->buf, w.get()->ext);
  KvoWcs_setWcsx(w, abc, 2);
  EXPECT_EQ(units(w.get()), (Units{'a', 'b'}));
}

TEST(KvoWcs, CallerFillsTheBufferBetweenUseBufBegAndEnd) {
  tarnex::ScratchWcs<4> w;
  KvoWcs_setWcsx(w, Units{'a', 'b'}.data(), 2);
  KvoWchar *p = KvoWcs_useBufBeg(w, 2 + 10);  // room behind the content, which stays
  ASSERT_EQ(p, w.get()->buf);
  for (int i = 0; i < 10; ++i) p[2 + i] = static_cast<KvoWchar>('0' + i);
  KvoWcs_useBufEnd(w, 12);
  EXPECT_EQ(units(w.get()), (Units{'a', 'b', '0', '1', '2', '3', '4', '5', '6', '7', '8', '9'}));
  KvoWcs e;  // a negative count still gives writable storage for the terminator
  KvoWcs_new(&e);
  ASSERT_NE(KvoWcs_useBufBeg(&e, -5), nullptr);
  KvoWcs_useBufEnd(&e, 0);
  EXPECT_EQ(units(&e), Units{});
  KvoWcs_delete(&e);
}

// A view of constant units (cap 0) must be copied before any write.
TEST(KvoWcs, TurnSwapsBytesAndWritesToAViewCopyFirst) {
  static const KvoWchar kUnits[] = {0x1234, 0x00FF, 0xFF00, 0};
  struct Row { int32_t n; void (*op)(KvoWcs *); Units want; };
  const Row rows[] = {
      {-1, [](KvoWcs *w) { KvoWcs_turn(w); }, {0x3412, 0xFF00, 0x00FF}},
      {-1, [](KvoWcs *w) { KvoWcs_turn(KvoWcs_turn(w)); }, {0x1234, 0x00FF, 0xFF00}},
      {-1, [](KvoWcs *w) { KvoWcs_appdChar(w, 'c'); }, {0x1234, 0x00FF, 0xFF00, 'c'}},
      {2, [](KvoWcs *w) { KvoWcs_clear(w); }, {}}};
  for (const Row &r : rows) {
    KvoWcs v = tarnex::wcsView(kUnits, r.n);
    r.op(&v);
    EXPECT_EQ(units(&v), r.want) << "row " << &r - rows;
    KvoWcs_delete(&v);
  }
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
