// Real calendar files from other programs: the object counts of the whole
// set, the files with a known fault or no entry, a few fields written by
// hand from other readers' results, and every record surviving a trip
// through the encoder.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <string>

#include "CalTestUtil.h"

namespace {

struct FileResult {
  int records = 0;
  int32_t rc = 0;
  std::string first;  // trace of the first record
};

std::string readFile(const std::filesystem::path &path) {
  std::ifstream file(path, std::ios::binary);
  return std::string((std::istreambuf_iterator<char>(file)), {});
}

FileResult readAll(const std::string &text, const std::string &name) {
  FileResult r;
  tarnex::ScratchStrStrm in(text);
  CalItem item, back;
  CalItem_new(&item);
  CalItem_new(&back);
  while ((r.rc = Vcal_dec(in, &item, nullptr)) == 1) {
    const std::string want = caltest::trace(&item);
    if (r.records++ == 0) r.first = want;
    tarnex::ScratchMemStrm out(0);
    EXPECT_EQ(Vcal_enc(out, &item, 0), 0) << name;
    IStrm_rewind(out);
    EXPECT_EQ(Vcal_dec(out, &back, nullptr), 1) << name;
    std::string got = caltest::trace(&back), expect = want;
    for (std::string *t : {&got, &expect})  // the attendee's TYPE is not written
      for (size_t at; (at = t->find("\tinfoFmt = ")) != std::string::npos;)
        t->erase(at, t->find('\n', at) - at + 1);
    EXPECT_EQ(got, expect) << name << " record " << r.records;
  }
  CalItem_delete(&back);
  CalItem_delete(&item);
  return r;
}

// The later collection of vCalendar 1.0 streams, counted apart from the
// first 60 files.
bool laterSet(const std::string &name) {
  for (const char *prefix : {"biweekly__", "tizen-tct__", "gnokii__", "syncevolution__syncevo-phone"})
    if (name.rfind(prefix, 0) == 0) return true;
  return false;
}

TEST(VcalCorpus, CountsAndRoundTrips) {
  const char *root = std::getenv("OSTREL_CORPUS");
  const std::filesystem::path dir = root ? std::filesystem::path(root) / "vcalendar" : "";
  if (root == nullptr || !std::filesystem::is_directory(dir))
    GTEST_SKIP() << "no vcalendar corpus (OSTREL_CORPUS)";
  std::map<std::string, FileResult> results;
  int files = 0, withRecords = 0, total = 0, laterFiles = 0, laterRecords = 0;
  for (const auto &entry : std::filesystem::directory_iterator(dir)) {
    if (!entry.is_regular_file()) continue;
    const std::string name = entry.path().filename().string();
    const FileResult r = readAll(readFile(entry.path()), name);
    if (name != "gammu__p990.vcs") {
      EXPECT_EQ(r.rc, 0) << name;
    }
    results[name] = r;
    if (laterSet(name)) {
      ++laterFiles;
      laterRecords += r.records;
      continue;
    }
    ++files;
    total += r.records;
    withRecords += r.records > 0;
  }
  std::cout << "vcalendar corpus: " << total << " records from " << withRecords << " of " << files
            << " files; later set: " << laterRecords << " records from " << laterFiles
            << " files\n";
  EXPECT_EQ(files, 60);
  EXPECT_EQ(total, 98);
  EXPECT_EQ(withRecords, 58);
  EXPECT_EQ(results["gammu__p990.vcs"].rc, OSTREL_MALFORMED);
  EXPECT_EQ(results["syncevolution__eds_memo.ics"].records, 0);
  EXPECT_EQ(results["gammu__UK32Holidays.ics"].records, 1);
  EXPECT_EQ(results["kcalendarcore__KOrganizer_3.4-all.vcs"].records, 1);
}

}  // namespace
