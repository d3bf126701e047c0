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

// Nested starts start the foundation once; a stop without a start is
// reported, and the start that pays it back leaves an ordinary pair working.
TEST_F(FrameTest, StartsNestAndAStopWithoutStartIsReportedAndRebalanced) {
  const struct { bool start; int32_t count; size_t asserts; } steps[] = {
      {true, 1, 0},   {true, 1, 0}, {false, 1, 0}, {false, 0, 0},
      {false, -1, 1}, {true, 0, 1}, {true, 1, 1},  {false, 0, 1}};
  ASSERT_EQ(Tarnex_startCount(), 0);
  for (const auto &s : steps) {
    EXPECT_EQ(s.start ? Ostrel_init() : (Ostrel_exit(), 0), 0);
    EXPECT_EQ(Tarnex_startCount(), s.count) << "step " << &s - steps;
    EXPECT_EQ(asserts_.size(), s.asserts) << "step " << &s - steps;
  }
  EXPECT_EQ(asserts_, Lines{"ret >= 0 @ Src/Ostrel"});
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
  EXPECT_EQ(Tarnex_allocCount(), allocs);
  EXPECT_EQ(rec->tag, kRecTag);
  EXPECT_EQ(rec->reserved, 0xCDCDCDCDu) << "members are the family's to construct";
  od::endObject(rec, __FILE__, __LINE__);  // a free of stack storage fails under ASan
  EXPECT_FALSE(od::hasTag(&storage, kRecTag));

  rec = od::newObject<Rec>(nullptr, kRecTag, __FILE__, __LINE__);
  EXPECT_EQ(Tarnex_allocCount(), allocs + 1);
  EXPECT_EQ(rec->tag, kRecTag | od::kHeapBit);
  EXPECT_EQ(rec->name[19], 0) << "the whole block is zeroed";
  EXPECT_TRUE(od::hasTag(rec, kRecTag)) << "the heap bit must not disturb a check";
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

// Append writes behind, wherever the position was; only set members get a line.
TEST_F(FrameTest, OpenOutputAndTraceLinesWriteOnlyMembersThatAreSet) {
  tarnex::ScratchMemStrm out(0);
  IStrm_puts(out, "old\n", -1);
  IStrm_rewind(out);
  od::openOutput(out, 1);
  tarnex::ScratchStr<8> empty, name;
  tarnex::ScratchWcs<8> noWide, wide;
  KvoStr_setStr(name, "Anna");
  const KvoWchar units[] = {'M', 0x00FC, 'l', 0xD83D, 0xDE00, 0};
  KvoWcs_setWcsx(wide, units, -1);
  od::TraceLines lines(out);
  lines.text("null", nullptr);
  lines.text("blank", "");
  lines.text("loc", "home");
  lines.str("empty", empty);
  lines.str("name", name);
  lines.wcs("noWide", noWide);
  lines.wcs("wide", wide);
  lines.num("zero", 0);
  lines.num("size", -4096);
  EXPECT_EQ(content(out),
            "old\nloc = home\nname = Anna\nwide = M\xC3\xBCl\xF0\x9F\x98\x80\nsize = -4096\n");
  od::openOutput(out, 0);
  IStrm_puts(out, "new", -1);
  EXPECT_EQ(content(out), "new");
}

void tracedFunction() { OSTREL_FUNC_TRACE(); }

TEST_F(FrameTest, FunctionMarkersNeedCategory8Level3OfModule6) {
  const struct { int32_t module; uint32_t categories; int32_t maxLevel; bool written; } cases[] = {
      {6, 0x8, 3, true}, {6, 0x8, 2, false}, {6, 0x7, 3, false}, {5, 0x8, 3, false}};
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

}  // namespace
