// Stream creators for callers that keep no record of where their objects
// were made: a C program wants a file or a buffer, not the allocator's
// bookkeeping. Each one is the traced creator with this file as the place.
#include "tarnex/strm.h"

extern "C" {

TARNEX_API IStrm *MemStrm_new(MemStrm *storage) {
  return MemStrm_xcreatex__(storage, 0, __FILE__, __LINE__);
}

TARNEX_API IStrm *StrStrm_new(StrStrm *storage, const char *text, int32_t len) {
  return StrStrm_xcreate__(storage, text, len, __FILE__, __LINE__);
}

TARNEX_API IStrm *FileStrm_new(FileStrm *storage, const char *path, const char *mode) {
  return FileStrm_xcreatex__(storage, path, mode, 0, __FILE__, __LINE__);
}

}  // extern "C"
