// 3G message decoder over arbitrary text: a defined result, the record
// cleared below 1 and closed by its "uri=" line at 1, and a message read is
// a fixed point of VSMS from one pass on.
#include <string>

#include "vsms_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::quietAsserts();
  fuzz::Sms item;
  // Whole bytes, and the same bytes as a terminated text measured by the reader.
  const std::string text(reinterpret_cast<const char *>(data), size);
  const int32_t rc = Vsms_dec_3g(text.data(), static_cast<int32_t>(text.size()), &item);
  fuzz::Sms measured;
  const int32_t rcMeasured = Vsms_dec_3g(text.c_str(), 0, &measured);
  if (text.find('\0') == std::string::npos) FUZZ_CHECK(rc == rcMeasured);
  FUZZ_CHECK(rc <= 1);
  if (rc < 1) {
    FUZZ_CHECK(fuzz::isCleared(item));
    return 0;
  }
  const std::string ext(KvoStr_buf(&item.extInfo), static_cast<size_t>(KvoStr_len(&item.extInfo)));
  const std::string uri = "uri=/sms/me\r\n";
  FUZZ_CHECK(ext.size() >= uri.size() && ext.compare(ext.size() - uri.size(), uri.size(), uri) == 0);
  fuzz::checkVsmsFixedPoint(&item);
  return 0;
}
