/*
 * ostrel/MmsItem.h - one multimedia message: a header, slides and media.
 *
 * A thin family: MmsHdr, MmsSlide and MmsMedia are plain structures whose
 * members callers read and write directly; they carry no tag. MmsItem and
 * the three enumerators are tagged, but only the heap bit of their tag is
 * read: no operation checks the family.
 *
 * Ownership: the record owns deep copies of what it is given
 * (MmsItem_addSlide, MmsItem_addMedia); a medium owns its stream. The
 * enumerators read the record live and are deleted before it; MmsHdr_tos
 * and its siblings read the member's buffer in place, so the member must
 * not change while its enumerator lives.
 *
 * A caller that builds its own MmsSlide or MmsMedia constructs the members
 * itself (KvoStr_new on each string, a stream or null for strm) and reuses
 * it with MmsSlide_clear / MmsMedia_clear.
 */
#ifndef OSTREL_MMSITEM_H
#define OSTREL_MMSITEM_H

#include "ostrel/Ostrel.h"

#ifdef __cplusplus
extern "C" {
#endif

#define MMS_ITEM_TAG 0x32423522u
#define MMS_ADDR_ENUM_TAG 0x5E6BABE3u
#define MMS_SLIDE_ENUM_TAG 0x5E633353u
#define MMS_MEDIA_ENUM_TAG 0x5E2ADDA1u

/* Layout codes of a slide: where text, images and video stand.
 *  0 none of these      1 text full          2 image full         3 video full
 *  4 image top, text bottom     5 text top, image bottom
 *  6 text left, image right     7 image left, text right
 *  8 video top, text bottom     9 text top, video bottom
 * 10 text left, video right    11 video left, text right
 * 12 two images left, right    13 two images top, bottom
 * 14 text bottom, images topleft and topright
 * 15 text top, images bottomleft and bottomright
 * Audio takes no region and may come with every layout. */
#define MMS_LAYOUT_COUNT 16

/* The default time a slide stays on, given to a slide added with dur 0. */
#define MMS_SLIDE_DUR_DEFAULT 1000

typedef struct MmsHdr {
  uint8_t msgType; /* X-Mms-Message-Type as read; not read by the encoder */
  KvoStr tos;      /* To addresses joined with "," */
  KvoStr ccs;      /* Cc addresses joined with "," */
  KvoStr bccs;     /* Bcc addresses joined with "," */
  KvoStr from;     /* the sender without its "/TYPE=" suffix */
  KvoStr title;    /* the subject, UTF-8 */
  KvoDt date;      /* local, floating time */
} MmsHdr;

typedef struct MmsSlide {
  int32_t layout; /* 0 to 15, above */
  int32_t dur;    /* milliseconds */
  KvoStr text;    /* names of the slide's media (MmsMedia.name) */
  KvoStr img1;
  KvoStr img2;
  KvoStr audio;
  KvoStr video;
} MmsSlide;

typedef struct MmsMedia {
  KvoStr name;        /* file name; the key slides refer to */
  KvoStr type;        /* content type text, "image/jpeg" */
  IStrm *strm;        /* the bytes, owned by the medium */
  uint8_t extra[64];  /* the caller's; copied whole, never interpreted */
} MmsMedia;

typedef struct MmsItem {
  uint32_t tag;
  MmsHdr hdr;
  KvoList slides; /* presentation order */
  KvoList medias; /* order of arrival */
} MmsItem;

typedef struct MmsAddrEnum {
  uint32_t tag;
  IStrm *strm; /* read stream over the address text, owned */
} MmsAddrEnum;

typedef struct MmsSlideEnum {
  uint32_t tag;
  KvoListNode *first;
  KvoListNode *next;
} MmsSlideEnum;

typedef struct MmsMediaEnum {
  uint32_t tag;
  KvoListNode *first;
  KvoListNode *next;
} MmsMediaEnum;

/* ---- The record -------------------------------------------------------- */

OSTREL_API MmsItem *MmsItem_new(MmsItem *storage);
OSTREL_API void MmsItem_delete(MmsItem *item);
/* Append a deep copy; a dur of 0 is stored as MMS_SLIDE_DUR_DEFAULT. 0. */
OSTREL_API int32_t MmsItem_addSlide(MmsItem *item, const MmsSlide *slide);
/* Append a deep copy, the stream's whole content included. 0. */
OSTREL_API int32_t MmsItem_addMedia(MmsItem *item, const MmsMedia *media);
/* Copies the first medium whose name equals name (case ignored) into
 * media: name, type, extra, and the bytes when media->strm is not null.
 * 0, or -25 when no medium has the name. */
OSTREL_API int32_t MmsItem_media(MmsItem *item, MmsMedia *media, const char *name);
OSTREL_API int32_t MmsItem_slideCount(MmsItem *item);
OSTREL_API int32_t MmsItem_mediaCount(MmsItem *item);

/* Empties the five names; layout and dur stay. */
OSTREL_API void MmsSlide_clear(MmsSlide *slide);
/* Empties name and type and the stream (if any), zeroes extra. */
OSTREL_API void MmsMedia_clear(MmsMedia *media);

/* ---- The header -------------------------------------------------------- */

OSTREL_API int32_t MmsHdr_new(MmsHdr *hdr);
OSTREL_API void MmsHdr_delete(MmsHdr *hdr);
/* Append an address, behind a "," when the list is not empty. 0. */
OSTREL_API int32_t MmsHdr_addTo(MmsHdr *hdr, const char *addr);
OSTREL_API int32_t MmsHdr_addCc(MmsHdr *hdr, const char *addr);
OSTREL_API int32_t MmsHdr_addBcc(MmsHdr *hdr, const char *addr);

/* ---- Enumerators (heap objects; delete each) ----------------------------- */

/* Walk tos, ccs or bccs; "," and ";" both separate addresses. */
OSTREL_API MmsAddrEnum *MmsHdr_tos(MmsHdr *hdr);
OSTREL_API MmsAddrEnum *MmsHdr_ccs(MmsHdr *hdr);
OSTREL_API MmsAddrEnum *MmsHdr_bccs(MmsHdr *hdr);
/* The next address into out: 1, or 0 at the end (out empty). */
OSTREL_API int32_t MmsAddrEnum_next(MmsAddrEnum *e, KvoStr *out);
OSTREL_API void MmsAddrEnum_reset(MmsAddrEnum *e);
OSTREL_API void MmsAddrEnum_delete(MmsAddrEnum *e);

/* The slides and media themselves, not copies; null at the end. */
OSTREL_API MmsSlideEnum *MmsItem_slides(MmsItem *item);
OSTREL_API MmsSlide *MmsSlideEnum_next(MmsSlideEnum *e);
OSTREL_API void MmsSlideEnum_delete(MmsSlideEnum *e);
OSTREL_API MmsMediaEnum *MmsItem_medias(MmsItem *item);
OSTREL_API MmsMedia *MmsMediaEnum_next(MmsMediaEnum *e);
OSTREL_API void MmsMediaEnum_delete(MmsMediaEnum *e);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_MMSITEM_H */
