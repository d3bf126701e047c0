// ostrel extract FILE -d DIR [--force] and ostrel mms-encode FILE... -o OUT
// [--to|--cc|--bcc ADDR]... [--subject TEXT]. Exit statuses as the other
// commands: 0 done, 1 a file failed, 2 misuse.
#ifndef OSTREL_TOOL_MMSCOMMANDS_H
#define OSTREL_TOOL_MMSCOMMANDS_H

#include <string>
#include <vector>

namespace ostrel_tool {

bool isMmsCommand(const std::string &command);
int runMmsCommand(const std::string &command, const std::vector<std::string> &args);

}  // namespace ostrel_tool

#endif  // OSTREL_TOOL_MMSCOMMANDS_H
