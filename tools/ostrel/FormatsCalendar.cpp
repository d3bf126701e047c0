// Calendar entries (vCalendar): a VCALENDAR frame whose first entry is an
// event or a to-do.
#include <memory>

#include "Describe.h"
#include "Format.h"
#include "Scan.h"

namespace ostrel_tool {
namespace {

// The first entry BEGIN line of a frame decides; a frame of journals alone
// is no calendar record.
bool firstEntryIsRecord(std::string_view frame) {
  bool record = false;
  const size_t at = findLine(frame.substr(nextLineStart(frame, 0)), [&](std::string_view line) {
    for (std::string_view entry : {"BEGIN:VEVENT", "BEGIN:VTODO", "BEGIN:VJOURNAL",
                                   "BEGIN:VFREEBUSY"})
      if (startsWithNoCase(line, entry)) {
        record = entry == "BEGIN:VEVENT" || entry == "BEGIN:VTODO";
        return true;
      }
    return false;
  });
  return at != std::string_view::npos && record;
}

std::optional<size_t> claimsCalendar(std::string_view rest) {
  return firstFrame(rest, "VCALENDAR", firstEntryIsRecord);
}

class Calendar final : public Record {
 public:
  Calendar() { CalItem_new(&item_); }
  ~Calendar() override { CalItem_delete(&item_); }
  int32_t decode(IStrm *in) override { return Vcal_dec(in, &item_, &version_); }
  void trace(IStrm *out) override { CalItem_tracex(&item_, out, 1); }
  Description describe() override {
    Description d;
    d.version = versionText(version_);
    addText(d, "TYPE", "Kind", item_.type == CAL_TYPE_TODO ? "to-do" : "event");
    addText(d, "SUMMARY", "Summary", utf8(&item_.summ));
    addText(d, "DESCRIPTION", "Description", utf8(&item_.desc));
    addText(d, "LOCATION", "Location", utf8(&item_.loc.val));
    addText(d, "DTSTART", "Start", dateText(item_.dtStart));
    addText(d, "DTEND", "End", dateText(item_.dtEnd));
    addText(d, "DUE", "Due", dateText(item_.dtDue));
    addText(d, "COMPLETED", "Completed", dateText(item_.dtDone));
    addText(d, "RRULE", "Repeats", utf8(&item_.recurRule));
    addText(d, "DALARM", "Display alarm", dateText(item_.dalarm.runTime));
    addText(d, "AALARM", "Audio alarm", dateText(item_.aalarm.runTime));
    addText(d, "UID", "UID", utf8(&item_.uid));
    return d;
  }
  int32_t encode(IStrm *out, uint32_t version) override { return Vcal_enc(out, &item_, version); }

 private:
  CalItem item_;
  uint32_t version_ = 0;
};

std::unique_ptr<Record> makeCalendar() { return std::make_unique<Calendar>(); }

constexpr Target kCalTargets[] = {{"vcal10", 0x100, "vCalendar 1.0"}};

}  // namespace

extern const Format kCalendarFormat{"vcal", "vCalendar", "calendar entry", "calendar entries",
                                    claimsCalendar, makeCalendar, kCalTargets};

}  // namespace ostrel_tool
