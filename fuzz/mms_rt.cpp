// Decode, then encode and decode twice with a fixed clock: what the encoder
// writes of a record it wrote before reads back the same. Texts the wire
// cannot carry as they stand are left out of the comparison: a subject or
// address that begins with a control byte, or an address with a non-ASCII
// byte, goes out plain and comes back as a length or a token; and a medium
// name with a "?" comes back read as an encoded word. A SMIL element with
// an empty src still counts toward its slide's layout but names nothing,
// so the encoder has nothing to write for it: a slide whose layout wants a
// name it lacks is left out too.
#include <string_view>

#include "../tests/MmsMsgTestUtil.h"
#include "fuzz_check.h"

namespace {

bool carried(MmsItem *item) {
  const auto leadsWithControl = [](const KvoStr &s) {
    return s.len != 0 && static_cast<unsigned char>(s.buf[0]) < 0x20;
  };
  if (leadsWithControl(item->hdr.title)) return false;
  // Addresses as the encoder sees them: through the enumerator.
  bool plainAddrs = true;
  tarnex::ScratchStr<128> addr;
  for (MmsAddrEnum *walk : {MmsHdr_tos(&item->hdr), MmsHdr_ccs(&item->hdr), MmsHdr_bccs(&item->hdr)}) {
    while (MmsAddrEnum_next(walk, addr)) {
      if (leadsWithControl(*addr.get())) plainAddrs = false;
      for (unsigned char c : addr.view())
        if (c >= 0x80) plainAddrs = false;
    }
    MmsAddrEnum_delete(walk);
  }
  if (!plainAddrs) return false;
  bool plainNames = true;
  MmsMediaEnum *walk = MmsItem_medias(item);
  while (const MmsMedia *m = MmsMediaEnum_next(walk))
    if (std::string_view(m->name.buf).find('?') != std::string_view::npos) plainNames = false;
  MmsMediaEnum_delete(walk);
  return plainNames;
}

bool layoutsNamed(MmsItem *item) {
  bool named = true;
  MmsSlideEnum *walk = MmsItem_slides(item);
  while (const MmsSlide *s = MmsSlideEnum_next(walk)) {
    const int32_t l = s->layout;
    const bool text = l == 1 || (l >= 4 && l <= 11) || l >= 14;
    const bool img1 = l == 2 || (l >= 4 && l <= 7) || l >= 12;
    const bool video = l == 3 || (l >= 8 && l <= 11);
    if ((text && s->text.len == 0) || (img1 && s->img1.len == 0) ||
        (l >= 12 && s->img2.len == 0) || (video && s->video.len == 0))
      named = false;
  }
  MmsSlideEnum_delete(walk);
  return named;
}

std::string encode(MmsItem *item) {
  tarnex::ScratchMemStrm out(0);
  FUZZ_CHECK(mms_enc(out, item) == 0);
  return mmstest::bytesOf(out);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static int silenced = [] {
    Tarnex_setAssertHandler([](void *, const char *, const char *, int32_t) {}, nullptr, nullptr);
    return 0;
  }();
  (void)silenced;
  mmstest::FixedClock clock(0x60000000);
  tarnex::ScratchStrStrm in(std::string_view(reinterpret_cast<const char *>(data), size));
  mmstest::Item first;
  if (mms_dec(in, first) != 0) return 0;
  const std::string once = encode(first);
  mmstest::Item second, third;
  tarnex::ScratchStrStrm in2(once);
  const int32_t rc2 = mms_dec(in2, second);
  const std::string twice = encode(second);
  tarnex::ScratchStrStrm in3(twice);
  const int32_t rc3 = mms_dec(in3, third);
  if (!carried(first)) return 0;
  FUZZ_CHECK(rc2 == 0);
  if (!carried(second) || !layoutsNamed(second)) return 0;
  FUZZ_CHECK(rc3 == 0);
  const std::string a = mmstest::renderItem(second), b = mmstest::renderItem(third);
  if (a != b) std::fprintf(stderr, "second:\n%s\nthird:\n%s\n", a.c_str(), b.c_str());
  FUZZ_CHECK(a == b);
  return 0;
}
