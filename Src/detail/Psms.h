// What the PDU encoder and decoder share: the refusal code and the trace of
// the octets that go in or out.
#ifndef OSTREL_DETAIL_PSMS_H
#define OSTREL_DETAIL_PSMS_H

#include <cstdint>

#include "detail/Trace.h"

namespace ostrel::detail {

inline constexpr int32_t kPduRefused = -81;

inline void tracePdu(const char *file, int32_t line, const uint8_t *pdu, int32_t len) {
  if (!traceOn(kModule, kCatPos, 3) || len <= 0) return;
  tout_beg(file, line, kModule, kCatPos, 3);
  tout_hex(pdu, len);
  tout_endx();
}

inline void traceIra(const char *file, int32_t line, const char *ira, int32_t len) {
  if (!traceOn(kModule, kCatPos, 3) || len <= 0) return;
  tout_beg(file, line, kModule, kCatPos, 3);
  tout_fmt("%.*s", static_cast<int>(len), ira);
  tout_endx();
}

}  // namespace ostrel::detail

#endif  // OSTREL_DETAIL_PSMS_H
