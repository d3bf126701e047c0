/*
 * ostrel/MmsEd.h - binary multimedia messages (the OMA MMS encapsulation
 * over the Wireless Session Protocol) to and from MmsItem.
 *
 * mms_dec_hdr reads the header from the start of the stream, whatever its
 * position, into a constructed MmsHdr. Addresses are appended (a reused
 * header keeps what it held); a later From or Subject replaces an earlier
 * one. The header has no count and no end mark: it ends at the first byte
 * that is no field code (0x81 to 0xA1), and the stream is left standing on
 * that byte, the start of the body; or at the end of the stream, also when
 * the stream ends inside a field. Result 0, or -51 when an encoded string
 * of a To, Cc, Bcc or X-Mms-Content-Location runs past the end of the
 * stream; such a string anywhere else counts as read.
 *
 * The date is read as unsigned 32-bit seconds since 1970 (so values with
 * bit 31 set are 2038 to 2106) and held as the local, floating time of
 * that moment; a moment the platform cannot convert leaves it unset.
 */
#ifndef OSTREL_MMSED_H
#define OSTREL_MMSED_H

#include "ostrel/MmsItem.h"

#ifdef __cplusplus
extern "C" {
#endif

OSTREL_API int32_t mms_dec_hdr(IStrm *mms, MmsHdr *hdr);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_MMSED_H */
