// Contacts and contact groups: both travel in vCard frames. A frame that
// names a group (X-GRPV), or gives a group id (X-GRPI) without any name of
// a person (N, FN), is a group card; any other frame is a contact.
#include <array>
#include <memory>

#include "Describe.h"
#include "Format.h"
#include "Scan.h"

namespace ostrel_tool {
namespace {

bool isGroupFrame(std::string_view frame) {
  if (frameHas(frame, "X-GRPV")) return true;
  return frameHas(frame, "X-GRPI") && !frameHas(frame, "N") && !frameHas(frame, "FN");
}

std::optional<size_t> claimsGroup(std::string_view rest) {
  return firstFrame(rest, "VCARD", isGroupFrame);
}
std::optional<size_t> claimsContact(std::string_view rest) {
  return firstFrame(rest, "VCARD", [](std::string_view f) { return !isGroupFrame(f); });
}

// ---- the plain reading of a field's type text --------------------------

struct Letter {
  char code;
  std::string_view word;
};

constexpr Letter kPositions[] = {{'H', "home"}, {'W', "work"}, {'C', "cell"}};
constexpr Letter kDevices[] = {{'F', "fax"},   {'C', "cell"}, {'E', "video"},
                               {'P', "pager"}, {'M', "message"}, {'R', "car"},
                               {'N', "ISDN"},  {'D', "modem"}};
constexpr Letter kExtensions[] = {{'H', "company main"}, {'A', "assistant"}, {'K', "callback"},
                                  {'I', "radio"},        {'Y', "TTY/TDD"},   {'S', "MMS"},
                                  {'G', "telex"},        {'Z', "main"},      {'T', "net"}};
constexpr Letter kServices[] = {{'G', "Google Talk"}, {'A', "AIM"},   {'Y', "Yahoo"},
                                {'S', "Skype"},       {'Q', "QQ"},    {'M', "MSN"},
                                {'I', "ICQ"},         {'J', "Jabber"}, {'N', "NetMeeting"}};

struct Kind {
  std::string_view type;
  std::string_view label;
};

// Whole type texts, and the kinds whose further letters are looked up.
constexpr Kind kKinds[] = {
    {"N", "Name"},          {"OF", "Full name"},     {"K", "Nickname"},   {"B", "Birthday"},
    {"G", "Organisation"},  {"I", "Title"},          {"M", "Note"},       {"P", "Photo"},
    {"S", "Sound"},         {"OL", "Logo"},          {"OR", "Role"},      {"OA", "Agent"},
    {"OI", "UID"},          {"OV", "Revision"},      {"OK", "Key"},       {"OZ", "Time zone"},
    {"XY", "Name reading"}, {"XGV", "Group name"},   {"XGI", "Group id"}, {"XD", "Local id"},
    {"XAN", "Account name"}, {"XAT", "Account type"}, {"XS", "Star"},     {"TX", "Phone"},
    {"T", "Phone"},         {"E", "E-mail"},         {"U", "URL"},        {"A", "Address"},
    {"D", "Messaging"},
};

void addLetter(std::span<const Letter> table, char code, std::vector<std::string> &flags) {
  for (const Letter &l : table)
    if (l.code == code) flags.emplace_back(l.word);
}

// "TWC" -> Phone (work, cell); flags in the order the type text gives them.
void readType(std::string_view type, Field &field) {
  for (const Kind &k : kKinds) {
    const bool whole = k.type == type;
    const bool prefix = (k.type == "T" || k.type == "TX" || k.type == "E" || k.type == "U" ||
                         k.type == "A" || k.type == "D") &&
                        type.substr(0, k.type.size()) == k.type;
    if (!whole && !prefix) continue;
    field.label = k.label;
    const std::string_view more = type.substr(k.type.size());
    if (k.type == "TX") {
      for (char c : more) addLetter(kExtensions, c, field.flags);
    } else if (k.type == "D") {
      for (char c : more) addLetter(kServices, c, field.flags);
    } else if (!more.empty()) {
      addLetter(kPositions, more[0], field.flags);
      if (k.type == "T" && more.size() > 1) addLetter(kDevices, more[1], field.flags);
    }
    return;
  }
  field.label = type;
}

// Text components up to the last non-empty one.
std::vector<std::string> components(const PbField &f) {
  std::vector<std::string> out;
  for (const KvoWcs &v : f.vals) out.push_back(utf8(&v));
  while (!out.empty() && out.back().empty()) out.pop_back();
  return out;
}

Field describeField(const PbField &f) {
  Field field;
  field.type = f.type;
  readType(field.type, field);
  if (f.flags & PB_FLAG_PREF) field.flags.emplace_back("preferred");
  const bool streamed = field.type == "P" || field.type == "S" || field.type == "OL";
  if (!streamed || f.sval.strm == nullptr) {
    field.values = components(f);
    if (field.type == "B" || field.type == "OV")
      for (std::string &v : field.values) v = isoDate(v);
    if (field.type[0] == 'A') {
      // Post box, extended, street, city, region, code, country: a person
      // reads the parts that are there, in that order.
      for (const std::string &v : field.values)
        if (!v.empty()) field.text += (field.text.empty() ? "" : ", ") + v;
    }
    return field;
  }
  const std::string raw = bytes(f.sval.strm);
  if (f.sval.loc != VPI_LOC_INLINE) {
    // A reference, not the content: its text is 16-bit units.
    field.flags.emplace_back(f.sval.loc == VPI_LOC_URL ? "URL"
                             : f.sval.loc == VPI_LOC_CID ? "content id" : "file");
    field.values.push_back(utf8(reinterpret_cast<const KvoWchar *>(raw.data()),
                                static_cast<int32_t>(raw.size() / 2)));
    return field;
  }
  field.binary = true;
  field.data = raw;
  const std::string kind = binaryKind(raw, f.sval.fmt);
  std::string noun = field.label;
  for (char &c : noun) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  field.what = kind.empty() ? noun : kind + " " + noun;
  return field;
}

constexpr Target kVcardTargets[] = {
    {"vcard21", 0x201, "vCard 2.1"},
    {"vcard30", 0x300, "the same lines as vcard21 under VERSION:3.0"},
};

class Contact final : public Record {
 public:
  Contact() { PbItem_new(&item_); }
  ~Contact() override { PbItem_delete(&item_); }
  int32_t decode(IStrm *in) override { return Vcard_decx(in, &item_, &version_, nullptr); }
  void trace(IStrm *out) override { PbItem_tracex(&item_, out, 1); }
  Description describe() override {
    Description d;
    d.version = versionText(version_);
    for (int32_t i = 0; i < item_.size; ++i) {
      const PbField *f = PbItem_at(&item_, i);
      if (f != nullptr && f->type[0] != '\0') d.fields.push_back(describeField(*f));
    }
    return d;
  }
  int32_t encode(IStrm *out, uint32_t version) override {
    return Vcard_encx(out, &item_, version, nullptr, nullptr);
  }

