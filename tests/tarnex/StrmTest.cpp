// Streams. The shared cases run on every kind through a factory, so a
// behaviour one kind gets wrong shows up beside the kinds that get it right.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

#include "tarnex/scratch.hpp"
#include "tarnex/strm.h"

namespace {

using tarnex::OwnedStrm;
constexpr int64_t kGiB = int64_t{1} << 30;

std::string tempPath() {
  static int serial = 0;
  return ::testing::TempDir() + "strm_" + std::to_string(getpid()) + "_" +
         std::to_string(serial++);
}

void writeFile(const std::string &path, const std::string &bytes) {
  FILE *fp = fopen(path.c_str(), "wb");
  ASSERT_NE(fp, nullptr);
  fwrite(bytes.data(), 1, bytes.size(), fp);
  fclose(fp);
}

std::string readFile(const std::string &path) {
  std::string out;
  if (FILE *fp = fopen(path.c_str(), "rb")) {
    for (int c; (c = fgetc(fp)) != EOF;) out += static_cast<char>(c);
    fclose(fp);
  }
  return out;
}

// Everything from the start; leaves the position at the end.
std::string contents(IStrm *s) {
  std::string out;
  EXPECT_EQ(IStrm_rewind(s), 0);
  char buf[1000];
  for (int32_t k; (k = IStrm_read(s, buf, sizeof buf)) > 0;) out.append(buf, k);
  return out;
}

int32_t put(IStrm *s, const std::string &text) {
  return IStrm_write(s, text.data(), static_cast<int32_t>(text.size()));
}

// ---- the kinds ------------------------------------------------------------

struct MemKind {
  static constexpr bool kPeek = true;
  using Storage = MemStrm;
  IStrm *open(const std::string &content, Storage *storage = nullptr) {
    IStrm *s = MemStrm_xcreatex__(storage, 0, __FILE__, __LINE__);
    put(s, content);
    IStrm_rewind(s);
    return s;
  }
};

struct StrKind {
  static constexpr bool kPeek = true;
  using Storage = StrStrm;
  std::string text;
  IStrm *open(const std::string &content, Storage *storage = nullptr) {
    text = content;
    return StrStrm_xcreate__(storage, text.data(), static_cast<int32_t>(text.size()),
                             __FILE__, __LINE__);
  }
};

template <bool Writable>
struct FileKind {
  static constexpr bool kPeek = false;
  using Storage = FileStrm;
  std::string path = tempPath();
  ~FileKind() { unlink(path.c_str()); }
  IStrm *open(const std::string &content, Storage *storage = nullptr) {
    writeFile(path, content);
    return FileStrm_xcreatex__(storage, path.c_str(), Writable ? "r+b" : "rb", 0, __FILE__,
                               __LINE__);
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
  Kind kind_;
  std::optional<OwnedStrm> strm_;  // after kind_: a file is closed before it is removed
};

template <class Kind> class StrmRead : public StrmKinds<Kind> {};
template <class Kind> class StrmWrite : public StrmKinds<Kind> {};
template <class Kind> class StrmReadOnly : public StrmKinds<Kind> {};

using AllKinds = ::testing::Types<MemKind, StrKind, FileKind<true>, FileKind<false>>;
using WritableKinds = ::testing::Types<MemKind, FileKind<true>>;
using ReadOnlyKinds = ::testing::Types<StrKind, FileKind<false>>;
TYPED_TEST_SUITE(StrmRead, AllKinds);
TYPED_TEST_SUITE(StrmWrite, WritableKinds);
TYPED_TEST_SUITE(StrmReadOnly, ReadOnlyKinds);

// ---- reading: every kind ---------------------------------------------------

TYPED_TEST(StrmRead, GetcGivesEveryByteValueThenEnd) {
  std::string all;
  for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
  IStrm *s = this->open(all);
  for (int i = 0; i < 256; ++i) ASSERT_EQ(IStrm_getc(s), i);
  EXPECT_EQ(IStrm_getc(s), -1);
  EXPECT_EQ(IStrm_getc(s), -1);
  EXPECT_EQ(IStrm_tell(s), 256);
}

TYPED_TEST(StrmRead, UngetcStepsBackOverEachByte) {
  IStrm *s = this->open("abcdef");
  EXPECT_EQ(IStrm_ungetc(s, 'x'), -1);
  EXPECT_EQ(IStrm_tell(s), 0);
  for (int i = 0; i < 3; ++i) IStrm_getc(s);
  EXPECT_EQ(IStrm_ungetc(s, 0), 'c');
  EXPECT_EQ(IStrm_ungetc(s, 0), 'b');  // twice in a row: more than one pushback
  EXPECT_EQ(IStrm_tell(s), 1);
  EXPECT_EQ(IStrm_getc(s), 'b');
  char rest[8];
  EXPECT_EQ(IStrm_read(s, rest, 8), 4);
  EXPECT_EQ(IStrm_getc(s), -1);
  EXPECT_EQ(IStrm_ungetc(s, -1), 'f');
  EXPECT_EQ(IStrm_tell(s), 5);
}

TYPED_TEST(StrmRead, ReadCountsAndRefusesBadArguments) {
  IStrm *s = this->open("0123456789");
  char buf[32] = {};
  EXPECT_EQ(IStrm_read(s, buf, 4), 4);
  EXPECT_EQ(std::string(buf, 4), "0123");
  EXPECT_EQ(IStrm_read(s, buf, -1), -1);
  EXPECT_EQ(IStrm_read(s, nullptr, 3), -1);
  EXPECT_EQ(IStrm_read(s, nullptr, 0), 0);
  EXPECT_EQ(IStrm_tell(s), 4);
  EXPECT_EQ(IStrm_read(s, buf, 32), 6);
  EXPECT_EQ(std::string(buf, 6), "456789");
  EXPECT_EQ(IStrm_read(s, buf, 32), 0);
  EXPECT_EQ(IStrm_size(s), 10);
}

TYPED_TEST(StrmRead, SeekFollowsWhenceAndRefusesBadTargets) {
  struct Row {
    int64_t off;
    int32_t whence, result;
    int64_t pos;
  };
  constexpr Row kRows[] = {
      {3, KVO_SEEK_SET, 0, 3},
      {2, KVO_SEEK_CUR, 0, 6},
      {-4, KVO_SEEK_CUR, 0, 0},
      {-1, KVO_SEEK_END, 0, 9},
      {0, KVO_SEEK_END, 0, 10},
      {-1, KVO_SEEK_SET, -1, 4},
      {-5, KVO_SEEK_CUR, -1, 4},
      {-11, KVO_SEEK_END, -1, 4},
      {0, 3, -1, 4},
      {INT64_MAX, KVO_SEEK_CUR, -1, 4},
      {INT64_MIN, KVO_SEEK_CUR, -1, 4},
      // Dropping the high word would turn this into +2.
      {-(int64_t{1} << 32) + 2, KVO_SEEK_CUR, -1, 4},
  };
  IStrm *s = this->open("0123456789");
  for (const Row &row : kRows) {
    SCOPED_TRACE(testing::Message() << "offset " << row.off << " whence " << row.whence);
    ASSERT_EQ(IStrm_seek(s, 4, KVO_SEEK_SET), 0);
    EXPECT_EQ(IStrm_seek(s, row.off, row.whence), row.result);
    EXPECT_EQ(IStrm_tell(s), row.pos);
    EXPECT_EQ(IStrm_getc(s), row.pos < 10 ? '0' + row.pos : -1);
  }
}

TYPED_TEST(StrmRead, PeekShowsTheRestWithoutMoving) {
  IStrm *s = this->open("0123456789");
  IStrm_seek(s, 3, KVO_SEEK_SET);
  const uint8_t *p = nullptr;
  const int64_t run = IStrm_peek(s, &p);
  if (!TypeParam::kPeek) {
    EXPECT_EQ(run, 0);
    EXPECT_EQ(p, nullptr);
    return;
  }
  ASSERT_EQ(run, 7);
  EXPECT_EQ(std::string(reinterpret_cast<const char *>(p), 7), "3456789");
  EXPECT_EQ(IStrm_tell(s), 3);
  IStrm_seek(s, run, KVO_SEEK_CUR);
  EXPECT_EQ(IStrm_peek(s, &p), 0);
  EXPECT_EQ(IStrm_getc(s), -1);
}

TYPED_TEST(StrmRead, CallerStorageIsNeverFreedHeapObjectAlways) {
  // AddressSanitizer reports a free of the local, LeakSanitizer a heap
  // object that delete forgot.
  typename TypeParam::Storage local;
  IStrm *s = this->kind_.open(std::string(5000, 'k'), &local);
  ASSERT_EQ(s, &local.base);
  EXPECT_EQ(contents(s), std::string(5000, 'k'));
  IStrm_delete(s);
  IStrm *heap = this->open("on the heap");
  EXPECT_NE(heap, &local.base);
  EXPECT_EQ(contents(heap), "on the heap");
}

// ---- writing: memory and file ------------------------------------------------

TYPED_TEST(StrmWrite, WriteOverwritesThenExtends) {
  IStrm *s = this->open("hello");
  IStrm_seek(s, 3, KVO_SEEK_SET);
  EXPECT_EQ(put(s, "LOWORLD"), 7);
  EXPECT_EQ(IStrm_tell(s), 10);
  EXPECT_EQ(IStrm_size(s), 10);  // a file counts the bytes stdio still buffers
  EXPECT_EQ(IStrm_putc(s, 0x121), 0x21);
  IStrm_seek(s, 0, KVO_SEEK_SET);
  EXPECT_EQ(IStrm_putc(s, 0x1E9), 0xE9);
  EXPECT_EQ(contents(s), "\xE9" "elLOWORLD!");
}

TYPED_TEST(StrmWrite, ReadsAndWritesInterleaveWithoutSeeks) {
  IStrm *s = this->open("0123456789");
  EXPECT_EQ(IStrm_getc(s), '0');
  EXPECT_EQ(put(s, "ab"), 2);
  EXPECT_EQ(IStrm_getc(s), '3');
  EXPECT_EQ(IStrm_putc(s, 'X'), 'X');
  char rest[8];
  EXPECT_EQ(IStrm_read(s, rest, 8), 5);
  EXPECT_EQ(IStrm_ungetc(s, 0), '9');
  EXPECT_EQ(IStrm_putc(s, 'Z'), 'Z');
  EXPECT_EQ(contents(s), "0ab3X5678Z");
}

TYPED_TEST(StrmWrite, SeekBehindEndLeavesAGapOfZeros) {
  IStrm *s = this->open("abc");
  EXPECT_EQ(IStrm_seek(s, 10, KVO_SEEK_SET), 0);
  EXPECT_EQ(IStrm_tell(s), 10);
  EXPECT_EQ(IStrm_size(s), 3);
  EXPECT_EQ(IStrm_getc(s), -1);
  EXPECT_EQ(IStrm_ungetc(s, 0), 0);
  EXPECT_EQ(IStrm_tell(s), 9);
  EXPECT_EQ(put(s, "YZ"), 2);
  EXPECT_EQ(contents(s), std::string("abc") + std::string(6, '\0') + "YZ");
}

TYPED_TEST(StrmWrite, OffsetsBeyondFourGiBUseBothWords) {
  IStrm *s = this->open("0123456789");
  EXPECT_EQ(IStrm_seek(s, 5 * kGiB + 7, KVO_SEEK_SET), 0);
  EXPECT_EQ(IStrm_tell(s), 5 * kGiB + 7);
  EXPECT_EQ(IStrm_getc(s), -1);
  EXPECT_EQ(IStrm_size(s), 10);
  EXPECT_EQ(IStrm_seek(s, -5 * kGiB, KVO_SEEK_CUR), 0);
  EXPECT_EQ(IStrm_getc(s), '7');
  EXPECT_EQ(IStrm_seek(s, 4 * kGiB, KVO_SEEK_END), 0);
  EXPECT_EQ(IStrm_tell(s), 4 * kGiB + 10);
}

TYPED_TEST(StrmWrite, ClearEmptiesAndStaysUsable) {
  IStrm *s = this->open("abcdef");
  IStrm_getc(s);
  EXPECT_EQ(IStrm_clear(s), 0);
  EXPECT_EQ(IStrm_size(s), 0);
  EXPECT_EQ(IStrm_tell(s), 0);
  EXPECT_EQ(IStrm_getc(s), -1);
  EXPECT_EQ(put(s, "xy"), 2);
  EXPECT_EQ(contents(s), "xy");
}

TYPED_TEST(StrmWrite, BadLengthsChangeNothing) {
  IStrm *s = this->open("abc");
  EXPECT_EQ(IStrm_write(s, "zz", -1), -1);
  EXPECT_EQ(IStrm_write(s, nullptr, 2), -1);
  EXPECT_EQ(IStrm_write(s, nullptr, 0), 0);
  EXPECT_EQ(IStrm_tell(s), 0);
  EXPECT_EQ(contents(s), "abc");
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

TYPED_TEST(StrmWrite, AppdToItselfWritesOneCopy) {
  IStrm *s = this->open("abc");
  IStrm_seek(s, 1, KVO_SEEK_SET);
  EXPECT_EQ(IStrm_appd(s, s), 3);
  EXPECT_EQ(IStrm_tell(s), 4);
  EXPECT_EQ(contents(s), "aabc");
  EXPECT_EQ(IStrm_copy(s, s), 4);
  EXPECT_EQ(IStrm_tell(s), 0);
}

// ---- read-only: string and read-mode file -------------------------------------

TYPED_TEST(StrmReadOnly, ChangesAreRefused) {
  IStrm *s = this->open("fixed");
  IStrm_getc(s);
  EXPECT_LT(IStrm_putc(s, 'x'), 0);
  EXPECT_LT(put(s, "xyz"), 0);
  EXPECT_LT(IStrm_clear(s), 0);
  EXPECT_EQ(IStrm_tell(s), 1);
  EXPECT_EQ(IStrm_getc(s), 'i');
  EXPECT_EQ(contents(s), "fixed");
}

TYPED_TEST(StrmReadOnly, SeekBehindEndStopsAtTheEnd) {
  IStrm *s = this->open("fixed");
  EXPECT_EQ(IStrm_seek(s, 100, KVO_SEEK_SET), 0);
  EXPECT_EQ(IStrm_tell(s), 5);
  EXPECT_EQ(IStrm_seek(s, 5 * kGiB, KVO_SEEK_CUR), 0);
  EXPECT_EQ(IStrm_tell(s), 5);
  EXPECT_EQ(IStrm_ungetc(s, 0), 'd');
}

// ---- one kind each ---------------------------------------------------------

TEST(MemStrm, DataIsTerminatedAndOnlyForMemoryStreams) {
  OwnedStrm s(MemStrm_xcreatex__(nullptr, -5, __FILE__, __LINE__));
  ASSERT_NE(MemStrm_data(s), nullptr);
  EXPECT_STREQ(reinterpret_cast<char *>(MemStrm_data(s)), "");
  put(s, "abcdef");
  IStrm_seek(s, 1, KVO_SEEK_SET);
  put(s, "XY");
  EXPECT_STREQ(reinterpret_cast<char *>(MemStrm_data(s)), "aXYdef");
  IStrm_clear(s);
  EXPECT_STREQ(reinterpret_cast<char *>(MemStrm_data(s)), "");
  tarnex::ScratchStrStrm text("abc", 3);
  EXPECT_EQ(MemStrm_data(text), nullptr);
  EXPECT_EQ(MemStrm_data(nullptr), nullptr);
}

TEST(MemStrm, WritesItsOwnBytesBackWhileGrowing) {
  // Growing moves the buffer the source points into; ASan sees a stale read.
  tarnex::ScratchMemStrm s(0);
  put(s, "0123456789");
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
  put(s, "abc");
  ASSERT_EQ(IStrm_seek(s, MEMSTRM_MAX_SIZE - 1, KVO_SEEK_SET), 0);
  EXPECT_EQ(put(s, "xy"), -1);
  ASSERT_EQ(IStrm_seek(s, INT64_MAX, KVO_SEEK_SET), 0);
  EXPECT_EQ(IStrm_putc(s, 'x'), -1);
  EXPECT_EQ(IStrm_write(s, "x", INT32_MAX), -1);
  EXPECT_EQ(IStrm_seek(s, 1, KVO_SEEK_CUR), -1);
  EXPECT_EQ(IStrm_tell(s), INT64_MAX);
  EXPECT_EQ(IStrm_size(s), 3);
}

TEST(StrStrm, ReadsTheCallersTextInPlace) {
  const char text[] = "a\0b c";
  OwnedStrm whole(StrStrm_xcreate__(nullptr, text, 5, __FILE__, __LINE__));
  const uint8_t *p = nullptr;
  EXPECT_EQ(IStrm_peek(whole, &p), 5);
  EXPECT_EQ(p, reinterpret_cast<const uint8_t *>(text));
  EXPECT_EQ(contents(whole), std::string(text, 5));
  tarnex::ScratchStrStrm upToNul(text, -1);
  EXPECT_EQ(IStrm_size(upToNul), 1);
  tarnex::ScratchStrStrm none(nullptr, 4);
  EXPECT_EQ(IStrm_size(none), 0);
  EXPECT_EQ(IStrm_getc(none), -1);
  EXPECT_EQ(IStrm_peek(none, &p), 0);
}

TEST(FileStrm, WhatCannotBeOpenedGivesNull) {
  const std::string dir = tempPath();
  ASSERT_EQ(mkdir(dir.c_str(), 0700), 0);
  for (const char *mode : {"rb", "r+b", "wb", "ab"}) {
    SCOPED_TRACE(mode);
    EXPECT_EQ(FileStrm_xcreatex__(nullptr, dir.c_str(), mode, 0, __FILE__, __LINE__), nullptr);
    EXPECT_EQ(FileStrm_xcreatex__(nullptr, (dir + "/missing/x").c_str(), mode, 0, __FILE__,
                                  __LINE__),
              nullptr);
  }
  EXPECT_EQ(FileStrm_xcreatex__(nullptr, nullptr, "rb", 0, __FILE__, __LINE__), nullptr);
  EXPECT_EQ(FileStrm_xcreatex__(nullptr, dir.c_str(), nullptr, 0, __FILE__, __LINE__), nullptr);
  rmdir(dir.c_str());
}

TEST(FileStrm, AppendWritesAtTheEndAndClearTruncates) {
  const std::string path = tempPath();
  writeFile(path, "abc");
  {
    OwnedStrm s(FileStrm_xcreatex__(nullptr, path.c_str(), "a+b", 0, __FILE__, __LINE__));
    ASSERT_TRUE(s);
    IStrm_rewind(s);
    EXPECT_EQ(IStrm_getc(s), 'a');
    EXPECT_EQ(put(s, "de"), 2);
    EXPECT_EQ(IStrm_tell(s), 5);
    EXPECT_EQ(IStrm_size(s), 5);
  }
  EXPECT_EQ(readFile(path), "abcde");
  {
    OwnedStrm s(FileStrm_xcreatex__(nullptr, path.c_str(), "r+b", 0, __FILE__, __LINE__));
    EXPECT_EQ(IStrm_clear(s), 0);
    put(s, "x");
  }
  EXPECT_EQ(readFile(path), "x");
  unlink(path.c_str());
}

// ---- utilities ---------------------------------------------------------------

TEST(IStrmUtil, PrintfOfAnyLength) {
  tarnex::ScratchMemStrm s(0);
  EXPECT_EQ(IStrm_printf(s, "%d-%s;", 42, "ab"), 6);
  const std::string lng(5000, 'q');  // longer than any stack buffer
  EXPECT_EQ(IStrm_printf(s, "[%s]%lld", lng.c_str(), -5LL), 5004);
  EXPECT_EQ(contents(s), "42-ab;[" + lng + "]-5");
  tarnex::ScratchStrStrm ro("", 0);
  EXPECT_LT(IStrm_printf(ro, "%s", lng.c_str()), 0);
}

template <class Kind> class IStrmAppd : public StrmKinds<Kind> {};
TYPED_TEST_SUITE(IStrmAppd, AllKinds);

TYPED_TEST(IStrmAppd, AppdWritesAllAtDstPositionAndRestoresSrc) {
  std::string src;
  for (int i = 0; i < 10000; ++i) src += static_cast<char>('a' + i % 26);
  IStrm *s = this->open(src);
  IStrm_seek(s, 4, KVO_SEEK_SET);
  tarnex::ScratchMemStrm dst(0);
  put(dst, "XYZW");
  IStrm_seek(dst, 2, KVO_SEEK_SET);
  EXPECT_EQ(IStrm_appd(dst, s), 10000);
  EXPECT_EQ(IStrm_tell(dst), 10002);
  EXPECT_EQ(IStrm_tell(s), 4);
  EXPECT_EQ(contents(dst), "XY" + src);
}

TYPED_TEST(IStrmAppd, CopyReplacesDstAndRewindsBoth) {
  IStrm *s = this->open("0123456789");
  IStrm_seek(s, 5, KVO_SEEK_SET);
  tarnex::ScratchMemStrm dst(0);
  put(dst, std::string(30, 'z'));
  EXPECT_EQ(IStrm_copy(dst, s), 10);
  EXPECT_EQ(IStrm_tell(dst), 0);
  EXPECT_EQ(IStrm_tell(s), 0);
  EXPECT_EQ(contents(dst), "0123456789");
  tarnex::ScratchStrStrm ro("ro", 2);
  EXPECT_LT(IStrm_copy(ro, s), 0);
}

}  // namespace
