// The BEGIN/END frame shared by the text decoders (vCard, groups, and the
// calendar, note, bookmark and message formats after them).
//
// A decoder clears its record, then calls readFrame with its format's word
// ("VCARD") and a callback for each property inside the object:
//   - properties before "BEGIN:<word>" are passed over without a trace;
//   - inside, every property but the closing END goes to the callback, a
//     nested BEGIN included (there is no nesting: an embedded card's lines
//     read as lines of the outer one, and its END closes the object);
//   - "END:<word>" ends the object (END of anything else is passed over).
// Result: 1 an object was read; 0 the stream ended (or a fault arose)
// before BEGIN, or the stream ended inside the object; a negative code of
// the property reader after BEGIN. On a result below 1 the decoder clears
// its record again. The stream stands behind the END line after a 1.
//
// Inside, a decoder dispatches each name through a constexpr table of
// {name, ...} rows walked from the top with findRow, and traces what no row
// knows with traceUnhandled.
#ifndef OSTREL_DETAIL_TEXTFRAME_H
#define OSTREL_DETAIL_TEXTFRAME_H

#include <cstdint>

#include "detail/Trace.h"
#include "ostrel/VpiEd.h"
#include "tarnex/scratch.hpp"

namespace ostrel::detail {

template <class OnProp>
int32_t readFrame(IStrm *strm, const char *word, OnProp onProp) {
  tarnex::ScratchStr<32> name;
  tarnex::ScratchStr<128> params;
  tarnex::ScratchMemStrm val(512);
  tarnex::ScratchStr<32> scratch;
  bool beg = false;
  for (;;) {
    const int32_t rc = VpiDec_getStrm(strm, name, params, val);
    if (rc < 1) return beg ? rc : 0;
    // A value cut by the end of the stream comes back unrewound.
    IStrm_rewind(val);
    const bool isBegin = kvo_stricmp(name.c_str(), "BEGIN") == 0;
    const bool isEnd = !isBegin && kvo_stricmp(name.c_str(), "END") == 0;
    if (!beg || isEnd) {
      if (!beg && !isBegin) continue;
      VpiVal_getCstr(val, scratch, 0, nullptr);
      if (kvo_stricmp(scratch.c_str(), word) != 0) continue;
      if (isEnd) return 1;
      beg = true;
      continue;
    }
    onProp(name.get(), params.get(), val.get());
  }
}

// The first row whose name equals `name` (case ignored), or null.
template <class Row, size_t N>
const Row *findRow(const Row (&table)[N], const char *name) {
  // The first byte, folded the way ASCII letters fold, rules out most rows
  // before the full comparison; it never rules out a match.
  const int first = static_cast<unsigned char>(name[0]) | 0x20;
  for (const Row &row : table)
    if ((static_cast<unsigned char>(row.name[0]) | 0x20) == first &&
        kvo_stricmp(name, row.name) == 0)
      return &row;
  return nullptr;
}

// "un-handled field" with the property's name and its value.
inline void traceUnhandled(const char *name, IStrm *val, int32_t level) {
  if (!traceOn(kModule, kCatUnknown, level)) return;
  tout_beg(__FILE__, __LINE__, kModule, kCatUnknown, level);
  tout_fmt("un-handled field \"%s\"", name);
  tout_tstrm(val);
  tout_endx();
}

}  // namespace ostrel::detail

#endif  // OSTREL_DETAIL_TEXTFRAME_H
