/*
 * ostrel/XmmsEd.h - the MMS listing of a phone's message store: folders and
 * message items with their status, size and addresses, read and written one
 * entry at a time. XmmsItem has nothing to do with MmsItem: it is what a
 * message browser needs before it fetches a message whole.
 *
 * The protocol is the call listing's (ostrel/XcallEd.h). The decoder does
 * not look at the root element: the caller chooses the listing by it.
 * Reading takes "Item" (XMMS_ATTR_ITEM) and "Folder" (XMMS_ATTR_FOLDER)
 * elements, case ignored. Status words add their bit ("def" adds none), so
 * two stat attributes of different case add up; a word or permission letter
 * outside the tables is reported through the assert handler and adds
 * nothing. Writing opens a folder when attrs has XMMS_ATTR_FOLDER, else an
 * item for XMMS_ATTR_ITEM, else writes nothing and gives -94. A status with
 * no word of its own (a sum) is reported and written stat="". The name is
 * escaped; the other attributes go out as they stand.
 */
#ifndef OSTREL_XMMSED_H
#define OSTREL_XMMSED_H

#include "ostrel/Ostrel.h"

#ifdef __cplusplus
extern "C" {
#endif

#define XMMS_ITEM_TAG 0x06CADE1Fu

/* attrs */
#define XMMS_ATTR_FOLDER 0x01
#define XMMS_ATTR_ITEM 0x02

/* stat: one word each; a sum of two has no word. */
#define XMMS_STAT_DEF 0
#define XMMS_STAT_UNREAD 1
#define XMMS_STAT_READ 2
#define XMMS_STAT_UNSENT 4
#define XMMS_STAT_SENT 8

/* Lives on the heap only: XmmsItem_new takes no storage. perms holds the
 * FLD_PERM_* letters of a folder, -1 while unset. */
typedef struct XmmsItem {
  uint32_t tag;
  KvoStr name;
  int32_t attrs; /* XMMS_ATTR_* */
  int32_t stat;  /* XMMS_STAT_* */
  uint32_t size;
  int32_t perms;
  KvoStr from;
  KvoStr to;
  KvoStr cc;
  KvoStr bcc;
  KvoStr title;
  KvoDt xptTime;
} XmmsItem;

OSTREL_API XmmsItem *XmmsItem_new(void);
OSTREL_API void XmmsItem_delete(XmmsItem *item);
OSTREL_API void XmmsItem_clear(XmmsItem *item);
OSTREL_API void XmmsItem_trace(XmmsItem *item);
OSTREL_API void XmmsItem_tracex(XmmsItem *item, IStrm *strm, int32_t append);

OSTREL_API XmlListDec *Xmms_decBeg(IStrm *strm);
OSTREL_API int32_t Xmms_decItem(XmlListDec *dec, XmmsItem *item);
OSTREL_API int32_t Xmms_decEnd(XmlListDec *dec);
OSTREL_API int32_t Xmms_encBeg(IStrm *strm);
OSTREL_API int32_t Xmms_encEnd(IStrm *strm);
/* One entry line; 0, or -94 with nothing written for a record of no kind. */
OSTREL_API int32_t Xmms_encItem(IStrm *strm, const XmmsItem *item);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_XMMSED_H */
