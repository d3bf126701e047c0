// Repairs the tool makes to a file before the library reads it, each
// reported; --strict turns them off. A format names its repair in the
// registry.
#ifndef OSTREL_TOOL_REPAIR_H
#define OSTREL_TOOL_REPAIR_H

#include <string>
#include <string_view>
#include <vector>

namespace ostrel_tool {

// XML as phones write it: a bare "&" becomes "&amp;", and a high and a low
// surrogate written as two character references ("&#55357;&#56838;")
// become one reference to the character they encode. Comments and CDATA
// sections are left alone. Each repair adds "line N: what was done".
std::string repairXml(std::string_view text, std::vector<std::string> *reports);

}  // namespace ostrel_tool

#endif  // OSTREL_TOOL_REPAIR_H
