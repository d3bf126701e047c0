/*
 * ostrel/VcardEd.h - the vCard codec: PbItem to and from vCard 2.1 / 3.0.
 *
 * Reading: each call reads one card. Lines before "BEGIN:VCARD" are passed
 * over; inside the card every property known to the codec becomes one field
 * in the next slot, in the order of the lines, from slot 0 up. Properties it
 * does not know, and "AGENT" (whose embedded card is read as lines of the
 * outer card), are dropped. A second "BEGIN:VCARD" inside a card is just an
 * unknown line; the first "END:VCARD" ends the card.
 *
 * Results of the decoders: 1 a card was read and the stream stands behind
 * its "END:VCARD" line, so calling again reads the next card; 0 no further
 * card (also: the stream ended inside a card, or a malformed line came
 * before any card); a negative code for a malformed line inside a card.
 * Below 1 the record is left cleared.
 *
 * A card with more than PB_FIELD_MAX (128) stored properties keeps the
 * first 128 fields and is still read to its "END:VCARD" (result 1): the
 * properties behind the last slot are dropped with a trace (6, 4, 2), so
 * that the next call starts at the next card and never at a line inside
 * this one.
 *
 * Writing: "BEGIN:VCARD", "VERSION:<ver>", then one line for each valid
 * field in slot order, then "END:VCARD". "OA" fields, stream fields without
 * content and fields of unknown types are skipped; a field's desc is never
 * written. The result is 0 or the first negative code of a field's line;
 * the "END" line is written in either case.
 */
#ifndef OSTREL_VCARDED_H
#define OSTREL_VCARDED_H

#include "ostrel/Ostrel.h"
#include "ostrel/PbItem.h"
#include "ostrel/VpiEd.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Vcard_decx(vcard, item, ver, null). */
OSTREL_API int32_t Vcard_dec(IStrm *vcard, PbItem *item, uint32_t *ver);
/* Reads the next card of vcard into item (cleared first). ver, if not null,
 * receives the version word of the card's "VERSION" line and is left alone
 * when there is none. luid, if not null, receives the value of an
 * "X-IRMC-LUID" line (the line is also kept as an "XD" field). */
OSTREL_API int32_t Vcard_decx(IStrm *vcard, PbItem *item, uint32_t *ver, KvoStr *luid);

/* Vcard_encx(vcard, item, ver, null, null). */
OSTREL_API int32_t Vcard_enc(IStrm *vcard, const PbItem *item, uint32_t ver);
/* Writes item as one card at vcard's position. ver 0 means 0x201 (2.1); it
 * only changes the "VERSION" line. A luid that is not empty is written as
 * "X-IRMC-LUID" right behind "VERSION", and every "XD" field is then
 * skipped. opts: the line options of the property encoder (null: its
 * defaults). */
OSTREL_API int32_t Vcard_encx(IStrm *vcard, const PbItem *item, uint32_t ver,
                              const char *luid, const VpiEncOpts *opts);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_VCARDED_H */
