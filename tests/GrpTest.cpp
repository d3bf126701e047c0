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

class Group {
 public:
  Group() { GrpItem_new(&item_); }
  ~Group() { GrpItem_delete(&item_); }
  GrpItem *get() { return &item_; }

 private:
  GrpItem item_;
};

TEST(GrpItem, TraceListsSetMembersAndAttributeBits) {
  Group g;
  EXPECT_EQ(traceText(g.get()), "# GrpItem beg......\n# GrpItem end !!!!!!\n");
  KvoStr_setStr(&g.get()->id, "7");
  KvoWcs_setStr(&g.get()->name, "Famille \xC3\xA9t\xC3\xA9");
  g.get()->attr = GRP_ATTR_EDIT | GRP_ATTR_ANOTHER_NAME;
  KvoStr_setStr(&g.get()->accType, "com.example");
  EXPECT_EQ(traceText(g.get()),
            "# GrpItem beg......\nid = 7\nname = Famille \xC3\xA9t\xC3\xA9\nattr = edit\n"
            "attr = another name\naccType = com.example\n# GrpItem end !!!!!!\n");
  // dump is the trace text; append adds behind what the stream holds.
  ScratchMemStrm out(0);
  IStrm_puts(out, "x\n", -1);
  GrpItem_dump(g.get(), out, 1);
  EXPECT_EQ(contents(out).substr(0, 22), "x\n# GrpItem beg......\n");
}

TEST(GrpItem, CloneAndAssignCopyDeepAndKeepTheHeapBit) {
  Group g;
  KvoStr_setStr(&g.get()->id, "1");
  KvoWcs_setStr(&g.get()->name, "Work");
  KvoStr_setStr(&g.get()->accName, "me@example.com");
  g.get()->attr = GRP_ATTR_REMOVE;
  GrpItem *copy = GrpItem_clone(g.get());
  EXPECT_EQ(copy->tag, GRP_ITEM_TAG | 0x80000000u);
  EXPECT_EQ(traceText(copy), traceText(g.get()));
  KvoWcs_setStr(&g.get()->name, "Changed");
  EXPECT_NE(traceText(copy), traceText(g.get()));
  GrpItem_assign(g.get(), copy);
  EXPECT_EQ(g.get()->tag, GRP_ITEM_TAG);
  EXPECT_EQ(traceText(copy), traceText(g.get()));
  GrpItem_assign(g.get(), g.get());
  EXPECT_EQ(traceText(copy), traceText(g.get()));
  GrpItem_clear(copy);
  EXPECT_EQ(traceText(copy), "# GrpItem beg......\n# GrpItem end !!!!!!\n");
  GrpItem_delete(copy);
}

TEST(GrpItemDeathTest, DeletedRecordEndsTheProcess) {
  GrpItem g;
  GrpItem_new(&g);
  GrpItem_delete(&g);
  EXPECT_EQ(g.tag, 0u);
  EXPECT_DEATH(GrpItem_clear(&g), "crash exit");
}

TEST(Vgrp, EncodesTheCardLineByLine) {
  Group g;
  ScratchMemStrm out(0);
  EXPECT_EQ(Vgrp_enc(out, g.get(), 0), 0);
  EXPECT_EQ(contents(out), "BEGIN:VCARD\r\nVERSION:2.1\r\nX-GRPV:\r\nEND:VCARD\r\n");
  KvoStr_setStr(&g.get()->id, "4");
  KvoWcs_setStr(&g.get()->name, "Caf\xC3\xA9;Bar");
  KvoStr_setStr(&g.get()->accName, "a");
  KvoStr_setStr(&g.get()->accType, "b");
  g.get()->attr = GRP_ATTR_EDIT;  // read only: never written
  IStrm_clear(out);
  EXPECT_EQ(Vgrp_enc(out, g.get(), 0x300), 0);
  EXPECT_EQ(contents(out),
            "BEGIN:VCARD\r\nVERSION:3.0\r\nX-GRPI:4\r\nX-GRPV;CHARSET=utf-8:Caf\xC3\xA9\\;Bar\r\n"
            "X-ACC-NAME:a\r\nX-ACC-TYPE:b\r\nEND:VCARD\r\n");
}

