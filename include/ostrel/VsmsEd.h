/*
 * ostrel/VsmsEd.h - VSMS text: one short message field by field, in
 * property lines between BEGIN:VSMS and END:VSMS, version 2.0 (0x200) by
 * default.
 *
 * Vsms_decx reads the next message from the stream's position: lines
 * before BEGIN:VSMS are passed over, and an END of another word does not
 * end the message. Results: 1 a message read (the stream behind its END
 * line), 0 none left or one cut short, a negative code when the property
 * reader failed inside a message; below 1 the record is cleared (stat 6).
 * Values are read escaped, so "DATA:a;b" gives the text "a". DATA with
 * ";TYPE=BIN" is a binary payload; UDH keeps at most 140 octets; PROT-ID,
 * CODING and MSG-REF keep the low 8 bits of their number, REP-STAT all 32;
 * an unknown word in TYPE, REP-FOR, STAT or FLAGS leaves its field alone.
 * ver (may be null) gets the VERSION word, luid (may be null) X-IRMC-LUID,
 * stat (may be null) each state read.
 *
 * Vsms_encx writes BEGIN, VERSION, TYPE, TEL, DATA, X-IRMC-LUID, CARD,
 * STAT (the one asked for by stat, then the record's), UDH, PROT-ID,
 * CODING, FLAGS, MSG-REF (SUBMIT, REPORT), XPT-TIME, REV-TIME (REPORT),
 * VALID-DUR (SUBMIT), REP-STAT and REP-FOR (REPORT), END; TEL, DATA and
 * CARD even when empty. Gives 0, or the first negative code of a write
 * (what was written stays in the stream). A record whose type is none of
 * SUBMIT, DELIVER and REPORT is a broken precondition: reported ("0")
 * after BEGIN and VERSION, and -81 with nothing more written.
 */
#ifndef OSTREL_VSMSED_H
#define OSTREL_VSMSED_H

#include "ostrel/SmsItem.h"
#include "ostrel/VpiEd.h"

#ifdef __cplusplus
extern "C" {
#endif

OSTREL_API int32_t Vsms_enc(IStrm *vsms, const SmsItem *item, uint32_t ver);
OSTREL_API int32_t Vsms_encx(IStrm *vsms, const SmsItem *item, uint32_t ver, const char *luid,
                             const VpiEncOpts *opts, const int32_t *stat);
OSTREL_API int32_t Vsms_dec(IStrm *vsms, SmsItem *item, uint32_t *ver);
OSTREL_API int32_t Vsms_decx(IStrm *vsms, SmsItem *item, uint32_t *ver, KvoStr *luid,
                             int32_t *stat);

/* The message as VSMS 2.0 text: the stream cleared first, or appended to
 * when append is not 0. */
OSTREL_API void SmsItem_dump(SmsItem *item, IStrm *strm, int32_t append);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_VSMSED_H */
