// Short messages as text: VSMS, and the 3G message text the library only
// reads. Both make the same record, so both convert to VSMS and to PDU hex
// lines.
#include <memory>

#include "Describe.h"
#include "Format.h"
#include "Scan.h"
#include "tarnex/scratch.hpp"

namespace ostrel_tool {
namespace {

// The version word of the "pdu" target: no text format has it.
constexpr uint32_t kPduLines = 0xFFFFFFFFu;

constexpr const char *kStatWords[] = {"unread", "read", "unsent", "sent", "sending failed", "delayed"};
constexpr const char *kFlagWords[] = {"status report requested", "reject duplicates", "reply path",
                                      "more messages", "report parameters"};

const char *typeWord(int32_t type) {
  switch (type) {
    case SMS_DELIVER: return "received (SMS-DELIVER)";
    case SMS_SUBMIT: return "to send (SMS-SUBMIT)";
    case SMS_REPORT: return "status report";
    default: return "";
  }
}

std::string hex(const uint8_t *p, int32_t n) {
  tarnex::ScratchStr<288> text;
  ira_enc_cstr_from_buf(text, p, n);
  return std::string(text.view());
}

class Message : public Record {
 public:
  Message() { SmsItem_new(&item_); }
  ~Message() override { SmsItem_delete(&item_); }
  void trace(IStrm *out) override { SmsItem_tracex(&item_, out, 1); }

  Description describe() override {
    Description d;
    d.version = versionText(version_);
    addText(d, "TYPE", "Kind", typeWord(item_.type));
    addText(d, "TEL", "Number", utf8(&item_.tel));
    if (item_.dt == SMS_DT_TXT) {
      addText(d, "DATA", "Text", utf8(&item_.data));
    } else {
      Field f;
      f.type = "DATA";
      f.label = "Data";
      f.binary = true;
      f.what = "binary payload";
      tarnex::ScratchMemStrm octets(0);
      SmsItem_getBinx(&item_, octets);
      f.data = bytes(octets);
      d.fields.push_back(f);
    }
    if (item_.udhLen > 0) addText(d, "UDH", "User data header", hex(item_.udhBuf, item_.udhLen));
    if (item_.stat >= 0 && item_.stat <= 5) addText(d, "STAT", "Status", kStatWords[item_.stat]);
    Field flags;
    flags.type = "FLAGS";
    flags.label = "Flags";
    for (int bit = 0; bit < 5; ++bit)
      if (item_.flags & (1u << bit)) flags.values.emplace_back(kFlagWords[bit]);
    for (const std::string &v : flags.values) flags.text += (flags.text.empty() ? "" : ", ") + v;
    if (!flags.values.empty()) d.fields.push_back(flags);
    addText(d, "XPT-TIME", "Service centre time", dateText(item_.xptTime));
    if (item_.protId != 0) addText(d, "PROT-ID", "Protocol id", std::to_string(item_.protId));
    if (item_.coding != 0) addText(d, "CODING", "Coding bits", std::to_string(item_.coding));
    if (item_.type == SMS_SUBMIT || item_.type == SMS_REPORT)
      addText(d, "MSG-REF", "Message reference", std::to_string(item_.msgRef));
    if (item_.type == SMS_SUBMIT) addText(d, "VALID-DUR", "Validity", std::to_string(item_.validDur));
    if (item_.type == SMS_REPORT) {
      addText(d, "REV-TIME", "Discharge time", dateText(item_.revTime));
      addText(d, "REP-STAT", "Report status", std::to_string(item_.repStat));
      addText(d, "REP-FOR", "Report for", typeWord(item_.repFor));
    }
    addText(d, "CARD", "Card", utf8(&item_.card));
    std::string ext = utf8(&item_.extInfo);
    while (!ext.empty() && (ext.back() == '\n' || ext.back() == '\r')) ext.pop_back();
    addText(d, "X-EXT", "Extra", ext);
    return d;
  }

  int32_t encode(IStrm *out, uint32_t version) override {
    // A record of no kind has no TYPE word and no PDU: refused before the
    // library is asked to write it.
    if (item_.type != SMS_DELIVER && item_.type != SMS_SUBMIT && item_.type != SMS_REPORT)
      return OSTREL_CANT;
    if (version != kPduLines) return Vsms_enc(out, &item_, version);
    char line[512];
    const int32_t rc = Psms_encIra(line, sizeof line, &item_);
    if (rc < 0) return rc;
    IStrm_puts(out, line, -1);
    return IStrm_puts(out, "\n", 1) < 0 ? OSTREL_EOS : 0;
  }

 protected:
  SmsItem item_;
  uint32_t version_ = 0;
};

class Vsms final : public Message {
 public:
  int32_t decode(IStrm *in) override { return Vsms_dec(in, &item_, &version_); }
};

// The 3G reader takes text, not a stream: it gets the frame from BEGIN to
// its END line, and the stream moves on behind that line.
class Vmsg final : public Message {
 public:
  int32_t decode(IStrm *in) override {
    const uint8_t *p = nullptr;
    const int64_t n = IStrm_peek(in, &p);
    if (n <= 0) return 0;
    const std::string_view rest(reinterpret_cast<const char *>(p), static_cast<size_t>(n));
    const auto frame = nextFrame(rest, "X-VMSG");
    if (!frame) return 0;
    const size_t end = nextLineStart(rest, static_cast<size_t>(frame->data() - rest.data()) + frame->size());
    const int32_t rc = Vsms_dec_3g(rest.data(), static_cast<int32_t>(end), &item_);
    if (rc == 1) IStrm_seek(in, static_cast<int64_t>(end), KVO_SEEK_CUR);
    return rc;
  }
};

template <class T>
std::unique_ptr<Record> make() {
  return std::make_unique<T>();
}

template <const char *Word>
std::optional<size_t> claimsFrame(std::string_view rest) {
  return firstFrame(rest, Word, [](std::string_view) { return true; });
}

constexpr char kVsms[] = "VSMS";
constexpr char kVmsg[] = "X-VMSG";
constexpr Target kMessageTargets[] = {{"vsms20", 0x200, "VSMS 2.0 (short messages)"},
                                      {"pdu", kPduLines, "short messages as PDU hex lines"}};

}  // namespace

extern const Format kVsmsFormat{"vsms", "VSMS", "message", "messages", claimsFrame<kVsms>,
                                make<Vsms>, kMessageTargets};
extern const Format kVmsgFormat{"vmsg", "3G message text", "3G message", "3G messages",
                                claimsFrame<kVmsg>, make<Vmsg>, kMessageTargets};

}  // namespace ostrel_tool
