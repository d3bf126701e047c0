// Helpers of the MMS tests and fuzz target (no test framework in here): a
// scoped header, a stream that lends a short window or none, and a header
// read through each, rendered as one line.
#ifndef OSTREL_TESTS_MMSTESTUTIL_H
#define OSTREL_TESTS_MMSTESTUTIL_H

#include <iterator>
#include <fstream>
#include <filesystem>
#include <optional>
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

// A memory stream that lends at most `window` bytes (0: none, so readers
// go byte by byte; a short window makes them carry on past it).
class LentStrm {
 public:
  LentStrm(std::string_view bytes, int64_t window) : mem_(0) {
    IStrm_write(mem_, bytes.data(), static_cast<int32_t>(bytes.size()));
    IStrm_rewind(mem_);
    memOps() = mem_.get()->ops;
    ops_ = *memOps();
    ops_.peek = window == 0 ? nullptr : window == 1 ? shortPeek<1> : shortPeek<5>;
    mem_.get()->ops = &ops_;
  }
  ~LentStrm() { mem_.get()->ops = memOps(); }
  LentStrm(const LentStrm &) = delete;
  LentStrm &operator=(const LentStrm &) = delete;
  operator IStrm *() const { return mem_; }

 private:
  static const IStrmOps *&memOps() {
    static const IStrmOps *ops = nullptr;
    return ops;
  }
  template <int64_t N>
  static int64_t shortPeek(IStrm *s, const uint8_t **p) {
    const int64_t n = memOps()->peek(s, p);
    return n < N ? n : N;
  }
  tarnex::ScratchMemStrm mem_;
  IStrmOps ops_;
};

// The whole message read byte by byte: a stream that lends no window.
class NoWindowStrm : public LentStrm {
 public:
  explicit NoWindowStrm(std::string_view bytes) : LentStrm(bytes, 0) {}
};

inline std::string readFile(const std::filesystem::path &path) {
  std::ifstream file(path, std::ios::binary);
  return std::string((std::istreambuf_iterator<char>(file)), {});
}

// The later collection of one source's test data, counted apart.
inline bool laterSet(const std::string &name) {
  if (name.rfind("mms-engine__test_", 0) != 0) return false;
  return name != "mms-engine__test_delivery_ind-DeliveryRejected-m-delivery.ind" &&
         name != "mms-engine__test_retrieve-Base64-m-retrieve.conf" &&
         name != "mms-engine__test_retrieve-QuotedPrintable-m-retrieve.conf";
}

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

// The header read in place, through windows of 1 and 5 bytes, and byte by
// byte: the one result, or nothing when they differ.
inline std::optional<Read> readAgreed(std::string_view bytes) {
  tarnex::ScratchStrStrm whole(bytes);
  const Read first = readWith(whole);
  for (int64_t window : {0, 1, 5}) {
    LentStrm lent(bytes, window);
    if (!(readWith(lent) == first)) return std::nullopt;
  }
  return first;
}

}  // namespace mmstest

#endif  // OSTREL_TESTS_MMSTESTUTIL_H
