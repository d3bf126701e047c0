// Helpers of the short message tests: a scoped record, hex in and out, the
// trace body as the record's whole state.
#ifndef OSTREL_TESTS_SMSTESTUTIL_H
#define OSTREL_TESTS_SMSTESTUTIL_H

#include <cstring>
#include <string>
#include <vector>

#include "ostrel/ostrel.h"
#include "tarnex/scratch.hpp"

struct Sms : SmsItem {
  Sms() { SmsItem_new(this); }
  ~Sms() { SmsItem_delete(this); }
  Sms(const Sms &) = delete;
  Sms &operator=(const Sms &) = delete;
};

inline std::vector<uint8_t> fromHex(const std::string &hex) {
  std::vector<uint8_t> v(hex.size() / 2 + 1);
  v.resize(static_cast<size_t>(
      ira_dec_str_to_buf(hex.data(), static_cast<int32_t>(hex.size()), v.data(),
                         static_cast<int32_t>(v.size()))));
  return v;
}

inline std::string toHex(const uint8_t *p, int32_t n) {
  tarnex::ScratchStr<64> s;
  ira_enc_cstr_from_buf(s, p, n);
  return s.c_str();
}

// The trace lines between head and end.
inline std::string traceBody(SmsItem *item) {
  tarnex::ScratchMemStrm out(0);
  SmsItem_tracex(item, out, 0);
  std::string t(reinterpret_cast<const char *>(MemStrm_data(out)),
                static_cast<size_t>(IStrm_size(out)));
  const std::string head = "# SmsItem beg......\n", end = "# SmsItem end !!!!!!\n";
  if (t.rfind(head, 0) == 0 && t.size() >= head.size() + end.size())
    t = t.substr(head.size(), t.size() - head.size() - end.size());
  return t;
}

// The PDU of a record as hex, SMSC field included; "" with *result < 0.
inline std::string encodeHex(const SmsItem *item, const char *smc = nullptr,
                             int32_t *result = nullptr) {
  uint8_t pdu[400];
  const int32_t n = Psms_encPdux(pdu, sizeof pdu, item, smc, -1);
  if (result) *result = n;
  if (n < 0) return "";
  const int32_t smsc = pdu[0] ? pdu[0] + 1 : 1;
  return toHex(pdu, smsc + n);
}

inline void setText(SmsItem *item, const std::u16string &text) {
  KvoWcs_setWcsx(&item->data, reinterpret_cast<const KvoWchar *>(text.data()),
                 static_cast<int32_t>(text.size()));
  item->dt = SMS_DT_TXT;
}

#endif
