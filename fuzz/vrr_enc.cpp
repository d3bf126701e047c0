// Rule encoder over any model, as a caller might build one by hand: the
// item lives in heap storage of exactly its size, so a read of a variant
// its place cannot hold, or past a set, is caught. Kinds it must refuse
// are reported through the assert handler, never read.
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "fuzz_check.h"
#include "ostrel/ostrel.h"
#include "tarnex/scratch.hpp"

namespace {

int asserts = 0;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static const bool handlerSet = [] {
    Tarnex_setAssertHandler([](void *, const char *, const char *, int32_t) { ++asserts; },
                            nullptr, nullptr);
    return true;
  }();
  (void)handlerSet;
  auto item = std::make_unique<RrItem>();
  std::memcpy(item.get(), data, size < sizeof(RrItem) ? size : sizeof(RrItem));
  tarnex::ScratchStr<64> out;
  KvoStr_setStr(out, "x");
  const int32_t n = Vrr_enc(out, item.get());
  FUZZ_CHECK(n >= 0 && n == out.len() - 1);
  // What it wrote is the language: it reads, unless nothing but a date was.
  if (n > 0 && out.c_str()[1] != ' ') {
    RrItem back;
    FUZZ_CHECK(Vrr_dec(out.c_str() + 1, &back) == 1);
  }
  return 0;
}
