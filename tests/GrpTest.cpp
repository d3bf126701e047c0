// Contact groups: the record, its cards both ways, and the text frame that
// every text decoder shares.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "detail/TextFrame.h"
#include "ostrel/ostrel.h"
#include "tarnex/scratch.hpp"

namespace {

using tarnex::ScratchMemStrm;
using tarnex::ScratchStrStrm;
using V = std::vector<std::string>;

std::string contents(IStrm *s) {
  const uint8_t *p = MemStrm_data(s);
  return p ? std::string(reinterpret_cast<const char *>(p), static_cast<size_t>(IStrm_size(s)))
           : std::string();
}

std::string traceText(GrpItem *g) {
  ScratchMemStrm out(0);
  GrpItem_tracex(g, out, 0);
  return contents(out);
}

// A group record in caller storage, ended with its scope.
struct Group : GrpItem {
  Group() { GrpItem_new(this); }
  ~Group() { GrpItem_delete(this); }
};

TEST(GrpItem, TraceDumpCloneAssignAndClear) {
  Group g;
  const std::string blank = "# GrpItem beg......\n# GrpItem end !!!!!!\n";
  EXPECT_EQ(traceText(&g), blank);
  KvoStr_setStr(&g.id, "7");
  KvoWcs_setStr(&g.name, "Famille \xC3\xA9t\xC3\xA9");
  g.attr = GRP_ATTR_EDIT | GRP_ATTR_ANOTHER_NAME;
  KvoStr_setStr(&g.accName, "me@example.com");
  KvoStr_setStr(&g.accType, "com.example");
  const std::string full =
      "# GrpItem beg......\nid = 7\nname = Famille \xC3\xA9t\xC3\xA9\nattr = edit\n"
      "attr = another name\naccName = me@example.com\naccType = com.example\n"
      "# GrpItem end !!!!!!\n";
  EXPECT_EQ(traceText(&g), full);
  ScratchMemStrm out(0);
  IStrm_puts(out, "x\n", -1);
  GrpItem_dump(&g, out, 1);
  EXPECT_EQ(contents(out), "x\n" + full) << "dump appends the trace text";
  // Copies are deep; a copy back and a self-assign keep the text and the tag.
  GrpItem *copy = GrpItem_clone(&g);
  KvoWcs_setStr(&g.name, "Changed");
  EXPECT_EQ(traceText(copy), full);
  GrpItem_assign(&g, copy);
  GrpItem_assign(&g, &g);
  EXPECT_EQ(g.tag, GRP_ITEM_TAG);
  EXPECT_EQ(traceText(&g), full);
  GrpItem_clear(copy);
  EXPECT_EQ(traceText(copy), blank);
  GrpItem_delete(copy);
}

TEST(GrpItemDeathTest, DeletedRecordEndsTheProcess) {
  GrpItem g;
  GrpItem_new(&g);
  GrpItem_delete(&g);
  EXPECT_DEATH(GrpItem_clear(&g), "crash exit");
}

TEST(Vgrp, EncodesTheCardLineByLine) {
  Group g;
  ScratchMemStrm out(0);
  EXPECT_EQ(Vgrp_enc(out, &g, 0), 0);
  EXPECT_EQ(contents(out), "BEGIN:VCARD\r\nVERSION:2.1\r\nX-GRPV:\r\nEND:VCARD\r\n");
  KvoStr_setStr(&g.id, "4");
  KvoWcs_setStr(&g.name, "Caf\xC3\xA9;Bar");
  KvoStr_setStr(&g.accName, "a");
  KvoStr_setStr(&g.accType, "b");
  g.attr = GRP_ATTR_EDIT;  // read only: never written
  IStrm_clear(out);
  EXPECT_EQ(Vgrp_enc(out, &g, 0x300), 0);
  EXPECT_EQ(contents(out),
            "BEGIN:VCARD\r\nVERSION:3.0\r\nX-GRPI:4\r\nX-GRPV;CHARSET=utf-8:Caf\xC3\xA9\\;Bar\r\n"
            "X-ACC-NAME:a\r\nX-ACC-TYPE:b\r\nEND:VCARD\r\n");
}

// Everything but the attributes comes back; a card without VERSION leaves
// the caller's version alone and starts from a cleared record.
TEST(Vgrp, RoundTripAndVersionOnlyWhenTheCardHasOne) {
  Group g, back;
  KvoStr_setStr(&g.id, "12");
  KvoWcs_setStr(&g.name, "\xE5\xAE\xB6\xE6\x97\x8F \xF0\x9F\x98\x80 a\\b");
  KvoStr_setStr(&g.accName, "x;y");
  ScratchMemStrm text(0);
  Vgrp_enc(text, &g, 0);
  IStrm_puts(text, "BEGIN:VCARD\r\nX-GRPV:a\r\nEND:VCARD\r\n", -1);
  IStrm_rewind(text);
  uint32_t ver = 0;
  ASSERT_EQ(Vgrp_dec(text, &back, &ver), 1);
  EXPECT_EQ(ver, 0x201u);
  EXPECT_EQ(traceText(&back), traceText(&g));
  ver = 7;
  ASSERT_EQ(Vgrp_dec(text, &back, &ver), 1);
  EXPECT_EQ(ver, 7u);
  EXPECT_EQ(traceText(&back), "# GrpItem beg......\nname = a\n# GrpItem end !!!!!!\n");
  EXPECT_EQ(Vgrp_dec(text, &back, &ver), 0);
}

// Reads every group of a text: "id|attr" per card, then the last result.
V readGroups(const std::string &text) {
  ScratchStrStrm in(text);
  Group g;
  V got;
  for (int i = 0; i < 10; ++i) {
    const int32_t rc = Vgrp_dec(in, &g, nullptr);
    if (rc != 1) {
      got.push_back(std::to_string(rc));
      if (KvoStr_len(&g.id) || KvoWcs_len(&g.name)) got.push_back("not cleared");
      break;
    }
    got.push_back(std::string(KvoStr_buf(&g.id)) + "|" + std::to_string(g.attr));
  }
  return got;
}

TEST(Vgrp, DecodesCardsOneByOne) {
  const struct { const char *text; V want; } cases[] = {
      {"", {"0"}},
      {"garbage:1\r\nBEGIN:VCARD\r\nX-GRPI:1\r\nX-ATTRS:5\r\nEND:VCARD\r\n"
       "noise:2\r\nbegin:vcard\r\nx-irmc-luid:2\r\nX-ATTRS:abc\r\nend:vcard\r\n",
       {"1|5", "2|0", "0"}},
      // The later of X-GRPI and X-IRMC-LUID wins; contact lines are passed over.
      {"BEGIN:VCARD\r\nX-IRMC-LUID:9\r\nN:a;b\r\nTEL:1\r\nX-GRPI:3\r\nEND:VCALENDAR\r\n"
       "END:VCARD\r\n",
       {"3|0", "0"}},
      // A card cut short is no card, and leaves the record cleared.
      {"BEGIN:VCARD\r\nX-GRPI:1\r\nEND:VCARD\r\nBEGIN:VCARD\r\nX-GRPI:2\r\n", {"1|0", "0"}},
      // A malformed line inside a card is a fault, and leaves the record cleared too.
      {"BEGIN:VCARD\r\nX-GRPI:1\r\nBROKEN\r\nEND:VCARD\r\n", {"-251"}},
  };
  for (const auto &c : cases) EXPECT_EQ(readGroups(c.text), c.want) << c.text;
}

TEST(Vgrp, NullStreamOrRecordIsReportedNotFollowed) {
  static V seen;
  Tarnex_setAssertHandler(
      [](void *, const char *text, const char *, int32_t) { seen.push_back(text); }, nullptr,
      nullptr);
  Group g;
  ScratchMemStrm out(0);
  EXPECT_EQ(Vgrp_dec(nullptr, &g, nullptr), 0);
  EXPECT_EQ(Vgrp_encx(out, nullptr, 0, nullptr), 0);
  EXPECT_EQ(IStrm_size(out), 0);
  Tarnex_setAssertHandler(nullptr, nullptr, nullptr);
  EXPECT_EQ(seen, (V{"vcard && item", "vcard && item"}));
}

// ---- The frame every text decoder shares ----------------------------------------

using ostrel::detail::decodeFrame;
using ostrel::detail::FrameProp;
using ostrel::detail::FrameRow;

std::string rawValue(IStrm *val) {
  tarnex::ScratchStr<32> text;
  VpiVal_getCstr(val, text, 0, nullptr);
  return text.c_str();
}

// The log of what the table saw: "row=value;" a property, "?name;" for the fallback.
constexpr FrameRow<std::string> kTinyTable[] = {
    {"A", [](std::string &log, const FrameProp &p) { log += "A=" + rawValue(p.val) + ";"; }},
    {"BEGIN", [](std::string &log, const FrameProp &p) { log += "B=" + rawValue(p.val) + ";"; }},
    // Never reached: rows are walked from the top and the first equal name wins.
    {"a", [](std::string &log, const FrameProp &) { log += "second a;"; }},
};

void fallback(std::string &log, const FrameProp &p) { log += std::string("?") + p.name + ";"; }

TEST(TextFrame, SkipsToItsBeginDispatchesAndStopsAtItsEnd) {
  const struct {
    const char *text;
    int32_t rc;
    const char *log, *rest;  // rest: what the stream holds behind the call
  } cases[] = {
      {"note:no object\r\nA:1\r\n", 0, "", ""},
      {"x:1\r\nBEGIN:VTEST\r\nA:1\r\nEND:VTEST\r\nA:2\r\n", 1, "A=1;", "A:2\r\n"},
      // Case ignored on names and on the word; END of another word passed over;
      // a BEGIN inside is an ordinary property (a calendar's VEVENT).
      {"begin:vtest\r\na:x\r\nEND:VEVENT\r\nBEGIN:VEVENT\r\nZ;P=1:q\r\nend:VTest\r\n", 1,
       "A=x;B=VEVENT;?Z;", ""},
      // The BEGIN value is compared whole and raw.
      {"BEGIN:VTEST;X\r\nA:1\r\nBEGIN:VTEST\\,\r\nBEGIN:VTEST\r\nA:2\r\nEND:VTEST\r\n", 1, "A=2;",
       ""},
      // No nesting: the inner END closes the object, the outer rest is left behind.
      {"BEGIN:VTEST\r\nA:1\r\nBEGIN:VTEST\r\nA:2\r\nEND:VTEST\r\nA:3\r\nEND:VTEST\r\n", 1,
       "A=1;B=VTEST;A=2;", "A:3\r\nEND:VTEST\r\n"},
      // Cut short: the properties were seen, but the result says no object.
      {"BEGIN:VTEST\r\nA:1\r\n", 0, "A=1;", ""},
      // A reader fault inside is the result; before BEGIN it reads as the end.
      {"BEGIN:VTEST\r\nA:1\r\nBROKEN\r\nEND:VTEST\r\n", -251, "A=1;", "END:VTEST\r\n"},
      {"BROKEN\r\nBEGIN:VTEST\r\nA:1\r\nEND:VTEST\r\n", 0, "",
       "BEGIN:VTEST\r\nA:1\r\nEND:VTEST\r\n"},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.text);
    const std::string text = c.text;
    ScratchStrStrm in(text);
    std::string log;
    EXPECT_EQ(decodeFrame(in, "VTEST", kTinyTable, log, {fallback}), c.rc);
    EXPECT_EQ(log, c.log);
    const int64_t pos = IStrm_tell(in);
    ASSERT_TRUE(pos >= 0 && pos <= static_cast<int64_t>(text.size())) << pos;
    EXPECT_EQ(text.substr(static_cast<size_t>(pos)), c.rest);
  }
}

// Without a fallback an unknown name is dropped, and traced with its value
// only when category 4 of the module is selected.
TEST(TextFrame, UnknownNamesAreTracedOnlyWhenAskedFor) {
  std::string traced;
  DbgMng_setSink([](void *ctx, const char *text,
                    int32_t len) { static_cast<std::string *>(ctx)->append(text, len); },
                 &traced);
  for (const bool on : {false, true}) {
    DbgMng_reset();
    if (on) DbgMng_select(6, 0x4, 3);
    traced.clear();
    ScratchStrStrm in("BEGIN:VTEST\r\nZ:value\r\nA:1\r\nEND:VTEST\r\n");
    std::string log;
    EXPECT_EQ(decodeFrame(in, "VTEST", kTinyTable, log), 1);
    EXPECT_EQ(log, "A=1;");
    EXPECT_EQ(traced.find("un-handled field \"Z\"") != std::string::npos, on) << traced;
    EXPECT_EQ(traced.find("value") != std::string::npos, on) << traced;
  }
  DbgMng_reset();
  DbgMng_setSink(nullptr, nullptr);
}

}  // namespace
