// The formats the tool knows, in the order that settles a tie.
#include <array>

#include "Format.h"

namespace ostrel_tool {

extern const Format kGroupFormat;
extern const Format kContactFormat;
extern const Format kNoteFormat;
extern const Format kBookmarkFormat;
extern const Format kCalendarFormat;
extern const Format kPduFormat;
extern const Format kVsmsFormat;
extern const Format kVmsgFormat;
extern const Format kMmsFormat;
extern const Format kCallFormat;
extern const Format kMediaFormat;
extern const Format kFolderFormat;
extern const Format kMmsListFormat;

std::span<const Format> formats() {
  static const std::array<Format, 13> kAll{
      kGroupFormat, kContactFormat, kNoteFormat, kBookmarkFormat, kCalendarFormat,
      kPduFormat,   kVsmsFormat,    kVmsgFormat, kMmsFormat,      kCallFormat,
      kMediaFormat, kFolderFormat,  kMmsListFormat};
  return kAll;
}

// Phone formats whose readers are still to come: a file that starts so is
// named for what it is instead of being called unknown.
std::span<const Unread> unreadFormats() {
  static constexpr std::array<Unread, 1> kAll{{
      {"<?xml", "XML listing"},
  }};
  return kAll;
}

std::string_view resultText(int32_t code) {
  switch (code) {
    case OSTREL_OBJECT: return "record read";
    case OSTREL_OK: return "no record (cut short or missing its end line)";
    case OSTREL_PARTS: return "bad part count or end of stream";
    case OSTREL_NOT_FOUND: return "medium or type not found";
    case OSTREL_SHORT: return "header string ends early";
    case OSTREL_NO_FILE: return "file cannot be opened";
    case OSTREL_CANT: return "value cannot be handled";
    case OSTREL_BAD_KIND: return "record of no known kind";
    case OSTREL_EOS: return "end of stream";
    case OSTREL_MALFORMED: return "malformed property line";
    default: return "unknown result";
  }
}

}  // namespace ostrel_tool
