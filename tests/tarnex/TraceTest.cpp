// The trace manager: selection, blocks, writers and markers.
#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tarnex/strm.h"
#include "tarnex/trace.h"

namespace {

// Collects every block the sink receives.
class TraceTest : public testing::Test {
 protected:
  void SetUp() override {
    DbgMng_reset();
    DbgMng_setSink(&TraceTest::collect, this);
  }
  void TearDown() override {
    DbgMng_reset();
    DbgMng_setSink(nullptr, nullptr);
  }
  static void collect(void *ctx, const char *text, int32_t len) {
    auto *self = static_cast<TraceTest *>(ctx);
    std::lock_guard<std::mutex> lock(self->mutex_);
    self->blocks_.emplace_back(text, static_cast<size_t>(len));
  }
  std::vector<std::string> blocks_;
  std::mutex mutex_;
};

// Every kind of statement, as the libraries write them for module 6.
void writeEverything() {
  tout_beg(__FILE__, __LINE__, 6, 0x2, 3);
  tout_fmt("[%s: %d]", "field", 3);
  tout_str("text");
  tout_endx();
  const uint8_t bytes[] = {1, 2, 3};
  const KvoWchar wide[] = {'w', 0};
  tout_str("loose");
  tout_fmt("%d", 1);
  tout_hex(bytes, 3);
  tout_wcs(wide);
  DbgMng_outFbeg("fn", __FILE__, __LINE__, 6, 0x8, 3);
  DbgMng_outFend("fn", __FILE__, __LINE__, 6, 0x8, 3);
}

TEST_F(TraceTest, NothingReachesTheSinkWhenOff) {
  EXPECT_EQ(kvo_trc_enabled(), 0);
  writeEverything();
  EXPECT_TRUE(blocks_.empty());

  // Switching the only selected module off again is "off" too.
  DbgMng_select(6, 0x8, 3);
  EXPECT_NE(kvo_trc_enabled(), 0);
  DbgMng_select(6, 0, 3);
  EXPECT_EQ(kvo_trc_enabled(), 0);
  EXPECT_EQ(DbgMng_enabled__(6, 0x8, 1), 0);
  writeEverything();
  EXPECT_TRUE(blocks_.empty());
}

struct SelectCase {
  int32_t selModule;
  uint32_t selCategories;
  int32_t selMaxLevel;
  int32_t module;
  uint32_t category;
  int32_t level;
  bool enabled;
};

constexpr SelectCase kSelectCases[] = {
    {6, 0x8, 3, 6, 0x8, 3, true},       // level equal to the maximum
    {6, 0x8, 3, 6, 0x8, 1, true},       // a more important level
    {6, 0x8, 2, 6, 0x8, 3, false},      // more detail than selected
    {6, 0x8, 3, 6, 0x4, 3, false},      // another category
    {6, 0x8, 3, 5, 0x8, 3, false},      // another module
    {6, 0x109, 3, 6, 0x100, 3, true},   // one bit of several
    {6, 0x109, 3, 6, 0x6, 3, false},    // none of several
    {-1, 0x4, 2, 0, 0x4, 2, true},      // every module: the first
    {-1, 0x4, 2, 15, 0x4, 2, true},     // every module: the last
    {-1, 0x4, 2, 16, 0x4, 2, false},    // no such module
    {-1, 0x4, 2, -1, 0x4, 2, false},    // -1 selects, never asks
    {6, 0x8, 3, 6, 0x0, 3, false},      // a statement of no category
    {15, 0xFFFFFFFF, 9, 15, 0x80000000, 9, true},
};

TEST_F(TraceTest, SelectsByModuleCategoryAndLevel) {
  for (const SelectCase &c : kSelectCases) {
    SCOPED_TRACE(testing::Message() << "select(" << c.selModule << ", 0x" << std::hex
                                    << c.selCategories << std::dec << ", " << c.selMaxLevel
                                    << ") ask(" << c.module << ", 0x" << std::hex << c.category
                                    << std::dec << ", " << c.level << ")");
    DbgMng_reset();
    blocks_.clear();
    DbgMng_select(c.selModule, c.selCategories, c.selMaxLevel);
    EXPECT_NE(kvo_trc_enabled(), 0);
    EXPECT_EQ(DbgMng_enabled__(c.module, c.category, c.level) != 0, c.enabled);

    // A block and a marker pair follow the same selection.
    tout_beg(__FILE__, __LINE__, c.module, c.category, c.level);
    tout_str("block");
    tout_endx();
    DbgMng_outFbeg("fn", "f.cpp", 9, c.module, c.category, c.level);
    DbgMng_outFend("fn", "f.cpp", 9, c.module, c.category, c.level);
    EXPECT_EQ(blocks_.size(), c.enabled ? 3u : 0u);
  }
}

TEST_F(TraceTest, BadModuleIsReportedAndChangesNothing) {
  std::string seen;
  Tarnex_setAssertHandler(
      [](void *ctx, const char *text, const char *, int32_t) {
        *static_cast<std::string *>(ctx) = text;
      },
      &seen, nullptr);
  DbgMng_select(16, 0x1, 3);
  DbgMng_select(-2, 0x1, 3);
  Tarnex_setAssertHandler(nullptr, nullptr, nullptr);
  EXPECT_FALSE(seen.empty());
  EXPECT_EQ(kvo_trc_enabled(), 0);
}

TEST_F(TraceTest, BlockArrivesInOnePieceWithOneNewline) {
  DbgMng_select(6, 0x2, 3);
  tout_beg(__FILE__, __LINE__, 6, 0x2, 3);
  tout_str("[vcard: ");
  tout_fmt("%d/%d", 12, 300);
  tout_str("]");
  EXPECT_TRUE(blocks_.empty()) << "nothing goes out before the block ends";
  tout_endx();
  tout_beg(__FILE__, __LINE__, 6, 0x2, 3);
  tout_str("ends in a newline\n");
  tout_endx();
  tout_endx();  // no block open: nothing
  ASSERT_EQ(blocks_.size(), 2u);
  EXPECT_EQ(blocks_[0], "[vcard: 12/300]\n");
  EXPECT_EQ(blocks_[1], "ends in a newline\n");
}

TEST_F(TraceTest, UnselectedBlockStaysSilentWhileOthersAreOn) {
  DbgMng_select(6, 0x8, 3);
  tout_beg(__FILE__, __LINE__, 6, 0x100, 3);
  tout_str("not selected");
  tout_hex("ab", 2);
  tout_endx();
  tout_str("loose writer");  // outside a block: written, tracing is on
  ASSERT_EQ(blocks_.size(), 1u);
  EXPECT_EQ(blocks_[0], "loose writer\n");
}

TEST_F(TraceTest, NewBlockEndsTheOpenOne) {
  DbgMng_select(6, 0x2, 3);
  tout_beg(__FILE__, __LINE__, 6, 0x2, 3);
  tout_str("first");
  tout_beg(__FILE__, __LINE__, 6, 0x2, 3);
  tout_str("second");
  tout_endx();
  EXPECT_EQ(blocks_, (std::vector<std::string>{"first\n", "second\n"}));
}

TEST_F(TraceTest, LongFormattedText) {
  DbgMng_select(6, 0x2, 3);
  const std::string big(10000, 'x');
  tout_fmt("<%s>", big.c_str());
  ASSERT_EQ(blocks_.size(), 1u);
  EXPECT_EQ(blocks_[0], "<" + big + ">\n");
}

TEST_F(TraceTest, HexSixteenBytesALine) {
  DbgMng_select(6, 0x2, 3);
  uint8_t bytes[20];
  for (int i = 0; i < 20; ++i) bytes[i] = static_cast<uint8_t>(0xF0 + i * 7);
  tout_beg(__FILE__, __LINE__, 6, 0x2, 3);
  tout_str("pdu:");
  tout_hex(bytes, 20);
  tout_hex(bytes, 0);
  tout_hex(bytes, -5);
  tout_hex(nullptr, 4);
  tout_endx();
  tout_hex(bytes, 16);
  ASSERT_EQ(blocks_.size(), 2u);
  EXPECT_EQ(blocks_[0],
            "pdu:\n"
            "0000: F0 F7 FE 05 0C 13 1A 21 28 2F 36 3D 44 4B 52 59\n"
            "0010: 60 67 6E 75\n");
  EXPECT_EQ(blocks_[1], "0000: F0 F7 FE 05 0C 13 1A 21 28 2F 36 3D 44 4B 52 59\n");
}

TEST_F(TraceTest, WideTextBecomesUtf8) {
  DbgMng_select(6, 0x2, 3);
  const KvoWchar paired[] = {'A', 0x00E9, 0xD83D, 0xDE00, 'z', 0};
  const KvoWchar lone[] = {0xD83D, 'x', 0xDC00, 0};
  tout_wcs(paired);
  tout_wcs(lone);
  tout_wcs(nullptr);
  ASSERT_EQ(blocks_.size(), 2u);
  EXPECT_EQ(blocks_[0], "A\xC3\xA9\xF0\x9F\x98\x80z\n");
  EXPECT_EQ(blocks_[1], "\xED\xA0\xBDx\xED\xB0\x80\n");
}

// A stream of the caller's own, over a std::string, with or without peek.
struct TestStrm {
  IStrm base;
  std::string data;
  int64_t pos = 0;
};

TestStrm *self(IStrm *s) { return reinterpret_cast<TestStrm *>(s); }

int32_t tsRead(IStrm *s, void *buf, int32_t n) {
  TestStrm *t = self(s);
  if (n < 0) return -1;
  const int64_t left = static_cast<int64_t>(t->data.size()) - t->pos;
  const int32_t got = left < n ? static_cast<int32_t>(left > 0 ? left : 0) : n;
  t->data.copy(static_cast<char *>(buf), static_cast<size_t>(got), static_cast<size_t>(t->pos));
  t->pos += got;
  return got;
}
int32_t tsSeek(IStrm *s, uint32_t low, int32_t high, int32_t whence) {
  TestStrm *t = self(s);
  const int64_t off = static_cast<int64_t>((static_cast<uint64_t>(high) << 32) | low);
  const int64_t end = static_cast<int64_t>(t->data.size());
  const int64_t base = whence == 0 ? 0 : whence == 1 ? t->pos : end;
  if (base + off < 0) return -1;
  t->pos = std::min(base + off, end);
  return 0;
}
int64_t tsTell(IStrm *s) { return self(s)->pos; }
int64_t tsSize(IStrm *s) { return static_cast<int64_t>(self(s)->data.size()); }
int64_t tsPeek(IStrm *s, const uint8_t **p) {
  // Hands out short runs, so the reader must come back for more.
  TestStrm *t = self(s);
  const int64_t left = static_cast<int64_t>(t->data.size()) - t->pos;
  *p = reinterpret_cast<const uint8_t *>(t->data.data() + t->pos);
  return left < 1000 ? left : 1000;
}

constexpr IStrmOps kPlainOps = {nullptr, nullptr, nullptr, nullptr, tsRead, nullptr,
                                tsSeek,  tsTell,  tsSize,  nullptr, nullptr};
constexpr IStrmOps kPeekOps = {nullptr, nullptr, nullptr, nullptr, tsRead, nullptr,
                               tsSeek,  tsTell,  tsSize,  nullptr, tsPeek};

TEST_F(TraceTest, StreamIsWrittenWholeAndKeepsItsPosition) {
  DbgMng_select(6, 0x100, 3);
  std::string big;
  for (int i = 0; i < 9000; ++i) big.push_back(static_cast<char>('a' + i % 26));
  struct Case {
    const IStrmOps *ops;
    std::string content;
    int64_t pos;
  };
  const Case cases[] = {
      {&kPlainOps, "BEGIN:VCARD\r\nEND:VCARD\r\n", 5},
      {&kPeekOps, "BEGIN:VCARD\r\nEND:VCARD\r\n", 24},
      {&kPlainOps, big, 4097},
      {&kPeekOps, big, 0},
      {&kPlainOps, "", 0},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(testing::Message() << (c.ops == &kPeekOps ? "peek " : "read ")
                                    << c.content.size() << " bytes at " << c.pos);
    blocks_.clear();
    TestStrm strm{{c.ops}, c.content, c.pos};
    tout_beg(__FILE__, __LINE__, 6, 0x100, 3);
    tout_tstrm(&strm.base);
    tout_endx();
    EXPECT_EQ(strm.pos, c.pos);
    if (c.content.empty()) {
      EXPECT_TRUE(blocks_.empty());
    } else {
      ASSERT_EQ(blocks_.size(), 1u);
      EXPECT_EQ(blocks_[0], c.content.back() == '\n' ? c.content : c.content + "\n");
    }
  }
  tout_tstrm(nullptr);
  EXPECT_EQ(blocks_.size(), 0u);
}

TEST_F(TraceTest, MarkersNameTheFunctionAndItsPlace) {
  DbgMng_select(6, 0x8, 3);
  tout_beg(__FILE__, __LINE__, 6, 0x8, 3);
  tout_str("inside");
  DbgMng_outFbeg("PbItem_new", "Src/PbItem.cpp", 88, 6, 0x8, 3);
  DbgMng_outFend("PbItem_new", "Src/PbItem.cpp", 88, 6, 0x8, 3);
  tout_endx();
  EXPECT_EQ(blocks_, (std::vector<std::string>{">> PbItem_new (Src/PbItem.cpp:88)\n",
                                                "<< PbItem_new\n", "inside\n"}));
}

TEST_F(TraceTest, BlocksOfThreadsDoNotInterleave) {
  DbgMng_select(6, 0x2, 3);
  constexpr int kThreads = 4, kBlocks = 300;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([t] {
      for (int i = 0; i < kBlocks; ++i) {
        tout_beg(__FILE__, __LINE__, 6, 0x2, 3);
        for (int piece = 0; piece < 5; ++piece) tout_fmt("%c%d", 'A' + t, piece);
        tout_endx();
      }
    });
  for (auto &th : threads) th.join();
  ASSERT_EQ(blocks_.size(), static_cast<size_t>(kThreads * kBlocks));
  for (const std::string &b : blocks_) {
    const char c = b[0];
    const std::string whole = std::string{c, '0', c, '1', c, '2', c, '3', c, '4', '\n'};
    ASSERT_EQ(b, whole);
  }
}

TEST_F(TraceTest, SinkThatTracesDoesNotRecurse) {
  static int calls = 0;
  calls = 0;
  DbgMng_setSink(
      [](void *, const char *, int32_t) {
        ++calls;
        tout_str("from the sink");
        DbgMng_outFbeg("sink", "s.cpp", 1, 6, 0x2, 3);
      },
      nullptr);
  DbgMng_select(6, 0x2, 3);
  tout_str("one");
  tout_str("two");
  EXPECT_EQ(calls, 2);
}

TEST_F(TraceTest, NullSinkWritesToStderr) {
  DbgMng_setSink(nullptr, nullptr);
  DbgMng_select(6, 0x2, 3);
  testing::internal::CaptureStderr();
  DbgMng_outFbeg("Vcard_dec", "Src/VcardEd.cpp", 5, 6, 0x2, 3);
  tout_str("to stderr");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            ">> Vcard_dec (Src/VcardEd.cpp:5)\nto stderr\n");
}

}  // namespace
