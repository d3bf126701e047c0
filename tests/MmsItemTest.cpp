// The multimedia message record and the tables of the wire and of SMIL.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "detail/MmsTables.h"
#include "ostrel/ostrel.h"
#include "tarnex/scratch.hpp"

namespace {

using namespace ostrel::detail;

struct Item : MmsItem {
  Item() { MmsItem_new(this); }
  ~Item() { MmsItem_delete(this); }
};

// A caller's own slide and medium, constructed member by member.
struct Slide : MmsSlide {
  Slide() {
    layout = dur = 0;
    for (KvoStr *s : {&text, &img1, &img2, &audio, &video}) KvoStr_new(s);
  }
  ~Slide() {
    for (KvoStr *s : {&text, &img1, &img2, &audio, &video}) KvoStr_delete(s);
  }
};

struct Media : MmsMedia {
  explicit Media(bool withStrm = true) {
    KvoStr_new(&name);
    KvoStr_new(&type);
    strm = withStrm ? MemStrm_xcreatex__(nullptr, 0, __FILE__, __LINE__) : nullptr;
    std::memset(extra, 0, sizeof extra);
  }
  ~Media() {
    KvoStr_delete(&name);
    KvoStr_delete(&type);
    IStrm_delete(strm);
  }
  void set(const char *n, const char *t, const std::string &bytes, uint8_t mark) {
    KvoStr_setStr(&name, n);
    KvoStr_setStr(&type, t);
    IStrm_clear(strm);
    IStrm_write(strm, bytes.data(), static_cast<int32_t>(bytes.size()));
    extra[63] = mark;
  }
};

std::string bytesOf(IStrm *s) {
  return {reinterpret_cast<const char *>(MemStrm_data(s)), static_cast<size_t>(IStrm_size(s))};
}

std::vector<std::string> addresses(MmsAddrEnum *e) {
  std::vector<std::string> out;
  tarnex::ScratchStr<64> a;
  while (MmsAddrEnum_next(e, a) == 1) out.emplace_back(a.c_str());
  EXPECT_EQ(a.len(), 0);
  return out;
}

TEST(MmsItem, CopiesOutliveTheCallersSlideAndMedium) {
  Item item;
  EXPECT_EQ(MmsItem_slideCount(&item), 0);
  EXPECT_EQ(MmsItem_mediaCount(&item), 0);
  {
    Slide slide;
    KvoStr_setStr(&slide.text, "t.txt");
    KvoStr_setStr(&slide.img2, "b.jpg");
    slide.layout = 14;
    MmsItem_addSlide(&item, &slide);  // dur 0 becomes the default
    slide.dur = 7;
    MmsSlide_clear(&slide);
    KvoStr_setStr(&slide.audio, "a.amr");
    MmsItem_addSlide(&item, &slide);
    Media media;
    media.set("pic.JPG", "image/jpeg", std::string("\xFF\xD8\0x", 4), 0xAB);
    MmsItem_addMedia(&item, &media);
    MmsMedia_clear(&media);
    EXPECT_EQ(IStrm_size(media.strm), 0);
  }
  MmsSlideEnum *slides = MmsItem_slides(&item);
  MmsSlide *first = MmsSlideEnum_next(slides), *second = MmsSlideEnum_next(slides);
  EXPECT_EQ(MmsSlideEnum_next(slides), nullptr);
  MmsSlideEnum_delete(slides);
  ASSERT_TRUE(first && second);
  EXPECT_EQ(std::string(first->text.buf) + "|" + first->img2.buf, "t.txt|b.jpg");
  EXPECT_EQ(first->layout, 14);
  EXPECT_EQ(first->dur, MMS_SLIDE_DUR_DEFAULT);
  EXPECT_EQ(std::string(second->audio.buf) + "|" + second->text.buf, "a.amr|");
  EXPECT_EQ(second->dur, 7);

  MmsMediaEnum *medias = MmsItem_medias(&item);
  MmsMedia *m = MmsMediaEnum_next(medias);
  EXPECT_EQ(MmsMediaEnum_next(medias), nullptr);
  MmsMediaEnum_delete(medias);
  ASSERT_NE(m, nullptr);
  EXPECT_EQ(bytesOf(m->strm), std::string("\xFF\xD8\0x", 4));
  EXPECT_EQ(m->extra[63], 0xAB);
  EXPECT_EQ(MmsItem_mediaCount(&item), 1);
  EXPECT_EQ(MmsItem_slideCount(&item), 2);
}

TEST(MmsItem, MediaLookupIgnoresCaseAndFindsTheFirst) {
  Item item;
  Media in;
  in.set("image.jpg", "image/jpeg", "first", 1);
  MmsItem_addMedia(&item, &in);
  in.set("IMAGE.JPG", "image/png", "second", 2);
  MmsItem_addMedia(&item, &in);

  Media out;
  out.set("junk", "junk", "junk", 9);
  ASSERT_EQ(MmsItem_media(&item, &out, "Image.Jpg"), 0);
  EXPECT_EQ(std::string(out.name.buf) + " " + out.type.buf + " " + bytesOf(out.strm),
            "image.jpg image/jpeg first");
  EXPECT_EQ(out.extra[63], 1);
  EXPECT_EQ(MmsItem_media(&item, &out, "image.jpeg"), OSTREL_NOT_FOUND);

  Media noStrm(false);  // no stream: name, type and extra only
  EXPECT_EQ(MmsItem_media(&item, &noStrm, "image.jpg"), 0);
  EXPECT_EQ(std::string(noStrm.type.buf), "image/jpeg");
  EXPECT_EQ(noStrm.strm, nullptr);
}

TEST(MmsHdr, AddressesJoinAndEnumerate) {
  MmsHdr hdr;
  MmsHdr_new(&hdr);
  MmsHdr_addTo(&hdr, "a");
  MmsHdr_addTo(&hdr, "b");
  EXPECT_STREQ(hdr.tos.buf, "a,b");
  KvoStr_setStr(&hdr.ccs, "a;b,c");
  MmsAddrEnum *e = MmsHdr_ccs(&hdr);
  EXPECT_EQ(addresses(e), (std::vector<std::string>{"a", "b", "c"}));
  MmsAddrEnum_reset(e);
  EXPECT_EQ(addresses(e).size(), 3u);
  MmsAddrEnum_delete(e);
  e = MmsHdr_bccs(&hdr);
  EXPECT_TRUE(addresses(e).empty());
  MmsAddrEnum_delete(e);
  MmsHdr_delete(&hdr);
}

TEST(MmsTables, ContentTypeCodes) {
  tarnex::ScratchStr<64> t;
  EXPECT_EQ(mms_type_of_code(t, 0x80), 0);
  EXPECT_STREQ(t.c_str(), "application/octet-stream");
  EXPECT_EQ(mms_type_of_code(t, 0x8E), 0);
  EXPECT_STREQ(t.c_str(), "multipart/byterantes");
  EXPECT_EQ(mms_type_of_code(t, 0xCE), 0);
  EXPECT_STREQ(t.c_str(), "application/vnd.syncml.ds.notification");
  tarnex::ScratchStr<64> none;
  EXPECT_EQ(mms_type_of_code(none, 0xCF), OSTREL_NOT_FOUND);
  EXPECT_EQ(mms_type_of_code(none, 0x1E), OSTREL_NOT_FOUND);
  EXPECT_EQ(none.len(), 0);

  tarnex::ScratchStr<16> ext;
  EXPECT_STREQ(mms_ext_of_type(ext, "IMAGE/JPEG"), "jpg");
  EXPECT_EQ(mms_ext_of_type(ext, "video/3gp"), nullptr);
  EXPECT_STREQ(ext.c_str(), "jpg");  // left as it was
  EXPECT_STREQ(mms_ext_of_code(ext, 0x83), "txt");
  EXPECT_EQ(mms_ext_of_code(ext, 0x80), nullptr);  // octet-stream has no extension
  EXPECT_EQ(mms_ext_of_code(ext, 0xFF), nullptr);
  EXPECT_STREQ(ext.c_str(), "txt");
}

TEST(MmsTables, TypeWrittenForAFileName) {
  const struct {
    const char *name;
    std::string wire;
  } rows[] = {
      {"A.JPG", "\x9E"},
      {"x.txt", "\x83"},
      {"photo.bmp", std::string("image/bmp\0", 10)},
      {"PHOTO.BMP", std::string("image/BMP\0", 10)},
      {"clip.3gp", std::string("video/3gp\0", 10)},
      {"readme", std::string("type/unknow\0", 12)},
      {"readme.", std::string("type/unknow\0", 12)},
      {"song.mid", std::string("type/unknow\0", 12)},
      {"song.mpg,mid", std::string("audio/mpg,mid\0", 14)},
      {"a.ogg", std::string("application/ogg\0", 16)},
      {"a.docx", std::string("application/msword\0", 19)},
      {"x.wav", std::string("audio/wav\0", 10)},
  };
  for (const auto &row : rows) {
    tarnex::ScratchMemStrm out(0);
    EXPECT_EQ(mms_enc_type(out, row.name), 0);
    EXPECT_EQ(bytesOf(out), row.wire) << row.name;
  }
  EXPECT_EQ(mms_word_in(kMmsAudioExts, "MPG,MID"), 1);
  EXPECT_EQ(mms_word_in(kMmsAudioExts, "mpg"), 0);
}

TEST(MmsTables, RegionOfEveryLayoutAndClass) {
  // text, img1, img2, video for layouts 0-15; "-" where the layout has no
  // place for the medium and the whole screen is given.
  const char *const kWant[16][4] = {
      {"-", "-", "-", "-"},           {"full", "-", "-", "-"},
      {"-", "full", "full", "-"},     {"-", "-", "-", "full"},
      {"bottom", "top", "top", "-"},  {"top", "bottom", "bottom", "-"},
      {"left", "right", "right", "-"}, {"right", "left", "left", "-"},
      {"bottom", "-", "-", "top"},    {"top", "-", "-", "bottom"},
      {"left", "-", "-", "right"},    {"right", "-", "-", "left"},
      {"-", "left", "right", "-"},    {"-", "top", "bottom", "-"},
      {"bottom", "topleft", "topright", "-"}, {"top", "bottomleft", "bottomright", "-"},
  };
  for (int32_t layout = 0; layout < 16; ++layout) {
    const char *got[4] = {mms_region_of(layout, "text", 0), mms_region_of(layout, "IMG", 0),
                          mms_region_of(layout, "img", 1), mms_region_of(layout, "video", 0)};
    for (int k = 0; k < 4; ++k) {
      const std::string want = kWant[layout][k][0] == '-' ? "full" : kWant[layout][k];
      EXPECT_EQ(got[k], want) << "layout " << layout << " column " << k;
    }
  }
  for (int32_t outside : {-1, 16, 1000}) EXPECT_STREQ(mms_region_of(outside, "img", 0), "full");
  EXPECT_STREQ(mms_region_of(4, "audio", 0), "full");
}

}  // namespace
