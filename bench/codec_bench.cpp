// Base64 and quoted-printable speed, each beside a plain memchr over the
// same buffer in the same run, so that the figures read as "how many times
// slower than just touching the bytes". Bytes counted are the input of each
// operation: the raw bytes for encoders, the encoded text for decoders.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "tarnex/codec.h"
#include "tarnex/scratch.hpp"

namespace {

constexpr size_t kSize = 64 * 1024;

std::string encodeWith(int32_t (*enc)(IStrm *, IStrm *, int32_t, int32_t),
                       const std::string &bytes) {
  tarnex::ScratchStrStrm in(bytes);
  tarnex::ScratchMemStrm out(0);
  enc(out, in, 76, enc == b64_enc_strm_from_strm ? -1 : 20);
  return {reinterpret_cast<const char *>(MemStrm_data(out)), static_cast<size_t>(IStrm_size(out))};
}

const std::string &binary() {
  static const std::string s = [] {
    std::mt19937 rng(64);
    std::string b(kSize, '\0');
    for (char &c : b) c = static_cast<char>(rng());
    return b;
  }();
  return s;
}

// Note text as phones hold it: mostly ASCII words, some accented letters
// and symbols in UTF-8, and line breaks.
const std::string &noteText() {
  static const std::string s = [] {
    const char *words[] = {"meeting", "with", "the", "team", "at", "caf\xC3\xA9", "about",
                           "budget", "M\xC3\xBCller", "costs", "12", "\xE2\x82\xAC", "and",
                           "plans", "for", "next", "week.", "=", "call", "back"};
    std::mt19937 rng(2045);
    std::string t;
    while (t.size() < kSize) {
      t += words[rng() % std::size(words)];
      t += rng() % 12 == 0 ? "\r\n" : " ";
    }
    t.resize(kSize);
    return t;
  }();
  return s;
}

const std::string &b64Text() {
  static const std::string s = encodeWith(b64_enc_strm_from_strm, binary());
  return s;
}

const std::string &qpText() {
  static const std::string s = encodeWith(qp_enc_strm_from_strm, noteText());
  return s;
}

void runEncode(benchmark::State &state, int32_t (*enc)(IStrm *, IStrm *, int32_t, int32_t),
               const std::string &bytes, int32_t start) {
  tarnex::ScratchMemStrm out(static_cast<int32_t>(bytes.size() * 4));
  for (auto _ : state) {
    tarnex::ScratchStrStrm in(bytes);
    IStrm_clear(out);
    benchmark::DoNotOptimize(enc(out, in, 76, start));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
}

void runDecode(benchmark::State &state, int32_t (*dec)(const char *, uint8_t *, int32_t),
               const std::string &text) {
  std::vector<uint8_t> buf(text.size());
  for (auto _ : state) {
    benchmark::DoNotOptimize(dec(text.c_str(), buf.data(), static_cast<int32_t>(buf.size())));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

// Counts one byte value with memchr: every byte of the buffer is looked at,
// which is the floor for any pass over it. For the random bytes the value
// turns up about every 256 bytes; in the texts it never does.
void runMemchr(benchmark::State &state, const std::string &bytes) {
  const char *const end = bytes.data() + bytes.size();
  for (auto _ : state) {
    size_t count = 0;
    for (const char *p = bytes.data();
         (p = static_cast<const char *>(std::memchr(p, 0, static_cast<size_t>(end - p))));
         ++p)
      ++count;
    benchmark::DoNotOptimize(count);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
}

void BM_B64Encode(benchmark::State &s) { runEncode(s, b64_enc_strm_from_strm, binary(), -1); }
void BM_B64Encode_Memchr(benchmark::State &s) { runMemchr(s, binary()); }
void BM_B64Decode(benchmark::State &s) { runDecode(s, b64_dec_str_to_buf, b64Text()); }
void BM_B64Decode_Memchr(benchmark::State &s) { runMemchr(s, b64Text()); }
void BM_QpEncode(benchmark::State &s) { runEncode(s, qp_enc_strm_from_strm, noteText(), 20); }
void BM_QpEncode_Memchr(benchmark::State &s) { runMemchr(s, noteText()); }
void BM_QpDecode(benchmark::State &s) { runDecode(s, qp_dec_str_to_buf, qpText()); }
void BM_QpDecode_Memchr(benchmark::State &s) { runMemchr(s, qpText()); }

BENCHMARK(BM_B64Encode);
BENCHMARK(BM_B64Encode_Memchr);
BENCHMARK(BM_B64Decode);
BENCHMARK(BM_B64Decode_Memchr);
BENCHMARK(BM_QpEncode);
BENCHMARK(BM_QpEncode_Memchr);
BENCHMARK(BM_QpDecode);
BENCHMARK(BM_QpDecode_Memchr);

}  // namespace
