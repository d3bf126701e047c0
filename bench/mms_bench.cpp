// Reading MMS headers: a notification as a phone gets it by push, and the
// header of a 50 KB retrieved message whose body the header reader must
// never touch. Each beside memchr over the same buffer; heap calls a header
// are counted with Tarnex_allocCount, into one header record reused the way
// a phone manager walks its inbox.
#include <benchmark/benchmark.h>

#include <string>

#include "bench_floor.h"
#include "ostrel/ostrel.h"
#include "tarnex/scratch.hpp"

namespace {

using namespace std::string_literals;

const std::string &notification() {
  static const std::string bytes =
      "\x8C\x82\x98" "c0ffee42-1a2b-4c3d-9e8f-0123456789ab\0\x8D\x92"
      "\x89\x1A\x80" "+4917012345678/TYPE=PLMN\0"
      "\x96\x11\xEA\x7F" "Urlaub \xC3\xBC" "ber 5\0"
      "\x8A\x80\x8E\x03\x01\xC3\x50\x88\x05\x81\x03\x09\x3A\x80"
      "\x83" "http://mmsc.example.net:10021/mms/wapenc?location=4917012345678_abcd&rid=42\0"s;
  return bytes;
}

const std::string &message() {
  static const std::string bytes = [] {
    std::string m =
        "\x8C\x84\x98" "T-1234567890\0\x8D\x92\x8B" "<0123456789@mmsc.example.net>\0"
        "\x85\x04\x66\x1E\x5A\x00"
        "\x89\x1A\x80" "+4917012345678/TYPE=PLMN\0"
        "\x97" "+4915112345678/TYPE=PLMN\0\x97" "+4916012345678/TYPE=PLMN\0"
        "\x82" "friend@example.org\0"
        "\x96\x12\xEA\x7F" "Gr\xC3\xBC\xC3\x9F" "e vom See\0"
        "\x8A\x80\x8F\x81\x86\x81\x90\x81"
        "\x84\x1B\xB3\x89" "application/smil\0\x8A" "<0000>\0"s;
    m += '\x02';  // the part count; what follows stands for the body
    while (m.size() < 50 * 1024) m += static_cast<char>(0x20 + m.size() % 90);
    return m;
  }();
  return bytes;
}

void decodeHeaders(benchmark::State &state, const std::string &bytes) {
  MmsHdr hdr;
  MmsHdr_new(&hdr);
  const uint64_t before = Tarnex_allocCount();
  for (auto _ : state) {
    KvoStr_clear(&hdr.tos);
    KvoStr_clear(&hdr.ccs);
    tarnex::ScratchStrStrm in(bytes);
    if (mms_dec_hdr(in, &hdr) != 0) state.SkipWithError("refused");
    benchmark::DoNotOptimize(hdr.msgType);
  }
  const uint64_t heap = Tarnex_allocCount() - before;
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
  state.counters["heap/header"] = static_cast<double>(heap) / static_cast<double>(state.iterations());
  MmsHdr_delete(&hdr);
}

void BM_MmsHdrNotification(benchmark::State &state) { decodeHeaders(state, notification()); }
BENCHMARK(BM_MmsHdrNotification);

void BM_MemchrNotification(benchmark::State &state) {
  bench::memchrFloor(state, notification(), '\0', 1);
}
BENCHMARK(BM_MemchrNotification);

void BM_MmsHdr50KMessage(benchmark::State &state) { decodeHeaders(state, message()); }
BENCHMARK(BM_MmsHdr50KMessage);

void BM_Memchr50KMessage(benchmark::State &state) { bench::memchrFloor(state, message(), '\0', 1); }
BENCHMARK(BM_Memchr50KMessage);

}  // namespace
