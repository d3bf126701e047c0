// VSMS: the short message record between BEGIN:VSMS and END:VSMS.
#include "detail/Object.h"
#include "detail/TextEnc.h"
#include "detail/TextFrame.h"
#include "detail/Trace.h"
#include "detail/Vsms.h"
#include "ostrel/VsmsEd.h"

namespace {

using ostrel::detail::FrameProp;
using ostrel::detail::FrameRow;

constexpr StrIdMap kTypes[] = {
    {SMS_SUBMIT, "SUBMIT"}, {SMS_DELIVER, "DELIVER"}, {SMS_REPORT, "REPORT"}, {0, nullptr}};
constexpr StrIdMap kStats[] = {{0, "UNREAD"}, {1, "READ"},  {2, "UNSENT"}, {3, "SENT"},
                               {4, "SENTFALL"}, {5, "DELAY"}, {6, "ALL"},    {0, nullptr}};
// The order the flag list is written in.
constexpr StrIdMap kFlags[] = {{SMS_F_REQ_REP, "REP-REP"},     {SMS_F_REJ_DUP, "REJ-DUP"},
                               {SMS_F_REQ_REPLY, "REQ-REPLY"}, {SMS_F_MORE_MSG, "MORE-MSG"},
                               {SMS_F_ANY_PARAM, "ANY-PARAM"}, {0, nullptr}};

// The word of id in the table, or null.
const char *wordOf(const StrIdMap *words, int32_t id) {
  const char *word = nullptr;
  return StrIdMap_findById(words, id, &word) != 0 ? word : nullptr;
}

struct Vsms {
  SmsItem *item;
  uint32_t *ver;
  KvoStr *luid;
  int32_t *stat;
};

void readData(Vsms &m, const FrameProp &p) {
  char fmt[32];
  if (VpiParams_getFmt(p.params, fmt, sizeof fmt) != 0 && kvo_stricmp(fmt, "BIN") == 0) {
    SmsItem_setBinx(m.item, p.val);
    return;
  }
  m.item->dt = SMS_DT_TXT;
  VpiVal_getCwcs(p.val, &m.item->data, 1, nullptr);
}

void readUdh(Vsms &m, const FrameProp &p) {
  int32_t n = IStrm_read(p.val, m.item->udhBuf, static_cast<int32_t>(sizeof m.item->udhBuf));
  if (!OSTREL_REQUIRE(n >= 0, "item->udhLen >= 0")) n = 0;
  m.item->udhLen = n;
}

// Words separated by ";", escaped or not: "REP-REP\;REJ-DUP" as written
// with escaping, "REP-REP;REJ-DUP" as written without.
void readFlags(Vsms &m, const FrameProp &p) {
  tarnex::ScratchStr<64> list;
  VpiVal_getCstr(p.val, list, 0, nullptr);
  char *word = KvoStr_buf(list);
  char *const end = word + list.len();
  while (word < end) {
    char *stop = word;
    while (stop < end && *stop != ';') ++stop;
    *stop = '\0';  // at the end, over the terminator itself
    if (stop > word && stop[-1] == '\\') stop[-1] = '\0';
    int32_t bit = 0;
    if (StrIdMap_findByStr(kFlags, word, &bit) != 0) m.item->flags |= static_cast<uint32_t>(bit);
    word = stop + 1;
  }
}

void readStat(Vsms &m, const FrameProp &p) {
  if (ostrel::detail::readWord(p, kStats, &m.item->stat) && m.stat != nullptr) *m.stat = m.item->stat;
}

uint32_t lowOctet(const FrameProp &p) { return ostrel::detail::readLowBits(p) & 0xFFu; }

constexpr FrameRow<Vsms> kProps[] = {
    {"TYPE", [](Vsms &m, const FrameProp &p) { ostrel::detail::readWord(p, kTypes, &m.item->type); }},
    {"TEL", [](Vsms &m, const FrameProp &p) { VpiVal_getCstr(p.val, &m.item->tel, 1, nullptr); }},
    {"CARD", [](Vsms &m, const FrameProp &p) { VpiVal_getCstr(p.val, &m.item->card, 1, nullptr); }},
    {"DATA", readData},
    {"UDH", readUdh},
    {"PROT-ID", [](Vsms &m, const FrameProp &p) { m.item->protId = lowOctet(p); }},
    {"CODING", [](Vsms &m, const FrameProp &p) { m.item->coding = lowOctet(p); }},
    {"FLAGS", readFlags},
    {"MSG-REF", [](Vsms &m, const FrameProp &p) { m.item->msgRef = lowOctet(p); }},
    {"XPT-TIME", [](Vsms &m, const FrameProp &p) { ostrel::detail::readDate(p, &m.item->xptTime); }},
    {"REV-TIME", [](Vsms &m, const FrameProp &p) { ostrel::detail::readDate(p, &m.item->revTime); }},
    {"VALID-DUR", [](Vsms &m, const FrameProp &p) { m.item->validDur = ostrel::detail::readUlong(p); }},
    {"REP-STAT",
     [](Vsms &m, const FrameProp &p) {
       m.item->repStat = static_cast<int32_t>(ostrel::detail::readLowBits(p));
     }},
    {"REP-FOR", [](Vsms &m, const FrameProp &p) { ostrel::detail::readWord(p, kTypes, &m.item->repFor); }},
    {"X-IRMC-LUID", ostrel::detail::readLuid<Vsms>},
    {"STAT", readStat},
    {"VERSION", ostrel::detail::readVersion<Vsms>},
};

// "REP-REP;REJ-DUP": the words of the set bits in the table's order; bits
// outside it add nothing.
void flagList(uint32_t flags, KvoStr *list) {
  for (const StrIdMap *f = kFlags; f->word != nullptr; ++f) {
    if ((flags & static_cast<uint32_t>(f->id)) == 0) continue;
    if (KvoStr_len(list) != 0) KvoStr_appdStr(list, ";");
    KvoStr_appdStr(list, f->word);
  }
}

}  // namespace

