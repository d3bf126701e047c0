// The XML parser on expat: feeding, stopping and resuming, and the limits
// that keep hostile documents cheap.
//
// States: fresh (nothing parsed), running (inside a parse or resume call),
// stopped (a callback stopped it; resume goes on), ended (done or failed;
// the result sticks).
#include <expat.h>

#include <algorithm>
#include <cstring>
#include <new>

#include "tarnex/trace.h"
#include "xml_budget.h"
#include "xml_impl.h"

namespace {

enum class State { kFresh, kRunning, kStopped, kEnded };

// How much the parser reads ahead at least; more while a token is pending.
constexpr int32_t kChunk = 16 * 1024;
// NUL bytes held back from the end of a read are given to expat again when
// more text follows, but no more than this many: a NUL is never part of a
// well-formed document, and within three bytes it shows in every encoding
// we read (a zero UTF-16 unit), at the same position.
constexpr int64_t kHeldMax = 3;
// Not a result: the feeding goes on.
constexpr int32_t kGoOn = 1;
constexpr int32_t kTraceModule = 1;

}  // namespace

struct XmlPsr {
  XML_Parser xp = nullptr;
  tarnex::xml::Budget budget;
  XmlDec *dec = nullptr;
  IStrm *strm = nullptr;
  State state = State::kFresh;
  int32_t result = 0;  // once ended
  int32_t depth = 0;   // open elements
  int32_t inCallback = 0;
  int32_t reason = 0;  // our own reason to end the parse, or 0
  bool eof = false;
  int64_t fed = 0;      // bytes given to expat
  int64_t heldNul = 0;  // NUL bytes read but not given yet
  uint8_t head[2] = {0, 0};
  int32_t headLen = 0;
  int32_t line = 1, column = 1;  // of the failure
  const char *errText = "";
};

namespace {

// Marks the parser as inside a callback, so that parse and resume refuse
// to run from there and stop knows it may.
class InCallback {
 public:
  explicit InCallback(XmlPsr *p) : p_(p) { ++p_->inCallback; }
  ~InCallback() { --p_->inCallback; }
  InCallback(const InCallback &) = delete;
  InCallback &operator=(const InCallback &) = delete;

