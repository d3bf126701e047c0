/*
 * ostrel/PsmsEd.h - SmsItem to and from a TS 23.040 PDU: binary octets
 * (Pdu), the same octets as hexadecimal IRA text (Ira), or a stream holding
 * either (PsmsFile_).
 *
 * Encoders write the whole PDU, service centre field first (the octet 0x00
 * when smc is null or empty), and give the octets of the TPDU without that
 * field (characters in the IRA form, whose buffer also gets a terminator);
 * negative on failure, -81 for a record that does not fit a PDU. One record
 * is one PDU: a concatenation header is the caller's, in udhBuf.
 *
 * Decoders store what the PDU holds into a new or cleared record and OR
 * into its flags; they give 0, or -81 for a PDU they refuse: TP-MTI 3, a
 * service centre field reaching the PDU's end, IRA text that is not all
 * digit pairs. A PDU cut short (a field, a header or user data past its
 * end, or a header longer than TP-UDL) gives -81 with the fields before
 * the cut stored and the text of the octets present kept; no octet past
 * pduLen is read. expType SMS_REPORT (3) takes a first octet with bit 0x02
 * for the first octet of a status report without a service centre field:
 * it only suits PDUs without one (a 7-octet service centre field has that
 * bit set too).
 *
 * Kept as peers expect: TP-MR goes out as 4 bits on SMS-SUBMIT, TP-VP is
 * always the relative 0x22, the first-octet bit 0x04 is SMS_F_MORE_MSG as it
 * stands (not inverted), text in the GSM alphabet goes as septets whatever
 * `coding` is ORed into TP-DCS, the coding group of TP-DCS is not read, and
 * a received binary payload ends at its first 0x00.
 */
#ifndef OSTREL_PSMSED_H
#define OSTREL_PSMSED_H

#include "ostrel/SmsItem.h"

#ifdef __cplusplus
extern "C" {
#endif

OSTREL_API int32_t Psms_encPdu(uint8_t *pduBuf, int32_t bufLen, const SmsItem *item);
OSTREL_API int32_t Psms_encPdux(uint8_t *pduBuf, int32_t bufLen, const SmsItem *item,
                                const char *smc, int32_t smcLen);
OSTREL_API int32_t Psms_encIra(char *iraBuf, int32_t bufLen, const SmsItem *item);
OSTREL_API int32_t Psms_encIrax(char *iraBuf, int32_t bufLen, const SmsItem *item,
                                const char *smc, int32_t smcLen);
OSTREL_API int32_t Psms_decPdu(const uint8_t *pdu, int32_t pduLen, SmsItem *item);
OSTREL_API int32_t Psms_decPdux(const uint8_t *pdu, int32_t pduLen, SmsItem *item,
                                int32_t expType);
OSTREL_API int32_t Psms_decIra(const char *ira, int32_t iraLen, SmsItem *item);
OSTREL_API int32_t Psms_decIrax(const char *ira, int32_t iraLen, SmsItem *item,
                                int32_t expType);

OSTREL_API int32_t PsmsFile_encPdu(IStrm *pduFile, const SmsItem *item);
OSTREL_API int32_t PsmsFile_encIra(IStrm *iraFile, const SmsItem *item);
OSTREL_API int32_t PsmsFile_decPdu(IStrm *pduFile, SmsItem *item);
OSTREL_API int32_t PsmsFile_decPdux(IStrm *pduFile, SmsItem *item, int32_t expType);
OSTREL_API int32_t PsmsFile_decIra(IStrm *iraFile, SmsItem *item);
OSTREL_API int32_t PsmsFile_decIrax(IStrm *iraFile, SmsItem *item, int32_t expType);

#ifdef __cplusplus
}
#endif

#endif /* OSTREL_PSMSED_H */
