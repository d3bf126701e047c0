// The MMS listing: its record, and its description for the listing
// protocol.
#include <array>
#include <cstddef>

#include "detail/ListingExports.h"
#include "detail/ListingWords.h"
#include "detail/Object.h"
#include "detail/Trace.h"
#include "ostrel/XmmsEd.h"

namespace {

template <class Item>
auto textMembers(Item *item) {
  return std::array{&item->name, &item->from, &item->to, &item->cc, &item->bcc, &item->title};
}

void resetScalars(XmmsItem *item) {
  item->attrs = 0;
  item->stat = XMMS_STAT_DEF;
  item->size = 0;
  item->perms = -1;
  KvoDt_init(&item->xptTime);
}

// "\tfrom: \"%s\"\r\n" for a text that is not empty.
void quotedLine(IStrm *strm, const char *id, const KvoStr *value) {
  if (KvoStr_len(value) > 0) IStrm_printf(strm, "\t%s: \"%s\"\r\n", id, KvoStr_buf(value));
}

}  // namespace

extern "C" {

OSTREL_API XmmsItem *XmmsItem_new(void) {
  OSTREL_FUNC_TRACE();
  XmmsItem *item =
      ostrel::detail::newObject(static_cast<XmmsItem *>(nullptr), XMMS_ITEM_TAG, __FILE__, __LINE__);
  for (KvoStr *s : textMembers(item)) KvoStr_new(s);
  resetScalars(item);
  return item;
}

OSTREL_API void XmmsItem_delete(XmmsItem *item) {
  OSTREL_FUNC_TRACE();
  OSTREL_CHECK(item, XMMS_ITEM_TAG);
  for (KvoStr *s : textMembers(item)) KvoStr_delete(s);
  ostrel::detail::endObject(item, __FILE__, __LINE__);
}

OSTREL_API void XmmsItem_clear(XmmsItem *item) {
  OSTREL_CHECK(item, XMMS_ITEM_TAG);
  for (KvoStr *s : textMembers(item)) KvoStr_clear(s);
  resetScalars(item);
}

OSTREL_API void XmmsItem_tracex(XmmsItem *item, IStrm *strm, int32_t append) {
  OSTREL_CHECK(item, XMMS_ITEM_TAG);
  if (!OSTREL_REQUIRE(strm, "strm")) return;
  ostrel::detail::openOutput(strm, append);
  IStrm_puts(strm, "# XmmsItem beg ......\r\n", -1);
  IStrm_printf(strm, "\tname: \"%s\"\r\n", KvoStr_buf(&item->name));
  if (item->attrs & XMMS_ATTR_FOLDER) {
    IStrm_puts(strm, "\tattrs: fld\r\n", -1);
    tarnex::ScratchStr<8> perms;
    if (ostrel::detail::permsToText(item->perms, perms))
      IStrm_printf(strm, "\tperms: \"%s\"\r\n", perms.c_str());
  } else if (item->attrs & XMMS_ATTR_ITEM) {
    IStrm_puts(strm, "\tattrs: item\r\n", -1);
    IStrm_printf(strm, "\tstat: \"%s\"\r\n", ostrel::detail::statusWord(item->stat));
    IStrm_printf(strm, "\tsize: \"%lu\"\r\n", static_cast<unsigned long>(item->size));
    quotedLine(strm, "from", &item->from);
    quotedLine(strm, "to", &item->to);
    quotedLine(strm, "cc", &item->cc);
    quotedLine(strm, "bcc", &item->bcc);
    quotedLine(strm, "title", &item->title);
    if (ostrel::detail::dateSet(item->xptTime)) {
      tarnex::ScratchStr<32> when;
      iso_dt_enc(when, &item->xptTime);
      IStrm_printf(strm, "\txptTime: \"%s\"\r\n", when.c_str());
    }
  }
  IStrm_puts(strm, "# XmmsItem end !!!!!!\r\n", -1);
}

OSTREL_API void XmmsItem_trace(XmmsItem *item) {
  OSTREL_CHECK(item, XMMS_ITEM_TAG);
  ostrel::detail::traceRecord(item, XmmsItem_tracex);
}

}  // extern "C"

namespace {

using ostrel::detail::AttrRow;
using ostrel::detail::EntryRow;
using ostrel::detail::kRawText;

// A record of both kinds opens as a folder and carries both kinds'
// attributes.
constexpr EntryRow kEntries[] = {
    {"Folder", XMMS_ATTR_FOLDER, "\t<folder", XMMS_ATTR_FOLDER},
    {"Item", XMMS_ATTR_ITEM, "\t<item", XMMS_ATTR_ITEM},
};

constexpr AttrRow kAttrs[] = {
    {"name", "name", &ostrel::detail::kEscapedName, offsetof(XmmsItem, name), 0},
    {"stat", "stat", &ostrel::detail::kStatusWord, offsetof(XmmsItem, stat), XMMS_ATTR_ITEM},
    {"size", "size", &ostrel::detail::kSize, offsetof(XmmsItem, size), XMMS_ATTR_ITEM},
    {"perms", "perms", &ostrel::detail::kPermsText, offsetof(XmmsItem, perms), XMMS_ATTR_FOLDER},
    {"from", "from", &kRawText, offsetof(XmmsItem, from), XMMS_ATTR_ITEM},
    {"to", "to", &kRawText, offsetof(XmmsItem, to), XMMS_ATTR_ITEM},
    {"cc", "cc", &kRawText, offsetof(XmmsItem, cc), XMMS_ATTR_ITEM},
    {"bcc", "bcc", &kRawText, offsetof(XmmsItem, bcc), XMMS_ATTR_ITEM},
    {"title", "title", &kRawText, offsetof(XmmsItem, title), XMMS_ATTR_ITEM},
    {"xptTime", "xptTime", &ostrel::detail::kIsoDate, offsetof(XmmsItem, xptTime), XMMS_ATTR_ITEM},
};

// Status words add up from nothing in each entry; permissions start unset.
void prepareEntry(void *item) {
  XmmsItem *x = static_cast<XmmsItem *>(item);
  x->perms = -1;
  x->stat = XMMS_STAT_DEF;
}

constexpr ostrel::detail::ListingDesc kMessages = {
    "xmms",
    "dec->xmms",
    "xmms && item",
    "mms-listing",
    "<?xml version=\"1.0\"?>\r\n"
    "<!DOCTYPE mms-listing SYSTEM \"xml-mms-listing.dtd\">\r\n"
    "<mms-listing version=\"1.0\">\r\n",
    "</mms-listing>\r\n",
    XMMS_ITEM_TAG,
    offsetof(XmmsItem, attrs),
    [](void *item) { XmmsItem_clear(static_cast<XmmsItem *>(item)); },
    prepareEntry,
    kEntries,
    kAttrs,
};

}  // namespace

OSTREL_LISTING_EXPORTS(Xmms, kMessages, XmmsItem)
