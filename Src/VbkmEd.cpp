// vBookmark: the bookmark record between BEGIN:VBKM and END:VBKM.
#include "detail/Object.h"
#include "detail/TextEnc.h"
#include "detail/TextFrame.h"
#include "detail/Trace.h"
#include "ostrel/VbkmEd.h"

namespace {

using ostrel::detail::FrameProp;
using ostrel::detail::FrameRow;

struct Bookmark {
  BkmItem *item;
  uint32_t *ver;
  KvoStr *luid;
};

constexpr FrameRow<Bookmark> kProps[] = {
    {"TITLE", [](Bookmark &b, const FrameProp &p) { VpiVal_getCwcs(p.val, &b.item->title, 1, nullptr); }},
    {"URL", [](Bookmark &b, const FrameProp &p) { VpiVal_getCstr(p.val, &b.item->url, 1, nullptr); }},
    {"LAST-MODIFIED", [](Bookmark &b, const FrameProp &p) { ostrel::detail::readDate(p, &b.item->modified); }},
    {"X-IRMC-LUID", ostrel::detail::readLuid<Bookmark>},
    {"VERSION", ostrel::detail::readVersion<Bookmark>},
};

}  // namespace

extern "C" {

OSTREL_API int32_t Vbkm_decx(IStrm *vbkm, BkmItem *item, uint32_t *ver, KvoStr *luid) {
  OSTREL_FUNC_TRACE();
  if (!OSTREL_REQUIRE(vbkm && item, "vbkm && item")) return 0;
  OSTREL_CHECK(item, BKM_ITEM_TAG);
  Bookmark bookmark{item, ver, luid};
  return ostrel::detail::decodeRecord(vbkm, "VBKM", kProps, bookmark, item, BkmItem_clear, "vbkm",
                                      ostrel::detail::PosForm::kBracketed);
}

OSTREL_API int32_t Vbkm_dec(IStrm *vbkm, BkmItem *item, uint32_t *ver) {
  return Vbkm_decx(vbkm, item, ver, nullptr);
}

OSTREL_API int32_t Vbkm_encx(IStrm *vbkm, const BkmItem *item, uint32_t ver, const char *luid,
                             const VpiEncOpts *opts) {
  OSTREL_FUNC_TRACE();
  if (!OSTREL_REQUIRE(vbkm && item, "vbkm && item")) return 0;
  OSTREL_CHECK(item, BKM_ITEM_TAG);
  ostrel::detail::tracePos("vbkm", vbkm, true);
  return ostrel::detail::LineWriter(vbkm, opts)
      .always("BEGIN", "VBKM")
      .version(ver, 0x101)
      .text("X-IRMC-LUID", luid, true)
      .wide("TITLE", &item->title)
      .str("URL", &item->url)
      .date("LAST-MODIFIED", item->modified)
      .always("END", "VBKM", false)
      .result();
}

OSTREL_API int32_t Vbkm_enc(IStrm *vbkm, const BkmItem *item, uint32_t ver) {
  return Vbkm_encx(vbkm, item, ver, nullptr, nullptr);
}

}  // extern "C"
