// The BEGIN/END frame shared by the text decoders (vCard, groups, and the
// calendar, note, bookmark and message formats after them).
//
// How a decoder uses it:
//
//   struct Ctx { MyItem *item; uint32_t *ver; };
//   constexpr FrameRow<Ctx> kProps[] = {
//       {"VERSION", [](Ctx &c, const FrameProp &p) { ... p.val ... }},
//       {"X-FOO", ...},
//   };
//   MyItem_clear(item);
//   Ctx ctx{item, ver};
//   const int32_t rc = decodeFrame(strm, "VFOO", kProps, ctx);
//   if (rc < 1) MyItem_clear(item);
//   return rc;
//
// decodeFrame reads property after property with VpiDec_getStrm:
//   - before "BEGIN:<word>" every line is passed over without a trace; the
//     BEGIN value is read whole and raw, so "BEGIN:VCARD;X" opens nothing;
//   - inside, each property goes to the first row whose name equals its
//     own (ASCII case ignored), the table walked from the top; a name no
//     row knows goes to the fallback, by default a trace "un-handled field"
//     (category 0x4, level 3) with the name and the value, and is dropped;
//   - a nested BEGIN is an ordinary property: a calendar sees its
//     BEGIN:VEVENT rows, and an embedded card (a 2.1 AGENT followed by its
//     card's lines) is read as lines of the outer object, so that its END
//     closes the object. There is no nesting count;
//   - "END:<word>" ends the object; END of anything else is passed over.
// Result: 1 an object was read, the stream standing behind its END line so
// that the next call reads the next object; 0 the stream ended (or the
// property reader failed) before BEGIN, or the stream ended inside the
// object; the reader's negative code when it failed after BEGIN. A result
// below 1 means the caller clears its record again.
//
// A decoder whose rows carry more than a handler (the vCard's field types)
// uses the two halves, readFrame and findRow, with its own dispatch.
//
// A format whose object holds an entry (the calendar: lines before the
// entry are dropped, the entry's END closes the entry and only a later
// END:<word> the object) gives readFrame its own marks: an object with
// `FrameMark mark(bool isEnd, const char *value)` that sees every BEGIN and
// END line inside the object, its value read whole and raw, and says
// whether the line goes on to onProp, is dropped, or ends the object.
#ifndef OSTREL_DETAIL_TEXTFRAME_H
#define OSTREL_DETAIL_TEXTFRAME_H

#include <cstddef>
#include <cstdint>

#include "detail/Trace.h"
#include "ostrel/VpiEd.h"
#include "tarnex/scratch.hpp"

