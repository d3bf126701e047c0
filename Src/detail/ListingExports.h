// The six exported operations of a listing family, each a call of the
// protocol with the family's description: a family file is its description
// and this one line.
#ifndef OSTREL_DETAIL_LISTINGEXPORTS_H
#define OSTREL_DETAIL_LISTINGEXPORTS_H

#include "detail/Listing.h"
#include "detail/Trace.h"

#define OSTREL_LISTING_EXPORTS(Prefix, desc, Record)                          \
  extern "C" {                                                                \
  OSTREL_API XmlListDec *Prefix##_decBeg(IStrm *strm) {                       \
    OSTREL_FUNC_TRACE();                                                      \
    return ::ostrel::detail::listDecBeg(desc, strm);                          \
  }                                                                           \
  OSTREL_API int32_t Prefix##_decItem(XmlListDec *dec, Record *item) {        \
    OSTREL_FUNC_TRACE();                                                      \
    return ::ostrel::detail::listDecItem(desc, dec, item);                    \
  }                                                                           \
  OSTREL_API int32_t Prefix##_decEnd(XmlListDec *dec) {                       \
    OSTREL_FUNC_TRACE();                                                      \
    return ::ostrel::detail::listDecEnd(desc, dec);                           \
  }                                                                           \
  OSTREL_API int32_t Prefix##_encBeg(IStrm *strm) {                           \
    OSTREL_FUNC_TRACE();                                                      \
    return ::ostrel::detail::listEncBeg(desc, strm);                          \
  }                                                                           \
  OSTREL_API int32_t Prefix##_encItem(IStrm *strm, const Record *item) {      \
    OSTREL_FUNC_TRACE();                                                      \
    return ::ostrel::detail::listEncItem(desc, strm, item);                   \
  }                                                                           \
  OSTREL_API int32_t Prefix##_encEnd(IStrm *strm) {                           \
    OSTREL_FUNC_TRACE();                                                      \
    return ::ostrel::detail::listEncEnd(desc, strm);                          \
  }                                                                           \
  }

#endif  // OSTREL_DETAIL_LISTINGEXPORTS_H
