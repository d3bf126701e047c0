// Fields of the contact record and their stream values.
//
// A field is separately allocated so that moving it between slots or
// records moves one pointer. Its stream value is always a memory stream
// when the record made it, but a caller may hand over any stream.
#include <cstring>

#include "detail/Object.h"
#include "detail/Pb.h"
#include "detail/Trace.h"

namespace ostrel::pb {
namespace {

bool wcsEmpty(const KvoWcs &w) { return KvoWcs_len(&w) == 0; }

// An empty memory stream in the value: the old one cleared, or a new one.
IStrm *freshStream(PbSval *sval) {
  if (sval->strm != nullptr)
    IStrm_clear(sval->strm);
  else
    sval->strm = MemStrm_xcreatex__(nullptr, 0, __FILE__, __LINE__);
  return sval->strm;
}

void svalRelease(PbSval *sval) {
  IStrm_delete(sval->strm);
  sval->strm = nullptr;
}

void svalClear(PbSval *sval) {
  sval->loc = 0;
  std::memset(sval->fmt, 0, sizeof sval->fmt);
  svalRelease(sval);
}

void fieldEmpty(PbField *field) {
  KvoWcs_clear(&field->desc);
  for (KvoWcs &v : field->vals) KvoWcs_clear(&v);
  field->flags = 0;
  svalClear(&field->sval);
}

bool svalHasContent(const PbSval *sval) {
  return sval->strm != nullptr && IStrm_size(sval->strm) > 0;
}

}  // namespace

PbField *fieldNew() {
  detail::FuncTrace trace("PbField_new", __FILE__, __LINE__);
  auto *field = static_cast<PbField *>(kvo_malloc__(sizeof(PbField), __FILE__, __LINE__));
  std::memset(static_cast<void *>(field), 0, sizeof(PbField));
  KvoWcs_new(&field->desc);
  for (KvoWcs &v : field->vals) KvoWcs_new(&v);
  return field;
}

void fieldDelete(PbField *field) {
  if (field == nullptr) return;
  detail::FuncTrace trace("PbField_delete", __FILE__, __LINE__);
  KvoWcs_delete(&field->desc);
  for (KvoWcs &v : field->vals) KvoWcs_delete(&v);
  svalRelease(&field->sval);
  kvo_free__(field, __FILE__, __LINE__);
}

}  // namespace ostrel::pb

using ostrel::pb::copyBounded;
using ostrel::pb::typeChar;

