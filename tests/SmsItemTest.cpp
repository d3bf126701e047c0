// The short message record: clearing, copies, the binary payload, the trace.
#include <gtest/gtest.h>

#include <string>

#include "SmsTestUtil.h"

namespace {

TEST(SmsItem, ClearAssignCloneAndTrace) {
  Sms s;
  EXPECT_EQ(traceBody(&s), "dt = SMS_DT_TXT\ntype = SMS_UNKN\nstat = ALL\n");
  s.stat = 0;
  s.type = SMS_SUBMIT;
  s.flags = SMS_F_REQ_REP | SMS_F_REJ_DUP;
  s.udhLen = 6;
  const uint8_t udh[] = {5, 0, 3, 0xA5, 2, 1};
  std::memcpy(s.udhBuf, udh, 6);
  KvoStr_setStr(&s.tel, "+1");
  KvoStr_setStr(&s.card, "BEGIN");
  setText(&s, u"hi");
  s.coding = 8;
  s.protId = 64;
  KvoStr_setStr(&s.extInfo, "a=b");
  const std::string body =
      "tel = +1\ncard = BEGIN\ndt = SMS_DT_TXT\ndata = hi\nudhLen = 6\nudhBuf = 050003A50201\n"
      "protId = 64\ncoding = 8\nflags = SMS_F_REQ_REP\nflags = SMS_F_REJ_DUP\n"
      "type = SMS_SUBMIT\nmsgRef = 0\nvalidDur = 0\nstat = UNREAD\nextInfo = a=b\n";
  EXPECT_EQ(traceBody(&s), body);
  SmsItem *copy = SmsItem_clone(&s);
  EXPECT_EQ(traceBody(copy), body);
  Sms plain;
  plain.udhBuf[0] = 0xEE;
  SmsItem_assign(copy, &plain);  // udhLen 0: no octet of udhBuf copied
  EXPECT_EQ(copy->udhBuf[0], 5);
  EXPECT_EQ(copy->udhLen, 0);
  SmsItem_delete(copy);
  SmsItem_clear(&s);
  EXPECT_EQ(s.stat, 6);
  EXPECT_EQ(traceBody(&s), "dt = SMS_DT_TXT\ntype = SMS_UNKN\nstat = ALL\n");
  s.type = SMS_REPORT;
  s.revTime = KvoDt{2020, 1, 2, 3, 4, 5, 0, 0};
  s.repStat = 70;
  s.repFor = 2;
  EXPECT_EQ(traceBody(&s), "dt = SMS_DT_TXT\ntype = SMS_REPORT\nmsgRef = 0\n"
                           "revTime = 20200102T030405Z\nrepStat = 70\nrepFor = 2\nstat = ALL\n");
}

TEST(SmsItem, BinaryPayload) {
  Sms s;
  const uint8_t data[] = {0, 0xFF, 0, 7};
  SmsItem_setBin(&s, data, 4);
  EXPECT_EQ(SmsItem_binLen(&s), 4);
  uint8_t out[4];
  EXPECT_EQ(SmsItem_getBin(&s, out, 4), 4);
  EXPECT_EQ(std::memcmp(out, data, 4), 0);
  SmsItem *copy = SmsItem_clone(&s);
  EXPECT_EQ(SmsItem_getBin(copy, out, 2), 2);
  EXPECT_EQ(copy->dt, SMS_DT_BIN);
  SmsItem_delete(copy);
  tarnex::ScratchMemStrm octets(0);
  EXPECT_EQ(SmsItem_getBinx(&s, octets), 4);
  IStrm_rewind(octets);
  Sms t;
  SmsItem_setBinx(&t, octets);
  EXPECT_EQ(SmsItem_binLen(&t), 4);
  tarnex::ScratchMemStrm empty(0);
  SmsItem_setBinx(&t, empty);
  EXPECT_EQ(t.dt, SMS_DT_BIN);
  EXPECT_EQ(SmsItem_binLen(&t), 0);
  SmsItem_setBin(&t, data, 0);
  EXPECT_EQ(SmsItem_binLen(&t), 0);
  EXPECT_EQ(traceBody(&s), std::string("dt = SMS_DT_BIN\n") + std::string("\0\xFF\0\x07", 4) +
                               "type = SMS_UNKN\nstat = ALL\n");
}

}  // namespace
