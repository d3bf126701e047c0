// The floor of every XML listing reader: bare expat over the same buffer,
// in one call, counting the entry elements (and, stopped at each, what the
// stop and resume cost by themselves).
#ifndef OSTREL_BENCH_EXPAT_FLOOR_H
#define OSTREL_BENCH_EXPAT_FLOOR_H

#include <benchmark/benchmark.h>
#include <expat.h>

#include <cstring>
#include <string>

namespace bench {

struct ExpatCount {
  XML_Parser p;
  const char *entry;
  int64_t n;
  bool stop;
};

inline void XMLCALL countEntry(void *u, const XML_Char *name, const XML_Char **) {
  ExpatCount *c = static_cast<ExpatCount *>(u);
  if (std::strcmp(name, c->entry) != 0) return;
  ++c->n;
  if (c->stop) XML_StopParser(c->p, XML_TRUE);
}

inline void expatFloor(benchmark::State &state, const std::string &text, const char *entry,
                       int64_t entries, bool stopEach) {
  for (auto _ : state) {
    ExpatCount c{XML_ParserCreate(nullptr), entry, 0, stopEach};
    XML_SetUserData(c.p, &c);
    XML_SetStartElementHandler(c.p, countEntry);
    XML_Status st = XML_Parse(c.p, text.data(), static_cast<int>(text.size()), XML_TRUE);
    while (st == XML_STATUS_SUSPENDED) st = XML_ResumeParser(c.p);
    if (st != XML_STATUS_OK || c.n != entries) state.SkipWithError("expat failed");
    XML_ParserFree(c.p);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
  state.SetItemsProcessed(state.iterations() * entries);
}

}  // namespace bench

#endif  // OSTREL_BENCH_EXPAT_FLOOR_H
