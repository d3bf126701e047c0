// The tool's JSON Lines against the library: every line parses, and each
// record's fields are the ones the library decodes at that record's offset,
// with the same text values, on our samples and on every real vCard file.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "ostrel/ostrel.h"
#include "tarnex/scratch.hpp"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

std::string run(const std::string &command) {
  std::unique_ptr<FILE, int (*)(FILE *)> pipe(popen(command.c_str(), "r"), pclose);
  std::string out;
  char buf[65536];
  size_t n;
  while (pipe && (n = std::fread(buf, 1, sizeof buf, pipe.get())) > 0) out.append(buf, n);
  return out;
}

std::string utf8(const KvoWcs *w) {
  tarnex::ScratchStr<64> s;
  KvoStr_setCwcs(s, w);
  return std::string(s.view());
}

// The text values of each valid field of the contact that starts at `offset`.
std::vector<std::vector<std::string>> libraryFields(const std::string &data, size_t offset) {
  tarnex::ScratchStrStrm in(data);
  IStrm_seek(in, static_cast<int64_t>(offset), KVO_SEEK_SET);
  PbItem item;
  PbItem_new(&item);
  std::vector<std::vector<std::string>> out;
  if (Vcard_dec(in, &item, nullptr) == 1) {
    for (int32_t i = 0; i < item.size; ++i) {
      const PbField *f = PbItem_at(&item, i);
      if (f == nullptr || f->type[0] == '\0') continue;
      std::vector<std::string> vals;
      for (const KvoWcs &v : f->vals) vals.push_back(utf8(&v));
      while (!vals.empty() && vals.back().empty()) vals.pop_back();
      out.push_back(vals);
    }
  }
  PbItem_delete(&item);
  return out;
}

void checkFile(const fs::path &file) {
  SCOPED_TRACE(file.string());
  std::ifstream f(file, std::ios::binary);
  const std::string data{std::istreambuf_iterator<char>(f), {}};
  // UTF-16 files count offsets in their UTF-8 form; the CLI test covers them.
  if (data.find('\0') != std::string::npos) return;
  const std::string out = run(std::string(OSTREL_TOOL) + " --json show '" + file.string() + "' 2>/dev/null");
  size_t pos = 0;
  while (pos < out.size()) {
    const size_t end = out.find('\n', pos);
    ASSERT_NE(end, std::string::npos);
    const json record = json::parse(out.substr(pos, end - pos));  // throws on bad JSON
    pos = end + 1;
    if (record["kind"] != "contact") continue;
    const auto want = libraryFields(data, record["offset"].get<size_t>());
    ASSERT_EQ(record["fields"].size(), want.size());
    for (size_t i = 0; i < want.size(); ++i) {
      const json &field = record["fields"][i];
      // Dates are shown in ISO form, binary values by size.
      if (field.contains("binary") || field["type"] == "B" || field["type"] == "OV") continue;
      EXPECT_EQ(field["values"].get<std::vector<std::string>>(), want[i]) << field.dump();
    }
  }
}

TEST(ToolJson, RecordsMatchTheLibrary) {
  Ostrel_init();
  checkFile(fs::path(OSTREL_SAMPLES) / "contacts.vcf");
  const char *corpus = std::getenv("OSTREL_CORPUS");
  int files = 0;
  if (corpus != nullptr && fs::is_directory(fs::path(corpus) / "vcard")) {
    for (const auto &entry : fs::directory_iterator(fs::path(corpus) / "vcard")) {
      if (!entry.is_regular_file()) continue;
      checkFile(entry.path());
      ++files;
    }
  }
  std::printf("checked the JSON of %d corpus files\n", files);
  Ostrel_exit();
}

}  // namespace
