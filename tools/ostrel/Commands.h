// The tool's commands, over the registry of formats.
#ifndef OSTREL_TOOL_COMMANDS_H
#define OSTREL_TOOL_COMMANDS_H

#include <cstdint>
#include <string>
#include <vector>

namespace ostrel_tool {

struct Options {
  std::vector<std::string> files;
  std::string target;        // convert: "vcard21", ...
  std::string output;        // convert: file, empty for standard output
  uint32_t traceCategories = 0;
};

// Exit statuses: 0 all records read, 1 a file or record failed.
int runInspect(const Options &opts);
int runConvert(const Options &opts);

}  // namespace ostrel_tool

#endif  // OSTREL_TOOL_COMMANDS_H
