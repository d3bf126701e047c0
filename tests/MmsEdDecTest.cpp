// The MMS message decoder: body counts, part headers and names, the SMIL
// reading (region classes, the layout choice, the name map) and bad
// bodies. Every message is read in place and byte by byte, which must agree.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "MmsMsgTestUtil.h"
#include "detail/MmsSmil.h"

namespace {

using namespace std::string_literals;
using mmstest::Decoded;

std::string uintvar(uint32_t v) {
  std::string out(1, static_cast<char>(v & 0x7F));
  while (v >>= 7) out.insert(out.begin(), static_cast<char>(0x80 | (v & 0x7F)));
  return out;
}

// A part: its content type and headers, then its data.
std::string part(const std::string &headers, const std::string &data) {
  return uintvar(static_cast<uint32_t>(headers.size())) +
         uintvar(static_cast<uint32_t>(data.size())) + headers + data;
}

// A retrieved message with no header fields but its type.
std::string message(const std::string &body) { return "\x8C\x84"s + body; }

Decoded decode(const std::string &bytes) {
  tarnex::ScratchStrStrm windowed(bytes);
  mmstest::NoWindowStrm plain(bytes);
  const Decoded a = mmstest::decodeWith(windowed), b = mmstest::decodeWith(plain);
  EXPECT_EQ(mmstest::maskCounters(a.text), mmstest::maskCounters(b.text))
      << "windowed and byte-by-byte reads differ";
  EXPECT_EQ(a.rc, b.rc);
  return a;
}

// The record's lines after the header line.
std::string body(const Decoded &d) { return d.text.substr(d.text.find('\n') + 1); }

// Read once, in place.
Decoded decodeOnce(const std::string &bytes) {
  tarnex::ScratchStrStrm in(bytes);
  return mmstest::decodeWith(in);
}

int32_t lastCounter() {
  // The counter is process-wide: learn where it stands from a nameless part.
  return std::stoi(body(decodeOnce(message("\x01"s + part("\x9E"s, "")))).substr(6));
}

TEST(MmsDec, BodyCounts) {
  const std::string jpg = part("\x9E\x8Ep.jpg\0"s, "xy");
  const struct {
    std::string body;
    int32_t rc;
    std::string media;
  } rows[] = {
      {"", -1, ""},                                    // a header-only message
      {"\x00"s, 0, ""},                                // no parts
      {"\x1E"s + jpg, 0, "media p.jpg image/jpeg 2"},  // 30 counted, one there
      {"\x1F\x1F"s + jpg, 0, "media p.jpg image/jpeg 2"},
      {"\x28"s + jpg, -1, ""},                         // plain uintvar 40
      {"\x1F\x8F\xFF\xFF\x7F"s + jpg + jpg, 0,         // millions over a few bytes
       "media p.jpg image/jpeg 2\nmedia p.jpg image/jpeg 2"},
      {"\x02"s + jpg + "\x05"s, -1, "media p.jpg image/jpeg 2"},  // a part cut after its lengths
      // Data past the message: an empty medium, and the next read from there.
      {"\x01"s + uintvar(8) + uintvar(0x7FFFFFFF) + "\x9E\x8Eq.jpg\0"s + "ab", 0,
       "media q.jpg image/jpeg 0"},
  };
  for (const auto &row : rows) {
    const Decoded d = decode(message(row.body));
    EXPECT_EQ(d.rc, row.rc) << d.text;
    std::string media;
    for (size_t at = d.text.find("media "); at != std::string::npos;
         at = d.text.find("media ", at + 1))
      media += (media.empty() ? "" : "\n") + d.text.substr(at, d.text.find(':', at) - at);
    EXPECT_EQ(media, row.media) << d.text;
  }
}

TEST(MmsDec, PartHeadersAndNames) {
  const struct {
    std::string headers;
    std::string name, type;
  } rows[] = {
      {"\x9E\x8Epic\0"s, "pic.jpg", "image/jpeg"},
      {"\x9E\x8E" "c:\\dir\\pic.jpg\0"s, "pic.jpg", "image/jpeg"},
      {"\x9E\xC0<abc>\0"s, "abc.jpg", "image/jpeg"},
      {"\x9E" "Content-Id\0<\"i\"d>\0"s, "id.jpg", "image/jpeg"},
      {"image/png\0\x81\xEA\x85" "a\0\x86" "b\0\x8E" "c\0"s, "c.png", "image/png"},
      {"\x03\x00\x8E" "x\0"s, "x.", "application/octet-stream"},  // general form, code 0
      {"\x9E\x8E" "a.gif\0\xAE\x8E" "b.gif\0"s, "a.gif", "image/jpeg"},  // cut to the block's end
      {"\x9E\x92\x02\x8E" "x\x8E" "n.jpg\0"s, "n.jpg", "image/jpeg"},
      {"\x9E\xB0" "dropped\0\x8E" "b.jpg\0"s, "b.jpg", "image/jpeg"},
      {"\x83\x8E=?UTF-8?B?YWJj?=\0"s, "abc.txt", "text/plain"},
      {"\x83\x8E=?utf-8?q?a=41?=\0"s, "aA.txt", "text/plain"},
      {"\x83\xC0<i>\0\x8Ewhat?\0"s, "i.txt", "text/plain"},  // fewer than four "?"
      {"\x83\x8E" "a?b?c\0\xC0<j>\0"s, "j.txt", "text/plain"},
      {"\xFF\x8E" "z\0"s, "z.", ""},  // no such code
  };
  for (const auto &row : rows) {
    const Decoded d = decode(message("\x01"s + part(row.headers, "d")));
    EXPECT_EQ(d.rc, 0);
    EXPECT_EQ(body(d), "media " + row.name + " " + row.type + " 1:" +
                           std::to_string((2166136261u ^ 'd') * 16777619u) + "\n")
        << row.name;
  }
  const int32_t n = lastCounter();
  const Decoded two = decodeOnce(message("\x02"s + part("\x9E"s, "") + part("\x83"s, "")));
  EXPECT_NE(body(two).find(std::to_string(n + 1) + ".jpg"), std::string::npos) << two.text;
  EXPECT_NE(body(two).find(std::to_string(n + 2) + ".txt"), std::string::npos) << two.text;
}

TEST(MmsDec, CutPartHeadersEndWithTheStream) {
  // 0x92 as the last byte, text headers and a type running past the end.
  for (const std::string &headers : {"\x9E\x92"s, "\x9E" "Content-ID\0<ab"s, "image/jp"s,
                                     "\x1F\x8F"s, "\x9E\x8E" "pic"s}) {
    const std::string bytes = message("\x01"s + uintvar(200) + uintvar(3) + headers);
    const Decoded d = decode(bytes);
    EXPECT_EQ(d.rc, 0);
    EXPECT_NE(d.text.find(" 0:"), std::string::npos) << d.text;  // one empty medium
  }
}

std::string smilPart(const std::string &smil) {
  return part("application/smil\0\x8E" "s.smil\0"s, smil);
}

std::string slides(const Decoded &d) {
  std::string out;
  for (size_t at = d.text.find("slide "); at != std::string::npos;
       at = d.text.find("slide ", at + 1))
    out += d.text.substr(at, d.text.find('\n', at) + 1 - at);
  return out;
}

const char *const kRegions =
    "<root-layout width='200px' height='100'/>"
    "<region id='Up' top='0' left='0' width='100%' height='50%'/>"
    "<region id='down' top='50' left='0' width='200px' height='50%'/>"
    "<region id='west' top='0' left='0' width='100px' height='100%'/>"
    "<region id='east' top='0' left='50%' width='50%' height='100%'/>"
    "<region id='all' top='0' left='0' width='100%' height='100%'/>"
    "<region id='corner' top='0' left='0'/>";

TEST(MmsDec, SmilLayoutChoice) {
  const struct {
    std::string pars;
    std::string slides;
  } rows[] = {
      {"<par dur='3s'><img src='a' region='all'/></par>", "slide 2/3000 ,a,,,\n"},
      {"<par><text src='t' region='Down'/><img src='a' region='up'/></par>",
       "slide 4/1000 t,a,,,\n"},
      {"<par dur='5000ms'><text src='t' region='up'/><img src='a'/></par>", "slide 5/5000 t,a,,,\n"},
      {"<par dur='7'><text src='t' region='west'/><img src='a'/></par>", "slide 6/7 t,a,,,\n"},
      {"<par dur='1.5s'><text src='t' region='east'/><img src='a'/></par>", "slide 7/1 t,a,,,\n"},
      {"<par><text src='t' region='corner'/><video src='v'/></par>", "slide 9/1000 t,,,,v\n"},
      {"<par><video src='v'/><text src='t' region='down'/></par>", "slide 8/1000 t,,,,v\n"},
      {"<par><text src='t' region='west'/><video src='v'/></par>", "slide 10/1000 t,,,,v\n"},
      {"<par><text src='t' region='east'/><video src='v'/></par>", "slide 11/1000 t,,,,v\n"},
      {"<par><img src='a' region='west'/><img src='b' region='east'/></par>",
       "slide 12/1000 ,a,b,,\n"},
      {"<par><img src='a' region='west'/><img src='b' region='up'/></par>",
       "slide 13/1000 ,a,b,,\n"},
      {"<par><img src='a'/><img src='b'/><text src='t' region='down'/></par>",
       "slide 14/1000 t,a,b,,\n"},
      {"<par><img src='a'/><img src='b'/><text src='t' region='all'/></par>",
       "slide 15/1000 t,a,b,,\n"},
      {"<par><audio src='s'/><text src='cid:t' region='all'/></par>", "slide 1/1000 t,,,s,\n"},
      {"<par><audio src='s'/></par>", "slide 0/1000 ,,,s,\n"},
      {"<par><img src='a'/><video src='v'/></par>", "slide 0/1000 ,a,,,v\n"},
      {"<par><video src='v' region='all'/></par>", "slide 3/1000 ,,,,v\n"},
      {"<par><img src='a'/><img src='b'/><img src='c'/></par>", "slide 0/1000 ,a,c,,\n"},
      // The class of a slot is carried to the next slide that names no region.
      {"<par><text src='t' region='down'/><img src='a'/></par>"
       "<par><text src='u'/><img src='b'/></par>",
       "slide 4/1000 t,a,,,\nslide 4/1000 u,b,,,\n"},
      // Only digits then "s" are seconds: "-5s" is -5 milliseconds.
      {"<par dur='-5s'><text src='t'/></par><par dur='99999999999s'/>",
       "slide 1/-5 t,,,,\nslide 0/2147483647 ,,,,\n"},
      // Past the slots: a fifth medium of a par is not stored.
      {"<par><audio src='1'/><audio src='2'/><audio src='3'/><audio src='4'/><img src='5'/></par>",
       "slide 0/1000 ,,,4,\n"},
  };
  for (const auto &row : rows) {
    const std::string smil = "<smil><head><layout>"s + kRegions + "</layout></head><body>" +
                             row.pars + "</body></smil>";
    const Decoded d = decode(message("\x01"s + smilPart(smil)));
    EXPECT_EQ(d.rc, 0);
    EXPECT_EQ(slides(d), row.slides) << row.pars;
  }
}

TEST(MmsDec, RegionClassAndDimensions) {
  using ostrel::detail::MmsSmilRegion;
  const struct {
    uint32_t width, height, top, left, cls;
  } rows[] = {
      {0, 0, 0, 0, 0x0B}, {0, 0, 5, 0, 0x04},  {0, 0, 0, 5, 0x10},  {0, 0, 5, 5, 0x100},
      {100, 50, 50, 0, 0x04}, {100, 50, 0, 0, 0x02}, {50, 100, 0, 50, 0x10},
      {50, 100, 0, 0, 0x08}, {100, 100, 0, 0, 0x01}, {100, 100, 0, 5, 0x10},
      {100, 100, 5, 0, 0x04},
  };
  for (const auto &r : rows) {
    MmsSmilRegion region{};
    region.width = r.width, region.height = r.height, region.top = r.top, region.left = r.left;
    EXPECT_EQ(ostrel::detail::mms_region_class(region), r.cls)
        << r.width << " " << r.height << " " << r.top << " " << r.left;
  }
  using ostrel::detail::mms_dec_dim;
  EXPECT_EQ(mms_dec_dim(200, "100px"), 50u);
  EXPECT_EQ(mms_dec_dim(200, "30%"), 30u);
  EXPECT_EQ(mms_dec_dim(200, "100PX"), 50u);
  EXPECT_EQ(mms_dec_dim(0, "100px"), 50u);  // no root layout yet
  EXPECT_EQ(mms_dec_dim(0, "0"), 0u);
  EXPECT_EQ(mms_dec_dim(1, "99999999999"), static_cast<uint32_t>(int64_t{INT32_MAX} * 100));
}

struct AssertCount {
  int n = 0;
  AssertCount() { Tarnex_setAssertHandler(on, this, nullptr); }
  ~AssertCount() { Tarnex_setAssertHandler(nullptr, nullptr, nullptr); }
  static void on(void *ctx, const char *, const char *, int32_t) {
    ++static_cast<AssertCount *>(ctx)->n;
  }
};

TEST(MmsDec, SmilNamesMapAndBadPresentations) {
  // Media named without an extension are found by slides that use the
  // short name or "cid:" it, whether the SMIL comes first or last.
  const std::string media = part("\x9E\x8Epic\0"s, "j") + part("\x83\xC0<abc>\0"s, "t");
  const std::string smil =
      "<smil><body><par><img src='cid:PIC'/><text src='cid:abc'/></par></body></smil>";
  for (const std::string &bodyBytes : {smilPart(smil) + media, media + smilPart(smil)}) {
    const Decoded d = decode(message("\x03"s + bodyBytes));
    // No region: text counts as at the right (reported).
    EXPECT_EQ(slides(d), "slide 7/1000 abc,pic.jpg,,,\n") << d.text;
  }
  // Bad presentations keep the media and never overrun the slots.
  std::string many = "<smil><head><layout>";
  for (int i = 0; i < 17; ++i) many += "<region id='r" + std::to_string(i) + "' top='50%'/>";
  many += "</layout></head><body>";
  for (int i = 0; i < 101; ++i) many += "<par><text src='t' region='r16'/></par>";
  many += "</body></smil>";
  const struct {
    std::string smil;
    size_t slides;
    int asserts;
  } rows[] = {
      {"<smil><body><par><img src='a'/></par>", 0, 0},  // cut
      {"<!DOCTYPE s [<!ENTITY a 'x'>]><smil/>", 0, 0},   // entity declaration
      {"<smil><par><text src='a' region='nowhere'/></par></smil>", 1, 1},  // none declared
      {many, 100, 100},  // the 17th region is not stored: r16 is undeclared
      {"<smil><text src='a'/><par dur='1'/><text src='b'/></smil>", 1, 0},  // outside any par
  };
  for (const auto &row : rows) {
    AssertCount asserts;
    const Decoded d = decode(message("\x02"s + smilPart(row.smil) + part("\x83\x8Ek.txt\0"s, "k")));
    EXPECT_EQ(d.rc, 0);
    size_t n = 0;
    for (size_t at = d.text.find("slide "); at != std::string::npos; at = d.text.find("slide ", at + 1))
      ++n;
    EXPECT_EQ(n, row.slides) << row.smil.substr(0, 60);
    EXPECT_EQ(asserts.n, row.asserts * 2) << row.smil.substr(0, 60);  // two reads of each
    EXPECT_NE(d.text.find("media k.txt"), std::string::npos);
  }
}

}  // namespace
