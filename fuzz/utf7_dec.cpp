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

  tarnex::ScratchStrStrm in(reinterpret_cast<const char *>(data), static_cast<int32_t>(size));
  tarnex::ScratchMemStrm utf8(0);
  const int32_t n = utf7_strm_to_utf8_strm(in, utf8);
  FUZZ_CHECK(n >= 0 && n == IStrm_size(utf8));
  const std::string text = memText(utf8);
  FUZZ_CHECK(charset_fuzz::validUtf8(reinterpret_cast<const uint8_t *>(text.data()), text.size()));

  ChunkStrm pieces(data, size, chunk);
  tarnex::ScratchMemStrm again(0);
  FUZZ_CHECK(utf7_strm_to_utf8_strm(&pieces.base, again) == n);
  FUZZ_CHECK(memText(again) == text);

  IStrm_rewind(utf8);
  tarnex::ScratchMemStrm utf7(0);
  FUZZ_CHECK(utf8_strm_to_utf7_strm(utf8, utf7) >= 0);
  IStrm_rewind(utf7);
  tarnex::ScratchMemStrm back(0);
  FUZZ_CHECK(utf7_strm_to_utf8_strm(utf7, back) == n);
  FUZZ_CHECK(memText(back) == text);
  return 0;
}
