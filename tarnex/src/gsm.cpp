// The number, time stamp and 7-bit packing fields of a short message PDU.
// Every length here can come from the network, so each read is bounded by
// the octets the caller has and each write by its room.
#include <cstdint>
#include <cstring>

#include "gsm_alph.h"
#include "tarnex/gsm.h"
#include "utf8.h"

namespace {

constexpr char kTbcd[] = "0123456789*#abc";
constexpr uint8_t kToaIntl = 0x91, kToaPlain = 0x81, kToaAlpha = 0xD0;
constexpr int kMaxDigits = 20, kMaxAlphaSeptets = 11;

int tbcdOf(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c == '*') return 10;
  if (c == '#') return 11;
  return -1;
}

bool isDialable(const char *no) {
  if (*no == '+') ++no;
  for (; *no; ++no)
    if (tbcdOf(*no) < 0) return false;
  return true;
}

// The septets of a UTF-8 text, whole characters only, at most `places`.
int32_t textSeptets(const char *text, uint8_t *septets, int32_t places) {
  const auto *p = reinterpret_cast<const uint8_t *>(text);
  const uint8_t *end = p + std::strlen(text);
  int32_t n = 0;
  while (p < end) {
    int used = 0;
    const uint32_t cp = tarnex::utf8::decode(p, end, &used);
    p += used;
    uint8_t s[2] = {0x3F, 0};
    int k = tarnex::gsm::septetsOf(cp, s);
    if (k == 0) k = 1;
    if (n + k > places) break;
    for (int j = 0; j < k; ++j) septets[n++] = s[j];
  }
  return n;
}

void appendSeptets(KvoStr *no, const uint8_t *septets, int32_t count) {
  KvoWchar units[160];
  const int32_t n = SmsAlph_from7BitStr(units, 160, septets, count);
  for (int32_t i = 0; i < n; ++i) {
    const auto *b = reinterpret_cast<const uint8_t *>(units + i);
    KvoStr_appdWchar(no, static_cast<uint32_t>(b[0] << 8 | b[1]));
  }
}

int bcdPair(uint8_t octet) {  // swapped BCD, -1 for a digit above 9
  const int lo = octet & 15, hi = octet >> 4;
  return lo > 9 || hi > 9 ? -1 : lo * 10 + hi;
}

uint8_t swappedBcd(int v) { return static_cast<uint8_t>((v % 10) << 4 | (v / 10 % 10)); }

}  // namespace

