// Memory, misuse reports, atomic counters and the start count of the
// foundation.
//
// The allocators never give null: every caller in both libraries relies on
// usable storage and tests nothing, so running out of memory is taken as
// the crash exit at the caller's own file and line, where a report is most
// useful.
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#if defined(__GLIBC__) || defined(__linux__)
#include <malloc.h>
#define TARNEX_HAVE_USABLE_SIZE 1
#endif

#include "tarnex/base.h"
#include "tarnex/trace.h"

namespace {

std::atomic<uint64_t> gAllocs{0};
std::atomic<int32_t> gStarts{0};

const char *orUnknown(const char *text) { return text != nullptr ? text : "?"; }

void defaultAssert(void *, const char *text, const char *file, int32_t line) {
  std::fprintf(stderr, "assert failed: %s (%s:%d)\n", orUnknown(text), orUnknown(file),
               static_cast<int>(line));
}

void defaultCrash(void *, const char *file, int32_t line) {
  std::fprintf(stderr, "crash exit (%s:%d)\n", orUnknown(file), static_cast<int>(line));
  std::fflush(stderr);
}

// A replaceable handler: a null function means the default. The context is
// written before the function and read after it, so a report that sees a
// new function also sees its context.
template <class Fn>
struct Handler {
  std::atomic<Fn> fn{nullptr};
  std::atomic<void *> ctx{nullptr};

  Fn replace(Fn next, void *nextCtx, void **oldCtx) {
    void *const prevCtx = ctx.exchange(nextCtx, std::memory_order_acq_rel);
    const Fn prev = fn.exchange(next, std::memory_order_acq_rel);
    if (oldCtx != nullptr) *oldCtx = prevCtx;
    return prev;
  }
};

Handler<KvoAssertHandler> gAssert;
Handler<KvoCrashHandler> gCrash;
Handler<KvoClockFn> gClock;

// Room for at least size bytes; 0 asks for one so that every call gives a
// distinct pointer, which malloc(0) does not promise.
size_t roomFor(size_t size) { return size != 0 ? size : 1; }

// Whether a realloc of p to size may have to find new storage.
bool mayGrow(void *p, size_t size) {
#ifdef TARNEX_HAVE_USABLE_SIZE
  return size > malloc_usable_size(p);
#else
  (void)p;
  (void)size;
  return true;
#endif
}

}  // namespace

extern "C" {

// ---- Start and stop ---------------------------------------------------------

TARNEX_API int32_t Tarnex_init(void) {
  if (gStarts.fetch_add(1, std::memory_order_acq_rel) + 1 == 1) {
    DbgMng_reset();
    DbgMng_setSink(nullptr, nullptr);
  }
  return 0;
}

TARNEX_API void Tarnex_exit(void) { gStarts.fetch_sub(1, std::memory_order_acq_rel); }

TARNEX_API int32_t Tarnex_startCount(void) {
  return gStarts.load(std::memory_order_acquire);
}

TARNEX_API int32_t AlAtom_inc(volatile int32_t *word) {
  if (word == nullptr) {
    kvo_assert__("word", __FILE__, __LINE__);
    return 0;
  }
  return __atomic_add_fetch(word, 1, __ATOMIC_SEQ_CST);
}

TARNEX_API int32_t AlAtom_dec(volatile int32_t *word) {
  if (word == nullptr) {
    kvo_assert__("word", __FILE__, __LINE__);
    return 0;
  }
  return __atomic_sub_fetch(word, 1, __ATOMIC_SEQ_CST);
}

// ---- Memory -------------------------------------------------------------------

TARNEX_API void *kvo_malloc__(size_t size, const char *file, int32_t line) {
  void *p = std::malloc(roomFor(size));
  if (p == nullptr) {
    std::fprintf(stderr, "out of memory: %zu bytes\n", size);
    ObjUtil_crashExit(file, line);
  }
  gAllocs.fetch_add(1, std::memory_order_relaxed);
  return p;
}

TARNEX_API void *kvo_realloc__(void *p, size_t size, const char *file, int32_t line) {
  const bool grows = p == nullptr || mayGrow(p, size);
  // realloc(p, 0) may free p and give null; asking for one byte keeps the
  // promise that the result is a live block.
  void *q = std::realloc(p, roomFor(size));
  if (q == nullptr) {
    std::fprintf(stderr, "out of memory: %zu bytes\n", size);
    ObjUtil_crashExit(file, line);
  }
  if (grows) gAllocs.fetch_add(1, std::memory_order_relaxed);
  return q;
}

TARNEX_API void kvo_free__(void *p, const char *, int32_t) { std::free(p); }

TARNEX_API uint64_t Tarnex_allocCount(void) {
  return gAllocs.load(std::memory_order_relaxed);
}

// ---- Misuse reports --------------------------------------------------------------

TARNEX_API void kvo_assert__(const char *text, const char *file, int32_t line) {
  const KvoAssertHandler fn = gAssert.fn.load(std::memory_order_acquire);
  void *const ctx = gAssert.ctx.load(std::memory_order_acquire);
  (fn != nullptr ? fn : defaultAssert)(ctx, text, file, line);
}

TARNEX_API void ObjUtil_crashExit(const char *file, int32_t line) {
  const KvoCrashHandler fn = gCrash.fn.load(std::memory_order_acquire);
  void *const ctx = gCrash.ctx.load(std::memory_order_acquire);
  (fn != nullptr ? fn : defaultCrash)(ctx, file, line);
  // A handler that returns cannot make the misuse safe to go on from.
  std::abort();
}

TARNEX_API KvoAssertHandler Tarnex_setAssertHandler(KvoAssertHandler fn, void *ctx,
                                                    void **oldCtx) {
  return gAssert.replace(fn, ctx, oldCtx);
}

TARNEX_API KvoCrashHandler Tarnex_setCrashHandler(KvoCrashHandler fn, void *ctx,
                                                  void **oldCtx) {
  return gCrash.replace(fn, ctx, oldCtx);
}

// ---- The clock -------------------------------------------------------------------------

TARNEX_API uint32_t kvo_time32(void) {
  const KvoClockFn fn = gClock.fn.load(std::memory_order_acquire);
  if (fn != nullptr) return fn(gClock.ctx.load(std::memory_order_acquire));
  return static_cast<uint32_t>(std::time(nullptr));
}

TARNEX_API KvoClockFn Tarnex_setClock(KvoClockFn fn, void *ctx, void **oldCtx) {
  return gClock.replace(fn, ctx, oldCtx);
}

}  // extern "C"
