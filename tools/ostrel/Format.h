// The registry of formats the tool knows. Each entry says where the next
// record of its format starts in a file's remaining bytes, and makes records
// that decode one record from a stream, print their trace text, describe
// themselves field by field and encode themselves. Walking a file, repairs,
// the account of dropped lines and the output modes live once in the tool
// (Walk, Output), so a new format is one entry and gets all of them.
#ifndef OSTREL_TOOL_FORMAT_H
#define OSTREL_TOOL_FORMAT_H

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ostrel/ostrel.h"

namespace ostrel_tool {

// One field of a record as a person or a script sees it. `type` is the
// library's own code for it ("TWC"), `label` and `flags` its plain reading
// ("Phone", {"work", "cell"}); `values` are the text components, `text`
// (when set) how a person reads them on one line. A binary
// value (a photo) has `binary` set and its bytes in `data`, `what` saying
// what they are ("JPEG photo").
struct Field {
  std::string type;
  std::string label;
  std::vector<std::string> flags;
  std::vector<std::string> values;
  std::string text;  // the values as one line, when joining them is not enough
  bool binary = false;
  std::string what;
  std::string data;
};

struct Description {
  std::string version;  // "2.1"; empty when the record has none
  std::vector<Field> fields;
};

class Record {
 public:
  virtual ~Record() = default;
  // 1 a record read, 0 none (or one cut short), negative a fault.
  virtual int32_t decode(IStrm *in) = 0;
  // Appends the record's trace text.
  virtual void trace(IStrm *out) = 0;
  virtual Description describe() = 0;
  // Appends the record in the target's text; 0 or a negative code.
  virtual int32_t encode(IStrm *out, uint32_t version) = 0;
  // Where a failed decode failed (", line 3, column 7"), when the format
  // can tell; empty otherwise.
  virtual std::string failurePlace() { return {}; }
};

// A name `convert --to` accepts, the version word it hands to the encoder,
// and what the help says it writes.
struct Target {
  std::string_view name;
  uint32_t version;
  std::string_view writes;
  // A listing target's head and closing lines, written once around all
  // records; null for formats of self-contained records.
  int32_t (*head)(IStrm *) = nullptr;
  int32_t (*closing)(IStrm *) = nullptr;
};

struct Format {
  std::string_view name;    // "vcard": the format's word in output and JSON
  std::string_view title;   // "vCard", for people
  std::string_view noun;    // "contact"
  std::string_view plural;  // "contacts"
  // Where the next record of this format begins in `rest` (the whole
  // remaining file), or nothing. The walker takes the entry whose record
  // begins first.
  std::optional<size_t> (*claims)(std::string_view rest);
  std::unique_ptr<Record> (*make)();
  std::span<const Target> targets;
  // A listing: the record claimed is the whole rest of the file, and one
  // record object reads its entries one after another (decode gives 1 an
  // entry, 0 at the listing's end, a negative code on failure).
  bool wholeFile = false;
  // What the tool mends in the file before the library reads it (unless
  // --strict), reporting each repair; null: nothing.
  std::string (*repair)(std::string_view text, std::vector<std::string> *reports) = nullptr;
};

// Every format, in the order that settles a tie: where two records begin at
// the same byte, the earlier entry reads it.
std::span<const Format> formats();

// Formats that this build recognises but does not read yet: their
// signature and name, for the refusal of an unknown file.
struct Unread {
  std::string_view signature;
  std::string_view name;
};
std::span<const Unread> unreadFormats();

// Text of a result code, for messages.
std::string_view resultText(int32_t code);

}  // namespace ostrel_tool

#endif  // OSTREL_TOOL_FORMAT_H
