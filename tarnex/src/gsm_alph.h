// Internal: one character of the GSM alphabet, shared by the text
// conversion and the alphanumeric number fields.
#ifndef TARNEX_SRC_GSM_ALPH_H
#define TARNEX_SRC_GSM_ALPH_H

#include <cstdint>

namespace tarnex::gsm {

// The septets of a character into out: 1, 2 for an escape pair, 0 when the
// alphabet lacks it.
int septetsOf(uint32_t unit, uint8_t out[2]);

}  // namespace tarnex::gsm

#endif
