/* sms_pdu HEX: decodes a received short message given as the hexadecimal
 * text of its PDU (as a phone lists it, service centre field first), prints
 * it, and encodes a reply to its sender as a PDU to send. */
#include <stdio.h>
#include <string.h>

#include <ostrel/ostrel.h>

int main(int argc, char **argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: sms_pdu HEX\n");
    return 2;
  }
  Ostrel_init();
  SmsItem received;
  SmsItem_new(&received);
  int32_t result = Psms_decIra(argv[1], (int32_t)strlen(argv[1]), &received);
  if (result != 0) {
    fprintf(stderr, "sms_pdu: not a PDU we can read (%d)\n", (int)result);
  } else {
    KvoStr text;
    KvoStr_new(&text);
    printf("from: %s\n", KvoStr_buf(&received.tel));
    printf("sent: %s\n", KvoStr_buf(iso_dt_enc(&text, &received.xptTime)));
    if (received.dt == SMS_DT_TXT)
      printf("text: %s\n", KvoStr_buf(KvoStr_setCwcs(&text, &received.data)));
    else
      printf("binary: %d octets\n", (int)SmsItem_binLen(&received));
    KvoStr_delete(&text);

    /* The reply goes back to the sender, as text in the GSM alphabet. */
    SmsItem reply;
    SmsItem_new(&reply);
    reply.type = SMS_SUBMIT;
    reply.dt = SMS_DT_TXT;
    KvoStr_setCstr(&reply.tel, &received.tel);
    KvoWcs_setStr(&reply.data, "Yes, see you at 9.");
    char hex[2 * 180 + 1]; /* a PDU has at most 176 octets, two digits each */
    result = Psms_encIra(hex, (int32_t)sizeof hex, &reply);
    if (result > 0) printf("reply: %s (%d octets without the service centre)\n", hex, (int)result / 2);
    else fprintf(stderr, "sms_pdu: the reply could not be encoded (%d)\n", (int)result);
    SmsItem_delete(&reply);
  }
  SmsItem_delete(&received);
  Ostrel_exit();
  return result < 0 ? 1 : 0;
}
