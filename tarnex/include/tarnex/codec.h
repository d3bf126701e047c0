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
 * Lines hold at most `width` characters (width < 4: no breaks); a break is
 * CR LF and a blank, so that the value is folded.
 * start >= 0: the running column of the line the text begins on; the first
 * break comes when that line reaches `width`.
 * start == -1: the value begins on a line of its own (CR LF, blank first) and
 * ends with CR LF, so that the property line's own CR LF leaves the blank
 * line that ends a Base64 value in vCard 2.1. */
TARNEX_API int32_t b64_enc_strm_from_strm(IStrm *out, IStrm *in, int32_t width,
                                          int32_t start);
/* Quoted-printable of `in` (position to end) onto `out`. Bytes outside
 * 0x21..0x7E other than "=" and blanks, a blank before a line end, and
 * CR/LF are written "=XX" (upper case). width > 0: a soft break "=" CR LF
 * keeps each line within `width` characters, counting from `column`;
 * width -1: no breaks. An escape is never split. */
TARNEX_API int32_t qp_enc_strm_from_strm(IStrm *out, IStrm *in, int32_t width,
                                         int32_t column);

/* Decode terminated text into buf (at most size bytes); give the byte
 * count. Base64: white space and line ends are skipped, other bytes outside
 * the alphabet are dropped, "=" ends the data; a last group of 2 or 3
 * characters gives its 1 or 2 bytes, a lone last character is dropped.
 * Quoted-printable: soft breaks are removed, "=XX" in either case is the
 * byte, a "=" not followed by two hex digits stays as it is. Decoding stops
 * when buf is full. */
TARNEX_API int32_t b64_dec_str_to_buf(const char *text, uint8_t *buf, int32_t size);
TARNEX_API int32_t qp_dec_str_to_buf(const char *text, uint8_t *buf, int32_t size);

/* IRA hexadecimal text: two upper-case digits an octet.
 * ira_enc_buf_from_buf: writes the text of len octets into buf (size bytes,
 * terminator included; as many whole octets as fit) and gives the number of
 * characters written. */
TARNEX_API int32_t ira_enc_buf_from_buf(char *buf, int32_t size, const uint8_t *data,
                                        int32_t len);
/* The same, taking len octets from the stream's position. */
TARNEX_API int32_t ira_enc_buf_from_strm(char *buf, int32_t size, IStrm *strm,
                                         int32_t len);
/* Replaces str with the text of len octets; gives str. */
TARNEX_API KvoStr *ira_enc_cstr_from_buf(KvoStr *str, const uint8_t *data, int32_t len);
/* Reads digit pairs (either case) from text (len characters; len < 0: up to
 * the terminator) into buf (at most size octets) and gives the octet count.
 * Reading stops at the first character that is not a hex digit; an odd last
 * digit is dropped. */
TARNEX_API int32_t ira_dec_str_to_buf(const char *text, int32_t len, uint8_t *buf,
                                      int32_t size);
/* The same onto a stream; gives the octet count or a negative stream code. */
TARNEX_API int32_t ira_dec_str_to_strm(const char *text, int32_t len, IStrm *strm);

#ifdef __cplusplus
}
#endif

#endif /* TARNEX_CODEC_H */
