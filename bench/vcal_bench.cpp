// Decoding and encoding 10,000 realistic events, beside memchr over the same
// bytes as the floor of what any reader of the buffer costs. Heap calls are
// counted per event in two parts: the record's own storage (what copying a
// decoded event into a cleared record costs, since each clear gives the
// wide members back) and the decoder's own work (the rest).
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

#include "ostrel/ostrel.h"
#include "tarnex/scratch.hpp"

namespace {

constexpr int kEvents = 10000;

const std::string &events() {
  static const std::string text = [] {
    std::string s;
    for (int i = 0; i < kEvents; ++i) {
      const std::string n = std::to_string(i);
      const std::string day = std::to_string(20240101 + i % 28);
      s += "BEGIN:VCALENDAR\r\nVERSION:1.0\r\nBEGIN:VEVENT\r\n";
      s += "SUMMARY:Team meeting " + n + "\r\n";
      s += "DESCRIPTION;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:Agenda f=C3=BCr heute=0D=0A=\r\n"
           "Zweite Zeile mit =E2=82=AC.\r\n";
      s += "LOCATION:Room " + n + "\r\n";
      s += "DTSTART:" + day + "T090000Z\r\nDTEND:" + day + "T100000Z\r\n";
      s += "DALARM:" + day + "T084500Z;PT5M;2;Meeting\r\n";
      s += "AALARM:" + day + "T085000Z;;;\r\n";
      s += "RRULE:W1 MO TU #10\r\n";
      s += "CATEGORIES:BUSINESS;MEETING\r\nCLASS:PRIVATE\r\n";
      s += "LAST-MODIFIED:20231201T101010Z\r\n";
      s += "END:VEVENT\r\nEND:VCALENDAR\r\n";
    }
    return s;
  }();
  return text;
}

// Heap calls a record's storage takes per event: each event copied into a
// cleared record.
double storageHeapPerEvent(const std::string &text) {
  CalItem item, copy;
  CalItem_new(&item);
  CalItem_new(&copy);
  tarnex::ScratchStrStrm in(text);
  uint64_t calls = 0;
  while (Vcal_dec(in, &item, nullptr) == 1) {
    const uint64_t before = Tarnex_allocCount();
    CalItem_assign(&copy, &item);
    calls += Tarnex_allocCount() - before;
  }
  CalItem_delete(&copy);
  CalItem_delete(&item);
  return double(calls) / kEvents;
}

void BM_VcalDecode(benchmark::State &state) {
  const std::string &text = events();
  CalItem item;
  CalItem_new(&item);
  const uint64_t before = Tarnex_allocCount();
  for (auto _ : state) {
    tarnex::ScratchStrStrm in(text);
    int n = 0;
    while (Vcal_dec(in, &item, nullptr) == 1) ++n;
    if (n != kEvents) state.SkipWithError("lost events");
  }
  const double all = double(Tarnex_allocCount() - before) / (double(state.iterations()) * kEvents);
  CalItem_delete(&item);
  const double storage = storageHeapPerEvent(text);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
  state.SetItemsProcessed(state.iterations() * kEvents);
  state.counters["heap/event storage"] = storage;
  state.counters["heap/event own"] = all - storage;
}
BENCHMARK(BM_VcalDecode)->Unit(benchmark::kMillisecond);

void BM_VcalEncode(benchmark::State &state) {
  const std::string &text = events();
  tarnex::ScratchStrStrm in(text);
  std::vector<CalItem> items(kEvents);
  for (CalItem &item : items) {
    CalItem_new(&item);
    Vcal_dec(in, &item, nullptr);
  }
  tarnex::ScratchMemStrm out(static_cast<int32_t>(text.size() + text.size() / 4));
  int64_t bytes = 0;
  const uint64_t before = Tarnex_allocCount();
  for (auto _ : state) {
    IStrm_clear(out);
    for (CalItem &item : items) Vcal_enc(out, &item, 0);
    bytes += IStrm_size(out);
  }
  state.counters["heap/event"] =
      double(Tarnex_allocCount() - before) / (double(state.iterations()) * kEvents);
  for (CalItem &item : items) CalItem_delete(&item);
  state.SetBytesProcessed(bytes);
  state.SetItemsProcessed(state.iterations() * kEvents);
}
BENCHMARK(BM_VcalEncode)->Unit(benchmark::kMillisecond);

// Counting line ends with memchr: the floor for a reader of the same bytes.
void BM_MemchrSameBuffer(benchmark::State &state) {
  const std::string &text = events();
  for (auto _ : state) {
    size_t lines = 0;
    const char *p = text.data(), *end = p + text.size();
    while ((p = static_cast<const char *>(std::memchr(p, '\n', end - p))) != nullptr) {
      ++lines;
      ++p;
    }
    benchmark::DoNotOptimize(lines);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_MemchrSameBuffer)->Unit(benchmark::kMillisecond);

}  // namespace
