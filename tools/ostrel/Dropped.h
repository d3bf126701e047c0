// The account of what the library drops: it traces each property it does
// not know as "un-handled field" (category 0x4). The tool listens on the
// trace sink while a record decodes and keeps the names, so that a user
// learns what a conversion loses before trusting it.
#ifndef OSTREL_TOOL_DROPPED_H
#define OSTREL_TOOL_DROPPED_H

#include <cstdint>
#include <string>
#include <vector>

namespace ostrel_tool {

class DroppedLines {
 public:
  // Owns the trace selection for its life. userCategories: what --trace
  // asked for; those texts still go to standard error.
  explicit DroppedLines(uint32_t userCategories);
  ~DroppedLines();
  DroppedLines(const DroppedLines &) = delete;
  DroppedLines &operator=(const DroppedLines &) = delete;

  // The names traced since the last call, in the order they came.
  std::vector<std::string> take();

 private:
  static void sink(void *ctx, const char *text, int32_t len);
  uint32_t user_;
  std::vector<std::string> names_;
};

}  // namespace ostrel_tool

#endif  // OSTREL_TOOL_DROPPED_H
