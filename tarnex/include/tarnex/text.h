/*
 * tarnex/text.h - small text utilities on terminated 8-bit and 16-bit text.
 *
 * Case rules are ASCII only: bytes of 0x80 and above (parts of UTF-8
 * sequences) compare as they are. A null text reads as the empty text.
 */
#ifndef TARNEX_TEXT_H
#define TARNEX_TEXT_H

#include "tarnex/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* <0, 0, >0 as strcmp, case ignored. */
TARNEX_API int32_t kvo_stricmp(const char *a, const char *b);
/* First place of needle in hay, case ignored; an empty needle finds hay.
 * A null hay has no place to give: null. */
TARNEX_API char *kvo_stristr(const char *hay, const char *needle);
/* Last place in text of any byte of chars, or null. */
TARNEX_API char *kvo_strrchrs(const char *text, const char *chars);
/* Splits *pos at the bytes of seps: skips leading separators, ends the word
 * with a 0 byte, moves *pos behind it and gives the word; null when no word
 * is left. Re-entrant: all state is in *pos. */
TARNEX_API char *kvo_strtok(char **pos, const char *seps);
/* Upper-cases ASCII letters in place; gives text. */
TARNEX_API char *kvo_strupr(char *text);
/* Copies src into dst of size bytes, always terminated (size < 1: nothing);
 * a longer src is cut at size - 1 bytes. dst and src may overlap. Gives dst. */
TARNEX_API char *kvo_strxfrm(char *dst, const char *src, int32_t size);
/* A new heap copy (free with kvo_free__) of n bytes of text (n < 0: up to the
 * terminator), terminated. */
TARNEX_API char *kvo_strdupx(const char *text, int32_t n);
/* Not 0 if every one of the n bytes (n < 0: up to the terminator) is below 0x80. */
TARNEX_API int32_t kvo_str_all_ascii(const char *text, int32_t n);

TARNEX_API int32_t kvo_wcslen(const KvoWchar *text);
TARNEX_API int32_t kvo_wcscmp(const KvoWchar *a, const KvoWchar *b);
/* Compares at most n units, ASCII case ignored. */
TARNEX_API int32_t kvo_wcsincmp(const KvoWchar *a, const KvoWchar *b, int32_t n);

/* Number of bits set. */
TARNEX_API int32_t u32_bit_num(uint32_t v);

#ifdef __cplusplus
}
#endif

#endif /* TARNEX_TEXT_H */
