// The property layer: parameter searches, value components, lines written and read back.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include "ostrel/ostrel.h"
#include "tarnex/scratch.hpp"

namespace {

using tarnex::ScratchMemStrm;
using tarnex::ScratchStr;
using tarnex::ScratchStrStrm;
using V = std::vector<std::string>;

std::string contents(IStrm *s) {
  const int64_t pos = IStrm_tell(s);
  IStrm_rewind(s);
  std::string out(static_cast<size_t>(IStrm_size(s)), '\0');
  if (!out.empty()) IStrm_read(s, out.data(), static_cast<int32_t>(out.size()));
  IStrm_seek(s, pos, KVO_SEEK_SET);
  return out;
}

void fill(IStrm *s, const std::string &text) {
  IStrm_clear(s);
  IStrm_write(s, text.data(), static_cast<int32_t>(text.size()));
  IStrm_rewind(s);
}

struct Params {
  explicit Params(const char *text) { KvoStr_setStr(s, text); }
  ScratchStr<64> s;
};

TEST(VpiParams, GetAnyFindsKeyedValuesOnly) {
  const struct { const char *params, *name; int32_t found; const char *out; } cases[] = {
      {";HOME;X=a", "x", 1, "a"}, {";A=;B=c", "A", 1, ""}, {";A=;B=c", "b", 1, "c"},
      {";A=", "A", 0, ""},           // "=" at the very end, nothing behind
      {";HOME", "HOME", 0, ""},      // a bare word never matches
      {";TYPE=a;TYPE=b", "TYPE", 1, "a"},  // first match wins
      {";A==b;TYPE=x", "TYPE", 0, ""},     // stray "=" stops the search
      {";;;TYPE=jpeg", "type", 1, "jpeg"}, {";X=\"a;b\";TYPE=x", "X", 1, "\"a;b\""},
      {"", "TYPE", 0, ""},
  };
  for (const auto &c : cases) {
    Params p(c.params);
    char out[16] = "junk";
    EXPECT_EQ(VpiParams_getAny(p.s, c.name, out, sizeof out), c.found) << c.params;
    if (c.found) { EXPECT_STREQ(out, c.out) << c.params; }
  }
  Params p(";TYPE=averyveryverylongword");
  char small[5];
  EXPECT_EQ(VpiParams_getFmt(p.s, small, sizeof small), 1);
  EXPECT_STREQ(small, "aver");
  EXPECT_EQ(VpiParams_getFmt(p.s, nullptr, 0), 1);
}

TEST(VpiParams, CodeSearchesReadBareAndKeyedForms) {
  const struct { const char *params; int32_t cs, enc, vl; } cases[] = {
      {";CHARSET=UTF-8", VPI_CS_UTF8, 0, 0},    {";CHARSET=ISO-8859-1", VPI_CS_NONE, 0, 0},
      {";UCS2;utf-8", VPI_CS_UTF8, 0, 0},       {";CHARSET=UTF-7", VPI_CS_UTF7, 0, 0},
      {";CHARSET=UCS2", VPI_CS_UCS2, 0, 0},     {";ENCODING=B", 0, VPI_ENC_BASE64, 0},
      {";ENCODING=BASE64", 0, VPI_ENC_BASE64, 0}, {";VALUE=URL", 0, 0, VPI_LOC_URL},
      {";QUOTED-PRINTABLE;utf-8", VPI_CS_UTF8, VPI_ENC_QP, 0},
      {";VALUE=CONTENT-ID", 0, 0, VPI_LOC_CID}, {";HOME", 0, 0, 0},
      // table order, not text order, decides within charset and encoding
      {";ENCODING=BASE64;UTF-7;QUOTED-PRINTABLE", VPI_CS_UTF7, VPI_ENC_QP, 0},
  };
  for (const auto &c : cases) {
    Params p(c.params);
    EXPECT_EQ(VpiParams_getCs(p.s), c.cs) << c.params;
    EXPECT_EQ(VpiParams_getEnc(p.s), c.enc) << c.params;
    EXPECT_EQ(VpiParams_getVl(p.s), c.vl) << c.params;
  }
}

TEST(VpiParams, PutAppends) {
  ScratchStr<32> p;
  VpiParams_putVl(p, VPI_LOC_INLINE);
  VpiParams_putFmt(p, "");
  VpiParams_putFmt(p, nullptr);  // the default and no format write nothing
  VpiParams_putVl(p, VPI_LOC_URL);
  VpiParams_putFmt(p, "JPEG");
  VpiParams_putVl(p, VPI_LOC_CID);
  EXPECT_STREQ(p.c_str(), ";VALUE=URL;TYPE=JPEG;VALUE=CONTENT-ID");
}

// Reads components until the reader gives 0; each entry is "text|result".
V components(const std::string &value, const char *set, int32_t escaped = 1) {
  ScratchStrStrm in(value);
  ScratchStr<8> out;
  V got;
  for (int i = 0; i < 10; ++i) {
    const int32_t more = VpiVal_getCstr(in, out, escaped, set);
    got.push_back(std::string(out.view()) + (more ? "|1" : "|0"));
    if (!more) break;
  }
  return got;
}

TEST(VpiVal, ComponentsAndEscapes) {
  EXPECT_EQ(components("a\\;b;c", nullptr), (V{"a;b|1", "c|1", "|0"}));
  EXPECT_EQ(components("ab\\", nullptr), (V{"ab\\|1", "|0"}));
  EXPECT_EQ(components("a\\nb", nullptr), (V{"a\\nb|1", "|0"}));  // not an escape
  EXPECT_EQ(components("a\\\\nb", nullptr), (V{"a\\nb|1", "|0"}));  // one pass
  EXPECT_EQ(components(";;", nullptr), (V{"|1", "|1", "|0"}));  // empty components
  EXPECT_EQ(components("", nullptr), (V{"|0"}));
  // A set without ";": "\;" keeps its backslash and still ends the component.
  EXPECT_EQ(components("a\\;b\\,c", ","), (V{"a\\|1", "b,c|1", "|0"}));
  const std::string longText(1000, 'x');  // past the stack buffer
  EXPECT_EQ(components(longText + ";y", nullptr), (V{longText + "|1", "y|1", "|0"}));
  EXPECT_EQ(components("a;b\\;c", nullptr, 0), (V{"a;b\\;c|1", "|0"}));  // unescaped: one component
}

TEST(VpiVal, WideComponents) {
  ScratchStrStrm in("caf\xC3\xA9\\;\xF0\x9F\x98\x80;\xC5\xBB");  // "\;" then U+1F600
  tarnex::ScratchWcs<8> out;
  ASSERT_NE(VpiVal_getCwcs(in, out, 1, nullptr), 0);
  const std::vector<KvoWchar> first(out.c_str(), out.c_str() + out.len());
  EXPECT_EQ(first, (std::vector<KvoWchar>{'c', 'a', 'f', 0xE9, ';', 0xD83D, 0xDE00}));
  ASSERT_NE(VpiVal_getCwcs(in, out, 1, nullptr), 0);
  ASSERT_EQ(out.len(), 1);
  EXPECT_EQ(out.c_str()[0], 0x17B);  // low byte 0x7B must not pass for an escape
  EXPECT_EQ(VpiVal_getCwcs(in, out, 1, nullptr), 0);
}

TEST(VpiVal, AddWritesSeparatorsAndEscapes) {
  ScratchMemStrm m(0);
  VpiVal_addStr(m, "", -1, 1, nullptr, 0);
  VpiVal_addStr(m, nullptr, -1, 1, nullptr, 0);
  EXPECT_EQ(contents(m), "");
  VpiVal_addStr(m, "a;b\\c", -1, 1, nullptr, 1);
  VpiVal_addStr(m, "x;yz", 3, 0, nullptr, 0);
  const KvoWchar wide[] = {'d', ';', 0xE9, 0};
  VpiVal_addStrW(m, wide, -1, 1, nullptr, 0);
  EXPECT_EQ(contents(m), "a\\;b\\\\c;x;y;d\\;\xC3\xA9");
  char *s = VpiVal_getStr(m, 1, nullptr);  // the stream stands at its end
  EXPECT_EQ(s, nullptr);
  IStrm_rewind(m);
  s = VpiVal_getStr(m, 1, nullptr);
  ASSERT_NE(s, nullptr);
  EXPECT_STREQ(s, "a;b\\c");
  kvo_free__(s, __FILE__, __LINE__);
}

// One property per entry: "name|params|value" or the result code.
V decodeAll(const std::string &text) {
  ScratchStrStrm in(text);
  ScratchStr<32> name, params;
  ScratchMemStrm val(0);
  V got;
  for (int i = 0; i < 20; ++i) {
    const int32_t rc = VpiDec_getStrm(in, name, params, val);
    const std::string out = std::string(name.view()) + "|" + std::string(params.view()) + "|";
    if (rc == 1) {
      got.push_back(out + contents(val));
      continue;
    }
    got.push_back(std::to_string(rc));  // and nothing left in the outputs
    if (out != "||" || IStrm_size(val) != 0) got.push_back("left: " + out + contents(val));
    break;
  }
  return got;
}

// Options that break no line, changed by `set`.
template <class Set>
VpiEncOpts with(Set set) {
  VpiEncOpts o{};
  o.maxLine = -1;
  set(o);
  return o;
}

std::string encode(const char *name, const char *params, const std::string &value,
                   const VpiEncOpts *opts = nullptr, int32_t binary = 0) {
  ScratchMemStrm out(0), val(0);
  fill(val, value);
  Params p(params ? params : "");
  EXPECT_EQ(VpiEnc_putStrm(out, name, params ? p.s.get() : nullptr, val, binary, opts), 0);
  return contents(out);
}

// The charset and encoding come from the value, written before the caller's parameters.
TEST(VpiEnc, ChoosesParametersFromTheValue) {
  EXPECT_EQ(encode("NOTE", ";X=1", ""), "NOTE;X=1:\r\n");
  EXPECT_EQ(encode("NOTE", nullptr, "a\r\nb"), "NOTE;ENCODING=QUOTED-PRINTABLE:a=0D=0Ab\r\n");
  EXPECT_EQ(encode("TEL", ";WORK;CELL", "\xC3\xA9"), "TEL;CHARSET=utf-8;WORK;CELL:\xC3\xA9\r\n");
  // A NUL before the first high byte must not hide it from the charset pass.
  EXPECT_EQ(encode("X", nullptr, std::string("a\0\xC3\xA9", 4)),
            "X;ENCODING=QUOTED-PRINTABLE:a=00=C3=A9\r\n");
  VpiEncOpts o = with([](VpiEncOpts &x) { x.noCs = 1; });
  EXPECT_EQ(encode("N", nullptr, "\xC3\xA9", &o), "N:\xC3\xA9\r\n");
  o = with([](VpiEncOpts &x) { x.hiBitEnc = 1; });
  EXPECT_EQ(encode("N", nullptr, "\xC3\xA9", &o), "N;utf-8;QUOTED-PRINTABLE:=C3=A9\r\n");
  o.isEncChar = [](int c) { return c == 'z' ? 1 : 0; };  // replaces hiBitEnc
  EXPECT_EQ(encode("N", nullptr, "\xC3\xA9", &o), "N;utf-8:\xC3\xA9\r\n");
  EXPECT_EQ(encode("N", nullptr, "az", &o), "N;QUOTED-PRINTABLE:az\r\n");
  // UCS-2 makes every 8-bit text need an encoding.
  o = with([](VpiEncOpts &x) { x.textCs = VPI_CS_UCS2, x.csKeyed = 1; });
  EXPECT_EQ(encode("N", nullptr, "plain", &o), "N:plain\r\n");
  EXPECT_EQ(encode("N", nullptr, "\xC3\xA9", &o), "N;CHARSET=UCS2;QUOTED-PRINTABLE:=00=E9\r\n");
}

TEST(VpiEnc, BinaryValuesNeverGetACharset) {
  const std::string bytes("\xFF\x00\x80zz", 5);
  const std::string line = encode("PHOTO", ";TYPE=X", bytes, nullptr, 1);
  EXPECT_EQ(decodeAll(line), (V{"PHOTO|;ENCODING=BASE64;TYPE=X|" + bytes, "0"}));
  ScratchMemStrm out(0);
  EXPECT_EQ(VpiEnc_putStrm(out, "PHOTO", nullptr, nullptr, 1, nullptr), 0);
  EXPECT_EQ(contents(out), "PHOTO;ENCODING=BASE64:\r\n");
}

TEST(VpiEnc, SoftBreaksCountFromTheNamesFirstByte) {
  VpiEncOpts o{};
  o.maxLine = 0;
  const std::string value(600, 'v');
  const std::string text = encode("NOTE", nullptr, value, &o);
  const std::string firstLine = text.substr(0, text.find("\r\n"));
  EXPECT_EQ(firstLine.size(), 253u);  // 252 columns, then "="
  EXPECT_EQ(firstLine.back(), '=');
  o.maxLine = 40;
  const std::string narrow = encode("NOTE", ";X", value, &o);
  size_t start = 0, longest = 0;
  for (size_t end; (end = narrow.find("\r\n", start)) != std::string::npos; start = end + 2)
    longest = std::max(longest, end - start);
  EXPECT_EQ(longest, 41u);
  o.maxLine = -1;
  EXPECT_EQ(encode("NOTE", nullptr, value, &o), "NOTE:" + value + "\r\n");
}

// Every charset and encoding the encoder can be asked for reads back to the same bytes.
TEST(VpiEnc, EveryCharsetAndEncodingReadsBack) {
  const std::string values[] = {
      "plain words", "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80", "two\r\nlines=and \tend ",
      std::string(300, 'w') + "\xC3\xA9", "+plus-minus+-", ""};
  for (int32_t cs : {0, VPI_CS_UTF8, VPI_CS_UCS2, VPI_CS_UTF7}) {
    for (int32_t enc : {0, VPI_ENC_QP, VPI_ENC_BASE64, VPI_ENC_B}) {
      for (int32_t maxLine : {-1, 0, 60}) {
        for (const std::string &v : values) {
          const VpiEncOpts o = with([&](VpiEncOpts &x) {
            x.textCs = cs, x.textEnc = enc, x.csKeyed = cs & 1, x.encKeyed = enc & 1;
            x.maxLine = maxLine;
            x.isEncChar = [](int c) { return c >= 0x80 || c < 0x20 ? 1 : 0; };
          });
          const std::string line = encode("NOTE", ";X-A=1", v, &o);
          const std::string params = line.substr(4, line.find(':') - 4);  // as written
          EXPECT_TRUE(params.ends_with(";X-A=1")) << line;
          EXPECT_EQ(decodeAll(line), (V{"NOTE|" + params + "|" + v, "0"}))
              << "cs " << cs << " enc " << enc << " max " << maxLine << "\n" << line;
        }
      }
    }
  }
}

TEST(VpiEnc, StrFormsEscapeByOptions) {
  ScratchMemStrm out(0);
  VpiEnc_putStr(out, "NOTE", nullptr, "a;b", -1, nullptr);
  const VpiEncOpts o = with([](VpiEncOpts &) {});  // escape 0
  VpiEnc_putStr(out, "NOTE", nullptr, "a;b", -1, &o);
  VpiEnc_putStrx(out, "NOTE", nullptr, "a;b\\c", 4, nullptr, 1, "\\");
  const KvoWchar wide[] = {'x', ';', 0};
  VpiEnc_putStrW(out, "NOTE", nullptr, wide, 99, nullptr);
  EXPECT_EQ(contents(out), "NOTE:a\\;b\r\nNOTE:a;b\r\nNOTE:a;b\\\\c\r\nNOTE:x\\;\r\n");
}

TEST(VpiEnc, FileValues) {
  ScratchMemStrm out(0);
  EXPECT_EQ(VpiEnc_putFile(out, "PHOTO", nullptr, "/nonexistent/dir/x.jpg", nullptr),
            OSTREL_NO_FILE);
  EXPECT_EQ(IStrm_size(out), 0);
  const std::string path = testing::TempDir() + "vpi_photo.bin";
  std::ofstream(path, std::ios::binary) << "\x01\x02\x03";
  const std::vector<KvoWchar> wpath(path.c_str(), path.c_str() + path.size() + 1);
  EXPECT_EQ(VpiEnc_putFileW(out, "PHOTO", nullptr, wpath.data(), nullptr), 0);
  EXPECT_EQ(decodeAll(contents(out)), (V{"PHOTO|;ENCODING=BASE64|\x01\x02\x03", "0"}));
}

// Written behind the first VERSION line (nowhere without one); read from any line.
TEST(VpiLuid, PutBehindTheVersionLineAndFoundAnywhere) {
  const std::string card = "BEGIN:VCARD\r\nVERSION:2.1\r\nN:a\r\nEND:VCARD\r\n";
  auto putLuid = [](const std::string &text, const char *luid, int32_t rc) {
    ScratchMemStrm m(0);
    fill(m, text);
    EXPECT_EQ(VpiEnc_putLuid(m, luid), rc) << text;
    return contents(m);
  };
  EXPECT_EQ(putLuid(card, "7", 1),
            "BEGIN:VCARD\r\nVERSION:2.1\r\nX-IRMC-LUID:7\r\nN:a\r\nEND:VCARD\r\n");
  EXPECT_EQ(putLuid(card, "", 1), card);
  EXPECT_EQ(putLuid(card, nullptr, 1), card);
  EXPECT_EQ(putLuid("BEGIN:VCARD\r\nN:a\r\n", "7", 0), "BEGIN:VCARD\r\nN:a\r\n");
  ScratchStrStrm in("BEGIN:VCARD\r\nN:a\r\nx-irmc-luid:12\\;3\r\nEND:VCARD\r\n");
  ScratchStr<16> luid;
  EXPECT_EQ(VpiDec_getLuid(in, luid), 1);
  EXPECT_STREQ(luid.c_str(), "12;3");
  ScratchStrStrm none(card);
  KvoStr_setStr(luid, "kept");
  EXPECT_EQ(VpiDec_getLuid(none, luid), 0);
  EXPECT_STREQ(luid.c_str(), "kept");
}

TEST(VpiDec, PropertiesOfAStream) {
  EXPECT_EQ(decodeAll(""), (V{"0"}));
  EXPECT_EQ(decodeAll("NOTE:abc\r\n"), (V{"NOTE||abc", "0"}));
  EXPECT_EQ(decodeAll("\r\n\r\nTEL;HOME;PREF:1\r\n\r\n"), (V{"TEL|;HOME;PREF|1", "0"}));
  EXPECT_EQ(decodeAll("NOTE:abc"), (V{"NOTE||abc", "0"}));  // ends without CR LF
  EXPECT_EQ(decodeAll(":x\r\n;y\r\nA:1\nB:2\rC:3"), (V{"A||1", "B||2", "C||3", "0"}));
  EXPECT_EQ(decodeAll("PHOTO;ENCODING=B:AQID\r\n BA==\r\nN:x\r\n"),
            (V{std::string("PHOTO|;ENCODING=B|\x01\x02\x03\x04"), "N||x", "0"}));
  EXPECT_EQ(decodeAll("N;CHARSET=UCS2;ENCODING=BASE64:AGEA6Q==\r\n\r\n"),
            (V{"N|;CHARSET=UCS2;ENCODING=BASE64|a\xC3\xA9", "0"}));
  EXPECT_EQ(decodeAll("NOTE:a\r\n b\r\n\tc\r\n"), (V{"NOTE||abc", "0"}));
  EXPECT_EQ(decodeAll(std::string("NOTE:a\0b\xFF\r\n", 9)),
            (V{std::string("NOTE||a\0b\xFF", 10), "0"}));
  // A byte-order mark belongs to no name, but only at the very start.
  EXPECT_EQ(decodeAll("\xEF\xBB\xBFN;X:1\r\n\xEF\xBB\xBF" "B:2\r\n"),
            (V{"N|;X|1", "\xEF\xBB\xBF" "B||2", "0"}));
  EXPECT_EQ(decodeAll("\xEF\xBBN:1"), (V{"\xEF\xBBN||1", "0"}));
  EXPECT_EQ(decodeAll("NOTE\r\nN:x\r\n"), (V{"-251"}));  // a line without ":"
  EXPECT_EQ(decodeAll("N;A\r\n:x\r\n"), (V{"-251"}));
  const std::string huge(1 << 20, 'q');  // far past every line buffer
  EXPECT_EQ(decodeAll("NOTE:" + huge + "\r\n"), (V{"NOTE||" + huge, "0"}));
}

}  // namespace
