#include "Walk.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <string_view>

#include "Dropped.h"
#include "Scan.h"
#include "tarnex/scratch.hpp"

namespace ostrel_tool {
namespace {

// A file of many broken records gets this many messages, then a count.
constexpr int kMaxFailureMessages = 20;

// Counts lines forward from the last place asked for, so a walk over a file
// counts each byte once.
class LineCounter {
 public:
  explicit LineCounter(std::string_view text) : text_(text) {}
  size_t at(size_t offset) {
    if (offset < pos_) pos_ = 0, line_ = 1;
    offset = std::min(offset, text_.size());
    while (pos_ < offset) {
      const size_t next = nextLineStart(text_, pos_);
      if (next > offset) break;
      pos_ = next;
      ++line_;
    }
    return line_;
  }

 private:
  std::string_view text_;
  size_t pos_ = 0, line_ = 1;
};

// Where each format's next record begins, asked again only once the walk
// has passed it: without this a format absent from a large file would scan
// the rest of it for every record.
class Claims {
 public:
  explicit Claims(std::string_view data) : data_(data), next_(formats().size(), kUnknown) {}

  // A format none of whose records can be read any more.
  void drop(const Format *format) { next_[static_cast<size_t>(format - formats().data())] = kNone; }

  // The format whose record begins first at or after pos, and where.
  const Format *first(size_t pos, size_t *at) {
    const Format *best = nullptr;
    for (size_t i = 0; i < formats().size(); ++i) {
      if (next_[i] != kNone && (next_[i] == kUnknown || next_[i] < pos)) {
        const Format &f = formats()[i];
        std::optional<size_t> found;
        if (!f.wholeFile || pos == 0) found = f.claims(data_.substr(pos));
        if (found && f.wholeFile && *found != 0) found.reset();  // only at the start
        next_[i] = found ? pos + *found : kNone;
      }
      if (next_[i] != kNone && (best == nullptr || next_[i] < *at)) {
        best = &formats()[i];
        *at = next_[i];
      }
    }
    return best;
  }

 private:
  static constexpr size_t kUnknown = static_cast<size_t>(-1), kNone = static_cast<size_t>(-2);
  std::string_view data_;
  std::vector<size_t> next_;
};

// The line of each dropped property, searched in order through the lines of
// its record; "item1.EMAIL" is found as written.
std::vector<DroppedLine> placeDropped(std::string_view data, size_t from, size_t to,
                                      std::vector<std::string> names, LineCounter &lines) {
  std::vector<DroppedLine> out;
  size_t pos = from;
  for (std::string &name : names) {
    size_t found = std::string_view::npos;
    // After a name that was not found again (one folded inside itself), the
    // later ones are not searched: each search would run to the record's end.
    for (size_t p = pos; p < to; p = nextLineStart(data, p)) {
      if (isProperty(data.substr(p, to - p), name)) {
        found = p;
        break;
      }
    }
    if (found == std::string_view::npos) {
      out.push_back({std::move(name), 0});
      pos = to;
      continue;
    }
    out.push_back({std::move(name), lines.at(found)});
    pos = nextLineStart(data, found);
  }
  return out;
}

// Printable head of a file for a refusal: its first line, cut and escaped.
std::string headOf(std::string_view data) {
  std::string out;
  for (size_t i = 0; i < data.size() && i < 40; ++i) {
    const auto c = static_cast<unsigned char>(data[i]);
    if (c == '\r' || c == '\n') break;
    if (c >= 0x20 && c < 0x7F) {
      out += static_cast<char>(c);
    } else {
      char hex[8];
      std::snprintf(hex, sizeof hex, "\\x%02X", c);
      out += hex;
    }
  }
  return out;
}

void reportUnknown(const Input &in) {
  if (in.data.empty()) {
    std::fprintf(stderr, "ostrel: %s: empty\n", in.name.c_str());
    return;
  }
  std::string_view text(in.data);
  if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);
  for (const Unread &u : unreadFormats()) {
    if (startsWithNoCase(text, u.signature)) {
      std::fprintf(stderr, "ostrel: %s: starts with %s: %s, a format this build does not read\n",
                   in.name.c_str(), headOf(text).c_str(), std::string(u.name).c_str());
      return;
    }
  }
  // "vCard contacts and groups": the nouns of each title together.
  std::vector<std::pair<std::string_view, std::string>> titles;
  for (const Format &f : formats()) {
    auto t = std::find_if(titles.begin(), titles.end(), [&](auto &p) { return p.first == f.title; });
    if (t == titles.end())
      titles.emplace_back(f.title, std::string(f.plural));
    else
      t->second += " and " + std::string(f.plural);
  }
  std::string known;
  for (const auto &[title, nouns] : titles)
    known += (known.empty() ? "" : ", ") + std::string(title) + " " + nouns;
  std::fprintf(stderr, "ostrel: %s: not a known format (this build reads %s); it starts with \"%s\"\n",
               in.name.c_str(), known.c_str(), headOf(text).c_str());
}

}  // namespace

