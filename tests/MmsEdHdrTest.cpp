// The MMS header decoder: each field stepped over by its own length, the
// string and address forms, dates, where the header ends, and every cut.
// Each input is read in place and byte by byte, which must agree.
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

#include "MmsTestUtil.h"

namespace {

using mmstest::Read;
using namespace std::string_literals;

Read decode(const std::string &bytes) {
  const auto read = mmstest::readAgreed(bytes);
  EXPECT_TRUE(read) << "reads in place, through short windows and byte by byte differ";
  return read.value_or(Read{});
}

struct Row {
  std::string bytes;
  int32_t rc;
  int64_t pos;  // where the stream stands; -1: on the last byte
  std::string hdr;
};

void check(const Row &row, const std::string &what) {
  const Read r = decode(row.bytes);
  const int64_t pos = row.pos < 0 ? static_cast<int64_t>(row.bytes.size()) - 1 : row.pos;
  EXPECT_EQ(r.rc, row.rc) << what;
  EXPECT_EQ(r.pos, pos) << what;
  EXPECT_EQ(r.hdr, row.hdr) << what;
}

std::string hex(const std::string &s) {
  std::string out;
  for (unsigned char c : s) {
    char b[4];
    std::snprintf(b, sizeof b, "%02X ", c);
    out += b;
  }
  return out;
}

// Every field code with a valid value, then the sentinel Subject "S" and a
// part count: a value stepped over by a wrong length loses the sentinel.
TEST(MmsDecHdr, EveryFieldStepsOverItsOwnValue) {
  const std::string sentinel = "\x96S\0\x02"s;
  const struct {
    std::string field;
    std::string hdr;  // besides "type=00" and the sentinel title
  } rows[] = {
      {"\x81" "b\0"s, " bcc=b"},
      {"\x82" "c\0"s, " cc=c"},
      {"\x83" "http://x\0"s, ""},
      {"\x84\xA3"s, ""},                                  // well-known code
      {"\x84" "text/plain\0"s, ""},                       // text
      {"\x84\x03\xB3\x89\x00"s, ""},                      // value length
      {"\x84\x1F\x01\xB3"s, ""},                          // length quote
      {"\x85\x01\x00"s, ""},                              // date checked below
      {"\x86\x80"s, ""},
      {"\x87\x07\x80\x05\x01\x02\x03\x04\x05"s, ""},
      {"\x88\x1F\x02\x81\x00"s, ""},
      {"\x89\x01\x81"s, ""},
      {"\x89\x05\x80" "a/T\0"s, " from=a/T"},
      {"\x8A\x80"s, ""},
      {"\x8A" "AB"s, ""},                                 // a class byte below 0x80 takes two
      {"\x8B" "id\0"s, ""},
      {"\x8C\x84"s, "", },
      {"\x8D\x90"s, ""},
      {"\x8E\x02\x01\x00"s, ""},
      {"\x8F\x81"s, ""}, {"\x90\x81"s, ""}, {"\x91\x81"s, ""}, {"\x92\x81"s, ""},
      {"\x93\x04\xEA" "ok\0"s, ""},
      {"\x94\x81"s, ""}, {"\x95\x81"s, ""},
      {"\x96" "X\0"s, ""},                                // replaced by the sentinel
      {"\x97" "+1/TYPE=PLMN\0"s, " to=+1"},
      {"\x98" "T1\0"s, ""},
      {"\x99\x80"s, ""},
      {"\x9A\x80"s, ""},
      {"\x9B\x80"s, ""}, {"\x9C\x80"s, ""},
      {"\x9D\x03\x81\x01\x02"s, ""},
      {"\x9E" "id\0"s, ""},
      {"\x9F\x01\x10"s, ""},
      {"\xA0\x04\x81" "ab\0"s, ""},
      {"\xA0\x05\x01\x07" "ab\0"s, ""},                   // integer as a long integer
      {"\xA1\x04\x81\x02\x01\x02"s, ""},
  };
  for (const auto &row : rows) {
    const std::string type = row.field[0] == '\x8C' ? "type=84" : "type=00";
    const bool dated = row.field[0] == '\x85';
    const Read r = decode(row.field + sentinel);
    EXPECT_EQ(r.rc, 0) << hex(row.field);
    EXPECT_EQ(r.pos, static_cast<int64_t>(row.field.size() + sentinel.size() - 1)) << hex(row.field);
    if (dated) {
      EXPECT_NE(r.hdr.find(" title=S date=19"), std::string::npos) << r.hdr;
    } else {
      EXPECT_EQ(r.hdr, type + row.hdr + " title=S") << hex(row.field);
    }
  }
}

TEST(MmsDecHdr, ReadersAtTheirLimits) {
  const Row rows[] = {
      // uintvar lengths of 1, 5 and 7 octets; the high bits of a long one wrap
      {"\x96\x1F\x03\xEA" "ab"s, 0, 6, "type=00 title=ab"},
      {"\x96\x1F\x80\x80\x80\x80\x03\xEA" "ab"s, 0, 10, "type=00 title=ab"},
      {"\x96\x1F\x81\x80\x80\x80\x80\x80\x03\xEA" "ab"s, 0, 12, "type=00 title=ab"},
      // value length 0 is put back: the zero byte then ends the header
      {"\x87\x00\x96S\0"s, 0, 1, "type=00"},
      {"\x87\x1E" + std::string(30, '\xFF') + "\x96S\0\x02"s, 0, -1, "type=00 title=S"},
      {"\x87\x1F\x1F" + std::string(31, '\xFF') + "\x96S\0\x02"s, 0, -1, "type=00 title=S"},
      // 32 is no value length: that byte is read as the next code
      {"\x87\x20\x96S\0"s, 0, 1, "type=00"},
      {"\x87\x96S\0\x02"s, 0, -1, "type=00 title=S"},
      // a length past the end ends the header there
      {"\x88\x1F\x8F\xFF\xFF\xFF\x7F\x96S\0"s, 0, 10, "type=00"},
  };
  for (const Row &row : rows) check(row, hex(row.bytes));
}

TEST(MmsDecHdr, StringValues) {
  const std::string ansi(519, '\xE9');  // é in the legacy code page
  const Row rows[] = {
      {"\x96" "AB\x7F" "C\0\x02"s, 0, -1, "type=00 title=ABC"},
      {"\x96\x7F" "AB\0\x02"s, 0, -1, "type=00 title=AB"},
      // UTF-8 keeps the closing 0x00 inside its length
      {"\x96\x04\xEA\x7F" "A\0\x02"s, 0, -1, "type=00 title=A\0"s},
      // UCS-2 named by a long integer; an odd last byte is dropped
      {"\x96\x07\x02\x03\xE8\x00" "A\x00" "B\x02"s, 0, -1, "type=00 title=AB"},
      {"\x96\x06\x02\x03\xE8\x00" "A\x00\x02"s, 0, -1, "type=00 title=A"},
      {"\x96\x05\x02\x07\xEA\x00\xE4\x02"s, 0, -1, "type=00 title=\xC3\xA4"},  // 2026
      // a token where text was due is the whole value
      {"\x96\x80\x8C\x82\x02"s, 0, -1, "type=82"},
      {"\x96\x00\x02"s, 0, -1, "type=00"},
      // a charset integer with no room behind it leaves the text empty
      {"\x96\x03\x02\x00\x6A\x02"s, 0, -1, "type=00"},
      {"\x96\x1F\x21\x1E" + std::string(30, '\x01') + "ab\x02", 0, -1, "type=00 title=ab"},
      // legacy text is cut at its 512-byte buffer, on a whole character
      {"\x96\x1F\x84\x08\x84" + ansi + "\x02", 0, -1,
       "type=00 title=" + [] {
         std::string s;
         for (int i = 0; i < 255; ++i) s += "\xC3\xA9";
         return s;
       }()},
  };
  for (const Row &row : rows) check(row, hex(row.bytes.substr(0, 12)));
}

TEST(MmsDecHdr, Addresses) {
  const Row rows[] = {
      {"\x97" "+49/type=Plmn\0\x97" "x/TYPE=PLMN/TYPE=PLMN\0\x02"s, 0, -1, "type=00 to=+49,x"},
      {"\x97" "1.2.3.4/TYPE=IPV4\0\x02"s, 0, -1, "type=00 to=1.2.3.4/TYPE=IPV4"},
      {"\x97" "a\0\x82" "c\0\x97" "b\0\x82" "d\0\x81" "e\0\x02"s, 0, -1,
       "type=00 to=a,b cc=c,d bcc=e"},
      {"\x89\x0E\x80" "x/type=IPV4\0\x02"s, 0, -1, "type=00 from=x"},
      {"\x89\x03\x80" "y\0\x89\x01\x81\x02"s, 0, -1, "type=00"},  // a later From replaces
      {"\x89\x00\x96S\0"s, 0, 1, "type=00"},
      {"\x97\x00\x97" "a\0\x02"s, 0, -1, "type=00 to=a"},
  };
  for (const Row &row : rows) check(row, hex(row.bytes));
}

// An encoded string running past the end fails only the four fields whose
// value the header cannot do without.
TEST(MmsDecHdr, CutEncodedStringFailsOnlyAddressesAndLocation) {
  const std::string cut = "\x1F\x8F\xFF\xFF\xFF\x7F\xEA" "abc"s;
  for (int code = 0x81; code <= 0xA1; ++code) {
    const bool fails = code == 0x81 || code == 0x82 || code == 0x83 || code == 0x97;
    const Read r = decode("\x8C\x80"s + static_cast<char>(code) + cut);
    EXPECT_EQ(r.rc, fails ? OSTREL_SHORT : 0) << std::hex << code;
  }
  EXPECT_EQ(decode("\x97\x05\xEA" "ab"s).rc, OSTREL_SHORT);
  EXPECT_EQ(decode("\x97\x04\xEA" "ab\0"s).rc, 0);
}

class MmsDate : public ::testing::Test {
 protected:
  void SetUp() override {
    const char *tz = std::getenv("TZ");
    saved_ = tz ? tz : "";
    hadTz_ = tz != nullptr;
  }
  void TearDown() override {
    if (hadTz_)
      setenv("TZ", saved_.c_str(), 1);
    else
      unsetenv("TZ");
    tzset();
  }
  static std::string dateOf(const std::string &value) {
    const Read r = decode("\x85"s + value + "\x02");
    const size_t at = r.hdr.find("date=");
    return at == std::string::npos ? "unset" : r.hdr.substr(at + 5);
  }

