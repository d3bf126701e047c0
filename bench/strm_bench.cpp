// Streams and growing strings: the floor under every codec. A decoder reads
// its input byte by byte or run by run through these operations and builds
// its values with string appends, so no codec can go faster than this.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "tarnex/scratch.hpp"
#include "tarnex/str.h"
#include "tarnex/strm.h"

namespace {

constexpr int32_t kStreamBytes = 1 << 20;
constexpr int32_t kStringBytes = 64 << 10;

// Text shaped like a card: short lines ended by CR LF.
std::string cardText(int32_t n) {
  static const char kLine[] = "TEL;WORK;VOICE:+49 30 1234567\r\n";
  std::string out;
  while (static_cast<int32_t>(out.size()) < n) out += kLine;
  out.resize(static_cast<size_t>(n));
  return out;
}

void fill(IStrm *s, const std::string &text) {
  IStrm_write(s, text.data(), static_cast<int32_t>(text.size()));
  IStrm_rewind(s);
}

void MemGetc(benchmark::State &state) {
  tarnex::ScratchMemStrm s(kStreamBytes);
  fill(s, cardText(kStreamBytes));
  for (auto _ : state) {
    IStrm_rewind(s);
    uint32_t sum = 0;
    for (int32_t c; (c = IStrm_getc(s)) >= 0;) sum += static_cast<uint32_t>(c);
    benchmark::DoNotOptimize(sum);
  }
  state.SetBytesProcessed(state.iterations() * kStreamBytes);
}

void StrGetc(benchmark::State &state) {
  const std::string text = cardText(kStreamBytes);
  tarnex::ScratchStrStrm s(text);
  for (auto _ : state) {
    IStrm_rewind(s);
    uint32_t sum = 0;
    for (int32_t c; (c = IStrm_getc(s)) >= 0;) sum += static_cast<uint32_t>(c);
    benchmark::DoNotOptimize(sum);
  }
  state.SetBytesProcessed(state.iterations() * kStreamBytes);
}

// What a line reader gains by scanning runs with peek instead of getc.
void MemPeekLines(benchmark::State &state) {
  tarnex::ScratchMemStrm s(kStreamBytes);
  fill(s, cardText(kStreamBytes));
  for (auto _ : state) {
    IStrm_rewind(s);
    int32_t lines = 0;
    for (;;) {
      const uint8_t *p = nullptr;
      const int64_t run = IStrm_peek(s, &p);
      if (run <= 0) break;
      const void *lf = std::memchr(p, '\n', static_cast<size_t>(run));
      const int64_t step = lf ? static_cast<const uint8_t *>(lf) - p + 1 : run;
      IStrm_seek(s, step, KVO_SEEK_CUR);
      ++lines;
    }
    benchmark::DoNotOptimize(lines);
  }
  state.SetBytesProcessed(state.iterations() * kStreamBytes);
}

void MemPutc(benchmark::State &state) {
  tarnex::ScratchMemStrm s(0);
  for (auto _ : state) {
    IStrm_clear(s);
    for (int32_t i = 0; i < kStreamBytes; ++i) IStrm_putc(s, 'a' + (i & 15));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * kStreamBytes);
}

void MemRead(benchmark::State &state) {
  const auto chunk = static_cast<int32_t>(state.range(0));
  tarnex::ScratchMemStrm s(kStreamBytes);
  fill(s, cardText(kStreamBytes));
  std::string buf(static_cast<size_t>(chunk), '\0');
  for (auto _ : state) {
    IStrm_rewind(s);
    while (IStrm_read(s, buf.data(), chunk) > 0) benchmark::DoNotOptimize(buf.data());
  }
  state.SetBytesProcessed(state.iterations() * kStreamBytes);
}

void MemWrite(benchmark::State &state) {
  const auto chunk = static_cast<int32_t>(state.range(0));
  const std::string text = cardText(chunk);
  tarnex::ScratchMemStrm s(0);
  for (auto _ : state) {
    IStrm_clear(s);
    for (int32_t done = 0; done < kStreamBytes; done += chunk) IStrm_write(s, text.data(), chunk);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * kStreamBytes);
}

// A fresh scratch string each time: it starts on the stack and grows onto
// the heap, as a long property value does.
void StrAppdChar(benchmark::State &state) {
  for (auto _ : state) {
    tarnex::ScratchStr<256> str;
    for (int32_t i = 0; i < kStringBytes; ++i)
      KvoStr_appdChar(str, static_cast<char>('a' + (i & 15)));
    benchmark::DoNotOptimize(str.c_str());
  }
  state.SetBytesProcessed(state.iterations() * kStringBytes);
}

void StrAppdStrx(benchmark::State &state) {
  const auto piece = static_cast<int32_t>(state.range(0));
  const std::string text = cardText(piece);
  for (auto _ : state) {
    tarnex::ScratchStr<256> str;
    for (int32_t done = 0; done < kStringBytes; done += piece)
      KvoStr_appdStrx(str, text.data(), piece);
    benchmark::DoNotOptimize(str.c_str());
  }
  state.SetBytesProcessed(state.iterations() * kStringBytes);
}

BENCHMARK(MemGetc);
BENCHMARK(StrGetc);
BENCHMARK(MemPeekLines);
BENCHMARK(MemPutc);
BENCHMARK(MemRead)->Arg(16)->Arg(4096);
BENCHMARK(MemWrite)->Arg(16)->Arg(4096);
BENCHMARK(StrAppdChar);
BENCHMARK(StrAppdStrx)->Arg(8)->Arg(64);

}  // namespace
