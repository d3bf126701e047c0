// The PDU encoder: worked examples, refusals at the limits, round trips,
// every truncation of a valid PDU, and no heap per PDU.
#include <gtest/gtest.h>

#include <string>

#include "SmsTestUtil.h"

namespace {

const std::string DA = "0C91947111325476";

void submit(SmsItem *s, const std::u16string &text) {
  s->type = SMS_SUBMIT;
  KvoStr_setStr(&s->tel, "+491711234567");
  setText(s, text);
}

TEST(PsmsEnc, WorkedExamples) {
  Sms s;
  submit(&s, u"hello");
  int32_t n = 0;
  EXPECT_EQ(encodeHex(&s, nullptr, &n), "001100" + DA + "000022" "05E8329BFD06");
  EXPECT_EQ(n, 19);
  char ira[80];
  EXPECT_EQ(Psms_encIra(ira, sizeof ira, &s), 38);
  EXPECT_STREQ(ira, ("001100" + DA + "000022" "05E8329BFD06").c_str());
  EXPECT_EQ(encodeHex(&s, "+31624000000", &n), "07911326040000F0" "1100" + DA + "000022" "05E8329BFD06");
  EXPECT_EQ(n, 19);
  EXPECT_EQ(Psms_encIrax(ira, sizeof ira, &s, "+31624000000", -1), 38);

  Sms udh;
  submit(&udh, u"hi");
  const uint8_t concat[] = {0x05, 0x00, 0x03, 0xA5, 0x02, 0x01};
  std::memcpy(udh.udhBuf, concat, 6);
  udh.udhLen = 6;
  EXPECT_EQ(encodeHex(&udh, nullptr, &n), "005100" + DA + "000022" "09050003A50201D069");
  EXPECT_EQ(n, 22);

  Sms ucs2;
  submit(&ucs2, u"\u4F60");
  EXPECT_EQ(encodeHex(&ucs2, nullptr, &n), "001100" + DA + "000822" "024F60");
  EXPECT_EQ(n, 16);
  ucs2.coding = 0x10;
  EXPECT_EQ(encodeHex(&ucs2).substr(24, 2), "18");

  s.flags = SMS_F_REQ_REP;
  s.msgRef = 0x1F;
  EXPECT_EQ(encodeHex(&s).substr(0, 6), "00310F");
  s.coding = 0x08;  // GSM text stays septets under a UCS2 coding
  EXPECT_EQ(encodeHex(&s).substr(22), "000822" "05E8329BFD06");

  Sms rep;
  rep.type = SMS_REPORT;
  rep.msgRef = 0x2A;
  KvoStr_setStr(&rep.tel, "+491711234567");
  EXPECT_EQ(encodeHex(&rep, nullptr, &n), "00022A" + DA + std::string(28, '0') + "00");
  EXPECT_EQ(n, 25);
  rep.msgRef = 0x1F;
  EXPECT_EQ(encodeHex(&rep).substr(4, 2), "1F");
}

TEST(PsmsEnc, LimitsAndRefusals) {
  struct Row {
    std::u16string text;
    int32_t udhLen;
    bool fits;
  } rows[] = {
      {std::u16string(160, u'a'), 0, true},
      {std::u16string(161, u'a'), 0, false},
      {std::u16string(159, u'a') + u"\u20AC", 0, false},  // an escape pair at the edge
      {std::u16string(158, u'a') + u"\u20AC", 0, true},
      {std::u16string(70, u'\u4F60'), 0, true},
      {std::u16string(71, u'\u4F60'), 0, false},
      {std::u16string(69, u'\u4F60') + u"\xD83D\xDE00", 0, false},  // a surrogate pair at the edge
      {std::u16string(68, u'\u4F60') + u"\xD83D\xDE00", 0, true},
      {std::u16string(154, u'a'), 5, true},
      {std::u16string(155, u'a'), 5, false},
      {std::u16string(153, u'a'), 6, true},
      {std::u16string(154, u'a'), 6, false},
      {std::u16string(152, u'a'), 7, true},
      {std::u16string(153, u'a'), 7, false},
      {std::u16string(146, u'a'), 12, true},
      {std::u16string(147, u'a'), 12, false},
      {u"a", 140, false},
  };
  for (const Row &r : rows) {
    SCOPED_TRACE(testing::Message() << r.text.size() << " units, header " << r.udhLen);
    Sms s;
    submit(&s, r.text);
    s.udhLen = r.udhLen;
    std::memset(s.udhBuf, 0, sizeof s.udhBuf);
    if (r.udhLen) s.udhBuf[0] = static_cast<uint8_t>(r.udhLen - 1);
    int32_t n = 0;
    const std::string hex = encodeHex(&s, nullptr, &n);
    if (!r.fits) {
      EXPECT_EQ(n, -81);
      continue;
    }
    ASSERT_GT(n, 0);
    Sms back;
    const auto pdu = fromHex(hex);
    ASSERT_EQ(Psms_decPdu(pdu.data(), static_cast<int32_t>(pdu.size()), &back), 0);
    EXPECT_EQ(traceBody(&back), traceBody(&s));
  }
  Sms bin;
  bin.type = SMS_DELIVER;
  const uint8_t zeros[136] = {};
  SmsItem_setBin(&bin, zeros, 136);
  bin.udhLen = 5;
  int32_t n = 0;
  encodeHex(&bin, nullptr, &n);
  EXPECT_EQ(n, -81);
  bin.udhLen = 4;
  encodeHex(&bin, nullptr, &n);
  EXPECT_EQ(n, 1 + 2 + 1 + 1 + 7 + 1 + 140);
  uint8_t small[150];
  EXPECT_EQ(Psms_encPdu(small, sizeof small, &bin), -81);  // less than 141 at TP-UDL
}

TEST(PsmsEnc, BinaryKeepsZeroOctetsOnTheWayOut) {
  Sms s;
  s.type = SMS_SUBMIT;
  const uint8_t data[] = {1, 2, 3};
  SmsItem_setBin(&s, data, 3);
  EXPECT_EQ(encodeHex(&s).substr(6), "0081" "000422" "03010203");
  const auto pdu = fromHex(encodeHex(&s));
  Sms back;
  ASSERT_EQ(Psms_decPdu(pdu.data(), static_cast<int32_t>(pdu.size()), &back), 0);
  uint8_t out[8];
  EXPECT_EQ(SmsItem_getBin(&back, out, 8), 3);
  EXPECT_EQ(std::memcmp(out, data, 3), 0);
}

// Each type and alphabet, with and without a header, survives the round
// trip whole; bytes to record to bytes is a fixed point.
TEST(PsmsEnc, RoundTrips) {
  const std::u16string texts[] = {u"hello [x] \u20AC", u"\u4F60\xD83D\xDE00 ok", u""};
  const uint8_t ports[] = {0x06, 0x05, 0x04, 0x0B, 0x84, 0x23, 0xF0};
  for (int type : {SMS_SUBMIT, SMS_DELIVER})
    for (int alphabet = 0; alphabet < 4; ++alphabet)
      for (int withUdh = 0; withUdh < 2; ++withUdh) {
        SCOPED_TRACE(testing::Message() << type << "/" << alphabet << "/" << withUdh);
        Sms s;
        s.type = type;
        KvoStr_setStr(&s.tel, type == SMS_SUBMIT ? "+12345" : "Shop");
        if (alphabet < 3) setText(&s, texts[alphabet]);
        else SmsItem_setBin(&s, ports, 7);
        if (alphabet == 2) s.dt = SMS_DT_TXT;
        if (withUdh) {
          std::memcpy(s.udhBuf, ports, 7);
          s.udhLen = 7;
        }
        s.protId = 0x40;
        s.flags = SMS_F_REQ_REP | SMS_F_REQ_REPLY;
        if (type == SMS_DELIVER) s.xptTime = KvoDt{2024, 2, 29, 23, 59, 58, 0, -90};
        s.msgRef = type == SMS_SUBMIT ? 9 : 0;
        const std::string first = encodeHex(&s, "+4912345");
        ASSERT_FALSE(first.empty());
        Sms back;
        const auto pdu = fromHex(first);
        ASSERT_EQ(Psms_decPdu(pdu.data(), static_cast<int32_t>(pdu.size()), &back), 0);
        if (alphabet == 2) {
          EXPECT_EQ(KvoWcs_len(&back.data), 0);  // TP-UDL 0 leaves data alone
        } else {
          EXPECT_EQ(traceBody(&back), traceBody(&s));
        }
        EXPECT_EQ(encodeHex(&back, "+4912345"), first);
      }
}

TEST(PsmsDec, EveryTruncationIsRefused) {
  const std::string pdus[] = {
      "07911326040000F0" "44" + DA + "0008" "21301121436540" "0C" "050003A50201" "4F604F60D83D",
      "00022A" + DA + "2130112143654021301121436540" "0007" "7F" "00" "05E8329BFD06",
      "001900" + DA + "0000FF214365FFFFFF05E8329BFD06"};
  for (const std::string &hex : pdus) {
    const auto pdu = fromHex(hex);
    for (size_t len = 0; len <= pdu.size(); ++len) {
      SCOPED_TRACE(testing::Message() << hex << " cut at " << len);
      std::vector<uint8_t> exact(pdu.begin(), pdu.begin() + static_cast<long>(len));
      Sms s;
      const int32_t rc = Psms_decPdu(exact.data(), static_cast<int32_t>(len), &s);
      // A report may end at TP-ST.
      const bool whole = len == pdu.size() || (hex.rfind("00022A", 0) == 0 && len == 26);
      EXPECT_EQ(rc, whole ? 0 : -81);
    }
  }
}

TEST(PsmsDec, BadText) {
  Sms s;
  EXPECT_EQ(Psms_decIra("0004", 3, &s), 0 - 81);  // a lone digit dropped, the rest cut short
  EXPECT_EQ(Psms_decIra("00G4", -1, &s), -81);
  EXPECT_EQ(Psms_decIra("", -1, &s), -81);
  const std::string big(1 << 20, '0');
  EXPECT_EQ(Psms_decIra(big.c_str(), -1, &s), 0);  // zeros: a DELIVER without user data
  const std::string longPdu = "0004" + DA + "0000" "21301121436540" "05E8329BFD06" + std::string(4000, 'A');
  Sms l;
  EXPECT_EQ(Psms_decIra(longPdu.c_str(), -1, &l), 0);
  EXPECT_EQ(Psms_decIra((longPdu + "X0").c_str(), -1, &l), -81);
}

TEST(PsmsDec, NoHeapPerPdu) {
  const std::string hex = "07911326040000F0" "04" + DA + "0000" "21301121436540" "05E8329BFD06";
  Sms s;
  ASSERT_EQ(Psms_decIra(hex.c_str(), -1, &s), 0);
  const uint64_t before = Tarnex_allocCount();
  for (int i = 0; i < 100; ++i) {
    s.flags = 0;
    ASSERT_EQ(Psms_decIra(hex.c_str(), -1, &s), 0);
  }
  char ira[400];
  for (int i = 0; i < 100; ++i) ASSERT_GT(Psms_encIra(ira, sizeof ira, &s), 0);
  EXPECT_EQ(Tarnex_allocCount(), before);
}

TEST(PsmsFile, StreamsBothWays) {
  Sms s;
  submit(&s, u"hello");
  tarnex::ScratchMemStrm pdu(0), ira(0);
  EXPECT_EQ(PsmsFile_encPdu(pdu, &s), 20);
  EXPECT_EQ(PsmsFile_encIra(ira, &s), 40);
  IStrm_rewind(pdu);
  IStrm_rewind(ira);
  Sms a, b;
  EXPECT_EQ(PsmsFile_decPdu(pdu, &a), 0);
  EXPECT_EQ(PsmsFile_decIra(ira, &b), 0);
  EXPECT_EQ(traceBody(&a), traceBody(&s));
  EXPECT_EQ(traceBody(&b), traceBody(&s));
  for (int size : {0, 255, 256}) {
    tarnex::ScratchMemStrm m(0);
    std::vector<uint8_t> bytes(static_cast<size_t>(size), 0);  // zeros: a DELIVER without text
    IStrm_write(m, bytes.data(), size);
    IStrm_rewind(m);
    Sms t;
    EXPECT_EQ(PsmsFile_decPdu(m, &t), size == 255 ? 0 : -81) << size;
  }
}

}  // namespace
