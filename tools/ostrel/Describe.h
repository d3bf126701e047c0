// Small conversions every format's description needs: library strings to
// UTF-8, dates to ISO form, binary values named by what they hold.
#ifndef OSTREL_TOOL_DESCRIBE_H
#define OSTREL_TOOL_DESCRIBE_H

#include <string>
#include <string_view>

#include "Format.h"

namespace ostrel_tool {

std::string utf8(const KvoWcs *text);
std::string utf8(const KvoStr *text);
// UTF-16 units in host order (a stream's content), as UTF-8.
std::string utf8(const KvoWchar *units, int32_t n);
// The bytes of a memory stream, whatever its position.
std::string bytes(IStrm *strm);
// "1984-03-07", "2026-11-24T16:11:53Z"; the text unchanged when it is not a
// date the foundation reads.
std::string isoDate(std::string_view text);
// "JPEG", "PNG", "GIF" from the bytes, else the format word given (upper
// case), else empty.
std::string binaryKind(std::string_view data, std::string_view given);

// "2.1" from a version word; empty for 0.
std::string versionText(uint32_t version);
// A date as ISO text; empty when it is unset.
std::string dateText(const KvoDt &dt);
// Adds a field of one text value, when the value is not empty.
void addText(Description &d, std::string_view type, std::string_view label, std::string value);

}  // namespace ostrel_tool

#endif  // OSTREL_TOOL_DESCRIBE_H
