// Helpers of the MMS tests and fuzz target (no test framework in here): a
// scoped header, a stream that lends no buffer, and a header read through
// a stream with and without a window, rendered as one line.
#ifndef OSTREL_TESTS_MMSTESTUTIL_H
#define OSTREL_TESTS_MMSTESTUTIL_H

#include <string>
#include <string_view>

#include "ostrel/ostrel.h"
#include "tarnex/scratch.hpp"

namespace mmstest {

struct Hdr : MmsHdr {
  Hdr() { MmsHdr_new(this); }
  ~Hdr() { MmsHdr_delete(this); }
  Hdr(const Hdr &) = delete;
  Hdr &operator=(const Hdr &) = delete;
};

// A memory stream whose table has no peek, so readers go byte by byte.
class NoWindowStrm {
 public:
  explicit NoWindowStrm(std::string_view bytes) : mem_(0) {
    IStrm_write(mem_, bytes.data(), static_cast<int32_t>(bytes.size()));
    ops_ = *mem_.get()->ops;
    ops_.peek = nullptr;
    original_ = mem_.get()->ops;
    mem_.get()->ops = &ops_;
  }
  ~NoWindowStrm() { mem_.get()->ops = original_; }
  NoWindowStrm(const NoWindowStrm &) = delete;
  NoWindowStrm &operator=(const NoWindowStrm &) = delete;
  operator IStrm *() const { return mem_; }

 private:
  tarnex::ScratchMemStrm mem_;
  IStrmOps ops_;
  const IStrmOps *original_;
};

inline std::string str(const KvoStr &s) { return {s.buf, static_cast<size_t>(s.len)}; }

// "type=82 to=a,b cc=.. bcc=.. from=.. title=.. date=..", the empty ones left out.
inline std::string render(const MmsHdr &h) {
  static const char kHex[] = "0123456789ABCDEF";
  std::string out = "type=";
  out += kHex[h.msgType >> 4];
  out += kHex[h.msgType & 15];
  const struct {
    const char *id;
    const KvoStr &value;
  } members[] = {{"to", h.tos}, {"cc", h.ccs}, {"bcc", h.bccs}, {"from", h.from}, {"title", h.title}};
  for (const auto &m : members)
    if (m.value.len != 0) out += std::string(" ") + m.id + "=" + str(m.value);
  if (h.date.year != KVO_DT_UNSET) {
    tarnex::ScratchStr<32> iso;
    iso_dt_enc(iso, &h.date);
    out += std::string(" date=") + iso.c_str();
  }
  return out;
}

struct Read {
  int32_t rc;
  int64_t pos;
  std::string hdr;
  bool operator==(const Read &) const = default;
};

inline Read readWith(IStrm *in) {
  Hdr hdr;
  IStrm_seek(in, 0, KVO_SEEK_END);  // the decoder starts at the start by itself
  const int32_t rc = mms_dec_hdr(in, &hdr);
  return {rc, IStrm_tell(in), render(hdr)};
}

// The header read in place and byte by byte.
inline std::pair<Read, Read> readBoth(std::string_view bytes) {
  tarnex::ScratchStrStrm windowed(bytes);
  NoWindowStrm plain(bytes);
  return {readWith(windowed), readWith(plain)};
}

}  // namespace mmstest

#endif  // OSTREL_TESTS_MMSTESTUTIL_H
