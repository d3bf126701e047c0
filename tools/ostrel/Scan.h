// Looking ahead in a file's text: where the next BEGIN:<word> frame is and
// which properties it holds, so that the registry can pick the format of a
// record before any decoder runs.
#ifndef OSTREL_TOOL_SCAN_H
#define OSTREL_TOOL_SCAN_H

#include <cctype>
#include <optional>
#include <string_view>

namespace ostrel_tool {

inline bool startsWithNoCase(std::string_view text, std::string_view prefix) {
  if (text.size() < prefix.size()) return false;
  for (size_t i = 0; i < prefix.size(); ++i)
    if (std::toupper(static_cast<unsigned char>(text[i])) !=
        std::toupper(static_cast<unsigned char>(prefix[i])))
      return false;
  return true;
}

// Offset of the line behind the one that holds pos (line ends CR LF, LF or
// CR), or the end of text.
inline size_t nextLineStart(std::string_view text, size_t pos) {
  const size_t end = text.find_first_of("\r\n", pos);
  if (end == std::string_view::npos) return text.size();
  if (text[end] == '\r' && end + 1 < text.size() && text[end + 1] == '\n') return end + 2;
  return end + 1;
}

// Calls fn(line) for each line of text (line ends CR LF, LF or CR) until fn
// gives true; gives the offset of that line, or npos.
template <class Fn>
size_t findLine(std::string_view text, Fn fn) {
  size_t pos = 0;
  while (pos < text.size()) {
    size_t end = text.find_first_of("\r\n", pos);
    if (end == std::string_view::npos) end = text.size();
    if (fn(text.substr(pos, end - pos))) return pos;
    pos = end;
    if (pos < text.size() && text[pos] == '\r') ++pos;
    if (pos < text.size() && text[pos] == '\n') ++pos;
  }
  return std::string_view::npos;
}

// "NAME:" or "NAME;" at the start of a line, case ignored.
inline bool isProperty(std::string_view line, std::string_view name) {
  return startsWithNoCase(line, name) && line.size() > name.size() &&
         (line[name.size()] == ':' || line[name.size()] == ';');
}

// The next frame "BEGIN:word" ... "END:word" in rest, or nothing when no
// BEGIN line is left. Where the END line is missing, the frame stops at the
// next BEGIN:word line (or the end of rest), so that looking into the frames
// of a file of broken records costs each byte once, not once per record.
inline std::optional<std::string_view> nextFrame(std::string_view rest, std::string_view word) {
  auto isMark = [&](std::string_view line, std::string_view mark) {
    if (!startsWithNoCase(line, mark)) return false;
    std::string_view value = line.substr(mark.size());
    while (!value.empty() && (value.back() == ' ' || value.back() == '\t')) value.remove_suffix(1);
    return value.size() == word.size() && startsWithNoCase(value, word);
  };
  const size_t begin = findLine(rest, [&](std::string_view l) { return isMark(l, "BEGIN:"); });
  if (begin == std::string_view::npos) return std::nullopt;
  const std::string_view from = rest.substr(begin);
  const size_t second = nextLineStart(from, 0);
  const size_t end = findLine(from.substr(second), [&](std::string_view l) {
    return isMark(l, "END:") || isMark(l, "BEGIN:");
  });
  return end == std::string_view::npos ? from : from.substr(0, second + end);
}

// Offset in rest of the first BEGIN:word frame that `wanted` accepts.
template <class Wanted>
std::optional<size_t> firstFrame(std::string_view rest, std::string_view word, Wanted wanted) {
  size_t from = 0;
  while (const auto frame = nextFrame(rest.substr(from), word)) {
    const size_t at = static_cast<size_t>(frame->data() - rest.data());
    if (wanted(*frame)) return at;
    from = nextLineStart(rest, at);
  }
  return std::nullopt;
}

inline bool frameHas(std::string_view frame, std::string_view name) {
  return findLine(frame, [&](std::string_view l) { return isProperty(l, name); }) !=
         std::string_view::npos;
}

}  // namespace ostrel_tool

#endif  // OSTREL_TOOL_SCAN_H
