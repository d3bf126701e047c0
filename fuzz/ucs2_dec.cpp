// Property: ucs2_strm_to_utf8_strm takes any bytes without a fault and
// writes well-formed UTF-8; reading the input in place or in small reads,
// or appending to a string, gives the same text; and that text comes back
// unchanged through utf8_strm_to_ucs2_strm behind a byte-order mark (the
// mark keeps a leading U+FEFF of the text from being taken for one). The
// first byte sets the read size of the second pass.
#include <cstddef>
#include <cstdint>
#include <string>

#include "charset_fuzz.h"
#include "tarnex/charset.h"
#include "tarnex/scratch.hpp"

using charset_fuzz::ChunkStrm;
using charset_fuzz::memText;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 1 || size > (1u << 20)) return 0;
  const size_t chunk = (data[0] & 0x0F) + 1;
  ++data;
  --size;

  const std::string text = charset_fuzz::convertChecked(ucs2_strm_to_utf8_strm, data, size);
  const auto n = static_cast<int32_t>(text.size());

  ChunkStrm pieces(data, size, chunk);
  tarnex::ScratchStr<64> str;
  KvoStr_setStr(str, "#");
  FUZZ_CHECK(ucs2_strm_to_utf8_cstr(&pieces.base, str) == n);
  FUZZ_CHECK(str.view().substr(1) == text);

  tarnex::ScratchStrStrm utf8(text);
  tarnex::ScratchMemStrm ucs2(0);
  IStrm_write(ucs2, "\xFE\xFF", 2);
  FUZZ_CHECK(utf8_strm_to_ucs2_strm(utf8, ucs2) >= 0);
  IStrm_rewind(ucs2);
  tarnex::ScratchMemStrm back(0);
  FUZZ_CHECK(ucs2_strm_to_utf8_strm(ucs2, back) == n);
  FUZZ_CHECK(memText(back) == text);
  return 0;
}
