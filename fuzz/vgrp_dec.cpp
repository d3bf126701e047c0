// Group decoder over arbitrary bytes: reading card after card never
// crashes and always ends (every card read moves the stream on), the call
// that ends the loop leaves the record cleared, and every group read is
// stable in text after one pass: encoding it, decoding that text and
// encoding again gives the same text.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "ostrel/ostrel.h"
#include "tarnex/scratch.hpp"

namespace {

bool sameText(IStrm *a, IStrm *b) {
  return IStrm_size(a) == IStrm_size(b) &&
         std::memcmp(MemStrm_data(a), MemStrm_data(b), static_cast<size_t>(IStrm_size(a))) == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  tarnex::ScratchStrStrm in(reinterpret_cast<const char *>(data), static_cast<int32_t>(size));
  GrpItem group, again;
  GrpItem_new(&group);
  GrpItem_new(&again);
  int64_t last = -1;
  while (Vgrp_dec(in, &group, nullptr) == 1) {
    const int64_t pos = IStrm_tell(in);
    if (pos <= last) abort();  // every card read moves the stream on
    last = pos;
    tarnex::ScratchMemStrm first(0), second(0);
    Vgrp_enc(first, &group, 0);
    IStrm_rewind(first);
    if (Vgrp_dec(first, &again, nullptr) != 1) abort();
    Vgrp_enc(second, &again, 0);
    if (!sameText(first, second)) abort();
  }
  // Below 1 the record is cleared, whatever the part before the fault held.
  if (KvoWcs_len(&group.name) != 0 || KvoStr_len(&group.id) != 0 || group.attr != 0 ||
      KvoStr_len(&group.accName) != 0 || KvoStr_len(&group.accType) != 0)
    abort();
  GrpItem_delete(&again);
  GrpItem_delete(&group);
  return 0;
}
