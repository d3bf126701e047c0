/*
 * ostrel/AppItem.h - an application installed on a device or held as a
 * package. A data record only: no codec reads or writes it; callers fill
 * the members directly.
 *
 * The record owns its icon stream: a copy gets its own bytes, and _clear
 * empties the stream but keeps it. _clear checks no tag and _dump writes
 * nothing, so both are safe on any record a caller keeps.
 */
#ifndef OSTREL_APPITEM_H
#define OSTREL_APPITEM_H

#include "ostrel/Ostrel.h"

#ifdef __cplusplus
extern "C" {
#endif

#define APP_ITEM_TAG 0x2F322BD2u

/* pkgPos */
#define APP_POS_UNSAID 0
#define APP_POS_PHONE 1
#define APP_POS_SDCARD 2 /* any value but 0 and 1 reads so */

typedef struct AppItem {
  uint32_t tag;
  KvoStr name;
  KvoStr interName;
  KvoStr verName;
  int32_t verCode;
  KvoStr platform;
  KvoStr perms; /* lines of text */
  int32_t pkgType;
  KvoStr pkgPath;
  int32_t pkgSize;
  int32_t pkgPos; /* APP_POS_* */
  int32_t sysPkg; /* not 0: a system package */
  int32_t iconType;
  IStrm *icon;    /* owned; a memory stream from _new */
} AppItem;

OSTREL_API AppItem *AppItem_new(AppItem *storage);
OSTREL_API void AppItem_delete(AppItem *item);
OSTREL_API AppItem *AppItem_clone(const AppItem *item);
OSTREL_API void AppItem_clear(AppItem *item);
OSTREL_API AppItem *AppItem_assign(AppItem *item, const AppItem *other);
OSTREL_API void AppItem_trace(AppItem *item);
OSTREL_API void AppItem_tracex(AppItem *item, IStrm *strm, int32_t append);
/* Writes nothing: the record has no text form. */
OSTREL_API void AppItem_dump(AppItem *item, IStrm *strm, int32_t append);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_APPITEM_H */
