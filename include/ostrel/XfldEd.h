/*
 * ostrel/XfldEd.h - the folder listing of OBEX folder browsing, with the
 * removable device as a third kind of entry, read and written one entry at
 * a time into FldItem records.
 *
 * The protocol is the call listing's (ostrel/XcallEd.h). The decoder does
 * not look at the root element: the caller chooses the listing by it.
 *
 * Reading takes "File", "Folder" and "RmDev" elements (case ignored), each
 * setting its FLD_ATTR_* bit, and steps over any other (a parent folder).
 * The three permission attributes "user-perm", "group-perm", "other-perm"
 * share one member: the last in the entry wins, an entry without one keeps
 * perms -1. Letters R, W, D in either case add their bit; any other letter
 * is reported through the assert handler and adds nothing.
 *
 * Writing opens "rmdev" when attrs has FLD_ATTR_REMOVABLE, else "folder"
 * for FLD_ATTR_FOLDER, else "file" for FLD_ATTR_FILE; with none of them it
 * writes nothing and gives -94. The name is escaped as in the media
 * listing; perms goes out as the letters D, R, W in all three attributes;
 * size only with FLD_ATTR_FILE. type and luid are not written.
 */
#ifndef OSTREL_XFLDED_H
#define OSTREL_XFLDED_H

#include "ostrel/FldItem.h"

#ifdef __cplusplus
extern "C" {
#endif

OSTREL_API XmlListDec *Xflds_decBeg(IStrm *strm);
OSTREL_API int32_t Xflds_decItem(XmlListDec *dec, FldItem *item);
OSTREL_API int32_t Xflds_decEnd(XmlListDec *dec);
OSTREL_API int32_t Xflds_encBeg(IStrm *strm);
OSTREL_API int32_t Xflds_encEnd(IStrm *strm);
/* One entry line; 0, or -94 with nothing written for a record of no kind. */
OSTREL_API int32_t Xflds_encItem(IStrm *strm, const FldItem *item);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_XFLDED_H */
