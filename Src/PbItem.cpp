// The contact record: its slot table, its life and the operations that
// move, copy and compare whole tables.
//
// The table holds field pointers, so moves never copy text, and a cleared
// field keeps its object in its slot: the decoder clears a record and
// writes it again slot by slot, reusing every field it had.
#include <cstring>

#include "detail/Object.h"
#include "detail/Pb.h"
#include "detail/Trace.h"

namespace ostrel::pb {
namespace {

// 28 slots hold an ordinary contact in one allocation; past that the table
// grows by whole units of 32.
int32_t roundedSize(int32_t wanted) {
  if (wanted <= PB_FIELD_FIRST) return PB_FIELD_FIRST;
  return (wanted + PB_FIELD_UNIT - 1) / PB_FIELD_UNIT * PB_FIELD_UNIT;
}

// Makes room for newSize slots; false (reported) when that is out of range.
bool grow(PbItem *item, int32_t newSize) {
  detail::FuncTrace trace("PbItem_alloc__", __FILE__, __LINE__);
  if (!OSTREL_REQUIRE(newSize > 0 && newSize <= PB_FIELD_MAX,
                      "newSize > 0 && newSize <= PB_FIELD_MAX"))
    return false;
  if (newSize <= item->size) return true;
  const int32_t size = roundedSize(newSize);
  auto **table = static_cast<PbField **>(
      kvo_malloc__(sizeof(PbField *) * static_cast<size_t>(size), __FILE__, __LINE__));
  const int32_t old = item->size;
  if (old > 0) std::memcpy(table, item->fields, sizeof(PbField *) * static_cast<size_t>(old));
  std::memset(table + old, 0, sizeof(PbField *) * static_cast<size_t>(size - old));
  kvo_free__(item->fields, __FILE__, __LINE__);
  item->fields = table;
  item->size = size;
  return true;
}

PbField *slot(const PbItem *item, int32_t index) {
  return index >= 0 && index < item->size ? item->fields[index] : nullptr;
}

void destroyAll(PbItem *item) {
  for (int32_t i = 0; i < item->size; ++i) fieldDelete(item->fields[i]);
  kvo_free__(item->fields, __FILE__, __LINE__);
  item->fields = nullptr;
  item->size = 0;
}

// Takes the field out of src's slot into item's slot dst, destroying what
// dst held. Bounds are the caller's.
void moveSlot(PbItem *item, int32_t dst, PbItem *src, int32_t from) {
  if (!OSTREL_REQUIRE(dst >= 0, "dstIndex >= 0")) return;
  if (dst < item->size) {
    fieldDelete(item->fields[dst]);
    item->fields[dst] = nullptr;
  } else if (!grow(item, dst + 1)) {
    return;
  }
  item->fields[dst] = src->fields[from];
  src->fields[from] = nullptr;
}

bool sameField(const PbField *a, const PbField *b) {
  if (std::strcmp(a->type, b->type) != 0) return false;
  if (kvo_wcscmp(KvoWcs_buf(&a->desc), KvoWcs_buf(&b->desc)) != 0) return false;
  if (a->flags != b->flags) return false;
  for (int32_t i = 0; i < PB_VAL_MAX; ++i)
    if (kvo_wcscmp(KvoWcs_buf(&a->vals[i]), KvoWcs_buf(&b->vals[i])) != 0) return false;
  return a->sval.loc == b->sval.loc && std::strcmp(a->sval.fmt, b->sval.fmt) == 0;
}

}  // namespace
}  // namespace ostrel::pb

namespace pb = ostrel::pb;

