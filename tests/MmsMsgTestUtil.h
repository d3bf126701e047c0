// Helpers of the MMS message tests, fuzz targets and benchmark (no test
// framework in here): a scoped item, a fixed clock, and a whole record
// rendered as text so that two records compare as strings.
#ifndef OSTREL_TESTS_MMSMSGTESTUTIL_H
#define OSTREL_TESTS_MMSMSGTESTUTIL_H

#include <cstring>
#include <string>
#include <string_view>

#include "MmsTestUtil.h"

namespace mmstest {

struct Item {
  MmsItem *p = MmsItem_new(nullptr);
  Item() = default;
  ~Item() { MmsItem_delete(p); }
  Item(const Item &) = delete;
  Item &operator=(const Item &) = delete;
  MmsItem *operator->() const { return p; }
  operator MmsItem *() const { return p; }
};

// The clock stands at `secs` while the object lives.
class FixedClock {
 public:
  explicit FixedClock(uint32_t secs) : secs_(secs) {
    old_ = Tarnex_setClock(now, &secs_, &oldCtx_);
  }
  ~FixedClock() { Tarnex_setClock(old_, oldCtx_, nullptr); }
  FixedClock(const FixedClock &) = delete;
  FixedClock &operator=(const FixedClock &) = delete;

 private:
  static uint32_t now(void *ctx) { return *static_cast<uint32_t *>(ctx); }
  uint32_t secs_;
  KvoClockFn old_;
  void *oldCtx_ = nullptr;
};

// Texts compare as C strings: a decoded UTF-8 subject keeps its closing 0
// inside its length.
inline std::string cstr(const KvoStr &s) { return s.buf; }

inline std::string bytesOf(IStrm *s) {
  const int64_t here = IStrm_tell(s);
  IStrm_rewind(s);
  std::string out(static_cast<size_t>(IStrm_size(s)), '\0');
  const int32_t got = IStrm_read(s, out.data(), static_cast<int32_t>(out.size()));
  out.resize(got > 0 ? static_cast<size_t>(got) : 0);
  IStrm_seek(s, here, KVO_SEEK_SET);
  return out;
}

// "slide L/D text,img1,img2,audio,video" and "media NAME TYPE SIZE:HASH"
// lines after the header's line. The encoder writes a type from the name
// alone, so a round trip compares without types.
inline std::string renderItem(MmsItem *item, bool withHeader = true, bool withTypes = true) {
  std::string out = withHeader ? render(item->hdr) + "\n" : "";
  MmsSlideEnum *slides = MmsItem_slides(item);
  while (const MmsSlide *s = MmsSlideEnum_next(slides)) {
    out += "slide " + std::to_string(s->layout) + "/" + std::to_string(s->dur) + " " +
           cstr(s->text) + "," + cstr(s->img1) + "," + cstr(s->img2) + "," + cstr(s->audio) +
           "," + cstr(s->video) + "\n";
  }
  MmsSlideEnum_delete(slides);
  MmsMediaEnum *media = MmsItem_medias(item);
  while (const MmsMedia *m = MmsMediaEnum_next(media)) {
    const std::string bytes = bytesOf(m->strm);
    uint32_t hash = 2166136261u;
    for (unsigned char c : bytes) hash = (hash ^ c) * 16777619u;
    out += "media " + cstr(m->name) + " " + (withTypes ? cstr(m->type) : "-") + " " + std::to_string(bytes.size()) +
           ":" + std::to_string(hash) + "\n";
  }
  MmsMediaEnum_delete(media);
  return out;
}

// Media names invented from the process-wide counter ("12.jpg") with the
// number masked ("#.jpg"): two reads of one message differ in them.
inline std::string maskCounters(std::string text) {
  for (size_t at = text.find("\nmedia "); at != std::string::npos;
       at = text.find("\nmedia ", at + 1)) {
    const size_t from = at + 7;
    size_t to = from;
    while (to < text.size() && text[to] >= '0' && text[to] <= '9') ++to;
    if (to > from && to < text.size() && text[to] == '.') text.replace(from, to - from, "#");
  }
  return text;
}

struct Decoded {
  int32_t rc;
  std::string text;  // renderItem
};

inline Decoded decodeWith(IStrm *in) {
  Item item;
  const int32_t rc = mms_dec(in, item);
  return {rc, renderItem(item)};
}

}  // namespace mmstest

#endif  // OSTREL_TESTS_MMSMSGTESTUTIL_H
