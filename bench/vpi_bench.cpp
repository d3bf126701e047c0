// Property lines decoded and encoded, beside memchr over the same bytes, and
// heap allocations counted per property.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>

#include "ostrel/ostrel.h"
#include "tarnex/scratch.hpp"

namespace {

// A realistic mix: plain, parameterised, quoted-printable UTF-8, folded.
std::string makeStream(int cards) {
  std::string s;
  for (int i = 0; i < cards; ++i) {
    s += "BEGIN:VCARD\r\nVERSION:2.1\r\n";
    s += "N:Lastname" + std::to_string(i) + ";Firstname;;;\r\n";
    s += "FN:Firstname Lastname\r\n";
    s += "TEL;CELL;PREF:+49170" + std::to_string(1000000 + i) + "\r\n";
    s += "TEL;WORK;VOICE:+4930123456\r\n";
    s += "EMAIL;INTERNET:first.last@example.com\r\n";
    s += "ADR;HOME:;;Main Street 1;Berlin;;10115;Germany\r\n";
    s += "NOTE;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:Gr=C3=BC=C3=9Fe aus M=C3=BCn=\r\nchen\r\n";
    s += "END:VCARD\r\n";
  }
  return s;
}

void BM_Memchr(benchmark::State &state) {
  const std::string text = makeStream(1000);
  for (auto _ : state) {
    const char *p = text.data(), *end = p + text.size();
    size_t lines = 0;
    while ((p = static_cast<const char *>(std::memchr(p, '\n', end - p))) != nullptr) {
      ++p;
      ++lines;
    }
    benchmark::DoNotOptimize(lines);
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
}
BENCHMARK(BM_Memchr);

void BM_Decode(benchmark::State &state) {
  const std::string text = makeStream(1000);
  tarnex::ScratchStr<32> name;
  tarnex::ScratchStr<128> params;
  tarnex::ScratchStr<256> value;
  tarnex::ScratchMemStrm val(512);
  int64_t props = 0;
  const uint64_t allocsBefore = Tarnex_allocCount();
  for (auto _ : state) {
    tarnex::ScratchStrStrm in(text);
    while (VpiDec_getStrm(in, name, params, val) == 1) {
      VpiVal_getCstr(val, value, 1, nullptr);
      ++props;
    }
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
  state.SetItemsProcessed(props);
  state.counters["allocs/prop"] =
      double(Tarnex_allocCount() - allocsBefore) / double(props ? props : 1);
}
BENCHMARK(BM_Decode);

void BM_Encode(benchmark::State &state) {
  tarnex::ScratchMemStrm out(1 << 20);
  tarnex::ScratchStr<64> params;
  KvoStr_setStr(params, ";CELL;PREF");
  int64_t props = 0;
  const uint64_t allocsBefore = Tarnex_allocCount();
  for (auto _ : state) {
    IStrm_clear(out);
    for (int i = 0; i < 1000; ++i) {
      VpiEnc_putStr(out, "BEGIN", nullptr, "VCARD", -1, nullptr);
      VpiEnc_putStr(out, "N", nullptr, "Lastname;Firstname", -1, nullptr);
      VpiEnc_putStr(out, "TEL", params, "+491701234567", -1, nullptr);
      VpiEnc_putStr(out, "NOTE", nullptr, "Gr\xC3\xBC\xC3\x9F" "e aus M\xC3\xBCnchen\r\n!", -1, nullptr);
      VpiEnc_putStr(out, "END", nullptr, "VCARD", -1, nullptr);
      props += 5;
    }
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * IStrm_size(out));
  state.SetItemsProcessed(props);
  state.counters["allocs/prop"] =
      double(Tarnex_allocCount() - allocsBefore) / double(props ? props : 1);
}
BENCHMARK(BM_Encode);

}  // namespace
