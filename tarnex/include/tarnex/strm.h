/*
 * tarnex/strm.h - the stream object: a public table of operations.
 *
 * A stream is any structure whose first member is an IStrm, i.e. a pointer
 * to a table of operations. A caller may hand in a stream of its own (a
 * socket, a file of its framework) by filling an IStrmOps table; the
 * library only ever calls through the table.
 *
 * The operations, in table order, and what each must do:
 *   del     releases what the stream owns, and the stream itself if it was
 *           allocated by its creator (never the caller's storage).
 *   putc    writes one byte (c & 0xFF) at the position; gives that byte
 *           (0..255) or a negative code.
 *   getc    gives the next byte (0..255) and moves on, or -1 at the end.
 *   ungetc  moves back over the last byte read and gives it, or -1 at the
 *           start. (The argument is ignored by the built-in streams: the
 *           byte that was there is what comes back; behind the end of a
 *           writable stream, where nothing was written yet, that is 0.)
 *   read    reads up to n bytes, gives the count (0 at the end); n < 0, or
 *           a null buffer with n > 0: -1.
 *   write   writes n bytes at the position, overwriting and extending;
 *           gives n or a negative code; n < 0, or a null buffer with
 *           n > 0: -1.
 *   seek    moves to the 64-bit offset (high << 32 | low) from the start
 *           (whence 0), the position (1) or the end (2). A target before
 *           the start is refused: -1, position unchanged. A target behind
 *           the end is allowed for writable streams (a later write fills
 *           the gap with 0 bytes) and clamped to the end for read-only ones.
 *           A target that 64 bits cannot hold, or an unknown whence, is
 *           refused like one before the start. Gives 0 on success.
 *   tell    gives the position.
 *   size    gives the size in bytes.
 *   clear   empties the stream (size and position 0); read-only streams: -1.
 *   peek    optional (may be null): gives the bytes from the position to
 *           the end of a contiguous buffer without moving, through *p, and
 *           their count. Readers use it to scan whole runs instead of byte
 *           by byte; they move on with seek(.., 1).
 *
 * Built-in streams: memory (growing buffer), string (reads a caller's text
 * in place, read-only) and file (stdio). Each creator takes storage for
 * the stream object (null: allocate it) and gives the stream, or null.
 */
#ifndef TARNEX_STRM_H
#define TARNEX_STRM_H

#include <stdarg.h>
#include <stdio.h>
#include "tarnex/base.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct IStrmOps IStrmOps;
typedef struct IStrm {
  const IStrmOps *ops;
} IStrm;

struct IStrmOps {
  void (*del)(IStrm *s);
  int32_t (*putc)(IStrm *s, int32_t c);
  int32_t (*getc)(IStrm *s);
  int32_t (*ungetc)(IStrm *s, int32_t c);
  int32_t (*read)(IStrm *s, void *buf, int32_t n);
  int32_t (*write)(IStrm *s, const void *buf, int32_t n);
  int32_t (*seek)(IStrm *s, uint32_t low, int32_t high, int32_t whence);
  int64_t (*tell)(IStrm *s);
  int64_t (*size)(IStrm *s);
  int32_t (*clear)(IStrm *s);
  int64_t (*peek)(IStrm *s, const uint8_t **p);
};

#define KVO_SEEK_SET 0
#define KVO_SEEK_CUR 1
#define KVO_SEEK_END 2

/* ---- Inline wrappers --------------------------------------------------------- */

static inline void IStrm_delete(IStrm *s) { if (s) s->ops->del(s); }
static inline int32_t IStrm_putc(IStrm *s, int32_t c) { return s->ops->putc(s, c); }
static inline int32_t IStrm_getc(IStrm *s) { return s->ops->getc(s); }
static inline int32_t IStrm_ungetc(IStrm *s, int32_t c) { return s->ops->ungetc(s, c); }
static inline int32_t IStrm_read(IStrm *s, void *buf, int32_t n) {
  return s->ops->read(s, buf, n);
}
static inline int32_t IStrm_write(IStrm *s, const void *buf, int32_t n) {
  return s->ops->write(s, buf, n);
}
static inline int32_t IStrm_seek(IStrm *s, int64_t off, int32_t whence) {
  return s->ops->seek(s, (uint32_t)((uint64_t)off & 0xFFFFFFFFu),
                      (int32_t)((uint64_t)off >> 32), whence);
}
static inline int32_t IStrm_rewind(IStrm *s) { return IStrm_seek(s, 0, KVO_SEEK_SET); }
static inline int64_t IStrm_tell(IStrm *s) { return s->ops->tell(s); }
static inline int64_t IStrm_size(IStrm *s) { return s->ops->size(s); }
static inline int32_t IStrm_clear(IStrm *s) { return s->ops->clear(s); }
/* Contiguous readable bytes at the position, or 0 when the stream cannot
 * tell (no peek operation). */
static inline int64_t IStrm_peek(IStrm *s, const uint8_t **p) {
  if (s->ops->peek) return s->ops->peek(s, p);
  *p = 0;
  return 0;
}
static inline int32_t IStrm_puts(IStrm *s, const char *text, int32_t n);

