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

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// The head of a document as phones write it: comments ahead of the XML
// declaration, which may only come first, and blanks inside the version
// number (" 1.0"). The mended head goes to *out; gives how much of t it
// stands for, 0 when the head needs nothing.
size_t repairHead(std::string_view t, std::string *out, std::vector<std::string> *reports) {
  const size_t start = t.substr(0, 3) == "\xEF\xBB\xBF" ? 3 : 0;
  size_t q = start;
  bool comments = false;
  for (;;) {
    while (q < t.size() && isBlank(t[q])) ++q;
    if (t.compare(q, 4, "<!--") != 0) break;
    const size_t end = t.find("-->", q + 4);
    if (end == std::string_view::npos) return 0;
    q = end + 3;
    comments = true;
  }
  if (t.compare(q, 5, "<?xml") != 0 || (q + 5 < t.size() && !isBlank(t[q + 5]))) return 0;
  const size_t declEnd = t.find("?>", q);
  if (declEnd == std::string_view::npos) return 0;
  std::string decl(t.substr(q, declEnd + 2 - q));
  bool version = false;
  if (const size_t v = decl.find("version"); v != std::string::npos) {
    const size_t open = decl.find_first_of("\"'", v);
    const size_t close = open == std::string::npos ? open : decl.find(decl[open], open + 1);
    if (close != std::string::npos) {
      std::string number;
      for (size_t i = open + 1; i < close; ++i)
        if (!isBlank(decl[i])) number += decl[i];
      version = number.size() != close - open - 1;
      if (version) decl.replace(open + 1, close - open - 1, number);
    }
  }
  if (!comments && !version) return 0;
  size_t line = 1;
  for (size_t i = 0; i < q; ++i) line += t[i] == '\n';
  if (comments)
    reports->push_back("line " + std::to_string(line) +
                       ": the XML declaration moved ahead of the comment before it");
  if (version)
    reports->push_back("line " + std::to_string(line) + ": the blanks in the declaration's "
                       "version number left out");
  // The declaration takes the first line; what stood before it follows.
  *out = std::string(t.substr(0, start)) + decl + std::string(t.substr(start, q - start));
  return declEnd + 2;
}

}  // namespace

std::string repairXml(std::string_view t, std::vector<std::string> *reports) {
  std::string out;
  out.reserve(t.size());
  const size_t from = repairHead(t, &out, reports);
  size_t line = 1;
  for (size_t i = 0; i < from; ++i) line += t[i] == '\n';
  for (size_t p = from; p < t.size();) {
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
