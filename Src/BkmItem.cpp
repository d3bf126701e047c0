// The bookmark record.
#include "detail/Object.h"
#include "detail/Trace.h"
#include "ostrel/BkmItem.h"
#include "ostrel/VbkmEd.h"

extern "C" {

OSTREL_API BkmItem *BkmItem_new(BkmItem *storage) {
  OSTREL_FUNC_TRACE();
  BkmItem *item = ostrel::detail::newObject(storage, BKM_ITEM_TAG, __FILE__, __LINE__);
  item->reserved = 0;
  KvoWcs_new(&item->title);
  KvoStr_new(&item->url);
  KvoDt_init(&item->modified);
  return item;
}

// Unlike the other families, the date is the wrapper's to set up too.
OSTREL_API void BkmItem_newCpp(BkmItem *item) {
  OSTREL_FUNC_TRACE();
  ostrel::detail::setTagWord(item, BKM_ITEM_TAG | ostrel::detail::kHeapBit);
  item->reserved = 0;
}

OSTREL_API void BkmItem_delete(BkmItem *item) {
  OSTREL_FUNC_TRACE();
  OSTREL_CHECK(item, BKM_ITEM_TAG);
  KvoWcs_delete(&item->title);
  KvoStr_delete(&item->url);
  ostrel::detail::endObject(item, __FILE__, __LINE__);
}

OSTREL_API void BkmItem_clear(BkmItem *item) {
  OSTREL_CHECK(item, BKM_ITEM_TAG);
  KvoWcs_clear(&item->title);
  KvoStr_clear(&item->url);
  KvoDt_init(&item->modified);
}

OSTREL_API BkmItem *BkmItem_assign(BkmItem *item, const BkmItem *other) {
  OSTREL_CHECK(item, BKM_ITEM_TAG);
  OSTREL_CHECK(other, BKM_ITEM_TAG);
  if (item == other) return item;
  KvoWcs_setCwcs(&item->title, &other->title);
  KvoStr_setCstr(&item->url, &other->url);
  item->modified = other->modified;
  return item;
}

OSTREL_API BkmItem *BkmItem_clone(const BkmItem *item) {
  OSTREL_CHECK(item, BKM_ITEM_TAG);
  return BkmItem_assign(BkmItem_new(nullptr), item);
}

OSTREL_API void BkmItem_tracex(BkmItem *item, IStrm *strm, int32_t append) {
  OSTREL_CHECK(item, BKM_ITEM_TAG);
  if (!OSTREL_REQUIRE(strm, "strm")) return;
  ostrel::detail::openOutput(strm, append);
  IStrm_puts(strm, "# BkmItem beg ......\n", -1);
  ostrel::detail::TraceLines lines(strm);
  lines.wcs("title", &item->title);
  lines.str("url", &item->url);
  lines.date("modified", item->modified);
  IStrm_puts(strm, "# BkmItem end !!!!!!\n", -1);
}

// The one record traced under the foundation's module, as a block of its own.
OSTREL_API void BkmItem_trace(BkmItem *item) {
  OSTREL_CHECK(item, BKM_ITEM_TAG);
  if (!ostrel::detail::traceOn(5, ostrel::detail::kCatPos, 1)) return;
  tarnex::ScratchMemStrm text(0);
  BkmItem_tracex(item, text, 0);
  tout_beg(__FILE__, __LINE__, 5, ostrel::detail::kCatPos, 1);
  tout_tstrm(text);
  tout_endx();
}

OSTREL_API void BkmItem_dump(BkmItem *item, IStrm *strm, int32_t append) {
  OSTREL_CHECK(item, BKM_ITEM_TAG);
  if (!OSTREL_REQUIRE(strm, "strm")) return;
  ostrel::detail::openOutput(strm, append);
  Vbkm_enc(strm, item, 0x101);
}

}  // extern "C"
