// The human-readable text of a contact record, for traces and tests.
#include <cstring>

#include "detail/Object.h"
#include "detail/Pb.h"
#include "detail/Trace.h"

namespace {

using Utf8 = tarnex::ScratchStr<256>;

// The 16-bit text a located value holds, read without moving the stream.
void svalText(IStrm *strm, KvoStr *out) {
  tarnex::ScratchWcs<128> wide;
  const int64_t size = IStrm_size(strm);
  const int64_t units = (size > INT32_MAX ? INT32_MAX : size) / 2;
  if (units > 0) {
    const int64_t pos = IStrm_tell(strm);
    IStrm_rewind(strm);
    KvoWchar *buf = KvoWcs_useBufBeg(wide, static_cast<int32_t>(units));
    const int32_t got = IStrm_read(strm, buf, static_cast<int32_t>(units * 2));
    KvoWcs_useBufEnd(wide, got > 0 ? got / 2 : 0);
    IStrm_seek(strm, pos, KVO_SEEK_SET);
  }
  KvoStr_setCwcs(out, wide);
}

void traceField(IStrm *strm, int32_t index, const PbField *field) {
  const bool hasSval = PbSval_valid__(&field->sval) != 0;
  Utf8 text;
  IStrm_printf(strm, "fields[%d]: %s, %d%s", index, field->type, field->flags,
               hasSval ? ", sval" : "");
  if (KvoWcs_len(&field->desc) > 0) {
    KvoStr_setCwcs(text, &field->desc);
    IStrm_printf(strm, ", desc=\"%s\"", text.c_str());
  }
  IStrm_puts(strm, "\n", 1);
  for (int32_t i = 0; i < PB_VAL_MAX; ++i) {
    if (KvoWcs_len(&field->vals[i]) == 0) continue;
    KvoStr_setCwcs(text, &field->vals[i]);
    IStrm_printf(strm, "\tvals[%d]: \"%s\"\n", i, text.c_str());
  }
  if (!hasSval) return;
  IStrm_printf(strm, "\tsval: fmt=%s, loc=%d", field->sval.fmt, field->sval.loc);
  if (field->sval.loc == 0) {
    IStrm_puts(strm, ", bin=\n", -1);
    return;
  }
  svalText(field->sval.strm, text);
  IStrm_printf(strm, ", txt=\"%s\"\n", text.c_str());
}

}  // namespace

extern "C" {

OSTREL_API void PbItem_tracex(PbItem *item, IStrm *strm, int32_t append) {
  OSTREL_CHECK(item, PB_ITEM_TAG);
  if (!OSTREL_REQUIRE(strm, "strm")) return;
  ostrel::detail::openOutput(strm, append);
  IStrm_printf(strm, "# PbItem beg, count=%d ......\n", PbItem_count(item));
  PbEnum walk;
  PbEnum_new(&walk, item, nullptr);
  PbField *field = nullptr;
  int32_t index = 0;
  while (PbEnum_next(&walk, &field, &index)) traceField(strm, index, field);
  PbEnum_delete(&walk);
  IStrm_puts(strm, "# PbItem end !!!!!!\n", -1);
}

OSTREL_API void PbItem_trace(PbItem *item) {
  OSTREL_CHECK(item, PB_ITEM_TAG);
  ostrel::detail::traceRecord(item, PbItem_tracex);
}

}  // extern "C"
