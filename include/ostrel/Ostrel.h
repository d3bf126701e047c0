/*
 * ostrel/Ostrel.h - start and stop of the library, and its conventions.
 *
 * Conventions of every ostrel header:
 *   1. Plain C over the foundation's types (tarnex/tarnex.h): records hold
 *      KvoStr/KvoWcs text, KvoDt dates and stream objects by value.
 *   2. Records are tagged structures. `_new(null)` allocates; `_new(p)`
 *      constructs in the caller's storage p. `_delete` releases what the
 *      record holds and frees only what `_new` allocated. `_clone` always
 *      gives a heap record. The caller owns every record it creates.
 *   3. A wrong, null or deleted record is misuse and ends in
 *      ObjUtil_crashExit; a broken precondition (a null stream, say) is
 *      reported through kvo_assert__ and the call does nothing harmful.
 *   4. What the data can get wrong is a result code (see below).
 *   5. Call Ostrel_init before anything else and Ostrel_exit once for each
 *      Ostrel_init. The library keeps no other state between calls.
 */
#ifndef OSTREL_OSTREL_H
#define OSTREL_OSTREL_H

#include <stdint.h>

#include "tarnex/tarnex.h"

#if defined(_WIN32)
#define OSTREL_API __declspec(dllexport)
#else
#define OSTREL_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Result codes. */
#define OSTREL_OBJECT 1          /* a text decoder has read an object */
#define OSTREL_OK 0              /* success; no further object */
#define OSTREL_PARTS (-1)        /* bad part count or end of stream (MMS) */
#define OSTREL_NOT_FOUND (-25)   /* a medium or type not found */
#define OSTREL_SHORT (-51)       /* an MMS header string that ends early */
#define OSTREL_NO_FILE (-64)     /* a file that can't be opened */
#define OSTREL_CANT (-81)        /* a value the PDU codec can't handle */
#define OSTREL_BAD_KIND (-94)    /* a listing record of no known kind */
#define OSTREL_EOS (-202)        /* end of stream; end of a listing */
#define OSTREL_MALFORMED (-251)  /* a malformed property line or rule */

/* The decoder object of the XML listings (opaque): from a family's
 * _decBeg, ended by its _decEnd. */
typedef struct XmlListDec XmlListDec;

/* Starts the library (the foundation on the first start). Returns 0. */
OSTREL_API int32_t Ostrel_init(void);
/* Stops it; the last stop stops the foundation. An Ostrel_exit without its
 * Ostrel_init is reported as "ret >= 0". */
OSTREL_API void Ostrel_exit(void);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_OSTREL_H */
