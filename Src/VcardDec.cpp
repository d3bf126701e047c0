// The vCard decoder: one card of property lines into a PbItem.
//
// The frame (skip to BEGIN:VCARD, stop at END:VCARD, the result rules) is
// the one every text decoder shares (detail/TextFrame.h); this file only
// knows what a property inside the card becomes. Every known name is one
// row of kProps, walked from the top; a row names its handler and the type,
// component count and preferred-mark rule that the handler applies.
#include <cstring>

#include "detail/Object.h"
#include "detail/Pb.h"
#include "detail/TextFrame.h"
#include "detail/Trace.h"
#include "detail/VcardTables.h"
#include "detail/Vpi.h"
#include "ostrel/VcardEd.h"
#include "tarnex/scratch.hpp"

namespace {

using ostrel::detail::kCatPos;
using ostrel::detail::kCatUnknown;
namespace vc = ostrel::vcard;

struct Card {
  PbItem *item;
  uint32_t *ver;
  KvoStr *luid;
  int32_t slot;  // next slot to fill
};

struct PropRow;
using Handler = void (*)(Card &, const PropRow &, const KvoStr *params, IStrm *val);

struct PropRow {
  const char *name;
  Handler handler;
  const char *type;  // the field type, or null where a rule makes it
  int32_t n;         // text components read
  bool pref;         // flags takes the PREF word
};

// The next slot, or null when the record is full: the card is then read to
// its end with the line dropped, so the next call starts at the next card.
PbField *nextField(Card &card, const char *type, const KvoStr *params, bool pref) {
  if (card.slot >= PB_FIELD_MAX) {
    OSTREL_TRACE(kCatUnknown, 2, "vcard full, \"%s\" dropped", type);
    return nullptr;
  }
  PbField *field = PbItem_write(card.item, card.slot++);
  ostrel::pb::copyBounded(field->type, type);
  field->flags = pref && kvo_stristr(KvoStr_buf(params), "PREF") != nullptr ? 1 : 0;
  return field;
}

// Components split on unescaped ";"; text behind the n-th is dropped.
void readVals(PbField *field, int32_t n, IStrm *val) {
  if (n == 1) {
    VpiVal_getCwcs(val, &field->vals[0], 1, nullptr);
    return;
  }
  for (int32_t i = 0; i < n && i < PB_VAL_MAX; ++i)
    if (VpiVal_getCwcs(val, &field->vals[i], 1, nullptr) == 0) break;
}

void storeSimple(Card &card, const char *type, const PropRow &row, const KvoStr *params,
                 IStrm *val) {
  PbField *field = nextField(card, type, params, row.pref);
  if (field != nullptr) readVals(field, row.n, val);
}

void onSimple(Card &card, const PropRow &row, const KvoStr *params, IStrm *val) {
  storeSimple(card, row.type, row, params, val);
}

// A type of a kind letter and the letters that rules find in the parameters.
template <int32_t N>
void onRule(Card &card, const PropRow &row, const KvoStr *params, IStrm *val,
            const char (&letters)[N]) {
  char type[4] = {};
  for (int32_t i = 0; i < N && i < 3; ++i) type[i] = letters[i];
  storeSimple(card, type, row, params, val);
}

void onTel(Card &card, const PropRow &row, const KvoStr *params, IStrm *val) {
  const char *p = KvoStr_buf(params);
  onRule(card, row, params, val, {'T', vc::kPosRule.find(p), vc::kDevRule.find(p)});
}

void onEmail(Card &card, const PropRow &row, const KvoStr *params, IStrm *val) {
  onRule(card, row, params, val, {'E', vc::kEmailPosRule.find(KvoStr_buf(params))});
}

// URL and ADR: the row's type names the kind.
void onPlace(Card &card, const PropRow &row, const KvoStr *params, IStrm *val) {
  onRule(card, row, params, val, {row.type[0], vc::kPosRule.find(KvoStr_buf(params))});
}

void onExtTel(Card &card, const PropRow &row, const KvoStr *params, IStrm *val) {
  const char ext = vc::kExtTelRule.find(KvoStr_buf(params));
  if (ext == '\0') {
    OSTREL_TRACE(kCatUnknown, 2, "un-handled ext tel field \"%s\"", row.name);
    return;
  }
  onRule(card, row, params, val, {'T', 'X', ext});
}

// Photo, sound, logo: raw bytes inline, or the text of a URL or content id.
void onStream(Card &card, const PropRow &row, const KvoStr *params, IStrm *val) {
  PbField *field = nextField(card, row.type, params, false);
  if (field == nullptr) return;
  PbSval &sval = field->sval;
  sval.fmt[0] = '\0';
  // Stored as the encoder can write it back, so a card reads the same twice.
  char fmt[64] = "";
  VpiParams_getFmt(params, fmt, sizeof fmt);
  ostrel::detail::plainParamValue(fmt);
  kvo_strxfrm(sval.fmt, fmt, sizeof sval.fmt);
  sval.loc = VpiParams_getVl(params);
  if (sval.loc == VPI_LOC_INLINE) {
    IStrm *bytes = MemStrm_xcreatex__(nullptr, 0, __FILE__, __LINE__);
    IStrm_copy(bytes, val);
    PbSval_fill(&sval, bytes);
    return;
  }
  tarnex::ScratchWcs<128> text;
  VpiVal_getCwcs(val, text, 1, nullptr);
  if (text.len() > 0) PbSval_set(&sval, text.c_str(), text.len());
}

void onDrop(Card &, const PropRow &, const KvoStr *, IStrm *) {}

void onVersion(Card &card, const PropRow &, const KvoStr *, IStrm *val) {
  if (card.ver == nullptr) return;
  tarnex::ScratchStr<32> text;
  VpiVal_getCstr(val, text, 0, nullptr);
  *card.ver = ver_str_to_ver(text.c_str());
}

void onLuid(Card &card, const PropRow &row, const KvoStr *params, IStrm *val) {
  if (card.luid != nullptr) {
    VpiVal_getCstr(val, card.luid, 1, nullptr);
    IStrm_rewind(val);
  }
  onSimple(card, row, params, val);
}

constexpr PropRow kProps[] = {
    {"N", onSimple, "N", 5, false},
    {"FN", onSimple, "OF", 1, false},
    {"NICKNAME", onSimple, "K", 1, false},
    {"BDAY", onSimple, "B", 1, false},
    {"ORG", onSimple, "G", 3, false},
    {"TITLE", onSimple, "I", 1, false},
    {"NOTE", onSimple, "M", 1, false},
    {"PHOTO", onStream, "P", 0, false},
    {"SOUND", onStream, "S", 0, false},
    {"TEL", onTel, nullptr, 1, true},
    {"EMAIL", onEmail, nullptr, 1, true},
    {"URL", onPlace, "U", 1, true},
    {"ADR", onPlace, "A", 7, true},
    {"ROLE", onSimple, "OR", 1, false},
    {"LOGO", onStream, "OL", 0, false},
    {"AGENT", onDrop, nullptr, 0, false},
    {"UID", onSimple, "OI", 1, false},
    {"REV", onSimple, "OV", 1, false},
    {"KEY", onSimple, "OK", 1, false},
    {"TIMEZONE", onSimple, "OZ", 1, false},
    {"VERSION", onVersion, nullptr, 0, false},
    {"X-MS-TEL", onExtTel, nullptr, 1, true},
    {"X-GRPV", onSimple, "XGV", 1, false},
    {"X-GRPI", onSimple, "XGI", 1, false},
    {"X-IRMC-LUID", onLuid, "XD", 1, false},
    {"X-MS-N-YOMI", onSimple, "XY", 5, false},
    {"X-GTALK", onSimple, "DG", 1, false},
    {"X-AIM", onSimple, "DA", 1, false},
    {"X-YAHOO", onSimple, "DY", 1, false},
    {"X-SKYPE", onSimple, "DS", 1, false},
    {"X-QQ", onSimple, "DQ", 1, false},
    {"X-MSN", onSimple, "DM", 1, false},
    {"X-ICQ", onSimple, "DI", 1, false},
    {"X-JABBER", onSimple, "DJ", 1, false},
    {"X-NETMEETING", onSimple, "DN", 1, false},
    {"X-ACC-NAME", onSimple, "XAN", 1, false},
    {"X-ACC-TYPE", onSimple, "XAT", 1, false},
    {"X-STAR", onSimple, "XS", 1, false},
};
static_assert(std::size(kProps) == 38);

// One property inside the card, through the table.
void dispatch(Card &card, const char *name, const KvoStr *params, IStrm *val) {
  if (const PropRow *row = ostrel::detail::findRow(kProps, name))
    row->handler(card, *row, params, val);
  else
    ostrel::detail::traceUnhandled(name, val, 3);
}

}  // namespace

