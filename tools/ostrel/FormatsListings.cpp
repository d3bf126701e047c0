// XML listings: a document that is the whole file, claimed by its root
// element; its entries are the records, read through one decoder.
#include <memory>
#include <string>

#include "Describe.h"
#include "Format.h"
#include "Repair.h"
#include "tarnex/scratch.hpp"

namespace ostrel_tool {
namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// The end of a DOCTYPE that starts at p: its '>' outside quotes and the
// internal subset.
size_t doctypeEnd(std::string_view t, size_t p) {
  char quote = 0;
  int subset = 0;
  for (; p < t.size(); ++p) {
    const char c = t[p];
    if (quote != 0) {
      if (c == quote) quote = 0;
    } else if (c == '"' || c == '\'') {
      quote = c;
    } else if (c == '[') {
      ++subset;
    } else if (c == ']') {
      --subset;
    } else if (c == '>' && subset <= 0) {
      return p + 1;
    }
  }
  return std::string_view::npos;
}

// The root element's name behind a byte-order mark, the XML declaration,
// a DOCTYPE, comments, processing instructions and blanks; empty when the
// text does not start as an XML document.
std::string_view rootOf(std::string_view t) {
  size_t p = t.substr(0, 3) == "\xEF\xBB\xBF" ? 3 : 0;
  for (;;) {
    while (p < t.size() && isBlank(t[p])) ++p;
    size_t end;
    if (t.compare(p, 4, "<!--") == 0) {
      end = t.find("-->", p + 4);
      if (end != std::string_view::npos) end += 3;
    } else if (t.compare(p, 2, "<?") == 0) {
      end = t.find("?>", p + 2);
      if (end != std::string_view::npos) end += 2;
    } else if (t.compare(p, 9, "<!DOCTYPE") == 0) {
      end = doctypeEnd(t, p + 9);
    } else if (p < t.size() && t[p] == '<') {
      const size_t from = p + 1;
      size_t to = from;
      while (to < t.size() && !isBlank(t[to]) && t[to] != '/' && t[to] != '>') ++to;
      return t.substr(from, to - from);
    } else {
      return {};
    }
    if (end == std::string_view::npos) return {};
    p = end;
  }
}

template <const char *Root>
std::optional<size_t> claimsRoot(std::string_view rest) {
  if (rootOf(rest) == Root) return 0;
  return std::nullopt;
}

// The writer leaves call attributes as they stand; the tool's copy is
// escaped, so that what it writes is well-formed.
std::string escaped(const KvoStr *s) {
  std::string out;
  for (const char *p = s->buf; *p != '\0'; ++p) {
    switch (*p) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      case '\'': out += "&apos;"; break;
      default: out += *p;
    }
  }
  return out;
}

class CallEntry final : public Record {
 public:
  CallEntry() { CallItem_new(&item_); }
  ~CallEntry() override {
    if (dec_ != nullptr) Xcalls_decEnd(dec_);
    CallItem_delete(&item_);
  }
  int32_t decode(IStrm *in) override {
    if (dec_ == nullptr) {
      in_ = in;
      start_ = IStrm_tell(in);
      dec_ = Xcalls_decBeg(in);
    }
    const int32_t r = Xcalls_decItem(dec_, &item_);
    if (r == OSTREL_OK || r == OSTREL_OBJECT) return 1;
    return r == OSTREL_EOS ? 0 : r;
  }
  void trace(IStrm *out) override { CallItem_tracex(&item_, out, 1); }
  Description describe() override {
    Description d;
    addText(d, "number", "Number", utf8(&item_.tel));
    addText(d, "date", "Date", dateText(item_.data));
    addText(d, "duration", "Duration", utf8(&item_.dur));
    addText(d, "type", "Type", utf8(&item_.type));
    if (item_.luid != -1) addText(d, "luid", "Device id", std::to_string(item_.luid));
    return d;
  }
  int32_t encode(IStrm *out, uint32_t) override {
    CallItem copy;
    CallItem_assign(CallItem_new(&copy), &item_);
    KvoStr_setStr(&copy.tel, escaped(&item_.tel).c_str());
    KvoStr_setStr(&copy.dur, escaped(&item_.dur).c_str());
    KvoStr_setStr(&copy.type, escaped(&item_.type).c_str());
    const int32_t rc = Xcalls_encItem(out, &copy);
    CallItem_delete(&copy);
    return rc;
  }
  // The library's decoder says what failed; a bare parse of the same bytes
  // says where.
  std::string failurePlace() override {
    if (in_ == nullptr) return {};
    IStrm_seek(in_, start_, KVO_SEEK_SET);
    XmlPsr *psr = XmlPsr_new();
    std::string place;
    if (XmlPsr_parse(psr, in_) != XML_PSR_DONE)
      place = ", line " + std::to_string(XmlPsr_line(psr)) + ", column " +
              std::to_string(XmlPsr_column(psr));
    XmlPsr_delete(psr);
    return place;
  }

 private:
  CallItem item_;
  XmlListDec *dec_ = nullptr;
  IStrm *in_ = nullptr;
  int64_t start_ = 0;
};

std::unique_ptr<Record> makeCall() { return std::make_unique<CallEntry>(); }

constexpr char kCallRoot[] = "call-listing";
constexpr Target kCallTargets[] = {{"calls", 0, "a call listing", Xcalls_encBeg, Xcalls_encEnd}};

}  // namespace

extern const Format kCallFormat{"calls",     "call listing", "call", "calls",
                                claimsRoot<kCallRoot>, makeCall, kCallTargets, false, true,
                                repairXml};

}  // namespace ostrel_tool
