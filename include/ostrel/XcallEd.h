/*
 * ostrel/XcallEd.h - the call listing, an XML document of call entries,
 * read and written one entry at a time.
 *
 * Reading: Xcalls_decBeg(strm), then Xcalls_decItem until it gives other
 * than 0 or 1, then Xcalls_decEnd. Each 0 (or 1) means the record holds
 * one entry, and that entry alone: the record is cleared first, so one
 * record may be reused. -202 is the end of the listing; another negative
 * result is the XML parser's failure (XML_PSR_* in tarnex/xml.h), and the
 * record then holds what the entry had got. After the end, Xcalls_decItem
 * gives its last result again. The stream must stay untouched until
 * Xcalls_decEnd: the parser reads ahead.
 *
 * Reading takes "<Call>" elements at any depth (case ignored) and their
 * attributes "number", "date", "duration", "type", "luid" (case ignored;
 * a later one wins); luid is read as a 32-bit strtoul would, so "-1" and
 * anything past 32 bits give -1. Writing gives one line an entry with the
 * members that are set as "number", "data", "duration", "type", each
 * written as it stands, without escaping: the date goes out as "data",
 * which reading does not take back, and luid is not written.
 */
#ifndef OSTREL_XCALLED_H
#define OSTREL_XCALLED_H

#include "ostrel/CallItem.h"

#ifdef __cplusplus
extern "C" {
#endif

OSTREL_API XmlListDec *Xcalls_decBeg(IStrm *strm);
OSTREL_API int32_t Xcalls_decItem(XmlListDec *dec, CallItem *item);
OSTREL_API int32_t Xcalls_decEnd(XmlListDec *dec);
/* The head lines and the closing line; each gives what IStrm_printf gives. */
OSTREL_API int32_t Xcalls_encBeg(IStrm *strm);
OSTREL_API int32_t Xcalls_encEnd(IStrm *strm);
/* One entry line; gives 0. */
OSTREL_API int32_t Xcalls_encItem(IStrm *strm, const CallItem *item);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_XCALLED_H */
