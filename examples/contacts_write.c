/* contacts_write: builds a contact in memory and writes it as vCard 3.0 on
 * standard output. */
#include <stdio.h>
#include <string.h>

#include <ostrel/ostrel.h>

/* Adds a field of the given type with up to three text components. */
static PbField *add_field(PbItem *card, const char *type, const char *first,
                          const char *second, const char *third) {
  PbField *field = PbItem_insert(card, NULL);
  if (!field) return NULL; /* all 128 slots used */
  strncpy(field->type, type, sizeof field->type - 1);
  const char *values[3] = {first, second, third};
  for (int32_t i = 0; i < 3; ++i)
    if (values[i]) KvoWcs_setStr(PbField_at(field, i), values[i]);
  return field;
}

int main(void) {
  Ostrel_init();
  PbItem card;
  PbItem_new(&card); /* in our own storage: PbItem_delete frees only its fields */

  add_field(&card, "N", "Doe", "Jane", NULL); /* family; given */
  add_field(&card, "OF", "Jane Doe", NULL, NULL);
  PbField *cell = add_field(&card, "TPC", "+15550100", NULL, NULL);
  if (cell) cell->flags |= PB_FLAG_PREF; /* the number to try first */
  add_field(&card, "TWV", "+15550199", NULL, NULL);
  add_field(&card, "EW", "jane.doe@example.com", NULL, NULL);
  /* Address components: box, extended, street, city, region, code, country. */
  PbField *home = add_field(&card, "AH", "", "", "12 Main Street");
  if (home) {
    KvoWcs_setStr(PbField_at(home, 3), "Springfield");
    KvoWcs_setStr(PbField_at(home, 6), "USA");
  }
  add_field(&card, "M", "Met at the fair; prefers e-mail.", NULL, NULL);

  IStrm *out = MemStrm_new(NULL);
  int32_t result = Vcard_enc(out, &card, OSTREL_VER_3_0);
  if (result == 0) fwrite(MemStrm_data(out), 1, (size_t)IStrm_size(out), stdout);
  IStrm_delete(out);
  PbItem_delete(&card);
  Ostrel_exit();
  if (result != 0) {
    fprintf(stderr, "contacts_write: the card could not be written (%d)\n", (int)result);
    return 1;
  }
  return 0;
}
