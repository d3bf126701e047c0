// The property lines of the small text encoders (notes, bookmarks and the
// message texts after them), written in the order of their rows: each
// write is skipped once one has failed, and a failed line is traced with
// its name and value, so an encoder reads as its list of rows. A row
// written only under a condition other than its value's being empty is
// led by when(condition).
#ifndef OSTREL_DETAIL_TEXTENC_H
#define OSTREL_DETAIL_TEXTENC_H

#include <cstdint>

#include "detail/Trace.h"
#include "ostrel/VpiEd.h"
#include "tarnex/scratch.hpp"

namespace ostrel::detail {

class LineWriter {
 public:
  LineWriter(IStrm *strm, const VpiEncOpts *opts) : strm_(strm), opts_(opts) {}

  // The next row goes out only if `cond` holds.
  LineWriter &when(bool cond) {
    gate_ = cond;
    return *this;
  }

  // Escaped text goes out up to its first 0 byte, so that is what decides
  // whether the line is written: a value of NUL bytes would otherwise come
  // back as an empty line, which the next reading drops.
  // spaced: the failure reads "[NAME : value]", as for a local identifier.
  LineWriter &text(const char *name, const char *value, bool spaced = false) {
    if (!open() || value == nullptr || *value == '\0') return *this;
    return done(VpiEnc_putStr(strm_, name, nullptr, value, -1, opts_), [&] {
      if (spaced)
        tout_fmt("[%s : %s]", name, value);
      else
        tout_fmt("[%s: %s]", name, value);
    });
  }
  LineWriter &str(const char *name, const KvoStr *value) { return text(name, KvoStr_buf(value)); }
  LineWriter &wide(const char *name, const KvoWcs *value) {
    if (!open() || KvoWcs_len(value) == 0) return *this;
    return done(VpiEnc_putStrW(strm_, name, nullptr, KvoWcs_buf(value), KvoWcs_len(value), opts_),
                [&] {
                  tout_fmt("[%s: ]", name);
                  tout_wcs(KvoWcs_buf(value));
                });
  }
  LineWriter &date(const char *name, const KvoDt &value) {
    if (!open() || !dateSet(value)) return *this;
    tarnex::ScratchStr<32> text;
    iso_dt_enc(text, &value);
    return done(VpiEnc_putStr(strm_, name, nullptr, text.c_str(), text.len(), opts_),
                [&] { tout_fmt("[%s: %s]", name, text.c_str()); });
  }
  // BEGIN, VERSION and END are written whatever they hold; END without
  // options, as every encoder closes its object.
  LineWriter &always(const char *name, const char *value, bool withOpts = true) {
    if (!open()) return *this;
    return done(VpiEnc_putStr(strm_, name, nullptr, value, -1, withOpts ? opts_ : nullptr),
                [&] { tout_fmt("[%s: %s]", name, value); });
  }
  // An unsigned decimal, written whatever it is.
  LineWriter &number(const char *name, uint64_t value) {
    tarnex::ScratchStr<128> text;
    KvoStr_appdUlong(text, value);
    return always(name, text.c_str());
  }
  // A message's payload: written even when empty, a failed one traced by
  // its name alone, as a binary one is.
  LineWriter &payload(const char *name, const KvoWcs *value) {
    if (!open()) return *this;
    return done(VpiEnc_putStrW(strm_, name, nullptr, KvoWcs_buf(value), KvoWcs_len(value), opts_),
                [&] { tout_fmt("[%s]", name); });
  }
  // Octets from the start of `val`, in the binary encoding of the options.
  LineWriter &binary(const char *name, const KvoStr *params, IStrm *val) {
    if (!open()) return *this;
    return done(VpiEnc_putStrm(strm_, name, params, val, 1, opts_), [&] { tout_fmt("[%s]", name); });
  }
  // Ends the writing with a code of the encoder's own (a record it cannot
  // write), unless a write has failed before.
  LineWriter &stop(int32_t rc) {
    if (rc_ >= 0) rc_ = rc;
    return *this;
  }
  // "1.1" from a version word, 0 giving the format's default.
  LineWriter &version(uint32_t ver, uint32_t byDefault) {
    char text[64];
    ver_to_ver_str(ver != 0 ? ver : byDefault, text, sizeof text, 0);
    return always("VERSION", text);
  }
  int32_t result() const { return rc_ < 0 ? rc_ : 0; }

 private:
  // Whether the row goes out: no write has failed and its condition holds.
  bool open() {
    const bool gate = gate_;
    gate_ = true;
    return rc_ >= 0 && gate;
  }

  template <class Trace>
  LineWriter &done(int32_t rc, Trace trace) {
    if (rc < 0) {
      rc_ = rc;
      if (traceOn(kModule, kCatField, 1)) {
        tout_beg(__FILE__, __LINE__, kModule, kCatField, 1);
        trace();
        tout_endx();
      }
    }
    return *this;
  }

  IStrm *strm_;
  const VpiEncOpts *opts_;
  int32_t rc_ = 0;
  bool gate_ = true;
};

}  // namespace ostrel::detail

#endif  // OSTREL_DETAIL_TEXTENC_H
