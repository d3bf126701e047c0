// vBookmark decoder over arbitrary bytes: see text_roundtrip.h.
#include "ostrel/ostrel.h"
#include "text_roundtrip.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  BkmItem bkm, again;
  BkmItem_new(&bkm);
  BkmItem_new(&again);
  fuzz::textRoundTrip(
      data, size, bkm, again, [](IStrm *s, BkmItem *b) { return Vbkm_dec(s, b, nullptr); },
      [](IStrm *s, BkmItem *b) { Vbkm_enc(s, b, 0); },
      [](const BkmItem &b) {
        return KvoWcs_len(&b.title) == 0 && KvoStr_len(&b.url) == 0 &&
               b.modified.year == KVO_DT_UNSET;
      });
  BkmItem_delete(&again);
  BkmItem_delete(&bkm);
  return 0;
}
