// Short messages as hex PDU lines. A file of them is told by its lines: a
// run of hex digits long enough to be a PDU (the modem's "+CMGL:" and
// "+CMGR:" lines between them belong to no record and are passed over).
// The library's record keeps what the message says, not how it came: the
// service centre, the coding octet and a concatenation's place are read
// here from the PDU itself and shown beside the trace.
#include <cctype>
#include <cstdio>
#include <string>
#include <vector>

#include "Describe.h"
#include "LibraryReports.h"
#include "Pdu.h"
#include "Scan.h"
#include "tarnex/scratch.hpp"

namespace ostrel_tool {
namespace {

// The shortest line taken for a PDU: below seven octets no TPDU fits, and
// shorter runs of hex digits are ordinary words.
constexpr size_t kMinDigits = 14;
// A PDU is at most 1 + 12 + 164 octets; a longer line is still read (and
// refused by the library), but never held as more than this many octets.
constexpr size_t kMaxOctets = 256;

bool isHex(char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; }

std::string_view trimmed(std::string_view line) {
  while (!line.empty() && (line.back() == ' ' || line.back() == '\t')) line.remove_suffix(1);
  return line;
}

// A line of letters and digits whose start is a run of hex digits: a PDU,
// or one that went wrong later in the line (which is then reported).
bool isPduLine(std::string_view line) {
  line = trimmed(line);
  if (line.size() < kMinDigits) return false;
  for (size_t i = 0; i < line.size(); ++i) {
    const auto c = static_cast<unsigned char>(line[i]);
    if (i < kMinDigits ? !isHex(line[i]) : !std::isalnum(c)) return false;
  }
  return true;
}

std::optional<size_t> claimsPdu(std::string_view rest) {
  const size_t at = findLine(rest, isPduLine);
  if (at == std::string_view::npos) return std::nullopt;
  return at;
}

std::string hexOf(const uint8_t *data, size_t n) {
  std::string s;
  char two[3];
  for (size_t i = 0; i < n; ++i) {
    std::snprintf(two, sizeof two, "%02X", data[i]);
    s += two;
  }
  return s;
}

constexpr Kind kDeliver{"received message", "received messages"};
constexpr Kind kSubmit{"outgoing message", "outgoing messages"};
constexpr Kind kReport{"status report", "status reports"};

// What the PDU holds beyond the record.
struct Facts {
  std::string smsc;  // the service centre's number; empty when none
  bool smscField = false;
  int dcs = -1;  // the TP-DCS octet, -1 when the PDU has none
};

// The TPDU's fields up to TP-DCS, by their lengths, never past n octets.
int dcsOf(const uint8_t *p, int32_t n) {
  if (n < 1) return -1;
  auto address = [&](int32_t at) { return at < n ? GsmUtil_getNo(nullptr, p + at, n - at, 0) : n; };
  switch (p[0] & 0x03) {
    case 0: {  // DELIVER: first octet, TP-OA, TP-PID, TP-DCS
      const int32_t at = 1 + address(1) + 1;
      return at < n ? p[at] : -1;
    }
    case 1: {  // SUBMIT: first octet, TP-MR, TP-DA, TP-PID, TP-DCS
      const int32_t at = 2 + address(2) + 1;
      return at < n ? p[at] : -1;
    }
    case 2: {  // REPORT: ..., TP-ST, TP-PI, then TP-PID and TP-DCS as TP-PI says
      const int32_t pi = 2 + address(2) + 7 + 7 + 1;
      if (pi >= n || (p[pi] & 0x02) == 0) return -1;
      const int32_t at = pi + 1 + ((p[pi] & 0x01) ? 1 : 0);
      return at < n ? p[at] : -1;
    }
    default:
      return -1;
  }
}

std::string dcsText(int dcs) {
  if (dcs < 0) return {};
  char head[16];
  std::snprintf(head, sizeof head, "0x%02X", static_cast<unsigned>(dcs & 0xFF));
  // The alphabet as the codec reads it: by the bits 0x0C alone.
  static constexpr const char *kAlphabet[] = {"GSM 7-bit", "8-bit data", "UCS2", "8-bit data"};
  std::string s = std::string(head) + ", " + kAlphabet[(dcs >> 2) & 3];
  if (dcs & 0x10) s += ", class " + std::to_string(dcs & 3);
  return s;
}

// "part 1 of 2, reference 165" from the concatenation element of a user
// data header (8- or 16-bit reference); empty when there is none.
std::string concatText(const SmsItem &item) {
  const int32_t len = item.udhLen;
  for (int32_t i = 1; i + 1 < len;) {
    const uint8_t iei = item.udhBuf[i], iel = item.udhBuf[i + 1];
    const int32_t data = i + 2;
    if (data + iel > len) break;
    const uint8_t *d = item.udhBuf + data;
    if (iei == 0x00 && iel == 3)
      return "part " + std::to_string(d[2]) + " of " + std::to_string(d[1]) + ", reference " +
             std::to_string(d[0]);
    if (iei == 0x08 && iel == 4)
      return "part " + std::to_string(d[3]) + " of " + std::to_string(d[2]) + ", reference " +
             std::to_string(d[0] << 8 | d[1]);
    i = data + iel;
  }
  return {};
}

class Pdu final : public Record {
 public:
  Pdu() { SmsItem_new(&item_); }
  ~Pdu() override { SmsItem_delete(&item_); }
  void configure(const CodecOptions &codec) override { noSmsc_ = codec.noSmsc; }

