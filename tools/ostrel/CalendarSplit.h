// The entries of one calendar object, found the way the library reads the
// object: the first BEGIN:VEVENT or BEGIN:VTODO opens the entry, the first
// END of either closes it, and a BEGIN of an entry after that close starts
// what the library would merge into the first. Each entry can then be read
// alone: the object's head, the entry's lines, the object's END line.
#ifndef OSTREL_TOOL_CALENDARSPLIT_H
#define OSTREL_TOOL_CALENDARSPLIT_H

#include <string>
#include <string_view>
#include <vector>

#include "Format.h"

namespace ostrel_tool {

enum class EntryWord { None, Record, Other };

// Whether line is "BEGIN:VEVENT" or "BEGIN:VTODO" (Record), "BEGIN:VJOURNAL"
// or "BEGIN:VFREEBUSY" (Other), case ignored.
EntryWord entryWord(std::string_view line);
// The same for a line that only starts so ("BEGIN:VEVENT:"), as a writer's
// slip the library then refuses: enough to call the frame a calendar.
EntryWord entryPrefix(std::string_view line);

struct Entry {
  Span span;        // from its BEGIN line to the next entry or the END line
  bool record;      // an event or a to-do
  std::string word;  // "VJOURNAL" when it is none
};

struct SplitObject {
  std::vector<Entry> entries;
  size_t headEnd = 0;    // the head: up to the first entry
  size_t tailBegin = 0;  // the object's last line, its END:VCALENDAR

  // Entry i as an object of its own.
  std::string alone(std::string_view object, size_t i) const;
};

// object: the bytes of one object the library read whole, from its
// BEGIN:VCALENDAR line to behind its END:VCALENDAR line.
SplitObject splitObject(std::string_view object);

// "VJOURNAL" when the VCALENDAR frame at the stream's position holds
// entries but no event or to-do; empty otherwise. The position stays.
std::string_view firstEntryOf(IStrm *in);

}  // namespace ostrel_tool

#endif  // OSTREL_TOOL_CALENDARSPLIT_H