namespace ostrel::detail {

// One property inside the object. `val` stands at the start of the value,
// with transfer encodings and the charset already undone by the reader.
struct FrameProp {
  const char *name;
  const KvoStr *params;  // the parameter text with its leading ";"
  IStrm *val;
};

template <class Ctx>
struct FrameRow {
  const char *name;
  void (*handler)(Ctx &, const FrameProp &);
};

enum class FrameMark { kPass, kDrop, kEnd };

// The marks of a plain object: END:<word> ends it, END of anything else is
// dropped, a nested BEGIN is an ordinary property.
struct WordMarks {
  const char *word;
  FrameMark mark(bool isEnd, const char *value) const {
    if (!isEnd) return FrameMark::kPass;
    return kvo_stricmp(value, word) == 0 ? FrameMark::kEnd : FrameMark::kDrop;
  }
};

// The frame alone: onProp(name, params, val) for each property inside that
// the marks pass on.
template <class Marks, class OnProp>
int32_t readFrame(IStrm *strm, const char *word, Marks &marks, OnProp onProp) {
  tarnex::ScratchStr<32> name;
  tarnex::ScratchStr<128> params;
  tarnex::StackMemStrm<512> val;  // ordinary values need no heap
  tarnex::ScratchStr<32> scratch;
  bool beg = false;
  for (;;) {
    const int32_t rc = VpiDec_getStrm(strm, name, params, val);
    if (rc < 1) return beg ? rc : 0;
    // A value cut by the end of the stream comes back unrewound.
    IStrm_rewind(val);
    const bool isBegin = kvo_stricmp(name.c_str(), "BEGIN") == 0;
    const bool isEnd = !isBegin && kvo_stricmp(name.c_str(), "END") == 0;
    if (!beg) {
      if (!isBegin) continue;
      VpiVal_getCstr(val, scratch, 0, nullptr);
      beg = kvo_stricmp(scratch.c_str(), word) == 0;
      continue;
    }
    if (isBegin || isEnd) {
      VpiVal_getCstr(val, scratch, 0, nullptr);
      const FrameMark step = marks.mark(isEnd, scratch.c_str());
      if (step == FrameMark::kEnd) return 1;
      if (step == FrameMark::kDrop) continue;
      IStrm_rewind(val);
    }
    onProp(name.get(), params.get(), val.get());
  }
}

template <class OnProp>
int32_t readFrame(IStrm *strm, const char *word, OnProp onProp) {
  WordMarks marks{word};
  return readFrame(strm, word, marks, onProp);
}

// Rows most formats share. Ctx has `ver` (uint32_t *) and, for the second,
// `luid` (KvoStr *); each may be null, and the line is then read and
// dropped, without an "un-handled" trace.
template <class Ctx>
void readVersion(Ctx &ctx, const FrameProp &p) {
  if (ctx.ver == nullptr) return;
  tarnex::ScratchStr<32> text;
  VpiVal_getCstr(p.val, text, 0, nullptr);  // whole and raw
  *ctx.ver = ver_str_to_ver(text.c_str());
}

template <class Ctx>
void readLuid(Ctx &ctx, const FrameProp &p) {
  if (ctx.luid != nullptr) VpiVal_getCstr(p.val, ctx.luid, 1, nullptr);
}

// A date value, read escaped; an empty one leaves the date as it is, and
// one the foundation refuses leaves it unset.
inline void readDate(const FrameProp &p, KvoDt *dt) {
  tarnex::ScratchStr<32> text;
  VpiVal_getCstr(p.val, text, 1, nullptr);
  if (text.len() != 0) iso_dt_dec(text.c_str(), dt);
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

// "un-handled field" with the property's name and its value; module 6
// unless a format keeps the module of its own reader.
inline void traceUnhandled(const char *name, IStrm *val, int32_t level, int32_t module = kModule) {
  if (!traceOn(module, kCatUnknown, level)) return;
  tout_beg(__FILE__, __LINE__, module, kCatUnknown, level);
  tout_fmt("un-handled field \"%s\"", name);
  tout_tstrm(val);
  tout_endx();
}

// What a table decoder may add to its rows.
template <class Ctx>
struct FrameHooks {
  // A name no row knows; null: traced "un-handled field" (6, 0x4, 3) and dropped.
  void (*fallback)(Ctx &, const FrameProp &) = nullptr;
  // Each property inside, name and value, traced (category 0x1) as it is read.
  bool traceEach = false;
};

// The frame with its table: see the head of this file.
template <class Ctx, size_t N>
int32_t decodeFrame(IStrm *strm, const char *word, const FrameRow<Ctx> (&table)[N], Ctx &ctx,
                    const FrameHooks<Ctx> &hooks = {}) {
  return readFrame(strm, word, [&](const KvoStr *name, const KvoStr *params, IStrm *val) {
    const FrameProp prop{KvoStr_buf(name), params, val};
    if (hooks.traceEach && traceOn(kModule, kCatPos, 3)) {
      tout_beg(__FILE__, __LINE__, kModule, kCatPos, 3);
      tout_fmt("%s : ", prop.name);
      tout_tstrm(val);  // leaves the value where it stood
      tout_endx();
    }
    if (const FrameRow<Ctx> *row = findRow(table, prop.name))
      row->handler(ctx, prop);
    else if (hooks.fallback != nullptr)
      hooks.fallback(ctx, prop);
    else
      traceUnhandled(prop.name, val, 3);
  });
}

// The whole of a small decoder around decodeFrame: the record cleared
// before and again below 1, the stream's position traced at entry and exit
// ("vnote: 0/120", "[vbkm: 0/96]", "vsms beg pos : 0").
template <class Ctx, size_t N, class Item>
int32_t decodeRecord(IStrm *strm, const char *word, const FrameRow<Ctx> (&table)[N], Ctx &ctx,
                     Item *item, void (*clear)(Item *), const char *codec, PosForm form,
                     const FrameHooks<Ctx> &hooks = {}) {
  tracePos(codec, strm, form);
  clear(item);
  const int32_t rc = decodeFrame(strm, word, table, ctx, hooks);
  if (rc < 1) clear(item);
  tracePos(codec, strm, form, true);
  return rc;
}

}  // namespace ostrel::detail

#endif  // OSTREL_DETAIL_TEXTFRAME_H
