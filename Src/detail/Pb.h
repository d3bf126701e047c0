// Steps the contact record's files share: field life and the type text.
#ifndef OSTREL_DETAIL_PB_H
#define OSTREL_DETAIL_PB_H

#include <cstdint>

#include "ostrel/PbItem.h"

namespace ostrel::pb {

// A field with every member constructed empty, on the heap.
PbField *fieldNew();
// Releases what the field holds and the field itself; null is allowed.
void fieldDelete(PbField *field);

// Character i of a type text, or 0 when the text ends before it, so that a
// short text is never read past its terminator.
inline char typeChar(const char *type, int32_t i) {
  if (type == nullptr) return '\0';
  for (int32_t k = 0; k < i; ++k)
    if (type[k] == '\0') return '\0';
  return type[i];
}

// Copies text into a fixed char array, cut so that the terminator fits.
template <int32_t N>
void copyBounded(char (&dst)[N], const char *text) {
  int32_t n = 0;
  if (text != nullptr)
    while (n < N - 1 && text[n] != '\0') {
      dst[n] = text[n];
      ++n;
    }
  while (n < N) dst[n++] = '\0';
}

}  // namespace ostrel::pb

#endif  // OSTREL_DETAIL_PB_H
