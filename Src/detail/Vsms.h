// What the VSMS reader and the 3G message reader share: numbers and words
// read from a value.
#ifndef OSTREL_DETAIL_VSMS_H
#define OSTREL_DETAIL_VSMS_H

#include <cstdint>
#include <cstdlib>

#include "detail/TextFrame.h"
#include "tarnex/scratch.hpp"

namespace ostrel::detail {

// The value's first component, read escaped.
struct ValueText {
  explicit ValueText(const FrameProp &p) { VpiVal_getCstr(p.val, text, 1, nullptr); }
  const char *c_str() const { return text.c_str(); }
  tarnex::ScratchStr<64> text;
};

// A number as atoi reads it where long has 64 bits (blanks, a sign, the
// digits up to the first other byte), kept to its low 32 bits: no run of
// digits overflows, and the unsigned decimal the encoder writes for a
// negative field reads back as that field.
inline uint32_t lowBitsOf(const char *p) {
  while (*p == ' ' || (*p >= '\t' && *p <= '\r')) ++p;
  const bool minus = *p == '-';
  if (*p == '+' || *p == '-') ++p;
  uint32_t v = 0;
  for (; *p >= '0' && *p <= '9'; ++p) v = v * 10u + static_cast<uint32_t>(*p - '0');
  return minus ? 0u - v : v;
}

inline uint32_t readLowBits(const FrameProp &p) { return lowBitsOf(ValueText(p).c_str()); }

// strtoul, base 10: a number past its range saturates, never overflows.
inline uint32_t readUlong(const FrameProp &p) {
  return static_cast<uint32_t>(std::strtoul(ValueText(p).c_str(), nullptr, 10));
}

// A word of the table sets the field; any other leaves it as it was.
inline bool readWord(const FrameProp &p, const StrIdMap *words, int32_t *field) {
  int32_t id = 0;
  if (StrIdMap_findByStr(words, ValueText(p).c_str(), &id) == 0) return false;
  *field = id;
  return true;
}

}  // namespace ostrel::detail

#endif  // OSTREL_DETAIL_VSMS_H
