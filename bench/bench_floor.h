// The floor every codec benchmark stands beside: memchr over the same
// bytes, counting one byte, as the least any reader of the buffer costs.
#ifndef OSTREL_BENCH_FLOOR_H
#define OSTREL_BENCH_FLOOR_H

#include <benchmark/benchmark.h>

#include <cstring>
#include <string>

namespace bench {

inline void memchrFloor(benchmark::State &state, const std::string &text, char byte,
                        int64_t itemsPerPass) {
  for (auto _ : state) {
    size_t found = 0;
    const char *p = text.data(), *end = p + text.size();
    while ((p = static_cast<const char *>(std::memchr(p, byte, end - p))) != nullptr) {
      ++found;
      ++p;
    }
    benchmark::DoNotOptimize(found);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
  if (itemsPerPass != 0) state.SetItemsProcessed(state.iterations() * itemsPerPass);
}

}  // namespace bench

#endif  // OSTREL_BENCH_FLOOR_H
