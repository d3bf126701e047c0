// The vCard encoder: a PbItem as one card, one property line a field.
//
// Each field's type text selects a row of kRows, walked from the top: the
// first character picks the kind, the "O" and "D" rows look at the second
// too, the "X" rows at the whole text. The parameter words come from the
// same {word, letter} tables that the decoder searches, so a decoded type
// is written back under the word that gave it.
#include <cstring>

#include "detail/Object.h"
#include "detail/Pb.h"
#include "detail/Trace.h"
#include "detail/VcardTables.h"
#include "ostrel/VcardEd.h"
#include "tarnex/scratch.hpp"

namespace {

using ostrel::detail::kCatUnknown;
using ostrel::pb::typeChar;
namespace vc = ostrel::vcard;

enum class Match { First, Two, Whole };
enum class Words { None, Tel, ExtTel, Email, Place };

constexpr int32_t kStream = 0;  // n of a row whose value is the sval

struct EncRow {
  const char *type;
  Match match;
  const char *name;     // null: the field is skipped
  int32_t n;            // components, or kStream
  Words words;
  const char *unknown;  // trace of a skipped field, or null for none
};

constexpr EncRow kRows[] = {
    {"N", Match::First, "N", 5, Words::None, nullptr},
    {"K", Match::First, "NICKNAME", 1, Words::None, nullptr},
    {"B", Match::First, "BDAY", 1, Words::None, nullptr},
    {"G", Match::First, "ORG", 3, Words::None, nullptr},
    {"I", Match::First, "TITLE", 1, Words::None, nullptr},
    {"M", Match::First, "NOTE", 1, Words::None, nullptr},
    {"P", Match::First, "PHOTO", kStream, Words::None, nullptr},
    {"S", Match::First, "SOUND", kStream, Words::None, nullptr},
    {"TX", Match::Two, "X-MS-TEL", 1, Words::ExtTel, nullptr},
    {"T", Match::First, "TEL", 1, Words::Tel, nullptr},
    {"E", Match::First, "EMAIL", 1, Words::Email, nullptr},
    {"U", Match::First, "URL", 1, Words::Place, nullptr},
    {"A", Match::First, "ADR", 7, Words::Place, nullptr},
    {"OR", Match::Two, "ROLE", 1, Words::None, nullptr},
    {"OL", Match::Two, "LOGO", kStream, Words::None, nullptr},
    {"OA", Match::Two, nullptr, 0, Words::None, nullptr},
    {"OI", Match::Two, "UID", 1, Words::None, nullptr},
    {"OV", Match::Two, "REV", 1, Words::None, nullptr},
    {"OK", Match::Two, "KEY", 1, Words::None, nullptr},
    {"OZ", Match::Two, "TIMEZONE", 1, Words::None, nullptr},
    {"OF", Match::Two, "FN", 1, Words::None, nullptr},
    {"O", Match::First, nullptr, 0, Words::None, "un-handled field"},
    {"DG", Match::Two, "X-GTALK", 1, Words::None, nullptr},
    {"DA", Match::Two, "X-AIM", 1, Words::None, nullptr},
    {"DY", Match::Two, "X-YAHOO", 1, Words::None, nullptr},
    {"DS", Match::Two, "X-SKYPE", 1, Words::None, nullptr},
    {"DQ", Match::Two, "X-QQ", 1, Words::None, nullptr},
    {"DM", Match::Two, "X-MSN", 1, Words::None, nullptr},
    {"DI", Match::Two, "X-ICQ", 1, Words::None, nullptr},
    {"DJ", Match::Two, "X-JABBER", 1, Words::None, nullptr},
    {"DN", Match::Two, "X-NETMEETING", 1, Words::None, nullptr},
    {"D", Match::First, nullptr, 0, Words::None, "enc with unknown im field"},
    {"XGV", Match::Whole, "X-GRPV", 1, Words::None, nullptr},
    {"XGI", Match::Whole, "X-GRPI", 1, Words::None, nullptr},
    {"XD", Match::Whole, "X-IRMC-LUID", 1, Words::None, nullptr},
    {"XY", Match::Whole, "X-MS-N-YOMI", 5, Words::None, nullptr},
    {"XAN", Match::Whole, "X-ACC-NAME", 1, Words::None, nullptr},
    {"XAT", Match::Whole, "X-ACC-TYPE", 1, Words::None, nullptr},
    {"XS", Match::Whole, "X-STAR", 1, Words::None, nullptr},
    {"X", Match::First, nullptr, 0, Words::None, "enc with unknown field"},
};
static_assert(std::size(kRows) == 40);

bool matches(const EncRow &row, const char (&type)[4]) {
  switch (row.match) {
    case Match::First:
      return type[0] == row.type[0];
    case Match::Two:
      return type[0] == row.type[0] && typeChar(type, 1) == row.type[1];
    case Match::Whole:
      return std::strncmp(type, row.type, sizeof type) == 0;
  }
  return false;
}

const EncRow *findRow(const char (&type)[4]) {
  for (const EncRow &row : kRows)
    if (matches(row, type)) return &row;
  return nullptr;
}

void putWord(KvoStr *params, const char *word) {
  if (word == nullptr) return;
  KvoStr_appdChar(params, ';');
  KvoStr_appdStr(params, word);
}

void putRowWords(KvoStr *params, Words words, const char (&type)[4]) {
  const char second = typeChar(type, 1), third = typeChar(type, 2);
  switch (words) {
    case Words::None:
      break;
    case Words::Tel:
      putWord(params, vc::wordOf(vc::kTelPosRows, second));
      putWord(params, vc::wordOf(vc::kTelDevWords, third));
      break;
    case Words::ExtTel:
      putWord(params, vc::wordOf(vc::kExtTelRows, third));
      break;
    case Words::Email:
      putWord(params, vc::wordOf(vc::kEmailPosRows, second));
      break;
    case Words::Place:
      putWord(params, vc::wordOf(vc::kTelPosRows, second));
      break;
  }
}

// n components, always with n - 1 separators so that positions survive.
void putVals(IStrm *val, const PbField &field, int32_t n) {
  VpiVal_addStrW(val, KvoWcs_buf(&field.vals[0]), KvoWcs_len(&field.vals[0]), 1, nullptr, 1);
  for (int32_t i = 1; i < n && i < PB_VAL_MAX; ++i) {
    const KvoWcs &v = field.vals[i];
    if (KvoWcs_len(&v) > 0)
      VpiVal_addStrW(val, KvoWcs_buf(&v), KvoWcs_len(&v), 1, nullptr, 0);
    else
      VpiVal_addStr(val, ";", 1, 0, nullptr, 1);
  }
}

// The located value of a stream field: its 16-bit text, from the start.
void readSvalText(const PbSval &sval, tarnex::ScratchWcs<128> &text) {
  IStrm *s = sval.strm;
  const int64_t units = IStrm_size(s) / 2;
  const int32_t n = units > INT32_MAX / 4 ? INT32_MAX / 4 : static_cast<int32_t>(units);
  KvoWchar *buf = KvoWcs_useBufBeg(text, n);
  IStrm_rewind(s);
  const int32_t got = IStrm_read(s, buf, n * 2);
  KvoWcs_useBufEnd(text, got > 0 ? got / 2 : 0);
  IStrm_rewind(s);
}

// Writes one field; 0 also for a field that is skipped.
int32_t putField(IStrm *vcard, const PbField &field, const char *luid, const VpiEncOpts *opts,
                 KvoStr *params, IStrm *val, const char **nameOut) {
  const EncRow *row = findRow(field.type);
  if (!OSTREL_REQUIRE(row != nullptr, "vpiName")) return 0;
  if (row->name == nullptr) {
    if (row->unknown != nullptr) OSTREL_TRACE(kCatUnknown, 2, "%s \"%.4s\"", row->unknown, field.type);
    return 0;
  }
  // The luid argument was written behind VERSION and stands for every XD.
  if (std::strcmp(row->type, "XD") == 0 && luid != nullptr && *luid != '\0') return 0;
  *nameOut = row->name;
  const PbSval &sval = field.sval;
  const bool hasSval = PbSval_valid__(&sval) != 0;
  if (row->n == kStream && !hasSval) return 0;

  putRowWords(params, row->words, field.type);
  if (field.flags & PB_FLAG_PREF) KvoStr_appdStr(params, ";PREF");
  if (hasSval) {
    if (sval.loc == VPI_LOC_URL || sval.loc == VPI_LOC_CID)
      VpiParams_putVl(params, sval.loc);
    else
      OSTREL_REQUIRE(sval.loc == VPI_LOC_INLINE || sval.loc == VPI_LOC_FILE,
                     "loc == VPI_LOC_URL || loc == VPI_LOC_CID");
    if (sval.fmt[0] != '\0') {
      char fmt[sizeof sval.fmt];
      ostrel::pb::copyBounded(fmt, sval.fmt);
      VpiParams_putFmt(params, fmt);
    }
  }

  if (row->n != kStream) {
    putVals(val, field, row->n);
    return VpiEnc_putStrm(vcard, row->name, params, val, 0, opts);
  }
  if (sval.loc == VPI_LOC_INLINE)
    return VpiEnc_putStrm(vcard, row->name, params, sval.strm, 1, opts);
  tarnex::ScratchWcs<128> text;
  readSvalText(sval, text);
  if (sval.loc == VPI_LOC_FILE) return VpiEnc_putFileW(vcard, row->name, params, text.c_str(), opts);
  VpiVal_addStrW(val, text.c_str(), text.len(), 1, nullptr, 1);
  return VpiEnc_putStrm(vcard, row->name, params, val, 0, opts);
}

}  // namespace

