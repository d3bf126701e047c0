// The header of a binary multimedia message. Every field code 0x81-0xA1 has
// one row saying how its value is read, so each field is stepped over by
// exactly its own length; a byte outside the codes is the first byte of the
// body and ends the header.
//
// The end of the stream inside a field ends the header with 0: the field
// keeps what it read (a value cut at its first byte reads as empty), and no
// length is acted on past the end. A literal reading would seek back by the
// -1 that a value length gives there, onto its own field code, forever.
#include <iterator>

#include "detail/MmsRead.h"
#include "detail/Object.h"
#include "detail/Trace.h"
#include "ostrel/MmsEd.h"

namespace {

using namespace ostrel::detail;

enum class Form : uint8_t {
  kByte,      // one byte
  kLong,      // long integer
  kText,      // string value, dropped
  kSkip,      // value length n, then n bytes
  kBcc,       // address
  kCc,        // address
  kTo,        // address
  kLocation,  // string value, traced only; a cut one fails the header
  kCtype,     // content type, stepped over
  kDate,      // long integer of seconds
  kFrom,      // value length, token, string value
  kClass,     // a token, or a byte below 0x80 and one more
  kType,      // the message type byte
  kSubject,   // string value
  kSentBy,    // value length, integer, string value
  kSentDate,  // value length, integer, long integer
};

struct FieldRow {
  uint8_t code;
  Form form;
};

constexpr FieldRow kFields[] = {
    {0x81, Form::kBcc},      // Bcc
    {0x82, Form::kCc},       // Cc
    {0x83, Form::kLocation}, // X-Mms-Content-Location
    {0x84, Form::kCtype},    // Content-Type
    {0x85, Form::kDate},     // Date
    {0x86, Form::kByte},     // X-Mms-Delivery-Report
    {0x87, Form::kSkip},     // X-Mms-Delivery-Time
    {0x88, Form::kSkip},     // X-Mms-Expiry
    {0x89, Form::kFrom},     // From
    {0x8A, Form::kClass},    // X-Mms-Message-Class
    {0x8B, Form::kText},     // Message-ID
    {0x8C, Form::kType},     // X-Mms-Message-Type
    {0x8D, Form::kByte},     // X-Mms-MMS-Version
    {0x8E, Form::kLong},     // X-Mms-Message-Size
    {0x8F, Form::kByte},     // X-Mms-Priority
    {0x90, Form::kByte},     // X-Mms-Read-Report
    {0x91, Form::kByte},     // X-Mms-Report-Allowed
    {0x92, Form::kByte},     // X-Mms-Response-Status
    {0x93, Form::kText},     // X-Mms-Response-Text
    {0x94, Form::kByte},     // X-Mms-Sender-Visibility
    {0x95, Form::kByte},     // X-Mms-Status
    {0x96, Form::kSubject},  // Subject
    {0x97, Form::kTo},       // To
    {0x98, Form::kText},     // X-Mms-Transaction-Id
    {0x99, Form::kByte},     // X-Mms-Retrieve-Status
    {0x9A, Form::kText},     // X-Mms-Retrieve-Text
    {0x9B, Form::kByte},     // X-Mms-Read-Status
    {0x9C, Form::kByte},     // X-Mms-Reply-Charging
    {0x9D, Form::kSkip},     // X-Mms-Reply-Charging-Deadline
    {0x9E, Form::kText},     // X-Mms-Reply-Charging-ID
    {0x9F, Form::kLong},     // X-Mms-Reply-Charging-Size
    {0xA0, Form::kSentBy},   // X-Mms-Previously-Sent-By
    {0xA1, Form::kSentDate}, // X-Mms-Previously-Sent-Date
};
constexpr uint8_t kFirstCode = 0x81, kLastCode = 0xA1;
static_assert(std::size(kFields) == kLastCode - kFirstCode + 1);
static_assert([] {
  for (size_t i = 0; i < std::size(kFields); ++i)
    if (kFields[i].code != kFirstCode + i) return false;
  return true;
}(), "a code's row is found by its offset");

// "to: VALUE": the header values a caller sees when tracing MMS.
void traceValue(const char *label, const char *value, const char *tail = "") {
  if (!traceOn(kModule, kCatFunc, 1)) return;
  tout_beg(__FILE__, __LINE__, kModule, kCatFunc, 1);
  tout_str(label);
  tout_str(value);
  tout_str(tail);
  tout_endx();
}

int32_t readAddress(MmsIn &in, MmsHdr *hdr, Form form) {
  tarnex::ScratchStr<128> addr;
  const int32_t rc = mms_dec_addr(addr, in);
  if (rc < 0) return rc;
  switch (form) {
    case Form::kBcc:
      MmsHdr_addBcc(hdr, addr.c_str());
      traceValue("bcc: ", addr.c_str());
      break;
    case Form::kCc:
      MmsHdr_addCc(hdr, addr.c_str());
      traceValue("cc: ", addr.c_str());
      break;
    default:
      MmsHdr_addTo(hdr, addr.c_str());
      traceValue("to: ", addr.c_str());
  }
  return 0;
}

// Reads one field's value; a negative result ends the header.
int32_t readField(MmsIn &in, MmsHdr *hdr, Form form) {
  switch (form) {
    case Form::kByte:
      in.byte();
      return 0;
    case Form::kLong:
      mms_dec_long(in);
      return 0;
    case Form::kText: {
      tarnex::ScratchStr<128> text;
      mms_dec_str_val(text, in);
      return 0;
    }
    case Form::kSkip: {
      const int64_t n = mms_dec_len(in);
      if (in.eos()) return 0;
      if (n < 0)
        in.unget();  // the byte that was no length is read as the next code
      else
        in.skip(static_cast<uint64_t>(n));
      return 0;
    }
    case Form::kBcc:
    case Form::kCc:
    case Form::kTo:
      return readAddress(in, hdr, form);
    case Form::kLocation: {
      tarnex::ScratchStr<128> where;
      const int32_t rc = mms_dec_str_val(where, in);
      if (rc < 0) return rc;
      traceValue("X-Mms-Content-Location: ", where.c_str(), "\n");
      return 0;
    }
    case Form::kCtype:
      mms_dec_ctype(in);
      return 0;
    case Form::kDate: {
      const uint32_t secs = mms_dec_long(in);
      mms_dec_date(&hdr->date, secs);
      return 0;
    }
    case Form::kFrom:
      mms_dec_from(&hdr->from, in);
      traceValue("from: ", KvoStr_buf(&hdr->from));
      return 0;
    case Form::kClass:
      if (const int32_t b = in.byte(); b >= 0 && b < 0x80) in.byte();
      return 0;
    case Form::kType:
      if (const int32_t b = in.byte(); b >= 0) hdr->msgType = static_cast<uint8_t>(b);
      return 0;
    case Form::kSubject:
      mms_dec_str_val(&hdr->title, in);
      traceValue("title: ", KvoStr_buf(&hdr->title));
      return 0;
    case Form::kSentBy: {
      mms_dec_len(in);
      mms_dec_int(in);
      tarnex::ScratchStr<128> by;
      mms_dec_str_val(by, in);
      return 0;
    }
    case Form::kSentDate:
      mms_dec_len(in);
      mms_dec_int(in);
      mms_dec_long(in);
      return 0;
  }
  return 0;
}

}  // namespace

extern "C" {

OSTREL_API int32_t mms_dec_hdr(IStrm *mms, MmsHdr *hdr) {
  OSTREL_FUNC_TRACE();
  if (!OSTREL_REQUIRE(mms && hdr, "mms && hdr")) return 0;
  IStrm_rewind(mms);
  MmsIn in(mms);
  for (;;) {
    const int32_t b = in.byte();
    if (b < 0) return 0;
    if (b < kFirstCode || b > kLastCode) {
      in.unget();
      return 0;
    }
    const int32_t rc = readField(in, hdr, kFields[b - kFirstCode].form);
    if (rc < 0) return rc;
    if (in.eos()) return 0;
  }
}

}  // extern "C"
