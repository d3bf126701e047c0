// The trace manager: which statements are written, and where they go.
//
// The selection is read on every guarded statement of both libraries, so it
// is kept in atomics that a reader loads without a lock; one word says
// whether anything is selected at all, which is all an unselected statement
// costs. Changing the selection is rare and takes a mutex, so that the
// summary word always matches the modules.
//
// A block is collected in a buffer of its thread and handed to the sink in
// one call, so blocks of different threads never interleave.
#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <string>

#include "tarnex/strm.h"
#include "tarnex/trace.h"
#include "utf8.h"

namespace {

// ---- Selection -------------------------------------------------------------

struct ModuleSel {
  std::atomic<uint32_t> categories{0};
  std::atomic<int32_t> maxLevel{0};
};

std::array<ModuleSel, KVO_TRC_MODULES> gModules;
std::atomic<int32_t> gAnySelected{0};
std::mutex gSelectMutex;

// Called with gSelectMutex held.
void setModule(ModuleSel &m, uint32_t categories, int32_t maxLevel) {
  m.maxLevel.store(categories != 0 ? maxLevel : 0, std::memory_order_relaxed);
  m.categories.store(categories, std::memory_order_relaxed);
}

void refreshAnySelected() {
  int32_t any = 0;
  for (const ModuleSel &m : gModules)
    if (m.categories.load(std::memory_order_relaxed) != 0) any = 1;
  gAnySelected.store(any, std::memory_order_release);
}

// ---- Sink ------------------------------------------------------------------------

std::atomic<DbgMngSink> gSink{nullptr};
std::atomic<void *> gSinkCtx{nullptr};

// Block text lives on the foundation's heap, whose allocator never fails by
// throwing, so no exception can leave a trace call.
template <class T>
struct KvoAllocator {
  using value_type = T;
  KvoAllocator() = default;
  template <class U>
  KvoAllocator(const KvoAllocator<U> &) {}
  T *allocate(size_t n) {
    return static_cast<T *>(kvo_malloc__(n * sizeof(T), __FILE__, __LINE__));
  }
  void deallocate(T *p, size_t) { kvo_free__(p, __FILE__, __LINE__); }
  friend bool operator==(const KvoAllocator &, const KvoAllocator &) { return true; }
};
using Text = std::basic_string<char, std::char_traits<char>, KvoAllocator<char>>;

// A buffer that once held a huge block gives its storage back afterwards.
constexpr size_t kKeepCapacity = 64 * 1024;

struct ThreadTrace {
  Text block;
  Text marker;
  bool open = false;
  bool selected = false;  // whether the open block goes to the sink
  bool inSink = false;    // a sink that traces itself must not recurse
};

thread_local ThreadTrace tTrace;

void send(ThreadTrace &t, const Text &text) {
  const DbgMngSink sink = gSink.load(std::memory_order_acquire);
  void *const ctx = gSinkCtx.load(std::memory_order_acquire);
  t.inSink = true;
  if (sink != nullptr) {
    try {
      sink(ctx, text.data(), static_cast<int32_t>(text.size()));
    } catch (...) {
      // A failing sink loses its text; tracing never changes a result.
    }
  } else {
    std::fwrite(text.data(), 1, text.size(), stderr);
  }
  t.inSink = false;
}

void closeBlock(ThreadTrace &t) {
  if (t.selected && !t.block.empty()) {
    if (t.block.back() != '\n') t.block.push_back('\n');
    send(t, t.block);
  }
  t.open = false;
  t.selected = false;
  if (t.block.capacity() > kKeepCapacity)
    Text().swap(t.block);
  else
    t.block.clear();
}

// Where a writer puts its text: the open block, or a block of its own that
// goes out when the writer is done. Null when the text would go nowhere.
class Writer {
 public:
  Writer() : t_(tTrace) {
    if (t_.inSink) return;
    if (!t_.open) {
      if (kvo_trc_enabled() == 0) return;
      own_ = true;
      t_.open = true;
      t_.selected = true;
    }
    if (t_.selected) text_ = &t_.block;
  }
  ~Writer() {
    if (own_) closeBlock(t_);
  }
  Writer(const Writer &) = delete;
  Writer &operator=(const Writer &) = delete;