TEST(Vgrp, RoundTripLosesOnlyTheAttributes) {
  Group g, back;
  KvoStr_setStr(&g.get()->id, "12");
  KvoWcs_setStr(&g.get()->name, "\xE5\xAE\xB6\xE6\x97\x8F \xF0\x9F\x98\x80 a\\b");
  KvoStr_setStr(&g.get()->accName, "x;y");
  ScratchMemStrm text(0);
  Vgrp_enc(text, g.get(), 0);
  IStrm_rewind(text);
  uint32_t ver = 0;
  ASSERT_EQ(Vgrp_dec(text, back.get(), &ver), 1);
  EXPECT_EQ(ver, 0x201u);
  EXPECT_EQ(traceText(back.get()), traceText(g.get()));
  EXPECT_EQ(Vgrp_dec(text, back.get(), &ver), 0);
}

// Reads every group of a text: "id|attr" per card, then the last result.
std::vector<std::string> readGroups(const std::string &text) {
  ScratchStrStrm in(text);
  Group g;
  std::vector<std::string> got;
  for (int i = 0; i < 10; ++i) {
    const int32_t rc = Vgrp_dec(in, g.get(), nullptr);
    if (rc != 1) {
      got.push_back(std::to_string(rc));
      if (KvoStr_len(&g.get()->id) || KvoWcs_len(&g.get()->name)) got.push_back("not cleared");
      break;
    }
    got.push_back(std::string(KvoStr_buf(&g.get()->id)) + "|" + std::to_string(g.get()->attr));
  }
  return got;
}

TEST(Vgrp, DecodesCardsOneByOne) {
  using V = std::vector<std::string>;
  EXPECT_EQ(readGroups(""), (V{"0"}));
  EXPECT_EQ(readGroups("just text\r\n"), (V{"0"}));
  EXPECT_EQ(readGroups("garbage:1\r\nBEGIN:VCARD\r\nX-GRPI:1\r\nX-ATTRS:5\r\nEND:VCARD\r\n"
                       "noise:2\r\nbegin:vcard\r\nx-irmc-luid:2\r\nX-ATTRS:abc\r\nend:vcard\r\n"),
            (V{"1|5", "2|0", "0"}));
  // The later of X-GRPI and X-IRMC-LUID wins; contact lines are passed over.
  EXPECT_EQ(readGroups("BEGIN:VCARD\r\nX-IRMC-LUID:9\r\nN:a;b\r\nTEL:1\r\nX-GRPI:3\r\n"
                       "END:VCALENDAR\r\nEND:VCARD\r\n"),
            (V{"3|0", "0"}));
  // A card cut short is no card, and leaves the record cleared.
  EXPECT_EQ(readGroups("BEGIN:VCARD\r\nX-GRPI:1\r\nEND:VCARD\r\nBEGIN:VCARD\r\nX-GRPI:2\r\n"),
            (V{"1|0", "0"}));
  // A malformed line inside a card is a fault; before any card it reads as the end.
  EXPECT_EQ(readGroups("BEGIN:VCARD\r\nX-GRPI:1\r\nBROKEN\r\nEND:VCARD\r\n"), (V{"-251"}));
  EXPECT_EQ(readGroups("BROKEN\r\nBEGIN:VCARD\r\nX-GRPI:1\r\nEND:VCARD\r\n"), (V{"0"}));
}

TEST(Vcard, ReadsAGroupCardAsGroupFields) {
  ScratchStrStrm in("BEGIN:VCARD\r\nX-GRPV:Friends\r\nX-GRPI:2\r\nEND:VCARD\r\n");
  PbItem item;
  PbItem_new(&item);
  ASSERT_EQ(Vcard_dec(in, &item, nullptr), 1);
  int32_t slot = -1;
  EXPECT_NE(PbItem_find(&item, "XGV", &slot), nullptr);
  EXPECT_EQ(slot, 0);
  EXPECT_NE(PbItem_find(&item, "XGI", &slot), nullptr);
  EXPECT_EQ(slot, 1);
  PbItem_delete(&item);
}

TEST(Vgrp, VersionIsReportedOnlyWhenTheCardHasOne) {
  Group g;
  uint32_t ver = 7;
  const std::string text =
      "BEGIN:VCARD\r\nX-GRPV:a\r\nEND:VCARD\r\nBEGIN:VCARD\r\nversion:3.0\r\nEND:VCARD\r\n";
  ScratchStrStrm in(text);  // the stream reads the caller's text in place
  ASSERT_EQ(Vgrp_dec(in, g.get(), &ver), 1);
  EXPECT_EQ(ver, 7u);
  ASSERT_EQ(Vgrp_dec(in, g.get(), &ver), 1);
  EXPECT_EQ(ver, 0x300u);
  EXPECT_EQ(KvoWcs_len(&g.get()->name), 0);  // the second card starts from a cleared record
}

