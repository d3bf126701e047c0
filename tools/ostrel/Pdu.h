// Short messages as lines of hexadecimal PDU text, as modems list them
// (AT+CMGL, AT+CMGR) and as logs keep them: the record of one line, shared
// by the registry entry and the sms commands.
#ifndef OSTREL_TOOL_PDU_H
#define OSTREL_TOOL_PDU_H

#include <memory>
#include <string_view>

#include "Format.h"

namespace ostrel_tool {

extern const Format kPduFormat;

// A record that decodes the hex PDU at the stream's position, one line.
std::unique_ptr<Record> makePdu();

}  // namespace ostrel_tool

#endif  // OSTREL_TOOL_PDU_H
