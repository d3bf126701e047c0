// The human-readable text of a calendar record, for traces and tests.
#include "detail/Cal.h"
#include "detail/Object.h"
#include "detail/Trace.h"

namespace {

using Utf8 = tarnex::ScratchStr<256>;
using ostrel::cal::dtSet;
using ostrel::cal::durSet;

// Writes one "<head>value\n" line a member, each head being the member's
// name and " = " (indented inside a block); a line stands only when its
// member is set, unless the caller writes it with fmt.
class Lines {
 public:
  explicit Lines(IStrm *strm) : strm_(strm) {}
  void text(const char *head, const char *value) {
    if (value[0] == '\0') return;
    IStrm_puts(strm_, head, -1);
    IStrm_puts(strm_, value, -1);
    IStrm_puts(strm_, "\n", 1);
  }
  void str(const char *head, const KvoStr &s) { text(head, KvoStr_buf(&s)); }
  void wcs(const char *head, const KvoWcs &w) {
    if (KvoWcs_len(&w) == 0) return;
    Utf8 utf8;
    KvoStr_setCwcs(utf8, &w);
    text(head, utf8.c_str());
  }
  void num(const char *head, long value) {
    if (value != 0) fmt(head, value);
  }
  void dt(const char *head, const KvoDt &d) {
    if (!dtSet(d)) return;
    Utf8 value;
    iso_dt_enc(value, &d);
    text(head, value.c_str());
  }
  void dur(const char *head, const KvoDur &d) {
    if (!durSet(d)) return;
    Utf8 value;
    iso_dur_enc(value, &d);
    text(head, value.c_str());
  }
  void put(const char *line) { IStrm_puts(strm_, line, -1); }
  void fmt(const char *head, long value) { IStrm_printf(strm_, "%s%ld\n", head, value); }

 private:
  IStrm *strm_;
};

template <class Alarm>
bool alarmHead(Lines &out, const char *head, const Alarm &alarm) {
  if (!dtSet(alarm.runTime)) return false;
  out.put(head);
  out.dt("\trunTime = ", alarm.runTime);
  out.dur("\tsnoozeTime = ", alarm.snoozeTime);
  out.fmt("\trepeatCount = ", alarm.repeatCount);
  return true;
}

void traceAttends(Lines &out, const CalAttend *a) {
  if (a == nullptr) return;
  out.put("attends :\n{\n");
  for (; a != nullptr; a = a->next) {
    out.put(a->rsvp ? "\trsvp = KVO_TRUE\n" : "\trsvp = KVO_FALSE\n");
    out.fmt("\troleId = ", a->roleId);
    out.str("\troleExt = ", a->roleExt);
    out.fmt("\tstatId = ", a->statId);
    out.str("\tstatExt = ", a->statExt);
    out.fmt("\texpectId = ", a->expectId);
    out.str("\texpectExt = ", a->expectExt);
    out.text("\tinfoFmt = ", a->infoFmt);
    out.fmt("\tinfoLoc = ", a->infoLoc);
    out.wcs("\tinfoVal = ", a->infoVal);
    out.put("\t.\n");
  }
  out.put("}\n");
}

void traceAlarms(Lines &out, const CalItem &item) {
  if (alarmHead(out, "aalarm :\n{\n", item.aalarm)) {
    out.text("\taudioFmt = ", item.aalarm.audioFmt);
    out.fmt("\taudioLoc = ", item.aalarm.audioLoc);
    out.wcs("\taudioRef = ", item.aalarm.audioRef);
    out.put("}\n");
  }
  if (alarmHead(out, "dalarm :\n{\n", item.dalarm)) {
    out.wcs("\tdispVal = ", item.dalarm.dispVal);
    out.put("}\n");
  }
  if (alarmHead(out, "malarm :\n{\n", item.malarm)) {
    out.wcs("\tmailAddr = ", item.malarm.mailAddr);
    out.wcs("\tmailNote = ", item.malarm.mailNote);
    out.put("}\n");
  }
  if (alarmHead(out, "palarm :\n{\n", item.palarm)) {
    out.fmt("\tprocLoc = ", item.palarm.procLoc);
    out.wcs("\tprocName = ", item.palarm.procName);
    out.put("}\n");
  }
}

void traceAttachs(Lines &out, const CalAttach *a) {
  if (a == nullptr) return;
  out.put("attachs :\n{\n");
  for (; a != nullptr; a = a->next) {
    out.text("\tfmt = ", a->fmt);
    out.fmt("\tloc = ", a->loc);
    out.wcs("\tval = ", a->val);
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
  out.wcs("summ = ", item->summ);
  out.wcs("desc = ", item->desc);
  out.num("clsId = ", item->clsId);
  out.str("clsExt = ", item->clsExt);
  out.num("cateIds = ", static_cast<long>(item->cateIds));
  out.str("cateExts = ", item->cateExts);
  if (KvoWcs_len(&item->loc.val) > 0) {
    out.put("loc :\n{\n");
    out.fmt("\tloc = ", item->loc.loc);
    out.wcs("\tval = ", item->loc.val);
    out.put("}\n");
  }
  out.num("prio = ", item->prio);
  out.num("statId = ", item->statId);
  out.str("statExt = ", item->statExt);
  traceAttends(out, item->attends);
  out.dt("dtStart = ", item->dtStart);
  out.dt("dtDue = ", item->dtDue);
  out.dt("dtEnd = ", item->dtEnd);
  out.dt("dtDone = ", item->dtDone);
  out.dt("dtCreate = ", item->dtCreate);
  out.str("dtExcepts= ", item->dtExcepts);
  out.str("dtRecurs = ", item->dtRecurs);
  traceAlarms(out, *item);
  traceAttachs(out, item->attachs);
  out.str("exceptRule = ", item->exceptRule);
  out.str("recurRule = ", item->recurRule);
  if (item->chgCount >= 0) out.fmt("chgCount = ", item->chgCount);
  out.dt("modified = ", item->modified);
  if (item->timeTransp > 0) out.fmt("timeTransp = ", item->timeTransp);
  out.str("relateTo = ", item->relateTo);
  out.str("uid = ", item->uid);
  out.num("rscIds = ", static_cast<long>(item->rscIds));
  out.str("rscExt = ", item->rscExt);
  out.wcs("url = ", item->url);
  out.put("# CalItem end !!!!!!\n");
}

OSTREL_API void CalItem_trace(CalItem *item) {
  OSTREL_CHECK(item, CAL_ITEM_TAG);
  ostrel::detail::traceRecord(item, CalItem_tracex);
}

}  // extern "C"