 private:
  PbItem item_;
  uint32_t version_ = 0;
};

class Group final : public Record {
 public:
  Group() { GrpItem_new(&item_); }
  ~Group() override { GrpItem_delete(&item_); }
  int32_t decode(IStrm *in) override { return Vgrp_dec(in, &item_, &version_); }
  void trace(IStrm *out) override { GrpItem_tracex(&item_, out, 1); }
  Description describe() override {
    Description d;
    d.version = versionText(version_);
    addText(d, "X-GRPV", "Group name", utf8(&item_.name));
    addText(d, "X-GRPI", "Group id", utf8(&item_.id));
    addText(d, "X-ACC-NAME", "Account name", utf8(&item_.accName));
    addText(d, "X-ACC-TYPE", "Account type", utf8(&item_.accType));
    if (item_.attr != 0) {
      Field attr;
      attr.type = "X-ATTRS";
      attr.label = "Attributes";
      if (item_.attr & GRP_ATTR_EDIT) attr.flags.emplace_back("editable");
      if (item_.attr & GRP_ATTR_REMOVE) attr.flags.emplace_back("removable");
      if (item_.attr & GRP_ATTR_ANOTHER_NAME) attr.flags.emplace_back("another name");
      attr.values.push_back(std::to_string(item_.attr));
      d.fields.push_back(std::move(attr));
    }
    return d;
  }
  int32_t encode(IStrm *out, uint32_t version) override {
    return Vgrp_encx(out, &item_, version, nullptr);
  }

 private:
  GrpItem item_;
  uint32_t version_ = 0;
};

template <class T>
std::unique_ptr<Record> make() {
  return std::make_unique<T>();
}

}  // namespace

// Groups first: a group card is also a vCard frame.
extern const Format kGroupFormat{"vcard", "vCard", "group", "groups", claimsGroup, make<Group>,
                                 kVcardTargets};
extern const Format kContactFormat{"vcard", "vCard", "contact", "contacts", claimsContact,
                                   make<Contact>, kVcardTargets};

}  // namespace ostrel_tool
