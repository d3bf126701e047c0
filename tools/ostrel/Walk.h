// Walking a file record by record, whatever formats it mixes: the record
// that begins first is read first; a record that fails is reported with its
// number, byte offset and line, and the walk goes on at the next record the
// formats find; each record comes with the lines the library dropped.
#ifndef OSTREL_TOOL_WALK_H
#define OSTREL_TOOL_WALK_H

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "Format.h"
#include "Input.h"

namespace ostrel_tool {

class DroppedLines;

struct DroppedLine {
  std::string name;
  size_t line;  // 0 when the line was not found again
};

struct Seen {
  const Format &format;
  Record &record;
  std::string_view noun;  // the record's kind: "contact", "event"
  std::string_view file;  // its name in messages
  int number;     // 1 for the file's first record, failed ones counted
  size_t offset;  // byte of its first line
  size_t line;    // that line's number, from 1
  std::vector<DroppedLine> dropped;
};

// Records of one kind, and of its format the objects read: more records
// than objects when objects were split into their entries.
struct KindCount {
  const Format *format;
  Kind kind;
  int records = 0;
};

struct WalkResult {
  bool ok = true;              // every record read and handled
  std::vector<KindCount> counts;  // in order of first sight
  std::map<const Format *, int> objects;
  std::map<const Format *, std::vector<std::string>> subtypes;  // each once, in order
  int failed = 0;
  std::map<std::string, int> droppedByName;
  int droppedLines = 0;
};

// Gives false from onRecord to count the record as failed (already said).
using OnRecord = std::function<bool(const Seen &)>;

// only: the one format to look for, or all of them. strict: no repairs
// before the library reads.
WalkResult walk(const Input &in, DroppedLines &dropped, const OnRecord &onRecord,
                const CodecOptions &codec = {}, const Format *only = nullptr,
                bool strict = false);

// Why a record failed, as the walk reports it: the library's code and its
// text, the line of a malformed line (data[from, to) was read), and the
// format's own words.
std::string failureText(const Record &record, int32_t rc, std::string_view data, size_t from,
                        size_t to);

// "12 contacts, 1 group; 1 record failed; 31 lines dropped (X-A 20, ...)";
// "69 events from 1 object".
std::string summaryOf(const WalkResult &r);

// 1-based number of the line that holds byte `offset`; lines end in CR LF,
// LF or a lone CR.
size_t lineOf(std::string_view text, size_t offset);

}  // namespace ostrel_tool

#endif  // OSTREL_TOOL_WALK_H
