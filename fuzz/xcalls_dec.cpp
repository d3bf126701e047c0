// The call listing over arbitrary bytes: see listing_fuzz.h. A trip
// through the writer keeps the number, duration and type; the date (written
// as "data") and luid are lost.
#include "listing_fuzz.h"
#include "ostrel/ostrel.h"

namespace {

struct Calls : testutil::CallOps {
  static std::string texts(const CallItem &c) {
    return std::string(c.tel.buf, c.tel.len) + '|' + std::string(c.dur.buf, c.dur.len) + '|' +
           std::string(c.type.buf, c.type.len);
  }
  static std::string render(const CallItem &c) {
    tarnex::ScratchStr<48> date;
    iso_dt_enc(date, &c.data);
    return std::to_string(c.luid) + '|' + date.c_str() + '|' + texts(c);
  }
  static std::string kept(const CallItem &c) { return "-1||" + texts(c); }
  static bool rawSafe(const CallItem &c) {
    return fuzz::rawSafeText(c.tel.buf) && fuzz::rawSafeText(c.dur.buf) &&
           fuzz::rawSafeText(c.type.buf);
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  return fuzz::listingFuzz<Calls>(data, size);
}
