// The vCalendar encoder: a CalItem as one calendar object, one property
// line per member that holds something, in a fixed order.
#include <cstdio>

#include "detail/Cal.h"
#include "detail/CalTables.h"
#include "detail/Object.h"
#include "detail/Trace.h"
#include "ostrel/VcalEd.h"
#include "tarnex/scratch.hpp"

namespace {

using ostrel::detail::kCatField;
using ostrel::detail::kCatPos;
using ostrel::detail::kCatText;
using ostrel::cal::dtSet;
namespace cal = ostrel::cal;

// A record's 12-byte text, bounded even when a caller left it unterminated.
struct Fmt12 {
  char text[13];
  explicit Fmt12(const char (&src)[12]) {
    std::memcpy(text, src, 12);
    text[12] = '\0';
  }
};

const char *keywordText(int32_t id, const KvoStr &ext, const StrIdMap *map) {
  if (KvoStr_len(&ext) > 0) return KvoStr_buf(&ext);
  OSTREL_REQUIRE(id != 0, "id");
  const char *word = nullptr;
  return StrIdMap_findById(map, id, &word) != 0 ? word : "UNKNOWN";
}

void traceWide(const KvoWcs &w) { tout_wcs(KvoWcs_buf(&w)); }

class Writer {
 public:
  Writer(IStrm *vcal, int32_t zone, const VpiEncOpts *opts) : vcal_(vcal), zone_(zone), opts_(opts) {}
  int32_t rc() const { return rc_; }
  bool ok() const { return rc_ >= 0; }

  // A failed line is traced by the caller's `tell`, which writes the text
  // between tout_beg and tout_endx.
  template <class Tell>
  void done(int32_t rc, const char *name, Tell tell) {
    resetScratch();
    if (rc >= 0) return;
    rc_ = rc;
    if (!ostrel::detail::traceOn(ostrel::detail::kModule, kCatField, 3)) return;
    tout_beg(__FILE__, __LINE__, ostrel::detail::kModule, kCatField, 3);
    tell(name);
    tout_endx();
  }
  void text(const char *name, const char *value, bool plain = false) {
    if (!ok()) return;
    done(VpiEnc_putStr(vcal_, name, nullptr, value, -1, plain ? nullptr : opts_), name,
         [&](const char *n) { tout_fmt("[%s: %s]", n, value); });
  }
  void wide(const char *name, const KvoWcs &value, bool withParams = false) {
    if (!ok()) return;
    done(VpiEnc_putStrW(vcal_, name, withParams ? params() : nullptr, KvoWcs_buf(&value),
                        KvoWcs_len(&value), opts_),
         name, [&](const char *n) {
           tout_fmt(withParams ? "[%s]" : "[%s: ]", n);
           if (withParams) tout_str(KvoStr_buf(params()));
           traceWide(value);
         });
  }
  void date(const char *name, const KvoDt &dt) {
    if (!ok() || !dtSet(dt)) return;
    iso_dt_encx__(dateText_, &dt, zone_);
    text(name, dateText_.c_str());
  }
  void rawList(const char *name, const KvoStr &list) {
    if (!ok() || KvoStr_len(&list) == 0) return;
    done(VpiEnc_putStrx(vcal_, name, nullptr, KvoStr_buf(&list), KvoStr_len(&list), opts_, 1, "\\"),
         name, [&](const char *n) { tout_fmt("[%s: %s]", n, KvoStr_buf(&list)); });
  }
  // The scratch value as a line; `tell` traces a failure.
  template <class Tell>
  void composite(const char *name, bool withParams, Tell tell) {
    if (!ok()) return;
    done(VpiEnc_putStrm(vcal_, name, withParams ? params() : nullptr, scratch_, 0, opts_), name,
         tell);
  }
  void keywordList(const char *name, uint32_t ids, const KvoStr &ext, const StrIdMap *map,
                   const char *idName, const char *extName) {
    if (!ok() || (ids == 0 && KvoStr_len(&ext) == 0)) return;
    bool first = true;
    for (uint32_t bit = 1; bit != 0 && (ids & ~(bit - 1)) != 0; bit <<= 1) {
      if ((ids & bit) == 0) continue;
      const char *word = nullptr;
      if (StrIdMap_findById(map, static_cast<int32_t>(bit), &word) == 0) {
        kvo_assert__("0", __FILE__, __LINE__);
        continue;
      }
      VpiVal_addStr(scratch_, word, -1, 1, nullptr, first ? 1 : 0);
      first = false;
    }
    if (KvoStr_len(&ext) > 0)
      VpiVal_addStr(scratch_, KvoStr_buf(&ext), KvoStr_len(&ext), 0, nullptr, first ? 1 : 0);
    composite(name, false, [&](const char *n) {
      tout_fmt("[%s] [%s: %ld] [%s: %s]", n, idName, static_cast<long>(ids), extName,
               KvoStr_buf(&ext));
    });
  }
  template <class Alarm>
  void alarm(const char *name, const Alarm &a, const KvoWcs &val1, const KvoWcs *val2,
             bool withParams) {
    if (!ok() || !dtSet(a.runTime)) return;
    {
      ostrel::detail::FuncTrace marker("Vcal_encAlarm", __FILE__, __LINE__);
      tarnex::ScratchStr<64> local;
      iso_dt_encx__(local, &a.runTime, zone_);
      VpiVal_addStr(scratch_, local.c_str(), local.len(), 1, nullptr, 1);
      iso_dur_enc(local, &a.snoozeTime);
      next(local.c_str(), local.len());
      char count[16] = "";
      if (a.repeatCount > 0) std::snprintf(count, sizeof count, "%d", a.repeatCount);
      next(count, -1);
      nextWide(val1);
      if (val2 != nullptr) nextWide(*val2);
    }
    composite(name, withParams, [&](const char *n) {
      tout_fmt("[%s]", n);
      tout_str(KvoStr_buf(params()));
      tout_tstrm(scratch_);
    });
  }
  KvoStr *params() { return params_; }

