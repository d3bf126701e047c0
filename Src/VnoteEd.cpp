// vNote: the note record between BEGIN:VNOTE and END:VNOTE.
#include "detail/Object.h"
#include "detail/TextEnc.h"
#include "detail/TextFrame.h"
#include "detail/Trace.h"
#include "ostrel/VnoteEd.h"

namespace {

using ostrel::detail::FrameProp;
using ostrel::detail::FrameRow;

struct Note {
  NoteItem *item;
  uint32_t *ver;
  KvoStr *luid;
};

constexpr FrameRow<Note> kProps[] = {
    {"SUMMARY", [](Note &n, const FrameProp &p) { VpiVal_getCwcs(p.val, &n.item->summ, 1, nullptr); }},
    {"BODY", [](Note &n, const FrameProp &p) { VpiVal_getCwcs(p.val, &n.item->body, 1, nullptr); }},
    {"CATEGORIES", [](Note &n, const FrameProp &p) { VpiVal_getCstr(p.val, &n.item->cate, 1, nullptr); }},
    {"CLASS", [](Note &n, const FrameProp &p) { VpiVal_getCstr(p.val, &n.item->cls, 1, nullptr); }},
    {"X-IRMC-LUID", ostrel::detail::readLuid<Note>},
    {"DCREATED", [](Note &n, const FrameProp &p) { ostrel::detail::readDate(p, &n.item->created); }},
    {"LAST-MODIFIED", [](Note &n, const FrameProp &p) { ostrel::detail::readDate(p, &n.item->modified); }},
    {"VERSION", ostrel::detail::readVersion<Note>},
};

}  // namespace

extern "C" {

OSTREL_API int32_t Vnote_decx(IStrm *vnote, NoteItem *item, uint32_t *ver, KvoStr *luid) {
  OSTREL_FUNC_TRACE();
  if (!OSTREL_REQUIRE(vnote && item, "vnote && item")) return 0;
  OSTREL_CHECK(item, NOTE_ITEM_TAG);
  Note note{item, ver, luid};
  return ostrel::detail::decodeRecord(vnote, "VNOTE", kProps, note, item, NoteItem_clear, "vnote",
                                      ostrel::detail::PosForm::kPlain);
}

OSTREL_API int32_t Vnote_dec(IStrm *vnote, NoteItem *item, uint32_t *ver) {
  return Vnote_decx(vnote, item, ver, nullptr);
}

OSTREL_API int32_t Vnote_encx(IStrm *vnote, const NoteItem *item, uint32_t ver, const char *luid,
                              const VpiEncOpts *opts) {
  OSTREL_FUNC_TRACE();
  if (!OSTREL_REQUIRE(vnote && item, "vnote && item")) return 0;
  OSTREL_CHECK(item, NOTE_ITEM_TAG);
  ostrel::detail::tracePos("vnote", vnote, true);
  return ostrel::detail::LineWriter(vnote, opts)
      .always("BEGIN", "VNOTE")
      .version(ver, 0x101)
      .wide("SUMMARY", &item->summ)
      .wide("BODY", &item->body)
      .str("CATEGORIES", &item->cate)
      .str("CLASS", &item->cls)
      .text("X-IRMC-LUID", luid)
      .date("DCREATED", item->created)
      .date("LAST-MODIFIED", item->modified)
      .always("END", "VNOTE", false)
      .result();
}

OSTREL_API int32_t Vnote_enc(IStrm *vnote, const NoteItem *item, uint32_t ver) {
  return Vnote_encx(vnote, item, ver, nullptr, nullptr);
}

}  // extern "C"
