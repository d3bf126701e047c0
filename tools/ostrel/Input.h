// Reading a file the way a phone or a desktop program left it: whole, with
// UTF-16 text (a mark, or the zero bytes of ASCII text) turned into UTF-8
// before any format looks at it.
#ifndef OSTREL_TOOL_INPUT_H
#define OSTREL_TOOL_INPUT_H

#include <string>

namespace ostrel_tool {

struct Input {
  std::string name;  // as messages give it: "<stdin>" for "-"
  std::string data;  // UTF-8 from here on
  std::string note;  // what was done to the bytes, for standard error
};

// False with a message on standard error when the file cannot be read or
// is too large for the library's streams.
bool loadInput(const std::string &path, Input *in);

// "UTF-16LE" or "UTF-16BE" when data looks like UTF-16 text, with the
// length of its mark (0 or 2); empty otherwise.
std::string detectUtf16(const std::string &data, size_t *markLen);

}  // namespace ostrel_tool

#endif  // OSTREL_TOOL_INPUT_H
