/*
 * ostrel/GrpItem.h - a contact group, and its card (a vCard frame holding
 * group properties instead of contact properties).
 *
 * Contacts refer to a group by its identifier (their X-GRPI property). The
 * record follows the library's conventions (ostrel/Ostrel.h): _new(null)
 * allocates, _new(p) constructs in p, _delete frees only what _new
 * allocated, _clone gives a heap record.
 */
#ifndef OSTREL_GRPITEM_H
#define OSTREL_GRPITEM_H

#include "ostrel/Ostrel.h"
#include "ostrel/VpiEd.h"

#ifdef __cplusplus
extern "C" {
#endif

#define GRP_ITEM_TAG 0x08E6A910u

/* Attribute bits (X-ATTRS, read only). */
#define GRP_ATTR_EDIT 0x1
#define GRP_ATTR_REMOVE 0x2
#define GRP_ATTR_ANOTHER_NAME 0x4

typedef struct GrpItem {
  uint32_t tag;
  uint32_t reserved;
  KvoWcs name;     /* display name (X-GRPV) */
  KvoStr id;       /* group identifier (X-GRPI, X-IRMC-LUID) */
  int32_t attr;    /* GRP_ATTR_* bits */
  KvoStr accName;  /* account the group belongs to (X-ACC-NAME) */
  KvoStr accType;  /* that account's type (X-ACC-TYPE) */
} GrpItem;

OSTREL_API GrpItem *GrpItem_new(GrpItem *storage);
OSTREL_API void GrpItem_delete(GrpItem *item);
OSTREL_API GrpItem *GrpItem_clone(const GrpItem *item);
OSTREL_API void GrpItem_clear(GrpItem *item);
OSTREL_API GrpItem *GrpItem_assign(GrpItem *item, const GrpItem *other);
OSTREL_API void GrpItem_trace(GrpItem *item);
OSTREL_API void GrpItem_tracex(GrpItem *item, IStrm *strm, int32_t append);
/* The trace text (a group has no text form of its own to dump). */
OSTREL_API void GrpItem_dump(GrpItem *item, IStrm *strm, int32_t append);

/* Reads the next group card: 1 a card was read, 0 no further card or one cut
 * short, negative a fault inside a card. Below 1 the record is cleared.
 * *ver (may be null) receives the card's version. */
OSTREL_API int32_t Vgrp_dec(IStrm *vcard, GrpItem *item, uint32_t *ver);
/* Writes the group as a card (ver 0: 2.1). Gives 0: an empty name is
 * written as an empty X-GRPV value, and stream faults are not reported. */
OSTREL_API int32_t Vgrp_enc(IStrm *vcard, const GrpItem *item, uint32_t ver);
OSTREL_API int32_t Vgrp_encx(IStrm *vcard, const GrpItem *item, uint32_t ver,
                             const VpiEncOpts *opts);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_GRPITEM_H */