 private:
  std::string saved_;
  bool hadTz_ = false;
};

TEST_F(MmsDate, UnsignedSecondsInLocalTime) {
  const struct {
    std::string value;
    const char *utc, *berlin;
  } rows[] = {
      {"\x00"s, "19700101T000000", "19700101T010000"},
      {"\x04\x00\x00\x00\x00"s, "19700101T000000", "19700101T010000"},
      {"\x04\x7F\xFF\xFF\xFF"s, "20380119T031407", "20380119T041407"},
      {"\x04\x80\x00\x00\x00"s, "20380119T031408", "20380119T041408"},
      {"\x04\xFF\xFF\xFF\xFF"s, "21060207T062815", "21060207T072815"},
      {"\x04\x5E\xFB\xD2\x00"s, "20200701T000000", "20200701T020000"},  // summer time
      {"\x08\x01\x02\x03\x04\x00\x00\x00\x3C"s, "19700101T000100", "19700101T010100"},
  };
  for (const char *zone : {"UTC0", "CET-1CEST,M3.5.0,M10.5.0/3"}) {
    setenv("TZ", zone, 1);
    tzset();
    for (const auto &row : rows)
      EXPECT_EQ(dateOf(row.value), zone[0] == 'U' ? row.utc : row.berlin) << zone << " " << hex(row.value);
  }
}

TEST(MmsDecHdr, WhereTheHeaderEnds) {
  const Row rows[] = {
      {""s, 0, 0, "type=00"},
      {"\x00"s, 0, 0, "type=00"},
      {"\x8C\x80\x80\x96S\0"s, 0, 2, "type=80"},
      {"\x8C\x80\xA2"s, 0, 2, "type=80"},
      {"\x8C\x80" "Return-Path"s, 0, 2, "type=80"},
      {"\x8C\x80\x98T\0"s, 0, 5, "type=80"},  // the end of the stream
  };
  for (const Row &row : rows) check(row, hex(row.bytes));
}

// The values a caller sees with MMS headers traced (category 8, level 1),
// and the fault of a token where text was due (category 2, level 1).
TEST(MmsDecHdr, TracesTheValuesItKeeps) {
  std::string text;
  DbgMng_setSink([](void *ctx, const char *t, int32_t n) { static_cast<std::string *>(ctx)->append(t, n); },
                 &text);
  DbgMng_select(6, 0x8 | 0x2, 1);
  decode("\x89\x03\x80" "f\0\x97" "+1/TYPE=PLMN\0\x82" "c\0\x81" "b\0\x96" "S\0\x83" "x\0\x9A\x80\x02"s);
  DbgMng_reset();
  DbgMng_setSink(nullptr, nullptr);
  for (const char *want : {"from: f", "to: +1\n", "cc: c", "bcc: b", "title: S",
                           "X-Mms-Content-Location: x\n", "mms_dec_str_val"})
    EXPECT_NE(text.find(want), std::string::npos) << want << " in " << text;
}

TEST(MmsDecHdr, ReusedHeaderKeepsAddressesAndReplacesTheRest) {
  mmstest::Hdr hdr;
  for (const std::string &msg : {"\x8C\x82\x97" "a\0\x96" "one\0\x89\x03\x80" "f\0"s,
                                 "\x8C\x84\x97" "b\0\x96" "two\0"s}) {
    tarnex::ScratchStrStrm in(msg);
    EXPECT_EQ(mms_dec_hdr(in, &hdr), 0);
  }
  EXPECT_EQ(mmstest::render(hdr), "type=84 to=a,b from=f title=two");
}

// Every field code as the last byte and cut at every byte of a valid
// value: a defined result, never a read past the end or a hang (a length
// of -1 at the end would otherwise seek back onto its own code).
TEST(MmsDecHdr, EveryCutEndsCleanly) {
  const std::string msg =
      "\x8C\x84\x98T1\0\x8D\x92\x85\x04\x5E\xFB\xD2\x00\x89\x0A\x80+1/TYPE=PLMN\0"
      "\x97\x1F\x03\xEA" "ab\x82" "c\0\x81\x05\xEA\x7F" "bb\0\x96\x07\x02\x03\xE8\x00" "A\x00"
      "B\x87\x02\x80\x01\x88\x1F\x01\x05\x9D\x03\x81\x01\x02\x8A\x41\x42\x8E\x01\x10"
      "\x84\x1F\x02\xB3\x89\xA0\x04\x81" "ab\0\xA1\x04\x81\x02\x01\x02\x83x\0\x02"s;
  EXPECT_EQ(decode(msg).pos, static_cast<int64_t>(msg.size() - 1));
  for (size_t n = 0; n < msg.size(); ++n) {
    const Read r = decode(msg.substr(0, n));
    EXPECT_TRUE(r.rc == 0 || r.rc == OSTREL_SHORT) << n;
    EXPECT_LE(r.pos, static_cast<int64_t>(n));
  }
  for (int code = 0x81; code <= 0xA1; ++code) {
    const Read r = decode("\x8C\x80"s + static_cast<char>(code));
    EXPECT_EQ(r.rc, 0) << std::hex << code;
    EXPECT_EQ(r.pos, 3) << std::hex << code;
  }
}

}  // namespace