  int32_t decode(IStrm *in) override {
    const std::string line = takeLine(in);
    failure_ = badDigits(line);
    std::string text = line;
    int32_t expType = 0;
    // Without a service centre field a report can be told by its first
    // octet; any other PDU gets the empty field the codec expects.
    if (noSmsc_) {
      const uint8_t first = text.size() >= 2 ? hexOctet(text, 0) : 0;
      if ((first & 0x03) == 2)
        expType = SMS_REPORT;
      else
        text = "00" + text;
    }
    // The codec refuses some PDUs through its check report: the text goes
    // into the record's failure message instead of standard error.
    LibraryReports check;
    const int32_t rc = Psms_decIrax(text.c_str(), static_cast<int32_t>(text.size()), &item_, expType);
    if (!check.first().empty())
      failure_ += (failure_.empty() ? "" : "; ") + ("the codec's check \"" + check.first() + "\" refused it");
    if (rc < 0) return rc;
    // The library read the digit pairs before the fault: no record, and
    // no code of the library's to give.
    if (!failure_.empty()) return OSTREL_OK;
    readFacts(text, expType);
    return 1;
  }

  std::string failure() const override { return failure_; }
  const Kind *kind() const override {
    return item_.type == SMS_SUBMIT ? &kSubmit : item_.type == SMS_REPORT ? &kReport : &kDeliver;
  }
  void trace(IStrm *out) override { SmsItem_tracex(&item_, out, 1); }

  std::string traceNotes() override {
    std::string s = "# smsc = " + (facts_.smscField ? (facts_.smsc.empty() ? "none" : facts_.smsc)
                                                    : "not in the PDU") + "\n";
    if (facts_.dcs >= 0) s += "# dcs = " + dcsText(facts_.dcs) + "\n";
    if (const std::string c = concatText(item_); !c.empty()) s += "# concatenated: " + c + "\n";
    return s;
  }

