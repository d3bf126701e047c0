// The vCalendar decoder: one calendar object into a CalItem.
//
// The shared text frame finds BEGIN:VCALENDAR; this file's marks add the
// entry: lines before BEGIN:VEVENT or BEGIN:VTODO are dropped (VERSION
// aside), END of either closes the entry, and only an END:VCALENDAR after
// that ends the object. Lines between the entry's END and the object's END
// still reach the record, which is how a second entry merges into the first.
#include <climits>

#include "detail/BoundedInt.h"
#include "detail/Cal.h"
#include "detail/CalTables.h"
#include "detail/Object.h"
#include "detail/TextFrame.h"
#include "detail/Trace.h"
#include "ostrel/VcalEd.h"
#include "tarnex/scratch.hpp"

namespace {

using ostrel::detail::FrameMark;
using ostrel::detail::kCatPos;
using ostrel::detail::kCatText;
namespace cal = ostrel::cal;

struct Cal {
  CalItem *item;
  uint32_t *ver;
  KvoStr *luid;
  int32_t zone;
  bool entry = false;
  bool entryEnd = false;
  SmpList attends{};
  SmpList attachs{};
  tarnex::ScratchStr<64> tmp;

  Cal(CalItem *i, uint32_t *v, KvoStr *l, int32_t z) : item(i), ver(v), luid(l), zone(z) {
    SmpList_init(&attends);
    SmpList_init(&attachs);
  }