/* ---- Built-in streams ------------------------------------------------------------ */

/* The most bytes a memory stream holds. A seek may go further (positions
 * are plain arithmetic), but a write that would end behind this gives -1 and
 * changes nothing, so that a hostile offset cannot make the process try to
 * allocate more than it can hold. */
#define MEMSTRM_MAX_SIZE ((int64_t)1 << 32)

/* Storage for a memory stream; callers use it only as opaque storage. */
typedef struct MemStrm {
  IStrm base;
  uint8_t *data;
  int64_t size, cap, pos;
  int32_t ownSelf;
  int32_t reserved;
} MemStrm;

/* Storage for a string stream over a caller's text (read in place; the text
 * must outlive the stream). */
typedef struct StrStrm {
  IStrm base;
  const uint8_t *data;
  int64_t size, pos;
  int32_t ownSelf;
  int32_t reserved;
} StrStrm;

typedef struct FileStrm {
  IStrm base;
  FILE *fp;
  int64_t pos;
  int32_t ownSelf;
  int32_t flag;
  int32_t lastOp; /* stdio needs a seek between a read and a write */
  int32_t mode;   /* read-only and append bits of the fopen mode */
} FileStrm;

/* An empty memory stream with room for `size` bytes (negative: 0). */
TARNEX_API IStrm *MemStrm_xcreatex__(MemStrm *storage, int32_t size, const char *file,
                                     int32_t line);
/* An empty memory stream that starts in the caller's buf of size bytes (one
 * of them kept for the terminator) and moves to the heap only when its
 * content outgrows them; buf must outlive the stream and is never freed.
 * A null buf or a size below 1 gives MemStrm_xcreatex__(storage, 0). */
TARNEX_API IStrm *MemStrm_xcreateExt__(MemStrm *storage, uint8_t *buf, int32_t size,
                                       const char *file, int32_t line);
/* A read-only stream over len bytes of text (len < 0: up to the terminator).
 * A null text gives an empty stream. */
TARNEX_API IStrm *StrStrm_xcreate__(StrStrm *storage, const char *text, int32_t len,
                                    const char *file, int32_t line);
/* Opens path (UTF-8) with an fopen mode ("rb", "wb", "r+b", "w+b", "ab"...).
 * flag is reserved, pass 0. Gives null when the file cannot be opened, when
 * path or mode is null, and for a directory. A file stream has no peek. In
 * append mode every write lands at the end of the file, and the position
 * follows it there. */
TARNEX_API IStrm *FileStrm_xcreatex__(FileStrm *storage, const char *path,
                                      const char *mode, int32_t flag, const char *file,
                                      int32_t line);

/* The same streams without the allocator's file and line, for callers that
 * do not trace where their objects were made. storage null: the stream is
 * allocated and IStrm_delete frees it. */
/* An empty memory stream that grows as it is written. */
TARNEX_API IStrm *MemStrm_new(MemStrm *storage);
/* A read-only stream over len bytes of text (len < 0: up to the terminator). */
TARNEX_API IStrm *StrStrm_new(StrStrm *storage, const char *text, int32_t len);
/* Opens path with an fopen mode; null when it cannot be opened. */
TARNEX_API IStrm *FileStrm_new(FileStrm *storage, const char *path, const char *mode);

/* The memory stream's bytes (contiguous, size IStrm_size), or null if s is
 * not a memory stream. They are always followed by a 0 byte that is not
 * counted, so text written to the stream can be read as a C string; an
 * empty stream gives a valid pointer to that 0 byte. The pointer is good
 * until the next write, putc or delete. */
TARNEX_API uint8_t *MemStrm_data(IStrm *s);

/* ---- Stream utilities ------------------------------------------------------------- */

/* Formats at the position; gives the number of bytes written or a negative
 * code. Output of any length: short output is formatted on the stack. */
TARNEX_API int32_t IStrm_printf(IStrm *s, const char *format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 2, 3)))
#endif
    ;
TARNEX_API int32_t IStrm_vprintf(IStrm *s, const char *format, va_list ap)
#if defined(__GNUC__)
    __attribute__((format(printf, 2, 0)))
#endif
    ;
/* Writes all of src, from its start, at dst's position; src's position is
 * restored. Gives the number of bytes written or a negative code. When dst
 * and src are one stream, a copy of its content is written at its position
 * and the position stands behind it. */
TARNEX_API int64_t IStrm_appd(IStrm *dst, IStrm *src);
/* Makes dst a copy of src: dst is cleared, src is written from its start,
 * and both stand at their start afterwards. Gives the byte count or a
 * negative code. */
TARNEX_API int64_t IStrm_copy(IStrm *dst, IStrm *src);

/* Writes n bytes of text (n < 0: up to the terminator). */
static inline int32_t IStrm_puts(IStrm *s, const char *text, int32_t n) {
  if (!text) return 0;
  if (n < 0) {
    n = 0;
    while (text[n]) ++n;
  }
  return IStrm_write(s, text, n);
}

#ifdef __cplusplus
}
#endif

#endif /* TARNEX_STRM_H */
