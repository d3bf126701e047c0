/*
 * ostrel/VnoteEd.h - vNote text: property lines between BEGIN:VNOTE and
 * END:VNOTE, version 1.1 (0x101) by default.
 *
 * Vnote_decx reads the next note from the stream's position: lines before
 * BEGIN:VNOTE are passed over, and an END of another word (END:VCARD) does
 * not end the note. Results: 1 a note read (the stream behind its END
 * line), 0 none left or one cut short, a negative code when the property
 * reader failed inside a note; below 1 the record is cleared. Values are
 * read escaped, so "BODY:one;two" gives "one" and "BODY:one\;two" "one;two".
 * ver (may be null) gets the VERSION word; luid (may be null) X-IRMC-LUID.
 *
 * Vnote_encx writes BEGIN, VERSION, SUMMARY, BODY, CATEGORIES, CLASS,
 * X-IRMC-LUID, DCREATED, LAST-MODIFIED and END, each only when it holds
 * something; 0, or the first negative code of a write (what was written
 * stays in the stream).
 */
#ifndef OSTREL_VNOTEED_H
#define OSTREL_VNOTEED_H

#include "ostrel/NoteItem.h"
#include "ostrel/VpiEd.h"

#ifdef __cplusplus
extern "C" {
#endif

OSTREL_API int32_t Vnote_enc(IStrm *vnote, const NoteItem *item, uint32_t ver);
OSTREL_API int32_t Vnote_encx(IStrm *vnote, const NoteItem *item, uint32_t ver, const char *luid,
                              const VpiEncOpts *opts);
OSTREL_API int32_t Vnote_dec(IStrm *vnote, NoteItem *item, uint32_t *ver);
OSTREL_API int32_t Vnote_decx(IStrm *vnote, NoteItem *item, uint32_t *ver, KvoStr *luid);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_VNOTEED_H */