extern "C" {

// ---- Fields --------------------------------------------------------------------

OSTREL_API KvoWcs *PbField_at(PbField *field, int32_t vid) {
  if (!OSTREL_REQUIRE(field, "field")) return nullptr;
  if (!OSTREL_REQUIRE(vid >= 0 && vid < PB_VAL_MAX, "vid >= 0 && vid < PB_VAL_MAX"))
    return nullptr;
  return &field->vals[vid];
}

OSTREL_API PbField *PbField_assign(PbField *field, const PbField *other) {
  if (!OSTREL_REQUIRE(field && other, "field && other")) return field;
  if (field == other) return field;
  KvoWcs_setCwcs(&field->desc, &other->desc);
  std::memcpy(field->type, other->type, sizeof field->type);
  field->flags = other->flags;
  for (int32_t i = 0; i < PB_VAL_MAX; ++i) KvoWcs_setCwcs(&field->vals[i], &other->vals[i]);
  PbSval_assign(&field->sval, &other->sval);
  return field;
}

OSTREL_API void PbField_clear(PbField *field) {
  if (!OSTREL_REQUIRE(field, "field")) return;
  ostrel::pb::fieldEmpty(field);
  std::memset(field->type, 0, sizeof field->type);
}

OSTREL_API void PbField_clearx(PbField *field) {
  if (!OSTREL_REQUIRE(field, "field")) return;
  ostrel::pb::fieldEmpty(field);
}

OSTREL_API int32_t PbField_valid__(const PbField *field) {
  return field != nullptr && field->type[0] != '\0' ? 1 : 0;
}

OSTREL_API int32_t PbField_cplex(const PbField *field) {
  if (!OSTREL_REQUIRE(field, "field")) return 0;
  int32_t filled = 0;
  for (const KvoWcs &v : field->vals)
    if (!ostrel::pb::wcsEmpty(v) && ++filled >= 2) return 1;
  return 0;
}

OSTREL_API int32_t PbField_empty(const PbField *field) {
  if (!OSTREL_REQUIRE(field, "field")) return 1;
  for (const KvoWcs &v : field->vals)
    if (!ostrel::pb::wcsEmpty(v)) return 0;
  return ostrel::pb::svalHasContent(&field->sval) ? 0 : 1;
}

// ---- Stream values ----------------------------------------------------------------

OSTREL_API PbSval *PbSval_assign(PbSval *sval, const PbSval *other) {
  if (!OSTREL_REQUIRE(sval && other, "sval && other")) return sval;
  if (sval == other) return sval;
  sval->loc = other->loc;
  std::memcpy(sval->fmt, other->fmt, sizeof sval->fmt);
  sval->fmt[sizeof sval->fmt - 1] = '\0';
  if (other->strm == nullptr)
    ostrel::pb::svalRelease(sval);
  else
    IStrm_copy(ostrel::pb::freshStream(sval), other->strm);
  return sval;
}

OSTREL_API void PbSval_clear(PbSval *sval) {
  if (!OSTREL_REQUIRE(sval, "sval")) return;
  ostrel::pb::svalClear(sval);
}

OSTREL_API void PbSval_fill(PbSval *sval, IStrm *strm) {
  if (!OSTREL_REQUIRE(sval, "sval")) return;
  if (sval->strm == strm) return;  // handing over the stream it has: keep it alive
  ostrel::pb::svalRelease(sval);
  sval->strm = strm;
}

OSTREL_API void PbSval_fillx(PbSval *sval, IStrm *strm, int32_t loc, const char *fmt) {
  if (!OSTREL_REQUIRE(sval, "sval")) return;
  PbSval_fill(sval, strm);
  sval->loc = loc;
  copyBounded(sval->fmt, fmt);
}

OSTREL_API void PbSval_set(PbSval *sval, const KvoWchar *wtext, int32_t len) {
  if (!OSTREL_REQUIRE(sval, "sval")) return;
  IStrm *strm = ostrel::pb::freshStream(sval);
  if (wtext == nullptr) return;
  if (len < 0) len = kvo_wcslen(wtext);
  // Two bytes a unit; a length past what an int32 byte count holds is cut.
  if (len > INT32_MAX / 2) len = INT32_MAX / 2;
  if (len > 0) {
    IStrm_write(strm, wtext, len * 2);
    IStrm_rewind(strm);
  }
}

OSTREL_API void PbSval_setx(PbSval *sval, const KvoWchar *wtext, int32_t len, int32_t loc,
                            const char *fmt) {
  if (!OSTREL_REQUIRE(sval, "sval")) return;
  PbSval_set(sval, wtext, len);
  sval->loc = loc;
  copyBounded(sval->fmt, fmt);
}

OSTREL_API int32_t PbSval_valid__(const PbSval *sval) {
  return sval != nullptr && ostrel::pb::svalHasContent(sval) ? 1 : 0;
}

// ---- Type comparators -----------------------------------------------------------

OSTREL_API int32_t pb_kind_cmp__(const char *a, const char *b) {
  return typeChar(a, 0) == typeChar(b, 0) ? 1 : 0;
}
OSTREL_API int32_t pb_pos_cmp__(const char *a, const char *b) {
  return typeChar(a, 1) == typeChar(b, 0) ? 1 : 0;
}
OSTREL_API int32_t pb_dev_cmp__(const char *a, const char *b) {
  return typeChar(a, 2) == typeChar(b, 0) ? 1 : 0;
}
OSTREL_API int32_t pb_oth_cmp__(const char *a, const char *b) {
  return typeChar(a, 1) == typeChar(b, 1) ? 1 : 0;
}
OSTREL_API int32_t pb_ext_cmp__(const char *a, const char *b) {
  return typeChar(a, 1) == typeChar(b, 1) ? 1 : 0;
}

}  // extern "C"