  FrameMark mark(bool isEnd, const char *value) {
    const bool event = kvo_stricmp(value, "VEVENT") == 0;
    const bool todo = !event && kvo_stricmp(value, "VTODO") == 0;
    if (!entry) {
      if (isEnd || !(event || todo)) return FrameMark::kDrop;
      entry = true;
      item->type = event ? CAL_TYPE_EVENT : CAL_TYPE_TODO;
      return FrameMark::kDrop;
    }
    if (!isEnd) return FrameMark::kPass;  // a nested BEGIN: an unknown line
    if (!entryEnd) {
      entryEnd = event || todo;
      return FrameMark::kDrop;
    }
    return kvo_stricmp(value, "VCALENDAR") == 0 ? FrameMark::kEnd : FrameMark::kDrop;
  }
};

// Numbers in received text are the sender's: clamped, never overflowed.
using ostrel::detail::boundedAtoi;

const char *component(Cal &c, IStrm *val) {
  VpiVal_getCstr(val, c.tmp, 1, nullptr);
  return c.tmp.c_str();
}

void keyword(int32_t &id, KvoStr &ext, const StrIdMap *map, const char *text) {
  id = 0;
  KvoStr_clear(&ext);
  if (StrIdMap_findByStr(map, text, &id) == 0) {
    id = 0;
    KvoStr_setStr(&ext, text);
  }
}

void keywordList(uint32_t &ids, KvoStr &ext, const StrIdMap *map, IStrm *val) {
  tarnex::ScratchStr<128> word;
  while (VpiVal_getCstr(val, word, 1, nullptr) != 0) {
    int32_t id = 0;
    if (StrIdMap_findByStr(map, word.c_str(), &id) != 0) {
      ids |= static_cast<uint32_t>(id);
      continue;
    }
    if (KvoStr_len(&ext) > 0) KvoStr_appdStr(&ext, ",");
    KvoStr_appdCstr(&ext, word);
  }
}

void date(Cal &c, IStrm *val, KvoDt &dt) {
  const char *text = component(c, val);
  if (*text == '\0') return;
  iso_dt_dec(text, &dt);
  if (c.zone == VCAL_ZONE_LOCAL) KvoDt_toLoc(&dt, &dt);
}

template <class Alarm>
void alarm(Cal &c, IStrm *val, Alarm &a, KvoWcs *val1, KvoWcs *val2 = nullptr) {
  ostrel::detail::FuncTrace marker("Vcal_decAlarm", __FILE__, __LINE__);
  tarnex::ScratchStr<64> tmp;
  if (VpiVal_getCstr(val, tmp, 1, nullptr) != 0 && tmp.len() > 0) {
    iso_dt_dec(tmp.c_str(), &a.runTime);
    if (c.zone == VCAL_ZONE_LOCAL) KvoDt_toLoc(&a.runTime, &a.runTime);
  }
  if (VpiVal_getCstr(val, tmp, 1, nullptr) != 0 && tmp.len() > 0)
    iso_dur_dec(tmp.c_str(), &a.snoozeTime);
  if (VpiVal_getCstr(val, tmp, 1, nullptr) != 0 && tmp.len() > 0)
    a.repeatCount = boundedAtoi(tmp.c_str());
  VpiVal_getCwcs(val, val1, 1, nullptr);
  if (val2 != nullptr) VpiVal_getCwcs(val, val2, 1, nullptr);
}

template <class T>
void addTail(SmpList &list, T *&head, T *elem) {
  SmpList_addTail(&list, reinterpret_cast<SmpLink *>(elem));
  if (head == nullptr) head = elem;
}

void attendee(Cal &c, const KvoStr *params, IStrm *val) {
  CalAttend *a = CalAttend_new();
  addTail(c.attends, c.item->attends, a);
  char text[64];
  auto param = [&](const char *key) {
    text[0] = '\0';
    VpiParams_getAny(params, key, text, sizeof text);
    return text;
  };
  a->rsvp = kvo_stricmp(param("RSVP"), "YES") == 0 ? 1 : 0;
  keyword(a->roleId, a->roleExt, cal::kRoleMap, param("ROLE"));
  keyword(a->statId, a->statExt, cal::kStatMap, param("STATUS"));
  keyword(a->expectId, a->expectExt, cal::kExpectMap, param("EXPECT"));
  VpiParams_getFmt(params, a->infoFmt, sizeof a->infoFmt);
  a->infoLoc = VpiParams_getVl(params);
  VpiVal_getCwcs(val, &a->infoVal, 1, nullptr);
}

void attachment(Cal &c, const KvoStr *params, IStrm *val) {
  CalAttach *a = CalAttach_new();
  addTail(c.attachs, c.item->attachs, a);
  VpiParams_getFmt(params, a->fmt, sizeof a->fmt);
  a->loc = VpiParams_getVl(params);
  VpiVal_getCwcs(val, &a->val, 1, nullptr);
}

using Handler = void (*)(Cal &, CalItem &, const KvoStr *params, IStrm *val);
struct PropRow {
  const char *name;
  Handler handler;
};

#define WIDE(member) [](Cal &, CalItem &i, const KvoStr *, IStrm *v) { VpiVal_getCwcs(v, &i.member, 1, nullptr); }
#define TEXT(member) [](Cal &, CalItem &i, const KvoStr *, IStrm *v) { VpiVal_getCstr(v, &i.member, 1, nullptr); }
#define DATE(member) [](Cal &c, CalItem &i, const KvoStr *, IStrm *v) { date(c, v, i.member); }
#define RAW(member) [](Cal &, CalItem &i, const KvoStr *, IStrm *v) { KvoStr_setStrm(&i.member, v, static_cast<int32_t>(IStrm_size(v))); }

constexpr PropRow kProps[] = {
    {"SUMMARY", WIDE(summ)},
    {"DESCRIPTION", WIDE(desc)},
    {"CLASS", [](Cal &c, CalItem &i, const KvoStr *, IStrm *v) {
       keyword(i.clsId, i.clsExt, cal::kClsMap, component(c, v)); }},
    {"CATEGORIES", [](Cal &, CalItem &i, const KvoStr *, IStrm *v) {
       keywordList(i.cateIds, i.cateExts, cal::kCateMap, v); }},
    {"LOCATION", [](Cal &, CalItem &i, const KvoStr *p, IStrm *v) {
       i.loc.loc = VpiParams_getVl(p);
       VpiVal_getCwcs(v, &i.loc.val, 1, nullptr); }},
    {"PRIORITY", [](Cal &c, CalItem &i, const KvoStr *, IStrm *v) {
       const int32_t n = boundedAtoi(component(c, v));
       i.prio = n >= 1 && n <= 3 ? 1 << n : n; }},
    {"STATUS", [](Cal &c, CalItem &i, const KvoStr *, IStrm *v) {
       keyword(i.statId, i.statExt, cal::kStatMap, component(c, v)); }},
    {"ATTENDEE", [](Cal &c, CalItem &, const KvoStr *p, IStrm *v) { attendee(c, p, v); }},
    {"DTSTART", DATE(dtStart)},
    {"DTEND", DATE(dtEnd)},
    {"COMPLETED", DATE(dtDone)},
    {"DCREATED", DATE(dtCreate)},
    {"DUE", DATE(dtDue)},
    {"EXDATE", RAW(dtExcepts)},
    {"RDATE", RAW(dtRecurs)},
    {"AALARM", [](Cal &c, CalItem &i, const KvoStr *p, IStrm *v) {
       VpiParams_getFmt(p, i.aalarm.audioFmt, sizeof i.aalarm.audioFmt);
       i.aalarm.audioLoc = VpiParams_getVl(p);
       alarm(c, v, i.aalarm, &i.aalarm.audioRef); }},
    {"DALARM", [](Cal &c, CalItem &i, const KvoStr *, IStrm *v) {
       alarm(c, v, i.dalarm, &i.dalarm.dispVal); }},
    {"MALARM", [](Cal &c, CalItem &i, const KvoStr *, IStrm *v) {
       alarm(c, v, i.malarm, &i.malarm.mailAddr, &i.malarm.mailNote); }},
    {"PALARM", [](Cal &c, CalItem &i, const KvoStr *p, IStrm *v) {
       i.palarm.procLoc = VpiParams_getVl(p);
       alarm(c, v, i.palarm, &i.palarm.procName); }},
    {"ATTACH", [](Cal &c, CalItem &, const KvoStr *p, IStrm *v) { attachment(c, p, v); }},
    {"EXRULE", TEXT(exceptRule)},
    {"RRULE", TEXT(recurRule)},
    {"SEQUENCE", [](Cal &c, CalItem &i, const KvoStr *, IStrm *v) {
       i.chgCount = boundedAtoi(component(c, v)); }},
    {"LAST-MODIFIED", DATE(modified)},
    {"TRANSP", [](Cal &c, CalItem &i, const KvoStr *, IStrm *v) {
       i.timeTransp = boundedAtoi(component(c, v)); }},
    {"RELATED-TO", TEXT(relateTo)},
    {"UID", TEXT(uid)},
    {"RESOURCES", [](Cal &, CalItem &i, const KvoStr *, IStrm *v) {
       keywordList(i.rscIds, i.rscExt, cal::kRscMap, v); }},
    {"URL", WIDE(url)},
    {"X-IRMC-LUID", [](Cal &c, CalItem &, const KvoStr *, IStrm *v) {
       if (c.luid != nullptr) VpiVal_getCstr(v, c.luid, 1, nullptr); }},
};
#undef WIDE
#undef TEXT
#undef DATE
#undef RAW

void onProp(Cal &c, const char *name, const KvoStr *params, IStrm *val) {
  if (kvo_stricmp(name, "VERSION") == 0) {
    if (c.ver == nullptr) return;
    VpiVal_getCstr(val, c.tmp, 0, nullptr);
    *c.ver = ver_str_to_ver(c.tmp.c_str());
    return;
  }
  if (!c.entry) return;
  if (const PropRow *row = ostrel::detail::findRow(kProps, name))
    row->handler(c, *c.item, params, val);
  else
    ostrel::detail::traceUnhandled(name, val, 2);
}

void tracePos(IStrm *vcal) {
  OSTREL_TRACE(kCatPos, 3, "[vcal: %d/%d]", static_cast<int>(IStrm_tell(vcal)),
               static_cast<int>(IStrm_size(vcal)));
}

}  // namespace

