/*
 * tarnex/list.h - the two list kinds and the id/word map.
 *
 * KvoList is an intrusive, doubly linked list: an element is any structure
 * whose first member is a KvoListNode. The list never allocates; the owner
 * of the list allocates its elements and gives a deleter to KvoList_delAll.
 *
 * SmpList builds a singly linked chain of tagged records: an element begins
 * with an SmpLink (its 32-bit tag word, then the link to the next element).
 * The chain itself is just its first element; an SmpList value only helps
 * to append at the end while a chain is built.
 *
 * StrIdMap is a constant table of {id, word} rows ended by a row whose word
 * is null. Lookups walk it from the top; the first row that matches wins.
 */
#ifndef TARNEX_LIST_H
#define TARNEX_LIST_H

#include "tarnex/base.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct KvoListNode {
  struct KvoListNode *next;
  struct KvoListNode *prev;
} KvoListNode;

typedef struct KvoList {
  KvoListNode *head;
  KvoListNode *tail;
  int32_t count;
  int32_t flags; /* as given to KvoList_init; not read by the list */
} KvoList;

typedef void (*KvoListDeleter)(KvoListNode *node);

TARNEX_API KvoList *KvoList_init(KvoList *list, int32_t flags);
TARNEX_API void KvoList_addTail__(KvoList *list, KvoListNode *node);
TARNEX_API void KvoList_addHead__(KvoList *list, KvoListNode *node);
/* Unlinks node (which must be in list) and gives it back. */
TARNEX_API KvoListNode *KvoList_remove__(KvoList *list, KvoListNode *node);
/* The node at index (0 based), or null when out of range. */
TARNEX_API KvoListNode *KvoList_at(const KvoList *list, int32_t index);
TARNEX_API int32_t KvoList_count(const KvoList *list);
/* Unlinks every node, head first, handing each to deleter (may be null),
 * and leaves the list empty. */
TARNEX_API void KvoList_delAll(KvoList *list, KvoListDeleter deleter);

typedef struct SmpLink {
  uint32_t tag;
  struct SmpLink *next;
} SmpLink;

typedef struct SmpList {
  SmpLink *head;
  SmpLink *tail;
  int32_t count;
  int32_t reserved;
} SmpList;

typedef SmpLink *(*SmpCloner)(const SmpLink *elem);
typedef void (*SmpDeleter)(SmpLink *elem);

TARNEX_API SmpList *SmpList_init(SmpList *list);
/* Appends elem (its next is set to null). */
TARNEX_API void SmpList_addTail(SmpList *list, SmpLink *elem);
/* A new chain of fn(element) for each element of the chain at head, in
 * order; null for a null head. */
TARNEX_API SmpLink *SmpList_clone(const SmpLink *head, SmpCloner fn);
/* Hands every element of the chain at head to fn, first to last. */
TARNEX_API void SmpList_delete(SmpLink *head, SmpDeleter fn);

typedef struct StrIdMap {
  int32_t id;
  const char *word;
} StrIdMap;

/* Finds text (case ignored, ASCII) and gives its id; not 0 if found. */
TARNEX_API int32_t StrIdMap_findByStr(const StrIdMap *map, const char *text, int32_t *id);
/* Finds id and gives its word; not 0 if found. */
TARNEX_API int32_t StrIdMap_findById(const StrIdMap *map, int32_t id, const char **text);

#ifdef __cplusplus
}
#endif

#endif /* TARNEX_LIST_H */
