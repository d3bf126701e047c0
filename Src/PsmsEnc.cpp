// SmsItem to a TS 23.040 PDU. Every TPDU writer checks its room before the
// first octet, so a short buffer is refused, never overrun.
#include <cstring>

#include "detail/Object.h"
#include "detail/Psms.h"
#include "ostrel/PsmsEd.h"

namespace {

using ostrel::detail::kCatField;
using ostrel::detail::kPduRefused;

constexpr int32_t kMaxUd = 140, kMaxUdh = 139, kMaxUnits = 160, kSeptetPlaces = 161;
constexpr int32_t kMaxAddr = 12, kStamp = 7;
constexpr uint8_t kRelativeVp = 0x22;

// TP-UDL and TP-UD at udl; sets *dcs. Gives the octets from TP-UDL on.
int32_t encUserData(const SmsItem *item, uint8_t *udl, int32_t room, uint8_t *dcs) {
  if (room < kMaxUd + 1) {
    OSTREL_TRACE(kCatField, 3, "bufSize[%d] < pdu max size", room);
    return kPduRefused;
  }
  const int32_t udhLen = item->udhLen > 0 ? item->udhLen : 0;
  if (udhLen > kMaxUdh) {
    OSTREL_TRACE(kCatField, 3, "udhLen[%d] > udh max size", udhLen);
    return kPduRefused;
  }
  if (udhLen) std::memcpy(udl + 1, item->udhBuf, static_cast<size_t>(udhLen));
  uint8_t *ud = udl + 1 + udhLen;
  int32_t octets;
  if (item->dt == SMS_DT_TXT) {
    const int32_t dataLen = KvoWcs_len(&item->data);
    if (dataLen > kMaxUnits) return kPduRefused;
    const KvoWchar *text = KvoWcs_buf(&item->data);
    uint8_t be[2 * kMaxUnits];  // the units big-endian, as the alphabet and UCS2 want them
    int32_t units = 0;
    for (; units < dataLen && text[units] != 0; ++units) {
      be[2 * units] = static_cast<uint8_t>(text[units] >> 8);
      be[2 * units + 1] = static_cast<uint8_t>(text[units]);
    }
    OSTREL_REQUIRE(units == dataLen, "ucs2Len == dataLen");
    KvoWchar beUnits[kMaxUnits];
    std::memcpy(beUnits, be, static_cast<size_t>(2 * units));
    if (SmsAlph_is7BitStr(beUnits, units, 0)) {
      *dcs = 0x00;
      uint8_t septets[kSeptetPlaces];
      const int32_t count = SmsAlph_to7BitStr(septets, kSeptetPlaces, beUnits, units);
      const int32_t fill = udhLen ? (7 - (udhLen * 8) % 7) % 7 : 0;
      octets = GsmUtil_enc7BitStr(ud, room - 1 - udhLen, septets, count, fill);
      if (octets + udhLen > kMaxUd) {
        OSTREL_TRACE(kCatField, 3, "pduLen + udhLen =%d > 140, fault err", octets + udhLen);
        return kPduRefused;
      }
      udl[0] = static_cast<uint8_t>((udhLen * 8 + 6) / 7 + count);
    } else {
      *dcs = 0x08;
      octets = 2 * units;
      if (octets + udhLen > kMaxUd) return kPduRefused;
      std::memcpy(ud, be, static_cast<size_t>(octets));
      udl[0] = static_cast<uint8_t>(udhLen + octets);
    }
  } else if (item->dt == SMS_DT_BIN) {
    *dcs = 0x04;
    octets = SmsItem_binLen(item);
    if (octets + udhLen > kMaxUd) return kPduRefused;
    if (octets > 0) SmsItem_getBin(item, ud, octets);
    udl[0] = static_cast<uint8_t>(udhLen + octets);
  } else {
    kvo_assert__("unknown SmsSt", __FILE__, __LINE__);
    return kPduRefused;
  }
  if (item->coding) *dcs = static_cast<uint8_t>(*dcs | (item->coding & 0xFF));
  return udhLen + octets + 1;
}

uint8_t commonBits(const SmsItem *item) {
  uint8_t fo = 0;
  if (item->flags & SMS_F_REQ_REP) fo |= 0x20;
  if (item->udhLen > 0) fo |= 0x40;
  return fo;
}

// The address at p; gives its octets, or kPduRefused when it does not fit
// together with `after` more octets.
int32_t encAddress(uint8_t *p, int32_t room, const SmsItem *item, int32_t after) {
  const int32_t a = GsmUtil_encNo(p, room, KvoStr_buf(&item->tel), 1);
  if (a < 0 || a + after > room) {
    OSTREL_TRACE(kCatField, 3, "bufSize[%d] < pdu max size", room);
    return kPduRefused;
  }
  return a;
}

int32_t encSubmit(uint8_t *buf, int32_t room, const SmsItem *item) {
  std::memset(buf, 0, static_cast<size_t>(room));
  if (room < 2 + kMaxAddr) return encUserData(item, buf, 0, buf);
  uint8_t fo = static_cast<uint8_t>(0x01 | 0x10 | commonBits(item));
  if (item->flags & SMS_F_REJ_DUP) fo |= 0x04;
  if (item->flags & SMS_F_REQ_REPLY) fo |= 0x80;
  buf[0] = fo;
  buf[1] = static_cast<uint8_t>(item->msgRef & 0x0F);
  const int32_t a = encAddress(buf + 2, room - 2, item, 3);
  if (a < 0) return a;
  uint8_t *p = buf + 2 + a;
  p[0] = static_cast<uint8_t>(item->protId);
  p[2] = kRelativeVp;
  const int32_t ud = encUserData(item, p + 3, room - (5 + a), p + 1);
  return ud < 0 ? ud : 5 + a + ud;
}

int32_t encDeliver(uint8_t *buf, int32_t room, const SmsItem *item) {
  std::memset(buf, 0, static_cast<size_t>(room));
  if (room < 1 + kMaxAddr) return encUserData(item, buf, 0, buf);
  uint8_t fo = commonBits(item);
  if (item->flags & SMS_F_MORE_MSG) fo |= 0x04;
  if (item->flags & SMS_F_REQ_REPLY) fo |= 0x80;
  buf[0] = fo;
  const int32_t a = encAddress(buf + 1, room - 1, item, 2 + kStamp);
  if (a < 0) return a;
  uint8_t *p = buf + 1 + a;
  p[0] = static_cast<uint8_t>(item->protId);
  GsmUtil_encObsTime(p + 2, kStamp, &item->xptTime);
  const int32_t ud = encUserData(item, p + 2 + kStamp, room - (3 + a + kStamp), p + 1);
  return ud < 0 ? ud : 3 + a + kStamp + ud;
}

int32_t encReport(uint8_t *buf, int32_t room, const SmsItem *item) {
  std::memset(buf, 0, static_cast<size_t>(room));
  if (room < 2 + kMaxAddr) return kPduRefused;
  uint8_t fo = static_cast<uint8_t>(0x02 | commonBits(item));
  if (item->flags & SMS_F_MORE_MSG) fo |= 0x04;
  buf[0] = fo;
  buf[1] = static_cast<uint8_t>(item->msgRef);
  const int32_t a = encAddress(buf + 2, room - 2, item, 2 * kStamp + 1);
  if (a < 0) return a;
  uint8_t *p = buf + 2 + a;
  GsmUtil_encObsTime(p, kStamp, &item->xptTime);
  GsmUtil_encObsTime(p + kStamp, kStamp, &item->revTime);
  p[2 * kStamp] = static_cast<uint8_t>(item->repStat);
  return 3 + a + 2 * kStamp;
}

int32_t encTpdu(uint8_t *buf, int32_t room, const SmsItem *item) {
  switch (item->type) {
    case SMS_SUBMIT: return encSubmit(buf, room, item);
    case SMS_DELIVER: return encDeliver(buf, room, item);
    case SMS_REPORT: return encReport(buf, room, item);
    default:
      kvo_assert__("unknow SmsType", __FILE__, __LINE__);
      return kPduRefused;
  }
}

// The service centre field at buf; gives its octets or kPduRefused.
int32_t encSmsc(uint8_t *buf, int32_t size, const char *smc, int32_t smcLen) {
  if (smcLen < 0) smcLen = smc ? static_cast<int32_t>(std::strlen(smc)) : 0;
  if (smcLen < 1 || !smc) {
    buf[0] = 0;
    return 1;
  }
  const int32_t n = GsmUtil_encNo(buf, size, smc, 0);
  return n < 0 ? kPduRefused : n;
}

}  // namespace

