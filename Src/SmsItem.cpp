// The short message record. A binary payload is kept as its IRA text,
// written as 8-bit characters straight into the wide string's storage: N
// octets take 2N bytes, which are N units, so the wide length is the octet
// count and copying the wide string copies the payload whole.
#include <cstring>

#include "detail/Object.h"
#include "detail/Trace.h"
#include "ostrel/SmsItem.h"

namespace {

using ostrel::detail::newObject;

constexpr const char *kFlagNames[] = {"SMS_F_REQ_REP", "SMS_F_REJ_DUP", "SMS_F_REQ_REPLY",
                                      "SMS_F_MORE_MSG", "SMS_F_ANY_PARAM"};
constexpr const char *kStatWords[] = {"UNREAD", "READ", "UNSENT", "SENT", "SENTFALL", "DELAY",
                                      "ALL"};

const char *payloadText(const SmsItem *item) {
  return reinterpret_cast<const char *>(KvoWcs_buf(&item->data));
}

bool isBinary(const SmsItem *item) {
  return OSTREL_REQUIRE(item->dt == SMS_DT_BIN, "_this->dt == SMS_DT_BIN");
}

void traceTime(IStrm *strm, const char *id, const KvoDt *dt) {
  if (dt->year == KVO_DT_UNSET) return;
  tarnex::ScratchStr<32> text;
  iso_dt_enc(text, dt);
  IStrm_printf(strm, "%s = %s\n", id, text.c_str());
}

void traceType(IStrm *strm, const SmsItem *item) {
  switch (item->type) {
    case SMS_SUBMIT:
    case SMS_REPORT:
      IStrm_printf(strm, "type = %s\n", item->type == SMS_SUBMIT ? "SMS_SUBMIT" : "SMS_REPORT");
      IStrm_printf(strm, "msgRef = %d\n", static_cast<int>(item->msgRef));
      break;
    case SMS_DELIVER:
      IStrm_printf(strm, "type = %s\n", "SMS_DELIVER");
      break;
    default:
      IStrm_printf(strm, "type = %s\n", "SMS_UNKN");
  }
}

}  // namespace

