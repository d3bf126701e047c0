// ostrel: shows what the library does with a phone's files. It finds the
// format of each file by its content, decodes every record, shows it
// readably, as trace text or as JSON, and converts between versions.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "Commands.h"
#include "MmsCommands.h"

namespace {

using ostrel_tool::Options;

constexpr const char *kUsage =
    "usage: ostrel [OPTIONS] COMMAND FILE...\n"
    "\n"
    "commands:\n"
    "  show FILE...      each record as a person reads it: labels, dates in ISO\n"
    "                    form, photos by kind and size\n"
    "  inspect FILE...   each record as the library's trace text, for checking\n"
    "                    what the library made of it\n"
    "  convert FILE... --to TARGET [-o OUT]\n"
    "                    decode every record and write it again as TARGET\n"
    "  sms decode HEX...|-f FILE, sms encode OPTIONS\n"
    "                    short messages as hex PDUs ('ostrel sms --help')\n"
    "  extract FILE -d DIR [--force]\n"
    "                    write each medium of a multimedia message to DIR\n"
    "  mms-encode FILE... -o OUT [--to|--cc|--bcc ADDR]... [--subject TEXT]\n"
    "                    make a multimedia message of the files, a slide per\n"
    "                    image or video with the text and audio after it\n"
    "\n"
    "options:\n"
    "  --json            show/inspect: one JSON object a record (JSON Lines);\n"
    "                    summaries go to standard error\n"
    "  --json-binary     with --json: binary values (photos) in Base64 too\n"
    "  --dropped         list each line the library dropped, with its record\n"
    "  --local           calendar times with Z or an offset read as local time\n"
    "  --zone +HHMM      convert: floating calendar times are at this offset,\n"
    "                    and every time is written in UTC\n"
    "  --no-smsc         hex PDUs come without a service centre field\n"
    "  --strict          read files as they are: no repairs (a bare & in an XML\n"
    "                    listing is otherwise written as &amp;, each repair said)\n"
    "  --trace CATEGORIES  library trace to stderr: a number, or names joined by\n"
    "                    commas: pos, field, unknown, func, text, all\n"
    "  --help            this text; 'ostrel COMMAND --help' for one command\n"
    "  --version         the version\n"
    "\n"
    "FILE may be '-' for standard input. Formats are found by content; a file may\n"
    "mix them. UTF-16 files are read as UTF-8. A record that fails is reported\n"
    "with its number, byte offset and line, and the rest of the file is read.\n"
    "Exit status: 0 all read, 1 a file or record failed, 2 a usage error.\n";

constexpr const char *kShowUsage =
    "usage: ostrel show [--json [--json-binary]] [--dropped] FILE...\n"
    "Prints each record readably with its file, number, format and version, one\n"
    "blank line between records, then a summary line per file that counts the\n"
    "records and the lines the library dropped.\n";

constexpr const char *kInspectUsage =
    "usage: ostrel inspect [--json [--json-binary]] [--dropped] FILE...\n"
    "Prints each record's trace text (the library's own view of the record) and\n"
    "a summary line per file. Exits 1 when a file is not a known format or a\n"
    "record fails.\n";

constexpr const char *kSmsUsage =
    "usage: ostrel sms decode [--no-smsc] [--json] HEX...\n"
    "       ostrel sms decode [--no-smsc] [--json] -f FILE\n"
    "       ostrel sms encode [--type submit|deliver|report] [--number NUMBER]\n"
    "                         [--text TEXT | --data HEX] [--udh HEX] [--smsc NUMBER]\n"
    "                         [--ref N] [--request-report] [-o FILE]\n"
    "decode: each PDU (hex, with its service centre field; --no-smsc: without\n"
    "one) as the library's trace text, with the service centre, the coding\n"
    "octet and a concatenation's part beneath it; -f reads the hex lines of a\n"
    "file (modem lines such as +CMGL: are passed over). encode: one PDU from\n"
    "the fields given, as a hex line, or as octets to FILE with -o. --udh is\n"
    "the user data header from its length octet on; --ref the message\n"
    "reference (4 bits of it on SMS-SUBMIT); --request-report asks for a\n"
    "status report. A summary line ends each.\n";

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

// The option of `ostrel sms` that sets a text field, or null.
std::string *smsField(ostrel_tool::SmsOptions &sms, std::string_view a) {
  if (a == "--number") return &sms.number;
  if (a == "--text") return &sms.text;
  if (a == "--data") return &sms.data;
  if (a == "--smsc") return &sms.smsc;
  if (a == "--udh") return &sms.udh;
  if (a == "--type") return &sms.type;
  if (a == "-f") return &sms.file;
  return nullptr;
}

// "+0100" -> 60, "-0330" -> -210: how a vCalendar writes an offset.
bool parseZone(std::string_view text, int32_t *minutes) {
  if (text.size() != 5 || (text[0] != '+' && text[0] != '-')) return false;
  for (char c : text.substr(1))
    if (c < '0' || c > '9') return false;
  const int hours = (text[1] - '0') * 10 + (text[2] - '0');
  const int mins = (text[3] - '0') * 10 + (text[4] - '0');
  if (hours > 14 || mins > 59) return false;
  *minutes = (text[0] == '-' ? -1 : 1) * (hours * 60 + mins);
  return true;
}

}  // namespace

