// Property: iso_dur_dec takes any bytes without a fault; a duration it
// accepts is set and in normal form, so iso_dur_enc writes text that reads
// back to the very same words, and writing that again gives the same text.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "tarnex/dt.h"
#include "tarnex/scratch.hpp"

namespace {

void check(bool ok) {
  if (!ok) std::abort();  // stays on in every build
}

bool same(const KvoDur &a, const KvoDur &b) { return std::memcmp(&a, &b, sizeof a) == 0; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string text(reinterpret_cast<const char *>(data), size);  // terminated copy
  KvoDur dur;
  if (!iso_dur_dec(text.c_str(), &dur)) {
    check(dur.years == KVO_DT_UNSET && dur.hours == KVO_DT_UNSET);
    return 0;
  }
  check(dur.years != KVO_DT_UNSET && dur.hours != KVO_DT_UNSET);

  tarnex::ScratchStr<48> out;
  iso_dur_enc(out, &dur);
  check(out.len() > 0);
  KvoDur again;
  check(iso_dur_dec(out.c_str(), &again) != 0);
  check(same(dur, again));

  tarnex::ScratchStr<48> second;
  iso_dur_enc(second, &again);
  check(out.view() == second.view());
  return 0;
}
