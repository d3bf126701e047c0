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

/* Reads a whole message into a constructed item, appending to what it
 * holds: the header as mms_dec_hdr does, then the body. Every part becomes
 * a medium, named by its Name, Filename or Content-Location (the last one
 * wins; a name without a "." gets the extension of its type), else by its
 * Content-ID or a process-wide number, and the extension. A SMIL part
 * becomes the slides, each in one of the sixteen layouts; one that does
 * not parse gives no slides and no failure. A medium that claims more
 * bytes than the message holds arrives empty.
 * Result 0; -1 when the body has no part count (a header-only message,
 * or a count above 30 in the plain uintvar form) or the stream ends where
 * a part was due; or the header's negative result. */
OSTREL_API int32_t mms_dec(IStrm *mms, MmsItem *item);

/* Writes the item at the stream's position as a send request: addresses,
 * subject, the date from kvo_time32, a SMIL part made from the slides,
 * then a part for each medium, its content type from its name's
 * extension. Addresses that are neither a phone number ("+" or a digit,
 * then digits) nor hold an "@" are left out. Slides past the hundredth,
 * and a slide's fifth name, stay out of the presentation; their media
 * still go out. Always 0. */
OSTREL_API int32_t mms_enc(IStrm *mms, MmsItem *item);
/* An estimate of the encoded size, without encoding. */
OSTREL_API uint32_t mms_approx_size(MmsItem *item);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_MMSED_H */
