// The folder listing: its description for the listing protocol.
#include <cstddef>

#include "detail/ListingExports.h"
#include "detail/ListingWords.h"
#include "ostrel/XfldEd.h"

namespace {

using ostrel::detail::AttrRow;
using ostrel::detail::EntryRow;
using ostrel::detail::kIsoDate;
using ostrel::detail::kPermsText;

// In the writer's order of preference: a removable device before a folder
// before a file. Reading ignores case, writing is lower case.
constexpr EntryRow kEntries[] = {
    {"RmDev", FLD_ATTR_REMOVABLE, "\t<rmdev", FLD_ATTR_REMOVABLE},
    {"Folder", FLD_ATTR_FOLDER, "\t<folder", FLD_ATTR_FOLDER},
    {"File", FLD_ATTR_FILE, "\t<file", FLD_ATTR_FILE},
};

// One perms member holds all three classes: each attribute read replaces
// the last, and the writer gives the same letters to all three.
constexpr AttrRow kAttrs[] = {
    {"name", "name", &ostrel::detail::kWideName, offsetof(FldItem, name), 0},
    {"created", "created", &kIsoDate, offsetof(FldItem, created), 0},
    {"modified", "modified", &kIsoDate, offsetof(FldItem, modified), 0},
    {"accessed", "accessed", &kIsoDate, offsetof(FldItem, accessed), 0},
    {"user-perm", "user-perm", &kPermsText, offsetof(FldItem, perms), 0},
    {"group-perm", "group-perm", &kPermsText, offsetof(FldItem, perms), 0},
    {"other-perm", "other-perm", &kPermsText, offsetof(FldItem, perms), 0},
    {"size", "size", &ostrel::detail::kSize, offsetof(FldItem, size), FLD_ATTR_FILE},
    {"type", nullptr, &ostrel::detail::kRawText, offsetof(FldItem, type), 0},
};

// An entry without a permission attribute says nothing about them.
void unsetPerms(void *item) { static_cast<FldItem *>(item)->perms = -1; }

constexpr ostrel::detail::ListingDesc kFolders = {
    "xflds",
    "dec->xflds",
    "xflds && item",
    "folder-listing",
    "<?xml version=\"1.0\"?>\r\n"
    "<!DOCTYPE folder-listing SYSTEM \"obex-folder-listing.dtd\">\r\n"
    "<folder-listing version=\"1.0\">\r\n",
    "</folder-listing>\r\n",
    FLD_ITEM_TAG,
    offsetof(FldItem, attrs),
    [](void *item) { FldItem_clear(static_cast<FldItem *>(item)); },
    unsetPerms,
    kEntries,
    kAttrs,
};

}  // namespace

OSTREL_LISTING_EXPORTS(Xflds, kFolders, FldItem)
