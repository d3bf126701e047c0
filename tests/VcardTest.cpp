// The vCard codec: decoder rules, encoder lines, and round trips, through
// the C interface. Records are compared as one rendered text, so that a
// failure shows every field that came out.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "ostrel/ostrel.h"
#include "tarnex/scratch.hpp"

namespace {

std::string utf8(const KvoWcs *w) {
  tarnex::ScratchStr<64> s;
  KvoStr_setCwcs(s, w);
  return std::string(s.view());
}

std::string svalText(const PbSval &sv) {
  if (!PbSval_valid__(&sv)) return "";
  const int64_t n = IStrm_size(sv.strm);
  std::string bytes(static_cast<size_t>(n), '\0');
  IStrm_rewind(sv.strm);
  IStrm_read(sv.strm, bytes.data(), static_cast<int32_t>(n));
  IStrm_rewind(sv.strm);
  if (sv.loc == 0) return bytes;
  std::u16string units(bytes.size() / 2, u'\0');
  std::memcpy(units.data(), bytes.data(), units.size() * 2);
  std::string out;
  for (char16_t u : units) out += static_cast<char>(u);  // ASCII in these tests
  return out;
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
    for (int32_t v = 0; v < last; ++v) out += (v ? "|" : "") + utf8(&f->vals[v]);
    if (f->sval.strm != nullptr || f->sval.fmt[0] || f->sval.loc)
      out += "{" + std::string(f->sval.fmt) + "," + std::to_string(f->sval.loc) + "," +
             svalText(f->sval) + "}";
    out += "\n";
  }
  return out;
}

std::string crlf(const std::vector<std::string> &lines) {
  std::string s;
  for (const auto &l : lines) s += l + "\r\n";
  return s;
}

class Vcard : public testing::Test {
 protected:
  void SetUp() override { PbItem_new(&item_); }
  void TearDown() override { PbItem_delete(&item_); }

  // Decodes the whole text card by card: results and the rendered cards.
  std::vector<std::string> decodeAll(const std::string &text, std::vector<int32_t> *codes) {
    tarnex::ScratchStrStrm in(text);
    std::vector<std::string> cards;
    for (int guard = 0; guard < 1000; ++guard) {
      const int32_t rc = Vcard_dec(in, &item_, nullptr);
      codes->push_back(rc);
      if (rc < 1) break;
      cards.push_back(render(&item_));
    }
    return cards;
  }
  // The one card of a body put between BEGIN and END.
  std::string card(const std::vector<std::string> &body) {
    std::vector<std::string> lines{"BEGIN:VCARD", "VERSION:2.1"};
    lines.insert(lines.end(), body.begin(), body.end());
    lines.push_back("END:VCARD");
    const std::string text = crlf(lines);
    tarnex::ScratchStrStrm in(text);
    EXPECT_EQ(Vcard_dec(in, &item_, nullptr), 1) << text;
    return render(&item_);
  }
  std::string encode(const char *luid = nullptr, uint32_t ver = 0) {
    tarnex::ScratchMemStrm out(0);
    rc_ = Vcard_encx(out, &item_, ver, luid, nullptr);
    return std::string(reinterpret_cast<const char *>(MemStrm_data(out)),
                       static_cast<size_t>(IStrm_size(out)));
  }
  PbField *put(int32_t slot, const char *type, std::vector<const char *> vals = {},
               int32_t flags = 0) {
    PbField *f = PbItem_write(&item_, slot);
    std::strncpy(f->type, type, 3);
    f->flags = flags;
    for (size_t i = 0; i < vals.size(); ++i) KvoWcs_setStr(&f->vals[i], vals[i]);
    return f;
  }
  // The property lines of a record minus the frame lines.
  std::string body(const char *luid = nullptr) {
    std::string s = encode(luid);
    const std::string head = "BEGIN:VCARD\r\nVERSION:2.1\r\n", foot = "END:VCARD\r\n";
    EXPECT_EQ(s.substr(0, head.size()), head);
    EXPECT_GE(s.size(), head.size() + foot.size());
    EXPECT_EQ(s.substr(s.size() - foot.size()), foot);
    return s.substr(head.size(), s.size() - head.size() - foot.size());
  }

  PbItem item_;
  int32_t rc_ = 0;
};

// ---- Decoder: type rules ------------------------------------------------------

