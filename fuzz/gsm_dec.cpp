// Property: the GSM field readers take any octets, reading none past the
// length given (exact-size copies); what they give, written and read
// again, writes the same octets.
#include <cstring>
#include <vector>

#include "fuzz_check.h"
#include "tarnex/gsm.h"
#include "tarnex/scratch.hpp"

namespace {

void numbers(const std::vector<uint8_t> &in, int32_t readForm) {
  tarnex::ScratchStr<64> first, second;
  const int32_t claim = GsmUtil_getNo(first, in.data(), static_cast<int32_t>(in.size()), readForm);
  FUZZ_CHECK(claim >= 1 && claim <= 256);
  uint8_t a[16], b[16];
  const int32_t n = GsmUtil_encNo(a, sizeof a, first.c_str(), 1 - readForm);
  FUZZ_CHECK(n > 0 && n <= 14);
  FUZZ_CHECK(GsmUtil_getNo(second, a, n, readForm) == n);
  const int32_t m = GsmUtil_encNo(b, sizeof b, second.c_str(), 1 - readForm);
  tarnex::ScratchStr<64> third;
  GsmUtil_getNo(third, b, m, readForm);
  const int32_t k = GsmUtil_encNo(a, sizeof a, third.c_str(), 1 - readForm);
  FUZZ_CHECK(k == m && std::memcmp(a, b, static_cast<size_t>(m)) == 0);
}

void stamp(const std::vector<uint8_t> &in) {
  KvoDt dt, again;
  FUZZ_CHECK(GsmUtil_decObsTime(&dt, in.data(), static_cast<int32_t>(in.size())) == 7);
  uint8_t a[7], b[7];
  FUZZ_CHECK(GsmUtil_encObsTime(a, 7, &dt) == 7);
  GsmUtil_decObsTime(&again, a, 7);
  GsmUtil_encObsTime(b, 7, &again);
  FUZZ_CHECK(std::memcmp(a, b, 7) == 0);
  if (dt.year == KVO_DT_UNSET) FUZZ_CHECK(again.year == KVO_DT_UNSET);
}

void septets(const std::vector<uint8_t> &in, int32_t fill) {
  const auto octets = static_cast<int32_t>(in.size());
  std::vector<uint8_t> s(static_cast<size_t>(octets) * 8 / 7 + 1);
  const int32_t count = GsmUtil_dec7BitStr(s.data(), static_cast<int32_t>(s.size()), in.data(), octets, fill);
  FUZZ_CHECK(count == (octets > 0 ? (octets * 8 - fill) / 7 : 0));
  std::vector<uint8_t> packed(static_cast<size_t>(octets) + 1, 0xEE);
  const int32_t n = GsmUtil_enc7BitStr(packed.data(), octets, s.data(), count, fill);
  FUZZ_CHECK(n <= octets && packed[static_cast<size_t>(octets)] == 0xEE);
  std::vector<uint8_t> back(s.size());
  FUZZ_CHECK(GsmUtil_dec7BitStr(back.data(), count, packed.data(), n, fill) == count);
  FUZZ_CHECK(std::equal(back.begin(), back.begin() + count, s.begin()));
  std::vector<KvoWchar> units(static_cast<size_t>(count) + 1);
  const int32_t u = SmsAlph_from7BitStr(units.data(), count, s.data(), count);
  FUZZ_CHECK(u >= 0 && u <= count);
  std::vector<uint8_t> again(static_cast<size_t>(2 * u) + 1);
  const int32_t k = SmsAlph_to7BitStr(again.data(), 2 * u, units.data(), u);
  FUZZ_CHECK(k >= u && k <= 2 * u);
  char digits[32];
  FUZZ_CHECK(bcd_dec_buf_to_str(digits, sizeof digits, in.data(), octets) < 32);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 1 || size > 1024) return 0;
  const std::vector<uint8_t> in(data + 1, data + size);
  switch (data[0] % 3) {
    case 0: numbers(in, data[0] & 8 ? 1 : 0); break;
    case 1: stamp(in); break;
    default: septets(in, (data[0] >> 2) % 7);
  }
  return 0;
}
