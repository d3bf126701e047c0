// The human-readable text of a calendar record, for traces and tests.
#include "detail/Cal.h"
#include "detail/Object.h"
#include "detail/Trace.h"

namespace {

using Utf8 = tarnex::ScratchStr<256>;
using ostrel::cal::dtSet;
using ostrel::cal::durSet;

// Writes "<pre>id = value\n" lines; each form stands only when set unless
// the caller says always.
class Lines {
 public:
  explicit Lines(IStrm *strm) : strm_(strm) {}
  void text(const char *fmt, const char *value) {
    if (value[0] != '\0') IStrm_printf(strm_, fmt, value);
  }
  void str(const char *fmt, const KvoStr &s) { text(fmt, KvoStr_buf(&s)); }
  void wcs(const char *fmt, const KvoWcs &w) {
    if (KvoWcs_len(&w) == 0) return;
    Utf8 utf8;
    KvoStr_setCwcs(utf8, &w);
    IStrm_printf(strm_, fmt, utf8.c_str());
  }
  void num(const char *fmt, long value) {
    if (value != 0) IStrm_printf(strm_, fmt, value);
  }
  void dt(const char *fmt, const KvoDt &d) {
    if (!dtSet(d)) return;
    Utf8 text;
    iso_dt_enc(text, &d);
    IStrm_printf(strm_, fmt, text.c_str());
  }
  void dur(const char *fmt, const KvoDur &d) {
    if (!durSet(d)) return;
    Utf8 text;
    iso_dur_enc(text, &d);
    IStrm_printf(strm_, fmt, text.c_str());
  }
  void put(const char *text) { IStrm_puts(strm_, text, -1); }
  void fmt(const char *f, long value) { IStrm_printf(strm_, f, value); }

 private:
  IStrm *strm_;
};

template <class Alarm>
bool alarmHead(Lines &out, const char *head, const Alarm &alarm) {
  if (!dtSet(alarm.runTime)) return false;
  out.put(head);
  out.dt("\trunTime = %s\n", alarm.runTime);
  out.dur("\tsnoozeTime = %s\n", alarm.snoozeTime);
  out.fmt("\trepeatCount = %ld\n", alarm.repeatCount);
  return true;
}

void traceAttends(Lines &out, const CalAttend *a) {
  if (a == nullptr) return;
  out.put("attends :\n{\n");
  for (; a != nullptr; a = a->next) {
    out.put(a->rsvp ? "\trsvp = KVO_TRUE\n" : "\trsvp = KVO_FALSE\n");
    out.fmt("\troleId = %ld\n", a->roleId);
    out.str("\troleExt = %s\n", a->roleExt);
    out.fmt("\tstatId = %ld\n", a->statId);
    out.str("\tstatExt = %s\n", a->statExt);
    out.fmt("\texpectId = %ld\n", a->expectId);
    out.str("\texpectExt = %s\n", a->expectExt);
    out.text("\tinfoFmt = %s\n", a->infoFmt);
    out.fmt("\tinfoLoc = %ld\n", a->infoLoc);
    out.wcs("\tinfoVal = %s\n", a->infoVal);
    out.put("\t.\n");
  }
  out.put("}\n");
}

void traceAlarms(Lines &out, const CalItem &item) {
  if (alarmHead(out, "aalarm :\n{\n", item.aalarm)) {
    out.text("\taudioFmt = %s\n", item.aalarm.audioFmt);
    out.fmt("\taudioLoc = %ld\n", item.aalarm.audioLoc);
    out.wcs("\taudioRef = %s\n", item.aalarm.audioRef);
    out.put("}\n");
  }
  if (alarmHead(out, "dalarm :\n{\n", item.dalarm)) {
    out.wcs("\tdispVal = %s\n", item.dalarm.dispVal);
    out.put("}\n");
  }
  if (alarmHead(out, "malarm :\n{\n", item.malarm)) {
    out.wcs("\tmailAddr = %s\n", item.malarm.mailAddr);
    out.wcs("\tmailNote = %s\n", item.malarm.mailNote);
    out.put("}\n");
  }
  if (alarmHead(out, "palarm :\n{\n", item.palarm)) {
    out.fmt("\tprocLoc = %ld\n", item.palarm.procLoc);
    out.wcs("\tprocName = %s\n", item.palarm.procName);
    out.put("}\n");
  }
}

void traceAttachs(Lines &out, const CalAttach *a) {
  if (a == nullptr) return;
  out.put("attachs :\n{\n");
  for (; a != nullptr; a = a->next) {
    out.text("\tfmt = %s\n", a->fmt);
    out.fmt("\tloc = %ld\n", a->loc);
    out.wcs("\tval = %s\n", a->val);
    out.put("\t.\n");
  }
  out.put("}\n");
}

}  // namespace

extern "C" {

OSTREL_API void CalItem_tracex(CalItem *item, IStrm *strm, int32_t append) {
  OSTREL_CHECK(item, CAL_ITEM_TAG);
  if (!OSTREL_REQUIRE(strm, "strm")) return;
  ostrel::detail::openOutput(strm, append);
  Lines out(strm);
  out.put("# CalItem beg......\n");
  out.put(item->type == CAL_TYPE_TODO    ? "type = TODO\n"
          : item->type == CAL_TYPE_EVENT ? "type = EVENT\n"
                                         : "type = UNKN\n");
  out.wcs("summ = %s\n", item->summ);
  out.wcs("desc = %s\n", item->desc);
  out.num("clsId = %ld\n", item->clsId);
  out.str("clsExt = %s\n", item->clsExt);
  out.num("cateIds = %ld\n", static_cast<long>(item->cateIds));
  out.str("cateExts = %s\n", item->cateExts);
  if (KvoWcs_len(&item->loc.val) > 0) {
    out.put("loc :\n{\n");
    out.fmt("\tloc = %ld\n", item->loc.loc);
    out.wcs("\tval = %s\n", item->loc.val);
    out.put("}\n");
  }
  out.num("prio = %ld\n", item->prio);
  out.num("statId = %ld\n", item->statId);
  out.str("statExt = %s\n", item->statExt);
  traceAttends(out, item->attends);
  out.dt("dtStart = %s\n", item->dtStart);
  out.dt("dtDue = %s\n", item->dtDue);
  out.dt("dtEnd = %s\n", item->dtEnd);
  out.dt("dtDone = %s\n", item->dtDone);
  out.dt("dtCreate = %s\n", item->dtCreate);
  out.str("dtExcepts= %s\n", item->dtExcepts);
  out.str("dtRecurs = %s\n", item->dtRecurs);
  traceAlarms(out, *item);
  traceAttachs(out, item->attachs);
  out.str("exceptRule = %s\n", item->exceptRule);
  out.str("recurRule = %s\n", item->recurRule);
  if (item->chgCount >= 0) out.fmt("chgCount = %ld\n", item->chgCount);
  out.dt("modified = %s\n", item->modified);
  if (item->timeTransp > 0) out.fmt("timeTransp = %ld\n", item->timeTransp);
  out.str("relateTo = %s\n", item->relateTo);
  out.str("uid = %s\n", item->uid);
  out.num("rscIds = %ld\n", static_cast<long>(item->rscIds));
  out.str("rscExt = %s\n", item->rscExt);
  out.wcs("url = %s\n", item->url);
  out.put("# CalItem end !!!!!!\n");
}

OSTREL_API void CalItem_trace(CalItem *item) {
  OSTREL_CHECK(item, CAL_ITEM_TAG);
  ostrel::detail::traceRecord(item, CalItem_tracex);
}

}  // extern "C"
