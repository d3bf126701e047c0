#include "CalendarSplit.h"

#include "Scan.h"

namespace ostrel_tool {
namespace {

// The value of "NAME:value" when line is that property, trailing blanks off.
bool isLine(std::string_view line, std::string_view name, std::string_view value) {
  if (!startsWithNoCase(line, name)) return false;
  line.remove_prefix(name.size());
  while (!line.empty() && (line.back() == ' ' || line.back() == '\t')) line.remove_suffix(1);
  return line.size() == value.size() && startsWithNoCase(line, value);
}

bool isEntryEnd(std::string_view line) {
  return isLine(line, "END:", "VEVENT") || isLine(line, "END:", "VTODO");
}

}  // namespace

EntryWord entryPrefix(std::string_view line) {
  for (std::string_view word : {"BEGIN:VEVENT", "BEGIN:VTODO"})
    if (startsWithNoCase(line, word)) return EntryWord::Record;
  for (std::string_view word : {"BEGIN:VJOURNAL", "BEGIN:VFREEBUSY"})
    if (startsWithNoCase(line, word)) return EntryWord::Other;
  return EntryWord::None;
}

EntryWord entryWord(std::string_view line) {
  if (isLine(line, "BEGIN:", "VEVENT") || isLine(line, "BEGIN:", "VTODO")) return EntryWord::Record;
  if (isLine(line, "BEGIN:", "VJOURNAL") || isLine(line, "BEGIN:", "VFREEBUSY"))
    return EntryWord::Other;
  return EntryWord::None;
}

SplitObject splitObject(std::string_view object) {
  SplitObject out;
  // The END:VCALENDAR line the library stopped at is the object's last.
  size_t last = object.size();
  while (last > 0 && (object[last - 1] == '\r' || object[last - 1] == '\n')) --last;
  const size_t lastLine = object.find_last_of("\r\n", last == 0 ? 0 : last - 1);
  out.tailBegin = lastLine == std::string_view::npos ? 0 : lastLine + 1;

  enum { Head, Inside, Closed } state = Head;
  for (size_t pos = 0; pos < out.tailBegin; pos = nextLineStart(object, pos)) {
    const std::string_view rest = object.substr(pos, out.tailBegin - pos);
    const std::string_view line = rest.substr(0, rest.find_first_of("\r\n"));
    const EntryWord word = entryWord(line);
    const bool opens = state == Head ? word == EntryWord::Record
                                     : state == Closed && word != EntryWord::None;
    if (opens) {
      if (out.entries.empty()) out.headEnd = pos;
      else out.entries.back().span.end = pos;
      const std::string_view name = line.substr(6, line.find_first_of(" \t") - 6);
      out.entries.push_back({{pos, out.tailBegin}, word == EntryWord::Record, std::string(name)});
      state = Inside;
    } else if (state == Inside && isEntryEnd(line)) {
      state = Closed;
    }
  }
  return out;
}

std::string SplitObject::alone(std::string_view object, size_t i) const {
  const Span &s = entries.at(i).span;
  std::string text(object.substr(0, headEnd));
  text += object.substr(s.begin, s.end - s.begin);
  text += object.substr(tailBegin);
  return text;
}

std::string_view firstEntryOf(IStrm *in) {
  const uint8_t *p = nullptr;
  const int64_t n = IStrm_peek(in, &p);
  if (p == nullptr || n <= 0) return {};
  const std::string_view rest(reinterpret_cast<const char *>(p), static_cast<size_t>(n));
  const auto frame = nextFrame(rest, "VCALENDAR");
  if (!frame) return {};
  std::string_view other;
  const bool hasRecord =
      findLine(frame->substr(nextLineStart(*frame, 0)), [&](std::string_view line) {
        const EntryWord word = entryPrefix(line);
        if (word == EntryWord::Other && other.empty()) other = line.substr(6);
        return word == EntryWord::Record;
      }) != std::string_view::npos;
  if (hasRecord) return {};
  return other.substr(0, other.find_first_of(" \t:;"));
}

}  // namespace ostrel_tool
