// Each XML listing family as tests, fuzz targets and benchmarks drive it:
// its record (made on the heap, as XmmsItem only can be) and its six
// operations, so that one template serves all four.
#ifndef OSTREL_TESTS_LISTINGFAMILIES_H
#define OSTREL_TESTS_LISTINGFAMILIES_H

#include "ostrel/ostrel.h"

namespace testutil {

#define OSTREL_LISTING_OPS(Prefix)              \
  static constexpr auto decBeg = Prefix##_decBeg;   \
  static constexpr auto decItem = Prefix##_decItem; \
  static constexpr auto decEnd = Prefix##_decEnd;   \
  static constexpr auto encBeg = Prefix##_encBeg;   \
  static constexpr auto encItem = Prefix##_encItem; \
  static constexpr auto encEnd = Prefix##_encEnd;

struct CallOps {
  using Item = CallItem;
  static CallItem *make() { return CallItem_new(nullptr); }
  static void drop(CallItem *c) { CallItem_delete(c); }
  OSTREL_LISTING_OPS(Xcalls)
};

struct FileItemOps {
  using Item = FldItem;
  static FldItem *make() { return FldItem_new(nullptr); }
  static void drop(FldItem *f) { FldItem_delete(f); }
};
struct MediaOps : FileItemOps {
  OSTREL_LISTING_OPS(Xmds)
};
struct FolderOps : FileItemOps {
  OSTREL_LISTING_OPS(Xflds)
};

struct MessageOps {
  using Item = XmmsItem;
  static XmmsItem *make() { return XmmsItem_new(); }
  static void drop(XmmsItem *x) { XmmsItem_delete(x); }
  OSTREL_LISTING_OPS(Xmms)
};

#undef OSTREL_LISTING_OPS

}  // namespace testutil

#endif  // OSTREL_TESTS_LISTINGFAMILIES_H
