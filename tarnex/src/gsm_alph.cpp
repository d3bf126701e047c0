// The GSM 7-bit default alphabet and its extension table. Conversion goes
// through one reverse table built at compile time for the units below
// 0x400 (all but the euro sign), so a unit costs one lookup.
#include <array>
#include <cstdint>

#include "gsm_alph.h"
#include "tarnex/gsm.h"

namespace {

constexpr uint16_t kDefault[128] = {
    0x0040, 0x00A3, 0x0024, 0x00A5, 0x00E8, 0x00E9, 0x00F9, 0x00EC, 0x00F2, 0x00C7, 0x000A,
    0x00D8, 0x00F8, 0x000D, 0x00C5, 0x00E5, 0x0394, 0x005F, 0x03A6, 0x0393, 0x039B, 0x03A9,
    0x03A0, 0x03A8, 0x03A3, 0x0398, 0x039E, 0x00A0, 0x00C6, 0x00E6, 0x00DF, 0x00C9, 0x0020,
    0x0021, 0x0022, 0x0023, 0x00A4, 0x0025, 0x0026, 0x0027, 0x0028, 0x0029, 0x002A, 0x002B,
    0x002C, 0x002D, 0x002E, 0x002F, 0x0030, 0x0031, 0x0032, 0x0033, 0x0034, 0x0035, 0x0036,
    0x0037, 0x0038, 0x0039, 0x003A, 0x003B, 0x003C, 0x003D, 0x003E, 0x003F, 0x00A1, 0x0041,
    0x0042, 0x0043, 0x0044, 0x0045, 0x0046, 0x0047, 0x0048, 0x0049, 0x004A, 0x004B, 0x004C,
    0x004D, 0x004E, 0x004F, 0x0050, 0x0051, 0x0052, 0x0053, 0x0054, 0x0055, 0x0056, 0x0057,
    0x0058, 0x0059, 0x005A, 0x00C4, 0x00D6, 0x00D1, 0x00DC, 0x00A7, 0x00BF, 0x0061, 0x0062,
    0x0063, 0x0064, 0x0065, 0x0066, 0x0067, 0x0068, 0x0069, 0x006A, 0x006B, 0x006C, 0x006D,
    0x006E, 0x006F, 0x0070, 0x0071, 0x0072, 0x0073, 0x0074, 0x0075, 0x0076, 0x0077, 0x0078,
    0x0079, 0x007A, 0x00E4, 0x00F6, 0x00F1, 0x00FC, 0x00E0};

// Septet behind the escape, and the character it stands for.
struct ExtPair {
  uint8_t septet;
  uint16_t unit;
};
constexpr ExtPair kExt[] = {{0x0A, 0x000C}, {0x14, 0x005E}, {0x28, 0x007B}, {0x29, 0x007D},
                            {0x2F, 0x005C}, {0x3C, 0x005B}, {0x3D, 0x007E}, {0x3E, 0x005D},
                            {0x40, 0x007C}, {0x65, 0x20AC}};
constexpr uint16_t kEuro = 0x20AC;
constexpr uint8_t kEscape = 0x1B;
constexpr int kLow = 0x400;

// For each unit below kLow: 0 not in the alphabet, else 0x100 | septet for
// the default table, 0x200 | septet for the extension table.
constexpr std::array<uint16_t, kLow> kReverse = [] {
  std::array<uint16_t, kLow> t{};
  for (const ExtPair &e : kExt)
    if (e.unit < kLow) t[e.unit] = static_cast<uint16_t>(0x200 | e.septet);
  for (int s = 0; s < 128; ++s)
    if (s != kEscape && kDefault[s] < kLow) t[kDefault[s]] = static_cast<uint16_t>(0x100 | s);
  return t;
}();

// Extension character of each septet behind an escape, 0 for none.
constexpr std::array<uint16_t, 128> kExtOf = [] {
  std::array<uint16_t, 128> t{};
  for (const ExtPair &e : kExt) t[e.septet] = e.unit;
  return t;
}();

uint16_t unitAt(const KvoWchar *units, int32_t i) {
  const auto *p = reinterpret_cast<const uint8_t *>(units + i);
  return static_cast<uint16_t>(p[0] << 8 | p[1]);
}

void putUnit(KvoWchar *units, int32_t i, uint16_t u) {
  auto *p = reinterpret_cast<uint8_t *>(units + i);
  p[0] = static_cast<uint8_t>(u >> 8);
  p[1] = static_cast<uint8_t>(u);
}

}  // namespace

namespace tarnex::gsm {

int septetsOf(uint32_t unit, uint8_t out[2]) {
  const uint16_t code = unit < kLow ? kReverse[unit] : (unit == kEuro ? 0x265 : 0);
  if (code == 0) return 0;
  if (code & 0x100) {
    out[0] = static_cast<uint8_t>(code);
    return 1;
  }
  out[0] = kEscape;
  out[1] = static_cast<uint8_t>(code);
  return 2;
}

}  // namespace tarnex::gsm

extern "C" {

int32_t SmsAlph_is7BitStr(const KvoWchar *units, int32_t count, int32_t /*flags*/) {
  uint8_t s[2];
  for (int32_t i = 0; i < count; ++i)
    if (tarnex::gsm::septetsOf(unitAt(units, i), s) == 0) return 0;
  return 1;
}

int32_t SmsAlph_to7BitStr(uint8_t *septets, int32_t places, const KvoWchar *units,
                          int32_t count) {
  int32_t n = 0;
  for (int32_t i = 0; i < count; ++i) {
    uint8_t s[2] = {0x3F, 0};
    int k = tarnex::gsm::septetsOf(unitAt(units, i), s);
    if (k == 0) k = 1;  // "?"
    if (n + k > places) {
      while (n < places) septets[n++] = 0x20;
      return places;
    }
    for (int j = 0; j < k; ++j) septets[n++] = s[j];
  }
  return n;
}

int32_t SmsAlph_from7BitStr(KvoWchar *units, int32_t places, const uint8_t *septets,
                            int32_t count) {
  int32_t n = 0;
  for (int32_t i = 0; i < count && n < places; ++i) {
    uint8_t s = septets[i] & 0x7F;
    uint16_t u;
    if (s == kEscape) {
      if (++i == count) break;
      s = septets[i] & 0x7F;
      u = kExtOf[s] ? kExtOf[s] : kDefault[s];
    } else {
      u = kDefault[s];
    }
    putUnit(units, n++, u);
  }
  return n;
}

}  // extern "C"
