/*
 * tarnex/xml.h - a streaming XML parser that can stop inside its own
 * callback and go on later, and the decoder frame that routes its events
 * through a stack of contexts.
 *
 * The parser (XmlPsr) reads a stream from its position and hands each
 * event to the decoder bound to it (XmlDec). A callback may stop the parser
 * (XmlPsr_stop(psr, 1)); the parse call then returns XML_PSR_STOPPED and
 * XmlPsr_resume goes on from the next event. After a stop the parser still
 * delivers the end of an empty element (<a/>), since it is the same token.
 *
 * Input is taken to be hostile:
 *   - entity declarations are refused (XML_PSR_REFUSED) at once, which ends
 *     every expansion bomb; the rest of an internal subset (ATTLIST, say)
 *     is allowed; no external entity or DTD is ever loaded. A reference to
 *     an undeclared entity fails, unless the DOCTYPE names an external DTD
 *     (which could have declared it): then it is dropped.
 *   - each parser has a memory budget (XML_PSR_BUDGET bytes); past it the
 *     parse fails with XML_PSR_OVER_BUDGET. This bounds one huge tag and the
 *     names the parser keeps for the whole document.
 *   - elements nest at most XML_PSR_MAX_DEPTH deep (XML_PSR_TOO_DEEP).
 *   - text is never gathered: character data reaches the callbacks in the
 *     pieces the parser has.
 *   - the time is linear in the stream's length whatever the size of the
 *     stream's reads: reads are gathered while a token is pending.
 *   - NUL bytes at the very end of the stream are padding: they are dropped
 *     (traced: module 1, category 1, level 3).
 * UTF-8 (with or without a byte-order mark), UTF-16 and ISO-8859-1 are read;
 * callbacks always get UTF-8.
 */
#ifndef TARNEX_XML_H
#define TARNEX_XML_H

#include "tarnex/base.h"
#include "tarnex/strm.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Results of XmlPsr_parse and XmlPsr_resume. */
#define XML_PSR_DONE 0              /* the document has been read to its end */
#define XML_PSR_STOPPED (-5)        /* a callback stopped the parser */
#define XML_PSR_STOPPED_LAST (-4)   /* stopped while the last input was parsed */
#define XML_PSR_ILL_FORMED (-251)   /* not well-formed (KVO_MALFORMED) */
#define XML_PSR_CUT (-261)          /* the stream ends inside the document */
#define XML_PSR_REFUSED (-262)      /* an entity declaration */
#define XML_PSR_OVER_BUDGET (-263)  /* the parser's memory budget is spent */
#define XML_PSR_TOO_DEEP (-264)     /* elements nested too deep */
#define XML_PSR_ABORTED (-265)      /* a callback stopped the parser for good */
#define XML_PSR_MISUSE (-266)       /* a call the parser's state does not allow */

#define XML_PSR_BUDGET (8 * 1024 * 1024)
#define XML_PSR_MAX_DEPTH 256

typedef struct XmlPsr XmlPsr;
typedef struct XmlDec XmlDec;

/* ---- The parser --------------------------------------------------------- */

/* A fresh parser; XmlPsr_delete ends it (null: nothing). */
TARNEX_API XmlPsr *XmlPsr_new(void);
TARNEX_API void XmlPsr_delete(XmlPsr *psr);
/* Parses the document from the stream's position. The stream must stay
 * untouched until the parser is done: it reads ahead. A second parse on
 * one parser is misuse (XML_PSR_MISUSE). */
TARNEX_API int32_t XmlPsr_parse(XmlPsr *psr, IStrm *strm);
/* From inside a callback: resumable not 0 stops the parser so that it can
 * go on (the parse gives XML_PSR_STOPPED), 0 ends the parse
 * (XML_PSR_ABORTED). Gives 0, or XML_PSR_MISUSE outside a callback. */
TARNEX_API int32_t XmlPsr_stop(XmlPsr *psr, int32_t resumable);
/* Goes on behind the event that stopped the parser. On a parser that has
 * ended it gives the result it ended with again. */