extern "C" {

OSTREL_API int32_t Vcard_decx(IStrm *vcard, PbItem *item, uint32_t *ver, KvoStr *luid) {
  OSTREL_FUNC_TRACE();
  if (!OSTREL_REQUIRE(vcard && item, "vcard && item")) return 0;
  OSTREL_CHECK(item, PB_ITEM_TAG);
  OSTREL_TRACE(kCatPos, 3, "[vcard: %lld/%lld]", static_cast<long long>(IStrm_tell(vcard)),
               static_cast<long long>(IStrm_size(vcard)));
  PbItem_clear(item);
  Card card{item, ver, luid, 0};
  const int32_t rc = ostrel::detail::readFrame(
      vcard, "VCARD", [&](const KvoStr *name, const KvoStr *params, IStrm *val) {
        dispatch(card, KvoStr_buf(name), params, val);
      });
  if (rc < 1) PbItem_clear(item);
  OSTREL_TRACE(kCatPos, 3, "[vcard: %lld/%lld]", static_cast<long long>(IStrm_tell(vcard)),
               static_cast<long long>(IStrm_size(vcard)));
  return rc;
}

OSTREL_API int32_t Vcard_dec(IStrm *vcard, PbItem *item, uint32_t *ver) {
  return Vcard_decx(vcard, item, ver, nullptr);
}

}  // extern "C"
