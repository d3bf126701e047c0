// The XML parser over arbitrary bytes. The first byte chooses the size of
// the stream's reads and whether callbacks stop the parser at every
// element; the rest is the document. Checks: the parse ends, and read
// whole or in pieces, stopped or not, it gives the same events and result.
#include <string>
#include <string_view>

#include "../tests/ChunkedStrm.h"
#include "fuzz_check.h"
#include "tarnex/xml.h"

namespace {

struct Log {
  XmlDec dec;  // first: the callbacks get the log through it
  std::string text;
  bool stopEach = false;

  static Log *of(XmlDec *d) { return reinterpret_cast<Log *>(d); }
  static void start(XmlDec *d, const char *name, const char **atts) {
    Log *l = of(d);
    l->text += '<';
    l->text += name;
    for (; *atts != nullptr; atts += 2) (l->text += ' ') += atts[0], (l->text += '=') += atts[1];
    XmlDec_pushCtx(d);
    if (l->stopEach) FUZZ_CHECK(XmlPsr_stop(d->psr, 1) == 0);
  }
  static void end(XmlDec *d, const char *name) {
    (of(d)->text += "</") += name;
    XmlDec_onDefEnd(d, name);
  }
  static void chars(XmlDec *d, const char *text, int32_t len) { of(d)->text.append(text, len); }
};

int32_t parse(std::string_view doc, int32_t readSize, bool stopEach, std::string *events) {
  testutil::ChunkedStrm in(doc, readSize);
  XmlPsr *psr = XmlPsr_new();
  Log log;
  log.stopEach = stopEach;
  XmlDec_new(&log.dec, psr);
  XmlDec_setCtxCb(&log.dec, 0, Log::start, Log::end, Log::chars, XmlDec_onDefDef);
  int32_t r = XmlPsr_parse(psr, in.get());
  for (size_t stops = 0; r == XML_PSR_STOPPED || r == XML_PSR_STOPPED_LAST; ++stops) {
    FUZZ_CHECK(stops <= doc.size());
    r = XmlPsr_resume(psr);
  }
  FUZZ_CHECK(XmlPsr_codeText(r) != nullptr && r != XML_PSR_MISUSE);
  FUZZ_CHECK(XmlPsr_resume(psr) == r);
  *events = log.text;
  XmlDec_delete(&log.dec);
  XmlPsr_delete(psr);
  return r;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size == 0) return 0;
  const int32_t readSize = (data[0] & 0x7F) + 1;
  const bool stopEach = (data[0] & 0x80) != 0;
  const std::string_view doc(reinterpret_cast<const char *>(data) + 1, size - 1);
  std::string whole, pieces;
  const int32_t r = parse(doc, 0, false, &whole);
  FUZZ_CHECK(parse(doc, readSize, stopEach, &pieces) == r);
  FUZZ_CHECK(pieces == whole);
  return 0;
}
