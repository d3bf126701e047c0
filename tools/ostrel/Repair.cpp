#include "Repair.h"

#include <cstdint>
#include <utility>

namespace ostrel_tool {
namespace {

bool isNameStart(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == ':' ||
         static_cast<unsigned char>(c) >= 0x80;
}
bool isNameChar(char c) {
  return isNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

// The length of the character or entity reference at t[p] ('&'), 0 when
// there is none. A character reference's value goes to *code (else -1).
size_t referenceAt(std::string_view t, size_t p, int64_t *code) {
  *code = -1;
  size_t q = p + 1;
  if (q < t.size() && t[q] == '#') {
    const bool hex = q + 1 < t.size() && t[q + 1] == 'x';
    q += hex ? 2 : 1;
    int64_t v = 0;
    const size_t digits = q;
    for (; q < t.size(); ++q) {
      const char c = t[q];
      int d = c >= '0' && c <= '9' ? c - '0' : -1;
      if (hex && d < 0 && ((c | 0x20) >= 'a' && (c | 0x20) <= 'f')) d = (c | 0x20) - 'a' + 10;
      if (d < 0) break;
      if (v <= 0x10FFFF) v = v * (hex ? 16 : 10) + d;
    }
    if (q == digits || q >= t.size() || t[q] != ';') return 0;
    *code = v;
    return q + 1 - p;
  }
  if (q >= t.size() || !isNameStart(t[q])) return 0;
  while (q < t.size() && isNameChar(t[q])) ++q;
  return q < t.size() && t[q] == ';' ? q + 1 - p : 0;
}

// The end of a comment or CDATA section starting at p, where "&" is only
// text; p when none starts there.
size_t markupEnd(std::string_view t, size_t p) {
  static constexpr std::pair<std::string_view, std::string_view> kLiteral[] = {
      {"<!--", "-->"}, {"<![CDATA[", "]]>"}};
  for (const auto &[open, close] : kLiteral) {
    if (t.compare(p, open.size(), open) != 0) continue;
    const size_t end = t.find(close, p + open.size());
    return end == std::string_view::npos ? t.size() : end + close.size();
  }
  return p;
}

}  // namespace

std::string repairXml(std::string_view t, std::vector<std::string> *reports) {
  std::string out;
  out.reserve(t.size());
  size_t line = 1;
  for (size_t p = 0; p < t.size();) {
    if (const size_t end = markupEnd(t, p); end != p) {
      for (size_t i = p; i < end; ++i) line += t[i] == '\n';
      out.append(t.substr(p, end - p));
      p = end;
      continue;
    }
    if (t[p] != '&') {
      line += t[p] == '\n';
      out += t[p++];
      continue;
    }
    int64_t high = -1, low = -1;
    const size_t n = referenceAt(t, p, &high);
    if (n == 0) {
      out += "&amp;";
      reports->push_back("line " + std::to_string(line) + ": a bare & written as &amp;");
      ++p;
      continue;
    }
    const size_t m = high >= 0xD800 && high <= 0xDBFF && p + n < t.size() && t[p + n] == '&'
                         ? referenceAt(t, p + n, &low)
                         : 0;
    if (m != 0 && low >= 0xDC00 && low <= 0xDFFF) {
      const int64_t cp = 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
      const std::string joined = "&#" + std::to_string(cp) + ";";
      reports->push_back("line " + std::to_string(line) + ": the surrogate references " +
                         std::string(t.substr(p, n + m)) + " joined as " + joined);
      out += joined;
      p += n + m;
      continue;
    }
    out.append(t.substr(p, n));
    p += n;
  }
  return out;
}

}  // namespace ostrel_tool
