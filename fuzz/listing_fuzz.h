// The check every XML listing's fuzz target makes. The first byte chooses
// the size of the stream's reads, the rest is the listing. Checks: reading
// ends; read whole and in pieces it gives the same entries and the same
// last result, which a further call repeats; and every entry survives
// being written and read again, as far as the family keeps it, unless its
// raw attributes hold what the writer does not escape.
//
// A family F gives: Item; make() giving a heap record, drop(Item*); decBeg, decItem,
// decEnd, encBeg, encItem, encEnd; render(const Item&), the entry as text;
// kept(const Item&), the text of what a trip through the writer keeps;
// rawSafe(const Item&), whether its raw attributes can go out unescaped.
#ifndef OSTREL_FUZZ_LISTING_FUZZ_H
#define OSTREL_FUZZ_LISTING_FUZZ_H

#include <string>
#include <string_view>
#include <vector>

#include "../tests/ChunkedStrm.h"
#include "../tests/ListingFamilies.h"
#include "fuzz_check.h"
#include "ostrel/Ostrel.h"
#include "tarnex/scratch.hpp"

namespace fuzz {

// A raw attribute value comes back as written only without these: the
// markup characters, and the white space that attribute values are
// normalised in.
inline bool rawSafeText(std::string_view v) {
  return v.find_first_of("&<\"\t\r\n") == std::string_view::npos;
}

template <class F>
void checkTrip(typename F::Item &item) {
  if (!F::rawSafe(item)) return;
  tarnex::ScratchMemStrm out(0);
  F::encBeg(out);
  FUZZ_CHECK(F::encItem(out, &item) == 0);
  F::encEnd(out);
  IStrm_rewind(out);
  typename F::Item *again = F::make();
  XmlListDec *dec = F::decBeg(out);
  FUZZ_CHECK(F::decItem(dec, again) == 0);
  FUZZ_CHECK(F::render(*again) == F::kept(item));
  FUZZ_CHECK(F::decItem(dec, again) == -202);
  F::decEnd(dec);
  F::drop(again);
}

template <class F>
std::vector<std::string> readListing(std::string_view doc, int32_t readSize, bool trip) {
  testutil::ChunkedStrm in(doc, readSize);
  typename F::Item *item = F::make();
  XmlListDec *dec = F::decBeg(in.get());
  std::vector<std::string> out;
  int32_t r;
  while ((r = F::decItem(dec, item)) == 0 || r == 1) {
    FUZZ_CHECK(out.size() <= doc.size());  // an entry takes bytes: reading ends
    out.push_back(F::render(*item));
    if (trip) checkTrip<F>(*item);
  }
  FUZZ_CHECK(F::decItem(dec, item) == r);
  out.push_back(std::to_string(r));
  F::decEnd(dec);
  F::drop(item);
  return out;
}

template <class F>
int listingFuzz(const uint8_t *data, size_t size) {
  if (size == 0) return 0;
  const std::string_view doc(reinterpret_cast<const char *>(data) + 1, size - 1);
  const auto whole = readListing<F>(doc, 0, true);
  FUZZ_CHECK(readListing<F>(doc, data[0] + 1, false) == whole);
  return 0;
}

}  // namespace fuzz

#endif  // OSTREL_FUZZ_LISTING_FUZZ_H
