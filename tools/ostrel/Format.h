// The registry of formats the tool knows. Each format says how to spot its
// next record in a file's remaining bytes, and makes records that decode
// one record from a stream, print their trace text and encode themselves.
// The commands work over the registry, so a new format is one entry.
#ifndef OSTREL_TOOL_FORMAT_H
#define OSTREL_TOOL_FORMAT_H

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

#include "ostrel/ostrel.h"

namespace ostrel_tool {

class Record {
 public:
  virtual ~Record() = default;
  // 1 a record read, 0 none left (or one cut short), negative a fault.
  virtual int32_t decode(IStrm *in) = 0;
  // Appends the record's trace text.
  virtual void trace(IStrm *out) = 0;
  // Appends the record in the target's text; 0 or a negative code.
  virtual int32_t encode(IStrm *out, uint32_t version) = 0;
};

struct Format {
  std::string_view noun;    // "contact"
  std::string_view plural;  // "contacts"
  std::string_view family;  // output targets are "<family><version digits>"
  // Looks at the bytes from the next record on (`rest`, the whole remaining
  // file): if that record is of this format, gives the offset in `rest`
  // where it begins.
  std::optional<size_t> (*claims)(std::string_view rest);
  std::unique_ptr<Record> (*make)();
};

// Every format, in the order their claims are asked: the first that says
// yes reads the record.
std::span<const Format> formats();

// Text of a result code, for messages.
std::string_view resultText(int32_t code);

}  // namespace ostrel_tool

#endif  // OSTREL_TOOL_FORMAT_H
