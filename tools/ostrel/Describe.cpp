#include "Describe.h"

#include <cctype>
#include <cstdio>

#include "tarnex/scratch.hpp"

namespace ostrel_tool {

std::string utf8(const KvoWcs *text) {
  tarnex::ScratchStr<256> out;
  KvoStr_setCwcs(out, text);
  return std::string(out.view());
}

std::string utf8(const KvoStr *text) {
  return std::string(KvoStr_buf(text), static_cast<size_t>(KvoStr_len(text)));
}

std::string utf8(const KvoWchar *units, int32_t n) {
  const KvoWcs view = tarnex::wcsView(units, n);
  return utf8(&view);
}

std::string bytes(IStrm *strm) {
  if (strm == nullptr) return {};
  const uint8_t *p = MemStrm_data(strm);
  const int64_t n = IStrm_size(strm);
  if (p == nullptr || n <= 0) return {};
  return std::string(reinterpret_cast<const char *>(p), static_cast<size_t>(n));
}

std::string isoDate(std::string_view text) {
  const std::string copy(text);
  KvoDt dt;
  if (copy.empty() || iso_dt_dec(copy.c_str(), &dt) == 0 || dt.year == KVO_DT_UNSET) return copy;
  char buf[64];
  int n = std::snprintf(buf, sizeof buf, "%04d-%02d-%02d", dt.year, dt.month, dt.day);
  if (dt.hour != KVO_DT_UNSET) {
    n += std::snprintf(buf + n, sizeof buf - n, "T%02d:%02d:%02d", dt.hour, dt.minute,
                       dt.second);
    if (dt.zone == 0) {
      n += std::snprintf(buf + n, sizeof buf - n, "Z");
    } else if (dt.zone != KVO_DT_NOZONE) {
      const int z = dt.zone < 0 ? -dt.zone : dt.zone;
      std::snprintf(buf + n, sizeof buf - n, "%c%02d:%02d", dt.zone < 0 ? '-' : '+', z / 60,
                    z % 60);
    }
  }
  return buf;
}

std::string binaryKind(std::string_view data, std::string_view given) {
  if (data.substr(0, 2) == "\xFF\xD8") return "JPEG";
  if (data.substr(0, 4) == "\x89PNG") return "PNG";
  if (data.substr(0, 4) == "GIF8") return "GIF";
  if (data.substr(0, 4) == "RIFF") return "RIFF";
  if (data.substr(0, 2) == "BM") return "BMP";
  if (data.substr(0, 4) == std::string_view("II*\0", 4) || data.substr(0, 4) == std::string_view("MM\0*", 4))
    return "TIFF";
  std::string word(given);
  for (char &c : word) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return word;
}

std::string versionText(uint32_t v) {
  return v == 0 ? std::string() : std::to_string(v >> 8) + "." + std::to_string(v & 0xFF);
}

std::string dateText(const KvoDt &dt) {
  tarnex::ScratchStr<32> text;
  iso_dt_enc(text, &dt);
  return isoDate(text.view());
}

void addText(Description &d, std::string_view type, std::string_view label, std::string value) {
  if (value.empty()) return;
  Field f;
  f.type = type;
  f.label = label;
  f.values.push_back(std::move(value));
  d.fields.push_back(std::move(f));
}

}  // namespace ostrel_tool
