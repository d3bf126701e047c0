// Calendar entries (vCalendar): a VCALENDAR frame whose first entry is an
// event or a to-do. The library reads one entry an object and merges any
// further entry into the first; the tool shows each entry as a record of
// its own, read alone behind the object's head, and says how many objects
// held them.
#include <memory>

#include "CalendarSplit.h"
#include "Describe.h"
#include "Format.h"
#include "RuleText.h"
#include "Scan.h"
#include "tarnex/scratch.hpp"

namespace ostrel_tool {
namespace {

constexpr Kind kEvent{"event", "events"}, kTodo{"to-do", "to-dos"};

// Frames of events and to-dos are records; frames of journals or free/busy
// lists alone are taken too, so that they are reported for what they are
// rather than called an unknown format.
bool firstEntryKnown(std::string_view frame) {
  return findLine(frame.substr(nextLineStart(frame, 0)), [](std::string_view line) {
           return entryPrefix(line) != EntryWord::None;
         }) != std::string_view::npos;
}

std::optional<size_t> claimsCalendar(std::string_view rest) {
  return firstFrame(rest, "VCALENDAR", firstEntryKnown);
}

// The bytes from the stream's position up to `end`; the position ends at end.
std::string readTo(IStrm *in, int64_t from, int64_t end) {
  std::string text(static_cast<size_t>(end - from), '\0');
  IStrm_seek(in, from, KVO_SEEK_SET);
  const int32_t got = IStrm_read(in, reinterpret_cast<uint8_t *>(text.data()),
                                 static_cast<int32_t>(text.size()));
  text.resize(got < 0 ? 0 : static_cast<size_t>(got));
  IStrm_seek(in, end, KVO_SEEK_SET);
  return text;
}

class Calendar final : public Record {
 public:
  Calendar() { CalItem_new(&item_); }
  ~Calendar() override { CalItem_delete(&item_); }
  void configure(const CodecOptions &codec) override { codec_ = codec; }

  int32_t decode(IStrm *in) override {
    const int64_t from = IStrm_tell(in);
    // A frame of journals alone would make the library search on into the
    // next object: it is refused before the library sees it.
    if (const std::string_view word = firstEntryOf(in); !word.empty()) {
      failure_ = "a " + std::string(word) + " entry, which the calendar record does not hold";
      return 0;
    }
    const int32_t rc = Vcal_decx(in, &item_, &version_, nullptr, codec_.decodeZone);
    if (rc == 1) {
      object_ = readTo(in, from, IStrm_tell(in));
      split_ = splitObject(object_);
    }
    return rc;
  }

  std::vector<Span> entries() override {
    std::vector<Span> spans;
    for (const Entry &e : split_.entries) spans.push_back(e.span);
    return spans;
  }

  int32_t decodeEntry(size_t i) override {
    const Entry &e = split_.entries.at(i);
    if (!e.record) {
      failure_ = "a " + e.word + " entry, which the calendar record does not hold";
      return 0;
    }
    failure_.clear();
    const std::string alone = split_.alone(object_, i);
    tarnex::ScratchStrStrm in(alone);
    return Vcal_decx(in, &item_, &version_, nullptr, codec_.decodeZone);
  }

  std::string failure() const override { return failure_; }
  const Kind *kind() const override { return item_.type == CAL_TYPE_TODO ? &kTodo : &kEvent; }
  void trace(IStrm *out) override { CalItem_tracex(&item_, out, 1); }

  std::string traceNotes() override {
    std::string s;
    if (KvoStr_len(&item_.recurRule) != 0)
      s += "# recurRule reads: " + ruleReading(utf8(&item_.recurRule)) + "\n";
    if (KvoStr_len(&item_.exceptRule) != 0)
      s += "# exceptRule reads: " + ruleReading(utf8(&item_.exceptRule)) + "\n";
    return s;
  }

  Description describe() override {
    Description d;
    d.version = versionText(version_);
    addText(d, "SUMMARY", "Summary", utf8(&item_.summ));
    addText(d, "DESCRIPTION", "Description", utf8(&item_.desc));
    addText(d, "LOCATION", "Location", utf8(&item_.loc.val));
    addText(d, "DTSTART", "Start", dateText(item_.dtStart));
    addText(d, "DTEND", "End", dateText(item_.dtEnd));
    addText(d, "DUE", "Due", dateText(item_.dtDue));
    addText(d, "COMPLETED", "Completed", dateText(item_.dtDone));
    addRule(d, "RRULE", "Repeats", item_.recurRule);
    addRule(d, "EXRULE", "Except", item_.exceptRule);
    addText(d, "DALARM", "Display alarm", dateText(item_.dalarm.runTime));
    addText(d, "AALARM", "Audio alarm", dateText(item_.aalarm.runTime));
    addText(d, "UID", "UID", utf8(&item_.uid));
    return d;
  }

  int32_t encode(IStrm *out, uint32_t version) override {
    return Vcal_encx(out, &item_, version, 0, nullptr, codec_.encodeZone, nullptr);
  }

 private:
  // The rule as written, and beside it how the rule codec reads it.
  static void addRule(Description &d, std::string_view type, std::string_view label,
                      const KvoStr &rule) {
    if (KvoStr_len(&rule) == 0) return;
    Field f;
    f.type = type;
    f.label = label;
    f.values = {utf8(&rule), ruleReading(utf8(&rule))};
    f.text = f.values[0] + " (" + f.values[1] + ")";
    d.fields.push_back(std::move(f));
  }

  CalItem item_;
  uint32_t version_ = 0;
  CodecOptions codec_;
  std::string object_;
  SplitObject split_;
  std::string failure_;
};

std::unique_ptr<Record> makeCalendar() { return std::make_unique<Calendar>(); }

constexpr Target kCalTargets[] = {{"vcal10", 0x100, "vCalendar 1.0"}};

}  // namespace

extern const Format kCalendarFormat{"vcal", "vCalendar", "calendar entry", "calendar entries",
                                    claimsCalendar, makeCalendar, kCalTargets};

}  // namespace ostrel_tool
