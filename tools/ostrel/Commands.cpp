// inspect and convert: both walk a file record by record, letting the
// registry say which format each record is.
#include "Commands.h"

#include <cerrno>
#include <cstdio>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <map>
#include <string_view>

#include "Format.h"
#include "tarnex/scratch.hpp"

namespace ostrel_tool {
namespace {

// The library is started for the life of a command.
class Library {
 public:
  explicit Library(uint32_t traceCategories) {
    Ostrel_init();
    if (traceCategories != 0) {
      DbgMng_select(6, traceCategories, 3);
      DbgMng_select(5, traceCategories, 3);
    }
  }
  ~Library() { Ostrel_exit(); }
};

// Reads a whole file, or standard input for "-"; false with errno set when
// it cannot (a directory reads as EISDIR).
bool readAll(const std::string &path, std::string *out) {
  std::FILE *in = stdin;
  if (path != "-") {
    std::error_code ec;
    if (std::filesystem::is_directory(path, ec)) {
      errno = EISDIR;
      return false;
    }
    in = std::fopen(path.c_str(), "rb");
    if (in == nullptr) return false;
  }
  char buf[65536];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, in)) > 0) out->append(buf, n);
  const bool ok = !std::ferror(in);
  if (in != stdin) std::fclose(in);
  return ok;
}

std::string displayName(const std::string &path) { return path == "-" ? "<stdin>" : path; }

void writeStream(std::FILE *to, IStrm *s) {
  const uint8_t *p = MemStrm_data(s);
  if (p != nullptr) std::fwrite(p, 1, static_cast<size_t>(IStrm_size(s)), to);
}

// Walks the records of one file; `onRecord` gets each record read.
// The summary line goes to `summaryTo`: standard error when standard output
// carries converted text.
template <class OnRecord>
bool walkFile(const std::string &path, std::FILE *summaryTo, OnRecord onRecord) {
  std::string data;
  const std::string name = displayName(path);
  if (!readAll(path, &data)) {
    std::fprintf(stderr, "ostrel: %s: cannot read: %s\n", name.c_str(), std::strerror(errno));
    return false;
  }
  if (data.size() > static_cast<size_t>(INT32_MAX)) {
    std::fprintf(stderr, "ostrel: %s: larger than 2 GiB, not read\n", name.c_str());
    return false;
  }
  tarnex::ScratchMemStrm in(0);
  IStrm_write(in, data.data(), static_cast<int32_t>(data.size()));
  IStrm_rewind(in);
  std::map<const Format *, int> counts;
  std::vector<const Format *> order;
  bool ok = true;
  int number = 0;
  for (;;) {
    const size_t pos = static_cast<size_t>(IStrm_tell(in));
    const std::string_view rest = std::string_view(data).substr(pos);
    const Format *format = nullptr;
    size_t offset = 0;
    for (const Format &f : formats()) {
      if (auto at = f.claims(rest)) {
        format = &f;
        offset = pos + *at;
        break;
      }
    }
    if (format == nullptr) {
      if (number == 0) {
        std::fprintf(stderr, "ostrel: %s: not a known format\n", name.c_str());
        ok = false;
      }
      break;
    }
    ++number;
    auto record = format->make();
    const int32_t rc = record->decode(in);
    if (rc == 1) {
      if (counts[format]++ == 0) order.push_back(format);
      if (!onRecord(*format, *record, number, offset)) ok = false;
      continue;
    }
    std::fprintf(stderr, "ostrel: %s: record %d (%.*s) at byte %zu: %.*s (%d)\n", name.c_str(),
                 number, static_cast<int>(format->noun.size()), format->noun.data(), offset,
                 static_cast<int>(resultText(rc).size()), resultText(rc).data(), rc);
    ok = false;
    // Go on behind the line where the failed record began.
    const size_t nextLine = data.find('\n', offset);
    if (rc == 0 || nextLine == std::string::npos) break;
    IStrm_seek(in, static_cast<int64_t>(nextLine + 1), KVO_SEEK_SET);
  }
  std::string summary;
  for (const Format *f : order) {
    const int n = counts[f];
    summary += (summary.empty() ? "" : ", ") + std::to_string(n) + " " +
               std::string(n == 1 ? f->noun : f->plural);
  }
  std::fprintf(summaryTo, "%s: %s\n", name.c_str(),
               summary.empty() ? "no records" : summary.c_str());
  return ok;
}

// "vcard21" -> family "vcard", version 0x201.
bool parseTarget(const std::string &target, std::string *family, uint32_t *version) {
  if (target.size() < 3) return false;
  const char major = target[target.size() - 2], minor = target[target.size() - 1];
  if (major < '1' || major > '9' || minor < '0' || minor > '9') return false;
  *family = target.substr(0, target.size() - 2);
  *version = static_cast<uint32_t>((major - '0') << 8 | (minor - '0'));
  return true;
}

}  // namespace

int runInspect(const Options &opts) {
  Library lib(opts.traceCategories);
  bool ok = true;
  for (const std::string &path : opts.files) {
    const bool fileOk = walkFile(path, stdout, [](const Format &, Record &record, int, size_t) {
      tarnex::ScratchMemStrm text(0);
      record.trace(text);
      writeStream(stdout, text);
      return true;
    });
    ok = ok && fileOk;
  }
  return ok ? 0 : 1;
}

int runConvert(const Options &opts) {
  std::string family;
  uint32_t version = 0;
  if (!parseTarget(opts.target, &family, &version)) {
    std::fprintf(stderr, "ostrel: unknown target '%s' (vcard21, vcard30)\n", opts.target.c_str());
    return 2;
  }
  Library lib(opts.traceCategories);
  tarnex::ScratchMemStrm out(0);
  bool ok = true;
  for (const std::string &path : opts.files) {
    const bool fileOk = walkFile(path, stderr, [&](const Format &f, Record &record, int number, size_t) {
      if (f.family != family) {
        std::fprintf(stderr, "ostrel: %s: record %d: a %.*s cannot be written as %s\n",
                     displayName(path).c_str(), number, static_cast<int>(f.noun.size()),
                     f.noun.data(), opts.target.c_str());
        return false;
      }
      const int32_t rc = record.encode(out, version);
      if (rc < 0)
        std::fprintf(stderr, "ostrel: %s: record %d: %.*s (%d)\n", displayName(path).c_str(),
                     number, static_cast<int>(resultText(rc).size()), resultText(rc).data(), rc);
      return rc >= 0;
    });
    ok = ok && fileOk;
  }
  std::FILE *to = stdout;
  if (!opts.output.empty()) {
    to = std::fopen(opts.output.c_str(), "wb");
    if (to == nullptr) {
      std::fprintf(stderr, "ostrel: %s: cannot write: %s\n", opts.output.c_str(), std::strerror(errno));
      return 1;
    }
  }
  writeStream(to, out);
  if (to != stdout) std::fclose(to);
  return ok ? 0 : 1;
}

}  // namespace ostrel_tool
