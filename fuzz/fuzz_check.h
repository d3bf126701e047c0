// What every fuzz target shares: a check that stays on in every build, and
// the bounded-decoding check of the text decoders.
#ifndef OSTREL_FUZZ_FUZZ_CHECK_H
#define OSTREL_FUZZ_FUZZ_CHECK_H

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

// Not assert(): it must hold in release builds too.
#define FUZZ_CHECK(cond)                                                            \
  do {                                                                              \
    if (!(cond)) {                                                                  \
      std::fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #cond); \
      std::abort();                                                                 \
    }                                                                               \
  } while (0)

namespace fuzz {

// Decodes text into an exactly sized buffer (one byte more than the text,
// so a write past the end is caught) and again into one of `small` bytes,
// which must hold the same leading bytes. Gives the whole decoding.
template <class Decode>
std::vector<uint8_t> decodeBounded(Decode decode, const std::string &text, int32_t small) {
  const int32_t room = static_cast<int32_t>(text.size());
  std::vector<uint8_t> buf(static_cast<size_t>(room) + 1);
  const int32_t n = decode(text.c_str(), buf.data(), room + 1);
  FUZZ_CHECK(n >= 0 && n <= room);
  std::vector<uint8_t> part(static_cast<size_t>(small));
  const int32_t m = decode(text.c_str(), part.data(), small);
  FUZZ_CHECK(m == std::min(n, small));
  FUZZ_CHECK(std::equal(part.begin(), part.begin() + m, buf.begin()));
  buf.resize(static_cast<size_t>(n));
  return buf;
}

}  // namespace fuzz

#endif  // OSTREL_FUZZ_FUZZ_CHECK_H
