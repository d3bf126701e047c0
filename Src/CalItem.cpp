// The calendar record and its two chain elements.
#include "detail/Cal.h"
#include "detail/Object.h"
#include "detail/Trace.h"

namespace {

using ostrel::detail::newObject;
using ostrel::cal::eachText;

// The chain calls go through SmpLink signatures of their own: a call
// through a cast function pointer is undefined.
template <class T, void (*Delete)(T *)>
void deleteLink(SmpLink *link) {
  Delete(reinterpret_cast<T *>(link));
}
template <class T, T *(*Clone)(const T *)>
SmpLink *cloneLink(const SmpLink *link) {
  return reinterpret_cast<SmpLink *>(Clone(reinterpret_cast<const T *>(link)));
}

template <class T, void (*Delete)(T *)>
void deleteChain(T *&head) {
  if (head == nullptr) return;
  SmpList_delete(reinterpret_cast<SmpLink *>(head), deleteLink<T, Delete>);
  head = nullptr;
}

template <class T, T *(*Clone)(const T *)>
T *cloneChain(const T *head) {
  return reinterpret_cast<T *>(SmpList_clone(reinterpret_cast<const SmpLink *>(head), cloneLink<T, Clone>));
}

void deleteChains(CalItem *item) {
  deleteChain<CalAttend, CalAttend_delete>(item->attends);
  deleteChain<CalAttach, CalAttach_delete>(item->attachs);
}

void initDates(CalItem *item) {
  for (KvoDt *dt : {&item->dtStart, &item->dtEnd, &item->dtDone, &item->dtCreate, &item->dtDue,
                    &item->modified, &item->aalarm.runTime, &item->dalarm.runTime,
                    &item->malarm.runTime, &item->palarm.runTime})
    KvoDt_init(dt);
  for (KvoDur *dur : {&item->aalarm.snoozeTime, &item->dalarm.snoozeTime,
                      &item->malarm.snoozeTime, &item->palarm.snoozeTime})
    KvoDur_init(dur);
}

// Every scalar, date and duration to its start value; text and chains are
// the caller's business.
void resetScalars(CalItem *item) {
  item->auxWord0 = item->auxWord1 = 0;
  item->type = 0;
  item->clsId = 0;
  item->cateIds = 0;
  item->loc.loc = 0;
  item->prio = 0;
  item->statId = 0;
  item->attends = nullptr;
  item->aalarm.repeatCount = item->dalarm.repeatCount = 0;
  item->malarm.repeatCount = item->palarm.repeatCount = 0;
  item->aalarm.audioFmt[0] = '\0';
  item->aalarm.audioLoc = 0;
  item->palarm.procLoc = 3;
  item->attachs = nullptr;
  item->chgCount = -1;
  item->timeTransp = 0;
  item->rscIds = 0;
  initDates(item);
}

void CalItem_init(CalItem *item, bool wrapped) {
  OSTREL_FUNC_TRACE();
  item->reserved = 0;
  resetScalars(item);
  if (!wrapped)
    eachText(item, nullptr, [](auto *text, const auto *, bool) { ostrel::cal::newText(text); });
}

void CalItem_exit(CalItem *item, bool wrapped) {
  OSTREL_FUNC_TRACE();
  deleteChains(item);
  if (!wrapped)
    eachText(item, nullptr, [](auto *text, const auto *, bool) { ostrel::cal::deleteText(text); });
}

void CalAttend_init(CalAttend *attend, bool wrapped) {
  OSTREL_FUNC_TRACE();
  attend->next = nullptr;
  attend->rsvp = 0;
  attend->roleId = attend->statId = attend->expectId = 0;
  attend->infoFmt[0] = '\0';
  attend->infoLoc = 0;
  if (wrapped) return;
  KvoStr_new(&attend->roleExt);
  KvoStr_new(&attend->statExt);
  KvoStr_new(&attend->expectExt);
  KvoWcs_new(&attend->infoVal);
}

void CalAttend_exit(CalAttend *attend, bool wrapped) {
  OSTREL_FUNC_TRACE();
  if (wrapped) return;
  KvoStr_delete(&attend->roleExt);
  KvoStr_delete(&attend->statExt);
  KvoStr_delete(&attend->expectExt);
  KvoWcs_delete(&attend->infoVal);
}

}  // namespace

