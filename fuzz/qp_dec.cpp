// Property: qp_dec_str_to_buf takes any text without a fault and never
// writes past `size`; a smaller buffer gets a prefix of what a large one
// gets; and the decoded bytes, encoded again (width and column taken from
// the input), give lines within the width, of printable bytes, blanks and
// whole escapes only, that decode to themselves.
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

namespace {

bool isHexUpper(char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'); }

// Lines within the width (the first counted from the column, and allowed
// the soft break alone when the column is already past it); "=" only as a
// whole escape or a soft break; no blank at a line's end or start.
void checkLayout(const std::string &t, int32_t width, int32_t column) {
  size_t col = static_cast<size_t>(std::max(column, int32_t{0}));
  const size_t limit = width >= 4 ? static_cast<size_t>(width) : SIZE_MAX;
  for (size_t i = 0; i < t.size(); ++i) {
    const unsigned char c = static_cast<unsigned char>(t[i]);
    if (c == '=' && t.compare(i + 1, 2, "\r\n") == 0) {
      FUZZ_CHECK(col + 1 <= limit || (i == 0 && column >= width));
      FUZZ_CHECK(i == 0 || (t[i - 1] != ' ' && t[i - 1] != '\t'));
      i += 2;
      col = 0;
      continue;
    }
    FUZZ_CHECK((c >= 0x21 && c <= 0x7E) || c == ' ' || c == '\t');
    if (c == ' ' || c == '\t') FUZZ_CHECK(col > 0 && i + 1 < t.size());
    size_t len = 1;
    if (c == '=') {
      FUZZ_CHECK(i + 2 < t.size() && isHexUpper(t[i + 1]) && isHexUpper(t[i + 2]));
      len = 3;
    }
    col += len;
    FUZZ_CHECK(col <= limit);
    i += len - 1;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 2 || size > (1u << 20)) return 0;
  const int32_t width = data[0] % 100 - 1;  // -1 (no breaks) .. 98
  const int32_t column = data[1] % 100;
  const std::string text(reinterpret_cast<const char *>(data + 2), size - 2);
  const int32_t room = static_cast<int32_t>(text.size());
  const std::vector<uint8_t> buf =
      fuzz::decodeBounded(qp_dec_str_to_buf, text, room > 0 ? data[1] % (room + 1) : 0);
  const int32_t n = static_cast<int32_t>(buf.size());

  tarnex::ScratchStrStrm in(reinterpret_cast<const char *>(buf.data()), n);
  tarnex::ScratchMemStrm out(0);
  const int32_t len = qp_enc_strm_from_strm(out, in, width, column);
  FUZZ_CHECK(len >= 0 && len == IStrm_size(out));
  const std::string coded(reinterpret_cast<const char *>(MemStrm_data(out)),
                          static_cast<size_t>(len));
  checkLayout(coded, width, column);
  std::vector<uint8_t> back(coded.size() + 1);
  const int32_t k =
      qp_dec_str_to_buf(coded.c_str(), back.data(), static_cast<int32_t>(back.size()));
  FUZZ_CHECK(k == n);
  FUZZ_CHECK(std::equal(back.begin(), back.begin() + k, buf.begin()));
  return 0;
}
