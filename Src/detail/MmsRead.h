// The readers of binary MMS values, shared by the header and the message
// decoders. Every byte comes from the network: a reader steps over exactly
// its own value and stops at the end of the stream, which it reports
// through MmsIn::eos() so that a caller can end where the message ends
// instead of acting on a length it never got.
#ifndef OSTREL_DETAIL_MMSREAD_H
#define OSTREL_DETAIL_MMSREAD_H

#include <cstdint>
#include <string_view>

#include "ostrel/MmsItem.h"
#include "tarnex/scratch.hpp"

namespace ostrel::detail {

// A stream read byte by byte. The bytes a stream lends (peek) are read in
// place, and the stream is moved on once, when the reader ends; past them
// (or with a stream that lends none) the reader goes through getc, so a
// window shorter than the stream costs speed, never bytes. Both ways give
// the same bytes and leave the stream at the same place.
class MmsIn {
 public:
  explicit MmsIn(IStrm *s);
  ~MmsIn() { leaveWindow(); }
  MmsIn(const MmsIn &) = delete;
  MmsIn &operator=(const MmsIn &) = delete;

  // The next byte, or -1 at the end (and eos() is then true).
  int32_t byte() { return p_ < end_ ? *p_++ : slowByte(); }
  // Puts back the byte just read; never called after an end.
  void unget();
  // Steps over n bytes; false (at the end, eos) when fewer are left.
  bool skip(uint64_t n);
  // The next n bytes in one piece: in place, or copied into spill. False
  // (all that was left consumed, eos) when fewer are left; spill grows only
  // with bytes actually read.
  bool take(uint64_t n, std::string_view *out, tarnex::ScratchStr<256> &spill);
  bool eos() const { return eos_; }
  int64_t pos() const;
  // Bytes from the position to the end of the stream.
  int64_t left() const;
  // Appends the next n bytes to dst in one piece when the stream holds
  // them; else false with nothing read, the position unchanged.
  bool copyTo(IStrm *dst, uint64_t n);

 private:
  int32_t slowByte();
  // Moves the stream to where the window was read to; from here on getc.
  void leaveWindow();

  IStrm *s_;
  const uint8_t *begin_ = nullptr, *p_ = nullptr, *end_ = nullptr;
  bool eos_ = false;
};

// Uintvar: 7 bits a byte, high group first, wrapping in 32 bits.
uint32_t mms_dec_uintvar(MmsIn &in);
// Long integer: a length byte n (not limited), n bytes big-endian; the
// high bytes of a long one shift out.
uint32_t mms_dec_long(MmsIn &in);
// Integer value: a short integer (b & 0x7F) or a long integer.
uint32_t mms_dec_int(MmsIn &in);
// Value length: 0 (the zero byte put back), 1-30, or 31 and a uintvar;
// -1 for any other first byte (consumed) and at the end of the stream.
int64_t mms_dec_len(MmsIn &in);
// String value into str (cleared first): 0, or -51 for an encoded string
// whose length runs past the stream.
int32_t mms_dec_str_val(KvoStr *str, MmsIn &in);
// An address appended to list (with "," between), its "/TYPE=PLMN" cut:
// 0, or the string's negative result.
int32_t mms_dec_addr(KvoStr *list, MmsIn &in);
// The From value into from (replaced), any "/TYPE=" suffix cut.
void mms_dec_from(KvoStr *from, MmsIn &in);
// Steps over a Content-Type value.
void mms_dec_ctype(MmsIn &in);
// Seconds since 1970 (UTC, unsigned 32 bits) as local floating time;
// unset when the platform cannot convert them.
void mms_dec_date(KvoDt *date, uint32_t secs);

}  // namespace ostrel::detail

#endif  // OSTREL_DETAIL_MMSREAD_H
