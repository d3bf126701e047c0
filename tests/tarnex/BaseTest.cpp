// Memory, misuse handlers, atomic counters and the start count.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "tarnex/base.h"
#include "tarnex/trace.h"

// Lets a huge request fail with null under AddressSanitizer too, so that the
// allocators' own out-of-memory path is what the death tests see. (Built
// with hidden visibility, the hook must be made visible to be found.)
extern "C" __attribute__((visibility("default"), used)) const char *__asan_default_options() {
  return "allocator_may_return_null=1";
}

namespace {

struct AssertSeen {
  int calls = 0;
  std::string text, file;
  int32_t line = 0;
  void *ctx = nullptr;
};

void recordAssert(void *ctx, const char *text, const char *file, int32_t line) {
  auto *seen = static_cast<AssertSeen *>(ctx);
  ++seen->calls;
  seen->text = text;
  seen->file = file;
  seen->line = line;
  seen->ctx = ctx;
}

void otherAssert(void *, const char *, const char *, int32_t) {}

void returningCrash(void *, const char *file, int32_t line) {
  std::fprintf(stderr, "handler saw %s:%d\n", file, static_cast<int>(line));
}

TEST(KvoMalloc, CountsEachAllocationAndNotFrees) {
  const uint64_t before = Tarnex_allocCount();
  void *a = kvo_malloc__(32, __FILE__, __LINE__);
  void *b = kvo_malloc__(0, __FILE__, __LINE__);
  void *c = kvo_malloc__(0, __FILE__, __LINE__);
  EXPECT_EQ(Tarnex_allocCount(), before + 3);
  ASSERT_NE(b, nullptr);
  ASSERT_NE(c, nullptr);
  EXPECT_NE(b, c) << "size 0 must give distinct pointers";
  std::memset(a, 0x5A, 32);
  kvo_free__(a, __FILE__, __LINE__);
  kvo_free__(b, __FILE__, __LINE__);
  kvo_free__(c, __FILE__, __LINE__);
  kvo_free__(nullptr, __FILE__, __LINE__);
  EXPECT_EQ(Tarnex_allocCount(), before + 3);
}

TEST(KvoRealloc, CountsGrowingCallsAndKeepsContent) {
  const uint64_t before = Tarnex_allocCount();
  auto *p = static_cast<char *>(kvo_realloc__(nullptr, 8, __FILE__, __LINE__));
  EXPECT_EQ(Tarnex_allocCount(), before + 1) << "realloc of null is an allocation";
  std::memcpy(p, "abcdefg", 8);
  p = static_cast<char *>(kvo_realloc__(p, 1 << 20, __FILE__, __LINE__));
  EXPECT_EQ(Tarnex_allocCount(), before + 2);
  EXPECT_STREQ(p, "abcdefg");
  p = static_cast<char *>(kvo_realloc__(p, 4, __FILE__, __LINE__));
  EXPECT_EQ(Tarnex_allocCount(), before + 2) << "shrinking finds no new storage";
  EXPECT_EQ(std::memcmp(p, "abcd", 4), 0);
  p = static_cast<char *>(kvo_realloc__(p, 0, __FILE__, __LINE__));
  ASSERT_NE(p, nullptr) << "size 0 still gives a live block";
  kvo_free__(p, __FILE__, __LINE__);
}

TEST(KvoMalloc, CounterIsExactUnderThreads) {
  constexpr int kThreads = 4, kEach = 2000;
  const uint64_t before = Tarnex_allocCount();
  std::vector<std::thread> threads;
  std::latch start(kThreads);
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&start] {
      start.arrive_and_wait();
      for (int i = 0; i < kEach; ++i) kvo_free__(kvo_malloc__(16, __FILE__, __LINE__), __FILE__, 0);
    });
  for (auto &th : threads) th.join();
  EXPECT_EQ(Tarnex_allocCount(), before + kThreads * kEach);
}

TEST(KvoMallocDeath, OutOfMemoryTakesTheCrashExitAtTheCaller) {
  EXPECT_DEATH(kvo_malloc__(SIZE_MAX / 2, "alloc.cpp", 17), "crash exit \\(alloc\\.cpp:17\\)");
  EXPECT_DEATH(
      {
        void *p = kvo_malloc__(8, __FILE__, __LINE__);
        kvo_realloc__(p, SIZE_MAX / 2, "grow.cpp", 23);
      },
      "crash exit \\(grow\\.cpp:23\\)");
}

TEST(KvoAssert, ReplacedHandlerSeesTextFileLineAndReturns) {
  AssertSeen seen;
  void *oldCtx = &seen;  // must be overwritten with the default's context
  const KvoAssertHandler old = Tarnex_setAssertHandler(recordAssert, &seen, &oldCtx);
  EXPECT_EQ(old, nullptr) << "the default is given back as null";
  EXPECT_EQ(oldCtx, nullptr);

  kvo_assert__("strm", "Src/VcardEd.cpp", 123);
  EXPECT_EQ(seen.calls, 1);
  EXPECT_EQ(seen.text, "strm");
  EXPECT_EQ(seen.file, "Src/VcardEd.cpp");
  EXPECT_EQ(seen.line, 123);
  EXPECT_EQ(seen.ctx, &seen);

  // The setter hands back what it replaced, so a caller can restore it.
  int other = 0;
  EXPECT_EQ(Tarnex_setAssertHandler(otherAssert, &other, &oldCtx), &recordAssert);
  EXPECT_EQ(oldCtx, &seen);
  EXPECT_EQ(Tarnex_setAssertHandler(nullptr, nullptr, nullptr), &otherAssert);
  kvo_assert__("ignored", "x", 1);
  EXPECT_EQ(seen.calls, 1) << "a restored default must not reach the old handler";
}

