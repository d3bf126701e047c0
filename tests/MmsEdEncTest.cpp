// The MMS encoder: the fixed header byte for byte, addresses, subjects,
// counts and lengths in their value-length forms, the generated SMIL, and
// round trips through the decoder over every layout.
#include <gtest/gtest.h>

#include <string>

#include "MmsMsgTestUtil.h"

namespace {

using namespace std::string_literals;
using mmstest::Item;

struct Slide : MmsSlide {
  Slide(int32_t l, int32_t d) {
    for (KvoStr *s : {&text, &img1, &img2, &audio, &video}) KvoStr_new(s);
    layout = l;
    dur = d;
  }
  ~Slide() {
    for (KvoStr *s : {&text, &img1, &img2, &audio, &video}) KvoStr_delete(s);
  }
};

void addMedia(MmsItem *item, const std::string &name, const std::string &bytes,
              const char *type = "") {
  MmsMedia m{};
  KvoStr_setStr(KvoStr_new(&m.name), name.c_str());
  KvoStr_setStr(KvoStr_new(&m.type), type);
  tarnex::ScratchMemStrm s(0);
  IStrm_write(s, bytes.data(), static_cast<int32_t>(bytes.size()));
  m.strm = s;
  MmsItem_addMedia(item, &m);
  KvoStr_delete(&m.name);
  KvoStr_delete(&m.type);
}

std::string encode(MmsItem *item, uint32_t clock = 0x60000000) {
  mmstest::FixedClock fixed(clock);
  tarnex::ScratchMemStrm out(0);
  EXPECT_EQ(mms_enc(out, item), 0);
  return mmstest::bytesOf(out);
}

std::string smilOf(const std::string &pars) {
  std::string s =
      "<smil>\r\n<head>\r\n<layout>\r\n<root-layout width=\"128px\" height=\"112px\"/>\r\n";
  for (const char *r : {"top\" width=\"100%\" height=\"50%\" left=\"0%\" top=\"0%",
                        "bottom\" width=\"100%\" height=\"50%\" left=\"0%\" top=\"50%",
                        "left\" width=\"50%\" height=\"100%\" left=\"0%\" top=\"0%",
                        "right\" width=\"50%\" height=\"100%\" left=\"50%\" top=\"0%",
                        "full\" width=\"100%\" height=\"100%\" left=\"0%\" top=\"0%",
                        "topleft\" width=\"50%\" height=\"50%\" left=\"0%\" top=\"0%",
                        "topright\" width=\"50%\" height=\"50%\" left=\"50%\" top=\"0%",
                        "bottomleft\" width=\"50%\" height=\"50%\" left=\"0%\" top=\"50%",
                        "bottomright\" width=\"50%\" height=\"50%\" left=\"50%\" top=\"50%"})
    s += "<region id=\""s + r + "\"/>\r\n";
  return s + "</layout>\r\n</head>\r\n<body>\r\n" + pars + "</body>\r\n</smil>\r\n";
}

const std::string kFixedHeader = "\x8C\x80\x98" "0000\0\x8D\x90\x89\x01\x81"s;
const std::string kContentType =
    "\x84\x1B\xB3\x89" "application/smil\0\x8A<0000>\0"s;

TEST(MmsEnc, WorkedExampleByteForByte) {
  Item item;
  MmsHdr_addTo(&item->hdr, "+4915112345");
  KvoStr_setStr(&item->hdr.title, "Hi");
  Slide slide(1, 3000);
  KvoStr_setStr(&slide.text, "t.txt");
  MmsItem_addSlide(item, &slide);
  addMedia(item, "t.txt", "ok");
  const std::string smil =
      smilOf("<par dur=\"3000ms\">\r\n<text src=\"t.txt\" region=\"full\"/>\r\n</par>\r\n");
  ASSERT_EQ(smil.size(), 799u);
  const std::string expected =
      kFixedHeader + "\x97+4915112345/TYPE=PLMN\0\x96Hi\0\x85\x04\x60\0\0\0"s + kContentType +
      "\x02\x31\x86\x1F\x1C" "application/smil\0\x86" "0000.smil\0\x8E" "0000.smil\0\xC0\"<0000>\0"s +
      smil + "\x12\x02\x0A\x83\x86t.txt\0\x81\xEA\x8Et.txt\0ok"s;
  EXPECT_EQ(encode(item), expected);

  tarnex::ScratchStrStrm in(expected);
  Item back;
  ASSERT_EQ(mms_dec(in, back), 0);
  EXPECT_EQ(mmstest::renderItem(back, false),
            "slide 1/3000 t.txt,,,,\nmedia t.txt text/plain 2:" +
                std::to_string((((2166136261u ^ 'o') * 16777619u) ^ 'k') * 16777619u) + "\n");
  EXPECT_EQ(mmstest::cstr(back->hdr.tos), "+4915112345");
  EXPECT_EQ(back->hdr.msgType, 0x80);
  EXPECT_NE(encode(item, 0x60000001), expected);  // only the date moves
}

TEST(MmsEnc, HeaderFields) {
  const struct {
    std::string tos, ccs, bccs, title;
    std::string fields;  // between the fixed header and the date
  } rows[] = {
      {"+4915112345,abc,0171", "x@y.z", "12a", "",
       "\x97+4915112345/TYPE=PLMN\0\x97" "0171/TYPE=PLMN\0\x82x@y.z\0"s},
      {"", "", "a@b", "\xC3\xA4", "\x96\x05\xEA\x7F\xC3\xA4\0\x81" "a@b\0"s},
      {"1", "", "", std::string(30, '\xE0'),
       "\x97" "1/TYPE=PLMN\0\x96\x1F\x21\xEA\x7F"s + std::string(30, '\xE0') + "\0"s},
      {"", "", "", "a%sb", "\x96" "a%sb\0"s},
  };
  for (const auto &row : rows) {
    Item item;
    KvoStr_setStr(&item->hdr.tos, row.tos.c_str());
    KvoStr_setStr(&item->hdr.ccs, row.ccs.c_str());
    KvoStr_setStr(&item->hdr.bccs, row.bccs.c_str());
    KvoStr_setStr(&item->hdr.title, row.title.c_str());
    const std::string bytes = encode(item);
    EXPECT_EQ(bytes.substr(0, kFixedHeader.size() + row.fields.size() + 1),
              kFixedHeader + row.fields + "\x85") << row.tos;
  }
}

TEST(MmsEnc, CountsAndLengthsInValueLengthForm) {
  for (const auto &[media, count] : {std::pair{29, "\x1E"s}, std::pair{30, "\x1F\x1F"s}}) {
    Item item;
    for (int i = 0; i < media; ++i) addMedia(item, std::to_string(i) + ".txt", "x");
    const std::string bytes = encode(item);
    const size_t at = bytes.find(kContentType) + kContentType.size();
    EXPECT_EQ(bytes.substr(at, count.size() + 1), count + "\x31") << media;
    tarnex::ScratchStrStrm in(bytes);
    Item back;
    EXPECT_EQ(mms_dec(in, back), 0);
    EXPECT_EQ(MmsItem_mediaCount(back), media);
  }
  // A content block of 31 bytes and more takes a longer length and HeadersLen.
  Item item;
  const std::string name = std::string(40, 'n') + ".jpg";
  addMedia(item, name, "j");
  const std::string bytes = encode(item);
  const std::string block = "\x9E\x86"s + name + "\0"s;
  const std::string part = "\x5F\x01\x1F\x2F"s + block + "\x8E"s + name + "\0"s + "j";
  EXPECT_EQ(bytes.substr(bytes.size() - part.size()), part);
  EXPECT_EQ(mms_approx_size(item), 750 + 1 + 24 + 2 * 44u);
}

TEST(MmsEnc, SmilOfOddSlides) {
  Item item;
  EXPECT_EQ(mms_approx_size(item), 750u);
  const std::string empty = encode(item);
  EXPECT_NE(empty.find(kContentType + "\x01"s), std::string::npos);
  EXPECT_NE(empty.find(smilOf("")), std::string::npos);

  Slide all(99, 0);  // a layout no row has; all five names
  for (KvoStr *s : {&all.text, &all.img1, &all.img2, &all.audio, &all.video})
    KvoStr_setStr(s, "a&'<>\".jpg");
  MmsItem_addSlide(item, &all);
  Slide none(-1, 1);
  KvoStr_setStr(&none.img1, "i.gif");
  MmsItem_addSlide(item, &none);
  const std::string e = "a&amp;&apos;&lt;&gt;&quot;.jpg";
  const std::string pars =
      "<par dur=\"1000ms\">\r\n<text src=\"" + e + "\" region=\"full\"/>\r\n<audio src=\"" + e +
      "\"/>\r\n<video src=\"" + e + "\" region=\"full\"/>\r\n<img src=\"" + e +
      "\" region=\"full\"/>\r\n</par>\r\n<par dur=\"1ms\">\r\n<img src=\"i.gif\" region=\"full\"/>\r\n</par>\r\n";
  EXPECT_NE(encode(item).find(smilOf(pars)), std::string::npos);

  for (int i = 0; i < 100; ++i) MmsItem_addSlide(item, &none);
  const std::string many = encode(item);
  size_t pars101 = 0;
  for (size_t at = many.find("<par "); at != std::string::npos; at = many.find("<par ", at + 1))
    ++pars101;
  EXPECT_EQ(pars101, 100u);
}

// Layouts 0-15 with the media each names, and audio beside: record, bytes,
// record keeps addresses, subject, media, layout and duration.
TEST(MmsEnc, RoundTripsEveryLayout) {
  const struct {
    const char *text, *img1, *img2, *video;
  } names[16] = {
      {"", "", "", ""},           {"t.txt", "", "", ""},      {"", "a.jpg", "", ""},
      {"", "", "", "v.3gp"},      {"t.txt", "a.jpg", "", ""}, {"t.txt", "a.jpg", "", ""},
      {"t.txt", "a.jpg", "", ""}, {"t.txt", "a.jpg", "", ""}, {"t.txt", "", "", "v.3gp"},
      {"t.txt", "", "", "v.3gp"}, {"t.txt", "", "", "v.3gp"}, {"t.txt", "", "", "v.3gp"},
      {"", "a.jpg", "b.png", ""}, {"", "a.jpg", "b.png", ""}, {"t.txt", "a.jpg", "b.png", ""},
      {"t.txt", "a.jpg", "b.png", ""},
  };
  for (int32_t layout = 0; layout < 16; ++layout) {
    Item item;
    MmsHdr_addTo(&item->hdr, "+491701234567");
    MmsHdr_addCc(&item->hdr, "a@b.c");
    MmsHdr_addBcc(&item->hdr, "0171");
    KvoStr_setStr(&item->hdr.title, "Grüße");
    Slide slide(layout, 2000 + layout);
    KvoStr_setStr(&slide.audio, "s.amr");
    addMedia(item, "s.amr", "amr", "audio/amr");
    const auto named = [&](KvoStr *member, const char *name, const char *type) {
      if (*name == '\0') return;
      KvoStr_setStr(member, name);
      addMedia(item, name, std::string(name) + " bytes", type);
    };
    named(&slide.text, names[layout].text, "text/plain");
    named(&slide.img1, names[layout].img1, "image/jpeg");
    named(&slide.img2, names[layout].img2, "image/png");
    named(&slide.video, names[layout].video, "video/3gp");
    MmsItem_addSlide(item, &slide);

    const std::string bytes = encode(item);
    tarnex::ScratchStrStrm in(bytes);
    Item back;
    ASSERT_EQ(mms_dec(in, back), 0) << layout;
    EXPECT_EQ(mmstest::renderItem(back, false), mmstest::renderItem(item, false)) << layout;
    EXPECT_EQ(mmstest::cstr(back->hdr.tos), "+491701234567");
    EXPECT_EQ(mmstest::cstr(back->hdr.ccs), "a@b.c");
    EXPECT_EQ(mmstest::cstr(back->hdr.bccs), "0171");
    EXPECT_EQ(mmstest::cstr(back->hdr.title), "Grüße");
    // Encoded again, the subject with its closing 0 read back does not grow.
    EXPECT_EQ(encode(back), encode(item)) << layout;
  }
}

}  // namespace