  Description describe() override {
    Description d;
    const char *party = item_.type == SMS_SUBMIT ? "To" : item_.type == SMS_REPORT ? "Recipient" : "From";
    addText(d, "TYPE", "Type",
            item_.type == SMS_SUBMIT   ? "SMS-SUBMIT"
            : item_.type == SMS_REPORT ? "SMS-STATUS-REPORT"
                                       : "SMS-DELIVER");
    addText(d, "TEL", party, utf8(&item_.tel));
    addText(d, "SMSC", "Service centre", facts_.smsc);
    addText(d, "SCTS", "Time stamp", dateText(item_.xptTime));
    if (item_.type != SMS_DELIVER) addText(d, "MR", "Reference", std::to_string(item_.msgRef));
    if (item_.type == SMS_REPORT) {
      addText(d, "DT", "Discharged", dateText(item_.revTime));
      addText(d, "ST", "Status", std::to_string(item_.repStat));
    }
    addText(d, "DCS", "Coding", dcsText(facts_.dcs));
    if (item_.udhLen > 0) addText(d, "UDH", "Header", hexOf(item_.udhBuf, static_cast<size_t>(item_.udhLen)));
    addText(d, "CONCAT", "Part", concatText(item_));
    if (item_.dt == SMS_DT_BIN) {
      std::string data(static_cast<size_t>(SmsItem_binLen(&item_)), '\0');
      if (!data.empty())
        SmsItem_getBin(&item_, reinterpret_cast<uint8_t *>(data.data()), static_cast<int32_t>(data.size()));
      Field f;
      f.type = "DATA";
      f.label = "Data";
      f.binary = true;
      f.what = "8-bit data";
      f.data = std::move(data);
      d.fields.push_back(std::move(f));
    } else {
      addText(d, "TEXT", "Text", utf8(&item_.data));
    }
    return d;
  }

  int32_t encode(IStrm *out, uint32_t) override {
    char ira[1024];
    const int32_t rc = Psms_encIrax(ira, sizeof ira, &item_, facts_.smsc.c_str(), -1);
    if (rc < 0) return rc;
    IStrm_puts(out, ira, -1);
    return IStrm_putc(out, '\n') < 0 ? OSTREL_EOS : 0;
  }

 private:
  // The line at the stream's position, blanks at its end off; the stream
  // goes on behind the line.
  static std::string takeLine(IStrm *in) {
    std::string line;
    int32_t c;
    while ((c = IStrm_getc(in)) >= 0 && c != '\r' && c != '\n') line += static_cast<char>(c);
    if (c == '\r' && (c = IStrm_getc(in)) >= 0 && c != '\n') IStrm_ungetc(in, c);
    return std::string(trimmed(line));
  }

  static uint8_t hexOctet(const std::string &text, size_t at) {
    uint8_t o = 0;
    ira_dec_str_to_buf(text.c_str() + at, 2, &o, 1);
    return o;
  }

  // Why the line is no string of digit pairs, in a person's words.
  static std::string badDigits(const std::string &line) {
    for (size_t i = 0; i < line.size(); ++i)
      if (!isHex(line[i])) {
        std::string c(1, line[i]);
        if (!std::isprint(static_cast<unsigned char>(line[i]))) {
          char hex[8];
          std::snprintf(hex, sizeof hex, "\\x%02X", static_cast<unsigned char>(line[i]));
          c = hex;
        }
        return "'" + c + "' at column " + std::to_string(i + 1) + " is no hex digit";
      }
    if (line.size() % 2 != 0)
      return std::to_string(line.size()) + " hex digits, an odd number";
    return {};
  }

  // text: the PDU as decoded, an added 00 included.
  void readFacts(const std::string &text, int32_t expType) {
    uint8_t pdu[kMaxOctets];
    const int32_t n = ira_dec_str_to_buf(text.c_str(), static_cast<int32_t>(text.size()), pdu, sizeof pdu);
    int32_t smscLen = expType == SMS_REPORT ? 0 : 1;
    facts_.smscField = !noSmsc_;
    if (facts_.smscField) {
      tarnex::ScratchStr<32> no;
      smscLen = GsmUtil_getNo(no, pdu, n, 1);
      facts_.smsc = std::string(no.view());
    }
    if (smscLen < n) facts_.dcs = dcsOf(pdu + smscLen, n - smscLen);
  }

  SmsItem item_;
  bool noSmsc_ = false;
  Facts facts_;
  std::string failure_;
};

constexpr Target kPduTargets[] = {{"pdu", 0, "hex PDU lines (TS 23.040) with a service centre field"}};

}  // namespace

std::unique_ptr<Record> makePdu() { return std::make_unique<Pdu>(); }

extern const Format kPduFormat{"pdu", "SMS PDU", "short message", "short messages", claimsPdu,
                               makePdu, kPduTargets};

}  // namespace ostrel_tool
