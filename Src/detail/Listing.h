// The protocol of the XML listings (calls, media, folders, messages),
// written once. A family is a constexpr description: its words, its entry
// elements with their kind bits, and one row an attribute saying how the
// member is read and written. A new listing adds a description, never a
// code path.
//
// Reading: the parser runs inside _decItem and is stopped by the element
// callback at each entry, after the entry's attributes have landed in the
// caller's record; the next _decItem resumes it. Writing keeps no state:
// head lines, one line an entry, a closing line.
#ifndef OSTREL_DETAIL_LISTING_H
#define OSTREL_DETAIL_LISTING_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "ostrel/Ostrel.h"
#include "tarnex/scratch.hpp"

namespace ostrel::detail {

// An entry line as it is built, on the stack.
using EntryLine = tarnex::ScratchStr<512>;

// How one kind of member is read from an attribute value and written.
struct ValueType {
  void (*read)(void *member, const char *value);
  // Appends the value as it goes out; false when the member is not set,
  // and the attribute is then left out.
  bool (*write)(const void *member, EntryLine &line);
};

struct AttrRow {
  const char *read;       // the word read, case ignored; null: never read
  const char *written;    // the word written; null: never written
  const ValueType *type;
  size_t offset;          // of the member in the record
  uint32_t writeIf;       // kind bits the record needs for the row to be written (0: any)
};

struct EntryRow {
  const char *word;       // the element read, case ignored
  uint32_t kind;          // the bit it sets in the record's kind word (0: none)
  const char *opening;    // what the writer opens the line with
  uint32_t writeIf;       // the writer takes the first row whose bit the record has (0: any)
};

struct ListingDesc {
  const char *prefix;     // "xcalls": traces, and the stream's assertion word
  const char *decTrace;   // "dec->xcalls"
  const char *encAssert;  // "xcalls && item"
  const char *root;       // the root element's word
  const char *head;       // the head lines
  const char *closing;    // the closing line
  uint32_t tag;           // the record's family tag
  ptrdiff_t kindOffset;   // the record's kind word, or -1
  void (*clear)(void *item);
  void (*prepare)(void *item);  // before the attributes are walked, or null
  std::span<const EntryRow> entries;
  std::span<const AttrRow> attrs;
};

// The six operations, each family's export a call of one of these.
XmlListDec *listDecBeg(const ListingDesc &d, IStrm *strm);
int32_t listDecItem(const ListingDesc &d, XmlListDec *dec, void *item);
int32_t listDecEnd(const ListingDesc &d, XmlListDec *dec);
int32_t listEncBeg(const ListingDesc &d, IStrm *strm);
int32_t listEncItem(const ListingDesc &d, IStrm *strm, const void *item);
int32_t listEncEnd(const ListingDesc &d, IStrm *strm);

// Value types shared by the families.
extern const ValueType kRawText;  // KvoStr, written as it stands when not empty
extern const ValueType kIsoDate;  // KvoDt, iso_dt_dec and iso_dt_enc, written when set
extern const ValueType kNumber;   // 32-bit word read as strtoul reads base 10; never written

// A number read as a 32-bit strtoul reads base 10 on any platform: blanks,
// a sign, digits; a minus negates in 32 bits; past 32 bits 0xFFFFFFFF.
uint32_t readNumber32(const char *text);

}  // namespace ostrel::detail

#endif  // OSTREL_DETAIL_LISTING_H
