/*
 * ostrel/VrrEd.h - the vCalendar 1.0 rule language, read into and written
 * from the recurrence model (ostrel/RrItem.h). Rules are plain strings: the
 * value of an RRULE or EXRULE property.
 *
 * Vrr_dec reads leniently: words are separated by blanks or tabs, case is
 * ignored, a word that does not fit ends the list it stands in (and the
 * next word is read on), and only the first word decides failure. Results:
 *   1     a rule was read (what followed a bad word may be missing);
 *   0     no rule: the text is empty (item untouched), blank, or its first
 *         word is no token at all ("XX"); the item is then initialised;
 *   -251  the first word is a token but no usable head ("MO", "D0").
 * A rule with neither a "#" count nor an end date gets duration 2. Numbers
 * beyond 32 bits are clamped. A word of four digits is a time of day and is
 * dropped; so is "1999-12-31", which starts with four digits.
 *
 * Vrr_enc appends the rule's text to vrule and gives the number of
 * characters appended (0 for RR_NONE). A kind its place does not allow
 * (an unknown type, or a subType its parent cannot hold) is reported
 * through kvo_assert__ ("0") and that rule is not written, so a hand-built
 * item is never read beyond its own storage.
 */
#ifndef OSTREL_VRRED_H
#define OSTREL_VRRED_H

#include "ostrel/RrItem.h"

#ifdef __cplusplus
extern "C" {
#endif

OSTREL_API int32_t Vrr_dec(const char *vrule, RrItem *item);
OSTREL_API int32_t Vrr_enc(KvoStr *vrule, const RrItem *item);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_VRRED_H */