TEST_F(Vcard, DecodeTypeRules) {
  struct Case {
    const char *line, *want;
  } cases[] = {
      {"TEL;WORK;FAX:1", "TWF:1\n"},
      {"TEL:1", "TPV:1\n"},
      {"TEL;HOME;PREF:1", "THV/1:1\n"},
      {"TEL;TYPE=CELL,HOME:1", "THC:1\n"},
      {"TEL;WORK;CELL;FAX:1", "TWF:1\n"},  // the device order decides
      {"TEL;VIDEO:1", "TPE:1\n"},
      {"TEL;PAGER:1", "TPP:1\n"},
      {"TEL;MSG:1", "TPM:1\n"},
      {"TEL;CAR:1", "TPR:1\n"},
      {"TEL;ISDN:1", "TPN:1\n"},
      {"TEL;MODEM:1", "TPD:1\n"},
      {"TEL;X-HOMELY:1", "THV:1\n"},  // a word inside a longer word counts
      {"tel;work;voice;pref:1", "TWV/1:1\n"},
      {"EMAIL;INTERNET:a", "EP:a\n"},
      {"EMAIL;HOME:a", "EH:a\n"},
      {"EMAIL;WORK;PREF:a", "EW/1:a\n"},
      {"EMAIL;CELL:a", "EC:a\n"},
      {"URL;WORK:u", "UW:u\n"},
      {"URL;CELL:u", "UP:u\n"},  // cell is an e-mail position only
      {"ADR;HOME;PREF:a;b;c;d;e;f;g;h", "AH/1:a|b|c|d|e|f|g\n"},
      {"N;PREF:a", "N:a\n"},  // rows without the mark keep flags 0
      {"X-MS-TEL;COMPM:1", "TXH:1\n"},
      {"X-MS-TEL;ASSISTANT:1", "TXA:1\n"},
      {"X-MS-TEL;CALLBACK:1", "TXK:1\n"},
      {"X-MS-TEL;RADIO:1", "TXI:1\n"},
      {"X-MS-TEL;TTYTDD:1", "TXY:1\n"},
      {"X-MS-TEL;MMS:1", "TXS:1\n"},
      {"X-MS-TEL;TELEX:1", "TXG:1\n"},
      {"X-MS-TEL;MAIN;PREF:1", "TXZ/1:1\n"},
      {"X-MS-TEL;NET:1", "TXT:1\n"},
      {"X-MS-TEL;OTHER:1", ""},
  };
  for (const Case &c : cases) EXPECT_EQ(card({c.line}), c.want) << c.line;
}

TEST_F(Vcard, DecodeSimpleRowsAndComponents) {
  EXPECT_EQ(card({"N:a;b;c;d;e;f", "FN:x", "NICKNAME:k", "BDAY:1", "ORG:a\\;b;c", "TITLE:t",
                  "NOTE:a;b", "ROLE:r", "UID:u", "REV:v", "KEY:k", "TIMEZONE:z",
                  "X-GRPV:g", "X-GRPI:2", "X-MS-N-YOMI:y;z", "X-ACC-NAME:n", "X-ACC-TYPE:t",
                  "X-STAR:1"}),
            "N:a|b|c|d|e\nOF:x\nK:k\nB:1\nG:a;b|c\nI:t\nM:a\nOR:r\nOI:u\nOV:v\nOK:k\nOZ:z\n"
            "XGV:g\nXGI:2\nXY:y|z\nXAN:n\nXAT:t\nXS:1\n");
  EXPECT_EQ(card({"X-GTALK:1", "X-AIM:2", "X-YAHOO:3", "X-SKYPE:4", "X-QQ:5", "X-MSN:6",
                  "X-ICQ:7", "X-JABBER:8", "X-NETMEETING:9"}),
            "DG:1\nDA:2\nDY:3\nDS:4\nDQ:5\nDM:6\nDI:7\nDJ:8\nDN:9\n");
  // Escapes go in one pass: "\\" is one backslash, "\n" is kept as it is.
  EXPECT_EQ(card({"NOTE:a\\\\;b", "TITLE:x\\ny"}), "M:a\\\nI:x\\ny\n");
  EXPECT_EQ(card({"LABEL:x", "GEO:1;2", "CATEGORIES:c", "AGENT:y"}), "");
  EXPECT_EQ(card({"NOTE;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:a=C3=A9=0D=0A=", "b"}),
            "M:a\xC3\xA9\r\nb\n");
}

