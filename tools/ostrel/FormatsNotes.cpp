// Notes (vNote) and bookmarks (vBookmark): one frame each.
#include <memory>

#include "Describe.h"
#include "Format.h"
#include "Scan.h"
#include "tarnex/scratch.hpp"

namespace ostrel_tool {
namespace {

template <const char *Word>
std::optional<size_t> claimsFrame(std::string_view rest) {
  return firstFrame(rest, Word, [](std::string_view) { return true; });
}

class Note final : public Record {
 public:
  Note() { NoteItem_new(&item_); }
  ~Note() override { NoteItem_delete(&item_); }
  int32_t decode(IStrm *in) override { return Vnote_dec(in, &item_, &version_); }
  void trace(IStrm *out) override { NoteItem_tracex(&item_, out, 1); }
  Description describe() override {
    Description d;
    d.version = versionText(version_);
    addText(d, "SUMMARY", "Summary", utf8(&item_.summ));
    addText(d, "BODY", "Body", utf8(&item_.body));
    addText(d, "CATEGORIES", "Categories", utf8(&item_.cate));
    addText(d, "CLASS", "Class", utf8(&item_.cls));
    addText(d, "DCREATED", "Created", dateText(item_.created));
    addText(d, "LAST-MODIFIED", "Modified", dateText(item_.modified));
    return d;
  }
  int32_t encode(IStrm *out, uint32_t version) override { return Vnote_enc(out, &item_, version); }

 private:
  NoteItem item_;
  uint32_t version_ = 0;
};

class Bookmark final : public Record {
 public:
  Bookmark() { BkmItem_new(&item_); }
  ~Bookmark() override { BkmItem_delete(&item_); }
  int32_t decode(IStrm *in) override { return Vbkm_dec(in, &item_, &version_); }
  void trace(IStrm *out) override { BkmItem_tracex(&item_, out, 1); }
  Description describe() override {
    Description d;
    d.version = versionText(version_);
    addText(d, "TITLE", "Title", utf8(&item_.title));
    addText(d, "URL", "URL", utf8(&item_.url));
    addText(d, "LAST-MODIFIED", "Modified", dateText(item_.modified));
    return d;
  }
  int32_t encode(IStrm *out, uint32_t version) override { return Vbkm_enc(out, &item_, version); }

 private:
  BkmItem item_;
  uint32_t version_ = 0;
};

template <class T>
std::unique_ptr<Record> make() {
  return std::make_unique<T>();
}

constexpr char kVnote[] = "VNOTE";
constexpr char kVbkm[] = "VBKM";
constexpr Target kNoteTargets[] = {{"vnote11", 0x101, "vNote 1.1"}};
constexpr Target kBkmTargets[] = {{"vbkm11", 0x101, "vBookmark 1.1"}};

}  // namespace

extern const Format kNoteFormat{"vnote", "vNote", "note", "notes", claimsFrame<kVnote>, make<Note>,
                                kNoteTargets};
extern const Format kBookmarkFormat{"vbkm", "vBookmark", "bookmark", "bookmarks",
                                    claimsFrame<kVbkm>, make<Bookmark>, kBkmTargets};

}  // namespace ostrel_tool
