// The 3G message text, read only: a short message between BEGIN:X-VMSG and
// END:X-VMSG, in words of its own.
#include "detail/Object.h"
#include "detail/TextFrame.h"
#include "detail/Trace.h"
#include "detail/Vsms.h"
#include "ostrel/VsmsEd3G.h"

namespace {

using ostrel::detail::FrameProp;
using ostrel::detail::FrameRow;

// Not the VSMS words: "STATUS-REPORT", "SENTFAIL", and no "ALL".
constexpr StrIdMap kTypes[] = {
    {SMS_SUBMIT, "SUBMIT"}, {SMS_DELIVER, "DELIVER"}, {SMS_REPORT, "STATUS-REPORT"}, {0, nullptr}};
constexpr StrIdMap kStats[] = {{0, "UNREAD"}, {1, "READ"},     {2, "UNSENT"},
                               {3, "SENT"},   {4, "SENTFAIL"}, {5, "DELAY"},  {0, nullptr}};
// repStat in this format's own codes, not TP-ST octets.
constexpr StrIdMap kReports[] = {{0, "OK"}, {1, "FAIL"}, {2, "DELAY"}, {0, nullptr}};

// Unknown lines of this text have always been traced under module 5, and
// tools that watch for them select that module.
constexpr int32_t kUnknownModule = 5;

struct Vmsg {
  SmsItem *item;
};

// "key=value" CR LF behind the lines already in extInfo.
template <const char *Key>
void appendExt(Vmsg &m, const FrameProp &p) {
  const ostrel::detail::ValueText value(p);
  KvoStr_appdStr(&m.item->extInfo, Key);
  KvoStr_appdStr(&m.item->extInfo, "=");
  KvoStr_appdStr(&m.item->extInfo, value.c_str());
  KvoStr_appdStr(&m.item->extInfo, "\r\n");
}

constexpr char kLuid[] = "luid";
constexpr char kAnchor[] = "anch";
constexpr char kLock[] = "lock";

constexpr FrameRow<Vmsg> kProps[] = {
    {"X-TYPE", [](Vmsg &m, const FrameProp &p) { ostrel::detail::readWord(p, kTypes, &m.item->type); }},
    {"X-TEL", [](Vmsg &m, const FrameProp &p) { VpiVal_getCstr(p.val, &m.item->tel, 1, nullptr); }},
    {"X-BODY",
     [](Vmsg &m, const FrameProp &p) {
       m.item->dt = SMS_DT_TXT;
       VpiVal_getCwcs(p.val, &m.item->data, 0, nullptr);  // whole: ";" and "\" are text
     }},
    {"X-MR", [](Vmsg &m, const FrameProp &p) { m.item->msgRef = ostrel::detail::readLowBits(p) & 0xFFu; }},
    {"X-DT", [](Vmsg &m, const FrameProp &p) { ostrel::detail::readDate(p, &m.item->xptTime); }},
    {"X-VP", [](Vmsg &m, const FrameProp &p) { m.item->validDur = ostrel::detail::readUlong(p); }},
    {"X-SR", [](Vmsg &m, const FrameProp &p) { ostrel::detail::readWord(p, kReports, &m.item->repStat); }},
    {"X-STAT", [](Vmsg &m, const FrameProp &p) { ostrel::detail::readWord(p, kStats, &m.item->stat); }},
    {"X-IRMC-LUID", appendExt<kLuid>},
    {"X-ANCK", appendExt<kAnchor>},
    {"X-LOCK", appendExt<kLock>},
};

// VERSION is no row here: it is traced as unknown like any other line.
void unknown(Vmsg &, const FrameProp &p) {
  ostrel::detail::traceUnhandled(p.name, p.val, 2, kUnknownModule);
}

}  // namespace

extern "C" {

OSTREL_API int32_t Vsms_dec_3g(const char *text, int32_t len, SmsItem *item) {
  OSTREL_FUNC_TRACE();
  if (!OSTREL_REQUIRE(item, "item")) return 0;
  OSTREL_CHECK(item, SMS_ITEM_TAG);
  // Read in place: the text is only read, and a stream over it needs no copy.
  tarnex::ScratchStrStrm in(text, len < 1 ? -1 : len);
  Vmsg message{item};
  const int32_t rc = ostrel::detail::decodeRecord(in.get(), "X-VMSG", kProps, message, item,
                                                  SmsItem_clear, "vsms",
                                                  ostrel::detail::PosForm::kBegEnd, {unknown, true});
  // The place the message came from closes its lines; a record cleared
  // because nothing was read keeps none.
  if (rc == 1) KvoStr_appdStr(&item->extInfo, "uri=/sms/me\r\n");
  return rc;
}

}  // extern "C"
