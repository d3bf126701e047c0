// Property: iso_dt_dec takes any bytes without a fault; a date it accepts
// passes KvoDt_chk, iso_dt_enc writes it as text that reads back to the
// same value, and iso_dt_encx__ writes text that reads back to the same
// instant (checked with the C library's timegm, an independent calendar).
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

#include "tarnex/dt.h"
#include "tarnex/scratch.hpp"

namespace {

void check(bool ok) {
  if (!ok) std::abort();  // stays on in every build
}

bool same(const KvoDt &a, const KvoDt &b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// Seconds since 1970 in UTC of a checked value with a time; a floating
// value is taken at `zone`.
int64_t instant(const KvoDt &dt, int32_t zone) {
  struct tm tm {};
  tm.tm_year = dt.year - 1900;
  tm.tm_mon = dt.month - 1;
  tm.tm_mday = dt.day;
  tm.tm_hour = dt.hour;
  tm.tm_min = dt.minute;
  tm.tm_sec = dt.second;
  const int32_t z = dt.zone == KVO_DT_NOZONE ? zone : dt.zone;
  return static_cast<int64_t>(timegm(&tm)) - int64_t{z} * 60;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string text(reinterpret_cast<const char *>(data), size);  // terminated copy
  KvoDt dt;
  if (!iso_dt_dec(text.c_str(), &dt)) {
    check(dt.year == KVO_DT_UNSET && dt.hour == KVO_DT_UNSET);
    return 0;
  }
  check(KvoDt_chk(&dt, 1) != 0);

  tarnex::ScratchStr<48> out;
  iso_dt_enc(out, &dt);
  KvoDt again;
  check(iso_dt_dec(out.c_str(), &again) != 0);
  check(same(dt, again));

  for (int32_t zone : {0, 60, -330, 1439}) {
    iso_dt_encx__(out, &dt, zone);
    KvoDt utc;
    check(iso_dt_dec(out.c_str(), &utc) != 0);
    check(utc.msec == dt.msec);
    if (dt.hour == KVO_DT_UNSET) {
      check(same(dt, utc));
      continue;
    }
    check(utc.zone != KVO_DT_NOZONE);
    check(instant(utc, 0) == instant(dt, zone));
  }
  return 0;
}
