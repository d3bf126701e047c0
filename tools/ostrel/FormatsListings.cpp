// XML listings: a document that is the whole file, claimed by its root
// element; its entries are the records, read through one decoder.
#include <iterator>
#include <memory>
#include <utility>
#include <string>

#include "Describe.h"
#include "Format.h"
#include "LibraryReports.h"
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

// The writers leave most attributes as they stand; the tool's copies are
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

void escapeInPlace(KvoStr *s) { KvoStr_setStr(s, escaped(s).c_str()); }

std::string permsText(int32_t perms) {
  if (perms == -1) return {};
  std::string out;
  for (const auto &[bit, letter] : {std::pair{FLD_PERM_READ, 'R'}, {FLD_PERM_WRITE, 'W'},
                                   {FLD_PERM_DELETE, 'D'}})
    if (perms & bit) out += letter;
  return out.empty() ? "none" : out;
}

std::string sizeText(uint32_t size) { return size == 0 ? "" : std::to_string(size) + " bytes"; }

// One listing family as the tool drives it: its record and six operations,
// how a person reads an entry, and the escaped copy that is written.
struct Calls {
  using Item = CallItem;
  static CallItem *make() { return CallItem_new(nullptr); }
  static void drop(CallItem *c) { CallItem_delete(c); }
  static constexpr auto decBeg = Xcalls_decBeg;
  static constexpr auto decItem = Xcalls_decItem;
  static constexpr auto decEnd = Xcalls_decEnd;
  static constexpr auto encItem = Xcalls_encItem;
  static constexpr auto tracex = CallItem_tracex;
  static const Kind *kind(const CallItem &) { return nullptr; }
  static void describe(const CallItem &c, Description &d) {
    addText(d, "number", "Number", utf8(&c.tel));
    addText(d, "date", "Date", dateText(c.data));
    addText(d, "duration", "Duration", utf8(&c.dur));
    addText(d, "type", "Type", utf8(&c.type));
    if (c.luid != -1) addText(d, "luid", "Device id", std::to_string(c.luid));
  }
  static CallItem *escapedCopy(const CallItem &c) {
    CallItem *copy = CallItem_assign(make(), &c);
    for (KvoStr *s : {&copy->tel, &copy->dur, &copy->type}) escapeInPlace(s);
    return copy;
  }
};

// Media and folder entries share their record.
void describeFile(const FldItem &f, Description &d) {
  addText(d, "name", "Name", utf8(&f.name));
  addText(d, "dsplName", "Display name", utf8(&f.dsplName));
  addText(d, "width", "Width", utf8(&f.width));
  addText(d, "height", "Height", utf8(&f.height));
  addText(d, "orient", "Orientation", utf8(&f.orient));
  addText(d, "dur", "Duration", utf8(&f.dur));
  addText(d, "album", "Album", utf8(&f.album));
  addText(d, "artist", "Artist", utf8(&f.artist));
  addText(d, "title", "Title", utf8(&f.title));
  addText(d, "size", "Size", sizeText(f.size));
  addText(d, "perms", "Permissions", permsText(f.perms));
  addText(d, "type", "Type", utf8(&f.type));
  addText(d, "created", "Created", dateText(f.created));
  addText(d, "modified", "Modified", dateText(f.modified));
  addText(d, "accessed", "Accessed", dateText(f.accessed));
  if (f.luid != 0) addText(d, "luid", "Device id", std::to_string(f.luid));
}

struct FileFamily {
  using Item = FldItem;
  static FldItem *make() { return FldItem_new(nullptr); }
  static void drop(FldItem *f) { FldItem_delete(f); }
  static constexpr auto tracex = FldItem_tracex;
  static void describe(const FldItem &f, Description &d) { describeFile(f, d); }
};

struct Media : FileFamily {
  static constexpr auto decBeg = Xmds_decBeg;
  static constexpr auto decItem = Xmds_decItem;
  static constexpr auto decEnd = Xmds_decEnd;
  static constexpr auto encItem = Xmds_encItem;
  static const Kind *kind(const FldItem &) { return nullptr; }
  static FldItem *escapedCopy(const FldItem &f) {
    FldItem *copy = FldItem_assign(make(), &f);
    for (KvoStr *s : {&copy->width, &copy->height, &copy->orient, &copy->dur, &copy->album,
                      &copy->artist, &copy->title})
      escapeInPlace(s);
    return copy;
  }
};

constexpr Kind kFolder{"folder", "folders"}, kFile{"file", "files"},
    kDevice{"removable device", "removable devices"}, kMessage{"message", "messages"};

struct Folders : FileFamily {
  static constexpr auto decBeg = Xflds_decBeg;
  static constexpr auto decItem = Xflds_decItem;
  static constexpr auto decEnd = Xflds_decEnd;
  static constexpr auto encItem = Xflds_encItem;
  static const Kind *kind(const FldItem &f) {
    if (f.attrs & FLD_ATTR_REMOVABLE) return &kDevice;
    return (f.attrs & FLD_ATTR_FOLDER) ? &kFolder : &kFile;
  }
  // Names are escaped by the writer, and nothing else goes out raw.
  static FldItem *escapedCopy(const FldItem &f) { return FldItem_assign(make(), &f); }
};

