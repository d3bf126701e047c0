// The multimedia message record. Slides and media hang on list nodes the
// record allocates itself, each node owning one deep copy, so nothing a
// caller passes in is ever kept.
#include <cstring>

#include "detail/Mms.h"
#include "detail/Object.h"
#include "detail/Trace.h"

namespace {

using namespace ostrel::detail;

template <class T>
struct Node {
  KvoListNode link;  // first, as KvoList requires
  T *value;
};

template <class T>
T *valueOf(KvoListNode *node) {
  return reinterpret_cast<Node<T> *>(node)->value;
}

template <class T>
void append(KvoList *list, T *value) {
  auto *node = static_cast<Node<T> *>(kvo_malloc__(sizeof(Node<T>), __FILE__, __LINE__));
  std::memset(static_cast<void *>(node), 0, sizeof *node);
  node->value = value;
  KvoList_addTail__(list, &node->link);
}

void deleteSlideNode(KvoListNode *node) {
  MmsSlide_delete(valueOf<MmsSlide>(node));
  kvo_free__(node, __FILE__, __LINE__);
}

void deleteMediaNode(KvoListNode *node) {
  MmsMedia_delete(valueOf<MmsMedia>(node));
  kvo_free__(node, __FILE__, __LINE__);
}

// Slide and media enumerators have one shape: first node, next node.
template <class E>
E *newWalk(E *storage, uint32_t tag, const KvoList *list) {
  E *e = newObject(storage, tag, __FILE__, __LINE__);
  e->first = e->next = list->head;
  return e;
}

template <class T, class E>
T *walkNext(E *e) {
  if (!OSTREL_REQUIRE(e, "list") || e->next == nullptr) return nullptr;
  KvoListNode *node = e->next;
  e->next = node->next;
  return valueOf<T>(node);
}

void endWalk(void *e) {
  if (e != nullptr) endObject(e, __FILE__, __LINE__);
}

int32_t addAddress(KvoStr *list, const char *addr) {
  if (KvoStr_len(list) != 0) KvoStr_appdChar(list, ',');
  KvoStr_appdStr(list, addr);
  return 0;
}

MmsAddrEnum *addrEnum(MmsHdr *hdr, KvoStr MmsHdr::*member) {
  if (!OSTREL_REQUIRE(hdr, "hdr")) return nullptr;
  return MmsAddrEnum_new(nullptr, &(hdr->*member));
}

}  // namespace

namespace ostrel::detail {

MmsSlide *MmsSlide_new() {
  auto *slide = static_cast<MmsSlide *>(kvo_malloc__(sizeof(MmsSlide), __FILE__, __LINE__));
  slide->layout = slide->dur = 0;
  for (KvoStr *s : {&slide->text, &slide->img1, &slide->img2, &slide->audio, &slide->video})
    KvoStr_new(s);
  return slide;
}

void MmsSlide_delete(MmsSlide *slide) {
  for (KvoStr *s : {&slide->text, &slide->img1, &slide->img2, &slide->audio, &slide->video})
    KvoStr_delete(s);
  kvo_free__(slide, __FILE__, __LINE__);
}

MmsMedia *MmsMedia_new() {
  auto *media = static_cast<MmsMedia *>(kvo_malloc__(sizeof(MmsMedia), __FILE__, __LINE__));
  KvoStr_new(&media->name);
  KvoStr_new(&media->type);
  media->strm = MemStrm_xcreatex__(nullptr, 0, __FILE__, __LINE__);
  std::memset(media->extra, 0, sizeof media->extra);
  return media;
}

void MmsMedia_delete(MmsMedia *media) {
  KvoStr_delete(&media->name);
  KvoStr_delete(&media->type);
  IStrm_delete(media->strm);
  kvo_free__(media, __FILE__, __LINE__);
}

void MmsItem_adoptMedia(MmsItem *item, MmsMedia *media) { append(&item->medias, media); }

MmsAddrEnum *MmsAddrEnum_new(MmsAddrEnum *storage, const KvoStr *text) {
  MmsAddrEnum *e = newObject(storage, MMS_ADDR_ENUM_TAG, __FILE__, __LINE__);
  e->strm = StrStrm_xcreate__(nullptr, KvoStr_buf(text), -1, __FILE__, __LINE__);
  return e;
}

MmsSlideEnum *MmsSlideEnum_new(MmsSlideEnum *storage, const KvoList *slides) {
  return newWalk(storage, MMS_SLIDE_ENUM_TAG, slides);
}

MmsMediaEnum *MmsMediaEnum_new(MmsMediaEnum *storage, const KvoList *medias) {
  return newWalk(storage, MMS_MEDIA_ENUM_TAG, medias);
}

}  // namespace ostrel::detail