TEST(KvoAssert, DefaultPrintsOneLineAndReturns) {
  testing::internal::CaptureStderr();
  kvo_assert__("ret >= 0", "Src/Ostrel", 21);
  kvo_assert__(nullptr, nullptr, 0);
  const std::string err = testing::internal::GetCapturedStderr();
  EXPECT_EQ(err, "assert failed: ret >= 0 (Src/Ostrel:21)\nassert failed: ? (?:0)\n");
}

TEST(CrashExitDeath, DefaultPrintsAndEnds) {
  EXPECT_DEATH(ObjUtil_crashExit("Src/PbItem.cpp", 42), "crash exit \\(Src/PbItem\\.cpp:42\\)");
}

TEST(CrashExitDeath, ReplacedHandlerThatReturnsStillEnds) {
  EXPECT_DEATH(
      {
        Tarnex_setCrashHandler(returningCrash, nullptr, nullptr);
        ObjUtil_crashExit("Src/CalItem.cpp", 7);
        std::fprintf(stderr, "went on after the crash exit\n");
      },
      "handler saw Src/CalItem\\.cpp:7");
}

TEST(CrashExit, SetterGivesBackThePreviousHandler) {
  int ctx = 0;
  void *oldCtx = &ctx;
  EXPECT_EQ(Tarnex_setCrashHandler(returningCrash, &ctx, &oldCtx), nullptr);
  EXPECT_EQ(oldCtx, nullptr);
  EXPECT_EQ(Tarnex_setCrashHandler(nullptr, nullptr, &oldCtx), &returningCrash);
  EXPECT_EQ(oldCtx, &ctx);
}

TEST(AlAtom, GivesTheNewValue) {
  volatile int32_t word = 5;
  EXPECT_EQ(AlAtom_inc(&word), 6);
  EXPECT_EQ(AlAtom_dec(&word), 5);
  EXPECT_EQ(AlAtom_dec(&word), 4);
  volatile int32_t zero = 0;
  EXPECT_EQ(AlAtom_dec(&zero), -1);
}

TEST(AlAtom, NullWordIsReportedNotDereferenced) {
  AssertSeen seen;
  Tarnex_setAssertHandler(recordAssert, &seen, nullptr);
  EXPECT_EQ(AlAtom_inc(nullptr), 0);
  EXPECT_EQ(AlAtom_dec(nullptr), 0);
  Tarnex_setAssertHandler(nullptr, nullptr, nullptr);
  EXPECT_EQ(seen.calls, 2);
  EXPECT_EQ(seen.text, "word");
}

// Every increment must see a value no other increment saw: a load and a
// store done apart would hand out some value twice and lose a step.
TEST(AlAtom, EachNewValueIsSeenOnceAcrossThreads) {
  constexpr int kThreads = 4, kEach = 20000;
  volatile int32_t word = 0;
  std::vector<std::vector<int32_t>> seen(kThreads);
  std::vector<std::thread> threads;
  std::latch start(kThreads);  // all threads count at the same time
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&word, &start, &out = seen[t]] {
      out.reserve(kEach);
      start.arrive_and_wait();
      for (int i = 0; i < kEach; ++i) out.push_back(AlAtom_inc(&word));
    });
  for (auto &th : threads) th.join();
  std::vector<int32_t> all;
  for (const auto &v : seen) all.insert(all.end(), v.begin(), v.end());
  std::sort(all.begin(), all.end());
  ASSERT_EQ(all.size(), static_cast<size_t>(kThreads * kEach));
  for (size_t i = 0; i < all.size(); ++i) ASSERT_EQ(all[i], static_cast<int32_t>(i + 1));

  threads.clear();
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&word] {
      for (int i = 0; i < kEach; ++i) AlAtom_dec(&word);
    });
  for (auto &th : threads) th.join();
  EXPECT_EQ(word, 0);
}

void dropBlock(void *ctx, const char *, int32_t) { ++*static_cast<int *>(ctx); }

TEST(TarnexInit, NestsAndOnlyTheFirstStartResetsTracing) {
  ASSERT_EQ(Tarnex_startCount(), 0);
  int blocks = 0;
  DbgMng_setSink(dropBlock, &blocks);
  DbgMng_select(3, 0x1, 3);
  EXPECT_EQ(Tarnex_init(), 0);
  EXPECT_EQ(Tarnex_startCount(), 1);
  EXPECT_EQ(kvo_trc_enabled(), 0) << "the first start switches tracing off";

  DbgMng_select(3, 0x1, 3);
  testing::internal::CaptureStderr();
  tout_str("to stderr");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "to stderr\n")
      << "the first start puts the sink back on stderr";
  EXPECT_EQ(blocks, 0);

  EXPECT_EQ(Tarnex_init(), 0);
  EXPECT_EQ(Tarnex_startCount(), 2);
  EXPECT_NE(kvo_trc_enabled(), 0) << "a nested start keeps the selection";
  Tarnex_exit();
  EXPECT_EQ(Tarnex_startCount(), 1);
  Tarnex_exit();
  EXPECT_EQ(Tarnex_startCount(), 0);
  DbgMng_reset();
}

TEST(TarnexInit, ExitWithoutStartIsPaidBackByTheNextStart) {
  ASSERT_EQ(Tarnex_startCount(), 0);
  Tarnex_exit();
  EXPECT_EQ(Tarnex_startCount(), -1);
  Tarnex_init();
  EXPECT_EQ(Tarnex_startCount(), 0);
}

}  // namespace
