// The vCard codec: decoder rules, encoder lines and round trips. Records are
// compared as one rendered text, so that a failure shows every field.
#include <gtest/gtest.h>

#include <cstdio>

#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "ostrel/ostrel.h"
#include "tarnex/scratch.hpp"

namespace {

using V = std::vector<std::string>;

std::string memText(IStrm *m) {
  return std::string(reinterpret_cast<const char *>(MemStrm_data(m)),
                     static_cast<size_t>(IStrm_size(m)));
}

const KvoWchar *wide(const char16_t *s) { return reinterpret_cast<const KvoWchar *>(s); }

// A located value is 16-bit text (ASCII in these tests), an inline one bytes.
std::string svalText(const PbSval &sv) {
  if (!PbSval_valid__(&sv)) return "";
  std::string bytes(static_cast<size_t>(IStrm_size(sv.strm)), '\0');
  IStrm_rewind(sv.strm);
  IStrm_read(sv.strm, bytes.data(), static_cast<int32_t>(bytes.size()));
  IStrm_rewind(sv.strm);
  if (sv.loc == 0) return bytes;
  std::u16string units(bytes.size() / 2, u'\0');
  std::memcpy(units.data(), bytes.data(), units.size() * 2);
  return std::string(units.begin(), units.end());
}

// "type[/pref]:v0|v1|..." a field, trailing empty components left out;
// a stream value as "{fmt,loc,content}". One line a slot.
std::string render(PbItem *item) {
  std::string out;
  for (int32_t i = 0; i < item->size; ++i) {
    PbField *f = PbItem_at(item, i);
    if (f == nullptr || f->type[0] == '\0') continue;
    out += f->type;
    if (f->flags != 0) out += "/" + std::to_string(f->flags);
    out += ":";
    int32_t last = PB_VAL_MAX;
    while (last > 0 && KvoWcs_len(&f->vals[last - 1]) == 0) --last;
    for (int32_t v = 0; v < last; ++v) {
      tarnex::ScratchStr<64> s;
      KvoStr_setCwcs(s, &f->vals[v]);
      out += (v ? "|" : "") + std::string(s.view());
    }
    if (f->sval.strm != nullptr || f->sval.fmt[0] || f->sval.loc)
      out += "{" + std::string(f->sval.fmt) + "," + std::to_string(f->sval.loc) + "," +
             svalText(f->sval) + "}";
    out += "\n";
  }
  return out;
}

std::string crlf(const V &lines) {
  std::string s;
  for (const auto &l : lines) s += l + "\r\n";
  return s;
}

class Vcard : public testing::Test {
 protected:
  void SetUp() override { PbItem_new(&item_); }
  void TearDown() override { PbItem_delete(&item_); }

  // The whole text card by card: each card rendered, then "rc N" and what
  // the record held after the result that ended the reading.
  V decodeAll(const std::string &text) {
    tarnex::ScratchStrStrm in(text);
    V got;
    for (int guard = 0; guard < 1000; ++guard) {
      const int32_t rc = Vcard_dec(in, &item_, nullptr);
      got.push_back(rc == 1 ? render(&item_) : "rc " + std::to_string(rc) + render(&item_));
      if (rc < 1) break;
    }
    return got;
  }
  // The one card of a body put between BEGIN and END.
  std::string card(V lines) {
    lines.insert(lines.begin(), {"BEGIN:VCARD", "VERSION:2.1"});
    lines.push_back("END:VCARD");
    const V got = decodeAll(crlf(lines));
    EXPECT_EQ(got.size(), 2u) << crlf(lines);
    return got[0];
  }
  std::string encode(const char *luid = nullptr, uint32_t ver = 0) {
    tarnex::ScratchMemStrm out(0);
    rc_ = Vcard_encx(out, &item_, ver, luid, nullptr);
    return memText(out);
  }
  PbField *put(int32_t slot, const char *type, std::vector<const char *> vals = {},
               int32_t flags = 0) {
    PbField *f = PbItem_write(&item_, slot);
    // At most three characters, always terminated.
    std::snprintf(f->type, sizeof f->type, "%s", type);
    f->flags = flags;
    for (size_t i = 0; i < vals.size(); ++i) KvoWcs_setStr(&f->vals[i], vals[i]);
    return f;
  }