TEST(Vgrp, NullStreamOrRecordIsReportedNotFollowed) {
  std::vector<std::string> seen;
  void *oldCtx = nullptr;
  KvoAssertHandler old = Tarnex_setAssertHandler(
      [](void *ctx, const char *text, const char *, int32_t) {
        static_cast<std::vector<std::string> *>(ctx)->push_back(text);
      },
      &seen, &oldCtx);
  Group g;
  ScratchMemStrm out(0);
  EXPECT_EQ(Vgrp_dec(nullptr, g.get(), nullptr), 0);
  EXPECT_EQ(Vgrp_encx(out, nullptr, 0, nullptr), 0);
  EXPECT_EQ(IStrm_size(out), 0);
  Tarnex_setAssertHandler(old, oldCtx, nullptr);
  EXPECT_EQ(seen, (std::vector<std::string>{"vcard && item", "vcard && item"}));
}

// ---- The frame every text decoder shares ----------------------------------------

using ostrel::detail::decodeFrame;
using ostrel::detail::FrameProp;
using ostrel::detail::FrameRow;

// What the table saw: "row=value;" per property, "?name;" for the fallback.
struct Seen {
  std::string log;
};

std::string rawValue(IStrm *val) {
  tarnex::ScratchStr<32> text;
  VpiVal_getCstr(val, text, 0, nullptr);
  return text.c_str();
}

constexpr FrameRow<Seen> kTinyTable[] = {
    {"A", [](Seen &s, const FrameProp &p) { s.log += "A=" + rawValue(p.val) + ";"; }},
    {"BEGIN", [](Seen &s, const FrameProp &p) { s.log += "B=" + rawValue(p.val) + ";"; }},
    // Never reached: rows are walked from the top and the first equal name wins.
    {"a", [](Seen &s, const FrameProp &) { s.log += "second a;"; }},
};

void fallback(Seen &s, const FrameProp &p) { s.log += std::string("?") + p.name + ";"; }

struct FrameCase {
  const char *text;
  int32_t rc;
  const char *log;
  const char *rest;  // what the stream holds behind the call
};

TEST(TextFrame, SkipsToItsBeginDispatchesAndStopsAtItsEnd) {
  const FrameCase cases[] = {
      {"", 0, "", ""},
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
      {"BROKEN\r\nBEGIN:VTEST\r\nA:1\r\nEND:VTEST\r\n", 0, "", "BEGIN:VTEST\r\nA:1\r\nEND:VTEST\r\n"},
  };
  for (const FrameCase &c : cases) {
    SCOPED_TRACE(c.text);
    const std::string text = c.text;
    ScratchStrStrm in(text);
    Seen seen;
    EXPECT_EQ(decodeFrame(in, "VTEST", kTinyTable, seen, fallback), c.rc);
    EXPECT_EQ(seen.log, c.log);
    const int64_t pos = IStrm_tell(in);
    ASSERT_GE(pos, 0);
    ASSERT_LE(pos, static_cast<int64_t>(text.size()));
    EXPECT_EQ(text.substr(static_cast<size_t>(pos)), c.rest);
  }
}

TEST(TextFrame, UnknownNamesAreTracedOnlyWhenAskedFor) {
  std::string traced;
  DbgMng_setSink([](void *ctx, const char *text,
                    int32_t len) { static_cast<std::string *>(ctx)->append(text, len); },
                 &traced);
  const std::string text = "BEGIN:VTEST\r\nZ:value\r\nA:1\r\nEND:VTEST\r\n";
  for (const bool on : {false, true}) {
    DbgMng_reset();
    if (on) DbgMng_select(6, 0x4, 3);
    traced.clear();
    ScratchStrStrm in(text);
    Seen seen;
    EXPECT_EQ(decodeFrame(in, "VTEST", kTinyTable, seen), 1);
    EXPECT_EQ(seen.log, "A=1;");
    if (on) {
      EXPECT_NE(traced.find("un-handled field \"Z\""), std::string::npos) << traced;
      EXPECT_NE(traced.find("value"), std::string::npos) << traced;
    } else {
      EXPECT_EQ(traced, "");
    }
  }
  DbgMng_reset();
  DbgMng_setSink(nullptr, nullptr);
}

}  // namespace