extern "C" {

OSTREL_API SmsItem *SmsItem_new(SmsItem *storage) {
  OSTREL_FUNC_TRACE();
  SmsItem *item = newObject(storage, SMS_ITEM_TAG, __FILE__, __LINE__);
  item->reserved = 0;
  KvoStr_new(&item->tel);
  KvoWcs_new(&item->data);
  KvoStr_new(&item->card);
  KvoStr_new(&item->extInfo);
  SmsItem_clear(item);
  return item;
}

OSTREL_API void SmsItem_delete(SmsItem *item) {
  OSTREL_FUNC_TRACE();
  OSTREL_CHECK(item, SMS_ITEM_TAG);
  KvoStr_delete(&item->tel);
  KvoWcs_delete(&item->data);
  KvoStr_delete(&item->card);
  KvoStr_delete(&item->extInfo);
  ostrel::detail::endObject(item, __FILE__, __LINE__);
}

OSTREL_API void SmsItem_clear(SmsItem *item) {
  OSTREL_CHECK(item, SMS_ITEM_TAG);
  KvoStr_clear(&item->tel);
  KvoStr_clear(&item->card);
  KvoWcs_clear(&item->data);
  KvoStr_clear(&item->extInfo);
  KvoDt_init(&item->xptTime);
  KvoDt_init(&item->revTime);
  item->dt = SMS_DT_TXT;
  item->udhLen = 0;  // udhBuf is void behind it
  item->protId = item->coding = item->flags = 0;
  item->type = SMS_UNKN;
  item->msgRef = item->validDur = 0;
  item->repStat = item->repFor = 0;
  item->stat = SMS_STAT_ALL;
}

OSTREL_API SmsItem *SmsItem_assign(SmsItem *item, const SmsItem *anoth) {
  OSTREL_CHECK(item, SMS_ITEM_TAG);
  OSTREL_CHECK(anoth, SMS_ITEM_TAG);
  if (item == anoth) return item;
  if (!OSTREL_REQUIRE(anoth->udhLen <= static_cast<int32_t>(sizeof(anoth->udhBuf)),
                      "anoth->udhLen <= sizeof(anoth->udhBuf)"))
    return item;
  KvoStr_setCstr(&item->tel, &anoth->tel);
  item->dt = anoth->dt;
  KvoWcs_setCwcs(&item->data, &anoth->data);
  item->udhLen = anoth->udhLen;
  if (anoth->udhLen > 0) std::memcpy(item->udhBuf, anoth->udhBuf, static_cast<size_t>(anoth->udhLen));
  item->protId = anoth->protId;
  item->coding = anoth->coding;
  item->flags = anoth->flags;
  item->type = anoth->type;
  KvoStr_setCstr(&item->card, &anoth->card);
  item->msgRef = anoth->msgRef;
  item->xptTime = anoth->xptTime;
  item->revTime = anoth->revTime;
  item->validDur = anoth->validDur;
  item->repStat = anoth->repStat;
  item->repFor = anoth->repFor;
  item->stat = anoth->stat;
  KvoStr_setCstr(&item->extInfo, &anoth->extInfo);
  return item;
}

OSTREL_API SmsItem *SmsItem_clone(const SmsItem *item) {
  OSTREL_CHECK(item, SMS_ITEM_TAG);
  return SmsItem_assign(SmsItem_new(nullptr), item);
}

OSTREL_API void SmsItem_setBin(SmsItem *item, const uint8_t *data, int32_t len) {
  OSTREL_CHECK(item, SMS_ITEM_TAG);
  if (!OSTREL_REQUIRE(data && len >= 0, "data && len >= 0")) return;
  item->dt = SMS_DT_BIN;
  KvoWcs_clear(&item->data);
  if (len == 0) return;
  char *text = reinterpret_cast<char *>(KvoWcs_useBufBeg(&item->data, len));
  ira_enc_buf_from_buf(text, 2 * len + 1, data, len);
  KvoWcs_useBufEnd(&item->data, len);
}

OSTREL_API void SmsItem_setBinx(SmsItem *item, IStrm *strm) {
  OSTREL_CHECK(item, SMS_ITEM_TAG);
  if (!OSTREL_REQUIRE(strm, "strm")) return;
  item->dt = SMS_DT_BIN;
  KvoWcs_clear(&item->data);
  const auto len = static_cast<int32_t>(IStrm_size(strm));
  if (len <= 0) return;
  char *text = reinterpret_cast<char *>(KvoWcs_useBufBeg(&item->data, len));
  const int32_t written = ira_enc_buf_from_strm(text, 2 * len + 1, strm, len);
  // A stream that ends before its size leaves only the octets it gave.
  KvoWcs_useBufEnd(&item->data, written / 2);
}

OSTREL_API int32_t SmsItem_getBin(const SmsItem *item, uint8_t *buf, int32_t size) {
  OSTREL_CHECK(item, SMS_ITEM_TAG);
  if (!OSTREL_REQUIRE(buf && size > 0, "buf && size > 0") || !isBinary(item)) return 0;
  return ira_dec_str_to_buf(payloadText(item), 2 * KvoWcs_len(&item->data), buf, size);
}

OSTREL_API int32_t SmsItem_getBinx(const SmsItem *item, IStrm *strm) {
  OSTREL_CHECK(item, SMS_ITEM_TAG);
  if (!OSTREL_REQUIRE(strm, "strm") || !isBinary(item)) return 0;
  return ira_dec_str_to_strm(payloadText(item), 2 * KvoWcs_len(&item->data), strm);
}

OSTREL_API int32_t SmsItem_binLen(const SmsItem *item) {
  OSTREL_CHECK(item, SMS_ITEM_TAG);
  if (!isBinary(item)) return 0;
  return KvoWcs_len(&item->data);
}

OSTREL_API void SmsItem_tracex(SmsItem *item, IStrm *strm, int32_t append) {
  OSTREL_CHECK(item, SMS_ITEM_TAG);
  if (!OSTREL_REQUIRE(strm, "strm")) return;
  ostrel::detail::openOutput(strm, append);
  IStrm_puts(strm, "# SmsItem beg......\n", -1);
  ostrel::detail::TraceLines lines(strm);
  lines.str("tel", &item->tel);
  lines.str("card", &item->card);
  IStrm_printf(strm, "dt = %s\n", item->dt == SMS_DT_TXT ? "SMS_DT_TXT" : "SMS_DT_BIN");
  if (item->dt == SMS_DT_TXT) {
    lines.wcs("data", &item->data);
  } else {
    tarnex::ScratchMemStrm octets(0);
    SmsItem_getBinx(item, octets);
    IStrm_appd(strm, octets);
  }
  if (item->udhLen > 0) {
    const int32_t n = item->udhLen < 140 ? item->udhLen : 140;
    tarnex::ScratchStr<288> udh;
    ira_enc_cstr_from_buf(udh, item->udhBuf, n);
    IStrm_printf(strm, "udhLen = %d\nudhBuf = %s\n", static_cast<int>(item->udhLen), udh.c_str());
  }
  if (item->protId) IStrm_printf(strm, "protId = %d\n", static_cast<int>(item->protId));
  if (item->coding) IStrm_printf(strm, "coding = %d\n", static_cast<int>(item->coding));
  for (int bit = 0; bit < 5; ++bit)
    if (item->flags & (1u << bit)) IStrm_printf(strm, "flags = %s\n", kFlagNames[bit]);
  traceType(strm, item);
  traceTime(strm, "xptTime", &item->xptTime);
  if (item->type == SMS_REPORT) traceTime(strm, "revTime", &item->revTime);
  if (item->type == SMS_SUBMIT) IStrm_printf(strm, "validDur = %ld\n", static_cast<long>(item->validDur));
  if (item->type == SMS_REPORT)
    IStrm_printf(strm, "repStat = %d\nrepFor = %d\n", static_cast<int>(item->repStat),
                 static_cast<int>(item->repFor));
  const int32_t stat = item->stat >= 0 && item->stat <= 5 ? item->stat : SMS_STAT_ALL;
  IStrm_printf(strm, "stat = %s\n", kStatWords[stat]);
  lines.str("extInfo", &item->extInfo);
  IStrm_puts(strm, "# SmsItem end !!!!!!\n", -1);
}

OSTREL_API void SmsItem_trace(SmsItem *item) {
  OSTREL_CHECK(item, SMS_ITEM_TAG);
  ostrel::detail::traceRecord(item, SmsItem_tracex);
}

}  // extern "C"