 private:
  XmlPsr *p_;
};

void capturePosition(XmlPsr *p) {
  p->line = static_cast<int32_t>(XML_GetCurrentLineNumber(p->xp));
  p->column = static_cast<int32_t>(XML_GetCurrentColumnNumber(p->xp)) + 1;
}

// Ends the parse from inside a callback for a reason of our own.
void abortFor(XmlPsr *p, int32_t code, const char *text) {
  if (p->reason != 0) return;
  p->reason = code;
  p->errText = text;
  capturePosition(p);
  XML_StopParser(p->xp, XML_FALSE);
}

void XMLCALL onStart(void *u, const XML_Char *name, const XML_Char **atts) {
  XmlPsr *p = static_cast<XmlPsr *>(u);
  if (++p->depth > XML_PSR_MAX_DEPTH) abortFor(p, XML_PSR_TOO_DEEP, "elements nested too deep");
  if (p->reason != 0 || p->dec == nullptr) return;
  InCallback in(p);
  tarnex::xml::deliverStart(p->dec, name, atts);
}

void XMLCALL onEnd(void *u, const XML_Char *name) {
  XmlPsr *p = static_cast<XmlPsr *>(u);
  --p->depth;
  if (p->reason != 0 || p->dec == nullptr) return;
  InCallback in(p);
  tarnex::xml::deliverEnd(p->dec, name);
}

void XMLCALL onChars(void *u, const XML_Char *text, int len) {
  XmlPsr *p = static_cast<XmlPsr *>(u);
  if (p->reason != 0 || p->dec == nullptr) return;
  InCallback in(p);
  tarnex::xml::deliverChars(p->dec, text, len);
}

void XMLCALL onDefault(void *u, const XML_Char *text, int len) {
  XmlPsr *p = static_cast<XmlPsr *>(u);
  if (p->reason != 0 || p->dec == nullptr) return;
  InCallback in(p);
  tarnex::xml::deliverDef(p->dec, text, len);
}

// Every expansion bomb needs an entity declaration, and no listing needs
// one.
void XMLCALL onEntityDecl(void *u, const XML_Char *, int, const XML_Char *, int, const XML_Char *,
                          const XML_Char *, const XML_Char *, const XML_Char *) {
  abortFor(static_cast<XmlPsr *>(u), XML_PSR_REFUSED, "entity declaration refused");
}

int32_t codeOf(const XmlPsr *p, XML_Error e) {
  if (p->reason != 0) return p->reason;
  if (p->budget.spent || e == XML_ERROR_NO_MEMORY) return XML_PSR_OVER_BUDGET;
  switch (e) {
    case XML_ERROR_NO_ELEMENTS:
    case XML_ERROR_UNCLOSED_TOKEN:
    case XML_ERROR_PARTIAL_CHAR:
    case XML_ERROR_UNCLOSED_CDATA_SECTION:
      return XML_PSR_CUT;
    default:
      return XML_PSR_ILL_FORMED;
  }
}

int32_t end(XmlPsr *p, int32_t result) {
  p->state = State::kEnded;
  p->result = result;
  return result;
}

int32_t fail(XmlPsr *p) {
  const XML_Error e = XML_GetErrorCode(p->xp);
  if (p->reason == 0) {
    capturePosition(p);
    p->errText = p->budget.spent ? "over the memory budget" : XML_ErrorString(e);
    if (p->errText == nullptr) p->errText = "not well-formed";
  }
  return end(p, codeOf(p, e));
}

int32_t statusOf(XmlPsr *p, XML_Status st) {
  XML_ParsingStatus ps;
  XML_GetParsingStatus(p->xp, &ps);
  switch (st) {
    case XML_STATUS_SUSPENDED:
      p->state = State::kStopped;
      return ps.finalBuffer ? XML_PSR_STOPPED_LAST : XML_PSR_STOPPED;
    case XML_STATUS_ERROR:
      return fail(p);
    default:
      return ps.parsing == XML_FINISHED ? end(p, XML_PSR_DONE) : kGoOn;
  }
}

bool isUtf16(const XmlPsr *p) {
  if (p->headLen < 2) return false;
  const uint8_t a = p->head[0], b = p->head[1];
  return (a == 0xFE && b == 0xFF) || (a == 0xFF && b == 0xFE) || (a == 0 && b == '<') ||
         (a == '<' && b == 0);
}

// Reads until `want` bytes are there or the stream ends: a stream that
// gives a byte a read costs no more parsing than one that gives all.
int32_t fill(XmlPsr *p, char *buf, int32_t want) {
  int32_t n = 0;
  while (n < want) {
    const int32_t got = IStrm_read(p->strm, buf + n, want - n);
    if (got <= 0) break;
    n += got;
  }
  for (int32_t i = 0; p->headLen < 2 && i < n; ++i) p->head[p->headLen++] = uint8_t(buf[i]);
  return n;
}

void traceDropped(int64_t n) {
  if (n <= 0 || kvo_trc_enabled() == 0 || DbgMng_enabled__(kTraceModule, 1, 3) == 0) return;
  tout_beg(__FILE__, __LINE__, kTraceModule, 1, 3);
  tout_fmt("[xml: %lld NUL bytes of padding dropped]", static_cast<long long>(n));
  tout_endx();
}

int32_t commit(XmlPsr *p, int32_t n) {
  p->fed += n;
  return statusOf(p, XML_ParseBuffer(p->xp, n, XML_FALSE));
}

// At the end of the stream the held NUL bytes are padding, but for the
// one that completes the last UTF-16 unit.
int32_t atEnd(XmlPsr *p) {
  p->eof = true;
  const int32_t keep = p->heldNul > 0 && isUtf16(p) && (p->fed & 1) != 0 ? 1 : 0;
  traceDropped(p->heldNul - keep);
  p->heldNul = 0;
  if (keep == 0) return kGoOn;
  void *buf = XML_GetBuffer(p->xp, 1);
  if (buf == nullptr) return fail(p);
  std::memset(buf, 0, 1);
  return commit(p, 1);
}

// Gives the stream to expat as not final, then makes an empty final call,
// so that a document cut short fails instead of ending.
int32_t feed(XmlPsr *p) {
  p->state = State::kRunning;
  for (;;) {
    if (p->eof) return statusOf(p, XML_Parse(p->xp, nullptr, 0, XML_TRUE));
    // expat rescans a pending token at every call: give it at least as
    // much again as is pending, so the rescans add up to linear time.
    const int64_t index = XML_GetCurrentByteIndex(p->xp);
    const int64_t pending = index >= 0 && index <= p->fed ? p->fed - index : p->fed;
    const int32_t want = static_cast<int32_t>(
        std::clamp<int64_t>(pending, kChunk, XML_PSR_BUDGET));
    const int32_t held = static_cast<int32_t>(std::min(p->heldNul, kHeldMax));
    char *buf = static_cast<char *>(XML_GetBuffer(p->xp, want + held));
    if (buf == nullptr) return fail(p);
    std::memset(buf, 0, static_cast<size_t>(held));
    const int32_t n = fill(p, buf + held, want);
    int32_t r = kGoOn;
    if (n == 0) {
      r = atEnd(p);
    } else {
      int32_t trailing = 0;
      while (trailing < n && buf[held + n - 1 - trailing] == 0) ++trailing;
      if (trailing == n) {
        p->heldNul += n;
      } else {
        p->heldNul = trailing;
        r = commit(p, held + n - trailing);
      }
    }
    if (r != kGoOn) return r;
  }
}

bool misuse(const char *text) {
  kvo_assert__(text, __FILE__, __LINE__);
  return true;
}

}  // namespace