TARNEX_API int32_t XmlPsr_resume(XmlPsr *psr);
/* Where the parser stands: line (from 1) and column (from 1) of the event
 * being delivered, of the failure once the parse failed, or just behind the
 * last event. */
TARNEX_API int32_t XmlPsr_line(const XmlPsr *psr);
TARNEX_API int32_t XmlPsr_column(const XmlPsr *psr);
/* What went wrong, in the parser's words ("not well-formed (invalid
 * token)", "entity declaration refused"), or "" while nothing has. */
TARNEX_API const char *XmlPsr_errText(const XmlPsr *psr);
/* A result code in words: "not well-formed", "cut short", "refused",
 * "over budget", "too deep", ...; null for a code that is not the
 * parser's. */
TARNEX_API const char *XmlPsr_codeText(int32_t code);

/* ---- The decoder frame ---------------------------------------------------- */

/* Each event goes to the innermost context: the start of an element to the
 * start callback of the context it appears in (which usually pushes a
 * context for the element), its end and its text to the element's own
 * context. atts alternates names and values and ends with a null. */
typedef void (*XmlStartCb)(XmlDec *dec, const char *name, const char **atts);
typedef void (*XmlEndCb)(XmlDec *dec, const char *name);
/* len bytes of UTF-8, not terminated. The default callback gets what no
 * other does: declarations, comments, processing instructions. */
typedef void (*XmlTextCb)(XmlDec *dec, const char *text, int32_t len);

typedef struct XmlDecCtx {
  const char *tag;  /* the caller's word for the context (not copied) */
  int32_t id;       /* the caller's number for it */
  int32_t reserved;
  XmlStartCb start; /* null: elements are passed over */
  XmlEndCb end;
  XmlTextCb chars;
  XmlTextCb def;
} XmlDecCtx;

/* Callers embed it by value; the members are the frame's. */
struct XmlDec {
  XmlPsr *psr;
  XmlDecCtx *ctxs;  /* ctxs[0] is the document's, ctxs[depth] the innermost */
  int32_t depth;
  int32_t cap;
};

/* Binds dec to psr (the parser's events go to dec from now on) and resets
 * it. XmlDec_delete unbinds and releases the stack; the parser stays the
 * caller's. */
TARNEX_API XmlDec *XmlDec_new(XmlDec *dec, XmlPsr *psr);
TARNEX_API void XmlDec_delete(XmlDec *dec);
/* Back to the document's context alone, with the default callbacks and
 * no start callback. */
TARNEX_API void XmlDec_reset(XmlDec *dec);
/* A new innermost context, a copy of the one around it with no tag. Gives
 * 0, or -1 when the stack is as deep as the parser allows. */
TARNEX_API int32_t XmlDec_pushCtx(XmlDec *dec);
/* Set the context `level` steps out from the innermost (0: innermost). A
 * level outside the stack is reported through kvo_assert__. */
TARNEX_API void XmlDec_setCtxTag(XmlDec *dec, int32_t level, const char *tag, int32_t id);
TARNEX_API void XmlDec_setCtxCb(XmlDec *dec, int32_t level, XmlStartCb start, XmlEndCb end,
                                XmlTextCb chars, XmlTextCb def);
/* The context `level` steps out, or null outside the stack. */
TARNEX_API const XmlDecCtx *XmlDec_ctx(const XmlDec *dec, int32_t level);

/* The defaults: the end pops the innermost context (never the document's),
 * text and the rest are dropped. */
TARNEX_API void XmlDec_onDefEnd(XmlDec *dec, const char *name);
TARNEX_API void XmlDec_onDefChr(XmlDec *dec, const char *text, int32_t len);
TARNEX_API void XmlDec_onDefDef(XmlDec *dec, const char *text, int32_t len);

#ifdef __cplusplus
}
#endif

#endif /* TARNEX_XML_H */
