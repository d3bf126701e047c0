/*
 * tarnex/codec.h - Base64, quoted-printable and IRA hexadecimal text.
 *
 * Writers give the number of bytes written, or the first negative code of
 * the output stream. Readers never read outside the text they are given
 * and never write more than `size` bytes.
 */
#ifndef TARNEX_CODEC_H
#define TARNEX_CODEC_H

#include "tarnex/base.h"
#include "tarnex/str.h"
#include "tarnex/strm.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Base64 of the bytes of `in` from its position to its end, onto `out`.
 * Lines hold at most `width` characters, the leading blank of a
 * continuation included (width < 4: no breaks); a break is CR LF and a
 * blank, so that the value is folded. A break is only written when more
 * text follows, so no line is ever a lone blank.
 * start >= 0: the running column of the line the text begins on; the first
 * break comes when that line reaches `width` (at once if it already has).
 * start == -1: the text continues the property's line right behind its
 * colon, at a column the caller does not count: the first line holds as
 * much text as each continuation line (width - 1 characters), and nothing
 * is written before or after the text, so the property's own CR LF ends
 * the value and the next property follows on the next line. An empty input
 * writes nothing. Other negative starts count as 0.
 * A null stream is misuse (reported) and writes nothing. */
TARNEX_API int32_t b64_enc_strm_from_strm(IStrm *out, IStrm *in, int32_t width,
                                          int32_t start);
/* Quoted-printable of `in` (position to end) onto `out`. Bytes 0x21..0x7E
 * other than "=" are written as they are, as are blanks and tabs except
 * where noted; every other byte, "=" itself, CR and LF (so a line break of
 * the value is "=0D=0A"), a blank or tab at the end of the value, right
 * before a soft break or at the start of a line (where a reader would take
 * it for a fold) are written "=XX" (upper case).
 * width >= 4: a soft break "=" CR LF keeps each line within `width`
 * characters, counting from `column` (a negative column counts as 0); if
 * the line is already full, the value starts with a soft break. width < 4
 * (as -1): no breaks. An escape is never split. A null stream is misuse
 * (reported) and writes nothing. */
TARNEX_API int32_t qp_enc_strm_from_strm(IStrm *out, IStrm *in, int32_t width,
                                         int32_t column);

/* Decode terminated text into buf (at most size bytes, no terminator
 * added); give the byte count. A null text reads as empty; size < 1 gives
 * 0 and writes nothing. Decoding stops when buf is full, possibly in the
 * middle of a group or an escape.
 * Base64: white space and line ends are skipped, other bytes outside the
 * alphabet are dropped, "=" ends the data; a last group of 2 or 3
 * characters gives its 1 or 2 bytes, a lone last character is dropped.
 * Quoted-printable: a soft break ("=", then blanks or tabs if any, then CR
 * LF, a lone LF or a lone CR) is removed; "=XX" in either case is the
 * byte; a "=" not followed by two hex digits stays as it is (so "=G1",
 * "=4" and a final "=" are kept as text); every other byte, hard line
 * ends included, is copied. */
TARNEX_API int32_t b64_dec_str_to_buf(const char *text, uint8_t *buf, int32_t size);
TARNEX_API int32_t qp_dec_str_to_buf(const char *text, uint8_t *buf, int32_t size);

/* IRA hexadecimal text: two upper-case digits an octet.
 * ira_enc_buf_from_buf: writes the text of len octets into buf (size bytes,
 * terminator included; as many whole octets as fit) and gives the number of
 * characters written. size < 1 writes nothing; len < 0 counts as 0. */
TARNEX_API int32_t ira_enc_buf_from_buf(char *buf, int32_t size, const uint8_t *data,
                                        int32_t len);
/* The same, taking len octets from the stream's position (fewer if the
 * stream ends first). Only the octets that fit are taken: the stream is
 * left behind the last octet written. */
TARNEX_API int32_t ira_enc_buf_from_strm(char *buf, int32_t size, IStrm *strm,
                                         int32_t len);
/* Replaces str with the text of len octets; gives str. */
TARNEX_API KvoStr *ira_enc_cstr_from_buf(KvoStr *str, const uint8_t *data, int32_t len);
/* Reads digit pairs (either case) from text (len characters; len < 0: up to
 * the terminator) into buf (at most size octets) and gives the octet count.
 * Reading stops at the first character that is not a hex digit (a
 * terminator within len included); an odd last digit is dropped. */
TARNEX_API int32_t ira_dec_str_to_buf(const char *text, int32_t len, uint8_t *buf,
                                      int32_t size);
/* The same onto a stream; gives the octet count or a negative stream code. */
TARNEX_API int32_t ira_dec_str_to_strm(const char *text, int32_t len, IStrm *strm);

#ifdef __cplusplus
}
#endif

#endif /* TARNEX_CODEC_H */
