// Base64, quoted-printable and IRA hexadecimal text.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "tarnex/codec.h"
#include "tarnex/lex.h"
#include "tarnex/scratch.hpp"

namespace {

using tarnex::ScratchMemStrm;
using tarnex::ScratchStrStrm;

// A stream that hands out at most `step` bytes a read and refuses writes
// beyond `room` bytes, to check block edges and stream faults.
struct TestStrm {
  IStrm base{};
  std::string data;
  size_t pos = 0;
  size_t step = 1;
  size_t room = SIZE_MAX;
  std::string written;
};

TestStrm *self(IStrm *s) { return reinterpret_cast<TestStrm *>(s); }

const IStrmOps kTestOps = {
    [](IStrm *) {},
    [](IStrm *, int32_t) -> int32_t { return -1; },
    [](IStrm *) -> int32_t { return -1; },
    [](IStrm *, int32_t) -> int32_t { return -1; },
    [](IStrm *s, void *buf, int32_t n) -> int32_t {
      TestStrm *t = self(s);
      const size_t k = std::min({static_cast<size_t>(n), t->step, t->data.size() - t->pos});
      std::memcpy(buf, t->data.data() + t->pos, k);
      t->pos += k;
      return static_cast<int32_t>(k);
    },
    [](IStrm *s, const void *buf, int32_t n) -> int32_t {
      TestStrm *t = self(s);
      if (t->written.size() + n > t->room) return -77;
      t->written.append(static_cast<const char *>(buf), n);
      return n;
    },
    [](IStrm *, uint32_t, int32_t, int32_t) -> int32_t { return -1; },
    [](IStrm *s) -> int64_t { return static_cast<int64_t>(self(s)->pos); },
    [](IStrm *s) -> int64_t { return static_cast<int64_t>(self(s)->data.size()); },
    [](IStrm *) -> int32_t { return -1; },
    nullptr,
};

TestStrm testStrm(std::string data, size_t step) {
  TestStrm t;
  t.base.ops = &kTestOps;
  t.data = std::move(data);
  t.step = step;
  return t;
}

std::string contents(IStrm *s) {
  return {reinterpret_cast<const char *>(MemStrm_data(s)), static_cast<size_t>(IStrm_size(s))};
}

using Encoder = int32_t (*)(IStrm *, IStrm *, int32_t, int32_t);
using Decoder = int32_t (*)(const char *, uint8_t *, int32_t);

std::string encode(Encoder enc, const std::string &bytes, int32_t width, int32_t start) {
  ScratchStrStrm in(bytes);
  ScratchMemStrm out(0);
  const int32_t n = enc(out, in, width, start);
  std::string text = contents(out);
  EXPECT_EQ(n, static_cast<int32_t>(text.size()));
  return text;
}

std::string decode(Decoder dec, const std::string &text) {
  std::vector<uint8_t> buf(text.size() + 1);
  const int32_t n = dec(text.c_str(), buf.data(), static_cast<int32_t>(buf.size()));
  return {buf.begin(), buf.begin() + n};
}

std::string randomBytes(std::mt19937 &rng, size_t n) {
  std::string s(n, '\0');
  for (char &c : s) c = static_cast<char>(rng() & 0xFF);
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

constexpr int32_t kWidths[] = {4, 76, -1};
constexpr int32_t kStarts[] = {0, 1, 75, -1};

// ---- Base64 -------------------------------------------------------------------

TEST(Base64, Rfc4648Vectors) {
  // The test vectors of RFC 4648, section 10.
  const std::pair<std::string, std::string> kVectors[] = {
      {"", ""},         {"f", "Zg=="},        {"fo", "Zm8="},        {"foo", "Zm9v"},
      {"foob", "Zm9vYg=="}, {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"},
  };
  for (const auto &[plain, coded] : kVectors) {
    EXPECT_EQ(encode(b64_enc_strm_from_strm, plain, -1, 0), coded);
    EXPECT_EQ(decode(b64_dec_str_to_buf, coded), plain);
  }
}

// Every line within the width (the first counted from the start column),
// continuation lines folded with one blank, no line that is a lone blank.
void checkB64Layout(const std::string &text, int32_t width, int32_t start) {
  if (text.empty()) return;
  std::vector<std::string> ls = lines(text);
  if (start == -1) {
    if (ls.size() == 2) {  // no data: the closing line end alone
      EXPECT_EQ(text, "\r\n");
      return;
    }
    EXPECT_EQ(ls.front(), "");
    EXPECT_EQ(ls.back(), "");
    ls.erase(ls.begin());
    ls.pop_back();
  } else {
    ls.front().insert(0, static_cast<size_t>(start), 'x');
  }
  for (size_t i = 0; i < ls.size(); ++i) {
    const bool continued = i > 0 || start == -1;
    if (continued) {
      EXPECT_EQ(ls[i][0], ' ') << text;
    }
    EXPECT_GT(ls[i].size(), continued ? 1u : 0u) << text;
    if (width >= 4 && !(i == 0 && start >= width)) {
      EXPECT_LE(ls[i].size(), size_t(width)) << text;
    }
  }
}

TEST(Base64, RoundTripAtLineLimits) {
  std::mt19937 rng(4648);
  std::string all(256, '\0');
  for (int i = 0; i < 256; ++i) all[i] = static_cast<char>(i);
  for (int32_t width : kWidths) {
    for (int32_t start : kStarts) {
      for (size_t len = 0; len <= 200; ++len) {
        const std::string bytes = len == 200 ? all : randomBytes(rng, len);
        const std::string text = encode(b64_enc_strm_from_strm, bytes, width, start);
        SCOPED_TRACE(testing::Message() << "width " << width << " start " << start << " len "
                                        << len);
        checkB64Layout(text, width, start);
        ASSERT_EQ(decode(b64_dec_str_to_buf, text), bytes);
      }
    }
  }
}

// A property line as the property layer writes it.
std::string propertyLine(const std::string &bytes, int32_t start) {
  const std::string head = "PHOTO;ENCODING=BASE64:";
  const std::string text = encode(b64_enc_strm_from_strm, bytes, 76,
                                  start == -1 ? -1 : static_cast<int32_t>(head.size()));
  return head + text + "\r\nEND:VCARD\r\n";
}

// Readers of 2.1 take the value up to a blank line or the next property,
// readers of 3.0 unfold one line: both must get the bytes from both forms.
TEST(Base64, LexerReadsBothForms) {
  std::mt19937 rng(30);
  const std::string bytes = randomBytes(rng, 200);
  for (int32_t start : {-1, 0}) {
    const std::string doc = propertyLine(bytes, start);
    if (start == -1) {
      EXPECT_NE(doc.find("=\r\n\r\nEND:VCARD"), std::string::npos) << "no blank line behind";
    }
    const size_t colon = doc.find(':') + 1;
    ScratchStrStrm in(doc);
    ScratchMemStrm val(0);
    IStrm_seek(in, static_cast<int64_t>(colon), KVO_SEEK_SET);
    EXPECT_EQ(KvoLex_getLineBase(in, val, 1), 0);
    EXPECT_EQ(contents(val), bytes) << "start " << start;
    tarnex::ScratchStr<64> next;
    int32_t token;
    while ((token = KvoLex_getDef(in, next, ":")) == KVO_LEX_EOL) {
    }
    EXPECT_EQ(token, KVO_LEX_WORD);
    EXPECT_EQ(next.view(), "END");

    ScratchStrStrm in30(doc);
    ScratchMemStrm line(0);
    IStrm_seek(in30, static_cast<int64_t>(colon), KVO_SEEK_SET);
    EXPECT_EQ(KvoLex_getLine(in30, line, 1, 0), 0);
    EXPECT_EQ(decode(b64_dec_str_to_buf, contents(line)), bytes) << "start " << start;
  }
}

TEST(Base64, LenientDecoding) {
  const std::pair<std::string, std::string> kCases[] = {
      {"Zm9v\r\n YmFy", "foobar"},  // folded
      {"Zm9v\tYm\nFy", "foobar"},   // white space anywhere
      {"Zm9v!*YmFy\x80", "foobar"},  // stray bytes dropped
      {"Zm9vYg", "foob"},           // padding missing
      {"Zm9vYmE", "fooba"},
      {"Zm9vY", "foo"},             // a lone last digit carries no byte
      {"Zm9v=YmFy", "foo"},         // "=" ends the data
      {"====", ""},
      {"Z", ""},
      {"!!!", ""},
  };
  for (const auto &[text, plain] : kCases) EXPECT_EQ(decode(b64_dec_str_to_buf, text), plain) << text;
}

// Decoding into k bytes of junk-filled room gives the first k bytes and
// leaves the rest of the junk alone.
void checkBounded(Decoder dec, const char *text, const std::string &plain) {
  for (int32_t size = -1; size <= static_cast<int32_t>(plain.size()) + 1; ++size) {
    uint8_t buf[32];
    std::memset(buf, 0xEE, sizeof buf);
    const int32_t n = dec(text, buf, size);
    const int32_t want = std::clamp(size, 0, static_cast<int32_t>(plain.size()));
    ASSERT_EQ(n, want) << text << " size " << size;
    EXPECT_EQ(std::string(buf, buf + n), plain.substr(0, n));
    for (size_t i = static_cast<size_t>(n); i < sizeof buf; ++i) ASSERT_EQ(buf[i], 0xEE);
  }
  EXPECT_EQ(dec(nullptr, nullptr, 8), 0);
}

TEST(Base64, DecodingStopsWhenBufferIsFull) {
  checkBounded(b64_dec_str_to_buf, "Zm9vYmFyYg==", "foobarb");
  checkBounded(b64_dec_str_to_buf, "Zm9v YmFy Yg", "foobarb");
}

// ---- Streams behind both encoders ------------------------------------------------

TEST(CodecStrm, ShortReadsAndStreamFaults) {
  std::mt19937 rng(7);
  std::string bytes = randomBytes(rng, 10000);
  for (Encoder enc : {b64_enc_strm_from_strm, qp_enc_strm_from_strm}) {
    const std::string whole = encode(enc, bytes, 76, 10);
    for (size_t step : {size_t{1}, size_t{1000}, size_t{4095}}) {
      TestStrm in = testStrm(bytes, step), out = testStrm("", 0);
      EXPECT_EQ(enc(&out.base, &in.base, 76, 10), static_cast<int32_t>(whole.size()));
      EXPECT_EQ(out.written, whole) << "step " << step;
    }
    TestStrm in = testStrm(bytes, SIZE_MAX), out = testStrm("", 0);
    out.room = 5000;
    EXPECT_EQ(enc(&out.base, &in.base, 76, 10), -77);
  }
}

// Counts misuse reports while it lives.
struct MisuseCount {
  int n = 0;
  void *oldCtx = nullptr;
  KvoAssertHandler old;
  MisuseCount() {
    old = Tarnex_setAssertHandler(
        [](void *c, const char *, const char *, int32_t) { ++static_cast<MisuseCount *>(c)->n; },
        this, &oldCtx);
  }
  ~MisuseCount() {
    void *ignored;
    Tarnex_setAssertHandler(old, oldCtx, &ignored);
  }
};

TEST(CodecStrm, NullsAreReportedMisuse) {
  MisuseCount misuse;
  ScratchStrStrm in("ab", 2);
  uint8_t buf[4];
  char text[8] = "zz";
  EXPECT_EQ(b64_enc_strm_from_strm(nullptr, in, 76, 0), 0);
  EXPECT_EQ(qp_enc_strm_from_strm(in, nullptr, 76, 0), 0);
  EXPECT_EQ(b64_dec_str_to_buf("Zm9v", nullptr, 4), 0);
  EXPECT_EQ(qp_dec_str_to_buf("abc", nullptr, 4), 0);
  EXPECT_EQ(ira_enc_buf_from_buf(nullptr, 8, buf, 2), 0);
  EXPECT_EQ(ira_enc_buf_from_buf(text, 8, nullptr, 2), 0);
  EXPECT_STREQ(text, "");
  EXPECT_EQ(ira_dec_str_to_strm("AA", -1, nullptr), 0);
  EXPECT_EQ(misuse.n, 7);
  // Null text reads as empty and is no misuse.
  EXPECT_EQ(b64_dec_str_to_buf(nullptr, buf, 4), 0);
  EXPECT_EQ(ira_dec_str_to_buf(nullptr, -1, buf, 4), 0);
  EXPECT_EQ(misuse.n, 7);
}

// ---- Quoted-printable ---------------------------------------------------------------

TEST(QuotedPrintable, WhatIsEscaped) {
  const struct {
    const char *plain;
    int32_t column;
    const char *coded;
  } kCases[] = {
      {"a=b", 5, "a=3Db"},
      {"line1\r\nline2\n", 5, "line1=0D=0Aline2=0A"},
      {"end ", 5, "end=20"},
      {"tab\t", 5, "tab=09"},
      {"a b\tc", 5, "a b\tc"},
      {" lead", 0, "=20lead"},  // a blank that begins a line would read as a fold
      {" lead", 5, " lead"},
      {"\xC3\xA9\x7F\x01~!", 5, "=C3=A9=7F=01~!"},
  };
  for (const auto &c : kCases)
    EXPECT_EQ(encode(qp_enc_strm_from_strm, c.plain, -1, c.column), c.coded) << c.plain;
  EXPECT_EQ(encode(qp_enc_strm_from_strm, "ab", 4, 3), "=\r\nab");  // the line is full already
}

// The layout rules of the encoder, checked on its output.
void checkQpLayout(const std::string &text, int32_t width, int32_t column) {
  std::vector<std::string> ls = lines(text);
  ls.front().insert(0, static_cast<size_t>(column), 'x');
  for (size_t i = 0; i < ls.size(); ++i) {
    const std::string &l = ls[i];
    const bool last = i + 1 == ls.size();
    if (width >= 4) {
      EXPECT_LE(l.size(), size_t(i == 0 ? std::max(width, column + 1) : width)) << text;
    }
    if (!last) {
      ASSERT_EQ(l.back(), '=') << text;
    }
    const size_t body = l.size() - (last ? 0 : 1);
    if (body > 0) {
      EXPECT_NE(l[body - 1], ' ') << text;
      EXPECT_NE(l[body - 1], '\t') << text;
    }
    if ((i > 0 || column == 0) && !l.empty()) {
      EXPECT_TRUE(l[0] != ' ' && l[0] != '\t') << text;
    }
    for (size_t k = 0; k < body; ++k) {
      const unsigned char c = l[k];
      ASSERT_TRUE((c >= 0x21 && c <= 0x7E) || c == ' ' || c == '\t') << text;
      if (c != '=') continue;
      ASSERT_LE(k + 3, body) << "escape cut: " << text;
      EXPECT_TRUE(isxdigit(l[k + 1]) && !islower(l[k + 1]) && isxdigit(l[k + 2]) &&
                  !islower(l[k + 2])) << text;
    }
  }
}

TEST(QuotedPrintable, RoundTripAtLineLimits) {
  std::mt19937 rng(2045);
  std::string all(256, '\0');
  for (int i = 0; i < 256; ++i) all[i] = static_cast<char>(i);
  // Mostly blanks and text, so that blanks meet the line ends often.
  const std::string mix = "  \t\tab=\r\n\xC3";
  for (int32_t width : kWidths) {
    for (int32_t column : kStarts) {
      if (column < 0) continue;
      for (size_t len = 0; len <= 200; ++len) {
        std::string bytes = len == 200 ? all : randomBytes(rng, len);
        if (len % 2) for (char &c : bytes) c = mix[static_cast<uint8_t>(c) % mix.size()];
        const std::string text = encode(qp_enc_strm_from_strm, bytes, width, column);
        SCOPED_TRACE(testing::Message() << "width " << width << " column " << column << " len "
                                        << len);
        checkQpLayout(text, width, column);
        ASSERT_EQ(decode(qp_dec_str_to_buf, text), bytes);
      }
    }
  }
}

// The lexer undoes soft breaks and folds on the same line ends: the value
// must come back whole, also when it starts with a soft break.
TEST(QuotedPrintable, LexerReadsWhatIsWritten) {
  std::mt19937 rng(76);
  const std::string mix = " \t=\r\nxy\xC3\xA9";
  for (size_t pad : {size_t{0}, size_t{50}, size_t{80}}) {
    std::string bytes = randomBytes(rng, 400);
    for (char &c : bytes) c = mix[static_cast<uint8_t>(c) % mix.size()];
    const std::string head = "NOTE;X-PAD=" + std::string(pad, 'p') + ";ENCODING=QUOTED-PRINTABLE:";
    const std::string doc = head +
                            encode(qp_enc_strm_from_strm, bytes, 76,
                                   static_cast<int32_t>(head.size())) +
                            "\r\nEND:VNOTE\r\n";
    ScratchStrStrm in(doc);
    ScratchMemStrm val(0);
    IStrm_seek(in, static_cast<int64_t>(head.size()), KVO_SEEK_SET);
    EXPECT_EQ(KvoLex_getLineQp(in, val, 1), 0);
    EXPECT_EQ(contents(val), bytes) << doc;
  }
}

TEST(QuotedPrintable, DecoderEdgeCases) {
  const std::pair<std::string, std::string> kCases[] = {
      {"=", "="},           {"a=4", "a=4"},
      {"=G1", "=G1"},       {"=4g", "=4g"},
      {"=4a=4A=e9", "JJ\xE9"}, {"soft=\r\nbreak", "softbreak"},
      {"soft=\nbreak", "softbreak"}, {"soft=\rbreak", "softbreak"},
      {"soft= \t\r\nbreak", "softbreak"}, {"=\r\n", ""},
      {"hard\r\nbreak", "hard\r\nbreak"}, {"= x", "= x"},
      {"==41", "=A"},
  };
  for (const auto &[text, plain] : kCases) EXPECT_EQ(decode(qp_dec_str_to_buf, text), plain) << text;
}

TEST(QuotedPrintable, DecodingStopsWhenBufferIsFull) {
  checkBounded(qp_dec_str_to_buf, "=41b=\r\n=43de=", "AbCde=");
}

// ---- IRA hexadecimal text --------------------------------------------------------------

TEST(Ira, EncodeWholeOctetsThatFit) {
  const uint8_t data[] = {0x00, 0xAB, 0x5F};
  for (int32_t size = 0; size <= 9; ++size) {
    char buf[12];
    std::memset(buf, '#', sizeof buf);
    const int32_t n = ira_enc_buf_from_buf(buf, size, data, 3);
    const int32_t want = size < 1 ? 0 : std::min(3, (size - 1) / 2) * 2;
    ASSERT_EQ(n, want) << size;
    if (size > 0) {
      EXPECT_EQ(std::string(buf), std::string("00AB5F", want));
    }
    for (int32_t i = size > 0 ? want + 1 : 0; i < 12; ++i) ASSERT_EQ(buf[i], '#');
  }
  char buf[4] = "zz";
  EXPECT_EQ(ira_enc_buf_from_buf(buf, 4, data, -5), 0);
  EXPECT_STREQ(buf, "");

  tarnex::ScratchStr<8> s;
  KvoStr_setStr(s, "old");
  EXPECT_EQ(ira_enc_cstr_from_buf(s, data, 3), s.get());
  EXPECT_EQ(s.view(), "00AB5F");
}

TEST(Ira, Decode) {
  const struct {
    const char *text;
    int32_t len;
    std::vector<uint8_t> octets;
  } kCases[] = {
      {"00abFF", -1, {0x00, 0xAB, 0xFF}},
      {"ABC", -1, {0xAB}},        // odd last digit dropped
      {"AB G1", -1, {0xAB}},      // stops at a non-digit
      {"0x12", -1, {}},
      {"ABCD", 3, {0xAB}},        // len bounds the text
      {"ABCD", 0, {}},
      {"AB\0CD", 5, {0xAB}},      // a terminator within len ends it
      {"", -1, {}},
  };
  for (const auto &c : kCases) {
    uint8_t buf[8];
    const int32_t n = ira_dec_str_to_buf(c.text, c.len, buf, sizeof buf);
    EXPECT_EQ(std::vector<uint8_t>(buf, buf + n), c.octets) << c.text << " " << c.len;
  }
  uint8_t buf[4];
  std::memset(buf, 0xEE, sizeof buf);
  EXPECT_EQ(ira_dec_str_to_buf("AABBCC", -1, buf, 2), 2);
  EXPECT_EQ(buf[1], 0xBB);
  EXPECT_EQ(buf[2], 0xEE);
  EXPECT_EQ(ira_dec_str_to_buf(nullptr, -1, buf, 4), 0);
  EXPECT_EQ(ira_dec_str_to_buf("AA", -1, buf, -1), 0);
}

TEST(Ira, StreamsAcrossBlocks) {
  std::mt19937 rng(23040);
  const std::string bytes = randomBytes(rng, 3000);
  std::vector<char> text(2 * 5000 + 1);
  {
    ScratchStrStrm in(bytes);
    EXPECT_EQ(ira_enc_buf_from_strm(text.data(), static_cast<int32_t>(text.size()), in, 5000),
              6000);  // the stream ends before len
  }
  std::string lower(text.data());
  for (char &c : lower) c = static_cast<char>(tolower(c));
  ScratchMemStrm out(0);
  EXPECT_EQ(ira_dec_str_to_strm(lower.c_str(), -1, out), 3000);
  EXPECT_EQ(contents(out), bytes);

  TestStrm full = testStrm("", 0);
  full.room = 100;
  EXPECT_EQ(ira_dec_str_to_strm(lower.c_str(), -1, &full.base), -77);

  // Only the octets that fit are taken from the stream.
  ScratchStrStrm in(bytes);
  char small[7];
  EXPECT_EQ(ira_enc_buf_from_strm(small, sizeof small, in, 100), 6);
  EXPECT_EQ(IStrm_tell(in), 3);
}

}  // namespace
