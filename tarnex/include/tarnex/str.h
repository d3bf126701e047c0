/*
 * tarnex/str.h - growing 8-bit (KvoStr) and 16-bit (KvoWcs) strings.
 *
 * Both are held by value inside records and locals. Their storage is always
 * terminated (by a 0 byte or a 0 unit), so the buffer can be handed to C
 * string functions; the length is kept, so embedded 0 bytes are allowed and
 * are kept by every operation that takes an explicit length.
 *
 * Storage: a string made by _new starts on a shared, read-only empty text
 * and takes heap storage on its first write. A string made by StrExt_new__
 * or WcsExt_new__ starts in a caller's buffer (typically on the stack) and
 * moves to the heap only when its content outgrows that buffer; the old
 * content is carried over. _clear keeps the storage, _clearx gives heap
 * storage back (and returns to the caller's buffer, if there was one).
 * _delete frees heap storage; the caller's buffer is never freed.
 *
 * 8-bit text is UTF-8 (or plain ASCII). Appending 16-bit units
 * (KvoStr_setCwcs, KvoStr_appdWchar) converts to UTF-8; a high surrogate
 * followed by a low surrogate becomes one 4-byte sequence, also when the
 * two units come in two KvoStr_appdWchar calls. A surrogate without its
 * partner is kept in the 3-byte form of its code (as WTF-8 does), so that a
 * 16-bit text survives the trip to 8-bit and back unit for unit.
 *
 * Null string pointers are misuse: kvo_assert__ reports them and the call
 * does nothing (returns 0 or the empty text). A null text argument reads as
 * the empty text.
 */
#ifndef TARNEX_STR_H
#define TARNEX_STR_H

#include <stdarg.h>
#include "tarnex/base.h"

#ifdef __cplusplus
extern "C" {
#endif

struct IStrm;

typedef struct KvoStr {
  char *buf;        /* terminated text; never null once constructed */
  int32_t len;      /* bytes before the terminator */
  int32_t cap;      /* bytes of storage at buf, terminator included; 0: shared empty text */
  char *ext;        /* the caller's buffer of StrExt_new__, or null */
  int32_t extSize;  /* its size in bytes */
  int32_t onHeap;   /* not 0: buf is heap storage owned by the string */
} KvoStr;

typedef struct KvoWcs {
  KvoWchar *buf;    /* terminated text; never null once constructed */
  int32_t len;      /* units before the terminator */
  int32_t cap;      /* units of storage at buf, terminator included */
  KvoWchar *ext;    /* the caller's buffer of WcsExt_new__, or null */
  int32_t extSize;  /* its size in units */
  int32_t onHeap;
} KvoWcs;

/* ---- KvoStr: life ------------------------------------------------------- */

TARNEX_API KvoStr *KvoStr_new(KvoStr *s);
/* Starts s in buf (size bytes, at least 1). A null buf or size < 1 gives a
 * plain KvoStr_new. */
TARNEX_API KvoStr *StrExt_new__(KvoStr *s, char *buf, int32_t size);
TARNEX_API void KvoStr_delete(KvoStr *s);
TARNEX_API void KvoStr_clear(KvoStr *s);
TARNEX_API void KvoStr_clearx(KvoStr *s);
TARNEX_API char *KvoStr_buf(const KvoStr *s);
TARNEX_API int32_t KvoStr_len(const KvoStr *s);
/* Makes room for n more bytes behind the content (and the terminator), and
 * gives the place to write them, KvoStr_buf(s) + KvoStr_len(s); the caller
 * then calls KvoStr_setLen. Null if the length would pass 2^31 - 2. */
TARNEX_API char *KvoStr_reserve(KvoStr *s, int32_t n);
/* Sets the length (0..room), writing the terminator. */
TARNEX_API void KvoStr_setLen(KvoStr *s, int32_t n);

/* ---- KvoStr: replace ---------------------------------------------------------- */
/* Each returns s. */

TARNEX_API KvoStr *KvoStr_setStr(KvoStr *s, const char *text);
/* n bytes of text, or up to its terminator when n < 0. */
TARNEX_API KvoStr *KvoStr_setStrx(KvoStr *s, const char *text, int32_t n);
TARNEX_API KvoStr *KvoStr_setCstr(KvoStr *s, const KvoStr *other);
TARNEX_API KvoStr *KvoStr_setCwcs(KvoStr *s, const KvoWcs *wide);
/* Reads n bytes from the stream's position, or all that is left if n < 0;
 * fewer if the stream ends first. */
TARNEX_API KvoStr *KvoStr_setStrm(KvoStr *s, struct IStrm *strm, int32_t n);
TARNEX_API KvoStr *KvoStr_setf(KvoStr *s, const char *format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 2, 3)))
#endif
    ;

