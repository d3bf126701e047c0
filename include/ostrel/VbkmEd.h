/*
 * ostrel/VbkmEd.h - vBookmark text: property lines between BEGIN:VBKM and
 * END:VBKM, version 1.1 (0x101) by default.
 *
 * Vbkm_decx reads the next bookmark from the stream's position: lines before
 * BEGIN:VBKM are passed over, and an END of another word (END:VCARD) does
 * not end the bookmark. Results: 1 a bookmark read (the stream behind its END
 * line), 0 none left or one cut short, a negative code when the property
 * reader failed inside one; below 1 the record is cleared. Values are
 * read escaped, so "URL:a;b" gives "a" and "URL:a\;b" "a;b".
 * ver (may be null) gets the VERSION word; luid (may be null) X-IRMC-LUID.
 *
 * Vbkm_encx writes BEGIN, VERSION, X-IRMC-LUID (behind VERSION here, unlike
 * vNote), TITLE, URL, LAST-MODIFIED and END, each only when it holds
 * something; 0, or the first negative code of a write (what was written
 * stays in the stream).
 */
#ifndef OSTREL_VBKMED_H
#define OSTREL_VBKMED_H

#include "ostrel/BkmItem.h"
#include "ostrel/VpiEd.h"

#ifdef __cplusplus
extern "C" {
#endif

OSTREL_API int32_t Vbkm_enc(IStrm *vbkm, const BkmItem *item, uint32_t ver);
OSTREL_API int32_t Vbkm_encx(IStrm *vbkm, const BkmItem *item, uint32_t ver, const char *luid,
                              const VpiEncOpts *opts);
OSTREL_API int32_t Vbkm_dec(IStrm *vbkm, BkmItem *item, uint32_t *ver);
OSTREL_API int32_t Vbkm_decx(IStrm *vbkm, BkmItem *item, uint32_t *ver, KvoStr *luid);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_VBKMED_H */
