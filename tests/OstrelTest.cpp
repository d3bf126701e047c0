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

using ostrel::detail::kHeapBit;

struct Reports {
  std::vector<std::string> asserts;
  std::vector<std::string> blocks;
};

// Catches misuse reports and trace text for the length of a test.
class FrameTest : public testing::Test {
 protected:
  void SetUp() override {
    Tarnex_setAssertHandler(
        [](void *ctx, const char *text, const char *file, int32_t) {
          static_cast<Reports *>(ctx)->asserts.push_back(std::string(text) + " @ " + file);
        },
        &seen_, nullptr);
    DbgMng_reset();
    DbgMng_setSink(
        [](void *ctx, const char *text, int32_t len) {
          static_cast<Reports *>(ctx)->blocks.emplace_back(text, static_cast<size_t>(len));
        },
        &seen_);
  }
  void TearDown() override {
    Tarnex_setAssertHandler(nullptr, nullptr, nullptr);
    DbgMng_reset();
    DbgMng_setSink(nullptr, nullptr);
  }
  Reports seen_;
};

// ---- Start and stop ----------------------------------------------------------

TEST_F(FrameTest, OnlyTheFirstStartAndLastStopReachTheFoundation) {
  ASSERT_EQ(Tarnex_startCount(), 0);
  EXPECT_EQ(Ostrel_init(), 0);
  EXPECT_EQ(Tarnex_startCount(), 1);
  EXPECT_EQ(Ostrel_init(), 0);
  EXPECT_EQ(Tarnex_startCount(), 1) << "a nested start must not start the foundation again";
  Ostrel_exit();
  EXPECT_EQ(Tarnex_startCount(), 1) << "one start is still outstanding";
  Ostrel_exit();
  EXPECT_EQ(Tarnex_startCount(), 0);
  EXPECT_TRUE(seen_.asserts.empty());
}

TEST_F(FrameTest, StopWithoutStartIsReportedAndALateStartRebalances) {
  ASSERT_EQ(Tarnex_startCount(), 0);
  Ostrel_exit();
  ASSERT_EQ(seen_.asserts.size(), 1u);
  EXPECT_EQ(seen_.asserts[0], "ret >= 0 @ Src/Ostrel");

  // The count went below 0 on both levels; the start that pays it back
  // leaves both at 0, so an ordinary pair works as before.
  EXPECT_EQ(Ostrel_init(), 0);
  EXPECT_EQ(Tarnex_startCount(), 0);
  Ostrel_init();
  EXPECT_EQ(Tarnex_startCount(), 1);
  Ostrel_exit();
  EXPECT_EQ(Tarnex_startCount(), 0);
  EXPECT_EQ(seen_.asserts.size(), 1u);
}

// ---- The tag word ------------------------------------------------------------------

constexpr uint32_t kRecTag = 0x5EC0;
constexpr uint32_t kOtherTag = 0x5EC1;

struct Rec {
  uint32_t tag;
  uint32_t reserved;
  int64_t value;
  char name[20];
};

TEST_F(FrameTest, NewObjectInCallerStorageGetsThePlainTag) {
  Rec storage;
  std::memset(&storage, 0xCD, sizeof storage);
  const uint64_t allocs = Tarnex_allocCount();
  Rec *rec = ostrel::detail::newObject(&storage, kRecTag, __FILE__, __LINE__);
  EXPECT_EQ(rec, &storage);
  EXPECT_EQ(Tarnex_allocCount(), allocs);
  EXPECT_EQ(rec->tag, kRecTag);
  EXPECT_EQ(rec->reserved, 0xCDCDCDCDu) << "members are the family's to construct";
  EXPECT_TRUE(ostrel::detail::hasTag(rec, kRecTag));
  EXPECT_FALSE(ostrel::detail::hasTag(rec, kOtherTag));

  // Ending it must not free the caller's storage (the sanitizer would
  // report a free of a stack address) and must kill the tag.
  ostrel::detail::endObject(rec, __FILE__, __LINE__);
  EXPECT_EQ(storage.tag, 0u);
  EXPECT_FALSE(ostrel::detail::hasTag(&storage, kRecTag));
}