size_t lineOf(std::string_view text, size_t offset) { return LineCounter(text).at(offset); }

std::string failureText(const Record &record, int32_t rc, std::string_view data, size_t from,
                        size_t to) {
  // A refusal of the tool's own (no record, but words) has no code.
  std::string why;
  const std::string detail = record.failure();
  const bool withCode = rc != OSTREL_OK || detail.empty();
  if (withCode) why = std::string(resultText(rc));
  if (rc == OSTREL_MALFORMED && to > from) why += " at line " + std::to_string(lineOf(data, to - 1));
  if (!detail.empty()) why += (why.empty() ? "" : ": ") + detail;
  if (withCode) why += " (" + std::to_string(rc) + ")";
  return why;
}

namespace {

// The repairs of the format that claims the file from its start (a listing
// is the whole file), each said on standard error.
// Nothing when no listing claims the file: the bytes are read as they are,
// not copied.
std::optional<std::string> repaired(const Input &in, size_t start) {
  for (const Format &f : formats()) {
    if (!f.listing || f.repair == nullptr || !f.claims(std::string_view(in.data).substr(start)))
      continue;
    std::vector<std::string> reports;
    std::string text = f.repair(in.data, &reports);
    for (const std::string &r : reports)
      std::fprintf(stderr, "ostrel: %s: %s (--strict leaves it)\n", in.name.c_str(), r.c_str());
    return text;
  }
  return std::nullopt;
}

// A listing: one record object reads every entry; a failure ends it, for
// the parser's failures stick.
// The record's kind, or its format's noun when it has no kinds.
Kind kindOf(const Format &format, const Record &record) {
  return record.kind() ? *record.kind() : Kind{format.noun, format.plural};
}

void countRecord(WalkResult &result, const Format &format, const Kind &kind) {
  auto count = std::find_if(result.counts.begin(), result.counts.end(), [&](const KindCount &c) {
    return c.format == &format && c.kind.noun == kind.noun;
  });
  if (count == result.counts.end()) count = result.counts.insert(count, {&format, kind, 0});
  ++count->records;
}

void walkWhole(const Format &format, const Input &in, size_t at, size_t line, IStrm *stream,
               const OnRecord &onRecord, int *number, WalkResult *result) {
  auto record = format.make();
  IStrm_seek(stream, static_cast<int64_t>(at), KVO_SEEK_SET);
  int32_t rc;
  while ((rc = record->decode(stream)) == 1) {
    const Kind kind = kindOf(format, *record);
    countRecord(*result, format, kind);
    Seen seen{format, *record, kind.noun, in.name, ++*number, at, line, {}};
    if (!onRecord(seen)) result->ok = false;
  }
  if (rc == 0) return;
  result->ok = false;
  ++result->failed;
  const char *words = XmlPsr_codeText(rc);
  const std::string why = words != nullptr ? words : std::string(resultText(rc));
  std::fprintf(stderr, "ostrel: %s: %.*s %d: %s%s (%d)\n", in.name.c_str(),
               static_cast<int>(format.noun.size()), format.noun.data(), *number + 1, why.c_str(),
               record->failurePlace().c_str(), rc);
}

}  // namespace

