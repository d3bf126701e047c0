// The presentation of a multimedia message as one fixed block: what the
// decoder reads out of a SMIL part and what the encoder writes into one.
// Its slots bound what a presentation can hold; whatever lies past them
// (a seventeenth region, a hundred-and-first par, a fifth medium of a par)
// is not stored, and no counter runs past its array.
#ifndef OSTREL_DETAIL_MMSSMIL_H
#define OSTREL_DETAIL_MMSSMIL_H

#include <cstdint>
#include <cstring>
#include <string_view>

#include "detail/BoundedInt.h"
#include "ostrel/MmsItem.h"
#include "tarnex/tarnex.h"

namespace ostrel::detail {

inline constexpr uint32_t kMmsSmilRegions = 16;
inline constexpr uint32_t kMmsSmilPars = 100;
inline constexpr uint32_t kMmsSmilItems = 4;

struct MmsSmilRegion {
  char id[33];
  uint32_t width, height, top, left;  // percent of the root layout
};

struct MmsSmilItem {
  char cls[17];  // "img", "text", "audio", "video" or "ref"
  char src[257];
  char region[33];
};

struct MmsSmilPar {
  int32_t dur;  // milliseconds
  MmsSmilItem items[kMmsSmilItems];
  uint32_t itemCount;
};

struct MmsSmil {
  uint32_t rootWidth, rootHeight;  // pixels; 0 when absent
  MmsSmilRegion regions[kMmsSmilRegions];
  uint32_t regionCount;
  MmsSmilPar pars[kMmsSmilPars];
  uint32_t parCount;
};

// Region classes: one bit set a region, from its geometry.
inline constexpr uint32_t MMS_REGION_FULL = 0x01;
inline constexpr uint32_t MMS_REGION_TOP = 0x02;
inline constexpr uint32_t MMS_REGION_BOTTOM = 0x04;
inline constexpr uint32_t MMS_REGION_LEFT = 0x08;
inline constexpr uint32_t MMS_REGION_RIGHT = 0x10;

// A zeroed MmsSmil on the heap: at some 120 KB it has no place on a
// caller's thread stack.
class SmilBlock {
 public:
  SmilBlock();
  ~SmilBlock();
  SmilBlock(const SmilBlock &) = delete;
  SmilBlock &operator=(const SmilBlock &) = delete;
  MmsSmil *operator->() const { return smil_; }
  MmsSmil &operator*() const { return *smil_; }

 private:
  MmsSmil *smil_;
};

// Percent of base that a "width", "height", "top" or "left" value stands
// for: "30%" as it stands, "100px" or "100" against the root layout, and
// half of it while no root layout has been seen.
inline uint32_t mms_dec_dim(uint32_t base, const char *value) {
  char copy[33];
  kvo_strxfrm(copy, value, sizeof copy);
  if (std::strchr(copy, '%') != nullptr) return static_cast<uint32_t>(boundedAtoi(copy));
  if (char *px = kvo_stristr(copy, "px")) *px = '\0';
  const int64_t n = boundedAtoi(copy);
  if (base == 0) return n != 0 ? 50 : 0;
  return static_cast<uint32_t>(n * 100 / static_cast<int64_t>(base));
}

// The class of a region by its geometry; a region with no size at all
// stands at the top left, or in the class 0x100 that no layout tests.
inline uint32_t mms_region_class(const MmsSmilRegion &r) {
  if (r.width == 0 && r.height == 0) {
    if (r.left == 0 && r.top == 0) return MMS_REGION_FULL | MMS_REGION_TOP | MMS_REGION_LEFT;
    if (r.left == 0) return MMS_REGION_BOTTOM;
    if (r.top == 0) return MMS_REGION_RIGHT;
    return 0x100;  // a class no layout tests
  }
  if (r.height < 100) return r.top != 0 ? MMS_REGION_BOTTOM : MMS_REGION_TOP;
  if (r.width < 100) return r.left != 0 ? MMS_REGION_RIGHT : MMS_REGION_LEFT;
  if (r.top == 0) return r.left == 0 ? MMS_REGION_FULL : MMS_REGION_RIGHT;
  return MMS_REGION_BOTTOM;
}
// Parses the SMIL text into a fresh MmsSmil and appends its slides to
// item. A text that does not parse gives no slide.
void mms_dec_smil(MmsItem *item, std::string_view text);
void mms_smil_to_slides(MmsItem *item, const MmsSmil &smil);

}  // namespace ostrel::detail

#endif  // OSTREL_DETAIL_MMSSMIL_H