 private:
  // A component after the first keeps its place even when empty.
  void next(const char *text, int32_t len) {
    if (*text == '\0')
      VpiVal_addStr(scratch_, ";", 1, 0, nullptr, 1);
    else
      VpiVal_addStr(scratch_, text, len, 1, nullptr, 0);
  }
  void nextWide(const KvoWcs &w) {
    if (KvoWcs_len(&w) == 0)
      VpiVal_addStr(scratch_, ";", 1, 0, nullptr, 1);
    else
      VpiVal_addStrW(scratch_, KvoWcs_buf(&w), KvoWcs_len(&w), 1, nullptr, 0);
  }
  void resetScratch() {
    KvoStr_clear(params_);
    IStrm_clear(scratch_);
  }

  IStrm *vcal_;
  int32_t zone_;
  const VpiEncOpts *opts_;
  int32_t rc_ = 0;
  tarnex::ScratchStr<128> params_;
  tarnex::StackMemStrm<512> scratch_;  // ordinary values need no heap
  tarnex::ScratchStr<64> dateText_;
};

const char *entryWord(int32_t type) {
  return type == CAL_TYPE_EVENT ? "VEVENT" : type == CAL_TYPE_TODO ? "VTODO" : nullptr;
}

void attendees(Writer &w, const CalAttend *a) {
  for (; a != nullptr && w.ok(); a = a->next) {
    KvoStr *p = w.params();
    KvoStr_appdStr(p, a->rsvp != 0 ? ";RSVP=YES" : ";RSVP=NO");
    auto param = [&](const char *key, int32_t id, const KvoStr &ext, const StrIdMap *map) {
      if (id == 0 && KvoStr_len(&ext) == 0) return;
      KvoStr_appdStr(p, key);
      KvoStr_appdStr(p, keywordText(id, ext, map));
    };
    param(";ROLE=", a->roleId, a->roleExt, cal::kRoleMap);
    param(";STATUS=", a->statId, a->statExt, cal::kStatMap);
    param(";EXPECT=", a->expectId, a->expectExt, cal::kExpectMap);
    VpiParams_putVl(p, a->infoLoc);
    w.wide("ATTENDEE", a->infoVal, true);
  }
}

void attachments(Writer &w, const CalAttach *a) {
  for (; a != nullptr && w.ok(); a = a->next) {
    VpiParams_putFmt(w.params(), Fmt12(a->fmt).text);
    VpiParams_putVl(w.params(), a->loc);
    w.wide("ATTACH", a->val, true);
  }
}

void writeBody(Writer &w, const CalItem &item, const char *luid) {
  if (luid != nullptr && *luid != '\0') w.text("X-IRMC-LUID", luid);
  if (KvoWcs_len(&item.summ) > 0) w.wide("SUMMARY", item.summ);
  if (KvoWcs_len(&item.desc) > 0) w.wide("DESCRIPTION", item.desc);
  if (item.clsId != 0 || KvoStr_len(&item.clsExt) > 0)
    w.text("CLASS", keywordText(item.clsId, item.clsExt, cal::kClsMap));
  w.keywordList("CATEGORIES", item.cateIds, item.cateExts, cal::kCateMap, "cateIds", "cateExts");
  if (KvoWcs_len(&item.loc.val) > 0) {
    VpiParams_putVl(w.params(), item.loc.loc);
    w.wide("LOCATION", item.loc.val, true);
  }
  char number[64];
  if (item.prio != 0) {
    const int32_t p = item.prio;
    std::snprintf(number, sizeof number, "%d", p == 2 ? 1 : p == 4 ? 2 : p == 8 ? 3 : p);
    w.text("PRIORITY", number);
  }
  if (item.statId != 0 || KvoStr_len(&item.statExt) > 0)
    w.text("STATUS", keywordText(item.statId, item.statExt, cal::kStatMap));
  attendees(w, item.attends);
  w.date("DTSTART", item.dtStart);
  w.date("DTEND", item.dtEnd);
  w.date("COMPLETED", item.dtDone);
  w.date("DCREATED", item.dtCreate);
  w.date("DUE", item.dtDue);
  w.rawList("EXDATE", item.dtExcepts);
  w.rawList("RDATE", item.dtRecurs);
  if (dtSet(item.aalarm.runTime)) {
    VpiParams_putFmt(w.params(), Fmt12(item.aalarm.audioFmt).text);
    VpiParams_putVl(w.params(), item.aalarm.audioLoc);
  }
  w.alarm("AALARM", item.aalarm, item.aalarm.audioRef, nullptr, true);
  w.alarm("DALARM", item.dalarm, item.dalarm.dispVal, nullptr, false);
  w.alarm("MALARM", item.malarm, item.malarm.mailAddr, &item.malarm.mailNote, false);
  if (dtSet(item.palarm.runTime)) VpiParams_putVl(w.params(), item.palarm.procLoc);
  w.alarm("PALARM", item.palarm, item.palarm.procName, nullptr, true);
  attachments(w, item.attachs);
  if (KvoStr_len(&item.exceptRule) > 0) w.text("EXRULE", KvoStr_buf(&item.exceptRule));
  if (KvoStr_len(&item.recurRule) > 0) w.text("RRULE", KvoStr_buf(&item.recurRule));
  if (item.chgCount >= 0) {
    std::snprintf(number, sizeof number, "%ld", static_cast<long>(item.chgCount));
    w.text("SEQUENCE", number);
  }
  w.date("LAST-MODIFIED", item.modified);
  if (item.timeTransp > 0) {
    std::snprintf(number, sizeof number, "%d", item.timeTransp);
    w.text("TRANSP", number);
  }
  if (KvoStr_len(&item.relateTo) > 0) w.text("RELATED-TO", KvoStr_buf(&item.relateTo));
  if (KvoStr_len(&item.uid) > 0) w.text("UID", KvoStr_buf(&item.uid));
  w.keywordList("RESOURCES", item.rscIds, item.rscExt, cal::kRscMap, "rscIds", "rscExts");
  if (KvoWcs_len(&item.url) > 0) w.wide("URL", item.url);
}

}  // namespace

