// Contacts and contact groups: both travel in vCard frames. A frame that
// names a group (X-GRPV), or gives a group id (X-GRPI) without any name of
// a person (N, FN), is a group card; any other frame is a contact.
#include <memory>

#include "Format.h"
#include "Scan.h"

namespace ostrel_tool {
namespace {

bool isGroupFrame(std::string_view frame) {
  if (frameHas(frame, "X-GRPV")) return true;
  return frameHas(frame, "X-GRPI") && !frameHas(frame, "N") && !frameHas(frame, "FN");
}

std::optional<size_t> claimsGroup(std::string_view rest) {
  const auto frame = nextFrame(rest, "VCARD");
  if (!frame || !isGroupFrame(*frame)) return std::nullopt;
  return static_cast<size_t>(frame->data() - rest.data());
}

std::optional<size_t> claimsContact(std::string_view rest) {
  const auto frame = nextFrame(rest, "VCARD");
  if (!frame) return std::nullopt;
  return static_cast<size_t>(frame->data() - rest.data());
}

class Contact final : public Record {
 public:
  Contact() { PbItem_new(&item_); }
  ~Contact() override { PbItem_delete(&item_); }
  int32_t decode(IStrm *in) override { return Vcard_decx(in, &item_, nullptr, nullptr); }
  void trace(IStrm *out) override { PbItem_tracex(&item_, out, 1); }
  int32_t encode(IStrm *out, uint32_t version) override {
    return Vcard_encx(out, &item_, version, nullptr, nullptr);
  }

 private:
  PbItem item_;
};

class Group final : public Record {
 public:
  Group() { GrpItem_new(&item_); }
  ~Group() override { GrpItem_delete(&item_); }
  int32_t decode(IStrm *in) override { return Vgrp_dec(in, &item_, nullptr); }
  void trace(IStrm *out) override { GrpItem_tracex(&item_, out, 1); }
  int32_t encode(IStrm *out, uint32_t version) override {
    return Vgrp_encx(out, &item_, version, nullptr);
  }

 private:
  GrpItem item_;
};

template <class T>
std::unique_ptr<Record> make() {
  return std::make_unique<T>();
}

}  // namespace

// Groups first: a group card is also a vCard frame.
extern const Format kGroupFormat{"group", "groups", "vcard", claimsGroup, make<Group>};
extern const Format kContactFormat{"contact", "contacts", "vcard", claimsContact, make<Contact>};

}  // namespace ostrel_tool
