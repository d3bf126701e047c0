// The reading of a SMIL presentation: eight elements are looked at, each
// region gets a class from its geometry, and each par becomes a slide in
// one of the sixteen layouts, so that any phone's presentation comes out
// in the small vocabulary the encoder writes.
#include <cstring>
#include <iterator>

#include "detail/BoundedInt.h"
#include "detail/Mms.h"
#include "detail/MmsSmil.h"
#include "detail/Object.h"
#include "tarnex/scratch.hpp"
#include "tarnex/tarnex.h"

namespace ostrel::detail {

namespace {

enum class Elem : uint8_t { kRootLayout, kRegion, kPar, kMedium };

struct ElemRow {
  const char *name;
  Elem elem;
};

constexpr ElemRow kMmsSmilElems[] = {
    {"root-layout", Elem::kRootLayout}, {"region", Elem::kRegion}, {"par", Elem::kPar},
    {"img", Elem::kMedium},             {"text", Elem::kMedium},   {"audio", Elem::kMedium},
    {"video", Elem::kMedium},           {"ref", Elem::kMedium},
};
static_assert(std::size(kMmsSmilElems) == 8);

const ElemRow *rowOf(const char *name) {
  for (const ElemRow &row : kMmsSmilElems)
    if (kvo_stricmp(row.name, name) == 0) return &row;
  return nullptr;
}

bool is(const char *a, const char *b) { return kvo_stricmp(a, b) == 0; }

// The parser's events land here: the frame comes first so that the
// callbacks find the presentation behind it.
struct SmilDec {
  XmlDec dec;
  MmsSmil *smil;
};

MmsSmil &smilOf(XmlDec *dec) { return *reinterpret_cast<SmilDec *>(dec)->smil; }

// "5s" is 5000, "5000ms" and "5000" are 5000, "1.5s" is 1: only a plain
// "s" behind the digits means seconds.
int32_t parseDur(const char *value) {
  const char *rest = value;
  while (*rest >= '0' && *rest <= '9') ++rest;
  const int64_t n = boundedAtoi(value);
  const int64_t ms = is(rest, "s") ? n * 1000 : n;
  return static_cast<int32_t>(ms > INT32_MAX ? INT32_MAX : ms < INT32_MIN ? INT32_MIN : ms);
}

void onRegion(MmsSmil &smil, const char *name, const char *value) {
  if (smil.regionCount >= kMmsSmilRegions) return;
  MmsSmilRegion &r = smil.regions[smil.regionCount];
  if (is(name, "id"))
    kvo_strxfrm(r.id, value, sizeof r.id);
  else if (is(name, "width"))
    r.width = mms_dec_dim(smil.rootWidth, value);
  else if (is(name, "left"))
    r.left = mms_dec_dim(smil.rootWidth, value);
  else if (is(name, "height"))
    r.height = mms_dec_dim(smil.rootHeight, value);
  else if (is(name, "top"))
    r.top = mms_dec_dim(smil.rootHeight, value);
}

void onMedium(MmsSmil &smil, const char *elem, const char *name, const char *value) {
  if (smil.parCount >= kMmsSmilPars) return;
  MmsSmilPar &par = smil.pars[smil.parCount];
  if (par.itemCount >= kMmsSmilItems) return;
  MmsSmilItem &item = par.items[par.itemCount];
  kvo_strxfrm(item.cls, elem, sizeof item.cls);
  if (is(name, "src"))
    kvo_strxfrm(item.src, value, sizeof item.src);
  else if (is(name, "region"))
    kvo_strxfrm(item.region, value, sizeof item.region);
}

void onStart(XmlDec *dec, const char *name, const char **atts) {
  const ElemRow *row = rowOf(name);
  if (row == nullptr || atts == nullptr) return;
  MmsSmil &smil = smilOf(dec);
  for (; atts[0] != nullptr; atts += 2) {
    const char *att = atts[0], *value = atts[1] != nullptr ? atts[1] : "";
    switch (row->elem) {
      case Elem::kRootLayout:
        if (is(att, "width"))
          smil.rootWidth = static_cast<uint32_t>(boundedAtoi(value));
        else if (is(att, "height"))
          smil.rootHeight = static_cast<uint32_t>(boundedAtoi(value));
        break;
      case Elem::kRegion:
        onRegion(smil, att, value);
        break;
      case Elem::kPar:
        if (smil.parCount < kMmsSmilPars && is(att, "dur"))
          smil.pars[smil.parCount].dur = parseDur(value);
        break;
      case Elem::kMedium:
        onMedium(smil, row->name, att, value);
        break;
    }
  }
}

void onEnd(XmlDec *dec, const char *name) {
  const ElemRow *row = rowOf(name);
  if (row == nullptr) return;
  MmsSmil &smil = smilOf(dec);
  switch (row->elem) {
    case Elem::kRegion:
      if (smil.regionCount < kMmsSmilRegions) ++smil.regionCount;
      break;
    case Elem::kPar:
      if (smil.parCount < kMmsSmilPars) ++smil.parCount;
      break;
    case Elem::kMedium:
      if (smil.parCount < kMmsSmilPars && smil.pars[smil.parCount].itemCount < kMmsSmilItems)
        ++smil.pars[smil.parCount].itemCount;
      break;
    case Elem::kRootLayout:
      break;
  }
}

// Owns the parser and its decoder frame for one run.
class SmilParser {
 public:
  explicit SmilParser(MmsSmil *smil) : psr_(XmlPsr_new()) {
    state_.smil = smil;
    XmlDec_new(&state_.dec, psr_);
    XmlDec_reset(&state_.dec);
    XmlDec_setCtxCb(&state_.dec, 0, onStart, onEnd, XmlDec_onDefChr, XmlDec_onDefDef);
  }
  ~SmilParser() {
    XmlDec_delete(&state_.dec);
    XmlPsr_delete(psr_);
  }
  SmilParser(const SmilParser &) = delete;
  SmilParser &operator=(const SmilParser &) = delete;
  int32_t parse(IStrm *strm) { return XmlPsr_parse(psr_, strm); }

