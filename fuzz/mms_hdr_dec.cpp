// Property: mms_dec_hdr takes any bytes without a fault, with 0 or -51, and
// stops inside the input; reading them in place (a stream that lends its
// buffer), through windows of 1 and 5 bytes, and byte by byte (one that
// lends none) gives the same header, the same result and the same end.
#include "../tests/MmsTestUtil.h"
#include "fuzz_check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static const bool quiet = [] {  // a Content-Type that starts with 0x00 is reported
    Tarnex_setAssertHandler([](void *, const char *, const char *, int32_t) {}, nullptr, nullptr);
    return true;
  }();
  (void)quiet;
  if (size > 1 << 16) return 0;
  const std::string_view bytes(reinterpret_cast<const char *>(data), size);
  const auto read = mmstest::readAgreed(bytes);
  FUZZ_CHECK(read.has_value());
  FUZZ_CHECK(read->rc == 0 || read->rc == OSTREL_SHORT);
  FUZZ_CHECK(read->pos >= 0 && read->pos <= static_cast<int64_t>(size));
  return 0;
}
