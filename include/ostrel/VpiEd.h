/*
 * ostrel/VpiEd.h - the property layer under every text format.
 *
 * A property line is: name, parameters each introduced by ";", ":", value,
 * CR LF. The parameters of a property are kept as one KvoStr exactly as
 * they stand on the line (";CHARSET=utf-8;HOME"), and are searched again
 * for every question; the value is kept in a stream, as UTF-8 once decoded
 * or as raw bytes for binary values.
 *
 * A composite value holds its components separated by ";", and inside a
 * component "\" protects the bytes of an escape set (";\" by default,
 * which a null or empty escChars selects).
 *
 * Results: the encoders give 0 or the first negative code of the output
 * stream; VpiDec_getStrm gives 1 for a property read, 0 at the end of the
 * stream, or a negative code (-251 for a malformed line).
 */
#ifndef OSTREL_VPIED_H
#define OSTREL_VPIED_H

#include "ostrel/Ostrel.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Charset codes. */
#define VPI_CS_NONE 0
#define VPI_CS_UCS2 1
#define VPI_CS_UTF8 2
#define VPI_CS_UTF7 3

/* Transfer encoding codes. */
#define VPI_ENC_NONE 0
#define VPI_ENC_BASE64 1
#define VPI_ENC_QP 2
#define VPI_ENC_B 3

/* Where the content of a value lies. */
#define VPI_LOC_INLINE 0
#define VPI_LOC_FILE 2
#define VPI_LOC_URL 3
#define VPI_LOC_CID 4

/* How the text encoders write lines; a null pointer means: all fields 0
 * except csKeyed 1, encKeyed 1, maxLine -1 (and escape counts as 1 in
 * VpiEnc_putStr/VpiEnc_putStrW). */
typedef struct VpiEncOpts {
  int32_t textCs;   /* charset of text with bytes >= 0x80; 0: VPI_CS_UTF8 */
  int32_t textEnc;  /* encoding of text that needs one; 0: VPI_ENC_QP */
  int32_t binEnc;   /* encoding of binary values; 0: VPI_ENC_BASE64 */
  int32_t hiBitEnc; /* not 0: a byte >= 0x80 also needs an encoding */
  int (*isEncChar)(int c); /* not null: decides per byte what needs an encoding */
  int32_t csKeyed;  /* not 0: ";CHARSET=..."; 0: the bare word */
  int32_t encKeyed; /* not 0: ";ENCODING=..."; 0: the bare word */
  int32_t maxLine;  /* 0: soft break at 252, QP width 76; N > 0: soft break
                       at N, QP unlimited; < 0: no breaks */
  int32_t escape;   /* escape flag of VpiEnc_putStr/VpiEnc_putStrW */
  int32_t noCs;     /* not 0: no charset parameter (the charset still applies) */
  int32_t reserved[3];
} VpiEncOpts;

/* ---- Parameters ---------------------------------------------------------- */

/* Finds key `name` (case ignored) with a value; copies the value to out
 * (outSize bytes, terminated) when out is not null. 1 found, 0 not. A bare
 * word never matches; the first match wins. */
OSTREL_API int32_t VpiParams_getAny(const KvoStr *params, const char *name, char *out,
                                    int32_t outSize);
/* Charset, encoding and location codes, by searching the whole text. */
OSTREL_API int32_t VpiParams_getCs(const KvoStr *params);
OSTREL_API int32_t VpiParams_getEnc(const KvoStr *params);
OSTREL_API int32_t VpiParams_getVl(const KvoStr *params);
/* VpiParams_getAny with the name "TYPE". */
OSTREL_API int32_t VpiParams_getFmt(const KvoStr *params, char *out, int32_t outSize);
/* Append ";VALUE=URL" / ";VALUE=CONTENT-ID" (nothing for inline) and
 * ";TYPE=fmt" (nothing for a null or empty fmt); give params. */
OSTREL_API KvoStr *VpiParams_putVl(KvoStr *params, int32_t loc);
OSTREL_API KvoStr *VpiParams_putFmt(KvoStr *params, const char *fmt);

/* ---- Values ---------------------------------------------------------------- */

/* Appends one component: nothing at all for a null or empty text; else ";"
 * unless noSep, then the text (len bytes, or to its terminator if len < 0)
 * or, when escaped, the text to its terminator with "\" before each byte of
 * the escape set. Gives 0 or a negative stream code. */
