// The ways a record is shown: the library's trace text (inspect), a
// readable page (show) and one JSON object a line (--json), all from the
// record's description, the same for every format.
#ifndef OSTREL_TOOL_OUTPUT_H
#define OSTREL_TOOL_OUTPUT_H

#include <cstdio>
#include <string>

#include "Input.h"
#include "Walk.h"

namespace ostrel_tool {

enum class Mode { Trace, Show, Json };

struct OutputOptions {
  Mode mode = Mode::Trace;
  bool jsonBinary = false;  // --json-binary: binary values in Base64
  bool listDropped = false;  // --dropped
  bool strict = false;       // --strict: the file as it is, no repairs
};

void printRecord(std::FILE *to, const Seen &seen, const OutputOptions &opts);

// One JSON object for a record, without the line end.
std::string jsonOf(const Seen &seen, bool withBinary);

// "11,112"
std::string grouped(size_t n);

}  // namespace ostrel_tool

#endif  // OSTREL_TOOL_OUTPUT_H