  Text *text() const { return text_; }

 private:
  ThreadTrace &t_;
  Text *text_ = nullptr;
  bool own_ = false;
};

void sendMarker(const char *head, const char *fn, const char *file, int32_t line) {
  ThreadTrace &t = tTrace;
  if (t.inSink) return;
  Text &m = t.marker;
  m.assign(head);
  m.append(fn != nullptr ? fn : "?");
  if (file != nullptr) {
    char where[24];
    std::snprintf(where, sizeof where, ":%d)\n", static_cast<int>(line));
    m.append(" (").append(file).append(where);
  } else {
    m.push_back('\n');
  }
  send(t, m);
}

constexpr char kHexDigits[] = "0123456789ABCDEF";
constexpr int32_t kHexPerLine = 16;

void appendHexLine(Text &out, const uint8_t *bytes, int32_t n, int32_t offset) {
  char line[8 + 2 + 3 * kHexPerLine + 1];
  int len = std::snprintf(line, sizeof line, "%04X:", static_cast<unsigned>(offset));
  for (int32_t i = 0; i < n; ++i) {
    line[len++] = ' ';
    line[len++] = kHexDigits[bytes[i] >> 4];
    line[len++] = kHexDigits[bytes[i] & 0xF];
  }
  line[len++] = '\n';
  out.append(line, static_cast<size_t>(len));
}

// Reads all of strm from its start into out; the caller restores the
// position. The stream's size bounds the loop, so a stream that never
// reports its end cannot hold the trace forever.
void appendStream(Text &out, IStrm *strm) {
  constexpr int32_t kChunk = 4096;
  int64_t left = IStrm_size(strm);
  while (left > 0) {
    const uint8_t *p = nullptr;
    const int64_t run = IStrm_peek(strm, &p);
    if (run > 0 && p != nullptr) {
      const int64_t take = run < left ? run : left;
      out.append(reinterpret_cast<const char *>(p), static_cast<size_t>(take));
      left -= take;
      if (IStrm_seek(strm, take, KVO_SEEK_CUR) != 0) break;
      continue;
    }
    const int32_t want = left < kChunk ? static_cast<int32_t>(left) : kChunk;
    const size_t old = out.size();
    out.resize(old + static_cast<size_t>(want));
    const int32_t got = IStrm_read(strm, out.data() + old, want);
    const int32_t kept = got > 0 && got <= want ? got : 0;
    out.resize(old + static_cast<size_t>(kept));
    if (kept == 0) break;
    left -= kept;
  }
}

}  // namespace

