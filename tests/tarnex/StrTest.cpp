// KvoStr: storage moves, aliasing, formats, streams and UTF-16 appends.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "tarnex/scratch.hpp"
#include "tarnex/str.h"
#include "tarnex/strm.h"

namespace {

// Counts misuse reports while it lives.
struct AssertCounter {
  int n = 0;
  void *oldCtx = nullptr;
  KvoAssertHandler old = Tarnex_setAssertHandler(
      [](void *c, const char *, const char *, int32_t) { ++static_cast<AssertCounter *>(c)->n; },
      this, &oldCtx);
  ~AssertCounter() { Tarnex_setAssertHandler(old, oldCtx, nullptr); }
};

// Every invariant a caller relies on, after any operation.
void expectIntact(const KvoStr *s, std::string_view want) {
  ASSERT_EQ(std::string_view(s->buf, static_cast<size_t>(s->len)), want);
  EXPECT_EQ(s->buf[s->len], '\0');
  EXPECT_TRUE(s->cap == 0 ? s->len == 0 : s->len < s->cap);
}

TEST(KvoStr, GrowsPastStackBufferKeepingEveryByteAndAppendsItself) {
  tarnex::ScratchStr<8> s;
  const uint64_t allocs = Tarnex_allocCount();
  KvoStr_appdStrx(s, "ab\0cd", 5);  // fits: no heap
  std::string model("ab\0cd", 5);
  expectIntact(s.get(), model);
  EXPECT_EQ(s.get()->buf, s.get()->ext);
  EXPECT_EQ(Tarnex_allocCount(), allocs);
  // Uneven appends, 0 bytes included, through many reallocations.
  for (int i = 0; i < 600; ++i) {
    const std::string piece(i % 13, static_cast<char>(i % 5 == 0 ? 0 : 'a' + i % 26));
    KvoStr_appdStrx(s, piece.data(), static_cast<int32_t>(piece.size()));
    KvoStr_appdChar(s, static_cast<char>(i));
    model += piece + static_cast<char>(i);
    expectIntact(s.get(), model);
  }
  EXPECT_TRUE(s.get()->onHeap);
  EXPECT_LT(Tarnex_allocCount() - allocs, 40u);  // geometric growth

  // The source lives in the buffer that appending moves.
  tarnex::ScratchStr<8> a;
  KvoStr_setStr(a, "abc");
  model = "abc";
  for (int i = 0; i < 6; ++i) {  // each round doubles; the first moves off the stack
    KvoStr_appdCstr(a, a);
    model += model;
    expectIntact(a.get(), model);
  }
  KvoStr_appdStrx(a, a.c_str() + 1, 4);
  model += model.substr(1, 4);
  KvoStr_appdStr(a, a.c_str() + a.len() - 2);
  model += model.substr(model.size() - 2);
  expectIntact(a.get(), model);
  KvoStr_setStr(a, a.c_str() + 5);  // set from its own tail
  KvoStr_setCstr(a, a);
  expectIntact(a.get(), model.substr(5));
}

TEST(KvoStr, ClearKeepsStorageClearxGoesBackToTheStackBuffer) {
  tarnex::ScratchStr<16> s;
  KvoStr_setStr(s, "longer than sixteen bytes, so on the heap");
  ASSERT_TRUE(s.get()->onHeap);
  const char *heap = s.c_str();
  KvoStr_clear(s);
  expectIntact(s.get(), "");
  EXPECT_EQ(s.c_str(), heap);
  KvoStr_clearx(s);
  expectIntact(s.get(), "");
  EXPECT_EQ(s.c_str(), s.get()->ext);
  EXPECT_FALSE(s.get()->onHeap);
  KvoStr_appdStr(s, "fits again");
  expectIntact(s.get(), "fits again");
  EXPECT_EQ(s.c_str(), s.get()->ext);

  KvoStr h;  // without a caller's buffer: back to the shared empty text, still usable
  KvoStr_new(&h);
  KvoStr_setStr(&h, "heap");
  KvoStr_clearx(&h);
  expectIntact(&h, "");
  EXPECT_EQ(h.cap, 0);
  KvoStr_appdf(&h, "%.*s", 3, "abcdef");  // formats with no room at all
  expectIntact(&h, "abc");
  KvoStr_delete(&h);
  KvoStr_delete(&h);  // a second delete is harmless
  expectIntact(&h, "");
}

TEST(KvoStr, SetAndAppendTakeLengthsAndNullText) {
  struct Row { const char *text; int32_t n; std::string_view want; };
  const Row rows[] = {{"a\0b", 3, {"a\0b", 3}}, {"a\0b", -1, "a"}, {nullptr, -1, ""},
                      {nullptr, 5, ""},         {"x", 0, ""},       {"neg", -7, "neg"}};
  for (const Row &r : rows) {
    tarnex::ScratchStr<4> s;
    KvoStr_setStr(s, "old content");
    KvoStr_setStrx(s, r.text, r.n);
    expectIntact(s.get(), r.want);
    KvoStr_setStr(s, "<");
    KvoStr_appdStrx(s, r.text, r.n);
    expectIntact(s.get(), std::string("<") + std::string(r.want));
  }
  tarnex::ScratchStr<4> s;
  expectIntact(KvoStr_appdCstr(KvoStr_setCstr(s, nullptr), nullptr), "");
}

TEST(KvoStr, FormatsAndNumbersLongerThanTheStackBuffer) {
  const std::string longArg(300, 'q');
  tarnex::ScratchStr<16> s;
  KvoStr_setf(s, "%d:", 7);
  KvoStr_appdf(s, "[%s]%05d", longArg.c_str(), 42);
  KvoStr_appdf(s, "%s", "");
  for (int64_t v : {INT64_MIN, int64_t{-1}, int64_t{0}}) KvoStr_appdChar(KvoStr_appdLong(s, v), ' ');
  KvoStr_appdUlong(s, UINT64_MAX);
  expectIntact(s.get(), "7:[" + longArg + "]00042-9223372036854775808 -1 0 18446744073709551615");
  KvoStr_setf(s, "%s", "short");
  expectIntact(s.get(), "short");
}

TEST(KvoStr, ReserveSetLenAndNullStringsAreHeldToTheRules) {
  AssertCounter asserts;
  tarnex::ScratchStr<4> s;
  KvoStr_setStr(s, "ab");
  char *at = KvoStr_reserve(s, 10);
  ASSERT_EQ(at, KvoStr_buf(s) + 2);
  std::memcpy(at, "0123456789", 10);
  KvoStr_setLen(s, 12);
  expectIntact(s.get(), "ab0123456789");
  const int32_t room = s.get()->cap - 1;
  KvoStr_setLen(s, room);  // all of the room: fine
  EXPECT_EQ(asserts.n, 0);
  EXPECT_EQ(KvoStr_len(s), room);
  KvoStr_setLen(s, room + 1);  // past it: reported and held to it
  EXPECT_EQ(asserts.n, 1);
  EXPECT_EQ(KvoStr_len(s), room);
  KvoStr_setLen(s, -4);
  expectIntact(s.get(), "");
  KvoStr_setStr(s, "kept");
  KvoStr_setStrm(s, nullptr, -1);
  expectIntact(s.get(), "kept");

  KvoStr *none = nullptr;  // each call reports and does nothing
  EXPECT_EQ(KvoStr_appdf(none, "%d", 1), nullptr);
  EXPECT_EQ(KvoStr_len(none), 0);
  EXPECT_STREQ(KvoStr_buf(none), "");
  KvoStr_delete(none);
  EXPECT_EQ(asserts.n, 6);
}

// UTF-8 for scalar values, WTF-8 (the 3-byte form) for unpaired surrogates.
TEST(KvoStr, SetCwcsJoinsPairsAndKeepsLoneSurrogates) {
  struct Row { std::vector<KvoWchar> units; std::string_view want; };
  const Row rows[] = {
      {{'a', 0x7F, 0x80, 0x7FF, 0x800, 0xFFFF}, "a\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF"},
      {{0xD83D, 0xDE00, 0xD800, 0xDC00, 0xDBFF, 0xDFFF},
       "\xF0\x9F\x98\x80\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
      {{0xD83D}, "\xED\xA0\xBD"}, {{0xD83D, 'x'}, "\xED\xA0\xBDx"},
      {{0xDE00, 0xDE00}, "\xED\xB8\x80\xED\xB8\x80"},
      {{0xD83D, 0xD83D, 0xDE00}, "\xED\xA0\xBD\xF0\x9F\x98\x80"},
      {{'a', 0, 'b'}, {"a\0b", 3}}, {{}, ""}};
  for (const Row &r : rows) {
    tarnex::ScratchWcs<4> w;
    KvoWcs_setWcsx(w, r.units.data(), static_cast<int32_t>(r.units.size()));
    tarnex::ScratchStr<4> s, t;
    KvoStr_setStr(s, "old");
    KvoStr_setCwcs(s, w);
    expectIntact(s.get(), r.want);
    for (KvoWchar u : r.units) KvoStr_appdWchar(t, u);  // unit by unit: the same bytes
    expectIntact(t.get(), r.want);
  }
  tarnex::ScratchStr<4> s;
  expectIntact(KvoStr_setCwcs(KvoStr_setStr(s, "old"), nullptr), "");
}

TEST(KvoStr, AppdWcharPairSplitOverTwoCalls) {
  tarnex::ScratchStr<5> s;  // the low half replaces 3 bytes while moving to the heap
  KvoStr_appdChar(s, 'a');
  KvoStr_appdWchar(s, 0xD83D);
  expectIntact(s.get(), "a\xED\xA0\xBD");
  EXPECT_EQ(s.c_str(), s.get()->ext);
  KvoStr_appdWchar(s, 0xDE00);
  expectIntact(s.get(), "a\xF0\x9F\x98\x80");
  // A low surrogate behind a complete pair, or behind other text, stays lone.
  KvoStr_appdWchar(s, 0xDC00);
  KvoStr_appdWchar(s, 0x1F600);  // a code point comes as one call
  KvoStr_appdWchar(s, 0x110000);
  expectIntact(s.get(), "a\xF0\x9F\x98\x80\xED\xB0\x80\xF0\x9F\x98\x80\xEF\xBF\xBD");
}

// A caller's stream giving at most 3 bytes a read and maybe hiding its size,
// so the chunked path is taken. Only what KvoStr reads through is filled in.
struct TrickleStrm {
  IStrm base;
  std::string data;
  size_t pos = 0;
  bool knowsSize = true;
  int32_t overclaim = 0;  // a broken stream says it read more than it did
};
TrickleStrm *trickle(IStrm *s) { return reinterpret_cast<TrickleStrm *>(s); }
const IStrmOps kTrickleOps = {
    [](IStrm *) {}, nullptr, nullptr, nullptr,
    [](IStrm *s, void *buf, int32_t n) -> int32_t {
      TrickleStrm *t = trickle(s);
      const size_t k = std::min({static_cast<size_t>(n), size_t{3}, t->data.size() - t->pos});
      std::memcpy(buf, t->data.data() + t->pos, k);
      t->pos += k;
      return static_cast<int32_t>(k) + (k ? t->overclaim : 0);
    },
    nullptr, nullptr, [](IStrm *s) -> int64_t { return static_cast<int64_t>(trickle(s)->pos); },
    [](IStrm *s) -> int64_t { return trickle(s)->knowsSize ? std::ssize(trickle(s)->data) : 0; },
    nullptr, nullptr};

TEST(KvoStr, ReadsStreamsInChunks) {
  std::string data;
  for (int i = 0; i < 10000; ++i) data += static_cast<char>(i * 7);  // 0 bytes included
  for (bool knowsSize : {true, false}) {
    SCOPED_TRACE(knowsSize);
    TrickleStrm t{{&kTrickleOps}, data, 0, knowsSize};
    tarnex::ScratchStr<8> s;
    KvoStr_setStrm(s, &t.base, 5);
    expectIntact(s.get(), data.substr(0, 5));
    EXPECT_EQ(t.pos, 5u);
    KvoStr_appdStrm(s, &t.base, -1);
    expectIntact(s.get(), data);
    KvoStr_appdStrm(s, &t.base, 10);  // nothing left
    expectIntact(s.get(), data);
    t.pos = 9990;
    KvoStr_setStrm(s, &t.base, 1000);  // more than is left
    expectIntact(s.get(), data.substr(9990));
  }
  // A count above what was asked is never taken past the asked bytes.
  TrickleStrm liar{{&kTrickleOps}, "abcdefgh", 0, false, 1000};
  tarnex::ScratchStr<8> t;
  KvoStr_setStrm(t, &liar.base, 2);
  expectIntact(t.get(), "ab");
}

}  // namespace