TEST_F(Vcard, DecodeStreamFields) {
  EXPECT_EQ(card({"PHOTO;ENCODING=BASE64;TYPE=X:", " YWJj", ""}), "P:{X,0,abc}\n");
  EXPECT_EQ(card({"PHOTO;VALUE=URL:u"}), "P:{,3,u}\n");
  EXPECT_EQ(card({"LOGO;VALUE=CONTENT-ID;TYPE=GIF:c1"}), "OL:{GIF,4,c1}\n");
  EXPECT_EQ(card({"SOUND;JPEG:xy"}), "S:{,0,xy}\n");  // a bare word is no format
  // A TYPE longer than 11 characters is cut to fit the record.
  EXPECT_EQ(card({"PHOTO;TYPE=ABCDEFGHIJKLMNOP:z"}), "P:{ABCDEFGHIJK,0,z}\n");
  // A located value with no text keeps its format and place but no stream.
  EXPECT_EQ(card({"PHOTO;VALUE=URL;TYPE=X:"}), "P:{X,3,}\n");
  // Quotes are dropped, and a separator only they protected ends the format,
  // so that the encoder can write back what is kept.
  EXPECT_EQ(card({"PHOTO;TYPE=\"JPEG\":z"}), "P:{JPEG,0,z}\n");
  EXPECT_EQ(card({"PHOTO;TYPE=\"a:b\";X=1:z"}), "P:{a,0,z}\n");
}

