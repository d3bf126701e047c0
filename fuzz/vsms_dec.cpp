// VSMS decoder over arbitrary bytes: reading message after message never
// faults and always moves on, a result below 1 leaves the record cleared,
// and each message read is a fixed point of VSMS from one pass on.
#include "vsms_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::quietAsserts();
  tarnex::ScratchStrStrm in(reinterpret_cast<const char *>(data), static_cast<int32_t>(size));
  fuzz::Sms item;
  int64_t last = -1;
  int32_t rc;
  while ((rc = Vsms_dec(in, &item, nullptr)) == 1) {
    FUZZ_CHECK(IStrm_tell(in) > last);
    last = IStrm_tell(in);
    FUZZ_CHECK(item.udhLen >= 0 && item.udhLen <= 140);
    fuzz::checkVsmsFixedPoint(&item);
  }
  FUZZ_CHECK(rc <= 0 && fuzz::isCleared(item));
  return 0;
}
