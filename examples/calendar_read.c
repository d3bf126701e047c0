/* calendar_read FILE: prints every event and to-do of a vCalendar file with
 * its times, its alarms and its recurrence rule, parsed. */
#include <stdio.h>

#include <ostrel/ostrel.h>

static void put_text(const char *label, const KvoWcs *text) {
  KvoStr utf8;
  KvoStr_new(&utf8);
  printf("%s%s", label, KvoStr_buf(KvoStr_setCwcs(&utf8, text)));
  KvoStr_delete(&utf8);
}

/* A date in ISO 8601 basic form ("20261124T090000Z"); nothing when unset. */
static void put_date(const char *label, const KvoDt *date) {
  KvoStr iso;
  KvoStr_new(&iso);
  if (date->year != KVO_DT_UNSET) printf("  %s: %s\n", label, KvoStr_buf(iso_dt_enc(&iso, date)));
  KvoStr_delete(&iso);
}

/* An alarm is there when its run time is set. */
static void put_alarm(const char *kind, const KvoDt *at, const KvoDur *snooze, int32_t repeat,
                      const char *what, const KvoWcs *text) {
  if (at->year == KVO_DT_UNSET) return;
  KvoStr iso;
  KvoStr_new(&iso);
  printf("  %s alarm at %s", kind, KvoStr_buf(iso_dt_enc(&iso, at)));
  if (repeat > 0) printf(", %d more every %s", (int)repeat, KvoStr_buf(iso_dur_enc(&iso, snooze)));
  KvoStr_delete(&iso);
  put_text(what, text);
  putchar('\n');
}

static void put_rule(const char *rule) {
  static const char *const kinds[] = {"minutely", "daily", "weekly", "monthly by position",
                                      "monthly by day", "yearly by month", "yearly by day"};
  RrItem parsed;
  if (Vrr_dec(rule, &parsed) != 1) {
    printf("  rule: %s (not understood)\n", rule);
    return;
  }
  int kind = 0;
  while (kind < 7 && parsed.type != (1 << kind)) ++kind;
  printf("  rule: %s, every %d", kind < 7 ? kinds[kind] : "?", (int)parsed.arule.head.interval);
  if (parsed.type == RR_WEEKLY) {
    static const char *const days[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    for (int day = 0; day < 7; ++day)
      if (parsed.arule.weekly.days & (1u << day)) printf(" %s", days[day]);
  }
  if (parsed.arule.head.duration > 0) printf(", %d times", (int)parsed.arule.head.duration);
  KvoStr again; /* the model written back as rule text */
  KvoStr_new(&again);
  Vrr_enc(&again, &parsed);
  printf(" (%s)\n", KvoStr_buf(&again));
  KvoStr_delete(&again);
}

int main(int argc, char **argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: calendar_read FILE\n");
    return 2;
  }
  Ostrel_init();
  IStrm *file = FileStrm_new(NULL, argv[1], "rb");
  CalItem *entry = CalItem_new(NULL);
  int32_t result = file ? 0 : OSTREL_NO_FILE;
  /* Each call reads the next calendar object; 1 while there was one. */
  while (file && (result = Vcal_dec(file, entry, NULL)) == 1) {
    put_text(entry->type == CAL_TYPE_TODO ? "to-do: " : "event: ", &entry->summ);
    putchar('\n');
    put_date("start", &entry->dtStart);
    put_date("end", &entry->dtEnd);
    put_date("due", &entry->dtDue);
    const CalAudioAlarm *a = &entry->aalarm;
    put_alarm("audio", &a->runTime, &a->snoozeTime, a->repeatCount, ", plays ", &a->audioRef);
    const CalDispAlarm *d = &entry->dalarm;
    put_alarm("display", &d->runTime, &d->snoozeTime, d->repeatCount, ", shows ", &d->dispVal);
    const CalMailAlarm *m = &entry->malarm;
    put_alarm("mail", &m->runTime, &m->snoozeTime, m->repeatCount, ", to ", &m->mailAddr);
    const CalProcAlarm *p = &entry->palarm;
    put_alarm("procedure", &p->runTime, &p->snoozeTime, p->repeatCount, ", runs ", &p->procName);
    if (KvoStr_len(&entry->recurRule)) put_rule(KvoStr_buf(&entry->recurRule));
  }
  CalItem_delete(entry);
  IStrm_delete(file);
  Ostrel_exit();
  if (result < 0) {
    fprintf(stderr, "calendar_read: %s: %s (%d)\n", argv[1],
            result == OSTREL_NO_FILE ? "cannot open" : "a malformed entry", (int)result);
    return 1;
  }
  return 0;
}
