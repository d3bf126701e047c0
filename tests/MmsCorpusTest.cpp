// Interop over binary MMS files from other projects (OSTREL_CORPUS/mms):
// every header reads with 0, the counts of message types and of where each
// header ends, and a few fields checked by hand against the bytes.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>

#include "MmsTestUtil.h"

namespace {

using mmstest::laterSet;
using mmstest::readFile;

const char *typeName(uint8_t type) {
  static const char *const kNames[] = {
      "m-send-req", "m-send-conf", "m-notification-ind", "m-notifyresp-ind",
      "m-retrieve-conf", "m-acknowledge-ind", "m-delivery-ind", "m-read-rec-ind",
      "m-read-orig-ind"};
  return type >= 0x80 && type < 0x80 + std::size(kNames) ? kNames[type - 0x80] : "other";
}

struct Header {
  int32_t rc;
  int64_t end;
  std::string text;
};

Header read(const std::string &bytes, MmsHdr *hdr) {
  tarnex::ScratchStrStrm in(bytes);
  const int32_t rc = mms_dec_hdr(in, hdr);
  return {rc, IStrm_tell(in), mmstest::render(*hdr)};
}

TEST(MmsCorpus, HeadersTypesAndEnds) {
  const char *root = std::getenv("OSTREL_CORPUS");
  const std::filesystem::path dir = root ? std::filesystem::path(root) / "mms" : "";
  if (root == nullptr || !std::filesystem::is_directory(dir))
    GTEST_SKIP() << "no mms corpus (OSTREL_CORPUS)";
  std::map<std::string, int> types;
  std::map<std::string, Header> byName;
  std::set<std::string> early;
  int files = 0, atEnd = 0, atCount = 0, later = 0;
  for (const auto &entry : std::filesystem::directory_iterator(dir)) {
    const std::string name = entry.path().filename().string();
    const std::string bytes = readFile(entry.path());
    mmstest::Hdr hdr;
    const Header h = read(bytes, &hdr);
    EXPECT_EQ(h.rc, 0) << name;
    EXPECT_TRUE(mmstest::readAgreed(bytes)) << name;
    if (laterSet(name)) {
      ++later;
      continue;
    }
    ++files;
    ++types[typeName(hdr.msgType)];
    byName[name] = h;
    if (h.end == static_cast<int64_t>(bytes.size()))
      ++atEnd;
    else if (static_cast<uint8_t>(bytes[static_cast<size_t>(h.end)]) < 0x20)
      ++atCount;
    else
      early.insert(name);
  }
  EXPECT_EQ(files, 67);
  EXPECT_EQ(later, 21);
  EXPECT_EQ(types, (std::map<std::string, int>{{"m-retrieve-conf", 34},
                                                {"m-send-req", 13},
                                                {"m-notification-ind", 8},
                                                {"m-send-conf", 5},
                                                {"m-delivery-ind", 3},
                                                {"m-notifyresp-ind", 1},
                                                {"m-acknowledge-ind", 1},
                                                {"m-read-rec-ind", 1},
                                                {"m-read-orig-ind", 1}}));
  EXPECT_EQ(atEnd, 19);
  EXPECT_EQ(atCount, 42);
  EXPECT_EQ(early, (std::set<std::string>{"gammu__worldcupupdate_nosmil.mms",
                                          "gammu__worldcupupdate_withsmil.mms",
                                          "mms-engine__m-delivery_2.ind",
                                          "mmsd__rc-mms-1-3-con-281.mms",
                                          "mmsd__rc-mms-1-3-con-282.mms",
                                          "mms-engine__m-retrieve_5.conf"}));

  // Checked by hand against the bytes of each file.
  const auto has = [&](const char *file, const std::string &part) {
    const auto it = byName.find(file);
    ASSERT_NE(it, byName.end()) << file;
    EXPECT_NE(it->second.text.find(part), std::string::npos) << file << ": " << it->second.text;
  };
  has("mms-engine__m-delivery_1.ind", "/TYPE=PLNM");
  has("mms-engine__m-read-rec.ind", "type=87 to=");
  EXPECT_EQ(byName["mms-engine__m-read-rec.ind"].text.find(" from="), std::string::npos);
  has("mms-engine__m-retrieve_10.conf", std::string(1, '\0') + " date=");
  const std::string &retrieve1 = byName["mms-engine__m-retrieve_1.conf"].text;
  const size_t to = retrieve1.find(" to="), cc = retrieve1.find(" cc=");
  ASSERT_NE(to, std::string::npos);
  ASSERT_NE(cc, std::string::npos);
  EXPECT_NE(retrieve1.substr(to, cc - to).find(','), std::string::npos) << retrieve1;
  EXPECT_NE(retrieve1.substr(cc, retrieve1.find(' ', cc + 1) - cc).find(','), std::string::npos)
      << retrieve1;
}

}  // namespace
