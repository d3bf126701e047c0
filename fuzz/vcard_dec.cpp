// vCard decoder over arbitrary bytes: reading card after card never
// crashes, always moves the stream on and ends, and every card read comes
// back equal (PbItem_cmp) from being written and read again, apart from
// the stream fields without content that the encoder leaves out and format
// words that the parameter search would misread.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "ostrel/ostrel.h"
#include "tarnex/scratch.hpp"

namespace {

bool isStreamKind(const char *type) {
  return (type[0] == 'P' || type[0] == 'S') || (type[0] == 'O' && type[1] == 'L');
}

// Parameters are searched as text, so a format word that itself holds one of
// the searched words (TYPE=XURL reads as a URL) cannot come back the same.
// Such cards are read and written but not compared.
bool fmtReadsAsParameter(const PbItem *item) {
  static constexpr const char *kWords[] = {"URL",    "CONTENT-ID", "QUOTED-PRINTABLE",
                                           "BASE64", "ENCODING=B", "utf-8",
                                           "UTF-7",  "UCS2"};
  for (int32_t i = 0; i < PbItem_count(item); ++i) {
    const PbField *f = PbItem_at(item, i);
    if (f == nullptr) continue;
    for (const char *w : kWords)
      if (kvo_stristr(f->sval.fmt, w) != nullptr) return true;
  }
  return false;
}

// The card as the encoder can give it back: stream fields without content
// dropped, the rest packed from slot 0 in their order.
void writable(PbItem *out, PbItem *in) {
  PbEnum en;
  PbEnum_new(&en, in, nullptr);
  PbField *f = nullptr;
  int32_t slot = 0;
  while (PbEnum_next(&en, &f, nullptr))
    if (!isStreamKind(f->type) || PbSval_valid__(&f->sval))
      PbField_assign(PbItem_write(out, slot++), f);
  PbEnum_delete(&en);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  tarnex::ScratchStrStrm in(reinterpret_cast<const char *>(data), static_cast<int32_t>(size));
  PbItem card, want, again;
  PbItem_new(&card);
  PbItem_new(&want);
  PbItem_new(&again);
  tarnex::ScratchStr<32> luid;
  tarnex::ScratchMemStrm text(0);
  uint32_t ver = 0;
  int64_t last = -1;
  while (Vcard_decx(in, &card, &ver, luid) >= 1) {
    const int64_t pos = IStrm_tell(in);
    if (pos <= last) abort();  // a card read must move the stream
    last = pos;
    PbItem_clearx(&want);
    writable(&want, &card);
    IStrm_clear(text);
    if (Vcard_enc(text, &card, ver) != 0) abort();
    IStrm_rewind(text);
    PbItem_clearx(&again);  // cleared fields of the last card would keep slots
    if (Vcard_dec(text, &again, nullptr) != 1) abort();
    if (!fmtReadsAsParameter(&card) && PbItem_cmp(&want, &again) != 1) abort();
  }
  PbEnum rest;  // a result below 1 leaves the record cleared
  PbEnum_new(&rest, &card, nullptr);
  if (PbEnum_next(&rest, nullptr, nullptr) != 0) abort();
  PbEnum_delete(&rest);
  PbItem_delete(&again);
  PbItem_delete(&want);
  PbItem_delete(&card);
  return 0;
}