  PbItem item_;
  int32_t rc_ = 0;
};

// ---- Decoder -------------------------------------------------------------------

TEST_F(Vcard, DecodeProperties) {
  const struct { V lines; const char *want; } cases[] = {
      // The first word found wins (WORK;CELL;FAX), also inside a longer word
      // (X-HOMELY); only typed rows take PREF.
      {{"TEL;WORK;FAX:1", "TEL:1", "TEL;HOME;PREF:1", "TEL;TYPE=CELL,HOME:1", "TEL;WORK;CELL;FAX:1",
        "TEL;VIDEO:1", "TEL;PAGER:1", "TEL;MSG:1", "TEL;CAR:1", "TEL;ISDN:1", "TEL;MODEM:1",
        "TEL;X-HOMELY:1", "tel;work;voice;pref:1"},
       "TWF:1\nTPV:1\nTHV/1:1\nTHC:1\nTWF:1\nTPE:1\nTPP:1\nTPM:1\nTPR:1\nTPN:1\nTPD:1\nTHV:1\n"
       "TWV/1:1\n"},
      // CELL is an e-mail position; ADR keeps 7 components.
      {{"EMAIL;INTERNET:a", "EMAIL;HOME:a", "EMAIL;WORK;PREF:a", "EMAIL;CELL:a", "URL;WORK:u",
        "URL;CELL:u", "ADR;HOME;PREF:a;b;c;d;e;f;g;h", "N;PREF:a"},
       "EP:a\nEH:a\nEW/1:a\nEC:a\nUW:u\nUP:u\nAH/1:a|b|c|d|e|f|g\nN:a\n"},
      // X-MS-TEL has no default word: an unknown one drops the line.
      {{"X-MS-TEL;COMPM:1", "X-MS-TEL;ASSISTANT:1", "X-MS-TEL;CALLBACK:1", "X-MS-TEL;RADIO:1",
        "X-MS-TEL;TTYTDD:1", "X-MS-TEL;MMS:1", "X-MS-TEL;TELEX:1", "X-MS-TEL;OTHER:1",
        "X-MS-TEL;MAIN;PREF:1", "X-MS-TEL;NET:1"},
       "TXH:1\nTXA:1\nTXK:1\nTXI:1\nTXY:1\nTXS:1\nTXG:1\nTXZ/1:1\nTXT:1\n"},
      {{"N:a;b;c;d;e;f", "FN:x", "NICKNAME:k", "BDAY:1", "ORG:a\\;b;c", "TITLE:t", "NOTE:a;b",
        "ROLE:r", "UID:u", "REV:v", "KEY:k", "TIMEZONE:z", "X-GRPV:g", "X-GRPI:2",
        "X-MS-N-YOMI:y;z", "X-ACC-NAME:n", "X-ACC-TYPE:t", "X-STAR:1"},
       "N:a|b|c|d|e\nOF:x\nK:k\nB:1\nG:a;b|c\nI:t\nM:a\nOR:r\nOI:u\nOV:v\nOK:k\nOZ:z\nXGV:g\n"
       "XGI:2\nXY:y|z\nXAN:n\nXAT:t\nXS:1\n"},
      // Escapes go in one pass: "\\" is one backslash, "\n" is kept as it is.
      {{"NOTE:a\\\\;b", "TITLE:x\\ny"}, "M:a\\\nI:x\\ny\n"},
      // Dropped names leave nothing; broken quoted-printable stays text.
      {{"LABEL:x", "GEO:1;2", "CATEGORIES:c", "AGENT:y", "NOTE;ENCODING=QUOTED-PRINTABLE:a=ZZb=4"},
       "M:a=ZZb=4\n"},
      {{"NOTE;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:a=C3=A9=0D=0A=", "b"}, "M:a\xC3\xA9\r\nb\n"},
      // A bare word is no format; TYPE is cut to 11 characters and unquoted up
      // to a separator; a located value without text keeps format and place.
      {{"PHOTO;ENCODING=BASE64;TYPE=X:", " YWJj", "", "PHOTO;VALUE=URL:u",
        "LOGO;VALUE=CONTENT-ID;TYPE=GIF:c1", "SOUND;JPEG:xy", "PHOTO;TYPE=ABCDEFGHIJKLMNOP:z",
        "PHOTO;VALUE=URL;TYPE=X:", "PHOTO;TYPE=\"JPEG\":z", "PHOTO;TYPE=\"a:b\";X=1:z",
        "PHOTO;TYPE=\"b=c\":z"},
       "P:{X,0,abc}\nP:{,3,u}\nOL:{GIF,4,c1}\nS:{,0,xy}\nP:{ABCDEFGHIJK,0,z}\nP:{X,3,}\n"
       "P:{JPEG,0,z}\nP:{a,0,z}\nP:{b,0,z}\n"},
  };
  for (const auto &c : cases) EXPECT_EQ(card(c.lines), c.want) << crlf(c.lines);
}

TEST_F(Vcard, DecodeVersionAndLuid) {
  const std::string text = crlf({"BEGIN:VCARD", "VERSION:3.0", "X-IRMC-LUID:12", "N:a",
                                 "END:VCARD", "BEGIN:VCARD", "N:b", "END:VCARD"});
  tarnex::ScratchStrStrm in(text);  // reads the text in place
  tarnex::ScratchStr<16> luid;
  uint32_t ver = 7;
  ASSERT_EQ(Vcard_decx(in, &item_, &ver, luid), 1);
  EXPECT_EQ(ver, 0x300u);
  EXPECT_EQ(luid.view(), "12");
  EXPECT_EQ(render(&item_), "XD:12\nN:a\n");
  ver = 7;
  ASSERT_EQ(Vcard_decx(in, &item_, &ver, nullptr), 1);
  EXPECT_EQ(ver, 7u);  // no VERSION line: left as it was
  EXPECT_EQ(render(&item_), "N:b\n");
}

// ---- Decoder: the frame --------------------------------------------------------

// An embedded AGENT card's BEGIN is a line and its END ends the card; a
// malformed line inside a card is the result; a value cut by the end is 0;
// past PB_FIELD_MAX fields the rest of a card is dropped and the next reads clean.
TEST_F(Vcard, FrameAgentCardsFaultsAndOverflow) {
  V many{"BEGIN:VCARD"};
  std::string first;
  for (int i = 0; i < 200; ++i) many.push_back("TEL:" + std::to_string(i));
  for (int i = 0; i < PB_FIELD_MAX; ++i) first += "TPV:" + std::to_string(i) + "\n";
  many.insert(many.end(), {"END:VCARD", "BEGIN:VCARD", "N:next", "END:VCARD"});
  const struct { V lines, want; } cases[] = {
      {{"BEGIN:VCARD", "VERSION:2.1", "END:VCARD"}, {"", "rc 0"}},
      {{"BEGIN:VCARD", "N:a", "AGENT:", "BEGIN:VCARD", "N:b", "END:VCARD", "TEL:1", "END:VCARD"},
       {"N:a\nN:b\n", "rc 0"}},
      {{"BEGIN:VCARD", "N:a", "TEL;HOME", "END:VCARD"}, {"rc " + std::to_string(OSTREL_MALFORMED)}},
      {many, {first, "N:next\n", "rc 0"}},
  };
  for (const auto &c : cases) EXPECT_EQ(decodeAll(crlf(c.lines)), c.want) << crlf(c.lines);
  EXPECT_EQ(decodeAll("BEGIN:VCARD\r\nNOTE;ENCODING=QUOTED-PRINTABLE:a="), V{"rc 0"});
}

// A card cut anywhere before its END:VCARD is complete is 0 or malformed,
// and leaves the record cleared.
TEST_F(Vcard, FrameEveryCutOff) {
  const std::string text = crlf({"BEGIN:VCARD", "N:a;b", "TEL;CELL:1", "END:VCARD"});
  const size_t complete = text.find("END:VCARD") + std::strlen("END:VCARD");
  const V malformed{"rc " + std::to_string(OSTREL_MALFORMED)};
  for (size_t n = 0; n <= text.size(); ++n) {
    put(0, "OF", {"stale"});
    const V got = decodeAll(text.substr(0, n));
    if (n >= complete)
      EXPECT_EQ(got, (V{"N:a|b\nTPC:1\n", "rc 0"})) << n;
    else
      EXPECT_TRUE(got == V{"rc 0"} || got == malformed) << n << ": " << got.back();
  }
}

// ---- Encoder -----------------------------------------------------------------------

// What the round trip can't show: separators keep component positions,
// one-letter kinds ignore the rest of the type, a missing or unknown
// letter writes no word, text is escaped, and without a luid XD is a line.
TEST_F(Vcard, EncodeRows) {
  const struct {
    const char *type;
    std::vector<const char *> vals;
    int32_t flags;
  } rows[] = {{"N", {"", "b"}, 0},  {"NZZ", {"a"}, 0}, {"G", {"a", "", "c"}, 0},
              {"M", {"1;2\\"}, 0}, {"TPV", {"1"}, 1}, {"TPF", {}, 0},
              {"T", {"1"}, 0},      {"TXQ", {"1"}, 0}, {"TXT", {"1"}, 1},
              {"EP", {"a"}, 0},     {"AH", {}, 0},     {"XY", {"y"}, 0}, {"XD", {"9"}, 0}};
  for (int32_t i = 0; i < 13; ++i) put(i, rows[i].type, rows[i].vals, rows[i].flags);
  EXPECT_EQ(encode(""),
            crlf({"BEGIN:VCARD", "VERSION:2.1", "N:;b;;;", "N:a;;;;", "ORG:a;;c", "NOTE:1\\;2\\\\",
                  "TEL;VOICE;PREF:1", "TEL;FAX:", "TEL:1", "X-MS-TEL:1", "X-MS-TEL;NET;PREF:1",
                  "EMAIL:a", "ADR;HOME:;;;;;;", "X-MS-N-YOMI:y;;;;", "X-IRMC-LUID:9",
                  "END:VCARD"}));
}

TEST_F(Vcard, EncodeSkipsAndStreamValues) {
  // The agent, unknown O, D and X kinds, and a photo without content.
  int32_t slot = 0;
  for (const char *t : {"OA", "OQ", "DZ", "XQ", "P"}) put(slot++, t, {"x"});
  PbField_clear(put(5, "M", {"cleared"}));
  PbSval_setx(&put(6, "P")->sval, wide(u"http://u"), -1, VPI_LOC_URL, "X");
  PbSval_setx(&put(7, "OL")->sval, wide(u"c;1"), -1, VPI_LOC_CID, nullptr);
  const std::string head = "BEGIN:VCARD\r\nVERSION:2.1\r\n";
  EXPECT_EQ(encode(), head + "PHOTO;VALUE=URL;TYPE=X:http://u\r\nLOGO;VALUE=CONTENT-ID:c\\;1\r\n"
                             "END:VCARD\r\n");
  EXPECT_EQ(rc_, 0);
  // A caller's format never breaks the line: it ends before a separator.
  for (const char *fmt : {"A:B", "A=B", "A;B", "A\"B"}) {
    PbSval_setx(&PbItem_at(&item_, 6)->sval, wide(u"u"), -1, VPI_LOC_URL, fmt);
    EXPECT_EQ(encode().substr(head.size(), 30), "PHOTO;VALUE=URL;TYPE=A:u\r\nLOGO") << fmt;
  }
  // A file that can't be read is the card's result; END is still written.
  PbSval_setx(&put(8, "S")->sval, wide(u"/no/such/file"), -1, VPI_LOC_FILE, nullptr);
  put(9, "N", {"after"});
  const std::string text = encode();
  EXPECT_EQ(rc_, OSTREL_NO_FILE);
  EXPECT_EQ(text.find("after"), std::string::npos);
  EXPECT_EQ(text.substr(text.size() - 11), "END:VCARD\r\n");
}

// A whole card byte for byte: a luid argument goes behind VERSION and
// stands for every XD field; dump writes the 2.1 card.
TEST_F(Vcard, EncodeWholeCard) {
  EXPECT_EQ(encode(nullptr, 0x300), "BEGIN:VCARD\r\nVERSION:3.0\r\nEND:VCARD\r\n");
  put(0, "N", {"a", "b"});
  put(1, "TWC", {"1;2"}, 1);
  put(2, "XD", {"9"});
  PbField *photo = put(3, "P");
  IStrm *bytes = MemStrm_xcreatex__(nullptr, 0, __FILE__, __LINE__);
  IStrm_write(bytes, "abcd", 4);
  IStrm_rewind(bytes);
  PbSval_fillx(&photo->sval, bytes, VPI_LOC_INLINE, "X");
  // "abcd" in Base64 is "YWJjZA==", on the property's own line; the next
  // property ends it, no blank line.
  EXPECT_EQ(encode("7"), crlf({"BEGIN:VCARD", "VERSION:2.1", "X-IRMC-LUID:7", "N:a;b;;;",
                               "TEL;WORK;CELL;PREF:1\\;2", "PHOTO;ENCODING=BASE64;TYPE=X:YWJjZA==",
                               "END:VCARD"}));
  EXPECT_EQ(rc_, 0);
  tarnex::ScratchMemStrm out(0);
  PbItem_dump(&item_, out, 0);
  PbItem_dump(&item_, out, 1);
  EXPECT_EQ(memText(out), encode() + encode());
}

// ---- Round trips --------------------------------------------------------------------

TEST_F(Vcard, RoundTripEveryFieldType) {
  std::istringstream types(
      "N OF K B G I M OR OI OV OK OZ THV TWC TPF THE TPP TWM TPR THN TPD TXH TXA TXK TXI TXY TXS "
      "TXG TXZ TXT EH EW EC EP UH UW UP AH AW AP DG DA DY DS DQ DM DI DJ DN XY XGV XGI XD XAN XAT "
      "XS OA");
  int32_t slot = 0;
  for (std::string t; types >> t;) {
    PbField *f = put(slot++, t.c_str(), {"v;1", "\xC3\xA9\r\nx", "", "c\\", "d", "e", "f"},
                     std::strchr("TEUA", t[0]) ? 1 : 0);
    KvoWcs_setStr(&f->desc, "never written");
  }
  PbField *photo = put(slot++, "P");
  IStrm *bytes = MemStrm_xcreatex__(nullptr, 0, __FILE__, __LINE__);
  for (int i = 0; i < 3000; ++i) IStrm_putc(bytes, i * 7);
  IStrm_rewind(bytes);
  PbSval_fillx(&photo->sval, bytes, VPI_LOC_INLINE, "JPEG");
  PbSval_setx(&put(slot++, "S")->sval, wide(u"http://s"), -1, VPI_LOC_URL, "WAVE");
  PbSval_setx(&put(slot++, "OL")->sval, wide(u"cid9"), -1, VPI_LOC_CID, "GIF");

  // What comes back: desc and the agent dropped, components that the row
  // does not hold dropped, the rest in the same order.
  PbItem want, back;
  PbItem_new(&want);
  PbItem_new(&back);
  int32_t w = 0;
  for (int32_t i = 0; i < slot; ++i) {
    PbField *f = PbItem_at(&item_, i);
    if (std::strcmp(f->type, "OA") == 0) continue;
    PbField *g = PbField_assign(PbItem_write(&want, w++), f);
    KvoWcs_clear(&g->desc);
    const std::string t = f->type;
    const int32_t n = t == "N" || t == "XY" ? 5 : t[0] == 'G' ? 3 : t[0] == 'A' ? 7 : 1;
    for (int32_t v = n; v < PB_VAL_MAX; ++v) KvoWcs_clear(&g->vals[v]);
  }
  const std::string text = encode();
  tarnex::ScratchStrStrm in(text);
  EXPECT_EQ(Vcard_dec(in, &back, nullptr), 1) << text;
  EXPECT_EQ(PbItem_cmp(&want, &back), 1) << render(&want) << "----\n" << render(&back);
  EXPECT_EQ(svalText(PbItem_photo(&back)->sval), svalText(photo->sval));
  // Text, record, text: the text written once is the form that stays.
  tarnex::ScratchMemStrm again(0);
  EXPECT_EQ(Vcard_enc(again, &back, 0), 0);
  EXPECT_EQ(memText(again), text);
  PbItem_delete(&back);
  PbItem_delete(&want);
}

}  // namespace
