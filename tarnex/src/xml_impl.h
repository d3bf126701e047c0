// What the parser and the decoder frame share: the parser hands each event
// to the innermost context of the decoder bound to it.
#ifndef TARNEX_SRC_XML_IMPL_H
#define TARNEX_SRC_XML_IMPL_H

#include "tarnex/xml.h"

namespace tarnex::xml {

// Makes dec the receiver of psr's events (null: none).
void bindDec(XmlPsr *psr, XmlDec *dec);

inline const XmlDecCtx &innermost(const XmlDec *dec) { return dec->ctxs[dec->depth]; }

inline void deliverStart(XmlDec *dec, const char *name, const char **atts) {
  if (XmlStartCb cb = innermost(dec).start) cb(dec, name, atts);
}
inline void deliverEnd(XmlDec *dec, const char *name) {
  if (XmlEndCb cb = innermost(dec).end) cb(dec, name);
}
inline void deliverChars(XmlDec *dec, const char *text, int32_t len) {
  if (XmlTextCb cb = innermost(dec).chars) cb(dec, text, len);
}
inline void deliverDef(XmlDec *dec, const char *text, int32_t len) {
  if (XmlTextCb cb = innermost(dec).def) cb(dec, text, len);
}

}  // namespace tarnex::xml

#endif  // TARNEX_SRC_XML_IMPL_H