TEST_F(FrameTest, NewObjectOnTheHeapIsZeroedAndCarriesTheHeapBit) {
  const uint64_t allocs = Tarnex_allocCount();
  Rec *rec = ostrel::detail::newObject<Rec>(nullptr, kRecTag, __FILE__, __LINE__);
  EXPECT_EQ(Tarnex_allocCount(), allocs + 1);
  EXPECT_EQ(rec->tag, kRecTag | kHeapBit);
  EXPECT_EQ(rec->reserved, 0u);
  EXPECT_EQ(rec->value, 0);
  EXPECT_EQ(rec->name[19], 0);
  EXPECT_TRUE(ostrel::detail::hasTag(rec, kRecTag)) << "the heap bit must not disturb a check";
  OSTREL_CHECK(rec, kRecTag);
  // Freed here, or the leak checker fails this test at exit.
  ostrel::detail::endObject(rec, __FILE__, __LINE__);
}

TEST_F(FrameTest, RequireReportsAndSaysWhetherToGoOn) {
  for (const int given : {1, 0}) {
    const int *item = given ? &given : nullptr;
    EXPECT_EQ(OSTREL_REQUIRE(item != nullptr, "vcard && item"), given != 0);
  }
  ASSERT_EQ(seen_.asserts.size(), 1u);
  EXPECT_EQ(seen_.asserts[0], "vcard && item @ tests/OstrelTest.cpp");
}

using FrameDeathTest = FrameTest;

TEST_F(FrameDeathTest, CheckEndsTheProcessOnAnyButALiveRecordOfTheFamily) {
  Rec rec{};
  ostrel::detail::newObject(&rec, kRecTag, __FILE__, __LINE__);
  EXPECT_DEATH(ostrel::detail::checkTag(nullptr, kRecTag, "Src/PbItem.cpp", 11),
               "crash exit \\(Src/PbItem\\.cpp:11\\)");
  EXPECT_DEATH(ostrel::detail::checkTag(&rec, kOtherTag, "Src/PbItem.cpp", 12),
               "crash exit \\(Src/PbItem\\.cpp:12\\)");

  Rec *heap = ostrel::detail::newObject<Rec>(nullptr, kOtherTag, __FILE__, __LINE__);
  EXPECT_DEATH(ostrel::detail::checkTag(heap, kRecTag, "Src/PbItem.cpp", 13),
               "crash exit \\(Src/PbItem\\.cpp:13\\)");
  ostrel::detail::endObject(heap, __FILE__, __LINE__);

  ostrel::detail::endObject(&rec, __FILE__, __LINE__);
  const int line = __LINE__ + 1;
  EXPECT_DEATH(OSTREL_CHECK(&rec, kRecTag),
               "crash exit \\(tests/OstrelTest\\.cpp:" + std::to_string(line) + "\\)");
}

// ---- Trace frames ----------------------------------------------------------------

std::string content(IStrm *strm) {
  return {reinterpret_cast<const char *>(MemStrm_data(strm)),
          static_cast<size_t>(IStrm_size(strm))};
}

TEST_F(FrameTest, OpenOutputReplacesOrAppends) {
  tarnex::ScratchMemStrm out(0);
  IStrm_puts(out, "old text", -1);
  IStrm_rewind(out);
  ostrel::detail::openOutput(out, 1);
  IStrm_puts(out, "+more", -1);
  EXPECT_EQ(content(out), "old text+more") << "append writes behind, wherever the position was";

  ostrel::detail::openOutput(out, 0);
  EXPECT_EQ(IStrm_size(out), 0);
  IStrm_puts(out, "new", -1);
  EXPECT_EQ(content(out), "new");
}