extern "C" {

OSTREL_API int32_t Vsms_decx(IStrm *vsms, SmsItem *item, uint32_t *ver, KvoStr *luid, int32_t *stat) {
  OSTREL_FUNC_TRACE();
  if (!OSTREL_REQUIRE(vsms && item, "vsms && item")) return 0;
  OSTREL_CHECK(item, SMS_ITEM_TAG);
  Vsms message{item, ver, luid, stat};
  return ostrel::detail::decodeRecord(vsms, "VSMS", kProps, message, item, SmsItem_clear, "vsms",
                                      ostrel::detail::PosForm::kBegEnd, {nullptr, true});
}

OSTREL_API int32_t Vsms_dec(IStrm *vsms, SmsItem *item, uint32_t *ver) {
  return Vsms_decx(vsms, item, ver, nullptr, nullptr);
}

OSTREL_API int32_t Vsms_encx(IStrm *vsms, const SmsItem *item, uint32_t ver, const char *luid,
                             const VpiEncOpts *opts, const int32_t *stat) {
  OSTREL_FUNC_TRACE();
  if (!OSTREL_REQUIRE(vsms && item, "vsms && item")) return 0;
  OSTREL_CHECK(item, SMS_ITEM_TAG);
  ostrel::detail::tracePos("vsms", vsms, true);
  ostrel::detail::LineWriter out(vsms, opts);
  out.always("BEGIN", "VSMS").version(ver, 0x200);
  // A record of no kind has no word, and a message without one would not
  // read back as the record.
  const char *type = wordOf(kTypes, item->type);
  if (!OSTREL_REQUIRE(type != nullptr, "0")) return out.stop(OSTREL_CANT).result();

  const bool text = item->dt == SMS_DT_TXT;
  tarnex::StackMemStrm<256> octets, udh;
  tarnex::ScratchStr<32> binParams;
  if (!text) {
    // Any other kind is written as an empty binary payload.
    if (OSTREL_REQUIRE(item->dt == SMS_DT_BIN, "item->dt == SMS_DT_BIN")) SmsItem_getBinx(item, octets);
    VpiParams_putFmt(binParams, "BIN");
  }
  // The record's invariant keeps udhLen within the buffer; a caller's
  // record may not.
  const int32_t udhLen = item->udhLen < 140 ? item->udhLen : 140;
  if (udhLen > 0) IStrm_write(udh, item->udhBuf, udhLen);
  tarnex::ScratchStr<64> flags;
  flagList(item->flags, flags);
  const char *asked = stat != nullptr ? wordOf(kStats, *stat) : nullptr;
  const char *held = wordOf(kStats, item->stat);
  const char *repFor = item->repFor != 0 ? wordOf(kTypes, item->repFor) : nullptr;
  const bool submit = item->type == SMS_SUBMIT, report = item->type == SMS_REPORT;

  return out.always("TYPE", type)
      .always("TEL", KvoStr_buf(&item->tel))
      .when(text).payload("DATA", &item->data)
      .when(!text).binary("DATA", binParams, octets)
      .text("X-IRMC-LUID", luid, true)
      .always("CARD", KvoStr_buf(&item->card))
      .when(asked != nullptr).always("STAT", asked)
      .when(held != nullptr).always("STAT", held)
      .when(udhLen > 0).binary("UDH", nullptr, udh)
      .when(item->protId != 0).number("PROT-ID", item->protId)
      .when(item->coding != 0).number("CODING", item->coding)
      .when(item->flags != 0).always("FLAGS", flags.c_str())
      .when(submit || report).number("MSG-REF", item->msgRef)
      .date("XPT-TIME", item->xptTime)
      .when(report).date("REV-TIME", item->revTime)
      .when(submit).number("VALID-DUR", item->validDur)
      .when(report).number("REP-STAT", static_cast<uint32_t>(item->repStat))
      .when(report && repFor != nullptr).always("REP-FOR", repFor)
      .always("END", "VSMS", false)
      .result();
}

OSTREL_API int32_t Vsms_enc(IStrm *vsms, const SmsItem *item, uint32_t ver) {
  return Vsms_encx(vsms, item, ver, nullptr, nullptr, nullptr);
}

OSTREL_API void SmsItem_dump(SmsItem *item, IStrm *strm, int32_t append) {
  OSTREL_CHECK(item, SMS_ITEM_TAG);
  if (!OSTREL_REQUIRE(strm, "strm")) return;
  ostrel::detail::openOutput(strm, append);
  Vsms_enc(strm, item, 0x200);
}

}  // extern "C"
