// The library reports through the foundation's check handler what it
// refuses or leaves out of the data it was handed (a PDU's digits, a
// permission letter outside its table). While a LibraryReports lives, those
// reports are collected instead of printed, so the tool can say them with
// the record they belong to; the handler before it comes back at its end.
#ifndef OSTREL_TOOL_LIBRARYREPORTS_H
#define OSTREL_TOOL_LIBRARYREPORTS_H

#include <string>

#include "tarnex/tarnex.h"

namespace ostrel_tool {

class LibraryReports {
 public:
  LibraryReports() { old_ = Tarnex_setAssertHandler(&LibraryReports::keep, this, &oldCtx_); }
  ~LibraryReports() { Tarnex_setAssertHandler(old_, oldCtx_, nullptr); }
  LibraryReports(const LibraryReports &) = delete;
  LibraryReports &operator=(const LibraryReports &) = delete;

  int count() const { return count_; }
  // The first report's text; empty when there was none.
  const std::string &first() const { return first_; }

 private:
  static void keep(void *ctx, const char *text, const char *, int32_t) {
    auto *self = static_cast<LibraryReports *>(ctx);
    if (self->count_++ == 0) self->first_ = text;
  }
  KvoAssertHandler old_ = nullptr;
  void *oldCtx_ = nullptr;
  int count_ = 0;
  std::string first_;
};

}  // namespace ostrel_tool

#endif  // OSTREL_TOOL_LIBRARYREPORTS_H
