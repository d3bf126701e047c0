/*
 * tarnex/lex.h - the property lexer and line readers.
 *
 * Line ends are CR LF, a lone LF or a lone CR, and CR CR LF (written by some
 * phones) as one. A line end followed by a
 * blank or a tab is a fold: everywhere the lexer reads, the line end and
 * that one blank are dropped and the text goes on.
 *
 * Token codes of KvoLex_get:
 *   KVO_LEX_WORD (0x101)     a word; the stream stands before the byte that
 *                            ended it, which the next call gives. A word
 *                            ended by a line end leaves the stream before
 *                            the whole line end.
 *   KVO_LEX_WORD_EOS (0x100) a word that ran to the end of the stream.
 *   KVO_LEX_EOL (0x103)      a line end (when line ends are tokens).
 *   a delimiter byte         the delimiter itself (';' gives 0x3B).
 *   KVO_EOS (-202)           the end of the stream.
 * A UTF-8 byte-order mark (EF BB BF) at the very start of the stream is
 * passed over by KvoLex_get: it is no part of the first line's name.
 * A word holds at least one byte; the token holds the word, the delimiter
 * byte, or nothing (line end, end of stream). Nothing is trimmed.
 * Double quotes: unless KVO_LEX_NO_QUOTES is given, a delimiter inside a
 * "..." section belongs to the word (";X-URL=\"http://a:b\"" keeps its
 * colon); the quotes stay in the word. A section may start anywhere in a
 * word; one left open ends with the word at the line end. CR and LF are
 * never delimiters; a '"' named among the delimiters is a delimiter.
 *
 * Line readers write the value at the position of `val` and give 0 when the
 * value ended with a line end (the stream then stands at the next line),
 * KVO_EOS when the stream ended first (what was read is in `val`), or
 * another negative code for a fault of a stream (of either one). A null
 * `val` reads the value and drops it. Each call that gives 0 has taken at
 * least one line end, so a loop over a reader always ends.
 *
 * A null `strm` is misuse: reported through kvo_assert__, result KVO_EOS.
 */
#ifndef TARNEX_LEX_H
#define TARNEX_LEX_H

#include "tarnex/base.h"
#include "tarnex/str.h"
#include "tarnex/strm.h"

#ifdef __cplusplus
extern "C" {
#endif

#define KVO_LEX_WORD_EOS 0x100
#define KVO_LEX_WORD 0x101
#define KVO_LEX_EOL 0x103

/* Flags of KvoLex_get. */
#define KVO_LEX_NO_QUOTES 0x1

/* Reads the next token into `token` (replaced; null: the token is only
 * passed over). delims: the delimiter bytes (null: none). flags: KVO_LEX_*
 * flags, 0 for the defaults. eolTokens: not 0, a line end ends a word and
 * is a token of its own; 0, line ends between tokens are passed over and a
 * line end ends a word. */
TARNEX_API int32_t KvoLex_get(IStrm *strm, KvoStr *token, const char *delims,
                              int32_t flags, int32_t eolTokens);
/* KvoLex_get(strm, token, delims, 0, 1). */
TARNEX_API int32_t KvoLex_getDef(IStrm *strm, KvoStr *token, const char *delims);
/* Moves behind the next line end (folds count as part of the line). Gives 0,
 * or KVO_EOS when the stream ends first. unfold: not 0, folds continue the
 * line. */
TARNEX_API int32_t KvoLex_skipLine(IStrm *strm, int32_t unfold);

/* The rest of a plain value. unfold: not 0, folds continue the value.
 * softBreaks: not 0, "=" before a line end joins the next line as well
 * (the soft break of quoted-printable; "=" and line end are dropped, the
 * next line is taken as it stands); 0 keeps such a "=" as text. */
TARNEX_API int32_t KvoLex_getLine(IStrm *strm, IStrm *val, int32_t unfold,
                                  int32_t softBreaks);
/* The rest of a quoted-printable value, decoded: "=" before a line end is a
 * soft break (also before a lone LF or CR); "=XX" in either case is the
 * byte; a "=" not followed by two hex digits is kept as it is, and so is a
 * "=" at the very end of the stream. The line after a soft break is text
 * from its first byte, a leading blank included (soft breaks win over
 * folds). unfold: not 0, folds continue the value as well. */
TARNEX_API int32_t KvoLex_getLineQp(IStrm *strm, IStrm *val, int32_t unfold);
/* The rest of a Base64 value, decoded. The value runs on over following
 * lines, indented or not, up to a blank line (taken), or up to a line that
 * holds a byte outside the Base64 alphabet, "=" and blanks (the next
 * property: the stream is left at its start). White space inside is
 * skipped; other bytes outside the alphabet are dropped. "=" ends a
 * quantum: its whole bytes are written and decoding starts afresh; a final
 * quantum without padding gives its whole bytes too. unfold: 0 reads just
 * the rest of this line (no folds, no run-on lines). */
TARNEX_API int32_t KvoLex_getLineBase(IStrm *strm, IStrm *val, int32_t unfold);

#ifdef __cplusplus
}
#endif

#endif /* TARNEX_LEX_H */
