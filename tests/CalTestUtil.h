// Helpers of the calendar tests: a record as its trace text, wide literals,
// and a record with every member set.
#ifndef OSTREL_TESTS_CALTESTUTIL_H
#define OSTREL_TESTS_CALTESTUTIL_H

#include <cstring>
#include <string>

#include "ostrel/ostrel.h"
#include "tarnex/scratch.hpp"

namespace caltest {

inline std::string memText(IStrm *m) {
  return std::string(reinterpret_cast<const char *>(MemStrm_data(m)),
                     static_cast<size_t>(IStrm_size(m)));
}

inline std::string trace(CalItem *item) {
  tarnex::ScratchMemStrm out(0);
  CalItem_tracex(item, out, 0);
  return memText(out);
}

inline void setW(KvoWcs *w, const char *utf8) { KvoWcs_setStr(w, utf8); }

inline KvoDt dt(const char *text) {
  KvoDt d;
  KvoDt_init(&d);
  iso_dt_dec(text, &d);
  return d;
}

inline KvoDur dur(const char *text) {
  KvoDur d;
  KvoDur_init(&d);
  iso_dur_dec(text, &d);
  return d;
}

// Every member set, two attendees and one attachment; prio as given.
inline void fill(CalItem *c, int32_t prio) {
  c->type = CAL_TYPE_TODO;
  setW(&c->summ, "Sum\xC3\xA9");
  setW(&c->desc, "Line1\nLine2");
  c->clsId = 2;
  c->cateIds = 0x12;
  KvoStr_setStr(&c->cateExts, "FOO,BAR");
  c->loc.loc = VPI_LOC_URL;
  setW(&c->loc.val, "http://x/room");
  c->prio = prio;
  KvoStr_setStr(&c->statExt, "WAITING");
  const char *roles[] = {"ORGANIZER", "CHAIR"};
  for (int i = 0; i < 2; ++i) {
    CalAttend *a = CalAttend_new();
    a->rsvp = i;
    a->roleId = i == 0 ? 2 : 0;
    if (i == 1) KvoStr_setStr(&a->roleExt, roles[i]);
    a->statId = 0x10;
    a->expectId = 0x2;
    a->infoLoc = i == 0 ? 0 : VPI_LOC_CID;
    setW(&a->infoVal, i == 0 ? "a@x.org" : "b@x.org");
    a->next = c->attends;
    c->attends = a;
  }
  c->dtStart = dt("20240301T090000Z");
  c->dtEnd = dt("20240301T100000+0100");
  c->dtDone = dt("20240302T120000");
  c->dtCreate = dt("20240201T000000Z");
  c->dtDue = dt("20240305");
  KvoStr_setStr(&c->dtExcepts, "20240308T090000Z;20240315T090000Z");
  KvoStr_setStr(&c->dtRecurs, "20240320T090000Z");
  c->aalarm.runTime = dt("20240301T085500Z");
  c->aalarm.snoozeTime = dur("PT5M");
  c->aalarm.repeatCount = 2;
  std::memcpy(c->aalarm.audioFmt, "PCM", 4);
  c->aalarm.audioLoc = VPI_LOC_URL;
  setW(&c->aalarm.audioRef, "file:///beep.wav");
  c->dalarm.runTime = dt("20240301T085000Z");
  setW(&c->dalarm.dispVal, "Wake; up");
  c->malarm.runTime = dt("20240301T084500Z");
  c->malarm.snoozeTime = dur("PT10M");
  setW(&c->malarm.mailAddr, "me@x.org");
  setW(&c->malarm.mailNote, "Note");
  c->palarm.runTime = dt("20240301T084000Z");
  c->palarm.repeatCount = 1;
  setW(&c->palarm.procName, "run.sh");
  CalAttach *att = CalAttach_new();
  std::memcpy(att->fmt, "JPEG", 5);
  att->loc = VPI_LOC_URL;
  setW(&att->val, "http://x/a.jpg");
  c->attachs = att;
  KvoStr_setStr(&c->exceptRule, "W1 FR #2");
  KvoStr_setStr(&c->recurRule, "W1 MO TU #10");
  c->chgCount = 3;
  c->modified = dt("20240228T101010Z");
  c->timeTransp = 1;
  KvoStr_setStr(&c->relateTo, "parent-1");
  KvoStr_setStr(&c->uid, "uid-42");
  c->rscIds = 0x5;
  KvoStr_setStr(&c->rscExt, "PIANO");
  setW(&c->url, "http://x/e");
}

}  // namespace caltest

#endif  // OSTREL_TESTS_CALTESTUTIL_H
