// Property-layer pieces shared by its encoder and decoder but not exported.
#ifndef OSTREL_DETAIL_VPI_H
#define OSTREL_DETAIL_VPI_H

#include <array>
#include <cstdint>
#include <cstring>

#include "ostrel/VpiEd.h"

namespace ostrel::detail {

// The charset and the encoding code of a parameter text (as VpiParams_getCs
// and VpiParams_getEnc give them), found in one pass.
std::array<int32_t, 2> VpiParams_getCsEnc(const KvoStr *params);

// Append the charset or encoding parameter of a code; nothing for code 0.
KvoStr *VpiParams_putCs(KvoStr *params, int32_t cs, int32_t keyed);
KvoStr *VpiParams_putEnc(KvoStr *params, int32_t enc, int32_t keyed);

// The escape set in force: the caller's, or ";\" for a null or empty one.
inline const char *escapeSet(const char *escChars) {
  return (escChars == nullptr || *escChars == '\0') ? ";\\" : escChars;
}

// Escape sets are ASCII; a wide unit above 0x7F never matches (strchr would
// see only its low byte).
inline bool inSet(const char *set, int32_t c) {
  return c > 0 && c < 0x80 && std::strchr(set, c) != nullptr;
}

// Text up to its terminator with a backslash before each byte of the set,
// handed to put(bytes, count) in runs; put gives 0 or a negative result,
// which ends the walk.
template <class Put>
int32_t escapeText(const char *text, const char *set, Put put) {
  const char *run = text;
  for (const char *p = text;; ++p) {
    if (*p != '\0' && !inSet(set, static_cast<unsigned char>(*p))) continue;
    if (p > run) {
      const int32_t rc = put(run, static_cast<int32_t>(p - run));
      if (rc < 0) return rc;
    }
    if (*p == '\0') return 0;
    const char pair[2] = {'\\', *p};
    const int32_t rc = put(pair, 2);
    if (rc < 0) return rc;
    run = p + 1;
  }
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
