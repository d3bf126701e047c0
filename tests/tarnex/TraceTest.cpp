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

using Blocks = std::vector<std::string>;

// Collects every block the sink receives.
class TraceTest : public testing::Test {
 protected:
  void SetUp() override { DbgMng_reset(), DbgMng_setSink(&TraceTest::collect, this); }
  void TearDown() override { DbgMng_reset(), DbgMng_setSink(nullptr, nullptr); }
  static void collect(void *ctx, const char *text, int32_t len) {
    std::lock_guard<std::mutex> lock(static_cast<TraceTest *>(ctx)->mutex_);
    static_cast<TraceTest *>(ctx)->blocks_.emplace_back(text, static_cast<size_t>(len));
  }
  Blocks blocks_;
  std::mutex mutex_;
};

// A block and a marker pair follow the selection; the four loose writers
// follow only whether tracing is on at all.
void writeEverything(int32_t module, uint32_t category, int32_t level) {
  const uint8_t bytes[] = {1, 2, 3};
  const KvoWchar wide[] = {'w', 0};
  tout_beg(__FILE__, __LINE__, module, category, level);
  tout_fmt("[%s: %d]", "field", 3);
  tout_endx();
  tout_str("loose");
  tout_fmt("%d", 1);
  tout_hex(bytes, 3);
  tout_wcs(wide);
  DbgMng_outFbeg("fn", __FILE__, __LINE__, module, category, level);
  DbgMng_outFend("fn", __FILE__, __LINE__, module, category, level);
}

TEST_F(TraceTest, SelectsByModuleCategoryAndLevel) {
  writeEverything(6, 0x8, 3);
  DbgMng_select(6, 0x8, 3);
  DbgMng_select(6, 0, 3);  // switching the only module off again is "off" too
  EXPECT_EQ(kvo_trc_enabled(), 0);
  writeEverything(6, 0x8, 3);
  EXPECT_TRUE(blocks_.empty()) << "nothing reaches the sink when off";

  struct Row {  // what is selected, what a statement asks, and the answer
    int32_t selModule; uint32_t selCategories; int32_t selMaxLevel;
    int32_t module; uint32_t category; int32_t level; bool enabled;
  };
  const Row rows[] = {
      {6, 0x8, 3, 6, 0x8, 3, true},      // level equal to the maximum
      {6, 0x8, 3, 6, 0x8, 1, true},      // a more important level
      {6, 0x8, 2, 6, 0x8, 3, false},     // more detail than selected
      {6, 0x8, 3, 6, 0x4, 3, false},     // another category
      {6, 0x8, 3, 6, 0x0, 3, false},     // a statement of no category
      {6, 0x8, 3, 5, 0x8, 3, false},     // another module
      {6, 0x109, 3, 6, 0x100, 3, true},  // one bit of several
      {-1, 0x4, 2, 0, 0x4, 2, true},     // every module: the first
      {-1, 0x4, 2, 15, 0x4, 2, true},    // every module: the last
      {-1, 0x4, 2, 16, 0x4, 2, false},   // no such module
      {-1, 0x4, 2, -1, 0x4, 2, false},   // -1 selects, never asks
  };
  for (const Row &c : rows) {
    SCOPED_TRACE("row " + std::to_string(&c - rows));
    DbgMng_reset();
    blocks_.clear();
    DbgMng_select(c.selModule, c.selCategories, c.selMaxLevel);
    EXPECT_NE(kvo_trc_enabled(), 0);
    EXPECT_EQ(DbgMng_enabled__(c.module, c.category, c.level) != 0, c.enabled);
    writeEverything(c.module, c.category, c.level);
    EXPECT_EQ(blocks_.size(), c.enabled ? 7u : 4u);
  }
  // A module out of range is reported and changes nothing.
  DbgMng_reset();
  int reports = 0;
  auto count = [](void *ctx, const char *, const char *, int32_t) { ++*static_cast<int *>(ctx); };
  Tarnex_setAssertHandler(count, &reports, nullptr);
  DbgMng_select(16, 0x1, 3);
  DbgMng_select(-2, 0x1, 3);
  Tarnex_setAssertHandler(nullptr, nullptr, nullptr);
  EXPECT_EQ(reports, 2);
  EXPECT_EQ(kvo_trc_enabled(), 0);
}

