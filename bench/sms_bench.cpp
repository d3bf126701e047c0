// Decoding 100,000 SMS-DELIVER PDUs with a service centre, as octets and as
// hex lines, and encoding them as SMS-SUBMIT, beside memchr over the same
// bytes. The mix: 65% 7-bit text with extension characters, 32% UCS-2
// with surrogate pairs, 3% 8-bit; a third are concatenation parts; senders
// alphanumeric or international; zones east and west. Heap calls a PDU are
// counted with Tarnex_allocCount.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

#include "ostrel/ostrel.h"

namespace {

constexpr int kPdus = 100000;

struct Corpus {
  std::string octets;              // the PDUs back to back
  std::vector<int32_t> offsets;    // kPdus + 1
  std::string hex;                 // one PDU a line
  std::vector<SmsItem> records;    // decoded, for the encoder
};

void fill(SmsItem *s, int i) {
  s->type = SMS_DELIVER;
  KvoStr_setStr(&s->tel, i % 4 == 0 ? "Shop24" : ("+4917" + std::to_string(1000000 + i)).c_str());
  const int kind = i % 100;
  if (kind < 65) {
    std::u16string t = u"Meet at {the} cafe [" + std::u16string(1, u'0' + i % 10) +
                       u"] for 10\u20AC ~ see you ^^ " + std::u16string(40 + i % 60, u'x');
    KvoWcs_setWcsx(&s->data, reinterpret_cast<const KvoWchar *>(t.data()), static_cast<int32_t>(t.size()));
  } else if (kind < 97) {
    std::u16string t = u"\u4F60\u597D \xD83D\xDE00 \u00E9t\u00E9 " + std::u16string(20 + i % 30, u'\u4E16');
    KvoWcs_setWcsx(&s->data, reinterpret_cast<const KvoWchar *>(t.data()), static_cast<int32_t>(t.size()));
  } else {
    uint8_t bin[60];
    for (int k = 0; k < 60; ++k) bin[k] = static_cast<uint8_t>(1 + (i + k) % 250);
    SmsItem_setBin(s, bin, 60);
  }
  if (i % 3 == 0) {
    const uint8_t udh[] = {5, 0, 3, static_cast<uint8_t>(i), 3, static_cast<uint8_t>(1 + i % 3)};
    std::memcpy(s->udhBuf, udh, 6);
    s->udhLen = 6;
  }
  s->xptTime = KvoDt{2026, 1 + i % 12, 1 + i % 28, i % 24, i % 60, (i * 7) % 60, 0,
                     (i % 2 ? 1 : -1) * 15 * (i % 40)};
}

const Corpus &corpus() {
  static const Corpus built = [] {
    Corpus c;
    c.records.resize(kPdus);
    c.offsets.push_back(0);
    for (int i = 0; i < kPdus; ++i) {
      SmsItem *s = &c.records[i];
      SmsItem_new(s);
      fill(s, i);
      uint8_t pdu[256];
      const int32_t n = Psms_encPdux(pdu, sizeof pdu, s, "+491710760000", -1);
      if (n < 0) std::abort();
      const int32_t all = n + 8;  // the 8 octets of the service centre field
      c.octets.append(reinterpret_cast<char *>(pdu), static_cast<size_t>(all));
      c.offsets.push_back(static_cast<int32_t>(c.octets.size()));
      char ira[520];
      ira_enc_buf_from_buf(ira, sizeof ira, pdu, all);
      c.hex += ira;
      c.hex += '\n';
      s->type = SMS_SUBMIT;
    }
    return c;
  }();
  return built;
}

void perPdu(benchmark::State &state, uint64_t heap) {
  state.SetItemsProcessed(state.iterations() * kPdus);
  state.counters["heap/PDU"] = static_cast<double>(heap) / (static_cast<double>(state.iterations()) * kPdus);
}

void BM_SmsDecodePdu(benchmark::State &state) {
  const Corpus &c = corpus();
  SmsItem item;
  SmsItem_new(&item);
  const uint64_t before = Tarnex_allocCount();
  for (auto _ : state) {
    const auto *base = reinterpret_cast<const uint8_t *>(c.octets.data());
    for (int i = 0; i < kPdus; ++i) {
      item.flags = 0;
      if (Psms_decPdu(base + c.offsets[i], c.offsets[i + 1] - c.offsets[i], &item) != 0)
        state.SkipWithError("refused");
    }
  }
  perPdu(state, Tarnex_allocCount() - before);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * c.octets.size()));
  SmsItem_delete(&item);
}
BENCHMARK(BM_SmsDecodePdu)->Unit(benchmark::kMillisecond);

void BM_SmsDecodeIra(benchmark::State &state) {
  const Corpus &c = corpus();
  SmsItem item;
  SmsItem_new(&item);
  const uint64_t before = Tarnex_allocCount();
  for (auto _ : state) {
    const char *p = c.hex.data(), *end = p + c.hex.size();
    while (p < end) {
      const char *nl = static_cast<const char *>(std::memchr(p, '\n', static_cast<size_t>(end - p)));
      item.flags = 0;
      if (Psms_decIra(p, static_cast<int32_t>(nl - p), &item) != 0) state.SkipWithError("refused");
      p = nl + 1;
    }
  }
  perPdu(state, Tarnex_allocCount() - before);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * c.hex.size()));
  SmsItem_delete(&item);
}
BENCHMARK(BM_SmsDecodeIra)->Unit(benchmark::kMillisecond);

void BM_SmsEncodeSubmit(benchmark::State &state) {
  const Corpus &c = corpus();
  uint8_t pdu[256];
  int64_t bytes = 0;
  const uint64_t before = Tarnex_allocCount();
  for (auto _ : state) {
    for (const SmsItem &s : c.records) {
      const int32_t n = Psms_encPdux(pdu, sizeof pdu, &s, "+491710760000", -1);
      if (n < 0) state.SkipWithError("refused");
      bytes += n + 8;
    }
  }
  perPdu(state, Tarnex_allocCount() - before);
  state.SetBytesProcessed(bytes);
}
BENCHMARK(BM_SmsEncodeSubmit)->Unit(benchmark::kMillisecond);

// Line ends of the hex text with memchr: the floor for any reader of it.
void BM_MemchrSameBuffer(benchmark::State &state) {
  const Corpus &c = corpus();
  for (auto _ : state) {
    size_t lines = 0;
    const char *p = c.hex.data(), *end = p + c.hex.size();
    while ((p = static_cast<const char *>(std::memchr(p, '\n', static_cast<size_t>(end - p))))) {
      ++lines;
      ++p;
    }
    benchmark::DoNotOptimize(lines);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * c.hex.size()));
}
BENCHMARK(BM_MemchrSameBuffer)->Unit(benchmark::kMillisecond);

}  // namespace
