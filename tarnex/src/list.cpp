// The intrusive list, the chain of tagged records and the id/word map.
// Nothing here allocates: elements belong to whoever made them.
#include "tarnex/list.h"
#include "tarnex/text.h"

namespace {

bool missing(const void *p, const char *what, const char *file = __builtin_FILE(),
             int32_t line = __builtin_LINE()) {
  if (p) return false;
  kvo_assert__(what, file, line);
  return true;
}

// A node that is not linked where its neighbours say it is cannot be in
// the list; unlinking it would corrupt the list's ends.
bool linkedIn(const KvoList *list, const KvoListNode *node) {
  if (node->prev ? node->prev->next != node : list->head != node) return false;
  if (node->next ? node->next->prev != node : list->tail != node) return false;
  return true;
}

}  // namespace

extern "C" {

// ---- KvoList -------------------------------------------------------------------

TARNEX_API KvoList *KvoList_init(KvoList *list, int32_t flags) {
  if (missing(list, "list")) return nullptr;
  list->head = list->tail = nullptr;
  list->count = 0;
  list->flags = flags;
  return list;
}

TARNEX_API void KvoList_addTail__(KvoList *list, KvoListNode *node) {
  if (missing(list, "list") || missing(node, "node")) return;
  node->next = nullptr;
  node->prev = list->tail;
  if (list->tail) {
    list->tail->next = node;
  } else {
    list->head = node;
  }
  list->tail = node;
  ++list->count;
}

TARNEX_API void KvoList_addHead__(KvoList *list, KvoListNode *node) {
  if (missing(list, "list") || missing(node, "node")) return;
  node->prev = nullptr;
  node->next = list->head;
  if (list->head) {
    list->head->prev = node;
  } else {
    list->tail = node;
  }
  list->head = node;
  ++list->count;
}

TARNEX_API KvoListNode *KvoList_remove__(KvoList *list, KvoListNode *node) {
  if (missing(list, "list") || !node) return nullptr;
  if (!linkedIn(list, node)) {
    kvo_assert__("node in list", __FILE__, __LINE__);
    return nullptr;
  }
  if (node->prev) {
    node->prev->next = node->next;
  } else {
    list->head = node->next;
  }
  if (node->next) {
    node->next->prev = node->prev;
  } else {
    list->tail = node->prev;
  }
  node->next = node->prev = nullptr;
  --list->count;
  return node;
}

// Walks from the nearer end.
TARNEX_API KvoListNode *KvoList_at(const KvoList *list, int32_t index) {
  if (missing(list, "list") || index < 0 || index >= list->count) return nullptr;
  KvoListNode *node;
  if (index <= list->count / 2) {
    node = list->head;
    for (int32_t i = 0; node && i < index; ++i) node = node->next;
  } else {
    node = list->tail;
    for (int32_t i = list->count - 1; node && i > index; --i) node = node->prev;
  }
  return node;
}

TARNEX_API int32_t KvoList_count(const KvoList *list) {
  if (missing(list, "list")) return 0;
  return list->count;
}

// The list is emptied before the first deleter runs, so a deleter that
// looks at the list sees it empty, and each node is unlinked before it is
// handed over (the deleter may free it).
TARNEX_API void KvoList_delAll(KvoList *list, KvoListDeleter deleter) {
  if (missing(list, "list")) return;
  KvoListNode *node = list->head;
  list->head = list->tail = nullptr;
  list->count = 0;
  while (node) {
    KvoListNode *next = node->next;
    node->next = node->prev = nullptr;
    if (deleter) deleter(node);
    node = next;
  }
}

// ---- SmpList ----------------------------------------------------------------------

TARNEX_API SmpList *SmpList_init(SmpList *list) {
  if (missing(list, "list")) return nullptr;
  list->head = list->tail = nullptr;
  list->count = 0;
  list->reserved = 0;
  return list;
}

TARNEX_API void SmpList_addTail(SmpList *list, SmpLink *elem) {
  if (missing(list, "list") || missing(elem, "elem")) return;
  elem->next = nullptr;
  if (list->tail) {
    list->tail->next = elem;
  } else {
    list->head = elem;
  }
  list->tail = elem;
  ++list->count;
}

// An element the cloner gives no copy for (null) is left out of the new
// chain rather than ending it.
TARNEX_API SmpLink *SmpList_clone(const SmpLink *head, SmpCloner fn) {
  if (!head) return nullptr;
  if (!fn) {
    kvo_assert__("fn", __FILE__, __LINE__);
    return nullptr;
  }
  SmpList out;
  SmpList_init(&out);
  for (const SmpLink *e = head; e; e = e->next) {
    if (SmpLink *copy = fn(e)) SmpList_addTail(&out, copy);
  }
  return out.head;
}

TARNEX_API void SmpList_delete(SmpLink *head, SmpDeleter fn) {
  if (!head) return;
  if (!fn) {
    kvo_assert__("fn", __FILE__, __LINE__);
    return;
  }
  while (head) {
    SmpLink *next = head->next;
    fn(head);
    head = next;
  }
}

// ---- StrIdMap -------------------------------------------------------------------------

TARNEX_API int32_t StrIdMap_findByStr(const StrIdMap *map, const char *text, int32_t *id) {
  if (!map) return 0;
  for (const StrIdMap *row = map; row->word; ++row) {
    if (kvo_stricmp(row->word, text) == 0) {
      if (id) *id = row->id;
      return 1;
    }
  }
  return 0;
}

TARNEX_API int32_t StrIdMap_findById(const StrIdMap *map, int32_t id, const char **text) {
  if (!map) return 0;
  for (const StrIdMap *row = map; row->word; ++row) {
    if (row->id == id) {
      if (text) *text = row->word;
      return 1;
    }
  }
  return 0;
}

}  // extern "C"
