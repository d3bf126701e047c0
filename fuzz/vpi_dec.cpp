// Property decoder over arbitrary bytes: reading a whole input property by
// property, and each value with both component readers, never crashes,
// never reads outside the input and always ends. The first byte chooses
// whether values are read escaped and whether the stream can lend its
// buffer (the in-place path) or is read byte by byte.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "ostrel/ostrel.h"
#include "tarnex/scratch.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size == 0) return 0;
  const uint8_t mode = data[0];
  tarnex::ScratchMemStrm raw(0);
  IStrm_write(raw, data + 1, static_cast<int32_t>(size - 1));
  IStrm_rewind(raw);
  tarnex::ScratchStr<32> name, params, text;
  tarnex::ScratchWcs<32> wide;
  tarnex::ScratchMemStrm val(0);
  const int32_t escaped = mode & 1;
  int64_t last = -1;
  for (int i = 0;; ++i) {
    const int32_t rc = VpiDec_getStrm(raw, name, params, val);
    if (rc < 1) {
      if (KvoStr_len(name) != 0 || IStrm_size(val) != 0) abort();
      break;
    }
    const int64_t pos = IStrm_tell(raw);
    if (pos <= last && i > 0) abort();  // a property read must move the stream
    last = pos;
    for (int n = 0; n < 64 && VpiVal_getCstr(val, text, escaped, nullptr); ++n) {
    }
    IStrm_rewind(val);
    for (int n = 0; n < 64 && VpiVal_getCwcs(val, wide, escaped, nullptr); ++n) {
    }
    VpiParams_getAny(params, "TYPE", nullptr, 0);
  }
  return 0;
}
