// A TS 23.040 PDU to SmsItem. Each length octet comes from the network: the
// reader below stops at pduLen and marks the PDU cut, and what was read
// before the cut stays in the record.
#include <cstring>

#include "detail/Object.h"
#include "detail/Psms.h"
#include "ostrel/PsmsEd.h"

namespace {

using ostrel::detail::kPduRefused;

constexpr int32_t kMaxUdh = 140, kStamp = 7, kPlaces = 512;

struct Reader {
  const uint8_t *p;
  int32_t len;
  int32_t pos = 0;
  bool cut = false;

  int32_t left() const { return len - pos; }
  const uint8_t *at() const { return p + pos; }
  uint8_t octet() {
    if (pos >= len) {
      cut = true;
      return 0;
    }
    return p[pos++];
  }
  // Passes over n octets; false (and cut) when fewer are left.
  bool skip(int32_t n) {
    if (n > left()) {
      pos = len;
      cut = true;
      return false;
    }
    pos += n;
    return true;
  }
};

void setUnits(SmsItem *item, const uint8_t *be, int32_t units) {
  KvoWchar buf[kPlaces];
  std::memcpy(buf, be, static_cast<size_t>(2 * units));
  KvoWcs_setWcsx(&item->data, buf, units);
  KvoWcs_turn(&item->data);
}

void decUserData(Reader &r, SmsItem *item, uint8_t fo, uint8_t dcs) {
  int32_t udl = r.octet();
  if (r.cut || udl == 0) return;
  item->udhLen = 0;
  if (fo & 0x40) {
    const uint8_t *h = r.at();
    int32_t udhLen = r.octet() + 1;
    if (r.cut) return;
    if (udhLen > kMaxUdh) udhLen = kMaxUdh;
    if (!r.skip(udhLen - 1)) return;
    std::memcpy(item->udhBuf, h, static_cast<size_t>(udhLen));
    item->udhLen = udhLen;
  }
  const int32_t udhLen = item->udhLen;
  if (dcs == 0x05) {
    dcs = 0x04;
    item->coding = 4;
  }
  if ((dcs & 0x0C) == 0x00) {
    int32_t fill = 0;
    if (udhLen > 0) {
      fill = (7 - (udhLen * 8) % 7) % 7;
      udl -= (fill + udhLen * 8) / 7;
    }
    item->dt = SMS_DT_TXT;
    if (udl < 0) {  // a header longer than the user data
      r.cut = true;
      return;
    }
    // Fill bits alone take no octet: a header without text ends the PDU.
    int32_t octets = udl > 0 ? (udl * 7 + fill + 7) / 8 : 0;
    if (octets > r.left()) {
      octets = r.left();
      r.cut = true;
    }
    uint8_t septets[kPlaces];
    int32_t count = GsmUtil_dec7BitStr(septets, kPlaces, r.at(), octets, fill);
    if (count > udl) count = udl;
    r.pos += octets;
    KvoWchar units[kPlaces];
    const int32_t n = SmsAlph_from7BitStr(units, kPlaces, septets, count);
    setUnits(item, reinterpret_cast<const uint8_t *>(units), n);
    return;
  }
  int32_t octets = udl - udhLen;
  if (octets < 0) {
    r.cut = true;
    return;
  }
  if (octets > r.left()) {
    octets = r.left();
    r.cut = true;
  }
  const uint8_t *ud = r.at();
  r.pos += octets;
  if ((dcs & 0x0C) == 0x08) {
    item->dt = SMS_DT_TXT;
    setUnits(item, ud, octets / 2);
    return;
  }
  const auto *zero = static_cast<const uint8_t *>(std::memchr(ud, 0, static_cast<size_t>(octets)));
  SmsItem_setBin(item, ud, zero ? static_cast<int32_t>(zero - ud) : octets);
}

// The address into tel; false when the field is cut.
bool decAddress(Reader &r, SmsItem *item) {
  const int32_t claim = GsmUtil_getNo(&item->tel, r.at(), r.left(), 0);
  return r.skip(claim);
}

bool decStamp(Reader &r, KvoDt *dt) {
  GsmUtil_decObsTime(dt, r.at(), r.left());
  return r.skip(kStamp);
}

void orFlags(SmsItem *item, uint8_t fo, uint32_t bit04, bool replyBits) {
  if (fo & 0x04) item->flags |= bit04;
  if (!replyBits) return;
  if (fo & 0x20) item->flags |= SMS_F_REQ_REP;
  if (fo & 0x80) item->flags |= SMS_F_REQ_REPLY;
}

uint32_t validity(Reader &r, uint8_t fo) {
  switch (fo & 0x18) {
    case 0x10: r.skip(1); return 0;
    case 0x08: r.skip(kStamp); return 0;
    case 0x18: break;
    default: return 0;
  }
  const uint8_t *vp = r.at();
  if (!r.skip(kStamp)) return 0;
  if (vp[0] == 0xFE) return static_cast<uint32_t>(vp[1]) << 24 | vp[2] << 16 | vp[3] << 8 | vp[4];
  if (vp[0] != 0xFF) return 0;
  char digits[20];
  bcd_dec_buf_to_str(digits, sizeof digits, vp + 1, 6);
  uint32_t v = 0;
  for (const char *d = digits; *d >= '0' && *d <= '9'; ++d) v = v * 10 + static_cast<uint32_t>(*d - '0');
  return v;
}

void decSubmit(Reader &r, SmsItem *item) {
  const uint8_t fo = r.octet();
  orFlags(item, fo, SMS_F_REJ_DUP | SMS_F_MORE_MSG, true);
  item->msgRef = r.octet();
  if (r.cut || !decAddress(r, item)) return;
  item->protId = r.octet();
  const uint8_t dcs = r.octet();
  if (r.cut) return;
  item->validDur = validity(r, fo);
  if (!r.cut) decUserData(r, item, fo, dcs);
}

void decDeliver(Reader &r, SmsItem *item) {
  const uint8_t fo = r.octet();
  orFlags(item, fo, SMS_F_MORE_MSG, true);
  if (!decAddress(r, item)) return;
  item->protId = r.octet();
  const uint8_t dcs = r.octet();
  if (!r.cut && decStamp(r, &item->xptTime)) decUserData(r, item, fo, dcs);
}

void decReport(Reader &r, SmsItem *item) {
  const uint8_t fo = r.octet();
  orFlags(item, fo, SMS_F_MORE_MSG, false);
  item->msgRef = r.octet();
  if (r.cut || !decAddress(r, item) || !decStamp(r, &item->xptTime) ||
      !decStamp(r, &item->revTime))
    return;
  item->repStat = r.octet();
  if (r.cut || r.left() == 0) return;
  item->flags |= SMS_F_ANY_PARAM;
  const uint8_t pi = r.octet();
  if (pi & 0x01) item->protId = r.octet();
  const uint8_t dcs = (pi & 0x02) ? r.octet() : 0;
  if (!r.cut && (pi & 0x04)) decUserData(r, item, fo, dcs);
}

}  // namespace