namespace tarnex::xml {

void bindDec(XmlPsr *psr, XmlDec *dec) {
  if (psr->dec != nullptr && psr->dec != dec) psr->dec->psr = nullptr;
  psr->dec = dec;
}

}  // namespace tarnex::xml

extern "C" {

TARNEX_API XmlPsr *XmlPsr_new(void) {
  void *mem = kvo_malloc__(sizeof(XmlPsr), __FILE__, __LINE__);
  XmlPsr *p = new (mem) XmlPsr;
  p->budget.limit = XML_PSR_BUDGET;
  tarnex::xml::BudgetScope scope(&p->budget);
  p->xp = XML_ParserCreate_MM(nullptr, &tarnex::xml::kBudgetSuite, nullptr);
  if (p->xp == nullptr) ObjUtil_crashExit(__FILE__, __LINE__);
  XML_SetUserData(p->xp, p);
  XML_SetElementHandler(p->xp, onStart, onEnd);
  XML_SetCharacterDataHandler(p->xp, onChars);
  XML_SetDefaultHandlerExpand(p->xp, onDefault);
  XML_SetEntityDeclHandler(p->xp, onEntityDecl);
  return p;
}

TARNEX_API void XmlPsr_delete(XmlPsr *psr) {
  if (psr == nullptr) return;
  if (psr->inCallback != 0 && misuse("XmlPsr_delete inside a callback")) return;
  if (psr->dec != nullptr) psr->dec->psr = nullptr;
  {
    tarnex::xml::BudgetScope scope(&psr->budget);
    XML_ParserFree(psr->xp);
  }
  psr->~XmlPsr();
  kvo_free__(psr, __FILE__, __LINE__);
}

TARNEX_API int32_t XmlPsr_parse(XmlPsr *psr, IStrm *strm) {
  if (psr == nullptr || strm == nullptr) return misuse("psr && strm"), XML_PSR_MISUSE;
  if (psr->state != State::kFresh) return misuse("a fresh parser"), XML_PSR_MISUSE;
  psr->strm = strm;
  tarnex::xml::BudgetScope scope(&psr->budget);
  return feed(psr);
}

TARNEX_API int32_t XmlPsr_stop(XmlPsr *psr, int32_t resumable) {
  if (psr == nullptr || psr->inCallback == 0) return XML_PSR_MISUSE;
  if (resumable == 0) {
    abortFor(psr, XML_PSR_ABORTED, "stopped by a callback");
    return 0;
  }
  XML_ParsingStatus ps;
  XML_GetParsingStatus(psr->xp, &ps);
  if (ps.parsing == XML_PARSING) XML_StopParser(psr->xp, XML_TRUE);
  return 0;
}

TARNEX_API int32_t XmlPsr_resume(XmlPsr *psr) {
  if (psr == nullptr) return misuse("psr"), XML_PSR_MISUSE;
  switch (psr->state) {
    case State::kEnded:
      return psr->result;
    case State::kStopped:
      break;
    default:
      return misuse("a stopped parser"), XML_PSR_MISUSE;
  }
  tarnex::xml::BudgetScope scope(&psr->budget);
  psr->state = State::kRunning;
  const int32_t r = statusOf(psr, XML_ResumeParser(psr->xp));
  return r != kGoOn ? r : feed(psr);
}

TARNEX_API int32_t XmlPsr_line(const XmlPsr *psr) {
  if (psr == nullptr) return 0;
  if (psr->state == State::kEnded && psr->result != XML_PSR_DONE) return psr->line;
  return static_cast<int32_t>(XML_GetCurrentLineNumber(psr->xp));
}

TARNEX_API int32_t XmlPsr_column(const XmlPsr *psr) {
  if (psr == nullptr) return 0;
  if (psr->state == State::kEnded && psr->result != XML_PSR_DONE) return psr->column;
  return static_cast<int32_t>(XML_GetCurrentColumnNumber(psr->xp)) + 1;
}

TARNEX_API const char *XmlPsr_errText(const XmlPsr *psr) {
  return psr != nullptr && psr->state == State::kEnded ? psr->errText : "";
}

TARNEX_API const char *XmlPsr_codeText(int32_t code) {
  switch (code) {
    case XML_PSR_DONE: return "done";
    case XML_PSR_STOPPED: return "stopped";
    case XML_PSR_STOPPED_LAST: return "stopped in the last input";
    case XML_PSR_ILL_FORMED: return "not well-formed";
    case XML_PSR_CUT: return "cut short";
    case XML_PSR_REFUSED: return "refused";
    case XML_PSR_OVER_BUDGET: return "over budget";
    case XML_PSR_TOO_DEEP: return "too deep";
    case XML_PSR_ABORTED: return "aborted";
    case XML_PSR_MISUSE: return "misuse";
    default: return nullptr;
  }
}

}  // extern "C"
