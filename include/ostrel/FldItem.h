/*
 * ostrel/FldItem.h - one entry of a device's file system or media library:
 * a file, a folder or a removable device, as the media and folder listings
 * give it. Each listing uses its own subset of the members.
 *
 * Numbers the listings give as text (width, height, orientation, play time)
 * stay text. perms is -1 while no listing has said anything about them.
 */
#ifndef OSTREL_FLDITEM_H
#define OSTREL_FLDITEM_H

#include "ostrel/Ostrel.h"

#ifdef __cplusplus
extern "C" {
#endif

#define FLD_ITEM_TAG 0x0B462C15u

/* attrs: the entry's kind and flags. */
#define FLD_ATTR_FOLDER 0x01
#define FLD_ATTR_FILE 0x02
#define FLD_ATTR_HIDDEN 0x04
#define FLD_ATTR_SYSTEM 0x08
#define FLD_ATTR_REMOVABLE 0x10

/* perms, and the permissions of a message folder: the letters R, W, D. */
#define FLD_PERM_READ 0x01
#define FLD_PERM_WRITE 0x02
#define FLD_PERM_DELETE 0x04

typedef struct FldItem {
  uint32_t tag;
  uint32_t reserved;
  KvoWcs name;
  uint32_t luid; /* identifier on the device; 0 none */
  KvoWcs dsplName;
  KvoStr width;
  KvoStr height;
  KvoStr orient;
  KvoStr dur;
  KvoStr album;
  KvoStr artist;
  KvoStr title;
  int32_t attrs;   /* FLD_ATTR_* */
  uint32_t size;   /* bytes */
  int32_t perms;   /* FLD_PERM_*, -1 unset */
  KvoStr type;
  KvoDt modified;
  KvoDt created;
  KvoDt accessed;
} FldItem;

OSTREL_API FldItem *FldItem_new(FldItem *storage);
/* For a wrapper class that constructs the strings itself: the heap tag, the
 * reserved word, unset dates, size and attrs 0, perms -1. luid and the
 * strings are the wrapper's. */
OSTREL_API void FldItem_newCpp(FldItem *item);
OSTREL_API void FldItem_delete(FldItem *item);
OSTREL_API void FldItem_clear(FldItem *item);
/* Deletes every string member and leaves the numbers and dates alone: the
 * record must not be used again before its strings are constructed anew. */
OSTREL_API void FldItem_clearx(FldItem *item);
OSTREL_API FldItem *FldItem_assign(FldItem *item, const FldItem *other);
OSTREL_API void FldItem_trace(FldItem *item);
OSTREL_API void FldItem_tracex(FldItem *item, IStrm *strm, int32_t append);
/* The trace text. */
OSTREL_API void FldItem_dump(FldItem *item, IStrm *strm, int32_t append);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_FLDITEM_H */