extern "C" {

OSTREL_API int32_t Vcard_encx(IStrm *vcard, const PbItem *item, uint32_t ver, const char *luid,
                              const VpiEncOpts *opts) {
  OSTREL_FUNC_TRACE();
  if (!OSTREL_REQUIRE(vcard && item, "vcard && item")) return 0;
  OSTREL_CHECK(item, PB_ITEM_TAG);
  tarnex::ScratchStr<128> params;
  tarnex::StackMemStrm<512> val;  // ordinary values need no heap

  VpiEnc_putStr(vcard, "BEGIN", nullptr, "VCARD", -1, opts);
  char verText[16];
  ver_to_ver_str(ver != 0 ? ver : 0x201, verText, sizeof verText, 0);
  VpiEnc_putStr(vcard, "VERSION", nullptr, verText, -1, opts);
  if (luid != nullptr && *luid != '\0')
    VpiEnc_putStr(vcard, "X-IRMC-LUID", nullptr, luid, static_cast<int32_t>(std::strlen(luid)),
                  opts);

  int32_t rc = 0;
  PbEnum en;
  PbEnum_new(&en, const_cast<PbItem *>(item), nullptr);
  PbField *field = nullptr;
  while (PbEnum_next(&en, &field, nullptr) != 0) {
    KvoStr_clear(params);
    IStrm_clear(val);
    const char *name = "";
    rc = putField(vcard, *field, luid, opts, params, val, &name);
    if (rc < 0) {
      OSTREL_TRACE(kCatUnknown, 2, "vcard: writing \"%s\" failed (%d)", name, rc);
      OSTREL_TRACE(kCatUnknown, 2, "vcard: params \"%s\"", params.c_str());
      break;
    }
  }
  PbEnum_delete(&en);
  VpiEnc_putStr(vcard, "END", nullptr, "VCARD", -1, nullptr);
  return rc;
}

OSTREL_API int32_t Vcard_enc(IStrm *vcard, const PbItem *item, uint32_t ver) {
  return Vcard_encx(vcard, item, ver, nullptr, nullptr);
}

OSTREL_API void PbItem_dump(PbItem *item, IStrm *strm, int32_t append) {
  OSTREL_CHECK(item, PB_ITEM_TAG);
  if (!OSTREL_REQUIRE(strm, "strm")) return;
  ostrel::detail::openOutput(strm, append);
  Vcard_enc(strm, item, 0x201);
}

}  // extern "C"