extern "C" {

OSTREL_API int32_t Psms_decPdux(const uint8_t *pdu, int32_t pduLen, SmsItem *item,
                                int32_t expType) {
  OSTREL_CHECK(item, SMS_ITEM_TAG);
  if (!pdu || pduLen < 1) return kPduRefused;
  ostrel::detail::tracePdu(__FILE__, __LINE__, pdu, pduLen);
  const int32_t smc = expType == SMS_REPORT && (pdu[0] & 0x02)
                          ? 0
                          : GsmUtil_getNo(nullptr, pdu, pduLen, 1);
  if (!OSTREL_REQUIRE(smc < pduLen, "smc < pduLen")) return kPduRefused;
  Reader r{pdu + smc, pduLen - smc};
  switch (pdu[smc] & 0x03) {
    case 0: item->type = SMS_DELIVER; decDeliver(r, item); break;
    case 1: item->type = SMS_SUBMIT; decSubmit(r, item); break;
    case 2: item->type = SMS_REPORT; decReport(r, item); break;
    default:
      OSTREL_TRACE(ostrel::detail::kCatField, 1, "dec pdu, unkown type");
      return kPduRefused;
  }
  return r.cut ? kPduRefused : 0;
}

OSTREL_API int32_t Psms_decPdu(const uint8_t *pdu, int32_t pduLen, SmsItem *item) {
  return Psms_decPdux(pdu, pduLen, item, 0);
}

OSTREL_API int32_t Psms_decIrax(const char *ira, int32_t iraLen, SmsItem *item,
                                int32_t expType) {
  if (!OSTREL_REQUIRE(ira && item, "ira && item")) return kPduRefused;
  OSTREL_CHECK(item, SMS_ITEM_TAG);
  if (iraLen < 0) iraLen = static_cast<int32_t>(std::strlen(ira));
  ostrel::detail::traceIra(__FILE__, __LINE__, ira, iraLen);
  // No PDU field reaches beyond its first 1024 octets, so those are all the
  // decoder needs; the rest of a longer text is only checked to be hex.
  constexpr int32_t kWindow = 1024;
  uint8_t pdu[kWindow];
  const int32_t want = iraLen / 2;
  const int32_t take = want < kWindow ? want : kWindow;
  int32_t len = ira_dec_str_to_buf(ira, 2 * take, pdu, take);
  if (len == take && want > take) {
    uint8_t scratch[256];
    for (int32_t at = take; at < want && len == at;) {
      const int32_t n = want - at < 256 ? want - at : 256;
      len += ira_dec_str_to_buf(ira + 2 * at, 2 * n, scratch, n);
      at += n;
    }
  }
  if (!OSTREL_REQUIRE(len == want, "len == iraLen / 2")) return kPduRefused;
  return Psms_decPdux(pdu, take, item, expType);
}

OSTREL_API int32_t Psms_decIra(const char *ira, int32_t iraLen, SmsItem *item) {
  return Psms_decIrax(ira, iraLen, item, 0);
}

OSTREL_API int32_t PsmsFile_decPdux(IStrm *pduFile, SmsItem *item, int32_t expType) {
  if (!OSTREL_REQUIRE(pduFile && item, "pduFile && item")) return kPduRefused;
  uint8_t pdu[256];
  const int64_t size = IStrm_size(pduFile);
  if (size <= 0 || size >= 256) return kPduRefused;
  const auto n = static_cast<int32_t>(size);
  if (IStrm_read(pduFile, pdu, n) != n) return kPduRefused;
  return Psms_decPdux(pdu, n, item, expType);
}

OSTREL_API int32_t PsmsFile_decPdu(IStrm *pduFile, SmsItem *item) {
  return PsmsFile_decPdux(pduFile, item, 0);
}

OSTREL_API int32_t PsmsFile_decIrax(IStrm *iraFile, SmsItem *item, int32_t expType) {
  if (!OSTREL_REQUIRE(iraFile && item, "iraFile && item")) return kPduRefused;
  char ira[512];
  const int64_t size = IStrm_size(iraFile);
  if (size <= 0 || size >= 512) return kPduRefused;
  const auto n = static_cast<int32_t>(size);
  if (IStrm_read(iraFile, ira, n) != n) return kPduRefused;
  ira[n] = 0;
  return Psms_decIrax(ira, n, item, expType);
}

OSTREL_API int32_t PsmsFile_decIra(IStrm *iraFile, SmsItem *item) {
  return PsmsFile_decIrax(iraFile, item, 0);
}

}  // extern "C"
