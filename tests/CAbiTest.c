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
    /* A 3G message read into the record and written as VSMS. */
    static const char text[] = "BEGIN:X-VMSG\r\nX-TYPE:DELIVER\r\nX-BODY:hi\r\nEND:X-VMSG\r\n";
    SmsItem item;
    MemStrm storage;
    IStrm *m = MemStrm_xcreatex__(&storage, 0, __FILE__, __LINE__);
    SmsItem_new(&item);
    CHECK(Vsms_dec_3g(text, 0, &item) == 1 && item.type == SMS_DELIVER);
    CHECK(Vsms_enc(m, &item, 0) == 0 && IStrm_size(m) > 0);
    SmsItem_delete(&item);
    IStrm_delete(m);
  }
  {
    /* A notification's header read from C: type, subject, one To. */
    static const char pdu[] = "\x8C\x82\x96Hi\0\x97+4917/TYPE=PLMN\0\x02";
    StrStrm storage;
    IStrm *in = StrStrm_xcreate__(&storage, pdu, (int32_t)sizeof pdu - 1, __FILE__, __LINE__);
    MmsItem item;
    MmsItem_new(&item);
    CHECK(mms_dec_hdr(in, &item.hdr) == 0);
    CHECK(item.hdr.msgType == 0x82 && IStrm_tell(in) == (int64_t)sizeof pdu - 2);
    CHECK(strcmp(KvoStr_buf(&item.hdr.tos), "+4917") == 0);
    MmsItem_delete(&item);
    IStrm_delete(in);
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
