// Base64, quoted-printable and IRA hexadecimal text.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "tarnex/codec.h"
#include "tarnex/scratch.hpp"

namespace {

using tarnex::ScratchMemStrm;
using tarnex::ScratchStrStrm;
using Encoder = int32_t (*)(IStrm *, IStrm *, int32_t, int32_t);
using Decoder = int32_t (*)(const char *, uint8_t *, int32_t);
const Encoder kB64Enc = b64_enc_strm_from_strm, kQpEnc = qp_enc_strm_from_strm;
const Decoder kB64Dec = b64_dec_str_to_buf, kQpDec = qp_dec_str_to_buf;
const Decoder kIraDec = [](const char *text, uint8_t *buf, int32_t size) {
  return ira_dec_str_to_buf(text, -1, buf, size);
};

// At most `step` bytes a read, writes past `room` bytes fail with -77: block edges and faults.
struct TestStrm {
  IStrm base{};
  std::string data;
  size_t step = 1, room = SIZE_MAX, pos = 0;
  std::string written{};
};
TestStrm *self(IStrm *s) { return reinterpret_cast<TestStrm *>(s); }
int32_t testRead(IStrm *s, void *buf, int32_t n) {
  TestStrm *t = self(s);
  const size_t k = std::min({static_cast<size_t>(n), t->step, t->data.size() - t->pos});
  std::memcpy(buf, t->data.data() + t->pos, k);
  t->pos += k;
  return static_cast<int32_t>(k);
}
int32_t testWrite(IStrm *s, const void *buf, int32_t n) {
  TestStrm *t = self(s);
  if (t->written.size() + n > t->room) return -77;
  t->written.append(static_cast<const char *>(buf), n);
  return n;
}
const IStrmOps kTestOps = {[](IStrm *) {}, nullptr, nullptr, nullptr, testRead, testWrite,
                           nullptr, nullptr, nullptr, nullptr, nullptr};
TestStrm testStrm(std::string data, size_t step, size_t room = SIZE_MAX) {
  return TestStrm{{&kTestOps}, std::move(data), step, room};
}

std::string contents(IStrm *s) {
  return {reinterpret_cast<const char *>(MemStrm_data(s)), static_cast<size_t>(IStrm_size(s))};
}
std::string encode(Encoder enc, const std::string &bytes, int32_t width, int32_t start) {
  ScratchStrStrm in(bytes);
  ScratchMemStrm out(0);
  const int32_t n = enc(out, in, width, start);
  EXPECT_EQ(n, IStrm_size(out));
  return contents(out);
}
std::string decode(Decoder dec, const std::string &text) {
  std::vector<uint8_t> buf(text.size() + 1);
  const int32_t n = dec(text.c_str(), buf.data(), static_cast<int32_t>(buf.size()));
  return {buf.begin(), buf.begin() + n};
}
std::string randomBytes(std::mt19937 &rng, size_t n, const std::string &alphabet = "") {
  std::string s(n, '\0');
  for (char &c : s)
    c = static_cast<char>(alphabet.empty() ? rng() : alphabet[rng() % alphabet.size()]);
  return s;
}
std::vector<std::string> lines(const std::string &text) {
  std::vector<std::string> out;
  size_t p = 0;
  for (size_t e; (e = text.find("\r\n", p)) != std::string::npos; p = e + 2)
    out.push_back(text.substr(p, e - p));
  out.push_back(text.substr(p));
  return out;
}

// Lines within the width (the first from the start column), folded with one blank.
void checkB64Layout(const std::string &text, int32_t width, int32_t start) {
  std::vector<std::string> ls = lines(text);
  // -1: behind an uncounted column, the first line as full as a continuation.
  ls.front().insert(0, start == -1 ? 1u : static_cast<size_t>(start), 'x');
  for (size_t i = 0; i < ls.size() && !text.empty(); ++i) {
    const bool continued = i > 0;
    EXPECT_TRUE(!continued || ls[i][0] == ' ') << text;
    EXPECT_GT(ls[i].size(), continued ? 1u : 0u) << text;
    EXPECT_TRUE(width < 4 || (i == 0 && start >= width) || ls[i].size() <= size_t(width)) << text;
  }
}

// Lines within the width, ending in "=" when soft, no blank at a line end or (a fold)
// start, escapes whole and upper case, only printable text, blanks and tabs.
void checkQpLayout(const std::string &text, int32_t width, int32_t column) {
  std::vector<std::string> ls = lines(text);
  ls.front().insert(0, static_cast<size_t>(column), 'x');
  for (size_t i = 0; i < ls.size(); ++i) {
    const std::string &l = ls[i];
    const bool last = i + 1 == ls.size();
    const size_t limit = i == 0 ? std::max(width, column + 1) : width;
    EXPECT_TRUE(width < 4 || l.size() <= limit) << text;
    ASSERT_TRUE(last || l.back() == '=') << text;
    const size_t body = l.size() - (last ? 0 : 1);
    EXPECT_TRUE(body == 0 || (l[body - 1] != ' ' && l[body - 1] != '\t')) << text;
    EXPECT_TRUE((i == 0 && column > 0) || l.empty() || (l[0] != ' ' && l[0] != '\t')) << text;
    for (size_t k = 0; k < body; ++k) {
      const unsigned char c = l[k];
      ASSERT_TRUE((c >= 0x21 && c <= 0x7E) || c == ' ' || c == '\t') << text;
      if (c != '=') continue;
      ASSERT_LE(k + 3, body) << "escape cut: " << text;
      for (char h : {l[k + 1], l[k + 2]}) EXPECT_TRUE(isxdigit(h) && !islower(h)) << text;
    }
  }
}

// Widths and start columns, lengths to 200 and all bytes; quoted-printable odd lengths
// are mostly blanks and line ends, so that blanks meet the line ends.
TEST(Codec, RoundTripAtLineLimits) {
  std::mt19937 rng(4648);
  std::string all(256, '\0');
  for (int i = 0; i < 256; ++i) all[i] = static_cast<char>(i);
  for (bool qp : {false, true}) {
    for (int32_t width : {4, 76, -1}) {
      for (int32_t start : {0, 1, 75, qp ? 0 : -1}) {
        for (size_t len = 0; len <= 200; ++len) {
          const std::string bytes =
              len == 200 ? all : randomBytes(rng, len, qp && len % 2 ? "  \t\tab=\r\n\xC3" : "");
          const std::string text = encode(qp ? kQpEnc : kB64Enc, bytes, width, start);
          SCOPED_TRACE(testing::Message() << "qp " << qp << " width " << width << " start "
                                          << start << " len " << len);
          qp ? checkQpLayout(text, width, start) : checkB64Layout(text, width, start);
          ASSERT_EQ(decode(qp ? kQpDec : kB64Dec, text), bytes);
        }
      }
    }
  }
}

TEST(Codec, Encoding) {
  const std::tuple<Encoder, const char *, int32_t, int32_t, const char *> kCases[] = {
      // The test vectors of RFC 4648, section 10, by the length left over.
      {kB64Enc, "", -1, 0, ""}, {kB64Enc, "f", -1, 0, "Zg=="}, {kB64Enc, "fo", -1, 0, "Zm8="},
      {kB64Enc, "foobar", -1, 0, "Zm9vYmFy"}, {kQpEnc, "a=b", -1, 5, "a=3Db"},
      {kQpEnc, "line1\r\nline2\n", -1, 5, "line1=0D=0Aline2=0A"},
      {kQpEnc, "a b\tc", -1, 5, "a b\tc"}, {kQpEnc, " lead", -1, 5, " lead"},  // blanks at ends: layout
      {kQpEnc, " lead", -1, 0, "=20lead"},  // a blank that begins a line would read as a fold
      {kQpEnc, "\xC3\xA9\x7F\x01~!", -1, 5, "=C3=A9=7F=01~!"},
      {kQpEnc, "ab", 4, 3, "=\r\nab"},  // the line is full already
  };
  for (const auto &[enc, plain, width, column, coded] : kCases)
    EXPECT_EQ(encode(enc, plain, width, column), coded) << plain;
}

// Room of every size from -1 to past the result gives its first bytes (also cut in
// mid-group or mid-escape) and nothing is written past the room.
TEST(Codec, LenientAndBoundedDecoding) {
  const std::tuple<Decoder, const char *, std::string> kCases[] = {
      {kB64Dec, "Zm9vYmE=", "fooba"}, {kB64Dec, "Zm9v\r\n YmFy", "foobar"},  // folded
      {kB64Dec, "Zm9v!*YmFy\x80", "foobar"},  // dropped as white space is
      {kB64Dec, "Zm9vYg", "foob"}, {kB64Dec, "Zm9vYmE", "fooba"},  // padding missing
      {kB64Dec, "Zm9vY", "foo"}, {kB64Dec, "Z", ""},  // a lone last digit carries no byte
      {kB64Dec, "Zm9v=YmFy", "foo"}, {kB64Dec, "====", ""},  // "=" ends the data
      {kQpDec, "=", "="}, {kQpDec, "a=4", "a=4"}, {kQpDec, "=G1", "=G1"}, {kQpDec, "=4g", "=4g"},
      {kQpDec, "=4a=4A=e9", "JJ\xE9"}, {kQpDec, "==41", "=A"}, {kQpDec, "= x", "= x"},
      {kQpDec, "soft=\r\nbreak", "softbreak"}, {kQpDec, "soft=\nbreak", "softbreak"},
      {kQpDec, "soft=\rbreak", "softbreak"}, {kQpDec, "soft= \t\r\nbreak", "softbreak"},
      {kQpDec, "=\r\n", ""}, {kQpDec, "hard\r\nbreak", "hard\r\nbreak"},
      {kIraDec, "00abFF", {"\0\xAB\xFF", 3}}, {kIraDec, "ABC", "\xAB"},  // odd last digit dropped
      {kIraDec, "AB G1", "\xAB"}, {kIraDec, "0x12", ""},  // stops at a non-digit
      {kQpDec, "=41b=\r\n=43de=", "AbCde="},
  };
  for (const auto &[dec, text, plain] : kCases) {
    for (int32_t size = -1; size <= static_cast<int32_t>(plain.size()) + 1; ++size) {
      uint8_t buf[32];
      std::memset(buf, 0xEE, sizeof buf);
      const int32_t n = dec(text, buf, size);
      ASSERT_EQ(n, std::clamp(size, 0, static_cast<int32_t>(plain.size()))) << text << size;
      EXPECT_EQ(std::string(buf, buf + n), plain.substr(0, n)) << text;
      for (size_t i = static_cast<size_t>(n); i < sizeof buf; ++i) ASSERT_EQ(buf[i], 0xEE);
    }
  }
}

TEST(Codec, ShortReadsAndStreamFaults) {
  std::mt19937 rng(7);
  std::string bytes = randomBytes(rng, 10000);
  for (Encoder enc : {kB64Enc, kQpEnc}) {
    const std::string whole = encode(enc, bytes, 76, 10);
    for (size_t step : {size_t{1}, size_t{1000}, size_t{4095}}) {
      TestStrm in = testStrm(bytes, step), out = testStrm("", 0);
      EXPECT_EQ(enc(&out.base, &in.base, 76, 10), static_cast<int32_t>(whole.size()));
      EXPECT_EQ(out.written, whole) << "step " << step;
    }
    TestStrm in = testStrm(bytes, SIZE_MAX), out = testStrm("", 0, 5000);
    EXPECT_EQ(enc(&out.base, &in.base, 76, 10), -77);
  }
}

TEST(Codec, NullsAreReportedMisuse) {
  static int misuse = 0;
  void *oldCtx = nullptr;
  KvoAssertHandler old = Tarnex_setAssertHandler(
      [](void *, const char *, const char *, int32_t) { ++misuse; }, nullptr, &oldCtx);
  ScratchStrStrm in("ab", 2);
  uint8_t buf[4];
  char text[8] = "zz";
  EXPECT_EQ(kB64Enc(nullptr, in, 76, 0), 0);
  EXPECT_EQ(kQpEnc(in, nullptr, 76, 0), 0);
  EXPECT_EQ(kB64Dec("Zm9v", nullptr, 4), 0);
  EXPECT_EQ(kQpDec("abc", nullptr, 4), 0);
  EXPECT_EQ(ira_enc_buf_from_buf(nullptr, 8, buf, 2), 0);
  EXPECT_EQ(ira_enc_buf_from_buf(text, 8, nullptr, 2), 0);
  EXPECT_STREQ(text, "");
  EXPECT_EQ(ira_dec_str_to_strm("AA", -1, nullptr), 0);
  EXPECT_EQ(misuse, 7);
  // Null text reads as empty and is no misuse.
  EXPECT_EQ(kB64Dec(nullptr, buf, 4) + kQpDec(nullptr, buf, 4), 0);
  EXPECT_EQ(ira_dec_str_to_buf(nullptr, -1, buf, 4), 0);
  Tarnex_setAssertHandler(old, oldCtx, nullptr);
  EXPECT_EQ(misuse, 7);
}

TEST(Ira, WholeOctetsWithinRoomAndLen) {
  const uint8_t data[] = {0x00, 0xAB, 0x5F};
  for (int32_t size = 0; size <= 9; ++size) {
    char buf[12];
    std::memset(buf, '#', sizeof buf);
    const int32_t want = size < 1 ? 0 : std::min(3, (size - 1) / 2) * 2;
    ASSERT_EQ(ira_enc_buf_from_buf(buf, size, data, 3), want) << size;
    EXPECT_TRUE(size == 0 || std::string(buf) == std::string("00AB5F", want)) << size;
    for (int32_t i = size > 0 ? want + 1 : 0; i < 12; ++i) ASSERT_EQ(buf[i], '#');
  }
  char buf[4] = "zz";
  EXPECT_EQ(ira_enc_buf_from_buf(buf, 4, data, -5), 0);
  EXPECT_STREQ(buf, "");
  tarnex::ScratchStr<8> s;
  KvoStr_setStr(s, "old");
  EXPECT_EQ(ira_enc_cstr_from_buf(s, data, 3), s.get());
  EXPECT_EQ(s.view(), "00AB5F");
  uint8_t out[8] = {};  // len bounds the text; a terminator within len ends it
  EXPECT_EQ(ira_dec_str_to_buf("ABCD", 3, out, sizeof out), 1);
  EXPECT_EQ(out[0], 0xAB);
  EXPECT_EQ(ira_dec_str_to_buf("ABCD", 0, out, sizeof out), 0);
  EXPECT_EQ(ira_dec_str_to_buf("CD\0EF", 5, out, sizeof out), 1);
  EXPECT_EQ(out[0], 0xCD);
}

TEST(Ira, StreamsAcrossBlocks) {
  std::mt19937 rng(23040);
  const std::string bytes = randomBytes(rng, 3000);
  std::vector<char> text(2 * 5000 + 1);
  ScratchStrStrm in(bytes);
  EXPECT_EQ(ira_enc_buf_from_strm(text.data(), static_cast<int32_t>(text.size()), in, 5000),
            6000);  // the stream ends before len
  std::string lower(text.data());
  for (char &c : lower) c = static_cast<char>(tolower(c));
  ScratchMemStrm out(0);
  EXPECT_EQ(ira_dec_str_to_strm(lower.c_str(), -1, out), 3000);
  EXPECT_EQ(contents(out), bytes);
  TestStrm full = testStrm("", 0, 100);
  EXPECT_EQ(ira_dec_str_to_strm(lower.c_str(), -1, &full.base), -77);
  // Only the octets that fit are taken from the stream.
  IStrm_rewind(in);
  char small[7];
  EXPECT_EQ(ira_enc_buf_from_strm(small, sizeof small, in, 100), 6);
  EXPECT_EQ(IStrm_tell(in), 3);
}

}  // namespace
