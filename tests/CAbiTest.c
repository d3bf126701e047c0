/* Compiled as C: proves the public headers are C and the library links from C. */
#include <stdio.h>
#include <string.h>

#include "ostrel/ostrel.h"

#define CHECK(cond)                                                  \
  do {                                                               \
    if (!(cond)) {                                                   \
      fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #cond); \
      return 1;                                                      \
    }                                                                \
  } while (0)

int main(void) {
  CHECK(Ostrel_init() == 0);
  {
    char buf[8];
    KvoStr s;
    StrExt_new__(&s, buf, (int32_t)sizeof buf);
    KvoStr_setStr(&s, "a longer text than eight");
    CHECK(KvoStr_len(&s) == 24);
    CHECK(strcmp(KvoStr_buf(&s), "a longer text than eight") == 0);
    KvoStr_delete(&s);
  }
  {
    MemStrm storage;
    IStrm *m = MemStrm_xcreatex__(&storage, 0, __FILE__, __LINE__);
    CHECK(IStrm_printf(m, "%d", 42) == 2);
    CHECK(IStrm_size(m) == 2);
    IStrm_delete(m);
  }
  {
    /* The rule model's unions have the same layout in C. */
    RrItem item;
    CHECK(sizeof(RrItem) == 200 && sizeof(RrYearSub) == 100);
    CHECK(Vrr_dec("YM1 6 #5 MP1 1+ SU #2", &item) == 1);
    CHECK(item.arule.yearMonth.sub.monthPos.pos[0].bits == ((1u << 17) | 1u));
  }
  {
    /* The creators a C program uses without its own file and line. */
    IStrm *text = StrStrm_new(NULL, "BEGIN", 3);
    CHECK(IStrm_size(text) == 3 && IStrm_getc(text) == 'B' && IStrm_putc(text, 'x') < 0);
    IStrm_delete(text);
    IStrm *mem = MemStrm_new(NULL);
    for (int i = 0; i < 100; ++i) IStrm_printf(mem, "%02d", i);
    CHECK(IStrm_size(mem) == 200 && memcmp(MemStrm_data(mem) + 196, "9899", 5) == 0);
    IStrm_delete(mem);
    CHECK(FileStrm_new(NULL, "/nonexistent/dir/file", "rb") == NULL);
  }
  Ostrel_exit();
  return 0;
}
