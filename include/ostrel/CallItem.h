/*
 * ostrel/CallItem.h - one entry of a phone's call log.
 *
 * Text members are as the listing had them: the number, the duration and
 * the kind of call are not interpreted.
 */
#ifndef OSTREL_CALLITEM_H
#define OSTREL_CALLITEM_H

#include "ostrel/Ostrel.h"

#ifdef __cplusplus
extern "C" {
#endif

#define CALL_ITEM_TAG 0x2F322BA3u

typedef struct CallItem {
  uint32_t tag;
  uint32_t reserved;
  int32_t luid;  /* the entry's identifier on the device; -1 none */
  KvoStr tel;    /* the other party's number */
  KvoDt data;    /* date and time of the call */
  KvoStr dur;    /* duration */
  KvoStr type;   /* kind of call */
} CallItem;

OSTREL_API CallItem *CallItem_new(CallItem *storage);
/* For a wrapper class that constructs the strings and luid itself: the
 * heap tag, the reserved word and an unset date. */
OSTREL_API void CallItem_newCpp(CallItem *item);
OSTREL_API void CallItem_delete(CallItem *item);
/* Empties the strings, unsets the date, luid -1. */
OSTREL_API void CallItem_clear(CallItem *item);
OSTREL_API CallItem *CallItem_assign(CallItem *item, const CallItem *other);
OSTREL_API void CallItem_trace(CallItem *item);
OSTREL_API void CallItem_tracex(CallItem *item, IStrm *strm, int32_t append);
/* The same text as CallItem_tracex. */
OSTREL_API void CallItem_dump(CallItem *item, IStrm *strm, int32_t append);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_CALLITEM_H */
