// Contact groups: the record, its cards both ways, and the text frame that
// every text decoder shares.
#include <gtest/gtest.h>

#include <string>
#include <vector>

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

}  // namespace
