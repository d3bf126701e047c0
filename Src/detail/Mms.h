// The library's own operations of the MMS families: slides and media on
// the heap, and enumerators in a caller's storage. The message decoder and
// encoder build on them; they do not leave the library.
#ifndef OSTREL_DETAIL_MMS_H
#define OSTREL_DETAIL_MMS_H

#include "ostrel/MmsItem.h"

namespace ostrel::detail {

MmsSlide *MmsSlide_new();
void MmsSlide_delete(MmsSlide *slide);
// strm is a fresh memory stream, extra zeroed.
MmsMedia *MmsMedia_new();
void MmsMedia_delete(MmsMedia *media);

// Hangs media on the item as it is, without the copy MmsItem_addMedia
// makes: the item owns it from now on.
void MmsItem_adoptMedia(MmsItem *item, MmsMedia *media);

MmsAddrEnum *MmsAddrEnum_new(MmsAddrEnum *storage, const KvoStr *text);
MmsSlideEnum *MmsSlideEnum_new(MmsSlideEnum *storage, const KvoList *slides);
MmsMediaEnum *MmsMediaEnum_new(MmsMediaEnum *storage, const KvoList *medias);

}  // namespace ostrel::detail

#endif  // OSTREL_DETAIL_MMS_H
