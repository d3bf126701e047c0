/*
 * tarnex/base.h - the foundation's start and stop, memory, misuse reports
 * and atomic counters.
 *
 * Conventions of every tarnex header:
 *   1. Plain C, usable from C and C++. Integers are fixed-width; a flag is
 *      an int32_t that is 0 or not 0.
 *   2. Lengths and counts are int32_t. A negative length passed where a
 *      text may be NUL-terminated means "up to the terminator"; elsewhere a
 *      negative length is treated as 0 unless the function says otherwise.
 *   3. Positions in streams are 64-bit.
 *   4. Allocators take the caller's source file and line, so that leaks and
 *      misuse can be traced to the place that made the object.
 *   5. Misuse (a null or dead object, a broken precondition) is not a result
 *      code: it goes to ObjUtil_crashExit or kvo_assert__, each of which
 *      reports through a replaceable handler.
 */
#ifndef TARNEX_BASE_H
#define TARNEX_BASE_H

#include <stddef.h>
#include <stdint.h>

/* The foundation's own build defines TARNEX_BUILDING; a program that uses
 * the DLL on Windows must import what the DLL exports. */
#if defined(_WIN32) && defined(TARNEX_BUILDING)
#define TARNEX_API __declspec(dllexport)
#elif defined(_WIN32)
#define TARNEX_API __declspec(dllimport)
#else
#define TARNEX_API __attribute__((visibility("default")))
#endif

#if defined(__GNUC__)
#define TARNEX_NORETURN __attribute__((noreturn))
#else
#define TARNEX_NORETURN
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* One unit of 16-bit text, in host byte order. */
typedef uint16_t KvoWchar;

/* Result codes shared by the foundation and the library. */
#define KVO_EOS (-202)       /* end of stream */
#define KVO_MALFORMED (-251) /* malformed input */
#define KVO_CANT (-81)       /* a value the operation cannot handle */
#define KVO_NOFILE (-64)     /* a file that cannot be opened */

/* ---- Start and stop ---------------------------------------------------- */

/* Starts the foundation. Returns 0. Calls nest: each Tarnex_init needs one
 * Tarnex_exit. The foundation works without being started; starting only
 * resets the trace manager to its defaults (all off, stderr) on the first
 * start, the one that takes the count from 0 to 1. A Tarnex_exit without
 * its start is counted too (the count goes below 0), so that the start
 * which comes late pays it back and the count stays balanced. */
TARNEX_API int32_t Tarnex_init(void);
TARNEX_API void Tarnex_exit(void);
/* How many starts are outstanding (for tests and diagnostics). */
TARNEX_API int32_t Tarnex_startCount(void);

/* Atomically add or take 1 from *word and give the new value. A null word
 * is reported through kvo_assert__ and gives 0. */
TARNEX_API int32_t AlAtom_inc(volatile int32_t *word);
TARNEX_API int32_t AlAtom_dec(volatile int32_t *word);

/* ---- Memory -------------------------------------------------------------- */

/* Never returns null: when memory is exhausted the crash exit is taken.
 * A size of 0 gives a valid, unique pointer. */
TARNEX_API void *kvo_malloc__(size_t size, const char *file, int32_t line);
/* Grows or shrinks p (which may be null); never returns null. */
TARNEX_API void *kvo_realloc__(void *p, size_t size, const char *file, int32_t line);
/* Frees p; a null p is allowed and does nothing. */
TARNEX_API void kvo_free__(void *p, const char *file, int32_t line);

/* Number of kvo_malloc__ and growing kvo_realloc__ calls since the process
 * started (relaxed counter; for benchmarks and tests that count heap use).
 * A kvo_realloc__ counts when p is null or the size is beyond what the
 * block can already hold, i.e. whenever it may have to find new storage. */
TARNEX_API uint64_t Tarnex_allocCount(void);

/* ---- Misuse reports --------------------------------------------------------- */

/* Reports a broken precondition `text` found at file:line, then returns.
 * Code behind a call goes on safely, because input can reach it. */
TARNEX_API void kvo_assert__(const char *text, const char *file, int32_t line);

/* Reports a wrong or dead object at file:line and ends the process. If a
 * replaced handler returns, the process is still ended with abort(). */
TARNEX_API TARNEX_NORETURN void ObjUtil_crashExit(const char *file, int32_t line);

typedef void (*KvoAssertHandler)(void *ctx, const char *text, const char *file,
                                 int32_t line);
typedef void (*KvoCrashHandler)(void *ctx, const char *file, int32_t line);

/* Replace the handlers; null restores the default (a line on stderr:
 * "assert failed: TEXT (FILE:LINE)", "crash exit (FILE:LINE)"). Each setter
 * gives back the handler it replaced (null for the default) and, when
 * oldCtx is not null, its context. Handlers are plain C: they must not
 * throw. Set them while no other thread can report; a handler and its
 * context are two words, and a report racing a change may see one old and
 * one new. */
TARNEX_API KvoAssertHandler Tarnex_setAssertHandler(KvoAssertHandler fn, void *ctx,
                                                    void **oldCtx);
TARNEX_API KvoCrashHandler Tarnex_setCrashHandler(KvoCrashHandler fn, void *ctx,
                                                  void **oldCtx);

/* ---- The clock ----------------------------------------------------------------- */

/* The current time in seconds since 1970-01-01 00:00:00 UTC as an unsigned
 * 32-bit value (good to 2106, where a signed one turns negative in 2038).
 * It is read through a replaceable source, so that a test can fix the time
 * as it replaces the assert handler; null restores the system clock. The
 * setter follows the rules of the handler setters above. */
typedef uint32_t (*KvoClockFn)(void *ctx);
TARNEX_API uint32_t kvo_time32(void);
TARNEX_API KvoClockFn Tarnex_setClock(KvoClockFn fn, void *ctx, void **oldCtx);

#ifdef __cplusplus
}
#endif

#endif /* TARNEX_BASE_H */
