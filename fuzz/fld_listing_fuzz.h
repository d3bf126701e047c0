// What the media and folder listings' targets share: their record as text,
// and a handler that keeps the reports of unknown letters quiet.
#ifndef OSTREL_FUZZ_FLD_LISTING_FUZZ_H
#define OSTREL_FUZZ_FLD_LISTING_FUZZ_H

#include <string>

#include "listing_fuzz.h"
#include "ostrel/ostrel.h"

namespace fuzz {

inline std::string wideText(const KvoWcs &w) {
  tarnex::ScratchStr<64> s;
  KvoStr_setCwcs(s, &w);
  return std::string(s.view());
}

inline std::string dateText(const KvoDt &d) {
  tarnex::ScratchStr<48> s;
  if (d.year != KVO_DT_UNSET || d.hour != KVO_DT_UNSET) iso_dt_enc(s, &d);
  return std::string(s.view());
}

inline std::string str(const KvoStr &s) { return std::string(s.buf, s.len); }

// Letters and words outside the tables come from the document: reported,
// and nothing else.
inline void quietReports() {
  Tarnex_setAssertHandler([](void *, const char *, const char *, int32_t) {}, nullptr, nullptr);
}

// A name goes out escaped; it comes back the same unless white space in it
// is normalised on the way.
inline bool nameSafe(const std::string &name) {
  return name.find_first_of("\t\r\n") == std::string::npos;
}

}  // namespace fuzz

#endif  // OSTREL_FUZZ_FLD_LISTING_FUZZ_H
