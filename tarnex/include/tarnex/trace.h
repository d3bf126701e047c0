/*
 * tarnex/trace.h - the trace manager.
 *
 * A trace statement names a module, a category bit and a level. It is
 * written only if tracing is on (kvo_trc_enabled) and the statement's
 * module has its category bit selected at a level at least as high as the
 * statement's (DbgMng_enabled__). Tracing is off by default; when off, a
 * guarded statement costs one call that reads one word.
 *
 * Where the text goes: by default to stderr; DbgMng_setSink redirects it.
 * A text block (tout_beg ... tout_endx) is collected and handed to the sink
 * in one piece at tout_endx, so blocks never interleave within a thread.
 * Traces never change a result.
 */
#ifndef TARNEX_TRACE_H
#define TARNEX_TRACE_H

#include "tarnex/base.h"

#ifdef __cplusplus
extern "C" {
#endif

struct IStrm;

#define KVO_TRC_MODULES 16

/* Not 0 when any module has any category selected. A statement at level L
 * is selected when its module has its category bit and L <= the module's
 * maxLevel: level 1 is the most important, higher levels add detail. */
TARNEX_API int32_t kvo_trc_enabled(void);
TARNEX_API int32_t DbgMng_enabled__(int32_t module, uint32_t category, int32_t level);

/* Selects categories (a bit set) of a module (0..15, or -1 for every
 * module) up to maxLevel; categories 0 switches the module off. Another
 * module number is reported through kvo_assert__ and changes nothing. */
TARNEX_API void DbgMng_select(int32_t module, uint32_t categories, int32_t maxLevel);
/* Switches every module off. */
TARNEX_API void DbgMng_reset(void);

/* Receives each finished block of text (not terminated; len bytes). It is
 * called on the thread that wrote the block; trace calls it makes itself
 * are dropped. */
typedef void (*DbgMngSink)(void *ctx, const char *text, int32_t len);
/* Null sink: stderr. */
TARNEX_API void DbgMng_setSink(DbgMngSink sink, void *ctx);

/* Marker pair at the head and foot of a function: ">> fn (file:line)" and
 * "<< fn", each a line of its own, sent at once (also in an open block,
 * which they leave alone). They test the selection themselves. */
TARNEX_API void DbgMng_outFbeg(const char *fn, const char *file, int32_t line,
                               int32_t module, uint32_t category, int32_t level);
TARNEX_API void DbgMng_outFend(const char *fn, const char *file, int32_t line,
                               int32_t module, uint32_t category, int32_t level);

/* A text block. tout_beg opens it; the writers add to it; tout_endx ends
 * it with a newline if it lacks one and sends it. A block whose statement
 * is not selected collects nothing and sends nothing. A tout_beg while a
 * block is open ends that block first; a tout_endx without a block does
 * nothing. Writers outside a block open one of their own, which is sent
 * when they return and only when tracing is on (kvo_trc_enabled). Null
 * texts, null data and negative counts write nothing. */
TARNEX_API void tout_beg(const char *file, int32_t line, int32_t module, uint32_t category,
                         int32_t level);
TARNEX_API void tout_fmt(const char *format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 1, 2)))
#endif
    ;
TARNEX_API void tout_str(const char *text);
/* 16-bit text up to its 0 unit, as UTF-8; a surrogate without its partner
 * is written in the 3-byte form of its code, as KvoStr_setCwcs does. */
TARNEX_API void tout_wcs(const KvoWchar *text);
/* n bytes as hexadecimal, 16 a line, each line led by the offset of its
 * first byte ("0010: 41 42 ..."), starting on a line of its own. */
TARNEX_API void tout_hex(const void *data, int32_t n);
/* The whole content of the stream, from its start whatever its position;
 * the position is restored. */
TARNEX_API void tout_tstrm(struct IStrm *strm);
TARNEX_API void tout_endx(void);

#ifdef __cplusplus
}
#endif

#endif /* TARNEX_TRACE_H */
