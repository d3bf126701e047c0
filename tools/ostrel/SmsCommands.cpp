// ostrel sms decode and sms encode: short messages given on the command
// line, as hex PDUs or as the fields of one message.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "Commands.h"
#include "Describe.h"
#include "Pdu.h"
#include "tarnex/scratch.hpp"

namespace ostrel_tool {
namespace {

class Started {
 public:
  Started() { Ostrel_init(); }
  ~Started() { Ostrel_exit(); }
  Started(const Started &) = delete;
  Started &operator=(const Started &) = delete;
};

// Octets of hex text; false when it is no run of digit pairs.
bool octetsOf(const std::string &hex, std::string *out) {
  if (hex.size() % 2 != 0) return false;
  out->assign(hex.size() / 2, '\0');
  const int32_t n = ira_dec_str_to_buf(hex.c_str(), static_cast<int32_t>(hex.size()),
                                       reinterpret_cast<uint8_t *>(out->data()),
                                       static_cast<int32_t>(out->size()));
  return n == static_cast<int32_t>(out->size());
}

int usage(const std::string &message) {
  std::fprintf(stderr, "ostrel: sms: %s\nTry 'ostrel sms --help'.\n", message.c_str());
  return 2;
}

// The record the options describe, or a usage message.
std::string buildItem(const SmsOptions &o, SmsItem *item) {
  if (o.type == "submit") item->type = SMS_SUBMIT;
  else if (o.type == "deliver") item->type = SMS_DELIVER;
  else if (o.type == "report") item->type = SMS_REPORT;
  else return "--type is submit, deliver or report, not '" + o.type + "'";
  if (o.textGiven && o.dataGiven) return "--text and --data exclude each other";
  if (o.ref < 0 || o.ref > 255) return "--ref is a number from 0 to 255";
  item->msgRef = static_cast<uint32_t>(o.ref);
  if (o.requestReport) item->flags |= SMS_F_REQ_REP;
  KvoStr_setStr(&item->tel, o.number.c_str());
  if (o.dataGiven) {
    std::string data;
    if (!octetsOf(o.data, &data)) return "--data needs hex digit pairs";
    SmsItem_setBin(item, reinterpret_cast<const uint8_t *>(data.data()),
                   static_cast<int32_t>(std::min<size_t>(data.size(), 1024)));
  } else {
    KvoWcs_setStr(&item->data, o.text.c_str());
  }
  if (!o.udh.empty()) {
    std::string udh;
    if (!octetsOf(o.udh, &udh)) return "--udh needs hex digit pairs";
    if (udh.size() > sizeof item->udhBuf) return "--udh holds at most 140 octets";
    if (static_cast<uint8_t>(udh[0]) + 1u != udh.size())
      return "--udh starts with its length octet, which counts the octets behind it";
    std::memcpy(item->udhBuf, udh.data(), udh.size());
    item->udhLen = static_cast<int32_t>(udh.size());
  }
  return {};
}

}  // namespace

int runSmsDecode(const Options &opts) {
  if (!opts.sms.file.empty()) {
    Options fileOpts = opts;
    fileOpts.files = {opts.sms.file};
    fileOpts.only = &kPduFormat;
    return runRead(fileOpts);
  }
  Started started;
  WalkResult result;
  std::FILE *summaryTo = opts.out.mode == Mode::Json ? stderr : stdout;
  int number = 0;
  for (const std::string &hex : opts.sms.hex) {
    ++number;
    auto record = makePdu();
    record->configure(opts.codec);
    tarnex::ScratchStrStrm in(hex);
    const int32_t rc = record->decode(in);
    if (rc != 1) {
      result.ok = false;
      ++result.failed;
      std::fprintf(stderr, "ostrel: argument %d: %s\n", number,
                   failureText(*record, rc, hex, 0, hex.size()).c_str());
      continue;
    }
    const Kind kind = *record->kind();
    Seen seen{kPduFormat, *record, kind.noun, "argument", number, 0, 1, {}};
    printRecord(stdout, seen, opts.out);
    auto count = std::find_if(result.counts.begin(), result.counts.end(),
                              [&](const KindCount &c) { return c.kind.noun == kind.noun; });
    if (count == result.counts.end()) count = result.counts.insert(count, {&kPduFormat, kind, 0});
    ++count->records;
  }
  std::fprintf(summaryTo, "sms decode: %s\n", summaryOf(result).c_str());
  return result.ok ? 0 : 1;
}

int runSmsEncode(const Options &opts) {
  Started started;
  SmsItem item;
  SmsItem_new(&item);
  const std::string problem = buildItem(opts.sms, &item);
  if (!problem.empty()) {
    SmsItem_delete(&item);
    return usage(problem);
  }
  char ira[1024];
  const int32_t rc = Psms_encIrax(ira, sizeof ira, &item, opts.sms.smsc.c_str(), -1);
  const bool text = item.dt == SMS_DT_TXT;
  const int32_t units = text ? KvoWcs_len(&item.data) : SmsItem_binLen(&item);
  SmsItem_delete(&item);
  if (rc < 0) {
    std::fprintf(stderr, "ostrel: sms encode: the message does not fit one PDU: %.*s (%d)\n",
                 static_cast<int>(resultText(rc).size()), resultText(rc).data(), rc);
    return 1;
  }
  const std::string line(ira);
  std::string pdu;
  octetsOf(line, &pdu);
  if (opts.output.empty()) {
    std::printf("%s\n", line.c_str());
  } else if (!writeFile(opts.output, pdu)) {
    return 1;
  }
  const char *type = opts.sms.type == "submit"    ? "SMS-SUBMIT"
                     : opts.sms.type == "deliver" ? "SMS-DELIVER"
                                                  : "SMS-STATUS-REPORT";
  std::fprintf(stderr, "sms encode: %s, %zu octets (%d behind the service centre field), %d %s\n",
               type, pdu.size(), rc / 2, units,
               text ? (units == 1 ? "character of text" : "characters of text")
                    : (units == 1 ? "octet of data" : "octets of data"));
  return 0;
}

}  // namespace ostrel_tool
