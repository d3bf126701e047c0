// Memory, misuse handlers, atomic counters and the start count.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <latch>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tarnex/base.h"
#include "tarnex/trace.h"

// Huge requests give null under AddressSanitizer too, so the death tests see our own path.
extern "C" __attribute__((visibility("default"), used)) const char *__asan_default_options() {
  return "allocator_may_return_null=1";
}

namespace {

struct AssertSeen {
  int calls = 0;
  std::string last;  // "text file:line"
};

void recordAssert(void *ctx, const char *text, const char *file, int32_t line) {
  auto *seen = static_cast<AssertSeen *>(ctx);  // a wrong context would not count
  ++seen->calls;
  seen->last = std::string(text) + " " + file + ":" + std::to_string(line);
}
void otherAssert(void *, const char *, const char *, int32_t) {}
void returningCrash(void *, const char *file, int32_t line) {
  std::fprintf(stderr, "handler saw %s:%d\n", file, static_cast<int>(line));
}

TEST(KvoMalloc, CountsAllocationsAndGrowingReallocsOnly) {
  const uint64_t before = Tarnex_allocCount();
  void *b = kvo_malloc__(0, __FILE__, __LINE__), *c = kvo_malloc__(0, __FILE__, __LINE__);
  ASSERT_TRUE(b != nullptr && c != nullptr);
  EXPECT_NE(b, c) << "size 0 must give distinct pointers";
  for (void *p : {b, c, static_cast<void *>(nullptr)}) kvo_free__(p, __FILE__, __LINE__);
  EXPECT_EQ(Tarnex_allocCount(), before + 2) << "frees are not counted";
  // realloc of null allocates, growing counts, shrinking does not; size 0 stays a live block.
  char *p = nullptr;
  uint64_t want = before + 2;
  for (const auto &[size, counted] : {std::pair<size_t, int>{8, 1}, {1 << 20, 1}, {4, 0}, {0, 0}}) {
    p = static_cast<char *>(kvo_realloc__(p, size, __FILE__, __LINE__));
    ASSERT_NE(p, nullptr) << size;
    EXPECT_EQ(Tarnex_allocCount(), want += counted) << size;
    if (size == 8) std::memcpy(p, "abcdefg", 8);
    EXPECT_EQ(std::memcmp(p, "abcdefg", std::min<size_t>(size, 8)), 0) << size;
  }
  kvo_free__(p, __FILE__, __LINE__);
}

TEST(CrashExitDeath, OutOfMemoryEndsAtTheCallerEvenIfTheHandlerReturns) {
  EXPECT_DEATH(kvo_malloc__(SIZE_MAX / 2, "alloc.cpp", 17), "crash exit \\(alloc\\.cpp:17\\)");
  EXPECT_DEATH(kvo_realloc__(kvo_malloc__(8, __FILE__, __LINE__), SIZE_MAX / 2, "grow.cpp", 23),
               "crash exit \\(grow\\.cpp:23\\)");
  EXPECT_DEATH((Tarnex_setCrashHandler(returningCrash, nullptr, nullptr),
                ObjUtil_crashExit("Src/CalItem.cpp", 7)),
               "handler saw Src/CalItem\\.cpp:7")
      << "a handler that returns must not let the caller go on";
}

TEST(KvoAssert, HandlersAreReplacedRestoredAndGivenBack) {
  AssertSeen seen;
  void *oldCtx = &seen;  // must be overwritten with the default's context
  EXPECT_EQ(Tarnex_setAssertHandler(recordAssert, &seen, &oldCtx), nullptr);
  EXPECT_EQ(oldCtx, nullptr) << "the default is given back as null";
  kvo_assert__("strm", "Src/VcardEd.cpp", 123);
  EXPECT_EQ(seen.last, "strm Src/VcardEd.cpp:123");
  // A null word is reported, not dereferenced.
  EXPECT_EQ(AlAtom_inc(nullptr), 0);
  EXPECT_EQ(AlAtom_dec(nullptr), 0);
  EXPECT_EQ(seen.calls, 3);
  EXPECT_EQ(seen.last.rfind("word ", 0), 0u) << seen.last;

  int other = 0;
  EXPECT_EQ(Tarnex_setAssertHandler(otherAssert, &other, &oldCtx), &recordAssert);
  EXPECT_EQ(oldCtx, &seen);
  EXPECT_EQ(Tarnex_setAssertHandler(nullptr, nullptr, nullptr), &otherAssert);
  testing::internal::CaptureStderr();
  kvo_assert__("ret >= 0", "Src/Ostrel", 21);
  kvo_assert__(nullptr, nullptr, 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "assert failed: ret >= 0 (Src/Ostrel:21)\nassert failed: ? (?:0)\n");
  EXPECT_EQ(seen.calls, 3) << "a restored default must not reach the old handler";
  // The crash handler has its own slot with the same contract.
  EXPECT_EQ(Tarnex_setCrashHandler(returningCrash, &other, &oldCtx), nullptr);
  EXPECT_EQ(oldCtx, nullptr);
  EXPECT_EQ(Tarnex_setCrashHandler(nullptr, nullptr, &oldCtx), &returningCrash);
  EXPECT_EQ(oldCtx, &other);
}

// Each increment must hand out a value no other saw, dec must give the new
// value, and the allocation counter must not lose a step.
TEST(AlAtom, CountersAreExactAcrossThreads) {
  constexpr int kThreads = 4, kEach = 20000;
  volatile int32_t word = 0;
  EXPECT_EQ(AlAtom_dec(&word), -1);
  EXPECT_EQ(AlAtom_inc(&word), 0);
  const uint64_t allocsBefore = Tarnex_allocCount();
  std::vector<std::vector<int32_t>> seen(kThreads);
  std::vector<std::thread> threads;
  std::latch start(kThreads), incsDone(kThreads);  // phases run in step
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&word, &start, &incsDone, &out = seen[t]] {
      start.arrive_and_wait();
      for (int i = 0; i < kEach; ++i) {
        out.push_back(AlAtom_inc(&word));
        kvo_free__(kvo_malloc__(16, __FILE__, __LINE__), __FILE__, __LINE__);
      }
      incsDone.arrive_and_wait();
      for (int i = 0; i < kEach; ++i) AlAtom_dec(&word);
    });
  for (auto &th : threads) th.join();
  EXPECT_EQ(Tarnex_allocCount(), allocsBefore + kThreads * kEach);
  EXPECT_EQ(word, 0);
  std::vector<int32_t> all;
  for (const auto &v : seen) all.insert(all.end(), v.begin(), v.end());
  std::sort(all.begin(), all.end());
  for (size_t i = 0; i < all.size(); ++i) ASSERT_EQ(all[i], static_cast<int32_t>(i + 1));
}

TEST(TarnexInit, NestsAndOnlyTheFirstStartResetsTracing) {
  ASSERT_EQ(Tarnex_startCount(), 0);
  DbgMng_setSink([](void *, const char *, int32_t) {}, nullptr);  // swallows blocks
  DbgMng_select(3, 0x1, 3);
  EXPECT_EQ(Tarnex_init(), 0);
  EXPECT_EQ(kvo_trc_enabled(), 0) << "the first start switches tracing off";
  DbgMng_select(3, 0x1, 3);
  testing::internal::CaptureStderr();
  tout_str("to stderr");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "to stderr\n") << "and the sink back to stderr";
  EXPECT_EQ(Tarnex_init(), 0);
  EXPECT_EQ(Tarnex_startCount(), 2);
  EXPECT_NE(kvo_trc_enabled(), 0) << "a nested start keeps the selection";
  Tarnex_exit();
  Tarnex_exit();
  EXPECT_EQ(Tarnex_startCount(), 0);
  DbgMng_reset();
  Tarnex_exit();  // an exit without its start is paid back by the next start
  EXPECT_EQ(Tarnex_startCount(), -1);
  Tarnex_init();
  EXPECT_EQ(Tarnex_startCount(), 0);
}

}  // namespace
