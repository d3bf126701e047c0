// Property: Psms_decIrax takes any text without a fault; for text that is
// all digit pairs it gives what Psms_decPdux gives for those octets; the
// record it gives is a fixed point of encode and decode.
#include <string>
#include <vector>

#include "psms_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 1 || size > (1u << 16)) return 0;
  fuzz::quietAsserts();
  const int32_t expType = data[0] & 3;
  const std::string text(reinterpret_cast<const char *>(data + 1), size - 1);
  const auto len = static_cast<int32_t>(text.size());
  fuzz::Sms viaText;
  const int32_t rc = Psms_decIrax(text.data(), len, &viaText, expType);
  FUZZ_CHECK(rc == 0 || rc == -81);
  std::vector<uint8_t> octets(text.size() / 2 + 1);
  const int32_t n = ira_dec_str_to_buf(text.data(), len, octets.data(), len / 2 + 1);
  if (n == len / 2) {
    fuzz::Sms viaPdu;
    const int32_t rc2 = n > 0 ? Psms_decPdux(octets.data(), n, &viaPdu, expType) : -81;
    FUZZ_CHECK(rc2 == rc);
    FUZZ_CHECK(fuzz::encoded(&viaPdu) == fuzz::encoded(&viaText));
  }
  fuzz::checkFixedPoint(&viaText);
  return 0;
}
