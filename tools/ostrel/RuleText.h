// A recurrence rule as a person reads it. The calendar record keeps rules
// as the text they came in; the rule codec parses them, and this says what
// the parsed rule means, so that a rule the codec reads differently from
// its writer's intent shows.
#ifndef OSTREL_TOOL_RULETEXT_H
#define OSTREL_TOOL_RULETEXT_H

#include <string>
#include <string_view>

namespace ostrel_tool {

// "every 2 weeks on Monday, Wednesday; 10 times"; for a text the codec
// refuses, why ("no rule head (-251)").
std::string ruleReading(std::string_view rule);

}  // namespace ostrel_tool

#endif  // OSTREL_TOOL_RULETEXT_H
