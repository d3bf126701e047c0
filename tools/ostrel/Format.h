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

// What one record is, for a format whose records come in kinds ("event",
// "to-do").
struct Kind {
  std::string_view noun;
  std::string_view plural;
};

// Byte range of an entry inside its object, from the object's first byte.
struct Span {
  size_t begin;
  size_t end;
};

// What the user asked of the codecs beyond the defaults: the zone arguments
// of the calendar codec, and whether hex PDUs come without a service centre
// field.
struct CodecOptions {
  int32_t decodeZone = VCAL_ZONE_ASIS;
  int32_t encodeZone = VCAL_ZONE_ASIS;
  bool noSmsc = false;
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

  // Everything below has a default that suits a format of one kind whose
  // library record holds all there is to show.

  virtual void configure(const CodecOptions &) {}
  // The record's kind, when it is not the format's noun.
  virtual const Kind *kind() const { return nullptr; }
  // Lines printed beneath the trace text: what the tool reads that the
  // library's record does not hold.
  virtual std::string traceNotes() { return {}; }
  // Why the last decode failed, in words the library's code does not give
  // ("odd number of hex digits"); empty when the code says it all.
  virtual std::string failure() const { return {}; }
  // An object whose entries the library merges into one record (a
  // calendar object of many events) is shown as one record per entry.
  // After a decode that gave 1: the entries of the object; none or one, and
  // the object is the record.
  virtual std::vector<Span> entries() { return {}; }
  // Reads entry i of entries() alone: 1, or the library's code.
  virtual int32_t decodeEntry(size_t) { return 0; }
  // What sort of its format and kind the record is, for the summary
  // ("m-send-req"); empty where the noun says it all.
  virtual std::string subtype() { return {}; }
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
  // One record a file (a binary message): claimed only at the start of the
  // data, and nothing behind it is read as another record.
  bool wholeFile = false;
  // A listing: the record claimed is the whole rest of the file, and one
  // record object reads its entries one after another (decode gives 1 an
  // entry, 0 at the listing's end, a negative code on failure).
  bool listing = false;
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