extern "C" {

OSTREL_API int32_t Vcal_encx(IStrm *vcal, const CalItem *item, uint32_t ver, int32_t spare,
                             const char *luid, int32_t zone, const VpiEncOpts *opts) {
  (void)spare;
  ostrel::detail::FuncTrace marker("Vcal_encx", __FILE__, __LINE__);
  if (!OSTREL_REQUIRE(vcal && item, "vcal && item")) return 0;
  OSTREL_CHECK(item, CAL_ITEM_TAG);
  OSTREL_TRACE(kCatPos, 3, "[vcal: %d/%d]", static_cast<int>(IStrm_tell(vcal)),
               static_cast<int>(IStrm_size(vcal)));
  const char *entry = entryWord(item->type);
  char version[64];
  ver_to_ver_str(ver != 0 ? ver : 0x100, version, sizeof version, 0);
  int32_t rc = 0;
  {
    Writer w(vcal, zone, opts);
    w.text("BEGIN", "VCALENDAR", true);
    w.text("VERSION", version, true);
    // An entry of no known kind is the caller's fault: its BEGIN and END
    // lines are left out, so the text reads back as no entry at all.
    if (entry != nullptr)
      w.text("BEGIN", entry, true);
    else
      kvo_assert__("0", __FILE__, __LINE__);
    writeBody(w, *item, luid);
    if (entry != nullptr)
      w.text("END", entry, true);
    else
      kvo_assert__("0", __FILE__, __LINE__);
    w.text("END", "VCALENDAR", true);
    rc = w.rc();
  }
  if (ostrel::detail::traceOn(ostrel::detail::kModule, kCatText, 3)) {
    tout_beg(__FILE__, __LINE__, ostrel::detail::kModule, kCatText, 3);
    tout_tstrm(vcal);
    tout_endx();
  }
  return rc;
}

OSTREL_API int32_t Vcal_enc(IStrm *vcal, const CalItem *item, uint32_t ver) {
  return Vcal_encx(vcal, item, ver, 0, nullptr, VCAL_ZONE_ASIS, nullptr);
}

OSTREL_API void CalItem_dump(CalItem *item, IStrm *strm, int32_t append) {
  OSTREL_CHECK(item, CAL_ITEM_TAG);
  if (!OSTREL_REQUIRE(strm, "strm")) return;
  ostrel::detail::openOutput(strm, append);
  Vcal_enc(strm, item, 0x100);
}

}  // extern "C"
