// The call listing: its description for the listing protocol.
#include <cstddef>

#include "detail/ListingExports.h"
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

OSTREL_LISTING_EXPORTS(Xcalls, kCalls, CallItem)