TEST_F(Vcard, DecodeVersionAndLuid) {
  const std::string text =
      crlf({"BEGIN:VCARD", "VERSION:3.0", "X-IRMC-LUID:12", "N:a", "END:VCARD", "BEGIN:VCARD",
            "N:b", "END:VCARD"});
  tarnex::ScratchStrStrm in(text);
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

TEST_F(Vcard, FrameCardsGarbageAndNesting) {
  std::vector<int32_t> codes;
  EXPECT_EQ(decodeAll(crlf({"BEGIN:VCARD", "VERSION:2.1", "END:VCARD"}), &codes),
            std::vector<std::string>{""});
  EXPECT_EQ(codes, (std::vector<int32_t>{1, 0}));

  codes.clear();
  const std::string text = crlf({"X-JUNK:1", "BEGIN:VCALENDAR", "N:no", "END:VCARD",
                                 "begin:vcard", "n:a", "END:VCALENDAR", "end:vcard", "",
                                 "NOTE:between", "BEGIN:VCARD", "TEL:2", "END:VCARD"});
  EXPECT_EQ(decodeAll(text, &codes), (std::vector<std::string>{"N:a\n", "TPV:2\n"}));
  EXPECT_EQ(codes, (std::vector<int32_t>{1, 1, 0}));

  // A second BEGIN is just an unknown line, and the first END ends the
  // card, also for an embedded AGENT card.
  codes.clear();
  EXPECT_EQ(decodeAll(crlf({"BEGIN:VCARD", "N:a", "AGENT:", "BEGIN:VCARD", "N:b", "END:VCARD",
                            "TEL:1", "END:VCARD"}),
                      &codes),
            std::vector<std::string>{"N:a\nN:b\n"});
  EXPECT_EQ(codes, (std::vector<int32_t>{1, 0}));

  codes.clear();
  EXPECT_TRUE(decodeAll("just text\r\nno card at all\r\n", &codes).empty());
  EXPECT_EQ(codes, std::vector<int32_t>{0});
}

TEST_F(Vcard, FrameFaults) {
  std::vector<int32_t> codes;
  // A malformed line inside a card is its code and the card is lost.
  EXPECT_TRUE(decodeAll(crlf({"BEGIN:VCARD", "N:a", "TEL;HOME", "END:VCARD"}), &codes).empty());
  EXPECT_EQ(codes, std::vector<int32_t>{OSTREL_MALFORMED});
  EXPECT_EQ(PbItem_find(&item_, "N", nullptr), nullptr);
  // Before any card it reads as the end of the input.
  codes.clear();
  EXPECT_TRUE(decodeAll(crlf({"garbage", "BEGIN:VCARD", "N:a", "END:VCARD"}), &codes).empty());
  EXPECT_EQ(codes, std::vector<int32_t>{0});
  // Broken quoted-printable stays text; a soft break at the very end too.
  EXPECT_EQ(card({"NOTE;ENCODING=QUOTED-PRINTABLE:a=ZZb=4"}), "M:a=ZZb=4\n");
  codes.clear();
  EXPECT_TRUE(
      decodeAll("BEGIN:VCARD\r\nNOTE;ENCODING=QUOTED-PRINTABLE:a=", &codes).empty());
  EXPECT_EQ(codes, std::vector<int32_t>{0});
}

// Every cut of a card: a card counts only once its END:VCARD is complete,
// and a cut card leaves the record cleared even after a good card.
TEST_F(Vcard, FrameEveryCutOff) {
  const std::string text = crlf({"BEGIN:VCARD", "N:a;b", "TEL;CELL:1", "END:VCARD"});
  const size_t complete = text.find("END:VCARD") + std::strlen("END:VCARD");
  for (size_t n = 0; n <= text.size(); ++n) {
    put(0, "OF", {"stale"});
    const std::string cut = text.substr(0, n);
    tarnex::ScratchStrStrm in(cut);
    const int32_t rc = Vcard_dec(in, &item_, nullptr);
    // Before the END line a cut is no card: 0, or the property layer's
    // code for a name or parameters cut short.
    if (n >= complete)
      EXPECT_EQ(rc, 1) << n;
    else
      EXPECT_TRUE(rc == 0 || rc == OSTREL_MALFORMED) << n << ": " << rc;
    EXPECT_EQ(render(&item_), rc == 1 ? "N:a|b\nTPC:1\n" : "") << n;
  }
}

TEST_F(Vcard, FrameMoreThan128Properties) {
  std::vector<std::string> lines{"BEGIN:VCARD"};
  for (int i = 0; i < 200; ++i) lines.push_back("TEL:" + std::to_string(i));
  lines.push_back("END:VCARD");
  lines.insert(lines.end(), {"BEGIN:VCARD", "N:next", "END:VCARD"});
  std::vector<int32_t> codes;
  const auto cards = decodeAll(crlf(lines), &codes);
  ASSERT_EQ(codes, (std::vector<int32_t>{1, 1, 0}));
  std::string first;
  for (int i = 0; i < PB_FIELD_MAX; ++i) first += "TPV:" + std::to_string(i) + "\n";
  EXPECT_EQ(cards[0], first);
  EXPECT_EQ(cards[1], "N:next\n");
}

// ---- Encoder -----------------------------------------------------------------------

TEST_F(Vcard, EncodeFrame) {
  EXPECT_EQ(encode(), "BEGIN:VCARD\r\nVERSION:2.1\r\nEND:VCARD\r\n");
  EXPECT_EQ(rc_, 0);
  EXPECT_EQ(encode(nullptr, 0x300), "BEGIN:VCARD\r\nVERSION:3.0\r\nEND:VCARD\r\n");
  put(0, "N", {"a"});
  put(1, "XD", {"9"});
  EXPECT_EQ(body("7"), "X-IRMC-LUID:7\r\nN:a;;;;\r\n");
  EXPECT_EQ(body(""), "N:a;;;;\r\nX-IRMC-LUID:9\r\n");
}

TEST_F(Vcard, EncodeRows) {
  struct Case {
    const char *type;
    std::vector<const char *> vals;
    int32_t flags;
    const char *line;
  } cases[] = {
      {"N", {"", "b"}, 0, "N:;b;;;"},
      {"NZZ", {"a"}, 0, "N:a;;;;"},  // single-character rows ignore the rest
      {"G", {"a", "", "c"}, 0, "ORG:a;;c"},
      {"K", {"k"}, 0, "NICKNAME:k"},
      {"B", {"1"}, 0, "BDAY:1"},
      {"I", {"t"}, 0, "TITLE:t"},
      {"M", {"1;2\\"}, 0, "NOTE:1\\;2\\\\"},
      {"THC", {"1"}, 0, "TEL;HOME;CELL:1"},
      {"TPV", {"1"}, 0, "TEL;VOICE:1"},
      {"TPV", {"1"}, 1, "TEL;VOICE;PREF:1"},
      {"TWE", {"1"}, 0, "TEL;WORK;VIDEO:1"},
      {"TPF", {}, 0, "TEL;FAX:"},
      {"T", {"1"}, 0, "TEL:1"},
      {"TXH", {"1"}, 0, "X-MS-TEL;COMPM:1"},
      {"TXT", {"1"}, 1, "X-MS-TEL;NET;PREF:1"},
      {"TXQ", {"1"}, 0, "X-MS-TEL:1"},
      {"EC", {"a"}, 0, "EMAIL;CELL:a"},
      {"EP", {"a"}, 0, "EMAIL:a"},
      {"UW", {"u"}, 0, "URL;WORK:u"},
      {"AH", {}, 0, "ADR;HOME:;;;;;;"},
      {"OF", {"f"}, 0, "FN:f"},
      {"OR", {"r"}, 0, "ROLE:r"},
      {"OI", {"i"}, 0, "UID:i"},
      {"OV", {"v"}, 0, "REV:v"},
      {"OK", {"k"}, 0, "KEY:k"},
      {"OZ", {"z"}, 0, "TIMEZONE:z"},
      {"DG", {"g"}, 0, "X-GTALK:g"},
      {"DN", {"n"}, 0, "X-NETMEETING:n"},
      {"XGV", {"g"}, 0, "X-GRPV:g"},
      {"XGI", {"2"}, 0, "X-GRPI:2"},
      {"XY", {"y"}, 0, "X-MS-N-YOMI:y;;;;"},
      {"XAN", {"n"}, 0, "X-ACC-NAME:n"},
      {"XAT", {"t"}, 0, "X-ACC-TYPE:t"},
      {"XS", {"1"}, 0, "X-STAR:1"},
  };
  for (const Case &c : cases) {
    PbItem_clearx(&item_);
    put(0, c.type, c.vals, c.flags);
    EXPECT_EQ(body(), std::string(c.line) + "\r\n") << c.type;
  }
}

TEST_F(Vcard, EncodeSkipsAndStreamValues) {
  put(0, "OA", {"agent"});
  put(1, "OQ", {"x"});
  put(2, "DZ", {"x"});
  put(3, "XQ", {"x"});
  put(4, "P");  // a photo without content
  PbField_clear(put(5, "M", {"cleared"}));
  PbSval_setx(&put(6, "P")->sval, reinterpret_cast<const KvoWchar *>(u"http://u"), -1,
              VPI_LOC_URL, "X");
  PbSval_setx(&put(7, "OL")->sval, reinterpret_cast<const KvoWchar *>(u"c;1"), -1, VPI_LOC_CID,
              nullptr);
  EXPECT_EQ(body(), "PHOTO;VALUE=URL;TYPE=X:http://u\r\nLOGO;VALUE=CONTENT-ID:c\\;1\r\n");
  EXPECT_EQ(rc_, 0);
  // A caller's format never breaks the line: it ends before a separator.
  PbSval_setx(&PbItem_at(&item_, 6)->sval, reinterpret_cast<const KvoWchar *>(u"u"), -1,
              VPI_LOC_URL, "A:B");
  EXPECT_EQ(body().substr(0, 30), "PHOTO;VALUE=URL;TYPE=A:u\r\nLOGO");
  // A file that can't be read is the card's result; END is still written.
  PbSval_setx(&put(8, "S")->sval, reinterpret_cast<const KvoWchar *>(u"/no/such/file"), -1,
              VPI_LOC_FILE, nullptr);
  put(9, "N", {"after"});
  const std::string text = encode();
  EXPECT_EQ(rc_, OSTREL_NO_FILE);
  EXPECT_EQ(text.find("after"), std::string::npos);
  EXPECT_EQ(text.substr(text.size() - 11), "END:VCARD\r\n");
}

// The whole card of the format's own example, byte for byte.
TEST_F(Vcard, EncodeWholeCard) {
  put(0, "N", {"a", "b"});
  put(1, "TWC", {"1;2"}, 1);
  put(2, "OA", {"x"});
  PbField *photo = put(3, "P");
  IStrm *bytes = MemStrm_xcreatex__(nullptr, 0, __FILE__, __LINE__);
  IStrm_write(bytes, "abcd", 4);
  IStrm_rewind(bytes);
  PbSval_fillx(&photo->sval, bytes, VPI_LOC_INLINE, "X");
  // "abcd" in Base64 is "YWJjZA==", on a folded line of its own and
  // closed by the blank line of a 2.1 Base64 value.
  EXPECT_EQ(encode("7"), crlf({"BEGIN:VCARD", "VERSION:2.1", "X-IRMC-LUID:7", "N:a;b;;;",
                               "TEL;WORK;CELL;PREF:1\\;2", "PHOTO;ENCODING=BASE64;TYPE=X:",
                               " YWJjZA==", "", "END:VCARD"}));
  EXPECT_EQ(rc_, 0);
  tarnex::ScratchMemStrm out(0);
  PbItem_dump(&item_, out, 0);
  PbItem_dump(&item_, out, 1);
  const std::string two(reinterpret_cast<const char *>(MemStrm_data(out)),
                        static_cast<size_t>(IStrm_size(out)));
  EXPECT_EQ(two, encode() + encode());
}

// ---- Round trips --------------------------------------------------------------------

TEST_F(Vcard, RoundTripEveryFieldType) {
  const char *types[] = {"N",   "OF",  "K",   "B",   "G",   "I",   "M",   "OR",  "OI",
                         "OV",  "OK",  "OZ",  "THV", "TWC", "TPF", "THE", "TPP", "TWM",
                         "TPR", "THN", "TPD", "TXH", "TXA", "TXK", "TXI", "TXY", "TXS",
                         "TXG", "TXZ", "TXT", "EH",  "EW",  "EC",  "EP",  "UH",  "UW",
                         "UP",  "AH",  "AW",  "AP",  "DG",  "DA",  "DY",  "DS",  "DQ",
                         "DM",  "DI",  "DJ",  "DN",  "XY",  "XGV", "XGI", "XD",  "XAN",
                         "XAT", "XS",  "OA"};
  int32_t slot = 0;
  for (const char *t : types) {
    PbField *f = put(slot++, t, {"v;1", "\xC3\xA9\r\nx", "", "c\\", "d", "e", "f"},
                     t[0] == 'T' || t[0] == 'E' || t[0] == 'U' || t[0] == 'A' ? 1 : 0);
    KvoWcs_setStr(&f->desc, "never written");
  }
  PbField *photo = put(slot++, "P");
  IStrm *bytes = MemStrm_xcreatex__(nullptr, 0, __FILE__, __LINE__);
  for (int i = 0; i < 3000; ++i) IStrm_putc(bytes, i * 7);
  IStrm_rewind(bytes);
  PbSval_fillx(&photo->sval, bytes, VPI_LOC_INLINE, "JPEG");
  PbSval_setx(&put(slot++, "S")->sval, reinterpret_cast<const KvoWchar *>(u"http://s"), -1,
              VPI_LOC_URL, "WAVE");
  PbSval_setx(&put(slot++, "OL")->sval, reinterpret_cast<const KvoWchar *>(u"cid9"), -1,
              VPI_LOC_CID, "GIF");

  // What comes back: desc and the agent dropped, components that the row
  // does not hold dropped, the rest in the same order.
  PbItem want;
  PbItem_new(&want);
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
  PbItem back;
  PbItem_new(&back);
  ASSERT_EQ(Vcard_dec(in, &back, nullptr), 1) << text;
  EXPECT_EQ(PbItem_cmp(&want, &back), 1) << render(&want) << "----\n" << render(&back);
  EXPECT_EQ(svalText(PbItem_photo(&back)->sval), svalText(photo->sval));
  PbItem_delete(&back);
  PbItem_delete(&want);
}

std::filesystem::path findSamples() {
  for (auto dir = std::filesystem::current_path(); !dir.empty(); dir = dir.parent_path()) {
    if (std::filesystem::exists(dir / "samples" / "contacts.vcf"))
      return dir / "samples" / "contacts.vcf";
    if (dir == dir.parent_path()) break;
  }
  return {};
}

// Text, record, text: the first pass settles the form, the second keeps it.
TEST_F(Vcard, RoundTripSampleTextIsStable) {
  const auto path = findSamples();
  if (path.empty()) GTEST_SKIP() << "samples/contacts.vcf not found above the build folder";
  std::ifstream file(path, std::ios::binary);
  const std::string text((std::istreambuf_iterator<char>(file)), {});
  auto pass = [&](const std::string &in, int *cards) {
    tarnex::ScratchStrStrm src(in);
    tarnex::ScratchMemStrm out(0);
    uint32_t ver = 0;
    *cards = 0;
    while (Vcard_dec(src, &item_, &ver) == 1) {
      ++*cards;
      EXPECT_EQ(Vcard_enc(out, &item_, ver), 0);
    }
    return std::string(reinterpret_cast<const char *>(MemStrm_data(out)),
                       static_cast<size_t>(IStrm_size(out)));
  };
  int n1 = 0, n2 = 0, n3 = 0;
  const std::string once = pass(text, &n1), twice = pass(once, &n2), thrice = pass(twice, &n3);
  EXPECT_EQ(n1, 4);
  EXPECT_EQ(n2, n1);
  EXPECT_EQ(n3, n1);
  EXPECT_EQ(twice, once);
  EXPECT_EQ(thrice, twice);
  EXPECT_NE(once.find("VERSION:3.0"), std::string::npos);
}

}  // namespace
