// File streams over stdio, with 64-bit positions (fseeko/ftello).
//
// The stream keeps its own position, so tell costs nothing and a change of
// direction can seek back to it: stdio leaves the result undefined when input
// follows output (or the reverse) on one FILE without a positioning call in
// between, and callers of a stream may mix reads and writes freely.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "strm_impl.h"
#include "tarnex/strm.h"

namespace {

using tarnex::strm::badSpan;
using tarnex::strm::seekTarget;

// FileStrm::lastOp
constexpr int32_t kOpNone = 0;
constexpr int32_t kOpRead = 1;
constexpr int32_t kOpWrite = 2;

// FileStrm::mode bits
constexpr int32_t kModeReadOnly = 1;
constexpr int32_t kModeAppend = 2;

FileStrm *self(IStrm *s) { return reinterpret_cast<FileStrm *>(s); }

// Puts the positioning call stdio needs between a read and a write.
bool turnTo(FileStrm *f, int32_t op) {
  if (f->lastOp != op && f->lastOp != kOpNone) {
    if (fseeko(f->fp, static_cast<off_t>(f->pos), SEEK_SET) != 0) return false;
  }
  f->lastOp = op;
  return true;
}

// In append mode stdio writes at the end whatever the position was.
void afterWrite(FileStrm *f, int64_t written) {
  if (f->mode & kModeAppend) {
    const off_t at = ftello(f->fp);
    if (at >= 0) f->pos = at;
  } else {
    f->pos += written;
  }
}

int64_t fileSize(IStrm *s) {
  FileStrm *f = self(s);
  // Bytes still in stdio's buffer are not on the disk yet.
  if (f->lastOp == kOpWrite) {
    if (fflush(f->fp) != 0) return -1;
    f->lastOp = kOpNone;
  }
  struct stat st;
  if (fstat(fileno(f->fp), &st) != 0) return -1;
  return st.st_size;
}

int32_t fileGetc(IStrm *s) {
  FileStrm *f = self(s);
  if (!turnTo(f, kOpRead)) return -1;
  const int c = getc_unlocked(f->fp);
  if (c == EOF) {
    clearerr(f->fp);
    return -1;
  }
  ++f->pos;
  return c;
}

int32_t filePutc(IStrm *s, int32_t c) {
  FileStrm *f = self(s);
  const auto b = static_cast<uint8_t>(c);
  if (!turnTo(f, kOpWrite)) return -1;
  if (putc_unlocked(b, f->fp) == EOF) {
    clearerr(f->fp);
    return -1;
  }
  afterWrite(f, 1);
  return b;
}

// stdio's own ungetc would need the byte, which the stream does not keep,
// so this reads it again; glibc serves a seek inside its buffer without a
// system call.
int32_t fileUngetc(IStrm *s, int32_t) {
  FileStrm *f = self(s);
  if (f->pos <= 0) return -1;
  const auto at = static_cast<off_t>(f->pos - 1);
  if (fseeko(f->fp, at, SEEK_SET) != 0) return -1;
  int c = getc_unlocked(f->fp);
  if (c == EOF) {
    clearerr(f->fp);
    c = 0;  // behind the end: a gap that a write would fill with 0
  }
  if (fseeko(f->fp, at, SEEK_SET) != 0) return -1;
  f->pos = at;
  f->lastOp = kOpNone;
  return c;
}

int32_t fileRead(IStrm *s, void *buf, int32_t n) {
  FileStrm *f = self(s);
  if (badSpan(buf, n)) return -1;
  if (n == 0) return 0;
  if (!turnTo(f, kOpRead)) return -1;
  const size_t k = fread(buf, 1, static_cast<size_t>(n), f->fp);
  f->pos += static_cast<int64_t>(k);
  if (k < static_cast<size_t>(n)) {
    const bool failed = ferror(f->fp) != 0;
    clearerr(f->fp);
    if (failed && k == 0) return -1;
  }
  return static_cast<int32_t>(k);
}

int32_t fileWrite(IStrm *s, const void *buf, int32_t n) {
  FileStrm *f = self(s);
  if (badSpan(buf, n)) return -1;
  if (n == 0) return 0;
  if (!turnTo(f, kOpWrite)) return -1;
  const size_t k = fwrite(buf, 1, static_cast<size_t>(n), f->fp);
  afterWrite(f, static_cast<int64_t>(k));
  if (k < static_cast<size_t>(n)) {
    clearerr(f->fp);
    return -1;
  }
  return n;
}

int32_t fileSeek(IStrm *s, uint32_t low, int32_t high, int32_t whence) {
  FileStrm *f = self(s);
  const bool needSize = whence == KVO_SEEK_END || (f->mode & kModeReadOnly);
  const int64_t size = needSize ? fileSize(s) : 0;
  if (size < 0) return -1;
  int64_t to = 0;
  if (!seekTarget(low, high, whence, f->pos, size, &to)) return -1;
  if (f->mode & kModeReadOnly) to = std::min(to, size);
  if (fseeko(f->fp, static_cast<off_t>(to), SEEK_SET) != 0) return -1;
  f->pos = to;
  f->lastOp = kOpNone;
  return 0;
}

int64_t fileTell(IStrm *s) { return self(s)->pos; }

int32_t fileClear(IStrm *s) {
  FileStrm *f = self(s);
  if (f->mode & kModeReadOnly) return -1;
  if (fflush(f->fp) != 0 || ftruncate(fileno(f->fp), 0) != 0) return -1;
  if (fseeko(f->fp, 0, SEEK_SET) != 0) return -1;
  f->pos = 0;
  f->lastOp = kOpNone;
  return 0;
}

void fileDel(IStrm *s) {
  FileStrm *f = self(s);
  if (f->fp) fclose(f->fp);
  f->fp = nullptr;
  if (f->ownSelf) kvo_free__(f, __FILE__, __LINE__);
}

constexpr IStrmOps kFileOps = {fileDel,  filePutc, fileGetc, fileUngetc, fileRead, fileWrite,
                               fileSeek, fileTell, fileSize, fileClear,  nullptr};

int32_t modeBits(const char *mode) {
  int32_t bits = 0;
  if (mode[0] == 'r' && !std::strchr(mode, '+')) bits |= kModeReadOnly;
  if (mode[0] == 'a') bits |= kModeAppend;
  return bits;
}

}  // namespace

extern "C" {

TARNEX_API IStrm *FileStrm_xcreatex__(FileStrm *storage, const char *path, const char *mode,
                                      int32_t flag, const char *file, int32_t line) {
  if (!path || !mode) return nullptr;
  FILE *fp = fopen(path, mode);
  if (!fp) return nullptr;
  // Reading mode opens a directory on POSIX systems; every read would fail.
  struct stat st;
  if (fstat(fileno(fp), &st) != 0 || S_ISDIR(st.st_mode)) {
    fclose(fp);
    return nullptr;
  }
  FileStrm *f =
      storage ? storage : static_cast<FileStrm *>(kvo_malloc__(sizeof(FileStrm), file, line));
  *f = FileStrm{};
  f->base.ops = &kFileOps;
  f->fp = fp;
  f->ownSelf = storage == nullptr;
  f->flag = flag;
  f->mode = modeBits(mode);
  const off_t at = ftello(fp);
  f->pos = at > 0 ? at : 0;
  return &f->base;
}

}  // extern "C"
