// The XML parser and its decoder frame. Every document is read at each of
// the read sizes of ChunkedStrm.h, and all must give the same events and
// results.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ChunkedStrm.h"
#include "tarnex/xml.h"

namespace {

using testutil::ChunkedStrm;
using testutil::kReadSizes;

// Records every event as text: "<a x=1>" for a start, "</a>" for an end,
// the text as it stands; stops the parser at elements named "stop".
struct Recorder {
  XmlDec dec;  // first: the callbacks get the recorder through it
  std::string log;

  static Recorder *of(XmlDec *d) { return reinterpret_cast<Recorder *>(d); }
  static void start(XmlDec *d, const char *name, const char **atts) {
    Recorder *r = of(d);
    r->log += std::string("<") + name;
    for (; *atts != nullptr; atts += 2) r->log += std::string(" ") + atts[0] + "=" + atts[1];
    r->log += ">";
    XmlDec_pushCtx(d);
    if (std::string(name) == "stop") XmlPsr_stop(d->psr, 1);
  }
  static void end(XmlDec *d, const char *name) {
    of(d)->log += std::string("</") + name + ">";
    XmlDec_onDefEnd(d, name);
  }
  static void chars(XmlDec *d, const char *text, int32_t len) { of(d)->log.append(text, len); }
};

struct Outcome {
  std::string log;
  std::vector<int32_t> results;  // parse, then one a resume while stopped
  int32_t line = 0, column = 0;
};

Outcome parseAll(const std::string &doc, int32_t readSize) {
  ChunkedStrm in(doc, readSize);
  XmlPsr *psr = XmlPsr_new();
  Recorder rec{};
  XmlDec_new(&rec.dec, psr);
  XmlDec_setCtxCb(&rec.dec, 0, Recorder::start, Recorder::end, Recorder::chars, XmlDec_onDefDef);
  Outcome run;
  int32_t r = XmlPsr_parse(psr, in.get());
  run.results.push_back(r);
  while (r == XML_PSR_STOPPED || r == XML_PSR_STOPPED_LAST) {
    rec.log += "|";
    run.results.push_back(r = XmlPsr_resume(psr));
  }
  run.log = rec.log;
  run.line = XmlPsr_line(psr);
  run.column = XmlPsr_column(psr);
  EXPECT_EQ(XmlPsr_resume(psr), r) << "an ended parser gives its result again";
  XmlDec_delete(&rec.dec);
  XmlPsr_delete(psr);
  return run;
}

std::string nested(int depth) {
  std::string s;
  for (int i = 0; i < depth; ++i) s += "<e>";
  for (int i = 0; i < depth; ++i) s += "</e>";
  return s;
}

std::string utf16(const std::string &ascii, bool little, bool bom) {
  std::string s;
  if (bom) s += little ? "\xFF\xFE" : "\xFE\xFF";
  for (char c : ascii) {
    const char lo = c == '~' ? '\xE9' : c;  // '~' stands for U+00E9
    s += little ? std::string{lo, '\0'} : std::string{'\0', lo};
  }
  return s;
}

struct Case {
  const char *what;
  std::string doc;
  int32_t result;
  std::string log;  // empty: not compared
};

std::vector<Case> cases() {
  const std::string bomb =
      "<!DOCTYPE a [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;\">"
      "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;\">]><a>&c;</a>";
  return {
      {"elements, attributes and text", "<a x='1' y=\"&lt;2\">t<b/></a>", XML_PSR_DONE,
       "<a x=1 y=<2>t<b></b></a>"},
      {"an empty stream", "", XML_PSR_CUT, ""},
      {"cut inside an element", "<a><b/>", XML_PSR_CUT, "<a><b></b>"},
      {"cut inside a tag", "<a><b x='1", XML_PSR_CUT, "<a>"},
      {"a bare ampersand", "<a>Tom & Jerry</a>", XML_PSR_ILL_FORMED, "<a>Tom "},
      {"a wrong end tag", "<a></b>", XML_PSR_ILL_FORMED, "<a>"},
      {"the same attribute twice", "<a x='1' x='2'/>", XML_PSR_ILL_FORMED, ""},
      {"a NUL inside", std::string("<a>\0</a>", 8), XML_PSR_ILL_FORMED, "<a>"},
      {"two NULs of padding", std::string("<a/>\0\0", 6), XML_PSR_DONE, "<a></a>"},
      {"NULs then more", std::string("<a/>\0\0\0\0\0 ", 10), XML_PSR_ILL_FORMED, "<a></a>"},
      {"an entity declaration", "<!DOCTYPE a [<!ENTITY x 'y'>]><a>&x;</a>", XML_PSR_REFUSED, ""},
      {"an expansion bomb", bomb, XML_PSR_REFUSED, ""},
      {"a parameter entity", "<!DOCTYPE a [<!ENTITY % p 'x'>]><a/>", XML_PSR_REFUSED, ""},
      {"an attribute list in the internal subset",
       "<!DOCTYPE folder-listing [ <!ATTLIST folder mem-type CDATA #IMPLIED> ]>"
       "<folder-listing><folder name='a' mem-type='DEV'/></folder-listing>",
       XML_PSR_DONE, "<folder-listing><folder name=a mem-type=DEV></folder></folder-listing>"},
      {"an undeclared entity, no DTD", "<a>&nbsp;x</a>", XML_PSR_ILL_FORMED, ""},
      {"an undeclared entity, external DTD",
       "<!DOCTYPE a SYSTEM 'a.dtd'><a x='&nbsp;1'>&nbsp;x</a>", XML_PSR_DONE, "<a x=1>x</a>"},
      {"UTF-8 with a byte-order mark", "\xEF\xBB\xBF<a x='\xC3\xA9'/>", XML_PSR_DONE,
       "<a x=\xC3\xA9></a>"},
      {"UTF-16LE", utf16("<a x='~'/>", true, true), XML_PSR_DONE, "<a x=\xC3\xA9></a>"},
      {"UTF-16BE without a mark", utf16("<a x='~'/>", false, false), XML_PSR_DONE,
       "<a x=\xC3\xA9></a>"},
      {"UTF-16LE with NUL padding", utf16("<a>~</a>", true, false) + std::string(3, '\0'),
       XML_PSR_DONE, "<a>\xC3\xA9</a>"},
      {"ISO-8859-1", "<?xml version='1.0' encoding='ISO-8859-1'?><a x='\xE9'>\xE9</a>",
       XML_PSR_DONE, "<a x=\xC3\xA9>\xC3\xA9</a>"},
      {"an unknown encoding", "<?xml version='1.0' encoding='x-none'?><a/>", XML_PSR_ILL_FORMED,
       ""},
      {"nested as deep as allowed", nested(XML_PSR_MAX_DEPTH), XML_PSR_DONE, ""},
      {"nested one deeper", nested(XML_PSR_MAX_DEPTH + 1), XML_PSR_TOO_DEEP, ""},
      {"100,000 nested elements", nested(100000), XML_PSR_TOO_DEEP, ""},
      {"an attribute past the budget", "<a x='" + std::string(XML_PSR_BUDGET, 'v') + "'/>",
       XML_PSR_OVER_BUDGET, ""},
      {"stops within and across reads", "<a><stop/>t<b><stop x='1'>u</stop></b></a>",
       XML_PSR_DONE, "<a><stop></stop>|t<b><stop x=1>|u</stop></b></a>"},
  };
}

TEST(XmlPsr, ResultsAndEventsAtEveryReadSize) {
  for (const Case &c : cases()) {
    for (int32_t size : kReadSizes) {
      if (size == 1 && c.doc.size() > 1000000) continue;  // the budget case: too slow bytewise
      SCOPED_TRACE(std::string(c.what) + ", read size " + std::to_string(size));
      const Outcome run = parseAll(c.doc, size);
      EXPECT_EQ(run.results.back(), c.result) << XmlPsr_codeText(run.results.back());
      if (!c.log.empty()) {
        EXPECT_EQ(run.log, c.log);
      }
    }
  }
}

TEST(XmlPsr, DistinctNamesStopAtTheBudget) {
  // expat keeps every attribute name for the whole document.
  std::string doc = "<a>";
  for (int i = 0; doc.size() < 2 * XML_PSR_BUDGET; ++i)
    doc += "<b n" + std::to_string(i) + std::string(40, 'x') + "='1'/>";
  doc += "</a>";
  EXPECT_EQ(parseAll(doc, 0).results.back(), XML_PSR_OVER_BUDGET);
}

TEST(XmlPsr, FailuresSayWhere) {
  struct {
    std::string doc;
    int32_t line, column;
  } const rows[] = {
      {"<a>\n  <b></c>", 2, 8},  // at the wrong name
      {"<a>\n<!DOCTYPE", 2, 3},
      {"<!DOCTYPE a [\n<!ENTITY x 'y'>]><a/>", 2, 12},  // at the value
      {"<a>\n <b>" + nested(XML_PSR_MAX_DEPTH), 2, 5 + 3 * (XML_PSR_MAX_DEPTH - 2)},
  };
  for (const auto &row : rows) {
    for (int32_t size : kReadSizes) {
      const Outcome run = parseAll(row.doc, size);
      EXPECT_EQ(run.line, row.line) << row.doc.substr(0, 40);
      EXPECT_EQ(run.column, row.column) << row.doc.substr(0, 40);
    }
  }
}

// A context pushed at each element keeps its tag and id until the
// element's end pops it, however deep.
TEST(XmlDec, ContextsFollowTheElements) {
  struct Tagger {
    XmlDec dec;
    std::string log;
    static void start(XmlDec *d, const char *name, const char **) {
      static const char *const kWords[] = {"a", "b", "c"};
      XmlDec_pushCtx(d);
      XmlDec_setCtxTag(d, 0, kWords[name[0] - 'a'], d->depth);
    }
    static void end(XmlDec *d, const char *name) {
      const XmlDecCtx *c = XmlDec_ctx(d, 0);
      reinterpret_cast<Tagger *>(d)->log +=
          std::string(name) + "=" + c->tag + std::to_string(c->id) + " ";
      XmlDec_onDefEnd(d, name);
    }
  };
  for (int32_t size : kReadSizes) {
    ChunkedStrm in("<a><b><c/><c></c></b><b/></a>", size);
    XmlPsr *psr = XmlPsr_new();
    Tagger t{};
    XmlDec_new(&t.dec, psr);
    XmlDec_setCtxCb(&t.dec, 0, Tagger::start, Tagger::end, XmlDec_onDefChr, XmlDec_onDefDef);
    EXPECT_EQ(XmlPsr_parse(psr, in.get()), XML_PSR_DONE);
    EXPECT_EQ(t.log, "c=c3 c=c3 b=b2 b=b2 a=a1 ");
    EXPECT_EQ(t.dec.depth, 0);
    XmlDec_delete(&t.dec);
    XmlPsr_delete(psr);
  }
}

TEST(XmlPsr, MisuseIsReportedAndHarmless) {
  int32_t reports = 0;
  void *oldCtx = nullptr;
  KvoAssertHandler old = Tarnex_setAssertHandler(
      [](void *ctx, const char *, const char *, int32_t) { ++*static_cast<int32_t *>(ctx); },
      &reports, &oldCtx);
  XmlPsr *psr = XmlPsr_new();
  EXPECT_EQ(XmlPsr_resume(psr), XML_PSR_MISUSE);
  EXPECT_EQ(XmlPsr_stop(psr, 1), XML_PSR_MISUSE);
  ChunkedStrm in("<a/>", 0);
  EXPECT_EQ(XmlPsr_parse(psr, in.get()), XML_PSR_DONE);
  EXPECT_EQ(XmlPsr_parse(psr, in.get()), XML_PSR_MISUSE);
  EXPECT_EQ(reports, 2);
  XmlPsr_delete(psr);
  Tarnex_setAssertHandler(old, oldCtx, nullptr);
}

TEST(XmlPsr, CodesHaveWords) {
  for (int32_t code : {XML_PSR_ILL_FORMED, XML_PSR_CUT, XML_PSR_REFUSED, XML_PSR_OVER_BUDGET,
                       XML_PSR_TOO_DEEP})
    EXPECT_NE(XmlPsr_codeText(code), nullptr);
  EXPECT_EQ(XmlPsr_codeText(-1), nullptr);
}

}  // namespace