OSTREL_API int32_t VpiVal_addStr(IStrm *strm, const char *text, int32_t len,
                                 int32_t escaped, const char *escChars, int32_t noSep);
OSTREL_API int32_t VpiVal_addStrW(IStrm *strm, const KvoWchar *wtext, int32_t len,
                                  int32_t escaped, const char *escChars, int32_t noSep);
/* Reads the next component into out (replaced). Not 0 while there may be
 * more components or out is not empty; 0 when the value is used up. With
 * escaped 0 the rest of the value is one component. */
OSTREL_API int32_t VpiVal_getCstr(IStrm *strm, KvoStr *out, int32_t escaped,
                                  const char *escChars);
OSTREL_API int32_t VpiVal_getCwcs(IStrm *strm, KvoWcs *out, int32_t escaped,
                                  const char *escChars);
/* The next component as a new text (free with kvo_free__), or null when
 * VpiVal_getCstr gives 0. */
OSTREL_API char *VpiVal_getStr(IStrm *strm, int32_t escaped, const char *escChars);
OSTREL_API KvoWchar *VpiVal_getStrW(IStrm *strm, int32_t escaped, const char *escChars);

/* ---- Encoder ------------------------------------------------------------- */

/* Writes one property line: name, the charset and encoding parameters the
 * value needs, the caller's params (may be null), ":", the value (val read
 * from its start; null only with binary 1), CR LF. binary: 1 raw bytes, 0
 * UTF-8 text. */
OSTREL_API int32_t VpiEnc_putStrm(IStrm *strm, const char *name, const KvoStr *params,
                                  IStrm *val, int32_t binary, const VpiEncOpts *opts);
/* The bytes of a file (UTF-8 or 16-bit path) as a binary value; -64 when
 * the file can't be opened, with nothing written. */
OSTREL_API int32_t VpiEnc_putFile(IStrm *strm, const char *name, const KvoStr *params,
                                  const char *file, const VpiEncOpts *opts);
OSTREL_API int32_t VpiEnc_putFileW(IStrm *strm, const char *name, const KvoStr *params,
                                   const KvoWchar *file, const VpiEncOpts *opts);
/* A text value; len < 0: up to the terminator. Escaped by opts->escape
 * (null opts: escaped) with the default set. */
OSTREL_API int32_t VpiEnc_putStr(IStrm *strm, const char *name, const KvoStr *params,
                                 const char *text, int32_t len, const VpiEncOpts *opts);
OSTREL_API int32_t VpiEnc_putStrW(IStrm *strm, const char *name, const KvoStr *params,
                                  const KvoWchar *wtext, int32_t len,
                                  const VpiEncOpts *opts);
OSTREL_API int32_t VpiEnc_putStrx(IStrm *strm, const char *name, const KvoStr *params,
                                  const char *text, int32_t len, const VpiEncOpts *opts,
                                  int32_t escape, const char *escChars);
OSTREL_API int32_t VpiEnc_putStrxW(IStrm *strm, const char *name, const KvoStr *params,
                                   const KvoWchar *wtext, int32_t len,
                                   const VpiEncOpts *opts, int32_t escape,
                                   const char *escChars);
/* Inserts "X-IRMC-LUID:luid" CR LF behind the first VERSION line of the
 * stream. Gives 1 when VERSION was found (even for a null or empty luid,
 * which inserts nothing), 0 when there is none, or a negative code. */
OSTREL_API int32_t VpiEnc_putLuid(IStrm *strm, const char *luid);

/* ---- Decoder --------------------------------------------------------------- */

/* Reads one property from raw (at a line start): its name, its parameter
 * text, and its value, freed of its transfer encoding and converted to
 * UTF-8, rewound. 1 read, 0 end of stream, negative fault (outputs empty). */
OSTREL_API int32_t VpiDec_getStrm(IStrm *raw, KvoStr *name, KvoStr *params, IStrm *val);
/* From the start of raw, finds the first "X-IRMC-LUID" property and reads
 * its value into luid (may be null). 1 found, 0 not, negative fault. */
OSTREL_API int32_t VpiDec_getLuid(IStrm *raw, KvoStr *luid);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_VPIED_H */
