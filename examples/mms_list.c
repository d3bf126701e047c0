/* mms_list FILE: reads a multimedia message (as a phone stores or sends
 * it) and lists its header, its slides and its media. */
#include <stdio.h>

#include <ostrel/ostrel.h>

int main(int argc, char **argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: mms_list FILE\n");
    return 2;
  }
  Ostrel_init();
  IStrm *in = FileStrm_new(NULL, argv[1], "rb");
  if (in == NULL) {
    fprintf(stderr, "mms_list: cannot open %s\n", argv[1]);
    Ostrel_exit();
    return 1;
  }
  MmsItem msg;
  MmsItem_new(&msg);
  /* 0: a whole message; -1: the header alone (a notification, a report). */
  const int32_t result = mms_dec(in, &msg);
  printf("subject: %s\n", KvoStr_buf(&msg.hdr.title));
  KvoStr addr;
  KvoStr_new(&addr);
  MmsAddrEnum *to = MmsHdr_tos(&msg.hdr);
  while (MmsAddrEnum_next(to, &addr) == 1) printf("to: %s\n", KvoStr_buf(&addr));
  MmsAddrEnum_delete(to);
  KvoStr_delete(&addr);
  if (result == 0) {
    MmsSlideEnum *slides = MmsItem_slides(&msg);
    const MmsSlide *slide;
    for (int n = 1; (slide = MmsSlideEnum_next(slides)) != NULL; ++n)
      printf("slide %d: layout %d, %d ms, text \"%s\", image \"%s\"\n", n, (int)slide->layout,
             (int)slide->dur, KvoStr_buf(&slide->text), KvoStr_buf(&slide->img1));
    MmsSlideEnum_delete(slides);
    MmsMediaEnum *media = MmsItem_medias(&msg);
    const MmsMedia *m;
    while ((m = MmsMediaEnum_next(media)) != NULL)
      printf("medium: %s (%s), %lld bytes\n", KvoStr_buf(&m->name), KvoStr_buf(&m->type),
             (long long)IStrm_size(m->strm));
    MmsMediaEnum_delete(media);
  }
  MmsItem_delete(&msg);
  IStrm_delete(in);
  Ostrel_exit();
  return result == 0 || result == -1 ? 0 : 1;
}
