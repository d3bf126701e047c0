// ostrel: shows what the library does with a phone's files. It finds the
// format of each file by its content, decodes every record, prints each
// record's trace text, and converts between versions.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "Commands.h"

namespace {

using ostrel_tool::Options;

constexpr const char *kUsage =
    "usage: ostrel [--trace CATEGORIES] COMMAND [ARGS]\n"
    "\n"
    "commands:\n"
    "  inspect FILE...                 decode every record and print its trace text\n"
    "  convert FILE... --to TARGET [-o OUT]\n"
    "                                  decode and encode again (vcard21, vcard30)\n"
    "\n"
    "options:\n"
    "  --trace CATEGORIES  library trace to stderr: a number, or names joined by\n"
    "                      commas: pos, field, unknown, func, text, all\n"
    "  --help              this text; 'ostrel COMMAND --help' for one command\n"
    "  --version           the version\n"
    "\n"
    "FILE may be '-' for standard input.\n";

constexpr const char *kInspectUsage =
    "usage: ostrel inspect FILE...\n"
    "Recognises each file's format by content, decodes every record in order,\n"
    "prints each record's trace text and one summary line per file. Exits 1 when\n"
    "a file is not a known format or a record fails.\n";

constexpr const char *kConvertUsage =
    "usage: ostrel convert FILE... --to vcard21|vcard30 [-o OUT]\n"
    "Decodes every record and encodes it again in the target version, to OUT or\n"
    "standard output. Exits 1 when a record cannot be read or converted.\n";

int usageError(const std::string &message) {
  std::fprintf(stderr, "ostrel: %s\nTry 'ostrel --help'.\n", message.c_str());
  return 2;
}

struct CategoryName {
  const char *name;
  uint32_t bits;
};
constexpr CategoryName kCategories[] = {{"pos", 0x1},   {"field", 0x2}, {"unknown", 0x4},
                                        {"func", 0x8},  {"text", 0x100}, {"all", 0x10F}};

bool parseCategories(std::string_view text, uint32_t *out) {
  char *end = nullptr;
  const std::string copy(text);
  const unsigned long n = std::strtoul(copy.c_str(), &end, 0);
  if (!copy.empty() && end && *end == '\0') {
    *out = static_cast<uint32_t>(n);
    return true;
  }
  uint32_t bits = 0;
  size_t pos = 0;
  while (pos <= text.size()) {
    size_t comma = text.find(',', pos);
    if (comma == std::string_view::npos) comma = text.size();
    const std::string_view word = text.substr(pos, comma - pos);
    bool known = false;
    for (const CategoryName &c : kCategories)
      if (word == c.name) {
        bits |= c.bits;
        known = true;
      }
    if (!known) return false;
    pos = comma + 1;
  }
  *out = bits;
  return true;
}

}  // namespace

int main(int argc, char **argv) {
  std::vector<std::string_view> args(argv + 1, argv + argc);
  Options opts;
  std::string command;
  bool help = false;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string_view a = args[i];
    auto value = [&]() -> const char * { return i + 1 < args.size() ? argv[1 + ++i] : nullptr; };
    if (a == "--help" || a == "-h") {
      help = true;
    } else if (a == "--version") {
      std::printf("ostrel %s\n", OSTREL_TOOL_VERSION);
      return 0;
    } else if (a == "--trace") {
      const char *v = value();
      if (!v || !parseCategories(v, &opts.traceCategories))
        return usageError("--trace needs categories: a number or pos,field,unknown,func,text,all");
    } else if (a == "--to") {
      const char *v = value();
      if (!v) return usageError("--to needs a target");
      opts.target = v;
    } else if (a == "-o") {
      const char *v = value();
      if (!v) return usageError("-o needs a file name");
      opts.output = v;
    } else if (command.empty() && a.size() > 1 && a[0] == '-') {
      return usageError("unknown option '" + std::string(a) + "'");
    } else if (command.empty()) {
      command = a;
    } else if (a.size() > 1 && a[0] == '-') {
      return usageError("unknown option '" + std::string(a) + "'");
    } else {
      opts.files.emplace_back(a);
    }
  }
  if (command.empty()) {
    if (help) {
      std::fputs(kUsage, stdout);
      return 0;
    }
    return usageError("no command given");
  }
  if (command == "inspect") {
    if (help) return std::fputs(kInspectUsage, stdout), 0;
    if (opts.files.empty()) return usageError("inspect needs at least one FILE");
    return ostrel_tool::runInspect(opts);
  }
  if (command == "convert") {
    if (help) return std::fputs(kConvertUsage, stdout), 0;
    if (opts.files.empty()) return usageError("convert needs at least one FILE");
    if (opts.target.empty()) return usageError("convert needs --to TARGET");
    return ostrel_tool::runConvert(opts);
  }
  return usageError("unknown command '" + command + "'");
}
