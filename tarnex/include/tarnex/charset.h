/*
 * tarnex/charset.h - conversions between UTF-8, UTF-16, UCS-2 on the wire,
 * UTF-7 and legacy 8-bit code pages.
 *
 * 16-bit text in memory (KvoWcs, KvoWchar) is UTF-16 in host byte order.
 * UCS-2 on the wire is big-endian (network order, as phones send it); a
 * byte-order mark FE FF or FF FE at the start chooses the order and is
 * dropped.
 *
 * Malformed UTF-8 (a bad lead byte, a cut sequence, an overlong form, a
 * code above U+10FFFF) gives U+FFFD for each maximal bad subpart and is
 * never read past the end of its input. The 3-byte form of a lone
 * surrogate (as KvoStr keeps it) reads back as that surrogate unit.
 *
 * Stream converters read `in` from its position to its end, write at the
 * position of `out`, and give the number of bytes written or a negative
 * code of a stream. A null stream, or `in` the same as `out`, is misuse
 * (kvo_assert__) and gives KVO_CANT.
 *
 * Lone surrogates: UTF-8 into 16-bit forms (UTF-16, UCS-2, UTF-7) keeps the
 * unit of a 3-byte surrogate form; 16-bit forms from the wire (UCS-2,
 * UTF-7) into UTF-8 give U+FFFD for it, so what they write is always
 * well-formed UTF-8.
 */
#ifndef TARNEX_CHARSET_H
#define TARNEX_CHARSET_H

#include "tarnex/base.h"
#include "tarnex/str.h"
#include "tarnex/strm.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Replaces str with the UTF-8 form of wide (pairs joined, an unpaired
 * surrogate in its 3-byte form); gives str. A null wide gives "". */
TARNEX_API KvoStr *wcs_str_to_utf8_cstr(const KvoWcs *wide, KvoStr *str);
/* A new terminated UTF-16 copy of terminated UTF-8 text (free with
 * kvo_free__); a null text gives an empty copy. */
TARNEX_API KvoWchar *utf8_str_to_wcs_out(const char *text);
/* The next UTF-16 unit of the UTF-8 text on the stream: a character above
 * U+FFFF gives its high surrogate, and the low one on the next call (the
 * stream then stands behind the whole sequence). 0 at the end (and for a
 * 0 byte). Nothing is kept between calls: after the high surrogate the
 * stream stands one byte into the sequence, and a call that starts there
 * gives the low one. */
TARNEX_API KvoWchar utf8_strm_to_wcs_char(IStrm *strm);

/* UTF-8 to big-endian UCS-2 (surrogate pairs for characters above U+FFFF). */
TARNEX_API int32_t utf8_strm_to_ucs2_strm(IStrm *in, IStrm *out);
/* UCS-2 (big-endian, or as a byte-order mark says) to UTF-8. An odd last
 * byte is dropped; a lone surrogate gives U+FFFD. */
TARNEX_API int32_t ucs2_strm_to_utf8_strm(IStrm *in, IStrm *out);
/* The same, appending to str; gives the number of bytes appended. */
TARNEX_API int32_t ucs2_strm_to_utf8_cstr(IStrm *in, KvoStr *str);
/* UTF-8 to UTF-7 (RFC 2152): direct characters (its Set D, Set O but "\"
 * and "~", blank, tab, CR, LF) as they are, the rest in shifts of
 * modified Base64; "+" itself as "+-". A shift is closed by "-" when the
 * next byte is a Base64 character or "-", and at the end. */
TARNEX_API int32_t utf8_strm_to_utf7_strm(IStrm *in, IStrm *out);
/* UTF-7 to UTF-8. A shift ends at "-" (dropped) or at any other byte
 * outside Base64 (kept); one not closed ends at the end of the input;
 * leftover bits of a shift are dropped; a broken surrogate pair gives
 * U+FFFD. 8-bit bytes outside a shift are read as UTF-8 (a bad stretch
 * gives U+FFFD). */
TARNEX_API int32_t utf7_strm_to_utf8_strm(IStrm *in, IStrm *out);

/* The legacy code page that ansi_str_to_utf8_str reads: an iconv name,
 * "WINDOWS-1252" by default. Gives 0, or -1 if iconv does not know it or
 * name is null (the old choice stays). The choice is process-wide. */
TARNEX_API int32_t kvo_set_ansi_codepage(const char *name);
/* Converts terminated text in the legacy code page into UTF-8 in dst (size
 * bytes, always terminated, cut at a whole character) and gives the
 * number of bytes written, terminator not counted. A byte the code page
 * leaves undefined gives U+FFFD. A null src gives ""; a null dst or a size
 * below 1 writes nothing and gives 0. */
TARNEX_API int32_t ansi_str_to_utf8_str(const char *src, char *dst, int32_t size);

#ifdef __cplusplus
}
#endif

#endif /* TARNEX_CHARSET_H */