extern "C" {

OSTREL_API int32_t Psms_encPdux(uint8_t *pduBuf, int32_t bufLen, const SmsItem *item,
                                const char *smc, int32_t smcLen) {
  OSTREL_TRACE(ostrel::detail::kCatPos, 3, "[bufLen: %d]", bufLen);
  if (!OSTREL_REQUIRE(item && item->type && pduBuf && bufLen > 0,
                      "item && item->type && pduBuf && bufLen > 0"))
    return kPduRefused;
  OSTREL_CHECK(item, SMS_ITEM_TAG);
  const int32_t s = encSmsc(pduBuf, bufLen, smc, smcLen);
  if (s < 0) return s;
  const int32_t n = encTpdu(pduBuf + s, bufLen - s, item);
  if (n >= 0) ostrel::detail::tracePdu(__FILE__, __LINE__, pduBuf, s + n);
  return n;
}

OSTREL_API int32_t Psms_encPdu(uint8_t *pduBuf, int32_t bufLen, const SmsItem *item) {
  return Psms_encPdux(pduBuf, bufLen, item, nullptr, 0);
}

OSTREL_API int32_t Psms_encIrax(char *iraBuf, int32_t bufLen, const SmsItem *item,
                                const char *smc, int32_t smcLen) {
  OSTREL_TRACE(ostrel::detail::kCatPos, 3, "[bufLen: %d]", bufLen);
  if (!OSTREL_REQUIRE(item && item->type && iraBuf && bufLen > 0,
                      "item && item->type && iraBuf && bufLen > 0"))
    return kPduRefused;
  OSTREL_CHECK(item, SMS_ITEM_TAG);
  constexpr int32_t kLocal = 512;
  uint8_t pdu[kLocal];
  const int32_t s = encSmsc(pdu, kLocal, smc, smcLen);
  if (s < 0) return s;
  const int32_t n = encTpdu(pdu + s, kLocal - s, item);
  if (n < 0) return n;
  const int32_t chars = ira_enc_buf_from_buf(iraBuf, bufLen, pdu, s + n);
  ostrel::detail::traceIra(__FILE__, __LINE__, iraBuf, chars);
  return chars - 2 * s;
}

OSTREL_API int32_t Psms_encIra(char *iraBuf, int32_t bufLen, const SmsItem *item) {
  return Psms_encIrax(iraBuf, bufLen, item, nullptr, 0);
}

OSTREL_API int32_t PsmsFile_encPdu(IStrm *pduFile, const SmsItem *item) {
  if (!OSTREL_REQUIRE(pduFile, "pduFile")) return kPduRefused;
  uint8_t pdu[256];
  const int32_t n = Psms_encPdu(pdu, sizeof pdu, item);
  if (n < 0) return n;
  return IStrm_write(pduFile, pdu, n + 1);
}

OSTREL_API int32_t PsmsFile_encIra(IStrm *iraFile, const SmsItem *item) {
  if (!OSTREL_REQUIRE(iraFile, "iraFile")) return kPduRefused;
  char ira[512];
  const int32_t n = Psms_encIra(ira, sizeof ira, item);
  if (n < 0) return n;
  return IStrm_write(iraFile, ira, n + 2);
}

}  // extern "C"
