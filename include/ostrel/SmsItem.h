/*
 * ostrel/SmsItem.h - the record of one short message: received
 * (SMS-DELIVER), to send or sent (SMS-SUBMIT), or a status report.
 *
 * Callers read and set the fields directly; only the binary payload has
 * accessors. A text payload (SMS_DT_TXT) is 16-bit text in host order; a
 * binary one (SMS_DT_BIN) is private to the record: reach it through
 * SmsItem_setBin[x], SmsItem_getBin[x] and SmsItem_binLen.
 */
#ifndef OSTREL_SMSITEM_H
#define OSTREL_SMSITEM_H

#include "ostrel/Ostrel.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Shared with the calendar record: the check does not tell the two apart. */
#define SMS_ITEM_TAG 0x074F01BEu

/* dt */
#define SMS_DT_TXT 0
#define SMS_DT_BIN 1

/* type, repFor */
#define SMS_UNKN 0
#define SMS_DELIVER 1
#define SMS_SUBMIT 2
#define SMS_REPORT 3

/* flags */
#define SMS_F_REQ_REP 0x01
#define SMS_F_REJ_DUP 0x02
#define SMS_F_REQ_REPLY 0x04
#define SMS_F_MORE_MSG 0x08
#define SMS_F_ANY_PARAM 0x10

/* stat: 0 UNREAD, 1 READ, 2 UNSENT, 3 SENT, 4 SENTFALL, 5 DELAY, 6 ALL */
#define SMS_STAT_ALL 6

typedef struct SmsItem {
  uint32_t tag;
  uint32_t reserved;
  KvoStr tel;          /* the other party's number */
  int32_t dt;          /* SMS_DT_TXT or SMS_DT_BIN */
  KvoWcs data;         /* the payload */
  int32_t udhLen;      /* octets in udhBuf, 0 to 140; 0: no user data header */
  uint8_t udhBuf[140]; /* the header from its length octet on */
  uint32_t protId;     /* TP-PID */
  uint32_t coding;     /* bits ORed into TP-DCS when written */
  uint32_t flags;      /* SMS_F_* */
  int32_t type;        /* SMS_UNKN, SMS_DELIVER, SMS_SUBMIT, SMS_REPORT */
  KvoStr card;         /* the VSMS CARD text, not interpreted */
  uint32_t msgRef;     /* TP-MR */
  KvoDt xptTime;       /* service centre time stamp */
  KvoDt revTime;       /* discharge time of a report */
  uint32_t validDur;   /* validity of an SMS-SUBMIT, as the number given */
  int32_t repStat;     /* TP-ST of a report */
  int32_t repFor;      /* type a report is for; 0 when not stated */
  int32_t stat;        /* place in the phone's store, 0 to 6 */
  KvoStr extInfo;      /* key=value lines ended by CR LF */
} SmsItem;

OSTREL_API SmsItem *SmsItem_new(SmsItem *storage);
OSTREL_API void SmsItem_delete(SmsItem *item);
OSTREL_API void SmsItem_clear(SmsItem *item);
OSTREL_API SmsItem *SmsItem_assign(SmsItem *item, const SmsItem *anoth);
OSTREL_API SmsItem *SmsItem_clone(const SmsItem *item);
OSTREL_API void SmsItem_trace(SmsItem *item);
OSTREL_API void SmsItem_tracex(SmsItem *item, IStrm *strm, int32_t append);

OSTREL_API void SmsItem_setBin(SmsItem *item, const uint8_t *data, int32_t len);
OSTREL_API void SmsItem_setBinx(SmsItem *item, IStrm *strm);
OSTREL_API int32_t SmsItem_getBin(const SmsItem *item, uint8_t *buf, int32_t size);
OSTREL_API int32_t SmsItem_getBinx(const SmsItem *item, IStrm *strm);
OSTREL_API int32_t SmsItem_binLen(const SmsItem *item);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_SMSITEM_H */
