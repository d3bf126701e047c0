// Property-layer pieces shared by its encoder and decoder but not exported.
#ifndef OSTREL_DETAIL_VPI_H
#define OSTREL_DETAIL_VPI_H

#include <cstdint>

#include "ostrel/VpiEd.h"

namespace ostrel::detail {

// Append the charset or encoding parameter of a code; nothing for code 0.
KvoStr *VpiParams_putCs(KvoStr *params, int32_t cs, int32_t keyed);
KvoStr *VpiParams_putEnc(KvoStr *params, int32_t enc, int32_t keyed);

// The escape set in force: the caller's, or ";\" for a null or empty one.
inline const char *escapeSet(const char *escChars) {
  return (escChars == nullptr || *escChars == '\0') ? ";\\" : escChars;
}

// Bytes that end a parameter value on a property line, or open a quoted one.
// "=" is among them: the parameter reader splits on it, so TYPE=a=b reads as
// no TYPE at all.
inline bool endsParamValue(char c) {
  return c == ';' || c == ':' || c == '=' || c == '"' || c == '\r' || c == '\n';
}

// A parameter value as it can be written back bare, in place: double quotes
// dropped (TYPE="JPEG" gives JPEG), cut at a ";", ":" or "=" that only the
// quotes had protected.
inline void plainParamValue(char *text) {
  char *out = text;
  for (const char *p = text; *p != '\0'; ++p) {
    if (*p == '"') continue;
    if (endsParamValue(*p)) break;
    *out++ = *p;
  }
  *out = '\0';
}

}  // namespace ostrel::detail

#endif  // OSTREL_DETAIL_VPI_H
