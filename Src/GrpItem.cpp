// The contact group record.
#include "detail/Object.h"
#include "detail/Trace.h"
#include "ostrel/GrpItem.h"

namespace {

using ostrel::detail::newObject;

struct AttrLine {
  int32_t bit;
  const char *line;
};
constexpr AttrLine kAttrLines[] = {{GRP_ATTR_EDIT, "attr = edit\n"},
                                   {GRP_ATTR_REMOVE, "attr = remove\n"},
                                   {GRP_ATTR_ANOTHER_NAME, "attr = another name\n"}};

}  // namespace

extern "C" {

OSTREL_API GrpItem *GrpItem_new(GrpItem *storage) {
  OSTREL_FUNC_TRACE();
  GrpItem *item = newObject(storage, GRP_ITEM_TAG, __FILE__, __LINE__);
  item->reserved = 0;
  KvoWcs_new(&item->name);
  KvoStr_new(&item->id);
  item->attr = 0;
  KvoStr_new(&item->accName);
  KvoStr_new(&item->accType);
  return item;
}

OSTREL_API void GrpItem_delete(GrpItem *item) {
  OSTREL_FUNC_TRACE();
  OSTREL_CHECK(item, GRP_ITEM_TAG);
  KvoWcs_delete(&item->name);
  KvoStr_delete(&item->id);
  KvoStr_delete(&item->accName);
  KvoStr_delete(&item->accType);
  ostrel::detail::endObject(item, __FILE__, __LINE__);
}

OSTREL_API void GrpItem_clear(GrpItem *item) {
  OSTREL_CHECK(item, GRP_ITEM_TAG);
  KvoWcs_clear(&item->name);
  KvoStr_clear(&item->id);
  item->attr = 0;
  KvoStr_clear(&item->accName);
  KvoStr_clear(&item->accType);
}

OSTREL_API GrpItem *GrpItem_assign(GrpItem *item, const GrpItem *other) {
  OSTREL_CHECK(item, GRP_ITEM_TAG);
  OSTREL_CHECK(other, GRP_ITEM_TAG);
  if (item == other) return item;
  KvoWcs_setCwcs(&item->name, &other->name);
  KvoStr_setCstr(&item->id, &other->id);
  item->attr = other->attr;
  KvoStr_setCstr(&item->accName, &other->accName);
  KvoStr_setCstr(&item->accType, &other->accType);
  return item;
}

OSTREL_API GrpItem *GrpItem_clone(const GrpItem *item) {
  OSTREL_CHECK(item, GRP_ITEM_TAG);
  return GrpItem_assign(GrpItem_new(nullptr), item);
}

OSTREL_API void GrpItem_tracex(GrpItem *item, IStrm *strm, int32_t append) {
  OSTREL_CHECK(item, GRP_ITEM_TAG);
  if (!OSTREL_REQUIRE(strm, "strm")) return;
  ostrel::detail::openOutput(strm, append);
  IStrm_puts(strm, "# GrpItem beg......\n", -1);
  ostrel::detail::TraceLines lines(strm);
  lines.str("id", &item->id);
  lines.wcs("name", &item->name);
  for (const AttrLine &a : kAttrLines)
    if (item->attr & a.bit) IStrm_puts(strm, a.line, -1);
  lines.str("accName", &item->accName);
  lines.str("accType", &item->accType);
  IStrm_puts(strm, "# GrpItem end !!!!!!\n", -1);
}

OSTREL_API void GrpItem_trace(GrpItem *item) {
  OSTREL_CHECK(item, GRP_ITEM_TAG);
  ostrel::detail::traceRecord(item, GrpItem_tracex);
}

OSTREL_API void GrpItem_dump(GrpItem *item, IStrm *strm, int32_t append) {
  OSTREL_CHECK(item, GRP_ITEM_TAG);
  if (!OSTREL_REQUIRE(strm, "strm")) return;
  GrpItem_tracex(item, strm, append);
}

}  // extern "C"
