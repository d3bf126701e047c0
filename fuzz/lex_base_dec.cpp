// Property: KvoLex_getLineBase takes any bytes without a fault; every call
// moves the stream on or ends at its end; no value is longer than the bytes
// it came from; the stream's own peek window, no peek and narrow windows
// give the same values and positions (the look at the next line must not
// depend on where a window ends); and a value that stopped before a line
// leaves the stream at that line's start. The first byte chooses unfold
// and the window.
#include <cstddef>
#include <cstdint>
#include <string>

#include "lex_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 1 || size > (1u << 20)) return 0;
  const int32_t unfold = data[0] & 1;
  const int64_t chunk = 1 + (data[0] >> 1) % 8;
  const std::string text(reinterpret_cast<const char *>(data + 1), size - 1);
  lexfuzz::checkFeeds(text, chunk, [&](IStrm *in, IStrm *val) {
    const int32_t code = KvoLex_getLineBase(in, val, unfold);
    const int64_t at = IStrm_tell(in);
    if (code == 0 && at > 0) {
      const char prev = text[static_cast<size_t>(at - 1)];
      FUZZ_CHECK(prev == '\r' || prev == '\n');
    }
    return code;
  });
  return 0;
}