/* ---- KvoStr: append ------------------------------------------------------------ */

TARNEX_API KvoStr *KvoStr_appdChar(KvoStr *s, char c);
TARNEX_API KvoStr *KvoStr_appdStr(KvoStr *s, const char *text);
TARNEX_API KvoStr *KvoStr_appdStrx(KvoStr *s, const char *text, int32_t n);
TARNEX_API KvoStr *KvoStr_appdCstr(KvoStr *s, const KvoStr *other);
TARNEX_API KvoStr *KvoStr_appdStrm(KvoStr *s, struct IStrm *strm, int32_t n);
TARNEX_API KvoStr *KvoStr_appdLong(KvoStr *s, int64_t v);
TARNEX_API KvoStr *KvoStr_appdUlong(KvoStr *s, uint64_t v);
/* Appends one UTF-16 unit or one code point (up to 0x10FFFF) as UTF-8;
 * see the surrogate rule above. A value above 0x10FFFF appends U+FFFD. */
TARNEX_API KvoStr *KvoStr_appdWchar(KvoStr *s, uint32_t unit);
TARNEX_API KvoStr *KvoStr_appdf(KvoStr *s, const char *format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 2, 3)))
#endif
    ;
/* The arguments of the formats must not point into s's own storage (as
 * with sprintf); KvoStr_appdStrx and KvoStr_appdCstr do allow that. */
TARNEX_API KvoStr *KvoStr_appdv(KvoStr *s, const char *format, va_list ap)
#if defined(__GNUC__)
    __attribute__((format(printf, 2, 0)))
#endif
    ;

/* ---- KvoWcs ------------------------------------------------------------------- */

TARNEX_API KvoWcs *KvoWcs_new(KvoWcs *w);
/* Starts w in buf (size units, at least 1). */
TARNEX_API KvoWcs *WcsExt_new__(KvoWcs *w, KvoWchar *buf, int32_t size);
TARNEX_API void KvoWcs_delete(KvoWcs *w);
TARNEX_API void KvoWcs_clear(KvoWcs *w);
TARNEX_API void KvoWcs_clearx(KvoWcs *w);
TARNEX_API KvoWchar *KvoWcs_buf(const KvoWcs *w);
TARNEX_API int32_t KvoWcs_len(const KvoWcs *w);

/* From UTF-8 text (up to its terminator). Malformed bytes become U+FFFD;
 * code points above U+FFFF become surrogate pairs. */
TARNEX_API KvoWcs *KvoWcs_setStr(KvoWcs *w, const char *utf8);
TARNEX_API KvoWcs *KvoWcs_setCwcs(KvoWcs *w, const KvoWcs *other);
/* Reads n bytes of UTF-8 from the stream (all that is left if n < 0). */
TARNEX_API KvoWcs *KvoWcs_setStrm(KvoWcs *w, struct IStrm *strm, int32_t n);
/* n units, or up to the terminating 0 unit when n < 0. */
TARNEX_API KvoWcs *KvoWcs_setWcsx(KvoWcs *w, const KvoWchar *units, int32_t n);
TARNEX_API KvoWcs *KvoWcs_appdChar(KvoWcs *w, KvoWchar c);
TARNEX_API KvoWcs *KvoWcs_appdCwcs(KvoWcs *w, const KvoWcs *other);
/* Swaps the two bytes of every unit. */
TARNEX_API KvoWcs *KvoWcs_turn(KvoWcs *w);
/* Gives w's buffer (its start) with room for n units and a terminator, to
 * be filled by the caller and closed by KvoWcs_useBufEnd(w, count), which
 * sets the length to count. The content is kept, so a caller may also
 * write behind it: n = KvoWcs_len(w) + more. A negative n is taken as 0. */
TARNEX_API KvoWchar *KvoWcs_useBufBeg(KvoWcs *w, int32_t n);
TARNEX_API void KvoWcs_useBufEnd(KvoWcs *w, int32_t n);

#ifdef __cplusplus
}
#endif

#endif /* TARNEX_STR_H */
