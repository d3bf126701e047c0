// Reading and writing a call listing of 100,000 entries, beside memchr and
// bare expat over the same bytes, and the layers between them, so that the
// cost of each shows:
//   BM_ExpatBare         expat alone, the buffer in one call, counting starts
//   BM_ExpatStopEach     expat stopped and resumed at every entry
//   BM_XmlPsrFrame       the foundation's parser and frame from a stream,
//                        stopped at every entry, nothing stored
//   BM_XcallsDecode      the whole reader: records filled
// Heap calls an entry are counted with Tarnex_allocCount.
#include <benchmark/benchmark.h>
#include <expat.h>

#include <cstring>
#include <string>
#include <vector>

#include "../tests/ChunkedStrm.h"
#include "bench_floor.h"
#include "expat_floor.h"
#include "ostrel/ostrel.h"
#include "tarnex/scratch.hpp"

namespace {

constexpr int kCalls = 100000;

const std::string &listing() {
  static const std::string text = [] {
    static const char *const kTypes[] = {"received", "dialed", "missed"};
    std::string s =
        "<?xml version=\"1.0\"?>\r\n<!DOCTYPE call-listing SYSTEM \"xml-call-listing.dtd\">\r\n"
        "<call-listing version=\"1.0\">\r\n";
    char line[256];
    for (int i = 0; i < kCalls; ++i) {
      std::snprintf(line, sizeof line,
                    "\t<Call number=\"+49301%07d\" date=\"202611%02dT%02d%02d%02d\" "
                    "duration=\"%d\" type=\"%s\" luid=\"%d\" />\r\n",
                    i * 7 % 10000000, 1 + i % 28, i % 24, i % 60, (i * 7) % 60, i % 3600,
                    kTypes[i % 3], i);
      s += line;
    }
    return s + "</call-listing>\r\n";
  }();
  return text;
}

void perPass(benchmark::State &state, uint64_t heapBefore) {
  state.counters["heap/entry"] = static_cast<double>(Tarnex_allocCount() - heapBefore) /
                                 static_cast<double>(state.iterations() * kCalls);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * listing().size()));
  state.SetItemsProcessed(state.iterations() * kCalls);
}

void BM_ExpatBare(benchmark::State &state) {
  bench::expatFloor(state, listing(), "Call", kCalls, false);
}
BENCHMARK(BM_ExpatBare)->Unit(benchmark::kMillisecond);

void BM_ExpatStopEach(benchmark::State &state) {
  bench::expatFloor(state, listing(), "Call", kCalls, true);
}
BENCHMARK(BM_ExpatStopEach)->Unit(benchmark::kMillisecond);

void frameStart(XmlDec *dec, const char *name, const char **) {
  XmlDec_pushCtx(dec);
  if (std::strcmp(name, "Call") == 0) XmlPsr_stop(dec->psr, 1);
}

void BM_XmlPsrFrame(benchmark::State &state) {
  const uint64_t before = Tarnex_allocCount();
  for (auto _ : state) {
    tarnex::ScratchStrStrm in(listing());
    XmlPsr *psr = XmlPsr_new();
    XmlDec dec;
    XmlDec_new(&dec, psr);
    XmlDec_setCtxCb(&dec, 0, frameStart, XmlDec_onDefEnd, XmlDec_onDefChr, XmlDec_onDefDef);
    int n = 0;
    for (int32_t r = XmlPsr_parse(psr, in); r == XML_PSR_STOPPED; r = XmlPsr_resume(psr)) ++n;
    if (n != kCalls) state.SkipWithError("lost entries");
    XmlDec_delete(&dec);
    XmlPsr_delete(psr);
  }
  perPass(state, before);
}
BENCHMARK(BM_XmlPsrFrame)->Unit(benchmark::kMillisecond);

void BM_XcallsDecode(benchmark::State &state) {
  CallItem item;
  CallItem_new(&item);
  const uint64_t before = Tarnex_allocCount();
  for (auto _ : state) {
    tarnex::ScratchStrStrm in(listing());
    XmlListDec *dec = Xcalls_decBeg(in);
    int n = 0;
    while (Xcalls_decItem(dec, &item) == 0) ++n;
    Xcalls_decEnd(dec);
    if (n != kCalls) state.SkipWithError("lost entries");
  }
  perPass(state, before);
  CallItem_delete(&item);
}
BENCHMARK(BM_XcallsDecode)->Unit(benchmark::kMillisecond);

void BM_XcallsEncode(benchmark::State &state) {
  std::vector<CallItem> items(kCalls);
  {
    tarnex::ScratchStrStrm in(listing());
    XmlListDec *dec = Xcalls_decBeg(in);
    for (CallItem &c : items) {
      CallItem_new(&c);
      Xcalls_decItem(dec, &c);
    }
    Xcalls_decEnd(dec);
  }
  tarnex::ScratchMemStrm out(static_cast<int32_t>(listing().size() * 2));
  int64_t bytes = 0;
  const uint64_t before = Tarnex_allocCount();
  for (auto _ : state) {
    IStrm_clear(out);
    Xcalls_encBeg(out);
    for (const CallItem &c : items) Xcalls_encItem(out, &c);
    Xcalls_encEnd(out);
    bytes += IStrm_size(out);
  }
  state.counters["heap/entry"] = static_cast<double>(Tarnex_allocCount() - before) /
                                 static_cast<double>(state.iterations() * kCalls);
  state.SetBytesProcessed(bytes);
  state.SetItemsProcessed(state.iterations() * kCalls);
  for (CallItem &c : items) CallItem_delete(&c);
}
BENCHMARK(BM_XcallsEncode)->Unit(benchmark::kMillisecond);

// One long attribute from a stream that gives a byte a read: the time must
// grow with the length, not with its square (expat rescans a pending token
// at every call, so the parser gathers reads while one is pending).
void BM_XmlPsrLongTokenByteReads(benchmark::State &state) {
  const std::string doc = "<a x='" + std::string(static_cast<size_t>(state.range(0)), 'v') + "'/>";
  for (auto _ : state) {
    testutil::ChunkedStrm in(doc, 1);
    XmlPsr *psr = XmlPsr_new();
    if (XmlPsr_parse(psr, in.get()) != XML_PSR_DONE) state.SkipWithError("failed");
    XmlPsr_delete(psr);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * doc.size()));
}
BENCHMARK(BM_XmlPsrLongTokenByteReads)->Arg(256 << 10)->Arg(512 << 10)->Arg(1 << 20)
    ->Unit(benchmark::kMillisecond);

void BM_MemchrSameBuffer(benchmark::State &state) {
  bench::memchrFloor(state, listing(), '\n', kCalls);
}
BENCHMARK(BM_MemchrSameBuffer)->Unit(benchmark::kMillisecond);

}  // namespace
