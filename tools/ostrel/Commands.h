// The tool's commands, over the registry of formats.
#ifndef OSTREL_TOOL_COMMANDS_H
#define OSTREL_TOOL_COMMANDS_H

#include <cstdint>
#include <string>
#include <vector>

#include "Output.h"

namespace ostrel_tool {

// ostrel sms: what decode reads and what encode builds.
struct SmsOptions {
  std::vector<std::string> hex;  // decode: PDUs given as arguments
  std::string file;              // decode -f
  std::string type = "submit";   // encode: submit, deliver or report
  std::string number, text, data, smsc, udh;
  bool textGiven = false, dataGiven = false;
  bool requestReport = false;
  long ref = 0;
};

struct Options {
  std::vector<std::string> files;
  std::string target;  // convert: "vcard21", ...
  std::string output;  // convert: file, empty for standard output
  uint32_t traceCategories = 0;
  OutputOptions out;
  CodecOptions codec;
  SmsOptions sms;
  const Format *only = nullptr;  // read records of this format alone
};

// Exit statuses: 0 all records read, 1 a file or record failed, 2 misuse.
int runRead(const Options &opts);  // inspect and show
int runConvert(const Options &opts);
int runSmsDecode(const Options &opts);
int runSmsEncode(const Options &opts);

// Writes through a file beside the target and renames it, so a failed write
// leaves the old file as it was; false with a message on standard error.
bool writeFile(const std::string &path, const std::string &data);

// The targets convert accepts, as "vcard21, vcard30", and the help lines
// saying what each writes.
std::string targetNames();
std::string targetHelp();

}  // namespace ostrel_tool

#endif  // OSTREL_TOOL_COMMANDS_H
