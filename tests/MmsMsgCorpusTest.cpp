// Interop of the message decoder over binary MMS files from other projects
// (OSTREL_CORPUS/mms): which decode, how many media and slides in which
// layouts, read in place and byte by byte alike; and each decoded message
// written by the encoder reads back the same.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>

#include "MmsMsgTestUtil.h"

namespace {

using mmstest::laterSet;
using mmstest::readFile;

TEST(MmsMsgCorpus, DecodeCountsAndRoundTrips) {
  const char *root = std::getenv("OSTREL_CORPUS");
  const std::filesystem::path dir = root ? std::filesystem::path(root) / "mms" : "";
  if (root == nullptr || !std::filesystem::is_directory(dir))
    GTEST_SKIP() << "no mms corpus (OSTREL_CORPUS)";
  mmstest::FixedClock clock(0x60000000);
  std::map<int, int> okTypes;
  std::map<int32_t, int> layouts;
  std::map<std::string, std::string> byName;
  int ok = 0, failed = 0, failedWithHeader = 0, media = 0, slides = 0;
  for (const auto &entry : std::filesystem::directory_iterator(dir)) {
    const std::string name = entry.path().filename().string();
    if (laterSet(name)) continue;
    const std::string bytes = readFile(entry.path());
    tarnex::ScratchStrStrm windowed(bytes);
    mmstest::NoWindowStrm plain(bytes);
    mmstest::Item item;
    const int32_t rc = mms_dec(windowed, item);
    const mmstest::Decoded other = mmstest::decodeWith(plain);
    const std::string text = mmstest::renderItem(item);
    EXPECT_EQ(other.rc, rc) << name;
    EXPECT_EQ(mmstest::maskCounters(other.text), mmstest::maskCounters(text)) << name;
    byName[name] = text;
    if (rc != 0) {
      EXPECT_EQ(rc, -1) << name;
      ++failed;
      if (item->hdr.msgType != 0) ++failedWithHeader;
      continue;
    }
    ++ok;
    ++okTypes[item->hdr.msgType];
    media += MmsItem_mediaCount(item);
    slides += MmsItem_slideCount(item);
    MmsSlideEnum *walk = MmsItem_slides(item);
    while (const MmsSlide *s = MmsSlideEnum_next(walk)) ++layouts[s->layout];
    MmsSlideEnum_delete(walk);

    // What we write of it reads back as the same slides and media.
    tarnex::ScratchMemStrm out(0);
    mms_enc(out, item);
    mmstest::Item back;
    EXPECT_EQ(mms_dec(out, back), 0) << name;
    EXPECT_EQ(mmstest::renderItem(back, false, false), mmstest::renderItem(item, false, false))
        << name;
  }
  EXPECT_EQ(ok, 42);
  EXPECT_EQ(okTypes, (std::map<int, int>{{0x80, 13}, {0x84, 29}}));
  EXPECT_EQ(media, 77);
  EXPECT_EQ(slides, 38);
  EXPECT_EQ(layouts, (std::map<int32_t, int>{{1, 16}, {2, 12}, {4, 7}, {5, 3}}));
  EXPECT_EQ(failed, 25);
  EXPECT_EQ(failedWithHeader, 25);
  // Its UCS-2 charset, a long integer, runs the text part's header four
  // bytes into its data: three media and no slides is the defined result.
  EXPECT_EQ(byName["gammu__HelloWorld.mms"],
            "type=80 to=John Doe <john.doe@foo.com> from=+34660785634 title=My first MMS Message\n"
            "media SmileyFace.gif image/gif 1403:513322247\n"
            "media 1.txt text/plain 26:1381391015\n"
            "media lskdjfie. eEnd.gif 0:2166136261\n");
}

}  // namespace
