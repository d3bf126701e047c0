/*
 * ostrel/BkmItem.h - the bookmark record: a title, an address and the date
 * of its last change.
 */
#ifndef OSTREL_BKMITEM_H
#define OSTREL_BKMITEM_H

#include "ostrel/Ostrel.h"

#ifdef __cplusplus
extern "C" {
#endif

#define BKM_ITEM_TAG 0x04EA09B4u

typedef struct BkmItem {
  uint32_t tag;
  uint32_t reserved;
  KvoWcs title;    /* TITLE */
  KvoStr url;      /* URL */
  KvoDt modified;  /* LAST-MODIFIED */
} BkmItem;

OSTREL_API BkmItem *BkmItem_new(BkmItem *storage);
/* Sets the heap tag and the reserved word only: the wrapper class
 * constructs the strings and the date. */
OSTREL_API void BkmItem_newCpp(BkmItem *item);
OSTREL_API void BkmItem_delete(BkmItem *item);
OSTREL_API void BkmItem_clear(BkmItem *item);
OSTREL_API BkmItem *BkmItem_assign(BkmItem *item, const BkmItem *other);
OSTREL_API BkmItem *BkmItem_clone(const BkmItem *item);
/* To the trace output under module 5, category 1, level 1 only. */
OSTREL_API void BkmItem_trace(BkmItem *item);
OSTREL_API void BkmItem_tracex(BkmItem *item, IStrm *strm, int32_t append);
/* The bookmark as vBookmark 1.1 text. */
OSTREL_API void BkmItem_dump(BkmItem *item, IStrm *strm, int32_t append);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_BKMITEM_H */
