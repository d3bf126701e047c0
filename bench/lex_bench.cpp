// The line readers beside a plain memchr-for-'\n' loop over the same
// buffer, so the ratio of the two MB/s figures shows what the lexer costs
// above finding line ends. Buffers are about 1 MB of what phones write:
// plain NOTE lines, quoted-printable values with soft breaks, and 2.1
// Base64 photos (indented, and flush left with the look at each next line).
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "tarnex/lex.h"
#include "tarnex/scratch.hpp"

namespace {

constexpr size_t kTarget = size_t{1} << 20;

std::string plainLines() {
  std::string s;
  for (int i = 0; s.size() < kTarget; ++i)
    s += "NOTE:The quick brown fox jumps over the lazy dog, entry " + std::to_string(i) + "\r\n";
  return s;
}

// Values of three soft-broken lines with escapes, as 2.1 phones write them
// behind "NOTE;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:" (the reader starts
// behind the colon).
std::string qpLines() {
  std::string s;
  while (s.size() < kTarget) {
    s += "Caf=C3=A9 on the corner of the market square, not far from the station=\r\n";
    s += "opens at nine=0D=0A=E8=94=A1=E5=AA=9B and closes at six in the evening=\r\n";
    s += " on weekdays.\r\n";
  }
  return s;
}

std::string photos(const char *indent) {
  static const char kAlpha[] =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string one;
  uint32_t x = 12345;
  for (int line = 0; line < 400; ++line) {
    one += indent;
    for (int k = 0; k < 76; ++k) {
      x = x * 1103515245u + 12345u;
      one += kAlpha[(x >> 16) & 63];
    }
    one += "\r\n";
  }
  one += "\r\n";
  std::string s;
  while (s.size() < kTarget) s += one;
  return s;
}

const std::string &buffer(int kind) {
  static const std::string kBuffers[] = {plainLines(), qpLines(), photos("  "), photos("")};
  return kBuffers[kind];
}

enum Kind { kPlain = 0, kQp = 1, kPhotoIndented = 2, kPhotoFlush = 3 };

void BM_Memchr(benchmark::State &state) {
  const std::string &buf = buffer(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    const char *p = buf.data();
    const char *const end = p + buf.size();
    size_t lines = 0;
    while (const void *q = std::memchr(p, '\n', static_cast<size_t>(end - p))) {
      p = static_cast<const char *>(q) + 1;
      ++lines;
    }
    benchmark::DoNotOptimize(lines);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * buf.size()));
}

template <int32_t (*Read)(IStrm *, IStrm *)>
void BM_Reader(benchmark::State &state) {
  const std::string &buf = buffer(static_cast<int>(state.range(0)));
  tarnex::ScratchMemStrm val(64 * 1024);
  for (auto _ : state) {
    tarnex::ScratchStrStrm in(buf);
    int64_t values = 0;
    for (;;) {
      IStrm_seek(val, 0, KVO_SEEK_SET);
      if (Read(in, val) != 0) break;
      ++values;
    }
    benchmark::DoNotOptimize(values);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * buf.size()));
}

int32_t plain(IStrm *in, IStrm *val) { return KvoLex_getLine(in, val, 1, 0); }
int32_t qp(IStrm *in, IStrm *val) { return KvoLex_getLineQp(in, val, 1); }
int32_t base64(IStrm *in, IStrm *val) { return KvoLex_getLineBase(in, val, 1); }

BENCHMARK(BM_Memchr)->Arg(kPlain)->Arg(kQp)->Arg(kPhotoIndented)->Arg(kPhotoFlush);
BENCHMARK(BM_Reader<plain>)->Arg(kPlain);
BENCHMARK(BM_Reader<qp>)->Arg(kQp);
BENCHMARK(BM_Reader<base64>)->Arg(kPhotoIndented)->Arg(kPhotoFlush);

}  // namespace
