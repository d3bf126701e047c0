// Reading and writing recurrence rules: a mix of what phones and desktop
// programs write (sub-rules, end marks, "LD", end dates), beside memchr over
// the same joined texts, with the foundation's heap calls per rule.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

#include "ostrel/ostrel.h"
#include "bench_floor.h"
#include "tarnex/scratch.hpp"

namespace {

const std::vector<std::string> &rules() {
  static const std::vector<std::string> mix = [] {
    const char *base[] = {
        "D1 #0", "D1 #10", "D3 #50", "D3 20050630T000000", "D1 20100228T083000Z",
        "W1 FR #9", "W2 TU TH", "W2 TU TH #27", "W2 MO WE FR 20050630T000000",
        "W1 TH 20060427T000000Z", "MP1 1+ SU #2", "MP3 2- FR #17", "MP3 3+ FR #17",
        "MP2 1+ 1- FR #3", "MP1 1+ TH 21001231T000000", "MD1 6 #3", "MD1 2- #5",
        "MD3 20 #17", "MD1 1 15 LD #0", "MD1 1 #1 D2  20000101T000000Z  M3", "YM1 4 #2",
        "YM1 6 7 #8", "YM2 5 #13", "YM1 6 #10 W1 TU TH #4",
        "YM1 6 9 10 #10 MP1 1+ 2+ 3+ 4+ 1- SA SU #1", "YD1 141 #17", "YD1 1 100 #5 D1 #5",
        "YD1 10$ 20$ #2", "w2 mo we$ #10", "M60 #5"};
    std::vector<std::string> out;
    for (int i = 0; i < 100; ++i)
      for (const char *r : base) out.emplace_back(r);
    return out;
  }();
  return mix;
}

void countHeap(benchmark::State &state, uint64_t before, size_t perIteration) {
  state.counters["heap/rule"] = static_cast<double>(Tarnex_allocCount() - before) /
                                static_cast<double>(state.iterations() * perIteration);
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * perIteration));
}

void BM_VrrDecode(benchmark::State &state) {
  const auto &mix = rules();
  size_t bytes = 0;
  for (const std::string &r : mix) bytes += r.size() + 1;
  RrItem item;
  const uint64_t before = Tarnex_allocCount();
  for (auto _ : state) {
    for (const std::string &r : mix) {
      if (Vrr_dec(r.c_str(), &item) != 1) state.SkipWithError("rule not read");
      benchmark::DoNotOptimize(item);
    }
  }
  countHeap(state, before, mix.size());
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}
BENCHMARK(BM_VrrDecode);

void BM_VrrEncode(benchmark::State &state) {
  std::vector<RrItem> items(rules().size());
  for (size_t i = 0; i < items.size(); ++i) Vrr_dec(rules()[i].c_str(), &items[i]);
  tarnex::ScratchStr<128> out;
  const uint64_t before = Tarnex_allocCount();
  int64_t bytes = 0;
  for (auto _ : state) {
    for (const RrItem &item : items) {
      KvoStr_clear(out);
      bytes += Vrr_enc(out, &item);
    }
  }
  countHeap(state, before, items.size());
  state.SetBytesProcessed(bytes);
}
BENCHMARK(BM_VrrEncode);

// The floor for any reader of the same bytes: memchr for the word breaks.
void BM_MemchrSameTexts(benchmark::State &state) {
  std::string joined;
  for (const std::string &r : rules()) joined += r + '\n';
  bench::memchrFloor(state, joined, ' ', static_cast<int64_t>(rules().size()));
}
BENCHMARK(BM_MemchrSameTexts);

}  // namespace