WalkResult walk(const Input &in, DroppedLines &dropped, const OnRecord &onRecord,
                const CodecOptions &codec, const Format *only, bool strict) {
  WalkResult result;
  const size_t markLen = std::string_view(in.data).substr(0, 3) == "\xEF\xBB\xBF" ? 3 : 0;
  const std::optional<std::string> text = strict ? std::nullopt : repaired(in, markLen);
  const std::string_view data(text ? *text : in.data);
  tarnex::ScratchStrStrm stream(data);
  Claims claims(data);
  if (only != nullptr)
    for (const Format &f : formats())
      if (f.name != only->name) claims.drop(&f);
  LineCounter lines(data);
  // A UTF-8 mark belongs to no record; the scanners look behind it.
  size_t pos = markLen;
  int number = 0;
  bool listing = false;
  size_t at = 0;

  // A record read: [from, to) holds the lines its dropped names are on.
  auto accept = [&](const Format &format, Record &record, size_t from, size_t to) {
    const Kind kind = kindOf(format, record);
    Seen seen{format, record, kind.noun, in.name, number, from, lines.at(from),
              placeDropped(data, from, to, dropped.take(), lines)};
    for (const DroppedLine &d : seen.dropped) ++result.droppedByName[d.name];
    result.droppedLines += static_cast<int>(seen.dropped.size());
    countRecord(result, format, kind);
    if (std::string subtype = record.subtype(); !subtype.empty()) {
      auto &subtypes = result.subtypes[&format];
      if (std::find(subtypes.begin(), subtypes.end(), subtype) == subtypes.end())
        subtypes.push_back(subtype);
    }
    if (!onRecord(seen)) result.ok = false;
  };
  auto reject = [&](const Format &format, const Record &record, int32_t rc, size_t from,
                    size_t to) {
    result.ok = false;
    if (++result.failed > kMaxFailureMessages) return;
    const std::string why = failureText(record, rc, data, from, to);
    std::fprintf(stderr, "ostrel: %s: record %d (%.*s) at byte %zu, line %zu: %s\n",
                 in.name.c_str(), number, static_cast<int>(format.noun.size()), format.noun.data(),
                 from, lines.at(from), why.c_str());
  };

  while (const Format *format = claims.first(pos, &at)) {
    if (format->listing) {
      listing = true;
      walkWhole(*format, in, at, lines.at(at), stream, onRecord, &number, &result);
      break;
    }
    ++number;
    auto record = format->make();
    record->configure(codec);
    IStrm_seek(stream, static_cast<int64_t>(at), KVO_SEEK_SET);
    dropped.take();
    const int32_t rc = record->decode(stream);
    const size_t end = static_cast<size_t>(IStrm_tell(stream));
    if (rc == 1 && end > at) {
      ++result.objects[format];
      const std::vector<Span> entries = record->entries();
      if (entries.size() <= 1) {
        accept(*format, *record, at, end);
      } else {
        // The merged reading is set aside: each entry is read again alone,
        // its dropped lines looked for in its own lines.
        for (size_t i = 0; i < entries.size(); ++i) {
          if (i != 0) ++number;
          dropped.take();
          const size_t from = at + entries[i].begin, to = at + entries[i].end;
          const int32_t entryRc = record->decodeEntry(i);
          if (entryRc == 1)
            accept(*format, *record, from, to);
          else
            reject(*format, *record, entryRc, from, to);
        }
      }
      pos = format->wholeFile ? data.size() : end;
      continue;
    }
    reject(*format, *record, rc, at, end);
    // A record cut by the end of the data had no END line behind it, and so
    // has none of its kind after it: trying each of them would read to the
    // end again and again.
    if (rc == OSTREL_OK && record->failure().empty()) {
      claims.drop(format);
      if (result.failed <= kMaxFailureMessages)
        std::fprintf(stderr, "ostrel: %s: no end line follows, so no later %.*s is looked for\n",
                     in.name.c_str(), static_cast<int>(format->noun.size()), format->noun.data());
    }
    // Go on at the next record any format finds behind this one's first
    // line; a file that is one record has no other.
    pos = format->wholeFile ? data.size() : nextLineStart(data, at);
  }
  if (result.failed > kMaxFailureMessages)
    std::fprintf(stderr, "ostrel: %s: %d more failed records not listed\n", in.name.c_str(),
                 result.failed - kMaxFailureMessages);
  if (number == 0 && !listing) {
    reportUnknown(in);
    result.ok = false;
  }
  return result;
}

std::string summaryOf(const WalkResult &r) {
  std::string s;
  // Kinds of one format together, then how many objects held them when
  // the objects were split.
  std::vector<const Format *> order;
  for (const KindCount &c : r.counts)
    if (std::find(order.begin(), order.end(), c.format) == order.end()) order.push_back(c.format);
  for (const Format *format : order) {
    int records = 0;
    for (const KindCount &c : r.counts) {
      if (c.format != format) continue;
      records += c.records;
      s += (s.empty() ? "" : ", ") + std::to_string(c.records) + " " +
           std::string(c.records == 1 ? c.kind.noun : c.kind.plural);
    }
    const auto objects = r.objects.find(format);
    if (objects != r.objects.end() && objects->second != records)
      s += " from " + std::to_string(objects->second) +
           (objects->second == 1 ? " object" : " objects");
    if (const auto subtypes = r.subtypes.find(format); subtypes != r.subtypes.end()) {
      std::string list;
      for (const std::string &t : subtypes->second) list += (list.empty() ? "" : ", ") + t;
      s += " (" + list + ")";
    }
  }
  if (s.empty()) s = "no records";
  if (r.failed != 0)
    s += "; " + std::to_string(r.failed) + (r.failed == 1 ? " record" : " records") + " failed";
  if (r.droppedLines != 0) {
    std::vector<std::pair<std::string, int>> names(r.droppedByName.begin(), r.droppedByName.end());
    std::stable_sort(names.begin(), names.end(),
                     [](const auto &a, const auto &b) { return a.second > b.second; });
    s += "; " + std::to_string(r.droppedLines) +
         (r.droppedLines == 1 ? " line dropped (" : " lines dropped (");
    for (size_t i = 0; i < names.size() && i < 5; ++i)
      s += (i ? ", " : "") + names[i].first + " " + std::to_string(names[i].second);
    if (names.size() > 5) s += ", ...";
    s += ")";
  }
  return s;
}

}  // namespace ostrel_tool