extern "C" {

// ---- Selection -------------------------------------------------------------------

TARNEX_API int32_t kvo_trc_enabled(void) {
  return gAnySelected.load(std::memory_order_relaxed);
}

TARNEX_API int32_t DbgMng_enabled__(int32_t module, uint32_t category, int32_t level) {
  if (module < 0 || module >= KVO_TRC_MODULES) return 0;
  const ModuleSel &m = gModules[static_cast<size_t>(module)];
  return (m.categories.load(std::memory_order_relaxed) & category) != 0 &&
         level <= m.maxLevel.load(std::memory_order_relaxed);
}

TARNEX_API void DbgMng_select(int32_t module, uint32_t categories, int32_t maxLevel) {
  if (module < -1 || module >= KVO_TRC_MODULES) {
    kvo_assert__("module >= -1 && module < KVO_TRC_MODULES", __FILE__, __LINE__);
    return;
  }
  std::lock_guard<std::mutex> lock(gSelectMutex);
  if (module == -1) {
    for (ModuleSel &m : gModules) setModule(m, categories, maxLevel);
  } else {
    setModule(gModules[static_cast<size_t>(module)], categories, maxLevel);
  }
  refreshAnySelected();
}

TARNEX_API void DbgMng_reset(void) {
  std::lock_guard<std::mutex> lock(gSelectMutex);
  for (ModuleSel &m : gModules) setModule(m, 0, 0);
  refreshAnySelected();
}

TARNEX_API void DbgMng_setSink(DbgMngSink sink, void *ctx) {
  // Context first: a statement that sees the new sink sees its context.
  gSinkCtx.store(ctx, std::memory_order_release);
  gSink.store(sink, std::memory_order_release);
}

// ---- Markers ---------------------------------------------------------------------

TARNEX_API void DbgMng_outFbeg(const char *fn, const char *file, int32_t line,
                               int32_t module, uint32_t category, int32_t level) {
  if (kvo_trc_enabled() != 0 && DbgMng_enabled__(module, category, level) != 0)
    sendMarker(">> ", fn, file, line);
}

TARNEX_API void DbgMng_outFend(const char *fn, const char *, int32_t, int32_t module,
                               uint32_t category, int32_t level) {
  if (kvo_trc_enabled() != 0 && DbgMng_enabled__(module, category, level) != 0)
    sendMarker("<< ", fn, nullptr, 0);
}

// ---- Blocks ----------------------------------------------------------------------

TARNEX_API void tout_beg(const char *, int32_t, int32_t module, uint32_t category,
                         int32_t level) {
  ThreadTrace &t = tTrace;
  if (t.inSink) return;
  if (t.open) closeBlock(t);  // a block left open ends where the next begins
  t.open = true;
  t.selected = kvo_trc_enabled() != 0 && DbgMng_enabled__(module, category, level) != 0;
}

TARNEX_API void tout_endx(void) {
  ThreadTrace &t = tTrace;
  if (t.open && !t.inSink) closeBlock(t);
}

TARNEX_API void tout_fmt(const char *format, ...) {
  Writer w;
  Text *out = w.text();
  if (out == nullptr || format == nullptr) return;
  va_list ap;
  va_start(ap, format);
  va_list again;
  va_copy(again, ap);
  const int n = std::vsnprintf(nullptr, 0, format, ap);
  if (n > 0) {
    const size_t old = out->size();
    out->resize(old + static_cast<size_t>(n));
    std::vsnprintf(out->data() + old, static_cast<size_t>(n) + 1, format, again);
  }
  va_end(again);
  va_end(ap);
}

TARNEX_API void tout_str(const char *text) {
  Writer w;
  if (Text *out = w.text(); out != nullptr && text != nullptr) out->append(text);
}

TARNEX_API void tout_wcs(const KvoWchar *text) {
  Writer w;
  Text *out = w.text();
  if (out == nullptr || text == nullptr) return;
  namespace utf8 = tarnex::utf8;
  char bytes[utf8::kMaxLen];
  for (const KvoWchar *u = text; *u != 0; ++u) {
    uint32_t cp = *u;
    // A surrogate without its partner keeps the 3-byte form of its own
    // code, as KvoStr_setCwcs does, so the trace shows what a record holds.
    if (utf8::isHighSurrogate(cp) && utf8::isLowSurrogate(u[1]))
      cp = utf8::joinSurrogates(cp, *++u);
    out->append(bytes, static_cast<size_t>(utf8::encode(cp, bytes)));
  }
}

TARNEX_API void tout_hex(const void *data, int32_t n) {
  Writer w;
  Text *out = w.text();
  if (out == nullptr || data == nullptr || n <= 0) return;
  if (!out->empty() && out->back() != '\n') out->push_back('\n');
  const auto *bytes = static_cast<const uint8_t *>(data);
  for (int32_t at = 0; at < n; at += kHexPerLine) {
    const int32_t count = n - at < kHexPerLine ? n - at : kHexPerLine;
    appendHexLine(*out, bytes + at, count, at);
  }
}

TARNEX_API void tout_tstrm(struct IStrm *strm) {
  Writer w;
  Text *out = w.text();
  if (out == nullptr || strm == nullptr || strm->ops == nullptr) return;
  const int64_t pos = IStrm_tell(strm);
  if (IStrm_seek(strm, 0, KVO_SEEK_SET) != 0) return;
  appendStream(*out, strm);
  IStrm_seek(strm, pos, KVO_SEEK_SET);
}

}  // extern "C"
