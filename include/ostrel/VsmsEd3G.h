/*
 * ostrel/VsmsEd3G.h - the 3G message text, read only: property lines
 * between BEGIN:X-VMSG and END:X-VMSG whose names begin with "X-".
 *
 * Vsms_dec_3g reads the first message of `text` (len bytes; len below 1:
 * up to its terminator) into the record, which it clears first. Gives 1
 * when a message was read, 0 when there was none or it was cut short, a
 * negative code when the property reader failed inside it; below 1 the
 * record is cleared again. What follows the END line stays unread.
 *
 * Its words are its own: X-TYPE "STATUS-REPORT" is SMS_REPORT, X-STAT
 * "SENTFAIL" is 4 and there is no "ALL", X-SR "OK", "FAIL", "DELAY" are
 * repStat 0, 1, 2. X-BODY is text read whole (";" and "\" stay). X-IRMC-LUID,
 * X-ANCK and X-LOCK go to extInfo as "luid=", "anch=", "lock=" lines in the
 * order they come, and a message read always ends it with "uri=/sms/me";
 * each line ends with CR LF.
 */
#ifndef OSTREL_VSMSED3G_H
#define OSTREL_VSMSED3G_H

#include "ostrel/SmsItem.h"

#ifdef __cplusplus
extern "C" {
#endif

OSTREL_API int32_t Vsms_dec_3g(const char *text, int32_t len, SmsItem *item);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_VSMSED3G_H */
