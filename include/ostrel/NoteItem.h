/*
 * ostrel/NoteItem.h - the note record: a summary, a body, a category and a
 * class, with the dates of creation and last change.
 *
 * auxWord0..2 are the caller's: zeroed by _new, _newCpp and _clear, copied
 * by _assign and _clone, and seen by nothing else (neither the trace nor the
 * codec). cate and cls are free text: "PUBLIC" in CLASS stays text.
 */
#ifndef OSTREL_NOTEITEM_H
#define OSTREL_NOTEITEM_H

#include "ostrel/Ostrel.h"

#ifdef __cplusplus
extern "C" {
#endif

#define NOTE_ITEM_TAG 0x03EA09B3u

typedef struct NoteItem {
  uint32_t tag;
  uint32_t reserved;
  int32_t auxWord0;
  KvoWcs summ;  /* SUMMARY */
  KvoWcs body;  /* BODY */
  int32_t auxWord1;
  KvoStr cate;  /* CATEGORIES */
  int32_t auxWord2;
  KvoStr cls;   /* CLASS */
  KvoDt created;   /* DCREATED */
  KvoDt modified;  /* LAST-MODIFIED */
} NoteItem;

OSTREL_API NoteItem *NoteItem_new(NoteItem *storage);
/* For a wrapper class that constructs the strings itself: the heap tag,
 * zero words and unset dates; the strings are left alone. */
OSTREL_API void NoteItem_newCpp(NoteItem *item);
OSTREL_API void NoteItem_delete(NoteItem *item);
OSTREL_API void NoteItem_clear(NoteItem *item);
OSTREL_API NoteItem *NoteItem_assign(NoteItem *item, const NoteItem *other);
OSTREL_API NoteItem *NoteItem_clone(const NoteItem *item);
OSTREL_API void NoteItem_trace(NoteItem *item);
OSTREL_API void NoteItem_tracex(NoteItem *item, IStrm *strm, int32_t append);
/* The note as vNote 1.1 text. */
OSTREL_API void NoteItem_dump(NoteItem *item, IStrm *strm, int32_t append);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_NOTEITEM_H */
