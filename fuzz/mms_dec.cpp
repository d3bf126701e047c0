// The MMS message decoder over arbitrary bytes, read in place (through the
// stream's window) and byte by byte: both give the same result and record.
#include <string_view>

#include "../tests/MmsMsgTestUtil.h"
#include "fuzz_check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char *>(data), size);
  tarnex::ScratchStrStrm windowed(bytes);
  mmstest::NoWindowStrm plain(bytes);
  const mmstest::Decoded a = mmstest::decodeWith(windowed);
  const mmstest::Decoded b = mmstest::decodeWith(plain);
  FUZZ_CHECK(a.rc == b.rc);
  FUZZ_CHECK(mmstest::maskCounters(a.text) == mmstest::maskCounters(b.text));
  FUZZ_CHECK(a.rc == 0 || a.rc == -1 || a.rc == -51);
  return 0;
}
