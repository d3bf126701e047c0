// Decoding and encoding a 50 KB multimedia message (a JPEG, a text and the
// SMIL of two slides), beside memchr over the same bytes. Heap calls a
// message are counted with Tarnex_allocCount; they must not grow with the
// size of the media, which the 500 KB variant shows.
#include <benchmark/benchmark.h>

#include <string>

#include "bench_floor.h"
#include "ostrel/ostrel.h"

namespace {

void addMedia(MmsItem *item, const char *name, const std::string &bytes) {
  MmsMedia m{};
  KvoStr_new(&m.name);
  KvoStr_new(&m.type);
  KvoStr_setStr(&m.name, name);
  m.strm = MemStrm_xcreatex__(nullptr, 0, __FILE__, __LINE__);
  IStrm_write(m.strm, bytes.data(), static_cast<int32_t>(bytes.size()));
  MmsItem_addMedia(item, &m);
  IStrm_delete(m.strm);
  KvoStr_delete(&m.name);
  KvoStr_delete(&m.type);
}

struct Message {
  MmsItem *item = MmsItem_new(nullptr);
  std::string bytes;
  explicit Message(size_t jpegSize) {
    MmsHdr_addTo(&item->hdr, "+491701234567");
    MmsHdr_addCc(&item->hdr, "friend@example.com");
    KvoStr_setStr(&item->hdr.title, "Holiday pictures");
    std::string jpeg = "\xFF\xD8\xFF\xE0";
    for (size_t i = jpeg.size(); i < jpegSize; ++i) jpeg += static_cast<char>((i * 131) ^ (i >> 7));
    addMedia(item, "beach.jpg", jpeg);
    addMedia(item, "note.txt", std::string(600, 'w'));
    for (int32_t layout : {4, 1}) {
      MmsSlide s{};
      for (KvoStr *k : {&s.text, &s.img1, &s.img2, &s.audio, &s.video}) KvoStr_new(k);
      s.layout = layout;
      s.dur = 5000;
      KvoStr_setStr(&s.text, "note.txt");
      if (layout == 4) KvoStr_setStr(&s.img1, "beach.jpg");
      MmsItem_addSlide(item, &s);
      for (KvoStr *k : {&s.text, &s.img1, &s.img2, &s.audio, &s.video}) KvoStr_delete(k);
    }
    IStrm *out = MemStrm_xcreatex__(nullptr, 0, __FILE__, __LINE__);
    mms_enc(out, item);
    bytes.assign(reinterpret_cast<const char *>(MemStrm_data(out)),
                 static_cast<size_t>(IStrm_size(out)));
    IStrm_delete(out);
  }
  ~Message() { MmsItem_delete(item); }
};

const Message &message(size_t kb) {
  static const Message m50(50 * 1024 - 1200), m500(500 * 1024 - 1200);
  return kb == 50 ? m50 : m500;
}

void perMessage(benchmark::State &state, size_t bytes, uint64_t heap) {
  state.SetItemsProcessed(state.iterations());
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
  state.counters["heap/msg"] = static_cast<double>(heap) / static_cast<double>(state.iterations());
}

void BM_MmsDecode(benchmark::State &state) {
  const std::string &bytes = message(static_cast<size_t>(state.range(0))).bytes;
  StrStrm storage;
  IStrm *in = StrStrm_xcreate__(&storage, bytes.data(), static_cast<int32_t>(bytes.size()),
                                __FILE__, __LINE__);
  uint64_t heap = 0;
  for (auto _ : state) {
    MmsItem item;
    MmsItem_new(&item);
    const uint64_t before = Tarnex_allocCount();
    if (mms_dec(in, &item) != 0) state.SkipWithError("decode failed");
    heap += Tarnex_allocCount() - before;
    benchmark::DoNotOptimize(item.medias.count);
    MmsItem_delete(&item);
  }
  IStrm_delete(in);
  perMessage(state, bytes.size(), heap);
}

void BM_MmsEncode(benchmark::State &state) {
  const Message &m = message(static_cast<size_t>(state.range(0)));
  IStrm *out = MemStrm_xcreatex__(nullptr, 0, __FILE__, __LINE__);
  mms_enc(out, m.item);  // grown once, as a reused output buffer is
  uint64_t heap = 0;
  for (auto _ : state) {
    IStrm_clear(out);
    const uint64_t before = Tarnex_allocCount();
    mms_enc(out, m.item);
    heap += Tarnex_allocCount() - before;
  }
  IStrm_delete(out);
  perMessage(state, m.bytes.size(), heap);
}

void BM_MmsMemchrFloor(benchmark::State &state) {
  bench::memchrFloor(state, message(static_cast<size_t>(state.range(0))).bytes, '\x8E', 1);
}

BENCHMARK(BM_MmsMemchrFloor)->Arg(50)->Arg(500);
BENCHMARK(BM_MmsDecode)->Arg(50)->Arg(500);
BENCHMARK(BM_MmsEncode)->Arg(50)->Arg(500);

}  // namespace
