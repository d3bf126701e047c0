// UTF-8 to 16-bit text and back, in MB/s of UTF-8 input, beside memchr over
// the same buffer (the ceiling of any pass over the bytes).
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>

#include "tarnex/charset.h"
#include "tarnex/scratch.hpp"

namespace {

// About 1 MiB of contact-like text: mostly ASCII, with Latin accents,
// Cyrillic, CJK and an emoji now and then.
const std::string &mixedText() {
  static const std::string text = [] {
    const char *pieces[] = {
        "BEGIN:VCARD N:Smith;John;; TEL;CELL:+44 7700 900123 ",
        "Ren\xC3\xA9 M\xC3\xBCller, Stra\xC3\x9F" "e 5, K\xC3\xB6ln ",
        "\xD0\x98\xD0\xB2\xD0\xB0\xD0\xBD \xD0\x9F\xD0\xB5\xD1\x82\xD1\x80\xD0\xBE\xD0\xB2 ",
        "NOTE:Meeting at 10:00, bring the slides and the budget. ",
        "\xE5\xB1\xB1\xE7\x94\xB0\xE5\xA4\xAA\xE9\x83\x8E \xE6\x9D\xB1\xE4\xBA\xAC ",
        "See you \xF0\x9F\x98\x80 soon! END:VCARD\r\n",
    };
    std::string t;
    while (t.size() < (1u << 20))
      for (const char *p : pieces) t += p;
    return t;
  }();
  return text;
}

void setBytes(benchmark::State &state, size_t n) {
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(n));
}

void BM_Memchr(benchmark::State &state) {
  const std::string &t = mixedText();
  for (auto _ : state) benchmark::DoNotOptimize(std::memchr(t.data(), 0x01, t.size()));
  setBytes(state, t.size());
}
BENCHMARK(BM_Memchr);

void BM_Utf8StrToWcsOut(benchmark::State &state) {
  const std::string &t = mixedText();
  for (auto _ : state) {
    KvoWchar *w = utf8_str_to_wcs_out(t.c_str());
    benchmark::DoNotOptimize(w);
    kvo_free__(w, __FILE__, __LINE__);
  }
  setBytes(state, t.size());
}
BENCHMARK(BM_Utf8StrToWcsOut);

// Converts `in` with fn into a memory stream that keeps its storage.
template <int32_t (*fn)(IStrm *, IStrm *)>
void convertLoop(benchmark::State &state, const std::string &in) {
  tarnex::ScratchStrStrm src(in);
  tarnex::ScratchMemStrm dst(static_cast<int32_t>(in.size() * 2));
  for (auto _ : state) {
    IStrm_rewind(src);
    IStrm_rewind(dst);
    benchmark::DoNotOptimize(fn(src, dst));
  }
  setBytes(state, in.size());
}

std::string converted(int32_t (*fn)(IStrm *, IStrm *), const std::string &in) {
  tarnex::ScratchStrStrm src(in);
  tarnex::ScratchMemStrm dst(0);
  fn(src, dst);
  return {reinterpret_cast<const char *>(MemStrm_data(dst)), static_cast<size_t>(IStrm_size(dst))};
}

void BM_Utf8StrmToUcs2Strm(benchmark::State &state) {
  convertLoop<utf8_strm_to_ucs2_strm>(state, mixedText());
}
BENCHMARK(BM_Utf8StrmToUcs2Strm);

void BM_Ucs2StrmToUtf8Strm(benchmark::State &state) {
  static const std::string ucs2 = converted(utf8_strm_to_ucs2_strm, mixedText());
  convertLoop<ucs2_strm_to_utf8_strm>(state, ucs2);
}
BENCHMARK(BM_Ucs2StrmToUtf8Strm);

void BM_Utf8StrmToUtf7Strm(benchmark::State &state) {
  convertLoop<utf8_strm_to_utf7_strm>(state, mixedText());
}
BENCHMARK(BM_Utf8StrmToUtf7Strm);

void BM_Utf7StrmToUtf8Strm(benchmark::State &state) {
  static const std::string utf7 = converted(utf8_strm_to_utf7_strm, mixedText());
  convertLoop<utf7_strm_to_utf8_strm>(state, utf7);
}
BENCHMARK(BM_Utf7StrmToUtf8Strm);

}  // namespace
