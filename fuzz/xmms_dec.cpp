// The MMS listing over arbitrary bytes: see listing_fuzz.h. A trip through
// the writer keeps what the entry's kind writes: a folder its name and
// permissions, an item the rest; a status with no word comes back 0.
#include "fld_listing_fuzz.h"

namespace {

bool oneWord(int32_t stat) {
  return stat == XMMS_STAT_DEF || stat == XMMS_STAT_UNREAD || stat == XMMS_STAT_READ ||
         stat == XMMS_STAT_UNSENT || stat == XMMS_STAT_SENT;
}

struct Messages : testutil::MessageOps {
  static std::string facts(const XmmsItem &x, bool item, bool folder) {
    using fuzz::str;
    std::string out = str(x.name) + '|' + std::to_string(x.attrs) + '|' +
                      std::to_string(folder ? x.perms : -1) + '|';
    if (!item) return out + "0|0||||||";
    return out + std::to_string(oneWord(x.stat) ? x.stat : 0) + '|' + std::to_string(x.size) +
           '|' + str(x.from) + '|' + str(x.to) + '|' + str(x.cc) + '|' + str(x.bcc) + '|' +
           str(x.title) + '|' + fuzz::dateText(x.xptTime);
  }
  static std::string render(const XmmsItem &x) {
    using fuzz::str;
    return str(x.name) + '|' + std::to_string(x.attrs) + '|' + std::to_string(x.perms) + '|' +
           std::to_string(x.stat) + '|' + std::to_string(x.size) + '|' + str(x.from) + '|' +
           str(x.to) + '|' + str(x.cc) + '|' + str(x.bcc) + '|' + str(x.title) + '|' +
           fuzz::dateText(x.xptTime);
  }
  static std::string kept(const XmmsItem &x) {
    return facts(x, x.attrs & XMMS_ATTR_ITEM, x.attrs & XMMS_ATTR_FOLDER);
  }
  static bool rawSafe(const XmmsItem &x) {
    for (const KvoStr *s : {&x.from, &x.to, &x.cc, &x.bcc, &x.title})
      if (!fuzz::rawSafeText(fuzz::str(*s))) return false;
    return fuzz::nameSafe(fuzz::str(x.name));
  }
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
  fuzz::quietReports();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  return fuzz::listingFuzz<Messages>(data, size);
}
