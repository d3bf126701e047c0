/* contacts_read FILE: prints every contact of a vCard file (2.1 or 3.0) with
 * its name, its phone numbers and its e-mail addresses, each with its type. */
#include <stdio.h>
#include <string.h>

#include <ostrel/ostrel.h>

/* Prints 16-bit text as UTF-8. */
static void put_text(const KvoWcs *text) {
  KvoStr utf8;
  KvoStr_new(&utf8);
  KvoStr_setCwcs(&utf8, text);
  fputs(KvoStr_buf(&utf8), stdout);
  KvoStr_delete(&utf8);
}

/* A field's type text is kind, position, device: "TWC" is a work cell
 * phone, "EH" a home e-mail address. */
static const char *type_word(char c, int is_device) {
  switch (c) {
    case 'H': return "home";
    case 'W': return "work";
    case 'C': return "cell";
    case 'F': return is_device ? "fax" : NULL;
    case 'E': return is_device ? "video" : NULL;
    case 'P': return is_device ? "pager" : NULL;
    case 'M': return is_device ? "message" : NULL;
    case 'R': return is_device ? "car" : NULL;
    case 'N': return is_device ? "ISDN" : NULL;
    case 'D': return is_device ? "modem" : NULL;
    default: return NULL; /* neither home nor work, a voice line */
  }
}

static void put_fields(PbEnum *fields, const char *label) {
  PbField *field;
  while (PbEnum_next(fields, &field, NULL)) {
    const char *words[3];
    int count = 0;
    if (type_word(field->type[1], 0)) words[count++] = type_word(field->type[1], 0);
    if (field->type[1] && type_word(field->type[2], 1)) words[count++] = type_word(field->type[2], 1);
    if (field->flags & PB_FLAG_PREF) words[count++] = "preferred";
    printf("  %s", label);
    for (int i = 0; i < count; ++i) printf(i ? ", %s" : " (%s", words[i]);
    fputs(count ? "): " : ": ", stdout);
    put_text(PbField_at(field, 0));
    putchar('\n');
  }
  PbEnum_delete(fields);
}

int main(int argc, char **argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: contacts_read FILE\n");
    return 2;
  }
  Ostrel_init();
  IStrm *file = FileStrm_new(NULL, argv[1], "rb");
  if (!file) {
    fprintf(stderr, "contacts_read: cannot open %s\n", argv[1]);
    Ostrel_exit();
    return 1;
  }
  PbItem *card = PbItem_new(NULL);
  int32_t result;
  /* Each call reads the next card; 1 while there was one. */
  while ((result = Vcard_dec(file, card, NULL)) == 1) {
    PbField *name = PbItem_find(card, "OF", NULL); /* the formatted name */
    if (!name) name = PbItem_name(card);           /* else "family;given" */
    if (!name) continue;                           /* a group card */
    put_text(PbField_at(name, 0));
    if (name->type[0] == 'N' && PbField_at(name, 1)->len) {
      fputs(", ", stdout);
      put_text(PbField_at(name, 1));
    }
    putchar('\n');
    put_fields(PbItem_tels(card), "phone");
    put_fields(PbItem_emails(card), "e-mail");
  }
  PbItem_delete(card);
  IStrm_delete(file);
  Ostrel_exit();
  if (result < 0) {
    fprintf(stderr, "contacts_read: %s: a malformed card (%d)\n", argv[1], (int)result);
    return 1;
  }
  return 0;
}
