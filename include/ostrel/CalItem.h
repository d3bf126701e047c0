/*
 * ostrel/CalItem.h - the calendar record: one event or to-do, with its
 * attendees, its attachments and up to four alarms.
 *
 * Keywords are held twice: an id (or a bit set of ids) for the words the
 * library knows, and a text member for any other word. Recurrence stays
 * text: recurRule and exceptRule hold the rule as written, dtRecurs and
 * dtExcepts the raw date lists; the vCalendar codec never parses them.
 *
 * A date counts as set when its year or hour word differs from
 * KVO_DT_UNSET, a duration when its years or hours word does. An alarm is
 * present exactly when its runTime is set.
 *
 * The record follows the library's conventions (ostrel/Ostrel.h). The
 * attendee and attachment chains are owned by the record: each element's
 * next leads on, the last one's is null.
 */
#ifndef OSTREL_CALITEM_H
#define OSTREL_CALITEM_H

#include "ostrel/Ostrel.h"

#ifdef __cplusplus
extern "C" {
#endif

#define CAL_ITEM_TAG 0x074F01BEu
#define CAL_ATTEND_TAG 0x07E92C31u
#define CAL_ATTACH_TAG 0x00BC2A19u

/* CalItem.type */
#define CAL_TYPE_UNKNOWN 0
#define CAL_TYPE_TODO 1
#define CAL_TYPE_EVENT 2

typedef struct CalAttend {
  uint32_t tag;
  struct CalAttend *next;  /* chain link */
  int32_t rsvp;            /* 1: an answer is requested */
  int32_t roleId;          /* CalRoleMap id */
  KvoStr roleExt;          /* role word outside the table */
  int32_t statId;          /* CalStatMap id */
  KvoStr statExt;
  int32_t expectId;        /* CalExpectMap id */
  KvoStr expectExt;
  char infoFmt[12];        /* TYPE parameter, terminated */
  int32_t infoLoc;         /* VPI_LOC_* of infoVal */
  KvoWcs infoVal;          /* the attendee as given */
} CalAttend;

typedef struct CalAttach {
  uint32_t tag;
  struct CalAttach *next;  /* chain link */
  char fmt[12];            /* TYPE parameter, terminated */
  int32_t loc;             /* VPI_LOC_* of val */
  KvoWcs val;
} CalAttach;

typedef struct CalLoc {
  int32_t loc;  /* VPI_LOC_* of val */
  KvoWcs val;
} CalLoc;

typedef struct CalAudioAlarm {
  KvoDt runTime;
  KvoDur snoozeTime;
  int32_t repeatCount;
  char audioFmt[12];  /* TYPE parameter, terminated */
  int32_t audioLoc;
  KvoWcs audioRef;
} CalAudioAlarm;

typedef struct CalDispAlarm {
  KvoDt runTime;
  KvoDur snoozeTime;
  int32_t repeatCount;
  KvoWcs dispVal;
} CalDispAlarm;

typedef struct CalMailAlarm {
  KvoDt runTime;
  KvoDur snoozeTime;
  int32_t repeatCount;
  KvoWcs mailAddr;
  KvoWcs mailNote;
} CalMailAlarm;

typedef struct CalProcAlarm {
  KvoDt runTime;
  KvoDur snoozeTime;
  int32_t repeatCount;
  int32_t procLoc;  /* VPI_LOC_* of procName; starts at 3 (URL) */
  KvoWcs procName;
} CalProcAlarm;

typedef struct CalItem {
  uint32_t tag;
  uint32_t reserved;
  uint32_t auxWord0, auxWord1;  /* the caller's; the library only clears and copies them */
  int32_t type;                 /* CAL_TYPE_* */
  KvoWcs summ;
  KvoWcs desc;
  int32_t clsId;                /* CalClsMap id; 0 none */
  KvoStr clsExt;
  uint32_t cateIds;             /* CalCateMap bits */
  KvoStr cateExts;              /* other categories, joined with "," */
  CalLoc loc;
  int32_t prio;                 /* 2, 4, 8 for the texts 1, 2, 3; 0 none */
  int32_t statId;               /* CalStatMap id; 0 none */
  KvoStr statExt;
  CalAttend *attends;
  KvoDt dtStart;
  KvoDt dtEnd;
  KvoDt dtDone;
  KvoDt dtCreate;
  KvoDt dtDue;
  KvoStr dtExcepts;             /* raw EXDATE list */
  KvoStr dtRecurs;              /* raw RDATE list */
  CalAudioAlarm aalarm;
  CalDispAlarm dalarm;
  CalMailAlarm malarm;
  CalProcAlarm palarm;
  CalAttach *attachs;
  KvoStr exceptRule;
  KvoStr recurRule;
  int32_t chgCount;             /* negative: none */
  KvoDt modified;
  int32_t timeTransp;           /* written only above 0 */
  KvoStr relateTo;
  KvoStr uid;
  uint32_t rscIds;              /* CalRscMap bits */
  KvoStr rscExt;                /* other resources, joined with "," */
  KvoWcs url;
} CalItem;

/* _newCpp: storage and text members are constructed by a wrapper class;
 * _delCpp deletes the chains and leaves the text members to it. */
OSTREL_API CalItem *CalItem_new(CalItem *storage);
OSTREL_API void CalItem_newCpp(CalItem *item);
OSTREL_API void CalItem_delCpp(CalItem *item);
OSTREL_API void CalItem_delete(CalItem *item);
OSTREL_API void CalItem_clear(CalItem *item);
OSTREL_API CalItem *CalItem_assign(CalItem *item, const CalItem *other);
OSTREL_API CalItem *CalItem_clone(const CalItem *item);
OSTREL_API void CalItem_trace(CalItem *item);
OSTREL_API void CalItem_tracex(CalItem *item, IStrm *strm, int32_t append);
/* The record as vCalendar 1.0; lives with the vCalendar encoder. */
OSTREL_API void CalItem_dump(CalItem *item, IStrm *strm, int32_t append);

/* Attendees and attachments are heap records; a clone is in no chain. */
OSTREL_API CalAttend *CalAttend_new(void);
OSTREL_API void CalAttend_newCpp(CalAttend *attend);
OSTREL_API void CalAttend_delCpp(CalAttend *attend);
OSTREL_API void CalAttend_delete(CalAttend *attend);
OSTREL_API CalAttend *CalAttend_clone(const CalAttend *attend);
OSTREL_API CalAttach *CalAttach_new(void);
OSTREL_API void CalAttach_delete(CalAttach *attach);
OSTREL_API CalAttach *CalAttach_clone(const CalAttach *attach);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_CALITEM_H */
