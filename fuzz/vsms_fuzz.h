// What the two message-text targets share: a record read from outside text
// is written as VSMS and read again; from that first pass on, the text is a
// fixed point and every field survives encode and decode.
#ifndef OSTREL_FUZZ_VSMS_FUZZ_H
#define OSTREL_FUZZ_VSMS_FUZZ_H

#include <cstring>

#include "psms_fuzz.h"
#include "text_roundtrip.h"

namespace fuzz {

inline bool sameDate(const KvoDt &a, const KvoDt &b) { return std::memcmp(&a, &b, sizeof a) == 0; }

inline bool sameFields(const SmsItem &a, const SmsItem &b) {
  return KvoStr_len(&a.tel) == KvoStr_len(&b.tel) &&
         std::memcmp(KvoStr_buf(&a.tel), KvoStr_buf(&b.tel), KvoStr_len(&a.tel)) == 0 &&
         a.dt == b.dt && KvoWcs_len(&a.data) == KvoWcs_len(&b.data) &&
         std::memcmp(KvoWcs_buf(&a.data), KvoWcs_buf(&b.data), 2 * KvoWcs_len(&a.data)) == 0 &&
         a.udhLen == b.udhLen && std::memcmp(a.udhBuf, b.udhBuf, a.udhLen) == 0 &&
         a.protId == b.protId && a.coding == b.coding && a.flags == b.flags && a.type == b.type &&
         std::strcmp(KvoStr_buf(&a.card), KvoStr_buf(&b.card)) == 0 && a.msgRef == b.msgRef &&
         sameDate(a.xptTime, b.xptTime) && sameDate(a.revTime, b.revTime) &&
         a.validDur == b.validDur && a.repStat == b.repStat && a.repFor == b.repFor &&
         a.stat == b.stat;
}

// A cleared record, as every result below 1 leaves it.
inline bool isCleared(const SmsItem &s) {
  Sms empty;
  return sameFields(s, empty) && KvoStr_len(&s.extInfo) == 0;
}

// Gives the record read back from the VSMS text of `item`, in `back`; false
// when the record has no type to write (refused with -81 after BEGIN and
// VERSION).
inline bool vsmsPass(const SmsItem *item, SmsItem *back, IStrm *text) {
  const int32_t rc = Vsms_enc(text, item, 0);
  if (item->type != SMS_SUBMIT && item->type != SMS_DELIVER && item->type != SMS_REPORT) {
    FUZZ_CHECK(rc == -81);
    return false;
  }
  FUZZ_CHECK(rc == 0);
  IStrm_rewind(text);
  FUZZ_CHECK(Vsms_dec(text, back, nullptr) == 1);
  return true;
}

inline void checkVsmsFixedPoint(const SmsItem *item) {
  tarnex::ScratchMemStrm first(0), second(0), third(0);
  Sms once, twice;
  if (!vsmsPass(item, &once, first)) return;
  FUZZ_CHECK(once.type == item->type && once.stat == item->stat);
  FUZZ_CHECK(vsmsPass(&once, &twice, second));
  FUZZ_CHECK(sameText(first, second));
  FUZZ_CHECK(sameFields(once, twice));
}

}  // namespace fuzz

#endif  // OSTREL_FUZZ_VSMS_FUZZ_H
