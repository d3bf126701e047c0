// The folder listing over arbitrary bytes: see listing_fuzz.h. A trip
// through the writer keeps the name, kind, dates and permissions, and the
// size of a file; type is lost.
#include "fld_listing_fuzz.h"

namespace {

struct Folders : testutil::FolderOps {
  static std::string facts(const FldItem &f, uint32_t size) {
    return fuzz::wideText(f.name) + '|' + std::to_string(f.attrs) + '|' +
           std::to_string(f.perms) + '|' + std::to_string(size) + '|' +
           fuzz::dateText(f.created) + '|' + fuzz::dateText(f.modified) + '|' +
           fuzz::dateText(f.accessed);
  }
  static std::string render(const FldItem &f) { return facts(f, f.size) + '|' + fuzz::str(f.type); }
  static std::string kept(const FldItem &f) {
    return facts(f, (f.attrs & FLD_ATTR_FILE) ? f.size : 0) + '|';
  }
  static bool rawSafe(const FldItem &f) { return fuzz::nameSafe(fuzz::wideText(f.name)); }
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
  fuzz::quietReports();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  return fuzz::listingFuzz<Folders>(data, size);
}
