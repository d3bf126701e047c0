// tarnex/scratch.hpp - C++ owners for the foundation's scratch objects.
//
// Header-only conveniences for C++ callers (the library and our tests); they
// add nothing to the C ABI. Each owner ends its object when it goes out of
// scope, so a scratch string or stream can never leak on an early return.
#ifndef TARNEX_SCRATCH_HPP
#define TARNEX_SCRATCH_HPP

#include <cstdint>
#include <string_view>

#include "tarnex/str.h"
#include "tarnex/strm.h"

namespace tarnex {

// An 8-bit string that starts in N bytes on the stack and moves to the heap
// only when its content outgrows them.
template <int32_t N>
class ScratchStr {
 public:
  ScratchStr() { StrExt_new__(&str_, buf_, N); }
  ~ScratchStr() { KvoStr_delete(&str_); }
  ScratchStr(const ScratchStr &) = delete;
  ScratchStr &operator=(const ScratchStr &) = delete;

  KvoStr *get() { return &str_; }
  operator KvoStr *() { return &str_; }
  const char *c_str() const { return str_.buf; }
  int32_t len() const { return str_.len; }
  std::string_view view() const { return {str_.buf, static_cast<size_t>(str_.len)}; }

 private:
  char buf_[N];
  KvoStr str_;
};

// The 16-bit counterpart, N units on the stack.
template <int32_t N>
class ScratchWcs {
 public:
  ScratchWcs() { WcsExt_new__(&wcs_, buf_, N); }
  ~ScratchWcs() { KvoWcs_delete(&wcs_); }
  ScratchWcs(const ScratchWcs &) = delete;
  ScratchWcs &operator=(const ScratchWcs &) = delete;

  KvoWcs *get() { return &wcs_; }
  operator KvoWcs *() { return &wcs_; }
  const KvoWchar *c_str() const { return wcs_.buf; }
  int32_t len() const { return wcs_.len; }

 private:
  KvoWchar buf_[N];
  KvoWcs wcs_;
};

// A read-only KvoWcs over a caller's units (n < 0: up to the 0 unit), for
// passing 16-bit text to functions that take a KvoWcs without copying it.
// Never hand the view to a function that writes to it.
inline KvoWcs wcsView(const KvoWchar *units, int32_t n) {
  static const KvoWchar kEmpty = 0;
  if (units == nullptr) units = &kEmpty;
  if (n < 0) {
    n = 0;
    while (units[n] != 0) ++n;
  }
  KvoWcs w{};
  w.buf = const_cast<KvoWchar *>(units);
  w.len = n;
  w.cap = 0;  // not writable storage
  return w;
}

// Owns any stream and deletes it at the end of its scope.
class OwnedStrm {
 public:
  explicit OwnedStrm(IStrm *s = nullptr) : s_(s) {}
  ~OwnedStrm() { IStrm_delete(s_); }
  OwnedStrm(const OwnedStrm &) = delete;
  OwnedStrm &operator=(const OwnedStrm &) = delete;
  OwnedStrm(OwnedStrm &&o) noexcept : s_(o.s_) { o.s_ = nullptr; }
  OwnedStrm &operator=(OwnedStrm &&o) noexcept {
    if (this != &o) {
      IStrm_delete(s_);
      s_ = o.s_;
      o.s_ = nullptr;
    }
    return *this;
  }

  IStrm *get() const { return s_; }
  operator IStrm *() const { return s_; }
  explicit operator bool() const { return s_ != nullptr; }
  IStrm *release() {
    IStrm *s = s_;
    s_ = nullptr;
    return s;
  }

 private:
  IStrm *s_;
};

// A memory stream whose object lives in the owner (no allocation for the
// object itself; the buffer grows on the heap as needed).
class ScratchMemStrm {
 public:
  explicit ScratchMemStrm(int32_t size, const char *file = __builtin_FILE(),
                          int32_t line = __builtin_LINE())
      : s_(MemStrm_xcreatex__(&storage_, size, file, line)) {}
  ~ScratchMemStrm() { IStrm_delete(s_); }
  ScratchMemStrm(const ScratchMemStrm &) = delete;
  ScratchMemStrm &operator=(const ScratchMemStrm &) = delete;

  IStrm *get() const { return s_; }
  operator IStrm *() const { return s_; }

 private:
  MemStrm storage_;
  IStrm *s_;
};

// A read-only stream over a caller's text, object in the owner.
// A memory stream whose first N bytes live on the stack.
template <int32_t N>
class StackMemStrm {
 public:
  explicit StackMemStrm(const char *file = __builtin_FILE(), int32_t line = __builtin_LINE())
      : s_(MemStrm_xcreateExt__(&storage_, buf_, N, file, line)) {}
  ~StackMemStrm() { IStrm_delete(s_); }
  StackMemStrm(const StackMemStrm &) = delete;
  StackMemStrm &operator=(const StackMemStrm &) = delete;

  IStrm *get() const { return s_; }
  operator IStrm *() const { return s_; }

 private:
  uint8_t buf_[N];
  MemStrm storage_;
  IStrm *s_;
};

class ScratchStrStrm {
 public:
  ScratchStrStrm(const char *text, int32_t len, const char *file = __builtin_FILE(),
                 int32_t line = __builtin_LINE())
      : s_(StrStrm_xcreate__(&storage_, text, len, file, line)) {}
  explicit ScratchStrStrm(std::string_view text)
      : ScratchStrStrm(text.data(), static_cast<int32_t>(text.size())) {}
  ~ScratchStrStrm() { IStrm_delete(s_); }
  ScratchStrStrm(const ScratchStrStrm &) = delete;
  ScratchStrStrm &operator=(const ScratchStrStrm &) = delete;

  IStrm *get() const { return s_; }
  operator IStrm *() const { return s_; }

 private:
  StrStrm storage_;
  IStrm *s_;
};

}  // namespace tarnex

#endif  // TARNEX_SCRATCH_HPP
