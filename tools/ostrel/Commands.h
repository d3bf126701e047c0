// The tool's commands, over the registry of formats.
#ifndef OSTREL_TOOL_COMMANDS_H
#define OSTREL_TOOL_COMMANDS_H

#include <cstdint>
#include <string>
#include <vector>

#include "Output.h"

namespace ostrel_tool {

struct Options {
  std::vector<std::string> files;
  std::string target;  // convert: "vcard21", ...
  std::string output;  // convert: file, empty for standard output
  uint32_t traceCategories = 0;
  OutputOptions out;
  CodecOptions codec;
};

// Exit statuses: 0 all records read, 1 a file or record failed, 2 misuse.
int runRead(const Options &opts);  // inspect and show
int runConvert(const Options &opts);

// The targets convert accepts, as "vcard21, vcard30", and the help lines
// saying what each writes.
std::string targetNames();
std::string targetHelp();

}  // namespace ostrel_tool

#endif  // OSTREL_TOOL_COMMANDS_H
