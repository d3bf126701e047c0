// Reading and writing 10,000 realistic notes (a quoted-printable UTF-8 body
// of 20 to 400 bytes, some of several lines, two dates) and as many
// bookmarks and short messages as VSMS, beside memchr over the same bytes,
// with the foundation's heap calls per record into a reused record.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

#include "ostrel/ostrel.h"
#include "bench_floor.h"
#include "tarnex/scratch.hpp"

namespace {

constexpr int kRecords = 10000;

std::string qpBody(int i) {
  static const char *kWords[] = {"Milch", "Br=C3=B6tchen", "K=C3=A4se", "call", "garage",
                                 "Termin", "=E2=82=AC 20", "tyres", "ready", "Samstag"};
  std::string s;
  const size_t want = 20 + static_cast<size_t>(i * 37 % 380);
  for (int w = 0; s.size() < want; ++w) {
    s += kWords[(i + w) % 10];
    s += (w % 9 == 8) ? "=0D=0A=\r\n" : " ";
  }
  return s;
}

const std::string &notes() {
  static const std::string text = [] {
    std::string s;
    for (int i = 0; i < kRecords; ++i) {
      s += "BEGIN:VNOTE\r\nVERSION:1.1\r\nSUMMARY:Note " + std::to_string(i) + "\r\n";
      s += "BODY;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:" + qpBody(i) + "\r\n";
      s += "DCREATED:20261120T081500Z\r\nLAST-MODIFIED:20261121T190000Z\r\nEND:VNOTE\r\n";
    }
    return s;
  }();
  return text;
}

const std::string &bookmarks() {
  static const std::string text = [] {
    std::string s;
    for (int i = 0; i < kRecords; ++i)
      s += "BEGIN:VBKM\r\nVERSION:1.1\r\nTITLE:Page " + std::to_string(i) +
           "\r\nURL:https://example.org/a/" + std::to_string(i) +
           "?q=1\r\nLAST-MODIFIED:20261101T120000\r\nEND:VBKM\r\n";
    return s;
  }();
  return text;
}

// A day's traffic: received texts with umlauts, sent texts over two lines
// (quoted-printable), and concatenated binary parts with their header.
const std::string &messages() {
  static const std::string text = [] {
    std::string s;
    for (int i = 0; i < kRecords; ++i) {
      const std::string n = std::to_string(i);
      s += "BEGIN:VSMS\r\nVERSION:2.0\r\n";
      switch (i % 3) {
        case 0:
          s += "TYPE:DELIVER\r\nTEL:+49171" + n + "\r\nDATA;CHARSET=utf-8:Bin gleich da, bring Br\xC3\xB6tchen "
               "mit (" + n + ")\r\nCARD:\r\nSTAT:READ\r\nXPT-TIME:20261123T181502+0100\r\n";
          break;
        case 1:
          s += "TYPE:SUBMIT\r\nTEL:+4930" + n + "\r\nDATA;ENCODING=QUOTED-PRINTABLE:Meeting moved to 3pm=0D=0A"
               "Room " + n + "\\; bring slides\r\nCARD:\r\nSTAT:SENT\r\nFLAGS:REP-REP\r\nMSG-REF:17\r\n"
               "VALID-DUR:167\r\n";
          break;
        default:
          s += "TYPE:DELIVER\r\nTEL:+4477009" + n + "\r\nDATA;ENCODING=BASE64;TYPE=BIN:AQIDBAUGBwgJCgsMDQ4PEBES"
               "ExQVFhcYGRobHB0eHyAhIiMkJSYnKCkqKywtLi8wMTIzNDU2Nzg5\r\nCARD:\r\nSTAT:UNREAD\r\n"
               "UDH;ENCODING=BASE64:BQADpQIB\r\nPROT-ID:65\r\nXPT-TIME:20261124T070000Z\r\n";
      }
      s += "END:VSMS\r\n";
    }
    return s;
  }();
  return text;
}

template <class Item, class New, class Del, class Decode>
void decodeAll(benchmark::State &state, const std::string &text, New make, Del del, Decode decode) {
  Item item;
  make(&item);
  const uint64_t before = Tarnex_allocCount();
  for (auto _ : state) {
    tarnex::ScratchStrStrm in(text);
    int n = 0;
    while (decode(in.get(), &item) == 1) ++n;
    if (n != kRecords) state.SkipWithError("lost records");
  }
  state.counters["heap/record"] = static_cast<double>(Tarnex_allocCount() - before) /
                                  static_cast<double>(state.iterations() * kRecords);
  del(&item);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
  state.SetItemsProcessed(state.iterations() * kRecords);
}

void BM_VnoteDecode(benchmark::State &state) {
  decodeAll<NoteItem>(state, notes(), NoteItem_new, NoteItem_delete,
                      [](IStrm *s, NoteItem *n) { return Vnote_dec(s, n, nullptr); });
}
BENCHMARK(BM_VnoteDecode)->Unit(benchmark::kMillisecond);

void BM_VbkmDecode(benchmark::State &state) {
  decodeAll<BkmItem>(state, bookmarks(), BkmItem_new, BkmItem_delete,
                     [](IStrm *s, BkmItem *b) { return Vbkm_dec(s, b, nullptr); });
}
BENCHMARK(BM_VbkmDecode)->Unit(benchmark::kMillisecond);

void BM_VnoteEncode(benchmark::State &state) {
  tarnex::ScratchStrStrm in(notes());
  std::vector<NoteItem> items(kRecords);
  for (NoteItem &item : items) {
    NoteItem_new(&item);
    Vnote_dec(in, &item, nullptr);
  }
  tarnex::ScratchMemStrm out(static_cast<int32_t>(notes().size() * 2));
  int64_t bytes = 0;
  const uint64_t before = Tarnex_allocCount();
  for (auto _ : state) {
    IStrm_clear(out);
    for (const NoteItem &item : items) Vnote_enc(out, &item, 0);
    bytes += IStrm_size(out);
  }
  state.counters["heap/record"] = static_cast<double>(Tarnex_allocCount() - before) /
                                  static_cast<double>(state.iterations() * kRecords);
  for (NoteItem &item : items) NoteItem_delete(&item);
  state.SetBytesProcessed(bytes);
  state.SetItemsProcessed(state.iterations() * kRecords);
}
BENCHMARK(BM_VnoteEncode)->Unit(benchmark::kMillisecond);

void BM_VsmsDecode(benchmark::State &state) {
  decodeAll<SmsItem>(state, messages(), SmsItem_new, SmsItem_delete,
                     [](IStrm *s, SmsItem *m) { return Vsms_dec(s, m, nullptr); });
}
BENCHMARK(BM_VsmsDecode)->Unit(benchmark::kMillisecond);

void BM_VsmsEncode(benchmark::State &state) {
  tarnex::ScratchStrStrm in(messages());
  std::vector<SmsItem> items(kRecords);
  for (SmsItem &item : items) {
    SmsItem_new(&item);
    Vsms_dec(in, &item, nullptr);
  }
  tarnex::ScratchMemStrm out(static_cast<int32_t>(messages().size() * 2));
  int64_t bytes = 0;
  const uint64_t before = Tarnex_allocCount();
  for (auto _ : state) {
    IStrm_clear(out);
    for (const SmsItem &item : items) Vsms_enc(out, &item, 0);
    bytes += IStrm_size(out);
  }
  state.counters["heap/record"] = static_cast<double>(Tarnex_allocCount() - before) /
                                  static_cast<double>(state.iterations() * kRecords);
  for (SmsItem &item : items) SmsItem_delete(&item);
  state.SetBytesProcessed(bytes);
  state.SetItemsProcessed(state.iterations() * kRecords);
}
BENCHMARK(BM_VsmsEncode)->Unit(benchmark::kMillisecond);

void BM_MemchrMessages(benchmark::State &state) {
  bench::memchrFloor(state, messages(), '\n', kRecords);
}
BENCHMARK(BM_MemchrMessages)->Unit(benchmark::kMillisecond);

void BM_MemchrSameBuffer(benchmark::State &state) {
  bench::memchrFloor(state, notes(), '\n', kRecords);
}
BENCHMARK(BM_MemchrSameBuffer)->Unit(benchmark::kMillisecond);

}  // namespace
