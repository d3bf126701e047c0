/*
 * ostrel/VcalEd.h - vCalendar 1.0: one calendar object, holding one event
 * or to-do, to and from a CalItem.
 *
 * Rules and raw date lists stay text (see ostrel/CalItem.h). Every version
 * reads alike; the version word is only reported.
 */
#ifndef OSTREL_VCALED_H
#define OSTREL_VCALED_H

#include "ostrel/CalItem.h"
#include "ostrel/VpiEd.h"

#ifdef __cplusplus
extern "C" {
#endif

/* zone of Vcal_decx: convert every date that carries "Z" or an offset to
 * the process's local time. */
#define VCAL_ZONE_LOCAL 0x7FFFFFFF
/* zone of both directions: dates as they stand. */
#define VCAL_ZONE_ASIS ((int32_t)0x80000000)

/* Reads the next calendar object: 1 an object was read up to its
 * END:VCALENDAR (the stream stands behind it), 0 the stream ended first or
 * a fault came before BEGIN:VCALENDAR, negative a fault inside the object
 * (-251 a malformed line). Below 1 the record is cleared. A second entry
 * in one object merges into the first. *ver (may be null) receives the
 * VERSION; luid (may be null) is emptied, then receives X-IRMC-LUID. */
OSTREL_API int32_t Vcal_dec(IStrm *vcal, CalItem *item, uint32_t *ver);
OSTREL_API int32_t Vcal_decx(IStrm *vcal, CalItem *item, uint32_t *ver, KvoStr *luid,
                             int32_t zone);
/* Writes item (type CAL_TYPE_EVENT or CAL_TYPE_TODO) as one object; ver 0
 * is 1.0. zone: VCAL_ZONE_ASIS, or minutes east of UTC that floating times
 * are taken to be at, every time then written in UTC. spare is not read.
 * Gives 0 or the first negative code of the stream; the text written
 * before a fault stays. */
OSTREL_API int32_t Vcal_enc(IStrm *vcal, const CalItem *item, uint32_t ver);
OSTREL_API int32_t Vcal_encx(IStrm *vcal, const CalItem *item, uint32_t ver, int32_t spare,
                             const char *luid, int32_t zone, const VpiEncOpts *opts);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_VCALED_H */