TEST_F(FrameTest, TraceLinesWritesOnlyMembersThatAreSet) {
  tarnex::ScratchMemStrm out(0);
  KvoStr empty, name;
  KvoStr_new(&empty);
  KvoStr_setStr(KvoStr_new(&name), "Anna");
  KvoWcs noWide, wide;
  KvoWcs_new(&noWide);
  KvoWcs_new(&wide);
  const KvoWchar units[] = {'M', 0x00FC, 'l', 0xD83D, 0xDE00, 0};
  KvoWcs_setWcsx(&wide, units, -1);

  ostrel::detail::TraceLines lines(out);
  lines.text("null", nullptr);
  lines.text("blank", "");
  lines.text("loc", "home");
  lines.str("empty", &empty);
  lines.str("name", &name);
  lines.wcs("noWide", &noWide);
  lines.wcs("wide", &wide);
  lines.num("zero", 0);
  lines.num("size", -4096);
  EXPECT_EQ(content(out),
            "loc = home\n"
            "name = Anna\n"
            "wide = M\xC3\xBCl\xF0\x9F\x98\x80\n"
            "size = -4096\n");
  KvoStr_delete(&empty);
  KvoStr_delete(&name);
  KvoWcs_delete(&noWide);
  KvoWcs_delete(&wide);
}

void tracedFunction() { OSTREL_FUNC_TRACE(); }

struct MarkerCase {
  int32_t module;
  uint32_t categories;
  int32_t maxLevel;
  bool written;
};

constexpr MarkerCase kMarkerCases[] = {
    {6, 0x8, 3, true},    // exactly what the markers need
    {6, 0x10F, 9, true},  // more than they need
    {6, 0x8, 2, false},   // level 3 is more detail than selected
    {6, 0x7, 3, false},   // every category but theirs
    {5, 0x8, 3, false},   // another module
};

TEST_F(FrameTest, FunctionMarkersNeedCategory8Level3OfModule6) {
  for (const MarkerCase &c : kMarkerCases) {
    SCOPED_TRACE(testing::Message() << "select(" << c.module << ", 0x" << std::hex
                                    << c.categories << std::dec << ", " << c.maxLevel << ")");
    DbgMng_reset();
    DbgMng_select(c.module, c.categories, c.maxLevel);
    seen_.blocks.clear();
    tracedFunction();
    if (c.written) {
      ASSERT_EQ(seen_.blocks.size(), 2u);
      EXPECT_EQ(seen_.blocks[0].rfind(">> tracedFunction (tests/OstrelTest.cpp:", 0), 0u)
          << seen_.blocks[0];
      EXPECT_EQ(seen_.blocks[1], "<< tracedFunction\n");
    } else {
      EXPECT_TRUE(seen_.blocks.empty());
    }
  }
}

TEST_F(FrameTest, TraceMacroWritesOneBlockWhenSelected) {
  OSTREL_TRACE(ostrel::detail::kCatField, 3, "[%s: %s]", "N", "Doe");
  EXPECT_TRUE(seen_.blocks.empty());
  DbgMng_select(6, ostrel::detail::kCatField, 1);
  OSTREL_TRACE(ostrel::detail::kCatField, 3, "[%s: %s]", "N", "Doe");
  OSTREL_TRACE(ostrel::detail::kCatField, 1, "dec pdu, unkown type");
  EXPECT_EQ(seen_.blocks, std::vector<std::string>{"dec pdu, unkown type\n"});
}

void recTracex(Rec *rec, IStrm *strm, int32_t append) {
  ostrel::detail::openOutput(strm, append);
  IStrm_puts(strm, "# Rec beg......\n", -1);
  ostrel::detail::TraceLines(strm).num("value", rec->value);
  IStrm_puts(strm, "# Rec end !!!!!!\n", -1);
}

TEST_F(FrameTest, TraceRecordHandsTheTracexTextOver) {
  Rec rec{kRecTag, 0, 7, {}};
  ostrel::detail::traceRecord(&rec, recTracex);
  EXPECT_TRUE(seen_.blocks.empty()) << "nothing is written while tracing is off";
  DbgMng_select(6, ostrel::detail::kCatFunc, 3);
  ostrel::detail::traceRecord(&rec, recTracex);
  EXPECT_EQ(seen_.blocks,
            std::vector<std::string>{"# Rec beg......\nvalue = 7\n# Rec end !!!!!!\n"});
}

}  // namespace
