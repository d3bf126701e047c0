/*
 * ostrel/XmdEd.h - the media listing: files with media facts (picture
 * size, play time, album, artist, title, dates), read and written one entry
 * at a time into FldItem records.
 *
 * The protocol is the call listing's (ostrel/XcallEd.h): _decBeg, _decItem
 * until it gives other than 0 or 1 (-202 at the end), _decEnd; _encBeg,
 * _encItem an entry, _encEnd.
 *
 * Reading takes "<media>" elements at any depth (case ignored) and sets
 * FLD_ATTR_FILE in attrs; besides what is written, "luid", "type" and
 * "size" are read (numbers as a 32-bit strtoul reads them: past 32 bits
 * 4294967295). Writing always gives the name, with the five XML specials as
 * entities (a lone surrogate as U+FFFD), and each other member that is set,
 * written as it stands; size, type and luid are not written.
 */
#ifndef OSTREL_XMDED_H
#define OSTREL_XMDED_H

#include "ostrel/FldItem.h"

#ifdef __cplusplus
extern "C" {
#endif

OSTREL_API XmlListDec *Xmds_decBeg(IStrm *strm);
OSTREL_API int32_t Xmds_decItem(XmlListDec *dec, FldItem *item);
OSTREL_API int32_t Xmds_decEnd(XmlListDec *dec);
OSTREL_API int32_t Xmds_encBeg(IStrm *strm);
OSTREL_API int32_t Xmds_encEnd(IStrm *strm);
/* One "media" entry line, whatever attrs says; gives 0. */
OSTREL_API int32_t Xmds_encItem(IStrm *strm, const FldItem *item);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_XMDED_H */