extern "C" {

OSTREL_API PbItem *PbItem_new(PbItem *storage) {
  OSTREL_FUNC_TRACE();
  PbItem *item = ostrel::detail::newObject(storage, PB_ITEM_TAG, __FILE__, __LINE__);
  item->reserved = 0;
  item->size = 0;
  item->fields = nullptr;
  return item;
}

OSTREL_API PbItem *PbItem_newx(PbItem *storage, int32_t size) {
  PbItem *item = PbItem_new(storage);
  if (size > 0) pb::grow(item, size);
  return item;
}

OSTREL_API void PbItem_delete(PbItem *item) {
  OSTREL_FUNC_TRACE();
  OSTREL_CHECK(item, PB_ITEM_TAG);
  pb::destroyAll(item);
  ostrel::detail::endObject(item, __FILE__, __LINE__);
}

OSTREL_API void PbItem_clear(PbItem *item) {
  OSTREL_CHECK(item, PB_ITEM_TAG);
  if (item->size > 0) {
    if (!OSTREL_REQUIRE(item->fields, "_this->fields")) return;
  } else {
    OSTREL_REQUIRE(!item->fields, "!_this->fields");
    return;
  }
  for (int32_t i = 0; i < item->size; ++i)
    if (item->fields[i] != nullptr) PbField_clear(item->fields[i]);
}

OSTREL_API void PbItem_clearx(PbItem *item) {
  OSTREL_CHECK(item, PB_ITEM_TAG);
  pb::destroyAll(item);
}

OSTREL_API PbItem *PbItem_assign(PbItem *item, const PbItem *other) {
  OSTREL_CHECK(item, PB_ITEM_TAG);
  OSTREL_CHECK(other, PB_ITEM_TAG);
  if (item == other) return item;
  if (other->size > item->size) pb::grow(item, other->size);
  if (!OSTREL_REQUIRE(item->size >= other->size, "_this->size >= anoth->size")) return item;
  for (int32_t i = 0; i < other->size; ++i) {
    const PbField *source = other->fields[i];
    if (PbField_valid__(source))
      PbField_assign(PbItem_write(item, i), source);
    else if (item->fields[i] != nullptr)
      PbField_clear(item->fields[i]);
  }
  for (int32_t i = other->size; i < item->size; ++i)
    if (item->fields[i] != nullptr) PbField_clear(item->fields[i]);
  return item;
}

OSTREL_API PbItem *PbItem_clone(const PbItem *item) {
  OSTREL_CHECK(item, PB_ITEM_TAG);
  PbItem *copy = PbItem_newx(nullptr, item->size);
  PbItem_assign(copy, item);
  OSTREL_REQUIRE(item->size == copy->size, "anoth->size == _this->size");
  return copy;
}

OSTREL_API int32_t PbItem_count(const PbItem *item) {
  OSTREL_CHECK(item, PB_ITEM_TAG);
  int32_t n = 0;
  for (int32_t i = 0; i < item->size; ++i) n += item->fields[i] != nullptr;
  return n;
}

OSTREL_API PbField *PbItem_at(const PbItem *item, int32_t index) {
  OSTREL_CHECK(item, PB_ITEM_TAG);
  return pb::slot(item, index);
}

OSTREL_API PbField *PbItem_write(PbItem *item, int32_t index) {
  OSTREL_CHECK(item, PB_ITEM_TAG);
  if (!OSTREL_REQUIRE(index >= 0, "index >= 0")) return nullptr;
  if (index >= item->size && !pb::grow(item, index + 1)) return nullptr;
  PbField *&field = item->fields[index];
  if (field == nullptr) field = pb::fieldNew();
  return field;
}

OSTREL_API PbField *PbItem_insert(PbItem *item, int32_t *outIndex) {
  OSTREL_CHECK(item, PB_ITEM_TAG);
  int32_t index = 0;
  while (index < item->size && item->fields[index] != nullptr) ++index;
  if (index >= PB_FIELD_MAX) {
    OSTREL_REQUIRE(false, "newSize > 0 && newSize <= PB_FIELD_MAX");
    return nullptr;
  }
  PbField *field = PbItem_write(item, index);
  if (outIndex != nullptr) *outIndex = index;
  return field;
}

OSTREL_API void PbItem_move(PbItem *item, int32_t dstIndex, int32_t srcIndex) {
  OSTREL_CHECK(item, PB_ITEM_TAG);
  if (!OSTREL_REQUIRE(srcIndex >= 0 && srcIndex < item->size,
                      "srcIndex >= 0 && srcIndex < _this->size"))
    return;
  if (dstIndex == srcIndex) return;
  pb::moveSlot(item, dstIndex, item, srcIndex);
}

OSTREL_API void PbItem_movex(PbItem *item, int32_t dstIndex, PbItem *srcItem,
                             int32_t srcIndex) {
  if (srcItem == item) {
    PbItem_move(item, dstIndex, srcIndex);
    return;
  }
  OSTREL_CHECK(item, PB_ITEM_TAG);
  OSTREL_CHECK(srcItem, PB_ITEM_TAG);
  if (!OSTREL_REQUIRE(srcIndex >= 0 && srcIndex < srcItem->size,
                      "srcIndex >= 0 && srcIndex < srcItem->size"))
    return;
  pb::moveSlot(item, dstIndex, srcItem, srcIndex);
}

OSTREL_API int32_t PbItem_cmp(const PbItem *item, const PbItem *other) {
  OSTREL_CHECK(item, PB_ITEM_TAG);
  OSTREL_CHECK(other, PB_ITEM_TAG);
  const int32_t n = item->size > other->size ? item->size : other->size;
  for (int32_t i = 0; i < n; ++i) {
    const PbField *a = pb::slot(item, i);
    const PbField *b = pb::slot(other, i);
    if (a == nullptr && b == nullptr) continue;
    if (a == nullptr || b == nullptr || !pb::sameField(a, b)) return 0;
  }
  return 1;
}

}  // extern "C"