extern "C" {

OSTREL_API int32_t Vcal_decx(IStrm *vcal, CalItem *item, uint32_t *ver, KvoStr *luid,
                             int32_t zone) {
  ostrel::detail::FuncTrace marker("Vcal_dec", __FILE__, __LINE__);
  if (!OSTREL_REQUIRE(vcal && item, "vcal && item")) return 0;
  OSTREL_CHECK(item, CAL_ITEM_TAG);
  tracePos(vcal);
  if (ostrel::detail::traceOn(ostrel::detail::kModule, kCatText, 3)) {
    tout_beg(__FILE__, __LINE__, ostrel::detail::kModule, kCatText, 3);
    tout_tstrm(vcal);
    tout_endx();
  }
  CalItem_clear(item);
  if (luid != nullptr) KvoStr_clear(luid);
  Cal c(item, ver, luid, zone);
  const int32_t rc = ostrel::detail::readFrame(
      vcal, "VCALENDAR", c, [&](const KvoStr *name, const KvoStr *params, IStrm *val) {
        onProp(c, KvoStr_buf(name), params, val);
      });
  if (rc < 1) {
    CalItem_clear(item);
    if (luid != nullptr) KvoStr_clear(luid);
  }
  tracePos(vcal);
  return rc;
}

OSTREL_API int32_t Vcal_dec(IStrm *vcal, CalItem *item, uint32_t *ver) {
  return Vcal_decx(vcal, item, ver, nullptr, VCAL_ZONE_ASIS);
}

}  // extern "C"
