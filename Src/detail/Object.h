// The tag word of every record, written once for all families.
//
// The first member of a tagged record is a 32-bit word: bits 0-30 name the
// family, bit 31 says the storage came from kvo_malloc__ and is freed by
// _delete. A check masks the heap bit, so it never disturbs the check; a
// deleted record has tag 0 and fails every later check.
#ifndef OSTREL_DETAIL_OBJECT_H
#define OSTREL_DETAIL_OBJECT_H

#include <cstdint>
#include <cstring>

#include "tarnex/base.h"

namespace ostrel::detail {

inline constexpr uint32_t kHeapBit = 0x80000000u;
inline constexpr uint32_t kTagMask = 0x7FFFFFFFu;

inline uint32_t tagWord(const void *obj) {
  uint32_t w;
  std::memcpy(&w, obj, sizeof w);
  return w;
}
inline void setTagWord(void *obj, uint32_t w) { std::memcpy(obj, &w, sizeof w); }

inline bool hasTag(const void *obj, uint32_t tag) {
  return obj != nullptr && (tagWord(obj) & kTagMask) == tag;
}

// Ends the process in order unless obj is a live record of the family.
inline void checkTag(const void *obj, uint32_t tag, const char *file, int32_t line) {
  if (!hasTag(obj, tag)) ObjUtil_crashExit(file, line);
}

// _new: the caller's storage gets the plain tag, null storage a fresh zeroed
// heap block with the heap form. The caller constructs the members.
template <class T>
T *newObject(T *storage, uint32_t tag, const char *file, int32_t line) {
  T *obj = storage;
  uint32_t word = tag;
  if (obj == nullptr) {
    obj = static_cast<T *>(kvo_malloc__(sizeof(T), file, line));
    std::memset(static_cast<void *>(obj), 0, sizeof(T));
    word |= kHeapBit;
  }
  setTagWord(obj, word);
  return obj;
}

// The foot of _delete: the tag becomes 0 before the storage is freed, and
// only storage with the heap bit is freed.
inline void endObject(void *obj, const char *file, int32_t line) {
  const uint32_t word = tagWord(obj);
  setTagWord(obj, 0);
  if (word & kHeapBit) kvo_free__(obj, file, line);
}

}  // namespace ostrel::detail

// Checks a record at the caller's own file and line.
#define OSTREL_CHECK(obj, tag) ::ostrel::detail::checkTag((obj), (tag), __FILE__, __LINE__)
// Reports a broken precondition and lets the caller go on safely.
#define OSTREL_REQUIRE(cond, text) \
  ((cond) ? true : (kvo_assert__((text), __FILE__, __LINE__), false))

#endif  // OSTREL_DETAIL_OBJECT_H