TEST_F(TraceTest, BlocksGoOutWholeAndWritersFormatTheirText) {
  DbgMng_select(6, 0x2, 3);
  tout_beg(__FILE__, __LINE__, 6, 0x2, 3);
  tout_str("[vcard: ");
  tout_fmt("%d/%d", 12, 300);
  tout_str("]");
  EXPECT_TRUE(blocks_.empty()) << "nothing goes out before the block ends";
  tout_beg(__FILE__, __LINE__, 6, 0x2, 3);  // ends the open block
  tout_str("ends in a newline\n");
  tout_endx();
  tout_endx();  // no block open: nothing
  tout_beg(__FILE__, __LINE__, 6, 0x100, 3);  // not selected, though tracing is on
  tout_str("not selected");
  tout_hex("ab", 2);
  tout_endx();
  tout_str("loose writer");  // outside a block: written
  EXPECT_EQ(blocks_, (Blocks{"[vcard: 12/300]\n", "ends in a newline\n", "loose writer\n"}));

  blocks_.clear();  // what each writer makes of its input
  uint8_t bytes[20];
  for (int i = 0; i < 20; ++i) bytes[i] = static_cast<uint8_t>(0xF0 + i * 7);
  tout_beg(__FILE__, __LINE__, 6, 0x2, 3);
  tout_str("pdu:");
  tout_hex(bytes, 20);  // sixteen bytes a line
  tout_hex(bytes, 0);
  tout_hex(bytes, -5);
  tout_hex(nullptr, 4);
  tout_endx();
  tout_hex(bytes, 16);
  const KvoWchar pair[] = {'A', 0x00E9, 0xD83D, 0xDE00, 'z', 0}, lone[] = {0xD83D, 'x', 0xDC00, 0};
  tout_wcs(pair);
  tout_wcs(lone);
  tout_wcs(nullptr);
  const std::string big(10000, 'x');  // past any fixed buffer
  tout_fmt("<%s>", big.c_str());
  const std::string row = "0000: F0 F7 FE 05 0C 13 1A 21 28 2F 36 3D 44 4B 52 59\n";
  EXPECT_EQ(blocks_, (Blocks{"pdu:\n" + row + "0010: 60 67 6E 75\n", row,
                             "A\xC3\xA9\xF0\x9F\x98\x80z\n", "\xED\xA0\xBDx\xED\xB0\x80\n",
                             "<" + big + ">\n"}));
}

// The string stream read plainly, or peeked in short runs so the trace comes back for more.
int64_t (*gPeek)(IStrm *, const uint8_t **);
int64_t shortPeek(IStrm *s, const uint8_t **p) { return std::min<int64_t>(gPeek(s, p), 1000); }

TEST_F(TraceTest, StreamIsWrittenWholeAndKeepsItsPosition) {
  DbgMng_select(6, 0x100, 3);
  std::string big;
  for (int i = 0; i < 9000; ++i) big.push_back(static_cast<char>('a' + i % 26));
  const std::string card = "BEGIN:VCARD\r\nEND:VCARD\r\n";
  const struct { bool peek; std::string content; int64_t pos; } cases[] = {
      {false, card, 5}, {true, card, 24}, {false, big, 4097}, {true, big, 0}, {false, "", 0}};
  for (const auto &c : cases) {
    SCOPED_TRACE(&c - cases);
    blocks_.clear();
    StrStrm storage;
    IStrm *s = StrStrm_xcreate__(&storage, c.content.data(), static_cast<int32_t>(c.content.size()),
                                 __FILE__, __LINE__);
    IStrmOps ops = *s->ops;
    gPeek = ops.peek;
    ops.peek = c.peek ? shortPeek : nullptr;
    s->ops = &ops;
    ASSERT_EQ(IStrm_seek(s, c.pos, KVO_SEEK_SET), 0);
    tout_beg(__FILE__, __LINE__, 6, 0x100, 3);
    tout_tstrm(s);
    tout_endx();
    EXPECT_EQ(IStrm_tell(s), c.pos);
    const std::string lf = c.content.empty() || c.content.back() == '\n' ? "" : "\n";
    EXPECT_EQ(blocks_, c.content.empty() ? Blocks{} : Blocks{c.content + lf});
    IStrm_delete(s);
  }
  tout_tstrm(nullptr);
  EXPECT_TRUE(blocks_.empty());
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
  for (const std::string &b : blocks_)
    ASSERT_EQ(b, (std::string{b[0], '0', b[0], '1', b[0], '2', b[0], '3', b[0], '4', '\n'}));
}

TEST_F(TraceTest, SinkThatTracesDoesNotRecurse) {
  static int calls = 0;
  DbgMng_setSink([](void *, const char *, int32_t) {
    ++calls;
    tout_str("from the sink");
    DbgMng_outFbeg("sink", "s.cpp", 1, 6, 0x2, 3);
  }, nullptr);
  DbgMng_select(6, 0x2, 3);
  tout_str("one");
  tout_str("two");
  EXPECT_EQ(calls, 2);
}

// Markers go out at once, even inside an open block; with no sink all goes to stderr.
TEST_F(TraceTest, MarkersAndANullSink) {
  DbgMng_setSink(nullptr, nullptr);
  DbgMng_select(6, 0x8, 3);
  testing::internal::CaptureStderr();
  tout_beg(__FILE__, __LINE__, 6, 0x8, 3);
  tout_str("inside");
  DbgMng_outFbeg("PbItem_new", "Src/PbItem.cpp", 88, 6, 0x8, 3);
  DbgMng_outFend("PbItem_new", "Src/PbItem.cpp", 88, 6, 0x8, 3);
  tout_endx();
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            ">> PbItem_new (Src/PbItem.cpp:88)\n<< PbItem_new\ninside\n");
}

}  // namespace
