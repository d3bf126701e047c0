// The PDU codec: a fixture book of our own PDUs with the records they give,
// the worked examples, the encoder's refusals, round trips and bad input.
#include <gtest/gtest.h>

#include <string>

#include "SmsTestUtil.h"

namespace {

const std::string OA = "0C91947111325476", TS = "21301121436540", HELLO = "05E8329BFD06";
const std::string TEL = "tel = +491711234567\n", XPT = "xptTime = 20120311T123456+0100\n";
const std::string DELIV = "type = SMS_DELIVER\n" + XPT + "stat = ALL\n";
const std::string TXT = "dt = SMS_DT_TXT\n", BIN = "dt = SMS_DT_BIN\n";
const std::string REP = "type = SMS_REPORT\nmsgRef = 42\n" + XPT + "revTime = 20120311T123456+0100\n";
const std::string REP_END = "repStat = 0\nrepFor = 0\nstat = ALL\n";
std::string deliver(const std::string &dcs, const std::string &ud, const std::string &ts = TS) {
  return "0000" + OA + "00" + dcs + ts + ud;
}

struct BookRow {
  std::string pdu;
  int32_t expType, result;
  std::string body;
};

const BookRow kBook[] = {
    {"0004" + OA + "0000" + TS + HELLO, 0, 0,
     TEL + TXT + "data = hello\nflags = SMS_F_MORE_MSG\n" + DELIV},
    // Alphanumeric senders, odd and even septet counts.
    {"000009D0C8329BFD060000" + TS + HELLO, 0, 0, "tel = Hello\n" + TXT + "data = hello\n" + DELIV},
    {"00000BD0C8329BFD0E010000" + TS + HELLO, 0, 0, "tel = Hello!\n" + TXT + "data = hello\n" + DELIV},
    // Zones: minus, a quarter hour, a bad nibble (no date).
    {deliver("00", HELLO, "2130112143658A"), 0, 0,
     TEL + TXT + "data = hello\ntype = SMS_DELIVER\nxptTime = 20120311T123456-0700\nstat = ALL\n"},
    {deliver("00", HELLO, "99211350908510"), 0, 0,
     TEL + TXT + "data = hello\ntype = SMS_DELIVER\nxptTime = 19991231T050958+0015\nstat = ALL\n"},
    {deliver("00", HELLO, "2A301121436540"), 0, 0,
     TEL + TXT + "data = hello\ntype = SMS_DELIVER\nstat = ALL\n"},
    // Each branch of TP-DCS; the coding group is not read.
    {deliver("04", "03010002"), 0, 0, TEL + BIN + "\x01" + DELIV},
    {deliver("05", "0141"), 0, 0, TEL + BIN + "Acoding = 4\n" + DELIV},
    {deliver("08", "024F60"), 0, 0, TEL + TXT + "data = \xE4\xBD\xA0\n" + DELIV},
    {deliver("0C", "024142"), 0, 0, TEL + BIN + "AB" + DELIV},
    {deliver("0D", "024142"), 0, 0, TEL + BIN + "AB" + DELIV},
    {deliver("10", HELLO), 0, 0, TEL + TXT + "data = hello\n" + DELIV},
    {deliver("F0", HELLO), 0, 0, TEL + TXT + "data = hello\n" + DELIV},
    {deliver("F4", "024142"), 0, 0, TEL + BIN + "AB" + DELIV},
    {deliver("F6", "024142"), 0, 0, TEL + BIN + "AB" + DELIV},
    {deliver("C8", "00"), 0, 0, TEL + TXT + DELIV},  // voicemail, no text
    // Status reports: ending at TP-ST, TP-PI 00, 07, 04; without SMSC.
    {"00022A" + OA + TS + TS + "00", 0, 0, TEL + TXT + REP + REP_END},
    {"00022A" + OA + TS + TS + "0000", 0, 0, TEL + TXT + "flags = SMS_F_ANY_PARAM\n" + REP + REP_END},
    {"00022A" + OA + TS + TS + "00077F00" + HELLO, 0, 0,
     TEL + TXT + "data = hello\nprotId = 127\nflags = SMS_F_ANY_PARAM\n" + REP + REP_END},
    {"00022A" + OA + TS + TS + "0004" + HELLO, 0, 0,
     TEL + TXT + "data = hello\nflags = SMS_F_ANY_PARAM\n" + REP + REP_END},
    {"022A" + OA + TS + TS + "00", SMS_REPORT, 0, TEL + TXT + REP + REP_END},
    // SMSC fields: TOA only, full.
    {"0191" + deliver("00", HELLO).substr(2), 0, 0, TEL + TXT + "data = hello\n" + DELIV},
    {"07911326040000F0" + deliver("00", HELLO).substr(2), 0, 0, TEL + TXT + "data = hello\n" + DELIV},
    // 7, 8, 15, 23 septets: no stray "@" behind 7, a real last "@" kept.
    {deliver("00", "0741E19058341E01"), 0, 0, TEL + TXT + "data = ABCDEFG\n" + DELIV},
    {deliver("00", "0841E19058341E01"), 0, 0, TEL + TXT + "data = ABCDEFG@\n" + DELIV},
    {deliver("00", "0F41E19058341E9149E592D9743E01"), 0, 0, TEL + TXT + "data = ABCDEFGHIJKLMNO\n" + DELIV},
    {deliver("00", "1741E19058341E9149E592D9743EA151E9945AB55E01"), 0, 0,
     TEL + TXT + "data = ABCDEFGHIJKLMNOPQRSTUVW\n" + DELIV},
    // SMS-SUBMIT: TP-MR kept whole, the bit 0x04 as both flags, VP formats.
    {"0005F3" + OA + "0000" + HELLO, 0, 0,
     TEL + TXT + "data = hello\nflags = SMS_F_REJ_DUP\nflags = SMS_F_MORE_MSG\n"
                 "type = SMS_SUBMIT\nmsgRef = 243\nvalidDur = 0\nstat = ALL\n"},
    {"001900" + OA + "0000FE00015180000" "0" + HELLO, 0, 0,
     TEL + TXT + "data = hello\ntype = SMS_SUBMIT\nmsgRef = 0\nvalidDur = 86400\nstat = ALL\n"},
    {"001900" + OA + "0000FF214365FFFFFF" + HELLO, 0, 0,
     TEL + TXT + "data = hello\ntype = SMS_SUBMIT\nmsgRef = 0\nvalidDur = 123456\nstat = ALL\n"},
    // Refused: TP-MTI 3, lying lengths, nothing behind the SMSC field.
    {"0003" + OA + "0000" + TS + HELLO, 0, -81, TXT + "type = SMS_UNKN\nstat = ALL\n"},
    {"FF04" + OA, 0, -81, TXT + "type = SMS_UNKN\nstat = ALL\n"},
    {"00", 0, -81, TXT + "type = SMS_UNKN\nstat = ALL\n"},
    {"00047F91" + OA.substr(4), 0, -81, TEL + TXT + "flags = SMS_F_MORE_MSG\ntype = SMS_DELIVER\nstat = ALL\n"},
    {"0044" + OA + "0000" + TS + "05FF", 0, -81, TEL + TXT + "flags = SMS_F_MORE_MSG\n" + DELIV},
    {deliver("00", "FF" + std::string(38, 'A')), 0, -81,
     TEL + TXT + "data = *U*U*U*U*U*U*U*U*U*U*\n" + DELIV},
};

TEST(Psms, FixtureBook) {
  for (const BookRow &r : kBook) {
    SCOPED_TRACE(r.pdu);
    Sms sms;
    const auto pdu = fromHex(r.pdu);
    EXPECT_EQ(Psms_decPdux(pdu.data(), static_cast<int32_t>(pdu.size()), &sms, r.expType), r.result);
    EXPECT_EQ(traceBody(&sms), r.body);
    Sms viaIra;
    EXPECT_EQ(Psms_decIrax(r.pdu.c_str(), -1, &viaIra, r.expType), r.result);
    EXPECT_EQ(traceBody(&viaIra), r.body);
  }
}

}  // namespace
