// Reading and writing 100,000 entries of a folder listing and of an MMS
// listing, each beside bare expat and memchr over the same bytes. Heap
// calls an entry are counted with Tarnex_allocCount.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>
#include <vector>

#include "../tests/ListingFamilies.h"
#include "bench_floor.h"
#include "expat_floor.h"
#include "ostrel/ostrel.h"
#include "tarnex/scratch.hpp"

namespace {

constexpr int kEntries = 100000;

const std::string &folders() {
  static const std::string text = [] {
    std::string s =
        "<?xml version=\"1.0\"?>\r\n<!DOCTYPE folder-listing SYSTEM \"obex-folder-listing.dtd\">\r\n"
        "<folder-listing version=\"1.0\">\r\n";
    char line[256];
    for (int i = 0; i < kEntries; ++i) {
      if (i % 10 == 0)
        std::snprintf(line, sizeof line,
                      "\t<folder name=\"Folder %d\" modified=\"202611%02dT%02d%02d00Z\" "
                      "user-perm=\"RWD\" />\r\n",
                      i, 1 + i % 28, i % 24, i % 60);
      else
        std::snprintf(line, sizeof line,
                      "\t<file name=\"IMG_%05d &amp; co.jpg\" created=\"202611%02dT%02d%02d00\" "
                      "size=\"%d\" user-perm=\"RW\" type=\"image/jpeg\" />\r\n",
                      i, 1 + i % 28, i % 24, i % 60, 1000 + i * 37);
      s += line;
    }
    return s + "</folder-listing>\r\n";
  }();
  return text;
}

const std::string &messages() {
  static const std::string text = [] {
    static const char *const kStat[] = {"unread", "read", "sent", "unsent"};
    std::string s =
        "<?xml version=\"1.0\"?>\r\n<!DOCTYPE mms-listing SYSTEM \"xml-mms-listing.dtd\">\r\n"
        "<mms-listing version=\"1.0\">\r\n";
    char line[320];
    for (int i = 0; i < kEntries; ++i) {
      std::snprintf(line, sizeof line,
                    "\t<item name=\"m%06d\" stat=\"%s\" size=\"%d\" from=\"+49170%07d\" "
                    "to=\"+4930%07d\" title=\"Photos %d\" xptTime=\"202611%02dT%02d%02d00Z\" />\r\n",
                    i, kStat[i % 4], 2000 + i * 13, i, i * 3 % 10000000, i, 1 + i % 28, i % 24,
                    i % 60);
      s += line;
    }
    return s + "</mms-listing>\r\n";
  }();
  return text;
}

struct Folders : testutil::FolderOps {
  static const std::string &text() { return folders(); }
};

struct Messages : testutil::MessageOps {
  static const std::string &text() { return messages(); }
};

template <class F>
void BM_Decode(benchmark::State &state) {
  typename F::Item *item = F::make();
  const uint64_t before = Tarnex_allocCount();
  for (auto _ : state) {
    tarnex::ScratchStrStrm in(F::text());
    XmlListDec *dec = F::decBeg(in);
    int n = 0;
    while (F::decItem(dec, item) == 0) ++n;
    F::decEnd(dec);
    if (n != kEntries) state.SkipWithError("lost entries");
  }
  state.counters["heap/entry"] = static_cast<double>(Tarnex_allocCount() - before) /
                                 static_cast<double>(state.iterations() * kEntries);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * F::text().size()));
  state.SetItemsProcessed(state.iterations() * kEntries);
  F::drop(item);
}

template <class F>
void BM_Encode(benchmark::State &state) {
  std::vector<typename F::Item *> items;
  {
    tarnex::ScratchStrStrm in(F::text());
    XmlListDec *dec = F::decBeg(in);
    for (int i = 0; i < kEntries; ++i) {
      items.push_back(F::make());
      F::decItem(dec, items.back());
    }
    F::decEnd(dec);
  }
  tarnex::ScratchMemStrm out(static_cast<int32_t>(F::text().size() * 2));
  int64_t bytes = 0;
  const uint64_t before = Tarnex_allocCount();
  for (auto _ : state) {
    IStrm_clear(out);
    F::encBeg(out);
    for (const auto *item : items) F::encItem(out, item);
    F::encEnd(out);
    bytes += IStrm_size(out);
  }
  state.counters["heap/entry"] = static_cast<double>(Tarnex_allocCount() - before) /
                                 static_cast<double>(state.iterations() * kEntries);
  state.SetBytesProcessed(bytes);
  state.SetItemsProcessed(state.iterations() * kEntries);
  for (auto *item : items) F::drop(item);
}

void BM_FoldersExpatBare(benchmark::State &state) {
  bench::expatFloor(state, folders(), "file", kEntries - kEntries / 10, false);
}
void BM_MessagesExpatBare(benchmark::State &state) {
  bench::expatFloor(state, messages(), "item", kEntries, false);
}
void BM_FoldersMemchr(benchmark::State &state) {
  bench::memchrFloor(state, folders(), '\n', kEntries);
}
void BM_MessagesMemchr(benchmark::State &state) {
  bench::memchrFloor(state, messages(), '\n', kEntries);
}

BENCHMARK(BM_FoldersExpatBare)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Decode<Folders>)->Name("BM_FoldersDecode")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Encode<Folders>)->Name("BM_FoldersEncode")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FoldersMemchr)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MessagesExpatBare)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Decode<Messages>)->Name("BM_MessagesDecode")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Encode<Messages>)->Name("BM_MessagesEncode")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MessagesMemchr)->Unit(benchmark::kMillisecond);

}  // namespace
