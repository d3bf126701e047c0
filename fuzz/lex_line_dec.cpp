// Property: reading properties the way the property decoder does (name,
// parameters, then KvoLex_getLine for the value, KvoLex_skipLine after a
// line that starts with a delimiter) takes any bytes without a fault; every
// call moves the stream on or ends at its end; and the stream's own peek
// window, no peek and narrow windows give the same tokens, values and
// positions. The first byte chooses unfold, soft breaks and the window.
#include <cstddef>
#include <cstdint>
#include <string>

#include "lex_fuzz.h"

namespace {

void putToken(IStrm *val, const KvoStr *tok) { IStrm_write(val, tok->buf, tok->len); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 1 || size > (1u << 20)) return 0;
  const int32_t unfold = data[0] & 1;
  const int32_t softBreaks = (data[0] >> 1) & 1;
  const int64_t chunk = 1 + (data[0] >> 2) % 8;
  const std::string text(reinterpret_cast<const char *>(data + 1), size - 1);

  const lexfuzz::Step property = [&](IStrm *in, IStrm *val) -> int32_t {
    tarnex::ScratchStr<16> tok;
    int32_t code = KvoLex_get(in, tok, ";:", 0, 1);
    if (code < 0) return code;
    putToken(val, tok);
    if (code != KVO_LEX_WORD) {
      if (code == KVO_LEX_EOL || code == KVO_LEX_WORD_EOS) return 0;
      return KvoLex_skipLine(in, 1);
    }
    code = KvoLex_get(in, tok, ":", 0, 1);
    if (code < 0) return code;
    if (code == KVO_LEX_WORD) {
      putToken(val, tok);
      code = KvoLex_get(in, tok, ":", 0, 1);
      if (code < 0) return code;
    }
    if (code != ':') return 0;
    return KvoLex_getLine(in, val, unfold, softBreaks);
  };
  lexfuzz::checkFeeds(text, chunk, property);
  return 0;
}