std::string convertUsage() {
  return "usage: ostrel convert FILE... --to TARGET [-o OUT] [--local] [--zone +HHMM]\n"
         "Decodes every record and encodes it again as TARGET (case ignored), to OUT\n"
         "or standard output; summaries and lost lines go to standard error. OUT is\n"
         "replaced only when the whole conversion is written, and an input named as\n"
         "OUT is never overwritten when a record of it failed.\n"
         "  --local         calendar times with Z or an offset are read as local\n"
         "                  time (the TZ environment variable's zone)\n"
         "  --zone +HHMM    floating calendar times are taken to be at this offset\n"
         "                  east of UTC, and every time is written in UTC\n"
         "targets:\n" +
         ostrel_tool::targetHelp();
}

int main(int argc, char **argv) {
  if (argc > 1 && ostrel_tool::isMmsCommand(argv[1]))
    return ostrel_tool::runMmsCommand(argv[1], std::vector<std::string>(argv + 2, argv + argc));
  std::vector<std::string_view> args(argv + 1, argv + argc);
  Options opts;
  std::string command;
  bool help = false;
  std::string smsOption;  // the first option of the sms commands given
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
    } else if (a == "--json") {
      opts.out.mode = ostrel_tool::Mode::Json;
    } else if (a == "--json-binary") {
      opts.out.mode = ostrel_tool::Mode::Json;
      opts.out.jsonBinary = true;
    } else if (a == "--dropped") {
      opts.out.listDropped = true;
    } else if (a == "--strict") {
      opts.out.strict = true;
    } else if (a == "--to") {
      const char *v = value();
      if (!v) return usageError("--to needs a target");
      opts.target = v;
    } else if (a == "--request-report") {
      opts.sms.requestReport = true;
      if (smsOption.empty()) smsOption = a;
    } else if (a == "--no-smsc") {
      opts.codec.noSmsc = true;
    } else if (const auto field = smsField(opts.sms, a)) {
      const char *v = value();
      if (!v) return usageError(std::string(a) + " needs a value");
      *field = v;
      if (smsOption.empty()) smsOption = a;
      opts.sms.textGiven = opts.sms.textGiven || a == "--text";
      opts.sms.dataGiven = opts.sms.dataGiven || a == "--data";
    } else if (a == "--ref") {
      const char *v = value();
      char *end = nullptr;
      opts.sms.ref = v ? std::strtol(v, &end, 0) : -1;
      if (!v || *end != '\0') return usageError("--ref needs a number");
      if (smsOption.empty()) smsOption = a;
    } else if (a == "--local") {
      opts.codec.decodeZone = VCAL_ZONE_LOCAL;
    } else if (a == "--zone") {
      const char *v = value();
      if (!v || !parseZone(v, &opts.codec.encodeZone))
        return usageError("--zone needs an offset east of UTC as +HHMM or -HHMM");
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
  if (command != "sms" && !smsOption.empty())
    return usageError(smsOption + " goes with the sms commands");
  if (command == "inspect" || command == "show") {
    if (help) return std::fputs(command == "show" ? kShowUsage : kInspectUsage, stdout), 0;
    if (opts.files.empty()) return usageError(command + " needs at least one FILE");
    if (command == "show" && opts.out.mode != ostrel_tool::Mode::Json)
      opts.out.mode = ostrel_tool::Mode::Show;
    return ostrel_tool::runRead(opts);
  }
  if (command == "convert") {
    if (help) return std::fputs(convertUsage().c_str(), stdout), 0;
    if (opts.files.empty()) return usageError("convert needs at least one FILE");
    if (opts.target.empty())
      return usageError("convert needs --to TARGET (" + ostrel_tool::targetNames() + ")");
    if (opts.out.mode == ostrel_tool::Mode::Json) return usageError("--json goes with show or inspect");
    return ostrel_tool::runConvert(opts);
  }
  if (command == "sms") {
    const std::string sub = opts.files.empty() ? "" : opts.files.front();
    if (help || sub.empty()) return std::fputs(kSmsUsage, help ? stdout : stderr), help ? 0 : 2;
    opts.files.erase(opts.files.begin());
    if (sub == "decode") {
      opts.sms.hex = opts.files;
      if (opts.sms.hex.empty() == opts.sms.file.empty())
        return usageError("sms decode needs hex PDUs or -f FILE, not both");
      return ostrel_tool::runSmsDecode(opts);
    }
    if (sub == "encode") {
      if (!opts.files.empty()) return usageError("sms encode takes options only");
      if (opts.out.mode == ostrel_tool::Mode::Json) return usageError("--json goes with sms decode");
      return ostrel_tool::runSmsEncode(opts);
    }
    return usageError("sms " + sub + ": the sms commands are decode and encode");
  }
  return usageError("unknown command '" + command + "'");
}