extern "C" {

OSTREL_API MmsItem *MmsItem_new(MmsItem *storage) {
  OSTREL_FUNC_TRACE();
  MmsItem *item = newObject(storage, MMS_ITEM_TAG, __FILE__, __LINE__);
  const uint32_t tag = item->tag;
  std::memset(static_cast<void *>(item), 0, sizeof *item);
  item->tag = tag;
  MmsHdr_new(&item->hdr);
  KvoList_init(&item->slides, 0);
  KvoList_init(&item->medias, 0);
  return item;
}

OSTREL_API void MmsItem_delete(MmsItem *item) {
  OSTREL_FUNC_TRACE();
  if (!OSTREL_REQUIRE(item, "item")) return;
  KvoList_delAll(&item->medias, deleteMediaNode);
  KvoList_delAll(&item->slides, deleteSlideNode);
  MmsHdr_delete(&item->hdr);
  endObject(item, __FILE__, __LINE__);
}

OSTREL_API int32_t MmsHdr_new(MmsHdr *hdr) {
  if (!OSTREL_REQUIRE(hdr, "hdr")) return 0;
  hdr->msgType = 0;
  for (KvoStr *s : {&hdr->tos, &hdr->ccs, &hdr->bccs, &hdr->from, &hdr->title}) KvoStr_new(s);
  KvoDt_init(&hdr->date);
  return 0;
}

OSTREL_API void MmsHdr_delete(MmsHdr *hdr) {
  if (!OSTREL_REQUIRE(hdr, "hdr")) return;
  for (KvoStr *s : {&hdr->tos, &hdr->ccs, &hdr->bccs, &hdr->from, &hdr->title}) KvoStr_delete(s);
}

OSTREL_API int32_t MmsHdr_addTo(MmsHdr *hdr, const char *addr) {
  return OSTREL_REQUIRE(hdr, "hdr") ? addAddress(&hdr->tos, addr) : 0;
}
OSTREL_API int32_t MmsHdr_addCc(MmsHdr *hdr, const char *addr) {
  return OSTREL_REQUIRE(hdr, "hdr") ? addAddress(&hdr->ccs, addr) : 0;
}
OSTREL_API int32_t MmsHdr_addBcc(MmsHdr *hdr, const char *addr) {
  return OSTREL_REQUIRE(hdr, "hdr") ? addAddress(&hdr->bccs, addr) : 0;
}

OSTREL_API MmsAddrEnum *MmsHdr_tos(MmsHdr *hdr) { return addrEnum(hdr, &MmsHdr::tos); }
OSTREL_API MmsAddrEnum *MmsHdr_ccs(MmsHdr *hdr) { return addrEnum(hdr, &MmsHdr::ccs); }
OSTREL_API MmsAddrEnum *MmsHdr_bccs(MmsHdr *hdr) { return addrEnum(hdr, &MmsHdr::bccs); }

OSTREL_API int32_t MmsAddrEnum_next(MmsAddrEnum *e, KvoStr *out) {
  if (!OSTREL_REQUIRE(e && out, "list")) return 0;
  KvoStr_clear(out);
  tarnex::ScratchStr<128> token;
  int32_t rc;
  // Delimiters and line ends between addresses are passed over.
  while ((rc = KvoLex_getDef(e->strm, token, ",;")) >= 0) {
    if (rc == KVO_LEX_WORD || rc == KVO_LEX_WORD_EOS) {
      KvoStr_setCstr(out, token);
      break;
    }
  }
  return rc >= 0 ? 1 : 0;
}

OSTREL_API void MmsAddrEnum_reset(MmsAddrEnum *e) {
  if (OSTREL_REQUIRE(e, "list")) IStrm_rewind(e->strm);
}

OSTREL_API void MmsAddrEnum_delete(MmsAddrEnum *e) {
  if (e == nullptr) return;
  IStrm_delete(e->strm);
  endObject(e, __FILE__, __LINE__);
}

OSTREL_API MmsSlideEnum *MmsItem_slides(MmsItem *item) {
  if (!OSTREL_REQUIRE(item, "item")) return nullptr;
  return MmsSlideEnum_new(nullptr, &item->slides);
}
OSTREL_API MmsSlide *MmsSlideEnum_next(MmsSlideEnum *e) { return walkNext<MmsSlide>(e); }
OSTREL_API void MmsSlideEnum_delete(MmsSlideEnum *e) { endWalk(e); }

OSTREL_API MmsMediaEnum *MmsItem_medias(MmsItem *item) {
  if (!OSTREL_REQUIRE(item, "item")) return nullptr;
  return MmsMediaEnum_new(nullptr, &item->medias);
}
OSTREL_API MmsMedia *MmsMediaEnum_next(MmsMediaEnum *e) { return walkNext<MmsMedia>(e); }
OSTREL_API void MmsMediaEnum_delete(MmsMediaEnum *e) { endWalk(e); }

OSTREL_API int32_t MmsItem_addSlide(MmsItem *item, const MmsSlide *slide) {
  if (!OSTREL_REQUIRE(item, "item") || !OSTREL_REQUIRE(slide, "slide")) return 0;
  MmsSlide *copy = MmsSlide_new();
  KvoStr_setCstr(&copy->audio, &slide->audio);
  KvoStr_setCstr(&copy->img1, &slide->img1);
  KvoStr_setCstr(&copy->img2, &slide->img2);
  KvoStr_setCstr(&copy->text, &slide->text);
  KvoStr_setCstr(&copy->video, &slide->video);
  copy->layout = slide->layout;
  copy->dur = slide->dur != 0 ? slide->dur : MMS_SLIDE_DUR_DEFAULT;
  append(&item->slides, copy);
  return 0;
}

OSTREL_API int32_t MmsItem_addMedia(MmsItem *item, const MmsMedia *media) {
  if (!OSTREL_REQUIRE(item, "item") || !OSTREL_REQUIRE(media, "media")) return 0;
  MmsMedia *copy = MmsMedia_new();
  KvoStr_setCstr(&copy->name, &media->name);
  KvoStr_setCstr(&copy->type, &media->type);
  if (media->strm != nullptr) IStrm_appd(copy->strm, media->strm);
  std::memcpy(copy->extra, media->extra, sizeof copy->extra);
  append(&item->medias, copy);
  return 0;
}

OSTREL_API int32_t MmsItem_media(MmsItem *item, MmsMedia *media, const char *name) {
  if (!OSTREL_REQUIRE(item && media && name, "item && media && name")) return OSTREL_NOT_FOUND;
  MmsMediaEnum walk;
  MmsMediaEnum_new(&walk, &item->medias);
  const MmsMedia *found = nullptr;
  while (const MmsMedia *m = MmsMediaEnum_next(&walk)) {
    if (kvo_stricmp(KvoStr_buf(&m->name), name) == 0) {
      found = m;
      break;
    }
  }
  MmsMediaEnum_delete(&walk);
  if (found == nullptr) return OSTREL_NOT_FOUND;
  KvoStr_setCstr(&media->name, &found->name);
  if (media->strm != nullptr) IStrm_copy(media->strm, found->strm);
  KvoStr_setCstr(&media->type, &found->type);
  std::memcpy(media->extra, found->extra, sizeof media->extra);
  return 0;
}

OSTREL_API int32_t MmsItem_slideCount(MmsItem *item) {
  return OSTREL_REQUIRE(item, "item") ? KvoList_count(&item->slides) : 0;
}
OSTREL_API int32_t MmsItem_mediaCount(MmsItem *item) {
  return OSTREL_REQUIRE(item, "item") ? KvoList_count(&item->medias) : 0;
}

OSTREL_API void MmsSlide_clear(MmsSlide *slide) {
  if (!OSTREL_REQUIRE(slide, "slide")) return;
  for (KvoStr *s : {&slide->text, &slide->img1, &slide->img2, &slide->video, &slide->audio})
    KvoStr_clear(s);
}

OSTREL_API void MmsMedia_clear(MmsMedia *media) {
  if (!OSTREL_REQUIRE(media, "media")) return;
  KvoStr_clear(&media->name);
  KvoStr_clear(&media->type);
  if (media->strm != nullptr) IStrm_clear(media->strm);
  std::memset(media->extra, 0, sizeof media->extra);
}

}  // extern "C"
