// The decoder frame: a stack of contexts, one an open element the caller
// cares about, each with its callbacks.
#include <cstring>

#include "xml_impl.h"

namespace {

constexpr int32_t kFirstCap = 8;
// The document's context and one a nesting level the parser allows.
constexpr int32_t kMaxCtxs = XML_PSR_MAX_DEPTH + 1;

XmlDecCtx *at(XmlDec *dec, int32_t level) {
  if (dec == nullptr || level < 0 || level > dec->depth) {
    kvo_assert__("dec && level within the stack", __FILE__, __LINE__);
    return nullptr;
  }
  return &dec->ctxs[dec->depth - level];
}

}  // namespace

extern "C" {

TARNEX_API XmlDec *XmlDec_new(XmlDec *dec, XmlPsr *psr) {
  if (dec == nullptr) {
    kvo_assert__("dec", __FILE__, __LINE__);
    return nullptr;
  }
  dec->psr = psr;
  dec->cap = kFirstCap;
  dec->ctxs = static_cast<XmlDecCtx *>(
      kvo_malloc__(sizeof(XmlDecCtx) * static_cast<size_t>(dec->cap), __FILE__, __LINE__));
  XmlDec_reset(dec);
  if (psr != nullptr) tarnex::xml::bindDec(psr, dec);
  return dec;
}

TARNEX_API void XmlDec_delete(XmlDec *dec) {
  if (dec == nullptr) return;
  if (dec->psr != nullptr) tarnex::xml::bindDec(dec->psr, nullptr);
  kvo_free__(dec->ctxs, __FILE__, __LINE__);
  std::memset(dec, 0, sizeof *dec);
}

TARNEX_API void XmlDec_reset(XmlDec *dec) {
  if (dec == nullptr || dec->ctxs == nullptr) return;
  dec->depth = 0;
  dec->ctxs[0] = XmlDecCtx{nullptr,          0, 0, nullptr, XmlDec_onDefEnd,
                           XmlDec_onDefChr, XmlDec_onDefDef};
}

TARNEX_API int32_t XmlDec_pushCtx(XmlDec *dec) {
  if (dec == nullptr || dec->ctxs == nullptr) return -1;
  if (dec->depth + 1 >= kMaxCtxs) return -1;
  if (dec->depth + 1 >= dec->cap) {
    dec->cap = dec->cap * 2 < kMaxCtxs ? dec->cap * 2 : kMaxCtxs;
    dec->ctxs = static_cast<XmlDecCtx *>(kvo_realloc__(
        dec->ctxs, sizeof(XmlDecCtx) * static_cast<size_t>(dec->cap), __FILE__, __LINE__));
  }
  dec->ctxs[dec->depth + 1] = dec->ctxs[dec->depth];
  ++dec->depth;
  dec->ctxs[dec->depth].tag = nullptr;
  dec->ctxs[dec->depth].id = 0;
  return 0;
}

TARNEX_API void XmlDec_setCtxTag(XmlDec *dec, int32_t level, const char *tag, int32_t id) {
  if (XmlDecCtx *c = at(dec, level)) {
    c->tag = tag;
    c->id = id;
  }
}

TARNEX_API void XmlDec_setCtxCb(XmlDec *dec, int32_t level, XmlStartCb start, XmlEndCb end,
                                XmlTextCb chars, XmlTextCb def) {
  if (XmlDecCtx *c = at(dec, level)) {
    c->start = start;
    c->end = end;
    c->chars = chars;
    c->def = def;
  }
}

TARNEX_API const XmlDecCtx *XmlDec_ctx(const XmlDec *dec, int32_t level) {
  if (dec == nullptr || dec->ctxs == nullptr || level < 0 || level > dec->depth) return nullptr;
  return &dec->ctxs[dec->depth - level];
}

TARNEX_API void XmlDec_onDefEnd(XmlDec *dec, const char *) {
  if (dec != nullptr && dec->depth > 0) --dec->depth;
}

TARNEX_API void XmlDec_onDefChr(XmlDec *, const char *, int32_t) {}
TARNEX_API void XmlDec_onDefDef(XmlDec *, const char *, int32_t) {}

}  // extern "C"
