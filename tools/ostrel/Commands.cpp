// inspect, show and convert: each walks its files record by record and
// differs only in what it does with a record.
#include "Commands.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <set>
#include <string_view>

#include "Describe.h"
#include "Dropped.h"
#include "Format.h"
#include "Scan.h"
#include "tarnex/scratch.hpp"

namespace ostrel_tool {
namespace {

// The library is started for the life of a command, with the account of
// dropped lines listening.
class Library {
 public:
  explicit Library(uint32_t traceCategories) : started_(Ostrel_init()), dropped(traceCategories) {}
  ~Library() { Ostrel_exit(); }

 private:
  int32_t started_;

 public:
  DroppedLines dropped;
};

// Walks one file: the note on its bytes, the records, --dropped lines and
// the summary line (to `summaryTo`).
bool walkFile(Library &lib, const std::string &path, std::FILE *summaryTo, const Options &opts,
              const OnRecord &onRecord) {
  const OutputOptions &out = opts.out;
  Input in;
  if (!loadInput(path, &in)) return false;
  if (!in.note.empty()) std::fprintf(stderr, "ostrel: %s: %s\n", in.name.c_str(), in.note.c_str());
  const WalkResult r = walk(in, lib.dropped, [&](const Seen &seen) {
    const bool ok = onRecord(seen);
    if (out.listDropped)
      for (const DroppedLine &d : seen.dropped)
        std::fprintf(summaryTo, "%s: record %d, line %zu: %s dropped\n", in.name.c_str(),
                     seen.number, d.line, d.name.c_str());
    return ok;
  }, opts.codec, opts.only, opts.out.strict);
  std::fprintf(summaryTo, "%s: %s\n", in.name.c_str(), summaryOf(r).c_str());
  return r.ok;
}

const Target *findTarget(std::string_view name) {
  for (const Format &f : formats())
    for (const Target &t : f.targets)
      if (t.name.size() == name.size() && startsWithNoCase(name, t.name)) return &t;
  return nullptr;
}

// The format's own target of that name: formats may share a target name
// (each writes its own records in that format) with their own version words.
const Target *offers(const Format &f, const Target &target) {
  for (const Target &t : f.targets)
    if (t.name == target.name) return &t;
  return nullptr;
}

bool sameFile(const std::string &a, const std::string &b) {
  std::error_code ec;
  return std::filesystem::equivalent(a, b, ec) && !ec;
}

}  // namespace

// Writes through a file beside the target and renames it, so a failed write
// leaves the old file as it was.
bool writeFile(const std::string &path, const std::string &data) {
  const std::string tmp = path + ".ostrel-tmp";
  std::FILE *to = std::fopen(tmp.c_str(), "wb");
  if (to == nullptr) {
    std::fprintf(stderr, "ostrel: %s: cannot write: %s\n", path.c_str(), std::strerror(errno));
    return false;
  }
  const bool ok = std::fwrite(data.data(), 1, data.size(), to) == data.size();
  if (std::fclose(to) != 0 || !ok || std::rename(tmp.c_str(), path.c_str()) != 0) {
    std::fprintf(stderr, "ostrel: %s: cannot write: %s\n", path.c_str(), std::strerror(errno));
    std::remove(tmp.c_str());
    return false;
  }
  return true;
}

std::string targetNames() {
  std::string s;
  std::set<std::string_view> seen;
  for (const Format &f : formats())
    for (const Target &t : f.targets)
      if (seen.insert(t.name).second) s += (s.empty() ? "" : ", ") + std::string(t.name);
  return s;
}

std::string targetHelp() {
  std::string s;
  std::set<std::string_view> seen;
  for (const Format &f : formats())
    for (const Target &t : f.targets)
      if (seen.insert(t.name).second) {
        std::string name(t.name);
        name.resize(std::max<size_t>(name.size(), 10), ' ');
        s += "  " + name + " " + std::string(t.writes) + "\n";
      }
  return s;
}

int runRead(const Options &opts) {
  Library lib(opts.traceCategories);
  // JSON Lines keep standard output to the records; the summaries go aside.
  std::FILE *summaryTo = opts.out.mode == Mode::Json ? stderr : stdout;
  bool ok = true;
  for (const std::string &path : opts.files) {
    const bool fileOk = walkFile(lib, path, summaryTo, opts, [&](const Seen &seen) {
      printRecord(stdout, seen, opts.out);
      return true;
    });
    ok = ok && fileOk;
  }
  return ok ? 0 : 1;
}

int runConvert(const Options &opts) {
  const Target *target = findTarget(opts.target);
  if (target == nullptr) {
    std::fprintf(stderr, "ostrel: unknown target '%s'; the targets are: %s\nTry 'ostrel convert --help'.\n",
                 opts.target.c_str(), targetNames().c_str());
    return 2;
  }
  Library lib(opts.traceCategories);
  tarnex::ScratchMemStrm out(0);
  bool ok = true;
  bool outputIsInput = false;
  if (target->head != nullptr) target->head(out);
  for (const std::string &path : opts.files) {
    if (!opts.output.empty() && path != "-" && sameFile(path, opts.output)) outputIsInput = true;
    const std::string name = path == "-" ? "<stdin>" : path;
    const bool fileOk = walkFile(lib, path, stderr, opts, [&](const Seen &seen) {
      const Target *own = offers(seen.format, *target);
      if (own == nullptr) {
        const bool vowel = !seen.noun.empty() && std::strchr("aeiou", seen.noun[0]) != nullptr;
        std::fprintf(stderr, "ostrel: %s: record %d at line %zu: %s %.*s cannot be written as %s\n",
                     name.c_str(), seen.number, seen.line, vowel ? "an" : "a",
                     static_cast<int>(seen.noun.size()), seen.noun.data(),
                     std::string(target->name).c_str());
        return false;
      }
      const int32_t rc = seen.record.encode(out, own->version);
      if (rc < 0)
        std::fprintf(stderr, "ostrel: %s: record %d: %.*s (%d)\n", name.c_str(), seen.number,
                     static_cast<int>(resultText(rc).size()), resultText(rc).data(), rc);
      return rc >= 0;
    });
    ok = ok && fileOk;
  }
  if (target->closing != nullptr) target->closing(out);
  const std::string text = bytes(out);
  if (opts.output.empty()) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    return ok ? 0 : 1;
  }
  if (outputIsInput && !ok) {
    std::fprintf(stderr, "ostrel: %s: not overwritten: records of it failed and would be lost\n",
                 opts.output.c_str());
    return 1;
  }
  if (!writeFile(opts.output, text)) return 1;
  return ok ? 0 : 1;
}

}  // namespace ostrel_tool
