// vNote decoder over arbitrary bytes: see text_roundtrip.h.
#include "ostrel/ostrel.h"
#include "text_roundtrip.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  NoteItem note, again;
  NoteItem_new(&note);
  NoteItem_new(&again);
  fuzz::textRoundTrip(
      data, size, note, again, [](IStrm *s, NoteItem *n) { return Vnote_dec(s, n, nullptr); },
      [](IStrm *s, NoteItem *n) { Vnote_enc(s, n, 0); },
      [](const NoteItem &n) {
        return KvoWcs_len(&n.summ) == 0 && KvoWcs_len(&n.body) == 0 && KvoStr_len(&n.cate) == 0 &&
               KvoStr_len(&n.cls) == 0 && n.created.year == KVO_DT_UNSET &&
               n.modified.year == KVO_DT_UNSET;
      });
  NoteItem_delete(&again);
  NoteItem_delete(&note);
  return 0;
}