struct Messages {
  using Item = XmmsItem;
  static XmmsItem *make() { return XmmsItem_new(); }
  static void drop(XmmsItem *x) { XmmsItem_delete(x); }
  static constexpr auto decBeg = Xmms_decBeg;
  static constexpr auto decItem = Xmms_decItem;
  static constexpr auto decEnd = Xmms_decEnd;
  static constexpr auto encItem = Xmms_encItem;
  static constexpr auto tracex = XmmsItem_tracex;
  static const Kind *kind(const XmmsItem &x) {
    return (x.attrs & XMMS_ATTR_FOLDER) ? &kFolder : &kMessage;
  }
  static void describe(const XmmsItem &x, Description &d) {
    static constexpr const char *kStatus[] = {"unread", "read", nullptr, "unsent", nullptr,
                                              nullptr, nullptr, "sent"};
    addText(d, "name", "Name", utf8(&x.name));
    if (x.attrs & XMMS_ATTR_FOLDER) {
      addText(d, "perms", "Permissions", permsText(x.perms));
      return;
    }
    const int32_t s = x.stat;
    addText(d, "stat", "Status",
            s > 0 && s <= 8 && kStatus[s - 1] ? kStatus[s - 1] : s == 0 ? "" : std::to_string(s));
    addText(d, "size", "Size", sizeText(x.size));
    addText(d, "from", "From", utf8(&x.from));
    addText(d, "to", "To", utf8(&x.to));
    addText(d, "cc", "Cc", utf8(&x.cc));
    addText(d, "bcc", "Bcc", utf8(&x.bcc));
    addText(d, "title", "Subject", utf8(&x.title));
    addText(d, "xptTime", "Time", dateText(x.xptTime));
  }
  static XmmsItem *escapedCopy(const XmmsItem &x) {
    XmmsItem *copy = make();
    KvoStr_setCstr(&copy->name, &x.name);
    copy->attrs = x.attrs;
    copy->stat = x.stat;
    copy->size = x.size;
    copy->perms = x.perms;
    copy->xptTime = x.xptTime;
    KvoStr *to[] = {&copy->from, &copy->to, &copy->cc, &copy->bcc, &copy->title};
    const KvoStr *from[] = {&x.from, &x.to, &x.cc, &x.bcc, &x.title};
    for (size_t i = 0; i < std::size(to); ++i) KvoStr_setStr(to[i], escaped(from[i]).c_str());
    return copy;
  }
};

std::string unknownWords(int n) {
  return n == 0 ? std::string()
                : std::to_string(n) + (n == 1 ? " letter or word" : " letters or words") +
                      " outside the listing's tables, left out";
}

// The entries of one listing, read one after another through one decoder.
template <class F>
class ListingEntry final : public Record {
 public:
  ~ListingEntry() override {
    if (dec_ != nullptr) F::decEnd(dec_);
    F::drop(item_);
  }
  int32_t decode(IStrm *in) override {
    if (dec_ == nullptr) {
      in_ = in;
      start_ = IStrm_tell(in);
      dec_ = F::decBeg(in);
    }
    // A permission letter or status word outside the library's tables is
    // reported and left out: counted here, said beneath the entry.
    const int32_t r = [&] {
      LibraryReports reports;
      const int32_t rc = F::decItem(dec_, item_);
      unknown_ = reports.count();
      return rc;
    }();
    if (r == OSTREL_OK || r == OSTREL_OBJECT) return 1;
    return r == OSTREL_EOS ? 0 : r;
  }
  void trace(IStrm *out) override { F::tracex(item_, out, 1); }
  std::string traceNotes() override {
    return unknown_ == 0 ? std::string() : "# " + unknownWords(unknown_) + "\n";
  }
  const Kind *kind() const override { return F::kind(*item_); }
  Description describe() override {
    Description d;
    F::describe(*item_, d);
    addText(d, "warning", "Warning", unknownWords(unknown_));
    return d;
  }
  int32_t encode(IStrm *out, uint32_t) override {
    typename F::Item *copy = F::escapedCopy(*item_);
    const int32_t rc = F::encItem(out, copy);
    F::drop(copy);
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
  typename F::Item *item_ = F::make();
  XmlListDec *dec_ = nullptr;
  IStrm *in_ = nullptr;
  int64_t start_ = 0;
  int unknown_ = 0;
};

template <class F>
std::unique_ptr<Record> makeEntry() {
  return std::make_unique<ListingEntry<F>>();
}

constexpr char kCallRoot[] = "call-listing";
constexpr char kMediaRoot[] = "media-listing";
constexpr char kFolderRoot[] = "folder-listing";
constexpr char kMmsRoot[] = "mms-listing";
constexpr Target kCallTargets[] = {{"calls", 0, "a call listing", Xcalls_encBeg, Xcalls_encEnd}};
constexpr Target kMediaTargets[] = {{"media", 0, "a media listing", Xmds_encBeg, Xmds_encEnd}};
constexpr Target kFolderTargets[] = {
    {"folders", 0, "an OBEX folder listing", Xflds_encBeg, Xflds_encEnd}};
constexpr Target kMmsTargets[] = {
    {"mms", 0, "an MMS listing (message folders and items)", Xmms_encBeg, Xmms_encEnd}};

}  // namespace

extern const Format kCallFormat{"calls",     "call listing", "call", "calls",
                                claimsRoot<kCallRoot>, makeEntry<Calls>, kCallTargets, false, true,
                                repairXml};
extern const Format kMediaFormat{"media",     "media listing", "media file", "media files",
                                 claimsRoot<kMediaRoot>, makeEntry<Media>, kMediaTargets, false,
                                 true,        repairXml};
extern const Format kFolderFormat{"folders",   "folder listing", "entry", "entries",
                                  claimsRoot<kFolderRoot>, makeEntry<Folders>, kFolderTargets,
                                  false,       true, repairXml};
extern const Format kMmsListFormat{"mmslist",   "MMS listing", "entry", "entries",
                                   claimsRoot<kMmsRoot>, makeEntry<Messages>, kMmsTargets, false,
                                   true,        repairXml};

}  // namespace ostrel_tool
