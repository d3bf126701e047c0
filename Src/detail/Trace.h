// The trace guard and the frames of _trace, _tracex and _dump, written once
// for every family.
//
// Every statement tests kvo_trc_enabled() first and DbgMng_enabled__ second,
// so that tracing costs one call when it is off. Module 6 is this library.
#ifndef OSTREL_DETAIL_TRACE_H
#define OSTREL_DETAIL_TRACE_H

#include <cstdint>

#include "tarnex/scratch.hpp"
#include "tarnex/tarnex.h"

namespace ostrel::detail {

inline constexpr int32_t kModule = 6;

// Trace categories.
inline constexpr uint32_t kCatPos = 0x1;      // stream positions, raw entries
inline constexpr uint32_t kCatField = 0x2;    // field progress and faults
inline constexpr uint32_t kCatUnknown = 0x4;  // properties not understood
inline constexpr uint32_t kCatFunc = 0x8;     // function markers
inline constexpr uint32_t kCatText = 0x100;   // whole text read or written

inline bool traceOn(int32_t module, uint32_t category, int32_t level) {
  return kvo_trc_enabled() != 0 && DbgMng_enabled__(module, category, level) != 0;
}

// Begin and end markers of a function, (6, 8, 3) unless told otherwise.
class FuncTrace {
 public:
  FuncTrace(const char *fn, const char *file, int32_t line, int32_t level = 3)
      : fn_(fn), file_(file), line_(line), level_(level),
        on_(traceOn(kModule, kCatFunc, level)) {
    if (on_) DbgMng_outFbeg(fn_, file_, line_, kModule, kCatFunc, level_);
  }
  ~FuncTrace() {
    if (on_) DbgMng_outFend(fn_, file_, line_, kModule, kCatFunc, level_);
  }
  FuncTrace(const FuncTrace &) = delete;
  FuncTrace &operator=(const FuncTrace &) = delete;

 private:
  const char *fn_;
  const char *file_;
  int32_t line_;
  int32_t level_;
  bool on_;
};

// Puts the stream where a _tracex or _dump writes: cleared, or at its end.
inline void openOutput(IStrm *strm, int32_t append) {
  if (append == 0)
    IStrm_clear(strm);
  else
    IStrm_seek(strm, 0, KVO_SEEK_END);
}

// Where a codec stands in its stream, in the form its family has always
// written: "vnote: 12/300", "[vnote: 12/300]", or "vsms beg pos : 12" at
// entry and "vsms end pos : 300" at exit.
enum class PosForm { kPlain, kBracketed, kBegEnd };

inline void tracePos(const char *codec, IStrm *strm, PosForm form, bool atExit = false) {
  if (!traceOn(kModule, kCatPos, 3)) return;
  tout_beg(__FILE__, __LINE__, kModule, kCatPos, 3);
  const int pos = static_cast<int>(IStrm_tell(strm)), size = static_cast<int>(IStrm_size(strm));
  switch (form) {
    case PosForm::kPlain: tout_fmt("%s: %d/%d", codec, pos, size); break;
    case PosForm::kBracketed: tout_fmt("[%s: %d/%d]", codec, pos, size); break;
    case PosForm::kBegEnd: tout_fmt("%s %s pos : %d", codec, atExit ? "end" : "beg", pos); break;
  }
  tout_endx();
}
inline void tracePos(const char *codec, IStrm *strm, bool bracketed) {
  tracePos(codec, strm, bracketed ? PosForm::kBracketed : PosForm::kPlain);
}

// A date counts as set when its year or its hour word holds a value.
inline bool dateSet(const KvoDt &dt) { return dt.year != KVO_DT_UNSET || dt.hour != KVO_DT_UNSET; }

// The body of _tracex between its head and end lines: one "id = value\n"
// line a member that is set.
class TraceLines {
 public:
  explicit TraceLines(IStrm *strm) : strm_(strm) {}
  void text(const char *id, const char *value) {
    if (value != nullptr && *value != '\0') IStrm_printf(strm_, "%s = %s\n", id, value);
  }
  void str(const char *id, const KvoStr *value) { text(id, KvoStr_buf(value)); }
  void wcs(const char *id, const KvoWcs *value) {
    if (KvoWcs_len(value) == 0) return;
    tarnex::ScratchStr<256> utf8;
    KvoStr_setCwcs(utf8, value);
    text(id, utf8.c_str());
  }
  // A date that is set, in the form iso_dt_enc writes.
  void date(const char *id, const KvoDt &value) {
    if (!dateSet(value)) return;
    tarnex::ScratchStr<32> text;
    iso_dt_enc(text, &value);
    IStrm_printf(strm_, "%s = %s\n", id, text.c_str());
  }
  void num(const char *id, int64_t value) {
    if (value != 0) IStrm_printf(strm_, "%s = %lld\n", id, static_cast<long long>(value));
  }
  IStrm *strm() const { return strm_; }

 private:
  IStrm *strm_;
};

// _trace: the record's _tracex text, collected in a memory stream, handed
// to the trace output.
template <class T>
void traceRecord(T *obj, void (*tracex)(T *, IStrm *, int32_t)) {
  tarnex::ScratchMemStrm text(0);
  tracex(obj, text, 0);
  tout_tstrm(text);
}

}  // namespace ostrel::detail

#define OSTREL_FUNC_TRACE() \
  ::ostrel::detail::FuncTrace ostrelFuncTrace_(__func__, __FILE__, __LINE__)

// A one-statement text block: OSTREL_TRACE(category, level, format, ...).
#define OSTREL_TRACE(category, level, ...)                                        \
  do {                                                                            \
    if (::ostrel::detail::traceOn(::ostrel::detail::kModule, (category), (level))) { \
      tout_beg(__FILE__, __LINE__, ::ostrel::detail::kModule, (category), (level));  \
      tout_fmt(__VA_ARGS__);                                                      \
      tout_endx();                                                                \
    }                                                                             \
  } while (0)

#endif  // OSTREL_DETAIL_TRACE_H
