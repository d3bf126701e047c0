// Rule decoder over any bytes: it never faults, and a rule it reads comes
// back as the same model from its own text, which is then a fixed point.
#include <cstdint>
#include <cstring>
#include <string>

#include "fuzz_check.h"
#include "ostrel/ostrel.h"
#include "tarnex/scratch.hpp"

namespace {

std::string encode(const RrItem &item) {
  tarnex::ScratchStr<64> out;
  Vrr_enc(out, &item);
  return std::string(out.view());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string text(reinterpret_cast<const char *>(data), size);  // ends at a NUL
  RrItem item;
  const int32_t rc = Vrr_dec(text.c_str(), &item);
  FUZZ_CHECK(rc == 1 || rc == 0 || rc == OSTREL_MALFORMED);
  if (rc != 1) return 0;
  const std::string once = encode(item);
  RrItem again;
  FUZZ_CHECK(Vrr_dec(once.c_str(), &again) == 1);
  FUZZ_CHECK(std::memcmp(&item, &again, sizeof item) == 0);
  FUZZ_CHECK(encode(again) == once);
  return 0;
}