 private:
  XmlPsr *psr_;
  SmilDec state_{};
};

const char *withoutCid(const char *src) {
  return kvo_stristr(src, "cid:") == src ? src + 4 : src;
}

}  // namespace

SmilBlock::SmilBlock()
    : smil_(static_cast<MmsSmil *>(kvo_malloc__(sizeof(MmsSmil), __FILE__, __LINE__))) {
  std::memset(static_cast<void *>(smil_), 0, sizeof *smil_);
}

SmilBlock::~SmilBlock() { kvo_free__(smil_, __FILE__, __LINE__); }

namespace {

constexpr uint32_t kImg1 = 0x01, kImg2 = 0x02, kText = 0x04, kVideo = 0x08;

// Text against an image or a video: 5/4/6/7 or 9/8/10/11 by where the
// text stands.
int32_t textBeside(uint32_t textClass, int32_t top, int32_t bottom, int32_t left,
                   int32_t right) {
  if (textClass & (MMS_REGION_TOP | MMS_REGION_FULL)) return top;
  if (textClass & MMS_REGION_BOTTOM) return bottom;
  if (textClass & MMS_REGION_LEFT) return left;
  OSTREL_REQUIRE(textClass & MMS_REGION_RIGHT, "regionType[j] & MMS_REGION_RIGHT");
  return right;
}

// The class of a region id: the first region of that id, else (reported)
// the last one declared; none declared leaves the class as it was.
void classOf(const MmsSmil &smil, const char *id, uint32_t *regionType) {
  uint32_t m = 0;
  while (m < smil.regionCount && kvo_stricmp(smil.regions[m].id, id) != 0) ++m;
  if (!OSTREL_REQUIRE(m < smil.regionCount, "m < smil->regionCount")) {
    if (smil.regionCount == 0) return;
    m = smil.regionCount - 1;
  }
  *regionType = mms_region_class(smil.regions[m]);
}

}  // namespace

void mms_smil_to_slides(MmsItem *item, const MmsSmil &smil) {
  // Carried from slide to slide: an item with no region of its own stands
  // where the item of its slot stood before.
  uint32_t regionType[kMmsSmilItems] = {};
  for (uint32_t p = 0; p < smil.parCount; ++p) {
    const MmsSmilPar &par = smil.pars[p];
    MmsSlide *slide = MmsSlide_new();
    slide->layout = 0;
    slide->dur = par.dur;
    uint32_t kinds = 0, kind[kMmsSmilItems] = {};
    for (uint32_t i = 0; i < par.itemCount; ++i) {
      const MmsSmilItem &it = par.items[i];
      const char *name = withoutCid(it.src);
      if (is(it.cls, "img")) {
        kind[i] = kImg1;
        const bool first = (kinds & kImg1) == 0;
        kinds |= first ? kImg1 : kImg2;
        KvoStr_setStr(first ? &slide->img1 : &slide->img2, name);
      } else if (is(it.cls, "video")) {
        kind[i] = kVideo;
        kinds |= kVideo;
        KvoStr_setStr(&slide->video, name);
      } else if (is(it.cls, "text")) {
        kind[i] = kText;
        kinds |= kText;
        KvoStr_setStr(&slide->text, name);
      } else if (is(it.cls, "audio")) {
        KvoStr_setStr(&slide->audio, name);
      }
      if (it.region[0] != '\0') classOf(smil, it.region, &regionType[i]);
    }
    int32_t layout = 0;
    uint32_t textClass = 0;
    for (uint32_t i = 0; i < par.itemCount; ++i)
      if (kind[i] == kText) textClass = regionType[i];
    switch (kinds) {
      case kImg1 | kImg2 | kText:
        layout = textClass & (MMS_REGION_TOP | MMS_REGION_FULL) ? 15 : 14;
        break;
      case kImg1 | kText:
        layout = textBeside(textClass, 5, 4, 6, 7);
        break;
      case kVideo | kText:
        layout = textBeside(textClass, 9, 8, 10, 11);
        break;
      case kImg1 | kImg2:
        for (uint32_t i = 0; i < par.itemCount; ++i) {
          if (kind[i] != kImg1) continue;
          if (regionType[i] & (MMS_REGION_TOP | MMS_REGION_BOTTOM))
            layout = 13;
          else if (regionType[i] & (MMS_REGION_LEFT | MMS_REGION_RIGHT))
            layout = 12;
        }
        break;
      case kImg1: layout = 2; break;
      case kText: layout = 1; break;
      case kVideo: layout = 3; break;
      default: layout = 0;
    }
    slide->layout = layout;
    MmsItem_addSlide(item, slide);
    MmsSlide_delete(slide);
  }
}

void mms_dec_smil(MmsItem *item, std::string_view text) {
  SmilBlock smil;
  int32_t rc;
  {
    SmilParser parser(&*smil);
    tarnex::ScratchStrStrm strm(text);
    rc = parser.parse(strm);
  }
  if (rc < 0) return;  // the message keeps its media, without slides
  mms_smil_to_slides(item, *smil);
}

}  // namespace ostrel::detail
