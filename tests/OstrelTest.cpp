// The library frame: start and stop, and the mechanisms every record family
// shares (the tag word, the trace guard and the frames of _tracex).
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "detail/Object.h"
#include "detail/Trace.h"
#include "ostrel/Ostrel.h"

namespace {

namespace od = ostrel::detail;
using Lines = std::vector<std::string>;

// Catches misuse reports ("text @ file") and trace blocks for a test.
class FrameTest : public testing::Test {
 protected:
  void SetUp() override {
    auto onAssert = [](void *ctx, const char *text, const char *file, int32_t) {
      static_cast<FrameTest *>(ctx)->asserts_.push_back(std::string(text) + " @ " + file);
    };
    auto onBlock = [](void *ctx, const char *text, int32_t len) {
      static_cast<FrameTest *>(ctx)->blocks_.emplace_back(text, static_cast<size_t>(len));
    };
    Tarnex_setAssertHandler(onAssert, this, nullptr);
    DbgMng_reset();
    DbgMng_setSink(onBlock, this);
  }
  void TearDown() override {
    Tarnex_setAssertHandler(nullptr, nullptr, nullptr);
    DbgMng_reset();
    DbgMng_setSink(nullptr, nullptr);
  }
  Lines asserts_, blocks_;
};

TEST_F(FrameTest, StartsNestAndAStopWithoutStartIsReportedAndRebalanced) {
  ASSERT_EQ(Tarnex_startCount(), 0);
  EXPECT_EQ(Ostrel_init(), 0);
  EXPECT_EQ(Ostrel_init(), 0);
  EXPECT_EQ(Tarnex_startCount(), 1) << "a nested start must not start the foundation again";
  Ostrel_exit();
  EXPECT_EQ(Tarnex_startCount(), 1) << "one start is still outstanding";
  Ostrel_exit();
  EXPECT_EQ(Tarnex_startCount(), 0);
  EXPECT_TRUE(asserts_.empty());

  Ostrel_exit();
  EXPECT_EQ(asserts_, Lines{"ret >= 0 @ Src/Ostrel"});
  // The count went below 0 on both levels; the start that pays it back
  // leaves both at 0, so an ordinary pair works as before.
  EXPECT_EQ(Ostrel_init(), 0);
  EXPECT_EQ(Tarnex_startCount(), 0);
  Ostrel_init();
  EXPECT_EQ(Tarnex_startCount(), 1);
  Ostrel_exit();
  EXPECT_EQ(Tarnex_startCount(), 0);
  EXPECT_EQ(asserts_.size(), 1u);
}

constexpr uint32_t kRecTag = 0x5EC0, kOtherTag = 0x5EC1;

struct Rec {
  uint32_t tag, reserved;
  int64_t value;
  char name[20];
};

TEST_F(FrameTest, NewObjectTagsCallerStorageAndZeroesAHeapBlock) {
  Rec storage;
  std::memset(&storage, 0xCD, sizeof storage);
  const uint64_t allocs = Tarnex_allocCount();
  Rec *rec = od::newObject(&storage, kRecTag, __FILE__, __LINE__);
  EXPECT_EQ(rec, &storage);
  EXPECT_EQ(Tarnex_allocCount(), allocs);
  EXPECT_EQ(rec->tag, kRecTag);
  EXPECT_EQ(rec->reserved, 0xCDCDCDCDu) << "members are the family's to construct";
  // Ending it must not free the caller's storage (the sanitizer would
  // report a free of a stack address) and must kill the tag.
  od::endObject(rec, __FILE__, __LINE__);
  EXPECT_FALSE(od::hasTag(&storage, kRecTag));

  rec = od::newObject<Rec>(nullptr, kRecTag, __FILE__, __LINE__);
  EXPECT_EQ(Tarnex_allocCount(), allocs + 1);
  EXPECT_EQ(rec->tag, kRecTag | od::kHeapBit);
  EXPECT_EQ(rec->value, 0);
  EXPECT_EQ(rec->name[19], 0);
  EXPECT_TRUE(od::hasTag(rec, kRecTag)) << "the heap bit must not disturb a check";
  OSTREL_CHECK(rec, kRecTag);
  od::endObject(rec, __FILE__, __LINE__);  // freed, or the leak checker fails the test
}

TEST_F(FrameTest, RequireReportsAndSaysWhetherToGoOn) {
  for (const int given : {1, 0}) {
    const int *item = given ? &given : nullptr;
    EXPECT_EQ(OSTREL_REQUIRE(item != nullptr, "vcard && item"), given != 0);
  }
  EXPECT_EQ(asserts_, Lines{"vcard && item @ tests/OstrelTest.cpp"});
}

using FrameDeathTest = FrameTest;

TEST_F(FrameDeathTest, CheckEndsTheProcessOnAnyButALiveRecordOfTheFamily) {
  Rec rec{};
  od::newObject(&rec, kRecTag, __FILE__, __LINE__);
  EXPECT_DEATH(od::checkTag(nullptr, kRecTag, "Src/PbItem.cpp", 11),
               "crash exit \\(Src/PbItem\\.cpp:11\\)");
  EXPECT_DEATH(od::checkTag(&rec, kOtherTag, "Src/PbItem.cpp", 12),
               "crash exit \\(Src/PbItem\\.cpp:12\\)");
  od::endObject(&rec, __FILE__, __LINE__);
  const int line = __LINE__ + 1;
  EXPECT_DEATH(OSTREL_CHECK(&rec, kRecTag),
               "crash exit \\(tests/OstrelTest\\.cpp:" + std::to_string(line) + "\\)");
}

std::string content(IStrm *strm) {
  return {reinterpret_cast<const char *>(MemStrm_data(strm)),
          static_cast<size_t>(IStrm_size(strm))};
}

TEST_F(FrameTest, OpenOutputReplacesOrAppends) {
  tarnex::ScratchMemStrm out(0);
  IStrm_puts(out, "old text", -1);
  IStrm_rewind(out);
  od::openOutput(out, 1);
  IStrm_puts(out, "+more", -1);
  EXPECT_EQ(content(out), "old text+more") << "append writes behind, wherever the position was";
  od::openOutput(out, 0);
  IStrm_puts(out, "new", -1);
  EXPECT_EQ(content(out), "new");
}

TEST_F(FrameTest, TraceLinesWritesOnlyMembersThatAreSet) {
  tarnex::ScratchMemStrm out(0);
  KvoStr empty, name;
  KvoWcs noWide, wide;
  KvoStr_setStr(KvoStr_new(&name), "Anna");
  const KvoWchar units[] = {'M', 0x00FC, 'l', 0xD83D, 0xDE00, 0};
  KvoWcs_setWcsx(KvoWcs_new(&wide), units, -1);
  od::TraceLines lines(out);
  lines.text("null", nullptr);
  lines.text("blank", "");
  lines.text("loc", "home");
  lines.str("empty", KvoStr_new(&empty));
  lines.str("name", &name);
  lines.wcs("noWide", KvoWcs_new(&noWide));
  lines.wcs("wide", &wide);
  lines.num("zero", 0);
  lines.num("size", -4096);
  EXPECT_EQ(content(out),
            "loc = home\nname = Anna\nwide = M\xC3\xBCl\xF0\x9F\x98\x80\nsize = -4096\n");
  KvoStr_delete(&empty);
  KvoStr_delete(&name);
  KvoWcs_delete(&noWide);
  KvoWcs_delete(&wide);
}

void tracedFunction() { OSTREL_FUNC_TRACE(); }

TEST_F(FrameTest, FunctionMarkersNeedCategory8Level3OfModule6) {
  const struct { int32_t module; uint32_t categories; int32_t maxLevel; bool written; } cases[] = {
      {6, 0x8, 3, true},    // exactly what the markers need
      {6, 0x10F, 9, true},  // more than they need
      {6, 0x8, 2, false},   // level 3 is more detail than selected
      {6, 0x7, 3, false},   // every category but theirs
      {5, 0x8, 3, false},   // another module
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(&c - cases);
    DbgMng_reset();
    DbgMng_select(c.module, c.categories, c.maxLevel);
    blocks_.clear();
    tracedFunction();
    ASSERT_EQ(blocks_.size(), c.written ? 2u : 0u);
    if (!c.written) continue;
    EXPECT_EQ(blocks_[0].rfind(">> tracedFunction (tests/OstrelTest.cpp:", 0), 0u) << blocks_[0];
    EXPECT_EQ(blocks_[1], "<< tracedFunction\n");
  }
}

TEST_F(FrameTest, TraceMacroWritesOneBlockWhenSelected) {
  OSTREL_TRACE(od::kCatField, 3, "[%s: %s]", "N", "Doe");
  EXPECT_TRUE(blocks_.empty());
  DbgMng_select(6, od::kCatField, 1);
  OSTREL_TRACE(od::kCatField, 3, "[%s: %s]", "N", "Doe");
  OSTREL_TRACE(od::kCatField, 1, "dec pdu, unkown type");
  EXPECT_EQ(blocks_, Lines{"dec pdu, unkown type\n"});
}

void recTracex(Rec *rec, IStrm *strm, int32_t append) {
  od::openOutput(strm, append);
  IStrm_puts(strm, "# Rec beg......\n", -1);
  od::TraceLines(strm).num("value", rec->value);
  IStrm_puts(strm, "# Rec end !!!!!!\n", -1);
}

TEST_F(FrameTest, TraceRecordHandsTheTracexTextOver) {
  Rec rec{kRecTag, 0, 7, {}};
  od::traceRecord(&rec, recTracex);
  EXPECT_TRUE(blocks_.empty()) << "nothing is written while tracing is off";
  DbgMng_select(6, od::kCatFunc, 3);
  od::traceRecord(&rec, recTracex);
  EXPECT_EQ(blocks_, Lines{"# Rec beg......\nvalue = 7\n# Rec end !!!!!!\n"});
}

}  // namespace
