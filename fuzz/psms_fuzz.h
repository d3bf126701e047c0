// What the PDU fuzz targets share: a quiet record, and the check that a
// decoded record, encoded and decoded again, is a fixed point of the codec
// from the second encoding on.
#ifndef OSTREL_FUZZ_PSMS_FUZZ_H
#define OSTREL_FUZZ_PSMS_FUZZ_H

#include <cstring>
#include <string>

#include "fuzz_check.h"
#include "ostrel/ostrel.h"

namespace fuzz {

// Input can reach the codec's checks; they report, and the run goes on.
inline void quietAsserts() {
  static const bool once = [] {
    Tarnex_setAssertHandler([](void *, const char *, const char *, int32_t) {}, nullptr, nullptr);
    return true;
  }();
  (void)once;
}

struct Sms : SmsItem {
  Sms() { SmsItem_new(this); }
  ~Sms() { SmsItem_delete(this); }
};

inline std::string encoded(const SmsItem *item) {
  uint8_t pdu[400];
  const int32_t n = Psms_encPdu(pdu, sizeof pdu, item);
  FUZZ_CHECK(n == -81 || (n > 0 && n < 200));
  return n < 0 ? std::string() : std::string(reinterpret_cast<char *>(pdu), static_cast<size_t>(n) + 1);
}

// The first encoding may still change a field (an alphanumeric number cut
// to digits alone is written as digits next time); from the second on, the
// octets stay the same through decode and encode, binary and IRA alike.
inline void checkFixedPoint(const SmsItem *item) {
  // `coding` bits in 0x0C name another alphabet than the one written: such
  // a PDU is not meant to read back (only a cut PDU leaves them on a text).
  if (item->type == SMS_UNKN || (item->coding & 0x0C)) return;
  const std::string first = encoded(item);
  if (first.empty()) return;
  Sms once;
  const auto *p = reinterpret_cast<const uint8_t *>(first.data());
  FUZZ_CHECK(Psms_decPdu(p, static_cast<int32_t>(first.size()), &once) == 0);
  const std::string second = encoded(&once);
  FUZZ_CHECK(!second.empty());
  Sms twice, viaIra;
  const auto *q = reinterpret_cast<const uint8_t *>(second.data());
  FUZZ_CHECK(Psms_decPdu(q, static_cast<int32_t>(second.size()), &twice) == 0);
  FUZZ_CHECK(encoded(&twice) == second);
  char ira[400];
  const int32_t n = Psms_encIra(ira, sizeof ira, &twice);
  FUZZ_CHECK(n == 2 * static_cast<int32_t>(second.size()) - 2);
  FUZZ_CHECK(Psms_decIra(ira, -1, &viaIra) == 0);
  FUZZ_CHECK(encoded(&viaIra) == second);
}

}  // namespace fuzz

#endif
