// KvoStr: storage moves, aliasing, formats, streams and UTF-16 appends.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "tarnex/scratch.hpp"
#include "tarnex/str.h"
#include "tarnex/strm.h"

namespace {

// Counts misuse reports while it lives.
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

std::string_view view(const KvoStr *s) { return {s->buf, static_cast<size_t>(s->len)}; }

// Every invariant a caller relies on, after any operation.
void expectIntact(const KvoStr *s, std::string_view want) {
  ASSERT_EQ(view(s), want);
  EXPECT_EQ(s->buf[s->len], '\0');
  EXPECT_TRUE(s->cap == 0 ? s->len == 0 : s->len < s->cap);
}

TEST(KvoStr, GrowsPastStackBufferKeepingEveryByte) {
  char stack[8];
  KvoStr s;
  StrExt_new__(&s, stack, sizeof stack);
  std::string model;
  const uint64_t allocs = Tarnex_allocCount();
  KvoStr_appdStrx(&s, "ab\0cd", 5);  // fits: no heap
  model.append("ab\0cd", 5);
  expectIntact(&s, model);
  EXPECT_EQ(s.buf, stack);
  EXPECT_EQ(Tarnex_allocCount(), allocs);

  // Many appends of uneven sizes, embedded 0 bytes included, through many
  // reallocations.
  for (int i = 0; i < 600; ++i) {
    const std::string piece(static_cast<size_t>(i % 13), static_cast<char>(i % 5 == 0 ? 0 : 'a' + i % 26));
    KvoStr_appdStrx(&s, piece.data(), static_cast<int32_t>(piece.size()));
    KvoStr_appdChar(&s, static_cast<char>(i));
    model += piece;
    model += static_cast<char>(i);
    expectIntact(&s, model);
  }
  EXPECT_TRUE(s.onHeap);
  EXPECT_NE(s.buf, stack);
  // Geometric growth: far fewer allocations than appends.
  EXPECT_LT(Tarnex_allocCount() - allocs, 40u);
  KvoStr_delete(&s);
}

TEST(KvoStr, ClearKeepsStorageClearxGoesBackToTheStackBuffer) {
  char stack[16];
  KvoStr s;
  StrExt_new__(&s, stack, sizeof stack);
  KvoStr_setStr(&s, "longer than sixteen bytes, so on the heap");
  ASSERT_TRUE(s.onHeap);
  char *heap = s.buf;
  KvoStr_clear(&s);
  expectIntact(&s, "");
  EXPECT_EQ(s.buf, heap);

  KvoStr_appdStr(&s, "x");
  KvoStr_clearx(&s);
  expectIntact(&s, "");
  EXPECT_EQ(s.buf, stack);
  EXPECT_FALSE(s.onHeap);
  const uint64_t allocs = Tarnex_allocCount();
  KvoStr_appdStr(&s, "fits again");
  expectIntact(&s, "fits again");
  EXPECT_EQ(Tarnex_allocCount(), allocs);
  KvoStr_delete(&s);

  // Without a caller's buffer, clearx and delete go back to the shared
  // empty text; the string stays usable.
  KvoStr h;
  KvoStr_new(&h);
  KvoStr_setStr(&h, "heap");
  KvoStr_clearx(&h);
  expectIntact(&h, "");
  EXPECT_EQ(h.cap, 0);
  KvoStr_appdStr(&h, "again");
  expectIntact(&h, "again");
  KvoStr_delete(&h);
  KvoStr_delete(&h);  // a second delete is harmless
  expectIntact(&h, "");
}

TEST(KvoStr, SetAndAppendTakeLengthsAndNullText) {
  struct Row {
    const char *text;
    int32_t n;
    std::string_view want;
  };
  const Row rows[] = {
      {"plain", -1, "plain"},        {"plain", 3, "pla"},  {"a\0b", 3, {"a\0b", 3}},
      {"a\0b", -1, "a"},             {nullptr, -1, ""},    {nullptr, 5, ""},
      {"x", 0, ""},                  {"neg", -7, "neg"},
  };
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
  KvoStr_setStr(s, nullptr);
  KvoStr_appdStr(s, nullptr);
  KvoStr_appdCstr(s, nullptr);
  expectIntact(s.get(), "");
}

TEST(KvoStr, AppendsItselfAcrossAMoveToTheHeap) {
  char stack[8];
  KvoStr s;
  StrExt_new__(&s, stack, sizeof stack);
  KvoStr_setStr(&s, "abc");
  std::string model = "abc";
  for (int i = 0; i < 6; ++i) {  // each round doubles; the first moves off the stack
    KvoStr_appdCstr(&s, &s);
    model += model;
    expectIntact(&s, model);
  }
  KvoStr_appdStrx(&s, s.buf + 1, 4);
  model += model.substr(1, 4);
  expectIntact(&s, model);
  KvoStr_appdStr(&s, s.buf + s.len - 2);
  model += model.substr(model.size() - 2);
  expectIntact(&s, model);
  KvoStr_setStr(&s, s.buf + 5);  // set from its own tail
  model = model.substr(5);
  expectIntact(&s, model);
  KvoStr_setCstr(&s, &s);
  expectIntact(&s, model);
  KvoStr_delete(&s);
}

TEST(KvoStr, FormatsLongerThanTheStackBuffer) {
  const std::string longArg(300, 'q');
  tarnex::ScratchStr<16> s;
  KvoStr_setf(s, "%d:", 7);
  KvoStr_appdf(s, "[%s]%05d", longArg.c_str(), 42);
  KvoStr_appdf(s, "%s", "");
  KvoStr_appdf(s, "%c", 'z');
  expectIntact(s.get(), "7:[" + longArg + "]00042z");
  KvoStr_setf(s, "%s", "short");
  expectIntact(s.get(), "short");

  KvoStr h;  // starts on the shared empty text: no room at all
  KvoStr_new(&h);
  KvoStr_appdf(&h, "%.*s", 3, "abcdef");
  expectIntact(&h, "abc");
  KvoStr_delete(&h);
}

TEST(KvoStr, AppendsNumbers) {
  tarnex::ScratchStr<8> s;
  KvoStr_appdLong(s, INT64_MIN);
  KvoStr_appdChar(s, ' ');
  KvoStr_appdLong(s, -1);
  KvoStr_appdChar(s, ' ');
  KvoStr_appdLong(s, 0);
  KvoStr_appdChar(s, ' ');
  KvoStr_appdUlong(s, UINT64_MAX);
  expectIntact(s.get(), "-9223372036854775808 -1 0 18446744073709551615");
}

TEST(KvoStr, ReserveAndSetLen) {
  AssertCounter asserts;
  tarnex::ScratchStr<4> s;
  KvoStr_setStr(s, "ab");
  char *at = KvoStr_reserve(s, 10);
  ASSERT_EQ(at, KvoStr_buf(s) + 2);
  std::memcpy(at, "0123456789", 10);
  KvoStr_setLen(s, 12);
  expectIntact(s.get(), "ab0123456789");
  EXPECT_EQ(asserts.n, 0);
  const int32_t room = s.get()->cap - 1;
  KvoStr_setLen(s, room + 1);  // past the room: reported and held to it
  EXPECT_EQ(asserts.n, 1);
  EXPECT_EQ(KvoStr_len(s), room);
  KvoStr_setLen(s, -4);
  expectIntact(s.get(), "");

  KvoStr e;  // even an empty reserve on the shared empty text gives storage
  KvoStr_new(&e);
  ASSERT_NE(KvoStr_reserve(&e, 0), nullptr);
  KvoStr_setLen(&e, 0);
  expectIntact(&e, "");
  KvoStr_delete(&e);
}

TEST(KvoStr, NullStringIsReportedAndHarmless) {
  AssertCounter asserts;
  KvoStr *none = nullptr;
  EXPECT_EQ(KvoStr_new(none), nullptr);
  EXPECT_EQ(KvoStr_appdStr(none, "x"), nullptr);
  EXPECT_EQ(KvoStr_appdf(none, "%d", 1), nullptr);
  EXPECT_EQ(KvoStr_appdWchar(none, 0x41), nullptr);
  EXPECT_EQ(KvoStr_len(none), 0);
  EXPECT_STREQ(KvoStr_buf(none), "");
  KvoStr_delete(none);
  EXPECT_EQ(asserts.n, 7);
}

// ---- UTF-16 appends ---------------------------------------------------------
// Expected bytes follow UTF-8 (RFC 3629) for scalar values and WTF-8 for
// unpaired surrogates (the 3-byte form of the surrogate's own code).

TEST(KvoStr, SetCwcsJoinsPairsAndKeepsLoneSurrogates) {
  struct Row {
    std::vector<KvoWchar> units;
    std::string_view want;
  };
  const Row rows[] = {
      {{'a', 0x7F}, "a\x7F"},
      {{0x80, 0x7FF, 0x800, 0xFFFF}, "\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF"},
      {{0xD83D, 0xDE00}, "\xF0\x9F\x98\x80"},
      {{0xD800, 0xDC00, 0xDBFF, 0xDFFF}, "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
      {{0xD83D}, "\xED\xA0\xBD"},
      {{0xD83D, 'x'}, "\xED\xA0\xBDx"},
      {{0xDE00, 0xD83D}, "\xED\xB8\x80\xED\xA0\xBD"},
      {{0xDE00, 0xDE00}, "\xED\xB8\x80\xED\xB8\x80"},
      {{0xD83D, 0xD83D, 0xDE00}, "\xED\xA0\xBD\xF0\x9F\x98\x80"},
      {{'a', 0, 'b'}, {"a\0b", 3}},
      {{}, ""},
  };
  for (const Row &r : rows) {
    KvoWcs w;
    KvoWcs_new(&w);
    KvoWcs_setWcsx(&w, r.units.data(), static_cast<int32_t>(r.units.size()));
    tarnex::ScratchStr<4> s;
    KvoStr_setStr(s, "old");
    KvoStr_setCwcs(s, &w);
    expectIntact(s.get(), r.want);

    // Unit by unit through appdWchar gives the same bytes.
    tarnex::ScratchStr<4> t;
    for (KvoWchar u : r.units) KvoStr_appdWchar(t, u);
    expectIntact(t.get(), r.want);
    KvoWcs_delete(&w);
  }
  tarnex::ScratchStr<4> s;
  KvoStr_setStr(s, "old");
  KvoStr_setCwcs(s, nullptr);
  expectIntact(s.get(), "");
}

TEST(KvoStr, AppdWcharPairSplitOverTwoCalls) {
  // "a" and the high surrogate fill the 5-byte buffer; the low surrogate
  // must replace those 3 bytes while the string moves to the heap.
  char stack[5];
  KvoStr s;
  StrExt_new__(&s, stack, sizeof stack);
  KvoStr_appdChar(&s, 'a');
  KvoStr_appdWchar(&s, 0xD83D);
  expectIntact(&s, "a\xED\xA0\xBD");
  EXPECT_EQ(s.buf, stack);
  KvoStr_appdWchar(&s, 0xDE00);
  expectIntact(&s, "a\xF0\x9F\x98\x80");
  // A low surrogate behind a complete pair, or behind other text, stays lone.
  KvoStr_appdWchar(&s, 0xDC00);
  KvoStr_appdWchar(&s, 0x1F600);  // a code point comes as one call
  KvoStr_appdWchar(&s, 0x110000);
  expectIntact(&s, "a\xF0\x9F\x98\x80\xED\xB0\x80\xF0\x9F\x98\x80\xEF\xBF\xBD");
  KvoStr_delete(&s);
}

// ---- streams ----------------------------------------------------------------

// A caller's own stream that hands out at most 3 bytes per read and may hide
// its size, so that the chunked reading path is taken.
struct TrickleStrm {
  IStrm base;
  std::string data;
  size_t pos = 0;
  bool knowsSize = true;
  int32_t overclaim = 0;  // a broken stream says it read more than it did
};

TrickleStrm *trickle(IStrm *s) { return reinterpret_cast<TrickleStrm *>(s); }

const IStrmOps kTrickleOps = {
    [](IStrm *) {},
    [](IStrm *, int32_t) -> int32_t { return -1; },
    [](IStrm *s) -> int32_t {
      TrickleStrm *t = trickle(s);
      return t->pos < t->data.size() ? static_cast<uint8_t>(t->data[t->pos++]) : -1;
    },
    [](IStrm *, int32_t) -> int32_t { return -1; },
    [](IStrm *s, void *buf, int32_t n) -> int32_t {
      TrickleStrm *t = trickle(s);
      const size_t k = std::min({static_cast<size_t>(n), size_t{3}, t->data.size() - t->pos});
      std::memcpy(buf, t->data.data() + t->pos, k);
      t->pos += k;
      return static_cast<int32_t>(k) + (k ? t->overclaim : 0);
    },
    [](IStrm *, const void *, int32_t) -> int32_t { return -1; },
    [](IStrm *, uint32_t, int32_t, int32_t) -> int32_t { return -1; },
    [](IStrm *s) -> int64_t { return static_cast<int64_t>(trickle(s)->pos); },
    [](IStrm *s) -> int64_t {
      return trickle(s)->knowsSize ? static_cast<int64_t>(trickle(s)->data.size()) : 0;
    },
    [](IStrm *) -> int32_t { return -1; },
    nullptr,
};

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

  AssertCounter asserts;
  tarnex::ScratchStr<8> s;
  KvoStr_setStr(s, "kept");
  KvoStr_setStrm(s, nullptr, -1);
  expectIntact(s.get(), "kept");
  EXPECT_EQ(asserts.n, 1);
}

}  // namespace
