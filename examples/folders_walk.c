/* folders_walk FILE: walks an OBEX folder listing (what a phone answers to
 * a folder-browsing request) entry by entry and prints each with its kind,
 * size and permissions. The decoder stops at every entry, so a listing of
 * any size needs one record. */
#include <stdio.h>

#include <ostrel/ostrel.h>

static const char *kindOf(const FldItem *f) {
  if (f->attrs & FLD_ATTR_REMOVABLE) return "device";
  return (f->attrs & FLD_ATTR_FOLDER) ? "folder" : "file";
}

int main(int argc, char **argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: folders_walk FILE\n");
    return 2;
  }
  Ostrel_init();
  IStrm *in = FileStrm_new(NULL, argv[1], "rb");
  if (in == NULL) {
    fprintf(stderr, "folders_walk: cannot open %s\n", argv[1]);
    Ostrel_exit();
    return 1;
  }
  FldItem entry;
  FldItem_new(&entry);
  KvoStr name;
  KvoStr_new(&name);
  XmlListDec *dec = Xflds_decBeg(in);
  int32_t result;
  /* 0 (or 1) is an entry read; -202 the end; anything else a fault. */
  while ((result = Xflds_decItem(dec, &entry)) == 0 || result == 1) {
    KvoStr_setCwcs(&name, &entry.name);
    printf("%-6s %s", kindOf(&entry), KvoStr_buf(&name));
    if (entry.attrs & FLD_ATTR_FILE) printf(", %lu bytes", (unsigned long)entry.size);
    if (entry.perms != -1)
      printf(", %s%s%s", entry.perms & FLD_PERM_READ ? "r" : "-",
             entry.perms & FLD_PERM_WRITE ? "w" : "-", entry.perms & FLD_PERM_DELETE ? "d" : "-");
    printf("\n");
  }
  Xflds_decEnd(dec);
  KvoStr_delete(&name);
  FldItem_delete(&entry);
  IStrm_delete(in);
  Ostrel_exit();
  if (result != OSTREL_EOS) {
    fprintf(stderr, "folders_walk: the listing breaks off (%d)\n", (int)result);
    return 1;
  }
  return 0;
}
