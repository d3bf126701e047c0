// What the calendar record's operations and its codec share: one list of
// the record's text members, walked by construction, clearing, copying and
// tracing alike so that no member is forgotten by one of them.
#ifndef OSTREL_DETAIL_CAL_H
#define OSTREL_DETAIL_CAL_H

#include <cstring>

#include "ostrel/CalItem.h"

namespace ostrel::cal {

inline void newText(KvoStr *s) { KvoStr_new(s); }
inline void newText(KvoWcs *w) { KvoWcs_new(w); }
inline void deleteText(KvoStr *s) { KvoStr_delete(s); }
inline void deleteText(KvoWcs *w) { KvoWcs_delete(w); }
// release: the member gives its storage back (the long, rarely reused ones).
inline void clearText(KvoStr *s, bool release) { release ? KvoStr_clearx(s) : KvoStr_clear(s); }
inline void clearText(KvoWcs *w, bool) { KvoWcs_clearx(w); }
inline void appendText(KvoStr *s, const KvoStr *src) { KvoStr_appdCstr(s, src); }
inline void appendText(KvoWcs *w, const KvoWcs *src) { KvoWcs_appdCwcs(w, src); }

// Calls fn(member, sameMemberOfOther or null, release) for every text
// member of item, in member order.
template <class F>
void eachText(CalItem *item, const CalItem *other, F fn) {
#define OSTREL_CAL_TEXT(m, x) fn(&item->m, other ? &other->m : nullptr, x)
  OSTREL_CAL_TEXT(summ, true);
  OSTREL_CAL_TEXT(desc, true);
  OSTREL_CAL_TEXT(clsExt, false);
  OSTREL_CAL_TEXT(cateExts, false);
  OSTREL_CAL_TEXT(loc.val, true);
  OSTREL_CAL_TEXT(statExt, false);
  OSTREL_CAL_TEXT(dtExcepts, false);
  OSTREL_CAL_TEXT(dtRecurs, false);
  OSTREL_CAL_TEXT(aalarm.audioRef, true);
  OSTREL_CAL_TEXT(dalarm.dispVal, true);
  OSTREL_CAL_TEXT(malarm.mailAddr, true);
  OSTREL_CAL_TEXT(malarm.mailNote, true);
  OSTREL_CAL_TEXT(palarm.procName, true);
  OSTREL_CAL_TEXT(exceptRule, true);
  OSTREL_CAL_TEXT(recurRule, true);
  OSTREL_CAL_TEXT(relateTo, true);
  OSTREL_CAL_TEXT(uid, true);
  OSTREL_CAL_TEXT(rscExt, false);
  OSTREL_CAL_TEXT(url, true);
#undef OSTREL_CAL_TEXT
}

inline bool dtSet(const KvoDt &dt) {
  return dt.year != KVO_DT_UNSET || dt.hour != KVO_DT_UNSET;
}
inline bool durSet(const KvoDur &dur) {
  return dur.years != KVO_DT_UNSET || dur.hours != KVO_DT_UNSET;
}

}  // namespace ostrel::cal

#endif  // OSTREL_DETAIL_CAL_H
