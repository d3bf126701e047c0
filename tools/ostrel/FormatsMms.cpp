// Binary multimedia messages: one message a file, recognised by its first
// field (X-Mms-Message-Type, 0x8C) and a defined message type. The header
// is read alone first (where it stopped is worth saying), then the whole
// message: a type that has no body (a notification, a report, a
// confirmation) is shown as its header, not as a failure.
#include <cstdio>
#include <cstring>
#include <memory>
#include <set>

#include "Describe.h"
#include "Format.h"
#include "tarnex/scratch.hpp"

namespace ostrel_tool {
namespace {

constexpr const char *kTypeNames[] = {
    "m-send-req",        "m-send-conf",        "m-notification-ind", "m-notifyresp-ind",
    "m-retrieve-conf",   "m-acknowledge-ind",  "m-delivery-ind",     "m-read-rec-ind",
    "m-read-orig-ind",   "m-forward-req",      "m-forward-conf",     "m-mbox-store-req",
    "m-mbox-store-conf", "m-mbox-view-req",    "m-mbox-view-conf",   "m-mbox-upload-req",
    "m-mbox-upload-conf", "m-mbox-delete-req", "m-mbox-delete-conf", "m-mbox-descr",
    "m-delete-req",      "m-delete-conf",      "m-cancel-req",       "m-cancel-conf"};
constexpr uint8_t kFirstType = 0x80;
constexpr size_t kTypes = std::size(kTypeNames);

std::optional<size_t> claimsMessage(std::string_view rest) {
  if (rest.size() < 2 || rest[0] != '\x8C') return std::nullopt;
  const auto type = static_cast<uint8_t>(rest[1]);
  if (type < kFirstType || type >= kFirstType + kTypes) return std::nullopt;
  return 0;
}

std::string typeName(uint8_t type) {
  if (type >= kFirstType && type < kFirstType + kTypes) return kTypeNames[type - kFirstType];
  char hex[8];
  std::snprintf(hex, sizeof hex, "0x%02X", type);
  return hex;
}

// Header text is bytes from the network: well-formed UTF-8 stays, any
// other byte and every control byte is written "\xNN".
std::string escaped(const KvoStr &s) {
  std::string out;
  const auto *p = reinterpret_cast<const unsigned char *>(s.buf);
  const size_t n = static_cast<size_t>(s.len);
  for (size_t i = 0; i < n;) {
    const unsigned char c = p[i];
    size_t len = c < 0x80 ? 1 : (c >> 5) == 6 ? 2 : (c >> 4) == 14 ? 3 : (c >> 3) == 30 ? 4 : 0;
    if (len > 1 && (i + len > n || (c == 0xC0 || c == 0xC1 || c > 0xF4))) len = 0;
    for (size_t k = 1; k < len; ++k)
      if ((p[i + k] & 0xC0) != 0x80) len = 0;
    if (len == 0 || c < 0x20 || c == 0x7F) {
      char hex[8];
      std::snprintf(hex, sizeof hex, "\\x%02X", c);
      out += hex;
      ++i;
      continue;
    }
    out.append(reinterpret_cast<const char *>(p + i), len);
    i += len;
  }
  return out;
}

// What a C caller reading the buffer sees: up to the first 0x00, which a
// UTF-8 value keeps inside its length.
std::string shown(const KvoStr &s) {
  KvoStr upToZero = s;
  upToZero.len = static_cast<int32_t>(std::strlen(s.buf));
  return escaped(upToZero);
}

std::vector<std::string> addresses(MmsAddrEnum *e) {
  std::vector<std::string> out;
  tarnex::ScratchStr<128> one;
  while (MmsAddrEnum_next(e, one) == 1) out.push_back(escaped(*one.get()));
  MmsAddrEnum_delete(e);
  return out;
}

constexpr Kind kMessage{"MMS message", "MMS messages"}, kHeader{"MMS header", "MMS headers"};

// The five names a slide may give, in the order they are shown.
std::vector<std::pair<const char *, std::string>> slideNames(const MmsSlide &s) {
  std::vector<std::pair<const char *, std::string>> out;
  const std::pair<const char *, const KvoStr *> all[] = {
      {"text", &s.text}, {"img1", &s.img1}, {"img2", &s.img2}, {"audio", &s.audio},
      {"video", &s.video}};
  for (const auto &[role, name] : all)
    if (name->len != 0) out.emplace_back(role, escaped(*name));
  return out;
}

// "hello world" for a text medium: its first line, cut to 60 bytes.
std::string firstLine(const MmsMedia &m) {
  if (std::strcmp(m.type.buf, "text/plain") != 0 ||
      m.strm == nullptr)
    return {};
  std::string text = bytes(m.strm);
  size_t cut = std::min(text.find_first_of("\r\n"), size_t{60});
  if (cut < text.size())
    while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) --cut;
  text.resize(std::min(cut, text.size()));
  KvoStr view{};
  view.buf = text.data();
  view.len = static_cast<int32_t>(text.size());
  return escaped(view);
}

class MmsMessage final : public Record {
 public:
  MmsMessage() {
    MmsHdr_new(&hdr_);
    MmsItem_new(&item_);
  }
  ~MmsMessage() override {
    MmsHdr_delete(&hdr_);
    MmsItem_delete(&item_);
  }
  // The walker hands in a stream that starts at the message, which is
  // where the decoders begin whatever the position.
  int32_t decode(IStrm *in) override {
    const int64_t start = IStrm_tell(in);
    const int32_t rc = mms_dec_hdr(in, &hdr_);
    end_ = IStrm_tell(in);
    endByte_ = IStrm_getc(in);
    if (rc < 0) return rc;
    IStrm_seek(in, start, KVO_SEEK_SET);
    whole_ = mms_dec(in, &item_) == 0;
    IStrm_seek(in, 0, KVO_SEEK_END);
    return 1;
  }
  const Kind *kind() const override { return whole_ ? &kMessage : &kHeader; }
  void trace(IStrm *out) override {
    IStrm_printf(out, "# MmsHdr beg......\n");
    IStrm_printf(out, "msgType = %s\n", typeName(hdr_.msgType).c_str());
    const auto line = [out](const char *id, const std::string &value) {
      if (!value.empty()) IStrm_printf(out, "%s = %s\n", id, value.c_str());
    };
    line("from", escaped(hdr_.from));
    for (const std::string &a : addresses(MmsHdr_tos(&hdr_))) line("to", a);
    for (const std::string &a : addresses(MmsHdr_ccs(&hdr_))) line("cc", a);
    for (const std::string &a : addresses(MmsHdr_bccs(&hdr_))) line("bcc", a);
    line("title", escaped(hdr_.title));
    line("date", dateText(hdr_.date));
    // A header that stops neither at the end nor at a part count stopped on
    // something it does not know: say where, for whoever reads the file.
    if (endByte_ >= 0x20) {
      char where[64];
      std::snprintf(where, sizeof where, "byte %lld (0x%02X)", static_cast<long long>(end_),
                    static_cast<unsigned>(endByte_));
      line("hdrEnd", where);
    }
    IStrm_printf(out, "# MmsHdr end !!!!!!\n");
    if (!whole_) return;
    std::set<std::string> named, present;
    int n = 0;
    MmsSlideEnum *slides = MmsItem_slides(&item_);
    while (const MmsSlide *slide = MmsSlideEnum_next(slides)) {
      IStrm_printf(out, "slide %d = layout %d, %d ms", ++n, slide->layout, slide->dur);
      for (const auto &[role, name] : slideNames(*slide)) {
        IStrm_printf(out, ", %s %s", role, name.c_str());
        named.insert(name);
      }
      IStrm_printf(out, "\n");
    }
    MmsSlideEnum_delete(slides);
    MmsMediaEnum *media = MmsItem_medias(&item_);
    while (const MmsMedia *m = MmsMediaEnum_next(media)) {
      const std::string name = escaped(m->name);
      present.insert(name);
      IStrm_printf(out, "medium = %s, %s, %lld bytes%s", name.c_str(), escaped(m->type).c_str(),
                   static_cast<long long>(m->strm ? IStrm_size(m->strm) : 0),
                   named.count(name) || n == 0 ? "" : ", on no slide");
      if (const std::string first = firstLine(*m); !first.empty())
        IStrm_printf(out, ": \"%s\"", first.c_str());
      IStrm_printf(out, "\n");
    }
    MmsMediaEnum_delete(media);
    for (const std::string &name : named)
      if (!present.count(name)) IStrm_printf(out, "# slide name %s: no medium has it\n", name.c_str());
  }
  Description describe() override {
    Description d;
    addText(d, "TYPE", "Type", typeName(hdr_.msgType));
    addText(d, "FROM", "From", shown(hdr_.from));
    const struct {
      const char *type, *label;
      MmsAddrEnum *list;
    } lists[] = {{"TO", "To", MmsHdr_tos(&hdr_)},
                 {"CC", "Cc", MmsHdr_ccs(&hdr_)},
                 {"BCC", "Bcc", MmsHdr_bccs(&hdr_)}};
    for (const auto &l : lists)
      for (std::string &a : addresses(l.list)) addText(d, l.type, l.label, std::move(a));
    addText(d, "SUBJECT", "Subject", shown(hdr_.title));
    addText(d, "DATE", "Date", dateText(hdr_.date));
    if (!whole_) return d;
    MmsSlideEnum *slides = MmsItem_slides(&item_);
    while (const MmsSlide *slide = MmsSlideEnum_next(slides)) {
      std::string text = "layout " + std::to_string(slide->layout) + ", " +
                         std::to_string(slide->dur) + " ms";
      for (const auto &[role, name] : slideNames(*slide)) text += std::string(", ") + role + " " + name;
      addText(d, "SLIDE", "Slide", text);
    }
    MmsSlideEnum_delete(slides);
    MmsMediaEnum *media = MmsItem_medias(&item_);
    while (const MmsMedia *m = MmsMediaEnum_next(media)) {
      std::string text = escaped(m->name) + ", " + escaped(m->type) + ", " +
                         std::to_string(m->strm ? IStrm_size(m->strm) : 0) + " bytes";
      if (const std::string first = firstLine(*m); !first.empty()) text += ": " + first;
      addText(d, "MEDIUM", "Medium", text);
    }
    MmsMediaEnum_delete(media);
    return d;
  }
  int32_t encode(IStrm *, uint32_t) override { return OSTREL_CANT; }
  std::string subtype() override {
    std::string s = typeName(hdr_.msgType);
    if (whole_) {
      const int32_t m = MmsItem_mediaCount(&item_), sl = MmsItem_slideCount(&item_);
      s += ": " + std::to_string(m) + (m == 1 ? " medium, " : " media, ") + std::to_string(sl) +
           (sl == 1 ? " slide" : " slides");
    }
    return s;
  }

 private:
  MmsHdr hdr_;
  MmsItem item_;
  bool whole_ = false;
  int64_t end_ = 0;
  int32_t endByte_ = -1;
};

std::unique_ptr<Record> make() { return std::make_unique<MmsMessage>(); }

}  // namespace

extern const Format kMmsFormat{"mms",  "MMS", "MMS message", "MMS messages", claimsMessage, make, {},
                               true};

}  // namespace ostrel_tool
