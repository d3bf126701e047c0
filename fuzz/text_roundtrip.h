// The check every text record's fuzz target makes: reading record after
// record never faults and always ends (each record read moves the stream
// on), the call that ends the loop leaves the record empty, and every record
// read is stable in text after one pass: encoding it, decoding that text
// and encoding again gives the same text.
#ifndef OSTREL_FUZZ_TEXT_ROUNDTRIP_H
#define OSTREL_FUZZ_TEXT_ROUNDTRIP_H

#include <cstdint>
#include <cstring>

#include "fuzz_check.h"
#include "tarnex/scratch.hpp"

namespace fuzz {

inline bool sameText(IStrm *a, IStrm *b) {
  return IStrm_size(a) == IStrm_size(b) &&
         (IStrm_size(a) == 0 ||
          std::memcmp(MemStrm_data(a), MemStrm_data(b), static_cast<size_t>(IStrm_size(a))) == 0);
}

// Item: the record type; decode(strm, item), encode(strm, item) and
// isEmpty(item) are the family's.
template <class Item, class Decode, class Encode, class IsEmpty>
void textRoundTrip(const uint8_t *data, size_t size, Item &item, Item &again, Decode decode,
                   Encode encode, IsEmpty isEmpty) {
  tarnex::ScratchStrStrm in(reinterpret_cast<const char *>(data), static_cast<int32_t>(size));
  int64_t last = -1;
  while (decode(in.get(), &item) == 1) {
    const int64_t pos = IStrm_tell(in);
    FUZZ_CHECK(pos > last);
    last = pos;
    tarnex::ScratchMemStrm first(0), second(0);
    encode(first.get(), &item);
    IStrm_rewind(first);
    FUZZ_CHECK(decode(first.get(), &again) == 1);
    encode(second.get(), &again);
    FUZZ_CHECK(sameText(first, second));
  }
  FUZZ_CHECK(isEmpty(item));
}

}  // namespace fuzz

#endif  // OSTREL_FUZZ_TEXT_ROUNDTRIP_H
