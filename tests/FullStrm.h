// A memory stream that refuses writes past a limit: what an encoder does
// when its output fails in the middle of a record.
#ifndef OSTREL_TESTS_FULLSTRM_H
#define OSTREL_TESTS_FULLSTRM_H

#include "tarnex/scratch.hpp"
#include "tarnex/tarnex.h"

// A memory stream that refuses every write ending behind `limit` bytes.
struct FullStrm {
  explicit FullStrm(int64_t most) : limit(most) {
    ops = *mem.get()->ops;
    ops.putc = [](IStrm *s, int32_t c) {
      FullStrm *f = owner(s);
      return IStrm_size(f->mem) >= f->limit ? -1 : IStrm_putc(f->mem, c);
    };
    ops.write = [](IStrm *s, const void *buf, int32_t n) {
      FullStrm *f = owner(s);
      return IStrm_size(f->mem) + n > f->limit ? -1 : IStrm_write(f->mem, buf, n);
    };
    // The rest read and move as the memory stream does.
    ops.del = [](IStrm *) {};
    ops.getc = [](IStrm *s) { return IStrm_getc(owner(s)->mem); };
    ops.ungetc = [](IStrm *s, int32_t c) { return IStrm_ungetc(owner(s)->mem, c); };
    ops.read = [](IStrm *s, void *buf, int32_t n) { return IStrm_read(owner(s)->mem, buf, n); };
    ops.seek = [](IStrm *s, uint32_t low, int32_t high, int32_t whence) {
      IStrm *m = owner(s)->mem;
      return m->ops->seek(m, low, high, whence);
    };
    ops.tell = [](IStrm *s) { return IStrm_tell(owner(s)->mem); };
    ops.size = [](IStrm *s) { return IStrm_size(owner(s)->mem); };
    ops.clear = [](IStrm *s) { return IStrm_clear(owner(s)->mem); };
    ops.peek = [](IStrm *s, const uint8_t **p) { return IStrm_peek(owner(s)->mem, p); };
    base.ops = &ops;
  }
  static FullStrm *owner(IStrm *s) { return reinterpret_cast<FullStrm *>(s); }
  IStrm base;  // first, so the object is a stream
  IStrmOps ops;
  tarnex::ScratchMemStrm mem{0};
  int64_t limit;
};

#endif  // OSTREL_TESTS_FULLSTRM_H
