// Interop over PDUs from other projects' tests (OSTREL_CORPUS/sms-pdu):
// every PDU that decodes survives VSMS, written and read back, field by
// field. A text holding U+0000 comes back up to it, as a value's text is
// read up to its first 0 character.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>

#include "SmsTestUtil.h"

namespace {

std::vector<std::string> cells(const std::string &line) {
  std::vector<std::string> out(1);
  for (char c : line) {
    if (c == '\t')
      out.emplace_back();
    else
      out.back() += c;
  }
  out.resize(14);
  return out;
}

bool sameDate(const KvoDt &a, const KvoDt &b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// The names of the fields that differ.
std::string differences(const SmsItem &a, const SmsItem &b) {
  std::string d;
  auto check = [&d](bool same, const char *name) {
    if (!same) d += std::string(d.empty() ? "" : ", ") + name;
  };
  check(std::strcmp(KvoStr_buf(&a.tel), KvoStr_buf(&b.tel)) == 0, "tel");
  check(a.dt == b.dt, "dt");
  check(KvoWcs_len(&a.data) == KvoWcs_len(&b.data) &&
            std::memcmp(KvoWcs_buf(&a.data), KvoWcs_buf(&b.data), 2 * KvoWcs_len(&a.data)) == 0,
        "data");
  check(a.udhLen == b.udhLen && std::memcmp(a.udhBuf, b.udhBuf, a.udhLen) == 0, "udh");
  check(a.protId == b.protId, "protId");
  check(a.coding == b.coding, "coding");
  check(a.flags == b.flags, "flags");
  check(a.type == b.type, "type");
  check(std::strcmp(KvoStr_buf(&a.card), KvoStr_buf(&b.card)) == 0, "card");
  check(a.msgRef == b.msgRef, "msgRef");
  check(sameDate(a.xptTime, b.xptTime), "xptTime");
  check(sameDate(a.revTime, b.revTime), "revTime");
  check(a.validDur == b.validDur, "validDur");
  check(a.repStat == b.repStat, "repStat");
  check(a.repFor == b.repFor, "repFor");
  check(a.stat == b.stat, "stat");
  return d;
}

TEST(VsmsCorpus, EveryDecodedPduSurvivesVsms) {
  const char *root = std::getenv("OSTREL_CORPUS");
  std::ifstream in(std::string(root ? root : "") + "/sms-pdu/vectors.tsv");
  if (!root || !in) GTEST_SKIP() << "no sms-pdu corpus (OSTREL_CORPUS)";
  int pdus = 0, decoded = 0, survived = 0, cutAtNul = 0, binary = 0, withUdh = 0;
  std::string line;
  for (int n = 0; std::getline(in, line); ++n) {
    if (n < 6 || line.empty()) continue;
    const auto c = cells(line);
    if (c[2] == "encode-address" || c[4].empty()) continue;
    ++pdus;
    auto pdu = fromHex(c[4]);
    int32_t expType = 0;
    if (c[3] == "no") {
      if ((pdu[0] & 3) == 2)
        expType = SMS_REPORT;
      else
        pdu.insert(pdu.begin(), 0);
    }
    Sms s;
    if (Psms_decPdux(pdu.data(), static_cast<int32_t>(pdu.size()), &s, expType) != 0) continue;
    ++decoded;
    tarnex::ScratchMemStrm text(0);
    ASSERT_EQ(Vsms_enc(text, &s, 0), 0) << c[0] << " " << c[1];
    IStrm_rewind(text);
    Sms back;
    ASSERT_EQ(Vsms_dec(text, &back, nullptr), 1) << c[0] << " " << c[1];
    if (s.dt == SMS_DT_TXT) {
      const KvoWchar *p = KvoWcs_buf(&s.data);
      const int32_t len = KvoWcs_len(&s.data);
      const int32_t upTo = static_cast<int32_t>(std::find(p, p + len, KvoWchar{0}) - p);
      if (upTo < len) {
        ++cutAtNul;
        KvoWcs_setWcsx(&s.data, p, upTo);
      }
    }
    binary += s.dt == SMS_DT_BIN;
    withUdh += s.udhLen > 0;
    const std::string d = differences(s, back);
    EXPECT_EQ(d, "") << c[0] << " " << c[1];
    survived += d.empty();
  }
  std::cout << "sms-pdu corpus through VSMS: " << pdus << " PDUs, " << decoded << " decoded, "
            << survived << " survived field by field (" << binary << " binary, " << withUdh
            << " with a header, " << cutAtNul << " texts cut at U+0000)\n";
  EXPECT_GT(decoded, 0);
}

}  // namespace
