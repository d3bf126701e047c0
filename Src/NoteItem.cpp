// The note record.
#include "detail/Object.h"
#include "detail/TextEnc.h"
#include "detail/Trace.h"
#include "ostrel/NoteItem.h"
#include "ostrel/VnoteEd.h"

namespace {

void zeroWords(NoteItem *item) {
  item->reserved = 0;
  item->auxWord0 = item->auxWord1 = item->auxWord2 = 0;
  KvoDt_init(&item->created);
  KvoDt_init(&item->modified);
}

}  // namespace

extern "C" {

OSTREL_API NoteItem *NoteItem_new(NoteItem *storage) {
  OSTREL_FUNC_TRACE();
  NoteItem *item = ostrel::detail::newObject(storage, NOTE_ITEM_TAG, __FILE__, __LINE__);
  zeroWords(item);
  KvoWcs_new(&item->summ);
  KvoWcs_new(&item->body);
  KvoStr_new(&item->cate);
  KvoStr_new(&item->cls);
  return item;
}

OSTREL_API void NoteItem_newCpp(NoteItem *item) {
  OSTREL_FUNC_TRACE();
  ostrel::detail::setTagWord(item, NOTE_ITEM_TAG | ostrel::detail::kHeapBit);
  zeroWords(item);
}

OSTREL_API void NoteItem_delete(NoteItem *item) {
  OSTREL_FUNC_TRACE();
  OSTREL_CHECK(item, NOTE_ITEM_TAG);
  KvoWcs_delete(&item->summ);
  KvoWcs_delete(&item->body);
  KvoStr_delete(&item->cate);
  KvoStr_delete(&item->cls);
  ostrel::detail::endObject(item, __FILE__, __LINE__);
}

OSTREL_API void NoteItem_clear(NoteItem *item) {
  OSTREL_CHECK(item, NOTE_ITEM_TAG);
  const uint32_t reserved = item->reserved;
  zeroWords(item);
  item->reserved = reserved;
  KvoWcs_clear(&item->summ);
  KvoWcs_clear(&item->body);
  KvoStr_clear(&item->cate);
  KvoStr_clear(&item->cls);
}

OSTREL_API NoteItem *NoteItem_assign(NoteItem *item, const NoteItem *other) {
  OSTREL_CHECK(item, NOTE_ITEM_TAG);
  OSTREL_CHECK(other, NOTE_ITEM_TAG);
  if (item == other) return item;
  item->auxWord0 = other->auxWord0;
  item->auxWord1 = other->auxWord1;
  item->auxWord2 = other->auxWord2;
  KvoWcs_setCwcs(&item->summ, &other->summ);
  KvoWcs_setCwcs(&item->body, &other->body);
  KvoStr_setCstr(&item->cate, &other->cate);
  KvoStr_setCstr(&item->cls, &other->cls);
  item->created = other->created;
  item->modified = other->modified;
  return item;
}

OSTREL_API NoteItem *NoteItem_clone(const NoteItem *item) {
  OSTREL_CHECK(item, NOTE_ITEM_TAG);
  return NoteItem_assign(NoteItem_new(nullptr), item);
}

OSTREL_API void NoteItem_tracex(NoteItem *item, IStrm *strm, int32_t append) {
  OSTREL_CHECK(item, NOTE_ITEM_TAG);
  if (!OSTREL_REQUIRE(strm, "strm")) return;
  ostrel::detail::openOutput(strm, append);
  IStrm_puts(strm, "# NoteItem beg ......\n", -1);
  ostrel::detail::TraceLines lines(strm);
  lines.wcs("summ", &item->summ);
  lines.wcs("body", &item->body);
  lines.str("cate", &item->cate);
  lines.str("cls", &item->cls);
  lines.date("created", item->created);
  lines.date("modified", item->modified);
  IStrm_puts(strm, "# NoteItem end !!!!!!\n", -1);
}

OSTREL_API void NoteItem_trace(NoteItem *item) {
  OSTREL_CHECK(item, NOTE_ITEM_TAG);
  ostrel::detail::traceRecord(item, NoteItem_tracex);
}

OSTREL_API void NoteItem_dump(NoteItem *item, IStrm *strm, int32_t append) {
  OSTREL_CHECK(item, NOTE_ITEM_TAG);
  if (!OSTREL_REQUIRE(strm, "strm")) return;
  ostrel::detail::openOutput(strm, append);
  Vnote_enc(strm, item, 0x101);
}

}  // extern "C"
