/*
 * tarnex/gsm.h - the fields of a short message PDU (3GPP TS 23.040) and
 * the GSM 7-bit default alphabet (TS 23.038).
 *
 * Every reader takes the octets available and reads none beyond them;
 * every writer takes its room and writes none beyond it. Lengths that a
 * PDU states are the network's word: a reader reports what the field
 * claims, so that the caller can tell a field cut short.
 *
 * Numbers. The form flags of the two functions are opposite, as their
 * callers have always used them: GsmUtil_encNo form 0 and GsmUtil_getNo
 * form 1 mean a service centre field, whose length octet counts the octets
 * behind it (type octet included); the other form is an address field,
 * whose length octet counts the semi-octets of the number. A leading "+"
 * gives the type 0x91 (international), plain digits 0x81. Digits are TBCD,
 * low semi-octet first: 0-9, "*" (A), "#" (B), and on reading "a", "b", "c"
 * (C, D, E); an F semi-octet is filler. A text with anything beyond digits,
 * "*", "#" and a leading "+" is written alphanumeric (type 0xD0: 7-bit
 * packed, cut at 11 septets, never inside an escape pair); on reading, an
 * alphanumeric field gives its septets as UTF-8, the count taken from the
 * semi-octets (a last "@" that only fills the octets is dropped). At most
 * 20 digits are written.
 *
 * Time stamps are seven octets of swapped BCD: year, month, day, hour,
 * minute, second, zone in quarter hours with the sign in bit 0x08. Years
 * 90-99 read as 19xx, 00-89 as 20xx. A digit above 9 or a field out of
 * range gives an unset date (KvoDt_init); a bad zone gives a date without
 * zone (KVO_DT_NOZONE). An unset or unusable date is written as seven 0x00
 * octets, which read back unset; a floating time is written with zone 0,
 * a date alone at midnight.
 *
 * 7-bit text. Septets are packed low bits first; `fill` (0 to 6) zero bits
 * come first, so a text can start on the septet boundary behind a user
 * data header. Units are 16-bit big-endian in memory (the byte order of a
 * UCS2 PDU), whatever the host. An escape (0x1B) before a septet outside
 * the extension table gives that septet's default character; an escape at
 * the end of the septets gives nothing. A character outside the alphabet
 * becomes "?" (SmsAlph_is7BitStr tells beforehand).
 */
#ifndef TARNEX_GSM_H
#define TARNEX_GSM_H

#include "tarnex/base.h"
#include "tarnex/dt.h"
#include "tarnex/str.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Writes the field of `no` (terminated text; null or "" is no number) into
 * buf: form 0 service centre, 1 address. A service centre without a number
 * is the single octet 0x00, an address without one 0x00 0x81. Gives the
 * octets written, or -1 when they exceed `size` (nothing usable written). */
TARNEX_API int32_t GsmUtil_encNo(uint8_t *buf, int32_t size, const char *no, int32_t form);
/* Reads the field at buf (len octets there): form 1 service centre, 0
 * address. Replaces `no` (may be null) with the number's text, from the
 * octets present only. Gives the octets the field claims, its length octet
 * included (1 for len < 1); more than len means the field was cut short. */
TARNEX_API int32_t GsmUtil_getNo(KvoStr *no, const uint8_t *buf, int32_t len, int32_t form);

/* Writes the 7 octets of dt; gives 7, or -1 when size is below 7. */
TARNEX_API int32_t GsmUtil_encObsTime(uint8_t *buf, int32_t size, const KvoDt *dt);
/* Reads 7 octets into dt; gives 7. Fewer than 7 octets: dt unset. */
TARNEX_API int32_t GsmUtil_decObsTime(KvoDt *dt, const uint8_t *buf, int32_t len);

/* Packs `count` septets behind `fill` bits into buf, never more than size
 * octets. Gives the octets the packing needs, (fill + 7 * count + 7) / 8,
 * which may exceed size. */
TARNEX_API int32_t GsmUtil_enc7BitStr(uint8_t *buf, int32_t size, const uint8_t *septets,
                                      int32_t count, int32_t fill);
/* Unpacks the septets of `octets` octets behind `fill` bits, at most
 * `places`; gives their count, (8 * octets - fill) / 7 capped at places. */
TARNEX_API int32_t GsmUtil_dec7BitStr(uint8_t *septets, int32_t places, const uint8_t *buf,
                                      int32_t octets, int32_t fill);
/* Swapped BCD digits (F filler skipped, A-E as "*#abc") into str, at most
 * size - 1 and a terminator; gives the characters written. */
TARNEX_API int32_t bcd_dec_buf_to_str(char *str, int32_t size, const uint8_t *buf, int32_t len);

/* Not 0 when each of the `count` big-endian units is in the default or the
 * extension table (flags: 0, reserved). */
TARNEX_API int32_t SmsAlph_is7BitStr(const KvoWchar *units, int32_t count, int32_t flags);
/* Septets of the units, an extension character as an escape pair. Gives the
 * septets written; when they need more than `places`, the places are
 * filled (no escape pair cut: its place holds a space) and `places` is
 * given, so a caller's length test refuses the text. */
TARNEX_API int32_t SmsAlph_to7BitStr(uint8_t *septets, int32_t places, const KvoWchar *units,
                                     int32_t count);
/* Big-endian units of the septets, at most `places`; gives their count. */
TARNEX_API int32_t SmsAlph_from7BitStr(KvoWchar *units, int32_t places, const uint8_t *septets,
                                       int32_t count);

#ifdef __cplusplus
}
#endif

#endif /* TARNEX_GSM_H */
