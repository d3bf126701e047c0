// Property: utf7_strm_to_utf8_strm takes any bytes without a fault and
// writes well-formed UTF-8; reading the input in place or in small reads
// gives the same text; and that text comes back unchanged through
// utf8_strm_to_utf7_strm and the decoder again. The first byte sets the
// read size of the second pass.
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

  const std::string text = charset_fuzz::convertChecked(utf7_strm_to_utf8_strm, data, size);
  const auto n = static_cast<int32_t>(text.size());

  ChunkStrm pieces(data, size, chunk);
  tarnex::ScratchMemStrm again(0);
  FUZZ_CHECK(utf7_strm_to_utf8_strm(&pieces.base, again) == n);
  FUZZ_CHECK(memText(again) == text);

  IStrm_rewind(again);  // the same text, as checked above
  tarnex::ScratchMemStrm utf7(0);
  FUZZ_CHECK(utf8_strm_to_utf7_strm(again, utf7) >= 0);
  IStrm_rewind(utf7);
  tarnex::ScratchMemStrm back(0);
  FUZZ_CHECK(utf7_strm_to_utf8_strm(utf7, back) == n);
  FUZZ_CHECK(memText(back) == text);
  return 0;
}
