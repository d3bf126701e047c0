// PDU fields: numbers, time stamps, 7-bit packing and the GSM alphabet.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "tarnex/codec.h"
#include "tarnex/gsm.h"
#include "tarnex/scratch.hpp"

namespace {

std::vector<uint8_t> hex(const char *text) {
  std::vector<uint8_t> v(std::strlen(text) / 2 + 1);
  v.resize(static_cast<size_t>(ira_dec_str_to_buf(text, -1, v.data(), static_cast<int32_t>(v.size()))));
  return v;
}
std::string toHex(const uint8_t *p, int32_t n) {
  tarnex::ScratchStr<64> s;
  ira_enc_cstr_from_buf(s, p, n);
  return KvoStr_buf(s);
}
std::vector<KvoWchar> bigEndian(const std::u16string &text) {
  std::vector<KvoWchar> v;
  for (char16_t c : text) {
    const uint8_t b[2] = {static_cast<uint8_t>(c >> 8), static_cast<uint8_t>(c)};
    KvoWchar u;
    std::memcpy(&u, b, 2);
    v.push_back(u);
  }
  return v;
}
std::string getNo(const std::vector<uint8_t> &f, int32_t len, int32_t form, int32_t *claim) {
  tarnex::ScratchStr<64> s;
  *claim = GsmUtil_getNo(s, f.data(), len, form);
  return KvoStr_buf(s);
}

struct NoRow {
  const char *no;
  int32_t encForm;  // 0 service centre, 1 address
  const char *field;
  const char *readBack;
};
const NoRow kNumbers[] = {
    {"+491711234567", 1, "0C91947111325476", "+491711234567"},
    {"+31624000000", 0, "07911326040000F0", "+31624000000"},
    {"12345", 1, "05812143F5", "12345"},
    {"*#1", 1, "0381BAF1", "*#1"},
    {"", 1, "0081", ""},
    {"", 0, "00", ""},
    {"Hello", 1, "09D0C8329BFD06", "Hello"},     // odd septet count
    {"Hello!", 1, "0BD0C8329BFD0E01", "Hello!"},  // even
    {"ABCDEFGHIJKL", 1, "14D041E19058341E9149E512", "ABCDEFGHIJK"},   // cut at 11 septets
    {"ABCDEFGHIJ\xE2\x82\xAC", 1, "12D041E19058341E914925", "ABCDEFGHIJ"},  // pair not cut
    {"0123456789012345678901", 1, "148110325476981032547698", "01234567890123456789"},
};

TEST(GsmNo, EncodeAndReadBack) {
  for (const NoRow &r : kNumbers) {
    SCOPED_TRACE(r.no);
    uint8_t buf[32];
    const int32_t n = GsmUtil_encNo(buf, sizeof buf, r.no, r.encForm);
    ASSERT_GT(n, 0);
    EXPECT_EQ(toHex(buf, n), r.field);
    int32_t claim = 0;
    EXPECT_EQ(getNo(hex(r.field), n, 1 - r.encForm, &claim), r.readBack);
    EXPECT_EQ(claim, n);
    EXPECT_EQ(GsmUtil_encNo(buf, n - 1, r.no, r.encForm), -1);  // never past the room
  }
}

TEST(GsmNo, ReadOnlyWhatIsThere) {
  int32_t claim = 0;
  // Cut short: the claim tells, the digits present are kept.
  EXPECT_EQ(getNo(hex("0C919471"), 4, 0, &claim), "+4917");
  EXPECT_EQ(claim, 8);
  EXPECT_EQ(getNo(hex("FF91"), 2, 1, &claim), "+");
  EXPECT_EQ(claim, 256);
  EXPECT_EQ(getNo(hex("7FD0"), 2, 0, &claim), "");
  EXPECT_EQ(claim, 66);
  EXPECT_EQ(getNo({}, 0, 0, &claim), "");
  EXPECT_EQ(claim, 1);
  EXPECT_EQ(getNo(hex("0381DCFE"), 4, 0, &claim), "abc");  // TBCD C, D, E
  // A sender counting 7 septets as 14 semi-octets: the filler septet is no "@".
  EXPECT_EQ(getNo(hex("0ED041E19058341E01"), 9, 0, &claim), "ABCDEFG");
  EXPECT_EQ(getNo(hex("0DD041E19058341E01"), 9, 0, &claim), "ABCDEFG");
  EXPECT_EQ(GsmUtil_getNo(nullptr, hex("07911326").data(), 4, 1), 8);
}

TEST(GsmTime, ReadAndWrite) {
  struct R {
    const char *octets;
    KvoDt dt;
  };
  const R cases[] = {
      {"2130112143658A", {2012, 3, 11, 12, 34, 56, 0, -420}},
      {"99211350908510", {1999, 12, 31, 5, 9, 58, 0, 15}},     // 19xx, a quarter hour
      {"00101010000021", {2000, 1, 1, 1, 0, 0, 0, 180}},
      {"001010100000FF", {2000, 1, 1, 1, 0, 0, 0, KVO_DT_NOZONE}},  // bad zone, date kept
  };
  for (const R &c : cases) {
    SCOPED_TRACE(c.octets);
    KvoDt dt;
    EXPECT_EQ(GsmUtil_decObsTime(&dt, hex(c.octets).data(), 7), 7);
    EXPECT_EQ(std::memcmp(&dt, &c.dt, sizeof dt), 0);
    uint8_t out[7];
    ASSERT_EQ(GsmUtil_encObsTime(out, 7, &dt), 7);
    if (c.dt.zone != KVO_DT_NOZONE) {
      EXPECT_EQ(toHex(out, 7), c.octets);
    }
  }
  for (const char *bad : {"2A301121436500", "21133121436500", "21302321436500",
                          "21301162436500", "00000000000000", "213011214365"}) {
    SCOPED_TRACE(bad);
    const auto v = hex(bad);
    KvoDt dt{2000, 1, 1, 0, 0, 0, 0, 0};
    EXPECT_EQ(GsmUtil_decObsTime(&dt, v.data(), static_cast<int32_t>(v.size())), 7);
    EXPECT_EQ(dt.year, KVO_DT_UNSET);
  }
  KvoDt unset;
  KvoDt_init(&unset);
  uint8_t out[8] = {1, 1, 1, 1, 1, 1, 1, 0xEE};
  EXPECT_EQ(GsmUtil_encObsTime(out, 7, &unset), 7);
  EXPECT_EQ(toHex(out, 8), "00000000000000EE");
  EXPECT_EQ(GsmUtil_encObsTime(out, 6, &unset), -1);
}

TEST(Gsm7Bit, PackAndUnpack) {
  struct Row {
    const char *septets, *packed;
    int32_t fill;
  } rows[] = {
      {"68656C6C6F", "E8329BFD06", 0},  // "hello"
      {"6869", "D069", 1},              // behind a 6-octet header
      {"41424344454647", "41E19058341E01", 0},
      {"4142434445464700", "41E19058341E01", 0},  // a real last "@" in 7 octets
      {"41", "2008", 5},
  };
  for (const Row &r : rows) {
    SCOPED_TRACE(r.packed);
    const auto s = hex(r.septets);
    const auto count = static_cast<int32_t>(s.size());
    uint8_t buf[16];
    const int32_t n = GsmUtil_enc7BitStr(buf, sizeof buf, s.data(), count, r.fill);
    EXPECT_EQ(toHex(buf, n), r.packed);
    uint8_t back[32];
    const int32_t m = GsmUtil_dec7BitStr(back, 32, buf, n, r.fill);
    ASSERT_GE(m, count);
    EXPECT_EQ(toHex(back, count), r.septets);
    EXPECT_EQ(GsmUtil_dec7BitStr(back, 2, buf, n, r.fill), std::min(2, m));
  }
  uint8_t room[4] = {0, 0, 0xEE, 0xEE};
  EXPECT_EQ(GsmUtil_enc7BitStr(room, 2, hex("68656C6C6F").data(), 5, 0), 5);
  EXPECT_EQ(toHex(room, 4), "E832EEEE");
}

TEST(GsmAlphabet, Conversions) {
  const auto euro = bigEndian(u"a\u20AC{");
  uint8_t s[8];
  EXPECT_NE(SmsAlph_is7BitStr(euro.data(), 3, 0), 0);
  EXPECT_EQ(SmsAlph_to7BitStr(s, 8, euro.data(), 3), 5);
  EXPECT_EQ(toHex(s, 5), "611B651B28");
  EXPECT_EQ(SmsAlph_to7BitStr(s, 2, euro.data(), 3), 2);  // the pair is not cut
  EXPECT_EQ(toHex(s, 2), "6120");
  for (const std::u16string &t : {std::u16string(u"\u4F60"), std::u16string(u"a\xD83D\xDE00")}) {
    const auto u = bigEndian(t);
    EXPECT_EQ(SmsAlph_is7BitStr(u.data(), static_cast<int32_t>(u.size()), 0), 0);
  }
  struct Row {
    const char *septets;
    std::u16string text;
  } rows[] = {{"611B651B28", u"a\u20AC{"},
              {"1B41", u"A"},  // outside the extension table: the default character
              {"411B", u"A"},  // escape at the end
              {"00100D", u"@\u0394\r"}};
  for (const Row &r : rows) {
    const auto sep = hex(r.septets);
    KvoWchar out[8];
    const int32_t n = SmsAlph_from7BitStr(out, 8, sep.data(), static_cast<int32_t>(sep.size()));
    ASSERT_EQ(n, static_cast<int32_t>(r.text.size())) << r.septets;
    EXPECT_EQ(std::memcmp(out, bigEndian(r.text).data(), 2 * r.text.size()), 0) << r.septets;
  }
  char digits[4];
  EXPECT_EQ(bcd_dec_buf_to_str(digits, 4, hex("2143F5").data(), 3), 3);
  EXPECT_STREQ(digits, "123");
}

}  // namespace
