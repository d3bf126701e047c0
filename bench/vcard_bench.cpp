// Decoding and encoding 10,000 realistic cards, beside memchr over the same
// bytes as the floor of what any reader of the buffer costs.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

#include "ostrel/ostrel.h"
#include "bench_floor.h"
#include "tarnex/scratch.hpp"

namespace {

constexpr int kCards = 10000;

std::string base64(size_t n, unsigned seed) {
  static const char kAlpha[] =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  for (size_t i = 0; i < n; ++i) {
    if (i % 72 == 0) out += "\r\n ";
    seed = seed * 1103515245u + 12345u;
    out += kAlpha[(seed >> 16) & 63];
  }
  return out + "\r\n";
}

// Names, typed numbers, e-mail, an address, a quoted-printable UTF-8 note,
// and a Base64 photo of about 3 KB on every tenth card.
const std::string &cards() {
  static const std::string text = [] {
    std::string s;
    for (int i = 0; i < kCards; ++i) {
      const std::string n = std::to_string(i);
      s += "BEGIN:VCARD\r\nVERSION:2.1\r\n";
      s += "N;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:M=C3=BCller" + n + ";J=C3=BCrgen;;Dr.;\r\n";
      s += "FN:Juergen Mueller " + n + "\r\n";
      s += "TEL;CELL;PREF:+49170" + n + "\r\nTEL;WORK;VOICE:+4930" + n + "\r\n";
      s += "TEL;HOME;FAX:+4940" + n + "\r\n";
      s += "EMAIL;INTERNET;HOME:user" + n + "@example.com\r\n";
      s += "ADR;WORK:;;Hauptstrasse " + n + ";Berlin;;10115;Germany\r\n";
      s += "ORG:Example GmbH;Sales\r\nTITLE:Manager\r\n";
      s += "NOTE;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:Trifft sich gern im Caf=C3=A9.=0D=0A=\r\n"
           "Zweite Zeile mit =C3=BC und =E2=82=AC.\r\n";
      if (i % 10 == 0) s += "PHOTO;ENCODING=BASE64;TYPE=JPEG:" + base64(4000, i) + "\r\n";
      s += "END:VCARD\r\n";
    }
    return s;
  }();
  return text;
}

void BM_VcardDecode(benchmark::State &state) {
  const std::string &text = cards();
  PbItem item;
  PbItem_new(&item);
  for (auto _ : state) {
    tarnex::ScratchStrStrm in(text);
    int n = 0;
    while (Vcard_dec(in, &item, nullptr) == 1) ++n;
    if (n != kCards) state.SkipWithError("lost cards");
  }
  PbItem_delete(&item);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
  state.SetItemsProcessed(state.iterations() * kCards);
}
BENCHMARK(BM_VcardDecode)->Unit(benchmark::kMillisecond);

void BM_VcardEncode(benchmark::State &state) {
  const std::string &text = cards();
  tarnex::ScratchStrStrm in(text);
  std::vector<PbItem> items(kCards);
  for (PbItem &item : items) {
    PbItem_new(&item);
    Vcard_dec(in, &item, nullptr);
  }
  tarnex::ScratchMemStrm out(static_cast<int32_t>(text.size() + text.size() / 4));
  int64_t bytes = 0;
  for (auto _ : state) {
    IStrm_clear(out);
    for (PbItem &item : items) Vcard_enc(out, &item, 0);
    bytes += IStrm_size(out);
  }
  for (PbItem &item : items) PbItem_delete(&item);
  state.SetBytesProcessed(bytes);
  state.SetItemsProcessed(state.iterations() * kCards);
}
BENCHMARK(BM_VcardEncode)->Unit(benchmark::kMillisecond);

// Counting line ends with memchr: the floor for a reader of the same bytes.
void BM_MemchrSameBuffer(benchmark::State &state) { bench::memchrFloor(state, cards(), '\n', 0); }
BENCHMARK(BM_MemchrSameBuffer)->Unit(benchmark::kMillisecond);

}  // namespace
