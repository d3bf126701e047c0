// Streams. Shared cases run on every kind, so one kind's fault shows beside the others.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "tarnex/scratch.hpp"
#include "tarnex/strm.h"

namespace {

using tarnex::OwnedStrm;
constexpr int64_t kGiB = int64_t{1} << 30;

std::string tempPath() {
  static int serial = 0;
  return ::testing::TempDir() + "strm_" + std::to_string(getpid()) + "_" + std::to_string(serial++);
}

void writeFile(const std::string &path, const std::string &bytes) {
  FILE *fp = fopen(path.c_str(), "wb");
  ASSERT_TRUE(fp && fwrite(bytes.data(), 1, bytes.size(), fp) == bytes.size() && !fclose(fp));
}

IStrm *openFile(const std::string &path, const char *mode, FileStrm *storage = nullptr) {
  return FileStrm_xcreatex__(storage, path.c_str(), mode, 0, __FILE__, __LINE__);
}

// Everything from the start; leaves the position at the end.
std::string contents(IStrm *s) {
  std::string out;
  EXPECT_EQ(IStrm_rewind(s), 0);
  char buf[1000];
  for (int32_t k; (k = IStrm_read(s, buf, sizeof buf)) > 0;) out.append(buf, k);
  return out;
}

// One call per step and the result it must give. Ops: g getc, u ungetc(arg),
// p putc(arg), r read arg bytes (text: the bytes wanted; none: into null),
// v peek (text: the bytes shown), w write(text, arg), s/c/e seek(arg) from
// start/position/end, q seek(0) with whence arg, t tell, z size, x clear,
// a appd(s, s), k copy(s, s).
constexpr int64_t kNeg = INT64_MIN;  // any negative code
struct Step { char op; int64_t arg, want; const char *text = nullptr; };

void run(IStrm *s, const std::vector<Step> &steps) {
  for (size_t i = 0; i < steps.size(); ++i) {
    const Step &st = steps[i];
    const auto a = static_cast<int32_t>(st.arg);
    char buf[64] = {};
    int64_t got = 0;
    const uint8_t *p = nullptr;
    switch (st.op) {
      case 'g': got = IStrm_getc(s); break;
      case 'u': got = IStrm_ungetc(s, a); break;
      case 'p': got = IStrm_putc(s, a); break;
      case 'r': got = IStrm_read(s, st.text ? buf : nullptr, std::min(a, 64)); break;
      case 'v':
        if ((got = IStrm_peek(s, &p)) > 0) std::memcpy(buf, p, std::min<size_t>(got, sizeof buf));
        break;
      case 'w': got = IStrm_write(s, st.text, a); break;
      case 's': case 'c': case 'e':  // KVO_SEEK_SET, _CUR, _END
        got = IStrm_seek(s, st.arg, st.op == 's' ? 0 : st.op == 'c' ? 1 : 2);
        break;
      case 'q': got = IStrm_seek(s, 0, a); break;
      case 't': got = IStrm_tell(s); break;
      case 'z': got = IStrm_size(s); break;
      case 'x': got = IStrm_clear(s); break;
      case 'a': got = IStrm_appd(s, s); break;
      case 'k': got = IStrm_copy(s, s); break;
      default: FAIL() << "unknown op " << st.op;
    }
    SCOPED_TRACE(testing::Message() << "step " << i << " '" << st.op << "' " << st.arg);
    EXPECT_TRUE(st.want == kNeg ? got < 0 : got == st.want) << "gave " << got;
    if ((st.op == 'r' || st.op == 'v') && st.text) {
      EXPECT_EQ(std::string(buf, std::max<int64_t>(got, 0)), st.text);
    }
  }
}

struct MemKind {
  using Storage = MemStrm;
  IStrm *open(const std::string &content, Storage *storage = nullptr) {
    IStrm *s = MemStrm_xcreatex__(storage, 0, __FILE__, __LINE__);
    IStrm_write(s, content.data(), static_cast<int32_t>(content.size()));
    IStrm_rewind(s);
    return s;
  }
};

// A memory stream that starts in a caller's 8 bytes: most contents outgrow
// them, so every step also runs across the move to the heap.
struct MemInBufKind {
  using Storage = MemStrm;
  uint8_t buf[8];
  IStrm *open(const std::string &content, Storage *storage = nullptr) {
    IStrm *s = MemStrm_xcreateExt__(storage, buf, sizeof buf, __FILE__, __LINE__);
    IStrm_write(s, content.data(), static_cast<int32_t>(content.size()));
    IStrm_rewind(s);
    return s;
  }
};

struct StrKind {
  using Storage = StrStrm;
  std::string text;
  IStrm *open(const std::string &content, Storage *storage = nullptr) {
    text = content;
    return StrStrm_xcreate__(storage, text.data(), static_cast<int32_t>(text.size()), __FILE__,
                             __LINE__);
  }
};

template <bool Writable>
struct FileKind {
  using Storage = FileStrm;
  std::string path = tempPath();
  ~FileKind() { unlink(path.c_str()); }
  IStrm *open(const std::string &content, Storage *storage = nullptr) {
    writeFile(path, content);
    return openFile(path, Writable ? "r+b" : "rb", storage);
  }
};

template <class Kind>
class StrmKinds : public ::testing::Test {
 protected:
  IStrm *open(const std::string &content) {
    strm_.emplace(kind_.open(content));
    EXPECT_TRUE(*strm_);
    return strm_->get();
  }
  // Runs the steps on a stream holding `content`; `after` is what it holds then.
  void script(const char *name, const char *content, const std::vector<Step> &steps,
              const std::string &after) {
    SCOPED_TRACE(name);
    IStrm *s = open(content);
    run(s, steps);
    EXPECT_EQ(contents(s), after);
  }
  Kind kind_;
  std::optional<OwnedStrm> strm_;  // after kind_: a file is closed before it is removed
};

template <class Kind> class StrmRead : public StrmKinds<Kind> {};
template <class Kind> class StrmWrite : public StrmKinds<Kind> {};
template <class Kind> class StrmReadOnly : public StrmKinds<Kind> {};
using AllKinds =
    ::testing::Types<MemKind, MemInBufKind, StrKind, FileKind<true>, FileKind<false>>;
using WritableKinds = ::testing::Types<MemKind, MemInBufKind, FileKind<true>>;
using ReadOnlyKinds = ::testing::Types<StrKind, FileKind<false>>;
TYPED_TEST_SUITE(StrmRead, AllKinds);
TYPED_TEST_SUITE(StrmWrite, WritableKinds);
TYPED_TEST_SUITE(StrmReadOnly, ReadOnlyKinds);

// ---- reading: every kind ---------------------------------------------------

TYPED_TEST(StrmRead, Scripts) {
  std::string all;
  for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
  IStrm *s = this->open(all);
  for (int i = 0; i < 256; ++i) ASSERT_EQ(IStrm_getc(s), i);
  run(s, {{'g', 0, -1}, {'g', 0, -1}, {'t', 0, 256}});
  this->script("ungetc steps back over each byte, twice in a row too", "abcdef",
               {{'u', 'x', -1}, {'t', 0, 0}, {'g', 0, 'a'}, {'g', 0, 'b'}, {'g', 0, 'c'},
                {'u', 0, 'c'}, {'u', 0, 'b'}, {'t', 0, 1}, {'g', 0, 'b'}, {'r', 8, 4, "cdef"},
                {'g', 0, -1}, {'u', -1, 'f'}, {'t', 0, 5}},
               "abcdef");
  this->script("read counts and refuses bad arguments", "0123456789",
               {{'r', 4, 4, "0123"}, {'r', -1, -1, ""}, {'r', 3, -1}, {'r', 0, 0}, {'t', 0, 4},
                {'r', 32, 6, "456789"}, {'r', 32, 0, ""}, {'z', 0, 10}},
               "0123456789");
  this->script("seek follows whence", "0123456789",
               {{'s', 3, 0}, {'g', 0, '3'}, {'c', 2, 0}, {'g', 0, '6'}, {'c', -4, 0}, {'t', 0, 3},
                {'e', -1, 0}, {'g', 0, '9'}, {'e', 0, 0}, {'t', 0, 10}, {'g', 0, -1}},
               "0123456789");
  this->script("a refused seek leaves the position", "0123456789",
               {{'s', 4, 0}, {'s', -1, -1}, {'c', -5, -1}, {'e', -11, -1}, {'q', 3, -1},
                {'c', INT64_MAX, -1}, {'c', INT64_MIN, -1},
                {'c', -(int64_t{1} << 32) + 2, -1},  // dropping the high word gives +2
                {'t', 0, 4}, {'g', 0, '4'}},
               "0123456789");
  const bool pk = !std::is_same_v<typename TypeParam::Storage, FileStrm>;  // a file has no peek
  this->script("peek shows the rest without moving", "0123456789",
               {{'s', 3, 0}, {'v', 0, pk ? 7 : 0, pk ? "3456789" : ""}, {'t', 0, 3}, {'e', 0, 0},
                {'v', 0, 0, ""}},
               "0123456789");
}

TYPED_TEST(StrmRead, AppdAndCopyFromCallerStorage) {
  std::string src;
  for (int i = 0; i < 10000; ++i) src += static_cast<char>('a' + i % 26);
  typename TypeParam::Storage local;  // ASan: a free of it; LSan: a heap object left
  IStrm *s = this->kind_.open(src, &local);
  ASSERT_EQ(s, &local.base);
  IStrm_seek(s, 4, KVO_SEEK_SET);
  tarnex::ScratchMemStrm dst(0);
  run(dst, {{'w', 4, 4, "XYZW"}, {'s', 2, 0}});
  EXPECT_EQ(IStrm_appd(dst, s), 10000);  // all of it, at dst's position
  EXPECT_EQ(IStrm_tell(dst), 10002);
  EXPECT_EQ(IStrm_tell(s), 4);
  EXPECT_EQ(contents(dst), "XY" + src);
  run(dst, {{'w', 3, 3, "zzz"}});
  EXPECT_EQ(IStrm_copy(dst, s), 10000);  // replaces dst and rewinds both
  EXPECT_EQ(IStrm_tell(dst), 0);
  EXPECT_EQ(IStrm_tell(s), 0);
  EXPECT_EQ(contents(dst), src);
  tarnex::ScratchStrStrm ro("ro", 2);
  EXPECT_LT(IStrm_copy(ro, s), 0);
  IStrm_delete(s);
}

// ---- writing: memory and file; read-only: string and read-mode file -----------

TYPED_TEST(StrmWrite, Scripts) {
  this->script("bad lengths change nothing; writes overwrite, then extend", "hello",
               {{'w', -1, -1, "zz"}, {'w', 2, -1}, {'w', 0, 0}, {'t', 0, 0}, {'s', 3, 0},
                {'w', 7, 7, "LOWORLD"}, {'t', 0, 10},
                {'z', 0, 10},  // a file counts the bytes stdio still buffers
                {'p', 0x121, 0x21}, {'s', 0, 0}, {'p', 0x1E9, 0xE9}},
               "\xE9" "elLOWORLD!");
  this->script("clear empties and stays usable", "abcdef",
               {{'g', 0, 'a'}, {'x', 0, 0}, {'z', 0, 0}, {'t', 0, 0}, {'g', 0, -1},
                {'w', 2, 2, "xy"}},
               "xy");
  this->script("reads and writes interleave without seeks", "0123456789",
               {{'g', 0, '0'}, {'w', 2, 2, "ab"}, {'g', 0, '3'}, {'p', 'X', 'X'},
                {'r', 8, 5, "56789"}, {'u', 0, '9'}, {'p', 'Z', 'Z'}},
               "0ab3X5678Z");
  this->script("seek behind the end leaves a gap of zeros", "abc",
               {{'s', 10, 0}, {'t', 0, 10}, {'z', 0, 3}, {'g', 0, -1}, {'u', 0, 0},
                {'t', 0, 9}, {'w', 2, 2, "YZ"}},
               std::string("abc") + std::string(6, '\0') + "YZ");
  this->script("offsets beyond 4 GiB use both words", "0123456789",
               {{'s', 5 * kGiB + 7, 0}, {'t', 0, 5 * kGiB + 7}, {'g', 0, -1}, {'z', 0, 10},
                {'c', -5 * kGiB, 0}, {'g', 0, '7'}, {'e', 4 * kGiB, 0}, {'t', 0, 4 * kGiB + 10}},
               "0123456789");
  this->script("appd and copy of a stream to itself", "abc",
               {{'s', 1, 0}, {'a', 0, 3}, {'t', 0, 4}, {'k', 0, 4}, {'t', 0, 0}}, "aabc");
}

TYPED_TEST(StrmWrite, ManySingleBytesComeBackInOrder) {
  IStrm *s = this->open("");
  std::string want;
  for (int i = 0; i < 100000; ++i) {
    want += static_cast<char>(i * 7);
    ASSERT_EQ(IStrm_putc(s, i * 7), (i * 7) & 0xFF);
  }
  EXPECT_EQ(IStrm_size(s), 100000);
  EXPECT_EQ(contents(s), want);
}

TYPED_TEST(StrmReadOnly, ChangesAreRefusedAndSeeksStopAtTheEnd) {
  this->script("read-only", "fixed",
               {{'g', 0, 'f'}, {'p', 'x', kNeg}, {'w', 3, kNeg, "xyz"}, {'x', 0, -1},
                {'t', 0, 1}, {'g', 0, 'i'}, {'s', 100, 0}, {'t', 0, 5}, {'c', 5 * kGiB, 0},
                {'t', 0, 5}, {'u', 0, 'd'}},
               "fixed");
}

// ---- one kind each ---------------------------------------------------------

TEST(MemStrm, DataIsTerminatedAndOnlyForMemoryStreams) {
  OwnedStrm s(MemStrm_xcreatex__(nullptr, -5, __FILE__, __LINE__));
  const auto data = [&] { return reinterpret_cast<const char *>(MemStrm_data(s)); };
  EXPECT_STREQ(data(), "");
  run(s, {{'w', 6, 6, "abcdef"}, {'s', 1, 0}, {'w', 2, 2, "XY"}});
  EXPECT_STREQ(data(), "aXYdef");
  IStrm_clear(s);
  EXPECT_STREQ(data(), "");
  tarnex::ScratchStrStrm text("abc", 3);
  EXPECT_EQ(MemStrm_data(text), nullptr);
  EXPECT_EQ(MemStrm_data(nullptr), nullptr);
}

TEST(MemStrm, WritesItsOwnBytesBackWhileGrowing) {
  tarnex::ScratchMemStrm s(0);  // growing moves the source's buffer: ASan sees a stale read
  IStrm_puts(s, "0123456789", -1);
  for (int i = 0; i < 12; ++i) {
    const auto n = static_cast<int32_t>(IStrm_size(s));
    ASSERT_EQ(IStrm_write(s, MemStrm_data(s), n), n);
  }
  const std::string all = contents(s);
  ASSERT_EQ(all.size(), 10u << 12);
  EXPECT_EQ(all.substr(all.size() - 10), "0123456789");
}

TEST(MemStrm, WritesPastTheCapAreRefusedWithoutAllocating) {
  tarnex::ScratchMemStrm s(0);
  run(s, {{'w', 3, 3, "abc"}, {'s', MEMSTRM_MAX_SIZE - 1, 0}, {'w', 2, -1, "xy"},
          {'s', INT64_MAX, 0}, {'p', 'x', -1}, {'w', INT32_MAX, -1, "x"}, {'c', 1, -1},
          {'t', 0, INT64_MAX}, {'z', 0, 3}});
}

TEST(StrStrm, ReadsTheCallersTextInPlace) {
  const char text[] = "a\0b c";
  tarnex::ScratchStrStrm whole(text, 5), upToNul(text, -1), none(nullptr, 4);
  const uint8_t *p = nullptr;
  EXPECT_EQ(IStrm_peek(whole, &p), 5);
  EXPECT_EQ(p, reinterpret_cast<const uint8_t *>(text));
  EXPECT_EQ(IStrm_size(upToNul), 1);
  run(none, {{'z', 0, 0}, {'g', 0, -1}, {'v', 0, 0}});
}

TEST(FileStrm, WhatCannotBeOpenedGivesNull) {
  const std::string dir = tempPath();
  ASSERT_EQ(mkdir(dir.c_str(), 0700), 0);
  for (const char *mode : {"rb", "r+b", "wb", "ab"}) {
    EXPECT_EQ(openFile(dir, mode), nullptr) << mode;
    EXPECT_EQ(openFile(dir + "/missing/x", mode), nullptr) << mode;
  }
  EXPECT_EQ(FileStrm_xcreatex__(nullptr, nullptr, "rb", 0, __FILE__, __LINE__), nullptr);
  EXPECT_EQ(openFile(dir, nullptr), nullptr);
  rmdir(dir.c_str());
}

TEST(FileStrm, AppendWritesAtTheEndAndClearTruncates) {
  const std::string path = tempPath();
  writeFile(path, "abc");
  {
    OwnedStrm s(openFile(path, "a+b"));
    ASSERT_TRUE(s);
    run(s, {{'s', 0, 0}, {'g', 0, 'a'}, {'w', 2, 2, "de"}, {'t', 0, 5}, {'z', 0, 5}});
  }
  OwnedStrm s(openFile(path, "r+b"));  // what reached the disk
  EXPECT_EQ(contents(s), "abcde");
  run(s, {{'x', 0, 0}, {'w', 1, 1, "x"}});
  s = OwnedStrm(openFile(path, "rb"));
  EXPECT_EQ(contents(s), "x");
  unlink(path.c_str());
}

TEST(IStrmUtil, PrintfOfAnyLength) {
  tarnex::ScratchMemStrm s(0);
  EXPECT_EQ(IStrm_printf(s, "%d-%s;", 42, "ab"), 6);
  const std::string lng(5000, 'q');  // longer than any stack buffer
  EXPECT_EQ(IStrm_printf(s, "[%s]%lld", lng.c_str(), -5LL), 5004);
  EXPECT_EQ(contents(s), "42-ab;[" + lng + "]-5");
  tarnex::ScratchStrStrm ro("", 0);
  EXPECT_LT(IStrm_printf(ro, "%s", lng.c_str()), 0);
}

}  // namespace
