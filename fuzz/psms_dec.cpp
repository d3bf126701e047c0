// Property: Psms_decPdux takes any octets (the first byte picks expType and
// the carrier: a buffer of exactly the PDU's size, or a stream) without a
// fault and with 0 or -81; what it gives, encoded, decodes and encodes to
// the same octets.
#include <vector>

#include "psms_fuzz.h"
#include "tarnex/scratch.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 1 || size > 4096) return 0;
  fuzz::quietAsserts();
  const int32_t expType = data[0] & 3;
  const std::vector<uint8_t> pdu(data + 1, data + size);
  const auto len = static_cast<int32_t>(pdu.size());
  fuzz::Sms item;
  int32_t rc;
  if (data[0] & 4) {
    tarnex::ScratchMemStrm strm(0);
    IStrm_write(strm, pdu.data(), len);
    IStrm_rewind(strm);
    rc = PsmsFile_decPdux(strm, &item, expType);
    if (len >= 256 || len == 0) FUZZ_CHECK(rc == -81);
  } else {
    rc = Psms_decPdux(pdu.data(), len, &item, expType);
  }
  FUZZ_CHECK(rc == 0 || rc == -81);
  fuzz::checkFixedPoint(&item);
  return 0;
}
