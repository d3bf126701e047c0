// Property: ira_dec_str_to_buf takes any text, bounded by a length or by
// its terminator, without a fault and never writes past `size`; the
// stream form gives the same octets; a smaller buffer gets a prefix; and
// the octets, encoded again, are the hex digits read, in upper case.
#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "fuzz_check.h"
#include "tarnex/codec.h"
#include "tarnex/scratch.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 1 || size > (1u << 20)) return 0;
  const std::string text(reinterpret_cast<const char *>(data + 1), size - 1);
  // Half the inputs are read to their terminator, half by a length that
  // may cut the text anywhere.
  const int32_t len =
      data[0] & 1 ? -1 : static_cast<int32_t>(text.size() * (data[0] >> 1) / 127);
  const int32_t room = static_cast<int32_t>(text.size() / 2);

  std::vector<uint8_t> buf(static_cast<size_t>(room));
  const int32_t n = ira_dec_str_to_buf(text.c_str(), len, buf.data(), room);
  FUZZ_CHECK(n >= 0 && n <= room);
  FUZZ_CHECK(len < 0 || 2 * n <= len);

  const int32_t small = room > 0 ? data[0] % (room + 1) : 0;
  std::vector<uint8_t> part(static_cast<size_t>(small));
  const int32_t m = ira_dec_str_to_buf(text.c_str(), len, part.data(), small);
  FUZZ_CHECK(m == std::min(n, small));
  FUZZ_CHECK(std::equal(part.begin(), part.begin() + m, buf.begin()));

  tarnex::ScratchMemStrm out(0);
  FUZZ_CHECK(ira_dec_str_to_strm(text.c_str(), len, out) == n);
  FUZZ_CHECK(IStrm_size(out) == n);
  FUZZ_CHECK(std::equal(buf.begin(), buf.begin() + n, MemStrm_data(out)));

  std::vector<char> hex(2 * static_cast<size_t>(n) + 1);
  FUZZ_CHECK(ira_enc_buf_from_buf(hex.data(), static_cast<int32_t>(hex.size()), buf.data(),
                                      n) == 2 * n);
  for (int32_t i = 0; i < 2 * n; ++i)
    FUZZ_CHECK(hex[i] == std::toupper(static_cast<unsigned char>(text[i])));
  FUZZ_CHECK(hex[2 * n] == '\0');
  return 0;
}
