// The listing protocol: the decoder object, the element callback that
// stops the parser at each entry, the attribute walk and the writer's lines.
#include "detail/Listing.h"

#include <new>

#include "detail/Object.h"
#include "detail/Trace.h"

// Opaque to callers. The frame comes first: the parser's callbacks get the
// XmlDec and so the whole object.
struct XmlListDec {
  XmlDec dec;
  XmlPsr *psr = nullptr;
  int32_t started = 0;
  IStrm *strm = nullptr;
  void *item = nullptr;
  const ostrel::detail::ListingDesc *desc = nullptr;
};

namespace ostrel::detail {
namespace {

template <class T>
T *member(void *item, size_t offset) {
  return reinterpret_cast<T *>(static_cast<char *>(item) + offset);
}
template <class T>
const T *member(const void *item, size_t offset) {
  return reinterpret_cast<const T *>(static_cast<const char *>(item) + offset);
}

// ASCII case folding only: the words of the tables are ASCII, and a
// locale must not change what an element is.
bool sameWord(const char *a, const char *b) {
  for (;; ++a, ++b) {
    char x = *a, y = *b;
    if (x >= 'A' && x <= 'Z') x = static_cast<char>(x - 'A' + 'a');
    if (y >= 'A' && y <= 'Z') y = static_cast<char>(y - 'A' + 'a');
    if (x != y) return false;
    if (x == '\0') return true;
  }
}

void traceElement(const ListingDesc &d, const char *name) {
  if (!traceOn(kModule, kCatPos, 3)) return;
  tout_beg(__FILE__, __LINE__, kModule, kCatPos, 3);
  tout_fmt("[%s: <%s>]", d.prefix, name);
  tout_endx();
}

// Each attribute found in the table is stored; a later one of the same
// name overwrites an earlier one; the rest are stepped over.
void readAttrs(const ListingDesc &d, const char **atts, void *item) {
  if (!OSTREL_REQUIRE(item != nullptr, "_this && item")) return;
  if (d.prepare != nullptr) d.prepare(item);
  for (; atts[0] != nullptr; atts += 2) {
    for (const AttrRow &row : d.attrs) {
      if (row.read == nullptr || !sameWord(atts[0], row.read)) continue;
      if (atts[1] != nullptr) row.type->read(member<void>(item, row.offset), atts[1]);
      break;
    }
  }
}

void startXml(XmlDec *dec, const char *name, const char **atts) {
  XmlListDec *ld = reinterpret_cast<XmlListDec *>(dec);
  const ListingDesc &d = *ld->desc;
  traceElement(d, name);
  XmlDec_pushCtx(dec);
  for (const EntryRow &entry : d.entries) {
    if (!sameWord(name, entry.word)) continue;
    if (!OSTREL_REQUIRE(atts != nullptr, "atts")) return;
    if (d.kindOffset >= 0) *member<uint32_t>(ld->item, static_cast<size_t>(d.kindOffset)) |= entry.kind;
    readAttrs(d, atts, ld->item);
    XmlDec_setCtxTag(dec, 0, entry.word, 0);
    XmlPsr_stop(ld->psr, 1);
    return;
  }
  XmlDec_setCtxTag(dec, 0, d.root, 0);
}

int32_t put(IStrm *strm, const char *text) { return IStrm_printf(strm, "%s", text); }

}  // namespace

XmlListDec *listDecBeg(const ListingDesc &d, IStrm *strm) {
  if (!OSTREL_REQUIRE(strm != nullptr, d.prefix)) return nullptr;
  tracePos(d.prefix, strm, true);
  void *mem = kvo_malloc__(sizeof(XmlListDec), __FILE__, __LINE__);
  XmlListDec *ld = new (mem) XmlListDec;
  ld->strm = strm;
  ld->desc = &d;
  ld->psr = XmlPsr_new();
  XmlDec_new(&ld->dec, ld->psr);
  XmlDec_reset(&ld->dec);
  XmlDec_setCtxCb(&ld->dec, 0, startXml, XmlDec_onDefEnd, XmlDec_onDefChr, XmlDec_onDefDef);
  return ld;
}

int32_t listDecItem(const ListingDesc &d, XmlListDec *dec, void *item) {
  if (!OSTREL_REQUIRE(dec != nullptr && item != nullptr, "dec && item")) return KVO_EOS;
  tracePos(d.decTrace, dec->strm, true);
  dec->item = item;
  d.clear(item);
  int32_t r;
  if (dec->started == 0) {
    dec->started = 1;
    r = XmlPsr_parse(dec->psr, dec->strm);
  } else {
    r = XmlPsr_resume(dec->psr);
  }
  switch (r) {
    case XML_PSR_STOPPED: return OSTREL_OK;
    case XML_PSR_STOPPED_LAST: return OSTREL_OBJECT;
    case XML_PSR_DONE: return OSTREL_EOS;
    default: return r;
  }
}

int32_t listDecEnd(const ListingDesc &d, XmlListDec *dec) {
  if (!OSTREL_REQUIRE(dec != nullptr, "dec")) return 0;
  if (dec->strm != nullptr) tracePos(d.prefix, dec->strm, true);
  dec->started = 0;
  dec->strm = nullptr;
  dec->item = nullptr;
  XmlDec_delete(&dec->dec);
  XmlPsr_delete(dec->psr);
  dec->~XmlListDec();
  kvo_free__(dec, __FILE__, __LINE__);
  return 0;
}

int32_t listEncBeg(const ListingDesc &d, IStrm *strm) {
  if (!OSTREL_REQUIRE(strm != nullptr, d.prefix)) return -1;
  tracePos(d.prefix, strm, true);
  return put(strm, d.head);
}

int32_t listEncEnd(const ListingDesc &d, IStrm *strm) {
  if (!OSTREL_REQUIRE(strm != nullptr, d.prefix)) return -1;
  tracePos(d.prefix, strm, true);
  return put(strm, d.closing);
}

int32_t listEncItem(const ListingDesc &d, IStrm *strm, const void *item) {
  if (!OSTREL_REQUIRE(strm != nullptr && item != nullptr, d.encAssert)) return 0;
  checkTag(item, d.tag, __FILE__, __LINE__);
  tracePos(d.prefix, strm, true);
  const uint32_t kind =
      d.kindOffset >= 0 ? *member<uint32_t>(item, static_cast<size_t>(d.kindOffset)) : 0;
  const EntryRow *entry = nullptr;
  for (const EntryRow &row : d.entries) {
    if (row.writeIf == 0 || (kind & row.writeIf) != 0) {
      entry = &row;
      break;
    }
  }
  if (entry == nullptr) {
    OSTREL_TRACE(kCatField, 3, "[item->attrs: %ld]", static_cast<long>(kind));
    return OSTREL_BAD_KIND;
  }
  EntryLine line;
  KvoStr_appdStr(line, entry->opening);
  for (const AttrRow &row : d.attrs) {
    if (row.written == nullptr || (row.writeIf != 0 && (kind & row.writeIf) == 0)) continue;
    const int32_t mark = line.len();
    KvoStr_appdChar(line, ' ');
    KvoStr_appdStr(line, row.written);
    KvoStr_appdStrx(line, "=\"", 2);
    if (row.type->write(member<void>(item, row.offset), line))
      KvoStr_appdChar(line, '"');
    else
      KvoStr_setLen(line, mark);
  }
  KvoStr_appdStrx(line, " />\r\n", 5);
  IStrm_write(strm, line.c_str(), line.len());
  return OSTREL_OK;
}

}  // namespace ostrel::detail
