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
    /* A call listing read from C: one entry, then the end. */
    StrStrm storage;
    IStrm *in = StrStrm_xcreate__(&storage, "<call-listing><Call number='1'/></call-listing>", -1,
                                  __FILE__, __LINE__);
    CallItem item;
    XmlListDec *dec = Xcalls_decBeg(in);
    CallItem_new(&item);
    CHECK(Xcalls_decItem(dec, &item) == 0 && strcmp(item.tel.buf, "1") == 0);
    CHECK(Xcalls_decItem(dec, &item) == OSTREL_EOS);
    CHECK(Xcalls_decEnd(dec) == 0);
    CallItem_delete(&item);
    IStrm_delete(in);
  }
  Ostrel_exit();
  return 0;
}