extern "C" {

OSTREL_API CalItem *CalItem_new(CalItem *storage) {
  OSTREL_FUNC_TRACE();
  CalItem *item = newObject(storage, CAL_ITEM_TAG, __FILE__, __LINE__);
  CalItem_init(item, false);
  return item;
}

OSTREL_API void CalItem_newCpp(CalItem *item) {
  OSTREL_FUNC_TRACE();
  if (!OSTREL_REQUIRE(item, "item")) return;
  ostrel::detail::setTagWord(item, CAL_ITEM_TAG | ostrel::detail::kHeapBit);
  CalItem_init(item, true);
}

OSTREL_API void CalItem_delCpp(CalItem *item) {
  OSTREL_FUNC_TRACE();
  OSTREL_CHECK(item, CAL_ITEM_TAG);
  CalItem_exit(item, true);
  ostrel::detail::setTagWord(item, 0);
}

OSTREL_API void CalItem_delete(CalItem *item) {
  OSTREL_FUNC_TRACE();
  OSTREL_CHECK(item, CAL_ITEM_TAG);
  CalItem_exit(item, false);
  ostrel::detail::endObject(item, __FILE__, __LINE__);
}

OSTREL_API void CalItem_clear(CalItem *item) {
  OSTREL_CHECK(item, CAL_ITEM_TAG);
  deleteChains(item);
  resetScalars(item);
  eachText(item, nullptr, [](auto *text, const auto *, bool release) {
    ostrel::cal::clearText(text, release);
  });
}

OSTREL_API CalItem *CalItem_assign(CalItem *item, const CalItem *other) {
  OSTREL_CHECK(item, CAL_ITEM_TAG);
  OSTREL_CHECK(other, CAL_ITEM_TAG);
  if (item == other) return item;
  CalItem_clear(item);
  // Everything between the reserved word and the end is copied word for
  // word, then text members and chains are given their own storage again.
  CalItem saved;
  std::memcpy(static_cast<void *>(&saved), item, sizeof saved);
  std::memcpy(static_cast<void *>(item), other, sizeof *item);
  item->tag = saved.tag;
  item->reserved = saved.reserved;
  eachText(item, &saved, [](auto *text, const auto *own, bool) { *text = *own; });
  eachText(item, other, [](auto *text, const auto *src, bool) { ostrel::cal::appendText(text, src); });
  kvo_strxfrm(item->aalarm.audioFmt, other->aalarm.audioFmt, 12);
  item->attends = cloneChain<CalAttend, CalAttend_clone>(other->attends);
  item->attachs = cloneChain<CalAttach, CalAttach_clone>(other->attachs);
  return item;
}

OSTREL_API CalItem *CalItem_clone(const CalItem *item) {
  OSTREL_CHECK(item, CAL_ITEM_TAG);
  return CalItem_assign(CalItem_new(nullptr), item);
}

OSTREL_API CalAttend *CalAttend_new(void) {
  OSTREL_FUNC_TRACE();
  CalAttend *attend = newObject<CalAttend>(nullptr, CAL_ATTEND_TAG, __FILE__, __LINE__);
  CalAttend_init(attend, false);
  return attend;
}

OSTREL_API void CalAttend_newCpp(CalAttend *attend) {
  OSTREL_FUNC_TRACE();
  if (!OSTREL_REQUIRE(attend, "attend")) return;
  ostrel::detail::setTagWord(attend, CAL_ATTEND_TAG | ostrel::detail::kHeapBit);
  CalAttend_init(attend, true);
}

OSTREL_API void CalAttend_delCpp(CalAttend *attend) {
  OSTREL_FUNC_TRACE();
  OSTREL_CHECK(attend, CAL_ATTEND_TAG);
  CalAttend_exit(attend, true);
  ostrel::detail::setTagWord(attend, 0);
}

OSTREL_API void CalAttend_delete(CalAttend *attend) {
  OSTREL_FUNC_TRACE();
  OSTREL_CHECK(attend, CAL_ATTEND_TAG);
  CalAttend_exit(attend, false);
  ostrel::detail::endObject(attend, __FILE__, __LINE__);
}

OSTREL_API CalAttend *CalAttend_clone(const CalAttend *attend) {
  OSTREL_CHECK(attend, CAL_ATTEND_TAG);
  CalAttend *copy = CalAttend_new();
  copy->rsvp = attend->rsvp;
  copy->roleId = attend->roleId;
  KvoStr_setCstr(&copy->roleExt, &attend->roleExt);
  copy->statId = attend->statId;
  KvoStr_setCstr(&copy->statExt, &attend->statExt);
  copy->expectId = attend->expectId;
  KvoStr_setCstr(&copy->expectExt, &attend->expectExt);
  kvo_strxfrm(copy->infoFmt, attend->infoFmt, 12);
  copy->infoLoc = attend->infoLoc;
  KvoWcs_setCwcs(&copy->infoVal, &attend->infoVal);
  return copy;
}

OSTREL_API CalAttach *CalAttach_new(void) {
  CalAttach *attach = newObject<CalAttach>(nullptr, CAL_ATTACH_TAG, __FILE__, __LINE__);
  attach->next = nullptr;
  attach->fmt[0] = '\0';
  attach->loc = 0;
  KvoWcs_new(&attach->val);
  return attach;
}

OSTREL_API void CalAttach_delete(CalAttach *attach) {
  OSTREL_CHECK(attach, CAL_ATTACH_TAG);
  KvoWcs_delete(&attach->val);
  ostrel::detail::endObject(attach, __FILE__, __LINE__);
}

OSTREL_API CalAttach *CalAttach_clone(const CalAttach *attach) {
  OSTREL_CHECK(attach, CAL_ATTACH_TAG);
  CalAttach *copy = CalAttach_new();
  kvo_strxfrm(copy->fmt, attach->fmt, 12);
  copy->loc = attach->loc;
  KvoWcs_setCwcs(&copy->val, &attach->val);
  return copy;
}

}  // extern "C"
