// The media listing over arbitrary bytes: see listing_fuzz.h. A trip
// through the writer keeps all but size, type and luid.
#include "fld_listing_fuzz.h"

namespace {

struct Media : testutil::MediaOps {
  static std::string facts(const FldItem &f) {
    using fuzz::str;
    return fuzz::wideText(f.name) + '|' + std::to_string(f.attrs) + '|' + str(f.width) + '|' +
           str(f.height) + '|' + str(f.orient) + '|' + str(f.dur) + '|' + str(f.album) + '|' +
           str(f.artist) + '|' + str(f.title) + '|' + fuzz::dateText(f.created) + '|' +
           fuzz::dateText(f.modified) + '|' + fuzz::dateText(f.accessed);
  }
  static std::string render(const FldItem &f) {
    return facts(f) + '|' + std::to_string(f.size) + '|' + fuzz::str(f.type) + '|' +
           std::to_string(f.luid);
  }
  static std::string kept(const FldItem &f) { return facts(f) + "|0||0"; }
  static bool rawSafe(const FldItem &f) {
    for (const KvoStr *s : {&f.width, &f.height, &f.orient, &f.dur, &f.album, &f.artist, &f.title})
      if (!fuzz::rawSafeText(fuzz::str(*s))) return false;
    return fuzz::nameSafe(fuzz::wideText(f.name));
  }
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
  fuzz::quietReports();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  return fuzz::listingFuzz<Media>(data, size);
}
