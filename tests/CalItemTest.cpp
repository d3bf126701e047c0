// The calendar record: start values, chains through assign and clone, the
// wrapper-class life cycle and the trace text.
#include <gtest/gtest.h>

#include "CalTestUtil.h"
#include "detail/Cal.h"

namespace {

using caltest::trace;

const char kFullTrace[] =
    "# CalItem beg......\n"
    "type = TODO\n"
    "summ = Sum\xC3\xA9\n"
    "desc = Line1\nLine2\n"
    "clsId = 2\n"
    "cateIds = 18\n"
    "cateExts = FOO,BAR\n"
    "loc :\n{\n\tloc = 3\n\tval = http://x/room\n}\n"
    "prio = 4\n"
    "statExt = WAITING\n"
    "attends :\n{\n"
    "\trsvp = KVO_TRUE\n\troleId = 0\n\troleExt = CHAIR\n\tstatId = 16\n\texpectId = 2\n"
    "\tinfoLoc = 4\n\tinfoVal = b@x.org\n\t.\n"
    "\trsvp = KVO_FALSE\n\troleId = 2\n\tstatId = 16\n\texpectId = 2\n"
    "\tinfoLoc = 0\n\tinfoVal = a@x.org\n\t.\n"
    "}\n"
    "dtStart = 20240301T090000Z\n"
    "dtDue = 20240305\n"
    "dtEnd = 20240301T100000+0100\n"
    "dtDone = 20240302T120000\n"
    "dtCreate = 20240201T000000Z\n"
    "dtExcepts= 20240308T090000Z;20240315T090000Z\n"
    "dtRecurs = 20240320T090000Z\n"
    "aalarm :\n{\n\trunTime = 20240301T085500Z\n\tsnoozeTime = PT5M\n\trepeatCount = 2\n"
    "\taudioFmt = PCM\n\taudioLoc = 3\n\taudioRef = file:///beep.wav\n}\n"
    "dalarm :\n{\n\trunTime = 20240301T085000Z\n\trepeatCount = 0\n\tdispVal = Wake; up\n}\n"
    "malarm :\n{\n\trunTime = 20240301T084500Z\n\tsnoozeTime = PT10M\n\trepeatCount = 0\n"
    "\tmailAddr = me@x.org\n\tmailNote = Note\n}\n"
    "palarm :\n{\n\trunTime = 20240301T084000Z\n\trepeatCount = 1\n\tprocLoc = 3\n"
    "\tprocName = run.sh\n}\n"
    "attachs :\n{\n\tfmt = JPEG\n\tloc = 3\n\tval = http://x/a.jpg\n\t.\n}\n"
    "exceptRule = W1 FR #2\n"
    "recurRule = W1 MO TU #10\n"
    "chgCount = 3\n"
    "modified = 20240228T101010Z\n"
    "timeTransp = 1\n"
    "relateTo = parent-1\n"
    "uid = uid-42\n"
    "rscIds = 5\n"
    "rscExt = PIANO\n"
    "url = http://x/e\n"
    "# CalItem end !!!!!!\n";

const char kEmptyTrace[] = "# CalItem beg......\ntype = UNKN\n# CalItem end !!!!!!\n";

TEST(CalItem, FullTraceAndClearBackToStart) {
  CalItem item;
  CalItem_new(&item);
  caltest::fill(&item, 4);
  EXPECT_EQ(trace(&item), kFullTrace);
  item.reserved = 7;
  CalItem_clear(&item);
  EXPECT_EQ(trace(&item), kEmptyTrace);
  EXPECT_EQ(item.reserved, 7u);
  EXPECT_EQ(item.chgCount, -1);
  EXPECT_EQ(item.palarm.procLoc, 3);
  EXPECT_EQ(item.attends, nullptr);
  EXPECT_EQ(item.attachs, nullptr);
  // An alarm without a run time is not traced, whatever else it holds; a
  // change count of 0 is.
  item.dalarm.repeatCount = 5;
  caltest::setW(&item.dalarm.dispVal, "x");
  item.chgCount = 0;
  EXPECT_EQ(trace(&item), "# CalItem beg......\ntype = UNKN\nchgCount = 0\n# CalItem end !!!!!!\n");
  CalItem_delete(&item);
}

TEST(CalItem, ChainsThroughAssignAndClone) {
  CalItem *src = CalItem_new(nullptr);
  caltest::fill(src, 8);
  const std::string want = trace(src);
  CalItem *copy = CalItem_clone(src);
  CalItem target;
  CalItem_new(&target);
  target.reserved = 9;
  caltest::fill(&target, 2);  // chains to be replaced, not appended to
  EXPECT_EQ(CalItem_assign(&target, src), &target);
  EXPECT_EQ(CalItem_assign(&target, &target), &target);
  CalItem_delete(src);  // the copies own their chains
  EXPECT_EQ(trace(copy), want);
  EXPECT_EQ(trace(&target), want);
  EXPECT_EQ(target.reserved, 9u);
  EXPECT_NE(copy->attends, target.attends);
  // A clone of a chain's middle element stands alone.
  CalAttend *mid = CalAttend_clone(copy->attends);
  EXPECT_EQ(mid->next, nullptr);
  EXPECT_EQ(mid->rsvp, 1);
  CalAttend_delete(mid);
  CalItem_delete(copy);
  CalItem_delete(&target);
}

// A wrapper class constructs and destroys the text members itself.
class CalItemPlus : public CalItem {
 public:
  CalItemPlus() {
    ostrel::cal::eachText(this, nullptr, [](auto *t, const auto *, bool) { ostrel::cal::newText(t); });
    CalItem_newCpp(this);
  }
  ~CalItemPlus() {
    CalItem_delCpp(this);
    EXPECT_EQ(tag, 0u);
    ostrel::cal::eachText(this, nullptr, [](auto *t, const auto *, bool) { ostrel::cal::deleteText(t); });
  }
};

struct AttendPlus : public CalAttend {
  AttendPlus() {
    KvoStr_new(&roleExt);
    KvoStr_new(&statExt);
    KvoStr_new(&expectExt);
    KvoWcs_new(&infoVal);
    CalAttend_newCpp(this);
  }
  ~AttendPlus() {
    CalAttend_delCpp(this);
    KvoStr_delete(&roleExt);
    KvoStr_delete(&statExt);
    KvoStr_delete(&expectExt);
    KvoWcs_delete(&infoVal);
  }
};

TEST(CalItem, WrapperClassLifeCycle) {
  CalItemPlus plus;
  EXPECT_EQ(plus.tag, CAL_ITEM_TAG | 0x80000000u);
  EXPECT_EQ(trace(&plus), kEmptyTrace);
  EXPECT_EQ(plus.palarm.procLoc, 3);
  caltest::fill(&plus, 2);  // chains are deleted by _delCpp, text by the class
  EXPECT_EQ(trace(&plus).substr(0, 40), std::string(kFullTrace).substr(0, 40));
  AttendPlus a;
  EXPECT_EQ(a.tag, CAL_ATTEND_TAG | 0x80000000u);
  EXPECT_EQ(a.next, nullptr);
  KvoStr_setStr(&a.roleExt, "CHAIR");
  CalAttend *copy = CalAttend_clone(&a);
  EXPECT_STREQ(KvoStr_buf(&copy->roleExt), "CHAIR");
  CalAttend_delete(copy);
}

}  // namespace
