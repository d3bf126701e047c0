// The application record: names, version, package facts and an owned icon.
#include <array>

#include "detail/Object.h"
#include "detail/Trace.h"
#include "ostrel/AppItem.h"

namespace {

template <class Item>
auto textMembers(Item *item) {
  return std::array{&item->name,     &item->interName, &item->verName,
                    &item->platform, &item->perms,     &item->pkgPath};
}

void zeroNumbers(AppItem *item) {
  item->verCode = 0;
  item->pkgType = 0;
  item->pkgSize = 0;
  item->pkgPos = 0;
  item->sysPkg = 0;
  item->iconType = 0;
}

// head, the text, tail: a line written only for a text that is not empty.
void textLine(IStrm *strm, const char *head, const KvoStr *value, const char *tail = "\r\n") {
  if (KvoStr_len(value) == 0) return;
  IStrm_puts(strm, head, -1);
  IStrm_puts(strm, KvoStr_buf(value), KvoStr_len(value));
  IStrm_puts(strm, tail, -1);
}

}  // namespace

extern "C" {

OSTREL_API AppItem *AppItem_new(AppItem *storage) {
  OSTREL_FUNC_TRACE();
  AppItem *item = ostrel::detail::newObject(storage, APP_ITEM_TAG, __FILE__, __LINE__);
  for (KvoStr *s : textMembers(item)) KvoStr_new(s);
  item->icon = MemStrm_xcreatex__(nullptr, 0, __FILE__, __LINE__);
  AppItem_clear(item);
  return item;
}

OSTREL_API void AppItem_delete(AppItem *item) {
  OSTREL_FUNC_TRACE();
  OSTREL_CHECK(item, APP_ITEM_TAG);
  for (KvoStr *s : textMembers(item)) KvoStr_delete(s);
  if (item->icon != nullptr) IStrm_delete(item->icon);
  item->icon = nullptr;
  ostrel::detail::endObject(item, __FILE__, __LINE__);
}

// No tag check here: a caller may clear a record it filled by hand.
OSTREL_API void AppItem_clear(AppItem *item) {
  for (KvoStr *s : textMembers(item)) KvoStr_clear(s);
  zeroNumbers(item);
  if (item->icon != nullptr) IStrm_clear(item->icon);
}

OSTREL_API AppItem *AppItem_assign(AppItem *item, const AppItem *other) {
  OSTREL_CHECK(item, APP_ITEM_TAG);
  OSTREL_CHECK(other, APP_ITEM_TAG);
  if (item == other) return item;
  const auto to = textMembers(item);
  const auto from = textMembers(other);
  for (size_t i = 0; i < to.size(); ++i) KvoStr_setCstr(to[i], from[i]);
  item->verCode = other->verCode;
  item->pkgType = other->pkgType;
  item->pkgSize = other->pkgSize;
  item->pkgPos = other->pkgPos;
  item->sysPkg = other->sysPkg;
  item->iconType = other->iconType;
  if (item->icon != nullptr) {
    IStrm_clear(item->icon);
    if (other->icon != nullptr) IStrm_copy(item->icon, other->icon);
  }
  return item;
}

OSTREL_API AppItem *AppItem_clone(const AppItem *item) {
  OSTREL_CHECK(item, APP_ITEM_TAG);
  return AppItem_assign(AppItem_new(nullptr), item);
}

OSTREL_API void AppItem_tracex(AppItem *item, IStrm *strm, int32_t append) {
  OSTREL_CHECK(item, APP_ITEM_TAG);
  if (!OSTREL_REQUIRE(strm, "strm")) return;
  ostrel::detail::openOutput(strm, append);
  IStrm_puts(strm, "# AppItem beg......\n", -1);
  textLine(strm, "name : ", &item->name);
  textLine(strm, "interName : ", &item->interName);
  textLine(strm, "verName : ", &item->verName);
  IStrm_printf(strm, "verCode : %d\r\n", static_cast<int>(item->verCode));
  textLine(strm, "platform : ", &item->platform, "\n");
  textLine(strm, "perms :\n", &item->perms);
  IStrm_puts(strm, "pkgType : def apk\r\n", -1);
  textLine(strm, "pkgPath : ", &item->pkgPath);
  IStrm_printf(strm, "pkgSize : %d\r\n", static_cast<int>(item->pkgSize));
  if (item->pkgPos != APP_POS_UNSAID)
    IStrm_printf(strm, "pkgPos : %s\r\n", item->pkgPos == APP_POS_PHONE ? "Phone" : "SdCard");
  IStrm_printf(strm, "sysPkg : %s\r\n", item->sysPkg != 0 ? "true" : "false");
  IStrm_puts(strm, "iconType : def png\r\n", -1);
  IStrm_puts(strm, "icon : ......\r\n", -1);
  IStrm_puts(strm, "# AppItem end !!!!!!\n", -1);
}

OSTREL_API void AppItem_trace(AppItem *item) {
  OSTREL_CHECK(item, APP_ITEM_TAG);
  ostrel::detail::traceRecord(item, AppItem_tracex);
}

OSTREL_API void AppItem_dump(AppItem *, IStrm *, int32_t) {}

}  // extern "C"
