// The call record.
#include "detail/Object.h"
#include "detail/Trace.h"
#include "ostrel/CallItem.h"

extern "C" {

OSTREL_API CallItem *CallItem_new(CallItem *storage) {
  OSTREL_FUNC_TRACE();
  CallItem *item = ostrel::detail::newObject(storage, CALL_ITEM_TAG, __FILE__, __LINE__);
  item->reserved = 0;
  item->luid = -1;
  KvoStr_new(&item->tel);
  KvoDt_init(&item->data);
  KvoStr_new(&item->dur);
  KvoStr_new(&item->type);
  return item;
}

OSTREL_API void CallItem_newCpp(CallItem *item) {
  OSTREL_FUNC_TRACE();
  ostrel::detail::setTagWord(item, CALL_ITEM_TAG | ostrel::detail::kHeapBit);
  item->reserved = 0;
  KvoDt_init(&item->data);
}

OSTREL_API void CallItem_delete(CallItem *item) {
  OSTREL_FUNC_TRACE();
  OSTREL_CHECK(item, CALL_ITEM_TAG);
  KvoStr_delete(&item->tel);
  KvoStr_delete(&item->dur);
  KvoStr_delete(&item->type);
  ostrel::detail::endObject(item, __FILE__, __LINE__);
}

OSTREL_API void CallItem_clear(CallItem *item) {
  OSTREL_CHECK(item, CALL_ITEM_TAG);
  item->luid = -1;
  KvoStr_clear(&item->tel);
  KvoDt_init(&item->data);
  KvoStr_clear(&item->dur);
  KvoStr_clear(&item->type);
}

OSTREL_API CallItem *CallItem_assign(CallItem *item, const CallItem *other) {
  OSTREL_CHECK(item, CALL_ITEM_TAG);
  OSTREL_CHECK(other, CALL_ITEM_TAG);
  if (item == other) return item;
  item->luid = other->luid;
  KvoStr_setCstr(&item->tel, &other->tel);
  item->data = other->data;
  KvoStr_setCstr(&item->dur, &other->dur);
  KvoStr_setCstr(&item->type, &other->type);
  return item;
}

OSTREL_API void CallItem_tracex(CallItem *item, IStrm *strm, int32_t append) {
  OSTREL_CHECK(item, CALL_ITEM_TAG);
  if (!OSTREL_REQUIRE(strm, "strm")) return;
  ostrel::detail::openOutput(strm, append);
  IStrm_puts(strm, "# CallItem beg......\n", -1);
  IStrm_printf(strm, "luid = %ld\n", static_cast<long>(item->luid));
  // The text members end in CR LF, the others in LF alone: the trace text
  // has always been so, and readers of it compare lines.
  if (item->tel.len != 0) IStrm_printf(strm, "tel = %s\r\n", item->tel.buf);
  if (ostrel::detail::dateSet(item->data)) {
    tarnex::ScratchStr<48> text;
    iso_dt_enc(text, &item->data);
    IStrm_printf(strm, "data = %s\n", text.c_str());
  }
  if (item->dur.len != 0) IStrm_printf(strm, "dur = %s\r\n", item->dur.buf);
  if (item->type.len != 0) IStrm_printf(strm, "type = %s\r\n", item->type.buf);
  IStrm_puts(strm, "# CallItem end !!!!!!\n", -1);
}

OSTREL_API void CallItem_trace(CallItem *item) {
  OSTREL_CHECK(item, CALL_ITEM_TAG);
  ostrel::detail::traceRecord(item, CallItem_tracex);
}

OSTREL_API void CallItem_dump(CallItem *item, IStrm *strm, int32_t append) {
  OSTREL_CHECK(item, CALL_ITEM_TAG);
  if (!OSTREL_REQUIRE(strm, "strm")) return;
  CallItem_tracex(item, strm, append);
}

}  // extern "C"
