// The call listing: its description for the listing protocol.
#include <cstddef>

#include "detail/Listing.h"
#include "detail/Trace.h"
#include "ostrel/XcallEd.h"

namespace {

using ostrel::detail::AttrRow;
using ostrel::detail::EntryRow;

constexpr EntryRow kEntries[] = {{"Call", 0, "\t<Call", 0}};

// The writer's date is "data", the reader's "date": peers have always
// written and read them so. luid is only read.
constexpr AttrRow kAttrs[] = {
    {"number", "number", &ostrel::detail::kRawText, offsetof(CallItem, tel), 0},
    {"date", "data", &ostrel::detail::kIsoDate, offsetof(CallItem, data), 0},
    {"duration", "duration", &ostrel::detail::kRawText, offsetof(CallItem, dur), 0},
    {"type", "type", &ostrel::detail::kRawText, offsetof(CallItem, type), 0},
    {"luid", nullptr, &ostrel::detail::kNumber, offsetof(CallItem, luid), 0},
};

constexpr ostrel::detail::ListingDesc kCalls = {
    "xcalls",
    "dec->xcalls",
    "xcalls && item",
    "call-listing",
    "<?xml version=\"1.0\"?>\r\n"
    "<!DOCTYPE call-listing SYSTEM \"xml-call-listing.dtd\">\r\n"
    "<call-listing version=\"1.0\">\r\n",
    "</call-listing>\r\n",
    CALL_ITEM_TAG,
    -1,
    [](void *item) { CallItem_clear(static_cast<CallItem *>(item)); },
    nullptr,
    kEntries,
    kAttrs,
};

}  // namespace

extern "C" {

OSTREL_API XmlListDec *Xcalls_decBeg(IStrm *strm) {
  OSTREL_FUNC_TRACE();
  return ostrel::detail::listDecBeg(kCalls, strm);
}

OSTREL_API int32_t Xcalls_decItem(XmlListDec *dec, CallItem *item) {
  OSTREL_FUNC_TRACE();
  return ostrel::detail::listDecItem(kCalls, dec, item);
}

OSTREL_API int32_t Xcalls_decEnd(XmlListDec *dec) {
  OSTREL_FUNC_TRACE();
  return ostrel::detail::listDecEnd(kCalls, dec);
}

OSTREL_API int32_t Xcalls_encBeg(IStrm *strm) {
  OSTREL_FUNC_TRACE();
  return ostrel::detail::listEncBeg(kCalls, strm);
}

OSTREL_API int32_t Xcalls_encItem(IStrm *strm, const CallItem *item) {
  OSTREL_FUNC_TRACE();
  return ostrel::detail::listEncItem(kCalls, strm, item);
}

OSTREL_API int32_t Xcalls_encEnd(IStrm *strm) {
  OSTREL_FUNC_TRACE();
  return ostrel::detail::listEncEnd(kCalls, strm);
}

}  // extern "C"
