// Property: b64_dec_str_to_buf takes any text without a fault and never
// writes past `size`; a smaller buffer gets a prefix of what a large one
// gets; and the decoded bytes, encoded again (width and start column taken
// from the input) on lines within the width, decode to themselves.
#include <algorithm>
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
  if (size < 2 || size > (1u << 20)) return 0;
  const int32_t width = data[0] % 100 - 1;       // -1 (no breaks) .. 98
  const int32_t start = data[1] % 100 - 1;       // -1 (own lines) .. 98
  const std::string text(reinterpret_cast<const char *>(data + 2), size - 2);
  const int32_t room = static_cast<int32_t>(text.size());
  const std::vector<uint8_t> buf =
      fuzz::decodeBounded(b64_dec_str_to_buf, text, room > 0 ? data[1] % (room + 1) : 0);
  const int32_t n = static_cast<int32_t>(buf.size());

  tarnex::ScratchStrStrm in(reinterpret_cast<const char *>(buf.data()), n);
  tarnex::ScratchMemStrm out(0);
  const int32_t len = b64_enc_strm_from_strm(out, in, width, start);
  FUZZ_CHECK(len >= 0 && len == IStrm_size(out));
  const std::string coded(reinterpret_cast<const char *>(MemStrm_data(out)),
                          static_cast<size_t>(len));
  if (width >= 4) {
    size_t col = start > 0 ? static_cast<size_t>(start) : 0;
    for (size_t i = 0; i < coded.size(); ++i) {
      if (coded[i] == '\r' || coded[i] == '\n') {
        col = 0;
        continue;
      }
      ++col;
      FUZZ_CHECK(col <= static_cast<size_t>(width));
    }
  }
  std::vector<uint8_t> back(coded.size() + 1);
  const int32_t k =
      b64_dec_str_to_buf(coded.c_str(), back.data(), static_cast<int32_t>(back.size()));
  FUZZ_CHECK(k == n);
  FUZZ_CHECK(std::equal(back.begin(), back.begin() + k, buf.begin()));
  return 0;
}
