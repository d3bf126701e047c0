// The words of the folder and MMS listings: permission letters and message
// status words, each way. Both listings spell permissions alike, so one pair
// of functions serves them. A letter or word outside the tables comes from
// the document, not from a misuse: it is reported and adds nothing.
#ifndef OSTREL_DETAIL_LISTINGWORDS_H
#define OSTREL_DETAIL_LISTINGWORDS_H

#include <cstdint>

#include "detail/Listing.h"
#include "tarnex/tarnex.h"

namespace ostrel::detail {

// "R", "W", "D" in either case add their bit to a sum that starts at 0.
void permsFromText(const char *text, int32_t *perms);
// The letters in the order D, R, W; false (and an empty text) for -1, which
// leaves the attribute out. 0 gives an empty text and true.
bool permsToText(int32_t perms, KvoStr *text);

// "def" leaves the status as it is; the other words add their bit.
void statusFromWord(const char *word, int32_t *stat);
// The word of one status value; a sum of two, or any other value, is
// reported and gives "".
const char *statusWord(int32_t stat);

// Names go out with the five XML specials as entities and nothing else
// escaped. A surrogate without its partner would go out in a 3-byte form no
// XML parser takes, so it goes out as U+FFFD.
void xmd_escape(const KvoWcs *name, KvoStr *out);
void xmms_escape(const KvoStr *name, KvoStr *out);

// Value types of the media, folder and MMS listings.
extern const ValueType kWideName;    // KvoWcs, read as UTF-8, written escaped and always
extern const ValueType kEscapedName; // KvoStr, written escaped and always
extern const ValueType kPermsText;   // int32_t letters, not written while -1
extern const ValueType kStatusWord;  // int32_t status, its word always written
extern const ValueType kSize;        // uint32_t, read as the listings read numbers, written always

}  // namespace ostrel::detail

#endif  // OSTREL_DETAIL_LISTINGWORDS_H
