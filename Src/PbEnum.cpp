// Finding fields by type text and walking them with an enumerator.
//
// Both read the record live: an enumerator looks at size and fields again
// at every step, so a field written behind it during a walk is still found.
#include <cstring>

#include "detail/Object.h"
#include "detail/Pb.h"
#include "detail/Trace.h"

namespace {

// A filter matches on kind and, if it has one, position; the device or
// extension character never narrows a walk.
bool filterMatches(const char *filter, const char *type) {
  if (filter[0] == '\0') return true;
  if (filter[0] != type[0]) return false;
  return filter[1] == '\0' || filter[1] == type[1];
}

bool startsWith(const char *type, const char *prefix) {
  return std::strncmp(type, prefix, std::strlen(prefix)) == 0;
}

// A null or empty choice means the whole kind.
const char *kindOr(const char *type, const char *kind) {
  return type != nullptr && *type != '\0' ? type : kind;
}

}  // namespace

extern "C" {

OSTREL_API PbField *PbItem_find(const PbItem *item, const char *fieldType,
                                int32_t *outIndex) {
  if (!OSTREL_REQUIRE(item, "item")) return nullptr;
  if (!OSTREL_REQUIRE(fieldType && *fieldType, "fieldType && *fieldType")) return nullptr;
  for (int32_t i = 0; i < item->size; ++i) {
    PbField *field = item->fields[i];
    if (!PbField_valid__(field) || !startsWith(field->type, fieldType)) continue;
    if (outIndex != nullptr) *outIndex = i;
    return field;
  }
  return nullptr;
}

OSTREL_API PbEnum *PbItem_enums(PbItem *item, const char *filter) {
  OSTREL_CHECK(item, PB_ITEM_TAG);
  return PbEnum_new(nullptr, item, filter);
}

#define OSTREL_PB_ACCESSOR(name, type) \
  OSTREL_API PbField *name(const PbItem *item) { return PbItem_find(item, type, nullptr); }
OSTREL_PB_ACCESSOR(PbItem_name, "N")
OSTREL_PB_ACCESSOR(PbItem_yomi, "XY")
OSTREL_PB_ACCESSOR(PbItem_nickn, "K")
OSTREL_PB_ACCESSOR(PbItem_bday, "B")
OSTREL_PB_ACCESSOR(PbItem_photo, "P")
OSTREL_PB_ACCESSOR(PbItem_sound, "S")
OSTREL_PB_ACCESSOR(PbItem_org, "G")
OSTREL_PB_ACCESSOR(PbItem_title, "I")
OSTREL_PB_ACCESSOR(PbItem_agent, "OA")
OSTREL_PB_ACCESSOR(PbItem_role, "OR")
OSTREL_PB_ACCESSOR(PbItem_logo, "OL")
OSTREL_PB_ACCESSOR(PbItem_tzone, "OZ")
OSTREL_PB_ACCESSOR(PbItem_note, "M")
OSTREL_PB_ACCESSOR(PbItem_rev, "OV")
OSTREL_PB_ACCESSOR(PbItem_key, "OK")
OSTREL_PB_ACCESSOR(PbItem_uid, "OI")
OSTREL_PB_ACCESSOR(PbItem_grp, "XGI")
OSTREL_PB_ACCESSOR(PbItem_accName, "XAN")
OSTREL_PB_ACCESSOR(PbItem_accType, "XAT")
OSTREL_PB_ACCESSOR(PbItem_star, "XS")
#undef OSTREL_PB_ACCESSOR

#define OSTREL_PB_CHOICE(name, kind)                              \
  OSTREL_API PbField *name(const PbItem *item, const char *type) { \
    return PbItem_find(item, kindOr(type, kind), nullptr);        \
  }
OSTREL_PB_CHOICE(PbItem_tel, "T")
OSTREL_PB_CHOICE(PbItem_addr, "A")
OSTREL_PB_CHOICE(PbItem_email, "E")
OSTREL_PB_CHOICE(PbItem_url, "U")
OSTREL_PB_CHOICE(PbItem_im, "D")
#undef OSTREL_PB_CHOICE

OSTREL_API PbEnum *PbItem_tels(PbItem *item) { return PbItem_enums(item, "T"); }
OSTREL_API PbEnum *PbItem_addrs(PbItem *item) { return PbItem_enums(item, "A"); }
OSTREL_API PbEnum *PbItem_emails(PbItem *item) { return PbItem_enums(item, "E"); }
OSTREL_API PbEnum *PbItem_urls(PbItem *item) { return PbItem_enums(item, "U"); }
OSTREL_API PbEnum *PbItem_ims(PbItem *item) { return PbItem_enums(item, "D"); }

// ---- Enumerator -------------------------------------------------------------------

OSTREL_API PbEnum *PbEnum_new(PbEnum *storage, PbItem *item, const char *filter) {
  OSTREL_FUNC_TRACE();
  PbEnum *en = ostrel::detail::newObject(storage, PB_ENUM_TAG, __FILE__, __LINE__);
  en->item = item;
  en->index = 0;
  ostrel::pb::copyBounded(en->filter, filter);
  return en;
}

OSTREL_API void PbEnum_delete(PbEnum *en) {
  OSTREL_FUNC_TRACE();
  OSTREL_CHECK(en, PB_ENUM_TAG);
  en->item = nullptr;
  ostrel::detail::endObject(en, __FILE__, __LINE__);
}

OSTREL_API int32_t PbEnum_next(PbEnum *en, PbField **outField, int32_t *outIndex) {
  OSTREL_CHECK(en, PB_ENUM_TAG);
  const PbItem *item = en->item;
  if (item == nullptr) return 0;
  for (int32_t i = en->index < 0 ? 0 : en->index; i < item->size; ++i) {
    PbField *field = item->fields[i];
    if (!PbField_valid__(field) || !filterMatches(en->filter, field->type)) continue;
    if (outField != nullptr) *outField = field;
    if (outIndex != nullptr) *outIndex = i;
    en->index = i + 1;
    return 1;
  }
  return 0;
}

OSTREL_API void PbEnum_reset(PbEnum *en) {
  OSTREL_CHECK(en, PB_ENUM_TAG);
  en->index = 0;
}

}  // extern "C"
