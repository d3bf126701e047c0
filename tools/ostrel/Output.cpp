#include "Output.h"

#include <nlohmann/json.hpp>

#include "Describe.h"
#include "tarnex/scratch.hpp"

namespace ostrel_tool {
namespace {

std::string base64(const std::string &data) {
  tarnex::ScratchStrStrm in(data);
  tarnex::ScratchMemStrm out(0);
  b64_enc_strm_from_strm(out, in, 0, 0);
  return bytes(out);
}

std::string joined(const std::vector<std::string> &parts, const char *sep) {
  std::string s;
  for (size_t i = 0; i < parts.size(); ++i) s += (i ? sep : "") + parts[i];
  return s;
}

void printShow(std::FILE *to, const Seen &seen) {
  const Description d = seen.record.describe();
  std::fprintf(to, "%.*s, record %d: %.*s (%.*s%s%s), line %zu\n",
               static_cast<int>(seen.file.size()), seen.file.data(), seen.number,
               static_cast<int>(seen.noun.size()), seen.noun.data(),
               static_cast<int>(seen.format.title.size()), seen.format.title.data(),
               d.version.empty() ? "" : " ", d.version.c_str(), seen.line);
  for (const Field &f : d.fields) {
    std::string value;
    if (f.binary)
      value = f.what + ", " + grouped(f.data.size()) + (f.data.size() == 1 ? " byte" : " bytes");
    else
      value = f.text.empty() ? joined(f.values, "; ") : f.text;
    // A value of several lines goes on under its label.
    std::string shown;
    for (size_t i = 0; i < value.size(); ++i) {
      if (value[i] == '\r' && i + 1 < value.size() && value[i + 1] == '\n') continue;
      shown += value[i];
      if (value[i] == '\n' || value[i] == '\r') shown.back() = '\n', shown += "    ";
    }
    const std::string flags = f.flags.empty() ? "" : " (" + joined(f.flags, ", ") + ")";
    std::fprintf(to, "  %s%s: %s\n", f.label.c_str(), flags.c_str(), shown.c_str());
  }
  std::fputc('\n', to);
}

}  // namespace

std::string grouped(size_t n) {
  std::string digits = std::to_string(n), out;
  for (size_t i = 0; i < digits.size(); ++i) {
    if (i != 0 && (digits.size() - i) % 3 == 0) out += ',';
    out += digits[i];
  }
  return out;
}

std::string jsonOf(const Seen &seen, bool withBinary) {
  const Description d = seen.record.describe();
  nlohmann::ordered_json j;
  j["file"] = seen.file;
  j["record"] = seen.number;
  j["format"] = seen.format.name;
  j["kind"] = seen.noun;
  j["version"] = d.version;
  j["offset"] = seen.offset;
  j["line"] = seen.line;
  auto &fields = j["fields"] = nlohmann::ordered_json::array();
  for (const Field &f : d.fields) {
    nlohmann::ordered_json jf;
    jf["type"] = f.type;
    jf["label"] = f.label;
    jf["flags"] = f.flags;
    if (f.binary) {
      jf["binary"] = {{"what", f.what}, {"size", f.data.size()}};
      if (withBinary) jf["binary"]["base64"] = base64(f.data);
    } else {
      jf["values"] = f.values;
    }
    fields.push_back(std::move(jf));
  }
  auto &dropped = j["dropped"] = nlohmann::ordered_json::array();
  for (const DroppedLine &dl : seen.dropped) dropped.push_back({{"name", dl.name}, {"line", dl.line}});
  // Phones write broken UTF-8 too: such bytes become U+FFFD, not a failure.
  return j.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

void printRecord(std::FILE *to, const Seen &seen, const OutputOptions &opts) {
  switch (opts.mode) {
    case Mode::Json: {
      const std::string line = jsonOf(seen, opts.jsonBinary);
      std::fprintf(to, "%s\n", line.c_str());
      break;
    }
    case Mode::Show:
      printShow(to, seen);
      break;
    case Mode::Trace: {
      tarnex::ScratchMemStrm text(0);
      seen.record.trace(text);
      const std::string t = bytes(text) + seen.record.traceNotes();
      std::fwrite(t.data(), 1, t.size(), to);
      break;
    }
  }
}

}  // namespace ostrel_tool
