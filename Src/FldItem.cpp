// The file item record of the media and folder listings.
#include <array>

#include "detail/Object.h"
#include "detail/Trace.h"
#include "ostrel/FldItem.h"

namespace {

using ostrel::detail::TraceLines;

void resetScalars(FldItem *item) {
  item->luid = 0;
  item->attrs = 0;
  item->size = 0;
  item->perms = -1;
  KvoDt_init(&item->modified);
  KvoDt_init(&item->created);
  KvoDt_init(&item->accessed);
}

// The narrow text members from width to title, in record order, and type.
template <class Item>
auto textMembers(Item *item) {
  return std::array{&item->width, &item->height, &item->orient, &item->dur,
                    &item->album, &item->artist, &item->title, &item->type};
}

// attrs words in the order the trace lists them; each already ends in a
// blank, and the line's "%s " adds the second.
struct AttrWord {
  int32_t bit;
  const char *word;
};
constexpr AttrWord kAttrWords[] = {
    {FLD_ATTR_FILE, "FILE "},     {FLD_ATTR_FOLDER, "FLD "},
    {FLD_ATTR_HIDDEN, "HIDDEN "}, {FLD_ATTR_SYSTEM, "SYSTEM "},
    {FLD_ATTR_REMOVABLE, "REMOVALBE DEV "},
};

}  // namespace

extern "C" {

OSTREL_API FldItem *FldItem_new(FldItem *storage) {
  OSTREL_FUNC_TRACE();
  FldItem *item = ostrel::detail::newObject(storage, FLD_ITEM_TAG, __FILE__, __LINE__);
  item->reserved = 0;
  for (KvoStr *s : textMembers(item)) KvoStr_new(s);
  KvoWcs_new(&item->name);
  KvoWcs_new(&item->dsplName);
  resetScalars(item);
  return item;
}

OSTREL_API void FldItem_newCpp(FldItem *item) {
  OSTREL_FUNC_TRACE();
  ostrel::detail::setTagWord(item, FLD_ITEM_TAG | ostrel::detail::kHeapBit);
  item->reserved = 0;
  KvoDt_init(&item->modified);
  KvoDt_init(&item->created);
  KvoDt_init(&item->accessed);
  item->size = 0;
  item->attrs = 0;
  item->perms = -1;
}

OSTREL_API void FldItem_clearx(FldItem *item) {
  OSTREL_CHECK(item, FLD_ITEM_TAG);
  KvoWcs_delete(&item->name);
  KvoWcs_delete(&item->dsplName);
  for (KvoStr *s : textMembers(item)) KvoStr_delete(s);
}

OSTREL_API void FldItem_delete(FldItem *item) {
  OSTREL_FUNC_TRACE();
  FldItem_clearx(item);
  ostrel::detail::endObject(item, __FILE__, __LINE__);
}

OSTREL_API void FldItem_clear(FldItem *item) {
  OSTREL_CHECK(item, FLD_ITEM_TAG);
  KvoWcs_clear(&item->name);
  KvoWcs_clear(&item->dsplName);
  for (KvoStr *s : textMembers(item)) KvoStr_clear(s);
  resetScalars(item);
}

OSTREL_API FldItem *FldItem_assign(FldItem *item, const FldItem *other) {
  OSTREL_CHECK(item, FLD_ITEM_TAG);
  OSTREL_CHECK(other, FLD_ITEM_TAG);
  if (item == other) return item;
  KvoWcs_setCwcs(&item->name, &other->name);
  KvoWcs_setCwcs(&item->dsplName, &other->dsplName);
  const auto to = textMembers(item);
  const auto from = textMembers(other);
  for (size_t i = 0; i < to.size(); ++i) KvoStr_setCstr(to[i], from[i]);
  item->luid = other->luid;
  item->attrs = other->attrs;
  item->size = other->size;
  item->perms = other->perms;
  item->modified = other->modified;
  item->created = other->created;
  item->accessed = other->accessed;
  return item;
}

OSTREL_API void FldItem_tracex(FldItem *item, IStrm *strm, int32_t append) {
  OSTREL_CHECK(item, FLD_ITEM_TAG);
  if (!OSTREL_REQUIRE(strm, "strm")) return;
  ostrel::detail::openOutput(strm, append);
  IStrm_puts(strm, "\n# FldItem beg ......\n", -1);
  TraceLines lines(strm);
  lines.wcs("name", &item->name);
  if (item->luid != 0) IStrm_printf(strm, "luid = %lu\n", static_cast<unsigned long>(item->luid));
  lines.wcs("dsplName", &item->dsplName);
  lines.str("width", &item->width);
  lines.str("height", &item->height);
  lines.str("orient", &item->orient);
  lines.str("dur", &item->dur);
  lines.str("album", &item->album);
  lines.str("artist", &item->artist);
  lines.str("title", &item->title);
  IStrm_puts(strm, "attr = ", -1);
  for (const AttrWord &a : kAttrWords)
    if (item->attrs & a.bit) IStrm_printf(strm, "%s ", a.word);
  IStrm_puts(strm, "\n", -1);
  if (item->size != 0) IStrm_printf(strm, "size = %lu\n", static_cast<unsigned long>(item->size));
  if (KvoStr_len(&item->type) > 0) IStrm_printf(strm, "%s\n", KvoStr_buf(&item->type));
  lines.date("modified", item->modified);
  lines.date("created", item->created);
  lines.date("accessed", item->accessed);
  IStrm_puts(strm, "# FldItem end !!!!!!\n", -1);
}

OSTREL_API void FldItem_trace(FldItem *item) {
  OSTREL_CHECK(item, FLD_ITEM_TAG);
  ostrel::detail::traceRecord(item, FldItem_tracex);
}

OSTREL_API void FldItem_dump(FldItem *item, IStrm *strm, int32_t append) {
  FldItem_tracex(item, strm, append);
}

}  // extern "C"