extern "C" {

int32_t GsmUtil_encNo(uint8_t *buf, int32_t size, const char *no, int32_t form) {
  const bool centre = form == 0;
  if (!no || !*no) {
    const int32_t need = centre ? 1 : 2;
    if (size < need) return -1;
    buf[0] = 0;
    if (!centre) buf[1] = kToaPlain;
    return need;
  }
  uint8_t field[2 + 12];
  int32_t octets;  // behind the type octet
  int32_t lenValue;
  if (isDialable(no)) {
    field[1] = *no == '+' ? kToaIntl : kToaPlain;
    if (*no == '+') ++no;
    int32_t digits = 0;
    for (; no[digits] && digits < kMaxDigits; ++digits) {
      const uint8_t d = static_cast<uint8_t>(tbcdOf(no[digits]));
      uint8_t &o = field[2 + digits / 2];
      o = digits % 2 ? static_cast<uint8_t>((o & 0x0F) | d << 4) : static_cast<uint8_t>(0xF0 | d);
    }
    octets = (digits + 1) / 2;
    lenValue = centre ? octets + 1 : digits;
  } else {
    uint8_t septets[kMaxAlphaSeptets];
    const int32_t count = textSeptets(no, septets, kMaxAlphaSeptets);
    field[1] = kToaAlpha;
    octets = GsmUtil_enc7BitStr(field + 2, 12, septets, count, 0);
    lenValue = centre ? octets + 1 : (count * 7 + 3) / 4;
  }
  field[0] = static_cast<uint8_t>(lenValue);
  if (size < octets + 2) return -1;
  std::memcpy(buf, field, static_cast<size_t>(octets + 2));
  return octets + 2;
}

int32_t GsmUtil_getNo(KvoStr *no, const uint8_t *buf, int32_t len, int32_t form) {
  if (no) KvoStr_clear(no);
  if (len < 1) return 1;
  const bool centre = form == 1;
  const int32_t lenValue = buf[0];
  if (lenValue == 0) return centre ? 1 : 2;
  const int32_t claim = centre ? 1 + lenValue : 2 + (lenValue + 1) / 2;
  if (!no || len < 2) return claim;
  const uint8_t toa = buf[1];
  const int32_t have = (claim < len ? claim : len) - 2;  // octets of the number present
  if ((toa & 0x70) == 0x50) {
    const int32_t semis = centre ? (claim - 2) * 2 : lenValue;
    int32_t count = semis * 4 / 7;
    uint8_t septets[160];
    const int32_t got = GsmUtil_dec7BitStr(septets, count < 160 ? count : 160, buf + 2, have, 0);
    count = got;
    // A field whose septets fill its octets exactly may carry one zero septet as filler.
    if (count > 0 && count % 8 == 0 && septets[count - 1] == 0) --count;
    appendSeptets(no, septets, count);
    return claim;
  }
  if ((toa & 0x70) == 0x10) KvoStr_appdChar(no, '+');
  int32_t digits = centre ? have * 2 : lenValue;
  for (int32_t i = 0; i < digits && i / 2 < have; ++i) {
    const int d = i % 2 ? buf[2 + i / 2] >> 4 : buf[2 + i / 2] & 15;
    if (d != 15) KvoStr_appdChar(no, kTbcd[d]);
  }
  return claim;
}

int32_t GsmUtil_encObsTime(uint8_t *buf, int32_t size, const KvoDt *dt) {
  if (size < 7) return -1;
  std::memset(buf, 0, 7);
  if (!dt || !KvoDt_chk(dt, 1)) return 7;
  const bool dateOnly = dt->hour == KVO_DT_UNSET;
  buf[0] = swappedBcd(dt->year % 100);
  buf[1] = swappedBcd(dt->month);
  buf[2] = swappedBcd(dt->day);
  buf[3] = swappedBcd(dateOnly ? 0 : dt->hour);
  buf[4] = swappedBcd(dateOnly ? 0 : dt->minute);
  buf[5] = swappedBcd(dateOnly ? 0 : dt->second);
  const int32_t zone = dt->zone == KVO_DT_NOZONE || dateOnly ? 0 : dt->zone;
  const int32_t quarters = (zone < 0 ? -zone : zone) / 15;
  buf[6] = static_cast<uint8_t>(swappedBcd(quarters) | (zone < 0 ? 0x08 : 0));
  return 7;
}

int32_t GsmUtil_decObsTime(KvoDt *dt, const uint8_t *buf, int32_t len) {
  KvoDt_init(dt);
  if (len < 7) return 7;
  int v[6];
  for (int i = 0; i < 6; ++i)
    if ((v[i] = bcdPair(buf[i])) < 0) return 7;
  KvoDt t;
  KvoDt_init(&t);
  t.year = v[0] >= 90 ? 1900 + v[0] : 2000 + v[0];
  t.month = v[1];
  t.day = v[2];
  t.hour = v[3];
  t.minute = v[4];
  t.second = v[5];
  const int quarters = bcdPair(buf[6] & 0xF7);
  t.zone = quarters < 0 || quarters > 95 ? 0 : (buf[6] & 0x08 ? -quarters : quarters) * 15;
  if (!KvoDt_chk(&t, 0)) return 7;
  if (quarters < 0 || quarters > 95) t.zone = KVO_DT_NOZONE;
  *dt = t;
  return 7;
}

int32_t GsmUtil_enc7BitStr(uint8_t *buf, int32_t size, const uint8_t *septets, int32_t count,
                           int32_t fill) {
  if (count <= 0) return 0;  // no septet, no fill octet
  if (fill < 0 || fill > 6) fill = 0;
  const int32_t need = (fill + 7 * count + 7) / 8;
  uint32_t acc = 0;
  int bits = fill;
  int32_t out = 0;
  for (int32_t i = 0; i < count && out < size; ++i) {
    acc |= static_cast<uint32_t>(septets[i] & 0x7F) << bits;
    bits += 7;
    while (bits >= 8 && out < size) {
      buf[out++] = static_cast<uint8_t>(acc);
      acc >>= 8;
      bits -= 8;
    }
  }
  if (bits > 0 && out < size && out < need) buf[out] = static_cast<uint8_t>(acc);
  return need;
}

int32_t GsmUtil_dec7BitStr(uint8_t *septets, int32_t places, const uint8_t *buf, int32_t octets,
                           int32_t fill) {
  if (octets <= 0 || places <= 0) return 0;
  if (fill < 0 || fill > 6) fill = 0;
  const int64_t total = (static_cast<int64_t>(octets) * 8 - fill) / 7;
  const int32_t count = total < places ? static_cast<int32_t>(total) : places;
  for (int32_t i = 0; i < count; ++i) {
    const int64_t bit = fill + static_cast<int64_t>(i) * 7;
    const int32_t at = static_cast<int32_t>(bit / 8), shift = static_cast<int32_t>(bit % 8);
    uint32_t v = buf[at] >> shift;
    if (shift > 1) v |= static_cast<uint32_t>(buf[at + 1]) << (8 - shift);
    septets[i] = static_cast<uint8_t>(v & 0x7F);
  }
  return count;
}

int32_t bcd_dec_buf_to_str(char *str, int32_t size, const uint8_t *buf, int32_t len) {
  if (size < 1) return 0;
  int32_t n = 0;
  for (int32_t i = 0; i < len * 2 && n < size - 1; ++i) {
    const int d = i % 2 ? buf[i / 2] >> 4 : buf[i / 2] & 15;
    if (d != 15) str[n++] = kTbcd[d];
  }
  str[n] = 0;
  return n;
}

}  // extern "C"
