// Start and stop of the library: one atomic count, and the foundation is
// started by the first start and stopped by the last stop.
#include "ostrel/Ostrel.h"

namespace {
volatile int32_t gStartCount = 0;
}  // namespace

extern "C" {

OSTREL_API int32_t Ostrel_init(void) {
  if (AlAtom_inc(&gStartCount) < 2) Tarnex_init();
  return 0;
}

OSTREL_API void Ostrel_exit(void) {
  const int32_t ret = AlAtom_dec(&gStartCount);
  if (ret < 0) kvo_assert__("ret >= 0", "Src/Ostrel", __LINE__);
  if (ret < 1) Tarnex_exit();
}

}  // extern "C"
