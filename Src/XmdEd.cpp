// The media listing: its description for the listing protocol.
#include <cstddef>

#include "detail/ListingExports.h"
#include "detail/ListingWords.h"
#include "ostrel/XmdEd.h"

namespace {

using ostrel::detail::AttrRow;
using ostrel::detail::EntryRow;
using ostrel::detail::kIsoDate;
using ostrel::detail::kNumber;
using ostrel::detail::kRawText;

constexpr EntryRow kEntries[] = {{"media", FLD_ATTR_FILE, "\t<media", 0}};

// Size, type and luid come from the device and are only read.
constexpr AttrRow kAttrs[] = {
    {"name", "name", &ostrel::detail::kWideName, offsetof(FldItem, name), 0},
    {"width", "width", &kRawText, offsetof(FldItem, width), 0},
    {"height", "height", &kRawText, offsetof(FldItem, height), 0},
    {"orient", "orient", &kRawText, offsetof(FldItem, orient), 0},
    {"duration", "duration", &kRawText, offsetof(FldItem, dur), 0},
    {"album", "album", &kRawText, offsetof(FldItem, album), 0},
    {"artist", "artist", &kRawText, offsetof(FldItem, artist), 0},
    {"title", "title", &kRawText, offsetof(FldItem, title), 0},
    {"created", "created", &kIsoDate, offsetof(FldItem, created), 0},
    {"modified", "modified", &kIsoDate, offsetof(FldItem, modified), 0},
    {"accessed", "accessed", &kIsoDate, offsetof(FldItem, accessed), 0},
    {"luid", nullptr, &kNumber, offsetof(FldItem, luid), 0},
    {"type", nullptr, &kRawText, offsetof(FldItem, type), 0},
    {"size", nullptr, &kNumber, offsetof(FldItem, size), 0},
};

constexpr ostrel::detail::ListingDesc kMedia = {
    "xmds",
    "dec->xmds",
    "xmds && item",
    "media-listing",
    "<?xml version=\"1.0\"?>\r\n"
    "<!DOCTYPE media-listing SYSTEM \"xml-media-listing.dtd\">\r\n"
    "<media-listing version=\"1.0\">\r\n",
    "</media-listing>\r\n",
    FLD_ITEM_TAG,
    offsetof(FldItem, attrs),
    [](void *item) { FldItem_clear(static_cast<FldItem *>(item)); },
    nullptr,
    kEntries,
    kAttrs,
};

}  // namespace

OSTREL_LISTING_EXPORTS(Xmds, kMedia, FldItem)
